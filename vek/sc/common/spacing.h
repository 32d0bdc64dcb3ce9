// The least distance between line or immittance spectral frequencies.
#pragma once

#include "sc/common/fixmath.h"
#include "vekdefs.h"

namespace vek {

// Raises each of N rising frequencies to at least `gap` above the one before, the first one above zero.
template <int N>
void keepApart(Vek16s* f, Vek16s gap) {
    // As a rule they are apart, and then none waits for the one before.
    int close = f[0] - gap;
#pragma GCC unroll 16
    for (int i = 1; i < N; ++i) {
        close |= f[i] - f[i - 1] - gap;
    }
    if (close >= 0) {
        return;
    }
    Vek16s lowest = gap;
    for (int i = 0; i < N; ++i) {
        f[i] = f[i] < lowest ? lowest : f[i];
        lowest = fix::add(f[i], gap);
    }
}

} // namespace vek
