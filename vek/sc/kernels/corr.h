// Kernels of inner products and correlations of 16 bits, of searches through delays and of vector scaling.
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"
#include "vekdefs.h"

namespace vek {

// Elements that must be readable behind the vectors of CorrKernels::corr32; those of `a` must be zero.
constexpr int kCorrPadding = 32;
// Elements by which the vectors of CorrKernels::corrInside32 are longer than the lags are many, and least of others.
constexpr int kCorrInside = 32;

// Longest response of CorrKernels::delayed16.
constexpr int kDelayedResponse = 64;

struct CorrKernels {
    // Exact sum of a[i] * b[i].
    int64_t (*dot16)(const int16_t* a, const int16_t* b, int n);
    // The same, saturated; gives vekStsNoErr, for a public function to end with a jump to it.
    VekStatus (*dotSaturated16)(const int16_t* a, const int16_t* b, int n, int32_t* sum);
    // out[k] = sum of a[i] * b[i-k], i = k..n-1, modulo 2^32, for k = 0..lags-1 (lags <= n). Padding: see above.
    void (*corr32)(const int16_t* a, const int16_t* b, int n, int lags, int32_t* out);
    // The same without padding, where n - lags is kCorrInside or more. False, and nothing is made, where the energies
    // leave it open whether a sum fits 32 bits.
    bool (*corrInside32)(const int16_t* a, const int16_t* b, int n, int lags, int32_t* out);
    // sums[k] = sum of a[i] * b[i + step * k], i = 0..n-1, of k = 0..count-1, step 1 or -1. False where the energies
    // leave it open whether twice a sum, or a part of it, fits 32 bits.
    bool (*slide16)(const int16_t* a, const int16_t* b, int n, int step, int count, int32_t* sums);
    // The largest of these, which alone have to fit, and the first k that has it.
    bool (*slideMost16)(const int16_t* a, const int16_t* b, int n, int step, int count, int32_t* most, int* at);
    // Whether the energies show that no sum of products of two vectors of n, nor of some of them, leaves 32 bits.
    bool (*sumsFit16)(const int16_t* a, const int16_t* b, int n);
    // The sums with the target and of the squares of `count` responses of n samples, 40 or 64: that to the first delay
    // is y, and each has a sample more of the past in it, y[j] = sat16(y[j-1] + sat16((past[-k] * h[j]) >> q)), y[-1] =
    // 0, k = 0.. False where the energies leave it open whether twice a sum fits 32 bits.
    bool (*delayed16)(const int16_t* past, const int16_t* h, int q, const int16_t* y, const int16_t* target, int n,
                      int count, int32_t* cross, int32_t* energy);
    // Exact sums of x[i] * y[i] and of the squares of y, for n from kCorrInside on. False where the energies leave it
    // open whether twice a sum, or a part of it, plus one fits 32 bits.
    bool (*gainSums16)(const int16_t* x, const int16_t* y, int n, int32_t* xy, int32_t* yy);
    // Bits that differ from the sign in any element, ored together.
    int (*usedBits16)(const int16_t* a, int n);
    // dst[i] = src[i] shifted, positive to the left without saturation, -15..15.
    void (*shift16)(const int16_t* src, int16_t* dst, int n, int shift);
    // dst[i] = mult_r(src[i], window[i]).
    void (*window16)(const int16_t* src, const int16_t* window, int16_t* dst, int n);
};

VEK_KERNEL_PICK(CorrKernels, corrKernels)

} // namespace vek
