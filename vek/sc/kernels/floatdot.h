// Kernels of inner products in single precision.
#pragma once

#include "sc/kernels/kernels.h"
#include "vekdefs.h"

namespace vek {

struct FloatDotKernels {
    // Sum of a[i] * b[i] in single precision, within 2^-20 of the sum of magnitudes.
    float (*dot32f)(const float* a, const float* b, int n);
    // The same; gives vekStsNoErr, for a public function to end with a jump to it.
    VekStatus (*dotTo32f)(const float* a, const float* b, int n, float* sum);
};

VEK_KERNEL_PICK(FloatDotKernels, floatDotKernels)

} // namespace vek
