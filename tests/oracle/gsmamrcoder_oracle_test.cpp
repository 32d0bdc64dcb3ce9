// The functions of GSM AMR put together as a coder, frame by frame, beside an independent open codec.
#include <gtest/gtest.h>

#if __has_include(<opencore-amrnb/interf_enc.h>)

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <string>

#include "gsmamr_coder.h"
#include "speech_signal.h"

namespace {

using namespace amrcoder;

constexpr int kFrames = 200;

const char* const kNames[kRates] = {"4.75", "5.15", "5.9", "6.7", "7.4", "7.95", "10.2", "12.2"};

// Codes the signal with both, and counts the frames whose parameters are not all the same. Returns how many gains of
// the pitch were limited.
template <class ModeOf>
int expectSameParameters(const Samples& x, ModeOf modeOf) {
    TheirCoder theirs;
    Coder ours;
    int apart = 0;
    const int frames = static_cast<int>(x.size()) / kFrame;
    for (int f = 0; f < frames; ++f) {
        const int mode = modeOf(f);
        const Samples want = unpack(mode, theirs.frame(mode, x.data() + f * kFrame));
        const Samples got = ours.frame(mode, x.data() + f * kFrame);
        apart += want == got ? 0 : 1;
        if (apart == 1 && want != got) {
            EXPECT_EQ(want, got) << "first apart: rate " << kNames[mode] << " frame " << f;
        }
    }
    EXPECT_EQ(0, apart) << "of " << frames << " frames";
    return ours.limited;
}

TEST(AmrChainOracle, CoderHasTheParametersOfTheOtherOneAtAllRates) {
    const Samples x = speechLike(size_t{kFrame} * kFrames);
    for (int mode = 0; mode < kRates; ++mode) {
        SCOPED_TRACE(kNames[mode]);
        expectSameParameters(x, [mode](int) { return mode; });
    }
}

TEST(AmrChainOracle, CoderHasThemAtAllLevelsOfSound) {
    const Samples x = speechLike(size_t{kFrame} * kFrames);
    for (const int level : {1, 20, 400, 1000}) { // per cent
        Samples y = x;
        for (int16_t& v : y) {
            v = sat16(v * level / 100);
        }
        for (int mode = 0; mode < kRates; ++mode) {
            SCOPED_TRACE(std::string(kNames[mode]) + " at " + std::to_string(level));
            expectSameParameters(y, [mode](int) { return mode; });
        }
    }
}

// A lasting tone, where the gain of the pitch is held down.
TEST(AmrChainOracle, CoderHasThemInTones) {
    int limited = 0;
    for (const double frequency : {0.21, 0.9, 1.7}) {
        const Samples x = tone(size_t{kFrame} * 100, frequency);
        for (int mode = 0; mode < kRates; ++mode) {
            SCOPED_TRACE(kNames[mode] + std::string(" at ") + std::to_string(frequency));
            limited += expectSameParameters(x, [mode](int) { return mode; });
        }
    }
    RecordProperty("limited", limited);
    EXPECT_GT(limited, 200);
}

TEST(AmrChainOracle, CoderFollowsChangesOfTheRate) {
    const Samples x = speechLike(size_t{kFrame} * kFrames);
    const auto modes = randomRates<kFrames>(515, kRates);
    expectSameParameters(x, [&](int f) { return modes[static_cast<size_t>(f)]; });
}

// Its post filter does not keep the samples, and the noise in the signal is not to be had for so few bits.
TEST(AmrChainOracle, OtherDecoderGivesTheSignalBack) {
    constexpr int kDelay = 39;
    const Samples x = speechLike(size_t{kFrame} * kFrames);
    constexpr double kLeast[kRates] = {5.3, 5.5, 5.6, 5.8, 5.9, 5.9, 6.0, 6.0};
    for (int mode = 0; mode < kRates; ++mode) {
        Coder coder;
        TheirDecoder decoder;
        Samples y;
        for (int f = 0; f < kFrames; ++f) {
            const Samples out = decoder.frame(pack(mode, coder.frame(mode, x.data() + f * kFrame)));
            y.insert(y.end(), out.begin(), out.end());
        }
        const double fidelity =
            segmentalDistance(Samples(x.begin(), x.end() - kDelay), Samples(y.begin() + kDelay, y.end()), kFrame);
        ::testing::Test::RecordProperty(std::string("dB") + kNames[mode], std::to_string(fidelity));
        EXPECT_GT(fidelity, kLeast[mode]) << kNames[mode];
    }
}

} // namespace

#endif
