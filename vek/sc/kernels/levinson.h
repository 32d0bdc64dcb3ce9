// Kernel of the recursion of linear prediction in floating point.
#pragma once

#include "sc/kernels/kernels.h"

namespace vek {

constexpr int kMostLevinson = 32;

struct LevinsonKernels {
    // The reflections rc[0..order-1] and the predictor a[0] = 1, a[1..order] of the autocorrelation r[0..order], and
    // what is left of its r[0]; the same floats at all levels. False, and nothing is written, where nothing is left.
    bool (*levinson32f)(const float* r, int order, float* a, float* rc, float* error);
};

VEK_KERNEL_PICK(LevinsonKernels, levinsonKernels)

} // namespace vek
