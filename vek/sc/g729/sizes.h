// Sizes that the functions of G.729 share.
#pragma once

#include "sc/common/fixmath.h"

namespace vek::g729 {

using namespace fix;

constexpr int kOrder = 10;
// Line spectral frequencies of one of the two symmetric polynomials.
constexpr int kHalf = kOrder / 2;
constexpr int kFrame = 80;
constexpr int kHalfFrame = kFrame / 2;
constexpr int kSubframe = 40;
// Interleaved tracks of the pulses.
constexpr int kTracks = 5;
constexpr int kShortestDelay = 20;
constexpr int kLongestDelay = 143;
// Excitation before a subframe: the longest delay and half of the interpolation filter.
constexpr int kPastExcitation = 154;

} // namespace vek::g729
