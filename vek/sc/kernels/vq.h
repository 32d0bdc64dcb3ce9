// Kernels of vector quantisers: the nearest row of a codebook of four 16-bit columns.
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"

namespace vek {

struct VqKernels {
    // First of the n rows (n a multiple of 8) with the least sum of t[j] * t[j], where t[j] is
    // (weight[j] * d[j]) >> 15 and d[j] the saturated difference target[j] - row[j], in the Sum form target[j] +
    // row[j]. *least receives the sum, 32 bits without sign. A weight is above -32768.
    int (*nearest4)(const int16_t* rows, int n, const int16_t* target, const int16_t* weight, uint32_t* least);
    int (*nearest4Sum)(const int16_t* rows, int n, const int16_t* target, const int16_t* weight, uint32_t* least);
};

VEK_KERNEL_PICK(VqKernels, vqKernels)

} // namespace vek
