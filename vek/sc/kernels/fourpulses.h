// Kernels of the search for four signed pulses on the tracks of G.729: nested loops with a threshold, depth first as in
// Annex A, and the replacement of single pulses. And of that for the two pulses of Annex D.
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"

namespace vek {

// Positions within tracks, three of the tracks 0 to 2 and one of 3 or 4.
struct FourPulses {
    int at[4];
    int last;
};

// The searches of one form of correlations and matrix (616 elements in the order of veksToeplizMatrix_G729), whose
// elements take the signs of the correlations.
template <class Corr, class Element>
struct FourPulseSearches {
    // *entries is how often the last loop may yet be entered.
    FourPulses (*nested)(const Corr* d, Element* matrix, int* entries);
    FourPulses (*depthFirst)(const Corr* d, Element* matrix);
};

// Codes of the two pulses of Annex D.
constexpr int kFirstCodes = 16;
constexpr int kSecondCodes = 32;

struct FourPulseKernels {
    FourPulseSearches<int16_t, int16_t> narrow;
    FourPulseSearches<int16_t, int32_t> wide;
    FourPulseSearches<float, float> real;
    // The better one of two choices, that of the depth-first search and the one given: of each, single pulses are
    // exchanged as long as that helps, and the first one stays where they are equal.
    FourPulses (*replaced)(const int16_t* d, int16_t* matrix, const FourPulses& other);
    // The pair of codes with the largest ratio of squared correlation and energy, the first of equal ones: first code +
    // kFirstCodes * second one. cross[kSecondCodes * first + second] is the correlation of their pulses.
    int (*pairOfCodes)(const float* firstD, const float* firstEnergy, const float* secondD, const float* secondEnergy,
                       const float* cross);
};

VEK_KERNEL_PICK(FourPulseKernels, fourPulseKernels)

} // namespace vek
