// The two recursive high-pass filters of AMR-WB, of 50 and 400 Hz, and the symmetric filter of three taps.
#include "sc/common/fixmath.h"
#include "sc/common/highpass.h"
#include "sc/common/markedstate.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/loops.h"
#include "veksc_amrwbflt.h"

namespace {

using namespace vek::fix;

constexpr HighPassSection k50 = {4053, -8106, 16211, -8021, 2, 1};
constexpr HighPassSection k400 = {915, -1830, 29280, -14160, 1, 0};

// The loop waits for the last output only: the rest of a sample's sum is made ahead.
template <HighPassSection F>
void run(HighPassMemory& m, const Vek16s* src, Vek16s* dst, int n) {
    int64_t y1 = m.y1;
    int64_t older = static_cast<int64_t>(m.y2) * F.a2;
    int x1 = m.x1;
    int x2 = m.x2;
    for (int i = 0; i < n; ++i) {
        const int x0 = src[i];
        const int64_t known = (static_cast<int64_t>(F.b0 * (x0 + x2) + F.b1 * x1) << 15) + older + 0x2000;
        x2 = x1;
        x1 = x0;
        older = y1 * F.a2;
        m.y2 = static_cast<Vek32s>(y1);
        y1 = ((y1 * F.a1 + known) >> 14) * (1 << (F.shift - 1));
        int64_t v = 2 * y1;
        if (v != static_cast<int32_t>(v)) [[unlikely]] {
            v = v < 0 ? kMin32 : kMax32;
            y1 = v >> 1;
        }
        dst[i] = sat16_64((v * (1 << F.outShift) + 0x8000) >> 16);
    }
    m.y1 = static_cast<Vek32s>(y1);
    m.x1 = static_cast<Vek16s>(x1);
    m.x2 = static_cast<Vek16s>(x2);
}

} // namespace

VekStatus veksHighPassFilterGetSize_AMRWB_16s(int* pSize) {
    return stateSize<HighPassMemory>(pSize);
}

VekStatus veksHighPassFilterInit_AMRWB_16s(char* pMem) {
    return initHighPass(pMem);
}

VekStatus veksHighPassFilter_AMRWB_16s_ISfs(Vek16s* pSrcDst, int len, char* pMemUpdated, int scaleFactor) {
    return veksHighPassFilter_AMRWB_16s_Sfs(pSrcDst, pSrcDst, len, pMemUpdated, scaleFactor);
}

VekStatus veksHighPassFilter_AMRWB_16s_Sfs(const Vek16s* pSrc, Vek16s* pDst, int len, char* pMemUpdated,
                                           int scaleFactor) {
    if (anyNull(pSrc, pDst) || pMemUpdated == nullptr) {
        return vekStsNullPtrErr;
    }
    if (badLength(len)) {
        return vekStsSizeErr;
    }
    if (scaleFactor != 12 && scaleFactor != 14) {
        return vekStsScaleRangeErr;
    }
    withHighPassMemory(pMemUpdated, [&](HighPassMemory& m) {
        scaleFactor == 14 ? run<k50>(m, pSrc, pDst, len) : run<k400>(m, pSrc, pDst, len);
    });
    return vekStsNoErr;
}

VekStatus veksHighPassFilter_Direct_AMRWB_16s(const Vek16s* pCoeff, const Vek16s* pSrc, Vek16s* pDst, int len,
                                              int bounds) {
    if (anyNull(pCoeff, pSrc, pDst)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len)) {
        return vekStsSizeErr;
    }
    if (bounds != 0 && bounds != 1) {
        return vekStsRangeErr;
    }
    const Vek16s side = pCoeff[0];
    const Vek16s middle = pCoeff[1];
    const auto stepwise = [&](Vek16s before, Vek16s x, Vek16s after) {
        return round_s(L_mac(L_mac(L_mult(side, before), middle, x), side, after));
    };
    // Coefficients whose magnitudes sum up to 1, as the published ones do, or less saturate at the end alone.
    const bool tame = 2 * L_abs(side) + L_abs(middle) <= 32768;
    if (tame && bounds == 1) {
        loopKernels().threeTaps(side, middle, pSrc, pDst, len);
        return vekStsNoErr;
    }
    const Vek16s before = bounds == 1 ? pSrc[-1] : Vek16s{0};
    const Vek16s after = bounds == 1 ? pSrc[len] : Vek16s{0};
    if (len == 1) {
        pDst[0] = stepwise(before, pSrc[0], after);
        return vekStsNoErr;
    }
    pDst[0] = stepwise(before, pSrc[0], pSrc[1]);
    if (tame) {
        loopKernels().threeTaps(side, middle, pSrc + 1, pDst + 1, len - 2);
    } else {
        for (int i = 1; i < len - 1; ++i) {
            pDst[i] = stepwise(pSrc[i - 1], pSrc[i], pSrc[i + 1]);
        }
    }
    pDst[len - 1] = stepwise(pSrc[len - 2], pSrc[len - 1], after);
    return vekStsNoErr;
}
