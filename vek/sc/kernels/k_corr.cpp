// Inner products, correlations, vector scaling, folds.
// The exact dot product rests on 64-bit sums of biased pair products: a pair sum of two 16-bit products spans
// -0x7fff0000..0x80000000, which fits 32 unsigned bits after adding 0x7fff0000, the pair of four -32768 included.
#include "sc/kernels/corr.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/floatlanes.h"
#include "sc/kernels/simd.h"

namespace vek {
namespace {

using fix::sat16;

#if VEK_LEVEL > 0

// Four lags from k on, of which those below `lags` are wanted.
VEK_INLINE void storeLags(int32_t* out, int k, int lags, __m128i r) {
    if (k + 4 <= lags) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + k), r);
    } else {
        int32_t rest[4];
        _mm_storeu_si128(reinterpret_cast<__m128i*>(rest), r);
        for (int j = k; j < lags; ++j) {
            out[j] = rest[j - k];
        }
    }
}

constexpr int kBlock = 32 * floats::kFloats;

float dotOfBlock(const float* a, const float* b, int n) {
    using namespace floats;
    const auto products = [a, b](int i) { return load(a + i) * load(b + i); };
    Floats s0 = set1(0);
    Floats s1 = s0;
    Floats s2 = s0;
    Floats s3 = s0;
    int i = 0;
    for (; i + 4 * kFloats <= n; i += 4 * kFloats) {
        s0 = s0 + products(i);
        s1 = s1 + products(i + kFloats);
        s2 = s2 + products(i + 2 * kFloats);
        s3 = s3 + products(i + 3 * kFloats);
    }
    if (i + kFloats <= n) {
        s0 = s0 + products(i);
        i += kFloats;
    }
    if (i + kFloats <= n) {
        s1 = s1 + products(i);
        i += kFloats;
    }
    if (i + kFloats <= n) {
        s2 = s2 + products(i);
        i += kFloats;
    }
    __m128 s = fourSums((s0 + s1) + (s2 + s3));
    if (kFloats > 4 && i + 4 <= n) {
        s = s + _mm_loadu_ps(a + i) * _mm_loadu_ps(b + i);
        i += 4;
    }
    float rest = 0;
    for (; i < n; ++i) {
        rest += a[i] * b[i];
    }
    return total(s) + rest;
}

#endif

#if VEK_LEVEL == 0

int64_t dot16(const int16_t* a, const int16_t* b, int n) {
    int64_t s = 0;
    for (int i = 0; i < n; ++i) {
        s += a[i] * b[i];
    }
    return s;
}

constexpr int kBlock = 64;

float dotOfBlock(const float* a, const float* b, int n) {
    constexpr int kSums = 8;
    float sums[kSums] = {};
    int i = 0;
    for (; i + kSums <= n; i += kSums) {
        for (int k = 0; k < kSums; ++k) {
            sums[k] += a[i + k] * b[i + k];
        }
    }
    for (int k = 0; i + k < n; ++k) {
        sums[k] += a[i + k] * b[i + k];
    }
    return ((sums[0] + sums[1]) + (sums[2] + sums[3])) + ((sums[4] + sums[5]) + (sums[6] + sums[7]));
}

void corr32(const int16_t* a, const int16_t* b, int n, int lags, int32_t* out) {
    for (int k = 0; k < lags; ++k) {
        uint32_t s = 0;
        for (int i = k; i < n; ++i) {
            s += static_cast<uint32_t>(a[i] * b[i - k]);
        }
        out[k] = static_cast<int32_t>(s);
    }
}

#elif VEK_LEVEL == 1

__m128i load16(const int16_t* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

int64_t dot16(const int16_t* a, const int16_t* b, int n) {
    const __m128i bias = _mm_set1_epi32(0x7fff0000);
    const __m128i low = _mm_set1_epi64x(0xffffffffLL);
    __m128i s0 = _mm_setzero_si128();
    __m128i s1 = _mm_setzero_si128();
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        const __m128i p = _mm_add_epi32(_mm_madd_epi16(load16(a + i), load16(b + i)), bias);
        s0 = _mm_add_epi64(s0, _mm_and_si128(p, low));
        s1 = _mm_add_epi64(s1, _mm_srli_epi64(p, 32));
    }
    s0 = _mm_add_epi64(s0, s1);
    int64_t s = _mm_cvtsi128_si64(s0) + _mm_extract_epi64(s0, 1) - static_cast<int64_t>(i / 2) * 0x7fff0000;
    for (; i < n; ++i) {
        s += a[i] * b[i];
    }
    return s;
}

void corr32(const int16_t* a, const int16_t* b, int n, int lags, int32_t* out) {
    for (int k = 0; k < lags; k += 4) {
        __m128i s0 = _mm_setzero_si128();
        __m128i s1 = s0;
        __m128i s2 = s0;
        __m128i s3 = s0;
        const int16_t* x = a + k;
        for (int i = 0; i < n - k; i += 8) {
            const __m128i y = load16(b + i);
            s0 = _mm_add_epi32(s0, _mm_madd_epi16(y, load16(x + i)));
            s1 = _mm_add_epi32(s1, _mm_madd_epi16(y, load16(x + i + 1)));
            s2 = _mm_add_epi32(s2, _mm_madd_epi16(y, load16(x + i + 2)));
            s3 = _mm_add_epi32(s3, _mm_madd_epi16(y, load16(x + i + 3)));
        }
        simd::transpose4(s0, s1, s2, s3);
        const __m128i r = _mm_add_epi32(_mm_add_epi32(s0, s1), _mm_add_epi32(s2, s3));
        storeLags(out, k, lags, r);
    }
}

#else

__m256i load16(const int16_t* p) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

__m128i halves(__m256i v) {
    return _mm_add_epi32(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
}

// Read from element m on: a mask of the last m of sixteen.
alignas(32) const int16_t kLastOf16[32] = {0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,
                                           -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1};

int64_t dot16(const int16_t* a, const int16_t* b, int n) {
    const __m256i bias = _mm256_set1_epi32(0x7fff0000);
    const __m256i low = _mm256_set1_epi64x(0xffffffffLL);
    __m256i s0 = _mm256_setzero_si256();
    __m256i s1 = _mm256_setzero_si256();
    int i = 0;
    for (; i + 16 <= n; i += 16) {
        const __m256i p = _mm256_add_epi32(_mm256_madd_epi16(load16(a + i), load16(b + i)), bias);
        s0 = _mm256_add_epi64(s0, _mm256_and_si256(p, low));
        s1 = _mm256_add_epi64(s1, _mm256_srli_epi64(p, 32));
    }
    int pairs = i / 2;
    if (i > 0 && i < n) {
        // The rest with the last sixteen elements, of which those already counted are masked out.
        const __m256i fresh = load16(kLastOf16 + (n - i));
        const __m256i x = _mm256_and_si256(load16(a + n - 16), fresh);
        const __m256i p = _mm256_add_epi32(_mm256_madd_epi16(x, load16(b + n - 16)), bias);
        s0 = _mm256_add_epi64(s0, _mm256_and_si256(p, low));
        s1 = _mm256_add_epi64(s1, _mm256_srli_epi64(p, 32));
        pairs += 8;
        i = n;
    }
    s0 = _mm256_add_epi64(s0, s1);
    const __m128i h = _mm_add_epi64(_mm256_castsi256_si128(s0), _mm256_extracti128_si256(s0, 1));
    int64_t s = _mm_cvtsi128_si64(h) + _mm_extract_epi64(h, 1) - static_cast<int64_t>(pairs) * 0x7fff0000;
    for (; i < n; ++i) {
        s += a[i] * b[i];
    }
    return s;
}

void corr32(const int16_t* a, const int16_t* b, int n, int lags, int32_t* out) {
    for (int k = 0; k < lags; k += 4) {
        __m256i s0 = _mm256_setzero_si256();
        __m256i s1 = s0;
        __m256i s2 = s0;
        __m256i s3 = s0;
        const int16_t* x = a + k;
        for (int i = 0; i < n - k; i += 16) {
            const __m256i y = load16(b + i);
            s0 = _mm256_add_epi32(s0, _mm256_madd_epi16(y, load16(x + i)));
            s1 = _mm256_add_epi32(s1, _mm256_madd_epi16(y, load16(x + i + 1)));
            s2 = _mm256_add_epi32(s2, _mm256_madd_epi16(y, load16(x + i + 2)));
            s3 = _mm256_add_epi32(s3, _mm256_madd_epi16(y, load16(x + i + 3)));
        }
        const __m256i s01 = _mm256_hadd_epi32(s0, s1);
        const __m256i s23 = _mm256_hadd_epi32(s2, s3);
        const __m128i r = halves(_mm256_hadd_epi32(s01, s23));
        storeLags(out, k, lags, r);
    }
}

#endif

int usedBits16(const int16_t* a, int n) {
    int16_t used = 0;
    for (int i = 0; i < n; ++i) {
        used = static_cast<int16_t>(used | (a[i] ^ (a[i] >> 15)));
    }
    return used;
}

void shift16(const int16_t* src, int16_t* dst, int n, int shift) {
    if (shift >= 0) {
        const int factor = 1 << shift;
        for (int i = 0; i < n; ++i) {
            dst[i] = static_cast<int16_t>(src[i] * factor);
        }
    } else {
        for (int i = 0; i < n; ++i) {
            dst[i] = static_cast<int16_t>(src[i] >> -shift);
        }
    }
}

void window16(const int16_t* src, const int16_t* window, int16_t* dst, int n) {
    for (int i = 0; i < n; ++i) {
        dst[i] = fix::mult_r(src[i], window[i]);
    }
}

// One half of a fold: dst[n] = (w1[n] * x1[n] + w2[n] * x2[n]) in Q15, where each of the four runs forwards or
// backwards from its pointer, and the second product counts negative if asked.
enum class Run { forwards, backwards };

#if VEK_LEVEL == 0

template <Run run>
VEK_INLINE int at(const int16_t* p, int n) {
    return run == Run::forwards ? p[n] : p[-n];
}

template <Run runW1, Run runX1, Run runW2, Run runX2, bool minus>
VEK_INLINE void halfFold(const int16_t* w1, const int16_t* x1, const int16_t* w2, const int16_t* x2, int16_t* dst,
                         int count) {
    for (int n = 0; n < count; ++n) {
        const int first = at<runW1>(w1, n) * at<runX1>(x1, n);
        const int second = at<runW2>(w2, n) * at<runX2>(x2, n);
        dst[n] = sat16(((minus ? first - second : first + second) + 0x4000) >> 15);
    }
}

#else

template <Run run>
VEK_INLINE __m128i eight(const int16_t* p, int n) {
    if constexpr (run == Run::forwards) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + n));
    } else {
        const __m128i turn = _mm_setr_epi8(14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1);
        return _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p - n - 7)), turn);
    }
}

// count is a multiple of eight.
template <Run runW1, Run runX1, Run runW2, Run runX2, bool minus>
VEK_INLINE void halfFold(const int16_t* w1, const int16_t* x1, const int16_t* w2, const int16_t* x2, int16_t* dst,
                         int count) {
    const __m128i half = _mm_set1_epi32(0x4000);
    for (int n = 0; n < count; n += 8) {
        const __m128i a = eight<runX1>(x1, n);
        const __m128i b = eight<runX2>(x2, n);
        const __m128i wa = eight<runW1>(w1, n);
        __m128i wb = eight<runW2>(w2, n);
        if constexpr (minus) {
            wb = _mm_sub_epi16(_mm_setzero_si128(), wb); // a window has no -32768
        }
        const __m128i low = _mm_madd_epi16(_mm_unpacklo_epi16(a, b), _mm_unpacklo_epi16(wa, wb));
        const __m128i high = _mm_madd_epi16(_mm_unpackhi_epi16(a, b), _mm_unpackhi_epi16(wa, wb));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + n),
                         _mm_packs_epi32(_mm_srai_epi32(_mm_add_epi32(low, half), 15),
                                         _mm_srai_epi32(_mm_add_epi32(high, half), 15)));
    }
}

#endif

void fold16(const int16_t* fresh, const int16_t* old, const int16_t* w, int16_t* dst, int half) {
    using enum Run;
    const int last = 2 * half - 1;
    halfFold<backwards, backwards, forwards, forwards, false>(w + half - 1, old + half - 1, w + half, old + half, dst,
                                                              half);
    halfFold<backwards, forwards, forwards, backwards, true>(w + last, fresh, w, fresh + last, dst + half, half);
}

void unfold16(const int16_t* fresh, const int16_t* old, const int16_t* w, int16_t* dst, int half) {
    using enum Run;
    const int last = 2 * half - 1;
    halfFold<forwards, backwards, backwards, forwards, false>(w, fresh + half - 1, w + last, old + half, dst, half);
    halfFold<forwards, forwards, backwards, backwards, true>(w + half, fresh, w + half - 1, old + last, dst + half,
                                                             half);
}

// A product goes through 15 roundings of a block at the most, each within 2^-24; sums of blocks keep what they have.
float dot32f(const float* a, const float* b, int n) {
    if (n <= kBlock) {
        return dotOfBlock(a, b, n);
    }
    double sum = 0;
    int i = 0;
    for (; i + kBlock <= n; i += kBlock) {
        sum += static_cast<double>(dotOfBlock(a + i, b + i, kBlock));
    }
    return static_cast<float>(sum + static_cast<double>(dotOfBlock(a + i, b + i, n - i)));
}

} // namespace

VEK_KERNEL_TABLE(CorrKernels, corrKernels) = {dot16, dot32f, corr32, usedBits16, shift16, window16, fold16, unfold16};

} // namespace vek
