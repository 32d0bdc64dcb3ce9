// Kernels of the 16-bit transforms: cosine transform of type IV and the real Fourier transform of 128 samples.
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

struct TransformKernels {
    // Orthonormal cosine transforms of type IV; dst may be src.
    void (*dct320)(const int16_t* src, int16_t* dst);
    void (*dct640)(const int16_t* src, int16_t* dst);
    // In place, divided by 128, permuted: re 0, re 64, re 1, im 1, ...
    void (*fft128)(int16_t* srcDst);
    // Orthonormal cosine transform of type IV of 32-bit samples below 2^27; dst may be src.
    void (*dct160)(const int32_t* src, int32_t* dst);
};

VEK_KERNEL_PICK(TransformKernels, transformKernels)

} // namespace vek
