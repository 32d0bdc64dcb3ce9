// Autocorrelation in its forms: saturated sums, normalised with an exponent, the analysis of G.723.1.
#include <array>
#include <cmath>
#include <numbers>

#include "sc/common/correlate.h"
#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "veksc_signal.h"

using namespace vek;

namespace {

constexpr int kG723Window = 180;
constexpr int kG723Lags = 11;

// Lag window of G.723.1 for the lags 1..10, Q15.
constexpr int16_t kBinomial[kG723Lags - 1] = {32749, 32695, 32604, 32477, 32315, 32118, 31887, 31622, 31324, 30995};

// Hamming window, Q15.
const std::array<int16_t, kG723Window> g_hamming = [] {
    std::array<int16_t, kG723Window> w{};
    for (int n = 0; n < kG723Window; ++n) {
        const double v = 0.54 - 0.46 * std::cos(2 * std::numbers::pi * n / (kG723Window - 1));
        w[static_cast<size_t>(n)] = fix::sat16(static_cast<int32_t>(std::lround(32768 * v)));
    }
    return w;
}();

// Shift that brings the sum of lag 0 to 31 bits, positive to the left.
int exponentOf(int64_t r0) {
    return r0 == 0 ? 0 : fix::norm_64(r0) - 32;
}

template <typename Store>
VekStatus normalised(const Vek16s* pSrc, int len, int lenDst, int* pNorm, Store store) {
    int norm = 0;
    const bool done = correlateAlone(pSrc, pSrc, len, lenDst, [&](int k, int64_t sum) {
        if (k == 0) {
            norm = exponentOf(sum);
        }
        // No sum is larger than the first: none can saturate.
        store(k, static_cast<Vek32s>(norm < 0 ? sum >> -norm : sum << norm));
    });
    if (!done) {
        return vekStsNoMemErr;
    }
    *pNorm = norm;
    return vekStsNoErr;
}

} // namespace

VekStatus veksAutoCorr_16s32s(const Vek16s* pSrc, int len, Vek32s* pDst, int lenDst) {
    if (anyNull(pSrc, pDst)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len) || badLength(lenDst)) {
        return vekStsSizeErr;
    }
    const bool done =
        correlateAlone(pSrc, pSrc, len, lenDst, [pDst](int k, int64_t sum) { pDst[k] = fix::sat32(sum); });
    return done ? vekStsNoErr : vekStsNoMemErr;
}

VekStatus veksAutoCorr_NormE_16s32s(const Vek16s* pSrc, int len, Vek32s* pDst, int lenDst, int* pNorm) {
    if (anyNull(pSrc, pDst, pNorm)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len) || badLength(lenDst)) {
        return vekStsSizeErr;
    }
    return normalised(pSrc, len, lenDst, pNorm, [&](int k, Vek32s r) { pDst[k] = r; });
}

VekStatus veksAutoCorr_NormE_NR_16s(const Vek16s* pSrc, int len, Vek16s* pDst, int lenDst, int* pNorm) {
    if (anyNull(pSrc, pDst, pNorm)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len) || badLength(lenDst)) {
        return vekStsSizeErr;
    }
    return normalised(pSrc, len, lenDst, pNorm, [&](int k, Vek32s r) { pDst[k] = fix::round_s(r); });
}

VekStatus veksAutoCorr_NormE_G723_16s(const Vek16s* pSrc, Vek16s* pDst, int* pNorm) {
    return veksAutoCorr_NormE_NR_16s(pSrc, kG723Window, pDst, 10, pNorm);
}

VekStatus veksAutoCorr_G723_16s(const Vek16s* pSrc, int* pNorm, Vek16s* pDst) {
    if (anyNull(pSrc, pNorm, pDst)) {
        return vekStsNullPtrErr;
    }
    alignas(32) Vek16s windowed[kG723Window + kCorrPadding] = {};
    corrKernels().window16(pSrc, g_hamming.data(), windowed, kG723Window);
    int64_t sums[kG723Lags];
    correlate(windowed, windowed, kG723Window, kG723Lags, [&](int k, int64_t sum) { sums[k] = sum; });
    sums[0] += sums[0] >> 10; // white noise, 30 dB below
    const int norm = exponentOf(sums[0]);
    for (int k = 0; k < kG723Lags; ++k) {
        const int64_t r = fix::scaleSat32(sums[k], -norm);
        pDst[k] = fix::round_s(static_cast<int32_t>(k == 0 ? r : (r * kBinomial[k - 1]) >> 15));
    }
    *pNorm = norm;
    return vekStsNoErr;
}
