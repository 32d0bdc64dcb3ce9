// Numbers as mantissa and exponent, the way the recommendation keeps energies, and inverse roots of them.
#pragma once

#include <cstdint>

#include "sc/common/fixmath.h"
#include "sc/kernels/corr.h"

namespace vek::amrwb {

// mantissa / 2^31 * 2^exponent
struct Normal {
    int32_t mantissa;
    int exponent;
};

// 1 + 2 * the sum, which saturates.
inline Normal product(const int16_t* a, const int16_t* b, int n) {
    const int32_t sum = fix::sat32(2 * corrKernels().dot16(a, b, n) + 1);
    const int shift = fix::norm_l(sum);
    return {sum << shift, 30 - shift};
}

constexpr int16_t kInverseRoots[49] = {32767, 31790, 30894, 30070, 29309, 28602, 27945, 27330, 26755, 26214,
                                       25705, 25225, 24770, 24339, 23930, 23541, 23170, 22817, 22479, 22155,
                                       21845, 21548, 21263, 20988, 20724, 20470, 20225, 19988, 19760, 19539,
                                       19326, 19119, 18919, 18725, 18536, 18354, 18176, 18004, 17837, 17674,
                                       17515, 17361, 17211, 17064, 16921, 16782, 16646, 16514, 16384};

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
