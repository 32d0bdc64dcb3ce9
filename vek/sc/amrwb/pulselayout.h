// Which pulses each rate has on its four tracks, and how their codewords are cut into the words of the bit stream.
#pragma once

#include "sc/amrwb/pulsewords.h"
#include "sc/amrwb/rates.h"

namespace vek::amrwb {

constexpr WordLayout layoutOf(Rate rate) {
    switch (rate) {
    case Rate::R885:
        return {{1, 1, 1, 1}, {}};
    case Rate::R1265:
        return {{2, 2, 2, 2}, {}};
    case Rate::R1425:
        return {{3, 3, 2, 2}, {}};
    case Rate::R1585:
        return {{3, 3, 3, 3}, {}};
    case Rate::R1825:
        return {{4, 4, 4, 4}, {14, 14, 14, 14}};
    case Rate::R1985:
        return {{5, 5, 4, 4}, {10, 10, 14, 14}};
    default:
        return {{6, 6, 6, 6}, {11, 11, 11, 11}};
    }
}

} // namespace vek::amrwb
