// Kernels of the real-time audio codec: recursive filters eight samples at a time, codebooks of overlapping vectors,
// distances to the vectors of a codebook, zeros of Chebyshev series.
#pragma once

#include "sc/kernels/kernels.h"

namespace vek {

constexpr int kMostStates = 5;
constexpr int kMostSeries = 8;

// A recursive filter y = direct * x + out * s, s' = step * s + drive * x for one sample and for eight.
struct BlockFilter {
    int states;
    float direct;
    float one[kMostStates][kMostStates]; // what state m leaves in state k
    float drive1[kMostStates];
    // Rows of eight outputs or states: what an input of the eight, or a state before them, leaves there.
    alignas(32) float response[8][8];
    alignas(32) float out[kMostStates][8];
    alignas(32) float drive[8][8];
    alignas(32) float step[kMostStates][8];
};

// What a filtered vector y has in common with the target x, with another vector z, and with itself.
struct CommonSums {
    float target;
    float other;
    float energy;
};

struct RtaKernels {
    // n samples; y may be x. States and outputs below 1e-20 become 0, lest silence be slower than sound.
    void (*filterBlocks)(const BlockFilter& f, float* states, const float* x, float* y, int n);
    // y[i] += v * h[i], then the sums with x, z and y itself. n is a multiple of 8.
    CommonSums (*addResponse)(float* y, const float* h, float v, const float* x, const float* z, int n);
    // out[e] = sum of w[d] * (t[d] - book[d * entries + e])^2 over dim rows; entries is a multiple of 8.
    void (*distances)(const float* book, int entries, int dim, const float* t, const float* w, float* out);
    // out[i] = sum of f[k] * T(terms - k, x[i]), k = 0..terms, T the Chebyshev polynomials. n is a multiple of 8.
    void (*series)(const double* f, int terms, const double* x, int n, double* out);
    // A zero in each of eight intervals low[i]..high[i], at whose ends the series has opposite signs, into low.
    void (*zeros)(const double* f, int terms, double* low, double* high);
};

VEK_KERNEL_PICK(RtaKernels, rtaKernels)

} // namespace vek
