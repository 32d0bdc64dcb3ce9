// Prediction, recursion and codebook search of G.728. Sums that could leave 32 bits are widened every two products.
#include "sc/kernels/g728.h"

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

// The recursions within a vector, in scalar code at all levels: each sample waits for the one before.
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

void poleZero(const int16_t* c, const int16_t* x, int16_t* y) {
    int64_t sums[kSamples];
    for (int k = 0; k < kSamples; ++k) {
        int64_t s = x[kZeros + k] * (1 << 14) + kHalf14;
        for (int i = 0; i < kZeros; ++i) {
            s += c[i] * x[kZeros - 1 + k - i];
        }
        for (int i = k; i < kZeros; ++i) {
            s -= c[kZeros + i] * y[kZeros - 1 + k - i];
        }
        sums[k] = s;
    }
    int out[kSamples];
    for (int k = 0; k < kSamples; ++k) {
        int64_t s = sums[k];
        for (int i = k - 1; i >= 0; --i) {
            s -= c[kZeros + i] * out[k - 1 - i];
        }
        s >>= 14;
        out[k] = static_cast<int>(s > INT16_MAX ? INT16_MAX : s < INT16_MIN ? INT16_MIN : s);
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
    int16_t out[kSamples];
    for (int k = 0; k < kSamples; ++k) {
        int64_t s = x[kZeros + k] * (1 << 13) + (1 << 12);
        for (int i = 0; i < kZeros; ++i) {
            s += c[i] * x[kZeros - 1 + k - i];
        }
        out[k] = fix::sat16_64(s >> 13);
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

bool reflect(const int16_t* a, const int16_t* back, int m, int16_t k, int16_t* aOut, int16_t* backOut) {
    bool fits = true;
    for (int i = 0; i < m; ++i) {
        const int forward = a[i] + fix::mult_r(k, back[i]);
        const int backward = back[i] + fix::mult_r(k, a[i]);
        aOut[i] = fix::sat16(forward);
        backOut[i] = fix::sat16(backward);
        fits = fits && aOut[i] == forward && backOut[i] == backward;
    }
    for (int i = m; i % 16 != 0; ++i) {
        aOut[i] = 0;
        backOut[i] = 0;
    }
    return fits;
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

bool reflect(const int16_t* a, const int16_t* back, int m, int16_t k, int16_t* aOut, int16_t* backOut) {
    const V factor = spread16(k);
    V lost = spread(0);
    for (int i = 0; i < (m + 15) / 16 * 16; i += 2 * kLanes) {
        const V x = loadAll(a + i);
        const V y = loadAll(back + i);
        const V dx = multRounded(y, factor);
        const V dy = multRounded(x, factor);
        const V forward = plus16(x, dx);
        const V backward = plus16(y, dy);
        lost = orBits(lost, orBits(lost16(forward, x, dx), lost16(backward, y, dy)));
        storeAll(aOut + i, forward);
        storeAll(backOut + i, backward);
    }
    return none(lost);
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
                                              poleZeroRest, zeros,   reflect, energies, nearest};

} // namespace vek
