// Eight 32-bit integers at a time, in the width of the level that is compiled: plain words, 2 x 128 or 256 bits.
// Only for the files k_*.cpp. All levels give the same bits; constants of products are in Q30 (1.0 = 2^30).
#pragma once

#include <cstdint>

#include "sc/common/level_ns.h"

#if VEK_LEVEL > 0
#include <immintrin.h>
#endif

namespace vek::simd {
inline namespace VEK_LEVEL_NS {

#if VEK_LEVEL == 0

struct V8 {
    int32_t v[8];
};

VEK_INLINE V8 load(const int32_t* p) {
    return {{p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7]}};
}
VEK_INLINE void store(int32_t* p, V8 a) {
    for (int i = 0; i < 8; ++i) {
        p[i] = a.v[i];
    }
}
VEK_INLINE V8 set1(int32_t x) {
    return {{x, x, x, x, x, x, x, x}};
}
VEK_INLINE V8 operator+(V8 a, V8 b) {
    for (int i = 0; i < 8; ++i) {
        a.v[i] += b.v[i];
    }
    return a;
}
VEK_INLINE V8 operator-(V8 a, V8 b) {
    for (int i = 0; i < 8; ++i) {
        a.v[i] -= b.v[i];
    }
    return a;
}
VEK_INLINE V8 mulSum(V8 a, V8 wa, V8 b, V8 wb) {
    for (int i = 0; i < 8; ++i) {
        const int64_t s = static_cast<int64_t>(a.v[i]) * wa.v[i] + static_cast<int64_t>(b.v[i]) * wb.v[i];
        a.v[i] = static_cast<int32_t>((s + (1 << 29)) >> 30);
    }
    return a;
}
VEK_INLINE V8 mulDiff(V8 a, V8 wa, V8 b, V8 wb) {
    for (int i = 0; i < 8; ++i) {
        const int64_t s = static_cast<int64_t>(a.v[i]) * wa.v[i] - static_cast<int64_t>(b.v[i]) * wb.v[i];
        a.v[i] = static_cast<int32_t>((s + (1 << 29)) >> 30);
    }
    return a;
}
VEK_INLINE V8 mul(V8 a, V8 w) {
    for (int i = 0; i < 8; ++i) {
        a.v[i] = static_cast<int32_t>((static_cast<int64_t>(a.v[i]) * w.v[i] + (1 << 29)) >> 30);
    }
    return a;
}
template <int N>
VEK_INLINE V8 shiftLeft(V8 a) {
    for (int i = 0; i < 8; ++i) {
        a.v[i] *= 1 << N;
    }
    return a;
}
template <int N>
VEK_INLINE V8 shiftRightRounded(V8 a) {
    for (int i = 0; i < 8; ++i) {
        a.v[i] = (a.v[i] + (1 << (N - 1))) >> N;
    }
    return a;
}
VEK_INLINE V8 reverse(V8 a) {
    return {{a.v[7], a.v[6], a.v[5], a.v[4], a.v[3], a.v[2], a.v[1], a.v[0]}};
}
// The lower halves of both.
VEK_INLINE V8 joinLower(V8 a, V8 b) {
    return {{a.v[0], a.v[1], a.v[2], a.v[3], b.v[0], b.v[1], b.v[2], b.v[3]}};
}
// The first one of `first`, and behind it all but the first one from the last on.
VEK_INLINE V8 mirrored(V8 a, V8 first) {
    return {{first.v[0], a.v[7], a.v[6], a.v[5], a.v[4], a.v[3], a.v[2], a.v[1]}};
}
// Eight pairs of 16-bit numbers, split into the even and the odd ones.
VEK_INLINE void loadPairs(const int16_t* p, V8& even, V8& odd) {
    for (int i = 0; i < 8; ++i) {
        even.v[i] = p[2 * i];
        odd.v[i] = p[2 * i + 1];
    }
}
// The same from the last pair to the first.
VEK_INLINE void loadPairsReversed(const int16_t* p, V8& even, V8& odd) {
    loadPairs(p, even, odd);
    even = reverse(even);
    odd = reverse(odd);
}
// The way back, saturated.
VEK_INLINE int16_t narrow(int32_t x) {
    return static_cast<int16_t>(x > 32767 ? 32767 : x < -32768 ? -32768 : x);
}
VEK_INLINE void storePairs(int16_t* p, V8 even, V8 odd) {
    for (int i = 0; i < 8; ++i) {
        p[2 * i] = narrow(even.v[i]);
        p[2 * i + 1] = narrow(odd.v[i]);
    }
}
// Four pairs of the upper and the lower half.
VEK_INLINE void storeHalfPairs(int16_t* p, V8 a) {
    for (int i = 0; i < 4; ++i) {
        p[2 * i] = narrow(a.v[4 + i]);
        p[2 * i + 1] = narrow(a.v[i]);
    }
}
// The even and the odd ones of sixteen numbers, and the way back.
VEK_INLINE void loadSplit(const int32_t* p, V8& even, V8& odd) {
    for (int i = 0; i < 8; ++i) {
        even.v[i] = p[2 * i];
        odd.v[i] = p[2 * i + 1];
    }
}
VEK_INLINE void storeMerged(int32_t* p, V8 even, V8 odd) {
    for (int i = 0; i < 8; ++i) {
        p[2 * i] = even.v[i];
        p[2 * i + 1] = odd.v[i];
    }
}
VEK_INLINE void transpose(V8 (&r)[8]) {
    for (int i = 0; i < 8; ++i) {
        for (int k = i + 1; k < 8; ++k) {
            const int32_t t = r[i].v[k];
            r[i].v[k] = r[k].v[i];
            r[k].v[i] = t;
        }
    }
}

#elif VEK_LEVEL == 1

struct V8 {
    __m128i lo, hi;
};

VEK_INLINE V8 load(const int32_t* p) {
    return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)),
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 4))};
}
VEK_INLINE void store(int32_t* p, V8 a) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), a.lo);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 4), a.hi);
}
VEK_INLINE V8 set1(int32_t x) {
    return {_mm_set1_epi32(x), _mm_set1_epi32(x)};
}
VEK_INLINE V8 operator+(V8 a, V8 b) {
    return {_mm_add_epi32(a.lo, b.lo), _mm_add_epi32(a.hi, b.hi)};
}
VEK_INLINE V8 operator-(V8 a, V8 b) {
    return {_mm_sub_epi32(a.lo, b.lo), _mm_sub_epi32(a.hi, b.hi)};
}
// Bits 30..61 of the 64-bit sums of the even and the odd lanes.
VEK_INLINE __m128i join(__m128i even, __m128i odd) {
    const __m128i half = _mm_set1_epi64x(1 << 29);
    even = _mm_srli_epi64(_mm_add_epi64(even, half), 30);
    odd = _mm_slli_epi64(_mm_add_epi64(odd, half), 2);
    return _mm_blend_epi16(even, odd, 0xcc);
}
VEK_INLINE __m128i upper(__m128i a) {
    return _mm_srli_epi64(a, 32);
}
VEK_INLINE __m128i mulSum(__m128i a, __m128i wa, __m128i b, __m128i wb) {
    return join(_mm_add_epi64(_mm_mul_epi32(a, wa), _mm_mul_epi32(b, wb)),
                _mm_add_epi64(_mm_mul_epi32(upper(a), upper(wa)), _mm_mul_epi32(upper(b), upper(wb))));
}
VEK_INLINE __m128i mulDiff(__m128i a, __m128i wa, __m128i b, __m128i wb) {
    return join(_mm_sub_epi64(_mm_mul_epi32(a, wa), _mm_mul_epi32(b, wb)),
                _mm_sub_epi64(_mm_mul_epi32(upper(a), upper(wa)), _mm_mul_epi32(upper(b), upper(wb))));
}
VEK_INLINE __m128i mul(__m128i a, __m128i w) {
    return join(_mm_mul_epi32(a, w), _mm_mul_epi32(upper(a), upper(w)));
}
VEK_INLINE V8 mulSum(V8 a, V8 wa, V8 b, V8 wb) {
    return {mulSum(a.lo, wa.lo, b.lo, wb.lo), mulSum(a.hi, wa.hi, b.hi, wb.hi)};
}
VEK_INLINE V8 mulDiff(V8 a, V8 wa, V8 b, V8 wb) {
    return {mulDiff(a.lo, wa.lo, b.lo, wb.lo), mulDiff(a.hi, wa.hi, b.hi, wb.hi)};
}
VEK_INLINE V8 mul(V8 a, V8 w) {
    return {mul(a.lo, w.lo), mul(a.hi, w.hi)};
}
template <int N>
VEK_INLINE V8 shiftLeft(V8 a) {
    return {_mm_slli_epi32(a.lo, N), _mm_slli_epi32(a.hi, N)};
}
template <int N>
VEK_INLINE V8 shiftRightRounded(V8 a) {
    a = a + set1(1 << (N - 1));
    return {_mm_srai_epi32(a.lo, N), _mm_srai_epi32(a.hi, N)};
}
VEK_INLINE V8 reverse(V8 a) {
    return {_mm_shuffle_epi32(a.hi, 0x1b), _mm_shuffle_epi32(a.lo, 0x1b)};
}
VEK_INLINE V8 joinLower(V8 a, V8 b) {
    return {a.lo, b.lo};
}
VEK_INLINE V8 mirrored(V8 a, V8 first) {
    const V8 back = reverse(a);
    return {_mm_alignr_epi8(back.lo, _mm_shuffle_epi32(first.lo, 0), 12), _mm_alignr_epi8(back.hi, back.lo, 12)};
}
VEK_INLINE V8 loadRaw(const int16_t* p) {
    return load(reinterpret_cast<const int32_t*>(p));
}
VEK_INLINE void splitPairs(V8 raw, V8& even, V8& odd) {
    even = {_mm_srai_epi32(_mm_slli_epi32(raw.lo, 16), 16), _mm_srai_epi32(_mm_slli_epi32(raw.hi, 16), 16)};
    odd = {_mm_srai_epi32(raw.lo, 16), _mm_srai_epi32(raw.hi, 16)};
}
VEK_INLINE void loadPairs(const int16_t* p, V8& even, V8& odd) {
    splitPairs(loadRaw(p), even, odd);
}
VEK_INLINE void loadPairsReversed(const int16_t* p, V8& even, V8& odd) {
    splitPairs(reverse(loadRaw(p)), even, odd);
}
VEK_INLINE void storePairs(int16_t* p, V8 even, V8 odd) {
    const __m128i e = _mm_packs_epi32(even.lo, even.hi);
    const __m128i o = _mm_packs_epi32(odd.lo, odd.hi);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_unpacklo_epi16(e, o));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 8), _mm_unpackhi_epi16(e, o));
}
VEK_INLINE void storeHalfPairs(int16_t* p, V8 a) {
    const __m128i packed = _mm_packs_epi32(a.lo, a.hi);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_unpacklo_epi16(_mm_srli_si128(packed, 8), packed));
}
VEK_INLINE __m128i pickTwo(__m128i a, __m128i b, bool odd) {
    const __m128 x = _mm_castsi128_ps(a);
    const __m128 y = _mm_castsi128_ps(b);
    return _mm_castps_si128(odd ? _mm_shuffle_ps(x, y, 0xdd) : _mm_shuffle_ps(x, y, 0x88));
}
VEK_INLINE void loadSplit(const int32_t* p, V8& even, V8& odd) {
    const V8 a = load(p);
    const V8 b = load(p + 8);
    even = {pickTwo(a.lo, a.hi, false), pickTwo(b.lo, b.hi, false)};
    odd = {pickTwo(a.lo, a.hi, true), pickTwo(b.lo, b.hi, true)};
}
VEK_INLINE void storeMerged(int32_t* p, V8 even, V8 odd) {
    store(p, {_mm_unpacklo_epi32(even.lo, odd.lo), _mm_unpackhi_epi32(even.lo, odd.lo)});
    store(p + 8, {_mm_unpacklo_epi32(even.hi, odd.hi), _mm_unpackhi_epi32(even.hi, odd.hi)});
}
VEK_INLINE void transpose4(__m128i& a, __m128i& b, __m128i& c, __m128i& d) {
    const __m128i ab0 = _mm_unpacklo_epi32(a, b);
    const __m128i ab1 = _mm_unpackhi_epi32(a, b);
    const __m128i cd0 = _mm_unpacklo_epi32(c, d);
    const __m128i cd1 = _mm_unpackhi_epi32(c, d);
    a = _mm_unpacklo_epi64(ab0, cd0);
    b = _mm_unpackhi_epi64(ab0, cd0);
    c = _mm_unpacklo_epi64(ab1, cd1);
    d = _mm_unpackhi_epi64(ab1, cd1);
}
VEK_INLINE void transpose(V8 (&r)[8]) {
    transpose4(r[0].lo, r[1].lo, r[2].lo, r[3].lo);
    transpose4(r[0].hi, r[1].hi, r[2].hi, r[3].hi);
    transpose4(r[4].lo, r[5].lo, r[6].lo, r[7].lo);
    transpose4(r[4].hi, r[5].hi, r[6].hi, r[7].hi);
    for (int i = 0; i < 4; ++i) {
        const __m128i t = r[i].hi;
        r[i].hi = r[i + 4].lo;
        r[i + 4].lo = t;
    }
}

#else

struct V8 {
    __m256i v;
};

VEK_INLINE V8 load(const int32_t* p) {
    return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))};
}
VEK_INLINE void store(int32_t* p, V8 a) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), a.v);
}
VEK_INLINE V8 set1(int32_t x) {
    return {_mm256_set1_epi32(x)};
}
VEK_INLINE V8 operator+(V8 a, V8 b) {
    return {_mm256_add_epi32(a.v, b.v)};
}
VEK_INLINE V8 operator-(V8 a, V8 b) {
    return {_mm256_sub_epi32(a.v, b.v)};
}
// Bits 30..61 of the 64-bit sums of the even and the odd lanes.
VEK_INLINE V8 join(__m256i even, __m256i odd) {
    const __m256i half = _mm256_set1_epi64x(1 << 29);
    even = _mm256_srli_epi64(_mm256_add_epi64(even, half), 30);
    odd = _mm256_slli_epi64(_mm256_add_epi64(odd, half), 2);
    return {_mm256_blend_epi32(even, odd, 0xaa)};
}
VEK_INLINE __m256i upper(__m256i a) {
    return _mm256_srli_epi64(a, 32);
}
VEK_INLINE V8 mulSum(V8 a, V8 wa, V8 b, V8 wb) {
    return join(_mm256_add_epi64(_mm256_mul_epi32(a.v, wa.v), _mm256_mul_epi32(b.v, wb.v)),
                _mm256_add_epi64(_mm256_mul_epi32(upper(a.v), upper(wa.v)), _mm256_mul_epi32(upper(b.v), upper(wb.v))));
}
VEK_INLINE V8 mulDiff(V8 a, V8 wa, V8 b, V8 wb) {
    return join(_mm256_sub_epi64(_mm256_mul_epi32(a.v, wa.v), _mm256_mul_epi32(b.v, wb.v)),
                _mm256_sub_epi64(_mm256_mul_epi32(upper(a.v), upper(wa.v)), _mm256_mul_epi32(upper(b.v), upper(wb.v))));
}
VEK_INLINE V8 mul(V8 a, V8 w) {
    return join(_mm256_mul_epi32(a.v, w.v), _mm256_mul_epi32(upper(a.v), upper(w.v)));
}
template <int N>
VEK_INLINE V8 shiftLeft(V8 a) {
    return {_mm256_slli_epi32(a.v, N)};
}
template <int N>
VEK_INLINE V8 shiftRightRounded(V8 a) {
    return {_mm256_srai_epi32(_mm256_add_epi32(a.v, _mm256_set1_epi32(1 << (N - 1))), N)};
}
VEK_INLINE V8 reverse(V8 a) {
    return {_mm256_permutevar8x32_epi32(a.v, _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0))};
}
VEK_INLINE V8 joinLower(V8 a, V8 b) {
    return {_mm256_permute2x128_si256(a.v, b.v, 0x20)};
}
VEK_INLINE V8 mirrored(V8 a, V8 first) {
    const __m256i back = _mm256_permutevar8x32_epi32(a.v, _mm256_setr_epi32(0, 7, 6, 5, 4, 3, 2, 1));
    return {_mm256_blend_epi32(back, first.v, 1)};
}
VEK_INLINE V8 loadRaw(const int16_t* p) {
    return load(reinterpret_cast<const int32_t*>(p));
}
VEK_INLINE void splitPairs(V8 raw, V8& even, V8& odd) {
    even = {_mm256_srai_epi32(_mm256_slli_epi32(raw.v, 16), 16)};
    odd = {_mm256_srai_epi32(raw.v, 16)};
}
VEK_INLINE void loadPairs(const int16_t* p, V8& even, V8& odd) {
    splitPairs(loadRaw(p), even, odd);
}
VEK_INLINE void loadPairsReversed(const int16_t* p, V8& even, V8& odd) {
    splitPairs(reverse(loadRaw(p)), even, odd);
}
VEK_INLINE void storePairs(int16_t* p, V8 even, V8 odd) {
    const __m256i packed = _mm256_packs_epi32(even.v, odd.v); // four of each in each half
    const __m256i swapped = _mm256_shuffle_epi32(packed, 0x4e);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm256_unpacklo_epi16(packed, swapped));
}
VEK_INLINE void storeHalfPairs(int16_t* p, V8 a) {
    const __m128i packed = _mm_packs_epi32(_mm256_castsi256_si128(a.v), _mm256_extracti128_si256(a.v, 1));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_unpacklo_epi16(_mm_srli_si128(packed, 8), packed));
}
VEK_INLINE void loadSplit(const int32_t* p, V8& even, V8& odd) {
    const __m256 a = _mm256_castsi256_ps(load(p).v);
    const __m256 b = _mm256_castsi256_ps(load(p + 8).v);
    even = {_mm256_permute4x64_epi64(_mm256_castps_si256(_mm256_shuffle_ps(a, b, 0x88)), 0xd8)};
    odd = {_mm256_permute4x64_epi64(_mm256_castps_si256(_mm256_shuffle_ps(a, b, 0xdd)), 0xd8)};
}
VEK_INLINE void storeMerged(int32_t* p, V8 even, V8 odd) {
    const __m256i low = _mm256_unpacklo_epi32(even.v, odd.v);
    const __m256i high = _mm256_unpackhi_epi32(even.v, odd.v);
    store(p, {_mm256_permute2x128_si256(low, high, 0x20)});
    store(p + 8, {_mm256_permute2x128_si256(low, high, 0x31)});
}
VEK_INLINE void transpose(V8 (&r)[8]) {
    __m256i t[8];
    for (int i = 0; i < 8; i += 2) {
        t[i] = _mm256_unpacklo_epi32(r[i].v, r[i + 1].v);
        t[i + 1] = _mm256_unpackhi_epi32(r[i].v, r[i + 1].v);
    }
    __m256i u[8];
    for (int i = 0; i < 8; i += 4) {
        u[i] = _mm256_unpacklo_epi64(t[i], t[i + 2]);
        u[i + 1] = _mm256_unpackhi_epi64(t[i], t[i + 2]);
        u[i + 2] = _mm256_unpacklo_epi64(t[i + 1], t[i + 3]);
        u[i + 3] = _mm256_unpackhi_epi64(t[i + 1], t[i + 3]);
    }
    for (int i = 0; i < 4; ++i) {
        r[i].v = _mm256_permute2x128_si256(u[i], u[i + 4], 0x20);
        r[i + 4].v = _mm256_permute2x128_si256(u[i], u[i + 4], 0x31);
    }
}

#endif

} // namespace VEK_LEVEL_NS
} // namespace vek::simd
