// Adaptive codebook of G.729.1: the steps of G.729 over a range of delays that the caller gives.
#include "sc/common/signal_check.h"
#include "sc/g729/adaptivevector.h"
#include "sc/g729/closedloop.h"
#include "veksc_g7291.h"
#include "veksc_g729pitch.h"

using namespace vek::g729;

VekStatus veksAdaptiveCodebookSearch_G7291_16s(const Vek16s* pSrcAdptTarget, const Vek16s* pSrcImpulseResponse,
                                               const Vek16s* pSrcPrevExcitation, Vek16s* pDstDelay, Vek16s lagMin,
                                               Vek16s lagMax, Vek16s subFrame) {
    if (anyNull(pSrcAdptTarget, pSrcImpulseResponse, pSrcPrevExcitation, pDstDelay)) {
        return vekStsNullPtrErr;
    }
    if (lagMin < kShortestDelay || lagMax > kLongestDelay || lagMin > lagMax || subFrame < 0 ||
        subFrame > 3 * kSubframe || subFrame % kSubframe != 0) {
        return vekStsRangeErr;
    }
    const bool relative = subFrame % (2 * kSubframe) != 0;
    const PitchDelay found = closedLoop(pSrcPrevExcitation + kPastExcitation, pSrcAdptTarget, pSrcImpulseResponse,
                                        lagMin, lagMax, relative ? Thirds::All : Thirds::Short);
    pDstDelay[0] = static_cast<Vek16s>(found.whole);
    pDstDelay[1] = static_cast<Vek16s>(found.thirds);
    return vekStsNoErr;
}

VekStatus veksAdaptiveCodebookGain_G7291_16s(const Vek16s* pSrcAdptTarget, const Vek16s* pSrcImpulseResponse,
                                             const Vek16s* pSrcAdptVector, Vek16s* pDstFltAdptVector,
                                             Vek16s* pResultAdptGain) {
    return veksAdaptiveCodebookGain_G729_16s(pSrcAdptTarget, pSrcImpulseResponse, pSrcAdptVector, pDstFltAdptVector,
                                             pResultAdptGain);
}
