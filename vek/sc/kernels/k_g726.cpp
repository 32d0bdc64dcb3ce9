// ADPCM of G.726: adaptive quantiser, adaptive predictor of two poles and six zeros, tone detector. The zeros' products
// and steps are made a lane each; the poles, for which a sample waits, in scalar code. Names of the published blocks
// stand in capitals.
#include "sc/kernels/g726.h"

#if VEK_LEVEL > 0
#include <immintrin.h>
#endif

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

#if VEK_LEVEL == 1

struct Eight {
    __m128i lo, hi;
};
VEK_INLINE Eight load(const int32_t* p) {
    const auto* v = reinterpret_cast<const __m128i*>(p);
    return {_mm_loadu_si128(v), _mm_loadu_si128(v + 1)};
}
VEK_INLINE void store(int32_t* p, Eight a) {
    auto* v = reinterpret_cast<__m128i*>(p);
    _mm_storeu_si128(v, a.lo);
    _mm_storeu_si128(v + 1, a.hi);
}
VEK_INLINE __m128i total(Eight a) {
    return _mm_add_epi32(a.lo, a.hi);
}
VEK_INLINE Eight pushed(Eight a, int first) {
    return {_mm_alignr_epi8(a.lo, _mm_shuffle_epi32(_mm_cvtsi32_si128(first), 0), 12),
            _mm_move_epi64(_mm_alignr_epi8(a.hi, a.lo, 12))};
}
// FMULT, as above; what is shifted to the right by `right` has 8 bits and is multiplied by a power of 2 in its place.
VEK_INLINE __m128i products(__m128i coefficients, __m128i numbers) {
    const __m128i c = _mm_srai_epi32(coefficients, 2);
    const __m128i magnitude = _mm_and_si128(_mm_abs_epi32(c), _mm_set1_epi32(0x1fff));
    const __m128i bits = _mm_castps_si128(_mm_max_ps(_mm_cvtepi32_ps(magnitude), _mm_set1_ps(0.5F)));
    const __m128i mantissa =
        _mm_or_si128(_mm_and_si128(_mm_srli_epi32(bits, 18), _mm_set1_epi32(31)), _mm_set1_epi32(32));
    const __m128i exponent = _mm_and_si128(_mm_srli_epi32(numbers, 6), _mm_set1_epi32(15));
    const __m128i up = _mm_add_epi32(_mm_srli_epi32(bits, 23), exponent);
    const __m128i sum = _mm_madd_epi16(mantissa, _mm_and_si128(numbers, _mm_set1_epi32(63)));
    const __m128i whole = _mm_srli_epi32(_mm_add_epi32(sum, _mm_set1_epi32(48)), 4);
    const __m128 power = _mm_castsi128_ps(_mm_slli_epi32(_mm_sub_epi32(up, _mm_set1_epi32(18)), 23));
    const __m128i shifted = _mm_cvttps_epi32(_mm_mul_ps(_mm_cvtepi32_ps(whole), power));
    const __m128i value = _mm_and_si128(shifted, _mm_set1_epi32(0x7fff));
    return _mm_sign_epi32(value, _mm_or_si128(_mm_xor_si128(c, numbers), _mm_set1_epi32(1)));
}
VEK_INLINE __m128i stepped(__m128i zeros, __m128i differences, __m128i leak, __m128i step, __m128i sign) {
    const __m128i up = _mm_sign_epi32(step, _mm_or_si128(_mm_xor_si128(differences, sign), _mm_set1_epi32(1)));
    const __m128i moved = _mm_add_epi32(_mm_sub_epi32(zeros, _mm_sra_epi32(zeros, leak)), up);
    return _mm_srai_epi32(_mm_slli_epi32(moved, 16), 16);
}
VEK_INLINE Eight products(Eight coefficients, Eight numbers) {
    return {products(coefficients.lo, numbers.lo), products(coefficients.hi, numbers.hi)};
}
VEK_INLINE Eight stepped(Eight zeros, Eight differences, int leak, int step, int sign) {
    const __m128i l = _mm_cvtsi32_si128(leak);
    const __m128i s = _mm_set1_epi32(sign);
    const __m128i all = _mm_set1_epi32(step);
    return {stepped(zeros.lo, differences.lo, l, all, s), stepped(zeros.hi, differences.hi, l, _mm_move_epi64(all), s)};
}
VEK_INLINE Eight none() {
    return {_mm_setzero_si128(), _mm_setzero_si128()};
}

#else

using Eight = __m256i;

VEK_INLINE Eight load(const int32_t* p) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}
VEK_INLINE void store(int32_t* p, Eight a) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), a);
}
VEK_INLINE __m128i total(Eight a) {
    return _mm_add_epi32(_mm256_castsi256_si128(a), _mm256_extracti128_si256(a, 1));
}
VEK_INLINE Eight pushed(Eight a, int first) {
    const Eight moved = _mm256_permutevar8x32_epi32(a, _mm256_setr_epi32(0, 0, 1, 2, 3, 4, 5, 6));
    return _mm256_blend_epi32(moved, _mm256_zextsi128_si256(_mm_cvtsi32_si128(first)), 0xc1);
}
// FMULT, as above.
VEK_INLINE Eight products(Eight coefficients, Eight numbers) {
    const Eight c = _mm256_srai_epi32(coefficients, 2);
    const Eight magnitude = _mm256_and_si256(_mm256_abs_epi32(c), _mm256_set1_epi32(0x1fff));
    const Eight bits = _mm256_castps_si256(_mm256_max_ps(_mm256_cvtepi32_ps(magnitude), _mm256_set1_ps(0.5F)));
    const Eight mantissa =
        _mm256_or_si256(_mm256_and_si256(_mm256_srli_epi32(bits, 18), _mm256_set1_epi32(31)), _mm256_set1_epi32(32));
    const Eight exponent = _mm256_and_si256(_mm256_srli_epi32(numbers, 6), _mm256_set1_epi32(15));
    const Eight up = _mm256_add_epi32(_mm256_srli_epi32(bits, 23), exponent);
    const Eight sum = _mm256_madd_epi16(mantissa, _mm256_and_si256(numbers, _mm256_set1_epi32(63)));
    const Eight whole = _mm256_srli_epi32(_mm256_add_epi32(sum, _mm256_set1_epi32(48)), 4);
    const Eight right = _mm256_sub_epi32(_mm256_set1_epi32(154), up);
    const Eight shifted = _mm256_srlv_epi32(_mm256_slli_epi32(whole, kMostShift), right);
    const Eight value = _mm256_and_si256(shifted, _mm256_set1_epi32(0x7fff));
    return _mm256_sign_epi32(value, _mm256_or_si256(_mm256_xor_si256(c, numbers), _mm256_set1_epi32(1)));
}
VEK_INLINE Eight stepped(Eight zeros, Eight differences, int leak, int step, int sign) {
    const Eight steps = _mm256_and_si256(_mm256_set1_epi32(step), _mm256_setr_epi32(-1, -1, -1, -1, -1, -1, 0, 0));
    const Eight unlike = _mm256_xor_si256(differences, _mm256_set1_epi32(sign));
    const Eight up = _mm256_sign_epi32(steps, _mm256_or_si256(unlike, _mm256_set1_epi32(1)));
    const Eight moved = _mm256_add_epi32(_mm256_sub_epi32(zeros, _mm256_sra_epi32(zeros, _mm_cvtsi32_si128(leak))), up);
    return _mm256_srai_epi32(_mm256_slli_epi32(moved, 16), 16);
}
VEK_INLINE Eight none() {
    return _mm256_setzero_si256();
}

#endif

// The zeros of the predictor and the differences that they weigh, a lane each; the last two lanes stay 0.
struct Zeros {
    Eight zeros;
    Eight differences;

    explicit Zeros(const Codec& codec) : zeros(load(codec.zeros)), differences(load(codec.differences)) {}
    void keep(Codec& codec) const {
        store(codec.zeros, zeros);
        store(codec.differences, differences);
    }
    VEK_INLINE int sum() const {
        __m128i s = total(products(zeros, differences));
        s = _mm_add_epi32(s, _mm_shuffle_epi32(s, 0x4e));
        return _mm_cvtsi128_si32(_mm_add_epi32(s, _mm_shuffle_epi32(s, 0xb1)));
    }
    VEK_INLINE void clear() { zeros = none(); }
    // UPB
    VEK_INLINE void adapt(int leak, int step, bool negative) {
        zeros = stepped(zeros, differences, leak, step, negative ? -1 : 0);
    }
    VEK_INLINE void push(int number) { differences = pushed(differences, number); }
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
