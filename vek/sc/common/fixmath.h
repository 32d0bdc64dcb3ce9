// Saturating fixed-point arithmetic with the field's names: the one place where the library saturates.
// Constant expressions throughout; no overflow flag (who needs one compares with a wider sum).
// The names live in an inline namespace per instruction level, so that a function compiled for a wide unit is never
// taken by the linker for the plain one.
#pragma once

#include <bit>
#include <cstdint>

#include "sc/common/level_ns.h"

namespace vek::fix {

using namespace vek; // who takes these names takes the library's with them

inline namespace VEK_LEVEL_NS {

constexpr int32_t kMax32 = INT32_MAX;
constexpr int32_t kMin32 = INT32_MIN;

// Saturation of a wider value.
constexpr int16_t sat16(int32_t v) {
    return static_cast<int16_t>(v > 32767 ? 32767 : v < -32768 ? -32768 : v);
}
constexpr int16_t sat16_64(int64_t v) {
    return static_cast<int16_t>(v > 32767 ? 32767 : v < -32768 ? -32768 : v);
}
constexpr int32_t sat32(int64_t v) {
    return static_cast<int32_t>(v > kMax32 ? kMax32 : v < kMin32 ? kMin32 : v);
}

// 16 bits.
constexpr int16_t add(int16_t a, int16_t b) {
    return sat16(a + b);
}
constexpr int16_t sub(int16_t a, int16_t b) {
    return sat16(a - b);
}
constexpr int16_t abs_s(int16_t a) {
    return sat16(a < 0 ? -a : a);
}
constexpr int16_t negate(int16_t a) {
    return sat16(-a);
}
constexpr int16_t mult(int16_t a, int16_t b) {
    return sat16((a * b) >> 15);
}
constexpr int16_t mult_r(int16_t a, int16_t b) {
    return sat16((a * b + 0x4000) >> 15);
}

// Shifts; a negative count shifts the other way. Left saturates, right cuts off.
constexpr int16_t shr(int16_t a, int n);
constexpr int16_t shl(int16_t a, int n) {
    if (n < 0) {
        return shr(a, n < -16 ? 16 : -n);
    }
    if (n > 15) {
        return static_cast<int16_t>(a == 0 ? 0 : a > 0 ? 32767 : -32768);
    }
    return sat16(static_cast<int32_t>(a) * (1 << n));
}
constexpr int16_t shr(int16_t a, int n) {
    if (n < 0) {
        return shl(a, n < -16 ? 16 : -n);
    }
    return static_cast<int16_t>(a >> (n > 15 ? 15 : n));
}
constexpr int16_t shr_r(int16_t a, int n) {
    if (n > 15) {
        return 0;
    }
    if (n <= 0) {
        return shr(a, n);
    }
    return static_cast<int16_t>((a >> n) + ((a >> (n - 1)) & 1));
}

// 32 bits.
constexpr int32_t L_add(int32_t a, int32_t b) {
    return sat32(static_cast<int64_t>(a) + b);
}
constexpr int32_t L_sub(int32_t a, int32_t b) {
    return sat32(static_cast<int64_t>(a) - b);
}
constexpr int32_t L_negate(int32_t a) {
    return a == kMin32 ? kMax32 : -a;
}
constexpr int32_t L_abs(int32_t a) {
    return a < 0 ? L_negate(a) : a;
}
constexpr int32_t L_mult(int16_t a, int16_t b) {
    const int32_t p = a * b;
    return p == 0x40000000 ? kMax32 : p * 2;
}
constexpr int32_t L_mac(int32_t s, int16_t a, int16_t b) {
    return L_add(s, L_mult(a, b));
}
constexpr int32_t L_msu(int32_t s, int16_t a, int16_t b) {
    return L_sub(s, L_mult(a, b));
}
constexpr int32_t L_shr(int32_t a, int n);
constexpr int32_t L_shl(int32_t a, int n) {
    if (n < 0) {
        return L_shr(a, n < -32 ? 32 : -n);
    }
    if (n > 31) {
        return a == 0 ? 0 : a > 0 ? kMax32 : kMin32;
    }
    return sat32(static_cast<int64_t>(a) * (int64_t{1} << n));
}
constexpr int32_t L_shr(int32_t a, int n) {
    if (n < 0) {
        return L_shl(a, n < -32 ? 32 : -n);
    }
    return a >> (n > 31 ? 31 : n);
}
constexpr int32_t L_shr_r(int32_t a, int n) {
    if (n > 31) {
        return 0;
    }
    if (n <= 0) {
        return L_shr(a, n);
    }
    return (a >> n) + ((a >> (n - 1)) & 1);
}

// Halves.
constexpr int16_t extract_h(int32_t a) {
    return static_cast<int16_t>(a >> 16);
}
constexpr int16_t extract_l(int32_t a) {
    return static_cast<int16_t>(a & 0xffff);
}
constexpr int32_t L_deposit_h(int16_t a) {
    return static_cast<int32_t>(a) * 65536;
}
constexpr int16_t round_s(int32_t a) {
    return extract_h(L_add(a, 0x8000));
}
constexpr int16_t mac_r(int32_t s, int16_t a, int16_t b) {
    return round_s(L_mac(s, a, b));
}

// Number of left shifts until the value fills its word; 0 for 0.
constexpr int16_t norm_s(int16_t a) {
    const auto m = static_cast<uint16_t>(a < 0 ? ~a : a);
    return static_cast<int16_t>(a == 0 ? 0 : std::countl_zero(m) - 1);
}
constexpr int16_t norm_l(int32_t a) {
    const auto m = static_cast<uint32_t>(a < 0 ? ~a : a);
    return static_cast<int16_t>(a == 0 ? 0 : std::countl_zero(m) - 1);
}
constexpr int norm_64(int64_t a) {
    const auto m = static_cast<uint64_t>(a < 0 ? ~a : a);
    return a == 0 ? 0 : std::countl_zero(m) - 1;
}

// Q15 quotient for 0 <= num <= den, den > 0, cut off; 32767 for equal ones and for arguments outside.
constexpr int16_t div_s(int16_t num, int16_t den) {
    if (num == 0) {
        return 0;
    }
    if (den <= 0 || num < 0 || num >= den) {
        return 32767;
    }
    return static_cast<int16_t>((static_cast<int32_t>(num) << 15) / den);
}

// Double precision format: value = hi * 2^16 + lo * 2.
constexpr void L_Extract(int32_t a, int16_t& hi, int16_t& lo) {
    hi = extract_h(a);
    lo = extract_l(L_msu(L_shr(a, 1), hi, 16384));
}
constexpr int32_t L_Comp(int16_t hi, int16_t lo) {
    return L_mac(L_deposit_h(hi), lo, 1);
}
constexpr int32_t Mpy_32(int16_t hi1, int16_t lo1, int16_t hi2, int16_t lo2) {
    int32_t p = L_mult(hi1, hi2);
    p = L_mac(p, mult(hi1, lo2), 1);
    return L_mac(p, mult(lo1, hi2), 1);
}
constexpr int32_t Mpy_32_16(int16_t hi, int16_t lo, int16_t n) {
    return L_mac(L_mult(hi, n), mult(lo, n), 1);
}

// The same products of the values themselves.
constexpr int32_t Mpy_32(int32_t a, int32_t b) {
    int16_t hi[2] = {};
    int16_t lo[2] = {};
    L_Extract(a, hi[0], lo[0]);
    L_Extract(b, hi[1], lo[1]);
    return Mpy_32(hi[0], lo[0], hi[1], lo[1]);
}
constexpr int32_t Mpy_32_16(int32_t a, int16_t n) {
    int16_t hi = 0;
    int16_t lo = 0;
    L_Extract(a, hi, lo);
    return Mpy_32_16(hi, lo, n);
}

// A wide sum times 2^-scale, cut off (a negative scale multiplies), saturated; scale -31..31.
constexpr int64_t scale64(int64_t v, int scale) {
    if (scale >= 0) {
        return v >> scale;
    }
    if (v == 0) {
        return 0;
    }
    if (norm_64(v) < -scale) {
        return v > 0 ? INT64_MAX : INT64_MIN;
    }
    return v * (int64_t{1} << -scale);
}
constexpr int32_t scaleSat32(int64_t v, int scale) {
    return sat32(scale64(v, scale));
}
constexpr int16_t scaleSat16(int64_t v, int scale) {
    return sat16_64(scale64(v, scale));
}

} // namespace VEK_LEVEL_NS
} // namespace vek::fix
