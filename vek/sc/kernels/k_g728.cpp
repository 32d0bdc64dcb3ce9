// Prediction and filters of the vectors of G.728. Sums that could leave 32 bits are widened every two products.
#include "sc/kernels/g728.h"

#include "sc/common/fixmath.h"
#include "sc/kernels/registers.h"

namespace vek {
namespace {

constexpr int kSamples = 5;
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

#else

using D32 = hn::RepartitionToWide<D16>;
using D64 = hn::RepartitionToWide<D32>;

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

#endif

} // namespace

VEK_KERNEL_TABLE(G728Kernels, g728Kernels) = {normalise, predict, recur, poleZero, poleZeroWide, poleZeroRest, zeros};

} // namespace vek
