// Exact correlation sums over the kernels, for whatever form the caller stores them in.
#pragma once

#include <cstdint>

#include "sc/common/scratch.h"
#include "sc/kernels/corr.h"
#include "sc/kernels/loops.h"

namespace vek {

constexpr int kLagBlock = 256;

// Where the geometric mean of the energies stays below 2^31 no sum of products of two vectors, nor of some of them, can
// leave 32 bits.
inline bool sumsFit(double energyA, double energyB) {
    return energyA * energyB < 4.6e18; // a little below 2^62
}

// put(k, sum) for k = 0..lags-1 with the exact sum of a[i] * b[i-k], i = k..len-1; lags from len on give 0.
// Where no sum can leave 32 bits, sums(first, count, block) gives these, which may count modulo 2^32.
template <typename Sums, typename Put>
void correlateBy(const int16_t* a, const int16_t* b, int len, int lags, Sums sums, Put put) {
    const CorrKernels& kernels = corrKernels();
    const auto energyA = static_cast<double>(kernels.dot16(a, a, len));
    const double energyB = a == b ? energyA : static_cast<double>(kernels.dot16(b, b, len));
    const int own = lags < len ? lags : len;
    if (sumsFit(energyA, energyB)) {
        int32_t block[kLagBlock];
        for (int first = 0; first < own; first += kLagBlock) {
            const int count = own - first < kLagBlock ? own - first : kLagBlock;
            sums(first, count, block);
            for (int k = 0; k < count; ++k) {
                put(first + k, static_cast<int64_t>(block[k]));
            }
        }
    } else {
        for (int k = 0; k < own; ++k) {
            put(k, kernels.dot16(a + k, b, len - k));
        }
    }
    for (int k = own; k < lags; ++k) {
        put(k, int64_t{0});
    }
}

// The same of vectors followed by kCorrPadding readable elements, zero behind a.
template <typename Put>
void correlate(const int16_t* padA, const int16_t* padB, int len, int lags, Put put) {
    correlateBy(
        padA, padB, len, lags,
        [=](int first, int count, int32_t* block) {
            corrKernels().corr32(padA + first, padB, len - first, count, block);
        },
        put);
}

// The same of vectors with nothing behind them, by copies. False without memory for these.
template <typename Put>
[[gnu::noinline]] bool correlateCopies(const int16_t* a, const int16_t* b, int len, int lags, Put put) {
    const Scratch16 padA(a, len, kCorrPadding);
    const Scratch16 padB(b, len, kCorrPadding);
    if (padA.data() == nullptr || padB.data() == nullptr) {
        return false;
    }
    correlate(padA.data(), a == b ? padA.data() : padB.data(), len, lags, put);
    return true;
}

// The same without copies where the lags are few.
template <typename Put>
bool correlateAlone(const int16_t* a, const int16_t* b, int len, int lags, Put put) {
    if (len - lags < kCorrInside) {
        return correlateCopies(a, b, len, lags, put);
    }
    correlateBy(
        a, b, len, lags,
        [=](int first, int count, int32_t* block) {
            corrKernels().corrInside32(a + first, b, len - first, count, block);
        },
        put);
    return true;
}

// take(k, sum) for k = 0..count-1 with the exact sum of a[i] * b[i + step * k], i = 0..n-1, step 1 or -1.
template <typename Take>
void slide(const int16_t* a, const int16_t* b, int n, int step, int count, Take take) {
    const CorrKernels& kernels = corrKernels();
    const int16_t* const lowest = step < 0 ? b - (count - 1) : b;
    const auto energyA = static_cast<double>(kernels.dot16(a, a, n));
    const auto energyB = static_cast<double>(kernels.dot16(lowest, lowest, n + count - 1));
    if (!sumsFit(energyA, energyB)) {
        for (int k = 0; k < count; ++k) {
            take(k, kernels.dot16(a, b + step * k, n));
        }
        return;
    }
    constexpr int block = 64;
    int32_t sums[block];
    for (int first = 0; first < count; first += block) {
        const int own = count - first < block ? count - first : block;
        loopKernels().slide16(a, b + step * first, n, step, own, sums);
        for (int k = 0; k < own; ++k) {
            take(first + k, int64_t{sums[k]});
        }
    }
}

} // namespace vek
