// Halving and doubling the rate of a frame that stands behind its past.
#pragma once

#include "sc/amrwbe/resamplebanks.h"

namespace vek {

// x: 24 samples of the past, then 2 * n of the frame.
inline void halveRate(const int16_t* x, int16_t* y, int n, int band) {
    resampleKernels().exact(halfBandDown(band), 0, x + 2, y, n);
}

// x: 12 samples of the past, then n / 2 of the frame.
inline void doubleRate(const int16_t* x, int16_t* y, int n, int band) {
    resampleKernels().exact(halfBandUp(band), 0, x + 1, y, n);
}

constexpr int kHalvePast = 24;
constexpr int kDoublePast = 12;

} // namespace vek
