// The rates of AMR-WB in their order, and the sizes that its functions share.
#pragma once

#include "sc/common/fixmath.h"
#include "vekdefs.h"

namespace vek::amrwb {

using namespace fix;

constexpr int kOrder = 16;
constexpr int kFrame = 256;
constexpr int kSubframe = kFrame / 4;

enum class Rate { R660, R885, R1265, R1425, R1585, R1825, R1985, R2305, R2385, None };

// Frames of silence count as the highest rate.
constexpr Rate rateOf(VekSpchBitRate mode) {
    switch (mode) {
    case VEK_SPCHBR_6600:
        return Rate::R660;
    case VEK_SPCHBR_8850:
        return Rate::R885;
    case VEK_SPCHBR_12650:
        return Rate::R1265;
    case VEK_SPCHBR_14250:
        return Rate::R1425;
    case VEK_SPCHBR_15850:
        return Rate::R1585;
    case VEK_SPCHBR_18250:
        return Rate::R1825;
    case VEK_SPCHBR_19850:
        return Rate::R1985;
    case VEK_SPCHBR_23050:
        return Rate::R2305;
    case VEK_SPCHBR_23850:
    case VEK_SPCHBR_DTX:
        return Rate::R2385;
    default:
        return Rate::None;
    }
}

} // namespace vek::amrwb
