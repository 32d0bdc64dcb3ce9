// Tables of AMR-WB that its gains, its pitch searches and its decoder share.
#pragma once

#include <cstdint>

namespace vek::amrwb {

constexpr int kGainCount6 = 1 << 6;
constexpr int kGainCount7 = 1 << 7;
constexpr int kDelayWeights = 199;
constexpr int kQuarterTaps = 32;

extern const int16_t kGains6[2 * kGainCount6];
extern const int16_t kGains7[2 * kGainCount7];
extern const int16_t kDelayWeight[kDelayWeights];
// Row 3 - f belongs to the position f quarters behind a sample, Q14.
extern const int16_t kQuarters[4][kQuarterTaps];

} // namespace vek::amrwb
