// Depth-first search of G.729 Annex E in floating point: signed pulses on five interleaved tracks of a subframe of 40,
// and the steps before it. The integer form is sc/common/pulsesearch.
#pragma once

#include "sc/g729/sizes.h"
#include "sc/kernels/pulses.h"
#include "vekdefs.h"

namespace vek::floatpulses {

using g729::kSubframe;
using g729::kTracks;

// The track of each pulse in the order of the search, and the position of the largest start value of each track.
struct Start {
    int track[kMostPulses];
    int position[kTracks];
};

// Correlation of target x and response h.
void correlate(const Vek32f* h, const Vek32f* x, Vek32f* d);

// Signs (+1, -1) of the sum of the correlation d and the residual r, each over its energy's root, and the start from
// that sum's maxima; d takes the signs. The tracks are visited in a circle from that of the largest.
void presetSigns(Vek32f* d, const Vek32f* r, int pulses, signed char* sign, Start& start);

// Correlations of the response with the signs multiplied in.
void matrix(const Vek32f* h, const signed char* sign, Vek32f (*rr)[kSubframe]);

// The first pulse stays on its start; for each start of the second, on each track but one, the others are searched in
// pairs. Ten or twelve pulses.
void search(const Vek32f* d, const Vek32f (*rr)[kSubframe], int pulses, Start start, int* positions);

} // namespace vek::floatpulses
