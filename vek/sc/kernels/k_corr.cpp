// Inner products and correlations of 16 bits, searches through delays, vector scaling.
// The exact dot product rests on 64-bit sums of biased pair products: a pair sum of two 16-bit products spans
// -0x7fff0000..0x80000000, which fits 32 unsigned bits after adding 0x7fff0000, the pair of four -32768 included.
#include "sc/kernels/corr.h"

#include <cstddef>
#include <type_traits>

#include "sc/common/fixmath.h"
#include "sc/kernels/registers.h"

namespace vek {
namespace {

using fix::sat16;

// Whether the geometric mean of the energies stays below 2^bits, and with it each sum of products of two vectors, and
// of some of them.
template <int bits>
VEK_INLINE bool meanFits(int64_t energyA, int64_t energyB) {
    constexpr auto most = static_cast<double>(int64_t{1} << (2 * bits)) * 0.999; // for what rounding takes
    return static_cast<double>(energyA) * static_cast<double>(energyB) < most;
}

// The largest sum and its number, of sums that are made one by one.
template <class Slide>
VEK_INLINE int mostOneByOne(Slide slide, const int16_t* a, const int16_t* b, int n, int step, int count,
                            int32_t* most) {
    int at = 0;
    for (int k = 0; k < count; ++k) {
        int32_t sum;
        slide(a, b + step * k, n, step, 1, &sum);
        if (k == 0 || sum > *most) {
            *most = sum;
            at = k;
        }
    }
    return at;
}

#if VEK_LEVEL == 0

int64_t sumOfProducts(const int16_t* a, const int16_t* b, int n) {
    int64_t s = 0;
    for (int i = 0; i < n; ++i) {
        s += a[i] * b[i];
    }
    return s;
}

template <int bits>
bool energiesFit(const int16_t* a, int lenA, const int16_t* b, int lenB) {
    const int64_t energyA = sumOfProducts(a, a, lenA);
    return meanFits<bits>(energyA, a == b && lenA == lenB ? energyA : sumOfProducts(b, b, lenB));
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

bool corrInside32(const int16_t* a, const int16_t* b, int n, int lags, int32_t* out) {
    const bool fits = energiesFit<31>(a, n, b, n);
    if (fits) {
        corr32(a, b, n, lags, out);
    }
    return fits;
}

void slideSums(const int16_t* a, const int16_t* b, int n, int step, int count, int32_t* sums) {
    for (int k = 0; k < count; ++k) {
        uint32_t s = 0;
        for (int i = 0; i < n; ++i) {
            s += static_cast<uint32_t>(a[i] * b[i + step * k]);
        }
        sums[k] = static_cast<int32_t>(s);
    }
}

int slideMost(const int16_t* a, const int16_t* b, int n, int step, int count, int32_t* most) {
    return mostOneByOne(slideSums, a, b, n, step, count, most);
}

bool delayed16(const int16_t* past, const int16_t* h, int q, const int16_t* y, const int16_t* target, int n, int count,
               int32_t* cross, int32_t* energy) {
    constexpr int64_t limit = 1 << 30;
    int16_t now[kDelayedResponse] = {};
    for (int j = 0; j < n; ++j) {
        now[j] = y[j];
    }
    for (int k = 0; k < count; ++k) {
        const int64_t sum = sumOfProducts(target, now, n);
        const int64_t squares = sumOfProducts(now, now, n);
        if (sum >= limit || sum < -limit || squares >= limit) {
            return false;
        }
        cross[k] = static_cast<int32_t>(sum);
        energy[k] = static_cast<int32_t>(squares);
        for (int j = n - 1; j >= 0; --j) {
            now[j] = sat16(sat16((past[-k] * h[j]) >> q) + (j > 0 ? now[j - 1] : 0));
        }
    }
    return true;
}

bool gainSums16(const int16_t* x, const int16_t* y, int n, int32_t* xy, int32_t* yy) {
    const int64_t squares = sumOfProducts(y, y, n);
    *yy = static_cast<int32_t>(squares);
    *xy = static_cast<int32_t>(sumOfProducts(x, y, n));
    return squares < 1 << 30 && meanFits<30>(sumOfProducts(x, x, n), squares);
}

#else

using namespace registers;

using PairSum = hn::RepartitionToWide<D16>;
using WideSum = hn::RebindToUnsigned<hn::RepartitionToWide<PairSum>>;

// Adds to `all` the biased sums of pairs, two in 64 bits, and to `upper` those in the upper halves once more.
VEK_INLINE void addBiased(hn::Vec<D16> a, hn::Vec<D16> b, hn::Vec<WideSum>& all, hn::Vec<WideSum>& upper) {
    const auto two = hn::BitCast(WideSum(), plusPairs(hn::Set(PairSum(), 0x7fff0000), a, b));
    all = all + two;
    upper = upper + hn::ShiftRight<32>(two);
}

// Read from element m on: a mask of the last m lanes.
struct LastLanes {
    int16_t mask[2 * kLanesOf<D16>];

    constexpr LastLanes() : mask() {
        for (int i = kLanesOf<D16>; i < 2 * kLanesOf<D16>; ++i) {
            mask[i] = -1;
        }
    }
};
constexpr LastLanes kLast;

VEK_INLINE int64_t sumOfProducts(const int16_t* a, const int16_t* b, int n) {
    constexpr int lanes = kLanesOf<D16>;
    auto all = hn::Zero(WideSum());
    auto upper = all;
    int i = 0;
    for (; i + lanes <= n; i += lanes) {
        addBiased(hn::LoadU(d16, a + i), hn::LoadU(d16, b + i), all, upper);
    }
    int64_t pairs = i / 2;
    if (lanes > 8 && i > 0 && i < n) {
        // The rest with the last register, without what has been counted.
        const auto rest = hn::And(hn::LoadU(d16, a + n - lanes), hn::LoadU(d16, kLast.mask + (n - i)));
        addBiased(rest, hn::LoadU(d16, b + n - lanes), all, upper);
        pairs += lanes / 2;
        i = n;
    }
    int64_t s = 0;
    for (; i < n; ++i) {
        s += a[i] * b[i];
    }
    // The lower halves, which are the sums of all without the upper ones, and these.
    const auto both = all - hn::ShiftLeft<32>(upper) + upper;
    return s + static_cast<int64_t>(hn::GetLane(hn::SumOfLanes(WideSum(), both))) - pairs * 0x7fff0000;
}

// The sums of the lanes of four registers.
template <class V>
VEK_INLINE hn::Vec<FourOf32> lanesSummed(V s0, V s1, V s2, V s3) {
    const hn::DFromV<V> d;
    const hn::RepartitionToWide<hn::DFromV<V>> pairs;
    const auto lower = hn::BitCast(pairs, hn::InterleaveLower(d, s0, s1) + hn::InterleaveUpper(d, s0, s1));
    const auto upper = hn::BitCast(pairs, hn::InterleaveLower(d, s2, s3) + hn::InterleaveUpper(d, s2, s3));
    const auto fours = hn::BitCast(d, hn::InterleaveLower(pairs, lower, upper)) +
                       hn::BitCast(d, hn::InterleaveUpper(pairs, lower, upper));
    return fourSums(fours);
}

// The upper halves of pairs of squares, which fill 32 bits without a sign.
VEK_INLINE hn::Vec<PairSum> upperHalves(hn::Vec<PairSum> squares) {
    const hn::RebindToUnsigned<PairSum> bits;
    return hn::BitCast(PairSum(), hn::ShiftRight<16>(hn::BitCast(bits, squares)));
}

// No less than the energy of x, in units of 2^16: what upperHalves takes of a pair is below one. The last register may
// count squares twice. Fewer than a register of them: 2^14 each.
VEK_INLINE uint32_t energyBound(const int16_t* x, int n) {
    constexpr int lanes = kLanesOf<D16>;
    if (n < lanes) {
        return static_cast<uint32_t>(n) << 14;
    }
    const auto squares = [](const int16_t* p) {
        const auto v = hn::LoadU(d16, p);
        return upperHalves(pairSums(v, v));
    };
    auto sum = squares(x + n - lanes);
    int registers = 1;
    for (int i = 0; i < n - lanes; i += lanes) {
        sum = sum + squares(x + i);
        ++registers;
    }
    const auto four = fourSums(sum);
    return static_cast<uint32_t>(hn::GetLane(hn::SumOfLanes(kFourOf32, four)) + registers * (lanes / 2));
}

template <int bits>
[[gnu::noinline]] bool exactEnergiesFit(const int16_t* a, int lenA, const int16_t* b, int lenB) {
    return meanFits<bits>(sumOfProducts(a, a, lenA), sumOfProducts(b, b, lenB));
}

// The bounds tell it of most vectors.
template <int bits>
VEK_INLINE bool energiesFit(const int16_t* a, int lenA, const int16_t* b, int lenB) {
    const uint64_t boundA = energyBound(a, lenA);
    const uint64_t boundB = a == b && lenA == lenB ? boundA : energyBound(b, lenB);
    return boundA * boundB < uint64_t{1} << (2 * bits - 32) || exactEnergiesFit<bits>(a, lenA, b, lenB);
}

// The sums of `Lags` neighbouring lags.
template <int Lags, class D = D16>
struct LagSums {
    using Sum = hn::Vec<hn::RepartitionToWide<D>>;
    Sum s0 = hn::Zero(hn::RepartitionToWide<D>());
    Sum s1 = s0;
    Sum s2 = s0;
    Sum s3 = s0;

    // One after the other lags are `step` elements apart.
    VEK_INLINE void add(const int16_t* x, hn::Vec<D> y, ptrdiff_t step = 1) {
        const D d;
        s0 = plusPairs(s0, y, hn::LoadU(d, x));
        if constexpr (Lags > 1) {
            s1 = plusPairs(s1, y, hn::LoadU(d, x + step));
        }
        if constexpr (Lags > 2) {
            s2 = plusPairs(s2, y, hn::LoadU(d, x + 2 * step));
        }
        if constexpr (Lags > 3) {
            s3 = plusPairs(s3, y, hn::LoadU(d, x + 3 * step));
        }
    }
    VEK_INLINE auto summed() const { return lanesSummed(s0, s1, s2, s3); }

    VEK_INLINE void store(int32_t* out) const {
        const auto four = summed();
        if constexpr (Lags == 4) {
            hn::StoreU(four, kFourOf32, out);
        } else {
            out[0] = hn::GetLane(four);
            if constexpr (Lags > 1) {
                out[1] = hn::ExtractLane(four, 1);
            }
            if constexpr (Lags > 2) {
                out[2] = hn::ExtractLane(four, 2);
            }
        }
    }
};

// group(Lags, k) for each four lags from k on, and for those that are left, Lags being an integral constant.
template <class Group>
VEK_INLINE void byFourLags(int lags, Group group) {
    int k = 0;
    for (; k + 4 <= lags; k += 4) {
        group(std::integral_constant<int, 4>(), k);
    }
    switch (lags - k) {
    case 3:
        return group(std::integral_constant<int, 3>(), k);
    case 2:
        return group(std::integral_constant<int, 2>(), k);
    case 1:
        return group(std::integral_constant<int, 1>(), k);
    default:
        return;
    }
}

void corr32(const int16_t* a, const int16_t* b, int n, int lags, int32_t* out) {
    byFourLags(lags, [=](auto ofTurn, int k) {
        LagSums<decltype(ofTurn)::value> sums;
        for (int i = 0; i < n - k; i += kLanesOf<D16>) {
            sums.add(a + k + i, hn::LoadU(d16, b + i));
        }
        sums.store(out + k);
    });
}

// The last m lanes of `d`.
template <class D>
VEK_INLINE hn::Vec<D> lastLanes(D d, int m) {
    return hn::LoadU(d, kLast.mask + (kLanesOf<D16> - kLanesOf<D> + m));
}

// Registers go back from the end of a, which all lags share; what is left before them takes each lag a mask of its own.
bool corrInside32(const int16_t* a, const int16_t* b, int n, int lags, int32_t* out) {
    if (!energiesFit<31>(a, n, b, n)) {
        return false;
    }
    constexpr int lanes = kLanesOf<D16>;
    byFourLags(lags, [=](auto ofTurn, int k) {
        constexpr int own = decltype(ofTurn)::value;
        LagSums<own> sums;
        int i = n - lanes;
        for (; i >= k + own - 1; i -= lanes) {
            sums.add(b + i - k, hn::LoadU(d16, a + i), -1);
        }
        // Elements of a from its lag on that are left.
        const int rest = i + lanes - k;
        const auto first = [=](int lag) {
            return hn::AndNot(lastLanes(d16, lag < rest - lanes ? 0 : lanes - rest + lag), hn::LoadU(d16, a + k + lag));
        };
        const auto y = hn::LoadU(d16, b);
        sums.s0 = plusPairs(sums.s0, y, first(0));
        if constexpr (own > 1) {
            sums.s1 = plusPairs(sums.s1, y, first(1));
        }
        if constexpr (own > 2) {
            sums.s2 = plusPairs(sums.s2, y, first(2));
        }
        if constexpr (own > 3) {
            sums.s3 = plusPairs(sums.s3, y, first(3));
        }
        sums.store(out + k);
        // Of the lags that began earlier these may be more than a register.
        for (int lag = 0; lag < rest - lanes; ++lag) {
            for (int m = lanes; m < rest - lag; ++m) {
                out[k + lag] += a[k + lag + m] * b[m];
            }
        }
    });
    return true;
}

// take(numbers, sums) with four sums and their numbers each time; the last ones may come again.
template <class D, class Take>
VEK_INLINE void slideBy(D d, const int16_t* a, const int16_t* b, int n, ptrdiff_t step, int count, Take take) {
    constexpr int lanes = kLanesOf<D>;
    const int whole = n - n % lanes;
    // The rest with the last register, without what has been counted.
    const auto rest = hn::And(hn::LoadU(d, a + n - lanes), lastLanes(d, n - whole));
    const auto four = [&](int k, ptrdiff_t apart) {
        const int16_t* const from = b + step * k;
        LagSums<4, D> sums;
        for (int i = 0; i < whole; i += lanes) {
            sums.add(from + i, hn::LoadU(d, a + i), apart);
        }
        if (whole < n) {
            sums.add(from + n - lanes, rest, apart);
        }
        take(k, sums.summed());
    };
    if (count < 4) {
        for (int k = 0; k < count; ++k) {
            four(k, 0);
        }
        return;
    }
    int k = 0;
    for (; k + 4 <= count; k += 4) {
        four(k, step);
    }
    if (k < count) {
        four(count - 4, step);
    }
}

VEK_INLINE void slideShort(const int16_t* a, const int16_t* b, int n, int step, int count, int32_t* sums) {
    for (int k = 0; k < count; ++k) {
        int32_t s = 0;
        for (int i = 0; i < n; ++i) {
            s += a[i] * b[i + step * k];
        }
        sums[k] = s;
    }
}

template <class D>
VEK_INLINE void slideSumsBy(D d, const int16_t* a, const int16_t* b, int n, int step, int count, int32_t* sums) {
    slideBy(d, a, b, n, step, count, [=](int k, hn::Vec<FourOf32> four) {
        if (count >= 4) {
            hn::StoreU(four, kFourOf32, sums + k);
        } else {
            sums[k] = hn::GetLane(four);
        }
    });
}

void slideSums(const int16_t* a, const int16_t* b, int n, int step, int count, int32_t* sums) {
    if (n >= kLanesOf<D16>) {
        slideSumsBy(d16, a, b, n, step, count, sums);
    } else if (n >= 8) {
        slideSumsBy(kEightOf16, a, b, n, step, count, sums);
    } else {
        slideShort(a, b, n, step, count, sums);
    }
}

template <class D>
VEK_INLINE int slideMostBy(D d, const int16_t* a, const int16_t* b, int n, int step, int count, int32_t* most) {
    const auto counting = count >= 4 ? hn::LoadU(kFourOf32, kCounting) : hn::Zero(kFourOf32);
    LeastOfLanes<FourOf32> least; // of complements, whose order is the opposite
    slideBy(d, a, b, n, step, count,
            [&](int k, hn::Vec<FourOf32> four) { least.see(hn::Not(four), hn::Set(kFourOf32, k) + counting); });
    int32_t complement;
    const int at = least.settle(&complement);
    *most = ~complement;
    return at;
}

int slideMost(const int16_t* a, const int16_t* b, int n, int step, int count, int32_t* most) {
    if (n >= kLanesOf<D16>) {
        return slideMostBy(d16, a, b, n, step, count, most);
    }
    if (n >= 8) {
        return slideMostBy(kEightOf16, a, b, n, step, count, most);
    }
    return mostOneByOne(slideShort, a, b, n, step, count, most);
}

bool gainSums16(const int16_t* x, const int16_t* y, int n, int32_t* xy, int32_t* yy) {
    constexpr int lanes = kLanesOf<D16>;
    const PairSum pairs;
    auto crossed = hn::Zero(pairs);
    auto squares = crossed;
    auto boundX = crossed; // as in energyBound
    auto boundY = crossed;
    const auto add = [&](int i, hn::Vec<D16> now) {
        const auto other = hn::LoadU(d16, x + i);
        const auto two = pairSums(now, now);
        crossed = plusPairs(crossed, now, other);
        squares = squares + two;
        boundY = boundY + upperHalves(two);
        boundX = boundX + upperHalves(pairSums(other, other));
    };
    int i = 0;
    for (; i + lanes <= n; i += lanes) {
        add(i, hn::LoadU(d16, y + i));
    }
    if (i < n) {
        // The rest with the last register, without what has been counted.
        add(n - lanes, hn::And(hn::LoadU(d16, y + n - lanes), lastLanes(d16, n - i)));
    }
    const auto sums = lanesSummed(crossed, squares, boundX, boundY);
    *xy = hn::GetLane(sums);
    *yy = hn::ExtractLane(sums, 1);
    const auto cut = static_cast<uint64_t>((n + lanes) / 2);
    const uint64_t energyX = static_cast<uint32_t>(hn::ExtractLane(sums, 2)) + cut;
    const uint64_t energyY = static_cast<uint32_t>(hn::ExtractLane(sums, 3)) + cut;
    return energyY < 1 << 14 && energyX * energyY < 1 << 28;
}

// Steps of delayed16 between which the response stays where it is.
constexpr int kStay = 31;

// Vectors of kDelayedResponse elements at most, with zeros around them. The response does not move to its next delay:
// what is read with it, moves back, so that its registers are those that were stored.
struct Delayed {
    static constexpr int kSpan = kStay + kDelayedResponse + 1;
    alignas(64) int16_t h[kStay + kSpan + 1] = {};
    alignas(64) int16_t target[kStay + kSpan + 1] = {};
    alignas(64) int16_t y[kSpan] = {};
};

bool delayed16(const int16_t* past, const int16_t* h, int q, const int16_t* y, const int16_t* target, int n, int count,
               int32_t* cross, int32_t* energy) {
    constexpr int lanes = kLanesOf<D16>;
    const PairSum pairs;
    const auto copy = [n](const int16_t* from, int16_t* to) {
        for (int i = 0; i < n; i += 8) {
            hn::StoreU(hn::LoadU(kEightOf16, from + i), kEightOf16, to + i);
        }
    };
    Delayed all;
    copy(h, all.h + kStay);
    copy(target, all.target + kStay);
    copy(y, all.y + kStay);
    auto most = hn::Zero(kFourOf32);
    int start = kStay;
    for (int k = 0; k < count; ++k) {
        if (start == 0) {
            int16_t moved[kDelayedResponse];
            copy(all.y, moved);
            for (int i = 0; i < kStay; ++i) {
                all.y[i] = 0;
            }
            copy(moved, all.y + kStay);
            start = kStay;
        }
        if (k > 0) {
            --start;
        }
        const auto fresh = hn::Set(d16, k > 0 ? past[1 - k] : int16_t{0});
        auto crossed = hn::Zero(pairs);
        auto squares = crossed;
        auto bound = crossed; // as in energyBound
        const auto sum = [&](hn::Vec<D16> now, int i) {
            const auto two = pairSums(now, now);
            crossed = plusPairs(crossed, now, hn::LoadU(d16, all.target + (kStay - start + i)));
            squares = squares + two;
            bound = bound + upperHalves(two);
        };
        const auto move = [&](int i) {
            const auto response = hn::LoadU(d16, all.h + (kStay - start + i));
            const auto lower = fresh * response;
            const auto upper = hn::MulHigh(fresh, response);
            const auto added = hn::ReorderDemote2To(
                d16, hn::ShiftRightSame(hn::BitCast(pairs, hn::InterleaveLower(d16, lower, upper)), q),
                hn::ShiftRightSame(hn::BitCast(pairs, hn::InterleaveUpper(d16, lower, upper)), q));
            const auto now = hn::SaturatedAdd(added, hn::Load(d16, all.y + i));
            hn::Store(now, d16, all.y + i);
            return now;
        };
        int i = start & -lanes;
        for (; i < start + n - lanes; i += lanes) {
            sum(move(i), i);
        }
        // Behind the subframe stands what has left it.
        sum(hn::AndNot(lastLanes(d16, lanes - (start + n - i)), move(i)), i);
        const auto sums = lanesSummed(crossed, squares, bound, hn::Zero(pairs));
        cross[k] = hn::GetLane(sums);
        energy[k] = hn::ExtractLane(sums, 1);
        most = hn::Max(most, sums);
    }
    const uint64_t bound = static_cast<uint64_t>(hn::ExtractLane(most, 2)) + (kDelayedResponse + 2 * lanes) / 2;
    return bound < 1 << 14 && bound * energyBound(target, n) < 1 << 28;
}

#endif

int64_t dot16(const int16_t* a, const int16_t* b, int n) {
    return sumOfProducts(a, b, n);
}

VekStatus dotSaturated16(const int16_t* a, const int16_t* b, int n, int32_t* sum) {
    const int64_t s = sumOfProducts(a, b, n);
    auto cut = static_cast<int32_t>(s);
    if (s != cut) [[unlikely]] {
        cut = s < 0 ? fix::kMin32 : fix::kMax32;
    }
    *sum = cut;
    return vekStsNoErr;
}

bool sumsFit16(const int16_t* a, const int16_t* b, int n) {
    return energiesFit<31>(a, n, b, n);
}

template <int bits>
VEK_INLINE bool slidesFit(const int16_t* a, const int16_t* b, int n, int step, int count) {
    return energiesFit<bits>(a, n, step < 0 ? b - (count - 1) : b, n + count - 1);
}

bool slide16(const int16_t* a, const int16_t* b, int n, int step, int count, int32_t* sums) {
    const bool fits = slidesFit<30>(a, b, n, step, count);
    if (fits) {
        slideSums(a, b, n, step, count, sums);
    }
    return fits;
}

bool slideMost16(const int16_t* a, const int16_t* b, int n, int step, int count, int32_t* most, int* at) {
    if (!slidesFit<31>(a, b, n, step, count)) {
        return false;
    }
    *at = slideMost(a, b, n, step, count, most);
    return true;
}

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

} // namespace

VEK_KERNEL_TABLE(CorrKernels, corrKernels) = {dot16,     dotSaturated16, corr32,     corrInside32, slide16, slideMost16,
                                              sumsFit16, delayed16,      gainSums16, usedBits16,   shift16, window16};

} // namespace vek
