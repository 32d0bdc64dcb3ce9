// Search for the signed pulses of an algebraic code vector of 40 on interleaved tracks, as TS 26.090 and the annexes of
// G.729 have it: correlations, signs, matrix, and the two ways to search. Codewords are the business of each codec.
#pragma once

#include "sc/common/fixmath.h"
#include "sc/kernels/pulses.h"
#include "vekdefs.h"

namespace vek::pulses {

using namespace fix;

// The pulses found, by position, and the sign of each position: 32767 or -32767.
struct PulsesFound {
    int positions[kMostPulses];
    Vek16s sign[kPulsePositions];
    // The track that the search of pairs began on.
    int firstTrack;
};

// Where a position stands in a field of five tracks.
constexpr int slotOnFive(int position) {
    return position % 5 * 8 + position / 5;
}

// Correlations, their signs and the matrix, on five tracks.
void signedField(const Vek16s* target, const Vek16s* h, Vek16s* sign, PulseField& field);

// Signs by correlation and residual together, which d takes, and the strongest lane of each of five tracks.
void signsAndPeaks(const Vek16s* residual, Vek16s* d, Vek16s* sign, int8_t (&peaks)[5]);

// Adds the response from `position` on, with a sign; saturates.
void addResponse(const Vek16s* h, int position, bool plus, Vek16s* y);

// Two to four pulses on five tracks, tried in chains; a chain begins at one of the `kept` strongest positions of its
// first track.
void searchChains(const Vek16s* target, const Vek16s* h, const PulseChain* chains, int count, int pulses, int kept,
                  PulsesFound& found);

// Twelve or ten pulses on five tracks or eight on four, signs by target and residual together.
void searchPairs(const Vek16s* target, const Vek16s* residual, const Vek16s* h, int pulses, PulsesFound& found);

} // namespace vek::pulses
