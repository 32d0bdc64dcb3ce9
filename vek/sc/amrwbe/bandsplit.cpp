// The very low band of a frame and the rest, and both together again.
#include <cstring>

#include "sc/amrwbe/resamplebanks.h"
#include "sc/common/signal_check.h"
#include "veksc_amrwberes.h"

using namespace vek;

namespace {

constexpr int kPastLow = 20;
constexpr int kPast = 128; // the same in samples of the full rate

bool badFrame(int len) {
    return len < kPast || len > 1024 || len % kPast != 0;
}

constexpr int lowLength(int len) {
    return len * 5 / 32;
}

// What the low band is at the full rate.
void raise(const Vek16s* low, Vek16s* dst, int len) {
    resampleKernels().exact(lowBandUp(), 0, low + 1, dst, len);
}

} // namespace

VekStatus veksBandSplit_AMRWBE_16s(const Vek16s* pSrc, Vek16s* pSrcDstLow, Vek16s* pDstHigh, int len) {
    if (anyNull(pSrc, pSrcDstLow, pDstHigh)) {
        return vekStsNullPtrErr;
    }
    if (badFrame(len)) {
        return vekStsSizeErr;
    }
    std::memmove(pSrcDstLow, pSrcDstLow + lowLength(len), kPastLow * sizeof(Vek16s));
    resampleKernels().exact(lowBandDown(), 0, pSrc + 1, pSrcDstLow + kPastLow, lowLength(len));
    raise(pSrcDstLow, pDstHigh, len);
    resampleKernels().subtract(pSrc, pDstHigh, pDstHigh, len);
    return vekStsNoErr;
}

VekStatus veksBandJoin_AMRWBE_16s(const Vek16s* pSrcLow, const Vek16s* pSrcHigh, Vek16s* pDst, int len) {
    if (anyNull(pSrcLow, pSrcHigh, pDst)) {
        return vekStsNullPtrErr;
    }
    if (badFrame(len)) {
        return vekStsSizeErr;
    }
    raise(pSrcLow, pDst, len);
    resampleKernels().add(pSrcHigh, pDst, pDst, len);
    return vekStsNoErr;
}
