// Exact correlation sums over the kernels, for whatever form the caller stores them in.
#pragma once

#include <cstdint>

#include "sc/common/level_ns.h"
#include "sc/common/scratch.h"
#include "sc/kernels/corr.h"

namespace vek {

constexpr int kLagBlock = 256;

template <typename Put>
[[gnu::noinline]] void putWide(const int16_t* a, const int16_t* b, int len, int first, int count, const Put& put) {
    int64_t sums[kLagBlock];
    for (int k = 0; k < count; ++k) {
        sums[k] = first + k < len ? corrKernels().dot16(a + first + k, b, len - first - k) : 0;
    }
    put(first, static_cast<const int64_t*>(sums), count);
}

// put(first, sums, count) with the exact sums of a[i] * b[i-k], i = k..len-1, of k from `first` on, until all of
// 0..lags-1 have been given; lags from len on give 0. The sums have 32 bits where these hold all of them:
// narrow(first, count, block) then gives them and tells so.
template <typename Narrow, typename Put>
VEK_INLINE void correlateBy(const int16_t* a, const int16_t* b, int len, int lags, Narrow narrow, Put put) {
    for (int first = 0; first < lags; first += kLagBlock) {
        const int count = lags - first < kLagBlock ? lags - first : kLagBlock;
        int32_t sums[kLagBlock];
        if (first + count <= len && narrow(first, count, sums)) {
            put(first, static_cast<const int32_t*>(sums), count);
            continue;
        }
        putWide(a, b, len, first, count, put);
    }
}

// The same of vectors followed by kCorrPadding readable elements, zero behind a.
template <typename Put>
void correlate(const int16_t* padA, const int16_t* padB, int len, int lags, Put put) {
    const CorrKernels& kernels = corrKernels();
    // Whole registers are looked at quicker than less, and padding is none too large, if not zero.
    const int whole = len < kCorrPadding ? kCorrPadding : (len + 15) & ~15;
    const bool fits = kernels.sumsFit16(padA, padB, whole);
    correlateBy(
        padA, padB, len, lags,
        [=, &kernels](int first, int count, int32_t* block) {
            if (fits) {
                kernels.corr32(padA + first, padB, len - first, count, block);
            }
            return fits;
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
VEK_INLINE bool correlateAlone(const int16_t* a, const int16_t* b, int len, int lags, Put put) {
    if (len - lags < kCorrInside) {
        return correlateCopies(a, b, len, lags, put);
    }
    correlateBy(
        a, b, len, lags,
        [=](int first, int count, int32_t* block) {
            return corrKernels().corrInside32(a + first, b, len - first, count, block);
        },
        put);
    return true;
}

// store(n, sum) with the exact sum of x[i] * h[n-i], i = 0..n, of n = 0..len-1: the correlation with one of them
// reversed. False without memory for copies.
template <typename Store>
bool convolve(const int16_t* x, const int16_t* h, int len, Store store) {
    const Scratch16 a(h, len, kCorrPadding, true);
    const Scratch16 b(x, len, kCorrPadding);
    if (a.data() == nullptr || b.data() == nullptr) {
        return false;
    }
    correlate(a.data(), b.data(), len, len, [&](int first, const auto* sums, int count) {
        for (int k = 0; k < count; ++k) {
            store(len - 1 - first - k, sums[k]);
        }
    });
    return true;
}

struct MostOfSlide {
    int64_t sum;
    int at;
};

// The largest sum of a[i] * b[i + step * k], i = 0..n-1, of k = 0..count-1, step 1 or -1, and the first k that has it.
inline MostOfSlide mostOfSlide(const int16_t* a, const int16_t* b, int n, int step, int count) {
    const CorrKernels& kernels = corrKernels();
    int32_t narrow;
    int at;
    if (kernels.slideMost16(a, b, n, step, count, &narrow, &at)) {
        return {narrow, at};
    }
    MostOfSlide most{kernels.dot16(a, b, n), 0};
    for (int k = 1; k < count; ++k) {
        const int64_t sum = kernels.dot16(a, b + step * k, n);
        if (sum > most.sum) {
            most = {sum, k};
        }
    }
    return most;
}

} // namespace vek
