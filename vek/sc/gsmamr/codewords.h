// Words of the bit stream for the pulses of the algebraic codebook: TS 26.090 5.7. fixeddecode.cpp reads them.
#pragma once

#include "sc/common/pulsesearch.h"
#include "sc/gsmamr/sizes.h"

namespace vek::gsmamr {

using pulses::PulsesFound;

// First tracks of the two pulses of 9 bits by subframe, for both values of the choosing bit.
constexpr int kPairTracks[2][4][2] = {{{0, 2}, {0, 3}, {0, 2}, {0, 3}}, {{1, 3}, {2, 4}, {1, 4}, {1, 4}}};

void encodePair9(const PulsesFound& found, int subFrame, Vek16s* words);
void encodePair11(const PulsesFound& found, Vek16s* words);
void encodeThree14(const PulsesFound& found, Vek16s* words);
void encodeFour17(const PulsesFound& found, Vek16s* words);
void encodeEight31(const PulsesFound& found, Vek16s* words);
void encodeTen35(const PulsesFound& found, Vek16s* words);

} // namespace vek::gsmamr
