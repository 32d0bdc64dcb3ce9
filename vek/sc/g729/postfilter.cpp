// Post filters of a subframe: short-term, tilt compensation, and the long-term one of Annex A by whole delays.
// The fractional long-term filter of the main body is in longterm.cpp, the gain control in gaincontrol.cpp.
#include "sc/g729/postfilter.h"

#include <algorithm>
#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/common/lpfilter.h"
#include "sc/common/signal_check.h"
#include "sc/g729/sizes.h"
#include "sc/kernels/corr.h"
#include "sc/kernels/loops.h"
#include "veksc_filter.h"
#include "veksc_g729lp.h"
#include "veksc_g729post.h"

using namespace vek::g729;

namespace {

constexpr int kFormat = 12;
constexpr int kResponse = 20;
constexpr int kResponseA = 22;

bool badDelay(int delay) {
    return delay < kShortestDelay || delay > kLongestDelay;
}

int32_t product(const Vek16s* a, const Vek16s* b, int n, int32_t start = 0) {
    return sat32(start + 2 * corrKernels().dot16(a, b, n));
}

// The whole delay of the largest correlation within 3 of the decoded one.
int bestDelay(const Vek16s* x, int delay, int32_t& best) {
    const int last = std::min(delay + 3, kLongestDelay);
    const int first = last - 6;
    best = kMin32;
    int found = first;
    for (int i = first; i <= last; ++i) {
        const int32_t sum = product(x, x - i, kSubframe);
        if (sum > best) {
            best = sum;
            found = i;
        }
    }
    return found;
}

// Shares of a sample and of the one a delay before, Q15.
struct Shares {
    Vek16s now;
    Vek16s past;
};

// past is 0 where the delay predicts less than 3 dB.
Shares sharesOf(int32_t correlation, int32_t delayed, int32_t energy) {
    constexpr Vek16s half = 16384;
    const int shift = norm_l(std::max({correlation, delayed, energy}));
    const Vek16s c = round_s(L_shl(correlation, shift));
    const Vek16s d = round_s(L_shl(delayed, shift));
    const Vek16s e = round_s(L_shl(energy, shift));
    if (L_sub(L_mult(c, c), L_shr(L_mult(d, e), 1)) < 0) {
        return {32767, 0};
    }
    if (c > d) {
        return {21845, 10923};
    }
    const auto weak = static_cast<Vek16s>(mult(c, half) >> 1);
    const Vek16s sum = add(weak, static_cast<Vek16s>(d >> 1));
    if (sum <= 0) {
        return {32767, 0};
    }
    const Vek16s past = div_s(weak, sum);
    return {sub(32767, past), past};
}

// 0.55 and 0.70 in Q15: numerator and denominator of the short-term post filter A(z/n) / A(z/d).
constexpr Vek16s kNumerator = 18022;
constexpr Vek16s kDenominator = 22938;

// a[i] * factor^i, 11 coefficients.
void weightedLpc(const Vek16s* a, Vek16s factor, Vek16s* out) {
    veksMulPowerC_NR_16s_Sfs(a, factor, out, kOrder + 1, 15);
}

// Residual of a subframe through A(z/n); speech[-10..-1] is read.
void postResidual(const Vek16s* lpc, const Vek16s* speech, Vek16s* residual) {
    Vek16s numerator[kOrder + 1];
    weightedLpc(lpc, kNumerator, numerator);
    residualFilter(numerator, kOrder, speech, residual, kSubframe, kFormat);
}

} // namespace

void vek::g729::postResponse(const Vek16s* lpc, Vek16s* h, int n) {
    Vek16s denominator[kOrder + 1];
    Vek16s numerator[kResponseA] = {};
    const Vek16s rest[kOrder] = {};
    weightedLpc(lpc, kDenominator, denominator);
    weightedLpc(lpc, kNumerator, numerator);
    synthesisFilter(denominator, kOrder, numerator, h, n, kFormat, rest);
}

void vek::g729::tilt(Vek16s k, const Vek16s* x, Vek16s* y) {
    constexpr Vek16s above = 6554;
    constexpr Vek16s below = 29491;
    const Vek16s mu = mult_r(k, k > 0 ? above : below);
    // Q14 of 1 / (1 - |mu|), at most 10.
    const int gain = (1 << 29) / (32768 - abs_s(mu));
    loopKernels().tilt(x, mu, gain, y);
}

VekStatus veksShortTermPostFilter_G729_16s(const Vek16s* pSrcLpc, const Vek16s* pSrc, Vek16s* pSrcDst,
                                           Vek16s* pDstImpulseResponse) {
    if (anyNull(pSrcLpc, pSrc, pSrcDst, pDstImpulseResponse)) {
        return vekStsNullPtrErr;
    }
    constexpr Vek16s one = 1024; // Q10
    postResponse(pSrcLpc, pDstImpulseResponse, kResponse);
    int32_t sum = 0;
    for (int i = 0; i < kResponse; ++i) {
        sum += abs_s(pDstImpulseResponse[i]);
    }
    const Vek16s gain = extract_h(L_shl(sum, 14));
    const Vek16s* in = pSrc;
    Vek16s scaled[kSubframe];
    if (gain > one) {
        const Vek16s inverse = div_s(one, gain);
        for (int i = 0; i < kSubframe; ++i) {
            scaled[i] = mult_r(pSrc[i], inverse);
        }
        in = scaled;
    }
    Vek16s denominator[kOrder + 1];
    weightedLpc(pSrcLpc, kDenominator, denominator);
    synthesisFilter(denominator, kOrder, in, pSrcDst, kSubframe, kFormat, pSrcDst - kOrder);
    return vekStsNoErr;
}

VekStatus veksShortTermPostFilter_G729A_16s(const Vek16s* pSrcLpc, const Vek16s* pSrc, Vek16s* pSrcDst) {
    if (anyNull(pSrcLpc, pSrc, pSrcDst)) {
        return vekStsNullPtrErr;
    }
    Vek16s denominator[kOrder + 1];
    weightedLpc(pSrcLpc, kDenominator, denominator);
    synthesisFilter(denominator, kOrder, pSrc, pSrcDst, kSubframe, kFormat, pSrcDst - kOrder);
    return vekStsNoErr;
}

VekStatus veksTiltCompensation_G729A_16s(const Vek16s* pSrcLpc, Vek16s* pSrcDst) {
    if (anyNull(pSrcLpc, pSrcDst)) {
        return vekStsNullPtrErr;
    }
    constexpr Vek16s factor = 26214; // 0.8
    Vek16s h[kResponseA];
    postResponse(pSrcLpc, h, kResponseA);
    const Vek16s r0 = extract_h(product(h, h, kResponseA));
    const Vek16s r1 = extract_h(product(h, h + 1, kResponseA - 1));
    const Vek16s mu = r1 <= 0 ? Vek16s{0} : div_s(mult(r1, factor), r0);
    return veksPreemphasize_G729A_16s_I(mu, pSrcDst, kSubframe, pSrcDst - 1);
}

VekStatus veksTiltCompensation_G729_16s(const Vek16s* pSrcImpulseResponse, Vek16s* pSrcDst) {
    if (anyNull(pSrcImpulseResponse, pSrcDst)) {
        return vekStsNullPtrErr;
    }
    const int64_t r0 = corrKernels().dot16(pSrcImpulseResponse, pSrcImpulseResponse, kResponse);
    const int64_t r1 = corrKernels().dot16(pSrcImpulseResponse, pSrcImpulseResponse + 1, kResponse - 1);
    // r1 is below r0 in magnitude, unless both are 0.
    const Vek16s k = r0 == 0 ? Vek16s{0} : sat16_64(-r1 * 32768 / r0);
    const Vek16s last = pSrcDst[kSubframe - 1];
    tilt(k, pSrcDst, pSrcDst);
    pSrcDst[-1] = last;
    return vekStsNoErr;
}

VekStatus veksTiltCompensation_G729E_16s(Vek16s val, const Vek16s* pSrc, Vek16s* pDst) {
    if (anyNull(pSrc, pDst)) {
        return vekStsNullPtrErr;
    }
    tilt(val, pSrc + 1, pDst);
    return vekStsNoErr;
}

VekStatus veksLongTermPostFilter_G729A_16s(Vek16s valDelay, const Vek16s* pSrc, const Vek16s* pSrcLpc,
                                           Vek16s* pSrcDstResidual, Vek16s* pDst) {
    if (anyNull(pSrc, pSrcLpc, pSrcDstResidual, pDst)) {
        return vekStsNullPtrErr;
    }
    if (badDelay(valDelay)) {
        return vekStsRangeErr;
    }
    Vek16s* residual = pSrcDstResidual + kPastExcitation;
    postResidual(pSrcLpc, pSrc, residual);
    Vek16s quarters[kPastExcitation + kSubframe];
    corrKernels().shift16(pSrcDstResidual, quarters, kPastExcitation + kSubframe, -2);
    const Vek16s* x = quarters + kPastExcitation;
    int32_t correlation = 0;
    const int delay = bestDelay(x, valDelay, correlation);
    const Shares shares =
        sharesOf(std::max(correlation, 0), product(x - delay, x - delay, kSubframe, 1), product(x, x, kSubframe, 1));
    if (shares.past == 0) {
        std::memcpy(pDst, residual, kSubframe * sizeof(Vek16s));
        return vekStsNoErr;
    }
    for (int i = 0; i < kSubframe; ++i) {
        pDst[i] = add(mult(shares.now, residual[i]), mult(shares.past, residual[i - delay]));
    }
    return vekStsNoErr;
}

VekStatus veksLongTermPostFilter_G729B_16s(Vek16s valDelay, const Vek16s* pSrc, const Vek16s* pSrcLpc,
                                           Vek16s* pSrcDstResidual, Vek16s* pDst, Vek16s* pResultVoice,
                                           Vek16s frameType) {
    if (anyNull(pSrc, pSrcLpc, pSrcDstResidual, pDst, pResultVoice)) {
        return vekStsNullPtrErr;
    }
    if (badDelay(valDelay) || frameType < 0 || frameType > 2) {
        return vekStsRangeErr;
    }
    constexpr Vek16s half = 16384;
    constexpr int active = 1;
    Vek16s* residual = pSrcDstResidual + kPastExcitation;
    postResidual(pSrcLpc, pSrc, residual);
    if (frameType == active) {
        *pResultVoice = static_cast<Vek16s>(longTermFilter(half, valDelay, residual, pDst));
    } else {
        std::memcpy(pDst, residual, kSubframe * sizeof(Vek16s));
        *pResultVoice = 0;
    }
    return vekStsNoErr;
}

VekStatus veksLongTermPostFilter_G729_16s(Vek16s valGamma, Vek16s valDelay, const Vek16s* pSrcResidual, Vek16s* pDst,
                                          Vek16s* pResultVoice) {
    if (anyNull(pSrcResidual, pDst, pResultVoice)) {
        return vekStsNullPtrErr;
    }
    if (badDelay(valDelay) || valGamma < 0) {
        return vekStsRangeErr;
    }
    *pResultVoice = static_cast<Vek16s>(longTermFilter(valGamma, valDelay, pSrcResidual, pDst));
    return vekStsNoErr;
}
