// Search for the pulses of the algebraic codebook: correlations, signs, matrix, and the two ways to search.
#pragma once

#include "sc/kernels/pulses.h"
#include "vekdefs.h"

namespace vek::gsmamr {

// The pulses found, by position, and the sign of each position: 32767 or -32767.
struct PulsesFound {
    int positions[kMostPulses];
    Vek16s sign[kPulsePositions];
};

// Two to four pulses on five tracks, tried in chains; a chain begins at one of the `kept` strongest positions of its
// first track.
void searchChains(const Vek16s* target, const Vek16s* h, const PulseChain* chains, int count, int pulses, int kept,
                  PulsesFound& found);

// Ten pulses on five tracks or eight on four, signs by target and residual together.
void searchPairs(const Vek16s* target, const Vek16s* residual, const Vek16s* h, int pulses, PulsesFound& found);

} // namespace vek::gsmamr
