// The pitch lag's ranges and indices.
#include "sc/gsmamr/laglaw.h"

#include <algorithm>

namespace vek::gsmamr {

LagLaw::LagLaw(int subFrame, VekSpchBitRate mode) {
    const bool fewBits = mode == VEK_SPCHBR_4750 || mode == VEK_SPCHBR_5150;
    sixths = mode == VEK_SPCHBR_12200;
    relative = subFrame == 1 || subFrame == 3 || (subFrame == 2 && fewBits);
    coarse = relative && (fewBits || mode == VEK_SPCHBR_5900 || mode == VEK_SPCHBR_6700);
    shortest = sixths ? 18 : 20;
    const bool wide = mode == VEK_SPCHBR_7950;
    below = relative ? (wide ? 10 : 5) : fewBits ? 5 : 3;
    width = relative ? (wide ? 19 : 9) : fewBits ? 10 : 6;
    lastSplit = sixths ? 94 : 84;
    indexBits = !relative ? (sixths ? 9 : 8) : coarse ? 4 : sixths || wide ? 6 : 5;
}

LagRange::LagRange(const LagLaw& law, int around) {
    first = std::clamp(around - law.below, law.shortest, kLongestDelay - law.width);
    last = first + law.width;
}

int LagRange::middle(int former) const {
    return std::clamp(former, last - 4, first + 5);
}

int encodeLag(const LagLaw& law, const LagRange& range, int former, Lag lag) {
    const int parts = law.sixths ? 6 : 3;
    const int told = lag.whole * parts + lag.fraction;
    if (!law.relative) {
        if (law.sixths) {
            return lag.whole <= 94 ? told - 105 : lag.whole + 368;
        }
        return lag.whole <= 85 ? told - 58 : lag.whole + 112;
    }
    if (!law.coarse) {
        return told - range.first * parts + (law.sixths ? 3 : 2);
    }
    const int middle = range.middle(former);
    if (told <= 3 * (middle - 2)) {
        return lag.whole - middle + 5;
    }
    if (told < 3 * (middle + 1)) {
        return told - 3 * (middle - 2) + 3;
    }
    return lag.whole - middle + 11;
}

namespace {

// The nearest whole lag to a number of parts, and the rest: -1..1 thirds or -2..3 sixths.
Lag split(int told, int parts) {
    const int whole = parts == 3 ? (told + 1) / 3 : (told + 2) / 6;
    return {whole, told - whole * parts};
}

} // namespace

Lag decodeLag(const LagLaw& law, const LagRange& range, int former, int index) {
    if (!law.relative) {
        if (law.sixths) {
            return index < 463 ? split(index + 105, 6) : Lag{index - 368, 0};
        }
        return index < 197 ? split(index + 58, 3) : Lag{index - 112, 0};
    }
    if (!law.coarse) {
        return law.sixths ? split(index + range.first * 6 - 3, 6) : split(index + range.first * 3 - 2, 3);
    }
    const int middle = range.middle(former);
    if (index < 4) {
        return {index + middle - 5, 0};
    }
    if (index < 12) {
        return split(index - 3 + 3 * (middle - 2), 3);
    }
    return {index + middle - 11, 0};
}

} // namespace vek::gsmamr
