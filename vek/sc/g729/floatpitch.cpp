// Pitch and gain steps of the floating G.729: open-loop search over every second sample, maxima of correlations, gain
// control.
#include <algorithm>
#include <cmath>

#include "sc/common/signal_check.h"
#include "sc/g729/delayranges.h"
#include "sc/kernels/floatcorr.h"
#include "sc/kernels/floatdot.h"
#include "veksc_g729post.h"

using namespace vek::g729;

namespace {

constexpr int kDelays = 256;

struct Peak {
    int lag;
    Vek32f value;
};

// Correlations of every second sample with those of each delay.
class HalfSearch {
public:
    explicit HalfSearch(const Vek32f* x) : m_phases(x) {
        // Delays 2m go over even samples, 2m - 1 over odd ones, both m down from kHalfHistory - 1.
        const FloatCorrKernels& kernels = floatCorrKernels();
        Vek32f sums[kHalfHistory];
        kernels.corr32f(m_phases.now(), m_phases.even + 1, kHalfFrame, kHalfHistory - 10, sums);
        for (int m = 10; m < kHalfHistory; ++m) {
            m_sums[2 * m] = sums[kHalfHistory - 1 - m];
        }
        // Above 80 the odd delays are tried beside the best one only, which is cheaper alone.
        kernels.corr32f(m_phases.now(), m_phases.odd + kHalfHistory - 40, kHalfFrame, 30, sums);
        for (int m = 11; m <= 40; ++m) {
            m_sums[2 * m - 1] = sums[40 - m];
        }
    }

    Peak peak(int shortest, int end, int step) const {
        Peak best{shortest, m_sums[shortest]};
        for (int lag = shortest + step; lag < end; lag += step) {
            if (m_sums[lag] > best.value) {
                best = {lag, m_sums[lag]};
            }
        }
        return best;
    }
    void take(Peak& best, int lag) const {
        const Vek32f sum = floatDotKernels().dot32f(m_phases.now(), m_phases.past(lag), kHalfFrame);
        if (sum > best.value) {
            best = {lag, sum};
        }
    }
    void normalise(Peak& best) const {
        constexpr Vek32f silence = 0.01F;
        const Vek32f* from = m_phases.past(best.lag);
        best.value /= std::sqrt(floatDotKernels().dot32f(from, from, kHalfFrame) + silence);
    }

private:
    Phases<Vek32f> m_phases;
    Vek32f m_sums[kLongestDelay + 1];
};

Vek32f sumOfMagnitudes(const Vek32f* x) {
    Vek32f sum[8] = {};
    for (int i = 0; i < kSubframe; i += 8) {
        for (int k = 0; k < 8; ++k) {
            sum[k] += std::fabs(x[i + k]);
        }
    }
    return ((sum[0] + sum[4]) + (sum[1] + sum[5])) + ((sum[2] + sum[6]) + (sum[3] + sum[7]));
}

} // namespace

VekStatus veksOpenLoopPitchSearch_G729A_32f(const Vek32f* pSrc, int* pBestLag) {
    if (anyNull(pSrc, pBestLag)) {
        return vekStsNullPtrErr;
    }
    const HalfSearch search(pSrc);
    *pBestLag = g729::bestOfRanges(
        search, [](Peak& peak, const Peak& longer) { peak.value += 0.25F * longer.value; },
        [](Peak& peak, const Peak& longer) { peak.value += 0.2F * longer.value; });
    return vekStsNoErr;
}

VekStatus veksAutoCorrLagMax_32f(const Vek32f* pSrc, int len, int lowerLag, int upperLag, Vek32f* pMax, int* pMaxLag) {
    if (const VekStatus status = checkSignal(len, pSrc, pMax, pMaxLag); status != vekStsNoErr) {
        return status;
    }
    if (lowerLag < 0 || lowerLag > upperLag || upperLag > kMaxSignalLength) {
        return vekStsRangeErr;
    }
    Vek32f best = 0;
    int bestLag = -1;
    for (int first = lowerLag; first <= upperLag; first += kDelays) {
        const int count = std::min(upperLag - first + 1, kDelays);
        const int longest = first + count - 1;
        Vek32f sums[kDelays];
        floatCorrKernels().corr32f(pSrc, pSrc - longest, len, count, sums);
        for (int k = count - 1; k >= 0; --k) {
            if (bestLag < 0 || sums[k] > best) {
                best = sums[k];
                bestLag = longest - k;
            }
        }
    }
    *pMax = best;
    *pMaxLag = bestLag;
    return vekStsNoErr;
}

VekStatus veksCrossCorrLagMax_32f64f(const Vek32f* pSrc1, const Vek32f* pSrc2, int len, int lags, Vek64f* pMax,
                                     int* pMaxLag) {
    if (anyNull(pSrc1, pSrc2, pMax, pMaxLag)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len) || badLength(lags)) {
        return vekStsSizeErr;
    }
    Vek64f best = 0;
    int bestLag = -1;
    for (int first = 0; first < lags; first += kDelays) {
        const int count = std::min(lags - first, kDelays);
        Vek64f sums[kDelays];
        floatCorrKernels().corr32f64f(pSrc1, pSrc2 + first, len, count, sums);
        for (int k = 0; k < count; ++k) {
            if (bestLag < 0 || sums[k] > best) {
                best = sums[k];
                bestLag = first + k;
            }
        }
    }
    *pMax = best;
    *pMaxLag = bestLag;
    return vekStsNoErr;
}

VekStatus veksGainControl_G729_32f_I(const Vek32f* pSrc, Vek32f* pSrcDst, Vek32f* pGain) {
    if (anyNull(pSrc, pSrcDst, pGain)) {
        return vekStsNullPtrErr;
    }
    constexpr Vek32f keep = 0.9875F;
    const Vek32f in = sumOfMagnitudes(pSrc);
    Vek32f share = 0;
    if (in > 0) {
        const Vek32f out = sumOfMagnitudes(pSrcDst);
        if (!(out > 0)) {
            *pGain = 0;
            return vekStsNoErr;
        }
        share = (1 - keep) * in / out;
    }
    // Each gain out of the fourth before it, so that four are computed side by side.
    constexpr Vek32f keep4 = keep * keep * keep * keep;
    const Vek32f share4 = share * (1 + keep + keep * keep + keep * keep * keep);
    Vek32f gains[4];
    Vek32f gain = *pGain;
    for (Vek32f& g : gains) {
        gain = keep * gain + share;
        g = gain;
    }
    for (int i = 0; i < kSubframe; i += 4) {
        gain = gains[3];
        for (int k = 0; k < 4; ++k) {
            pSrcDst[i + k] *= gains[k];
            gains[k] = keep4 * gains[k] + share4;
        }
    }
    *pGain = gain;
    return vekStsNoErr;
}
