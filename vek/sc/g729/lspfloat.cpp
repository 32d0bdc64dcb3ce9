// Conversions between prediction coefficients and line spectral pairs, order 10, in floating point.
#include <cstring>

#include "sc/common/linepairs.h"
#include "sc/common/signal_check.h"
#include "sc/g729/lsptables.h"
#include "veksc_g729lp.h"

namespace {

using namespace vek::g729;

float chebyshev(float x, const float* f) {
    const float twice = 2 * x;
    float b2 = 1;
    float b1 = twice + f[1];
    for (int i = 2; i < kHalf; ++i) {
        const float b0 = twice * b1 - b2 + f[i];
        b2 = b1;
        b1 = b0;
    }
    return x * b1 - b2 + 0.5F * f[kHalf];
}

struct Series {
    const float* f;
    float operator()(float x) const { return chebyshev(x, f); }
};

template <int Points, int Bisections>
VekStatus roots(const float* a, const float* previous, const Vek16s (&grid)[kGridRoom], float* lsp) {
    if (anyNull(a, previous, lsp)) {
        return vekStsNullPtrErr;
    }
    constexpr float kUnit = 1.0F / 32768;
    float f[2][kHalf + 1] = {{1}, {1}};
    for (int i = 0; i < kHalf; ++i) {
        f[0][i + 1] = a[i + 1] + a[kOrder - i] - f[0][i];
        f[1][i + 1] = a[i + 1] - a[kOrder - i] + f[1][i];
    }
    float found[kOrder];
    const int count = interlacedRoots<Bisections>(
        kOrder, Points, [&](int j) { return static_cast<float>(grid[j]) * kUnit; },
        [&](int n) { return Series{f[n & 1]}; }, found);
    if (count < kOrder) {
        std::memmove(lsp, previous, sizeof found);
        return vekStsUnstableFilter;
    }
    std::memcpy(lsp, found, sizeof found);
    return vekStsNoErr;
}

} // namespace

VekStatus veksLPCToLSP_G729_32f(const Vek32f* pSrcLPC, const Vek32f* pSrcPrevLSP, Vek32f* pDstLSP) {
    return roots<60, 4>(pSrcLPC, pSrcPrevLSP, kGrid60, pDstLSP);
}

VekStatus veksLPCToLSP_G729A_32f(const Vek32f* pSrcLPC, const Vek32f* pSrcPrevLSP, Vek32f* pDstLSP) {
    return roots<50, 2>(pSrcLPC, pSrcPrevLSP, kGrid50, pDstLSP);
}

VekStatus veksLSPToLPC_G729_32f(const Vek32f* pSrcLSP, Vek32f* pDstLPC) {
    if (anyNull(pSrcLSP, pDstLPC)) {
        return vekStsNullPtrErr;
    }
    pairsToCoefficients<kHalf>(pSrcLSP, pDstLPC);
    return vekStsNoErr;
}
