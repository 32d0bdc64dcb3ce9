// Two kernels as the library has them and as one body for all widths of registers.
#pragma once

#include <cstdint>

#include "sc/kernels/pulses.h"

namespace vek {

struct TrialKernels {
    // The lower half gets the sums of both, the upper one their differences times w, in Q30.
    void (*butterflies)(int32_t* re, int32_t* im, const int32_t* wRe, const int32_t* wIm, int half);
    void (*chains)(const PulseField& field, const PulseChain* list, int count, int pulses, Pulse* best);
};

extern const TrialKernels g_library128;
extern const TrialKernels g_library256;
extern const TrialKernels g_highway128;
extern const TrialKernels g_highway256;
extern const TrialKernels g_highway512;

} // namespace vek
