// The saturating operators: all 16-bit values where one operand is free, edges where there are more.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "sc/common/fixmath.h"

namespace {

using namespace vek::fix;

constexpr int16_t kLo = -32768;
constexpr int16_t kHi = 32767;
constexpr int32_t kLo32 = INT32_MIN;
constexpr int32_t kHi32 = INT32_MAX;

int64_t clip(int64_t v, int bits) {
    const int64_t top = (int64_t{1} << (bits - 1)) - 1;
    return v > top ? top : v < -top - 1 ? -top - 1 : v;
}

const std::vector<int16_t> kEdges16 = {kLo, -32767, -16384, -4096, -2, -1, 0, 1, 2, 3, 4095, 16384, 32766, kHi};

std::vector<int32_t> edges32() {
    std::vector<int32_t> v = {kLo32, kLo32 + 1, -65536, -32769, -1, 0, 1, 32767, 65536, kHi32 - 1, kHi32};
    std::mt19937 gen(5);
    for (int i = 0; i < 100; i++) {
        v.push_back(static_cast<int32_t>(gen()));
    }
    return v;
}

// Constant expressions.
static_assert(add(kHi, 1) == kHi && sub(kLo, 1) == kLo && negate(kLo) == kHi && abs_s(kLo) == kHi);
static_assert(mult(kLo, kLo) == kHi && L_mult(kLo, kLo) == kHi32 && round_s(kHi32) == kHi);
static_assert(L_shl(1, 31) == kHi32 && L_shl(-1, 31) == kLo32 && L_shr(kLo32, 40) == -1);

TEST(FixMath, SumsAndProductsOfEverySixteenBitValueWithTheEdges) {
    for (int i = -32768; i <= 32767; i++) {
        const auto a = static_cast<int16_t>(i);
        for (const int16_t b : kEdges16) {
            ASSERT_EQ(clip(i + b, 16), add(a, b));
            ASSERT_EQ(clip(i - b, 16), sub(a, b));
            ASSERT_EQ(clip((int64_t{i} * b) >> 15, 16), mult(a, b));
            ASSERT_EQ(clip((int64_t{i} * b + 0x4000) >> 15, 16), mult_r(a, b));
            ASSERT_EQ(clip(int64_t{2} * i * b, 32), L_mult(a, b));
        }
        ASSERT_EQ(clip(-i, 16), negate(a));
        ASSERT_EQ(clip(i < 0 ? -i : i, 16), abs_s(a));
    }
}

TEST(FixMath, ShiftsOfEverySixteenBitValueByEveryCount) {
    for (int i = -32768; i <= 32767; i++) {
        const auto a = static_cast<int16_t>(i);
        for (int n = -20; n <= 20; n++) {
            const int64_t left = n >= 0 ? clip(int64_t{i} << n, 16) : i >> -n;
            const int64_t right = n >= 0 ? i >> n : clip(int64_t{i} << -n, 16);
            ASSERT_EQ(left, shl(a, n)) << i << " " << n;
            ASSERT_EQ(right, shr(a, n)) << i << " " << n;
            const int64_t rounded = n > 15 ? 0 : n > 0 ? (i + (1 << (n - 1))) >> n : right;
            ASSERT_EQ(rounded, shr_r(a, n)) << i << " " << n;
        }
    }
}

TEST(FixMath, NormOfEverySixteenBitValueFillsTheWord) {
    EXPECT_EQ(0, norm_s(0));
    EXPECT_EQ(15, norm_s(-1));
    for (int i = -32768; i <= 32767; i++) {
        if (i != 0) {
            const int filled = i << norm_s(static_cast<int16_t>(i));
            ASSERT_TRUE((filled >= 16384 && filled <= 32767) || (filled >= -32768 && filled < -16384)) << i;
        }
    }
}

TEST(FixMath, NormOfThirtyTwoBits) {
    EXPECT_EQ(0, norm_l(0));
    EXPECT_EQ(31, norm_l(-1));
    EXPECT_EQ(30, norm_l(1));
    EXPECT_EQ(0, norm_l(0x40000000));
    EXPECT_EQ(0, norm_l(kLo32));
    EXPECT_EQ(1, norm_l(0x3fffffff));
    EXPECT_EQ(62, norm_64(1));
    EXPECT_EQ(0, norm_64(INT64_MIN));
}

TEST(FixMath, ThirtyTwoBitOperatorsSaturateAtTheEdges) {
    const auto values = edges32();
    for (const int32_t a : values) {
        for (const int32_t b : values) {
            ASSERT_EQ(clip(int64_t{a} + b, 32), L_add(a, b));
            ASSERT_EQ(clip(int64_t{a} - b, 32), L_sub(a, b));
        }
        ASSERT_EQ(clip(-int64_t{a}, 32), L_negate(a));
        ASSERT_EQ(clip(a < 0 ? -int64_t{a} : a, 32), L_abs(a));
        ASSERT_EQ(clip(int64_t{a} + 0x8000, 32) >> 16, round_s(a));
        for (int n = 0; n <= 31; n++) {
            ASSERT_EQ(clip(int64_t{a} * (int64_t{1} << n), 32), L_shl(a, n));
            ASSERT_EQ(a >> n, L_shr(a, n));
            ASSERT_EQ(L_shl(a, n), L_shr(a, -n));
            ASSERT_EQ(n == 0 ? a : (int64_t{a} + (int64_t{1} << (n - 1))) >> n, L_shr_r(a, n));
        }
        ASSERT_EQ(0, L_shr_r(a, 32));
    }
}

TEST(FixMath, MultiplyAndAddSaturatesTheProductBeforeTheSum) {
    EXPECT_EQ(kHi32 - 1, L_mac(-1, kLo, kLo));
    EXPECT_EQ(kHi32, L_mac(1, kLo, kLo));
    EXPECT_EQ(-kHi32, L_msu(0, kLo, kLo));
    EXPECT_EQ(kLo32, L_msu(-100, kLo, kLo));
}

TEST(FixMath, QuotientIsCutOffInQ15) {
    EXPECT_EQ(0, div_s(0, 5));
    EXPECT_EQ(kHi, div_s(5, 5));
    EXPECT_EQ(10922, div_s(1, 3));
    EXPECT_EQ(21845, div_s(2, 3));
    EXPECT_EQ(kHi, div_s(6, 5));
    for (int num = 0; num < 200; num++) {
        for (int den = num + 1; den < 200; den++) {
            ASSERT_EQ((num << 15) / den, div_s(static_cast<int16_t>(num), static_cast<int16_t>(den)));
        }
    }
}

TEST(FixMath, DoublePrecisionFormatKeepsThirtyOneBits) {
    for (const int32_t a : edges32()) {
        int16_t hi = 0;
        int16_t lo = 0;
        L_Extract(a, hi, lo);
        ASSERT_GE(lo, 0);
        ASSERT_EQ(a & ~1, L_Comp(hi, lo));
    }
}

TEST(FixMath, DoublePrecisionProductsAreWithinFourOfTheExactOnes) {
    for (const int32_t a : edges32()) {
        for (const int32_t b : edges32()) {
            int16_t ah = 0;
            int16_t al = 0;
            int16_t bh = 0;
            int16_t bl = 0;
            L_Extract(a, ah, al);
            L_Extract(b, bh, bl);
            const double exact = 2.0 * a * b / 4294967296.0;
            if (exact < 2147483647.0) {
                ASSERT_NEAR(exact, Mpy_32(ah, al, bh, bl), 8) << a << " " << b;
            }
            ASSERT_NEAR(static_cast<double>(a) * bh / 32768.0, Mpy_32_16(ah, al, bh), bh == kLo ? 65536 : 4);
        }
    }
}

TEST(FixMath, WideSumsAreScaledBothWaysAndSaturate) {
    EXPECT_EQ(-2, scaleSat32(-3, 1));
    EXPECT_EQ(12, scaleSat32(3, -2));
    EXPECT_EQ(kHi32, scaleSat32(int64_t{1} << 40, 3));
    EXPECT_EQ(kHi32, scaleSat32(int64_t{1} << 62, -31));
    EXPECT_EQ(kLo32, scaleSat32(-(int64_t{1} << 62), -31));
    EXPECT_EQ(kHi, scaleSat16(32768, 0));
    EXPECT_EQ(kLo, scaleSat16(-65538, 1));
}

} // namespace
