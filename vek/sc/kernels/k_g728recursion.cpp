// Levinson's recursion of G.728: a step in integers, or as registers of coefficients.
#include "sc/kernels/g728recursion.h"

#include <bit>

#include "sc/common/fixmath.h"
#include "sc/kernels/registers.h"

namespace vek {
namespace {

#if VEK_LEVEL == 0

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

#else

using namespace registers;

using TwoOf64 = hn::FixedTag<int64_t, 2>;

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

// The sum of four lanes with little work for vector units.
VEK_INLINE int scalarSum(hn::Vec<FourOf32> v) {
    const auto pairs = hn::BitCast(TwoOf64(), v);
    const int64_t lower = hn::GetLane(pairs);
    const int64_t upper = hn::ExtractLane(pairs, 1);
    return static_cast<int>(lower) + static_cast<int>(lower >> 32) + static_cast<int>(upper) +
           static_cast<int>(upper >> 32);
}

// What each step leaves to the next beside the coefficients.
struct Course {
    const int16_t* r; // the autocorrelation backwards from lag m; before it stands that of the next step
    int m;
    int q;
    hn::Vec<FourOf32> energy; // in each even lane; the others only keep the second quotient a number
    int first;
};

// Coefficients in N registers and the sum of products that the next step begins with.
template <class D, int N>
struct Coefficients {
    using Sums = hn::RepartitionToWide<D>;

    hn::Vec<D> a[N], b[N];
    hn::Vec<D> past; // of one register: what was written just before is not read as a whole, that would wait for it
    hn::Vec<Sums> products;
    hn::Vec<Sums> upper; // the sum of their upper halves

    VEK_INLINE void load(const Levinson& filter, const int16_t* r) {
        const D d;
        const bool none = filter.order == 0;
        for (int g = 0; g < N; ++g) {
            a[g] = none ? hn::Zero(d) : hn::LoadU(d, filter.forward + g * kLanesOf<D>);
            b[g] = none ? hn::Zero(d) : hn::LoadU(d, filter.backward + g * kLanesOf<D>);
        }
        past = none ? hn::Zero(d) : hn::LoadU(d, r);
        multiply(r);
    }
    VEK_INLINE void multiply(const int16_t* r) {
        const D d;
        products = pairSums(a[0], N == 1 ? past : hn::LoadU(d, r));
        upper = hn::ShiftRight<16>(products);
        for (int g = 1; g < N; ++g) {
            const auto more = pairSums(a[g], hn::LoadU(d, r + g * kLanesOf<D>));
            products = products + more;
            upper = upper + hn::ShiftRight<16>(more);
        }
    }
    VEK_INLINE void leave(const Course& course, Levinson& filter) const {
        const D d;
        for (int g = 0; g < N; ++g) {
            hn::StoreU(a[g], d, filter.forward + g * kLanesOf<D>);
            hn::StoreU(b[g], d, filter.backward + g * kLanesOf<D>);
        }
        filter.order = course.m;
        filter.q = course.q;
        filter.energy = hn::GetLane(course.energy);
        filter.first = static_cast<int16_t>(course.first);
    }
};

// Steps up to an order for which the registers suffice; false if they stopped before. Each step waits for the one
// before from the sum of products over the quotient to the reflection. Nothing else is in that chain: the energy stays
// in a register, the sum is formed modulo 2^32, and whether it is exact, the reflection below 1 and no coefficient
// saturated is found beside it.
template <class D, int N>
VEK_INLINE bool steps(Coefficients<D, N>& own, Course& course, int last) {
    using Two = hn::FixedTag<double, 2>;
    constexpr int width = kLanesOf<D>;
    const D d;
    const Two two;
    const TwoOf64 bits;
    const int16_t* only = kOnly.mask + kPredictSpan - course.m;
    hn::Vec<D> shares[N];
    sharesOf<D, N>(own.b, course.q, only, shares);
    // Rounded to the nearest: quotients are 2^-33 or more from where the rounding changes, but for those that lie on
    // it. A divisor less by 2^-51 of itself takes these beyond and no other. In the exponent of a double: 2^(q - 31).
    constexpr int64_t less = 4;
    const auto scaleOf = [=](int format) {
        return hn::Set(bits, static_cast<int64_t>(format - 31) * (int64_t{1} << 52) - less);
    };
    auto scale = scaleOf(course.q);
    // A double of this size ends with the units, and its lowest bits are those of a negative integer too.
    constexpr double units = 0x1.8p52;
    const auto integers = hn::Set(two, units);
    constexpr unsigned mostUpper = 1 << 15;
    const auto timesQ15 = [](auto x, auto y) {
        const hn::RebindToUnsigned<FourOf32> words;
        const auto product = hn::MulEven(hn::BitCast(words, x), hn::BitCast(words, y));
        return hn::BitCast(kFourOf32, hn::ShiftRight<15>(product));
    };
    while (course.m < last) {
        const auto energy = course.energy;
        const int32_t fresh = course.r[-1] * (1 << course.q);
        const auto sum = hn::SumOfLanes(kFourOf32, fourSums(own.products)) + hn::Set(kFourOf32, fresh);
        const auto divisor = hn::BitCast(bits, hn::PromoteTo(two, hn::LowerHalf(energy))) + scale;
        const auto quotient = hn::PromoteTo(two, hn::LowerHalf(sum)) / hn::BitCast(two, divisor);
        const auto reflection = integers - quotient;
        const auto k = firstInAll(d, hn::BitCast(kEightOf16, reflection));
        const auto rounded = hn::BitCast(kFourOf32, reflection);
        const auto magnitude = hn::Abs(rounded);
        const auto left = energy - timesQ15(timesQ15(energy, magnitude), magnitude);
        // No reflection is below 1 of sums from 2^30 on, nor of what is left of them modulo 2^32 up to 3 * 2^30. That
        // they are not beyond is seen in the upper halves; quotients have up to 47 bits.
        const int upper = scalarSum(fourSums(own.upper)) + (fresh >> 16);
        const int64_t reach = hn::GetLane(hn::BitCast(bits, reflection)) - (std::bit_cast<int64_t>(units) - INT16_MAX);
        if (static_cast<unsigned>(upper + mostUpper) > 2 * mostUpper || static_cast<uint64_t>(reach) > 2 * INT16_MAX) {
            return false;
        }
        Reflected<D, N> now;
        for (int g = 0; g < N; ++g) {
            now.a[g] = own.a[g];
            now.b[g] = own.b[g];
        }
        if (!now.by(k, shares)) [[unlikely]] {
            // Of more registers it is left to who has called: these steps would miss those that it takes.
            if constexpr (N <= 2) {
                Reflected<D, N> coarser;
                for (int g = 0; g < N; ++g) {
                    coarser.a[g] = own.a[g];
                    coarser.b[g] = own.b[g];
                }
                const int format = giveWay(coarser, k, course.q, only);
                if (format == 0) {
                    return false;
                }
                for (int g = 0; g < N; ++g) {
                    now.forward[g] = coarser.forward[g];
                    now.backward[g] = coarser.backward[g];
                }
                course.q = format;
                scale = scaleOf(format);
            } else {
                return false;
            }
        }
        auto below = course.q < 15 ? hn::MulFixedPoint15(k, hn::Set(d, static_cast<int16_t>(1 << course.q))) : k;
        if (!kMadeTogether<N> || course.q == 15) {
            for (int g = 0; g < N; ++g) {
                now.forward[g] = now.forward[g] | (below & hn::LoadU(d, only + g * width));
            }
        }
        for (int g = 0; g < N; ++g) {
            own.a[g] = now.forward[g];
            own.b[g] = shiftIn(now.backward[g], below);
            below = now.backward[g];
        }
        course.energy = left;
        course.first = course.m == 0 ? hn::GetLane(rounded) : course.first;
        ++course.m;
        --course.r;
        --only;
        sharesOf<D, N>(own.b, course.q, only, shares);
        if constexpr (N == 1) {
            own.past = shiftIn(own.past, hn::Set(d, *course.r));
        }
        own.multiply(course.r);
    }
    return true;
}

VEK_INLINE Course courseOf(const Levinson& filter, const int16_t* rBack, int order) {
    return {rBack + order - filter.order, filter.order, filter.q, hn::Set(kFourOf32, filter.energy), filter.first};
}

// The steps of N registers; false if they stopped before the order and before those registers were full.
template <class D, int N>
bool recurseWithin(Levinson& filter, const int16_t* rBack, int order) {
    constexpr int reach = N * kLanesOf<D>;
    if (filter.order >= reach) {
        return true;
    }
    Course course = courseOf(filter, rBack, order);
    Coefficients<D, N> own;
    own.load(filter, course.r);
    const bool goes = steps(own, course, order < reach ? order : reach);
    own.leave(course, filter);
    return goes;
}

// Two registers of 128 bits before longer ones: the ways through these, from lane to lane, are shorter. The first one
// hands over without a way through memory.
bool recurseShort(Levinson& filter, const int16_t* rBack, int order) {
    constexpr int reach = kLanesOf<EightOf16>;
    if (filter.order >= reach) {
        return recurseWithin<EightOf16, 2>(filter, rBack, order);
    }
    Course course = courseOf(filter, rBack, order);
    Coefficients<EightOf16, 1> few;
    few.load(filter, course.r);
    if (!steps(few, course, order < reach ? order : reach) || course.m == order) {
        few.leave(course, filter);
        return course.m == order;
    }
    Coefficients<EightOf16, 2> own;
    own.a[0] = few.a[0];
    own.b[0] = few.b[0];
    own.a[1] = own.b[1] = hn::Zero(kEightOf16);
    own.products = few.products;
    own.upper = few.upper;
    const bool goes = steps(own, course, order < 2 * reach ? order : 2 * reach);
    own.leave(course, filter);
    return goes;
}

template <class D, int N>
void recurseFrom(Levinson& filter, const int16_t* rBack, int order) {
    if (filter.order < order && recurseWithin<D, N>(filter, rBack, order)) {
        if constexpr (N * kLanesOf<D> < kPredictSpan) {
            recurseFrom<D, N + 1>(filter, rBack, order);
        }
    }
}

void recurse(Levinson& filter, const int16_t* rBack, int order) {
    // Reflections below 1 leave some of what energy there is.
    if (filter.energy > 0 && recurseShort(filter, rBack, order)) {
        recurseFrom<D16, 2>(filter, rBack, order);
    }
}

#endif

} // namespace

VEK_KERNEL_TABLE(G728RecursionKernels, g728RecursionKernels) = {recurse};

} // namespace vek
