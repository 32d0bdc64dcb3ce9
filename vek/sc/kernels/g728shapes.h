// Kernels of G.728: the search of the shape codebook.
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"

namespace vek {

struct G728ShapeKernels {
    // Energies in Q5 of n shapes (a multiple of 8) through the impulse response h, 5 samples, Q13. A shape book holds
    // for all shapes the first two samples in turn, then the next two, then the last one and 0.
    void (*energies)(const int16_t* book, int n, const int16_t* h, int16_t* energy);
    // First of the n shapes with, at one of the levels, the least energy * gains[2 * level] + |p| * gains[2 * level +
    // 1], where p = sum of pn[k] * y[k] / 2^shift, rounded and saturated; negative energies are 0. *level receives the
    // first of the best levels, *negative whether p is negative.
    int (*nearest)(const int16_t* book, int n, const int16_t* pn, int shift, const int16_t* energy,
                   const int16_t* gains, int levels, int* level, bool* negative);
};

VEK_KERNEL_PICK(G728ShapeKernels, g728ShapeKernels)

} // namespace vek
