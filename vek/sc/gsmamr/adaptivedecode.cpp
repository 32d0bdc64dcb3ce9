// Adaptive codebook vector from the index of the bit stream, and its substitution in a bad frame.
#include <algorithm>

#include "sc/common/signal_check.h"
#include "sc/g729/adaptivevector.h"
#include "sc/gsmamr/laglaw.h"
#include "sc/gsmamr/speechrates.h"
#include "veksc_gsmamr.h"

using namespace vek::gsmamr;
using vek::g729::adaptiveVectorSixths;
using vek::g729::kPastExcitation;

namespace {

constexpr int kLastRelativeIndex = 60;

// What a bad frame takes for the lag.
Lag substitute(const Lag& told, int former, bool inVoicedNoise, VekSpchBitRate mode) {
    if (mode == VEK_SPCHBR_12200) {
        return {former, 0};
    }
    const bool low = mode == VEK_SPCHBR_4750 || mode == VEK_SPCHBR_5150 || mode == VEK_SPCHBR_5900;
    return {low && inVoicedNoise ? told.whole : std::min(former + 1, std::max(former, kLongestDelay)), 0};
}

} // namespace

VekStatus veksAdaptiveCodebookDecode_GSMAMR_16s(Vek16s valAdptIndex, Vek16s* pValResultPrevIntPitchLag,
                                                Vek16s* pResultIntPitchLag, Vek16s* pSrcDstExcitation,
                                                Vek16s* pDstAdptVector, Vek16s subFrame, Vek16s bfi, Vek16s inBgNoise,
                                                Vek16s voicedHangover, VekSpchBitRate mode) {
    if (anyNull(pValResultPrevIntPitchLag, pResultIntPitchLag, pSrcDstExcitation, pDstAdptVector)) {
        return vekStsNullPtrErr;
    }
    if (!isRate(mode)) {
        return vekStsBitRateErr;
    }
    if (!isSubframe(subFrame) || bfi < 0 || bfi > 1) {
        return vekStsRangeErr;
    }
    const int former = *pValResultPrevIntPitchLag;
    const LagLaw law(subFrame, mode);
    if (former < 17 || former > 144 || valAdptIndex < 0 || valAdptIndex >> law.indexBits != 0) {
        return vekStsRangeErr;
    }
    const LagRange range(law, former);
    const Lag told = decodeLag(law, range, former, valAdptIndex);
    const bool unknown = law.sixths && law.relative && valAdptIndex > kLastRelativeIndex;
    const Lag lag = bfi == 1 || unknown ? substitute(told, former, inBgNoise != 0 && voicedHangover > 4, mode) : told;
    Vek16s* exc = pSrcDstExcitation + kPastExcitation;
    adaptiveVectorSixths(exc, lag.whole, law.sixths ? lag.fraction : 2 * lag.fraction);
    std::copy_n(exc, kSubframe, pDstAdptVector);
    *pResultIntPitchLag = static_cast<Vek16s>(told.whole);
    *pValResultPrevIntPitchLag = static_cast<Vek16s>(lag.whole);
    return vekStsNoErr;
}
