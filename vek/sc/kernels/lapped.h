// Kernels of the folds of a lapped transform.
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"

namespace vek {

struct LappedKernels {
    // The two halves of the folds of a lapped transform of 2 * half samples, window w of 2 * half elements in Q15.
    void (*fold16)(const int16_t* fresh, const int16_t* old, const int16_t* w, int16_t* dst, int half);
    void (*unfold16)(const int16_t* fresh, const int16_t* old, const int16_t* w, int16_t* dst, int half);
};

VEK_KERNEL_PICK(LappedKernels, lappedKernels)

} // namespace vek
