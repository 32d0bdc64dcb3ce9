// Post filter of a frame: formant filter by weighted coefficients, tilt compensation, gain control.
#include <algorithm>
#include <cstring>

#include "sc/common/energylevel.h"
#include "sc/common/fixmath.h"
#include "sc/common/lpfilter.h"
#include "sc/common/signal_check.h"
#include "sc/gsmamr/speechrates.h"
#include "sc/kernels/corr.h"
#include "veksc_gsmamr.h"

using namespace vek::gsmamr;

namespace {

constexpr int kCoeffs = kOrder + 1;
constexpr int kTiltResponse = 22;

// Powers of the weights, Q15: 0.55 and 0.7, at the two upper rates 0.7 and 0.75.
constexpr Vek16s kWeight55[kOrder] = {18022, 9912, 5451, 2998, 1649, 907, 499, 274, 151, 83};
constexpr Vek16s kWeight70[kOrder] = {22938, 16057, 11240, 7868, 5508, 3856, 2699, 1889, 1322, 925};
constexpr Vek16s kWeight75[kOrder] = {24576, 18432, 13824, 10368, 7776, 5832, 4374, 3281, 2461, 1846};

void weigh(const Vek16s* a, const Vek16s* weights, Vek16s* out) {
    out[0] = a[0];
    for (int i = 0; i < kOrder; ++i) {
        out[i + 1] = round_s(L_mult(a[i + 1], weights[i]));
    }
}

Vek16s upperProduct(const Vek16s* a, const Vek16s* b, int n) {
    return extract_h(sat32(2 * corrKernels().dot16(a, b, n)));
}

// The share of the sample before: 0.8 of the first correlation of the formant filter's response.
Vek16s tilt(const Vek16s* fir, const Vek16s* iir) {
    Vek16s h[kTiltResponse] = {};
    const Vek16s rest[kOrder] = {};
    std::copy_n(fir, kCoeffs, h);
    synthesisFilter(iir, kOrder, h, h, kTiltResponse, 12, rest);
    const Vek16s energy = upperProduct(h, h, kTiltResponse);
    const Vek16s next = upperProduct(h, h + 1, kTiltResponse - 1);
    return next <= 0 ? Vek16s{0} : div_s(mult(next, 26214), energy);
}

// A sixteenth of the doubled energy, of quarters of the samples where it does not fit.
int32_t energyOf(const Vek16s* x) {
    const int64_t energy = 2 * corrKernels().dot16(x, x, kSubframe);
    if (energy <= kMax32) {
        return static_cast<int32_t>(energy >> 4);
    }
    Vek16s quarters[kSubframe];
    corrKernels().shift16(x, quarters, kSubframe, -2);
    return sat32(2 * corrKernels().dot16(quarters, quarters, kSubframe));
}

} // namespace

VekStatus veksPostFilter_GSMAMR_16s(const Vek16s* pSrcQLpc, const Vek16s* pSrcSpch, Vek16s* pValResultPrevResidual,
                                    Vek16s* pValResultPrevScalingGain, Vek16s* pSrcDstFormantFIRState,
                                    Vek16s* pSrcDstFormantIIRState, Vek16s* pDstFltSpch, VekSpchBitRate mode) {
    if (anyNull(pSrcQLpc, pSrcSpch, pValResultPrevResidual, pValResultPrevScalingGain, pSrcDstFormantFIRState,
                pSrcDstFormantIIRState, pDstFltSpch)) {
        return vekStsNullPtrErr;
    }
    if (!isRateOrDtx(mode)) {
        return vekStsBitRateErr;
    }
    const bool upper = mode == VEK_SPCHBR_10200 || mode == VEK_SPCHBR_12200;
    const Vek16s* firWeights = upper ? kWeight70 : kWeight55;
    const Vek16s* iirWeights = upper ? kWeight75 : kWeight70;
    Vek16s speech[kOrder + kFrame];
    std::copy_n(pSrcDstFormantFIRState, kOrder, speech);
    std::copy_n(pSrcSpch, kFrame, speech + kOrder);
    for (int s = 0; s < kSubframes; ++s) {
        Vek16s fir[kCoeffs];
        Vek16s iir[kCoeffs];
        weigh(pSrcQLpc + s * kCoeffs, firWeights, fir);
        weigh(pSrcQLpc + s * kCoeffs, iirWeights, iir);
        const Vek16s* in = speech + kOrder + s * kSubframe;
        Vek16s* out = pDstFltSpch + s * kSubframe;
        Vek16s residual[kSubframe];
        Vek16s level[kSubframe];
        residualFilter(fir, kOrder, in, residual, kSubframe, 12);
        veksPreemphasize_GSMAMR_16s(tilt(fir, iir), residual, level, kSubframe, pValResultPrevResidual);
        synthesisFilter(iir, kOrder, level, out, kSubframe, 12, pSrcDstFormantIIRState);
        std::copy_n(out + kSubframe - kOrder, kOrder, pSrcDstFormantIIRState);
        levelByEnergy(energyOf(in), energyOf(out), out, *pValResultPrevScalingGain);
    }
    std::copy_n(speech + kFrame, kOrder, pSrcDstFormantFIRState);
    return vekStsNoErr;
}
