// Searches of the four pulses of G.729, in full and as in Annex A. The pulses of other annexes are elsewhere.
#include "sc/g729/fourpulses.h"

#include "sc/common/signal_check.h"
#include "veksc_g729code.h"

namespace {

using namespace vek;
using namespace vek::fourpulses;

constexpr int kEntries = 75;
constexpr int kExtraEntries = 30;
constexpr int kMostEntries = 105;

template <class Corr, class Element>
VekStatus searchNested(const Corr* pSrc, Element* pSrcDst, Corr* pDst, Vek16s* pDstIndex, Vek16s* pSearchTimes,
                       Vek16s subFrame) {
    if (anyNull(pSrcDst) || anyNull(pSrc, pDst) || anyNull(pDstIndex, pSearchTimes)) {
        return vekStsNullPtrErr;
    }
    if (subFrame < 0 || subFrame > 1) {
        return vekStsRangeErr;
    }
    const int extra = subFrame == 0 ? kExtraEntries : std::clamp<int>(*pSearchTimes, 0, kMostEntries);
    int entries = kEntries + extra;
    const Search<Corr, Element> search(pSrc, pSrcDst);
    search.deliver(search.nested(entries), pDst, pDstIndex);
    *pSearchTimes = static_cast<Vek16s>(entries);
    return vekStsNoErr;
}

template <class Corr, class Element>
VekStatus searchDepthFirst(const Corr* pSrc, Element* pSrcDst, Corr* pDst, Vek16s* pDstIndex) {
    if (anyNull(pSrcDst) || anyNull(pSrc, pDst) || anyNull(pDstIndex)) {
        return vekStsNullPtrErr;
    }
    const Search<Corr, Element> search(pSrc, pSrcDst);
    search.deliver(search.depthFirst(), pDst, pDstIndex);
    return vekStsNoErr;
}

} // namespace

VekStatus veksFixedCodebookSearch_G729_16s(const Vek16s* pSrc, Vek16s* pSrcDst, Vek16s* pDst, Vek16s* pDstIndex,
                                           Vek16s* pSearchTimes, Vek16s subFrame) {
    return searchNested(pSrc, pSrcDst, pDst, pDstIndex, pSearchTimes, subFrame);
}
VekStatus veksFixedCodebookSearch_G729_32s16s(const Vek16s* pSrc, Vek32s* pSrcDst, Vek16s* pDst, Vek16s* pDstIndex,
                                              Vek16s* pSearchTimes, Vek16s subFrame) {
    return searchNested(pSrc, pSrcDst, pDst, pDstIndex, pSearchTimes, subFrame);
}
VekStatus veksFixedCodebookSearch_G729_32f(const Vek32f* pSrc, Vek32f* pSrcDst, Vek32f* pDst, Vek16s* pDstIndex,
                                           Vek16s* pSearchTimes, Vek16s subFrame) {
    return searchNested(pSrc, pSrcDst, pDst, pDstIndex, pSearchTimes, subFrame);
}

VekStatus veksFixedCodebookSearch_G729A_16s(const Vek16s* pSrc, Vek16s* pSrcDst, Vek16s* pDst, Vek16s* pDstIndex) {
    return searchDepthFirst(pSrc, pSrcDst, pDst, pDstIndex);
}
VekStatus veksFixedCodebookSearch_G729A_32s16s(const Vek16s* pSrc, Vek32s* pSrcDst, Vek16s* pDst, Vek16s* pDstIndex) {
    return searchDepthFirst(pSrc, pSrcDst, pDst, pDstIndex);
}
VekStatus veksFixedCodebookSearch_G729A_32f(const Vek32f* pSrc, Vek32f* pSrcDst, Vek32f* pDst, Vek16s* pDstIndex) {
    return searchDepthFirst(pSrc, pSrcDst, pDst, pDstIndex);
}
