// All single-precision lanes of a register at a time, for the levels above plain code; sums and products are the
// operators of the register's type. Only for the files k_*.cpp.
#pragma once

#include "sc/common/level_ns.h"

#if VEK_LEVEL > 0
#include <immintrin.h>

namespace vek::floats {
inline namespace VEK_LEVEL_NS {

#if VEK_LEVEL == 1

constexpr int kFloats = 4;
using Floats = __m128;

VEK_INLINE Floats load(const float* p) {
    return _mm_loadu_ps(p);
}
VEK_INLINE void store(float* p, Floats a) {
    _mm_storeu_ps(p, a);
}
VEK_INLINE Floats set1(float x) {
    return _mm_set1_ps(x);
}
VEK_INLINE __m128 fourSums(Floats s) {
    return s;
}

#else

constexpr int kFloats = 8;
using Floats = __m256;

VEK_INLINE Floats load(const float* p) {
    return _mm256_loadu_ps(p);
}
VEK_INLINE void store(float* p, Floats a) {
    _mm256_storeu_ps(p, a);
}
VEK_INLINE Floats set1(float x) {
    return _mm256_set1_ps(x);
}
VEK_INLINE __m128 fourSums(Floats s) {
    return _mm256_castps256_ps128(s) + _mm256_extractf128_ps(s, 1);
}

#endif

VEK_INLINE float total(__m128 s) {
    s = s + _mm_movehl_ps(s, s);
    return _mm_cvtss_f32(_mm_add_ss(s, _mm_shuffle_ps(s, s, 1)));
}

} // namespace VEK_LEVEL_NS
} // namespace vek::floats

#endif
