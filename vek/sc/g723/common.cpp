// Small steps that several functions of G.723.1 take.
#include <cstring>

#include "sc/g723/tables.h"

namespace vek::g723 {

int16_t rootOfHalf(uint32_t v) {
    const uint64_t square = uint64_t{v} << 1;
    uint32_t root = 0;
    for (uint32_t bit = 1U << 15; bit != 0; bit >>= 1) {
        const uint64_t next = root | bit;
        if (next * next <= square) {
            root |= bit;
        }
    }
    return static_cast<int16_t>((root >> 1) & ~1U);
}

void delayedExcitation(const int16_t* history, int delay, int16_t* out) {
    const int16_t* from = history + kHistory - delay;
    out[0] = from[-2];
    out[1] = from[-1];
    for (int i = 0, k = 0; i < kSubframe + 2; ++i, ++k) {
        k = k == delay ? 0 : k;
        out[2 + i] = from[k];
    }
}

void pulseTrain(int16_t* x, int delay) {
    int16_t once[kSubframe];
    std::memcpy(once, x, sizeof once);
    for (int start = delay; start < kSubframe; start += delay) {
        for (int i = start; i < kSubframe; ++i) {
            x[i] = fix::add(x[i], once[i - start]);
        }
    }
}

} // namespace vek::g723
