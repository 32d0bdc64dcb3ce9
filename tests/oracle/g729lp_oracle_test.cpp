// Pre-emphasis of G.729 against an independent open codec.
// Its step functions are in no public header: they are declared here, and the package's header tells whether to link.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "veksc.h"

#if __has_include(<opencore-amrnb/interf_enc.h>)
#define ORACLE_AMRNB 1
extern "C" {
void preemphasis(int16_t* state, int16_t* signal, int16_t g, int16_t n, int* overflow);
}
#endif

namespace {

using Samples = std::vector<int16_t>;

[[maybe_unused]] Samples noise(std::mt19937& random, int n, int low, int high) {
    std::uniform_int_distribution<int> pick(low, high);
    Samples v(static_cast<size_t>(n));
    for (int16_t& e : v) {
        e = static_cast<int16_t>(pick(random));
    }
    return v;
}

TEST(PreemphasisOracle, EqualsTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(1);
    int16_t ours = 0;
    int16_t theirs = 0;
    int overflow = 0;
    for (int round = 0; round < 100; ++round) {
        Samples x = noise(random, 40, -32768, 32767);
        Samples want = x;
        const int16_t gamma = noise(random, 1, 0, 32767)[0];
        ASSERT_EQ(vekStsNoErr, veksPreemphasize_G729A_16s_I(gamma, x.data(), 40, &ours));
        preemphasis(&theirs, want.data(), gamma, 40, &overflow);
        ASSERT_EQ(want, x) << round;
        ASSERT_EQ(theirs, ours);
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

} // namespace
