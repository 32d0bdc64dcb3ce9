// Kernels of the filter room: FIR, all-pole recursion, element-wise products, correlation rows, circular convolution.
// Sums are 32 bits wide and wrap; who needs the saturating rule of a recommendation proves that nothing wraps, or takes
// the slow road (sc/common/lpfilter.h does both).
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"
#include "vekdefs.h"

namespace vek {

constexpr int kMaxLpOrder = 40;
constexpr int kGathered = 8;

// What is as short as a call of it gives vekStsNoErr: a public function then ends with a jump to it.
struct FilterKernels {
    // Largest magnitude, 0..32768.
    int (*maxAbs16)(const int16_t* x, int n);
    // Sum of magnitudes, of fewer than 65536 elements.
    int (*sumAbs16)(const int16_t* x, int n);
    // y[i] = sat16((sum of a[j] * x[i-j], j = 0..order, + half) >> q); x[-order..-1] is read. y apart from x.
    void (*fir16)(const int16_t* a, int order, const int16_t* x, int16_t* y, int n, int q);
    // The same sum, unrounded.
    void (*fir32)(const int16_t* a, int order, const int16_t* x, int32_t* f, int n);
    // f[i] -= sum of a[j] * y[i-j], j = 1..order; y[i] = sat16((f[i] + half) >> q); y[-order..-1] is read.
    // The order is even, 4..kMaxLpOrder.
    void (*allPole)(const int16_t* a, int order, int32_t* f, int16_t* y, int n, int q);
    // y[i] = sat16((x1[i] * v1 + x2[i] * v2 + half) >> q). Not for v1 = v2 = -32768.
    void (*weighted)(const int16_t* x1, int v1, const int16_t* x2, int v2, int16_t* y, int n, int q, int half);
    // y[i] = sat16((x1[i] * x2[i] + half) >> q), q = 0..30; y may be x1 or x2, v has 16 bits.
    VekStatus (*mul)(const int16_t* x1, const int16_t* x2, int16_t* y, int n, int q);
    VekStatus (*mulC)(const int16_t* x, int v, int16_t* y, int n, int q);
    // y[i] = sat16(x[i] + ((d[i] * b + half) >> 15))
    VekStatus (*addScaled)(const int16_t* x, const int16_t* d, int b, int16_t* y, int n, int half);
    // y[i] = (x1[i] >> 1) + (x2[i] >> 1)
    VekStatus (*mean)(const int16_t* x1, const int16_t* x2, int16_t* y, int n);
    // rows[m * 40 + d] = sum of h[i] * h[i+d], i = 0..m, for d = 0..39-m; the rest of a row is not defined.
    void (*corrRows16)(const int16_t* h, int32_t* rows);
    void (*corrRows32f)(const float* h, float* rows);
    // dst[i] = rows[index[i]] << 1, and the upper halves of the same, for n a multiple of kGathered
    void (*gather32)(const int32_t* rows, const uint16_t* index, int32_t* dst, int n);
    void (*gather16)(const int32_t* rows, const uint16_t* index, int16_t* dst, int n);
    // y[k] = sum over i of (c[i] * f2[40 + k - i]) >> 15, saturated at each step; 40 elements, f2 is 40 twice.
    void (*circular40)(const int16_t* c, const int16_t* f2, int16_t* y);
    // y[0] = x[0], y[i] = (x[i] * p + 2^14) >> 15 with the powers p of c, each rounded likewise from the one before.
    // Not for c = -32768.
    VekStatus (*powers)(const int16_t* x, int c, int16_t* y, int n);
};

// The recursion of 256 bits, which that of 512 shares: compiled for these, some of its scalars wait in mask registers.
void allPole256(const int16_t* a, int order, int32_t* f, int16_t* y, int n, int q);

VEK_KERNEL_PICK(FilterKernels, filterKernels)

} // namespace vek
