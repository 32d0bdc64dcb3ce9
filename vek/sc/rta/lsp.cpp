// Linear prediction of the real-time audio codec: recursion from autocorrelations, line spectral pairs and back.
#include <cmath>
#include <cstring>
#include <numbers>

#include "sc/common/linepairs.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/loops.h"
#include "sc/kernels/rta.h"
#include "veksc_g729lp.h"
#include "veksc_rta.h"

namespace {

using namespace vek;

constexpr int kMostPairs = kMostSeries;
constexpr int kMostOrder = 2 * kMostPairs;

bool badOrder(int order) {
    return order < 2 || order > kMostOrder || order % 2 != 0;
}

// Cosines of points that divide the half circle evenly, ends included.
template <int N>
struct Grid {
    static constexpr int points = N;
    double x[N];
};
template <int N>
Grid<N> grid() {
    Grid<N> g;
    for (int i = 0; i < N; ++i) {
        g.x[i] = std::cos(std::numbers::pi * i / (N - 1));
    }
    return g;
}
const Grid<64> g_coarse = grid<64>();
const Grid<256> g_middle = grid<256>();
const Grid<1024> g_fine = grid<1024>();

// Sum and difference filter, their zeros at -1 and 1 divided out, as series of Chebyshev polynomials.
void splitFilters(const float* a, int order, double (&f)[2][kMostPairs + 1]) {
    const int half = order / 2;
    double before[2] = {1, 1};
    f[0][0] = f[1][0] = 1;
    for (int i = 1; i <= half; ++i) {
        const double front = a[i];
        const double back = a[order + 1 - i];
        before[0] = f[0][i] = front + back - before[0];
        before[1] = f[1][i] = front - back + before[1];
    }
    f[0][half] *= 0.5;
    f[1][half] *= 0.5;
}

// The zeros of one filter, from the largest cosine on, or fewer than there are.
template <int N>
int zerosOf(const double* f, int half, const Grid<N>& g, double* zeros) {
    double y[N];
    const RtaKernels& kernels = rtaKernels();
    kernels.series(f, half, g.x, N, y);
    double low[8];
    double high[8];
    int count = 0;
    for (int i = 1; i < N; ++i) {
        if ((y[i] < 0) != (y[i - 1] < 0)) {
            if (count == half) {
                return 0;
            }
            low[count] = g.x[i];
            high[count] = g.x[i - 1];
            ++count;
        }
    }
    if (count < half) {
        return count;
    }
    for (int i = half; i < 8; ++i) {
        low[i] = low[0];
        high[i] = high[0];
    }
    kernels.zeros(f, half, low, high);
    std::memcpy(zeros, low, static_cast<size_t>(half) * sizeof(double));
    return half;
}

template <int N>
bool pairsOf(const double (&f)[2][kMostPairs + 1], int half, const Grid<N>& g, float* lsp) {
    double zeros[2][kMostPairs];
    for (int k = 0; k < 2; ++k) {
        if (zerosOf(f[k], half, g, zeros[k]) < half) {
            return false;
        }
    }
    double last = 1;
    for (int i = 0; i < 2 * half; ++i) {
        const double x = zeros[i % 2][i / 2];
        if (!(x < last)) {
            return false;
        }
        lsp[i] = std::acos(static_cast<float>(x));
        last = x;
    }
    return true;
}

// Known counts of pairs are quicker.
using ToCoefficients = void (*)(const double* cosines, float* a);
constexpr ToCoefficients kToCoefficients[kMostPairs] = {
    pairsToCoefficients<1>, pairsToCoefficients<2>, pairsToCoefficients<3>, pairsToCoefficients<4>,
    pairsToCoefficients<5>, pairsToCoefficients<6>, pairsToCoefficients<7>, pairsToCoefficients<8>};

// The kernel's series holds for angles of the half circle alone.
void cosinesOf(const float* lsp, int order, double (&cosines)[kMostOrder]) {
    if (loopKernels().cosines(lsp, order, cosines)) {
        return;
    }
    for (int i = 0; i < order; ++i) {
        cosines[i] = std::cos(static_cast<double>(lsp[i]));
    }
}

} // namespace

VekStatus veksLevinsonDurbin_RTA_32f(const Vek32f* pSrcAutoCorr, Vek32f* pDstLPC, Vek32f* pDstRC, int order) {
    Vek32f error;
    return veksLevinsonDurbin_G729_32f(pSrcAutoCorr, order, pDstLPC, pDstRC, &error);
}

VekStatus veksLPCToLSP_RTA_32f(const Vek32f* pSrcLPC, Vek32f* pDstLSP, int order) {
    if (anyNull(pSrcLPC, pDstLSP)) {
        return vekStsNullPtrErr;
    }
    if (badOrder(order)) {
        return vekStsSizeErr;
    }
    double f[2][kMostPairs + 1];
    splitFilters(pSrcLPC, order, f);
    const int half = order / 2;
    float lsp[kMostOrder];
    if (!pairsOf(f, half, g_coarse, lsp) && !pairsOf(f, half, g_middle, lsp) && !pairsOf(f, half, g_fine, lsp)) {
        return vekStsUnstableFilter;
    }
    std::memcpy(pDstLSP, lsp, static_cast<size_t>(order) * sizeof(float));
    return vekStsNoErr;
}

VekStatus veksLSPToLPC_RTA_32f(const Vek32f* pSrcLSP, Vek32f* pDstLPC, int order) {
    if (anyNull(pSrcLSP, pDstLPC)) {
        return vekStsNullPtrErr;
    }
    if (badOrder(order)) {
        return vekStsSizeErr;
    }
    double cosines[kMostOrder];
    cosinesOf(pSrcLSP, order, cosines);
    kToCoefficients[order / 2 - 1](cosines, pDstLPC);
    return vekStsNoErr;
}
