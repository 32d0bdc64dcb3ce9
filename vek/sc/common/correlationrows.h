// Running sums of the correlation matrix of a response of 40, as FilterKernels::corrRows16 gives them, where 32 bits
// don't hold them.
#pragma once

#include <cstdint>

#include "sc/common/fixmath.h"

namespace vek {

/// rows[m * 40 + d] = twice the sum of h[i] * h[i + d], i = 0..m, for d = 0..39 - m, saturated at each step.
inline void saturatingRows(const int16_t* h, int32_t* rows) {
    constexpr int len = 40;
    for (int d = 0; d < len; ++d) {
        int32_t sum = 0;
        for (int m = 0; m + d < len; ++m) {
            sum = fix::L_mac(sum, h[m], h[m + d]);
            rows[m * len + d] = sum;
        }
    }
}

} // namespace vek
