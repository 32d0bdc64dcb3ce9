// Dot products, and the scaling of a vector to a wanted headroom.
#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/corr.h"
#include "sc/kernels/floatdot.h"
#include "veksc_signal.h"

using namespace vek;

VekStatus veksDotProd_G729A_16s32s(const Vek16s* pSrc1, const Vek16s* pSrc2, int len, Vek32s* pDp) {
    if (const VekStatus status = checkSignal(len, pSrc1, pSrc2, pDp); status != vekStsNoErr) {
        return status;
    }
    return corrKernels().dotSaturated16(pSrc1, pSrc2, len, pDp);
}

VekStatus veksDotProd_G729A_32f(const Vek32f* pSrc1, const Vek32f* pSrc2, int len, Vek32f* pDp) {
    if (const VekStatus status = checkSignal(len, pSrc1, pSrc2, pDp); status != vekStsNoErr) {
        return status;
    }
    return floatDotKernels().dotTo32f(pSrc1, pSrc2, len, pDp);
}

VekStatus veksDotProdAutoScale_16s32s_Sfs(const Vek16s* pSrc1, const Vek16s* pSrc2, int len, Vek32s* pDp, int* pSfs) {
    if (const VekStatus status = checkSignal(len, pSrc1, pSrc2, pDp, pSfs); status != vekStsNoErr) {
        return status;
    }
    const int64_t sum = corrKernels().dot16(pSrc1, pSrc2, len);
    const int spare = fix::norm_64(sum);
    const int sfs = sum == 0 || spare >= 32 ? 0 : 32 - spare;
    *pDp = static_cast<Vek32s>(sum >> sfs);
    *pSfs = sfs;
    return vekStsNoErr;
}

VekStatus veksAutoScale_16s(const Vek16s* pSrc, Vek16s* pDst, int len, int* pScale) {
    if (const VekStatus status = checkSignal(len, pSrc, pDst, pScale); status != vekStsNoErr) {
        return status;
    }
    if (*pScale < 0 || *pScale > 15) {
        return vekStsScaleRangeErr;
    }
    const CorrKernels& kernels = corrKernels();
    const auto used = static_cast<Vek16s>(kernels.usedBits16(pSrc, len));
    bool negative = false;
    for (int i = 0; used == 0 && !negative && i < len; ++i) {
        negative = pSrc[i] != 0;
    }
    // Nothing but 0 and -1 has 15 redundant bits; nothing but 0 has no size at all.
    const int redundant = used != 0 ? fix::norm_s(used) : 15;
    const int shift = used != 0 || negative ? redundant - *pScale : 0;
    kernels.shift16(pSrc, pDst, len, shift);
    *pScale = shift;
    return vekStsNoErr;
}

VekStatus veksAutoScale_16s_I(Vek16s* pSrcDst, int len, int* pScale) {
    return veksAutoScale_16s(pSrcDst, pSrcDst, len, pScale);
}
