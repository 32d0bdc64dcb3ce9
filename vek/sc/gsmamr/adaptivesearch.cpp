// Closed-loop search of the adaptive codebook: which delays and fractions are tried at each rate and subframe.
#include <algorithm>

#include "sc/common/fixmath.h"
#include "sc/common/pitchcorr.h"
#include "sc/common/signal_check.h"
#include "sc/g729/adaptivevector.h"
#include "sc/gsmamr/laglaw.h"
#include "sc/gsmamr/speechrates.h"
#include "veksc_gsmamr.h"

using namespace vek::gsmamr;
using vek::g729::adaptiveVectorSixths;
using vek::g729::kPastExcitation;

namespace {

constexpr int kMostDelays = 20 + 2 * kPitchMargin;

// The best fraction from `first` to `last`, `at` being the correlation of the whole lag.
Lag bestFraction(const Vek16s* at, int whole, int first, int last, bool sixths) {
    const int unit = sixths ? 1 : 2;
    int found = first;
    Vek16s best = pitchCorrelationBetween(at, first * unit);
    for (int i = first + 1; i <= last; ++i) {
        const Vek16s value = pitchCorrelationBetween(at, i * unit);
        if (value > best) {
            best = value;
            found = i;
        }
    }
    // The outermost fractions belong to the neighbouring lags.
    if (sixths) {
        return found == -3 ? Lag{whole - 1, 3} : Lag{whole, found};
    }
    return found == -2 ? Lag{whole - 1, 1} : found == 2 ? Lag{whole + 1, -1} : Lag{whole, found};
}

Lag bestLag(const Vek16s* correlations, const LagLaw& law, const LagRange& range, int former) {
    const Vek16s* at = correlations + kPitchMargin - range.first;
    int lag = range.first;
    for (int i = range.first + 1; i <= range.last; ++i) {
        if (at[i] >= at[lag]) {
            lag = i;
        }
    }
    const int outer = law.sixths ? 3 : 2;
    if (!law.relative && lag > law.lastSplit) {
        return {lag, 0};
    }
    if (law.coarse) {
        const int from = lag - range.middle(former);
        if (from < -2 || from > 1) {
            return {lag, 0};
        }
        return bestFraction(at + lag, lag, from == -2 ? 0 : -outer, from == 1 ? 0 : outer, false);
    }
    return bestFraction(at + lag, lag, -outer, outer, law.sixths);
}

} // namespace

VekStatus veksAdaptiveCodebookSearch_GSMAMR_16s(const Vek16s* pSrcAdptTarget, const Vek16s* pSrcImpulseResponse,
                                                const Vek16s* pSrcOpenLoopLag, Vek16s* pValResultPrevIntPitchLag,
                                                Vek16s* pSrcDstExcitation, Vek16s* pResultFracPitchLag,
                                                Vek16s* pResultAdptIndex, Vek16s* pDstAdptVector, Vek16s subFrame,
                                                VekSpchBitRate mode) {
    if (anyNull(pSrcAdptTarget, pSrcImpulseResponse, pSrcOpenLoopLag, pValResultPrevIntPitchLag, pSrcDstExcitation,
                pResultFracPitchLag, pResultAdptIndex, pDstAdptVector)) {
        return vekStsNullPtrErr;
    }
    if (!isRate(mode)) {
        return vekStsBitRateErr;
    }
    if (!isSubframe(subFrame)) {
        return vekStsRangeErr;
    }
    const LagLaw law(subFrame, mode);
    const int former = *pValResultPrevIntPitchLag;
    const LagRange range(law, law.relative ? former : pSrcOpenLoopLag[subFrame / 2]);
    Vek16s* exc = pSrcDstExcitation + kPastExcitation;
    Vek16s correlations[kMostDelays];
    pitchCorrelations(exc, pSrcAdptTarget, pSrcImpulseResponse, range.first - kPitchMargin, range.last + kPitchMargin,
                      correlations);
    const Lag lag = bestLag(correlations, law, range, former);
    adaptiveVectorSixths(exc, lag.whole, law.sixths ? lag.fraction : 2 * lag.fraction);
    std::copy_n(exc, kSubframe, pDstAdptVector);
    *pResultAdptIndex = static_cast<Vek16s>(encodeLag(law, range, former, lag));
    *pResultFracPitchLag = static_cast<Vek16s>(lag.fraction);
    *pValResultPrevIntPitchLag = static_cast<Vek16s>(lag.whole);
    return vekStsNoErr;
}
