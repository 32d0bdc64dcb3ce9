// Spectral frequencies, gain of the second layer, and the level and tilt of the post filter of G.729.1.
#include <algorithm>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/g729/gaincontrol.h"
#include "sc/g729/sizes.h"
#include "sc/kernels/corr.h"
#include "veksc_g7291.h"
#include "veksc_g729lp.h"
#include "veksc_g729post.h"

using namespace vek::g729;

namespace {

// Gain of the second layer over that of the first, Q14: 2^((k - 6) / 2), k = 0..7. The codes of two bits take every
// second of them.
constexpr Vek16s kLevels[8] = {2048, 2896, 4096, 5793, 8192, 11585, 16384, 23170};

} // namespace

VekStatus veksLSFDecode_G7291_16s(const Vek16s* pQuantIndex, Vek16s* pSrcDstPrevLSF, Vek16s* pSrcDstLSF) {
    return veksLSFDecode_G729_16s(pQuantIndex, pSrcDstPrevLSF, pSrcDstLSF);
}

VekStatus veksGainQuant_G7291_16s(const Vek16s* pSrcFixedTarget, const Vek16s* pSrcFltFixedVector, Vek16s valSrcQGain,
                                  Vek16s* pDstQGainIndex, Vek16s* pDstQGain, Vek16s subFrame) {
    if (anyNull(pSrcFixedTarget, pSrcFltFixedVector, pDstQGainIndex, pDstQGain)) {
        return vekStsNullPtrErr;
    }
    if (valSrcQGain < 0 || subFrame < 1 || subFrame > 4) {
        return vekStsRangeErr;
    }
    const int step = subFrame % 2 == 0 ? 2 : 1;
    const int count = 8 / step;
    // The gain of least error is 2^13 * xz / zz in Q1: a level is passed where that lies above its middle with the
    // next.
    const int64_t zz = corrKernels().dot16(pSrcFltFixedVector, pSrcFltFixedVector, kSubframe);
    const int64_t xz = corrKernels().dot16(pSrcFixedTarget, pSrcFltFixedVector, kSubframe) * (1 << 14);
    int index = 0;
    Vek16s gain = 0;
    for (int k = 0; k < count; ++k) {
        const Vek16s level = sat16((valSrcQGain * kLevels[step * k + step - 1] + 0x2000) >> 14);
        if (k == 0 || xz > (gain + level) * zz) {
            index = k;
            gain = level;
        }
    }
    *pDstQGainIndex = static_cast<Vek16s>(index);
    *pDstQGain = gain;
    return vekStsNoErr;
}

VekStatus veksGainControl_G7291_16s_I(const Vek16s* pSrc, Vek16s* pSrcDst, Vek16s* pGain, Vek16s val, Vek16s NBFlag,
                                      Vek16s* pSmoothLevel) {
    if (anyNull(pSrc, pSrcDst, pGain, pSmoothLevel)) {
        return vekStsNullPtrErr;
    }
    if (*pGain < 0 || val < 0 || NBFlag < 0 || NBFlag > 1 || *pSmoothLevel < 0) {
        return vekStsRangeErr;
    }
    const int32_t in = sumOfMagnitudes(pSrc);
    const int32_t out = sumOfMagnitudes(pSrcDst);
    if (out == 0) {
        *pGain = 0;
        return vekStsNoErr;
    }
    const int ratio = in == 0 ? 0 : levelRatio(in, out);
    const int level = NBFlag == 1 ? (3 * *pSmoothLevel + ratio + 2) >> 2 : ratio;
    *pSmoothLevel = static_cast<Vek16s>(level);
    moveGain(pSrcDst, *pSmoothLevel, val, *pGain);
    return vekStsNoErr;
}

VekStatus veksTiltCompensation_G7291_16s(const Vek16s* pSrc, Vek16s* pDst, Vek16s val) {
    return veksTiltCompensation_G729E_16s(val, pSrc, pDst);
}
