// Steps of G.729.1 against independent open codecs of its family.
// Their step functions are in no public header: they are declared here, and the package's header tells whether to link.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "noise.h"
#include "veksc.h"

#if __has_include(<opencore-amrnb/interf_enc.h>)
#define ORACLE_AMRNB 1
extern "C" {
int16_t G_pitch(int mode, int16_t* target, int16_t* filtered, int16_t* products, int16_t n, int* overflow);
int16_t Pitch_fr(int16_t* lastDelay, int mode, int16_t* open, int16_t* excitation, int16_t* target, int16_t* h,
                 int16_t n, int16_t offset, int16_t* fraction, int16_t* thirds, int16_t* index, int* overflow);
}
#endif

namespace {

using Samples = std::vector<int16_t>;

// A decaying impulse response, Q12.
[[maybe_unused]] Samples response(std::mt19937& random) {
    Samples h = noise(random, 40, -2500, 2500);
    for (size_t i = 1; i < h.size(); ++i) {
        h[i] = static_cast<int16_t>(h[i] * 4 / static_cast<int>(4 + i));
    }
    h[0] = 4096;
    return h;
}

TEST(G7291AdaptiveGainOracle, EqualsTheAmrCodecButForTheUnitThatBeginsTheSum) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(1);
    int equal = 0;
    for (int round = 0; round < 4000; ++round) {
        const int level = 50 << (round % 8);
        const Samples h = response(random);
        const Samples vector = noise(random, 40, -level, level);
        Samples target = noise(random, 40, -level, level);
        Samples filtered(40);
        int16_t gain = 0;
        ASSERT_EQ(vekStsNoErr,
                  veksAdaptiveCodebookGain_G7291_16s(target.data(), h.data(), vector.data(), filtered.data(), &gain));
        int16_t products[4] = {};
        int overflow = 0;
        const int16_t want = G_pitch(4, target.data(), filtered.data(), products, 40, &overflow);
        ASSERT_NEAR(want, gain, 1) << round;
        equal += want == gain ? 1 : 0;
    }
    RecordProperty("equal", equal);
    // Our sum of squares begins with 1, as published, theirs with 0.
    EXPECT_GE(equal, 3920);
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(G7291AdaptiveSearchOracle, FindsTheDelaysOfTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(2);
    int equal = 0;
    constexpr int rounds = 1000;
    for (int round = 0; round < rounds; ++round) {
        const Samples x = noise(random, 194, -1000, 1000);
        Samples target = noise(random, 40, -2000, 2000);
        Samples h = response(random);
        Samples theirs = x;
        const bool second = round % 2 == 1;
        int16_t open = noise(random, 1, 20, 143)[0];
        // The range that the AMR codec makes of an open-loop delay, or of that of the first subframe.
        const int width = second ? 9 : 6;
        const int first = std::min(std::max(open - (second ? 5 : 3), 20), 143 - width);
        int16_t last = open;
        int16_t fraction = 0;
        int16_t thirds = 0;
        int16_t index = 0;
        int overflow = 0;
        const int16_t delay = Pitch_fr(&last, 4, &open, theirs.data() + 154, target.data(), h.data(), 40,
                                       static_cast<int16_t>(second ? 40 : 0), &fraction, &thirds, &index, &overflow);
        int16_t got[2] = {};
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookSearch_G7291_16s(
                                   target.data(), h.data(), x.data(), got, static_cast<int16_t>(first),
                                   static_cast<int16_t>(first + width), static_cast<int16_t>(40 * (round % 4))));
        equal += got[0] == delay && got[1] == fraction ? 1 : 0;
    }
    RecordProperty("equal", equal);
    EXPECT_GE(equal, rounds * 99 / 100);
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

} // namespace
