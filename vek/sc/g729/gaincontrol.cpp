// Gain control behind the post filters, by energy and by sum of magnitudes, and the target without the adaptive
// codebook's share.
#include "sc/g729/gaincontrol.h"
#include "sc/common/energylevel.h"
#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/g729/sizes.h"
#include "sc/kernels/corr.h"
#include "sc/kernels/loops.h"
#include "veksc_g729pitch.h"

using namespace vek::g729;

namespace {

// Of products with gains in Q14.
constexpr vek::Rounding kRoundedQ14 = {.shift = 14, .half = 0x2000};

// Doubled energy of quarters of the samples.
int32_t quarteredEnergy(const Vek16s* x) {
    Vek16s quarters[kSubframe];
    corrKernels().shift16(x, quarters, kSubframe, -2);
    return sat32(2 * corrKernels().dot16(quarters, quarters, kSubframe));
}

template <typename Kernel, typename T>
VekStatus contribution(Kernel lessScaled, T gain, const T* vector, const T* target, T* y) {
    if (anyNull(vector, target, y)) {
        return vekStsNullPtrErr;
    }
    return lessScaled(gain, vector, target, y);
}

} // namespace

int16_t vek::g729::levelRatio(int32_t in, int32_t out) {
    const int shiftIn = norm_l(in);
    const int shiftOut = norm_l(out);
    // Both are positive, here 0x4000 or more, and their quotient is below 2: nothing saturates but the last shift.
    const auto a = static_cast<Vek16s>(in << shiftIn >> 16);
    const auto b = static_cast<Vek16s>(out << shiftOut >> 16);
    const int shift = shiftIn - shiftOut;
    if (a < b) {
        return shr(div_s(a, b), shift + 1);
    }
    // The quotient is 1 or more: Q14 here, where it is Q15 above.
    return shr(static_cast<Vek16s>(div_s(static_cast<Vek16s>((a - b) >> 1), b) + 0x4000), shift);
}

int32_t vek::g729::sumOfMagnitudes(const int16_t* x) {
    return loopKernels().magnitudes16(x);
}

void vek::g729::moveGain(int16_t* x, int16_t ratio, int16_t share, int16_t& gain) {
    gain = static_cast<int16_t>(loopKernels().moveGain16(x, gain, 32768 - share, mult(ratio, share), kRoundedQ14));
}

VekStatus veksGainControl_G729A_16s_I(const Vek16s* pSrc, Vek16s* pSrcDst, Vek16s* pGain) {
    if (anyNull(pSrc, pSrcDst, pGain)) {
        return vekStsNullPtrErr;
    }
    levelByEnergy(quarteredEnergy(pSrc), quarteredEnergy(pSrcDst), pSrcDst, *pGain);
    return vekStsNoErr;
}

VekStatus veksGainControl_G729_16s_I(const Vek16s* pSrc, Vek16s* pSrcDst, Vek16s* pGain) {
    if (anyNull(pSrc, pSrcDst, pGain)) {
        return vekStsNullPtrErr;
    }
    const int32_t in = sumOfMagnitudes(pSrc);
    Vek16s ratio = 0;
    if (in != 0) {
        const int32_t out = sumOfMagnitudes(pSrcDst);
        if (out == 0) {
            *pGain = 0;
            return vekStsNoErr;
        }
        ratio = levelRatio(in, out);
    }
    constexpr Vek16s share = 410; // 0.0125
    moveGain(pSrcDst, ratio, share, *pGain);
    return vekStsNoErr;
}

VekStatus veksAdaptiveCodebookContribution_G729_16s(Vek16s gain, const Vek16s* pFltAdptVector, const Vek16s* pSrcTarget,
                                                    Vek16s* pDst) {
    return contribution(loopKernels().lessScaled16, gain, pFltAdptVector, pSrcTarget, pDst);
}

VekStatus veksAdaptiveCodebookContribution_G729_32f(Vek32f gain, const Vek32f* pFltAdptVector, const Vek32f* pSrcTarget,
                                                    Vek32f* pDst) {
    return contribution(loopKernels().lessScaled32f, gain, pFltAdptVector, pSrcTarget, pDst);
}
