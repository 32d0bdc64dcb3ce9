// Declares the loops of loops/pitch.cpp.
#pragma once

#include "plain/plain.h"

namespace PLAIN_BUILD::pitch {

int bestForward(const Vek16s* x, int n, int from, int to, Vek32s* most);
int bestBack(const Vek16s* x, int n, int from, int to, Vek32s* most);
int bestOfTwo(const Vek16s* a, const Vek16s* b, int n, int lags, Vek32s* most);
int bestBackF(const float* x, int n, int from, int to, float* most);
int bestOfTwoF(const float* a, const float* b, int n, int lags, double* most);
void matrix40(const Vek32s* h, Vek32s (*phi)[40]);
void matrix40F(const float* h, float (*phi)[40]);
void matrix60(const Vek32s* h, Vek32s (*phi)[60]);
void upper(const Vek32s* from, Vek16s* to, int n);
void levinson(const float* r, int order, float* a, float* k, float* left);
void pairsToFilter(const float* lsp, float* a);
void delayed(float* y, int delay, const float* taps);
void noise(uint16_t* seed, float* y, int n);
void hybrid(const float* x, const float* window, float* kept, float* r);
void toFloat(const Vek16s* x, float* y, int n);
void normalised(const float* r, Vek32s* y, int n);
int leastError(const float (*first)[2], const float (*second)[2], const float* c, int from, int other, int firsts,
               int seconds, float predicted);
int level(const Vek16s* x, const Vek16s* y, float gain, int levels);
double segmentalSnr(const Vek16s* x, const Vek16s* y, int n, int segment);

} // namespace PLAIN_BUILD::pitch
