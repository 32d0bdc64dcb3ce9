// Kernels of the split quantisers of immittance spectra: distances to the rows of a codebook of few columns.
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"

namespace vek {

constexpr int kMostIsfPairs = 5;

// Distances saturate here, as their doubles would in 32 bits.
constexpr int32_t kFarthest = 1 << 30;

// The book's columns stand in pairs, [pairs][rows][2], the target likewise in 2 * pairs elements. rows is a multiple of
// 8. A distance is the sum over the columns of (target - row)^2. The plain forms are for targets whose differences fit
// in 16 bits and whose sums stay below kFarthest; in the other forms, for any targets, both saturate.
struct IsfVqKernels {
    using Distances = void(const int16_t* book, int rows, int pairs, const int16_t* target, int32_t* out);
    // Gives the first row with the least distance, which *least receives.
    using Nearest = int(const int16_t* book, int rows, int pairs, const int16_t* target, int32_t* least);

    Distances* distances;
    Distances* distancesFar;
    Nearest* nearest;
    Nearest* nearestFar;
};

VEK_KERNEL_PICK(IsfVqKernels, isfVqKernels)

} // namespace vek
