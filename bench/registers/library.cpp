// The library's own, compiled for the registers of one level.
#include "trial.h"

#include "sc/kernels/numbers.h"

namespace vek {

namespace {

using namespace numbers;

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
const TrialKernels g_library128 = {butterflies, pulseKernels_L1.chains};
#else
const TrialKernels g_library256 = {butterflies, pulseKernels_L2.chains};
#endif

} // namespace vek
