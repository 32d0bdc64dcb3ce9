// What the four pulses of G.729 stand for: positions, code vector and codewords. The search is a kernel.
#pragma once

#include <algorithm>
#include <type_traits>

#include "sc/common/fixmath.h"
#include "sc/g729/sizes.h"
#include "sc/kernels/fourpulses.h"
#include "vekdefs.h"

namespace vek::fourpulses {

using namespace fix;

using g729::kSubframe;
using g729::kTracks;

inline int trackOf(const FourPulses& choice, int n) {
    return n < 3 ? n : choice.last;
}

inline int positionOf(const FourPulses& choice, int n) {
    return kTracks * choice.at[n] + trackOf(choice, n);
}

// Code vector and codewords of pulses with the signs of the correlations d, which may stand where the code does.
template <class Corr>
void deliver(const FourPulses& choice, const Corr* d, Corr* code, Vek16s* index) {
    bool negative[4];
    for (int n = 0; n < 4; ++n) {
        negative[n] = d[positionOf(choice, n)] < 0;
    }
    std::fill_n(code, kSubframe, Corr{0});
    int positions = choice.last - 3;
    int signs = 0;
    for (int n = 3; n >= 0; --n) {
        if constexpr (std::is_same_v<Corr, Vek32f>) {
            code[positionOf(choice, n)] = negative[n] ? -1.0F : 1.0F;
        } else {
            code[positionOf(choice, n)] = static_cast<Corr>(negative[n] ? -8192 : 8191);
        }
        positions = n == 3 ? positions + 2 * choice.at[n] : 8 * positions + choice.at[n];
        signs = 2 * signs + (negative[n] ? 0 : 1);
    }
    index[0] = static_cast<Vek16s>(positions);
    index[1] = static_cast<Vek16s>(signs);
}

} // namespace vek::fourpulses
