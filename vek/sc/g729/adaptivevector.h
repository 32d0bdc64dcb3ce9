// The adaptive codebook vector, for the decoder and the closed-loop search.
#pragma once

#include <cstdint>

#include "sc/g729/sizes.h"

namespace vek::g729 {

// Writes exc[0..39] from the excitation delay + fraction / 3 samples before; fraction -1..1.
void adaptiveVector(int16_t* exc, int delay, int fraction);
// The same at delay + sixths / 6; sixths -3..3.
void adaptiveVectorSixths(int16_t* exc, int delay, int sixths);

} // namespace vek::g729
