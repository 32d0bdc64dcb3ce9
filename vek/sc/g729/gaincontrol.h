// Gain control by sums of magnitudes: what the post filters of the codecs built on G.729 share.
#pragma once

#include <cstdint>

namespace vek::g729 {

// Sum of the magnitudes of a subframe of 40 samples.
int32_t sumOfMagnitudes(const int16_t* x);

// in / out, Q14, saturated at 2; both positive.
int16_t levelRatio(int32_t in, int32_t out);

// x[n] *= gain, where gain = (1 - share) * gain + share * ratio moves from sample to sample of a subframe; gain and
// ratio Q14, share Q15, none negative.
void moveGain(int16_t* x, int16_t ratio, int16_t share, int16_t& gain);

} // namespace vek::g729
