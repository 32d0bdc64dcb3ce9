// What the adaptation of the postfilter keeps from vector to vector.
#pragma once

#include <cstdint>

#include "sc/common/markedstate.h"
#include "sc/g728/tables.h"

namespace vek::g728 {

// Samples of the decimated residual: 25 of the window of analysis and 35 before.
constexpr int kDecimatedWindow = 25;
constexpr int kDecimatedLag = 35;

struct Adapter {
    // The ten newest samples of speech, in the order of time.
    int16_t speech[kShortOrder] = {};
    // Input and output of the low-pass filter, newest first; the output with 8 fraction bits.
    int16_t lowIn[3] = {};
    int32_t lowOut[3] = {};
    int16_t decimated[kDecimatedLag + kDecimatedWindow] = {};
};

using AdapterState = Marked<Adapter, 0x50465441>;

} // namespace vek::g728
