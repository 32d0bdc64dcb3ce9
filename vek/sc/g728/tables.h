// Figures of G.728 and what is derived from them; gains in Q13.
#pragma once

#include <cstdint>

namespace vek::g728 {

using namespace vek;

constexpr int kVector = 5;
constexpr int kOrder = 50;
constexpr int kShortOrder = 10;
constexpr int kAllShapes = 128;
constexpr int kGains = 4;
// Pitch periods of the postfilter.
constexpr int kLeastPitch = 20;
constexpr int kMostPitch = 140;
// Bits behind the point of predictor coefficients.
constexpr int kCoeffShift = 14;
// Signals are clipped here.
constexpr int kLoudest = 4095;

extern const int16_t kShapes[kAllShapes][kVector];
constexpr int16_t kGain[kGains] = {4224, 7392, 12936, 22638};

// Trellis-coded quantisation: the positive half of the 64 levels, Q12.
constexpr int kHalfLevels = 32;
extern const int16_t kTrellisLevels[kHalfLevels];

} // namespace vek::g728
