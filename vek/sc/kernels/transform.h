// Kernels of the 16-bit transforms: cosine transform of type IV and the real Fourier transforms of 128 and 64 samples.
// Their tables are computed once, at load (transform_tables.cpp); Q30.
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"

namespace vek {

// Tables of a complex transform of 8 * M points, with rotations before and after it.
template <int M>
struct TransformTable {
    alignas(32) int32_t preRe[8 * M];
    alignas(32) int32_t preIm[8 * M];
    alignas(32) int32_t twiddleRe[8 * M]; // exp(-2 pi j n2 k1 / (8 M)) at [8 * k1 + n2]
    alignas(32) int32_t twiddleIm[8 * M];
    alignas(32) int32_t postRe[8 * M];
    alignas(32) int32_t postIm[8 * M];
};

extern const TransformTable<10> g_dct160;
extern const TransformTable<20> g_dct320;
extern const TransformTable<40> g_dct640;
extern const TransformTable<8> g_fft128;
extern const TransformTable<4> g_fft64;

// A rising half of a window in Q30 as the fold of the forward transform takes it: for each of 160 sums the weights of
// its two samples with their signs, split at kFoldBits.
inline constexpr int kFoldBits = 15;
struct FoldWeights {
    alignas(32) int16_t upper[320];
    alignas(32) int16_t lower[320];
};

struct TransformKernels {
    // Orthonormal cosine transforms of type IV; dst may be src.
    void (*dct320)(const int16_t* src, int16_t* dst);
    void (*dct640)(const int16_t* src, int16_t* dst);
    // In place, divided by 128, permuted: re 0, re 64, re 1, im 1, ...
    void (*fft128)(int16_t* srcDst);
    // Lines 0..31 of the Fourier transform of w[n] * x[n] + w[n+64] * x[n+64], n = 0..63, times 2^shift and below 2^30;
    // the shift is returned. Of 128 samples and a window below 32768.
    int (*foldedFft64)(const int16_t* x, const int16_t* w, int32_t* re, int32_t* im);
    // Lapped transform of 160 coefficients under a window of 320. Forward: the coefficients are u[k] * 2^(excess - 30),
    // below 2^30; returns the excess. Backward: w is the window's rising half, Q30, and u is overwritten; y[n] =
    // previous[n] plus the first half and previous[n] = the second half of the frame, each times 2^-(30 + shift),
    // rounded and saturated. |u| is below 2^27, shift -4..26.
    int (*mdct160)(const int16_t* fresh, const int16_t* old, const FoldWeights& w, int32_t* u);
    void (*mdctInverse160)(int32_t* u, int16_t* previous, const int32_t* w, int shift, int16_t* y);
    // y[k] = x[k] / 2^shift, rounded and saturated; shift above 0.
    void (*narrow)(const int32_t* x, int n, int shift, int16_t* y);
    // Largest magnitude.
    int32_t (*largest)(const int32_t* x, int n);
};

VEK_KERNEL_PICK(TransformKernels, transformKernels)

} // namespace vek
