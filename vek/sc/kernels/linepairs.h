// Kernels of the search for line spectral pairs.
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"

namespace vek {

struct LinePairKernels {
    // y[k] = Chebyshev series of f at x[k], Q10 with saturation, n points (a multiple of 8): Clenshaw's recursion over
    // f[0..5], Q10, f[0] = 1.0, whose terms (Q24) fit 32 bits; x in Q15, products of split words.
    void (*series5)(const int16_t* x, int n, const int64_t* f, int16_t* y);
};

VEK_KERNEL_PICK(LinePairKernels, linePairKernels)

} // namespace vek
