// One half of the band at half the rate, and back.
#include "sc/amrwbe/halfband.h"

#include "sc/common/signal_check.h"
#include "veksc_amrwberes.h"

using namespace vek;

namespace {

bool badFrame(int len) {
    return len < 24 || len > kLongestFrame || len % 2 != 0;
}

bool notFlag(int value) {
    return value != 0 && value != 1;
}

} // namespace

VekStatus veksDownsample_AMRWBE_16s(const Vek16s* pSrc, int lenSrc, Vek16s* pDst, Vek16s* pSrcDstMem, int bandIdx) {
    if (anyNull(pSrc, pDst, pSrcDstMem)) {
        return vekStsNullPtrErr;
    }
    if (badFrame(lenSrc)) {
        return vekStsSizeErr;
    }
    if (notFlag(bandIdx)) {
        return vekStsRangeErr;
    }
    const Joined<kHalvePast> x(pSrcDstMem, kHalvePast, pSrc, lenSrc);
    halveRate(x.data(), pDst, lenSrc / 2, bandIdx);
    x.keep(pSrcDstMem);
    return vekStsNoErr;
}

VekStatus veksUpsample_AMRWBE_16s(const Vek16s* pSrc, Vek16s* pDst, int lenDst, Vek16s* pSrcDstMem, int bandIdx,
                                  int addFlag) {
    if (anyNull(pSrc, pDst, pSrcDstMem)) {
        return vekStsNullPtrErr;
    }
    if (badFrame(lenDst)) {
        return vekStsSizeErr;
    }
    if (notFlag(bandIdx) || notFlag(addFlag)) {
        return vekStsRangeErr;
    }
    Vek16s* memory = pSrcDstMem + bandIdx * kDoublePast;
    const Joined<kDoublePast> x(memory, kDoublePast, pSrc, lenDst / 2);
    if (addFlag == 0) {
        doubleRate(x.data(), pDst, lenDst, bandIdx);
    } else {
        Vek16s y[kLongestFrame];
        doubleRate(x.data(), y, lenDst, bandIdx);
        resampleKernels().add(pDst, y, pDst, lenDst);
    }
    x.keep(memory);
    return vekStsNoErr;
}
