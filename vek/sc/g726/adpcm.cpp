// ADPCM of G.726 at 16, 24, 32 and 40 kbit/s: adaptive quantiser, adaptive predictor of two poles and six zeros, tone
// detector, and the adjustment of a decoder for PCM codes. Names of the published blocks stand in capitals.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "sc/common/markedstate.h"
#include "sc/common/signal_check.h"
#include "sc/g726/companding.h"
#include "veksc_g722.h"

using namespace vek;

namespace {

// Quantiser of a rate, for codes of the lower half of the range; the upper half mirrors it.
struct Rate {
    int bits;
    int thresholds; // decision levels of magnitudes
    const int16_t* levels;
    const int16_t* logs;    // RECONST
    const int32_t* weights; // FUNCTW
    const int16_t* speeds;  // FUNCTF
    int leak;               // shift of the zeros' leakage
};

constexpr int16_t kLevels16[] = {261};
constexpr int16_t kLogs16[] = {116, 365};
constexpr int32_t kWeights16[] = {-704, 14048};
constexpr int16_t kSpeeds16[] = {0, 0xe00};

constexpr int16_t kLevels24[] = {8, 218, 331};
constexpr int16_t kLogs24[] = {-2048, 135, 273, 373};
constexpr int32_t kWeights24[] = {-128, 960, 4384, 18624};
constexpr int16_t kSpeeds24[] = {0, 0x200, 0x400, 0xe00};

constexpr int16_t kLevels32[] = {-124, 80, 178, 246, 300, 349, 400};
constexpr int16_t kLogs32[] = {-2048, 4, 135, 213, 273, 323, 373, 425};
constexpr int32_t kWeights32[] = {-384, 576, 1312, 2048, 3584, 6336, 11360, 35904};
constexpr int16_t kSpeeds32[] = {0, 0, 0, 0x200, 0x200, 0x200, 0x600, 0xe00};

constexpr int16_t kLevels40[] = {-122, -16, 68, 139, 198, 250, 298, 339, 378, 413, 445, 475, 502, 528, 553};
constexpr int16_t kLogs40[] = {-2048, -66, 28, 104, 169, 224, 274, 318, 358, 395, 429, 459, 488, 514, 539, 566};
constexpr int32_t kWeights40[] = {448,  448,  768,  1248, 1280,  1312,  1856,  3200,
                                  4512, 5728, 7008, 8960, 11456, 14080, 16928, 22272};
constexpr int16_t kSpeeds40[] = {0,     0,     0,     0,     0,     0x200, 0x200, 0x200,
                                 0x200, 0x200, 0x400, 0x600, 0x800, 0xa00, 0xc00, 0xc00};

constexpr Rate kRates[] = {
    {2, 1, kLevels16, kLogs16, kWeights16, kSpeeds16, 8},
    {3, 3, kLevels24, kLogs24, kWeights24, kSpeeds24, 8},
    {4, 7, kLevels32, kLogs32, kWeights32, kSpeeds32, 8},
    {5, 15, kLevels40, kLogs40, kWeights40, kSpeeds40, 9},
};

constexpr int kZeros = 6;
constexpr int kPoles = 2;
constexpr int32_t kStarted = 0x47323236;
constexpr int kSignOfFloat = 0x400;
constexpr int kUnitFloat = 32; // the float of 0

// Sums go modulo 65536.
int wrapped(int sum) {
    return static_cast<int16_t>(sum);
}

// A number of the predictor's history: sign, exponent of 4 bits, mantissa of 6.
int floatOf(int magnitude, bool negative) {
    const int exponent = std::bit_width(static_cast<unsigned>(magnitude));
    const int value = magnitude == 0 ? kUnitFloat : (exponent << 6) + ((magnitude << 6) >> exponent);
    return negative ? value - kSignOfFloat : value;
}

// FMULT: a coefficient of 16 bits times a number of the history.
int product(int coefficient, int number) {
    const int c = coefficient >> 2;
    const int magnitude = c > 0 ? c : -c & 0x1fff;
    const int exponent = std::bit_width(static_cast<unsigned>(magnitude)) - 6;
    const int mantissa = magnitude == 0 ? 32 : exponent >= 0 ? magnitude >> exponent : magnitude << -exponent;
    const int shift = exponent + ((number >> 6) & 15) - 13;
    const int whole = (mantissa * (number & 63) + 48) >> 4;
    const int value = shift >= 0 ? (whole << shift) & 0x7fff : whole >> -shift;
    return (c ^ number) < 0 ? -value : value;
}

struct Codec {
    int32_t started;
    int32_t rate;
    int32_t law;
    int32_t slow;      // YL
    int32_t fast;      // YU
    int32_t shortMean; // DMS
    int32_t longMean;  // DML
    int32_t speed;     // AP
    int32_t poles[kPoles];
    int32_t zeros[kZeros];
    int32_t signs[kPoles]; // PK
    int32_t differences[kZeros];
    int32_t signals[kPoles];
    int32_t tone; // TD

    void start(int newRate, int newLaw) {
        *this = {};
        started = kStarted;
        rate = newRate;
        law = newLaw;
        slow = 34816;
        fast = 544;
        std::fill_n(differences, kZeros, kUnitFloat);
        std::fill_n(signals, kPoles, kUnitFloat);
    }

    const Rate& tables() const { return kRates[rate]; }

    // MIX: the scale factor of the quantiser.
    int scale() const {
        if (speed >= 256) {
            return fast;
        }
        const int low = slow >> 6;
        const int difference = fast - low;
        const int share = difference * (speed >> 2);
        return low + (difference > 0 ? share >> 6 : difference < 0 ? (share + 63) >> 6 : 0);
    }

    struct Estimate {
        int zero;   // SEZ
        int signal; // SE
    };
    // ACCUM
    Estimate estimate() const {
        int sum = 0;
        for (int i = 0; i < kZeros; ++i) {
            sum += product(zeros[i], differences[i]);
        }
        const int zero = wrapped(sum) >> 1;
        for (int i = 0; i < kPoles; ++i) {
            sum += product(poles[i], signals[i]);
        }
        return {zero, wrapped(sum) >> 1};
    }

    // LOG, SUBTB and QUAN.
    int quantise(int difference, int y) const {
        const Rate& r = tables();
        const int magnitude = std::abs(difference);
        const int exponent = std::bit_width(static_cast<unsigned>(magnitude >> 1));
        const int mantissa = ((magnitude << 7) >> exponent) & 127;
        const int level = (exponent << 7) + mantissa - (y >> 2);
        int i = 0;
        while (i < r.thresholds && level >= r.levels[i]) {
            ++i;
        }
        const int all = 2 * r.thresholds + 1;
        if (difference < 0) {
            return all - i;
        }
        return i == 0 && r.bits > 2 ? all : i;
    }

    int folded(int code) const { return code >> (tables().bits - 1) != 0 ? (1 << tables().bits) - 1 - code : code; }

    // ADDA and ANTILOG: magnitude of the quantised difference.
    int magnitudeOf(int code, int y) const {
        const int log = tables().logs[folded(code)] + (y >> 2);
        return log < 0 ? 0 : ((128 + (log & 127)) << 7) >> (14 - ((log >> 7) & 15));
    }

    struct Sample {
        int signal; // SR
        Estimate from;
        int y;
    };

    // The signal of a code, and the step of everything that adapts.
    Sample reconstruct(int code, const Estimate& from, int y) {
        const bool negative = code >> (tables().bits - 1) != 0;
        const int magnitude = magnitudeOf(code, y);
        const int difference = negative ? -magnitude : magnitude;
        // ADDB and ADDC.
        const int signal = wrapped(from.signal + difference);
        adapt(code, y, magnitude, negative, signal, wrapped(from.zero + difference));
        return {signal, from, y};
    }

    void adapt(int code, int y, int magnitude, bool negative, int signal, int partial);
    bool isTransition(int magnitude) const;
    void adaptPoles(int sign, int partial);

    int adjusted(const Sample& sample, int code) const;
};

// TRANS: a jump of the difference behind a narrow-band signal.
bool Codec::isTransition(int magnitude) const {
    const int whole = slow >> 15;
    const int threshold = whole > 9 ? 31 << 10 : (32 + ((slow >> 10) & 31)) << whole;
    return tone != 0 && magnitude > (threshold + (threshold >> 1)) >> 1;
}

// UPA2, LIMC, UPA1 and LIMD.
void Codec::adaptPoles(int sign, int partial) {
    int second = poles[1] - (poles[1] >> 7);
    if (partial != 0) {
        const int first = (sign ^ signs[0]) != 0 ? poles[0] : -poles[0];
        second += first < -8191 ? -256 : first > 8191 ? 255 : first >> 5;
        const int step = (sign ^ signs[1]) != 0 ? -128 : 128;
        second = second <= -12288 - step ? -12288 : second >= 12288 - step ? 12288 : second + step;
    }
    poles[1] = second;
    poles[0] -= poles[0] >> 8;
    if (partial != 0) {
        poles[0] += (sign ^ signs[0]) == 0 ? 192 : -192;
    }
    const int limit = 15360 - second;
    poles[0] = std::clamp(poles[0], -limit, limit);
}

void Codec::adapt(int code, int y, int magnitude, bool negative, int signal, int partial) {
    const Rate& r = tables();
    const int i = folded(code);
    const bool transition = isTransition(magnitude);
    const int sign = partial < 0 ? 1 : 0;
    // FILTD, LIMB and FILTE.
    fast = std::clamp(y + ((r.weights[i] - y) >> 5), 544, 5120);
    slow += fast + (-slow >> 6);
    if (transition) {
        std::fill_n(poles, kPoles, 0);
        std::fill_n(zeros, kZeros, 0);
    } else {
        adaptPoles(sign, partial);
        // UPB
        for (int k = 0; k < kZeros; ++k) {
            zeros[k] -= zeros[k] >> r.leak;
            if (magnitude != 0) {
                zeros[k] = wrapped(zeros[k] + (negative == (differences[k] < 0) ? 128 : -128));
            }
        }
    }
    std::copy_backward(differences, differences + kZeros - 1, differences + kZeros);
    differences[0] = floatOf(magnitude, negative);
    signals[1] = signals[0];
    signals[0] = signal == -32768 ? kUnitFloat - kSignOfFloat : floatOf(std::abs(signal), signal < 0);
    signs[1] = signs[0];
    signs[0] = sign;
    tone = !transition && poles[1] < -11776 ? 1 : 0;
    // FILTA, FILTB, SUBTC and FILTC.
    shortMean += (r.speeds[i] - shortMean) >> 5;
    longMean += ((r.speeds[i] << 2) - longMean) >> 7;
    if (transition) {
        speed = 256;
    } else if (y < 1536 || tone != 0 || std::abs((shortMean << 2) - longMean) >= longMean >> 3) {
        speed += (512 - speed) >> 4;
    } else {
        speed += -speed >> 4;
    }
}

// One step up or down the codes of a law; the ends stay.
uint8_t alawNeighbour(uint8_t code, bool up) {
    const int bits = code ^ 0x55;
    const int magnitude = bits & 0x7f;
    const bool positive = (bits & 0x80) != 0;
    if (positive == up) {
        return static_cast<uint8_t>((magnitude == 0x7f ? bits : bits + 1) ^ 0x55);
    }
    return static_cast<uint8_t>((magnitude == 0 ? bits ^ 0x80 : bits - 1) ^ 0x55);
}

uint8_t mulawNeighbour(uint8_t code, bool up) {
    const bool positive = (code & 0x80) != 0;
    if (positive == up) {
        return static_cast<uint8_t>((code & 0x7f) == 0 ? code : code - 1);
    }
    // Two codes stand for 0: the step across it leaves one out.
    return static_cast<uint8_t>((code & 0x7f) != 0x7f ? code + 1 : positive ? 0x7e : 0xfe);
}

// COMPRESS, EXPAND, SUBTA, LOG, SUBTB, SYNC: the PCM code which, coded again, gives the same code.
int Codec::adjusted(const Sample& sample, int code) const {
    const bool isAlaw = law == VEK_PCM_ALAW;
    // The least number has a magnitude of 0 in 15 bits: the first step below 0 of A-law, the 0 of mu-law.
    const int signal = sample.signal != -32768 ? sample.signal : isAlaw ? -1 : 0;
    uint8_t pcm = isAlaw ? g711::alawCode((signal >> 1) * 8) : g711::mulawCode(signal * 4);
    const auto value = [&] { return isAlaw ? g711::alawValue(pcm) : g711::mulawValue(pcm); };
    const int again = quantise((value() >> 2) - sample.from.signal, sample.y);
    if (again != code) {
        const int sign = 1 << (tables().bits - 1);
        const bool up = (again ^ sign) <= (code ^ sign);
        pcm = isAlaw ? alawNeighbour(pcm, up) : mulawNeighbour(pcm, up);
    }
    return value();
}

int rateIndex(VekSpchBitRate rate) {
    switch (rate) {
    case VEK_SPCHBR_16000:
        return 0;
    case VEK_SPCHBR_24000:
        return 1;
    case VEK_SPCHBR_32000:
        return 2;
    case VEK_SPCHBR_40000:
        return 3;
    default:
        return -1;
    }
}

VekStatus begin(VeksCodecState_G726* state, VekSpchBitRate rate, int law) {
    if (state == nullptr) {
        return vekStsNullPtrErr;
    }
    if (rateIndex(rate) < 0) {
        return vekStsBitRateErr;
    }
    if (law < VEK_PCM_MULAW || law > VEK_PCM_LINEAR) {
        return vekStsLawErr;
    }
    Codec codec;
    codec.start(rateIndex(rate), law);
    std::memcpy(state, &codec, sizeof codec);
    return vekStsNoErr;
}

template <class From, class To, class Step>
VekStatus run(VeksCodecState_G726* state, const From* pSrc, To* pDst, int len, Step step) {
    if (state == nullptr || anyNull(pSrc) || anyNull(pDst)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len)) {
        return vekStsSizeErr;
    }
    Codec codec;
    std::memcpy(&codec, state, sizeof codec);
    if (codec.started != kStarted) {
        return vekStsStateErr;
    }
    for (int n = 0; n < len; ++n) {
        pDst[n] = step(codec, pSrc[n]);
    }
    std::memcpy(static_cast<void*>(state), &codec, sizeof codec);
    return vekStsNoErr;
}

} // namespace

VekStatus veksEncodeGetStateSize_G726_16s8u(int* pSize) {
    return stateSize<Codec>(pSize);
}

VekStatus veksDecodeGetStateSize_G726_8u16s(int* pSize) {
    return stateSize<Codec>(pSize);
}

VekStatus veksEncodeInit_G726_16s8u(VeksCodecState_G726* pEncMem, VekSpchBitRate rate) {
    return begin(pEncMem, rate, VEK_PCM_LINEAR);
}

VekStatus veksDecodeInit_G726_8u16s(VeksCodecState_G726* pDecMem, VekSpchBitRate rate, VekPCMLaw law) {
    return begin(pDecMem, rate, law);
}

VekStatus veksEncode_G726_16s8u(VeksCodecState_G726* pEncMem, const Vek16s* pSrc, Vek8u* pDst, int len) {
    return run(pEncMem, pSrc, pDst, len, [](Codec& codec, Vek16s x) {
        const Codec::Estimate from = codec.estimate();
        const int y = codec.scale();
        const int code = codec.quantise((x >> 2) - from.signal, y);
        codec.reconstruct(code, from, y);
        return static_cast<Vek8u>(code);
    });
}

VekStatus veksDecode_G726_8u16s(VeksCodecState_G726* pDecMem, const Vek8u* pSrc, Vek16s* pDst, int len) {
    return run(pDecMem, pSrc, pDst, len, [](Codec& codec, Vek8u byte) {
        const int code = byte & ((1 << codec.tables().bits) - 1);
        const Codec::Sample sample = codec.reconstruct(code, codec.estimate(), codec.scale());
        const int value = codec.law == VEK_PCM_LINEAR ? sample.signal * 4 : codec.adjusted(sample, code);
        return static_cast<Vek16s>(value);
    });
}
