// Kernels of the search for pulses in floating point, on five tracks of eight positions: the signed correlation matrix
// and nested pairs. Those of integers are in pulses.h.
#pragma once

#include "sc/kernels/pulses.h"

namespace vek {

// Positions in the order of tracks, as in PulseField.
struct FloatPulseField {
    // In front of each row of the matrix room for a track.
    static constexpr int kStride = 48;

    alignas(32) float d[kPulsePositions];
    alignas(32) float rr[kPulsePositions * kStride];

    float* row(int slot) { return rr + slot * kStride + 8; }
    const float* row(int slot) const { return rr + slot * kStride + 8; }
};

struct FloatPulseKernels {
    // The correlations of the responses from two positions by their signs, 1 or -1, which are in the order of tracks.
    void (*field)(const float* h, const float* sign, FloatPulseField& field);
    // Pairs nested behind the two strongest, ten or twelve pulses: the first stays, each of the others has its turn
    // behind it. tracks[0..pulses-1] are the pulses' tracks, peaks the strongest lane of each.
    void (*pairs)(const FloatPulseField& field, const int8_t* tracks, const int8_t* peaks, int pulses, Pulse* best);
};

VEK_KERNEL_PICK(FloatPulseKernels, floatPulseKernels)

} // namespace vek
