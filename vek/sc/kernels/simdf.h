// The names by which loops call eight floats at a time. Only for the files k_*.cpp.
#pragma once

#include "sc/kernels/numbers.h"

namespace vek::simd {
inline namespace VEK_LEVEL_NS {

using namespace numbers;

VEK_INLINE F8 setf(float x) {
    return set1(x);
}

} // namespace VEK_LEVEL_NS
} // namespace vek::simd
