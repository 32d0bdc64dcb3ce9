// Eight single-precision numbers at a time, in the width of the level that is compiled. Only for the files k_*.cpp.
// Every operation is one correctly rounded step of each lane, so all levels give the same bits.
#pragma once

#include "sc/kernels/simd.h"

namespace vek::simd {
inline namespace VEK_LEVEL_NS {

#if VEK_LEVEL == 0

struct F8 {
    float v[8];
};

VEK_INLINE F8 load(const float* p) {
    return {{p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7]}};
}
VEK_INLINE void store(float* p, F8 a) {
    for (int i = 0; i < 8; ++i) {
        p[i] = a.v[i];
    }
}
VEK_INLINE F8 setf(float x) {
    return {{x, x, x, x, x, x, x, x}};
}
VEK_INLINE F8 operator+(F8 a, F8 b) {
    for (int i = 0; i < 8; ++i) {
        a.v[i] += b.v[i];
    }
    return a;
}
VEK_INLINE F8 operator-(F8 a, F8 b) {
    for (int i = 0; i < 8; ++i) {
        a.v[i] -= b.v[i];
    }
    return a;
}
VEK_INLINE F8 operator*(F8 a, F8 b) {
    for (int i = 0; i < 8; ++i) {
        a.v[i] *= b.v[i];
    }
    return a;
}
VEK_INLINE F8 reverse(F8 a) {
    return {{a.v[7], a.v[6], a.v[5], a.v[4], a.v[3], a.v[2], a.v[1], a.v[0]}};
}
VEK_INLINE F8 swapHalves(F8 a) {
    return {{a.v[4], a.v[5], a.v[6], a.v[7], a.v[0], a.v[1], a.v[2], a.v[3]}};
}
VEK_INLINE void storeHalves(float* lower, float* upper, F8 a) {
    for (int i = 0; i < 4; ++i) {
        lower[i] = a.v[i];
        upper[i] = a.v[4 + i];
    }
}
VEK_INLINE F8 toFloat(V8 a) {
    F8 r;
    for (int i = 0; i < 8; ++i) {
        r.v[i] = static_cast<float>(a.v[i]);
    }
    return r;
}
// To the nearest integer, halves to the even one.
VEK_INLINE V8 toInt(F8 a) {
    V8 r;
    for (int i = 0; i < 8; ++i) {
        r.v[i] = static_cast<int32_t>(__builtin_lrintf(a.v[i]));
    }
    return r;
}
VEK_INLINE void transpose(F8 (&r)[8]) {
    for (int i = 0; i < 8; ++i) {
        for (int k = i + 1; k < 8; ++k) {
            const float t = r[i].v[k];
            r[i].v[k] = r[k].v[i];
            r[k].v[i] = t;
        }
    }
}

#elif VEK_LEVEL == 1

struct F8 {
    __m128 lo, hi;
};

VEK_INLINE F8 load(const float* p) {
    return {_mm_loadu_ps(p), _mm_loadu_ps(p + 4)};
}
VEK_INLINE void store(float* p, F8 a) {
    _mm_storeu_ps(p, a.lo);
    _mm_storeu_ps(p + 4, a.hi);
}
VEK_INLINE F8 setf(float x) {
    return {_mm_set1_ps(x), _mm_set1_ps(x)};
}
VEK_INLINE F8 operator+(F8 a, F8 b) {
    return {_mm_add_ps(a.lo, b.lo), _mm_add_ps(a.hi, b.hi)};
}
VEK_INLINE F8 operator-(F8 a, F8 b) {
    return {_mm_sub_ps(a.lo, b.lo), _mm_sub_ps(a.hi, b.hi)};
}
VEK_INLINE F8 operator*(F8 a, F8 b) {
    return {_mm_mul_ps(a.lo, b.lo), _mm_mul_ps(a.hi, b.hi)};
}
VEK_INLINE F8 reverse(F8 a) {
    return {_mm_shuffle_ps(a.hi, a.hi, 0x1b), _mm_shuffle_ps(a.lo, a.lo, 0x1b)};
}
VEK_INLINE F8 swapHalves(F8 a) {
    return {a.hi, a.lo};
}
VEK_INLINE void storeHalves(float* lower, float* upper, F8 a) {
    _mm_storeu_ps(lower, a.lo);
    _mm_storeu_ps(upper, a.hi);
}
VEK_INLINE F8 toFloat(V8 a) {
    return {_mm_cvtepi32_ps(a.lo), _mm_cvtepi32_ps(a.hi)};
}
VEK_INLINE V8 toInt(F8 a) {
    return {_mm_cvtps_epi32(a.lo), _mm_cvtps_epi32(a.hi)};
}
VEK_INLINE void transpose(F8 (&r)[8]) {
    V8 t[8];
    for (int i = 0; i < 8; ++i) {
        t[i] = {_mm_castps_si128(r[i].lo), _mm_castps_si128(r[i].hi)};
    }
    transpose(t);
    for (int i = 0; i < 8; ++i) {
        r[i] = {_mm_castsi128_ps(t[i].lo), _mm_castsi128_ps(t[i].hi)};
    }
}

#else

struct F8 {
    __m256 v;
};

VEK_INLINE F8 load(const float* p) {
    return {_mm256_loadu_ps(p)};
}
VEK_INLINE void store(float* p, F8 a) {
    _mm256_storeu_ps(p, a.v);
}
VEK_INLINE F8 setf(float x) {
    return {_mm256_set1_ps(x)};
}
VEK_INLINE F8 operator+(F8 a, F8 b) {
    return {_mm256_add_ps(a.v, b.v)};
}
VEK_INLINE F8 operator-(F8 a, F8 b) {
    return {_mm256_sub_ps(a.v, b.v)};
}
VEK_INLINE F8 operator*(F8 a, F8 b) {
    return {_mm256_mul_ps(a.v, b.v)};
}
VEK_INLINE F8 reverse(F8 a) {
    const __m256 swapped = _mm256_permute2f128_ps(a.v, a.v, 1);
    return {_mm256_shuffle_ps(swapped, swapped, 0x1b)};
}
VEK_INLINE F8 swapHalves(F8 a) {
    return {_mm256_permute2f128_ps(a.v, a.v, 1)};
}
VEK_INLINE void storeHalves(float* lower, float* upper, F8 a) {
    _mm_storeu_ps(lower, _mm256_castps256_ps128(a.v));
    _mm_storeu_ps(upper, _mm256_extractf128_ps(a.v, 1));
}
VEK_INLINE F8 toFloat(V8 a) {
    return {_mm256_cvtepi32_ps(a.v)};
}
VEK_INLINE V8 toInt(F8 a) {
    return {_mm256_cvtps_epi32(a.v)};
}
VEK_INLINE void transpose(F8 (&r)[8]) {
    V8 t[8];
    for (int i = 0; i < 8; ++i) {
        t[i] = {_mm256_castps_si256(r[i].v)};
    }
    transpose(t);
    for (int i = 0; i < 8; ++i) {
        r[i] = {_mm256_castsi256_ps(t[i].v)};
    }
}

#endif

} // namespace VEK_LEVEL_NS
} // namespace vek::simd
