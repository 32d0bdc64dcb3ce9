// What the coder and the decoder of G.729's gains share: codebooks and the prediction of the fixed codebook's gain.
#pragma once

#include <array>
#include <cstdint>

#include "sc/g729/sizes.h"
#include "vekdefs.h"

namespace vek::g729 {

// Adaptive gain Q14, and the factor on the predicted fixed gain.
struct GainEntry {
    int16_t adaptive;
    int16_t factor;
};

constexpr int kFirstEntries = 8;
constexpr int kSecondEntries = 16;
constexpr int kSecondEntriesD = 8;

// In the order of the transmitted codes. Factors Q13; Q14 in Annex D. G.729 3.9.2, D.3.9.
extern const std::array<GainEntry, kFirstEntries> kFirstGains;
extern const std::array<GainEntry, kSecondEntries> kSecondGains;
extern const std::array<GainEntry, kFirstEntries> kFirstGainsD;
extern const std::array<GainEntry, kSecondEntriesD> kSecondGainsD;

// mantissa * 2^-exponent
struct PredictedGain {
    int16_t mantissa;
    int exponent;
};

// From the energy of the code vector (Q26) and the past errors. 3.9.1.
PredictedGain predictGain(int32_t energy, const Vek16s* past);
// The fixed gain, Q1, of a factor in Q13.
int16_t fixedGain(int factor, const PredictedGain& predicted);
// Moves the past errors on by that of a factor in Q13, or in a frame lost.
void movePast(int factor, Vek16s* past);
void movePastLost(Vek16s* past);

} // namespace vek::g729
