// Loops over samples, written so that each becomes registers at once: what needs a wider type has a loop of its own.
// Where a result overwrites a source, sums share what they read, or products go by pairs, registers are named.
#include "sc/kernels/loops.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/registers.h"

namespace vek {
namespace {

constexpr int kSub = kLoopSubframe;

// The sine's series around a right angle, its highest power first.
constexpr double kRight = 1.5707963267948966;
constexpr double kSine[] = {-1.0 / 1307674368000, 1.0 / 6227020800, -1.0 / 39916800, 1.0 / 362880,
                            -1.0 / 5040,          1.0 / 120,        -1.0 / 6};
constexpr float kMostAngle = 3.15F;

#if VEK_LEVEL == 0

VekStatus lessScaled16(int g, const int16_t* d, const int16_t* x, int16_t* y) {
    for (int i = 0; i < kSub; ++i) {
        y[i] = fix::sat16(x[i] - fix::sat16((d[i] * g) >> 14));
    }
    return vekStsNoErr;
}

VekStatus lessScaled32f(float g, const float* d, const float* x, float* y) {
    for (int i = 0; i < kSub; ++i) {
        y[i] = x[i] - g * d[i];
    }
    return vekStsNoErr;
}

int32_t magnitudes16(const int16_t* x) {
    int32_t sum = 0;
    for (int i = 0; i < kSub; ++i) {
        const int v = x[i];
        sum += v < 0 ? -v : v;
    }
    return sum;
}

// The products have up to 50 bits, which doubles hold; the offset makes all of them positive, so that cutting off is
// rounding down.
void tilt(const int16_t* x, int mu, int gain, int16_t* y) {
    constexpr int offset = 1 << 21;
    int32_t sums[kSub];
    for (int i = 0; i < kSub; ++i) {
        sums[i] = x[i] * 32768 + mu * x[i - 1];
    }
    const double factor = gain * 0x1p-29;
    for (int32_t& s : sums) {
        s = static_cast<int32_t>(s * factor + (offset + 0.5)) - offset;
    }
    for (int i = 0; i < kSub; ++i) {
        y[i] = fix::sat16(sums[i]);
    }
}

void taps32f(const float* x, const float* taps, float* y, int n) {
    for (int i = 0; i < n; ++i) {
        float sum = 0;
        for (int j = 0; j < kLoopTaps; ++j) {
            sum += taps[j] * x[i + j];
        }
        y[i] = sum;
    }
}

bool cosines(const float* angles, int n, double* c) {
    bool inside = true;
    for (int i = 0; i < n; ++i) {
        inside = inside && angles[i] >= 0 && angles[i] <= kMostAngle;
        const double x = kRight - static_cast<double>(angles[i]);
        const double s = x * x;
        double sum = kSine[0];
        for (int k = 1; k < 7; ++k) {
            sum = sum * s + kSine[k];
        }
        c[i] = x + x * s * sum;
    }
    return inside;
}

int leastGainPair(const float* terms, double predicted, GainEntries first, GainEntries second, double bound) {
    const double yy = terms[0];
    const double xy = terms[1];
    const double zz = terms[2];
    const double xz = terms[3];
    const double yz = terms[4];
    double least = __builtin_inf();
    int best = 0;
    for (int i = 0; i < first.count; ++i) {
        for (int j = 0; j < second.count; ++j) {
            const double a = first.adaptive[i] + second.adaptive[j];
            const double f = (first.factor[i] + second.factor[j]) * predicted;
            const double error = a * (a * yy + xy) + f * (f * zz + xz + a * yz);
            if (a < bound && error < least) {
                least = error;
                best = i * kGainPairRow + j;
            }
        }
    }
    return best;
}

#else

using namespace registers;

using Floats = hn::CappedTag<float, 8>;
constexpr Floats kFloats;

// A subframe of what `made` gives from an element on, the last register over the one before. All are made before any is
// in y, which may be a source.
template <class Made>
VEK_INLINE void fillSubframe(int16_t* y, Made made) {
    constexpr int lanes = kLanesOf<D16>;
    constexpr int count = (kSub + lanes - 1) / lanes;
    const auto place = [](int r) { return r + 1 < count ? r * lanes : kSub - lanes; };
    hn::Vec<D16> all[count];
#pragma GCC unroll 5
    for (int r = 0; r < count; ++r) {
        all[r] = made(place(r));
    }
#pragma GCC unroll 5
    for (int r = 0; r < count; ++r) {
        hn::StoreU(all[r], d16, y + place(r));
    }
}

VekStatus lessScaled16(int g, const int16_t* d, const int16_t* x, int16_t* y) {
    const hn::RepartitionToWide<D16> wide;
    const auto factor = hn::Set(d16, static_cast<int16_t>(g));
    fillSubframe(y, [=](int i) {
        const auto v = hn::LoadU(d16, d + i);
        const auto low = v * factor;
        const auto high = hn::MulHigh(v, factor);
        const auto lower = hn::BitCast(wide, hn::InterleaveLower(d16, low, high));
        const auto upper = hn::BitCast(wide, hn::InterleaveUpper(d16, low, high));
        const auto less = hn::ReorderDemote2To(d16, hn::ShiftRight<14>(lower), hn::ShiftRight<14>(upper));
        return hn::SaturatedSub(hn::LoadU(d16, x + i), less);
    });
    return vekStsNoErr;
}

VekStatus lessScaled32f(float g, const float* d, const float* x, float* y) {
    const auto factor = hn::Set(kFloats, g);
#pragma GCC unroll 10
    for (int i = 0; i < kSub; i += kLanesOf<Floats>) {
        hn::StoreU(hn::LoadU(kFloats, x + i) - factor * hn::LoadU(kFloats, d + i), kFloats, y + i);
    }
    return vekStsNoErr;
}

// Each lane times its sign. By 128 bits: who has just copied the samples would wait for longer ones to be in store.
int32_t magnitudes16(const int16_t* x) {
    auto sums = hn::Zero(kFourOf32);
#pragma GCC unroll 5
    for (int i = 0; i < kSub; i += kLanesOf<EightOf16>) {
        const auto v = hn::LoadU(kEightOf16, x + i);
        sums = plusPairs(sums, v, hn::ShiftRight<15>(v) | hn::Set(kEightOf16, int16_t{1}));
    }
    return hn::GetLane(hn::SumOfLanes(kFourOf32, sums));
}

// So many registers of outputs, whose sums share each tap.
template <int count>
VEK_INLINE void tapsOf(const float* x, const float* taps, float* y) {
    hn::Vec<Floats> sums[count];
    for (auto& sum : sums) {
        sum = hn::Zero(kFloats);
    }
    for (int j = 0; j < kLoopTaps; ++j) {
        const auto tap = hn::Set(kFloats, taps[j]);
        for (int r = 0; r < count; ++r) {
            sums[r] = sums[r] + tap * hn::LoadU(kFloats, x + j + r * kLanesOf<Floats>);
        }
    }
    for (int r = 0; r < count; ++r) {
        hn::StoreU(sums[r], kFloats, y + r * kLanesOf<Floats>);
    }
}

void taps32f(const float* x, const float* taps, float* y, int n) {
    constexpr int lanes = kLanesOf<Floats>;
    int i = 0;
    for (; i + kSub <= n; i += kSub) {
        tapsOf<kSub / lanes>(x + i, taps, y + i);
    }
    for (; i + 2 * kLeastOutputs <= n; i += 2 * kLeastOutputs) {
        tapsOf<2 * kLeastOutputs / lanes>(x + i, taps, y + i);
    }
    for (; i < n; i += kLeastOutputs) {
        // The last eight overlap those before.
        const int at = i < n - kLeastOutputs ? i : n - kLeastOutputs;
        tapsOf<kLeastOutputs / lanes>(x + at, taps, y + at);
    }
}

template <class D>
VEK_INLINE bool cosinesOf(D d, const float* angles, double* c) {
    const hn::Rebind<float, D> single;
    const auto a = hn::LoadU(single, angles);
    const auto x = hn::Set(d, kRight) - hn::PromoteTo(d, a);
    const auto s = x * x;
    auto sum = hn::Set(d, kSine[0]);
    for (int k = 1; k < 7; ++k) {
        sum = sum * s + hn::Set(d, kSine[k]);
    }
    hn::StoreU(x + x * s * sum, d, c);
    return hn::AllTrue(single, hn::And(hn::Ge(a, hn::Zero(single)), hn::Le(a, hn::Set(single, kMostAngle))));
}

bool cosines(const float* angles, int n, double* c) {
    using Doubles = hn::CappedTag<double, 4>;
    constexpr int lanes = kLanesOf<Doubles>;
    if (n < lanes) {
        return cosinesOf(hn::FixedTag<double, 2>(), angles, c);
    }
    bool inside = true;
    for (int i = 0; i < n; i += lanes) {
        // The last ones overlap those before.
        const int at = i < n - lanes ? i : n - lanes;
        inside &= cosinesOf(Doubles(), angles + at, c + at);
    }
    return inside;
}

// 0, 1, 2 ... as floating numbers.
template <int count>
struct Counting {
    double number[count];

    constexpr Counting() : number() {
        for (int i = 0; i < count; ++i) {
            number[i] = i;
        }
    }
};

// The second entries by registers, the last one over the one before, but not in store. The least error is known before
// the first place that has it is looked for, so that neither waits for a comparison at each step.
int leastGainPair(const float* terms, double predicted, GainEntries first, GainEntries second, double bound) {
    using Doubles = hn::CappedTag<double, 4>;
    constexpr int lanes = kLanesOf<Doubles>;
    constexpr Doubles d;
    constexpr int pairs = kMostGainEntries * kGainPairRow;
    alignas(32) static constexpr Counting<pairs> counting;
    const auto all = [](double v) { return hn::Set(Doubles(), v); };
    const auto yy = all(static_cast<double>(terms[0]));
    const auto xy = all(static_cast<double>(terms[1]));
    const auto zz = all(static_cast<double>(terms[2]));
    const auto xz = all(static_cast<double>(terms[3]));
    const auto yz = all(static_cast<double>(terms[4]));
    const auto none = all(__builtin_inf());
    const int end = second.count - lanes;
    const auto eachRegister = [&](auto see) {
        for (int i = 0; i < first.count; ++i) {
            const int row = i * kGainPairRow;
            for (int j = 0; j < end; j += lanes) {
                see(i, j, row + j);
            }
            see(i, end, row + kGainPairRow - lanes);
        }
    };
    alignas(32) double errors[pairs];
    auto least = none;
    eachRegister([&](int i, int j, int slot) {
        const auto a = all(first.adaptive[i]) + hn::LoadU(d, second.adaptive + j);
        const auto f = (all(first.factor[i]) + hn::LoadU(d, second.factor + j)) * all(predicted);
        const auto sum = a * (a * yy + xy) + f * (f * zz + xz + a * yz);
        const auto error = hn::IfThenElse(hn::Lt(a, all(bound)), sum, none);
        hn::StoreU(error, d, errors + slot);
        least = hn::Min(error, least);
    });
    least = hn::MinOfLanes(d, least);
    auto place = all(pairs);
    eachRegister([&](int i, int j, int slot) {
        const auto found = hn::Eq(hn::LoadU(d, errors + slot), least);
        const auto numbers = hn::LoadU(d, counting.number + i * kGainPairRow + j);
        place = hn::Min(place, hn::IfThenElse(found, numbers, all(pairs)));
    });
    return hn::GetLane(least) < __builtin_inf() ? static_cast<int>(hn::GetLane(hn::MinOfLanes(d, place))) : 0;
}

// The same two factors in all pairs of lanes.
template <class D>
VEK_INLINE hn::Vec<D> factors(D d, Weights weights) {
    return hn::BitCast(d, hn::Set(hn::RepartitionToWide<D>(), __builtin_bit_cast(int32_t, weights)));
}

template <class D>
VEK_INLINE hn::Vec<D> factors(D d, int lower, int upper) {
    return factors(d, Weights{static_cast<int16_t>(lower), static_cast<int16_t>(upper)});
}

// (sum * factor + 2^28) >> 29 of 32-bit lanes whose products have 61 bits at the most: of the even lanes' products the
// wanted bits move down, of the odd ones' up.
template <class V>
VEK_INLINE V scaledSums(V sums, V factor) {
    const hn::DFromV<V> d;
    const hn::RepartitionToWide<hn::DFromV<V>> pairs;
    const hn::RebindToUnsigned<decltype(pairs)> bits;
    const auto half = hn::Set(pairs, int64_t{1} << 28);
    const auto odd = hn::BitCast(d, hn::ShiftRight<32>(hn::BitCast(bits, sums)));
    const auto fromEven = hn::ShiftRight<29>(hn::BitCast(bits, hn::MulEven(sums, factor) + half));
    const auto fromOdd = hn::ShiftLeft<3>(hn::MulEven(odd, factor) + half);
    return hn::OddEven(hn::BitCast(d, fromOdd), hn::BitCast(d, fromEven));
}

// 2^15 has no 16 bits, its negative has.
void tilt(const int16_t* x, int mu, int gain, int16_t* y) {
    const hn::RepartitionToWide<D16> wide;
    const auto two = factors(d16, -32768, -mu);
    const auto factor = hn::Set(wide, -gain);
    fillSubframe(y, [=](int i) {
        const auto now = hn::LoadU(d16, x + i);
        const auto before = hn::LoadU(d16, x + i - 1);
        const auto lower = scaledSums(pairSums(hn::InterleaveLower(d16, now, before), two), factor);
        const auto upper = scaledSums(pairSums(hn::InterleaveUpper(d16, now, before), two), factor);
        return hn::ReorderDemote2To(d16, lower, upper);
    });
}

// The lanes of `now` one place up, the last one of `before` in front.
template <class D>
VEK_INLINE hn::Vec<D> oneUp(D d, hn::Vec<D> before, hn::Vec<D> now) {
    constexpr int block = kLeastFill<hn::TFromD<D>>;
    if constexpr (kLanesOf < D >> block) {
        // Each block of 128 bits moves within itself.
        before = hn::ConcatLowerUpper(d, now, before);
    }
    return hn::CombineShiftRightLanes<block - 1>(d, now, before);
}

// y[i] = make(tag, y[i-1], y[i], i) of what y held before, first(y, n) having done so with its first n and giving the
// last of what they held; gives that of all. Registers do not overlap, the last one ends with the samples, as blocks
// that copy them do, and the neighbours come from the register before: who has just copied the samples would wait for
// one across two such blocks.
template <class D, class First, class Make>
VEK_INLINE auto fromPrevious(D d, hn::TFromD<D>* y, int n, First first, Make make) {
    constexpr int lanes = kLanesOf<D>;
    constexpr int block = kLeastFill<hn::TFromD<D>>;
    static_assert(lanes <= 2 * block);
    int i = n % block;
    auto last = first(y, i);
    const auto step = [=](auto some, auto before, int at) {
        const auto now = hn::LoadU(some, y + at);
        hn::StoreU(make(some, oneUp(some, before, now), now, at), some, y + at);
        return now;
    };
    if ((n - i) % lanes != 0) {
        const hn::FixedTag<hn::TFromD<D>, block> small;
        const auto next = y[i + block - 1];
        step(small, hn::Set(small, last), i);
        last = next;
        i += block;
    }
    if (i < n) {
        auto before = hn::Set(d, last);
        last = y[n - 1];
#pragma GCC unroll 2
        for (; i < n; i += lanes) {
            before = step(d, before, i);
        }
    }
    return last;
}

#endif

// Only the gain waits for the one before. Above the plain level it does so in all lanes of a register, by one product's
// upper half and one sum.
int moveGain16(int16_t* x, int g, int keep, int fresh, Rounding rounding) {
#if VEK_LEVEL > 0
    if (g >= 0 && keep < 32768) {
        const hn::RebindToUnsigned<EightOf16> bits;
        const auto factor = hn::Set(bits, static_cast<uint16_t>(2 * keep));
        const auto more = hn::Set(bits, static_cast<uint16_t>(fresh));
        auto gain = hn::Set(bits, static_cast<uint16_t>(g));
        const auto next = [&] {
            gain = hn::MulHigh(gain, factor) + more;
            return hn::BitCast(kEightOf16, gain);
        };
        for (int i = 0; i < kSub; i += 8) {
            const auto gains = firstLanes(next);
            hn::StoreU(multShifted(hn::LoadU(kEightOf16, x + i), gains, rounding.half, rounding.shift), kEightOf16,
                       x + i);
        }
        return hn::GetLane(gain);
    }
#endif
    int gains[kSub];
    for (int& now : gains) {
        g = ((g * keep) >> 15) + fresh;
        now = g;
    }
    for (int i = 0; i < kSub; ++i) {
        x[i] = fix::sat16((x[i] * gains[i] + rounding.half) >> rounding.shift);
    }
    return g;
}

// y[i] = make(y[i-1], y[i], i) of what y held before, `before` being that in front; gives the last of what it held.
template <class T, class Make>
VEK_INLINE T fewFromPrevious(T* y, T before, int n, Make make) {
    registers::oneByOne(n, [&](int i) {
        const T now = y[i];
        y[i] = make(before, now, i);
        before = now;
    });
    return before;
}

VEK_INLINE int16_t lessPreviousFew16(int16_t* x, int16_t before, int g, int n) {
    return fewFromPrevious(x, before, n,
                           [g](int previous, int now, int) { return fix::sat16(now - ((previous * g) >> 15)); });
}

VEK_INLINE float lessPreviousFew32f(float* x, float before, float g, int n) {
    return fewFromPrevious(x, before, n, [g](float previous, float now, int) { return now - g * previous; });
}

VEK_INLINE int16_t lessWeightedFew16(int16_t* x, int16_t before, int g, Rounding rounding, int n) {
    return fewFromPrevious(x, before, n, [=](int previous, int now, int) {
        return fix::sat16((now * 32768 - previous * g + rounding.half) >> rounding.shift);
    });
}

// Nothing comes up to the first: the negative zero leaves each sum as it is.
VEK_INLINE float moveUpFew32f(float* y, const float* h, float v, int n) {
    return fewFromPrevious(y, -0.0F, n, [=](float previous, float, int i) { return previous + v * h[i]; });
}

#if VEK_LEVEL == 0

constexpr auto lessPrevious16 = lessPreviousFew16;
constexpr auto lessPrevious32f = lessPreviousFew32f;
constexpr auto lessWeighted16 = lessWeightedFew16;

VekStatus moveUp32f(float* y, const float* h, float v, int n) {
    moveUpFew32f(y, h, v, n);
    return vekStsNoErr;
}

#else

int16_t lessPrevious16(int16_t* x, int16_t before, int g, int n) {
    return fromPrevious(
        Short16(), x, n, [=](int16_t* first, int few) { return lessPreviousFew16(first, before, g, few); },
        [g](auto d, auto previous, auto now, int) {
            return hn::SaturatedSub(now, multCut(previous, hn::Set(d, static_cast<int16_t>(g))));
        });
}

float lessPrevious32f(float* x, float before, float g, int n) {
    return fromPrevious(
        kFloats, x, n, [=](float* first, int few) { return lessPreviousFew32f(first, before, g, few); },
        [g](auto d, auto previous, auto now, int) { return now - hn::Set(d, g) * previous; });
}

// 2^15 has no 16 bits, its negative has: the sums of pairs are the negatives of the wanted ones.
int16_t lessWeighted16(int16_t* x, int16_t before, int g, Rounding rounding, int n) {
    return fromPrevious(
        Short16(), x, n, [=](int16_t* first, int few) { return lessWeightedFew16(first, before, g, rounding, few); },
        [g, rounding](auto d, auto previous, auto now, int) {
            const auto two = factors(d, g, -32768);
            const auto half = hn::Set(hn::RepartitionToWide<decltype(d)>(), rounding.half);
            const auto lower = half - pairSums(hn::InterleaveLower(d, previous, now), two);
            const auto upper = half - pairSums(hn::InterleaveUpper(d, previous, now), two);
            return hn::ReorderDemote2To(d, hn::ShiftRightSame(lower, rounding.shift),
                                        hn::ShiftRightSame(upper, rounding.shift));
        });
}

VekStatus moveUp32f(float* y, const float* h, float v, int n) {
    fromPrevious(
        kFloats, y, n, [=](float* first, int few) { return moveUpFew32f(first, h, v, few); },
        [h, v](auto d, auto previous, auto, int i) { return previous + hn::Set(d, v) * hn::LoadU(d, h + i); });
    return vekStsNoErr;
}

#endif

[[gnu::noinline]] VekStatus weightedFew16(const int16_t* x1, Weights weights, const int16_t* x2, Rounding rounding,
                                          int16_t* y, int n) {
    registers::oneByOne(n, [=](int i) {
        y[i] = fix::sat16((x1[i] * weights.first + x2[i] * weights.second + rounding.half) >> rounding.shift);
    });
    return vekStsNoErr;
}

[[gnu::noinline]] VekStatus weightedFew32f(const float* x1, float v1, const float* x2, float v2, float* y, int n) {
    registers::oneByOne(n, [=](int i) { y[i] = x1[i] * v1 + x2[i] * v2; });
    return vekStsNoErr;
}

[[gnu::noinline]] void threeTapsFew(int side, int middle, const int16_t* x, int16_t* y, int n) {
    registers::oneByOne(
        n, [=](int i) { y[i] = fix::sat16((side * (x[i - 1] + x[i + 1]) + middle * x[i] + 0x4000) >> 15); });
}

#if VEK_LEVEL == 0

constexpr auto weighted16 = weightedFew16;
constexpr auto weighted32f = weightedFew32f;
constexpr auto threeTaps = threeTapsFew;

#else

VekStatus weighted16(const int16_t* x1, Weights weights, const int16_t* x2, Rounding rounding, int16_t* y, int n) {
    if (n < kLeastFill<int16_t>) {
        return weightedFew16(x1, weights, x2, rounding, y, n);
    }
    const auto made = [=](auto d, int i) {
        const auto a = hn::LoadU(d, x1 + i);
        const auto b = hn::LoadU(d, x2 + i);
        const auto both = factors(d, weights);
        const auto half = hn::Set(hn::RepartitionToWide<decltype(d)>(), rounding.half);
        const auto lower = plusPairs(half, hn::InterleaveLower(d, a, b), both);
        const auto upper = plusPairs(half, hn::InterleaveUpper(d, a, b), both);
        return hn::ReorderDemote2To(d, hn::ShiftRightSame(lower, rounding.shift),
                                    hn::ShiftRightSame(upper, rounding.shift));
    };
    if (n == kLanesOf<Short16>) [[unlikely]] {
        hn::StoreU(made(Short16(), 0), Short16(), y);
        return vekStsNoErr;
    }
    fillBy(d16, y, n, made);
    return vekStsNoErr;
}

VekStatus weighted32f(const float* x1, float v1, const float* x2, float v2, float* y, int n) {
    if (n < kLeastFill<float>) {
        return weightedFew32f(x1, v1, x2, v2, y, n);
    }
    fillBy(kFloats, y, n, [=](auto d, int i) {
        return hn::LoadU(d, x1 + i) * hn::Set(d, v1) + hn::LoadU(d, x2 + i) * hn::Set(d, v2);
    });
    return vekStsNoErr;
}

// The products of two neighbours, and of the third one and what rounds.
void threeTaps(int side, int middle, const int16_t* x, int16_t* y, int n) {
    if (n < kLeastFill<int16_t>) {
        threeTapsFew(side, middle, x, y, n);
        return;
    }
    fillBy(d16, y, n, [=](auto d, int i) {
        const auto two = factors(d, side, middle);
        const auto third = factors(d, side, 0x4000);
        const auto before = hn::LoadU(d, x + i - 1);
        const auto now = hn::LoadU(d, x + i);
        const auto after = hn::LoadU(d, x + i + 1);
        const auto unit = hn::Set(d, int16_t{1});
        const auto lower =
            plusPairs(pairSums(hn::InterleaveLower(d, before, now), two), hn::InterleaveLower(d, after, unit), third);
        const auto upper =
            plusPairs(pairSums(hn::InterleaveUpper(d, before, now), two), hn::InterleaveUpper(d, after, unit), third);
        return hn::ReorderDemote2To(d, hn::ShiftRight<15>(lower), hn::ShiftRight<15>(upper));
    });
}

#endif

#if VEK_LEVEL == 0

VekStatus addScaled32f(const float* x, const float* d, float b, float* y, int n) {
    for (int i = 0; i < n; ++i) {
        y[i] = x[i] + b * d[i];
    }
    return vekStsNoErr;
}

#else

// Registers do not overlap here, and the last one ends with the samples, as blocks that copy them do: who has just done
// so would wait for the copy to be in store.
VekStatus addScaled32f(const float* x, const float* d, float b, float* y, int n) {
    constexpr int lanes = kLanesOf<Floats>;
    const auto fill = [=](auto some, int at) {
        const auto more = hn::Set(some, b) * hn::LoadU(some, d + at);
        hn::StoreU(hn::LoadU(some, x + at) + more, some, y + at);
    };
    if (n == kSub) {
        // A subframe straight on.
#pragma GCC unroll 10
        for (int i = 0; i < kSub; i += lanes) {
            fill(kFloats, i);
        }
        return vekStsNoErr;
    }
    int i = n % 4;
    oneByOne(i, [=](int at) { y[at] = x[at] + b * d[at]; });
    if (lanes > 4 && (n - i) % lanes != 0) {
        fill(hn::FixedTag<float, 4>(), i);
        i += 4;
    }
#pragma GCC unroll 2
    for (; i < n; i += lanes) {
        fill(kFloats, i);
    }
    return vekStsNoErr;
}

#endif

// Eight distances at a time: the farther they are, the fewer sums there are.
void pairCorrelations(const int16_t* h, int32_t* rows) {
    constexpr int lanes = 8;
    int32_t even[kPairs + kPairRow] = {};
    int32_t odd[kPairs + kPairRow] = {};
    for (int q = 0; q < kPairs; ++q) {
        even[q] = h[2 * q];
        odd[q] = h[2 * q + 1];
    }
    for (int first = 0; first < kPairRow; first += lanes) {
        uint32_t sums[lanes] = {};
        for (int p = 0; p < kPairs - first; ++p) {
            for (int l = 0; l < lanes; ++l) {
                const int to = p + first + l;
                sums[l] += static_cast<uint32_t>(even[p] * even[to]) + static_cast<uint32_t>(odd[p] * odd[to]);
                rows[p * kPairRow + first + l] = static_cast<int32_t>(sums[l]);
            }
        }
    }
}

#if VEK_LEVEL == 0

int64_t squaredDistance16(const int16_t* x, const int16_t* y, int n) {
    uint64_t sum = 0;
    for (int i = 0; i < n; ++i) {
        const auto d = static_cast<uint32_t>(x[i] - y[i]);
        sum += d * d; // below 2^32 for any two
    }
    return static_cast<int64_t>(sum);
}

#else

int64_t squaredDistance16(const int16_t* x, const int16_t* y, int n) {
    const hn::RepartitionToWide<D16> differences;
    const hn::RebindToUnsigned<hn::RepartitionToWide<decltype(differences)>> wide;
    const auto minus = factors(d16, 1, -1);
    auto all = hn::Zero(wide);
    auto upper = all;
    // Squares are numbers without a sign: two in 64 bits, and those in the upper halves once more.
    const auto add = [&](auto a, auto b) {
        for (const auto both : {hn::InterleaveLower(d16, a, b), hn::InterleaveUpper(d16, a, b)}) {
            const auto d = pairSums(both, minus);
            const auto two = hn::BitCast(wide, d * d);
            all = all + two;
            upper = upper + hn::ShiftRight<32>(two);
        }
    };
    int i = 0;
    for (; i + kLanesOf<D16> <= n; i += kLanesOf<D16>) {
        add(hn::LoadU(d16, x + i), hn::LoadU(d16, y + i));
    }
    uint64_t sum = 0;
    oneByOne(n - i, [=, &sum](int k) {
        const auto d = static_cast<uint32_t>(x[i + k] - y[i + k]);
        sum += d * d;
    });
    return static_cast<int64_t>(sum + hn::GetLane(hn::SumOfLanes(wide, all - hn::ShiftLeft<32>(upper) + upper)));
}

#endif

} // namespace

VEK_KERNEL_TABLE(LoopKernels, loopKernels) = {
    lessScaled16,   lessScaled32f, magnitudes16,     moveGain16,        lessPrevious16, lessPrevious32f,
    lessWeighted16, moveUp32f,     weighted16,       weighted32f,       addScaled32f,   threeTaps,
    tilt,           taps32f,       pairCorrelations, squaredDistance16, cosines,        leastGainPair,
};

} // namespace vek
