// Resampling by banks of filters: four outputs side by side, the sums of each in a vector until the end.
#include "sc/kernels/resample.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/lanes.h"

namespace vek {
namespace {

using namespace lanes;

constexpr int32_t kHalf = 1 << (kResampleQ - 1);
constexpr int kWeightBits = 15; // of the weight between two filters of the blended bank
constexpr int kPhaseBits = 6;

int16_t rounded(int32_t sum) {
    const int32_t v = (sum + kHalf) >> kResampleQ;
    return static_cast<int16_t>(v > 32767 ? 32767 : v < -32768 ? -32768 : v);
}

int16_t blend(int16_t a, int16_t b, int weight) {
    return static_cast<int16_t>(a + (((b - a) * weight + (1 << (kWeightBits - 1))) >> kWeightBits));
}

// The walk from place to place of a bank.
class Walk {
public:
    Walk(const Polyphase& bank, int start, const int16_t* x)
        : m_rows(bank.rows), m_x(x + start / bank.phases), m_taps(bank.taps), m_phases(bank.phases),
          m_part(start % bank.phases), m_whole(bank.step / bank.phases), m_rest(bank.step % bank.phases) {}
    const int16_t* row() const { return m_rows + m_part * m_taps; }
    const int16_t* x() const { return m_x; }
    void next() {
        m_part += m_rest;
        const bool over = m_part >= m_phases;
        m_part -= over ? m_phases : 0;
        m_x += m_whole + (over ? 1 : 0);
    }

private:
    const int16_t* m_rows;
    const int16_t* m_x;
    int m_taps;
    int m_phases;
    int m_part;
    int m_whole;
    int m_rest;
};

// The same for places in Q40.
class BlendWalk {
public:
    BlendWalk(const int16_t* rows, uint64_t start, uint64_t step, const int16_t* x)
        : m_rows(rows), m_x(x), m_place(start), m_step(step) {}
    const int16_t* row() const {
        return m_rows + ((m_place >> (kBlendQ - kPhaseBits)) & (kBlendPhases - 1)) * kBlendTaps;
    }
    int weight() const {
        return static_cast<int>(m_place >> (kBlendQ - kPhaseBits - kWeightBits)) & ((1 << kWeightBits) - 1);
    }
    const int16_t* x() const { return m_x + (m_place >> kBlendQ); }
    void next() { m_place += m_step; }

private:
    const int16_t* m_rows;
    const int16_t* m_x;
    uint64_t m_place;
    uint64_t m_step;
};

int16_t exactAt(const Walk& walk, int taps) {
    int32_t sum = 0;
    for (int j = 0; j < taps; ++j) {
        sum += walk.row()[j] * walk.x()[j];
    }
    return rounded(sum);
}

int16_t blendedAt(const BlendWalk& walk) {
    const int16_t* row = walk.row();
    const int weight = walk.weight();
    int32_t sum = 0;
    for (int j = 0; j < kBlendTaps; ++j) {
        sum += blend(row[j], row[j + kBlendTaps], weight) * walk.x()[j];
    }
    return rounded(sum);
}

#if VEK_LEVEL == 0

void exact(const Polyphase& bank, int start, const int16_t* x, int16_t* y, int n) {
    Walk walk(bank, start, x);
    for (int i = 0; i < n; ++i) {
        y[i] = exactAt(walk, bank.taps);
        walk.next();
    }
}

void blended(const int16_t* rows, uint64_t start, uint64_t step, const int16_t* x, int16_t* y, int n) {
    BlendWalk walk(rows, start, step, x);
    for (int i = 0; i < n; ++i) {
        y[i] = blendedAt(walk);
        walk.next();
    }
}

#else

VEK_INLINE __m128i load8(const int16_t* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}
VEK_INLINE __m128i load4(const int16_t* p) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
}

#if VEK_LEVEL >= 2
VEK_INLINE V widen(__m128i a) {
    return _mm256_inserti128_si256(_mm256_setzero_si256(), a, 0);
}
VEK_INLINE __m128i fourSums(const V (&s)[4]) {
    const __m256i h = _mm256_hadd_epi32(_mm256_hadd_epi32(s[0], s[1]), _mm256_hadd_epi32(s[2], s[3]));
    return _mm_add_epi32(_mm256_castsi256_si128(h), _mm256_extracti128_si256(h, 1));
}
#else
VEK_INLINE V widen(__m128i a) {
    return a;
}
VEK_INLINE __m128i fourSums(const V (&s)[4]) {
    return _mm_hadd_epi32(_mm_hadd_epi32(s[0], s[1]), _mm_hadd_epi32(s[2], s[3]));
}
#endif

// Samples in a register.
constexpr int kStep = 2 * kLanes;

VEK_INLINE V products(const int16_t* c, const int16_t* x) {
    return madd(loadAll(c), loadAll(x));
}
VEK_INLINE V blendedProducts(const int16_t* c, int weight, const int16_t* x) {
    const V a = loadAll(c);
    const V d = minus16(loadAll(c + kBlendTaps), a);
    return madd(plus16(a, multRounded(d, spread16(static_cast<int16_t>(weight)))), loadAll(x));
}

template <int Taps>
VEK_INLINE V dot(const int16_t* c, const int16_t* x) {
    V sum = spread(0);
    int j = 0;
    for (; j + kStep <= Taps; j += kStep) {
        sum = plus(sum, products(c + j, x + j));
    }
    if constexpr (Taps % kStep >= 8) {
        sum = plus(sum, widen(_mm_madd_epi16(load8(c + j), load8(x + j))));
        j += 8;
    }
    if constexpr (Taps % 8 >= 4) {
        sum = plus(sum, widen(_mm_madd_epi16(load4(c + j), load4(x + j))));
    }
    return sum;
}

VEK_INLINE void storeFour(int16_t* y, const V (&s)[4]) {
    const __m128i v = _mm_srai_epi32(_mm_add_epi32(fourSums(s), _mm_set1_epi32(kHalf)), kResampleQ);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(y), _mm_packs_epi32(v, v));
}

template <int Taps>
void exactOf(const Polyphase& bank, int start, const int16_t* x, int16_t* y, int n) {
    Walk walk(bank, start, x);
    int i = 0;
    for (; i + 4 <= n; i += 4) {
        V s[4];
        for (V& sum : s) {
            sum = dot<Taps>(walk.row(), walk.x());
            walk.next();
        }
        storeFour(y + i, s);
    }
    for (; i < n; ++i) {
        y[i] = exactAt(walk, Taps);
        walk.next();
    }
}

void exact(const Polyphase& bank, int start, const int16_t* x, int16_t* y, int n) {
    switch (bank.taps) {
    case 12:
        return exactOf<12>(bank, start, x, y, n);
    case 20:
        return exactOf<20>(bank, start, x, y, n);
    case 24:
        return exactOf<24>(bank, start, x, y, n);
    case 36:
        return exactOf<36>(bank, start, x, y, n);
    case 48:
        return exactOf<48>(bank, start, x, y, n);
    case 72:
        return exactOf<72>(bank, start, x, y, n);
    case 96:
        return exactOf<96>(bank, start, x, y, n);
    case 128:
        return exactOf<128>(bank, start, x, y, n);
    default:
        return exactOf<144>(bank, start, x, y, n);
    }
}

void blended(const int16_t* rows, uint64_t start, uint64_t step, const int16_t* x, int16_t* y, int n) {
    BlendWalk walk(rows, start, step, x);
    int i = 0;
    for (; i + 4 <= n; i += 4) {
        V s[4];
        for (V& sum : s) {
            const int16_t* row = walk.row();
            const int weight = walk.weight();
            sum = spread(0);
            for (int j = 0; j < kBlendTaps; j += kStep) {
                sum = plus(sum, blendedProducts(row + j, weight, walk.x() + j));
            }
            walk.next();
        }
        storeFour(y + i, s);
    }
    for (; i < n; ++i) {
        y[i] = blendedAt(walk);
        walk.next();
    }
}

#endif

void addAll(const int16_t* a, const int16_t* b, int16_t* y, int n) {
    int i = 0;
#if VEK_LEVEL > 0
    for (; i + 8 <= n; i += 8) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(y + i), _mm_adds_epi16(load8(a + i), load8(b + i)));
    }
#endif
    for (; i < n; ++i) {
        y[i] = fix::add(a[i], b[i]);
    }
}

void subtractAll(const int16_t* a, const int16_t* b, int16_t* y, int n) {
    int i = 0;
#if VEK_LEVEL > 0
    for (; i + 8 <= n; i += 8) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(y + i), _mm_subs_epi16(load8(a + i), load8(b + i)));
    }
#endif
    for (; i < n; ++i) {
        y[i] = fix::sub(a[i], b[i]);
    }
}

} // namespace

VEK_KERNEL_TABLE(ResampleKernels, resampleKernels) = {exact, blended, addAll, subtractAll};

} // namespace vek
