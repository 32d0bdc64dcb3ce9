// Correlations of a closed-loop pitch search: target against the filtered excitation of each delay, and between whole
// delays. The searches of the G.729 and AMR families differ in the delays that they try with them.
#pragma once

#include <cstdint>

namespace vek {

// Whole delays around a range that the interpolation reaches.
constexpr int kPitchMargin = 4;
// The delays 20..143 with the margins around them.
constexpr int kMostPitchDelays = 124 + 2 * kPitchMargin;

// y = x * h over a subframe of 40, h in Q12.
void convolveSubframe(const int16_t* x, const int16_t* h, int16_t* y);

// out[k]: the correlation of the target with the filtered excitation of the delay first + k, over the root of its
// energy, for kMostPitchDelays at most. exc[-last..39] is read.
void pitchCorrelations(const int16_t* exc, const int16_t* target, const int16_t* h, int first, int last, int16_t* out);

// The correlation at `sixths` of a sample (-5..5) from x[0].
int16_t pitchCorrelationBetween(const int16_t* x, int sixths);

} // namespace vek
