// Public filters of the common family: harmonic, residual, synthesis, filtered excitation.
// The recursions themselves are in lpfilter.cpp and the kernels.
#include "veksc_filter.h"

#include <algorithm>

#include "sc/common/fixmath.h"
#include "sc/common/lpfilter.h"
#include "sc/common/signal_check.h"
#include "sc/g729/sizes.h"
#include "sc/kernels/loops.h"

namespace {

using namespace vek;

using g729::kOrder;
using g729::kSubframe;

// Stretches of at most T samples read nothing that they write, so that each can be done at once. Apart from what is a
// single one, which would have to save this one's registers.
template <class Sample, class Step>
[[gnu::noinline]] VekStatus inSeveralStretches(Sample* x, int T, int len, Step step) {
    for (int i = 0; i < len; i += T) {
        step(x + i, x + i - T, std::min(T, len - i));
    }
    return vekStsNoErr;
}

template <class Sample, class Step>
VekStatus inStretches(Sample* x, int T, int len, Step step) {
    if (len <= T || T == 0) {
        return step(x, x - T, len);
    }
    return inSeveralStretches(x, T, len, step);
}

VekStatus checkHarmonic(const void* x, int T, int len) {
    if (x == nullptr) {
        return vekStsNullPtrErr;
    }
    if (badLength(len)) {
        return vekStsSizeErr;
    }
    return T < 0 || T > kMaxSignalLength ? vekStsRangeErr : vekStsNoErr;
}

VekStatus synthesis(const Vek16s* pLPC, const Vek16s* pSrc, Vek16s* pDst, int len, int scaleFactor, const Vek16s* pMem,
                    Steps steps) {
    if (!pLPC || !pSrc || !pDst || !pMem) {
        return vekStsNullPtrErr;
    }
    if (badLength(len)) {
        return vekStsSizeErr;
    }
    if (scaleFactor < 0 || scaleFactor > 15) {
        return vekStsScaleRangeErr;
    }
    synthesisFilter(pLPC, kOrder, pSrc, pDst, len, scaleFactor, pMem, steps);
    return vekStsNoErr;
}

} // namespace

VekStatus veksHarmonicFilter_NR_16s(Vek16s beta, int T, const Vek16s* pSrc, Vek16s* pDst, int len) {
    if (pSrc == nullptr) {
        return vekStsNullPtrErr;
    }
    if (const VekStatus status = checkHarmonic(pDst, T, len); status != vekStsNoErr) {
        return status;
    }
    if (pSrc != pDst) {
        return filterKernels().addScaled(pSrc, pSrc - T, beta, pDst, len, 0x4000);
    }
    return inStretches(pDst, T, len, [beta](Vek16s* x, const Vek16s* d, int n) {
        return filterKernels().addScaled(x, d, beta, x, n, 0x4000);
    });
}

VekStatus veksHarmonicFilter_16s_I(Vek16s beta, int T, Vek16s* pSrcDst, int len) {
    if (const VekStatus status = checkHarmonic(pSrcDst, T, len); status != vekStsNoErr) {
        return status;
    }
    if (beta == -32768) {
        // The product alone saturates here before it is added.
        for (int i = 0; i < len; i++) {
            pSrcDst[i] = fix::add(pSrcDst[i], fix::mult(pSrcDst[i - T], beta));
        }
        return vekStsNoErr;
    }
    return inStretches(pSrcDst, T, len, [beta](Vek16s* x, const Vek16s* d, int n) {
        return filterKernels().addScaled(x, d, beta, x, n, 0);
    });
}

VekStatus veksHarmonicFilter_32f_I(int T, Vek32f* pSrcDst, int len, Vek32f beta) {
    if (const VekStatus status = checkHarmonic(pSrcDst, T, len); status != vekStsNoErr) {
        return status;
    }
    return inStretches(pSrcDst, T, len, [beta](Vek32f* x, const Vek32f* d, int n) {
        return loopKernels().addScaled32f(x, d, beta, x, n);
    });
}

VekStatus veksResidualFilter_G729_16s(const Vek16s* pSrc, const Vek16s* pLPC, Vek16s* pDst) {
    if (!pSrc || !pLPC || !pDst) {
        return vekStsNullPtrErr;
    }
    residualFilter(pLPC, kOrder, pSrc, pDst, kSubframe, 12);
    return vekStsNoErr;
}

VekStatus veksSynthesisFilter_NR_16s_Sfs(const Vek16s* pLPC, const Vek16s* pSrc, Vek16s* pDst, int len, int scaleFactor,
                                         const Vek16s* pMem) {
    return synthesis(pLPC, pSrc, pDst, len, scaleFactor, pMem, Steps::Saturate);
}

VekStatus veksSynthesisFilter_NR_16s_ISfs(const Vek16s* pLPC, Vek16s* pSrcDst, int len, int scaleFactor,
                                          const Vek16s* pMem) {
    return synthesis(pLPC, pSrcDst, pSrcDst, len, scaleFactor, pMem, Steps::Saturate);
}

VekStatus veksSynthesisFilterLow_NR_16s_ISfs(const Vek16s* pLPC, Vek16s* pSrcDst, int len, int scaleFactor,
                                             const Vek16s* pMem) {
    return synthesis(pLPC, pSrcDst, pSrcDst, len, scaleFactor, pMem, Steps::Wrap);
}

VekStatus veksSynthesisFilterZeroStateResponse_NR_16s(const Vek16s* pLPC, Vek16s* pDst, int len, int scaleFactor) {
    if (!pLPC || !pDst) {
        return vekStsNullPtrErr;
    }
    if (badLength(len)) {
        return vekStsSizeErr;
    }
    if (scaleFactor < 0 || scaleFactor > 15) {
        return vekStsScaleRangeErr;
    }
    static constexpr Vek16s kZeroState[kOrder] = {};
    std::fill_n(pDst, len, static_cast<Vek16s>(0));
    pDst[0] = 4096;
    synthesisFilter(pLPC, kOrder, pDst, pDst, len, scaleFactor, kZeroState);
    return vekStsNoErr;
}

VekStatus veksFilteredExcitation_G729_32f(const Vek32f* pSrc, Vek32f* pSrcDst, int len, Vek32f val) {
    if (!pSrc || !pSrcDst) {
        return vekStsNullPtrErr;
    }
    if (badLength(len)) {
        return vekStsSizeErr;
    }
    return loopKernels().moveUp32f(pSrcDst, pSrc, val, len);
}
