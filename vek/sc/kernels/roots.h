// Kernel of the inverse square roots of the common family.
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"
#include "vekdefs.h"

namespace vek {

struct RootKernels {
    // x[i] = 2^30 / sqrt(x[i]) by the table and the lines between its entries; 0x3fffffff of 0 and below. Gives
    // vekStsNoErr, for a public function to end with a jump to it.
    VekStatus (*inverseRoots)(int32_t* x, int n);
};

VEK_KERNEL_PICK(RootKernels, rootKernels)

} // namespace vek
