// The rates of AMR in their order, and its two logarithms.
#pragma once

#include "sc/common/fixmath.h"
#include "sc/gsmamr/tables.h"
#include "vekdefs.h"

namespace vek::gsmamr {

// In the order of the rates, frames of silence last.
enum class Rate { R475, R515, R590, R670, R740, R795, R1020, R1220, Dtx, None };

constexpr Rate rateOf(VekSpchBitRate mode) {
    switch (mode) {
    case VEK_SPCHBR_4750:
        return Rate::R475;
    case VEK_SPCHBR_5150:
        return Rate::R515;
    case VEK_SPCHBR_5900:
        return Rate::R590;
    case VEK_SPCHBR_6700:
        return Rate::R670;
    case VEK_SPCHBR_7400:
        return Rate::R740;
    case VEK_SPCHBR_7950:
        return Rate::R795;
    case VEK_SPCHBR_10200:
        return Rate::R1020;
    case VEK_SPCHBR_12200:
        return Rate::R1220;
    case VEK_SPCHBR_DTX:
        return Rate::Dtx;
    default:
        return Rate::None;
    }
}

// Logarithm to the base 2 in whole part and fraction (Q15); both 0 for values below 1.
inline void log2Of(int32_t x, int16_t& whole, int16_t& fraction) {
    whole = 0;
    fraction = 0;
    if (x <= 0) {
        return;
    }
    const int norm = fix::norm_l(x);
    const int32_t mantissa = x << norm;
    const int place = (mantissa >> 25) - 32;
    const auto within = static_cast<int16_t>((mantissa >> 10) & 0x7fff);
    const auto step = static_cast<int16_t>(kLog2[place] - kLog2[place + 1]);
    whole = static_cast<int16_t>(30 - norm);
    fraction = fix::extract_h(fix::L_msu(fix::L_deposit_h(kLog2[place]), step, within));
}

// 2^(whole + fraction), rounded; the fraction is Q15, not negative.
inline int32_t pow2Of(int16_t whole, int16_t fraction) {
    const int place = fraction >> 10;
    const auto within = static_cast<int16_t>((fraction << 5) & 0x7fff);
    const auto step = static_cast<int16_t>(kPow2[place] - kPow2[place + 1]);
    const int32_t mantissa = fix::L_msu(fix::L_deposit_h(kPow2[place]), step, within);
    return fix::L_shr_r(mantissa, 30 - whole);
}

} // namespace vek::gsmamr
