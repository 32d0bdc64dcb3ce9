// Learning filters of the full band and complex filters of subbands.
// Products of 32-bit complex numbers are 64 bits wide; above the plain level a register of numbers is gone through
// together.
#include "sc/kernels/ec.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/registers.h"

namespace vek {
namespace {

__extension__ typedef __int128 Wide;

int32_t scaled(int64_t v, int scale) {
    return fix::scaleSat32(v, scale);
}

int32_t scaledWide(Wide v, int scale) {
    if (scale < 0) {
        v *= Wide{1} << -scale;
    } else {
        v >>= scale;
    }
    return static_cast<int32_t>(v > INT32_MAX ? INT32_MAX : v < INT32_MIN ? INT32_MIN : v);
}

uint64_t product(int32_t a, int32_t b) {
    return static_cast<uint64_t>(static_cast<int64_t>(a) * b);
}

// One by one, from k or j on.

void firLowFrom(int k, const Vek32sc* const* x, const Vek32sc* const* c, int segments, int len, int scale,
                Vek32sc* dst) {
    for (; k < len; ++k) {
        uint64_t re = 0;
        uint64_t im = 0;
        for (int s = 0; s < segments; ++s) {
            const Vek32sc a = x[s][k];
            const Vek32sc b = c[s][k];
            re += product(a.re, b.re) - product(a.im, b.im);
            im += product(a.re, b.im) + product(a.im, b.re);
        }
        dst[k] = {scaled(static_cast<int64_t>(re), scale), scaled(static_cast<int64_t>(im), scale)};
    }
}

void firWideFrom(int k, const Vek32sc* const* x, const Vek32sc* const* c, int segments, int len, int scale,
                 Vek32sc* dst) {
    for (; k < len; ++k) {
        Wide re = 0;
        Wide im = 0;
        for (int s = 0; s < segments; ++s) {
            const Vek32sc a = x[s][k];
            const Vek32sc b = c[s][k];
            re += static_cast<Wide>(static_cast<int64_t>(a.re) * b.re) - static_cast<int64_t>(a.im) * b.im;
            im += static_cast<Wide>(static_cast<int64_t>(a.re) * b.im) + static_cast<int64_t>(a.im) * b.re;
        }
        dst[k] = {scaledWide(re, scale), scaledWide(im, scale)};
    }
}

void learnLowFrom(int k, const Vek32sc* x, const Vek32sc* p, Vek32sc* c, int len, int shift) {
    for (; k < len; ++k) {
        const uint64_t re = (product(x[k].re, p[k].re) + product(x[k].im, p[k].im)) >> shift;
        const uint64_t im = (product(x[k].re, p[k].im) - product(x[k].im, p[k].re)) >> shift;
        c[k].re = static_cast<int32_t>(static_cast<uint32_t>(c[k].re) + static_cast<uint32_t>(re));
        c[k].im = static_cast<int32_t>(static_cast<uint32_t>(c[k].im) + static_cast<uint32_t>(im));
    }
}

void learnSatFrom(int k, const Vek32sc* x, const Vek32sc* p, Vek32sc* c, int len, int shift) {
    const int64_t half = int64_t{1} << (shift - 1);
    for (; k < len; ++k) {
        const auto a = static_cast<int64_t>(x[k].re);
        const auto b = static_cast<int64_t>(x[k].im);
        c[k].re = fix::sat32(c[k].re + ((a * p[k].re + b * p[k].im + half) >> shift));
        c[k].im = fix::sat32(c[k].im + ((a * p[k].im - b * p[k].re + half) >> shift));
    }
}

int32_t stepSat(int32_t step, int32_t error) {
    const int32_t p = fix::sat32((static_cast<int64_t>(step) * error + 0x4000) >> 15);
    return p == INT32_MIN ? -INT32_MAX : p;
}

void stepsSatFrom(int k, const int32_t* step, const Vek32sc* error, Vek32sc* dst, int len) {
    for (; k < len; ++k) {
        dst[k] = {stepSat(step[k], error[k].re), stepSat(step[k], error[k].im)};
    }
}

void stepsLowFrom(int k, const int32_t* step, const Vek32sc* error, Vek32sc* dst, int len) {
    for (; k < len; ++k) {
        dst[k] = {static_cast<int32_t>(product(step[k], error[k].re) >> 15),
                  static_cast<int32_t>(product(step[k], error[k].im) >> 15)};
    }
}

void learn32fcFrom(int k, const Vek32fc* x, const Vek32fc* g, Vek32fc* c, int len) {
    for (; k < len; ++k) {
        c[k].re += x[k].re * g[k].re + x[k].im * g[k].im;
        c[k].im += x[k].re * g[k].im - x[k].im * g[k].re;
    }
}

void learn16From(int j, int16_t* c, const int16_t* x, int n, int f, int half, int shift) {
    for (; j < n; ++j) {
        c[j] = fix::sat16(c[j] + ((f * x[j] + half) >> shift));
    }
}

// Adds to s what c gives with the sample after each of its own.
float learn32fFrom(int j, float s, float* c, const float* x, int n, float g) {
    for (; j < n; ++j) {
        c[j] += g * x[j];
        s += c[j] * x[j + 1];
    }
    return s;
}

int halfOf(int shift) {
    return shift > 0 ? 1 << (shift - 1) : 0;
}

#if VEK_LEVEL == 0

float learn32f(float* c, const float* x, int n, float g) {
    return learn32fFrom(0, 0, c, x, n, g);
}

void learn16(int16_t* c, const int16_t* x, int n, int f, int shift) {
    learn16From(0, c, x, n, f, halfOf(shift), shift);
}

void firLow(const Vek32sc* const* x, const Vek32sc* const* c, int segments, int first, int len, int scale,
            Vek32sc* dst) {
    firLowFrom(first, x, c, segments, len, scale, dst);
}

void firWide(const Vek32sc* const* x, const Vek32sc* const* c, int segments, int len, int scale, Vek32sc* dst) {
    firWideFrom(0, x, c, segments, len, scale, dst);
}

void learnLow(const Vek32sc* x, const Vek32sc* p, Vek32sc* c, int len, int shift) {
    learnLowFrom(0, x, p, c, len, shift);
}

void learnSat(const Vek32sc* x, const Vek32sc* p, Vek32sc* c, int len, int shift) {
    learnSatFrom(0, x, p, c, len, shift);
}

void stepsSat(const int32_t* step, const Vek32sc* error, Vek32sc* dst, int len) {
    stepsSatFrom(0, step, error, dst, len);
}

void stepsLow(const int32_t* step, const Vek32sc* error, Vek32sc* dst, int len) {
    stepsLowFrom(0, step, error, dst, len);
}

void steps32fc(const double* step, const Vek32fc* error, Vek32fc* dst, int len) {
    for (int k = 0; k < len; ++k) {
        dst[k] = {static_cast<float>(step[k] * error[k].re), static_cast<float>(step[k] * error[k].im)};
    }
}

void learn32fc(const Vek32fc* x, const Vek32fc* g, Vek32fc* c, int len) {
    learn32fcFrom(0, x, g, c, len);
}

#else

using namespace registers;

using D32 = hn::RepartitionToWide<D16>;
using FourFloats = hn::FixedTag<float, 4>;

// step(d, k) for what fills registers from k on, the longest first; an element has so many lanes. Gives the first that
// is left.
template <int Lanes, class D, class Step>
VEK_INLINE int byRegisters(D d, int k, int n, const Step& step) {
    for (; k + kLanesOf<D> / Lanes <= n; k += kLanesOf<D> / Lanes) {
        step(d, k);
    }
    if constexpr (sizeof(hn::Vec<D>) > 16) {
        return byRegisters<Lanes>(hn::Half<D>(), k, n, step);
    } else {
        return k;
    }
}

// One value in both lanes, or two.
template <class D>
VEK_INLINE hn::Vec<D> eachTwice(D d, const double* p) {
    if constexpr (kLanesOf<D> == 2) {
        return hn::Set(d, p[0]);
    } else {
        const hn::Half<D> half;
        return hn::Combine(d, hn::Set(half, p[1]), hn::Set(half, p[0]));
    }
}

void steps32fc(const double* step, const Vek32fc* error, Vek32fc* dst, int len) {
    const auto scaled = [=](auto d, int k) {
        const hn::Rebind<float, decltype(d)> floats;
        const auto values = hn::PromoteTo(d, hn::LoadU(floats, &error[k].re));
        hn::StoreU(hn::DemoteTo(floats, values * eachTwice(d, step + k)), floats, &dst[k].re);
    };
    byRegisters<2>(hn::CappedTag<double, 4>(), 0, len, scaled);
}

float learn32f(float* c, const float* x, int n, float g) {
    const auto products = [=](auto d, int j) {
        const auto learned = hn::LoadU(d, c + j) + hn::Set(d, g) * hn::LoadU(d, x + j);
        hn::StoreU(learned, d, c + j);
        return learned * hn::LoadU(d, x + j + 1);
    };
    using D = hn::CappedTag<float, 8>;
    constexpr int lanes = kLanesOf<D>;
    auto s0 = hn::Zero(D());
    auto s1 = s0;
    int j = 0;
    for (; j + 2 * lanes <= n; j += 2 * lanes) {
        s0 = s0 + products(D(), j);
        s1 = s1 + products(D(), j + lanes);
    }
    auto four = fourSums(s0 + s1);
    for (; j + 4 <= n; j += 4) {
        four = four + products(FourFloats(), j);
    }
    return learn32fFrom(j, hn::GetLane(hn::SumOfLanes(FourFloats(), four)), c, x, n, g);
}

void learn16(int16_t* c, const int16_t* x, int n, int f, int shift) {
    const int half = halfOf(shift);
    const int j = byRegisters<1>(d16, 0, n, [=](auto d, int k) {
        const hn::RepartitionToWide<decltype(d)> wide;
        const auto factors = hn::BitCast(d, hn::Set(wide, f & 0xffff));
        const auto halves = hn::Set(wide, half);
        // Of a sample and its coefficient. Saturated in the end only: the change alone may exceed 16 bits.
        const auto learned = [=](auto both) {
            const auto change = hn::ShiftRightSame(plusPairs(halves, both, factors), shift);
            return change + hn::ShiftRight<16>(hn::BitCast(wide, both));
        };
        const auto v = hn::LoadU(d, x + k);
        const auto old = hn::LoadU(d, c + k);
        storeSaturated(d, c + k, learned(hn::InterleaveLower(d, v, old)), learned(hn::InterleaveUpper(d, v, old)));
    });
    learn16From(j, c, x, n, f, half, shift);
}

// Of numbers the real parts stand in the even lanes, the imaginary ones in the odd lanes.
template <class D>
VEK_INLINE hn::Vec<D> numbers(D d, const Vek32sc* p) {
    return hn::LoadU(d, reinterpret_cast<const int32_t*>(p));
}
template <class D>
VEK_INLINE void store(D d, Vek32sc* p, hn::Vec<D> v) {
    hn::StoreU(v, d, reinterpret_cast<int32_t*>(p));
}

// What numbers of 32 bits become, modulo 2^64.
template <class D>
using Wider = hn::RebindToUnsigned<hn::RepartitionToWide<D>>;

template <class D>
struct Parts {
    hn::Vec<Wider<D>> re, im;
};

// Products of the even lanes.
template <class D>
VEK_INLINE hn::Vec<Wider<D>> evenProducts(D, hn::Vec<D> a, hn::Vec<D> b) {
    return hn::BitCast(Wider<D>(), hn::MulEven(a, b));
}
template <class D>
VEK_INLINE hn::Vec<D> imaginary(D d, hn::Vec<D> v) {
    return hn::BitCast(d, hn::ShiftRight<32>(hn::BitCast(Wider<D>(), v)));
}

template <class D>
VEK_INLINE Parts<D> products(D d, hn::Vec<D> a, hn::Vec<D> b) {
    const auto aIm = imaginary(d, a);
    const auto bIm = imaginary(d, b);
    return {evenProducts(d, a, b) - evenProducts(d, aIm, bIm), evenProducts(d, a, bIm) + evenProducts(d, aIm, b)};
}
// Of the conjugates of a.
template <class D>
VEK_INLINE Parts<D> conjugateProducts(D d, hn::Vec<D> a, hn::Vec<D> b) {
    const auto aIm = imaginary(d, a);
    const auto bIm = imaginary(d, b);
    return {evenProducts(d, a, b) + evenProducts(d, aIm, bIm), evenProducts(d, a, bIm) - evenProducts(d, aIm, b)};
}

// The lower and the upper halves of the parts as numbers.
template <class D>
VEK_INLINE hn::Vec<D> lowerHalves(D d, const Parts<D>& p) {
    return hn::OddEven(hn::BitCast(d, hn::ShiftLeft<32>(p.im)), hn::BitCast(d, p.re));
}
template <class D>
VEK_INLINE hn::Vec<D> upperHalves(D d, const Parts<D>& p) {
    return hn::OddEven(hn::BitCast(d, p.im), hn::BitCast(d, hn::ShiftRight<32>(p.re)));
}

// The bound that a part exceeds, by its sign.
template <class D>
VEK_INLINE hn::Vec<D> bounds(D d, hn::Vec<D> signs) {
    return hn::BroadcastSignBit(signs) ^ hn::Set(d, INT32_MAX);
}

// The sums times 2^-scale, saturated. `signs` has the signs of the sums, `lost` is not 0 where 64 bits do not hold
// them.
template <class D>
VEK_INLINE hn::Vec<D> scaledSums(D d, const Parts<D>& sums, hn::Vec<D> signs, const Parts<D>& lost, int scale) {
    const Wider<D> wider;
    const int up = scale < 0 ? -scale : 0;
    const int down = scale < 0 ? 0 : scale;
    const auto half = hn::Set(wider, uint64_t{1} << (31 + scale));
    const auto scaledBits = [=](auto v) { return hn::ShiftRightSame(hn::ShiftLeftSame(v, up), down); };
    // What 32 bits do not hold is not 0 either.
    const auto beyond = [=](auto v) { return hn::ShiftRightSame(v + half, 32 + scale); };
    const Parts<D> excess = {beyond(sums.re) | lost.re, beyond(sums.im) | lost.im};
    const auto fits = (lowerHalves(d, excess) | upperHalves(d, excess)) == hn::Zero(d);
    const auto values = lowerHalves(d, Parts<D>{scaledBits(sums.re), scaledBits(sums.im)});
    return hn::IfThenElse(fits, values, bounds(d, signs));
}
// The same of sums that 64 bits hold.
template <class D>
VEK_INLINE hn::Vec<D> scaledSums(D d, const Parts<D>& sums, int scale) {
    const auto none = hn::Zero(Wider<D>());
    return scaledSums(d, sums, upperHalves(d, sums), Parts<D>{none, none}, scale);
}

void firLow(const Vek32sc* const* x, const Vek32sc* const* c, int segments, int first, int len, int scale,
            Vek32sc* dst) {
    const int done = byRegisters<2>(D32(), first, len, [=](auto d, int k) {
        const auto none = hn::Zero(Wider<decltype(d)>());
        Parts<decltype(d)> sums = {none, none};
        for (int s = 0; s < segments; ++s) {
            const auto p = products(d, numbers(d, x[s] + k), numbers(d, c[s] + k));
            sums.re = sums.re + p.re;
            sums.im = sums.im + p.im;
        }
        store(d, dst + k, scaledSums(d, sums, scale));
    });
    firLowFrom(done, x, c, segments, len, scale, dst);
}

// The parts of a product span -2^63 + 2^31..2^63: with this bias they are 64 bits without a sign.
constexpr uint64_t kBias = INT64_MAX;

// A sum of more than 64 bits: of biased numbers modulo 2^64, and of their upper halves.
template <class V>
struct LongSum {
    V all;
    V upper;

    VEK_INLINE void add(V v) {
        v = v + hn::Set(hn::DFromV<V>(), kBias);
        all = all + v;
        upper = upper + hn::ShiftRight<32>(v);
    }
    // The upper part of the sum, which is it divided by 2^32, without the bias of so many numbers.
    VEK_INLINE V high(uint64_t count) const {
        const hn::DFromV<V> d;
        const auto low = all - hn::ShiftLeft<32>(upper) + hn::Set(d, count);
        return upper + hn::ShiftRight<32>(low) - hn::Set(d, count << 31);
    }
    VEK_INLINE V low64(uint64_t count) const { return all - hn::Set(hn::DFromV<V>(), count * kBias); }
};

void firWide(const Vek32sc* const* x, const Vek32sc* const* c, int segments, int len, int scale, Vek32sc* dst) {
    const int done = byRegisters<2>(D32(), 0, len, [=](auto d, int k) {
        const Wider<decltype(d)> wider;
        using Sum = LongSum<hn::Vec<Wider<decltype(d)>>>;
        Sum re = {hn::Zero(wider), hn::Zero(wider)};
        Sum im = re;
        for (int s = 0; s < segments; ++s) {
            const auto p = products(d, numbers(d, x[s] + k), numbers(d, c[s] + k));
            re.add(p.re);
            im.add(p.im);
        }
        const auto count = static_cast<uint64_t>(segments);
        const Parts<decltype(d)> high = {re.high(count), im.high(count)};
        // Sums from 2^62 on are saturated at each scale.
        const auto beyond = [=](auto v) { return hn::ShiftRight<31>(v + hn::Set(wider, uint64_t{1} << 30)); };
        const Parts<decltype(d)> low = {re.low64(count), im.low64(count)};
        const Parts<decltype(d)> lost = {beyond(high.re), beyond(high.im)};
        store(d, dst + k, scaledSums(d, low, upperHalves(d, high), lost, scale));
    });
    firWideFrom(done, x, c, segments, len, scale, dst);
}

// The products of numbers and the steps of each.
template <class D>
VEK_INLINE Parts<D> stepProducts(D d, const int32_t* step, const Vek32sc* error) {
    const hn::RepartitionToWide<D> wide;
    const auto steps = hn::BitCast(d, hn::PromoteTo(wide, hn::LoadU(hn::Rebind<int32_t, decltype(wide)>(), step)));
    const auto e = numbers(d, error);
    return {evenProducts(d, steps, e), evenProducts(d, steps, imaginary(d, e))};
}

void stepsSat(const int32_t* step, const Vek32sc* error, Vek32sc* dst, int len) {
    const int done = byRegisters<2>(D32(), 0, len, [=](auto d, int k) {
        auto p = stepProducts(d, step + k, error + k);
        const auto half = hn::Set(Wider<decltype(d)>(), 0x4000);
        p.re = p.re + half;
        p.im = p.im + half;
        store(d, dst + k, hn::Max(scaledSums(d, p, 15), hn::Set(d, -INT32_MAX)));
    });
    stepsSatFrom(done, step, error, dst, len);
}

void stepsLow(const int32_t* step, const Vek32sc* error, Vek32sc* dst, int len) {
    const int done = byRegisters<2>(D32(), 0, len, [=](auto d, int k) {
        const auto p = stepProducts(d, step + k, error + k);
        store(d, dst + k, lowerHalves(d, Parts<decltype(d)>{hn::ShiftRight<15>(p.re), hn::ShiftRight<15>(p.im)}));
    });
    stepsLowFrom(done, step, error, dst, len);
}

void learnLow(const Vek32sc* x, const Vek32sc* p, Vek32sc* c, int len, int shift) {
    const int done = byRegisters<2>(D32(), 0, len, [=](auto d, int k) {
        const auto r = conjugateProducts(d, numbers(d, x + k), numbers(d, p + k));
        const Parts<decltype(d)> change = {hn::ShiftRightSame(r.re, shift), hn::ShiftRightSame(r.im, shift)};
        store(d, c + k, numbers(d, c + k) + lowerHalves(d, change));
    });
    learnLowFrom(done, x, p, c, len, shift);
}

void learnSat(const Vek32sc* x, const Vek32sc* p, Vek32sc* c, int len, int shift) {
    const int done = byRegisters<2>(D32(), 0, len, [=](auto d, int k) {
        const Wider<decltype(d)> wider;
        // An arithmetic shift by way of numbers that are not negative.
        constexpr uint64_t raised = uint64_t{1} << 63;
        const auto half = hn::Set(wider, raised + (uint64_t{1} << (shift - 1)));
        const auto lowered = hn::Set(wider, raised >> shift);
        // Coefficients as 64-bit numbers: products by one.
        const auto one = hn::Set(d, 1);
        const auto learned = [=](auto change, auto old) {
            return hn::ShiftRightSame(change + half, shift) - lowered + evenProducts(d, old, one);
        };
        const auto r = conjugateProducts(d, numbers(d, x + k), numbers(d, p + k));
        const auto old = numbers(d, c + k);
        const Parts<decltype(d)> sums = {learned(r.re, old), learned(r.im, imaginary(d, old))};
        const auto values = lowerHalves(d, sums);
        const auto upper = upperHalves(d, sums);
        store(d, c + k, hn::IfThenElse(hn::BroadcastSignBit(values) == upper, values, bounds(d, upper)));
    });
    learnSatFrom(done, x, p, c, len, shift);
}

// The signs of odd lanes.
alignas(64) constexpr float kOdd[16] = {0, -0.0F, 0, -0.0F, 0, -0.0F, 0, -0.0F, 0, -0.0F, 0, -0.0F, 0, -0.0F, 0, -0.0F};

void learn32fc(const Vek32fc* x, const Vek32fc* g, Vek32fc* c, int len) {
    const int done = byRegisters<2>(hn::ScalableTag<float>(), 0, len, [=](auto d, int k) {
        const auto a = hn::LoadU(d, reinterpret_cast<const float*>(x + k));
        const auto b = hn::LoadU(d, reinterpret_cast<const float*>(g + k));
        auto* const to = reinterpret_cast<float*>(c + k);
        const auto crossed = hn::DupOdd(a) * hn::Reverse2(d, b);
        const auto change = hn::DupEven(a) * b + hn::Xor(crossed, hn::Load(d, kOdd));
        hn::StoreU(hn::LoadU(d, to) + change, d, to);
    });
    learn32fcFrom(done, x, g, c, len);
}

#endif

template <typename T>
VEK_INLINE void turn(const T* __restrict src, T* __restrict dst, int n) {
    for (int j = 0; j < n; ++j) {
        dst[j] = src[n - 1 - j];
    }
}

void turn16(const int16_t* src, int16_t* dst, int n) {
    turn(src, dst, n);
}

void turn32f(const float* src, float* dst, int n) {
    turn(src, dst, n);
}

} // namespace

VEK_KERNEL_TABLE_512(EcKernels, ecKernels) = {
    learn32f, learn16, firLow, firWide, learnLow, learnSat, stepsSat, stepsLow, steps32fc, learn32fc, turn16, turn32f,
};

} // namespace vek
