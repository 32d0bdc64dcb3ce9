// Levinson's recursion of G.728: a step in integers, or as registers of coefficients.
#include "sc/kernels/g728recursion.h"

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

// The steps of the recursion for whose coefficients N registers suffice; false if it stopped before. Each step waits
// for the one before from the sum of products over the quotient to the reflection. Nothing else is in that chain: the
// energy stays in a register, the sum is formed modulo 2^32, and whether it is exact, below the energy and without
// saturation is found beside it.
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

#endif

} // namespace

VEK_KERNEL_TABLE(G728RecursionKernels, g728RecursionKernels) = {recurse};

} // namespace vek
