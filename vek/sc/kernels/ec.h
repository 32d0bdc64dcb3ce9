// Kernels of echo cancellation: learning filters of the full band, filters of subbands in 32-bit complex numbers, the
// subband transforms. Decisions and states are the room sc/ec's.
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"
#include "vekdefs.h"

namespace vek {

constexpr int kMaxFoldPoints = 64;

struct EcKernels {
    // c[j] += g * x[j]; the sum of c[j] * x[j+1] with the new c.
    float (*learn32f)(float* c, const float* x, int n, float g);
    // c[j] = sat16(c[j] + ((f * x[j] + half) >> shift)), shift 0..30.
    void (*learn16)(int16_t* c, const int16_t* x, int n, int f, int shift);
    // dst[k] = sat32((sum of x[s][k] * c[s][k]) * 2^-scale) for k = first..len-1; the sum wraps in 64 bits.
    void (*firLow)(const Vek32sc* const* x, const Vek32sc* const* c, int segments, int first, int len, int scale,
                   Vek32sc* dst);
    // The same with an exact sum, from 0 on.
    void (*firWide)(const Vek32sc* const* x, const Vek32sc* const* c, int segments, int len, int scale, Vek32sc* dst);
    // c[k] += conj(x[k]) * p[k] >> shift, shift 1..31: cut off and wrapped, or rounded and saturated (no part of p is
    // then the most negative number).
    void (*learnLow)(const Vek32sc* x, const Vek32sc* p, Vek32sc* c, int len, int shift);
    void (*learnSat)(const Vek32sc* x, const Vek32sc* p, Vek32sc* c, int len, int shift);
    // dst[k] = step[k] * error[k] * 2^-15: rounded and saturated to +-(2^31 - 1), so that a sum of two products by it
    // fits 64 bits, or cut off and wrapped.
    void (*stepsSat)(const int32_t* step, const Vek32sc* error, Vek32sc* dst, int len);
    void (*stepsLow)(const int32_t* step, const Vek32sc* error, Vek32sc* dst, int len);
    // dst[k] = step[k] * error[k], of products in double precision.
    void (*steps32fc)(const double* step, const Vek32fc* error, Vek32fc* dst, int len);
    // c[k] += conj(x[k]) * g[k]
    void (*learn32fc)(const Vek32fc* x, const Vek32fc* g, Vek32fc* c, int len);
    // dst[j] = src[n - 1 - j], apart from each other.
    void (*turn16)(const int16_t* src, int16_t* dst, int n);
    void (*turn32f)(const float* src, float* dst, int n);
};

VEK_KERNEL_PICK(EcKernels, ecKernels)

// order is 5 or 6; windowLen a multiple of the points, n = 2^order.
struct FoldKernels {
    // spectrum[0..n/2] = forward transform of the fold of x * w.
    void (*analyse32f)(int order, const float* x, const float* w, int windowLen, float* fold, Vek32fc* spectrum);
    void (*analyse64f)(int order, const double* x, const double* w, int windowLen, double* fold, Vek64fc* spectrum);
    // sum[i] += w[i] * backward transform [i mod n], without factor.
    void (*synthesise32f)(int order, const Vek32fc* spectrum, const float* w, int windowLen, float* fold, float* sum);
    void (*synthesise64f)(int order, const Vek64fc* spectrum, const double* w, int windowLen, double* fold,
                          double* sum);
    // dst[i] = src[i] * factor to the nearest, saturated.
    void (*round32)(const double* src, double factor, int32_t* dst, int n);
    void (*round16)(const double* src, double factor, int16_t* dst, int n);
    void (*widen16)(const int16_t* src, double* dst, int n);
    void (*widen32)(const int32_t* src, double factor, double* dst, int n);
};

VEK_KERNEL_PICK(FoldKernels, foldKernels)

// Rotations for 2^order points of a real transform, computed at load.
template <typename T>
struct FoldTable {
    alignas(32) T twiddleRe[kMaxFoldPoints / 2];
    alignas(32) T twiddleIm[kMaxFoldPoints / 2];
    alignas(32) T postRe[kMaxFoldPoints / 2];
    alignas(32) T postIm[kMaxFoldPoints / 2];
};

extern const FoldTable<float> g_fold32f[2];
extern const FoldTable<double> g_fold64f[2];

} // namespace vek
