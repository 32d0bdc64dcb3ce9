// Kernels of the searches for pulses on tracks: the signed correlation matrix, chains of single pulses, nested pairs.
// A track's positions stand side by side ("lanes"); what a recommendation makes of the pulses found is elsewhere.
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"

namespace vek {

constexpr int kMostPulses = 12;
constexpr int kPulsePositions = 5 * 8; // or 4 * 10, tracks by positions

struct Pulse {
    int8_t track;
    int8_t lane;
};

inline namespace VEK_LEVEL_NS {

// The next order of the tracks: the second of them goes behind the others.
VEK_INLINE void turnTracks(int8_t* tracks, int pulses) {
    const int8_t second = tracks[1];
    for (int i = 1; i < pulses - 1; ++i) {
        tracks[i] = tracks[i + 1];
    }
    tracks[pulses - 1] = second;
}

} // namespace VEK_LEVEL_NS

// The order of tracks that a chain tries.
struct PulseChain {
    int8_t tracks[4];
};

// Positions in the order of tracks. Five tracks of eight lanes, or four of ten that are padded to sixteen.
struct PulseField {
    // Correlations, signs taken out, and whether a chain may begin there.
    alignas(32) int16_t dn[64];
    bool kept[kPulsePositions];
    // Energies, and their correlations: one row of 40 or 64 a position, rows without padding.
    alignas(32) int16_t energy[64];
    alignas(32) int16_t rr[kPulsePositions * 64];
};

struct PulseFieldKernels {
    // Energies of a response and the correlations of the responses from two positions, with their signs (32767 or
    // -32767), on five tracks or four. No sum of the response's products may leave 32 bits when doubled.
    void (*field)(const int16_t* h, const int16_t* sign, int tracks, PulseField& field);
};

VEK_KERNEL_PICK(PulseFieldKernels, pulseFieldKernels)

struct PulseKernels {
    // Chains of two to four single pulses on five tracks.
    void (*chains)(const PulseField& field, const PulseChain* chains, int count, int pulses, Pulse* best);
    // Pairs nested behind the two strongest: twelve or ten pulses on five tracks, eight on four. tracks[0..pulses-1]
    // are the pulses' tracks, peaks the strongest lane of each.
    void (*pairs)(const PulseField& field, const int8_t* tracks, const int8_t* peaks, int pulses, Pulse* best);
};

VEK_KERNEL_PICK(PulseKernels, pulseKernels)

} // namespace vek
