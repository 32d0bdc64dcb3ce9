// Kernels of the split quantisers of immittance spectra: distances to the rows of a codebook of few columns.
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"

namespace vek {

constexpr int kMostIsfPairs = 5;

// The book's columns stand in pairs, [pairs][rows][2], the target likewise in 2 * pairs elements. rows is a multiple of
// 8. Differences must fit in 16 bits and the sums of their squares in 31.
struct IsfVqKernels {
    // out[row] = sum over the columns of (target - row)^2
    void (*distances)(const int16_t* book, int rows, int pairs, const int16_t* target, int32_t* out);
    // The first row with the least distance, which *least receives.
    int (*nearest)(const int16_t* book, int rows, int pairs, const int16_t* target, int32_t* least);
};

VEK_KERNEL_PICK(IsfVqKernels, isfVqKernels)

} // namespace vek
