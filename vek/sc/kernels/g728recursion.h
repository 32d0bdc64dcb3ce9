// Kernel of G.728: Levinson's recursion.
#pragma once

#include <cstdint>

#include "sc/kernels/g728.h"

namespace vek {

// As far as registers reach in a recursion to an order up to this; in a longer one to kPredictSpan.
constexpr int kPredictFew = 32;

// A prediction filter of an order on the way to a higher one: coefficients with q fraction bits, zeros behind them as
// far as registers reach, the same from the last one on, the energy that they leave, and the first reflection, Q15.
struct Levinson {
    int16_t forward[kPredictCoeffs];
    int16_t backward[kPredictCoeffs];
    int order;
    int q;
    int32_t energy;
    int16_t first;
};

// The fewest fraction bits of a format that gives way.
constexpr int kG728CoarsestFormat = 13;

struct G728RecursionKernels {
    // Levinson's recursion to an order, or up to a step that finds no reflection below 1 or, if it leaves this to who
    // calls, coefficients that need more than 16 bits. rBack[i] = r[order - i], i = 0..order-1, with as many zeros
    // behind as registers reach; all are above -32768.
    void (*recurse)(Levinson& filter, const int16_t* rBack, int order);
};

VEK_KERNEL_PICK(G728RecursionKernels, g728RecursionKernels)

} // namespace vek
