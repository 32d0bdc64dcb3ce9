// All 32-bit or 16-bit lanes of a register at a time, for the levels above plain code. Only for the files k_*.cpp.
#pragma once

#include <cstdint>

#include "sc/common/level_ns.h"

#if VEK_LEVEL > 0
#include <immintrin.h>
#endif

namespace vek::lanes {
inline namespace VEK_LEVEL_NS {

#if VEK_LEVEL == 1

constexpr int kLanes = 4;
using V = __m128i;

VEK_INLINE V loadAll(const void* p) {
    return _mm_loadu_si128(static_cast<const __m128i*>(p));
}
VEK_INLINE void storeAll(void* p, V v) {
    _mm_storeu_si128(static_cast<__m128i*>(p), v);
}
VEK_INLINE V spread(int32_t x) {
    return _mm_set1_epi32(x);
}
VEK_INLINE V counting() {
    return _mm_setr_epi32(0, 1, 2, 3);
}
VEK_INLINE V madd(V a, V b) {
    return _mm_madd_epi16(a, b);
}
VEK_INLINE V plus(V a, V b) {
    return _mm_add_epi32(a, b);
}
VEK_INLINE V minus(V a, V b) {
    return _mm_sub_epi32(a, b);
}
VEK_INLINE V times32(V a, V b) {
    return _mm_mullo_epi32(a, b);
}
// The upper 32 bits of the products, `half` added to their 64.
VEK_INLINE V timesHigh(V a, V b, int64_t half) {
    const V h = _mm_set1_epi64x(half);
    const V even = _mm_add_epi64(_mm_mul_epi32(a, b), h);
    const V odd = _mm_add_epi64(_mm_mul_epi32(_mm_srli_epi64(a, 32), _mm_srli_epi64(b, 32)), h);
    return _mm_blend_epi16(_mm_srli_epi64(even, 32), odd, 0xcc);
}
VEK_INLINE V reversed(V a) {
    return _mm_shuffle_epi32(a, 0x1b);
}
// Differences of 16-bit lanes that fit them.
VEK_INLINE V minus16(V a, V b) {
    return _mm_sub_epi16(a, b);
}
VEK_INLINE V minusSat16(V a, V b) {
    return _mm_subs_epi16(a, b);
}
VEK_INLINE V orBits(V a, V b) {
    return _mm_or_si128(a, b);
}
VEK_INLINE V andBits(V a, V b) {
    return _mm_and_si128(a, b);
}
VEK_INLINE V least32(V a, V b) {
    return _mm_min_epi32(a, b);
}
VEK_INLINE V leastUnsigned32(V a, V b) {
    return _mm_min_epu32(a, b);
}
VEK_INLINE V most32(V a, V b) {
    return _mm_max_epi32(a, b);
}
VEK_INLINE V magnitudeOf(V a) {
    return _mm_abs_epi32(a);
}
VEK_INLINE V less(V a, V b) {
    return _mm_cmpgt_epi32(b, a);
}
VEK_INLINE V choose(V mask, V yes, V no) {
    return _mm_blendv_epi8(no, yes, mask);
}
template <int N>
VEK_INLINE V down(V a) {
    return _mm_srai_epi32(a, N);
}
VEK_INLINE V downBy(V a, int n) {
    return _mm_sra_epi32(a, _mm_cvtsi32_si128(n));
}
template <int N>
VEK_INLINE V up(V a) {
    return _mm_slli_epi32(a, N);
}
VEK_INLINE V lowHalf(V a) {
    return _mm_and_si128(a, _mm_set1_epi32(0xffff));
}
VEK_INLINE V widened(const int16_t* p) {
    return _mm_cvtepi16_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)));
}
VEK_INLINE void storeNarrow(int16_t* p, V a) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_packs_epi32(a, a));
}
VEK_INLINE V wide64(V sum, V more) {
    sum = _mm_add_epi64(sum, _mm_cvtepi32_epi64(more));
    return _mm_add_epi64(sum, _mm_cvtepi32_epi64(_mm_srli_si128(more, 8)));
}
VEK_INLINE int64_t total(V sum) {
    return _mm_cvtsi128_si64(sum) + _mm_extract_epi64(sum, 1);
}
VEK_INLINE V multRounded(V a, V b) {
    return _mm_mulhrs_epi16(a, b);
}
VEK_INLINE V twice16(V a) {
    return _mm_add_epi16(a, a);
}
VEK_INLINE V spread16(int16_t x) {
    return _mm_set1_epi16(x);
}
VEK_INLINE V plus16(V a, V b) {
    return _mm_adds_epi16(a, b);
}
// Bits where the sum that saturates and the one that wraps differ.
VEK_INLINE V lost16(V sum, V a, V b) {
    return _mm_xor_si128(sum, _mm_add_epi16(a, b));
}
VEK_INLINE bool none(V a) {
    return _mm_testz_si128(a, a) != 0;
}
VEK_INLINE __m128i fourLanes(V a) {
    return a;
}
// The lowest 16 bits in all lanes.
VEK_INLINE V spreadLowest16(__m128i a) {
    return _mm_shuffle_epi8(a, _mm_set1_epi16(0x0100));
}
// One 16-bit lane up; the lowest one comes from the top of `below`.
VEK_INLINE V shiftIn16(V a, V below) {
    return _mm_alignr_epi8(a, below, 14);
}

#elif VEK_LEVEL == 2

constexpr int kLanes = 8;
using V = __m256i;

VEK_INLINE V loadAll(const void* p) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(p));
}
VEK_INLINE void storeAll(void* p, V v) {
    _mm256_storeu_si256(static_cast<__m256i*>(p), v);
}
VEK_INLINE V spread(int32_t x) {
    return _mm256_set1_epi32(x);
}
VEK_INLINE V counting() {
    return _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
}
VEK_INLINE V madd(V a, V b) {
    return _mm256_madd_epi16(a, b);
}
VEK_INLINE V plus(V a, V b) {
    return _mm256_add_epi32(a, b);
}
VEK_INLINE V minus(V a, V b) {
    return _mm256_sub_epi32(a, b);
}
VEK_INLINE V times32(V a, V b) {
    return _mm256_mullo_epi32(a, b);
}
// The upper 32 bits of the products, `half` added to their 64.
VEK_INLINE V timesHigh(V a, V b, int64_t half) {
    const V h = _mm256_set1_epi64x(half);
    const V even = _mm256_add_epi64(_mm256_mul_epi32(a, b), h);
    const V odd = _mm256_add_epi64(_mm256_mul_epi32(_mm256_srli_epi64(a, 32), _mm256_srli_epi64(b, 32)), h);
    return _mm256_blend_epi32(_mm256_srli_epi64(even, 32), odd, 0xaa);
}
VEK_INLINE V reversed(V a) {
    return _mm256_permutevar8x32_epi32(a, _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0));
}
// Differences of 16-bit lanes that fit them.
VEK_INLINE V minus16(V a, V b) {
    return _mm256_sub_epi16(a, b);
}
VEK_INLINE V minusSat16(V a, V b) {
    return _mm256_subs_epi16(a, b);
}
VEK_INLINE V orBits(V a, V b) {
    return _mm256_or_si256(a, b);
}
VEK_INLINE V andBits(V a, V b) {
    return _mm256_and_si256(a, b);
}
VEK_INLINE V least32(V a, V b) {
    return _mm256_min_epi32(a, b);
}
VEK_INLINE V leastUnsigned32(V a, V b) {
    return _mm256_min_epu32(a, b);
}
VEK_INLINE V most32(V a, V b) {
    return _mm256_max_epi32(a, b);
}
VEK_INLINE V magnitudeOf(V a) {
    return _mm256_abs_epi32(a);
}
VEK_INLINE V less(V a, V b) {
    return _mm256_cmpgt_epi32(b, a);
}
VEK_INLINE V choose(V mask, V yes, V no) {
    return _mm256_blendv_epi8(no, yes, mask);
}
template <int N>
VEK_INLINE V down(V a) {
    return _mm256_srai_epi32(a, N);
}
VEK_INLINE V downBy(V a, int n) {
    return _mm256_sra_epi32(a, _mm_cvtsi32_si128(n));
}
template <int N>
VEK_INLINE V up(V a) {
    return _mm256_slli_epi32(a, N);
}
VEK_INLINE V lowHalf(V a) {
    return _mm256_and_si256(a, _mm256_set1_epi32(0xffff));
}
VEK_INLINE V widened(const int16_t* p) {
    return _mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
}
VEK_INLINE void storeNarrow(int16_t* p, V a) {
    const __m128i narrow = _mm_packs_epi32(_mm256_castsi256_si128(a), _mm256_extracti128_si256(a, 1));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), narrow);
}
VEK_INLINE V wide64(V sum, V more) {
    sum = _mm256_add_epi64(sum, _mm256_cvtepi32_epi64(_mm256_castsi256_si128(more)));
    return _mm256_add_epi64(sum, _mm256_cvtepi32_epi64(_mm256_extracti128_si256(more, 1)));
}
VEK_INLINE int64_t total(V sum) {
    const __m128i s = _mm_add_epi64(_mm256_castsi256_si128(sum), _mm256_extracti128_si256(sum, 1));
    return _mm_cvtsi128_si64(s) + _mm_extract_epi64(s, 1);
}
VEK_INLINE V multRounded(V a, V b) {
    return _mm256_mulhrs_epi16(a, b);
}
VEK_INLINE V twice16(V a) {
    return _mm256_add_epi16(a, a);
}
VEK_INLINE V spread16(int16_t x) {
    return _mm256_set1_epi16(x);
}
VEK_INLINE V plus16(V a, V b) {
    return _mm256_adds_epi16(a, b);
}
// Bits where the sum that saturates and the one that wraps differ.
VEK_INLINE V lost16(V sum, V a, V b) {
    return _mm256_xor_si256(sum, _mm256_add_epi16(a, b));
}
VEK_INLINE bool none(V a) {
    return _mm256_testz_si256(a, a) != 0;
}
VEK_INLINE __m128i fourLanes(V a) {
    return _mm_add_epi32(_mm256_castsi256_si128(a), _mm256_extracti128_si256(a, 1));
}
// The lowest 16 bits in all lanes.
VEK_INLINE V spreadLowest16(__m128i a) {
    return _mm256_broadcastw_epi16(a);
}
// One 16-bit lane up; the lowest one comes from the top of `below`.
VEK_INLINE V shiftIn16(V a, V below) {
    return _mm256_alignr_epi8(a, _mm256_permute2x128_si256(below, a, 0x21), 14);
}

#endif

#if VEK_LEVEL > 0
// In all lanes the sum of the 32-bit lanes, modulo 2^32.
VEK_INLINE __m128i sumOfLanes(V a) {
    __m128i s = fourLanes(a);
    s = _mm_add_epi32(s, _mm_shuffle_epi32(s, 0x4e));
    return _mm_add_epi32(s, _mm_shuffle_epi32(s, 0xb1));
}
#endif

} // namespace VEK_LEVEL_NS
} // namespace vek::lanes
