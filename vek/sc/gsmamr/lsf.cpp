// Line spectral frequencies: their cosines, and the interpolation between two frames.
#include <algorithm>

#include "sc/common/level_ns.h"
#include "sc/common/signal_check.h"
#include "sc/gsmamr/linespectrum.h"
#include "veksc_gsmamr.h"

using namespace vek::gsmamr;
using vek::g729::kCos;

namespace {

constexpr int kHalf = 16384; // of the sampling rate

// Whether all are from 0 to below half the sampling rate: no bit of them is above. One by one, as they have been
// written: a load of several would wait for the stores.
bool allBelowHalf(const Vek16s* lsf) {
    int used = 0;
#pragma GCC unroll 10
    for (int i = 0; i < kOrder; ++i) {
        used |= lsf[i];
    }
    return (used & -kHalf) == 0;
}

// The pair (Q15) of a frequency from 0 to below half the sampling rate.
Vek16s pairBelowHalf(int frequency) {
    const int step = frequency >> 8;
    const int rise = kCos[step + 1] - kCos[step];
    return static_cast<Vek16s>(kCos[step] + ((rise * (frequency & 0xff)) >> 8));
}

VEK_INLINE void pairsBelowHalf(const Vek16s* lsf, Vek16s* lsp) {
#pragma GCC unroll 10
    for (int i = 0; i < kOrder; ++i) {
        lsp[i] = pairBelowHalf(lsf[i]);
    }
}

} // namespace

void vek::gsmamr::lsfToLsp(const Vek16s* lsf, Vek16s* lsp) {
    if (allBelowHalf(lsf)) [[likely]] {
        pairsBelowHalf(lsf, lsp);
        return;
    }
    for (int i = 0; i < kOrder; ++i) {
        lsp[i] = lsf[i] >= kHalf ? kCos[64] : pairBelowHalf(std::max<int>(lsf[i], 0));
    }
}

VekStatus veksInterpolate_GSMAMR_16s(const Vek16s* pSrc1, const Vek16s* pSrc2, Vek16s* pDst, int len) {
    if (anyNull(pSrc1, pSrc2, pDst)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len)) {
        return vekStsSizeErr;
    }
    for (int i = 0; i < len; ++i) {
        // A quarter and three quarters never leave 16 bits.
        pDst[i] = static_cast<Vek16s>((pSrc1[i] >> 2) + (pSrc2[i] - (pSrc2[i] >> 2)));
    }
    return vekStsNoErr;
}

VekStatus veksLSFToLSP_GSMAMR_16s(const Vek16s* pLSF, Vek16s* pLSP) {
    if (anyNull(pLSF, pLSP)) {
        return vekStsNullPtrErr;
    }
    if (allBelowHalf(pLSF)) [[likely]] {
        pairsBelowHalf(pLSF, pLSP);
        return vekStsNoErr;
    }
    for (int i = 0; i < kOrder; ++i) {
        if (pLSF[i] < 0 || pLSF[i] > kHalf) {
            return vekStsRangeErr;
        }
    }
    gsmamr::lsfToLsp(pLSF, pLSP);
    return vekStsNoErr;
}
