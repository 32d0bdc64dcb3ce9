// Sub-band ADPCM of G.722. The six zeros of a predictor are gone through together; what a sample waits for is scalar.
// Names of the published blocks stand in capitals.
#include "sc/kernels/g722.h"

#include <bit>

#include "sc/common/fixmath.h"
#include "sc/kernels/registers.h"

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

// The number of levels that the magnitude of a difference reaches.
int levelsBelow(int x, int estimate, int scale) {
    const int difference = cut(x - estimate);
    const int magnitude = difference ^ (difference >> 31);
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

using namespace registers;

using FourOf16 = hn::FixedTag<int16_t, 4>;
using TwoOf32 = hn::FixedTag<int32_t, 2>;

alignas(16) constexpr int16_t kSteps[8] = {128, 128, 128, 128, 128, 128, 0, 0};

// The same, a lane of 16 bits each; the last two of the zeros stay 0.
struct Zeros {
    hn::Vec<EightOf16> zeros;
    hn::Vec<EightOf16> differences;

    explicit Zeros(const Band& band) : zeros(packed(band.zeros)), differences(packed(band.differences)) {}
    void keep(Band& band) const {
        unpacked(zeros, band.zeros);
        unpacked(differences, band.differences);
    }
    // UPZERO and FILTEZ; the history moves on the way.
    VEK_INLINE int step(int d) {
        const auto fresh = hn::Set(kEightOf16, static_cast<int16_t>(d));
        const auto none = hn::VecFromMask(kEightOf16, fresh == hn::Zero(kEightOf16));
        const auto steps = hn::AndNot(none, hn::Load(kEightOf16, kSteps));
        const auto unlike = hn::BroadcastSignBit(fresh ^ differences);
        // Times 255 / 256, cut off.
        const auto leaked = zeros + hn::MulHigh(zeros, hn::Set(kEightOf16, -256));
        zeros = hn::SaturatedAdd(leaked, (steps ^ unlike) - unlike);
        differences = hn::CombineShiftRightBytes<14>(kEightOf16, differences, fresh);
        const auto twice = hn::SaturatedAdd(differences, differences);
        const auto low = zeros * twice;
        const auto high = hn::MulHigh(zeros, twice);
        const auto cutOff = [](auto products) { return hn::ShiftRight<15>(hn::BitCast(kFourOf32, products)); };
        const auto four =
            cutOff(hn::InterleaveLower(kEightOf16, low, high)) + cutOff(hn::InterleaveUpper(kEightOf16, low, high));
        return hn::GetLane(hn::SumOfLanes(kFourOf32, four));
    }

private:
    static hn::Vec<EightOf16> packed(const int32_t* v) {
        const auto last = hn::ZeroExtendVector(kFourOf32, hn::LoadU(TwoOf32(), v + 4));
        return hn::ReorderDemote2To(kEightOf16, hn::LoadU(kFourOf32, v), last);
    }
    static void unpacked(hn::Vec<EightOf16> a, int32_t* v) {
        hn::StoreU(hn::PromoteTo(kFourOf32, hn::LowerHalf(a)), kFourOf32, v);
        const auto last = hn::PromoteTo(kFourOf32, hn::UpperHalf(FourOf16(), a));
        hn::StoreU(hn::LowerHalf(last), TwoOf32(), v + 4);
    }
};

// Sixteen times the levels, and behind them the most that there is: of each sixteen those of even number, then those of
// odd number.
struct Levels {
    alignas(16) uint16_t q[32];
};
constexpr Levels kLevels = [] {
    Levels levels{};
    for (int i = 0; i < 32; ++i) {
        const auto level = i < kLowLevels ? static_cast<uint16_t>(16 * kQ6[i]) : uint16_t{UINT16_MAX};
        levels.q[i / 16 * 16 + i % 2 * 8 + i % 16 / 2] = level;
    }
    return levels;
}();

// The number of levels that the magnitude of a difference reaches. They rise: the first one that it does not tells.
VEK_INLINE int levelsBelow(int x, int estimate, int scale) {
    using Lanes = hn::RebindToUnsigned<EightOf16>;
    using Bytes = hn::Repartition<uint8_t, EightOf16>;
    const auto lanes = [](int v) { return hn::Set(kEightOf16, static_cast<int16_t>(v)); };
    const auto difference = hn::SaturatedSub(lanes(x), lanes(estimate));
    const auto m = difference ^ hn::BroadcastSignBit(difference);
    const auto s = hn::Set(Lanes(), static_cast<uint16_t>(scale));
    const auto above = [m, s](int i) {
        const auto level = hn::BitCast(kEightOf16, hn::MulHigh(hn::Load(Lanes(), kLevels.q + i), s));
        return hn::BitCast(Lanes(), hn::VecFromMask(kEightOf16, level > m));
    };
    // A bit for each of sixteen. Where a level is above, so is its odd neighbour: the mean of both has the sign of the
    // latter in its upper byte and that of the former in its lower one.
    const auto bits = [above](int i) {
        const auto mean = hn::BitCast(Bytes(), hn::AverageRound(above(i), above(i + 8)));
        uint16_t all = 0;
        hn::StoreMaskBits(Bytes(), hn::MaskFromVec(mean), reinterpret_cast<uint8_t*>(&all));
        return uint32_t{all};
    };
    return std::countr_zero(bits(0) | bits(16) << 16 | uint32_t{1} << kLowLevels);
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

// QUANTL
VEK_INLINE int quantiseLow(const Band& band, int x) {
    const int below = levelsBelow(x, band.estimate, band.scale);
    // Two words of the first levels of negative differences stand apart.
    const int negative = (below < 2 ? 63 : 33) - below;
    return x >= band.estimate ? 61 - below : negative;
}

// QUANTH
VEK_INLINE int quantiseHigh(const Band& band, int x) {
    const int d = x - band.estimate;
    const int level = (kHighLevel * band.scale) >> 12;
    // Without branches, which would be guessed wrong as often as not.
    const int far = static_cast<int>(d >= level) | static_cast<int>(d < -level);
    return 3 + 2 * (d >> 31) - far;
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
