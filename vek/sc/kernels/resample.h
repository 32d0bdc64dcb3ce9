// Kernels of the resamplers: a bank of short filters of which each output takes the one for its place between two
// samples. Products are summed in 32 bits, which the sum of a filter's magnitudes (below 4.0) keeps from wrapping.
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"

namespace vek {

constexpr int kResampleQ = 14;

// Filters of `taps` coefficients in Q14, one for each of `phases` places; outputs are `step` / `phases` samples apart.
struct Polyphase {
    const int16_t* rows;
    int taps; // a multiple of 4
    int phases;
    int step;
};

// The bank for any places: 65 filters of 48 taps, between which the coefficients are interpolated.
constexpr int kBlendTaps = 48;
constexpr int kBlendPhases = 64;
constexpr int kBlendQ = 40; // places in Q40

struct ResampleKernels {
    // y[i]: the filter t % phases on x[t / phases] and what follows, t = start + i * step; rounded, saturated.
    void (*exact)(const Polyphase& bank, int start, const int16_t* x, int16_t* y, int n);
    // The same at t = start + i * step, both in Q40.
    void (*blended)(const int16_t* rows, uint64_t start, uint64_t step, const int16_t* x, int16_t* y, int n);
    // y[i] = sat16(a[i] + b[i]) and sat16(a[i] - b[i]); y may be a or b.
    void (*add)(const int16_t* a, const int16_t* b, int16_t* y, int n);
    void (*subtract)(const int16_t* a, const int16_t* b, int16_t* y, int n);
};

VEK_KERNEL_PICK(ResampleKernels, resampleKernels)

} // namespace vek
