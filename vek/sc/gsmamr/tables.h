// Tables of AMR narrow band that the DTX, pitch, line spectrum and voice activity rooms share.
#pragma once

#include "sc/gsmamr/sizes.h"
#include "vekdefs.h"

namespace vek::gsmamr {

// Line spectral frequencies, Q15 of the sampling rate: 16384 is half of it.
extern const Vek16s kLsf3Low[256][4];
extern const Vek16s kLsf3Low795[512][4];
extern const Vek16s kLsf3Middle[512][4];
extern const Vek16s kLsf3MiddleHalf[256][4];
extern const Vek16s kLsf3High[512][4];
extern const Vek16s kLsf3High515[128][4];
extern const Vek16s kLsf3Mean[kOrder];
extern const Vek16s kLsf3Predictor[kOrder];
// Residuals that a frame of silence may start from.
extern const Vek16s kLsf3Start[8][kOrder];

extern const Vek16s kLsf5Part1[128][4];
extern const Vek16s kLsf5Part2[256][4];
extern const Vek16s kLsf5Part3[256][4];
extern const Vek16s kLsf5Part4[256][4];
extern const Vek16s kLsf5Part5[64][4];
extern const Vek16s kLsf5Mean[kOrder];

// Asymmetric windows of 240 samples, named by the lengths of their two sides.
extern const Vek16s kWindow200x40[240];
extern const Vek16s kWindow160x80[240];
extern const Vek16s kWindow232x8[240];

// Weight of the delays, the largest first; entries 0..246 serve the distance to the last delays, 127..250 the delay.
extern const Vek16s kDelayWeight[251];

// Voice activity, option 2: metric of a channel by its ratio in 3/8 dB; the others by the peak ratio in 3 dB.
extern const Vek16s kVoiceMetric[90];
extern const Vek16s kHangover[20];
extern const Vek16s kBurst[20];
extern const Vek16s kVoiceThreshold[20];

} // namespace vek::gsmamr
