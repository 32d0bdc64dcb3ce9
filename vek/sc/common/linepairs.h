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
    const Vek16s steep = abs_s(rise);
    const int exp = norm_s(steep);
    const Vek16s inverse = div_s(16383, shl(steep, exp));
    Vek16s slope = extract_l(L_shr(L_mult(width, inverse), 20 - exp));
    if (rise < 0) {
        slope = negate(slope);
    }
    return sub(xLow, extract_l(L_shr(L_mult(yLow, slope), 11)));
}

// Product of 1 - 2 c z^-1 + z^-2 over every second one of the cosines, `half` of them, up to the middle, which the rest
// mirrors.
template <typename T>
void pairProduct(const T* cosines, int half, T* f) {
    f[0] = 1;
    f[1] = -2 * cosines[0];
    for (int i = 2; i <= half; ++i) {
        const T b = -2 * cosines[2 * (i - 1)];
        f[i] = b * f[i - 1] + 2 * f[i - 2];
        for (int j = i - 1; j > 1; --j) {
            f[j] += b * f[j - 1] + f[j - 2];
        }
        f[1] += b;
    }
}

// The prediction coefficients of 2 * half pairs, half up to MostPairs.
template <int MostPairs, typename T>
void pairsToCoefficients(const T* cosines, int half, float* a) {
    T f1[MostPairs + 1];
    T f2[MostPairs + 1];
    pairProduct(cosines, half, f1);
    pairProduct(cosines + 1, half, f2);
    a[0] = 1;
    for (int i = 1; i <= half; ++i) {
        const T sum = f1[i] + f1[i - 1];
        const T difference = f2[i] - f2[i - 1];
        a[i] = static_cast<float>(T{0.5} * (sum + difference));
        a[2 * half + 1 - i] = static_cast<float>(T{0.5} * (sum - difference));
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
