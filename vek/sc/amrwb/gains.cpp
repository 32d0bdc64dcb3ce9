// Gains of AMR-WB and AMR-WB+: joint quantisation of both, prediction of the code gain by past energies, decoding.
#include <algorithm>

#include "sc/amrwb/normal.h"
#include "sc/amrwb/rates.h"
#include "sc/amrwb/tables.h"
#include "sc/common/logarithm.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/widepulses.h"
#include "veksc_amrwb.h"

namespace {

using namespace vek::amrwb;

constexpr int kPast = 4;
constexpr Vek16s kMeanEnergy = 30; // dB
constexpr Vek16s kPrediction[kPast] = {4096, 3277, 2458, 1638};

// A gain in mantissa (14 bits) and exponent.
struct Predicted {
    Vek16s mantissa;
    int exponent;
};

// 10^(decibels / 20) of a level in dB, Q8.
Predicted fromDecibels(Vek16s level) {
    const int32_t log2 = L_shr(L_mult(level, 5443), 8);
    Vek16s exponent = 0;
    Vek16s fraction = 0;
    L_Extract(log2, exponent, fraction);
    return {extract_l(Pow2(14, fraction)), exponent - 14};
}

// The sum of the weighted past, Q10, onto a level in Q24.
Vek16s predictLevel(int32_t level, const Vek16s* past) {
    for (int i = 0; i < kPast; ++i) {
        level = L_mac(level, kPrediction[i], past[i]);
    }
    return extract_h(level);
}

// Negative level of a vector in Q9, dB in Q14, per sample of a subframe.
int32_t levelBelow(const Vek16s* code, int len) {
    const Normal energy = product(code, code, len);
    Vek16s exponent = 0;
    Vek16s fraction = 0;
    Log2(energy.mantissa, exponent, fraction);
    return Mpy_32_16(static_cast<Vek16s>(exponent + energy.exponent - (18 + 6 + 31)), fraction, -24660);
}

Vek32s codeGain(Vek16s correction, const Predicted& predicted) {
    return L_shl(L_mult(correction, predicted.mantissa), predicted.exponent + 4);
}

void pushEnergy(Vek16s energy, Vek16s* past) {
    std::copy_backward(past, past + kPast - 1, past + kPast);
    past[0] = energy;
}

// 20 * log10 of a correction in Q11, Q10.
Vek16s energyOf(Vek16s correction) {
    Vek16s exponent = 0;
    Vek16s fraction = 0;
    Log2(correction, exponent, fraction);
    return extract_l(L_shr(Mpy_32_16(static_cast<Vek16s>(exponent - 11), fraction, 24660), 3));
}

// The squared error as a form in the two gains: aligned coefficients of (pitch^2, pitch, code^2, code, both).
GainForm errorForm(const Vek16s* x, const Vek16s* y1, int format, const Vek16s* y2, const Vek16s* corr, int len,
                   int exponent) {
    const Normal own = product(y2, y2, len);
    const Normal target = product(x, y2, len);
    const Normal cross = product(y1, y2, len);
    const Vek16s mantissa[kGainTerms] = {corr[0], negate(corr[2]), extract_h(own.mantissa),
                                         extract_h(L_negate(target.mantissa)), extract_h(cross.mantissa)};
    const int scale[kGainTerms] = {corr[1] - 13, corr[3] + 1 - 14, own.exponent - 18 + 2 * format + 15 + 2 * exponent,
                                   target.exponent - 8 + format + exponent, cross.exponent - 8 + format + exponent + 1};
    const int top = *std::max_element(scale, scale + kGainTerms);
    GainForm form;
    for (int i = 0; i < kGainTerms; ++i) {
        Vek16s high = 0;
        Vek16s low = 0;
        L_Extract(L_shr(L_deposit_h(mantissa[i]), top - scale[i] + 2), high, low);
        form.high[i] = high;
        form.low[i] = low >> 3;
    }
    return form;
}

bool badFormat(int format) {
    return format < -15 || format > 15;
}

} // namespace

VekStatus veksGainQuant_AMRWB_16s(const Vek16s* pSrcAdptTarget, const Vek16s* pSrcFltAdptVector, int valFormat,
                                  const Vek16s* pSrcFixedVector, const Vek16s* pSrcFltFixedVector,
                                  const Vek16s* pSrcCorr, Vek16s* pSrcDstEnergyErr, Vek16s* pSrcDstPitchGain,
                                  Vek32s* pDstCodeGain, int valClipFlag, Vek16s* pDstQGainIndex, int len,
                                  VekSpchBitRate mode) {
    if (anyNull(pSrcAdptTarget, pSrcFltAdptVector, pSrcFixedVector, pSrcFltFixedVector, pSrcCorr, pSrcDstEnergyErr,
                pSrcDstPitchGain, pDstQGainIndex, pDstCodeGain)) {
        return vekStsNullPtrErr;
    }
    if (len < 1 || len > kSubframe) {
        return vekStsSizeErr;
    }
    const Rate rate = rateOf(mode);
    if (rate == Rate::None) {
        return vekStsBitRateErr;
    }
    if (badFormat(valFormat) || !isFlag(valClipFlag)) {
        return vekStsRangeErr;
    }
    constexpr int kWindow = 64;
    const bool six = rate <= Rate::R885;
    const Vek16s* pairs = six ? kGains6 : kGains7;
    int first = 0;
    int count = kWindow;
    if (six) {
        count = valClipFlag == 1 ? kGainCount6 - 16 : kGainCount6;
    } else {
        // The window begins where the pitch gains come near to the one before quantisation.
        const int steps = kGainCount7 - kWindow - (valClipFlag == 1 ? 27 : 0);
        for (int i = 0; i < steps; ++i) {
            first += *pSrcDstPitchGain > pairs[kWindow + 2 * i] ? 1 : 0;
        }
    }
    const int32_t level = L_mac(levelBelow(pSrcFixedVector, len), kMeanEnergy, 8192);
    const Predicted predicted = fromDecibels(predictLevel(L_shl(level, 10), pSrcDstEnergyErr));
    const GainForm form = errorForm(pSrcAdptTarget, pSrcFltAdptVector, valFormat, pSrcFltFixedVector, pSrcCorr, len,
                                    predicted.exponent + 4);
    const int index = first + widePulseKernels().leastError(pairs + 2 * first, count, predicted.mantissa, form);
    const Vek16s correction = pairs[2 * index + 1];
    *pDstQGainIndex = static_cast<Vek16s>(index);
    *pSrcDstPitchGain = pairs[2 * index];
    *pDstCodeGain = codeGain(correction, predicted);
    pushEnergy(energyOf(correction), pSrcDstEnergyErr);
    return vekStsNoErr;
}

VekStatus veksGainQuant_AMRWBE_16s(const Vek16s* pSrcAdptTarget, const Vek16s* pSrcFltAdptVector, int valFormat,
                                   const Vek16s* pSrcFixedVector, const Vek16s* pSrcFltFixedVector, int len,
                                   const Vek16s* pSrcCorr, Vek16s valMeanEnergy, Vek16s* pSrcDstPitchGain,
                                   Vek16s* pDstCorrFactor, Vek32s* pDstCodeGain, Vek16s* pDstQGainIndex) {
    if (anyNull(pSrcAdptTarget, pSrcFltAdptVector, pSrcFixedVector, pSrcFltFixedVector, pSrcCorr, pSrcDstPitchGain,
                pDstCorrFactor, pDstQGainIndex, pDstCodeGain)) {
        return vekStsNullPtrErr;
    }
    if (len < 1 || len > kSubframe) {
        return vekStsSizeErr;
    }
    if (badFormat(valFormat)) {
        return vekStsRangeErr;
    }
    const int32_t level = L_add(L_shl(levelBelow(pSrcFixedVector, len), 10), L_deposit_h(valMeanEnergy));
    const Predicted predicted = fromDecibels(extract_h(level));
    const GainForm form = errorForm(pSrcAdptTarget, pSrcFltAdptVector, valFormat, pSrcFltFixedVector, pSrcCorr, len,
                                    predicted.exponent + 4);
    const int index = widePulseKernels().leastError(kGains7, kGainCount7, predicted.mantissa, form);
    *pDstQGainIndex = static_cast<Vek16s>(index);
    *pSrcDstPitchGain = kGains7[2 * index];
    *pDstCorrFactor = kGains7[2 * index + 1];
    *pDstCodeGain = codeGain(kGains7[2 * index + 1], predicted);
    return vekStsNoErr;
}

VekStatus veksDecodeGain_AMRWB_16s(int valQIndex, Vek16s valEnergy, Vek16s* pDstPitchGain, Vek32s* pDstCodeGain,
                                   int bfi, int prevBfi, Vek16s* pSrcDstPastEnergy, Vek16s* pPrevCodeGain,
                                   Vek16s* pSrcDstPastCodeGain, VekSpchBitRate mode) {
    if (anyNull(pDstPitchGain, pSrcDstPastEnergy, pPrevCodeGain, pSrcDstPastCodeGain, pDstCodeGain)) {
        return vekStsNullPtrErr;
    }
    const Rate rate = rateOf(mode);
    if (rate == Rate::None) {
        return vekStsBitRateErr;
    }
    const bool six = rate <= Rate::R885;
    if (!isFlag(bfi) || !isFlag(prevBfi) || valEnergy < 0 || valQIndex < 0 ||
        valQIndex >= (six ? kGainCount6 : kGainCount7)) {
        return vekStsRangeErr;
    }
    if (bfi == 1) {
        constexpr Vek16s kMostPitch = 15565; // 0.95
        constexpr int kFall = 3072;          // 3 dB
        constexpr int kFloor = -14336;       // -14 dB
        int mean = 0;
        for (int i = 0; i < kPast; ++i) {
            mean += pSrcDstPastEnergy[i];
        }
        pushEnergy(static_cast<Vek16s>(std::max((mean >> 2) - kFall, kFloor)), pSrcDstPastEnergy);
        *pDstPitchGain = std::min(*pDstPitchGain, kMostPitch);
        *pDstCodeGain = L_mult(*pSrcDstPastCodeGain, valEnergy);
        return vekStsNoErr;
    }
    const Vek16s* pair = (six ? kGains6 : kGains7) + 2 * valQIndex;
    const Predicted predicted = fromDecibels(predictLevel(L_shl(L_deposit_h(kMeanEnergy), 8), pSrcDstPastEnergy));
    Vek32s gain = codeGain(pair[1], predicted);
    if (prevBfi == 1) {
        constexpr Vek32s kLoud = 6553600; // 100
        const Vek32s bound = L_mult(*pPrevCodeGain, 5120);
        gain = gain > bound && gain > kLoud ? bound : gain;
    }
    *pDstPitchGain = pair[0];
    *pSrcDstPastCodeGain = round_s(L_shl(gain, 3));
    *pPrevCodeGain = *pSrcDstPastCodeGain;
    *pDstCodeGain = L_shl(Mpy_32_16(gain, valEnergy), 3);
    pushEnergy(energyOf(pair[1]), pSrcDstPastEnergy);
    return vekStsNoErr;
}
