// Steps of the closed-loop search of the adaptive codebook that the codecs built on G.729 share: the best delay of a
// range, and the gain of a filtered vector. Which range, and what becomes of the delay, is the codec's.
#pragma once

#include <cstdint>

#include "sc/g729/sizes.h"

namespace vek::g729 {

struct PitchDelay {
    int whole;
    int thirds;
};

// Which of the whole delays have thirds: those up to 84, all, or those up to 84 around the middle of the range only.
enum class Thirds { Short, All, Middle };

// The delay first..last of the largest normalised correlation of the target with the filtered excitation, and its
// thirds; within the shortest and the longest delay. exc[-last-5..39] is read.
PitchDelay closedLoop(const int16_t* exc, const int16_t* target, const int16_t* h, int first, int last, Thirds thirds);

// Gain of a filtered vector to the target, Q14, 0..19661.
int16_t pitchGain(const int16_t* target, const int16_t* y);

} // namespace vek::g729
