// Kernel of lattice filters: one stage over a stretch of samples.
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"

namespace vek {

struct LatticeKernels {
    // out[i] = sat16(back[i] + r * d[i]) and d[i] = sat16(d[i] + r * back[i]), products rounded in Q15; r above -32768.
    // back[i] is the backward signal one sample before d[i]. out is apart from back and d.
    void (*analysis)(int16_t r, const int16_t* back, int16_t* d, int16_t* out, int n);
};

VEK_KERNEL_PICK(LatticeKernels, latticeKernels)

} // namespace vek
