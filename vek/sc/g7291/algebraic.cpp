// The two fixed codebooks of G.729.1: four pulses each on the tracks of G.729.
// One search for both: from two starts, that of Annex A and the peaks of residual and correlation, single pulses are
// exchanged as long as that helps.
#include <algorithm>

#include "sc/common/fixmath.h"
#include "sc/common/pulsesearch.h"
#include "sc/common/signal_check.h"
#include "sc/g729/fourpulses.h"
#include "veksc_filter.h"
#include "veksc_g729.h"
#include "veksc_g7291.h"
#include "veksc_g729lp.h"
#include "veksc_signal.h"

using namespace vek::fourpulses;

namespace {

constexpr int kMatrix = 616;
constexpr Vek16s kMostGain = 19661;      // 1.2
constexpr Vek16s kLeastSharpness = 3277; // 0.2, Q14
constexpr Vek16s kMostSharpness = 13017; // 0.7945

// Each track's place where residual and correlation together are largest.
FourPulses peaks(const Vek16s* d, const Vek16s* residual) {
    Vek16s weighed[kSubframe];
    Vek16s sign[kSubframe];
    int8_t lanes[kTracks];
    std::copy_n(d, kSubframe, weighed);
    pulses::signsAndPeaks(residual, weighed, sign, lanes);
    FourPulses choice{{}, 3};
    choice.last = abs_s(d[lanes[4] * kTracks + 4]) > abs_s(d[lanes[3] * kTracks + 3]) ? 4 : 3;
    for (int n = 0; n < 4; ++n) {
        const int track = trackOf(choice, n);
        const int position = lanes[track] * kTracks + track;
        choice.at[n] = position / kTracks;
    }
    return choice;
}

// Code vector, its convolution with the response, and the two words.
void search(const Vek16s* target, const Vek16s* residual, const Vek16s* h, Vek16s* code, Vek16s* filtered,
            Vek16s* index) {
    Vek16s d[kSubframe];
    Vek16s matrix[kMatrix];
    veksCrossCorr_NormM_16s(target, h, kSubframe, d);
    veksToeplizMatrix_G729_16s(h, matrix);
    const FourPulses found = fourPulseKernels().replaced(d, matrix, peaks(d, residual));
    deliver(found, d, code, index);
    std::fill_n(filtered, kSubframe, Vek16s{0});
    for (int n = 0; n < 4; ++n) {
        const int at = positionOf(found, n);
        pulses::addResponse(h, at, code[at] > 0, filtered);
    }
}

} // namespace

VekStatus veksAlgebraicCodebookSearchL1_G7291_16s(const Vek16s* pSrcFixedTarget, const Vek16s* pSrcLtpResidual,
                                                  Vek16s* pSrcDstFltAdptVector, Vek16s* pSrcDstImpulseResponse,
                                                  Vek16s pitchLag, Vek16s pitchGain, Vek16s* pDstFixedVector,
                                                  Vek16s* pDstFltFixedVector, Vek16s* pDstCodebookIdx) {
    if (anyNull(pSrcFixedTarget, pSrcLtpResidual, pSrcDstFltAdptVector, pSrcDstImpulseResponse, pDstFixedVector,
                pDstFltFixedVector, pDstCodebookIdx)) {
        return vekStsNullPtrErr;
    }
    if (pitchLag < g729::kShortestDelay || pitchLag > g729::kLongestDelay || pitchGain < 0 || pitchGain > kMostGain) {
        return vekStsRangeErr;
    }
    Vek16s target[kSubframe];
    for (int i = 0; i < kSubframe; ++i) {
        const Vek16s share = sat16((pSrcDstFltAdptVector[i] * pitchGain) >> 14);
        target[i] = sat16(pSrcFixedTarget[i] - share);
        pSrcDstFltAdptVector[i] = share;
    }
    const auto sharpness = static_cast<Vek16s>(2 * std::clamp(pitchGain, kLeastSharpness, kMostSharpness));
    const bool sharpened = pitchLag < kSubframe;
    if (sharpened) {
        veksHarmonicFilter_16s_I(sharpness, pitchLag, pSrcDstImpulseResponse + pitchLag, kSubframe - pitchLag);
    }
    search(target, pSrcLtpResidual, pSrcDstImpulseResponse, pDstFixedVector, pDstFltFixedVector, pDstCodebookIdx);
    if (sharpened) {
        veksHarmonicFilter_16s_I(sharpness, pitchLag, pDstFixedVector + pitchLag, kSubframe - pitchLag);
    }
    return vekStsNoErr;
}

VekStatus veksAlgebraicCodebookSearchL2_G7291_16s(const Vek16s* pSrcFixedTarget, const Vek16s* pSrcLtpResidual,
                                                  const Vek16s* pSrcImpulseResponse, Vek16s voiceFactor,
                                                  Vek16s* pDstFixedVector, Vek16s* pDstFltFixedVector,
                                                  Vek16s* pDstCodebookIdx) {
    if (anyNull(pSrcFixedTarget, pSrcLtpResidual, pSrcImpulseResponse, pDstFixedVector, pDstFltFixedVector,
                pDstCodebookIdx)) {
        return vekStsNullPtrErr;
    }
    const auto tilt = static_cast<Vek16s>(0x2000 + (voiceFactor >> 2));
    Vek16s h[kSubframe];
    Vek16s before = 0;
    veksPreemphasize_G729A_16s(tilt, pSrcImpulseResponse, h, kSubframe, &before);
    search(pSrcFixedTarget, pSrcLtpResidual, h, pDstFixedVector, pDstFltFixedVector, pDstCodebookIdx);
    before = 0;
    return veksPreemphasize_G729A_16s_I(tilt, pDstFixedVector, kSubframe, &before);
}
