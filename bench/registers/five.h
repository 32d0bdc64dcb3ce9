// Five kernels as the library has them and as one body for all widths of registers.
#pragma once

#include <cstdint>

#include "sc/kernels/pulses.h"

namespace vek {

struct FiveKernels {
    int64_t (*dot16)(const int16_t* a, const int16_t* b, int n);
    void (*corr32)(const int16_t* a, const int16_t* b, int n, int lags, int32_t* out);
    void (*fir16)(const int16_t* a, int order, const int16_t* x, int16_t* y, int n, int q);
    // The lower half gets the sums of both, the upper one their differences times w, in Q30.
    void (*butterflies)(int32_t* re, int32_t* im, const int32_t* wRe, const int32_t* wIm, int half);
    void (*chains)(const PulseField& field, const PulseChain* list, int count, int pulses, Pulse* best);
};

extern const FiveKernels g_library128;
extern const FiveKernels g_library256;
extern const FiveKernels g_highway128;
extern const FiveKernels g_highway256;
extern const FiveKernels g_highway512;

} // namespace vek
