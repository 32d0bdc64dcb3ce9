// Declares the loops of loops/rta.cpp.
#pragma once

#include "plain/plain.h"

namespace PLAIN_BUILD::rta {

float searchDelays(const float* target, const float* h, int n, const float* past, int count);
float searchVectors(const float* target, const float* h, int n, const float* vectors, int count);

} // namespace PLAIN_BUILD::rta
