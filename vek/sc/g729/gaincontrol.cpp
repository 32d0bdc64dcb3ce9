// Gain control behind the post filters, by energy and by sum of magnitudes, and the target without the adaptive
// codebook's share.
#include <cstdlib>

#include "sc/common/energylevel.h"
#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/corr.h"
#include "veksc_g729pitch.h"

using namespace vek;
using namespace vek::fix;

namespace {

constexpr int kSubframe = 40;

// Doubled energy of quarters of the samples.
int32_t quarteredEnergy(const Vek16s* x) {
    Vek16s quarters[kSubframe];
    corrKernels().shift16(x, quarters, kSubframe, -2);
    return sat32(2 * corrKernels().dot16(quarters, quarters, kSubframe));
}

int32_t sumOfMagnitudes(const Vek16s* x) {
    int32_t sum = 0;
    for (int i = 0; i < kSubframe; ++i) {
        sum += std::abs(static_cast<int>(x[i]));
    }
    return sum;
}

// The share of a new gain in the moving one, Q14, for sums of magnitudes: 0.0125 * in / out.
Vek16s magnitudeShare(int32_t in, int32_t out) {
    constexpr Vek16s share = 410;
    const int shiftIn = norm_l(in);
    const int shiftOut = norm_l(out);
    const Vek16s a = extract_h(L_shl(in, shiftIn));
    const Vek16s b = extract_h(L_shl(out, shiftOut));
    const int shift = shiftIn - shiftOut;
    if (a < b) {
        return mult(shr(div_s(a, b), shift + 1), share);
    }
    // The quotient is 1 or more: Q14 here, where it is Q15 above.
    return mult(shr(add(div_s(shr(sub(a, b), 1), b), 0x4000), shift), share);
}

} // namespace

VekStatus veksGainControl_G729A_16s_I(const Vek16s* pSrc, Vek16s* pSrcDst, Vek16s* pGain) {
    if (anyNull(pSrc, pSrcDst, pGain)) {
        return vekStsNullPtrErr;
    }
    levelByEnergy(quarteredEnergy(pSrc), quarteredEnergy(pSrcDst), pSrcDst, kSubframe, *pGain);
    return vekStsNoErr;
}

VekStatus veksGainControl_G729_16s_I(const Vek16s* pSrc, Vek16s* pSrcDst, Vek16s* pGain) {
    if (anyNull(pSrc, pSrcDst, pGain)) {
        return vekStsNullPtrErr;
    }
    const int32_t in = sumOfMagnitudes(pSrc);
    Vek16s share = 0;
    if (in != 0) {
        const int32_t out = sumOfMagnitudes(pSrcDst);
        if (out == 0) {
            *pGain = 0;
            return vekStsNoErr;
        }
        share = magnitudeShare(in, out);
    }
    // A share is 0..409: the moving gain stays within 16 bits by itself.
    int gain = *pGain;
    for (int i = 0; i < kSubframe; ++i) {
        gain = ((gain * 32358) >> 15) + share;
        pSrcDst[i] = sat16((pSrcDst[i] * gain + 0x2000) >> 14);
    }
    *pGain = static_cast<Vek16s>(gain);
    return vekStsNoErr;
}

VekStatus veksAdaptiveCodebookContribution_G729_16s(Vek16s gain, const Vek16s* pFltAdptVector, const Vek16s* pSrcTarget,
                                                    Vek16s* pDst) {
    if (anyNull(pFltAdptVector, pSrcTarget, pDst)) {
        return vekStsNullPtrErr;
    }
    for (int i = 0; i < kSubframe; ++i) {
        pDst[i] = sat16(pSrcTarget[i] - sat16((pFltAdptVector[i] * gain) >> 14));
    }
    return vekStsNoErr;
}

VekStatus veksAdaptiveCodebookContribution_G729_32f(Vek32f gain, const Vek32f* pFltAdptVector, const Vek32f* pSrcTarget,
                                                    Vek32f* pDst) {
    if (anyNull(pFltAdptVector, pSrcTarget, pDst)) {
        return vekStsNullPtrErr;
    }
    for (int i = 0; i < kSubframe; ++i) {
        pDst[i] = pSrcTarget[i] - gain * pFltAdptVector[i];
    }
    return vekStsNoErr;
}
