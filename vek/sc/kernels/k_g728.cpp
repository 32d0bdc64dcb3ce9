// Prediction, recursion and codebook search of G.728. Sums that could leave 32 bits are widened every two products.
#include "sc/kernels/g728.h"

#include <algorithm>
#include <array>

#include "sc/common/fixmath.h"
#include "sc/kernels/lanes.h"

namespace vek {
namespace {

using namespace lanes;

constexpr int kSamples = 5;
constexpr int kRoundFiltered = 1 << 13; // Q24 to Q10
constexpr int kFilteredShift = 14;
constexpr int kRoundEnergy = 1 << 12; // Q18 to Q5
constexpr int kEnergyShift = 13;

// The recursions within a vector, in scalar code at all levels: each sample waits for the one before. What stands
// before the vector does not.
constexpr int kZeros = 10;
constexpr int64_t kHalf14 = 1 << 13;

VEK_INLINE int64_t within(int64_t v, int64_t limit) {
    return v > limit ? limit : v < -limit ? -limit : v;
}

int normalise(const int64_t* v, int q, int16_t* mantissa) {
    constexpr int64_t largest = 16383;
    uint64_t used = 0;
    for (int i = 0; i < kSamples; ++i) {
        used |= static_cast<uint64_t>(v[i] ^ (v[i] >> 63));
    }
    // As many bits as the largest magnitude has, less 14; -1 << 14 is cut to the largest mantissa.
    int shift = 49 - fix::norm_64(static_cast<int64_t>(used));
    if (used == 0 || shift < q - kG728MostShifts) {
        shift = q - kG728MostShifts;
    }
    const int left = shift > 0 ? 0 : -shift;
    const int right = shift > 0 ? shift : 0;
    const int64_t half = right > 0 ? int64_t{1} << (right - 1) : 0;
    for (int i = 0; i < kSamples; ++i) {
        const int64_t r = (v[i] * (int64_t{1} << left) + half) >> right;
        mantissa[kSamples - 1 - i] = static_cast<int16_t>(within(r, largest));
    }
    return q - shift;
}

void recur(const int16_t* a, int64_t* y, int64_t limit) {
    int64_t out[kSamples];
    for (int k = 0; k < kSamples; ++k) {
        int64_t s = y[k] + kHalf14;
        for (int i = k - 1; i >= 0; --i) {
            s -= a[i] * out[k - 1 - i];
        }
        out[k] = within(s >> 14, limit);
    }
    for (int k = 0; k < kSamples; ++k) {
        y[k] = out[k];
    }
}

// sums[k] = sum of c[i] * x[9 + k - i], i = 0..9, exact, of x[0..9] and, if they are `fresh`, the five behind,
// else zeros; k = 0..4.
void tapsEach(const int16_t* c, const int16_t* x, bool fresh, int64_t* sums) {
    for (int k = 0; k < kSamples; ++k) {
        int64_t s = 0;
        for (int i = fresh ? 0 : k; i < kZeros; ++i) {
            s += c[i] * x[kZeros - 1 + k - i];
        }
        sums[k] = s;
    }
}

#if VEK_LEVEL == 0

void taps(const int16_t* c, const int16_t* x, bool fresh, int64_t* sums) {
    tapsEach(c, x, fresh, sums);
}

#else

// Eight samples from a place on in two registers.
template <int From>
VEK_INLINE __m128i window(__m128i first, __m128i second) {
    if constexpr (From < 8) {
        return _mm_alignr_epi8(second, first, 2 * From);
    } else {
        return _mm_srli_si128(second, 2 * (From - 8));
    }
}

// Four sums, in pairs, and the fifth.
struct TapSums {
    __m128i first = _mm_setzero_si128();
    __m128i second = _mm_setzero_si128();
    __m128i last = _mm_setzero_si128();
    bool fits = true;
};

// Two taps from I on, and the ones behind. Of their products, only those of two coefficients of -32768 can leave 32
// bits.
template <int I>
VEK_INLINE void addTaps(const int16_t* c, __m128i first, __m128i second, TapSums& sums) {
    int32_t pair = 0;
    __builtin_memcpy(&pair, c + I, sizeof pair);
    sums.fits = sums.fits && pair != static_cast<int32_t>(0x80008000U);
    const __m128i k = _mm_set1_epi32(pair);
    const __m128i a = window<kZeros - 1 - I>(first, second);
    const __m128i b = window<kZeros - 2 - I>(first, second);
    const __m128i low = _mm_madd_epi16(_mm_unpacklo_epi16(a, b), k);
    const __m128i high = _mm_madd_epi16(_mm_unpackhi_epi16(a, b), k);
    sums.first = _mm_add_epi64(sums.first, _mm_cvtepi32_epi64(low));
    sums.second = _mm_add_epi64(sums.second, _mm_cvtepi32_epi64(_mm_srli_si128(low, 8)));
    sums.last = _mm_add_epi64(sums.last, _mm_cvtepi32_epi64(high));
    if constexpr (I + 2 < kZeros) {
        addTaps<I + 2>(c, first, second, sums);
    }
}

void taps(const int16_t* c, const int16_t* x, bool fresh, int64_t* sums) {
    const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(x));
    int32_t old = 0;
    __builtin_memcpy(&old, x + 8, sizeof old);
    __m128i second = _mm_cvtsi32_si128(old);
    if (fresh) {
        // Written one by one just before.
        second = _mm_insert_epi16(second, x[10], 2);
        second = _mm_insert_epi16(second, x[11], 3);
        second = _mm_insert_epi16(second, x[12], 4);
        second = _mm_insert_epi16(second, x[13], 5);
        second = _mm_insert_epi16(second, x[14], 6);
    }
    TapSums all;
    addTaps<0>(c, first, second, all);
    if (!all.fits) [[unlikely]] {
        return tapsEach(c, x, fresh, sums);
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(sums), all.first);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(sums + 2), all.second);
    sums[4] = _mm_cvtsi128_si64(all.last);
}

#endif

// Cut to 16 bits, by a branch that is hardly ever taken, which costs the way to the next sample nothing; the empty
// statement keeps the compiler from making a choice of both values of it.
VEK_INLINE int cut(int64_t v) {
    if (static_cast<uint64_t>(v - INT16_MIN) > UINT16_MAX) [[unlikely]] {
        v = v < 0 ? INT16_MIN : INT16_MAX;
        __asm__("" : "+r"(v));
    }
    return static_cast<int>(v);
}

void poleZero(const int16_t* c, const int16_t* x, int16_t* y) {
    int64_t zeros[kSamples];
    int64_t poles[kSamples];
    taps(c, x, true, zeros);
    taps(c + kZeros, y, false, poles);
    int out[kSamples];
    for (int k = 0; k < kSamples; ++k) {
        int64_t s = x[kZeros + k] * (1 << 14) + kHalf14 + zeros[k] - poles[k];
        for (int i = k - 1; i >= 0; --i) {
            s -= c[kZeros + i] * out[k - 1 - i];
        }
        out[k] = cut(s >> 14);
    }
    for (int k = 0; k < kSamples; ++k) {
        y[kZeros + k] = static_cast<int16_t>(out[k]);
    }
}

void poleZeroWide(const int16_t* c, const int64_t* x, int64_t* y, int64_t limit) {
    for (int k = kZeros; k < kZeros + kSamples; ++k) {
        int64_t s = x[k] * (1 << 14) + kHalf14;
        for (int i = 0; i < kZeros; ++i) {
            s += c[i] * x[k - 1 - i];
        }
        for (int i = kZeros - 1; i >= 0; --i) {
            s -= c[kZeros + i] * y[k - 1 - i];
        }
        y[k] = within(s >> 14, limit);
    }
}

void poleZeroRest(const int16_t* c, const int64_t* x, int64_t* y, int64_t limit) {
    int64_t out[kSamples];
    for (int k = 0; k < kSamples; ++k) {
        int64_t s = x[k] * (1 << 14) + kHalf14;
        for (int i = k - 1; i >= 0; --i) {
            s += c[i] * x[k - 1 - i] - c[kZeros + i] * out[k - 1 - i];
        }
        out[k] = within(s >> 14, limit);
    }
    for (int k = 0; k < kSamples; ++k) {
        y[k] = out[k];
    }
}

void zeros(const int16_t* c, const int16_t* x, int16_t* y) {
    int64_t sums[kSamples];
    taps(c, x, true, sums);
    for (int k = 0; k < kSamples; ++k) {
        y[k] = static_cast<int16_t>(cut((x[kZeros + k] * (1 << 13) + (1 << 12) + sums[k]) >> 13));
    }
}

#if VEK_LEVEL == 0

void predict(const int16_t* a, const int16_t* mantissa, const int16_t* factor, int16_t* x, int64_t* out) {
    for (int m = 0; m < kPredictSpan; ++m) {
        x[m] = fix::mult_r(static_cast<int16_t>(2 * mantissa[m]), factor[m]);
    }
    for (int k = 0; k < kSamples; ++k) {
        int64_t s = 0;
        for (int m = 0; m < 50; ++m) {
            s += a[k + m] * x[m];
        }
        out[k] = s;
    }
}

void recurse(Levinson& filter, const int16_t* rBack, int order) {
    for (int& m = filter.order; m < order; ++m) {
        const int16_t* r = rBack + order - m;
        int64_t sum = r[-1] * (1 << filter.q);
        for (int i = 0; i < m; ++i) {
            sum += filter.forward[i] * r[i];
        }
        const int64_t magnitude = (sum < 0 ? -sum : sum) << (16 - filter.q); // Q31
        if (magnitude >= filter.energy) {
            return;
        }
        // Both have at most 47 bits: the quotient of the doubles is cut off as that of the integers is.
        const auto k = static_cast<int>(static_cast<double>(magnitude * 65536 + filter.energy) /
                                        static_cast<double>(int64_t{2} * filter.energy));
        const auto reflection = static_cast<int16_t>(sum < 0 ? k : -k);
        int16_t next[kPredictSpan] = {};
        bool fits = k <= INT16_MAX;
        for (int i = 0; i < m; ++i) {
            const int a = filter.forward[i] + fix::mult_r(reflection, filter.backward[i]);
            next[i] = static_cast<int16_t>(a);
            fits = fits && next[i] == a;
        }
        if (!fits) {
            return;
        }
        for (int i = 0; i < m; ++i) {
            filter.forward[i] = next[i];
            filter.backward[m - i] = next[i];
        }
        filter.forward[m] = fix::shr_r(reflection, 15 - filter.q);
        filter.backward[0] = filter.forward[m];
        filter.energy -= static_cast<int32_t>((int64_t{filter.energy} * k >> 15) * k >> 15);
        filter.first = m == 0 ? reflection : filter.first;
    }
}

void energies(const int16_t* book, int n, const int16_t* h, int16_t* energy) {
    for (int j = 0; j < n; ++j) {
        const int16_t y[kSamples] = {book[2 * j], book[2 * j + 1], book[2 * n + 2 * j], book[2 * n + 2 * j + 1],
                                     book[4 * n + 2 * j]};
        int32_t e = 0;
        for (int k = 0; k < kSamples; ++k) {
            int32_t s = 0;
            for (int i = 0; i <= k; ++i) {
                s += h[k - i] * y[i];
            }
            const int t = fix::sat16((s + kRoundFiltered) >> kFilteredShift);
            e += (t * t) >> 2;
        }
        energy[j] = fix::sat16((e + kRoundEnergy) >> kEnergyShift);
    }
}

int nearest(const int16_t* book, int n, const int16_t* pn, int shift, const int16_t* energy, const int16_t* gains,
            int levels, int* level, bool* negative) {
    int32_t least = INT32_MAX;
    int shape = 0;
    *level = 0;
    *negative = false;
    for (int j = 0; j < n; ++j) {
        const int32_t s = pn[0] * book[2 * j] + pn[1] * book[2 * j + 1] + pn[2] * book[2 * n + 2 * j] +
                          pn[3] * book[2 * n + 2 * j + 1] + pn[4] * book[4 * n + 2 * j];
        const int32_t p = (s + (1 << (shift - 1))) >> shift;
        const int32_t magnitude = fix::abs_s(fix::sat16(p));
        const int32_t e = energy[j] < 0 ? 0 : energy[j];
        for (int l = 0; l < levels; ++l) {
            const int32_t d = e * gains[2 * l] + magnitude * gains[2 * l + 1];
            if (d < least) {
                least = d;
                shape = j;
                *level = l;
                *negative = p < 0;
            }
        }
    }
    return shape;
}

#else

void predict(const int16_t* a, const int16_t* mantissa, const int16_t* factor, int16_t* x, int64_t* out) {
    constexpr int step = 2 * kLanes;
    V sums[kSamples];
    for (V& s : sums) {
        s = spread(0);
    }
    for (int m = 0; m < kPredictSpan; m += 2 * step) {
        const V x0 = multRounded(twice16(loadAll(mantissa + m)), loadAll(factor + m));
        const V x1 = multRounded(twice16(loadAll(mantissa + m + step)), loadAll(factor + m + step));
        storeAll(x + m, x0);
        storeAll(x + m + step, x1);
        for (int k = 0; k < kSamples; ++k) {
            sums[k] = wide64(sums[k], plus(madd(loadAll(a + k + m), x0), madd(loadAll(a + k + m + step), x1)));
        }
    }
    for (int k = 0; k < kSamples; ++k) {
        out[k] = total(sums[k]);
    }
}

constexpr int kWidth = 2 * kLanes;

// All bits at kPredictSpan.
alignas(32) constexpr auto kOnly = [] {
    std::array<int16_t, 2 * kPredictSpan> only{};
    only[kPredictSpan] = -1;
    return only;
}();

// The steps of the recursion for whose coefficients N registers suffice; false if it stopped before. Each step waits
// for the one before from the sum of products over the quotient to the reflection; nothing else is in that chain: the
// sum is formed modulo 2^32, and whether it is exact, below the energy and without saturation is told beside it.
template <int N>
bool recurseWithin(Levinson& filter, const int16_t* rBack, int order) {
    V a[N];
    V b[N];
    V products = spread(0);
    V wide = spread(0);
    const auto multiply = [&](const int16_t* r) {
        products = madd(a[0], loadAll(r));
        wide = wide64(spread(0), products);
        for (int g = 1; g < N; ++g) {
            const V more = madd(a[g], loadAll(r + g * kWidth));
            products = plus(products, more);
            wide = wide64(wide, more);
        }
    };
    int m = filter.order;
    const int16_t* r = rBack + order - m;
    // What was written just before is not read from the start: that would wait for it.
    if (m == 0) {
        std::fill_n(a, N, spread(0));
        std::fill_n(b, N, spread(0));
    } else {
        for (int g = 0; g < N; ++g) {
            a[g] = loadAll(filter.forward + g * kWidth);
            b[g] = loadAll(filter.backward + g * kWidth);
        }
        multiply(r);
    }
    const int q = filter.q;
    const V one = spread16(static_cast<int16_t>(q < 15 ? 1 << q : 0));
    // Of the exponent of a double: 2^(q - 31); and its sign.
    const __m128i unit = _mm_set1_epi64x(static_cast<int64_t>(q - 31) * (int64_t{1} << 52));
    const __m128d sign = _mm_set1_pd(-0.0);
    const int last = order < N * kWidth ? order : N * kWidth;
    int64_t energy = filter.energy;
    bool goes = true;
    while (m < last) {
        const int32_t fresh = r[-1] * (1 << q);
        const int64_t exact = total(wide) + fresh;
        goes = (exact < 0 ? -exact : exact) << (16 - q) < energy;
        if (!goes) {
            break;
        }
        const __m128i sum = _mm_add_epi32(sumOfLanes(products), _mm_set1_epi32(fresh));
        // Rounded to the nearest. Quotients are 2^-33 or more from where the rounding changes, but for those that lie
        // on it, which the little that is added takes beyond.
        const __m128d dividend = _mm_xor_pd(_mm_cvtepi32_pd(sum), sign);
        const __m128d half = _mm_or_pd(_mm_and_pd(dividend, sign), _mm_set1_pd(0.5 + 0x1p-34));
        const __m128i divisor = _mm_castpd_si128(_mm_set_sd(static_cast<double>(energy)));
        const __m128d quotient = _mm_div_sd(dividend, _mm_castsi128_pd(_mm_add_epi64(divisor, unit)));
        const __m128i reflection = _mm_cvttpd_epi32(_mm_add_pd(quotient, half));
        const V k = spreadLowest16(reflection);
        V forward[N];
        V backward[N];
        V lost = spread(0);
        for (int g = 0; g < N; ++g) {
            const V da = multRounded(b[g], k);
            forward[g] = plus16(a[g], da);
            backward[g] = plus16(b[g], multRounded(a[g], k));
            lost = orBits(lost, lost16(forward[g], a[g], da));
        }
        const int64_t magnitude = _mm_cvtsi128_si32(_mm_abs_epi32(reflection));
        goes = none(lost) && magnitude <= INT16_MAX;
        if (!goes) {
            break;
        }
        const V newest = q < 15 ? multRounded(k, one) : k;
        const int16_t* only = kOnly.data() + kPredictSpan - m;
        V below = newest;
        for (int g = 0; g < N; ++g) {
            a[g] = orBits(forward[g], andBits(newest, loadAll(only + g * kWidth)));
            b[g] = shiftIn16(backward[g], below);
            below = backward[g];
        }
        energy -= (energy * magnitude >> 15) * magnitude >> 15;
        filter.first = m == 0 ? static_cast<int16_t>(_mm_cvtsi128_si32(reflection)) : filter.first;
        ++m;
        --r;
        multiply(r);
    }
    for (int g = 0; g < N; ++g) {
        storeAll(filter.forward + g * kWidth, a[g]);
        storeAll(filter.backward + g * kWidth, b[g]);
    }
    filter.order = m;
    filter.energy = static_cast<int32_t>(energy);
    return goes;
}

template <int N>
void recurseFrom(Levinson& filter, const int16_t* rBack, int order) {
    if (filter.order < N * kWidth && !recurseWithin<N>(filter, rBack, order)) {
        return;
    }
    if constexpr (N * kWidth < kPredictSpan) {
        if (filter.order < order) {
            recurseFrom<N + 1>(filter, rBack, order);
        }
    }
}

void recurse(Levinson& filter, const int16_t* rBack, int order) {
    recurseFrom<1>(filter, rBack, order);
}

VEK_INLINE V pairOf(int16_t a, int16_t b) {
    return spread(
        static_cast<int32_t>(static_cast<uint16_t>(a) | static_cast<uint32_t>(static_cast<uint16_t>(b)) << 16));
}

VEK_INLINE V squareOf(V filtered) {
    const V t = down<kFilteredShift>(plus(filtered, spread(kRoundFiltered)));
    // With the upper half of the lane emptied, the product of pairs is the square.
    const V low = lowHalf(least32(most32(t, spread(-32768)), spread(32767)));
    return down<2>(madd(low, low));
}

void energies(const int16_t* book, int n, const int16_t* h, int16_t* energy) {
    const V h00 = pairOf(h[0], 0);
    const V h10 = pairOf(h[1], h[0]);
    const V h21 = pairOf(h[2], h[1]);
    const V h32 = pairOf(h[3], h[2]);
    const V h43 = pairOf(h[4], h[3]);
    for (int j = 0; j < n; j += kLanes) {
        const V y01 = loadAll(book + 2 * j);
        const V y23 = loadAll(book + 2 * (n + j));
        const V y4 = loadAll(book + 2 * (2 * n + j));
        V e = squareOf(madd(h00, y01));
        e = plus(e, squareOf(madd(h10, y01)));
        e = plus(e, squareOf(plus(madd(h21, y01), madd(h00, y23))));
        e = plus(e, squareOf(plus(madd(h32, y01), madd(h10, y23))));
        e = plus(e, squareOf(plus(plus(madd(h43, y01), madd(h21, y23)), madd(h00, y4))));
        storeNarrow(energy + j, down<kEnergyShift>(plus(e, spread(kRoundEnergy))));
    }
}

int nearest(const int16_t* book, int n, const int16_t* pn, int shift, const int16_t* energy, const int16_t* gains,
            int levels, int* level, bool* negative) {
    const V p01 = pairOf(pn[0], pn[1]);
    const V p23 = pairOf(pn[2], pn[3]);
    const V p4 = pairOf(pn[4], 0);
    const V half = spread(1 << (shift - 1));
    V gain[4];
    for (int l = 0; l < levels; ++l) {
        gain[l] = pairOf(gains[2 * l], gains[2 * l + 1]);
    }
    V best = spread(INT32_MAX);
    V bestPlace = spread(0);
    V bestSign = spread(0);
    V place = up<2>(counting()); // shape * 4 + level
    for (int j = 0; j < n; j += kLanes) {
        const V s = plus(plus(madd(p01, loadAll(book + 2 * j)), madd(p23, loadAll(book + 2 * (n + j)))),
                         madd(p4, loadAll(book + 2 * (2 * n + j))));
        const V p = downBy(plus(s, half), shift);
        const V magnitude = least32(magnitudeOf(p), spread(32767));
        const V pair = orBits(most32(widened(energy + j), spread(0)), up<16>(magnitude));
        V d = madd(pair, gain[0]);
        V dPlace = place;
        for (int l = 1; l < levels; ++l) {
            const V other = madd(pair, gain[l]);
            dPlace = choose(less(other, d), plus(place, spread(l)), dPlace);
            d = least32(d, other);
        }
        const V better = less(d, best);
        best = least32(best, d);
        bestPlace = choose(better, dPlace, bestPlace);
        bestSign = choose(better, p, bestSign);
        place = plus(place, spread(4 * kLanes));
    }
    int32_t errors[kLanes];
    int32_t places[kLanes];
    int32_t signs[kLanes];
    storeAll(errors, best);
    storeAll(places, bestPlace);
    storeAll(signs, bestSign);
    int lane = 0;
    for (int i = 1; i < kLanes; ++i) {
        if (errors[i] < errors[lane] || (errors[i] == errors[lane] && places[i] < places[lane])) {
            lane = i;
        }
    }
    *level = places[lane] % 4;
    *negative = signs[lane] < 0;
    return places[lane] / 4;
}

#endif

} // namespace

VEK_KERNEL_TABLE(G728Kernels, g728Kernels) = {normalise,    predict, recur,   poleZero, poleZeroWide,
                                              poleZeroRest, zeros,   recurse, energies, nearest};

} // namespace vek
