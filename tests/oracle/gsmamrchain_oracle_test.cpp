// The functions of GSM AMR put together as a decoder, frame by frame, beside an independent open codec, on the bits of
// its coder.
#include <gtest/gtest.h>

#if __has_include(<opencore-amrnb/interf_dec.h>)

#include <algorithm>
#include <array>
#include <random>
#include <string>

#include "gsmamr_decoder.h"
#include "speech_signal.h"

namespace {

using namespace amrdecoder;

constexpr int kFrames = 200;
constexpr unsigned kQuietGains = 18; // of 32 codes

// Counts the frames that are apart, and tells the distance of both signals.
template <class ModeOf>
void expectSameBits(const Samples& x, ModeOf modeOf, const std::string& name, int leastSmoothed) {
    TheirCoder coder;
    TheirDecoder theirs;
    Decoder ours;
    Samples want;
    Samples got;
    int apart = 0;
    for (int f = 0; f < kFrames; ++f) {
        const int mode = modeOf(f);
        const Octets octets = coder.frame(mode, x.data() + f * kFrame);
        const Samples p = unpack(mode, octets);
        ASSERT_EQ(octets, pack(mode, p)) << name << " frame " << f;
        const Samples one = theirs.frame(octets);
        const Samples two = ours.frame(mode, p);
        apart += one == two ? 0 : 1;
        want.insert(want.end(), one.begin(), one.end());
        got.insert(got.end(), two.begin(), two.end());
    }
    const double distance = segmentalDistance(want, got, kFrame);
    ::testing::Test::RecordProperty(name + "dB", std::to_string(distance));
    EXPECT_EQ(0, apart) << name << ": " << distance << " dB";
    // The steps that only some frames take were taken.
    EXPECT_GT(ours.enhanced, 50) << name;
    EXPECT_GE(ours.smoothed(), leastSmoothed) << name;
    EXPECT_GT(*std::max_element(want.begin(), want.end()), 5000) << name;
}

TEST(AmrChainOracle, DecoderHasTheSamplesOfTheOtherOneAtAllRates) {
    const Samples x = speechLike(size_t{kFrame} * kFrames);
    const char* const names[kRates] = {"4.75", "5.15", "5.9", "6.7", "7.4", "7.95", "10.2", "12.2"};
    for (int mode = 0; mode < kRates; ++mode) {
        expectSameBits(
            x, [mode](int) { return mode; }, names[mode], mode <= R67 || mode == R102 ? 50 : 0);
    }
}

TEST(AmrChainOracle, DecoderFollowsChangesOfTheRate) {
    const Samples x = speechLike(size_t{kFrame} * kFrames);
    const auto modes = randomRates<kFrames>(475, kRates);
    expectSameBits(
        x, [&](int f) { return modes[static_cast<size_t>(f)]; }, "mixed", 20);
}

// Any parameters at all, but for the loudest code gains where they have a code of their own: a synthesis that runs over
// wraps in the other codec.
TEST(AmrChainOracle, DecoderHasTheSamplesForAnyParameters) {
    std::mt19937 random(122);
    for (int mode = 0; mode < kRates; ++mode) {
        TheirDecoder theirs;
        Decoder ours;
        int apart = 0;
        for (int f = 0; f < kFrames; ++f) {
            Samples p;
            for (int field = 0; field < prmno[mode]; ++field) {
                const bool gain = (mode == R122 && field > 5 && (field - 5) % 13 == 12) ||
                                  (mode == R795 && field > 3 && (field - 3) % 5 == 4);
                const unsigned codes = gain ? kQuietGains : 1U << bitno[mode][field];
                p.push_back(static_cast<int16_t>(random() % codes));
            }
            apart += theirs.frame(pack(mode, p)) == ours.frame(mode, p) ? 0 : 1;
        }
        EXPECT_EQ(0, apart) << mode;
        EXPECT_EQ(0, ours.clipped) << mode;
    }
}

TEST(AmrChainOracle, DecoderHasTheSamplesAtAllLevelsOfSound) {
    const Samples x = speechLike(size_t{kFrame} * kFrames);
    for (const int percent : {1, 20, 400, 1000}) {
        Samples y = x;
        for (int16_t& v : y) {
            v = sat16(v * percent / 100);
        }
        for (int mode = 0; mode < kRates; ++mode) {
            TheirCoder coder;
            TheirDecoder theirs;
            Decoder ours;
            int apart = 0;
            for (int f = 0; f < kFrames; ++f) {
                const Octets octets = coder.frame(mode, y.data() + f * kFrame);
                apart += theirs.frame(octets) == ours.frame(mode, unpack(mode, octets)) ? 0 : 1;
            }
            EXPECT_EQ(0, apart) << "mode " << mode << " at " << percent << " per cent";
        }
    }
}

} // namespace

#else

TEST(AmrChainOracle, NeedsItsPackage) {
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
}

#endif
