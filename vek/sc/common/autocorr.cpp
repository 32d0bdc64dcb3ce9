// Autocorrelation in its forms: saturated sums, normalised with an exponent, the analysis of G.723.1.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "sc/common/correlate.h"
#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/common/table.h"
#include "veksc_signal.h"

using namespace vek;

namespace {

constexpr int kG723Window = 180;
constexpr int kG723Lags = 11;

// Lag window of G.723.1 for the lags 1..10, Q15.
constexpr int16_t kBinomial[kG723Lags - 1] = {32749, 32695, 32604, 32477, 32315, 32118, 31887, 31622, 31324, 30995};

// Hamming window, Q15.
const auto g_hamming = tableOf<int16_t, kG723Window>(
    15, [](int n) { return 0.54 - 0.46 * std::cos(2 * std::numbers::pi * n / (kG723Window - 1)); });

// Shift that brings the sum of lag 0 to 31 bits, positive to the left.
int exponentOf(int64_t r0) {
    return r0 == 0 ? 0 : fix::norm_64(r0) - 32;
}

// fix::round_s without a sum of more than 32 bits.
Vek16s roundUpper(Vek32s r) {
    return fix::sat16(((r >> 15) + 1) >> 1);
}

template <typename Store>
VekStatus normalised(const Vek16s* pSrc, int len, int lenDst, int* pNorm, Store store) {
    int norm = 0;
    const bool done = correlateAlone(pSrc, pSrc, len, lenDst, [&](int first, const auto* sums, int count) {
        if (first == 0) {
            norm = exponentOf(sums[0]);
        }
        // No sum is larger than the first: none can saturate.
        const int up = norm > 0 ? norm : 0;
        const int down = norm < 0 ? -norm : 0;
        for (int k = 0; k < count; ++k) {
            store(first + k, static_cast<Vek32s>(sums[k] >> down << up));
        }
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
    const bool done = correlateAlone(pSrc, pSrc, len, lenDst, [pDst](int first, const auto* sums, int count) {
        for (int k = 0; k < count; ++k) {
            pDst[first + k] = fix::sat32(sums[k]);
        }
    });
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
    return normalised(pSrc, len, lenDst, pNorm, [&](int k, Vek32s r) { pDst[k] = roundUpper(r); });
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
    correlate(windowed, windowed, kG723Window, kG723Lags,
              [&](int, const auto* r, int count) { std::copy_n(r, count, sums); });
    sums[0] += sums[0] >> 10; // white noise, 30 dB below
    const int norm = exponentOf(sums[0]);
    for (int k = 0; k < kG723Lags; ++k) {
        const int64_t r = fix::scaleSat32(sums[k], -norm);
        pDst[k] = fix::round_s(static_cast<int32_t>(k == 0 ? r : (r * kBinomial[k - 1]) >> 15));
    }
    *pNorm = norm;
    return vekStsNoErr;
}
