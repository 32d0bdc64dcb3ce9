// Coder and decoder of G.723.1 put together from the library's steps, and the bits of a frame. What the recommendation
// does between the steps is written out here: interpolation, weighting, packing. No erased frames, no silence.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include "g723_figures.h"
#include "sc/g723/tables.h"
#include "veksc.h"

namespace g723chain {

using namespace vek::fix;
using Word = int16_t;

constexpr int kSub = 60;
constexpr int kFrame = 240;
constexpr int kOrder = 10;
constexpr int kPast = 148;
constexpr Word kMean[kOrder] = {3131, 4721, 7690, 10806, 13872, 16495, 19752, 22260, 25484, 27718};

struct Frame {
    VekSpchBitRate rate = VEK_SPCHBR_6300;
    int lsf[3] = {};
    int base[2] = {};
    int close[4] = {1, 1, 1, 1};
    int gains[4] = {};
    int level[4] = {};
    int train[4] = {};
    int grid[4] = {};
    int32_t position[4] = {};
    int sign[4] = {};
    bool operator==(const Frame&) const = default;
};

inline int pulsesOf(int sub) {
    return (sub & 1) != 0 ? 5 : 6;
}

// --- bits, least first ---

class Bits {
public:
    std::vector<uint8_t> bytes;
    void put(int count, int64_t value) {
        for (int i = 0; i < count; ++i, ++m_at) {
            if (m_at % 8 == 0) {
                bytes.push_back(0);
            }
            bytes.back() = static_cast<uint8_t>(bytes.back() | (((value >> i) & 1) << (m_at % 8)));
        }
    }
    int64_t get(int count) {
        int64_t v = 0;
        for (int i = 0; i < count; ++i, ++m_at) {
            v |= int64_t{(bytes[static_cast<size_t>(m_at / 8)] >> (m_at % 8)) & 1} << i;
        }
        return v;
    }

private:
    int m_at = 0;
};

inline std::vector<uint8_t> pack(const Frame& f) {
    const bool high = f.rate == VEK_SPCHBR_6300;
    Bits b;
    b.put(2, high ? 0 : 1);
    for (int i = 2; i >= 0; --i) {
        b.put(8, f.lsf[i]);
    }
    for (int h = 0; h < 2; ++h) {
        b.put(7, f.base[h] - 18);
        b.put(2, f.close[2 * h + 1]);
    }
    for (int s = 0; s < 4; ++s) {
        b.put(12, f.gains[s] * 24 + f.level[s] + (f.train[s] << 11));
    }
    for (int s = 0; s < 4; ++s) {
        b.put(1, f.grid[s]);
    }
    if (high) {
        b.put(1, 0);
        b.put(13, (f.position[0] >> 16) * 810 + (f.position[1] >> 14) * 90 + (f.position[2] >> 16) * 9 +
                      (f.position[3] >> 14));
        for (int s = 0; s < 4; ++s) {
            b.put((s & 1) != 0 ? 14 : 16, f.position[s]);
        }
        for (int s = 0; s < 4; ++s) {
            b.put(pulsesOf(s), f.sign[s]);
        }
    } else {
        for (int s = 0; s < 4; ++s) {
            b.put(12, f.position[s]);
        }
        for (int s = 0; s < 4; ++s) {
            b.put(4, f.sign[s]);
        }
    }
    return b.bytes;
}

inline Frame unpack(const uint8_t* data) {
    Bits b;
    b.bytes.assign(data, data + ((data[0] & 3) == 0 ? 24 : 20));
    Frame f;
    const bool high = b.get(2) == 0;
    f.rate = high ? VEK_SPCHBR_6300 : VEK_SPCHBR_5300;
    for (int i = 2; i >= 0; --i) {
        f.lsf[i] = static_cast<int>(b.get(8));
    }
    for (int h = 0; h < 2; ++h) {
        f.base[h] = static_cast<int>(b.get(7)) + 18;
        f.close[2 * h + 1] = static_cast<int>(b.get(2));
    }
    for (int s = 0; s < 4; ++s) {
        int gain = static_cast<int>(b.get(12));
        if (high && f.base[s / 2] < kSub - 2) {
            f.train[s] = gain >> 11;
            gain &= 0x7ff;
        }
        f.gains[s] = gain / 24;
        f.level[s] = gain % 24;
    }
    for (int s = 0; s < 4; ++s) {
        f.grid[s] = static_cast<int>(b.get(1));
    }
    if (high) {
        b.get(1);
        auto upper = static_cast<int32_t>(b.get(13));
        const int32_t weight[4] = {810, 90, 9, 1};
        for (int s = 0; s < 4; ++s) {
            f.position[s] = upper / weight[s];
            upper %= weight[s];
        }
        for (int s = 0; s < 4; ++s) {
            const int low = (s & 1) != 0 ? 14 : 16;
            f.position[s] = (f.position[s] << low) + static_cast<int32_t>(b.get(low));
        }
        for (int s = 0; s < 4; ++s) {
            f.sign[s] = static_cast<int>(b.get(pulsesOf(s)));
        }
    } else {
        for (int s = 0; s < 4; ++s) {
            f.position[s] = static_cast<int32_t>(b.get(12));
        }
        for (int s = 0; s < 4; ++s) {
            f.sign[s] = static_cast<int>(b.get(4));
        }
    }
    return f;
}

// --- steps between the library's ---

// Number of sets of k among n.
inline int32_t choose(int n, int k) {
    int64_t c = 1;
    for (int i = 0; i < k; ++i) {
        c = c * (n - i) / (i + 1);
    }
    return static_cast<int32_t>(k > n ? 0 : c);
}

inline void quarterTo(const Word* from, const Word* to, int quarters, Word* out) {
    for (int i = 0; i < kOrder; ++i) {
        out[i] = sat16((to[i] * (4096 * quarters) + from[i] * (4096 * (4 - quarters)) + 8192) >> 14);
    }
}

// Scales a vector as its largest magnitude allows, with three bits of headroom; tells the shift.
inline int scaled(const Word* x, Word* y, int n) {
    int most = 0;
    for (int i = 0; i < n; ++i) {
        most |= x[i] < 0 ? -x[i] : x[i];
    }
    int up = 0;
    while (up < 14 && (most << up) < 0x4000) {
        ++up;
    }
    for (int i = 0; i < n; ++i) {
        y[i] = static_cast<Word>((x[i] * (1 << up)) >> 3);
    }
    return up - 3;
}

inline int64_t dot(const Word* a, const Word* b, int n) {
    int64_t sum = 0;
    for (int i = 0; i < n; ++i) {
        sum += a[i] * b[i];
    }
    return sum;
}

// Where the share of the fixed codebook's own past lies, and its gain; none beyond the subframe.
inline int ownLag(const Frame& f, int s) {
    return kOwnPast[2 * f.gains[s]] + f.base[s / 2] + f.close[s] - 1;
}
inline void addOwnPast(Word* x, int lag, int gain) {
    for (int i = lag; i < kSub && lag < kSub - 2; ++i) {
        x[i] = static_cast<Word>(x[i] + ((gain * x[i - lag]) >> 15));
    }
}

inline void fixedVector(const Frame& f, int s, Word* out) {
    Word x[kSub + 8] = {};
    const Word amplitude = vek::g723::kAmplitude[f.level[s]];
    if (f.rate == VEK_SPCHBR_6300) {
        const int count = pulsesOf(s);
        int32_t number = f.position[s];
        int left = count;
        if (number < choose(30, count)) {
            for (int i = 0; i < 30 && left > 0; ++i) {
                const int32_t without = choose(29 - i, left - 1);
                if (number >= without) {
                    number -= without;
                    continue;
                }
                --left;
                x[f.grid[s] + 2 * i] = static_cast<Word>(((f.sign[s] >> left) & 1) != 0 ? -amplitude : amplitude);
            }
            if (f.train[s] == 1) {
                Word once[kSub];
                std::memcpy(once, x, sizeof once);
                for (int at = f.base[s / 2]; at < kSub; at += f.base[s / 2]) {
                    for (int i = at; i < kSub; ++i) {
                        x[i] = static_cast<Word>(x[i] + once[i - at]);
                    }
                }
            }
        }
    } else {
        for (int t = 0; t < 4; ++t) {
            const int lane = (f.position[s] >> (3 * t)) & 7;
            x[8 * lane + 2 * t + f.grid[s]] = static_cast<Word>(((f.sign[s] >> t) & 1) != 0 ? amplitude : -amplitude);
        }
        addOwnPast(x, ownLag(f, s), kOwnPast[2 * f.gains[s] + 1]);
    }
    std::memcpy(out, x, kSub * sizeof(Word));
}

// Counts calls that did not end in vekStsNoErr.
struct Statuses {
    int bad = 0;
    void operator()(VekStatus status) { bad += status != vekStsNoErr ? 1 : 0; }
};

inline void decodeLsf(const Frame& f, Word* past, Word lpc[4][kOrder], Statuses& check) {
    Word lsf[kOrder];
    const Word index[3] = {static_cast<Word>(f.lsf[0]), static_cast<Word>(f.lsf[1]), static_cast<Word>(f.lsf[2])};
    check(veksLSFDecode_G723_16s(index, past, 0, lsf));
    for (int s = 0; s < 4; ++s) {
        Word between[kOrder];
        quarterTo(past, lsf, s + 1, between);
        check(veksLSFToLPC_G723_16s(s == 3 ? lsf : between, lpc[s]));
    }
    std::memcpy(past, lsf, sizeof lsf);
}

// --- decoder ---

class Decoder {
public:
    Statuses check;

    explicit Decoder(bool postfilter) : m_postfilter(postfilter) { std::memcpy(m_lsf, kMean, sizeof m_lsf); }

    void decode(const Frame& f, Word* pcm) {
        Word lpc[4][kOrder];
        decodeLsf(f, m_lsf, lpc, check);
        Word* e = m_excitation + kPast;
        for (int s = 0; s < 4; ++s) {
            Word adaptive[kSub];
            Word fixed[kSub];
            fixedVector(f, s, fixed);
            check(veksDecodeAdaptiveVector_G723_16s(static_cast<Word>(f.base[s / 2]), static_cast<Word>(f.close[s]),
                                                    static_cast<Word>(f.gains[s]), e + kSub * s - kPast, adaptive,
                                                    f.rate));
            for (int i = 0; i < kSub; ++i) {
                e[kSub * s + i] = add(add(fixed[i], fixed[i]), adaptive[i]);
            }
        }
        Word speech[kFrame];
        std::memcpy(speech, e, sizeof speech);
        if (m_postfilter) {
            pitchPostFilter(f, speech);
        }
        std::memmove(m_excitation, m_excitation + kFrame, kPast * sizeof(Word));
        for (int s = 0; s < 4; ++s) {
            Word* x = speech + kSub * s;
            check(veksSynthesisFilter_G723_16s(lpc[s], x, m_synthesis, x));
            if (m_postfilter) {
                formantPostFilter(lpc[s], x, pcm + kSub * s);
            } else {
                for (int i = 0; i < kSub; ++i) {
                    pcm[kSub * s + i] = add(x[i], x[i]);
                }
            }
        }
    }

private:
    void pitchPostFilter(const Frame& f, Word* out) {
        Word small[kPast + kFrame];
        scaled(m_excitation + 3, small + 3, kPast - 3 + kFrame);
        for (int s = 0; s < 4; ++s) {
            Word delay = 0;
            Word gain = 0;
            Word scale = 0;
            check(veksPitchPostFilter_G723_16s(static_cast<Word>(f.base[s / 2]), small + kPast, &delay, &gain, &scale,
                                               static_cast<Word>(s), f.rate));
            const Word* e = m_excitation + kPast + kSub * s;
            check(veksInterpolateC_NR_G729_16s_Sfs(e, scale, e + delay, gain, out + kSub * s, kSub, 15));
        }
    }

    void formantPostFilter(const Word* lpc, const Word* x, Word* out) {
        static constexpr Word zeros[kOrder] = {21299, 13844, 8999, 5849, 3802, 2471, 1606, 1044, 679, 441};
        static constexpr Word poles[kOrder] = {24576, 18432, 13824, 10368, 7776, 5832, 4374, 3281, 2460, 1845};
        Word c[2 * kOrder];
        for (int j = 0; j < kOrder; ++j) {
            c[j] = mult_r(lpc[j], zeros[j]);
            c[kOrder + j] = mult_r(lpc[j], poles[j]);
        }
        Vek32s filtered[kSub + 1] = {m_lastFiltered};
        check(veksIIR16s_G723_16s32s(c, x, filtered + 1, m_formant));
        m_lastFiltered = filtered[kSub];
        Word small[kSub];
        const int shift = scaled(x, small, kSub);
        const int32_t energy = sat32(2 * dot(small, small, kSub));
        const int32_t neighbours = sat32(2 * dot(small, small + 1, kSub - 1));
        int reflection = energy >> 16;
        if (reflection != 0) {
            reflection = (neighbours >> 2) / reflection;
        }
        m_reflection = (3 * m_reflection + reflection + 2) >> 2;
        check(veksTiltCompensation_G723_32s16s(static_cast<Word>((-m_reflection >> 1) & ~3), filtered, out));
        check(veksGainControl_G723_16s_I(L_shr(energy, 2 * shift + 4), out, &m_gain));
    }

    bool m_postfilter;
    Word m_lsf[kOrder];
    Word m_excitation[kPast + kFrame] = {};
    Word m_synthesis[kOrder] = {};
    Word m_formant[2 * kOrder] = {};
    Vek32s m_lastFiltered = 0;
    int m_reflection = 0;
    Word m_gain = 1 << 12;
};

// --- coder ---

// Synthesis (halved) and weighting; the memories are in time order.
struct Weighted {
    Word synthesis[kOrder] = {};
    Word weighting[kOrder] = {};

    void run(const Word* lpc, const Word* weights, const Word* x, Word* y, int scale, Statuses& check) {
        Vek32s sums[kSub];
        Word newest[kOrder];
        Word s[kOrder + kSub];
        Word out[kOrder + kSub];
        std::memcpy(s, synthesis, sizeof synthesis);
        std::memcpy(out, weighting, sizeof weighting);
        std::reverse_copy(synthesis, synthesis + kOrder, newest);
        check(veksSynthesisFilter_G723_16s32s(lpc, x, sums, newest));
        for (int i = 0; i < kSub; ++i) {
            s[kOrder + i] = round_s(sums[i]);
        }
        for (int i = 0; i < kSub; ++i) {
            int64_t zeros = 0;
            int64_t poles = 0;
            for (int j = 0; j < kOrder; ++j) {
                zeros -= weights[j] * s[kOrder + i - 1 - j];
                poles += weights[kOrder + j] * out[kOrder + i - 1 - j];
            }
            out[kOrder + i] = round_s(sat32((sums[i] + zeros * 8) * (1 << scale) + poles * 8));
        }
        std::memcpy(y, out + kOrder, kSub * sizeof(Word));
        std::memcpy(synthesis, s + kSub, sizeof synthesis);
        std::memcpy(weighting, out + kSub, sizeof weighting);
    }
};

class Coder {
public:
    Statuses check;

    explicit Coder(VekSpchBitRate rate) : m_rate(rate) { std::memcpy(m_lsf, kMean, sizeof m_lsf); }

    Frame code(const Word* pcm) {
        Frame f;
        f.rate = m_rate;
        Word x[2 * kSub + kFrame];
        std::memcpy(x, m_speech, sizeof m_speech);
        check(veksHighPassFilter_G723_16s(pcm, x + 2 * kSub, m_highPass));
        std::memcpy(m_speech, x + kFrame, sizeof m_speech);

        Word open[4][kOrder];
        analyse(x, open);
        Word lsf[kOrder];
        Vek32s index = 0;
        check(veksLPCToLSF_G723_16s(open[3], m_lsf, lsf));
        check(veksLSFQuant_G723_16s32s(lsf, m_lsf, &index));
        for (int i = 0; i < 3; ++i) {
            f.lsf[i] = (index >> (16 - 8 * i)) & 255;
        }

        Word weights[4][2 * kOrder];
        Word target[kFrame];
        weight(x + kSub, open, weights, target, f);
        Word lpc[4][kOrder];
        decodeLsf(f, m_lsf, lpc, check);
        m_left = 120;
        for (int s = 0; s < 4; ++s) {
            codeSubframe(f, s, lpc[s], weights[s], target + kSub * s);
        }
        return f;
    }

private:
    void analyse(const Word* x, Word open[4][kOrder]) {
        for (int s = 0; s < 4; ++s) {
            Word small[3 * kSub];
            Word r[kOrder + 1];
            Word second = 0;
            int exponent = 0;
            scaled(x + kSub * s, small, 3 * kSub);
            check(veksAutoCorr_G723_16s(small, &exponent, r));
            check(veksLevinsonDurbin_G723_16s(r + 1, &second, r, open[s]));
        }
    }

    // Weighted speech, its open-loop delays, and the target after the harmonic noise shaping.
    void weight(const Word* x, Word open[4][kOrder], Word weights[4][2 * kOrder], Word* target, Frame& f) {
        static constexpr Word zeros[kOrder] = {29491, 26542, 23888, 21499, 19349, 17414, 15673, 14106, 12695, 11425};
        Word w[kPast + kFrame];
        std::memcpy(w, m_weighted, sizeof m_weighted);
        std::memcpy(w + kPast, x, kFrame * sizeof(Word));
        for (int s = 0; s < 4; ++s) {
            for (int j = 0; j < kOrder; ++j) {
                weights[s][j] = mult_r(open[s][j], zeros[j]);
                weights[s][kOrder + j] = mult_r(open[s][j], static_cast<Word>(16384 >> j));
            }
            check(veksIIR16s_G723_16s_I(weights[s], w + kPast + kSub * s, m_weighting));
        }
        Word small[kPast + kFrame];
        scaled(w + 3, small + 3, kPast - 3 + kFrame);
        for (int h = 0; h < 2; ++h) {
            Word delay = 0;
            check(veksOpenLoopPitchSearch_G723_16s(small + kPast + 2 * kSub * h, &delay));
            f.base[h] = delay;
        }
        for (int s = 0; s < 4; ++s) {
            check(veksHarmonicSearch_G723_16s(static_cast<Word>(f.base[s / 2]), small + kPast + kSub * s, &m_delay[s],
                                              &m_gain[s]));
            shape(s, w + kPast + kSub * s, target + kSub * s);
        }
        std::memcpy(m_weighted, w + kFrame, sizeof m_weighted);
    }

    void shape(int s, const Word* x, Word* y) const {
        for (int i = 0; i < kSub; ++i) {
            y[i] = round_s(L_msu(L_deposit_h(x[i]), m_gain[s], x[i - m_delay[s]]));
        }
    }

    void codeSubframe(Frame& f, int s, const Word* lpc, const Word* weights, Word* target) {
        const auto sub = static_cast<Word>(s);
        Word buffer[kPast + kSub] = {};
        Word input[kSub] = {1 << 13};
        Word response[kSub];
        Weighted rest;
        rest.run(lpc, weights, input, buffer + kPast, 1, check);
        shape(s, buffer + kPast, response);

        input[0] = 0;
        rest = m_filters;
        std::memcpy(buffer, m_harmonic, sizeof m_harmonic);
        rest.run(lpc, weights, input, buffer + kPast, 0, check);
        check(veksHarmonicNoiseSubtract_G723_16s_I(m_gain[s], m_delay[s], buffer + kPast, target));

        static constexpr Vek32s errors[5] = {4, 4, 4, 4, 4};
        Word close = 0;
        Word gains = 0;
        int& base = f.base[s / 2];
        check(veksAdaptiveCodebookSearch_G723(static_cast<Word>(base), target, response, m_excitation, errors, &close,
                                              &gains, sub, 0, m_rate));
        f.gains[s] = gains;
        f.close[s] = (s & 1) != 0 ? close : 1;
        if ((s & 1) == 0) {
            base = (base == 18 ? 19 : std::min(base, 140)) + close - 1;
        }
        Word adaptive[kSub];
        check(veksDecodeAdaptiveVector_G723_16s(static_cast<Word>(base), static_cast<Word>(f.close[s]), gains,
                                                m_excitation, adaptive, m_rate));
        for (int i = 0; i < kSub; ++i) {
            int64_t sum = target[i] * 16384;
            for (int j = 0; j <= i; ++j) {
                sum -= adaptive[j] * response[i - j];
            }
            target[i] = round_s(sat32(sum * 4));
        }
        if (m_rate == VEK_SPCHBR_6300) {
            codeMultiPulse(f, s, response, target);
        } else {
            codeFourPulses(f, s, response, target);
        }
        Word fixed[kSub];
        fixedVector(f, s, fixed);
        for (int i = 0; i < kSub; ++i) {
            input[i] = sat16(fixed[i] * 2 + adaptive[i]);
        }
        std::memmove(m_excitation, m_excitation + kSub, (kPast - kSub) * sizeof(Word));
        std::memcpy(m_excitation + kPast - kSub, input, sizeof input);
        Word out[kSub];
        m_filters.run(lpc, weights, input, out, 0, check);
        std::memmove(m_harmonic, m_harmonic + kSub, (kPast - kSub) * sizeof(Word));
        std::memcpy(m_harmonic + kPast - kSub, out, sizeof out);
    }

    void codeMultiPulse(Frame& f, int s, const Word* response, const Word* target) {
        Word vector[kSub];
        Word grid = 0;
        Word train = 0;
        Word level = 0;
        Word signs = 0;
        Vek32s position = 0;
        check(veksMPMLQFixedCodebookSearch_G723(static_cast<Word>(f.base[s / 2]), response, target, vector, &grid,
                                                &train, &level, &signs, &position, static_cast<Word>(s)));
        f.grid[s] = grid;
        f.train[s] = train;
        f.level[s] = level;
        f.sign[s] = signs;
        f.position[s] = position;
        Word decoded[kSub];
        fixedVector(f, s, decoded);
        check.bad += std::memcmp(vector, decoded, sizeof vector) != 0 ? 1 : 0;
    }

    void codeFourPulses(Frame& f, int s, const Word* response, const Word* target) {
        Word h[kSub];
        std::memcpy(h, response, sizeof h);
        addOwnPast(h, ownLag(f, s), kOwnPast[2 * f.gains[s] + 1]);
        int64_t wide[64] = {};
        int64_t most = 1;
        for (int i = 0; i < kSub; ++i) {
            wide[i] = dot(target + i, h, kSub - i);
            most = std::max(most, wide[i] < 0 ? -wide[i] : wide[i]);
        }
        Word corr[64];
        const int shift = 50 - norm_64(most); // to 13 bits and a sign
        for (int i = 0; i < 64; ++i) {
            corr[i] = static_cast<Word>(shift > 0 ? wide[i] >> shift : wide[i] * (int64_t{1} << -shift));
        }
        Word matrix[416];
        Word sign = 0;
        Word position = 0;
        Word grid = 0;
        Word vector[kSub];
        check(veksToeplizMatrix_G723_16s(h, matrix));
        check(veksACELPFixedCodebookSearch_G723_16s(corr, matrix, &sign, &position, &grid, vector, &m_left));
        f.grid[s] = grid;
        f.sign[s] = sign;
        f.position[s] = position;
        double product = 0;
        double energy = 1;
        for (int i = 0; i < kSub; ++i) {
            double y = 0;
            for (int j = 0; j <= i; ++j) {
                y += vector[j] * h[i - j] / 8192.0;
            }
            product += target[i] * y;
            energy += y * y;
        }
        const double gain = product / energy;
        int best = 0;
        for (int l = 1; l < 24; ++l) {
            const auto off = [&](int level) {
                return gain > vek::g723::kAmplitude[level] ? gain - vek::g723::kAmplitude[level]
                                                           : vek::g723::kAmplitude[level] - gain;
            };
            best = off(l) < off(best) ? l : best;
        }
        f.level[s] = best;
    }

    VekSpchBitRate m_rate;
    Word m_lsf[kOrder];
    Vek32s m_highPass[2] = {};
    Word m_speech[2 * kSub] = {};
    Word m_weighting[2 * kOrder] = {};
    Word m_weighted[kPast] = {};
    Word m_delay[4] = {};
    Word m_gain[4] = {};
    Word m_excitation[kPast] = {};
    Word m_harmonic[kPast] = {};
    Weighted m_filters;
    Word m_left = 0;
};

} // namespace g723chain
