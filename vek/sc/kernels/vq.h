// Kernels of vector quantisers: the nearest row of a codebook.
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
    // First of the n rows (n a multiple of 8) of ten columns with the least sum of squares of the differences to the
    // target; pairs[(p * n + k) * 2] and the next one are the columns 2p and 2p + 1 of row k. Differences fit 16 bits,
    // sums 31.
    int (*nearest10)(const int16_t* pairs, int n, const int16_t* target);
    // The same for the sum over the columns of e * ((e * weight[j]) >> 11), where e is (rest[j] * (target[j] -
    // columns[j * n + k])) >> 15. Differences fit 16 bits, products and sums 31.
    int (*nearestWeighted)(const int16_t* columns, int n, int count, const int32_t* target, const int16_t* rest,
                           const int32_t* weight);
    // First of the n rows (n a multiple of 8) with the least sum over the columns of (target[j] - columns[j * n + k])^2
    // * weight[j], in two sums of every other column. No weight is negative.
    int (*nearest32f)(const float* columns, int n, int count, const float* target, const float* weight);
    // sum[j] = sum of weight[10 k + j] * previous[10 k + j], k = 0..3, j = 0..9; 32 bits suffice.
    void (*movingAverage10)(const int16_t* weight, const int16_t* previous, int32_t* sum);
};

VEK_KERNEL_PICK(VqKernels, vqKernels)

} // namespace vek
