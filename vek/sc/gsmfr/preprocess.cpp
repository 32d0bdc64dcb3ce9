// First and last steps of GSM full rate: offset compensation, pre-emphasis, de-emphasis.
#include "sc/common/cutsum.h"
#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/filter.h"
#include "veksc_gsmfr.h"

using namespace vek::fix;

namespace {

constexpr Vek16s kEmphasis = 28180; // 0.86
constexpr Vek16s kOffsetPole = 32735;

} // namespace

VekStatus veksHighPassFilter_GSMFR_16s(const Vek16s* pSrc, Vek16s* pDst, int len, Vek32s* pMem) {
    if (const VekStatus status = checkSignal(len, pSrc, pDst, pMem); status != vekStsNoErr) {
        return status;
    }
    auto past = static_cast<int32_t>(extract_l(pMem[0]));
    int32_t sum = pMem[1];
    for (int i = 0; i < len; ++i) {
        const int32_t scaled = (pSrc[i] >> 3) * 4;
        const int32_t step = scaled - past;
        past = scaled;
        // The pole's product in two words, the lower one rounded, is the rounded product of the whole. What is added is
        // whole after the shift.
        const int64_t next = (int64_t{sum} * kOffsetPole + (step * (int64_t{1} << 30) + 0x4000)) >> 15;
        sum = static_cast<int32_t>(next);
        if (sum != next) [[unlikely]] {
            sum = sat32(next);
        }
        pDst[i] = static_cast<Vek16s>((int64_t{sum} + 0x4000) >> 15);
    }
    pMem[0] = past;
    pMem[1] = sum;
    return vekStsNoErr;
}

VekStatus veksPreemphasize_GSMFR_16s(const Vek16s* pSrc, Vek16s* pDst, int len, Vek16s* pMem) {
    if (const VekStatus status = checkSignal(len, pSrc, pDst, pMem); status != vekStsNoErr) {
        return status;
    }
    const auto emphasized = [](Vek16s now, Vek16s past) { return sat16(now + ((past * -kEmphasis + 0x4000) >> 15)); };
    const Vek16s last = pSrc[len - 1];
    if (pSrc + len <= pDst || pDst + len <= pSrc) {
        pDst[0] = emphasized(pSrc[0], *pMem);
        filterKernels().addScaled(pSrc + 1, pSrc, -kEmphasis, pDst + 1, len - 1, 0x4000);
    } else {
        Vek16s past = *pMem;
        for (int i = 0; i < len; ++i) {
            const Vek16s now = pSrc[i];
            pDst[i] = emphasized(now, past);
            past = now;
        }
    }
    *pMem = last;
    return vekStsNoErr;
}

VekStatus veksDeemphasize_GSMFR_16s_I(Vek16s* pSrcDst, int len, Vek16s* pMem) {
    if (const VekStatus status = checkSignal(len, pSrcDst, pMem); status != vekStsNoErr) {
        return status;
    }
    constexpr int kThirteenBits = ~7;
    int64_t sum = *pMem;
    for (int i = 0; i < len; ++i) {
        sum = cutSum<15>(pSrcDst[i] * (1 << 15) + 0x4000, sum * kEmphasis);
        pSrcDst[i] = static_cast<Vek16s>(sat16_64(2 * sum) & kThirteenBits);
    }
    *pMem = static_cast<Vek16s>(sum);
    return vekStsNoErr;
}
