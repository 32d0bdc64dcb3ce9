// Searches of the four pulses of G.729, in full and as in Annex A. The pulses of other annexes are elsewhere.
#include "sc/g729/fourpulses.h"

#include "sc/common/signal_check.h"
#include "veksc_g729code.h"

namespace {

using namespace vek::fourpulses;

constexpr int kEntries = 75;
constexpr int kExtraEntries = 30;
constexpr int kMostEntries = 105;

template <class Corr, class Element>
VekStatus searchNested(const FourPulseSearches<Corr, Element>& searches, const Corr* pSrc, Element* pSrcDst, Corr* pDst,
                       Vek16s* pDstIndex, Vek16s* pSearchTimes, Vek16s subFrame) {
    if (anyNull(pSrcDst, pSrc, pDst, pDstIndex, pSearchTimes)) {
        return vekStsNullPtrErr;
    }
    if (subFrame < 0 || subFrame > 1) {
        return vekStsRangeErr;
    }
    const int extra = subFrame == 0 ? kExtraEntries : std::clamp<int>(*pSearchTimes, 0, kMostEntries);
    int entries = kEntries + extra;
    deliver(searches.nested(pSrc, pSrcDst, &entries), pSrc, pDst, pDstIndex);
    *pSearchTimes = static_cast<Vek16s>(entries);
    return vekStsNoErr;
}

template <class Corr, class Element>
VekStatus searchDepthFirst(const FourPulseSearches<Corr, Element>& searches, const Corr* pSrc, Element* pSrcDst,
                           Corr* pDst, Vek16s* pDstIndex) {
    if (anyNull(pSrcDst, pSrc, pDst, pDstIndex)) {
        return vekStsNullPtrErr;
    }
    deliver(searches.depthFirst(pSrc, pSrcDst), pSrc, pDst, pDstIndex);
    return vekStsNoErr;
}

} // namespace

VekStatus veksFixedCodebookSearch_G729_16s(const Vek16s* pSrc, Vek16s* pSrcDst, Vek16s* pDst, Vek16s* pDstIndex,
                                           Vek16s* pSearchTimes, Vek16s subFrame) {
    return searchNested(fourPulseKernels().narrow, pSrc, pSrcDst, pDst, pDstIndex, pSearchTimes, subFrame);
}
VekStatus veksFixedCodebookSearch_G729_32s16s(const Vek16s* pSrc, Vek32s* pSrcDst, Vek16s* pDst, Vek16s* pDstIndex,
                                              Vek16s* pSearchTimes, Vek16s subFrame) {
    return searchNested(fourPulseKernels().wide, pSrc, pSrcDst, pDst, pDstIndex, pSearchTimes, subFrame);
}
VekStatus veksFixedCodebookSearch_G729_32f(const Vek32f* pSrc, Vek32f* pSrcDst, Vek32f* pDst, Vek16s* pDstIndex,
                                           Vek16s* pSearchTimes, Vek16s subFrame) {
    return searchNested(fourPulseKernels().real, pSrc, pSrcDst, pDst, pDstIndex, pSearchTimes, subFrame);
}

VekStatus veksFixedCodebookSearch_G729A_16s(const Vek16s* pSrc, Vek16s* pSrcDst, Vek16s* pDst, Vek16s* pDstIndex) {
    return searchDepthFirst(fourPulseKernels().narrow, pSrc, pSrcDst, pDst, pDstIndex);
}
VekStatus veksFixedCodebookSearch_G729A_32s16s(const Vek16s* pSrc, Vek32s* pSrcDst, Vek16s* pDst, Vek16s* pDstIndex) {
    return searchDepthFirst(fourPulseKernels().wide, pSrc, pSrcDst, pDst, pDstIndex);
}
VekStatus veksFixedCodebookSearch_G729A_32f(const Vek32f* pSrc, Vek32f* pSrcDst, Vek32f* pDst, Vek16s* pDstIndex) {
    return searchDepthFirst(fourPulseKernels().real, pSrc, pSrcDst, pDst, pDstIndex);
}
