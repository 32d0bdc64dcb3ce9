// What the post filters share with the long-term one of the main body: the impulse response of the short-term one and
// the tilt.
#pragma once

#include "vekdefs.h"

namespace vek::g729 {

// First n (at most 22) samples of the response of A(z/n) / A(z/d), Q12.
void postResponse(const Vek16s* lpc, Vek16s* h, int n);

// y[n] = (x[n] + mu * x[n-1]) / (1 - |mu|), mu = 0.2 k for a k above 0, else 0.9 k; k Q15. x[-1] is read; y may be x.
void tilt(Vek16s k, const Vek16s* x, Vek16s* y);

// The fractional long-term post filter of the main body. residual[-152..39] is read. Returns the delay, or 0 for none.
int longTermFilter(Vek16s gamma, int delay, const Vek16s* residual, Vek16s* y);

} // namespace vek::g729
