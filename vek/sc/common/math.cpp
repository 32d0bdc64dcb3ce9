// Element-wise arithmetic of the common family: products, interpolation, inverse square root, powers of a factor.
#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/filter.h"
#include "sc/kernels/loops.h"
#include "sc/kernels/roots.h"
#include "veksc_filter.h"

namespace {

using namespace vek::fix;

bool badScale(int scaleFactor, int largest) {
    return scaleFactor < 0 || scaleFactor > largest;
}

VekStatus product(const Vek16s* pSrc1, const Vek16s* pSrc2, Vek16s* pDst, int len, int scaleFactor) {
    if (const VekStatus status = checkSignal(len, pSrc1, pSrc2, pDst); status != vekStsNoErr) {
        return status;
    }
    if (badScale(scaleFactor, 30)) {
        return vekStsScaleRangeErr;
    }
    return filterKernels().mul(pSrc1, pSrc2, pDst, len, scaleFactor);
}

VekStatus productC(const Vek16s* pSrc, Vek16s val, Vek16s* pDst, int len, int scaleFactor) {
    if (const VekStatus status = checkSignal(len, pSrc, pDst); status != vekStsNoErr) {
        return status;
    }
    if (badScale(scaleFactor, 30)) {
        return vekStsScaleRangeErr;
    }
    return filterKernels().mulC(pSrc, val, pDst, len, scaleFactor);
}

// Of the one pair of weights for which a sum can leave 32 bits, -32768 twice.
[[gnu::noinline]] VekStatus interpolationByLeast(const Vek16s* pSrc1, const Vek16s* pSrc2, Vek16s* pDst, int len,
                                                 int scaleFactor, int half) {
    for (int i = 0; i < len; i++) {
        pDst[i] = sat16_64(((int64_t{pSrc1[i]} + pSrc2[i]) * -32768 + half) >> scaleFactor);
    }
    return vekStsNoErr;
}

VEK_INLINE VekStatus interpolation(const Vek16s* pSrc1, Vek16s val1, const Vek16s* pSrc2, Vek16s val2, Vek16s* pDst,
                                   int len, int scaleFactor, bool rounded) {
    if (const VekStatus status = checkSignal(len, pSrc1, pSrc2, pDst); status != vekStsNoErr) {
        return status;
    }
    if (badScale(scaleFactor, 15)) {
        return vekStsScaleRangeErr;
    }
    const int half = rounded ? (1 << scaleFactor) >> 1 : 0;
    if (val1 == -32768 && val2 == -32768) {
        return interpolationByLeast(pSrc1, pSrc2, pDst, len, scaleFactor, half);
    }
    return loopKernels().weighted16(pSrc1, {val1, val2}, pSrc2, {scaleFactor, half}, pDst, len);
}

} // namespace

VekStatus veksInvSqrt_32s_I(Vek32s* pSrcDst, int len) {
    if (const VekStatus status = checkSignal(len, pSrcDst); status != vekStsNoErr) {
        return status;
    }
    return rootKernels().inverseRoots(pSrcDst, len);
}

VekStatus veksInterpolateC_NR_G729_16s_Sfs(const Vek16s* pSrc1, Vek16s val1, const Vek16s* pSrc2, Vek16s val2,
                                           Vek16s* pDst, int len, int scaleFactor) {
    return interpolation(pSrc1, val1, pSrc2, val2, pDst, len, scaleFactor, true);
}

VekStatus veksInterpolateC_G729_16s_Sfs(const Vek16s* pSrc1, Vek16s val1, const Vek16s* pSrc2, Vek16s val2,
                                        Vek16s* pDst, int len, int scaleFactor) {
    return interpolation(pSrc1, val1, pSrc2, val2, pDst, len, scaleFactor, false);
}

VekStatus veksInterpolateC_G729_32f(const Vek32f* pSrc1, const Vek32f* pSrc2, Vek32f* pDst, int len, Vek32f val1,
                                    Vek32f val2) {
    if (const VekStatus status = checkSignal(len, pSrc1, pSrc2, pDst); status != vekStsNoErr) {
        return status;
    }
    return loopKernels().weighted32f(pSrc1, val1, pSrc2, val2, pDst, len);
}

VekStatus veksInterpolate_G729_16s(const Vek16s* pSrc1, const Vek16s* pSrc2, Vek16s* pDst, int len) {
    if (const VekStatus status = checkSignal(len, pSrc1, pSrc2, pDst); status != vekStsNoErr) {
        return status;
    }
    return filterKernels().mean(pSrc1, pSrc2, pDst, len);
}

VekStatus veksMulC_NR_16s_Sfs(const Vek16s* pSrc, Vek16s val, Vek16s* pDst, int len, int scaleFactor) {
    return productC(pSrc, val, pDst, len, scaleFactor);
}

VekStatus veksMulC_NR_16s_ISfs(Vek16s val, Vek16s* pSrcDst, int len, int scaleFactor) {
    return productC(pSrcDst, val, pSrcDst, len, scaleFactor);
}

VekStatus veksMul_NR_16s_Sfs(const Vek16s* pSrc1, const Vek16s* pSrc2, Vek16s* pDst, int len, int scaleFactor) {
    return product(pSrc1, pSrc2, pDst, len, scaleFactor);
}

VekStatus veksMul_NR_16s_ISfs(const Vek16s* pSrc, Vek16s* pSrcDst, int len, int scaleFactor) {
    return product(pSrc, pSrcDst, pSrcDst, len, scaleFactor);
}

VekStatus veksMulPowerC_NR_16s_Sfs(const Vek16s* pSrc, Vek16s val, Vek16s* pDst, int len, int scaleFactor) {
    if (const VekStatus status = checkSignal(len, pSrc, pDst); status != vekStsNoErr) {
        return status;
    }
    if (badScale(scaleFactor, 15)) {
        return vekStsScaleRangeErr;
    }
    if (scaleFactor == 15 && val != -32768) {
        // The usual case, a factor below 1: no product can saturate.
        return filterKernels().powers(pSrc, val, pDst, len);
    }
    pDst[0] = pSrc[0];
    int power = val;
    const int half = scaleFactor > 0 ? 1 << (scaleFactor - 1) : 0;
    for (int i = 1; i < len; i++) {
        pDst[i] = sat16((pSrc[i] * power + half) >> scaleFactor);
        power = sat16((power * val + half) >> scaleFactor);
    }
    return vekStsNoErr;
}
