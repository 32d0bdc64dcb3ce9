// Codewords of the algebraic codebook: the pulses of a track of 16 positions as one number, TS 26.190 5.8.3.
// A pulse is its position on the track, plus 16 when it is negative.
#pragma once

#include <cstdint>

namespace vek::amrwb {

constexpr int kTracks = 4;
constexpr int kTrackPositions = 16;
constexpr int kMostOnTrack = 6;

// The word of up to six pulses: 5, 9, 13, 16, 20 or 22 bits. algebraicdecode.cpp reads it.
uint32_t encodeTrack(const int* pulses, int count);

// The pulses on each track, and the words of the bit stream: one a track, or two, the upper bits in the first four.
struct WordLayout {
    int pulses[kTracks];
    int lowBits[kTracks];
};

} // namespace vek::amrwb
