// Residual, pre-emphasis, de-emphasis and the synthesis with 32-bit outputs of AMR-WB. The high-pass filters are in
// flthighpass.cpp.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "sc/common/cutsum.h"
#include "sc/common/fixmath.h"
#include "sc/common/lpfilter.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/loops.h"
#include "veksc_amrwbflt.h"

namespace {

using namespace vek::fix;

template <class... P>
VekStatus checkFilter(int order, int len, const P*... p) {
    if (anyNull(p...)) {
        return vekStsNullPtrErr;
    }
    if (order < 1 || order > kMaxLpOrder) {
        return vekStsFilterOrderErr;
    }
    return badLength(len) ? vekStsSizeErr : vekStsNoErr;
}

VekStatus residual(const Vek16s* lpc, int order, const Vek16s* src, Vek16s* dst, int len, int scale, Steps steps) {
    if (const VekStatus status = checkFilter(order, len, lpc, src, dst); status != vekStsNoErr) {
        return status;
    }
    if (scale < 0 || scale > 15) {
        return vekStsScaleRangeErr;
    }
    residualFilter(lpc, order, src, dst, len, scale, steps);
    return vekStsNoErr;
}

// A sum that saturates on its way leaves the same 16 bits, since what follows only enlarges and rounds it.
VekStatus deemphasize(Vek16s gamma, int scale, Vek16s* x, int len, Vek16s* mem) {
    if (const VekStatus status = checkSignal(len, x, mem); status != vekStsNoErr) {
        return status;
    }
    if (scale < 13 || scale > 15) {
        return vekStsScaleRangeErr;
    }
    int64_t y = *mem;
    for (int i = 0; i < len; ++i) {
        y = cutSum<15>(x[i] * (int64_t{1} << scale) + 0x4000, y * gamma);
        x[i] = static_cast<Vek16s>(y);
    }
    *mem = static_cast<Vek16s>(y);
    return vekStsNoErr;
}

// Order 0 takes the one passed.
template <int Order>
void synthesis(const Vek16s* lpc, int order, const Vek16s* x, Vek32s* y, int len) {
    constexpr int kChunk = 128;
    const int m = Order > 0 ? Order : order;
    int64_t a[kMaxLpOrder + 1];
    for (int j = 0; j <= m; ++j) {
        a[j] = -2 * lpc[j];
    }
    const int gain = 2 * (lpc[0] >> 4);
    int64_t buffer[kMaxLpOrder + kChunk];
    int64_t* const v = buffer + kMaxLpOrder;
    for (int j = -m; j < 0; ++j) {
        v[j] = y[j] >> 4;
    }
    while (len > 0) {
        const int n = std::min(len, kChunk);
        for (int i = 0; i < n; ++i) {
            // The last output comes late and is taken in last.
            int64_t s = 0;
#pragma GCC unroll 16
            for (int j = m; j > 1; --j) {
                s += a[j] * v[i - j];
            }
            s += a[1] * v[i - 1];
            int64_t out = ((s >> 12) + gain * x[i]) * 8;
            if (out != static_cast<int32_t>(out)) [[unlikely]] {
                out = out < 0 ? kMin32 : kMax32;
            }
            v[i] = out >> 4;
            y[i] = static_cast<Vek32s>(out & ~int64_t{15});
        }
        std::memmove(v - m, v + n - m, static_cast<size_t>(m) * sizeof(int64_t));
        len -= n;
        x += n;
        y += n;
    }
}

} // namespace

VekStatus veksResidualFilter_Low_16s_Sfs(const Vek16s* pSrcLpc, int order, const Vek16s* pSrc, Vek16s* pDst, int len,
                                         int scaleFactor) {
    return residual(pSrcLpc, order, pSrc, pDst, len, scaleFactor, Steps::Wrap);
}

VekStatus veksResidualFilter_AMRWB_16s_Sfs(const Vek16s* pSrcLpc, int order, const Vek16s* pSrc, Vek16s* pDst, int len,
                                           int scaleFactor) {
    return residual(pSrcLpc, order, pSrc, pDst, len, scaleFactor, Steps::Saturate);
}

VekStatus veksPreemphasize_AMRWB_16s_ISfs(Vek16s gamma, Vek16s* pSrcDst, int len, int scaleFactor, Vek16s* pMem) {
    if (const VekStatus status = checkSignal(len, pSrcDst, pMem); status != vekStsNoErr) {
        return status;
    }
    if (scaleFactor < 0 || scaleFactor > 15) {
        return vekStsScaleRangeErr;
    }
    const int half = scaleFactor > 0 ? 1 << (scaleFactor - 1) : 0;
    *pMem = loopKernels().lessWeighted16(pSrcDst, *pMem, gamma, {.shift = scaleFactor, .half = half}, len);
    return vekStsNoErr;
}

VekStatus veksDeemphasize_AMRWB_32s16s(Vek16s gamma, const Vek32s* pSrc, Vek16s* pDst, int len, Vek16s* pMem) {
    if (const VekStatus status = checkSignal(len, pDst, pMem, pSrc); status != vekStsNoErr) {
        return status;
    }
    const int factor = 4 * (gamma >> 1);
    int64_t y = *pMem;
    for (int i = 0; i < len; ++i) {
        const int64_t known = 2 * static_cast<int64_t>(sat32(int64_t{8} * (pSrc[i] & ~15))) + 0x8000;
        y = cutSum<16>(known, y * factor);
        pDst[i] = static_cast<Vek16s>(y);
    }
    *pMem = static_cast<Vek16s>(y);
    return vekStsNoErr;
}

VekStatus veksDeemphasize_AMRWB_NR_16s_I(Vek16s gamma, Vek16s* pSrcDst, int len, Vek16s* pMem) {
    return deemphasize(gamma, 14, pSrcDst, len, pMem);
}

VekStatus veksDeemphasize_AMRWBE_NR_16s_I(Vek16s gamma, int scale, Vek16s* pSrcDst, int len, Vek16s* pMem) {
    return deemphasize(gamma, scale, pSrcDst, len, pMem);
}

VekStatus veksSynthesisFilter_AMRWB_16s32s_I(const Vek16s* pSrcLpc, int order, const Vek16s* pSrcExcitation,
                                             Vek32s* pSrcDst, int len) {
    if (const VekStatus status = checkFilter(order, len, pSrcLpc, pSrcExcitation, pSrcDst); status != vekStsNoErr) {
        return status;
    }
    if (order == 16) {
        synthesis<16>(pSrcLpc, order, pSrcExcitation, pSrcDst, len);
    } else {
        synthesis<0>(pSrcLpc, order, pSrcExcitation, pSrcDst, len);
    }
    return vekStsNoErr;
}

VekStatus veksSynthesisFilter_AMRWBE_16s32s_I(const Vek16s* pSrcLpc, int order, const Vek16s* pSrcExcitation,
                                              Vek32s* pSrcDst, int len) {
    return veksSynthesisFilter_AMRWB_16s32s_I(pSrcLpc, order, pSrcExcitation, pSrcDst, len);
}
