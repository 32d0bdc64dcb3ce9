// From the rate of a file to the two halves of the internal one, and back.
#include <cstring>

#include "sc/amrwbe/halfband.h"
#include "sc/common/signal_check.h"
#include "veksc_amrwberes.h"

using namespace vek;

namespace {

constexpr int kHalf = 1024;
constexpr int kFrame = 2 * kHalf; // of the internal rate

// The rate of a file as 8 * freqScale is the internal one; 0 for no length of 80 ms.
int fileRate(int frameLen) {
    return frameLen == 3840 ? 1440 : frameLen == 3528 ? 1323 : 0;
}

uint64_t place(int numerator, int denominator) {
    return static_cast<uint64_t>(numerator) * (uint64_t{1} << kBlendQ) / static_cast<uint64_t>(denominator);
}

} // namespace

VekStatus veksBandSplitDownsample_AMRWBE_16s(const Vek16s* pSrc, int lenSrc, Vek16s* pDstLow, Vek16s* pDstHigh, int len,
                                             Vek16s* pSrcDstMem, Vek16s* pSrcDstFrac, int* pDstCount, int freqScale) {
    if (anyNull(pSrc, pDstLow, pDstHigh, pSrcDstMem, pSrcDstFrac, pDstCount)) {
        return vekStsNullPtrErr;
    }
    const int step = lenSrc % 2 == 0 ? fileRate(lenSrc / 2) : 0;
    if (step == 0 || len != kHalf) {
        return vekStsSizeErr;
    }
    const int phases = 8 * freqScale;
    const int index = freqScaleIndex(freqScale);
    const int fraction = *pSrcDstFrac;
    if (index < 0 || fraction < 0 || fraction >= phases) {
        return vekStsRangeErr;
    }
    const int end = fraction + kFrame * step;
    const int count = end / phases;
    const Joined<kBlendTaps> x(pSrcDstMem, kBlendTaps, pSrc, count);
    Vek16s internal[kHalvePast + kFrame];
    Vek16s* memory = pSrcDstMem + kBlendTaps;
    std::memcpy(internal, memory, kHalvePast * sizeof(Vek16s));
    resampleKernels().blended(blendedDown(index, step), place(fraction, phases), place(step, phases), x.data() + 1,
                              internal + kHalvePast, kFrame);
    halveRate(internal, pDstLow, kHalf, 0);
    halveRate(internal, pDstHigh, kHalf, 1);
    x.keep(pSrcDstMem);
    std::memcpy(memory, internal + kFrame, kHalvePast * sizeof(Vek16s));
    *pSrcDstFrac = static_cast<Vek16s>(end % phases);
    *pDstCount = count;
    return vekStsNoErr;
}

VekStatus veksBandJoinUpsample_AMRWBE_16s(const Vek16s* pSrcLow, const Vek16s* pSrcHigh, int len, Vek16s* pDst,
                                          int lenDst, Vek16s* pSrcDstMem, Vek16s* pSrcDstFrac, int* pDstCount,
                                          int freqScale) {
    if (anyNull(pSrcLow, pSrcHigh, pDst, pSrcDstMem, pSrcDstFrac, pDstCount)) {
        return vekStsNullPtrErr;
    }
    const int phases = fileRate(lenDst);
    if (phases == 0 || len != kHalf) {
        return vekStsSizeErr;
    }
    const int step = 8 * freqScale;
    const int fraction = *pSrcDstFrac;
    if (freqScaleIndex(freqScale) < 0 || fraction < 0 || fraction >= step) {
        return vekStsRangeErr;
    }
    const int count = (kFrame * phases - fraction + step - 1) / step;
    Vek16s* past = pSrcDstMem + 2 * kDoublePast;
    const Joined<kDoublePast> low(pSrcDstMem, kDoublePast, pSrcLow, kHalf);
    const Joined<kDoublePast> high(pSrcDstMem + kDoublePast, kDoublePast, pSrcHigh, kHalf);
    Vek16s internal[kBlendTaps + kFrame];
    Vek16s upper[kFrame];
    std::memcpy(internal, past, kBlendTaps * sizeof(Vek16s));
    doubleRate(low.data(), internal + kBlendTaps, kFrame, 0);
    doubleRate(high.data(), upper, kFrame, 1);
    resampleKernels().add(internal + kBlendTaps, upper, internal + kBlendTaps, kFrame);
    resampleKernels().blended(blendedUp(), place(fraction, phases), place(step, phases), internal + 1, pDst, count);
    low.keep(pSrcDstMem);
    high.keep(pSrcDstMem + kDoublePast);
    std::memcpy(past, internal + kFrame, kBlendTaps * sizeof(Vek16s));
    *pSrcDstFrac = static_cast<Vek16s>(fraction + count * step - kFrame * phases);
    *pDstCount = count;
    return vekStsNoErr;
}
