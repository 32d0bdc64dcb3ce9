// Long-term lag, weighting filter and inverse block quantisation of GSM full rate.
#include "sc/common/correlate.h"
#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/corr.h"
#include "sc/kernels/filter.h"
#include "veksc_gsmfr.h"

using namespace vek::fix;

namespace {

constexpr int kPulses = 13;
constexpr int kTaps = 11;
constexpr Vek16s kWeights[kTaps] = {-134, -374, 0, 2054, 5741, 8192, 5741, 2054, 0, -374, -134};
// The direct mantissa of each coded one: the upper end of its stretch, Q15.
constexpr Vek16s kDirect[8] = {18431, 20479, 22527, 24575, 26623, 28671, 30719, 32767};

} // namespace

VekStatus veksCrossCorrLagMax_16s(const Vek16s* pSrc1, const Vek16s* pSrc2, int len, int lag, Vek32s* pMax,
                                  int* pMaxLag) {
    if (anyNull(pSrc1, pSrc2) || anyNull(pMax) || anyNull(pMaxLag)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len)) {
        return vekStsSizeErr;
    }
    if (badLength(lag)) {
        return vekStsRangeErr;
    }
    // From the longest on: of equal sums the last counts.
    const MostOfSlide most = mostOfSlide(pSrc1, pSrc2 + (lag - 1), len, -1, lag);
    *pMax = sat32(most.sum);
    *pMaxLag = lag - 1 - most.at;
    return vekStsNoErr;
}

VekStatus veksWeightingFilter_GSMFR_16s(const Vek16s* pSrc, Vek16s* pDst, int len) {
    if (anyNull(pSrc, pDst)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len)) {
        return vekStsSizeErr;
    }
    filterKernels().fir16(kWeights, kTaps - 1, pSrc + kTaps / 2, pDst, len, 13);
    return vekStsNoErr;
}

VekStatus veksRPEQuantDecode_GSMFR_16s(const Vek16s* pSrc, Vek16s ampl, Vek16s amplSfs, Vek16s* pDst) {
    if (anyNull(pSrc, pDst)) {
        return vekStsNullPtrErr;
    }
    if (ampl < 0 || ampl > 7 || amplSfs < -4 || amplSfs > 6) {
        return vekStsRangeErr;
    }
    for (int i = 0; i < kPulses; ++i) {
        if (pSrc[i] < 0 || pSrc[i] > 7) {
            return vekStsRangeErr;
        }
    }
    const int shift = 6 - amplSfs;
    const Vek16s half = shl(1, shift - 1);
    for (int i = 0; i < kPulses; ++i) {
        const auto centred = static_cast<Vek16s>((2 * pSrc[i] - 7) * 4096);
        pDst[i] = shr(add(mult_r(kDirect[ampl], centred), half), shift);
    }
    return vekStsNoErr;
}
