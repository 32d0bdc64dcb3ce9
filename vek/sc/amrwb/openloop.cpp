// Open-loop pitch of AMR-WB and AMR-WB+: weighted correlations, the gain of the high-passed speech at the lag found,
// and the memory of lags that the next search leans on.
#include <algorithm>
#include <cstring>

#include "sc/amrwb/normal.h"
#include "sc/amrwb/rates.h"
#include "sc/amrwb/tables.h"
#include "sc/common/correlate.h"
#include "sc/common/signal_check.h"
#include "veksc_amrwb.h"

namespace {

using namespace vek::amrwb;

constexpr int kMostLag = 213;
constexpr int kPrevious = 5;

// Doubled sums of the products at the delays from the longest on, saturated once.
void correlations(const Vek16s* x, int len, int longest, int count, int32_t* sums) {
    const CorrKernels& kernels = corrKernels();
    if (kernels.slide16(x, x - longest, len, 1, count, sums)) {
        std::transform(sums, sums + count, sums, [](int32_t s) { return 2 * s; });
        return;
    }
    for (int k = 0; k < count; ++k) {
        sums[k] = sat32(2 * kernels.dot16(x, x - longest + k, len));
    }
}

Vek16s search(const Vek16s* x, int len, int shortest, int longest, int median, bool near) {
    int32_t sums[kMostLag];
    const int count = longest - shortest;
    correlations(x, len, longest, count, sums);
    int32_t most = kMin32;
    int lag = 0;
    for (int k = 0; k < count; ++k) {
        int32_t value = Mpy_32_16(sums[k], kDelayWeight[kDelayWeights - 1 - k]);
        if (near) {
            value = Mpy_32_16(value, kDelayWeight[std::clamp(98 + longest - k - median, 0, kDelayWeights - 1)]);
        }
        if (value >= most) {
            most = value;
            lag = longest - k;
        }
    }
    return static_cast<Vek16s>(lag);
}

// Correlation over the root of both energies, Q15.
Vek16s gainAt(const Vek16s* x, int len, int lag) {
    const CorrKernels& kernels = corrKernels();
    const int32_t cross = sat32(2 * kernels.dot16(x, x - lag, len));
    const int shift = norm_l(cross);
    const Normal before = product(x - lag, x - lag, len);
    const Normal now = product(x, x, len);
    const int32_t both = L_mult(round_s(before.mantissa), round_s(now.mantissa));
    const int spare = norm_l(both);
    const Normal root = inverseRoot({L_shl(both, spare), before.exponent + now.exponent - spare + 2});
    const int32_t ratio = L_mult(round_s(L_shl(cross, shift)), round_s(root.mantissa));
    return round_s(L_shl(ratio, 31 - shift + root.exponent));
}

Vek16s median(const Vek16s* lags) {
    Vek16s sorted[kPrevious];
    std::copy_n(lags, kPrevious, sorted);
    std::sort(sorted, sorted + kPrevious);
    return sorted[kPrevious / 2];
}

} // namespace

VekStatus veksOpenLoopPitchSearch_AMRWBE_16s(const Vek16s* pSrcWgtSpch, const Vek16s* pSrcFltWgtSpch,
                                             Vek16s* pPrevMidPitchLag, Vek16s* pAdaptiveParam, Vek16s* pDstOpenLoopLag,
                                             Vek16s* pToneFlag, Vek16s* pDstOpenLoopGain, Vek16s* pSrcDstPrevPitchLag,
                                             Vek16s* pLagSwitcher, int len, int minPitLag, int maxPitLag) {
    constexpr Vek16s kTone = 21298;   // 0.65
    constexpr Vek16s kVoiced = 19661; // 0.6
    constexpr Vek16s kFade = 29491;   // 0.9
    constexpr Vek16s kStrong = 26214; // 0.8
    if (anyNull(pSrcWgtSpch, pSrcFltWgtSpch, pPrevMidPitchLag, pAdaptiveParam, pDstOpenLoopLag, pToneFlag,
                pDstOpenLoopGain, pSrcDstPrevPitchLag, pLagSwitcher)) {
        return vekStsNullPtrErr;
    }
    if (len < 1 || len > kFrame) {
        return vekStsSizeErr;
    }
    if (minPitLag < 1 || maxPitLag <= minPitLag || maxPitLag > kMostLag || maxPitLag - minPitLag >= kDelayWeights ||
        *pPrevMidPitchLag < 0 || *pPrevMidPitchLag > maxPitLag || *pLagSwitcher < 0 || *pLagSwitcher > 1) {
        return vekStsRangeErr;
    }
    const bool near = *pPrevMidPitchLag > 0 && *pLagSwitcher > 0;
    const Vek16s lag = search(pSrcWgtSpch, len, minPitLag, maxPitLag, *pPrevMidPitchLag, near);
    const Vek16s gain = gainAt(pSrcFltWgtSpch, len, lag);
    *pDstOpenLoopLag = lag;
    *pDstOpenLoopGain = gain;
    *pToneFlag = static_cast<Vek16s>((*pToneFlag >> 1) | (gain > kTone ? 0x4000 : 0));
    if (gain > kVoiced) {
        std::copy_backward(pSrcDstPrevPitchLag, pSrcDstPrevPitchLag + kPrevious - 1, pSrcDstPrevPitchLag + kPrevious);
        pSrcDstPrevPitchLag[0] = lag;
        *pPrevMidPitchLag = median(pSrcDstPrevPitchLag);
        *pAdaptiveParam = 32767;
    } else {
        *pAdaptiveParam = mult(*pAdaptiveParam, kFade);
    }
    *pLagSwitcher = *pAdaptiveParam >= kStrong ? 1 : 0;
    return vekStsNoErr;
}

VekStatus veksOpenLoopPitchSearch_AMRWB_16s(const Vek16s* pSrcWgtSpch, const Vek16s* pSrcFltWgtSpch,
                                            Vek16s* pPrevMidPitchLag, Vek16s* pAdaptiveParam, Vek16s* pDstOpenLoopLag,
                                            Vek16s* pToneFlag, Vek16s* pDstOpenLoopGain, Vek16s* pSrcDstPrevPitchLag,
                                            Vek16s* pLagSwitcher, int len) {
    constexpr int kMinLag = 17;
    constexpr int kMaxLag = 115;
    return veksOpenLoopPitchSearch_AMRWBE_16s(pSrcWgtSpch, pSrcFltWgtSpch, pPrevMidPitchLag, pAdaptiveParam,
                                              pDstOpenLoopLag, pToneFlag, pDstOpenLoopGain, pSrcDstPrevPitchLag,
                                              pLagSwitcher, len, kMinLag, kMaxLag);
}
