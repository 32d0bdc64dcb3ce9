// The published table behind the inverse square roots of the recommendations. What mantissa and exponent make of it is
// each family's own.
#pragma once

#include <cstdint>

namespace vek {

// 2^14 / sqrt(x) for x = 16/64..64/64.
constexpr int16_t kInverseRoots[49] = {
    32767, 31790, 30894, 30070, 29309, 28602, 27945, 27330, 26755, 26214, 25705, 25225, 24770,
    24339, 23930, 23541, 23170, 22817, 22479, 22155, 21845, 21548, 21263, 20988, 20724, 20470,
    20225, 19988, 19760, 19539, 19326, 19119, 18919, 18725, 18536, 18354, 18176, 18004, 17837,
    17674, 17515, 17361, 17211, 17064, 16921, 16782, 16646, 16514, 16384,
};

} // namespace vek
