// Sub-band ADPCM of G.722. Names of the published blocks stand in capitals.
#include "sc/g722/subband.h"

#include <algorithm>
#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/common/markedstate.h"
#include "sc/common/signal_check.h"
#include "veksc_g722.h"

using namespace vek;
using namespace vek::fix;
using namespace vek::g722;

namespace {

// Decision levels of the low band, 6 bits, and the code words of positive differences, falling with the level.
constexpr int kLowLevels = 29;
constexpr int16_t kQ6[kLowLevels] = {35,   72,   110,  150,  190,  233,  276,  323,  370,  422,
                                     473,  530,  587,  650,  714,  786,  858,  940,  1023, 1121,
                                     1219, 1339, 1458, 1612, 1765, 1980, 2195, 2557, 2919};
constexpr int kHighLevel = 564;

constexpr int16_t kW4[8] = {-60, -30, 58, 172, 334, 538, 1198, 3042};
constexpr int16_t kRl4[16] = {0, 7, 6, 5, 4, 3, 2, 1, 7, 6, 5, 4, 3, 2, 1, 0};
constexpr int16_t kWh[2] = {798, -214};
constexpr int16_t kIlb[32] = {2048, 2093, 2139, 2186, 2233, 2282, 2332, 2383, 2435, 2489, 2543,
                              2599, 2656, 2714, 2774, 2834, 2896, 2960, 3025, 3091, 3158, 3228,
                              3298, 3371, 3444, 3520, 3597, 3676, 3756, 3838, 3922, 4008};

constexpr int16_t kQ2Inverse[4] = {-7408, -1616, 7408, 1616};
constexpr int16_t kQ4Inverse[16] = {0,     -20456, -12896, -8968, -6288, -4240, -2584, -1200,
                                    20456, 12896,  8968,   6288,  4240,  2584,  1200,  0};
constexpr int16_t kQ5Inverse[32] = {-280,  -280,  -23352, -17560, -14120, -11664, -9752, -8184, -6864, -5712, -4696,
                                    -3784, -2960, -2208,  -1520,  -880,   23352,  17560, 14120, 11664, 9752,  8184,
                                    6864,  5712,  4696,   3784,   2960,   2208,   1520,  880,   280,   -280};
constexpr int16_t kQ6Inverse[64] = {
    -136,  -136,  -136,  -136,  -24808, -21904, -19008, -16704, -14984, -13512, -12280, -11192, -10232,
    -9360, -8576, -7856, -7192, -6576,  -6000,  -5456,  -4944,  -4464,  -4008,  -3576,  -3168,  -2776,
    -2400, -2032, -1688, -1360, -1040,  -728,   24808,  21904,  19008,  16704,  14984,  13512,  12280,
    11192, 10232, 9360,  8576,  7856,   7192,   6576,   6000,   5456,   4944,   4464,   4008,   3576,
    3168,  2776,  2400,  2032,  1688,   1360,   1040,   728,    432,    136,    -432,   -136};

constexpr int kLowLimit = 18432;
constexpr int kHighLimit = 22528;
constexpr int kLowShift = 8;
constexpr int kHighShift = 10;
constexpr int kLeastLow = 32;
constexpr int kLeastHigh = 8;

inline int cut(int v) {
    return sat16(v);
}

// LOGSCL or LOGSCH, then SCALEL or SCALEH.
void rescale(Band& band, int step, int limit, int shift) {
    band.logScale = std::clamp(((band.logScale * 127) >> 7) + step, 0, limit);
    const int mantissa = kIlb[(band.logScale >> 6) & 31];
    const int down = shift - (band.logScale >> 11);
    band.scale = (down < 0 ? mantissa << -down : mantissa >> down) << 2;
}

// UPPOL2, UPPOL1.
void adaptPoles(Band& band, int partial) {
    const int sign = partial >> 31;
    const bool same1 = sign == band.partials[0] >> 31;
    const bool same2 = sign == band.partials[1] >> 31;
    const int first = cut(band.poles[0] * 4);
    const int step = (std::min(same1 ? -first : first, 32767) >> 7) + (same2 ? 128 : -128);
    const int second = std::clamp(step + ((band.poles[1] * 32512) >> 15), -12288, 12288);
    const int limit = 15360 - second;
    band.poles[0] = std::clamp(((band.poles[0] * 32640) >> 15) + (same1 ? 192 : -192), -limit, limit);
    band.poles[1] = second;
}

// The predictor's step with the quantised difference d.
void predict(Band& band, int d) {
    const int signal = cut(band.estimate + d);  // RECONS
    const int partial = cut(band.zeroPart + d); // PARREC
    adaptPoles(band, partial);
    // UPZERO and FILTEZ; the history moves on the way.
    const int step = d == 0 ? 0 : 128;
    const int sign = d >> 31;
    int zeroPart = 0;
    int before = d;
    for (int i = 0; i < kZeros; ++i) {
        const int past = band.differences[i];
        band.zeros[i] = cut(((band.zeros[i] * 32640) >> 15) + (past >> 31 == sign ? step : -step));
        band.differences[i] = before;
        zeroPart += (band.zeros[i] * cut(2 * before)) >> 15;
        before = past;
    }
    band.zeroPart = cut(zeroPart);
    band.signals[1] = band.signals[0];
    band.signals[0] = signal;
    band.partials[1] = band.partials[0];
    band.partials[0] = partial;
    // FILTEP and PREDIC.
    const int polePart =
        cut(((band.poles[0] * cut(2 * band.signals[0])) >> 15) + ((band.poles[1] * cut(2 * band.signals[1])) >> 15));
    band.estimate = cut(polePart + band.zeroPart);
}

void adaptLow(Band& band, int code4) {
    const int d = (band.scale * kQ4Inverse[code4]) >> 15;
    rescale(band, kW4[kRl4[code4]], kLowLimit, kLowShift);
    predict(band, d);
}

// The quantised difference.
int adaptHigh(Band& band, int code) {
    const int d = (band.scale * kQ2Inverse[code]) >> 15;
    rescale(band, kWh[code & 1], kHighLimit, kHighShift);
    predict(band, d);
    return d;
}

int magnitudeOf(int v) {
    return v >= 0 ? v : -(v + 1);
}

// QUANTL
int quantiseLow(const Band& band, int x) {
    const int d = cut(x - band.estimate);
    const int magnitude = magnitudeOf(d);
    // The level by bisection: they rise.
    int below = 0;
    int above = kLowLevels;
    while (below < above) {
        const int i = (below + above) / 2;
        if (magnitude < (kQ6[i] * band.scale) >> 12) {
            above = i;
        } else {
            below = i + 1;
        }
    }
    // Two words of the first levels of negative differences stand apart.
    if (d >= 0) {
        return 61 - below;
    }
    return below < 2 ? 63 - below : 33 - below;
}

// QUANTH
int quantiseHigh(const Band& band, int x) {
    const int d = cut(x - band.estimate);
    const bool far = magnitudeOf(d) >= (kHighLevel * band.scale) >> 12;
    return d < 0 ? (far ? 0 : 1) : (far ? 2 : 3);
}

// The level that INVQBL gives for a code of a mode.
int lowLevel(int code, int mode) {
    switch (mode) {
    case 1:
        return kQ6Inverse[code];
    case 2:
        return kQ5Inverse[code >> 1];
    default:
        return kQ4Inverse[code >> 2];
    }
}

VekStatus begin(VeksCodecState_G722* state) {
    if (state == nullptr) {
        return vekStsNullPtrErr;
    }
    Bands bands = {};
    bands.started = kStarted;
    bands.low.scale = kLeastLow;
    bands.high.scale = kLeastHigh;
    std::memcpy(static_cast<void*>(state), &bands, sizeof bands);
    return vekStsNoErr;
}

VekStatus check(const Vek16s* pSrc, const Vek16s* pDst, int len, const void* state, Bands& bands) {
    if (anyNull(pSrc, pDst) || state == nullptr) {
        return vekStsNullPtrErr;
    }
    if (badLength(len) || len % 2 != 0) {
        return vekStsSizeErr;
    }
    std::memcpy(&bands, state, sizeof bands);
    return bands.started == kStarted ? vekStsNoErr : vekStsStateErr;
}

} // namespace

VekStatus veksSBADPCMEncodeStateSize_G722_16s(int* pSize) {
    return stateSize<Bands>(pSize);
}

VekStatus veksSBADPCMDecodeStateSize_G722_16s(int* pSize) {
    return stateSize<Bands>(pSize);
}

VekStatus veksSBADPCMEncodeInit_G722_16s(VeksCodecState_G722* pEncMem) {
    return begin(pEncMem);
}

VekStatus veksSBADPCMDecodeInit_G722_16s(VeksCodecState_G722* pDecMem) {
    return begin(pDecMem);
}

VekStatus veksSBADPCMEncode_G722_16s(const Vek16s* pSrc, Vek16s* pDst, int len, VeksCodecState_G722* pEncMem) {
    Bands bands;
    const VekStatus status = check(pSrc, pDst, len, pEncMem, bands);
    if (status != vekStsNoErr) {
        return status;
    }
    for (int n = 0; n < len / 2; ++n) {
        const int low = quantiseLow(bands.low, pSrc[2 * n]);
        const int high = quantiseHigh(bands.high, pSrc[2 * n + 1]);
        adaptLow(bands.low, low >> 2);
        adaptHigh(bands.high, high);
        pDst[n] = static_cast<Vek16s>(high << 6 | low);
    }
    std::memcpy(static_cast<void*>(pEncMem), &bands, sizeof bands);
    return vekStsNoErr;
}

VekStatus veksSBADPCMDecode_G722_16s(const Vek16s* pSrc, Vek16s* pDst, int len, int mode,
                                     VeksCodecState_G722* pDecMem) {
    Bands bands;
    const VekStatus status = check(pSrc, pDst, len, pDecMem, bands);
    if (status != vekStsNoErr) {
        return status;
    }
    if (mode < 1 || mode > 3) {
        return vekStsModeErr;
    }
    for (int n = 0; n < len / 2; ++n) {
        const int low = pSrc[n] & 63;
        const int high = (pSrc[n] >> 6) & 3;
        // LIMIT
        const int x = bands.low.estimate + ((bands.low.scale * lowLevel(low, mode)) >> 15);
        pDst[2 * n] = static_cast<Vek16s>(std::clamp(x, -16384, 16383));
        adaptLow(bands.low, low >> 2);
        const int estimate = bands.high.estimate;
        pDst[2 * n + 1] = static_cast<Vek16s>(std::clamp(estimate + adaptHigh(bands.high, high), -16384, 16383));
    }
    std::memcpy(static_cast<void*>(pDecMem), &bands, sizeof bands);
    return vekStsNoErr;
}
