// Prediction, recursion and codebook search of G.728. Sums that could leave 32 bits are widened every two products.
#include "sc/kernels/g728.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/registers.h"

namespace vek {
namespace {

constexpr int kSamples = 5;
constexpr int kRoundFiltered = 1 << 13; // Q24 to Q10
constexpr int kFilteredShift = 14;
constexpr int kRoundEnergy = 1 << 12; // Q18 to Q5
constexpr int kEnergyShift = 13;

// The recursions within a vector, in scalar code at all levels: each sample waits for the one before. What stands
// before the vector does not.
constexpr int kZeros = 10;
constexpr int64_t kHalf14 = 1 << 13;

// Cut to a limit, by a branch that is hardly ever taken, which costs the way to the next sample nothing; the empty
// statement keeps the compiler from making a choice of both values of it.
VEK_INLINE int64_t within(int64_t v, int64_t limit) {
    if (static_cast<uint64_t>(v + limit) > 2 * static_cast<uint64_t>(limit)) [[unlikely]] {
        v = v < 0 ? -limit : limit;
        __asm__("" : "+r"(v));
    }
    return v;
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

// Cut to 16 bits, likewise.
VEK_INLINE int cut(int64_t v) {
    if (static_cast<uint64_t>(v - INT16_MIN) > UINT16_MAX) [[unlikely]] {
        v = v < 0 ? INT16_MIN : INT16_MAX;
        __asm__("" : "+r"(v));
    }
    return static_cast<int>(v);
}

VEK_INLINE int16_t zerosRounded(int16_t x, int64_t sum) {
    return static_cast<int16_t>(cut((x * (1 << 13) + (1 << 12) + sum) >> 13));
}

// sums[k] = sum of c[i] * x[9 + k - i], i = 0..9, exact, k = 0..4, where x is the ten samples of `past` and behind
// them, if there are any, the `fresh` five, else zeros.
void tapsEach(const int16_t* c, const int16_t* past, const int16_t* fresh, int64_t* sums) {
    for (int k = 0; k < kSamples; ++k) {
        int64_t s = 0;
        for (int i = 0; i < k && fresh != nullptr; ++i) {
            s += c[i] * fresh[k - 1 - i];
        }
        for (int i = k; i < kZeros; ++i) {
            s += c[i] * past[kZeros - 1 + k - i];
        }
        sums[k] = s;
    }
}

#if VEK_LEVEL == 0

void taps(const int16_t* c, const int16_t* past, const int16_t* fresh, int64_t* sums) {
    tapsEach(c, past, fresh, sums);
}

void zeros(const int16_t* c, int16_t* past, const int16_t* x, int16_t* y) {
    int64_t sums[kSamples];
    tapsEach(c, past, x, sums);
    const int16_t fresh[kSamples] = {x[0], x[1], x[2], x[3], x[4]};
    for (int k = 0; k < kSamples; ++k) {
        y[k] = zerosRounded(fresh[k], sums[k]);
        past[k] = past[k + kSamples];
        past[k + kSamples] = fresh[k];
    }
}

#else

using namespace registers;

using TwoOf64 = hn::FixedTag<int64_t, 2>;

// Eight samples from a place on in two registers.
template <int From>
VEK_INLINE hn::Vec<EightOf16> window(hn::Vec<EightOf16> first, hn::Vec<EightOf16> second) {
    if constexpr (From < 8) {
        return hn::CombineShiftRightBytes<2 * From>(kEightOf16, second, first);
    } else if constexpr (From == 8) {
        return second;
    } else {
        return hn::ShiftRightBytes<2 * (From - 8)>(kEightOf16, second);
    }
}

// Four sums, in pairs, and the fifth.
struct TapSums {
    hn::Vec<TwoOf64> first = hn::Zero(TwoOf64());
    hn::Vec<TwoOf64> second = hn::Zero(TwoOf64());
    hn::Vec<TwoOf64> last = hn::Zero(TwoOf64());
    bool fits = true;
};

// Two taps from I on, and the ones behind. Of their products, only those of two coefficients of -32768 can leave 32
// bits.
template <int I>
VEK_INLINE void addTaps(const int16_t* c, hn::Vec<EightOf16> first, hn::Vec<EightOf16> second, TapSums& sums) {
    const TwoOf64 d;
    const hn::Half<FourOf32> two;
    int32_t pair = 0;
    __builtin_memcpy(&pair, c + I, sizeof pair);
    sums.fits = sums.fits && pair != static_cast<int32_t>(0x80008000U);
    const auto k = hn::BitCast(kEightOf16, hn::Set(kFourOf32, pair));
    const auto a = window<kZeros - 1 - I>(first, second);
    const auto b = window<kZeros - 2 - I>(first, second);
    const auto low = pairSums(hn::InterleaveLower(kEightOf16, a, b), k);
    const auto high = pairSums(hn::InterleaveUpper(kEightOf16, a, b), k);
    sums.first = sums.first + hn::PromoteTo(d, hn::LowerHalf(low));
    sums.second = sums.second + hn::PromoteTo(d, hn::UpperHalf(two, low));
    sums.last = sums.last + hn::PromoteTo(d, hn::LowerHalf(high));
    if constexpr (I + 2 < kZeros) {
        addTaps<I + 2>(c, first, second, sums);
    }
}

// Fifteen samples in two registers; the last one of these ends with a zero.
struct Fifteen {
    hn::Vec<EightOf16> first;
    hn::Vec<EightOf16> second;

    VEK_INLINE Fifteen(const int16_t* past, const int16_t* fresh) : first(hn::LoadU(kEightOf16, past)) {
        int32_t old = 0;
        __builtin_memcpy(&old, past + 8, sizeof old);
        second = hn::BitCast(kEightOf16, hn::InsertLane(hn::Zero(kFourOf32), 0, old));
        if (fresh != nullptr) {
            // Written one by one just before.
            second = hn::InsertLane(second, 2, fresh[0]);
            second = hn::InsertLane(second, 3, fresh[1]);
            second = hn::InsertLane(second, 4, fresh[2]);
            second = hn::InsertLane(second, 5, fresh[3]);
            second = hn::InsertLane(second, 6, fresh[4]);
        }
    }
};

VEK_INLINE void tapsOf(const int16_t* c, const Fifteen& x, const int16_t* past, const int16_t* fresh, int64_t* sums) {
    TapSums all;
    addTaps<0>(c, x.first, x.second, all);
    if (!all.fits) [[unlikely]] {
        return tapsEach(c, past, fresh, sums);
    }
    hn::StoreU(all.first, TwoOf64(), sums);
    hn::StoreU(all.second, TwoOf64(), sums + 2);
    sums[4] = hn::GetLane(all.last);
}

void taps(const int16_t* c, const int16_t* past, const int16_t* fresh, int64_t* sums) {
    tapsOf(c, Fifteen(past, fresh), past, fresh, sums);
}

void zeros(const int16_t* c, int16_t* past, const int16_t* x, int16_t* y) {
    const Fifteen all(past, x);
    int64_t sums[kSamples];
    tapsOf(c, all, past, x, sums);
    int16_t out[kSamples];
    for (int k = 0; k < kSamples; ++k) {
        out[k] = zerosRounded(x[k], sums[k]);
    }
    // Written as they will be read: what is read across the bounds of what was written waits for it.
    const auto last = hn::BitCast(kFourOf32, window<kSamples + 8>(all.first, all.second));
    const int32_t two = hn::GetLane(last);
    hn::StoreU(window<kSamples>(all.first, all.second), kEightOf16, past);
    __builtin_memcpy(past + 8, &two, sizeof two);
    for (int k = 0; k < kSamples; ++k) {
        y[k] = out[k];
    }
}

#endif

void poleZero(const int16_t* c, const int16_t* x, int16_t* y) {
    int64_t zeros[kSamples];
    int64_t poles[kSamples];
    taps(c, x, x + kZeros, zeros);
    taps(c + kZeros, y, nullptr, poles);
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

// What a shape has of the target, and the products of its energy and of that with a level's gains.
int32_t projection(const int16_t* book, int n, const int16_t* pn, int shift, int j) {
    const int32_t s = pn[0] * book[2 * j] + pn[1] * book[2 * j + 1] + pn[2] * book[2 * n + 2 * j] +
                      pn[3] * book[2 * n + 2 * j + 1] + pn[4] * book[4 * n + 2 * j];
    return (s + (1 << (shift - 1))) >> shift;
}

int32_t distance(int16_t energy, int32_t p, const int16_t* gains) {
    return (energy < 0 ? 0 : energy) * gains[0] + fix::abs_s(fix::sat16(p)) * gains[1];
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
        const int32_t p = projection(book, n, pn, shift, j);
        for (int l = 0; l < levels; ++l) {
            const int32_t d = distance(energy[j], p, gains + 2 * l);
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

using D32 = hn::RepartitionToWide<D16>;
using D64 = hn::RepartitionToWide<D32>;

template <class V64, class V32>
VEK_INLINE V64 plusWide(V64 sum, V32 more) {
    const hn::DFromV<V64> d;
    sum = sum + hn::PromoteTo(d, hn::LowerHalf(more));
    return sum + hn::PromoteTo(d, hn::UpperHalf(hn::Half<hn::DFromV<V32>>(), more));
}

template <class V64>
VEK_INLINE int64_t total(V64 sum) {
    return hn::GetLane(hn::SumOfLanes(hn::DFromV<V64>(), sum));
}

void predict(const int16_t* a, const int16_t* mantissa, const int16_t* factor, int16_t* x, int64_t* out) {
    constexpr int step = kLanesOf<D16>;
    hn::Vec<D64> sums[kSamples];
    for (auto& s : sums) {
        s = hn::Zero(D64());
    }
    const auto product = [=](int m) {
        const auto v = hn::LoadU(d16, mantissa + m);
        return hn::MulFixedPoint15(v + v, hn::LoadU(d16, factor + m));
    };
    for (int m = 0; m < kPredictSpan; m += 2 * step) {
        const auto x0 = product(m);
        const auto x1 = product(m + step);
        hn::StoreU(x0, d16, x + m);
        hn::StoreU(x1, d16, x + m + step);
        for (int k = 0; k < kSamples; ++k) {
            const auto first = pairSums(hn::LoadU(d16, a + k + m), x0);
            sums[k] = plusWide(sums[k], plusPairs(first, hn::LoadU(d16, a + k + m + step), x1));
        }
    }
    for (int k = 0; k < kSamples; ++k) {
        out[k] = total(sums[k]);
    }
}

// All bits at kPredictSpan.
struct OnlyOne {
    alignas(32) int16_t mask[2 * kPredictSpan];

    constexpr OnlyOne() : mask() { mask[kPredictSpan] = -1; }
};
constexpr OnlyOne kOnly;

// One lane up; the lowest one comes from the top of `below`.
template <class V>
VEK_INLINE V shiftIn(V v, V below) {
    const hn::DFromV<V> d;
    if constexpr (kLanesOf<decltype(d)> == 8) {
        return hn::CombineShiftRightBytes<14>(d, v, below);
    } else {
        return hn::CombineShiftRightBytes<14>(d, v, hn::ConcatLowerUpper(d, v, below));
    }
}

// The first lane in all of a register's: of one as long by a shuffle of bytes, as the way through a scalar is longer.
template <class D>
VEK_INLINE hn::Vec<D> firstInAll(D d, hn::Vec<EightOf16> v) {
    if constexpr (kLanesOf<D> == 8) {
        return hn::TableLookupBytes(v, hn::Set(d, 0x0100));
    } else {
        return hn::Set(d, hn::ExtractLane(v, 0));
    }
}

// Coefficients in N registers, forward and backward, and what a reflection makes of them.
template <class D, int N>
struct Reflected {
    hn::Vec<D> a[N], b[N];
    hn::Vec<D> forward[N], backward[N];

    // False if a coefficient needs more than 16 bits.
    VEK_INLINE bool by(hn::Vec<D> k, const hn::Vec<D>* shares) {
        const D d;
        auto lost = hn::Zero(d);
        for (int g = 0; g < N; ++g) {
            const auto da = hn::MulFixedPoint15(shares[g], k);
            forward[g] = hn::SaturatedAdd(a[g], da);
            backward[g] = hn::SaturatedAdd(b[g], hn::MulFixedPoint15(a[g], k));
            // Bits where the sum that saturates and the one that wraps differ.
            lost = lost | (forward[g] ^ (a[g] + da));
        }
        return hn::AllTrue(d, hn::Eq(lost, hn::Zero(d)));
    }
};

// Whether the newest coefficient is made with the others, a share of the reflection as they are: of one register, in
// which it shortens the chain of steps. `only` has all bits where it goes. In the finest format it is the reflection
// itself, of which no share has 16 bits.
template <int N>
constexpr bool kMadeTogether = N == 1;

// What the forward coefficients get of a reflection.
template <class D, int N>
VEK_INLINE void sharesOf(const hn::Vec<D>* b, int q, const int16_t* only, hn::Vec<D>* shares) {
    const D d;
    for (int g = 0; g < N; ++g) {
        shares[g] = b[g];
        if constexpr (kMadeTogether<N>) {
            shares[g] = b[g] | (hn::LoadU(d, only) & hn::Set(d, static_cast<int16_t>(q < 15 ? 1 << q : 0)));
        }
    }
}

// A reflection in a coarser format than q, which is returned; 0 if there is none. Apart from the steps, whose registers
// it would take.
template <class D, int N>
[[gnu::noinline, gnu::cold]] int giveWay(Reflected<D, N>& now, hn::Vec<D> k, int q, const int16_t* only) {
    const D d;
    const auto half = hn::Set(d, 1 << 14);
    while (--q >= kG728CoarsestFormat) {
        for (int g = 0; g < N; ++g) {
            now.a[g] = hn::MulFixedPoint15(now.a[g], half);
            now.b[g] = hn::MulFixedPoint15(now.b[g], half);
        }
        hn::Vec<D> shares[N];
        sharesOf<D, N>(now.b, q, only, shares);
        if (now.by(k, shares)) {
            return q;
        }
    }
    return 0;
}

// The steps of the recursion for whose coefficients N registers suffice; false if it stopped before. Each step waits
// for the one before from the sum of products over the quotient to the reflection, and no longer for the energy, which
// stays in a register; nothing else is in that chain: the sum is formed modulo 2^32, and whether it is exact, below the
// energy and without saturation is told beside it.
template <class D, int N>
bool recurseWithin(Levinson& filter, const int16_t* rBack, int order) {
    using Sums = hn::RepartitionToWide<D>;
    using Wide = hn::RepartitionToWide<Sums>;
    constexpr int width = kLanesOf<D>;
    const D d;
    using Two = hn::FixedTag<double, 2>;
    const Two two;
    const TwoOf64 bits;
    Reflected<D, N> now;
    auto products = hn::Zero(Sums());
    auto wide = hn::Zero(Wide());
    // What was written just before is not read as a whole: that would wait for it.
    auto past = hn::Zero(d);
    const auto multiply = [&](const int16_t* r) {
        products = pairSums(now.a[0], N == 1 ? past : hn::LoadU(d, r));
        wide = plusWide(hn::Zero(Wide()), products);
        for (int g = 1; g < N; ++g) {
            const auto more = pairSums(now.a[g], hn::LoadU(d, r + g * width));
            products = products + more;
            wide = plusWide(wide, more);
        }
    };
    int m = filter.order;
    const int16_t* r = rBack + order - m;
    for (int g = 0; g < N; ++g) {
        now.a[g] = m == 0 ? hn::Zero(d) : hn::LoadU(d, filter.forward + g * width);
        now.b[g] = m == 0 ? hn::Zero(d) : hn::LoadU(d, filter.backward + g * width);
    }
    if (m > 0) {
        past = hn::LoadU(d, r);
        multiply(r);
    }
    int q = filter.q;
    const int16_t* only = kOnly.mask + kPredictSpan - m;
    hn::Vec<D> shares[N];
    sharesOf<D, N>(now.b, q, only, shares);
    // Rounded to the nearest: quotients are 2^-33 or more from where the rounding changes, but for those that lie on
    // it. A divisor less by 2^-51 of itself takes these beyond and no other. In the exponent of a double: 2^(q - 31).
    constexpr int64_t less = 4;
    const auto scaleOf = [=](int format) {
        return hn::Set(bits, static_cast<int64_t>(format - 31) * (int64_t{1} << 52) - less);
    };
    auto scale = scaleOf(q);
    // A double of this size ends with the units, and its lowest bits are those of a negative integer too.
    const auto integers = hn::Set(two, 0x1.8p52);
    const int last = order < N * width ? order : N * width;
    // In each even lane; the others only keep the second quotient a number.
    auto energy = hn::Set(kFourOf32, filter.energy);
    const auto timesQ15 = [](auto x, auto y) {
        const hn::RebindToUnsigned<FourOf32> words;
        const auto product = hn::MulEven(hn::BitCast(words, x), hn::BitCast(words, y));
        return hn::BitCast(kFourOf32, hn::ShiftRight<15>(product));
    };
    bool goes = true;
    while (m < last) {
        const int32_t fresh = r[-1] * (1 << q);
        const int64_t exact = total(wide) + fresh;
        goes = (exact < 0 ? -exact : exact) << (16 - q) < hn::GetLane(energy);
        if (!goes) {
            break;
        }
        const auto sum = hn::SumOfLanes(kFourOf32, fourSums(products)) + hn::Set(kFourOf32, fresh);
        const auto divisor = hn::BitCast(bits, hn::PromoteTo(two, hn::LowerHalf(energy))) + scale;
        const auto quotient = hn::PromoteTo(two, hn::LowerHalf(sum)) / hn::BitCast(two, divisor);
        const auto reflection = integers - quotient;
        const auto k = firstInAll(d, hn::BitCast(kEightOf16, reflection));
        const auto rounded = hn::BitCast(kFourOf32, reflection);
        const auto magnitude = hn::Abs(rounded);
        goes = hn::GetLane(magnitude) <= INT16_MAX;
        if (!goes) {
            break;
        }
        if (!now.by(k, shares)) [[unlikely]] {
            // Of more registers it is left to who has called: these steps would miss those that it takes.
            goes = false;
            if constexpr (N <= 2) {
                Reflected<D, N> coarser;
                for (int g = 0; g < N; ++g) {
                    coarser.a[g] = now.a[g];
                    coarser.b[g] = now.b[g];
                }
                const int format = giveWay(coarser, k, q, only);
                goes = format > 0;
                if (goes) {
                    for (int g = 0; g < N; ++g) {
                        now.forward[g] = coarser.forward[g];
                        now.backward[g] = coarser.backward[g];
                    }
                    q = format;
                    scale = scaleOf(q);
                }
            }
            if (!goes) {
                break;
            }
        }
        auto below = q < 15 ? hn::MulFixedPoint15(k, hn::Set(d, static_cast<int16_t>(1 << q))) : k;
        if (!kMadeTogether<N> || q == 15) {
            for (int g = 0; g < N; ++g) {
                now.forward[g] = now.forward[g] | (below & hn::LoadU(d, only + g * width));
            }
        }
        for (int g = 0; g < N; ++g) {
            now.a[g] = now.forward[g];
            now.b[g] = shiftIn(now.backward[g], below);
            below = now.backward[g];
        }
        energy = energy - timesQ15(timesQ15(energy, magnitude), magnitude);
        filter.first = m == 0 ? static_cast<int16_t>(hn::GetLane(rounded)) : filter.first;
        ++m;
        --r;
        --only;
        sharesOf<D, N>(now.b, q, only, shares);
        past = shiftIn(past, hn::Set(d, *r));
        multiply(r);
    }
    for (int g = 0; g < N; ++g) {
        hn::StoreU(now.a[g], d, filter.forward + g * width);
        hn::StoreU(now.b[g], d, filter.backward + g * width);
    }
    filter.order = m;
    filter.q = q;
    filter.energy = hn::GetLane(energy);
    return goes;
}

// Two registers of 128 bits before longer ones: the ways through these, from lane to lane, are shorter.
template <class D, int N>
void recurseFrom(Levinson& filter, const int16_t* rBack, int order) {
    constexpr int reach = N * kLanesOf<D>;
    if (filter.order < reach && !recurseWithin<D, N>(filter, rBack, order)) {
        return;
    }
    if constexpr (reach < kPredictSpan) {
        if (filter.order < order) {
            if constexpr (N == 2 && kLanesOf<D> < kLanesOf<D16>) {
                recurseFrom<D16, 2>(filter, rBack, order);
            } else {
                recurseFrom<D, N + 1>(filter, rBack, order);
            }
        }
    }
}

void recurse(Levinson& filter, const int16_t* rBack, int order) {
    recurseFrom<EightOf16, 1>(filter, rBack, order);
}

// A lane is a shape, or two samples of it. The number of shapes is no multiple of more.
using Shapes = hn::CappedTag<int32_t, 8>;
using Samples = hn::RepartitionToNarrow<Shapes>;

constexpr Shapes kShapes;

VEK_INLINE hn::Vec<Samples> pairOf(int16_t a, int16_t b) {
    const auto two = static_cast<uint16_t>(a) | static_cast<uint32_t>(static_cast<uint16_t>(b)) << 16;
    return hn::BitCast(Samples(), hn::Set(kShapes, static_cast<int32_t>(two)));
}

VEK_INLINE hn::Vec<Samples> samplesAt(const int16_t* book) {
    return hn::LoadU(Samples(), book);
}

VEK_INLINE hn::Vec<Shapes> squareOf(hn::Vec<Shapes> filtered) {
    const auto t = hn::ShiftRight<kFilteredShift>(filtered);
    const auto within16 = hn::Min(hn::Max(t, hn::Set(kShapes, INT16_MIN)), hn::Set(kShapes, INT16_MAX));
    // With the upper half of the lane emptied, the product of pairs is the square.
    const auto low = hn::BitCast(Samples(), within16 & hn::Set(kShapes, 0xffff));
    return hn::ShiftRight<2>(pairSums(low, low));
}

void energies(const int16_t* book, int n, const int16_t* h, int16_t* energy) {
    const hn::Rebind<int16_t, Shapes> narrow;
    const auto h00 = pairOf(h[0], 0);
    const auto h10 = pairOf(h[1], h[0]);
    const auto h21 = pairOf(h[2], h[1]);
    const auto h32 = pairOf(h[3], h[2]);
    const auto h43 = pairOf(h[4], h[3]);
    const auto half = hn::Set(kShapes, kRoundFiltered);
    for (int j = 0; j < n; j += kLanesOf<Shapes>) {
        const auto y01 = samplesAt(book + 2 * j);
        const auto y23 = samplesAt(book + 2 * (n + j));
        const auto y4 = samplesAt(book + 2 * (2 * n + j));
        auto e = hn::Set(kShapes, kRoundEnergy) + squareOf(plusPairs(half, h00, y01));
        e = e + squareOf(plusPairs(half, h10, y01));
        e = e + squareOf(plusPairs(plusPairs(half, h21, y01), h00, y23));
        e = e + squareOf(plusPairs(plusPairs(half, h32, y01), h10, y23));
        e = e + squareOf(plusPairs(plusPairs(plusPairs(half, h43, y01), h21, y23), h00, y4));
        hn::StoreU(hn::DemoteTo(narrow, hn::ShiftRight<kEnergyShift>(e)), narrow, energy + j);
    }
}

int nearest(const int16_t* book, int n, const int16_t* pn, int shift, const int16_t* energy, const int16_t* gains,
            int levels, int* level, bool* negative) {
    const hn::Rebind<int16_t, Shapes> narrow;
    const auto p01 = pairOf(pn[0], pn[1]);
    const auto p23 = pairOf(pn[2], pn[3]);
    const auto p4 = pairOf(pn[4], 0);
    const auto half = hn::Set(kShapes, 1 << (shift - 1));
    hn::Vec<Samples> gain[4];
    for (int l = 0; l < levels; ++l) {
        gain[l] = pairOf(gains[2 * l], gains[2 * l + 1]);
    }
    LeastOfLanes<Shapes> best;
    auto shapes = hn::Load(kShapes, kCounting);
    for (int j = 0; j < n; j += kLanesOf<Shapes>) {
        auto s = plusPairs(half, p01, samplesAt(book + 2 * j));
        s = plusPairs(s, p23, samplesAt(book + 2 * (n + j)));
        s = plusPairs(s, p4, samplesAt(book + 2 * (2 * n + j)));
        const auto magnitude = hn::Min(hn::Abs(hn::ShiftRightSame(s, shift)), hn::Set(kShapes, INT16_MAX));
        const auto e = hn::PromoteTo(kShapes, hn::Max(hn::LoadU(narrow, energy + j), hn::Zero(narrow)));
        const auto pair = hn::BitCast(Samples(), e | hn::ShiftLeft<16>(magnitude));
        auto d = pairSums(pair, gain[0]);
        for (int l = 1; l < levels; ++l) {
            d = hn::Min(d, pairSums(pair, gain[l]));
        }
        best.see(d, shapes);
        shapes = shapes + hn::Set(kShapes, kLanesOf<Shapes>);
    }
    // Which level it was is told for the best shape alone.
    int32_t least = 0;
    const int shape = best.settle(&least);
    const int32_t p = projection(book, n, pn, shift, shape);
    int first = 0;
    while (first < levels - 1 && distance(energy[shape], p, gains + 2 * first) != least) {
        ++first;
    }
    *level = first;
    *negative = p < 0;
    return shape;
}

#endif

} // namespace

VEK_KERNEL_TABLE(G728Kernels, g728Kernels) = {normalise,    predict, recur,   poleZero, poleZeroWide,
                                              poleZeroRest, zeros,   recurse, energies, nearest};

} // namespace vek
