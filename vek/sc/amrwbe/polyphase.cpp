// Resampling between rates with a small ratio.
#include "sc/amrwbe/resamplebanks.h"
#include "sc/common/signal_check.h"
#include "veksc_amrwberes.h"

using namespace vek;

namespace {

constexpr int kLongestMemory = 144;

bool isFactor(int factor) {
    return factor == 2 || factor == 3 || factor == 4 || factor == 6 || factor == 8;
}

} // namespace

VekStatus veksResamplePolyphase_AMRWBE_16s(const Vek16s* pSrc, int lenSrc, int factor, int base, Vek16s* pSrcDstFrac,
                                           Vek16s* pSrcDstMem, Vek16s* pDst, int lenDst) {
    if (anyNull(pSrc, pSrcDstFrac, pSrcDstMem, pDst)) {
        return vekStsNullPtrErr;
    }
    if (base != 12 || !isFactor(factor)) {
        return vekStsRangeErr;
    }
    if (lenSrc < 12 || lenSrc > kLongestFrame || lenDst < 1) {
        return vekStsSizeErr;
    }
    const Polyphase bank = lenDst > lenSrc ? twelfthsUp(factor) : twelfthsDown(factor);
    const int fraction = *pSrcDstFrac;
    if (fraction < 0 || fraction >= bank.step) {
        return vekStsRangeErr;
    }
    // The first place behind the source is less than a step away.
    const int64_t rest = fraction + int64_t{bank.step} * lenDst - int64_t{bank.phases} * lenSrc;
    if (rest < 0 || rest >= bank.step) {
        return vekStsSizeErr;
    }
    const Joined<kLongestMemory> x(pSrcDstMem, bank.taps, pSrc, lenSrc);
    resampleKernels().exact(bank, fraction, x.data() + 1, pDst, lenDst);
    x.keep(pSrcDstMem);
    *pSrcDstFrac = static_cast<Vek16s>(rest);
    return vekStsNoErr;
}
