// Declares the loops of loops/filter.cpp.
#pragma once

#include "plain/plain.h"

namespace PLAIN_BUILD::filter {

void zeros(const Vek16s* a, int order, const Vek16s* x, Vek16s* y, int n);
void poles(const Vek16s* a, int order, const Vek16s* x, Vek16s* y, int n);
void polesF(const float* a, int order, const float* x, float* y, int n);
void poleZero(const Vek16s* c, const Vek16s* x, Vek16s* y, int n);
void narrowAll(const Vek32s* x, int shift, Vek16s* y, int n);
void widen(const Vek16s* x, Vek32s* y, int n);
void scale(const Vek16s* x, int c, Vek16s* y, int n, int shift);
void multiply(const Vek16s* x, const Vek16s* z, Vek16s* y, int n, int shift);
void powers(const Vek16s* x, int c, Vek16s* y, int n);
void weigh(const Vek16s* x, int c, const Vek16s* z, int d, Vek16s* y, int n, int shift, int half);
void weighF(const float* x, float c, const float* z, float d, float* y, int n);
void halves(const Vek16s* x, const Vek16s* z, Vek16s* y, int n);
void harmonic(int beta, int period, Vek16s* y, int n);
void harmonicTo(int beta, int period, const Vek16s* x, Vek16s* y, int n);
void harmonicF(float beta, int period, float* y, int n);
void tilt(const Vek16s* x, int c, Vek16s* y, int n, Vek16s* memory);
void tiltF(float* x, float c, int n, float* memory);
void unitTilt(int k, const Vek16s* x, Vek16s* y, int n);
void symmetric(int side, int middle, const Vek16s* x, Vek16s* y, int n);
void lift(int c, Vek16s* y, int n, Vek16s* memory, bool doubled);
void gainControl(const Vek16s* x, Vek16s* y, Vek16s* gain);
void gainControlF(const float* x, float* y, float* gain);
void contribution(int gain, const Vek16s* y, const Vek16s* x, Vek16s* left);
void contributionF(float gain, const float* y, const float* x, float* left);
void filteredExcitation(const float* h, float* y, int n, float v);
void disperse(const Vek16s* x, Vek16s* code, const Vek16s* h, int gain, Vek16s* y);
void levels(const Vek16s* x, float* y, int segments);
void inverseRoots(Vek32s* x, int n);

} // namespace PLAIN_BUILD::filter
