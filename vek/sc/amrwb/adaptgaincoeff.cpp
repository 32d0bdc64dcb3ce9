// Gain of the adaptive codebook of AMR-WB and the correlations it comes from.
#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/corr.h"
#include "sc/kernels/filter.h"
#include "veksc_amrwbflt.h"

namespace {

using namespace vek::fix;

// Inner product with saturation at each step, normalised: 1.0 = 2^15 with the exponent *exp.
Vek16s normalised(const Vek16s* x, const Vek16s* y, int len, Vek16s* exp) {
    int32_t sum = 1;
    const FilterKernels& k = filterKernels();
    if (x == y || static_cast<int64_t>(k.maxAbs16(x, len)) * k.maxAbs16(y, len) * len < 1 << 30) {
        sum = sat32(2 * corrKernels().dot16(x, y, len) + 1);
    } else {
        for (int i = 0; i < len; ++i) {
            sum = L_mac(sum, x[i], y[i]);
        }
    }
    const Vek16s shift = norm_l(sum);
    *exp = static_cast<Vek16s>(30 - shift);
    return extract_h(sum << shift);
}

} // namespace

VekStatus veksAdaptiveCodebookGainCoeff_AMRWB_16s(const Vek16s* pSrcAdptTarget, const Vek16s* pSrcFltAdptVector,
                                                  Vek16s* pDstGainCoeff, Vek16s* pResultAdptGain, int len) {
    constexpr Vek16s kMostGain = 19661; // 1.2
    if (const VekStatus status = checkSignal(len, pSrcAdptTarget, pSrcFltAdptVector, pDstGainCoeff, pResultAdptGain);
        status != vekStsNoErr) {
        return status;
    }
    Vek16s* const c = pDstGainCoeff;
    c[2] = normalised(pSrcAdptTarget, pSrcFltAdptVector, len, c + 3);
    c[0] = normalised(pSrcFltAdptVector, pSrcFltAdptVector, len, c + 1);
    if (c[2] < 0) {
        *pResultAdptGain = 0;
        return vekStsNoErr;
    }
    const Vek16s gain = shl(div_s(static_cast<Vek16s>(c[2] >> 1), c[0]), c[3] - c[1]);
    *pResultAdptGain = gain > kMostGain ? kMostGain : gain;
    return vekStsNoErr;
}
