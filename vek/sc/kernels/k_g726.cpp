// ADPCM of G.726: adaptive quantiser, adaptive predictor of two poles and six zeros, tone detector. The zeros' products
// and steps are made a lane each; the poles, for which a sample waits, in scalar code. Names of the published blocks
// stand in capitals.
#include "sc/kernels/g726.h"

#include "sc/kernels/registers.h"

namespace vek {
namespace {

using namespace g726;

// Sums go modulo 65536.
VEK_INLINE int wrapped(int sum) {
    return static_cast<int16_t>(sum);
}

VEK_INLINE int limited(int v, int least, int most) {
    return v < least ? least : v > most ? most : v;
}

VEK_INLINE int magnitudeOf(int v) {
    return v < 0 ? -v : v;
}

// A number of the predictor's history.
VEK_INLINE int floatOf(int magnitude, bool negative) {
    const int exponent = std::bit_width(static_cast<unsigned>(magnitude));
    const int value = magnitude == 0 ? kUnitFloat : (exponent << 6) + ((magnitude << 6) >> exponent);
    return negative ? value - kSignOfFloat : value;
}

// FMULT: a coefficient of 16 bits times a number of the history. Without branches: which way a number is shifted would
// be guessed wrong as often as not.
constexpr int kMostShift = 9;

VEK_INLINE int product(int coefficient, int number) {
    const int c = coefficient >> 2;
    const int sign = (c ^ number) >> 31;
    const int magnitude = magnitudeOf(c) & 0x1fff;
    const int width = std::bit_width(static_cast<unsigned>(magnitude));
    const int mantissa = magnitude == 0 ? 32 : (magnitude << 6) >> width;
    const int shift = width - 6 + ((number >> 6) & 15) - 13;
    const int whole = (mantissa * (number & 63) + 48) >> 4;
    const int value = ((whole << kMostShift) >> (kMostShift - shift)) & 0x7fff;
    return (value ^ sign) - sign;
}

#if VEK_LEVEL == 0

// The zeros of the predictor and the differences that they weigh.
struct Zeros {
    int zeros[kZeros];
    int differences[kZeros];

    explicit Zeros(const Codec& codec) {
        for (int i = 0; i < kZeros; ++i) {
            zeros[i] = codec.zeros[i];
            differences[i] = codec.differences[i];
        }
    }
    void keep(Codec& codec) const {
        for (int i = 0; i < kZeros; ++i) {
            codec.zeros[i] = zeros[i];
            codec.differences[i] = differences[i];
        }
    }
    int sum() const {
        int sum = 0;
        for (int i = 0; i < kZeros; ++i) {
            sum += product(zeros[i], differences[i]);
        }
        return sum;
    }
    void clear() {
        for (int& z : zeros) {
            z = 0;
        }
    }
    // UPB
    void adapt(int leak, int step, bool negative) {
        for (int i = 0; i < kZeros; ++i) {
            zeros[i] -= zeros[i] >> leak;
            zeros[i] = wrapped(zeros[i] + (negative == (differences[i] < 0) ? step : -step));
        }
    }
    void push(int number) {
        for (int i = kZeros - 1; i > 0; --i) {
            differences[i] = differences[i - 1];
        }
        differences[0] = number;
    }
};

#else

using namespace registers;

// As many of the eight lanes as a register takes.
using Part = hn::CappedTag<int32_t, kLanes>;
using PartFloats = hn::RebindToFloat<Part>;
using PartHalves = hn::RepartitionToNarrow<Part>;

constexpr Part part;
constexpr int kParts = kLanes / kLanesOf<Part>;

alignas(32) constexpr int32_t kSix[kLanes] = {-1, -1, -1, -1, -1, -1, 0, 0};
alignas(32) constexpr int32_t kFromSecondToSix[kLanes] = {0, -1, -1, -1, -1, -1, 0, 0};
alignas(32) constexpr int32_t kBefore[kLanes] = {0, 0, 1, 2, 3, 4, 5, 6};

VEK_INLINE hn::Vec<Part> all(int32_t x) {
    return hn::Set(part, x);
}

// The lower 16 bits of `whole`, of 8 bits, times 2^(up - 145), cut off: with a shift for each lane, or where there is
// none as floating-point numbers. Nearly a half less is then rounded to the nearest, by a number whose last bit counts
// 1. Parts as fine as 2^-9 stand in the sum up to 2^14; from there on products are even, and a half less gives them.
template <class D>
VEK_INLINE hn::Vec<D> scaled(D d, hn::Vec<D> whole, hn::Vec<D> up) {
    if constexpr (kLanesOf<D> == kLanes) {
        return hn::ShiftLeft<kMostShift>(whole) >> (hn::Set(d, 145 + kMostShift) - up);
    } else {
        const PartFloats floats;
        const auto power = hn::BitCast(floats, hn::ShiftLeft<23>(up - hn::Set(d, 145 - 127)));
        const auto less = hn::ConvertTo(floats, whole) * power - hn::Set(floats, 0.5F - 0x1p-10F);
        return hn::BitCast(d, less + hn::Set(floats, 0x1.8p23F));
    }
}

// FMULT, as above, of coefficients in the upper halves of lanes. Width and mantissa are those of a floating-point
// number; 0 has the ones of 0.5.
VEK_INLINE hn::Vec<Part> products(hn::Vec<Part> coefficients, hn::Vec<Part> numbers) {
    const auto magnitude = hn::Abs(hn::ShiftRight<18>(coefficients)) & all(0x1fff);
    const auto bits = hn::Max(hn::BitCast(part, hn::ConvertTo(PartFloats(), magnitude)), all(0x3f000000));
    const auto mantissa = (hn::ShiftRight<18>(bits) & all(31)) | all(32);
    const auto exponent = hn::ShiftRight<6>(numbers) & all(15);
    const auto sum = pairSums(hn::BitCast(PartHalves(), mantissa), hn::BitCast(PartHalves(), numbers & all(63)));
    const auto whole = hn::ShiftRight<4>(sum + all(48));
    const auto value = scaled(part, whole, hn::ShiftRight<23>(bits) + exponent) & all(0x7fff);
    const auto sign = hn::BroadcastSignBit(coefficients ^ numbers);
    return (value ^ sign) - sign;
}

// The numbers one lane up, a fresh one in the first.
template <class D>
VEK_INLINE void pushed(D d, hn::Vec<D> (&v)[kParts], int first) {
    if constexpr (kLanesOf<D> == kLanes) {
        const auto moved = hn::TableLookupLanes(v[0], hn::SetTableIndices(d, kBefore));
        const auto fresh = hn::ZeroExtendVector(d, hn::InsertLane(hn::Zero(kFourOf32), 0, first));
        v[0] = (moved & hn::Load(d, kFromSecondToSix)) | fresh;
    } else {
        v[1] = hn::CombineShiftRightBytes<12>(d, v[1], v[0]) & hn::Load(d, kSix + kLanesOf<D>);
        v[0] = hn::CombineShiftRightBytes<12>(d, v[0], hn::Set(d, first));
    }
}

// The zeros of the predictor, in the upper halves of lanes, where sums go modulo 65536, and the differences that they
// weigh, a lane each; the last two lanes stay 0.
struct Zeros {
    hn::Vec<Part> zeros[kParts];
    hn::Vec<Part> differences[kParts];

    explicit Zeros(const Codec& codec) {
        for (int p = 0; p < kParts; ++p) {
            zeros[p] = hn::ShiftLeft<16>(hn::LoadU(part, codec.zeros + p * kLanesOf<Part>));
            differences[p] = hn::LoadU(part, codec.differences + p * kLanesOf<Part>);
        }
    }
    void keep(Codec& codec) const {
        for (int p = 0; p < kParts; ++p) {
            hn::StoreU(hn::ShiftRight<16>(zeros[p]), part, codec.zeros + p * kLanesOf<Part>);
            hn::StoreU(differences[p], part, codec.differences + p * kLanesOf<Part>);
        }
    }
    VEK_INLINE int sum() const {
        auto sums = products(zeros[0], differences[0]);
        for (int p = 1; p < kParts; ++p) {
            sums = sums + products(zeros[p], differences[p]);
        }
        return hn::GetLane(hn::SumOfLanes(kFourOf32, fourSums(sums)));
    }
    VEK_INLINE void clear() {
        for (auto& z : zeros) {
            z = hn::Zero(part);
        }
    }
    // UPB
    VEK_INLINE void adapt(int leak, int step, bool negative) {
        const auto sign = all(negative ? -1 : 0);
        for (int p = 0; p < kParts; ++p) {
            const auto leaked = zeros[p] - (hn::ShiftRightSame(zeros[p], leak) & all(-65536));
            const auto steps = all(step * 65536) & hn::Load(part, kSix + p * kLanesOf<Part>);
            const auto unlike = hn::BroadcastSignBit(differences[p]) ^ sign;
            zeros[p] = leaked - unlike + (steps ^ unlike);
        }
    }
    VEK_INLINE void push(int number) { pushed(part, differences, number); }
};

#endif

struct Estimate {
    int zero;   // SEZ
    int signal; // SE
};

// The state of a stretch, in registers as far as they go.
struct Stretch {
    Codec codec;
    Zeros zeros;
    const Rate& rate;

    explicit Stretch(const Codec& c) : codec(c), zeros(c), rate(kRates[c.rate]) {}

    // MIX: the scale factor of the quantiser.
    VEK_INLINE int scale() const {
        const int low = codec.slow >> 6;
        const int difference = codec.fast - low;
        const int share = difference * (codec.speed >> 2);
        const int mixed = low + ((share + (difference < 0 ? 63 : 0)) >> 6);
        return codec.speed >= 256 ? codec.fast : mixed;
    }

    // ACCUM
    VEK_INLINE Estimate estimate() const {
        const int sum = zeros.sum();
        const int poles = product(codec.poles[0], codec.signals[0]) + product(codec.poles[1], codec.signals[1]);
        return {wrapped(sum) >> 1, wrapped(sum + poles) >> 1};
    }

    // The signal of a code, and the step of everything that adapts.
    VEK_INLINE int reconstruct(int code, const Estimate& from, int y) {
        const bool negative = code >> (rate.bits - 1) != 0;
        const int i = negative ? (1 << rate.bits) - 1 - code : code;
        // ADDA and ANTILOG: magnitude of the quantised difference.
        const int log = rate.logs[i] + (y >> 2);
        const int magnitude = log < 0 ? 0 : ((128 + (log & 127)) << 7) >> (14 - ((log >> 7) & 15));
        const int difference = negative ? -magnitude : magnitude;
        // ADDB and ADDC.
        const int signal = wrapped(from.signal + difference);
        adapt(i, y, magnitude, negative, signal, wrapped(from.zero + difference));
        return signal;
    }

    // TRANS: a jump of the difference behind a narrow-band signal.
    VEK_INLINE bool isTransition(int magnitude) const {
        if (codec.tone == 0) {
            return false;
        }
        const int whole = codec.slow >> 15;
        const int threshold = whole > 9 ? 31 << 10 : (32 + ((codec.slow >> 10) & 31)) << whole;
        return magnitude > (threshold + (threshold >> 1)) >> 1;
    }

    // UPA2, LIMC, UPA1 and LIMD.
    VEK_INLINE void adaptPoles(int sign, int partial) {
        const int like0 = (sign ^ codec.signs[0]) == 0 ? -1 : 0;
        const int like1 = (sign ^ codec.signs[1]) == 0 ? -1 : 0;
        int second = codec.poles[1] - (codec.poles[1] >> 7);
        int first = codec.poles[0] - (codec.poles[0] >> 8);
        if (partial != 0) {
            const int turned = (codec.poles[0] ^ like0) - like0;
            second += limited(turned >> 5, -256, 255);
            second = limited(second + ((-128 ^ like1) - like1), -12288, 12288);
            first += (-192 ^ like0) - like0;
        }
        codec.poles[1] = second;
        codec.poles[0] = limited(first, second - 15360, 15360 - second);
    }

    VEK_INLINE void adapt(int i, int y, int magnitude, bool negative, int signal, int partial) {
        const bool transition = isTransition(magnitude);
        const int sign = partial < 0 ? 1 : 0;
        // FILTD, LIMB and FILTE.
        codec.fast = limited(y + ((rate.weights[i] - y) >> 5), 544, 5120);
        codec.slow += codec.fast + (-codec.slow >> 6);
        if (transition) [[unlikely]] {
            codec.poles[0] = 0;
            codec.poles[1] = 0;
            zeros.clear();
        } else {
            adaptPoles(sign, partial);
            zeros.adapt(rate.leak, magnitude != 0 ? 128 : 0, negative);
        }
        zeros.push(floatOf(magnitude, negative));
        codec.signals[1] = codec.signals[0];
        codec.signals[0] = signal == -32768 ? kUnitFloat - kSignOfFloat : floatOf(magnitudeOf(signal), signal < 0);
        codec.signs[1] = codec.signs[0];
        codec.signs[0] = sign;
        codec.tone = !transition && codec.poles[1] < -11776 ? 1 : 0;
        // FILTA, FILTB, SUBTC and FILTC.
        codec.shortMean += (rate.speeds[i] - codec.shortMean) >> 5;
        codec.longMean += ((rate.speeds[i] << 2) - codec.longMean) >> 7;
        const bool restless =
            y < 1536 || codec.tone != 0 || magnitudeOf((codec.shortMean << 2) - codec.longMean) >= codec.longMean >> 3;
        const int speed = codec.speed + (((restless ? 512 : 0) - codec.speed) >> 4);
        codec.speed = transition ? 256 : speed;
    }

    void keep(Codec& to) const {
        to = codec;
        zeros.keep(to);
    }
};

void encode(Codec& codec, const int16_t* x, uint8_t* codes, int n) {
    Stretch s(codec);
    for (int k = 0; k < n; ++k) {
        const Estimate from = s.estimate();
        const int y = s.scale();
        const int code = quantise(s.rate, (x[k] >> 2) - from.signal, y);
        s.reconstruct(code, from, y);
        codes[k] = static_cast<uint8_t>(code);
    }
    s.keep(codec);
}

void decode(Codec& codec, const uint8_t* codes, G726Sample* samples, int n) {
    Stretch s(codec);
    const int mask = (1 << s.rate.bits) - 1;
    for (int k = 0; k < n; ++k) {
        const Estimate from = s.estimate();
        const int y = s.scale();
        const int signal = s.reconstruct(codes[k] & mask, from, y);
        samples[k] = {static_cast<int16_t>(signal), static_cast<int16_t>(from.signal), static_cast<int16_t>(y)};
    }
    s.keep(codec);
}

} // namespace

VEK_KERNEL_TABLE(G726Kernels, g726Kernels) = {encode, decode};

} // namespace vek
