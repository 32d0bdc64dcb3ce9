// Learning filters of the full band and complex filters of subbands.
// Products of 32-bit complex numbers are 64 bits wide; the 256-bit level does four subbands at a time.
#include "sc/kernels/ec.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/floatlanes.h"

namespace vek {
namespace {

__extension__ typedef __int128 Wide;

int32_t scaled(int64_t v, int scale) {
    return fix::scaleSat32(v, scale);
}

int32_t scaledWide(Wide v, int scale) {
    if (scale < 0) {
        v *= Wide{1} << -scale;
    } else {
        v >>= scale;
    }
    return static_cast<int32_t>(v > INT32_MAX ? INT32_MAX : v < INT32_MIN ? INT32_MIN : v);
}

uint64_t product(int32_t a, int32_t b) {
    return static_cast<uint64_t>(static_cast<int64_t>(a) * b);
}

void lowRest(const Vek32sc* const* x, const Vek32sc* const* c, int segments, int k, int scale, Vek32sc* dst) {
    uint64_t re = 0;
    uint64_t im = 0;
    for (int s = 0; s < segments; ++s) {
        const Vek32sc a = x[s][k];
        const Vek32sc b = c[s][k];
        re += product(a.re, b.re) - product(a.im, b.im);
        im += product(a.re, b.im) + product(a.im, b.re);
    }
    dst[k] = {scaled(static_cast<int64_t>(re), scale), scaled(static_cast<int64_t>(im), scale)};
}

void wideRest(const Vek32sc* const* x, const Vek32sc* const* c, int segments, int k, int scale, Vek32sc* dst) {
    Wide re = 0;
    Wide im = 0;
    for (int s = 0; s < segments; ++s) {
        const Vek32sc a = x[s][k];
        const Vek32sc b = c[s][k];
        re += static_cast<Wide>(static_cast<int64_t>(a.re) * b.re) - static_cast<int64_t>(a.im) * b.im;
        im += static_cast<Wide>(static_cast<int64_t>(a.re) * b.im) + static_cast<int64_t>(a.im) * b.re;
    }
    dst[k] = {scaledWide(re, scale), scaledWide(im, scale)};
}

void learnLowRest(Vek32sc x, Vek32sc p, Vek32sc& c, int shift) {
    const uint64_t re = (product(x.re, p.re) + product(x.im, p.im)) >> shift;
    const uint64_t im = (product(x.re, p.im) - product(x.im, p.re)) >> shift;
    c.re = static_cast<int32_t>(static_cast<uint32_t>(c.re) + static_cast<uint32_t>(re));
    c.im = static_cast<int32_t>(static_cast<uint32_t>(c.im) + static_cast<uint32_t>(im));
}

void learnSatRest(Vek32sc x, Vek32sc p, Vek32sc& c, int shift) {
    const int64_t half = int64_t{1} << (shift - 1);
    const int64_t re = (static_cast<int64_t>(x.re) * p.re + static_cast<int64_t>(x.im) * p.im + half) >> shift;
    const int64_t im = (static_cast<int64_t>(x.re) * p.im - static_cast<int64_t>(x.im) * p.re + half) >> shift;
    c.re = fix::sat32(c.re + re);
    c.im = fix::sat32(c.im + im);
}

#if VEK_LEVEL == 0

float learn32f(float* c, const float* x, int n, float g) {
    float s = 0;
    for (int j = 0; j < n; ++j) {
        c[j] += g * x[j];
        s += c[j] * x[j + 1];
    }
    return s;
}

#else

float learn32f(float* c, const float* x, int n, float g) {
    using namespace floats;
    const Floats factor = set1(g);
    Floats s0 = set1(0);
    Floats s1 = set1(0);
    int j = 0;
    for (; j + 2 * kFloats <= n; j += 2 * kFloats) {
        const Floats a = load(c + j) + factor * load(x + j);
        const Floats b = load(c + j + kFloats) + factor * load(x + j + kFloats);
        store(c + j, a);
        store(c + j + kFloats, b);
        s0 = s0 + a * load(x + j + 1);
        s1 = s1 + b * load(x + j + 1 + kFloats);
    }
    if (kFloats > 4 && j + kFloats <= n) {
        const Floats a = load(c + j) + factor * load(x + j);
        store(c + j, a);
        s0 = s0 + a * load(x + j + 1);
        j += kFloats;
    }
    float s = total(fourSums(s0 + s1));
    for (; j < n; ++j) {
        c[j] += g * x[j];
        s += c[j] * x[j + 1];
    }
    return s;
}

#endif

void learn16(int16_t* c, const int16_t* x, int n, int f, int shift) {
    const int half = shift > 0 ? 1 << (shift - 1) : 0;
    int j = 0;
#if VEK_LEVEL == 1
    const __m128i factor = _mm_set1_epi16(static_cast<int16_t>(f));
    const __m128i add = _mm_set1_epi32(half);
    const __m128i count = _mm_cvtsi32_si128(shift);
    for (; j + 8 <= n; j += 8) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(x + j));
        const __m128i low = _mm_mullo_epi16(v, factor);
        const __m128i high = _mm_mulhi_epi16(v, factor);
        const __m128i a = _mm_sra_epi32(_mm_add_epi32(_mm_unpacklo_epi16(low, high), add), count);
        const __m128i b = _mm_sra_epi32(_mm_add_epi32(_mm_unpackhi_epi16(low, high), add), count);
        auto* to = reinterpret_cast<__m128i*>(c + j);
        const __m128i old = _mm_loadu_si128(to);
        // Saturated in the end only: the change alone may exceed 16 bits.
        const __m128i oldLow = _mm_cvtepi16_epi32(old);
        const __m128i oldHigh = _mm_cvtepi16_epi32(_mm_srli_si128(old, 8));
        _mm_storeu_si128(to, _mm_packs_epi32(_mm_add_epi32(a, oldLow), _mm_add_epi32(b, oldHigh)));
    }
#elif VEK_LEVEL == 2
    const __m256i factor = _mm256_set1_epi16(static_cast<int16_t>(f));
    const __m256i add = _mm256_set1_epi32(half);
    const __m256i zero = _mm256_setzero_si256();
    const __m128i count = _mm_cvtsi32_si128(shift);
    for (; j + 16 <= n; j += 16) {
        const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(x + j));
        const __m256i low = _mm256_mullo_epi16(v, factor);
        const __m256i high = _mm256_mulhi_epi16(v, factor);
        const __m256i a = _mm256_sra_epi32(_mm256_add_epi32(_mm256_unpacklo_epi16(low, high), add), count);
        const __m256i b = _mm256_sra_epi32(_mm256_add_epi32(_mm256_unpackhi_epi16(low, high), add), count);
        auto* to = reinterpret_cast<__m256i*>(c + j);
        const __m256i old = _mm256_loadu_si256(to);
        // Saturated in the end only: the change alone may exceed 16 bits.
        const __m256i oldLow = _mm256_srai_epi32(_mm256_unpacklo_epi16(zero, old), 16);
        const __m256i oldHigh = _mm256_srai_epi32(_mm256_unpackhi_epi16(zero, old), 16);
        _mm256_storeu_si256(to, _mm256_packs_epi32(_mm256_add_epi32(a, oldLow), _mm256_add_epi32(b, oldHigh)));
    }
#endif
    for (; j < n; ++j) {
        c[j] = fix::sat16(c[j] + ((f * x[j] + half) >> shift));
    }
}

#if VEK_LEVEL == 2

// Four complex numbers, the real parts in the even places.
__m256i load4(const Vek32sc* p) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}
__m256i upper(__m256i v) {
    return _mm256_srli_epi64(v, 32);
}
// The lower halves of eight 64-bit numbers as four complex ones.
__m256i joined(__m256i re, __m256i im) {
    return _mm256_blend_epi32(re, _mm256_slli_epi64(im, 32), 0xaa);
}

void firLow(const Vek32sc* const* x, const Vek32sc* const* c, int segments, int first, int len, int scale,
            Vek32sc* dst) {
    int k = first;
    for (; k + 4 <= len; k += 4) {
        __m256i re = _mm256_setzero_si256();
        __m256i im = re;
        for (int s = 0; s < segments; ++s) {
            const __m256i a = load4(x[s] + k);
            const __m256i b = load4(c[s] + k);
            const __m256i aIm = upper(a);
            const __m256i bIm = upper(b);
            re = _mm256_add_epi64(re, _mm256_sub_epi64(_mm256_mul_epi32(a, b), _mm256_mul_epi32(aIm, bIm)));
            im = _mm256_add_epi64(im, _mm256_add_epi64(_mm256_mul_epi32(a, bIm), _mm256_mul_epi32(aIm, b)));
        }
        alignas(32) int64_t sums[8];
        _mm256_store_si256(reinterpret_cast<__m256i*>(sums), re);
        _mm256_store_si256(reinterpret_cast<__m256i*>(sums + 4), im);
        for (int i = 0; i < 4; ++i) {
            dst[k + i] = {scaled(sums[i], scale), scaled(sums[4 + i], scale)};
        }
    }
    for (; k < len; ++k) {
        lowRest(x, c, segments, k, scale, dst);
    }
}

// Sums of the halves of 64-bit products, the upper ones with the sign's bit turned so that they are not negative.
struct Halves {
    __m256i low, high;
};
[[gnu::always_inline]] inline void addTo(Halves& h, __m256i p) {
    const __m256i turn = _mm256_set1_epi64x(INT64_MIN);
    const __m256i mask = _mm256_set1_epi64x(0xffffffffLL);
    h.low = _mm256_add_epi64(h.low, _mm256_and_si256(p, mask));
    h.high = _mm256_add_epi64(h.high, _mm256_srli_epi64(_mm256_xor_si256(p, turn), 32));
}
[[gnu::always_inline]] inline void takeFrom(Halves& h, __m256i p) {
    const __m256i turn = _mm256_set1_epi64x(INT64_MIN);
    const __m256i mask = _mm256_set1_epi64x(0xffffffffLL);
    h.low = _mm256_sub_epi64(h.low, _mm256_and_si256(p, mask));
    h.high = _mm256_sub_epi64(h.high, _mm256_srli_epi64(_mm256_xor_si256(p, turn), 32));
}

void firWide(const Vek32sc* const* x, const Vek32sc* const* c, int segments, int len, int scale, Vek32sc* dst) {
    int k = 0;
    for (; k + 4 <= len; k += 4) {
        Halves re = {_mm256_setzero_si256(), _mm256_setzero_si256()};
        Halves im = re;
        for (int s = 0; s < segments; ++s) {
            const __m256i a = load4(x[s] + k);
            const __m256i b = load4(c[s] + k);
            const __m256i aIm = upper(a);
            const __m256i bIm = upper(b);
            addTo(re, _mm256_mul_epi32(a, b));
            takeFrom(re, _mm256_mul_epi32(aIm, bIm));
            addTo(im, _mm256_mul_epi32(a, bIm));
            addTo(im, _mm256_mul_epi32(aIm, b));
        }
        alignas(32) int64_t sums[16];
        _mm256_store_si256(reinterpret_cast<__m256i*>(sums), re.low);
        _mm256_store_si256(reinterpret_cast<__m256i*>(sums + 4), re.high);
        _mm256_store_si256(reinterpret_cast<__m256i*>(sums + 8), im.low);
        _mm256_store_si256(reinterpret_cast<__m256i*>(sums + 12), im.high);
        // The turned signs cancel in the real part and count 2^31 for each of two products in the imaginary part.
        const int64_t turned = (int64_t{1} << 32) * segments;
        for (int i = 0; i < 4; ++i) {
            const Wide real = static_cast<Wide>(sums[4 + i]) * (int64_t{1} << 32) + sums[i];
            const Wide imaginary = static_cast<Wide>(sums[12 + i] - turned) * (int64_t{1} << 32) + sums[8 + i];
            dst[k + i] = {scaledWide(real, scale), scaledWide(imaginary, scale)};
        }
    }
    for (; k < len; ++k) {
        wideRest(x, c, segments, k, scale, dst);
    }
}

// Four products of one number and the other's conjugate, 64 bits wide.
struct Products {
    __m256i re, im;
};
[[gnu::always_inline]] inline Products conjugateProducts(__m256i a, __m256i b) {
    const __m256i aIm = upper(a);
    const __m256i bIm = upper(b);
    return {_mm256_add_epi64(_mm256_mul_epi32(a, b), _mm256_mul_epi32(aIm, bIm)),
            _mm256_sub_epi64(_mm256_mul_epi32(a, bIm), _mm256_mul_epi32(aIm, b))};
}

void learnLow(const Vek32sc* x, const Vek32sc* p, Vek32sc* c, int len, int shift) {
    const __m128i count = _mm_cvtsi32_si128(shift);
    int k = 0;
    for (; k + 4 <= len; k += 4) {
        const Products r = conjugateProducts(load4(x + k), load4(p + k));
        const __m256i change = joined(_mm256_srl_epi64(r.re, count), _mm256_srl_epi64(r.im, count));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(c + k), _mm256_add_epi32(load4(c + k), change));
    }
    for (; k < len; ++k) {
        learnLowRest(x[k], p[k], c[k], shift);
    }
}

// Saturates 64-bit numbers into their lower halves.
[[gnu::always_inline]] inline __m256i clamped(__m256i v) {
    const __m256i top = _mm256_set1_epi64x(INT32_MAX);
    const __m256i bottom = _mm256_set1_epi64x(INT32_MIN);
    v = _mm256_blendv_epi8(v, top, _mm256_cmpgt_epi64(v, top));
    return _mm256_blendv_epi8(v, bottom, _mm256_cmpgt_epi64(bottom, v));
}

void learnSat(const Vek32sc* x, const Vek32sc* p, Vek32sc* c, int len, int shift) {
    const __m128i count = _mm_cvtsi32_si128(shift);
    const __m256i half = _mm256_set1_epi64x(int64_t{1} << (shift - 1));
    // An arithmetic shift by way of numbers that are not negative.
    const __m256i turn = _mm256_set1_epi64x(INT64_MIN);
    const __m256i turned = _mm256_srl_epi64(turn, count);
    int k = 0;
    for (; k + 4 <= len; k += 4) {
        auto [re, im] = conjugateProducts(load4(x + k), load4(p + k));
        re = _mm256_srl_epi64(_mm256_xor_si256(_mm256_add_epi64(re, half), turn), count);
        im = _mm256_srl_epi64(_mm256_xor_si256(_mm256_add_epi64(im, half), turn), count);
        const __m256i old = load4(c + k);
        // Signed halves of the old coefficients as 64-bit numbers: products by one.
        const __m256i one = _mm256_set1_epi64x(1);
        re = _mm256_add_epi64(_mm256_sub_epi64(re, turned), _mm256_mul_epi32(old, one));
        im = _mm256_add_epi64(_mm256_sub_epi64(im, turned), _mm256_mul_epi32(upper(old), one));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(c + k), joined(clamped(re), clamped(im)));
    }
    for (; k < len; ++k) {
        learnSatRest(x[k], p[k], c[k], shift);
    }
}

#else

void firLow(const Vek32sc* const* x, const Vek32sc* const* c, int segments, int first, int len, int scale,
            Vek32sc* dst) {
    for (int k = first; k < len; ++k) {
        lowRest(x, c, segments, k, scale, dst);
    }
}

void firWide(const Vek32sc* const* x, const Vek32sc* const* c, int segments, int len, int scale, Vek32sc* dst) {
    for (int k = 0; k < len; ++k) {
        wideRest(x, c, segments, k, scale, dst);
    }
}

void learnLow(const Vek32sc* x, const Vek32sc* p, Vek32sc* c, int len, int shift) {
    for (int k = 0; k < len; ++k) {
        learnLowRest(x[k], p[k], c[k], shift);
    }
}

void learnSat(const Vek32sc* x, const Vek32sc* p, Vek32sc* c, int len, int shift) {
    for (int k = 0; k < len; ++k) {
        learnSatRest(x[k], p[k], c[k], shift);
    }
}

#endif

void learn32fc(const Vek32fc* x, const Vek32fc* g, Vek32fc* c, int len) {
    for (int k = 0; k < len; ++k) {
        c[k].re += x[k].re * g[k].re + x[k].im * g[k].im;
        c[k].im += x[k].re * g[k].im - x[k].im * g[k].re;
    }
}

template <typename T>
VEK_INLINE void turn(const T* __restrict src, T* __restrict dst, int n) {
    for (int j = 0; j < n; ++j) {
        dst[j] = src[n - 1 - j];
    }
}

void turn16(const int16_t* src, int16_t* dst, int n) {
    turn(src, dst, n);
}

void turn32f(const float* src, float* dst, int n) {
    turn(src, dst, n);
}

} // namespace

VEK_KERNEL_TABLE(EcKernels, ecKernels) = {learn32f, learn16,   firLow, firWide, learnLow,
                                          learnSat, learn32fc, turn16, turn32f};

} // namespace vek
