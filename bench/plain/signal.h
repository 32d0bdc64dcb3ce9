// Declares the loops of loops/signal.cpp.
#pragma once

#include "plain/plain.h"

namespace PLAIN_BUILD::signal {

int32_t dot(const Vek16s* a, const Vek16s* b, int n);
int32_t scaledDot(const Vek16s* a, const Vek16s* b, int n, int* drop);
float dotF(const float* a, const float* b, int n);
void correlate(const Vek16s* a, const Vek16s* b, int n, int32_t* d, int lags);
void normalise(int32_t* d, int n, int32_t most, int top);
void normaliseByLargest(int32_t* d, int n, int top);
void high(const int32_t* d, Vek16s* y, int n, int shift);
void convolve(const Vek16s* x, const Vek16s* h, int32_t* y, int n);
void convolve16(const Vek16s* x, const Vek16s* h, Vek16s* y, int n, int shift, int half);
int scaled(const Vek16s* x, Vek16s* y, int n, int bits);

} // namespace PLAIN_BUILD::signal
