// Four or eight numbers at a time: plain words, or one or two of the level's registers, whichever hold them. What
// transforms make of them: products in Q30 (1.0 = 2^30), opposite orders, pairs of 16-bit numbers, transpositions.
// Only for the files k_*.cpp. All levels give the same bits; of floats each operation is one rounded step of each lane.
#pragma once

#include <type_traits>

#include "sc/kernels/registers.h"

namespace vek::numbers {
inline namespace VEK_LEVEL_NS {

#if VEK_LEVEL == 0

template <class T, int N>
struct Numbers {
    T v[N];
};

#else

using namespace registers;

// Numbers that two registers hold.
template <class V>
struct Two {
    V lo, hi;
};

template <class T, int N>
using Part = hn::CappedTag<T, N>;

template <class T, int N>
inline constexpr bool kInOne = kLanesOf<Part<T, N>> == N;

template <class T, int N>
using Numbers = std::conditional_t<kInOne<T, N>, hn::Vec<Part<T, N>>, Two<hn::Vec<Part<T, N>>>>;

#endif

using V8 = Numbers<int32_t, 8>;
using F8 = Numbers<float, 8>;
using D4 = Numbers<double, 4>;

#if VEK_LEVEL == 0

template <int N = 8, class T>
VEK_INLINE Numbers<T, N> load(const T* p) {
    Numbers<T, N> a;
    for (int i = 0; i < N; ++i) {
        a.v[i] = p[i];
    }
    return a;
}
template <class T, int N>
VEK_INLINE void store(T* p, Numbers<T, N> a) {
    for (int i = 0; i < N; ++i) {
        p[i] = a.v[i];
    }
}
template <int N = 8, class T>
VEK_INLINE Numbers<T, N> set1(T x) {
    Numbers<T, N> a;
    for (T& v : a.v) {
        v = x;
    }
    return a;
}
template <class T, int N>
VEK_INLINE Numbers<T, N> operator+(Numbers<T, N> a, Numbers<T, N> b) {
    for (int i = 0; i < N; ++i) {
        a.v[i] += b.v[i];
    }
    return a;
}
template <class T, int N>
VEK_INLINE Numbers<T, N> operator-(Numbers<T, N> a, Numbers<T, N> b) {
    for (int i = 0; i < N; ++i) {
        a.v[i] -= b.v[i];
    }
    return a;
}
template <class T, int N>
VEK_INLINE Numbers<T, N> operator*(Numbers<T, N> a, Numbers<T, N> b) {
    for (int i = 0; i < N; ++i) {
        a.v[i] *= b.v[i];
    }
    return a;
}
VEK_INLINE V8 mulSum(V8 a, V8 wa, V8 b, V8 wb) {
    for (int i = 0; i < 8; ++i) {
        const int64_t s = static_cast<int64_t>(a.v[i]) * wa.v[i] + static_cast<int64_t>(b.v[i]) * wb.v[i];
        a.v[i] = static_cast<int32_t>((s + (1 << 29)) >> 30);
    }
    return a;
}
VEK_INLINE V8 mulDiff(V8 a, V8 wa, V8 b, V8 wb) {
    for (int i = 0; i < 8; ++i) {
        const int64_t s = static_cast<int64_t>(a.v[i]) * wa.v[i] - static_cast<int64_t>(b.v[i]) * wb.v[i];
        a.v[i] = static_cast<int32_t>((s + (1 << 29)) >> 30);
    }
    return a;
}
VEK_INLINE V8 mul(V8 a, V8 w) {
    for (int i = 0; i < 8; ++i) {
        a.v[i] = static_cast<int32_t>((static_cast<int64_t>(a.v[i]) * w.v[i] + (1 << 29)) >> 30);
    }
    return a;
}
template <int Bits>
VEK_INLINE V8 shiftLeft(V8 a) {
    for (int32_t& v : a.v) {
        v *= 1 << Bits;
    }
    return a;
}
template <int Bits>
VEK_INLINE V8 shiftRightRounded(V8 a) {
    for (int32_t& v : a.v) {
        v = (v + (1 << (Bits - 1))) >> Bits;
    }
    return a;
}
VEK_INLINE F8 toFloat(V8 a) {
    F8 r;
    for (int i = 0; i < 8; ++i) {
        r.v[i] = static_cast<float>(a.v[i]);
    }
    return r;
}
// To the nearest integer, halves to the even one; of magnitudes below 2^22.
VEK_INLINE V8 toInt(F8 a) {
    V8 r;
    for (int i = 0; i < 8; ++i) {
        r.v[i] = static_cast<int32_t>(__builtin_lrintf(a.v[i]));
    }
    return r;
}
// The same of twice four numbers, saturated.
VEK_INLINE V8 toInt(D4 a, D4 b) {
    V8 r;
    for (int i = 0; i < 8; ++i) {
        const double x = i < 4 ? a.v[i] : b.v[i - 4];
        r.v[i] = static_cast<int32_t>(__builtin_lrint(x > INT32_MAX ? INT32_MAX : x < INT32_MIN ? INT32_MIN : x));
    }
    return r;
}
template <class T, int N>
VEK_INLINE Numbers<T, N> reverse(Numbers<T, N> a) {
    Numbers<T, N> r;
    for (int i = 0; i < N; ++i) {
        r.v[i] = a.v[N - 1 - i];
    }
    return r;
}
// The first one of `first`, and behind it all but the first one of `a` from the last on.
template <class T, int N>
VEK_INLINE Numbers<T, N> mirrored(Numbers<T, N> a, Numbers<T, N> first) {
    for (int i = 1; i < N; ++i) {
        first.v[i] = a.v[N - i];
    }
    return first;
}
// The lower halves of both.
VEK_INLINE V8 joinLower(V8 a, V8 b) {
    for (int i = 0; i < 4; ++i) {
        a.v[4 + i] = b.v[i];
    }
    return a;
}
VEK_INLINE F8 swapHalves(F8 a) {
    return {{a.v[4], a.v[5], a.v[6], a.v[7], a.v[0], a.v[1], a.v[2], a.v[3]}};
}
// Neighbours, and neighbouring pairs, in each other's place.
VEK_INLINE F8 swapOnes(F8 a) {
    return {{a.v[1], a.v[0], a.v[3], a.v[2], a.v[5], a.v[4], a.v[7], a.v[6]}};
}
VEK_INLINE F8 swapPairs(F8 a) {
    return {{a.v[2], a.v[3], a.v[0], a.v[1], a.v[6], a.v[7], a.v[4], a.v[5]}};
}
// x where a is above b, elsewhere y.
VEK_INLINE F8 choose(F8 a, F8 b, F8 x, F8 y) {
    for (int i = 0; i < 8; ++i) {
        y.v[i] = a.v[i] > b.v[i] ? x.v[i] : y.v[i];
    }
    return y;
}
// Of eight times three numbers in each half, those of the lower and those of the upper halves without gaps.
VEK_INLINE void joinTriples(const F8 (&x)[8], F8 (&lower)[3], F8 (&upper)[3]) {
    for (int i = 0; i < 24; ++i) {
        lower[i / 8].v[i % 8] = x[i / 3].v[i % 3];
        upper[i / 8].v[i % 8] = x[i / 3].v[4 + i % 3];
    }
}
// The even and the odd ones of twice as many numbers, and the way back.
template <class T, int N>
VEK_INLINE void loadSplit(const T* p, Numbers<T, N>& even, Numbers<T, N>& odd) {
    for (int i = 0; i < N; ++i) {
        even.v[i] = p[2 * i];
        odd.v[i] = p[2 * i + 1];
    }
}
template <class T, int N>
VEK_INLINE void storeMerged(T* p, Numbers<T, N> even, Numbers<T, N> odd) {
    for (int i = 0; i < N; ++i) {
        p[2 * i] = even.v[i];
        p[2 * i + 1] = odd.v[i];
    }
}
// Eight pairs of 16-bit numbers, split into the even and the odd ones.
VEK_INLINE void loadPairs(const int16_t* p, V8& even, V8& odd) {
    for (int i = 0; i < 8; ++i) {
        even.v[i] = p[2 * i];
        odd.v[i] = p[2 * i + 1];
    }
}
// The same from the last pair to the first.
VEK_INLINE void loadPairsReversed(const int16_t* p, V8& even, V8& odd) {
    loadPairs(p, even, odd);
    even = reverse(even);
    odd = reverse(odd);
}
// The way back, saturated.
VEK_INLINE int16_t narrowed(int32_t x) {
    return static_cast<int16_t>(x > 32767 ? 32767 : x < -32768 ? -32768 : x);
}
VEK_INLINE void storeNarrowed(int16_t* p, V8 a) {
    for (int i = 0; i < 8; ++i) {
        p[i] = narrowed(a.v[i]);
    }
}
VEK_INLINE void storePairs(int16_t* p, V8 even, V8 odd) {
    for (int i = 0; i < 8; ++i) {
        p[2 * i] = narrowed(even.v[i]);
        p[2 * i + 1] = narrowed(odd.v[i]);
    }
}
// Four pairs of the upper and the lower half.
VEK_INLINE void storeHalfPairs(int16_t* p, V8 a) {
    for (int i = 0; i < 4; ++i) {
        p[2 * i] = narrowed(a.v[4 + i]);
        p[2 * i + 1] = narrowed(a.v[i]);
    }
}
template <class T>
VEK_INLINE void exchange(T& a, T& b) {
    const T t = a;
    a = b;
    b = t;
}
template <class T>
VEK_INLINE void transpose(Numbers<T, 8> (&r)[8]) {
    for (int i = 0; i < 8; ++i) {
        for (int k = i + 1; k < 8; ++k) {
            exchange(r[i].v[k], r[k].v[i]);
        }
    }
}
template <class T>
VEK_INLINE void transpose(Numbers<T, 4>& a, Numbers<T, 4>& b, Numbers<T, 4>& c, Numbers<T, 4>& d) {
    exchange(a.v[1], b.v[0]);
    exchange(a.v[2], c.v[0]);
    exchange(a.v[3], d.v[0]);
    exchange(b.v[2], c.v[1]);
    exchange(b.v[3], d.v[1]);
    exchange(c.v[3], d.v[2]);
}

#else

template <int N = 8, class T>
VEK_INLINE Numbers<T, N> load(const T* p) {
    const Part<T, N> d;
    if constexpr (kInOne<T, N>) {
        return hn::LoadU(d, p);
    } else {
        return {hn::LoadU(d, p), hn::LoadU(d, p + kLanesOf<Part<T, N>>)};
    }
}
template <class T, class V>
VEK_INLINE void store(T* p, V a) {
    hn::StoreU(a, hn::DFromV<V>(), p);
}
template <class T, class V>
VEK_INLINE void store(T* p, Two<V> a) {
    store(p, a.lo);
    store(p + kLanesOf<hn::DFromV<V>>, a.hi);
}
template <int N = 8, class T>
VEK_INLINE Numbers<T, N> set1(T x) {
    const auto v = hn::Set(Part<T, N>(), x);
    if constexpr (kInOne<T, N>) {
        return v;
    } else {
        return {v, v};
    }
}
template <class V>
VEK_INLINE Two<V> operator+(Two<V> a, Two<V> b) {
    return {a.lo + b.lo, a.hi + b.hi};
}
template <class V>
VEK_INLINE Two<V> operator-(Two<V> a, Two<V> b) {
    return {a.lo - b.lo, a.hi - b.hi};
}
template <class V>
VEK_INLINE Two<V> operator*(Two<V> a, Two<V> b) {
    return {a.lo * b.lo, a.hi * b.hi};
}

// 64-bit products of the odd lanes.
template <class V>
VEK_INLINE auto mulOdd(V a, V b) {
    const hn::DFromV<V> d;
    const hn::Repartition<uint64_t, hn::DFromV<V>> pairs;
    return hn::MulEven(hn::BitCast(d, hn::ShiftRight<32>(hn::BitCast(pairs, a))),
                       hn::BitCast(d, hn::ShiftRight<32>(hn::BitCast(pairs, b))));
}
// Bits 30..61 of the 64-bit sums of the even and the odd lanes, rounded.
template <class V>
VEK_INLINE auto join(V even, V odd) {
    const hn::DFromV<V> d;
    const hn::RebindToUnsigned<hn::DFromV<V>> bits;
    const hn::RepartitionToNarrow<hn::DFromV<V>> lanes;
    const auto half = hn::Set(d, int64_t{1} << 29);
    return hn::OddEven(hn::BitCast(lanes, hn::ShiftLeft<2>(odd + half)),
                       hn::BitCast(lanes, hn::ShiftRight<30>(hn::BitCast(bits, even + half))));
}
template <class V>
VEK_INLINE V mulSum(V a, V wa, V b, V wb) {
    return join(hn::MulEven(a, wa) + hn::MulEven(b, wb), mulOdd(a, wa) + mulOdd(b, wb));
}
template <class V>
VEK_INLINE Two<V> mulSum(Two<V> a, Two<V> wa, Two<V> b, Two<V> wb) {
    return {mulSum(a.lo, wa.lo, b.lo, wb.lo), mulSum(a.hi, wa.hi, b.hi, wb.hi)};
}
template <class V>
VEK_INLINE V mulDiff(V a, V wa, V b, V wb) {
    return join(hn::MulEven(a, wa) - hn::MulEven(b, wb), mulOdd(a, wa) - mulOdd(b, wb));
}
template <class V>
VEK_INLINE Two<V> mulDiff(Two<V> a, Two<V> wa, Two<V> b, Two<V> wb) {
    return {mulDiff(a.lo, wa.lo, b.lo, wb.lo), mulDiff(a.hi, wa.hi, b.hi, wb.hi)};
}
template <class V>
VEK_INLINE V mul(V a, V w) {
    return join(hn::MulEven(a, w), mulOdd(a, w));
}
template <class V>
VEK_INLINE Two<V> mul(Two<V> a, Two<V> w) {
    return {mul(a.lo, w.lo), mul(a.hi, w.hi)};
}
template <int Bits, class V>
VEK_INLINE V shiftLeft(V a) {
    return hn::ShiftLeft<Bits>(a);
}
template <int Bits, class V>
VEK_INLINE Two<V> shiftLeft(Two<V> a) {
    return {hn::ShiftLeft<Bits>(a.lo), hn::ShiftLeft<Bits>(a.hi)};
}
template <int Bits, class V>
VEK_INLINE V shiftRightRounded(V a) {
    return hn::ShiftRight<Bits>(a + hn::Set(hn::DFromV<V>(), 1 << (Bits - 1)));
}
template <int Bits, class V>
VEK_INLINE Two<V> shiftRightRounded(Two<V> a) {
    return {shiftRightRounded<Bits>(a.lo), shiftRightRounded<Bits>(a.hi)};
}

template <class V>
VEK_INLINE auto toFloat(V a) {
    return hn::ConvertTo(hn::Rebind<float, hn::DFromV<V>>(), a);
}
template <class V>
VEK_INLINE F8 toFloat(Two<V> a) {
    return {toFloat(a.lo), toFloat(a.hi)};
}
// At 1.5 * 2^23 the last bit of a float counts ones; hn::NearestInt spends more on what integers do not hold.
template <class V>
VEK_INLINE auto toInt(V a) {
    const hn::RebindToSigned<hn::DFromV<V>> d;
    const auto ones = hn::Set(hn::DFromV<V>(), 12582912.0F);
    return hn::BitCast(d, a + ones) - hn::BitCast(d, ones);
}
template <class V>
VEK_INLINE V8 toInt(Two<V> a) {
    return {toInt(a.lo), toInt(a.hi)};
}

template <class V>
VEK_INLINE V toOnes(V a) {
    const hn::DFromV<V> d;
    return hn::Min(hn::Max(a, hn::Set(d, double{INT32_MIN})), hn::Set(d, double{INT32_MAX})) + hn::Set(d, 0x1.8p52);
}
template <class V>
VEK_INLINE auto toInt(V a, V b) {
    const hn::Repartition<int32_t, hn::DFromV<V>> d;
    return hn::ConcatEven(d, hn::BitCast(d, toOnes(b)), hn::BitCast(d, toOnes(a)));
}
template <class V>
VEK_INLINE V8 toInt(Two<V> a, Two<V> b) {
    return {toInt(a.lo, a.hi), toInt(b.lo, b.hi)};
}

template <class V>
VEK_INLINE V reverse(V a) {
    return hn::Reverse(hn::DFromV<V>(), a);
}
template <class V>
VEK_INLINE Two<V> reverse(Two<V> a) {
    return {reverse(a.hi), reverse(a.lo)};
}
// Of four in halves the odd ones change places; others move down by one first.
template <class V>
VEK_INLINE V mirrored(V a, V first) {
    const hn::DFromV<V> d;
    if constexpr (sizeof(V) == 16) {
        return reverse(hn::CombineShiftRightLanes<1>(d, first, a));
    } else if constexpr (kLanesOf<hn::DFromV<V>> == 4) {
        return hn::OddEven(hn::SwapAdjacentBlocks(a), hn::ConcatUpperLower(d, a, first));
    } else {
        return reverse(hn::CombineShiftRightLanes<1>(d, hn::ConcatLowerUpper(d, first, a), a));
    }
}
template <class V>
VEK_INLINE Two<V> mirrored(Two<V> a, Two<V> first) {
    const hn::DFromV<V> d;
    if constexpr (kLanesOf<hn::DFromV<V>> == 2) {
        return {hn::OddEven(a.hi, first.lo), hn::OddEven(a.lo, a.hi)};
    } else {
        return {mirrored(a.hi, first.lo), reverse(hn::CombineShiftRightLanes<1>(d, a.hi, a.lo))};
    }
}

// The halves of eight 32-bit or four 64-bit numbers.
template <class V>
VEK_INLINE auto lowerHalf(V a) {
    return hn::LowerHalf(hn::Half<hn::DFromV<V>>(), a);
}
template <class V>
VEK_INLINE V lowerHalf(Two<V> a) {
    return a.lo;
}
template <class V>
VEK_INLINE auto upperHalf(V a) {
    return hn::UpperHalf(hn::Half<hn::DFromV<V>>(), a);
}
template <class V>
VEK_INLINE V upperHalf(Two<V> a) {
    return a.hi;
}
template <class V>
VEK_INLINE V joinLower(V a, V b) {
    return hn::ConcatLowerLower(hn::DFromV<V>(), b, a);
}
template <class V>
VEK_INLINE Two<V> joinLower(Two<V> a, Two<V> b) {
    return {a.lo, b.lo};
}
template <class V>
VEK_INLINE V joinUpper(V a, V b) {
    return hn::ConcatUpperUpper(hn::DFromV<V>(), b, a);
}
template <class V>
VEK_INLINE Two<V> joinUpper(Two<V> a, Two<V> b) {
    return {a.hi, b.hi};
}
template <class V>
VEK_INLINE V swapHalves(V a) {
    return hn::SwapAdjacentBlocks(a);
}
template <class V>
VEK_INLINE Two<V> swapHalves(Two<V> a) {
    return {a.hi, a.lo};
}
template <class V>
VEK_INLINE V swapOnes(V a) {
    return hn::Shuffle2301(a);
}
template <class V>
VEK_INLINE Two<V> swapOnes(Two<V> a) {
    return {swapOnes(a.lo), swapOnes(a.hi)};
}
template <class V>
VEK_INLINE V swapPairs(V a) {
    return hn::Shuffle1032(a);
}
template <class V>
VEK_INLINE Two<V> swapPairs(Two<V> a) {
    return {swapPairs(a.lo), swapPairs(a.hi)};
}
template <class V>
VEK_INLINE V choose(V a, V b, V x, V y) {
    return hn::IfThenElse(a > b, x, y);
}
template <class V>
VEK_INLINE Two<V> choose(Two<V> a, Two<V> b, Two<V> x, Two<V> y) {
    return {choose(a.lo, b.lo, x.lo, y.lo), choose(a.hi, b.hi, x.hi, y.hi)};
}
// Within each 128 bits three registers of four times three numbers.
template <class V>
VEK_INLINE void joinTriples(V a, V b, V c, V d, V (&joined)[3]) {
    const hn::DFromV<V> lanes;
    const hn::RepartitionToWide<hn::DFromV<V>> pairs;
    const auto endOfB = hn::BitCast(pairs, hn::ShiftRightLanes<1>(lanes, b));
    joined[0] = hn::CombineShiftRightLanes<1>(lanes, b, hn::ShiftLeftLanes<1>(lanes, a));
    joined[1] = hn::BitCast(lanes, hn::InterleaveLower(pairs, endOfB, hn::BitCast(pairs, c)));
    joined[2] = hn::CombineShiftRightLanes<3>(lanes, d, hn::ShiftLeftLanes<1>(lanes, c));
}
template <class V>
VEK_INLINE void joinTriples(Two<V> a, Two<V> b, Two<V> c, Two<V> d, Two<V> (&joined)[3]) {
    V lo[3];
    V hi[3];
    joinTriples(a.lo, b.lo, c.lo, d.lo, lo);
    joinTriples(a.hi, b.hi, c.hi, d.hi, hi);
    joined[0] = {lo[0], hi[0]};
    joined[1] = {lo[1], hi[1]};
    joined[2] = {lo[2], hi[2]};
}
VEK_INLINE void joinTriples(const F8 (&x)[8], F8 (&lower)[3], F8 (&upper)[3]) {
    F8 first[3];
    F8 second[3];
    joinTriples(x[0], x[1], x[2], x[3], first);
    joinTriples(x[4], x[5], x[6], x[7], second);
    lower[0] = joinLower(first[0], first[1]);
    lower[1] = joinLower(first[2], second[0]);
    lower[2] = joinLower(second[1], second[2]);
    upper[0] = joinUpper(first[0], first[1]);
    upper[1] = joinUpper(first[2], second[0]);
    upper[2] = joinUpper(second[1], second[2]);
}

template <class T, class V>
VEK_INLINE void loadSplit(const T* p, V& even, V& odd) {
    hn::LoadInterleaved2(hn::DFromV<V>(), p, even, odd);
}
template <class T, class V>
VEK_INLINE void loadSplit(const T* p, Two<V>& even, Two<V>& odd) {
    loadSplit(p, even.lo, odd.lo);
    loadSplit(p + 2 * kLanesOf<hn::DFromV<V>>, even.hi, odd.hi);
}
template <class T, class V>
VEK_INLINE void storeMerged(T* p, V even, V odd) {
    hn::StoreInterleaved2(even, odd, hn::DFromV<V>(), p);
}
template <class T, class V>
VEK_INLINE void storeMerged(T* p, Two<V> even, Two<V> odd) {
    storeMerged(p, even.lo, odd.lo);
    storeMerged(p + 2 * kLanesOf<hn::DFromV<V>>, even.hi, odd.hi);
}

VEK_INLINE V8 loadWords(const int16_t* p) {
    return load(reinterpret_cast<const int32_t*>(p));
}
template <class V>
VEK_INLINE void splitPairs(V words, V& even, V& odd) {
    even = hn::ShiftRight<16>(hn::ShiftLeft<16>(words));
    odd = hn::ShiftRight<16>(words);
}
template <class V>
VEK_INLINE void splitPairs(Two<V> words, Two<V>& even, Two<V>& odd) {
    splitPairs(words.lo, even.lo, odd.lo);
    splitPairs(words.hi, even.hi, odd.hi);
}
VEK_INLINE void loadPairs(const int16_t* p, V8& even, V8& odd) {
    splitPairs(loadWords(p), even, odd);
}
VEK_INLINE void loadPairsReversed(const int16_t* p, V8& even, V8& odd) {
    splitPairs(reverse(loadWords(p)), even, odd);
}
VEK_INLINE auto narrowed(V8 a) {
    return hn::ReorderDemote2To(kEightOf16, lowerHalf(a), upperHalf(a));
}
VEK_INLINE void storeNarrowed(int16_t* p, V8 a) {
    hn::StoreU(narrowed(a), kEightOf16, p);
}
template <class V>
VEK_INLINE void storePairs(int16_t* p, V even, V odd) {
    const hn::DFromV<V> words;
    const hn::RepartitionToNarrow<hn::DFromV<V>> d;
    const auto packed = hn::ReorderDemote2To(d, even, odd); // four of each in each half
    const auto swapped = hn::BitCast(d, hn::Shuffle1032(hn::BitCast(words, packed)));
    hn::StoreU(hn::InterleaveLower(d, packed, swapped), d, p);
}
template <class V>
VEK_INLINE void storePairs(int16_t* p, Two<V> even, Two<V> odd) {
    hn::StoreInterleaved2(narrowed(even), narrowed(odd), kEightOf16, p);
}
VEK_INLINE void storeHalfPairs(int16_t* p, V8 a) {
    const auto packed = narrowed(a);
    const auto upper = hn::ShiftRightBytes<8>(kEightOf16, packed);
    hn::StoreU(hn::InterleaveLower(kEightOf16, upper, packed), kEightOf16, p);
}

// Within each 128 bits, of 64-bit and of 32-bit numbers.
template <class V>
VEK_INLINE void transposeBlocks(V& a, V& b) {
    const hn::DFromV<V> d;
    const V lower = hn::InterleaveLower(d, a, b);
    b = hn::InterleaveUpper(d, a, b);
    a = lower;
}
template <class V>
VEK_INLINE void transposeBlocks(Two<V>& a, Two<V>& b) {
    transposeBlocks(a.lo, b.lo);
    transposeBlocks(a.hi, b.hi);
}
template <class V>
VEK_INLINE void transposeBlocks(V& a, V& b, V& c, V& d) {
    const hn::DFromV<V> lanes;
    const hn::RepartitionToWide<hn::DFromV<V>> pairs;
    auto ab0 = hn::BitCast(pairs, hn::InterleaveLower(lanes, a, b));
    auto ab1 = hn::BitCast(pairs, hn::InterleaveUpper(lanes, a, b));
    auto cd0 = hn::BitCast(pairs, hn::InterleaveLower(lanes, c, d));
    auto cd1 = hn::BitCast(pairs, hn::InterleaveUpper(lanes, c, d));
    transposeBlocks(ab0, cd0);
    transposeBlocks(ab1, cd1);
    a = hn::BitCast(lanes, ab0);
    b = hn::BitCast(lanes, cd0);
    c = hn::BitCast(lanes, ab1);
    d = hn::BitCast(lanes, cd1);
}
template <class V>
VEK_INLINE void transposeBlocks(Two<V>& a, Two<V>& b, Two<V>& c, Two<V>& d) {
    transposeBlocks(a.lo, b.lo, c.lo, d.lo);
    transposeBlocks(a.hi, b.hi, c.hi, d.hi);
}
// The upper half of a for the lower one of b.
template <class V>
VEK_INLINE void exchangeHalves(V& a, V& b) {
    const V lower = joinLower(a, b);
    b = joinUpper(a, b);
    a = lower;
}
template <class V>
VEK_INLINE void transpose(V (&r)[8]) {
    transposeBlocks(r[0], r[1], r[2], r[3]);
    transposeBlocks(r[4], r[5], r[6], r[7]);
    exchangeHalves(r[0], r[4]);
    exchangeHalves(r[1], r[5]);
    exchangeHalves(r[2], r[6]);
    exchangeHalves(r[3], r[7]);
}
template <class V>
VEK_INLINE void transpose(V& a, V& b, V& c, V& d) {
    if constexpr (sizeof(V) == 16) {
        transposeBlocks(a, b, c, d);
    } else {
        transposeBlocks(a, b);
        transposeBlocks(c, d);
        exchangeHalves(a, c);
        exchangeHalves(b, d);
    }
}

#endif

} // namespace VEK_LEVEL_NS
} // namespace vek::numbers
