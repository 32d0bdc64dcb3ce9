// Numbers as mantissa and exponent, the way the recommendation keeps energies, and inverse roots of them.
#pragma once

#include <cstdint>

#include "sc/amrwb/rates.h"
#include "sc/common/fixmath.h"
#include "sc/common/inverseroot.h"
#include "sc/kernels/corr.h"

namespace vek::amrwb {

// mantissa / 2^31 * 2^exponent
struct Normal {
    int32_t mantissa;
    int exponent;
};

inline Normal normalOf(int32_t v) {
    const int shift = fix::norm_l(v);
    return {v << shift, 30 - shift};
}

// 1 + 2 * the sum, which saturates.
inline Normal product(const int16_t* a, const int16_t* b, int n) {
    return normalOf(fix::sat32(2 * corrKernels().dot16(a, b, n) + 1));
}

// 1 / sqrt of a normalised number by 48 straight lines.
inline Normal inverseRoot(Normal x) {
    if (x.mantissa <= 0) {
        return {fix::kMax32, 0};
    }
    const int32_t m = (x.exponent & 1) != 0 ? x.mantissa >> 1 : x.mantissa;
    const int place = (m >> 25) - 16;
    const int part = (m >> 10) & 0x7fff;
    const int step = kInverseRoots[place] - kInverseRoots[place + 1];
    return {kInverseRoots[place] * 65536 - step * part * 2, -((x.exponent - 1) >> 1)};
}

} // namespace vek::amrwb
