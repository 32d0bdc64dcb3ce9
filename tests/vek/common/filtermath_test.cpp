// Products, interpolation, inverse square root, lag window, powers of a factor.
#include <cmath>

#include "lp_reference.h"
#include "veksc.h"

namespace {

using lpref::clip;

int64_t scaled(int64_t v, int scale, bool rounded = true) {
    return (v + (rounded && scale > 0 ? int64_t{1} << (scale - 1) : 0)) >> scale;
}

const std::vector<int> kLengths = {1, 7, 8, 11, 16, 31, 39, 40, 60, 80, 120, 180, 223};

TEST(VekMul, EqualsTheRoundedProductForEveryLengthAndScale) {
    atEveryLevel([] {
        std::mt19937 random(11);
        for (const int len : kLengths) {
            for (const int scale : {0, 1, 8, 15, 30}) {
                const Samples a = noise(random, len, -32768, 32767);
                const Samples b = noise(random, len, -32768, 32767);
                const auto val = static_cast<int16_t>(len * 131 - 16000);
                Samples want(len);
                Samples wantC(len);
                for (int i = 0; i < len; i++) {
                    want[i] = static_cast<int16_t>(clip(scaled(int64_t{a[i]} * b[i], scale), 16));
                    wantC[i] = static_cast<int16_t>(clip(scaled(int64_t{a[i]} * val, scale), 16));
                }
                Samples y(len);
                ASSERT_EQ(vekStsNoErr, veksMul_NR_16s_Sfs(a.data(), b.data(), y.data(), len, scale));
                ASSERT_EQ(want, y) << len << " " << scale;
                y = b;
                ASSERT_EQ(vekStsNoErr, veksMul_NR_16s_ISfs(a.data(), y.data(), len, scale));
                ASSERT_EQ(want, y);
                ASSERT_EQ(vekStsNoErr, veksMulC_NR_16s_Sfs(a.data(), val, y.data(), len, scale));
                ASSERT_EQ(wantC, y);
                y = a;
                ASSERT_EQ(vekStsNoErr, veksMulC_NR_16s_ISfs(val, y.data(), len, scale));
                ASSERT_EQ(wantC, y);
            }
        }
    });
}

TEST(VekMul, ProductOfTheTwoMinimaSaturates) {
    atEveryLevel([] {
        const Samples a(20, -32768);
        Samples y(20);
        ASSERT_EQ(vekStsNoErr, veksMul_NR_16s_Sfs(a.data(), a.data(), y.data(), 20, 15));
        EXPECT_EQ(Samples(20, 32767), y);
        ASSERT_EQ(vekStsNoErr, veksMulC_NR_16s_Sfs(a.data(), 32767, y.data(), 20, 0));
        EXPECT_EQ(Samples(20, -32768), y);
    });
}

TEST(VekMul, RefusesNullLengthAndScale) {
    int16_t x[2] = {5, 6};
    expectNullsRefused(veksMul_NR_16s_Sfs, x, x, x, 2, 0);
    EXPECT_EQ(vekStsNullPtrErr, veksMul_NR_16s_ISfs(x, nullptr, 2, 0));
    EXPECT_EQ(vekStsNullPtrErr, veksMulC_NR_16s_Sfs(nullptr, 1, x, 2, 0));
    EXPECT_EQ(vekStsNullPtrErr, veksMulC_NR_16s_ISfs(1, nullptr, 2, 0));
    EXPECT_EQ(vekStsSizeErr, veksMul_NR_16s_ISfs(x, x, 0, 0));
    EXPECT_EQ(vekStsSizeErr, veksMulC_NR_16s_ISfs(1, x, -5, 0));
    EXPECT_EQ(vekStsScaleRangeErr, veksMul_NR_16s_ISfs(x, x, 2, 31));
    EXPECT_EQ(vekStsScaleRangeErr, veksMulC_NR_16s_Sfs(x, 1, x, 2, -1));
    EXPECT_EQ(5, x[0]);
}

TEST(VekInterpolateC, EqualsTheExactSumRoundedOrCut) {
    atEveryLevel([] {
        std::mt19937 random(12);
        const std::vector<std::pair<int, int>> weights = {
            {16384, 16384}, {-32768, -32768}, {32767, -32768}, {3000, -700}, {0, 1}};
        for (const int len : kLengths) {
            for (const int scale : {0, 8, 15}) {
                for (const auto& [v1, v2] : weights) {
                    Samples a = noise(random, len, -32768, 32767);
                    Samples b = noise(random, len, -32768, 32767);
                    a[0] = -32768;
                    b[0] = -32768;
                    Samples rounded(len);
                    Samples cut(len);
                    Samples wantRounded(len);
                    Samples wantCut(len);
                    for (int i = 0; i < len; i++) {
                        const int64_t s = int64_t{a[i]} * v1 + int64_t{b[i]} * v2;
                        wantRounded[i] = static_cast<int16_t>(clip(scaled(s, scale), 16));
                        wantCut[i] = static_cast<int16_t>(clip(scaled(s, scale, false), 16));
                    }
                    const auto w1 = static_cast<int16_t>(v1);
                    const auto w2 = static_cast<int16_t>(v2);
                    ASSERT_EQ(vekStsNoErr,
                              veksInterpolateC_NR_G729_16s_Sfs(a.data(), w1, b.data(), w2, rounded.data(), len, scale));
                    ASSERT_EQ(vekStsNoErr,
                              veksInterpolateC_G729_16s_Sfs(a.data(), w1, b.data(), w2, cut.data(), len, scale));
                    ASSERT_EQ(wantRounded, rounded) << len << " " << scale << " " << v1;
                    ASSERT_EQ(wantCut, cut) << len << " " << scale << " " << v1;
                }
            }
        }
    });
}

TEST(VekInterpolateC, FloatFormIsTheWeightedSum) {
    atEveryLevel([] {
        const std::vector<float> a = {1.0f, 2.0f, -4.0f, 8.0f, 0.5f, 3.0f, 0.0f, 1.0f, 2.0f};
        const std::vector<float> b = {2.0f, 0.0f, 4.0f, 1.0f, 0.5f, 1.0f, 9.0f, 7.0f, 1.0f};
        std::vector<float> y(9);
        ASSERT_EQ(vekStsNoErr, veksInterpolateC_G729_32f(a.data(), b.data(), y.data(), 9, 0.5f, 2.0f));
        EXPECT_EQ((std::vector<float>{4.5f, 1.0f, 6.0f, 6.0f, 1.25f, 3.5f, 18.0f, 14.5f, 3.0f}), y);
    });
}

TEST(VekInterpolateC, IsTheSameAtAnyLengthAndInPlace) {
    atEveryLevel([] {
        std::mt19937 random(15);
        for (int n = 1; n <= 70; n++) {
            const auto size = static_cast<size_t>(n);
            const Samples a = noise(random, n, -32768, 32767);
            const Samples b = noise(random, n, -32768, 32767);
            const std::vector<float> aF(a.begin(), a.end());
            const std::vector<float> bF(b.begin(), b.end());
            Samples want(size);
            Samples halves(size);
            std::vector<float> wantF(size);
            for (size_t i = 0; i < size; i++) {
                want[i] = static_cast<int16_t>(clip(scaled(a[i] * 23000 - b[i] * 9000, 14), 16));
                halves[i] = static_cast<int16_t>((a[i] >> 1) + (b[i] >> 1));
                wantF[i] = 0.5F * aF[i] - 0.25F * bF[i];
            }
            Samples y = a;
            ASSERT_EQ(vekStsNoErr, veksInterpolateC_NR_G729_16s_Sfs(y.data(), 23000, b.data(), -9000, y.data(), n, 14));
            ASSERT_EQ(want, y) << n;
            y = b;
            ASSERT_EQ(vekStsNoErr, veksInterpolate_G729_16s(a.data(), y.data(), y.data(), n));
            ASSERT_EQ(halves, y) << n;
            std::vector<float> yF = bF;
            ASSERT_EQ(vekStsNoErr, veksInterpolateC_G729_32f(aF.data(), yF.data(), yF.data(), n, 0.5F, -0.25F));
            ASSERT_EQ(wantF, yF) << n;
        }
    });
}

TEST(VekInterpolateC, FloatFormMayOverwriteEitherSource) {
    atEveryLevel([] {
        for (int len = 1; len < 50; ++len) {
            std::vector<float> a(static_cast<size_t>(len));
            std::vector<float> b(a.size());
            std::vector<float> want(a.size());
            for (size_t i = 0; i < a.size(); ++i) {
                a[i] = static_cast<float>(i + 1);
                b[i] = static_cast<float>(3 * i);
                want[i] = 0.5F * a[i] + 2 * b[i];
            }
            std::vector<float> first = a;
            std::vector<float> second = b;
            ASSERT_EQ(vekStsNoErr, veksInterpolateC_G729_32f(first.data(), b.data(), first.data(), len, 0.5F, 2));
            ASSERT_EQ(vekStsNoErr, veksInterpolateC_G729_32f(a.data(), second.data(), second.data(), len, 0.5F, 2));
            EXPECT_EQ(want, first) << len;
            EXPECT_EQ(want, second) << len;
        }
    });
}

TEST(VekInterpolateC, RefusesNullLengthAndScale) {
    int16_t x[2] = {};
    float f[2] = {};
    EXPECT_EQ(vekStsNullPtrErr, veksInterpolateC_NR_G729_16s_Sfs(nullptr, 1, x, 1, x, 2, 0));
    expectNullsRefused(veksInterpolateC_G729_16s_Sfs, x, 1, x, 1, x, 2, 0);
    EXPECT_EQ(vekStsSizeErr, veksInterpolateC_G729_16s_Sfs(x, 1, x, 1, x, 0, 0));
    EXPECT_EQ(vekStsScaleRangeErr, veksInterpolateC_G729_16s_Sfs(x, 1, x, 1, x, 2, 16));
    EXPECT_EQ(vekStsScaleRangeErr, veksInterpolateC_NR_G729_16s_Sfs(x, 1, x, 1, x, 2, -1));
    EXPECT_EQ(vekStsNullPtrErr, veksInterpolateC_G729_32f(f, nullptr, f, 2, 1.0f, 1.0f));
    EXPECT_EQ(vekStsSizeErr, veksInterpolateC_G729_32f(f, f, f, 0, 1.0f, 1.0f));
}

TEST(VekInterpolate, AddsTheCutHalves) {
    atEveryLevel([] {
        const Samples a = {3, -3, 32767, -32768, 1, 5, 7, 9, -1};
        const Samples b = {3, -3, 32767, -32768, 1, 0, -2, 4, 2};
        Samples y(9);
        ASSERT_EQ(vekStsNoErr, veksInterpolate_G729_16s(a.data(), b.data(), y.data(), 9));
        EXPECT_EQ((Samples{2, -4, 32766, -32768, 0, 2, 2, 6, 0}), y);
    });
    int16_t x[1] = {};
    EXPECT_EQ(vekStsNullPtrErr, veksInterpolate_G729_16s(nullptr, x, x, 1));
    EXPECT_EQ(vekStsSizeErr, veksInterpolate_G729_16s(x, x, x, 0));
}

TEST(VekInvSqrt, StaysWithinFourTenThousandthsOfTheRoot) {
    std::mt19937 random(13);
    std::vector<int32_t> x = {1, 2, 3, 4, 7, 1 << 20, 0x3fffffff, 0x40000000, 0x7fffffff};
    for (int i = 0; i < 2000; i++) {
        x.push_back(static_cast<int32_t>(random() >> (1 + i % 31)) | 1);
    }
    std::vector<int32_t> y = x;
    ASSERT_EQ(vekStsNoErr, veksInvSqrt_32s_I(y.data(), static_cast<int>(y.size())));
    for (size_t i = 0; i < x.size(); i++) {
        const double want = 1073741824.0 / std::sqrt(static_cast<double>(x[i]));
        ASSERT_NEAR(want, y[i], want * 0.0004 + 1) << x[i];
    }
    EXPECT_EQ(1073709056, y[0]);
}

TEST(VekInvSqrt, TakesEachOfAnyNumberOfElementsAsItDoesOneAlone) {
    std::mt19937 random(17);
    for (int n = 1; n <= 40; n++) {
        for (int round = 0; round < 40; round++) {
            std::vector<int32_t> x(static_cast<size_t>(n) + 1);
            for (int32_t& v : x) {
                const auto size = random() % 33;
                // Each octave's ends, what lies between, and now and then zero and below.
                const uint32_t top = size == 0 ? 0 : size == 32 ? 0x80000000U : 1U << (size - 1);
                const uint32_t rest = top < 2 ? 0 : random() % top;
                v = static_cast<int32_t>(random() % 4 == 0   ? top + (top - (top > 0))
                                         : random() % 4 == 0 ? top
                                                             : top + rest);
            }
            std::vector<int32_t> alone = x;
            for (int i = 0; i < n; i++) {
                ASSERT_EQ(vekStsNoErr, veksInvSqrt_32s_I(&alone[static_cast<size_t>(i)], 1));
            }
            std::vector<int32_t> together = x;
            ASSERT_EQ(vekStsNoErr, veksInvSqrt_32s_I(together.data(), n));
            ASSERT_EQ(alone, together) << n;
        }
    }
}

TEST(VekInvSqrt, GivesTheLargestValueForZeroAndBelow) {
    int32_t x[3] = {0, -1, INT32_MIN};
    ASSERT_EQ(vekStsNoErr, veksInvSqrt_32s_I(x, 3));
    EXPECT_EQ(0x3fffffff, x[0]);
    EXPECT_EQ(0x3fffffff, x[1]);
    EXPECT_EQ(0x3fffffff, x[2]);
    EXPECT_EQ(vekStsNullPtrErr, veksInvSqrt_32s_I(nullptr, 3));
    EXPECT_EQ(vekStsSizeErr, veksInvSqrt_32s_I(x, 0));
}

TEST(VekLagWindow, MultipliesByTheGaussianOfSixtyHertz) {
    std::vector<int32_t> r(10, 0x40000000);
    ASSERT_EQ(vekStsNoErr, veksLagWindow_G729_32s_I(r.data(), 10));
    for (int k = 1; k <= 10; k++) {
        const double w = std::exp(-0.5 * std::pow(2 * M_PI * 60 * k / 8000, 2)) / 1.0001;
        EXPECT_NEAR(1073741824.0 * w, r[static_cast<size_t>(k - 1)], 64) << k;
    }
    std::vector<int32_t> shorter(3, -0x40000000);
    ASSERT_EQ(vekStsNoErr, veksLagWindow_G729_32s_I(shorter.data(), 2));
    EXPECT_EQ(-0x40000000, shorter[2]);
    EXPECT_NEAR(-r[0], shorter[0], 4);
}

TEST(VekLagWindow, RefusesNullAndMoreThanTenLags) {
    int32_t r[11] = {};
    EXPECT_EQ(vekStsNullPtrErr, veksLagWindow_G729_32s_I(nullptr, 2));
    EXPECT_EQ(vekStsSizeErr, veksLagWindow_G729_32s_I(r, 0));
    EXPECT_EQ(vekStsSizeErr, veksLagWindow_G729_32s_I(r, 11));
}

TEST(VekMulPowerC, ExpandsTheBandwidth) {
    const Samples a = {4096, 4096, 4096, 4096};
    Samples y(4);
    ASSERT_EQ(vekStsNoErr, veksMulPowerC_NR_16s_Sfs(a.data(), 16384, y.data(), 4, 15));
    EXPECT_EQ((Samples{4096, 2048, 1024, 512}), y);
}

TEST(VekMulPowerC, RoundsEachPowerAndSaturatesWithEveryScale) {
    atEveryLevel([] {
        std::mt19937 random(14);
        for (const int scale : {0, 1, 8, 14, 15}) {
            for (const int val : {16, 29491, 24576, 32767, -32768, -20000, 0}) {
                for (const int len : {1, 2, 8, 9, 10, 11, 16, 17, 32, 64, 128}) {
                    const Samples a = noise(random, len, -32768, 32767);
                    Samples want(len);
                    want[0] = a[0];
                    int64_t power = val;
                    for (int i = 1; i < len; i++) {
                        want[i] = static_cast<int16_t>(clip(scaled(a[i] * power, scale), 16));
                        power = clip(scaled(power * val, scale), 16);
                    }
                    Samples y = a;
                    ASSERT_EQ(vekStsNoErr,
                              veksMulPowerC_NR_16s_Sfs(y.data(), static_cast<int16_t>(val), y.data(), len, scale));
                    ASSERT_EQ(want, y) << scale << " " << val << " " << len;
                }
            }
        }
    });
}

TEST(VekMulPowerC, RefusesNullLengthAndScale) {
    int16_t x[2] = {};
    expectNullsRefused(veksMulPowerC_NR_16s_Sfs, x, 1, x, 2, 15);
    EXPECT_EQ(vekStsSizeErr, veksMulPowerC_NR_16s_Sfs(x, 1, x, 0, 15));
    EXPECT_EQ(vekStsScaleRangeErr, veksMulPowerC_NR_16s_Sfs(x, 1, x, 2, 16));
}

} // namespace
