// Kernels of the hybrid windows of backward prediction: blocks of samples brought to one scale, and the two parts of
// the autocorrelation.
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"

namespace vek {

constexpr int kHybridBlock = 5;
// Samples that a window has at most, and orders that it may have.
constexpr int kHybridSpan = 160;
constexpr int kLeastHybridOrder = 7;

struct HybridKernels {
    // `blocks` blocks of kHybridBlock samples, 8 or more samples in all, each block with its left shifts, 0..15, as
    // samples with those that the loudest one allows, which are returned; 30 for silence.
    int (*align)(const int16_t* samples, const int16_t* shifts, int blocks, int16_t* out);
    // Of x[n] = samples[n] * window[n] in Q15, rounded, n = 0..order+frame+newest-1: sums of x[n] * x[n-k], k =
    // 0..order, over the `frame` samples behind the first `order` ones, and over the `newest` ones behind these; exact.
    // The frame is even, a window has no -32768.
    void (*correlate)(const int16_t* samples, const int16_t* window, int order, int frame, int newest,
                      int64_t* frameSums, int64_t* newestSums);
};

VEK_KERNEL_PICK(HybridKernels, hybridKernels)

} // namespace vek
