// Exact correlation sums over the kernels, for whatever form the caller stores them in.
#pragma once

#include <cstdint>

#include "sc/common/scratch.h"
#include "sc/kernels/corr.h"

namespace vek {

constexpr int kLagBlock = 256;

// put(k, sum) for k = 0..lags-1 with the exact sum of a[i] * b[i-k], i = k..len-1; lags from len on give 0.
// padA and padB are the vectors followed by kCorrPadding readable elements, zero behind a.
// Where the geometric mean of the energies stays below 2^31 no sum can leave 32 bits, and the quick kernel, which
// counts modulo 2^32, is exact.
template <typename Put>
void correlate(const int16_t* padA, const int16_t* padB, int len, int lags, Put put) {
    const CorrKernels& kernels = corrKernels();
    const auto energyA = static_cast<double>(kernels.dot16(padA, padA, len));
    const double energyB = padA == padB ? energyA : static_cast<double>(kernels.dot16(padB, padB, len));
    const bool fits = energyA * energyB < 4.6e18; // a little below 2^62
    const int own = lags < len ? lags : len;
    if (fits) {
        int32_t block[kLagBlock];
        for (int first = 0; first < own; first += kLagBlock) {
            const int count = own - first < kLagBlock ? own - first : kLagBlock;
            kernels.corr32(padA + first, padB, len - first, count, block);
            for (int k = 0; k < count; ++k) {
                put(first + k, static_cast<int64_t>(block[k]));
            }
        }
    } else {
        for (int k = 0; k < own; ++k) {
            put(k, kernels.dot16(padA + k, padB, len - k));
        }
    }
    for (int k = own; k < lags; ++k) {
        put(k, int64_t{0});
    }
}

} // namespace vek
