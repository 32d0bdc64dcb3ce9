// Declares the loops of loops/subband.cpp.
#pragma once

#include "plain/plain.h"

namespace PLAIN_BUILD::subband {

constexpr int kSegments = 12;
constexpr int kBands = 65;

void filter(const Vek32sc* const* x, const Vek32sc* const* c, Vek32sc* y, int segments, int n);
void update(const Vek32s* step, const Vek32sc* const* x, const Vek32sc* e, Vek32sc** c, int segments, int n);
void project(const Vek64f* const* step, const Vek32fc* const* x, const Vek32fc* const* e, Vek32fc** c, int segments,
             int n, int order);

} // namespace PLAIN_BUILD::subband
