// Gain control by energies: a signal is brought to the level of another by a gain that moves from sample to sample.
// The post filters of the G.729 and AMR families share it; each measures its energies by its own rule.
#pragma once

#include <cstdint>

namespace vek {

// Of a subframe of 40 x[n] *= gain, gain = 0.9 * gain + 0.1 * sqrt(in / out) in Q12; an output of no energy makes the
// gain 0.
void levelByEnergy(int32_t in, int32_t out, int16_t* x, int16_t& gain);

} // namespace vek
