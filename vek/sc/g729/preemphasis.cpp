// First-order pre-emphasis, in place and from one buffer to another.
#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/filter.h"
#include "sc/kernels/loops.h"
#include "veksc_g729lp.h"

using namespace vek::fix;

namespace {

// The one factor whose product with a sample saturates.
constexpr Vek16s kLeast = -32768;

} // namespace

VekStatus veksPreemphasize_G729A_16s(Vek16s gamma, const Vek16s* pSrc, Vek16s* pDst, int len, Vek16s* pMem) {
    if (anyNull(pSrc, pDst, pMem)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len)) {
        return vekStsSizeErr;
    }
    pDst[0] = sub(pSrc[0], mult(gamma, *pMem));
    if (gamma > kLeast) {
        // What is taken away is cut off, what is added is rounded up.
        filterKernels().addScaled(pSrc + 1, pSrc, -gamma, pDst + 1, len - 1, 32767);
    } else {
        for (int i = 1; i < len; ++i) {
            pDst[i] = sub(pSrc[i], mult(gamma, pSrc[i - 1]));
        }
    }
    *pMem = pSrc[len - 1];
    return vekStsNoErr;
}

VekStatus veksPreemphasize_G729A_16s_I(Vek16s gamma, Vek16s* pSrcDst, int len, Vek16s* pMem) {
    if (anyNull(pSrcDst, pMem)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len)) {
        return vekStsSizeErr;
    }
    const Vek16s last = pSrcDst[len - 1];
    if (gamma > kLeast) {
        loopKernels().lessPrevious16(pSrcDst, gamma, len);
    } else {
        // From the end, so that each sample meets its unchanged predecessor.
        for (int i = len - 1; i > 0; --i) {
            pSrcDst[i] = sub(pSrcDst[i], mult(gamma, pSrcDst[i - 1]));
        }
    }
    pSrcDst[0] = sub(pSrcDst[0], mult(gamma, *pMem));
    *pMem = last;
    return vekStsNoErr;
}

VekStatus veksPreemphasize_32f_I(Vek32f* pSrcDst, int len, Vek32f* pMem, Vek32f gamma) {
    if (anyNull(pSrcDst, pMem)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len)) {
        return vekStsSizeErr;
    }
    const Vek32f last = pSrcDst[len - 1];
    loopKernels().lessPrevious32f(pSrcDst, gamma, len);
    pSrcDst[0] -= gamma * *pMem;
    *pMem = last;
    return vekStsNoErr;
}
