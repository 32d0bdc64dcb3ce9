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
    if (gamma > kLeast) {
        *pMem = loopKernels().lessPrevious16(pSrcDst, *pMem, gamma, len);
        return vekStsNoErr;
    }
    for (int i = 0; i < len; ++i) {
        const Vek16s now = pSrcDst[i];
        pSrcDst[i] = sub(now, mult(gamma, *pMem));
        *pMem = now;
    }
    return vekStsNoErr;
}

VekStatus veksPreemphasize_32f_I(Vek32f* pSrcDst, int len, Vek32f* pMem, Vek32f gamma) {
    if (anyNull(pSrcDst, pMem)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len)) {
        return vekStsSizeErr;
    }
    *pMem = loopKernels().lessPrevious32f(pSrcDst, *pMem, gamma, len);
    return vekStsNoErr;
}
