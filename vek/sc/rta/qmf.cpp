// Two-band filter bank of the real-time audio codec. Each band's filter is its even and its odd taps, which meet the
// odd and the even samples.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "sc/common/kaiser.h"
#include "sc/common/markedstate.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/floatcorr.h"
#include "veksc_rta.h"

namespace {

using namespace vek;

constexpr int kTaps = 64;
constexpr int kHalf = kTaps / 2;
constexpr int kPast = kHalf - 1;
constexpr int kChunk = 160;

// Of odd and even samples, or of sums and differences.
struct Past {
    float past[2][kPast] = {};
};
using State = Marked<Past, 0x52544151>;

// Taps in reverse order, as correlations want them: even ones, odd ones; for the reunion twice as large.
struct Taps {
    float split[2][kHalf];
    float join[2][kHalf];
};

// Low-pass filter of sum 1 with its edge at `edge`.
void lowPass(const double* window, double edge, double* h) {
    double sum = 0;
    for (int i = 0; i < kTaps; ++i) {
        const double t = i - (kTaps - 1) / 2.0;
        h[i] = std::sin(edge * t) / t * window[i];
        sum += h[i];
    }
    for (int i = 0; i < kTaps; ++i) {
        h[i] /= sum;
    }
}

double gainAtQuarter(const double* h) {
    double sum = 0;
    for (int i = 0; i < kTaps; ++i) {
        sum += h[i] * std::cos(std::numbers::pi / 2 * (i - (kTaps - 1) / 2.0));
    }
    return sum;
}

Taps makeTaps() {
    const Kaiser kaiser(9);
    double window[kTaps];
    for (int i = 0; i < kTaps; ++i) {
        window[i] = kaiser(2.0 * i / (kTaps - 1) - 1);
    }
    double h[kTaps];
    double low = 0.4 * std::numbers::pi;
    double high = 0.6 * std::numbers::pi;
    for (int i = 0; i < 50; ++i) {
        const double edge = (low + high) / 2;
        lowPass(window, edge, h);
        (gainAtQuarter(h) < std::numbers::sqrt2 / 2 ? low : high) = edge;
    }
    Taps taps;
    for (int i = 0; i < kHalf; ++i) {
        for (int k = 0; k < 2; ++k) {
            const double tap = h[2 * (kHalf - 1 - i) + k];
            taps.split[k][i] = static_cast<float>(tap);
            taps.join[k][i] = static_cast<float>(2 * tap);
        }
    }
    return taps;
}

const Taps g_taps = makeTaps();

void filter(const float* taps, const float* x, int n, float* y) {
    floatCorrKernels().corr32f(taps, x, kHalf, n, y);
}

// The past in front of a chunk, and the end of the chunk as the next past.
void recall(const Past& state, float (&x)[2][kPast + kChunk]) {
    for (int k = 0; k < 2; ++k) {
        std::copy_n(state.past[k], kPast, x[k]);
    }
}

void remember(const float (&x)[2][kPast + kChunk], int n, Past& state) {
    for (int k = 0; k < 2; ++k) {
        std::copy_n(x[k] + n, kPast, state.past[k]);
    }
}

} // namespace

VekStatus veksQMFGetStateSize_RTA_32f(int* pSize) {
    return State::size(pSize);
}

VekStatus veksQMFInit_RTA_32f(VeksQMFState_RTA_32f* pQMFMem) {
    return State::init(pQMFMem);
}

VekStatus veksQMFEncode_RTA_32f(const Vek32f* pSrc, int len, Vek32f* pDstLow, Vek32f* pDstHigh,
                                VeksQMFState_RTA_32f* pQMFMem) {
    if (anyNull(pSrc, pDstLow, pDstHigh, pQMFMem)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len) || len % 2 != 0) {
        return vekStsSizeErr;
    }
    State state;
    if (!state.take(pQMFMem)) {
        return vekStsStateErr;
    }
    for (int left = len / 2; left > 0; left -= kChunk) {
        const int n = std::min(left, kChunk);
        float x[2][kPast + kChunk];
        recall(state.content, x);
        for (int i = 0; i < n; ++i) {
            x[0][kPast + i] = pSrc[2 * i + 1];
            x[1][kPast + i] = pSrc[2 * i];
        }
        float odd[kChunk];
        float even[kChunk];
        filter(g_taps.split[0], x[0], n, odd);
        filter(g_taps.split[1], x[1], n, even);
        for (int i = 0; i < n; ++i) {
            pDstLow[i] = odd[i] + even[i];
            pDstHigh[i] = odd[i] - even[i];
        }
        remember(x, n, state.content);
        pSrc += 2 * n;
        pDstLow += n;
        pDstHigh += n;
    }
    state.give(pQMFMem);
    return vekStsNoErr;
}

VekStatus veksQMFDecode_RTA_32f(const Vek32f* pSrcLow, const Vek32f* pSrcHigh, int len, Vek32f* pDst,
                                VeksQMFState_RTA_32f* pQMFMem) {
    if (const VekStatus status = checkSignal(len, pSrcLow, pSrcHigh, pDst, pQMFMem); status != vekStsNoErr) {
        return status;
    }
    State state;
    if (!state.take(pQMFMem)) {
        return vekStsStateErr;
    }
    for (int left = len; left > 0; left -= kChunk) {
        const int n = std::min(left, kChunk);
        float x[2][kPast + kChunk];
        recall(state.content, x);
        for (int i = 0; i < n; ++i) {
            x[0][kPast + i] = pSrcLow[i] - pSrcHigh[i];
            x[1][kPast + i] = pSrcLow[i] + pSrcHigh[i];
        }
        float even[kChunk];
        float odd[kChunk];
        filter(g_taps.join[0], x[0], n, even);
        filter(g_taps.join[1], x[1], n, odd);
        for (int i = 0; i < n; ++i) {
            pDst[2 * i] = even[i];
            pDst[2 * i + 1] = odd[i];
        }
        remember(x, n, state.content);
        pSrcLow += n;
        pSrcHigh += n;
        pDst += 2 * n;
    }
    state.give(pQMFMem);
    return vekStsNoErr;
}
