// What the conversions to line and immittance spectral pairs and back share.
#pragma once

#include "sc/common/fixmath.h"
#include "vekdefs.h"

namespace vek {

// The zero of the line through both ends of an interval.
inline Vek16s zeroBetween(Vek16s xLow, Vek16s yLow, Vek16s xHigh, Vek16s yHigh) {
    using namespace fix;
    const Vek16s width = sub(xHigh, xLow);
    const Vek16s rise = sub(yHigh, yLow);
    if (rise == 0) {
        return xLow;
    }
    const int steep = abs_s(rise);
    const int exp = norm_s(static_cast<Vek16s>(steep));
    // A normalised divisor has 14 bits and more.
    // NOLINTNEXTLINE(clang-analyzer-core.DivideZero)
    const int inverse = (16383 << 15) / (steep << exp);
    const Vek16s size = extract_l((2 * width * inverse) >> (20 - exp));
    const Vek16s slope = rise < 0 ? negate(size) : size;
    return sub(xLow, extract_l(L_mult(yLow, slope) >> 11));
}

inline float zeroBetween(float xLow, float yLow, float xHigh, float yHigh) {
    return yHigh != yLow ? xLow - yLow * (xHigh - xLow) / (yHigh - yLow) : xLow;
}

inline Vek16s middleOf(Vek16s low, Vek16s high) {
    return static_cast<Vek16s>((low >> 1) + (high >> 1));
}

inline float middleOf(float low, float high) {
    return 0.5F * (low + high);
}

// The value of a series at a point of the grid, which it may have at hand.
template <class Series, class X>
inline X valueOnGrid(const Series& series, int j, X x) {
    if constexpr (requires { series.atPoint(j); }) {
        return series.atPoint(j);
    } else {
        return series(x);
    }
}

// Roots of two series that interlace, `wanted` of them, looked for between the points 0 to `points` of a falling grid:
// each one found changes over to the other series. `seriesOf(n)` is the one of root n, a function of x. Tells how many
// were found.
template <int Bisections, class X, class GridPoint, class SeriesOf>
inline int interlacedRoots(int wanted, int points, GridPoint gridPoint, SeriesOf seriesOf, X* found) {
    int count = 0;
    auto series = seriesOf(0);
    X xLow = gridPoint(0);
    X yLow = valueOnGrid(series, 0, xLow);
    for (int j = 1; count < wanted && j <= points; ++j) {
        X xHigh = xLow;
        X yHigh = yLow;
        xLow = gridPoint(j);
        yLow = valueOnGrid(series, j, xLow);
        if (!(yLow * yHigh <= 0)) {
            continue;
        }
        for (int i = 0; i < Bisections; ++i) {
            const X xMid = middleOf(xLow, xHigh);
            const X yMid = series(xMid);
            if (yLow * yMid <= 0) {
                yHigh = yMid;
                xHigh = xMid;
            } else {
                yLow = yMid;
                xLow = xMid;
            }
        }
        xLow = zeroBetween(xLow, yLow, xHigh, yHigh);
        found[count++] = xLow;
        series = seriesOf(count);
        yLow = series(xLow);
    }
    return count;
}

// Product of 1 - 2 c z^-1 + z^-2 over every second one of the cosines, Half of them, up to the middle, which the rest
// mirrors. All steps are laid out, so that what they make stays in registers.
template <int Half, typename T>
[[gnu::always_inline]] inline void pairProduct(const T* cosines, T* f) {
    if constexpr (Half == 1) {
        f[0] = 1;
        f[1] = -2 * cosines[0];
    } else {
        pairProduct<Half - 1>(cosines, f);
        const T b = -2 * cosines[2 * (Half - 1)];
        f[Half] = b * f[Half - 1] + 2 * f[Half - 2];
#pragma GCC unroll 8
        for (int j = Half - 1; j > 1; --j) {
            f[j] += b * f[j - 1] + f[j - 2];
        }
        f[1] += b;
    }
}

// The prediction coefficients of 2 * Half pairs.
template <int Half, typename T>
void pairsToCoefficients(const T* cosines, float* a) {
    T f1[Half + 1];
    T f2[Half + 1];
    pairProduct<Half>(cosines, f1);
    pairProduct<Half>(cosines + 1, f2);
    a[0] = 1;
#pragma GCC unroll 8
    for (int i = 1; i <= Half; ++i) {
        const T sum = f1[i] + f1[i - 1];
        const T difference = f2[i] - f2[i - 1];
        a[i] = static_cast<float>(T{0.5} * (sum + difference));
        a[2 * Half + 1 - i] = static_cast<float>(T{0.5} * (sum - difference));
    }
}

// Sums that have room and remember how large the coefficients have become, and sums that saturate. While all
// coefficients stay below 2^29, no sum nor product on the way to the next one leaves 32 bits.
struct QuickSums {
    int64_t used = 0;
    int64_t operator()(int64_t v) { return v; }
    int64_t keep(int64_t v) {
        used |= v ^ (v >> 63);
        return v;
    }
    bool within() const { return used < 1 << 29; }
};
struct SaturatingSums {
    int64_t operator()(int64_t v) { return fix::sat32(v); }
    int64_t keep(int64_t v) { return fix::sat32(v); }
};

} // namespace vek
