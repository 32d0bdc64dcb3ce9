// The post filters of G.729's main body, and the steps of Annex D in a coder of 6.4 kbit/s, beside the decoder of an
// independent open codec. It rounds in other places: what is asserted are distances of signals in dB, with a margin to
// the measured ones, which the tests record.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "g729_chain.h"
#include "open_decoder.h"
#include "speech_signal.h"

namespace {

using namespace g729chain;

constexpr int kFrames = 400;

#ifdef ORACLE_AVCODEC
// The other decoder tells the rate by the length of a packet.
template <size_t Size>
void decode(OpenDecoder& decoder, const std::array<uint8_t, Size>& bits, Samples& out) {
    const Samples samples = decoder.samples<int16_t>(bits.data(), Size);
    ASSERT_EQ(static_cast<size_t>(kFrame), samples.size());
    out.insert(out.end(), samples.begin(), samples.end());
}

double record(const char* name, double decibels) {
    ::testing::Test::RecordProperty(name, std::to_string(decibels));
    return decibels;
}

// Against the input, which the coder lags by 40 samples.
double fidelity(const Samples& x, const Samples& y) {
    return segmentalDistance(Samples(x.begin(), x.end() - 40), Samples(y.begin() + 40, y.end()), kFrame);
}
#endif

TEST(G729MainOracle, PostFiltersOfTheMainBodyStayByTheOpenDecoder) {
#ifdef ORACLE_AVCODEC
    OpenDecoder open(AV_CODEC_ID_G729, 8000);
    if (!open.open()) {
        GTEST_SKIP() << "libavcodec-dev has no G.729";
    }
    const Samples x = speechLike(static_cast<size_t>(kFrame) * kFrames);
    Coder coder;
    Decoder main(true);
    Decoder annexA;
    Samples ours;
    Samples other;
    Samples theirs;
    for (int f = 0; f < kFrames; ++f) {
        const Parameters p = coder.frame(x.data() + f * kFrame);
        const Samples y = main.frame(p);
        ours.insert(ours.end(), y.begin(), y.end());
        const Samples z = annexA.frame(p);
        other.insert(other.end(), z.begin(), z.end());
        decode(open, pack(p), theirs);
    }
    const double distance = record("main", segmentalDistance(theirs, ours, kFrame));
    EXPECT_GT(distance, 27);
    // The post filters of Annex A are further away: what is told is not the synthesis alone.
    EXPECT_LT(record("annexA", segmentalDistance(theirs, other, kFrame)), distance - 3);
#else
    GTEST_SKIP() << "libavcodec-dev is not installed";
#endif
}

TEST(G729MainOracle, CoderOf6400IsUnderstoodAndItsDispersionAndPostFiltersStayByTheOpenDecoder) {
#ifdef ORACLE_AVCODEC
    OpenDecoder open(AV_CODEC_ID_G729, 8000);
    if (!open.open()) {
        GTEST_SKIP() << "libavcodec-dev has no G.729";
    }
    const Samples x = speechLike(static_cast<size_t>(kFrame) * kFrames);
    Coder coder(true);
    Samples theirs;
    for (int f = 0; f < kFrames; ++f) {
        decode(open, packShort(coder.frame(x.data() + f * kFrame)), theirs);
    }
    EXPECT_GT(record("decoder", segmentalDistance(theirs, coder.hearing.heard, kFrame)), 27.2);
    EXPECT_GT(record("input", fidelity(x, theirs)), 4);
#else
    GTEST_SKIP() << "libavcodec-dev is not installed";
#endif
}

} // namespace
