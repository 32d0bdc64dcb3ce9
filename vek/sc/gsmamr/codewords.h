// Words of the bit stream for the pulses of the algebraic codebook, both ways: TS 26.090 5.7 and 7.
#pragma once

#include "sc/common/pulsesearch.h"

namespace vek::gsmamr {

using pulses::PulsesFound;

void encodePair9(const PulsesFound& found, int subFrame, Vek16s* words);
void encodePair11(const PulsesFound& found, Vek16s* words);
void encodeThree14(const PulsesFound& found, Vek16s* words);
void encodeFour17(const PulsesFound& found, Vek16s* words);
void encodeEight31(const PulsesFound& found, Vek16s* words);
void encodeTen35(const PulsesFound& found, Vek16s* words);

// The vector is all zero before.
void decodePair9(const Vek16s* words, int subFrame, Vek16s* vector);
void decodePair11(const Vek16s* words, Vek16s* vector);
void decodeThree14(const Vek16s* words, Vek16s* vector);
void decodeFour17(const Vek16s* words, Vek16s* vector);
void decodeEight31(const Vek16s* words, Vek16s* vector);
void decodeTen35(const Vek16s* words, Vek16s* vector);

} // namespace vek::gsmamr
