// Which of the library's rates are those of GSM AMR.
#pragma once

#include "sc/gsmamr/sizes.h"
#include "vekdefs.h"

namespace vek::gsmamr {

constexpr bool isRate(VekSpchBitRate mode) {
    switch (mode) {
    case VEK_SPCHBR_4750:
    case VEK_SPCHBR_5150:
    case VEK_SPCHBR_5900:
    case VEK_SPCHBR_6700:
    case VEK_SPCHBR_7400:
    case VEK_SPCHBR_7950:
    case VEK_SPCHBR_10200:
    case VEK_SPCHBR_12200:
        return true;
    default:
        return false;
    }
}

constexpr bool isRateOrDtx(VekSpchBitRate mode) {
    return isRate(mode) || mode == VEK_SPCHBR_DTX;
}

constexpr bool isSubframe(int subFrame) {
    return subFrame >= 0 && subFrame < kSubframes;
}

} // namespace vek::gsmamr
