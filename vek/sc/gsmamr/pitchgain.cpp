// Gain of the adaptive codebook, with the sums that the joint quantiser of the gains goes on with.
#include <algorithm>

#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/gsmamr/speechrates.h"
#include "sc/kernels/corr.h"
#include "veksc_gsmamr.h"

using namespace vek::gsmamr;

namespace {

struct Mantissa {
    Vek16s value;
    int exponent;
};

Mantissa mantissaOf(int32_t v, int lost = 0) {
    const int shift = norm_l(v);
    return {round_s(L_shl(v, shift)), shift - lost};
}

// Doubled inner product plus one; where a step of the sum does not fit 32 bits, the vector's quarters serve.
Mantissa product(const Vek16s* x, const Vek16s* y, const Vek16s* quarters, int quarterBits) {
    bool fits = true;
    int64_t sum = 1;
    for (int i = 0; i < kSubframe; ++i) {
        sum += int64_t{2} * x[i] * y[i];
        fits = fits && sum <= kMax32 && sum >= kMin32;
    }
    if (fits) {
        return mantissaOf(static_cast<int32_t>(sum));
    }
    int32_t s = 1;
    for (int i = 0; i < kSubframe; ++i) {
        s = L_mac(s, x == y ? quarters[i] : x[i], quarters[i]);
    }
    return mantissaOf(s, quarterBits);
}

Vek16s gainOf(const Vek16s* target, const Vek16s* y, Vek16s* coeffs) {
    Mantissa yy;
    Mantissa xy;
    int32_t sum;
    int32_t squares;
    if (corrKernels().gainSums16(target, y, kSubframe, &sum, &squares)) {
        yy = mantissaOf(2 * squares + 1);
        xy = mantissaOf(2 * sum + 1);
    } else {
        Vek16s quarters[kSubframe];
        corrKernels().shift16(y, quarters, kSubframe, -2);
        yy = product(y, y, quarters, 4);
        xy = product(target, y, quarters, 2);
    }
    if (coeffs != nullptr) {
        coeffs[0] = yy.value;
        coeffs[1] = static_cast<Vek16s>(15 - yy.exponent);
        coeffs[2] = xy.value;
        coeffs[3] = static_cast<Vek16s>(15 - xy.exponent);
    }
    if (xy.value < 4) {
        return 0;
    }
    const Vek16s gain = shr(div_s(static_cast<Vek16s>(xy.value >> 1), yy.value), xy.exponent - yy.exponent);
    return std::min<Vek16s>(gain, 19661);
}

} // namespace

VekStatus veksAdaptiveCodebookGain_GSMAMR_16s(const Vek16s* pSrcAdptTarget, const Vek16s* pSrcFltAdptVector,
                                              Vek16s* pResultAdptGain) {
    if (anyNull(pSrcAdptTarget, pSrcFltAdptVector, pResultAdptGain)) {
        return vekStsNullPtrErr;
    }
    *pResultAdptGain = gainOf(pSrcAdptTarget, pSrcFltAdptVector, nullptr);
    return vekStsNoErr;
}

VekStatus veksAdaptiveCodebookGainCoeffs_GSMAMR_16s(const Vek16s* pSrcAdptTarget, const Vek16s* pSrcFltAdptVector,
                                                    Vek16s* pResultAdptGain, Vek16s* pResultAdptGainCoeffs) {
    if (anyNull(pSrcAdptTarget, pSrcFltAdptVector, pResultAdptGain, pResultAdptGainCoeffs)) {
        return vekStsNullPtrErr;
    }
    *pResultAdptGain = gainOf(pSrcAdptTarget, pSrcFltAdptVector, pResultAdptGainCoeffs);
    return vekStsNoErr;
}
