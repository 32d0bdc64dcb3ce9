// Kernels of floating signals: correlations over a run of delays, and the all-pole recursion.
// Fixed point has its own in corr.h and filter.h.
#pragma once

#include "sc/kernels/kernels.h"

namespace vek {

struct FloatCorrKernels {
    // out[k] = sum of x[i] * y[i+k], i = 0..n-1, for k = 0..lags-1; y[0..n+lags-2] is read. Sums in the output's type.
    void (*corr32f)(const float* x, const float* y, int n, int lags, float* out);
    void (*corr32f64f)(const float* x, const float* y, int n, int lags, double* out);
    // y[i] -= sum of a[j] * y[i-j], j = 1..order; y[-order..-1] is read. n is a multiple of 8.
    void (*allPole32f)(const float* a, int order, float* y, int n);
};

VEK_KERNEL_PICK(FloatCorrKernels, floatCorrKernels)

} // namespace vek
