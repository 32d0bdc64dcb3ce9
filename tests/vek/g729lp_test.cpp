// Pre-emphasis against its definition.
#include "lp_reference.h"
#include "veksc.h"

namespace {

using lpref::clip;
using lpref::noise;
using Samples = std::vector<int16_t>;

Samples emphasised(int gamma, const Samples& x, int before) {
    Samples y;
    for (const int16_t sample : x) {
        y.push_back(static_cast<int16_t>(clip(sample - clip((gamma * before) >> 15, 16), 16)));
        before = sample;
    }
    return y;
}

TEST(VekPreemphasize, SubtractsTheScaledPredecessorAndKeepsTheLastInput) {
    std::mt19937 random(1);
    for (const int gamma : {26214, 0, -16384, 32767, -32768}) {
        for (const int n : {1, 2, 40, 80}) {
            const Samples x = noise(random, n, -32768, 32767);
            int16_t memory = -32768;
            Samples y(x.size());
            ASSERT_EQ(vekStsNoErr,
                      veksPreemphasize_G729A_16s(static_cast<int16_t>(gamma), x.data(), y.data(), n, &memory));
            EXPECT_EQ(emphasised(gamma, x, -32768), y);
            EXPECT_EQ(x.back(), memory);
            Samples z = x;
            memory = -32768;
            ASSERT_EQ(vekStsNoErr, veksPreemphasize_G729A_16s_I(static_cast<int16_t>(gamma), z.data(), n, &memory));
            EXPECT_EQ(y, z);
            EXPECT_EQ(x.back(), memory);
        }
    }
}

TEST(VekPreemphasize, SaturatesProductAndDifference) {
    const int16_t x[] = {32767, -32768, 32767};
    int16_t y[3];
    int16_t memory = 0;
    ASSERT_EQ(vekStsNoErr, veksPreemphasize_G729A_16s(32767, x, y, 3, &memory));
    EXPECT_EQ(32767, y[0]);
    EXPECT_EQ(-32768, y[1]);
    EXPECT_EQ(32767, y[2]);
}

TEST(VekPreemphasize, FloatFormIsTheDifferenceOfExactValues) {
    float x[] = {8, 4, -2, 16};
    float memory = 2;
    ASSERT_EQ(vekStsNoErr, veksPreemphasize_32f_I(x, 4, &memory, 0.5F));
    EXPECT_EQ(7, x[0]);
    EXPECT_EQ(0, x[1]);
    EXPECT_EQ(-4, x[2]);
    EXPECT_EQ(17, x[3]);
    EXPECT_EQ(16, memory);
}

TEST(VekPreemphasize, RefusesNullAndLengthsOutOfRange) {
    int16_t x[4] = {1, 2, 3, 4};
    int16_t y[4] = {};
    int16_t memory = 7;
    float f[4] = {};
    float m = 0;
    EXPECT_EQ(vekStsNullPtrErr, veksPreemphasize_G729A_16s(1, nullptr, y, 4, &memory));
    EXPECT_EQ(vekStsNullPtrErr, veksPreemphasize_G729A_16s(1, x, nullptr, 4, &memory));
    EXPECT_EQ(vekStsNullPtrErr, veksPreemphasize_G729A_16s(1, x, y, 4, nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksPreemphasize_G729A_16s_I(1, nullptr, 4, &memory));
    EXPECT_EQ(vekStsNullPtrErr, veksPreemphasize_G729A_16s_I(1, x, 4, nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksPreemphasize_32f_I(nullptr, 4, &m, 1));
    EXPECT_EQ(vekStsNullPtrErr, veksPreemphasize_32f_I(f, 4, nullptr, 1));
    EXPECT_EQ(vekStsSizeErr, veksPreemphasize_G729A_16s(1, x, y, 0, &memory));
    EXPECT_EQ(vekStsSizeErr, veksPreemphasize_G729A_16s_I(1, x, 65537, &memory));
    EXPECT_EQ(vekStsSizeErr, veksPreemphasize_32f_I(f, -1, &m, 1));
    EXPECT_EQ(7, memory);
    EXPECT_EQ(4, x[3]);
}

} // namespace
