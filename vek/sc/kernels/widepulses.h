// Kernels of the wide-band search for pulses: the correlation matrix of the response and the best pair on two tracks;
// and the errors of a book of gain pairs. What a recommendation makes of them is elsewhere.
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"

namespace vek {

constexpr int kWideLen = 64;

// Two tracks: correlations and energies of their positions (lanes), and the correlations of the responses between them,
// a row for each position of the first. The energy of a pair is
// (energy + first + second + 2^crossShift * between) >> energyShift, saturated at 16 bits.
struct WidePair {
    const int16_t* dnFirst;
    const int16_t* dnSecond;
    const int16_t* first;
    const int16_t* second;
    const int16_t* between;
    // Lanes of the first track whose rank is below `tried` take part.
    const int8_t* rank;
    int tried;
    int correlation;
    int energy;
    int crossShift;
    int energyShift;
};

struct WideBest {
    int square;
    int energy;
    int correlation;
    int first;
    int second;
};

constexpr int kGainTerms = 5;

// Coefficients of (pitch^2, pitch, code^2, code, both), upper halves of 14 bits and lower ones of 12.
struct GainForm {
    int high[kGainTerms];
    int low[kGainTerms];
};

struct WidePulseKernels {
    // rows[m * 64 + d] = upper half of 2 * sum of h[i] * h[i+d], i = 0..m, rounded, for d < 64 - m; h is followed by 64
    // zeros and its energy below 2^30 - 2^15.
    void (*rows)(const int16_t* h, int16_t* rows);
    // Of such rows the correlations between the positions of two of four tracks, or of the two, by their signs, 1 or
    // -1: out[a * lanes + b] for the lane a of the first and b of the second. Equal signs count 32767, unlike ones
    // -32768.
    void (*between16)(const int16_t* rows, int first, int second, const int16_t* sign, int16_t* out);
    void (*between32)(const int16_t* rows, int first, int second, const int16_t* sign, int16_t* out);
    // How many of sixteen values, none negative, stand before each by their size, of equal ones those in front.
    void (*ranks)(const int16_t* values, int8_t* rank);
    // Starts from `best` as it comes in; of equal pairs the first counts. Sixteen or thirty-two lanes a track.
    void (*pair16)(const WidePair& pair, WideBest& best);
    void (*pair32)(const WidePair& pair, WideBest& best);
    // The pair (pitch gain Q14, correction Q11) with the least error, of equal ones the first; predicted is not
    // negative and no pitch gain above 21300. At most 128 pairs.
    int (*leastError)(const int16_t* pairs, int count, int predicted, const GainForm& form);
};

VEK_KERNEL_PICK(WidePulseKernels, widePulseKernels)

} // namespace vek
