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
