// The functions of G.729 Annex A put together as a coder and a decoder, frame by frame, beside an independent open
// codec. That codec is not bit exact: what is asserted are shares of equal parameters and distances of the signals,
// with a margin to the measured ones, which the test records.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "g729_chain.h"
#include "speech_signal.h"

#if __has_include(<bcg729/encoder.h>)
#define ORACLE_BCG729 1
extern "C" {
#include <bcg729/decoder.h>
#include <bcg729/encoder.h>
}
#endif

namespace {

using namespace g729chain;

constexpr int kFrames = 400;

[[maybe_unused]] Samples speech() {
    return speechLike(static_cast<size_t>(kFrame) * kFrames);
}

[[maybe_unused]] double segmental(const Samples& want, const Samples& got) {
    return segmentalDistance(want, got, kFrame);
}

#ifdef ORACLE_BCG729
std::vector<Bits> theirBits(const Samples& x) {
    auto* const encoder = initBcg729EncoderChannel(0);
    std::vector<Bits> all;
    for (int f = 0; f < kFrames; ++f) {
        Bits bits{};
        uint8_t length = 0;
        bcg729Encoder(encoder, x.data() + f * kFrame, bits.data(), &length);
        all.push_back(bits);
    }
    closeBcg729EncoderChannel(encoder);
    return all;
}

Samples theirSignal(const std::vector<Bits>& all) {
    auto* const decoder = initBcg729DecoderChannel();
    Samples y;
    for (const Bits& bits : all) {
        int16_t frame[kFrame];
        bcg729Decoder(decoder, bits.data(), 10, 0, 0, 0, frame);
        y.insert(y.end(), frame, frame + kFrame);
    }
    closeBcg729DecoderChannel(decoder);
    return y;
}

struct Coded {
    Samples speech;
    std::vector<Bits> bits;
    Samples local;
};

Coded coded() {
    Coded c{speech(), {}, {}};
    Coder coder;
    for (int f = 0; f < kFrames; ++f) {
        c.bits.push_back(pack(coder.frame(c.speech.data() + f * kFrame)));
    }
    c.local = coder.local;
    return c;
}

// Against the input, which the coder lags by 40 samples.
double fidelity(const Samples& x, const Samples& y) {
    return segmental(Samples(x.begin(), x.end() - 40), Samples(y.begin() + 40, y.end()));
}

Samples frequencies(const Parameters& p, Samples& history) {
    const int16_t words[4] = {static_cast<int16_t>(p[L0]), static_cast<int16_t>(p[L1]), static_cast<int16_t>(p[L2]),
                              static_cast<int16_t>(p[L3])};
    Samples lsf(10);
    GOOD(veksLSFDecode_G729_16s(words, history.data(), lsf.data()));
    return lsf;
}

void record(const char* name, double value) {
    ::testing::Test::RecordProperty(name, std::to_string(value));
}
#endif

TEST(G729ChainOracle, DecoderFollowsTheSynthesisOfTheCoder) {
    // Its own bits through its own decoder, before the post filters: not a sample apart.
    const Samples x = speech();
    Coder coder;
    Decoder decoder;
    for (int f = 0; f < kFrames; ++f) {
        const Parameters p = coder.frame(x.data() + f * kFrame);
        ASSERT_EQ(p, unpack(pack(p)));
        decoder.frame(p);
        ASSERT_EQ(coder.local, decoder.local) << f;
        coder.local.clear();
        decoder.local.clear();
    }
}

TEST(G729ChainOracle, DecoderStaysByTheOtherCodecsOnItsBits) {
#ifdef ORACLE_BCG729
    const std::vector<Bits> bits = theirBits(speech());
    Decoder decoder;
    Samples ours;
    for (const Bits& frame : bits) {
        const Samples out = decoder.frame(unpack(frame));
        ours.insert(ours.end(), out.begin(), out.end());
    }
    const double distance = segmental(theirSignal(bits), ours);
    record("dB", distance);
    EXPECT_GT(distance, 27);
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

TEST(G729ChainOracle, OtherDecoderUnderstandsTheCoder) {
#ifdef ORACLE_BCG729
    const Coded c = coded();
    Decoder decoder;
    Samples ours;
    for (const Bits& frame : c.bits) {
        const Samples out = decoder.frame(unpack(frame));
        ours.insert(ours.end(), out.begin(), out.end());
    }
    const Samples theirs = theirSignal(c.bits);
    const double distance = segmental(theirs, ours);
    record("dB", distance);
    EXPECT_GT(distance, 27);
    // Without post filters the signal comes nearer to the input.
    Samples doubled = c.local;
    for (int16_t& v : doubled) {
        v = static_cast<int16_t>(std::clamp(2 * v, -32768, 32767));
    }
    const double local = fidelity(c.speech, doubled);
    record("local", local);
    EXPECT_GT(local, 7);
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

TEST(G729ChainOracle, CoderKeepsAsMuchOfTheSignalAsTheOtherOne) {
#ifdef ORACLE_BCG729
    const Coded c = coded();
    const std::vector<Bits> theirs = theirBits(c.speech);
    const double ours = fidelity(c.speech, theirSignal(c.bits));
    const double other = fidelity(c.speech, theirSignal(theirs));
    record("ours", ours);
    record("other", other);
    EXPECT_GT(ours, other - 0.3);

    // Predictors carry the first near tie on into all frames after it: then the parameters differ, not what they say.
    Samples ourHistory = startOfHistory();
    Samples theirHistory = ourHistory;
    double radians = 0;
    int predictors = 0;
    int lags = 0;
    for (size_t f = 0; f < c.bits.size(); ++f) {
        const Parameters a = unpack(c.bits[f]);
        const Parameters b = unpack(theirs[f]);
        const Samples one = frequencies(a, ourHistory);
        const Samples two = frequencies(b, theirHistory);
        for (size_t i = 0; i < 10; ++i) {
            radians += std::abs(one[i] - two[i]) / 8192.0 / 10 / kFrames;
        }
        predictors += a[L0] == b[L0] ? 1 : 0;
        lags += std::abs(a[P1] - b[P1]) <= 3 ? 1 : 0;
    }
    record("radians", radians);
    RecordProperty("predictors", predictors);
    RecordProperty("lags", lags);
    EXPECT_LT(radians, 0.025);
    EXPECT_GE(predictors, kFrames * 3 / 4);
    EXPECT_GE(lags, kFrames / 2);
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

TEST(G729ChainOracle, FramesAfterAStartHaveMostlyTheParametersOfTheOtherCoder) {
#ifdef ORACLE_BCG729
    const Samples x = speech();
    int frames = 0;
    int spectra = 0;
    int firstLags = 0;
    std::array<int, kFields> same{};
    for (int start = 0; start + 2 <= kFrames; start += 2) {
        Coder coder;
        auto* const encoder = initBcg729EncoderChannel(0);
        for (int f = start; f < start + 2; ++f) {
            Bits bits{};
            uint8_t length = 0;
            bcg729Encoder(encoder, x.data() + f * kFrame, bits.data(), &length);
            const Parameters a = coder.frame(x.data() + f * kFrame);
            const Parameters b = unpack(bits);
            ++frames;
            spectra += std::equal(a.begin(), a.begin() + P1, b.begin()) ? 1 : 0;
            firstLags += std::equal(a.begin(), a.begin() + P0, b.begin()) ? 1 : 0;
            for (size_t i = 0; i < kFields; ++i) {
                same[i] += a[i] == b[i] ? 1 : 0;
            }
        }
        closeBcg729EncoderChannel(encoder);
    }
    const char* const names[kFields] = {"L0",  "L1",  "L2", "L3", "P1", "P0",  "C1", "S1",
                                        "GA1", "GB1", "P2", "C2", "S2", "GA2", "GB2"};
    for (size_t i = 0; i < kFields; ++i) {
        RecordProperty(names[i], same[i]);
    }
    RecordProperty("frames", frames);
    RecordProperty("spectra", spectra);
    RecordProperty("spectraAndLags", firstLags);
    EXPECT_GE(spectra, frames * 65 / 100);
    EXPECT_GE(same[P1], frames * 6 / 10);
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

} // namespace
