// Depth-first search of G.729 Annex E in floating point: signed pulses on five interleaved tracks of a subframe of 40,
// and the steps before it. The integer form is sc/common/pulsesearch.
#pragma once

#include "sc/g729/sizes.h"
#include "sc/kernels/pulses.h"
#include "vekdefs.h"

namespace vek::floatpulses {

using g729::kSubframe;
using g729::kTracks;

struct PulsesFound {
    int positions[kMostPulses];
    int firstTrack; // that of the largest start value
    signed char sign[kSubframe];
};

// Target x, residual r, response h; ten or twelve pulses.
void searchPairs(const Vek32f* x, const Vek32f* r, const Vek32f* h, int pulses, PulsesFound& found);

} // namespace vek::floatpulses
