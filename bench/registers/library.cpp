// The library's own, compiled for the registers of one level.
#include "five.h"

#include "sc/kernels/corr.h"
#include "sc/kernels/filter.h"
#include "sc/kernels/simd.h"

namespace vek {

namespace {

using namespace simd;

void butterflies(int32_t* re, int32_t* im, const int32_t* wRe, const int32_t* wIm, int half) {
    for (int i = 0; i < half; i += 8) {
        const V8 x = load(re + i) - load(re + half + i);
        const V8 y = load(im + i) - load(im + half + i);
        const V8 cRe = load(wRe + i);
        const V8 cIm = load(wIm + i);
        store(re + i, load(re + i) + load(re + half + i));
        store(im + i, load(im + i) + load(im + half + i));
        store(re + half + i, mulDiff(x, cRe, y, cIm));
        store(im + half + i, mulSum(x, cIm, y, cRe));
    }
}

} // namespace

#if VEK_LEVEL == 1
const FiveKernels g_library128 = {corrKernels_L1.dot16, corrKernels_L1.corr32, filterKernels_L1.fir16, butterflies,
                                  pulseKernels_L1.chains};
#else
const FiveKernels g_library256 = {corrKernels_L2.dot16, corrKernels_L2.corr32, filterKernels_L2.fir16, butterflies,
                                  pulseKernels_L2.chains};
#endif

} // namespace vek
