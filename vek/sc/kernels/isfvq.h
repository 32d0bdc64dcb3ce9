// Kernels of the split quantisers of immittance spectra: distances to the rows of a codebook of few columns, and the
// spectrum from the columns of the rows chosen.
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"

namespace vek {

constexpr int kMostIsfPairs = 5;

// Columns of a spectrum, four in a word, the first one lowest; the prediction of a column by the residual before, Q15.
constexpr int kIsfColumns = 16;
constexpr int kIsfWords = kIsfColumns / 4;
constexpr int16_t kIsfPrediction = 10923; // 1/3

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
    // isf = the columns and the mean, modulo 2^16. All tell whether all but the last column, which is of another kind,
    // rise by at least the gap, the first one above zero; false where the last one but one is within the gap of the
    // largest value too.
    bool (*spectrum)(const uint64_t* columns, const int16_t* mean, int16_t gap, int16_t* isf);
    // The same of two rows of columns, their sum taken for the residual, with the prediction by the one before; isf
    // twice.
    bool (*predicted)(const uint64_t* columns, const uint64_t* more, const int16_t* mean, int16_t gap,
                      int16_t* residual, int16_t* isf, int16_t* again);
};

VEK_KERNEL_PICK(IsfVqKernels, isfVqKernels)

} // namespace vek
