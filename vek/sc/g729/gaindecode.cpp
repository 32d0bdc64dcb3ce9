// Gains of G.729 from their codes, with the prediction that the coder uses too.
#include <algorithm>

#include "sc/common/fixmath.h"
#include "sc/common/logarithm.h"
#include "sc/common/signal_check.h"
#include "sc/g729/gains.h"
#include "veksc_g729code.h"

namespace vek::g729 {

namespace {

constexpr int kPast = 4;
constexpr int16_t kPrediction[kPast] = {5571, 4751, 2785, 1556}; // Q13

void push(Vek16s value, Vek16s* past) {
    // One by one: whoever reads them next does so too, and does not wait for a copy of all.
    past[3] = past[2];
    past[2] = past[1];
    past[1] = past[0];
    past[0] = value;
}

// What a lost frame leaves as its error. The newest of the past is added last: it may just have been written.
Vek16s lostError(const Vek16s* past) {
    constexpr int drop = 4096;
    constexpr int least = -14336;
    const int older = past[3] + past[2] + past[1] - 4 * drop;
    return static_cast<Vek16s>(std::max((older + past[0]) >> 2, least));
}

} // namespace

PredictedGain predictGain(int32_t energy, const Vek16s* past) {
    int16_t exponent = 0;
    int16_t fraction = 0;
    Log2(energy, exponent, fraction);
    // One more: the constant is that of doubled squares. 30 dB + 10 log10(40 * 2^27) - 10 log10(energy), Q14.
    int32_t level = Mpy_32_16(static_cast<int16_t>(exponent + 1), fraction, -24660);
    level = L_mac(level, 32588, 32);
    level = L_shl(level, 10);
    for (int i = 0; i < kPast; ++i) {
        level = L_mac(level, kPrediction[i], past[i]);
    }
    // 10^(dB / 20) as a power of 2.
    const int32_t power = L_shr(L_mult(extract_h(level), 5439), 8);
    L_Extract(power, exponent, fraction);
    return {extract_l(Pow2(14, fraction)), 14 - exponent};
}

int16_t fixedGain(int factor, const PredictedGain& predicted) {
    const int32_t gain = L_mult(static_cast<int16_t>(factor >> 1), predicted.mantissa);
    return extract_h(L_shl(gain, 4 - predicted.exponent));
}

void movePast(int factor, Vek16s* past) {
    int16_t exponent = 0;
    int16_t fraction = 0;
    Log2(factor, exponent, fraction);
    const int32_t log = L_Comp(static_cast<int16_t>(exponent - 13), fraction);
    push(mult(extract_h(L_shl(log, 13)), 24660), past);
}

void movePastLost(Vek16s* past) {
    push(lostError(past), past);
}

} // namespace vek::g729

namespace {

using namespace vek::g729;

constexpr int kMostCode = 127;

void decode(Vek32s energy, Vek16s* past, const Vek16s* codes, Vek16s* gains) {
    const GainEntry first = kFirstGains[static_cast<size_t>(codes[0] % kFirstEntries)];
    const GainEntry second = kSecondGains[static_cast<size_t>(codes[1] % kSecondEntries)];
    const int factor = first.factor + second.factor;
    gains[0] = static_cast<Vek16s>(first.adaptive + second.adaptive);
    gains[1] = fixedGain(factor, predictGain(energy, past));
    movePast(factor, past);
}

bool codesWrong(const Vek16s* codes) {
    return codes[0] < 0 || codes[0] > kMostCode || codes[1] < 0 || codes[1] > kMostCode;
}

} // namespace

VekStatus veksDecodeGain_G729_16s(Vek32s energy, Vek16s* pPastEnergy, const Vek16s* quaIndex, Vek16s* pGain) {
    if (anyNull(pPastEnergy, quaIndex, pGain)) {
        return vekStsNullPtrErr;
    }
    if (energy < 0 || codesWrong(quaIndex)) {
        return vekStsRangeErr;
    }
    decode(energy, pPastEnergy, quaIndex, pGain);
    return vekStsNoErr;
}

VekStatus veksDecodeGain_G729I_16s(Vek32s energy, Vek16s valGainAttenuation, Vek16s* pPastEnergy,
                                   const Vek16s* quaIndex, Vek16s* pGain) {
    constexpr int lostFactor = 29491; // 0.9 Q15
    constexpr int mostLost = 14745;   // 0.9 Q14
    if (anyNull(pPastEnergy, quaIndex, pGain)) {
        return vekStsNullPtrErr;
    }
    const bool lost = quaIndex[0] == -1;
    if (energy < 0 || valGainAttenuation < 0 || (!lost && codesWrong(quaIndex))) {
        return vekStsRangeErr;
    }
    if (!lost) {
        decode(energy, pPastEnergy, quaIndex, pGain);
        return vekStsNoErr;
    }
    // Neither factor is negative: no product leaves 16 bits. Between the gains the past is not written as one word, all
    // of which would wait for the newest error.
    const Vek16s error = lostError(pPastEnergy);
    pPastEnergy[3] = pPastEnergy[2];
    pPastEnergy[2] = pPastEnergy[1];
    pGain[0] = static_cast<Vek16s>(std::min((pGain[0] * lostFactor) >> 15, mostLost));
    pPastEnergy[1] = pPastEnergy[0];
    pGain[1] = static_cast<Vek16s>((pGain[1] * valGainAttenuation) >> 15);
    pPastEnergy[0] = error;
    return vekStsNoErr;
}
