// What the post filters share: their bandwidth factors, the impulse response of the short-term one, the tilt of the
// main body.
#pragma once

#include "vekdefs.h"

namespace vek::g729 {

// 0.55 and 0.70 in Q15: numerator and denominator of the short-term post filter A(z/n) / A(z/d).
constexpr Vek16s kNumerator = 18022;
constexpr Vek16s kDenominator = 22938;

// a[i] * factor^i, 11 coefficients.
void weightedLpc(const Vek16s* a, Vek16s factor, Vek16s* out);

// Residual of a subframe through A(z/n); speech[-10..-1] is read.
void postResidual(const Vek16s* lpc, const Vek16s* speech, Vek16s* residual);

// First n (at most 22) samples of the response of A(z/n) / A(z/d), Q12.
void postResponse(const Vek16s* lpc, Vek16s* h, int n);

// y[n] = (x[n] + mu * x[n-1]) / (1 - |mu|), mu = 0.2 k for a k above 0, else 0.9 k; k Q15. before is x[-1]; y may be x.
void tilt(Vek16s k, Vek16s before, const Vek16s* x, Vek16s* y);

// The fractional long-term post filter of the main body. residual[-152..39] is read. Returns the delay, or 0 for none.
int longTermFilter(Vek16s gamma, int delay, const Vek16s* residual, Vek16s* y);

} // namespace vek::g729
