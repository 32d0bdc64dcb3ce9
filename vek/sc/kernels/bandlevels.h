// Kernels of the levels of bands of a spectrum and of segments of a signal, the same integers at all levels of
// instructions.
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"

namespace vek {

// Bands, and lines that are read.
constexpr int kBandLevels = 16;
constexpr int kBandLines = 40;
// Samples of a segment.
constexpr int kLevelSegment = 10;

struct BandLevelKernels {
    // level[j] = 1/2 log2(p[2j] + 2 p[2j+1] + p[2j+2]), Q10, by tables, + offset, not below 0, where p is the power of
    // a line; 0 for lines without power. kBandLevels of kBandLines lines, of at most 2^30 in magnitude; levels have 16
    // bits.
    void (*bandLevels)(const int32_t* re, const int32_t* im, int offset, int16_t* level);
    // level[j] = 1/2 log2 of the energy of segment j, Q10, by tables, 0 for one of zeros, - less; levels have 16 bits.
    void (*segmentLevels)(const int16_t* x, int count, int less, int16_t* level);
};

VEK_KERNEL_PICK(BandLevelKernels, bandLevelKernels)

} // namespace vek
