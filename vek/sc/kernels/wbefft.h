// Kernels of the real Fourier transforms of 48 to 1152 samples of the extended wide-band codec, in single precision.
// Their rotations are computed once, at load (wbefft_tables.cpp).
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"

namespace vek {

// A real transform of 16 * M samples: a complex one of 8 * M points and the split of its result.
template <int M>
struct RealFftTable {
    alignas(32) float twiddleRe[8 * M]; // exp(-2 pi j n2 k1 / (8 M)) at [8 * k1 + n2]
    alignas(32) float twiddleIm[8 * M];
    alignas(32) float splitRe[8 * M]; // exp(-2 pi j k / (16 M))
    alignas(32) float splitIm[8 * M];
    float scale; // 1 / sqrt(16 M)
};

extern const RealFftTable<3> g_realFft48;
extern const RealFftTable<6> g_realFft96;
extern const RealFftTable<12> g_realFft192;
extern const RealFftTable<18> g_realFft288;
extern const RealFftTable<36> g_realFft576;
extern const RealFftTable<72> g_realFft1152;

struct WbeFftKernels {
    // Orthonormal; len is one of the six lengths; dst may be src.
    void (*forward)(const int16_t* src, int16_t* dst, int len);
    void (*inverse)(const int16_t* src, int16_t* dst, int len);
};

VEK_KERNEL_PICK(WbeFftKernels, wbeFftKernels)

} // namespace vek
