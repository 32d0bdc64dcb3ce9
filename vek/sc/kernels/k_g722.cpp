// Sub-band ADPCM of G.722. The six zeros of a predictor are gone through together; what a sample waits for is scalar.
// Names of the published blocks stand in capitals.
#include "sc/kernels/g722.h"

#include <bit>

#include "sc/common/fixmath.h"

#if VEK_LEVEL > 0
#include <immintrin.h>
#endif

namespace vek {
namespace {

using namespace g722;

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

VEK_INLINE int cut(int v) {
    return fix::sat16(v);
}

VEK_INLINE int limited(int v, int least, int most) {
    return v < least ? least : v > most ? most : v;
}

#if VEK_LEVEL == 0

// The zeros of a predictor and the differences that they weigh.
struct Zeros {
    int zeros[kZeros];
    int differences[kZeros];

    explicit Zeros(const Band& band) {
        for (int i = 0; i < kZeros; ++i) {
            zeros[i] = band.zeros[i];
            differences[i] = band.differences[i];
        }
    }
    void keep(Band& band) const {
        for (int i = 0; i < kZeros; ++i) {
            band.zeros[i] = zeros[i];
            band.differences[i] = differences[i];
        }
    }
    // UPZERO and FILTEZ; the history moves on the way.
    int step(int d) {
        const int step = d == 0 ? 0 : 128;
        const int sign = d >> 31;
        int sum = 0;
        int before = d;
        for (int i = 0; i < kZeros; ++i) {
            const int past = differences[i];
            zeros[i] = cut(((zeros[i] * 32640) >> 15) + (past >> 31 == sign ? step : -step));
            differences[i] = before;
            sum += (zeros[i] * cut(2 * before)) >> 15;
            before = past;
        }
        return sum;
    }
};

// The number of levels that the magnitude reaches.
int levelsBelow(int magnitude, int scale) {
    int below = 0;
    int above = kLowLevels;
    while (below < above) {
        const int i = (below + above) / 2;
        if (magnitude < (kQ6[i] * scale) >> 12) {
            above = i;
        } else {
            below = i + 1;
        }
    }
    return below;
}

#else

// The same, a lane of 16 bits each; the last two of the zeros stay 0.
struct Zeros {
    __m128i zeros;
    __m128i differences;

    explicit Zeros(const Band& band) : zeros(packed(band.zeros)), differences(packed(band.differences)) {}
    void keep(Band& band) const {
        unpacked(zeros, band.zeros);
        unpacked(differences, band.differences);
    }
    // UPZERO and FILTEZ; the history moves on the way.
    VEK_INLINE int step(int d) {
        const __m128i fresh = _mm_set1_epi16(static_cast<int16_t>(d));
        const __m128i steps = _mm_andnot_si128(_mm_cmpeq_epi16(fresh, _mm_setzero_si128()),
                                               _mm_setr_epi16(128, 128, 128, 128, 128, 128, 0, 0));
        const __m128i unlike = _mm_srai_epi16(_mm_xor_si128(fresh, differences), 15);
        // Times 255 / 256, cut off.
        const __m128i leaked = _mm_add_epi16(zeros, _mm_mulhi_epi16(zeros, _mm_set1_epi16(-256)));
        zeros = _mm_adds_epi16(leaked, _mm_sub_epi16(_mm_xor_si128(steps, unlike), unlike));
        differences = _mm_alignr_epi8(differences, fresh, 14);
        const __m128i twice = _mm_adds_epi16(differences, differences);
        const __m128i low = _mm_mullo_epi16(zeros, twice);
        const __m128i high = _mm_mulhi_epi16(zeros, twice);
        __m128i s = _mm_add_epi32(_mm_srai_epi32(_mm_unpacklo_epi16(low, high), 15),
                                  _mm_srai_epi32(_mm_unpackhi_epi16(low, high), 15));
        s = _mm_add_epi32(s, _mm_shuffle_epi32(s, 0x4e));
        return _mm_cvtsi128_si32(_mm_add_epi32(s, _mm_shuffle_epi32(s, 0xb1)));
    }

private:
    static __m128i packed(const int32_t* v) {
        const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(v));
        return _mm_packs_epi32(four, _mm_loadl_epi64(reinterpret_cast<const __m128i*>(v + 4)));
    }
    static void unpacked(__m128i a, int32_t* v) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(v), _mm_cvtepi16_epi32(a));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(v + 4), _mm_cvtepi16_epi32(_mm_srli_si128(a, 8)));
    }
};

// Sixteen times the levels, and behind them what no magnitude reaches.
struct Levels {
    alignas(16) uint16_t q[32];
};
constexpr Levels kLevels = [] {
    Levels levels{};
    for (int i = 0; i < 32; ++i) {
        levels.q[i] = i < kLowLevels ? static_cast<uint16_t>(16 * kQ6[i]) : uint16_t{0};
    }
    return levels;
}();

// The number of levels that the magnitude reaches. They rise: the first one that it does not tells.
VEK_INLINE int levelsBelow(int magnitude, int scale) {
    const __m128i m = _mm_set1_epi16(static_cast<int16_t>(magnitude));
    const __m128i s = _mm_set1_epi16(static_cast<int16_t>(scale));
    const auto above = [m, s](int i) {
        const __m128i q = _mm_load_si128(reinterpret_cast<const __m128i*>(kLevels.q + i));
        return _mm_cmpgt_epi16(_mm_mulhi_epu16(q, s), m);
    };
    const auto low = static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(above(0), above(8))));
    const auto high = static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(above(16), above(24))));
    return std::countr_zero(low | high << 16 | uint32_t{1} << kLowLevels);
}

#endif

// One band on its way through a stretch.
struct Predictor {
    Band band;
    Zeros zeros;

    explicit Predictor(const Band& b) : band(b), zeros(b) {}

    void keep(Band& to) const {
        to = band;
        zeros.keep(to);
    }

    // LOGSCL or LOGSCH, then SCALEL or SCALEH.
    VEK_INLINE void rescale(int step, int limit, int shift) {
        band.logScale = limited(((band.logScale * 127) >> 7) + step, 0, limit);
        const int mantissa = kIlb[(band.logScale >> 6) & 31];
        // No scale has more than one bit above the mantissa.
        band.scale = ((2 * mantissa) >> (shift + 1 - (band.logScale >> 11))) << 2;
    }

    // UPPOL2, UPPOL1.
    VEK_INLINE void adaptPoles(int partial) {
        const int sign = partial >> 31;
        const int unlike1 = sign ^ (band.partials[0] >> 31);
        const int unlike2 = sign ^ (band.partials[1] >> 31);
        const int first = cut(band.poles[0] * 4);
        const int turned = (first ^ ~unlike1) - ~unlike1;
        const int step = ((turned > 32767 ? 32767 : turned) >> 7) + ((128 ^ unlike2) - unlike2);
        const int second = limited(step + ((band.poles[1] * 32512) >> 15), -12288, 12288);
        const int limit = 15360 - second;
        band.poles[0] = limited(((band.poles[0] * 32640) >> 15) + ((192 ^ unlike1) - unlike1), -limit, limit);
        band.poles[1] = second;
    }

    // The predictor's step with the quantised difference d.
    VEK_INLINE void predict(int d) {
        const int signal = cut(band.estimate + d);  // RECONS
        const int partial = cut(band.zeroPart + d); // PARREC
        adaptPoles(partial);
        band.zeroPart = cut(zeros.step(d));
        band.signals[1] = band.signals[0];
        band.signals[0] = signal;
        band.partials[1] = band.partials[0];
        band.partials[0] = partial;
        // FILTEP and PREDIC.
        const int polePart = cut(((band.poles[0] * cut(2 * band.signals[0])) >> 15) +
                                 ((band.poles[1] * cut(2 * band.signals[1])) >> 15));
        band.estimate = cut(polePart + band.zeroPart);
    }
};

VEK_INLINE void adaptLow(Predictor& low, int code4) {
    const int d = (low.band.scale * kQ4Inverse[code4]) >> 15;
    low.rescale(kW4[kRl4[code4]], kLowLimit, kLowShift);
    low.predict(d);
}

// The quantised difference.
VEK_INLINE int adaptHigh(Predictor& high, int code) {
    const int d = (high.band.scale * kQ2Inverse[code]) >> 15;
    high.rescale(kWh[code & 1], kHighLimit, kHighShift);
    high.predict(d);
    return d;
}

VEK_INLINE int magnitudeOf(int v) {
    return v ^ (v >> 31);
}

// QUANTL
VEK_INLINE int quantiseLow(const Band& band, int x) {
    const int d = cut(x - band.estimate);
    const int below = levelsBelow(magnitudeOf(d), band.scale);
    // Two words of the first levels of negative differences stand apart.
    const int negative = (below < 2 ? 63 : 33) - below;
    return d >= 0 ? 61 - below : negative;
}

// QUANTH
VEK_INLINE int quantiseHigh(const Band& band, int x) {
    const int d = cut(x - band.estimate);
    const bool far = magnitudeOf(d) >= (kHighLevel * band.scale) >> 12;
    return (d < 0 ? 1 : 3) - (far ? 1 : 0);
}

// The level that INVQBL gives for a code of a mode.
VEK_INLINE int lowLevel(int code, int mode) {
    return mode == 1 ? kQ6Inverse[code] : mode == 2 ? kQ5Inverse[code >> 1] : kQ4Inverse[code >> 2];
}

void encode(Bands& bands, const int16_t* x, int16_t* codes, int n) {
    Predictor low(bands.low);
    Predictor high(bands.high);
    for (int k = 0; k < n; ++k) {
        const int lowCode = quantiseLow(low.band, x[2 * k]);
        const int highCode = quantiseHigh(high.band, x[2 * k + 1]);
        adaptLow(low, lowCode >> 2);
        adaptHigh(high, highCode);
        codes[k] = static_cast<int16_t>(highCode << 6 | lowCode);
    }
    low.keep(bands.low);
    high.keep(bands.high);
}

void decode(Bands& bands, const int16_t* codes, int16_t* y, int n, int mode) {
    Predictor low(bands.low);
    Predictor high(bands.high);
    for (int k = 0; k < n; ++k) {
        const int lowCode = codes[k] & 63;
        const int highCode = (codes[k] >> 6) & 3;
        // LIMIT
        const int v = low.band.estimate + ((low.band.scale * lowLevel(lowCode, mode)) >> 15);
        y[2 * k] = static_cast<int16_t>(limited(v, -16384, 16383));
        adaptLow(low, lowCode >> 2);
        const int estimate = high.band.estimate;
        y[2 * k + 1] = static_cast<int16_t>(limited(estimate + adaptHigh(high, highCode), -16384, 16383));
    }
    low.keep(bands.low);
    high.keep(bands.high);
}

} // namespace

VEK_KERNEL_TABLE(G722Kernels, g722Kernels) = {encode, decode};

} // namespace vek
