// Kernels of G.728: the prediction of a vector over 50 samples, and filters of a vector.
#pragma once

#include <cstdint>

#include "sc/kernels/kernels.h"

namespace vek {

// Elements of the vectors of `predict`; those behind the data are zero.
constexpr int kPredictSpan = 64;
constexpr int kPredictCoeffs = kPredictSpan + 16;

// Left shifts that a mantissa of 14 bits can have at most.
constexpr int kG728MostShifts = 15;

struct G728Kernels {
    // Five values in the order of time with q fraction bits as mantissas of 14 bits and a sign, newest first, with as
    // many left shifts as fit, which are returned.
    int (*normalise)(const int64_t* v, int q, int16_t* mantissa);
    // x[m] = mantissa[m] * factor[m], Q14, rounded; out[k] = sum of a[k+m] * x[m], m = 0..49, k = 0..4, exact. a has
    // kPredictCoeffs elements, the others kPredictSpan; mantissas are below 2^14, and a is zero from 50 on.
    void (*predict)(const int16_t* a, const int16_t* mantissa, const int16_t* factor, int16_t* x, int64_t* out);
    // y[k] = y[k] - sum of a[i] * y[k-1-i], i < k, in Q14, rounded, within the limit; k = 0..4, in Q14 more at the
    // start.
    void (*recur)(const int16_t* a, int64_t* y, int64_t limit);
    // Ten zeros and then ten poles, Q14, of a weighting filter: y[10..14] from x[0..14] and y[0..9], rounded, in 16
    // bits with saturation or within a limit; and from rest, where only x[0..4] and y[0..4] are.
    void (*poleZero)(const int16_t* c, const int16_t* x, int16_t* y);
    void (*poleZeroWide)(const int16_t* c, const int64_t* x, int64_t* y, int64_t limit);
    void (*poleZeroRest)(const int16_t* c, const int64_t* x, int64_t* y, int64_t limit);
    // y[k] = x[k] + sum of c[i] * x[k-1-i], i = 0..9, Q13, rounded and saturated; k = 0..4. The ten samples before
    // x[0] are in `past`, which has the newest ten afterwards; y may be x.
    void (*zeros)(const int16_t* c, int16_t* past, const int16_t* x, int16_t* y);
};

VEK_KERNEL_PICK(G728Kernels, g728Kernels)

} // namespace vek
