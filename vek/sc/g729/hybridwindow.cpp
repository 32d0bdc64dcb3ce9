// Backward linear prediction of Annex E: autocorrelation of past synthesis through a hybrid window, a sine over the
// newest 35 samples and a falling exponential over all before, whose part is kept from frame to frame.
#include <array>
#include <cmath>
#include <cstdint>

#include "sc/common/fixmath.h"
#include "sc/common/hybridwindow.h"
#include "sc/common/markedstate.h"
#include "sc/common/signal_check.h"
#include "sc/g729/sizes.h"
#include "sc/kernels/floatcorr.h"
#include "sc/kernels/hybrid.h"
#include "veksc_g729post.h"

namespace {

using namespace vek;
using g729::kFrame;

constexpr int kOrder = 30;
constexpr int kNewest = 35;
constexpr int kSpan = kOrder + kFrame + kNewest;
// The exponential falls to 3/4 in 20 samples of energy; what is left of it after a frame.
constexpr Vek16s kKept = 10368; // (3/4)^4, Q15, exact
constexpr int kFormat = 15;

const std::array<double, kSpan> g_window = hybridWindow<kSpan>(kNewest, std::log(0.75) / 40);
const std::array<Vek16s, kSpan> g_fixedWindow = rounded(g_window);

const std::array<Vek32f, kSpan> g_floatWindow = [] {
    std::array<Vek32f, kSpan> w{};
    for (size_t n = 0; n < w.size(); ++n) {
        w[n] = static_cast<Vek32f>(g_window[n]);
    }
    return w;
}();

// The recursive part of the correlations, at the end of the frame before.
template <typename T>
struct Recursive {
    T past[kOrder + 1] = {};
};
template <typename T>
using State = Marked<Recursive<T>, 0x48594257>;

} // namespace

VekStatus veksWinHybridGetStateSize_G729E_16s(int* pSize) {
    return State<int64_t>::size(pSize);
}

VekStatus veksWinHybridInit_G729E_16s(void* pMem) {
    return State<int64_t>::init(pMem);
}

VekStatus veksWinHybrid_G729E_16s32s(const Vek16s* pSrcSynthSpeech, Vek32s* pDstInvAutoCorr, void* pMem) {
    if (anyNull(pSrcSynthSpeech, pDstInvAutoCorr, pMem)) {
        return vekStsNullPtrErr;
    }
    State<int64_t> state;
    if (!state.take(pMem)) {
        return vekStsStateErr;
    }
    int64_t(&past)[kOrder + 1] = state.content.past;
    int64_t frame[kOrder + 1];
    int64_t newest[kOrder + 1];
    hybridKernels().correlate(pSrcSynthSpeech, g_fixedWindow.data(), kOrder, kFrame, kNewest, frame, newest);
    int64_t sums[kOrder + 1];
    for (int k = 0; k <= kOrder; ++k) {
        past[k] = ((past[k] * kKept) >> kFormat) + frame[k];
        sums[k] = past[k] + newest[k];
    }
    if (sums[0] == 0) {
        sums[0] = 1; // silence is white
    }
    const int shift = 32 - fix::norm_64(sums[0]);
    for (int k = 0; k <= kOrder; ++k) {
        pDstInvAutoCorr[k] = fix::scaleSat32(sums[k], shift);
    }
    state.give(pMem);
    return vekStsNoErr;
}

VekStatus veksWinHybridGetStateSize_G729E_32f(int* pSize) {
    return State<Vek32f>::size(pSize);
}

VekStatus veksWinHybridInit_G729E_32f(void* pMem) {
    return State<Vek32f>::init(pMem);
}

VekStatus veksWinHybrid_G729E_32f(const Vek32f* pSrcSynthSpeech, Vek32f* pDstInvAutoCorr, void* pMem) {
    if (anyNull(pSrcSynthSpeech, pDstInvAutoCorr, pMem)) {
        return vekStsNullPtrErr;
    }
    State<Vek32f> state;
    if (!state.take(pMem)) {
        return vekStsStateErr;
    }
    Vek32f(&past)[kOrder + 1] = state.content.past;
    constexpr Vek32f kept = static_cast<Vek32f>(kKept) / 32768;
    Vek32f x[kSpan];
    for (int n = 0; n < kSpan; ++n) {
        x[n] = pSrcSynthSpeech[n] * g_floatWindow[static_cast<size_t>(n)];
    }
    // From the longest delay to none.
    Vek32f frame[kOrder + 1];
    Vek32f newest[kOrder + 1];
    floatCorrKernels().corr32f(x + kOrder, x, kFrame, kOrder + 1, frame);
    floatCorrKernels().corr32f(x + kOrder + kFrame, x + kFrame, kNewest, kOrder + 1, newest);
    for (int k = 0; k <= kOrder; ++k) {
        past[k] = kept * past[k] + frame[kOrder - k];
        pDstInvAutoCorr[k] = past[k] + newest[kOrder - k];
    }
    state.give(pMem);
    return vekStsNoErr;
}
