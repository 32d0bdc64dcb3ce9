// Short-term prediction of GSM full rate: Schur recursion and the lattice filters.
#include <algorithm>
#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/lattice.h"
#include "veksc_gsmfr.h"

using namespace vek::fix;

namespace {

constexpr int kOrder = 8;
constexpr int kStretch = 160;

// A stretch through one stage: d becomes its forward output, out its backward output; back holds the backward input,
// one sample late, its state at back[0].
void stage(Vek16s r, Vek16s* d, const Vek16s* back, Vek16s* out, int n) {
    if (r != -32768) {
        latticeKernels().analysis(r, back, d, out, n);
        return;
    }
    for (int i = 0; i < n; ++i) {
        out[i] = add(back[i], mult_r(r, d[i]));
        d[i] = add(d[i], mult_r(r, back[i]));
    }
}

// A cut that is hardly ever taken costs the chain from stage to stage nothing.
inline int cut(int v) {
    if (v != static_cast<Vek16s>(v)) [[unlikely]] {
        v = v < 0 ? -32768 : 32767;
    }
    return v;
}

// lowest: a coefficient may be -32768, whose product with itself saturates.
template <bool lowest>
void synthesis(const Vek16s* rc, const Vek16s* x, Vek16s* y, int len, Vek16s* state) {
    const auto product = [](int r, int v) {
        const int p = (r * v + 0x4000) >> 15;
        return lowest ? cut(p) : p;
    };
    int r[kOrder];
    int v[kOrder + 1];
    std::copy_n(rc, kOrder, r);
    std::copy_n(state, kOrder + 1, v);
    for (int n = 0; n < len; ++n) {
        int s = x[n];
        for (int i = kOrder - 1; i >= 0; --i) {
            s = cut(s - product(r[i], v[i]));
            v[i + 1] = cut(v[i] + product(r[i], s));
        }
        v[0] = s;
        y[n] = static_cast<Vek16s>(s);
    }
    for (int i = 0; i <= kOrder; ++i) {
        state[i] = static_cast<Vek16s>(v[i]);
    }
}

} // namespace

VekStatus veksSchur_GSMFR_32s16s(const Vek32s* pSrc, Vek16s* pDst, int lenDst) {
    if (anyNull(pSrc, pDst)) {
        return vekStsNullPtrErr;
    }
    if (lenDst < 1 || lenDst > kOrder) {
        return vekStsSizeErr;
    }
    std::fill_n(pDst, lenDst, static_cast<Vek16s>(0));
    if (pSrc[0] == 0) {
        return vekStsNoErr;
    }
    const int shift = norm_l(pSrc[0]);
    Vek16s p[kOrder + 1];
    Vek16s k[kOrder + 1];
    for (int i = 0; i <= lenDst; ++i) {
        p[i] = extract_h(L_shl(pSrc[i], shift));
        k[i] = p[i];
    }
    for (int n = 1; n <= lenDst; ++n) {
        const Vek16s magnitude = abs_s(p[1]);
        if (p[0] < magnitude) {
            return vekStsNoErr;
        }
        const Vek16s r = p[1] > 0 ? negate(div_s(magnitude, p[0])) : div_s(magnitude, p[0]);
        pDst[n - 1] = r;
        if (n == lenDst) {
            return vekStsNoErr;
        }
        p[0] = add(p[0], mult_r(p[1], r));
        for (int m = 1; m <= lenDst - n; ++m) {
            const Vek16s next = p[m + 1];
            p[m] = add(next, mult_r(k[m], r));
            k[m] = add(k[m], mult_r(next, r));
        }
    }
    return vekStsNoErr;
}

VekStatus veksShortTermAnalysisFilter_GSMFR_16s_I(const Vek16s* pRc, Vek16s* pSrcDstSpch, int len, Vek16s* pMem) {
    if (const VekStatus status = checkSignal(len, pRc, pSrcDstSpch, pMem); status != vekStsNoErr) {
        return status;
    }
    alignas(32) Vek16s buffers[2][kStretch + 1];
    for (int first = 0; first < len; first += kStretch) {
        const int n = std::min(kStretch, len - first);
        Vek16s* d = pSrcDstSpch + first;
        Vek16s* back = buffers[0];
        Vek16s* out = buffers[1];
        std::memcpy(back + 1, d, static_cast<size_t>(n) * sizeof(Vek16s));
        for (int i = 0; i < kOrder; ++i) {
            back[0] = pMem[i];
            stage(pRc[i], d, back, out + 1, n);
            pMem[i] = back[n];
            std::swap(back, out);
        }
    }
    return vekStsNoErr;
}

VekStatus veksShortTermSynthesisFilter_GSMFR_16s(const Vek16s* pRc, const Vek16s* pSrcResidual, Vek16s* pDstSpch,
                                                 int len, Vek16s* pMem) {
    if (const VekStatus status = checkSignal(len, pRc, pSrcResidual, pDstSpch, pMem); status != vekStsNoErr) {
        return status;
    }
    if (std::find(pRc, pRc + kOrder, -32768) == pRc + kOrder) {
        synthesis<false>(pRc, pSrcResidual, pDstSpch, len, pMem);
    } else {
        synthesis<true>(pRc, pSrcResidual, pDstSpch, len, pMem);
    }
    return vekStsNoErr;
}
