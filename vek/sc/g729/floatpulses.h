// Depth-first search of signed pulses on interleaved tracks of a subframe of 40, as G.729 Annex E and TS 26.090 at 10.2
// and 12.2 kbit/s have it, and the steps before it. Codewords are the business of each codec.
#pragma once

#include "vekdefs.h"

namespace vek::pulses {

constexpr int kSub = 40;
constexpr int kMostTracks = 5;
constexpr int kMostPulses = 12;

// The track of each pulse in the order of the search, and the position of the largest start value of each track.
struct Start {
    int track[kMostPulses];
    int position[kMostTracks];
};

// Correlation of target x and response h, all shifted alike: the sum of the tracks' halved maxima has scale - 1 bits to
// spare in 31 (2 leaves room for two pulses a track, 3 for four).
void correlate(const Vek16s* h, const Vek16s* x, int tracks, int scale, Vek16s* d);

// Signs (+1, -1) of the sum of the correlation d and the residual r, each over its energy's root, and the start from
// that sum's maxima; d takes the signs. The tracks are visited in a circle from that of the largest.
void presetSigns(Vek16s* d, const Vek16s* r, int tracks, int pulses, signed char* sign, Start& start);
void presetSigns(Vek32f* d, const Vek32f* r, int tracks, int pulses, signed char* sign, Start& start);

// Correlations of the response, scaled to their largest size, rounded, with the signs multiplied in.
void matrix(const Vek16s* h, const signed char* sign, Vek16s (*rr)[kSub]);
void matrix(const Vek32f* h, const signed char* sign, Vek32f (*rr)[kSub]);

// The first pulse stays on its start; for each start of the second, on each track but one, the others are searched in
// pairs. 4 to 12 pulses, an even number; 4 or 5 tracks. The integer form rounds energies as TS 26.090 does.
void search(const Vek16s* d, const Vek16s (*rr)[kSub], int tracks, int pulses, Start start, int* positions);
void search(const Vek32f* d, const Vek32f (*rr)[kSub], int tracks, int pulses, Start start, int* positions);

// Adds sign * h from `position` on.
void addResponse(const Vek16s* h, int position, int sign, Vek16s* y);
void addResponse(const Vek32f* h, int position, int sign, Vek32f* y);

} // namespace vek::pulses
