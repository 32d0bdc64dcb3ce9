// Logarithm and power of 2 of the fixed-point recommendations (G.729, TS 26.090): tables of 33 entries, interpolated.
#pragma once

#include <cstdint>

#include "sc/common/fixmath.h"

namespace vek::fix {
inline namespace VEK_LEVEL_NS {

// The fraction of log2 and half of 2^x at multiples of 1/32, Q15.
constexpr int16_t kLog2Table[33] = {
    0,     1455,  2866,  4236,  5568,  6863,  8124,  9352,  10549, 11716, 12855,
    13967, 15054, 16117, 17156, 18172, 19167, 20142, 21097, 22033, 22951, 23852,
    24735, 25603, 26455, 27291, 28113, 28922, 29716, 30497, 31266, 32023, 32767,
};
constexpr int16_t kPow2Table[33] = {
    16384, 16743, 17109, 17484, 17867, 18258, 18658, 19066, 19484, 19911, 20347,
    20792, 21247, 21713, 22188, 22674, 23170, 23678, 24196, 24726, 25268, 25821,
    26386, 26964, 27554, 28158, 28774, 29405, 30048, 30706, 31379, 32066, 32767,
};

// log2(x) = exponent + fraction / 2^15; 0 for x <= 0.
constexpr void Log2(int32_t x, int16_t& exponent, int16_t& fraction) {
    if (x <= 0) {
        exponent = 0;
        fraction = 0;
        return;
    }
    const int16_t shift = norm_l(x);
    const int32_t y = x << shift;
    const int i = (y >> 25) - 32;
    const int part = (y >> 10) & 0x7fff;
    const int32_t value = kLog2Table[i] * 65536 - (kLog2Table[i] - kLog2Table[i + 1]) * part * 2;
    exponent = static_cast<int16_t>(30 - shift);
    fraction = extract_h(value);
}

// log2(x), Q15, for x > 0, by its 31 leading bits.
constexpr int32_t log2Q15(int64_t x) {
    const int shift = norm_64(x);
    const int64_t y = x << shift;
    const auto i = (y >> 57) - 32;
    const auto part = static_cast<int32_t>((y >> 42) & 0x7fff);
    const int32_t below = kLog2Table[i];
    const int32_t fraction = (below * 65536 - (below - kLog2Table[i + 1]) * part * 2) >> 16;
    return (62 - shift) * 32768 + fraction;
}

// 2^(exponent + fraction / 2^15), rounded; the fraction is 0..32767, the exponent at most 30.
constexpr int32_t Pow2(int exponent, int16_t fraction) {
    const int i = fraction >> 10;
    const int part = (fraction & 0x3ff) << 5;
    // i is 0..31, as the fraction is no less than 0.
    // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult)
    const int32_t value = kPow2Table[i] * 65536 - (kPow2Table[i] - kPow2Table[i + 1]) * part * 2;
    return L_shr_r(value, 30 - exponent);
}

} // namespace VEK_LEVEL_NS
} // namespace vek::fix
