// Coder and decoder of GSM full rate put together from the library's steps. What the recommendation does between the
// steps (log area ratios, gain, grid, block maximum) is written out here.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "good.h"
#include "sc/common/fixmath.h"
#include "veksc.h"

namespace gsmfr {

using namespace vek::fix;
using Word = int16_t;

constexpr int kFrame = 160;
constexpr int kSub = 40;
constexpr int kOrder = 8;
constexpr int kPast = 120;

// One frame in the order of the codec's parameters.
using Frame = std::array<Word, 76>;

// Quantiser of the log area ratios: scale, offset, limits and the inverse of the scale.
struct Ratio {
    Word scale, offset, least, most, inverse;
};
constexpr Ratio kRatios[kOrder] = {
    {20480, 0, -32, 31, 13107},     {20480, 0, -32, 31, 13107},  {20480, 2048, -16, 15, 13107},
    {20480, -2560, -16, 15, 13107}, {13964, 94, -8, 7, 19223},   {15360, -1792, -8, 7, 17476},
    {8534, -341, -4, 3, 31454},     {9036, -1144, -4, 3, 29708},
};
constexpr Word kGains[4] = {3277, 11469, 21299, 32767};
constexpr Word kDecisions[3] = {6554, 16384, 26214};
constexpr Word kInverseMiddles[8] = {29128, 26215, 23832, 21846, 20165, 18725, 17476, 16384};

inline Word signedLike(Word sign, Word magnitude) {
    return sign < 0 ? negate(magnitude) : magnitude;
}

inline Word ratioCode(Word reflection, const Ratio& q) {
    Word v = abs_s(reflection);
    v = static_cast<Word>(v < 22118 ? v >> 1 : v < 31130 ? v - 11059 : (v - 26112) * 4);
    v = signedLike(reflection, v);
    v = static_cast<Word>(add(add(mult(q.scale, v), q.offset), 256) >> 9);
    return static_cast<Word>(std::clamp<int>(v, q.least, q.most) - q.least);
}

inline Word ratioOf(Word code, const Ratio& q) {
    Word v = shl(add(code, q.least), 10);
    v = mult_r(q.inverse, sub(v, shl(q.offset, 1)));
    return add(v, v);
}

inline Word reflectionOf(Word ratio) {
    Word v = abs_s(ratio);
    v = static_cast<Word>(v < 11059 ? v << 1 : v < 20070 ? v + 11059 : add(static_cast<Word>(v >> 2), 26112));
    return signedLike(ratio, v);
}

// The four stretches of a frame with their reflection coefficients, between the ratios of two frames.
template <class Work>
void inStretches(const Word* before, const Word* now, Work work) {
    constexpr int ends[] = {13, 27, 40, 160};
    int first = 0;
    for (int k = 0; k < 4; ++k) {
        Word rc[kOrder];
        for (int i = 0; i < kOrder; ++i) {
            const auto quarterBefore = static_cast<Word>(before[i] >> 2);
            const auto quarterNow = static_cast<Word>(now[i] >> 2);
            const auto halfBefore = static_cast<Word>(before[i] >> 1);
            const auto halfNow = static_cast<Word>(now[i] >> 1);
            const Word ratio = k == 0   ? add(add(quarterBefore, quarterNow), halfBefore)
                               : k == 1 ? add(halfBefore, halfNow)
                               : k == 2 ? add(add(quarterBefore, quarterNow), halfNow)
                                        : now[i];
            rc[i] = reflectionOf(ratio);
        }
        work(rc, first, ends[k] - first);
        first = ends[k];
    }
}

// Exponent and mantissa of a coded block maximum.
struct Maximum {
    Word exponent = 0;
    Word mantissa = 0;

    explicit Maximum(Word code) {
        exponent = static_cast<Word>(code > 15 ? (code >> 3) - 1 : 0);
        mantissa = static_cast<Word>(code - (exponent << 3));
        if (mantissa == 0) {
            exponent = -4;
            mantissa = 7;
            return;
        }
        while (mantissa <= 7) {
            mantissa = static_cast<Word>(mantissa << 1 | 1);
            --exponent;
        }
        mantissa = static_cast<Word>(mantissa - 8);
    }
};

inline void spread(const Word* pulses, Word grid, Word* e) {
    std::fill_n(e, kSub, Word{0});
    for (int i = 0; i < 13; ++i) {
        e[grid + 3 * i] = pulses[i];
    }
}

class Coder {
public:
    Frame code(const Word* pcm) {
        Word x[kFrame];
        GOOD(veksHighPassFilter_GSMFR_16s(pcm, x, kFrame, m_offset));
        Word s[kFrame];
        GOOD(veksPreemphasize_GSMFR_16s(x, s, kFrame, &m_emphasis));
        Frame frame{};
        predict(s, frame.data());
        for (int j = 0; j < 4; ++j) {
            subframe(s + kSub * j, frame.data() + kOrder + 17 * j);
        }
        return frame;
    }

private:
    void predict(Word* s, Word* codes) {
        Word most = 0;
        for (int i = 0; i < kFrame; ++i) {
            most = std::max(most, abs_s(s[i]));
        }
        const int scale = most == 0 ? 0 : 4 - norm_l(int32_t{most} << 16);
        if (scale > 0) {
            for (int i = 0; i < kFrame; ++i) {
                s[i] = mult_r(s[i], static_cast<Word>(16384 >> (scale - 1)));
            }
        }
        Vek32s r[kOrder + 1];
        GOOD(veksAutoCorr_16s32s(s, kFrame, r, kOrder + 1));
        for (Vek32s& v : r) {
            v *= 2;
        }
        if (scale > 0) {
            for (int i = 0; i < kFrame; ++i) {
                s[i] = static_cast<Word>(s[i] * (1 << scale));
            }
        }
        Word k[kOrder];
        GOOD(veksSchur_GSMFR_32s16s(r, k, kOrder));
        Word now[kOrder];
        for (int i = 0; i < kOrder; ++i) {
            codes[i] = ratioCode(k[i], kRatios[i]);
            now[i] = ratioOf(codes[i], kRatios[i]);
        }
        inStretches(m_ratios, now, [&](const Word* rc, int first, int n) {
            GOOD(veksShortTermAnalysisFilter_GSMFR_16s_I(rc, s + first, n, m_lattice));
        });
        std::copy_n(now, kOrder, m_ratios);
    }

    void subframe(const Word* d, Word* out) {
        Word* const past = m_residual + kPast; // the subframe's own place
        // Lag and gain.
        Word most = 0;
        for (int i = 0; i < kSub; ++i) {
            most = std::max(most, abs_s(d[i]));
        }
        const int room = most == 0 ? 0 : norm_l(int32_t{most} << 16);
        const int scale = room > 6 ? 0 : 6 - room;
        Word weighed[kSub];
        for (int i = 0; i < kSub; ++i) {
            weighed[i] = static_cast<Word>(d[i] >> scale);
        }
        Vek32s best = 0;
        int at = 0;
        GOOD(veksCrossCorrLagMax_16s(weighed, m_residual, kSub, kPast - kSub + 1, &best, &at));
        const int lag = best > 0 ? kPast - at : kSub;
        out[0] = static_cast<Word>(lag);
        out[1] = gainCode(std::max(best, 0), past - lag, scale);
        // What the lag does not predict.
        Word predicted[kSub];
        Word padded[kSub + 10] = {};
        Word* const e = padded + 5;
        for (int i = 0; i < kSub; ++i) {
            predicted[i] = mult_r(kGains[out[1]], past[i - lag]);
            e[i] = sub(d[i], predicted[i]);
        }
        Word x[kSub];
        GOOD(veksWeightingFilter_GSMFR_16s(e, x, kSub));
        quantise(x, out);
        const Maximum maximum(out[3]);
        Word pulses[13];
        GOOD(veksRPEQuantDecode_GSMFR_16s(out + 4, maximum.mantissa, maximum.exponent, pulses));
        Word decoded[kSub];
        spread(pulses, out[2], decoded);
        for (int i = 0; i < kSub; ++i) {
            past[i] = add(decoded[i], predicted[i]);
        }
        std::copy(m_residual + kSub, m_residual + kPast + kSub, m_residual);
    }

    static Word gainCode(Vek32s correlation, const Word* past, int scale) {
        const int32_t doubled = correlation * 2;
        const int32_t c = doubled >> (6 - scale);
        int32_t power = 0;
        for (int i = 0; i < kSub; ++i) {
            const int v = past[i] >> 3;
            power += v * v;
        }
        power *= 2;
        if (c <= 0) {
            return 0;
        }
        if (c >= power) {
            return 3;
        }
        const int shift = norm_l(power);
        const Word r = extract_h(L_shl(c, shift));
        const Word s = extract_h(L_shl(power, shift));
        Word code = 0;
        while (code <= 2 && r > mult(s, kDecisions[code])) {
            ++code;
        }
        return code;
    }

    // Grid, block maximum and codes of the pulses.
    static void quantise(const Word* x, Word* out) {
        int32_t most = -1;
        for (int m = 0; m < 4; ++m) {
            int32_t energy = 0;
            for (int i = 0; i < 13; ++i) {
                const int v = x[m + 3 * i] >> 2;
                energy += v * v;
            }
            if (energy > most) {
                most = energy;
                out[2] = static_cast<Word>(m);
            }
        }
        Word largest = 0;
        for (int i = 0; i < 13; ++i) {
            largest = std::max(largest, abs_s(x[out[2] + 3 * i]));
        }
        int exponent = 0;
        for (int v = largest >> 9; v > 0 && exponent < 6; v >>= 1) {
            ++exponent;
        }
        out[3] = static_cast<Word>((largest >> (exponent + 5)) + (exponent << 3));
        const Maximum maximum(out[3]);
        for (int i = 0; i < 13; ++i) {
            const Word v = shl(x[out[2] + 3 * i], 6 - maximum.exponent);
            out[4 + i] = static_cast<Word>((mult(v, kInverseMiddles[maximum.mantissa]) >> 12) + 4);
        }
    }

    Vek32s m_offset[2] = {};
    Word m_emphasis = 0;
    Word m_ratios[kOrder] = {};
    Word m_lattice[kOrder] = {};
    Word m_residual[kPast + kSub] = {};
};

class Decoder {
public:
    void decode(const Frame& frame, Word* pcm) {
        Word residual[kFrame];
        for (int j = 0; j < 4; ++j) {
            const Word* p = frame.data() + kOrder + 17 * j;
            const Maximum maximum(p[3]);
            Word pulses[13];
            GOOD(veksRPEQuantDecode_GSMFR_16s(p + 4, maximum.mantissa, maximum.exponent, pulses));
            Word e[kSub];
            spread(pulses, p[2], e);
            Word* const now = m_residual + kPast;
            if (p[0] >= kSub && p[0] <= kPast) {
                m_lag = p[0];
            }
            for (int i = 0; i < kSub; ++i) {
                now[i] = add(e[i], mult_r(kGains[p[1]], now[i - m_lag]));
            }
            std::copy_n(now, kSub, residual + kSub * j);
            std::copy(m_residual + kSub, m_residual + kPast + kSub, m_residual);
        }
        Word now[kOrder];
        for (int i = 0; i < kOrder; ++i) {
            now[i] = ratioOf(frame[static_cast<size_t>(i)], kRatios[i]);
        }
        inStretches(m_ratios, now, [&](const Word* rc, int first, int n) {
            GOOD(veksShortTermSynthesisFilter_GSMFR_16s(rc, residual + first, pcm + first, n, m_lattice));
        });
        std::copy_n(now, kOrder, m_ratios);
        GOOD(veksDeemphasize_GSMFR_16s_I(pcm, kFrame, &m_emphasis));
    }

private:
    int m_lag = kSub;
    Word m_residual[kPast + kSub] = {};
    Word m_ratios[kOrder] = {};
    Word m_lattice[kOrder + 1] = {};
    Word m_emphasis = 0;
};

} // namespace gsmfr
