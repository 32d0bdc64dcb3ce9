// The registers of the level that is compiled, by Highway's names: one body of a kernel for 128, 256 and 512 bits. And
// what several kernels make of these operations. Only for the files k_*.cpp, above the plain level.
//
// hn::LoadU(d16, p) loads as many 16-bit lanes as a register has, hn::LoadU(kEightOf16, p) eight at each level; sums,
// differences and products of lanes are the operators of a register's type. Nothing may hang on hn::MulAdd, which
// rounds once at 512 bits and twice below, nor on hn::FirstN, which at 512 bits wants instructions that are not asked
// for, nor on hn::Iota, which without optimisation is a function that levels share.
#pragma once

#include <cstdint>

#include "sc/common/level_ns.h"

namespace vek::registers {
inline namespace VEK_LEVEL_NS {

// step(0) to step(n - 1) one by one: spread over registers, loops of a few elements would take longer. What has them
// stands apart from kernels of registers, which would have to save its words' registers and to align their stack.
template <class Step>
VEK_INLINE void oneByOne(int n, Step step) {
    for (int i = 0; i < n; ++i) {
        __asm__("" : "+r"(i));
        step(i);
    }
}

} // namespace VEK_LEVEL_NS
} // namespace vek::registers

#if VEK_LEVEL > 0

// The level's flags say which instructions there are. Highway would add some to each function that it declares: without
// its attributes a level keeps to its own, and 128 bits do without the one comparison that came later than the rest.
#define HWY_WANT_SSE4 1
#define HWY_DISABLE_PCLMUL_AES
#define HWY_DISABLE_BMI2_FMA
#define HWY_DISABLE_F16C
#define HWY_COMPILE_ONLY_STATIC
// Its assertions would want its library.
#define HWY_IS_DEBUG_BUILD 0
#include <hwy/base.h>
#undef HWY_PUSH_ATTRIBUTES
#undef HWY_POP_ATTRIBUTES
#define HWY_PUSH_ATTRIBUTES(instructions)
#define HWY_POP_ATTRIBUTES
#include <hwy/highway.h>

namespace vek::registers {
inline namespace VEK_LEVEL_NS {

namespace hn = hwy::HWY_NAMESPACE;

static_assert(HWY_MAX_BYTES == 8 << VEK_LEVEL, "the level's flags give its registers");

template <class D>
inline constexpr int kLanesOf = static_cast<int>(hn::MaxLanes(D()));

using D16 = hn::ScalableTag<int16_t>;
using EightOf16 = hn::FixedTag<int16_t, 8>;
// What codecs run over ten to sixty elements goes by 256 bits at the most.
using Short16 = hn::CappedTag<int16_t, 16>;
using FourOf32 = hn::FixedTag<int32_t, 4>;

inline constexpr D16 d16;
inline constexpr EightOf16 kEightOf16;
inline constexpr FourOf32 kFourOf32;

// The sum and the products of 16-bit lanes, two neighbouring ones added in one of 32 bits.
template <class V32, class V16>
VEK_INLINE V32 plusPairs(V32 sum, V16 a, V16 b) {
    V32 none = hn::Zero(hn::DFromV<V32>());
    return hn::ReorderWidenMulAccumulate(hn::DFromV<V32>(), a, b, sum, none);
}

template <class V16>
VEK_INLINE auto pairSums(V16 a, V16 b) {
    return plusPairs(hn::Zero(hn::RepartitionToWide<hn::DFromV<V16>>()), a, b);
}

// The sum of 64-bit lanes and of 32-bit ones, of which there are twice as many.
template <class V64, class V32>
VEK_INLINE V64 plusWide(V64 sum, V32 more) {
    const hn::DFromV<V64> d;
    sum = sum + hn::PromoteTo(d, hn::LowerHalf(more));
    return sum + hn::PromoteTo(d, hn::UpperHalf(hn::Half<hn::DFromV<V32>>(), more));
}

// The sum of 64-bit lanes.
template <class V64>
VEK_INLINE int64_t total(V64 sum) {
    return hn::GetLane(hn::SumOfLanes(hn::DFromV<V64>(), sum));
}

// (a * b) >> 15 of 16-bit lanes; two of -32768 give -32768.
template <class V16>
VEK_INLINE V16 multCut(V16 a, V16 b) {
    const hn::DFromV<V16> d;
    const hn::RebindToUnsigned<hn::DFromV<V16>> bits;
    const auto upper = hn::ShiftLeft<1>(hn::MulHigh(a, b));
    return upper | hn::BitCast(d, hn::ShiftRight<15>(hn::BitCast(bits, a * b)));
}

// (a * b + half) >> q of 16-bit lanes by way of 32 bits, saturated.
template <class V16>
VEK_INLINE V16 multShifted(V16 a, V16 b, int half, int q) {
    const hn::DFromV<V16> d;
    const hn::RepartitionToWide<hn::DFromV<V16>> wide;
    const auto rounding = hn::Set(wide, half);
    const auto low = a * b;
    const auto high = hn::MulHigh(a, b);
    const auto lower = hn::BitCast(wide, hn::InterleaveLower(d, low, high)) + rounding;
    const auto upper = hn::BitCast(wide, hn::InterleaveUpper(d, low, high)) + rounding;
    return hn::ReorderDemote2To(d, hn::ShiftRightSame(lower, q), hn::ShiftRightSame(upper, q));
}

// The first lanes of eight registers that `next` gives one after the other.
template <class Next>
VEK_INLINE hn::Vec<EightOf16> firstLanes(Next next) {
    const hn::FixedTag<int64_t, 2> d64;
    const auto four = [&] {
        const auto v0 = next();
        const auto v1 = next();
        const auto v2 = next();
        const auto v3 = next();
        return hn::BitCast(d64, hn::InterleaveLower(kFourOf32, hn::BitCast(kFourOf32, hn::InterleaveLower(v0, v1)),
                                                    hn::BitCast(kFourOf32, hn::InterleaveLower(v2, v3))));
    };
    const auto lower = four();
    return hn::BitCast(kEightOf16, hn::InterleaveLower(d64, lower, four()));
}

// Of eight lanes the sums of the lower and the upper ones; four are left as they are.
template <class V>
VEK_INLINE auto fourSums(V v) {
    if constexpr (kLanesOf < hn::DFromV < V >>> 4) {
        return hn::LowerHalf(v) + hn::UpperHalf(hn::Half<hn::DFromV<V>>(), v);
    } else {
        return v;
    }
}

// The lanes in the opposite order.
template <class D>
VEK_INLINE hn::Vec<D> reversed(D d, hn::Vec<D> v) {
    if constexpr (kLanesOf<D> == 8 && sizeof(hn::TFromD<D>) == 2) {
        // One shuffle of bytes, where hn::Reverse takes three steps.
        alignas(16) static constexpr uint8_t last[16] = {14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1};
        const hn::Repartition<uint8_t, D> bytes;
        return hn::BitCast(d, hn::TableLookupBytes(hn::BitCast(bytes, v), hn::Load(bytes, last)));
    } else {
        return hn::Reverse(d, v);
    }
}

// What fillBy takes at least: 128 bits.
template <class T>
inline constexpr int kLeastFill = 16 / sizeof(T);

// What fillBy does for less than two registers of `d`.
template <class D, class Make>
VEK_INLINE void fillFewBy(D d, hn::TFromD<D>* y, int n, Make make) {
    constexpr int lanes = kLanesOf<D>;
    if constexpr (lanes > kLeastFill<hn::TFromD<D>>) {
        // The straight way is that of ten, the order of most codecs' prediction.
        constexpr bool tenAreFew = lanes > 10;
        if (__builtin_expect(n < lanes, tenAreFew)) {
            fillFewBy(hn::Half<D>(), y, n, make);
            return;
        }
    }
    const hn::Vec<D> first = make(d, 0);
    const hn::Vec<D> last = make(d, n - lanes);
    hn::StoreU(first, d, y);
    hn::StoreU(last, d, y + n - lanes);
}

// y[i] = make(d, i), as many at once as `d` has lanes, or 128 bits, which there are. The last register overlaps the one
// before, and is made first, since y may be a source.
template <class D, class Make>
VEK_INLINE void fillBy(D d, hn::TFromD<D>* y, int n, Make make) {
    constexpr int lanes = kLanesOf<D>;
    if (n <= 2 * lanes) {
        fillFewBy(d, y, n, make);
        return;
    }
    const int end = n - lanes;
    const hn::Vec<D> last = make(d, end);
    for (int i = 0; i < end; i += lanes) {
        hn::StoreU(make(d, i), d, y + i);
    }
    hn::StoreU(last, d, y + end);
}

// 16 bits made of sums that firstly belong to the lower and secondly to the upper halves of blocks of eight, saturated.
template <class D, class V32>
VEK_INLINE void storeSaturated(D d, int16_t* p, V32 lower, V32 upper) {
    hn::StoreU(hn::ReorderDemote2To(d, lower, upper), d, p);
}

alignas(64) inline constexpr int32_t kCounting[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

// The least of what each lane sees, and the number that stood with it: of equal ones the first. D has 32-bit lanes,
// with a sign or without.
template <class D>
class LeastOfLanes {
public:
    VEK_INLINE LeastOfLanes() : m_least(hn::Set(D(), hwy::LimitsMax<hn::TFromD<D>>())), m_number(hn::Zero(D())) {}

    VEK_INLINE void see(hn::Vec<D> values, hn::Vec<D> numbers) {
        const auto lower = hn::Min(m_least, values);
        m_number = hn::IfThenElse(hn::Eq(lower, m_least), m_number, numbers);
        m_least = lower;
    }

    // Between the lanes, of equal ones the least number.
    VEK_INLINE int settle(hn::TFromD<D>* least) const {
        hn::TFromD<D> values[kLanesOf<D>];
        hn::TFromD<D> numbers[kLanesOf<D>];
        hn::StoreU(m_least, D(), values);
        hn::StoreU(m_number, D(), numbers);
        int at = 0;
        for (int i = 1; i < kLanesOf<D>; ++i) {
            if (values[i] < values[at] || (values[i] == values[at] && numbers[i] < numbers[at])) {
                at = i;
            }
        }
        *least = values[at];
        return static_cast<int>(numbers[at]);
    }

private:
    hn::Vec<D> m_least;
    hn::Vec<D> m_number;
};

} // namespace VEK_LEVEL_NS
} // namespace vek::registers

#endif
