// Line spectral frequencies: their cosines, and the interpolation between two frames.
#include <algorithm>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/gsmamr/linespectrum.h"
#include "veksc_gsmamr.h"

using namespace vek;
using namespace vek::fix;
using vek::g729::kOrder;

VekStatus veksInterpolate_GSMAMR_16s(const Vek16s* pSrc1, const Vek16s* pSrc2, Vek16s* pDst, int len) {
    if (anyNull(pSrc1, pSrc2, pDst)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len)) {
        return vekStsSizeErr;
    }
    for (int i = 0; i < len; ++i) {
        pDst[i] = sat16((pSrc1[i] >> 2) + (pSrc2[i] - (pSrc2[i] >> 2)));
    }
    return vekStsNoErr;
}

VekStatus veksLSFToLSP_GSMAMR_16s(const Vek16s* pLSF, Vek16s* pLSP) {
    constexpr unsigned half = 16384;
    if (anyNull(pLSF, pLSP)) {
        return vekStsNullPtrErr;
    }
    Vek16s lsp[kOrder];
    for (int i = 0; i < kOrder; ++i) {
        const int frequency = pLSF[i];
        if (static_cast<unsigned>(frequency) > half) {
            return vekStsRangeErr;
        }
        lsp[i] = gsmamr::lspOf(frequency);
    }
    std::copy_n(lsp, kOrder, pLSP);
    return vekStsNoErr;
}
