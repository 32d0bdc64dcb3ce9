// Pitch and gain steps of G.729 against independent open codecs.
// Their step functions are in no public header: they are declared here, and the package's header tells whether to link.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "veksc.h"

#if __has_include(<opencore-amrnb/interf_enc.h>)
#define ORACLE_AMRNB 1
extern "C" {
void agc(int16_t* gain, int16_t* in, int16_t* out, int16_t factor, int16_t n, int* overflow);
}
#endif

namespace {

using Samples = std::vector<int16_t>;

[[maybe_unused]] Samples noise(std::mt19937& random, int n, int low, int high, int step = 1) {
    std::uniform_int_distribution<int> pick(low / step, high / step);
    Samples v(static_cast<size_t>(n));
    for (int16_t& e : v) {
        e = static_cast<int16_t>(pick(random) * step);
    }
    return v;
}

TEST(GainControlOracle, EqualsTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(1);
    int16_t ours = 4096;
    int16_t theirs = 4096;
    int overflow = 0;
    for (int round = 0; round < 200; ++round) {
        // Multiples of four: the AMR codec drops bits of the energy, not of the samples. Gains that saturate nothing.
        const int level = 200 << (round % 5);
        Samples in = noise(random, 40, -level, level, 4);
        Samples x = noise(random, 40, -2 * level, 2 * level, 4);
        Samples want = x;
        ASSERT_EQ(vekStsNoErr, veksGainControl_G729A_16s_I(in.data(), x.data(), &ours));
        agc(&theirs, in.data(), want.data(), 29491, 40, &overflow);
        ASSERT_EQ(want, x) << round;
        ASSERT_EQ(theirs, ours);
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

} // namespace
