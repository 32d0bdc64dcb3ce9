// Linear prediction filters with the reference's saturation: at each step of the 32-bit sum.
// A fast sum that may wrap is taken first; it is the answer wherever the sum of all magnitudes proves that no step
// could have saturated. Only else is the sum made again step by step. Families use these for their own orders and
// formats.
#pragma once

#include <cstdint>

#include "sc/kernels/filter.h"

namespace vek {

// Whether each step of the 32-bit sum saturates, or the sum wraps ("low" forms).
enum class Steps { Saturate, Wrap };

// y[i] = sum of a[j] * x[i-j], j = 0..order, with a[0] = 1 in the format q (0..15), rounded and saturated to 16 bits.
// x[-order..-1] is read; y apart from x.
void residualFilter(const int16_t* a, int order, const int16_t* x, int16_t* y, int n, int q,
                    Steps steps = Steps::Saturate);

// y[i] = a[0] * x[i] - sum of a[j] * y[i-j], j = 1..order, rounded and saturated likewise. mem holds the order outputs
// before, oldest first, and is not changed; y may be x. The order is even, 4..kMaxLpOrder.
void synthesisFilter(const int16_t* a, int order, const int16_t* x, int16_t* y, int n, int q, const int16_t* mem,
                     Steps steps = Steps::Saturate);

} // namespace vek
