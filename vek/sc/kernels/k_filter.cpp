// The filter room's kernels, once per instruction level.
// The element-wise loops are left to the compiler's vectoriser; the FIR, the all-pole recursion and the circular
// convolution are written out, since their data must be arranged. All levels give the same integers.
#include "sc/kernels/filter.h"

#if VEK_LEVEL >= 1
#include <immintrin.h>
#endif

#include "sc/common/fixmath.h"
#include "sc/kernels/lanes.h"

namespace vek {
namespace {

constexpr int kSub = 40;

// Elements times a wrapping sum: the products of 16 bits fit in 32, their sums may wrap.
inline uint32_t prod(int a, int b) {
    return static_cast<uint32_t>(a * b);
}

inline int16_t roundTo16(uint32_t s, uint32_t half, int q) {
    return fix::sat16(static_cast<int32_t>(s + half) >> q);
}

inline uint32_t halfOf(int q) {
    return q > 0 ? 1U << (q - 1) : 0;
}

int maxAbs16(const int16_t* x, int n) {
    int16_t hi = 0;
    int16_t lo = 0;
    for (int i = 0; i < n; i++) {
        hi = x[i] > hi ? x[i] : hi;
        lo = x[i] < lo ? x[i] : lo;
    }
    return hi > -lo ? hi : -lo;
}

inline uint32_t firAt(const int16_t* a, int order, const int16_t* x) {
    uint32_t s = 0;
    for (int j = 0; j <= order; j++) {
        s += prod(a[j], x[-j]);
    }
    return s;
}

// Output i of the recursion.
VEK_INLINE void allPoleAt(const int16_t* a, int order, int32_t* f, int16_t* y, int i, uint32_t half, int q) {
    auto s = static_cast<uint32_t>(f[i]);
    for (int j = order; j > 0; j--) {
        s -= prod(a[j], y[i - j]);
    }
    f[i] = static_cast<int32_t>(s);
    y[i] = roundTo16(s, half, q);
}

#if VEK_LEVEL >= 1

constexpr int kMaxPairs = kMaxLpOrder / 2 + 1;

// Neighbouring coefficients as one 32-bit element, the last one completed with 0.
inline void pairUp(const int16_t* a, int order, int32_t* c) {
    for (int j = 0; j <= order; j += 2) {
        const auto second = static_cast<uint16_t>(j < order ? a[j + 1] : 0);
        c[j / 2] = static_cast<int32_t>(static_cast<uint16_t>(a[j]) | static_cast<uint32_t>(second) << 16);
    }
}

inline __m128i load(const void* p) {
    return _mm_loadu_si128(static_cast<const __m128i*>(p));
}

inline void store(void* p, __m128i v) {
    _mm_storeu_si128(static_cast<__m128i*>(p), v);
}

// Sums of eight neighbouring outputs; a fixed order lets the compiler keep the coefficients in registers.
template <int Fixed>
inline void fir8(const int32_t* c, int order, const int16_t* x, __m128i& lo, __m128i& hi) {
    const int m = Fixed > 0 ? Fixed : order;
    for (int j = 0; j <= m; j += 2) {
        const __m128i u = load(x - j);
        const __m128i v = j < m ? load(x - j - 1) : u;
        const __m128i k = _mm_set1_epi32(c[j / 2]);
        lo = _mm_add_epi32(lo, _mm_madd_epi16(_mm_unpacklo_epi16(u, v), k));
        hi = _mm_add_epi32(hi, _mm_madd_epi16(_mm_unpackhi_epi16(u, v), k));
    }
}

#if VEK_LEVEL >= 2
template <int Fixed>
inline void fir16x(const int32_t* c, int order, const int16_t* x, __m256i& lo, __m256i& hi) {
    const int m = Fixed > 0 ? Fixed : order;
    for (int j = 0; j <= m; j += 2) {
        const __m256i u = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(x - j));
        const __m256i v = j < m ? _mm256_loadu_si256(reinterpret_cast<const __m256i*>(x - j - 1)) : u;
        const __m256i k = _mm256_set1_epi32(c[j / 2]);
        lo = _mm256_add_epi32(lo, _mm256_madd_epi16(_mm256_unpacklo_epi16(u, v), k));
        hi = _mm256_add_epi32(hi, _mm256_madd_epi16(_mm256_unpackhi_epi16(u, v), k));
    }
}
#endif

template <int Fixed>
void fir16Of(const int16_t* a, int order, const int16_t* x, int16_t* y, int n, int q) {
    int32_t c[kMaxPairs];
    pairUp(a, order, c);
    const __m128i count = _mm_cvtsi32_si128(q);
    const auto half = static_cast<int>(halfOf(q));
    int i = 0;
#if VEK_LEVEL >= 2
    for (; i + 16 <= n; i += 16) {
        __m256i lo = _mm256_set1_epi32(half);
        __m256i hi = lo;
        fir16x<Fixed>(c, order, x + i, lo, hi);
        const __m256i r = _mm256_packs_epi32(_mm256_sra_epi32(lo, count), _mm256_sra_epi32(hi, count));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(y + i), r);
    }
#endif
    for (; i + 8 <= n; i += 8) {
        __m128i lo = _mm_set1_epi32(half);
        __m128i hi = lo;
        fir8<Fixed>(c, order, x + i, lo, hi);
        store(y + i, _mm_packs_epi32(_mm_sra_epi32(lo, count), _mm_sra_epi32(hi, count)));
    }
    for (; i < n; i++) {
        y[i] = roundTo16(firAt(a, order, x + i), halfOf(q), q);
    }
}

template <int Fixed>
void fir32Of(const int16_t* a, int order, const int16_t* x, int32_t* f, int n) {
    int32_t c[kMaxPairs];
    pairUp(a, order, c);
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        __m128i lo = _mm_setzero_si128();
        __m128i hi = lo;
        fir8<Fixed>(c, order, x + i, lo, hi);
        store(f + i, lo);
        store(f + i + 4, hi);
    }
    for (; i < n; i++) {
        f[i] = static_cast<int32_t>(firAt(a, order, x + i));
    }
}

template <int N>
inline uint32_t lane(__m128i v) {
    return static_cast<uint32_t>(_mm_extract_epi32(v, N));
}

// The cut on the chain from output to output: a branch that is hardly ever taken costs it nothing, and the empty
// statement keeps the compiler from gathering the scalars into a vector.
inline int cutScalar(uint32_t& sum, int q) {
    __asm__("" : "+r"(sum));
    int v = static_cast<int32_t>(sum) >> q;
    if (v != static_cast<int16_t>(v)) [[unlikely]] {
        v = v < 0 ? -32768 : 32767;
    }
    return v;
}

// Four outputs a step. What older outputs than the last four give is summed for all four at once and waits in `f`; the
// last four and the new ones go through scalar registers, where the chain from output to output is shortest.
// The four results are stored as one word, so that the later loads of pairs need not wait for it.
template <int Fixed>
void allPoleOf(const int16_t* a, int order, int32_t* f, int16_t* y, int n, int q) {
    const int m = Fixed > 0 ? Fixed : order;
    const int pairs = (m - 4) / 2;
    __m128i c[kMaxLpOrder / 2];
    for (int p = 0; p < pairs; p++) {
        alignas(16) int16_t k[8];
        for (int i = 0; i < 4; i++) {
            const int j = 5 + 2 * p + i; // tap on the younger of the pair
            k[2 * i] = j + 1 <= m ? a[j + 1] : static_cast<int16_t>(0);
            k[2 * i + 1] = j <= m ? a[j] : static_cast<int16_t>(0);
        }
        c[p] = load(k);
    }
    int t[8];
    for (int j = 1; j < 8; j++) {
        t[j] = j <= m ? a[j] : 0;
    }
    const uint32_t half = halfOf(q);
    int w0 = y[-4];
    int w1 = y[-3];
    int w2 = y[-2];
    int w3 = y[-1];
    int i = 0;
    for (; i + 4 <= n; i += 4) {
        __m128i s = _mm_add_epi32(load(f + i), _mm_set1_epi32(static_cast<int>(half)));
        for (int p = pairs - 1; p >= 0; p--) {
            int32_t older;
            __builtin_memcpy(&older, y + i - 6 - 2 * p, sizeof older);
            s = _mm_sub_epi32(s, _mm_madd_epi16(_mm_set1_epi32(older), c[p]));
        }
        uint32_t r0 = lane<0>(s) - prod(t[4], w0) - prod(t[3], w1) - prod(t[2], w2);
        uint32_t r1 = lane<1>(s) - prod(t[5], w0) - prod(t[4], w1) - prod(t[3], w2) - prod(t[2], w3);
        uint32_t r2 = lane<2>(s) - prod(t[6], w0) - prod(t[5], w1) - prod(t[4], w2) - prod(t[3], w3);
        uint32_t r3 = lane<3>(s) - prod(t[7], w0) - prod(t[6], w1) - prod(t[5], w2) - prod(t[4], w3);
        r0 -= prod(t[1], w3);
        w0 = cutScalar(r0, q);
        r1 -= prod(t[1], w0);
        r2 -= prod(t[2], w0);
        r3 -= prod(t[3], w0);
        w1 = cutScalar(r1, q);
        r2 -= prod(t[1], w1);
        r3 -= prod(t[2], w1);
        w2 = cutScalar(r2, q);
        r3 -= prod(t[1], w2);
        w3 = cutScalar(r3, q);
        f[i] = static_cast<int32_t>(r0 - half);
        f[i + 1] = static_cast<int32_t>(r1 - half);
        f[i + 2] = static_cast<int32_t>(r2 - half);
        f[i + 3] = static_cast<int32_t>(r3 - half);
        const uint64_t word = static_cast<uint64_t>(static_cast<uint16_t>(w0)) |
                              static_cast<uint64_t>(static_cast<uint16_t>(w1)) << 16 |
                              static_cast<uint64_t>(static_cast<uint16_t>(w2)) << 32 |
                              static_cast<uint64_t>(static_cast<uint16_t>(w3)) << 48;
        __builtin_memcpy(y + i, &word, sizeof word);
    }
    for (; i < n; i++) {
        allPoleAt(a, m, f, y, i, half, q);
    }
}

void circular40(const int16_t* c, const int16_t* f2, int16_t* y) {
    __m128i s[5];
    for (__m128i& v : s) {
        v = _mm_setzero_si128();
    }
    for (int i = 0; i < kSub; i++) {
        if (c[i] == 0) {
            continue;
        }
        const __m128i k = _mm_set1_epi16(c[i]);
        for (int b = 0; b < 5; b++) {
            const __m128i f = load(f2 + kSub - i + 8 * b);
            const __m128i high = _mm_slli_epi16(_mm_mulhi_epi16(k, f), 1);
            const __m128i low = _mm_srli_epi16(_mm_mullo_epi16(k, f), 15);
            s[b] = _mm_adds_epi16(s[b], _mm_or_si128(high, low));
        }
    }
    for (int b = 0; b < 5; b++) {
        store(y + 8 * b, s[b]);
    }
}

#else

template <int Fixed>
void fir16Of(const int16_t* a, int order, const int16_t* x, int16_t* y, int n, int q) {
    const int m = Fixed > 0 ? Fixed : order;
    const uint32_t half = halfOf(q);
    for (int i = 0; i < n; i++) {
        y[i] = roundTo16(firAt(a, m, x + i), half, q);
    }
}

template <int Fixed>
void fir32Of(const int16_t* a, int order, const int16_t* x, int32_t* f, int n) {
    const int m = Fixed > 0 ? Fixed : order;
    for (int i = 0; i < n; i++) {
        f[i] = static_cast<int32_t>(firAt(a, m, x + i));
    }
}

template <int Fixed>
void allPoleOf(const int16_t* a, int order, int32_t* f, int16_t* y, int n, int q) {
    const int m = Fixed > 0 ? Fixed : order;
    const uint32_t half = halfOf(q);
    for (int i = 0; i < n; i++) {
        allPoleAt(a, m, f, y, i, half, q);
    }
}

void circular40(const int16_t* c, const int16_t* f2, int16_t* y) {
    int16_t s[kSub] = {};
    for (int i = 0; i < kSub; i++) {
        if (c[i] == 0) {
            continue;
        }
        for (int k = 0; k < kSub; k++) {
            s[k] = fix::add(s[k], static_cast<int16_t>((c[i] * f2[kSub + k - i]) >> 15));
        }
    }
    for (int k = 0; k < kSub; k++) {
        y[k] = s[k];
    }
}

#endif

void fir16(const int16_t* a, int order, const int16_t* x, int16_t* y, int n, int q) {
    switch (order) {
    case 10:
        return fir16Of<10>(a, order, x, y, n, q);
    case 16:
        return fir16Of<16>(a, order, x, y, n, q);
    default:
        return fir16Of<0>(a, order, x, y, n, q);
    }
}

void scale32(int a, const int16_t* x, int32_t* f, int n) {
    for (int i = 0; i < n; i++) {
        f[i] = a * x[i];
    }
}

void fir32(const int16_t* a, int order, const int16_t* x, int32_t* f, int n) {
    switch (order) {
    case 0:
        return scale32(a[0], x, f, n);
    case 10:
        return fir32Of<10>(a, order, x, f, n);
    default:
        return fir32Of<0>(a, order, x, f, n);
    }
}

void allPole(const int16_t* a, int order, int32_t* f, int16_t* y, int n, int q) {
    switch (order) {
    case 10:
        return allPoleOf<10>(a, order, f, y, n, q);
    case 16:
        return allPoleOf<16>(a, order, f, y, n, q);
    case 30:
        return allPoleOf<30>(a, order, f, y, n, q);
    default:
        return allPoleOf<0>(a, order, f, y, n, q);
    }
}

void weighted(const int16_t* x1, int v1, const int16_t* x2, int v2, int16_t* y, int n, int q, int half) {
    for (int i = 0; i < n; i++) {
        y[i] = fix::sat16((x1[i] * v1 + x2[i] * v2 + half) >> q);
    }
}

void mul(const int16_t* x1, const int16_t* x2, int16_t* y, int n, int q) {
    const auto half = static_cast<int>(halfOf(q));
    for (int i = 0; i < n; i++) {
        y[i] = fix::sat16((x1[i] * x2[i] + half) >> q);
    }
}

void mulC(const int16_t* x, int v, int16_t* y, int n, int q) {
    const auto half = static_cast<int>(halfOf(q));
    for (int i = 0; i < n; i++) {
        y[i] = fix::sat16((x[i] * v + half) >> q);
    }
}

void addScaled(const int16_t* x, const int16_t* d, int b, int16_t* y, int n, int half) {
    for (int i = 0; i < n; i++) {
        y[i] = fix::sat16(x[i] + ((d[i] * b + half) >> 15));
    }
}

void mean(const int16_t* x1, const int16_t* x2, int16_t* y, int n) {
    for (int i = 0; i < n; i++) {
        y[i] = static_cast<int16_t>((x1[i] >> 1) + (x2[i] >> 1));
    }
}

#if VEK_LEVEL > 0

// Rows of up to Groups registers, for as many values of the response as a register has lanes; the rows grow shorter.
template <int Groups>
void corrRowsOf(const int32_t* wide, int m, lanes::V* sums, int32_t* rows) {
    using namespace lanes;
    for (const int last = m + kLanes; m < last; ++m) {
        // Products of the lower halves: those of the upper ones have a zero.
        const V k = lowHalf(spread(wide[m]));
        for (int g = 0; g < Groups; ++g) {
            sums[g] = plus(sums[g], madd(k, loadAll(wide + m + g * kLanes)));
            storeAll(rows + m * kSub + g * kLanes, sums[g]);
        }
    }
    if constexpr (Groups > 1) {
        corrRowsOf<Groups - 1>(wide, m, sums, rows);
    }
}

void corrRows16(const int16_t* h, int32_t* rows) {
    constexpr int groups = kSub / lanes::kLanes;
    int32_t wide[2 * kSub] = {};
    for (int i = 0; i < kSub; i++) {
        wide[i] = h[i];
    }
    lanes::V sums[groups];
    for (lanes::V& s : sums) {
        s = lanes::spread(0);
    }
    corrRowsOf<groups>(wide, 0, sums, rows);
}

#else

void corrRows16(const int16_t* h, int32_t* rows) {
    uint32_t s[kSub] = {};
    for (int m = 0; m < kSub; m++) {
        for (int d = 0; d < kSub - m; d++) {
            s[d] += static_cast<uint32_t>(h[m] * h[m + d]);
            rows[m * kSub + d] = static_cast<int32_t>(s[d]);
        }
    }
}

#endif

void corrRows32f(const float* h, float* rows) {
    float wide[2 * kSub] = {};
    float s[kSub] = {};
    for (int i = 0; i < kSub; i++) {
        wide[i] = h[i];
    }
    for (int m = 0; m < kSub; m++) {
        const float k = wide[m];
        for (int d = 0; d < kSub; d++) {
            s[d] += k * wide[m + d];
            rows[m * kSub + d] = s[d];
        }
    }
}

void gather32(const int32_t* rows, const uint16_t* index, int32_t* dst, int n) {
    for (int i = 0; i < n; i++) {
        dst[i] = static_cast<int32_t>(static_cast<uint32_t>(rows[index[i]]) << 1);
    }
}

void gather16(const int32_t* rows, const uint16_t* index, int16_t* dst, int n) {
    for (int i = 0; i < n; i++) {
        dst[i] = static_cast<int16_t>(rows[index[i]] >> 15);
    }
}

void addScaled32f(const float* x, const float* d, float b, float* y, int n) {
    for (int i = 0; i < n; i++) {
        y[i] = x[i] + b * d[i];
    }
}

void weighted32f(const float* x1, float v1, const float* x2, float v2, float* y, int n) {
    for (int i = 0; i < n; i++) {
        y[i] = x1[i] * v1 + x2[i] * v2;
    }
}

} // namespace

VEK_KERNEL_TABLE(FilterKernels, filterKernels) = {
    maxAbs16, fir16,      fir32,       allPole,  weighted, mul,        mulC,         addScaled,
    mean,     corrRows16, corrRows32f, gather32, gather16, circular40, addScaled32f, weighted32f,
};

} // namespace vek
