// The functions of AMR-WB put together as a coder, frame by frame, beside an independent open codec: all bits of the
// frames at the nine rates, but for the gain of the upper band at the highest one, which the library does not code.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <string>

#include "vekcore.h"
#include "veksc.h"

#if __has_include(<vo-amrwbenc/enc_if.h>) && __has_include(<opencore-amrwb/dec_if.h>)

#include "amrwb_coder.h"
#include "speech_signal.h"

namespace {

using namespace amrwb;

constexpr int kFrames = 150;
constexpr int kShort = 100;

const char* const kNames[kRates] = {"6.6", "8.85", "12.65", "14.25", "15.85", "18.25", "19.85", "23.05", "23.85"};

// Codes the signal with both, and counts the frames whose bits are not all the same.
template <class ModeOf>
Coder::Counts expectSameBits(const Samples& x, ModeOf modeOf) {
    TheirCoder theirs;
    Coder ours;
    int apart = 0;
    const int frames = static_cast<int>(x.size()) / kWide;
    for (int f = 0; f < frames; ++f) {
        const int mode = modeOf(f);
        Bits want = bitsIn(mode, theirs.frame(mode, x.data() + f * kWide));
        const Bits got = ours.frame(mode, x.data() + f * kWide);
        EXPECT_EQ(want.size(), got.size());
        for (size_t i = 0; i < want.size(); ++i) {
            want[i] = got[i] == kOpen ? kOpen : want[i];
        }
        apart += want == got ? 0 : 1;
        if (apart == 1 && want != got) {
            const auto at = std::mismatch(want.begin(), want.end(), got.begin()).first - want.begin();
            ADD_FAILURE() << "first apart: rate " << kNames[mode] << " frame " << f << " bit " << at;
        }
    }
    EXPECT_EQ(0, apart) << "of " << frames << " frames";
    return ours.counts;
}

TEST(AmrWbCoderOracle, HasTheBitsOfTheOtherOneAtAllRates) {
    const Samples x = speechLike(size_t{kWide} * kFrames);
    for (int mode = 0; mode < kRates; ++mode) {
        SCOPED_TRACE(kNames[mode]);
        const Coder::Counts counts = expectSameBits(x, [mode](int) { return mode; });
        EXPECT_EQ(0, counts.wrapped + counts.otherLevel);
        EXPECT_EQ(mode > R885, counts.plain > 0);
    }
}

// What is louder than this leaves 16 bits in the other codec's first filter.
TEST(AmrWbCoderOracle, HasThemAtAllLevelsOfSound) {
    const Samples x = speechLike(size_t{kWide} * kShort);
    Coder::Counts all;
    for (const int level : {1, 400, 3000}) { // per cent
        Samples y = x;
        for (int16_t& v : y) {
            v = static_cast<int16_t>(std::clamp(v * level / 100, -20000, 20000));
        }
        for (int mode = 0; mode < kRates; ++mode) {
            SCOPED_TRACE(std::string(kNames[mode]) + " at " + std::to_string(level));
            const Coder::Counts counts = expectSameBits(y, [mode](int) { return mode; });
            all.active += counts.active;
            all.loud += counts.loud;
            all.wrapped += counts.wrapped;
            all.otherLevel += counts.otherLevel;
        }
    }
    EXPECT_GT(all.active, 1000);
    EXPECT_LT(all.active, 3 * kRates * kShort);
    EXPECT_GT(all.loud, 500);
    // Of 10800 subframes.
    EXPECT_EQ(3, all.wrapped);
    EXPECT_EQ(1, all.otherLevel);
}

// A lasting tone, where the gain of the pitch is held down.
TEST(AmrWbCoderOracle, HasThemInTones) {
    int clipped = 0;
    for (const double frequency : {0.9, 1.7, 2.6}) {
        const Samples x = tone(size_t{kWide} * 60, frequency);
        for (int mode = 0; mode < kRates; ++mode) {
            SCOPED_TRACE(kNames[mode] + std::string(" at ") + std::to_string(frequency));
            const Coder::Counts counts = expectSameBits(x, [mode](int) { return mode; });
            clipped += counts.clipped;
            EXPECT_EQ(0, counts.wrapped + counts.otherLevel);
        }
    }
    RecordProperty("clipped", clipped);
    EXPECT_GT(clipped, 4000);
}

TEST(AmrWbCoderOracle, FollowsChangesOfTheRate) {
    const Samples x = speechLike(size_t{kWide} * kFrames);
    const auto modes = randomRates<kFrames>(190, kRates);
    expectSameBits(x, [&](int f) { return modes[static_cast<size_t>(f)]; });
}

} // namespace

#else

TEST(AmrWbCoderOracle, NeedsTheOpenCodecs) {
    GTEST_SKIP() << "libvo-amrwbenc-dev and libopencore-amrwb-dev are not installed";
}

#endif
