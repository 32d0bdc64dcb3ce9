// The rates of AMR in their order.
#pragma once

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

} // namespace vek::gsmamr
