// Coder and decoder of G.729 put together from the library's functions, and the bits of a frame: Annex A, with the post
// filters of the main body on request, and the coder at the 6.4 kbit/s of Annex D with what its decoder makes heard.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "good.h"
#include "samples.h"
#include "veksc.h"

namespace g729chain {

using Bits = std::array<uint8_t, 10>;

constexpr int kFrame = 80;
constexpr int kSub = 40;

// The 15 parameters of a frame in the order of the bit stream.
enum Field { L0, L1, L2, L3, P1, P0, C1, S1, GA1, GB1, P2, C2, S2, GA2, GB2, kFields };
constexpr int kWidth[kFields] = {1, 7, 5, 5, 8, 1, 13, 4, 3, 4, 5, 13, 4, 3, 4};
using Parameters = std::array<int, kFields>;

inline Bits pack(const Parameters& p) {
    Bits bits{};
    int at = 0;
    for (int f = 0; f < kFields; ++f) {
        for (int b = kWidth[f] - 1; b >= 0; --b, ++at) {
            bits[static_cast<size_t>(at / 8)] |=
                static_cast<uint8_t>((p[static_cast<size_t>(f)] >> b & 1) << (7 - at % 8));
        }
    }
    return bits;
}

// At 6.4 kbit/s: no parity, shorter words.
using ShortBits = std::array<uint8_t, 8>;
constexpr int kShortWidth[kFields] = {1, 7, 5, 5, 8, 0, 9, 2, 3, 3, 4, 9, 2, 3, 3};

inline ShortBits packShort(const Parameters& p) {
    ShortBits bits{};
    size_t at = 0;
    for (size_t f = 0; f < kFields; ++f) {
        for (int b = kShortWidth[f] - 1; b >= 0; --b, ++at) {
            bits[at / 8] |= static_cast<uint8_t>((p[f] >> b & 1) << (7 - at % 8));
        }
    }
    return bits;
}

inline Parameters unpack(const Bits& bits) {
    Parameters p{};
    int at = 0;
    for (int f = 0; f < kFields; ++f) {
        for (int b = 0; b < kWidth[f]; ++b, ++at) {
            p[static_cast<size_t>(f)] =
                p[static_cast<size_t>(f)] * 2 + (bits[static_cast<size_t>(at / 8)] >> (7 - at % 8) & 1);
        }
    }
    return p;
}

inline Samples startOfHistory() {
    const int16_t row[10] = {2339, 4679, 7018, 9358, 11698, 14037, 16377, 18717, 21056, 23396};
    Samples v;
    for (int k = 0; k < 4; ++k) {
        v.insert(v.end(), std::begin(row), std::end(row));
    }
    return v;
}

inline const Samples startOfPairs = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};

// What coder and decoder have in common.
struct Model {
    Samples history = startOfHistory();
    Samples pairs = startOfPairs;
    Samples past = Samples(4, -14336);
    Samples excitation = Samples(154 + kSub);
    Samples synthesis = Samples(10 + kFrame);
    int16_t pitchGain = 0;
    int16_t lpc[2][11] = {};

    void spectrum(const Samples& next) {
        int16_t between[10];
        GOOD(veksInterpolate_G729_16s(pairs.data(), next.data(), between, 10));
        GOOD(veksLSPToLPC_G729_16s(between, lpc[0]));
        GOOD(veksLSPToLPC_G729_16s(next.data(), lpc[1]));
        pairs = next;
    }

    int16_t sharpness() const { return static_cast<int16_t>(2 * std::clamp<int>(pitchGain, 3277, 13107)); }

    // Pitch sharpening of a vector that is at rest before.
    void sharpen(int delay, int16_t* x) const {
        if (delay < kSub) {
            Samples v(143 + kSub);
            std::copy(x, x + kSub, v.begin() + 143);
            GOOD(veksHarmonicFilter_16s_I(sharpness(), delay, v.data() + 143, kSub));
            std::copy(v.begin() + 143, v.end(), x);
        }
    }

    // The excitation from both vectors, and its synthesis.
    void take(const int16_t* vector, const int16_t* code, const int16_t* gains, int sub) {
        int16_t* now = excitation.data() + 154;
        GOOD(veksInterpolateC_NR_G729_16s_Sfs(vector, gains[0], code, gains[1], now, kSub, 14));
        int16_t* out = synthesis.data() + 10 + sub * kSub;
        GOOD(veksSynthesisFilter_NR_16s_Sfs(lpc[sub], now, out, kSub, 12, out - 10));
        std::copy(excitation.begin() + kSub, excitation.end(), excitation.begin());
        pitchGain = gains[0];
    }

    void endFrame() { std::copy(synthesis.end() - 10, synthesis.end(), synthesis.begin()); }
};

// The post filters of the main body, subframe by subframe, and the last high-pass.
class MainPostFilter {
public:
    MainPostFilter() { GOOD(veksHighPassFilterInit_G729(m_filter)); }

    // speech[-10..39] is the synthesis.
    void add(const int16_t* speech, const int16_t* lpc, int delay, Samples& out) {
        int16_t voice = 0;
        int16_t response[20];
        // Lags of 19 and a third, and of 144 less one, are of 20 and 143 to the filter.
        const auto whole = static_cast<int16_t>(std::clamp(delay, 20, 143));
        GOOD(veksLongTermPostFilter_G729B_16s(whole, speech, lpc, m_residual.data(), m_harmonic.data(), &voice, 1));
        int16_t direct[kSub];
        GOOD(veksLongTermPostFilter_G729_16s(16384, whole, m_residual.data() + 154, direct, &voice));
        SAME(true, std::equal(direct, direct + kSub, m_harmonic.begin()));
        std::copy(m_short.begin() + kSub, m_short.end(), m_short.begin());
        GOOD(veksShortTermPostFilter_G729_16s(lpc, m_harmonic.data(), m_short.data() + 10, response));
        Samples level(1 + kSub);
        level[0] = m_last;
        std::copy(m_short.begin() + 10, m_short.end(), level.begin() + 1);
        GOOD(veksTiltCompensation_G729_16s(response, level.data() + 1));
        m_last = level[0];
        GOOD(veksGainControl_G729_16s_I(speech, level.data() + 1, &m_gain));
        std::copy(m_residual.begin() + kSub, m_residual.end(), m_residual.begin());
        GOOD(veksHighPassFilter_G729_16s_ISfs(level.data() + 1, kSub, 12, m_filter));
        out.insert(out.end(), level.begin() + 1, level.end());
    }

private:
    char m_filter[64] = {};
    Samples m_residual = Samples(194);
    Samples m_harmonic = Samples(kSub);
    Samples m_short = Samples(10 + kSub);
    int16_t m_last = 0;
    int16_t m_gain = 16384;
};

// What a decoder at 6.4 kbit/s makes heard of a coder's subframes.
class ShortHearing {
public:
    Samples heard;

    ShortHearing() {
        int size = 0;
        GOOD(veksPhaseDispersionGetStateSize_G729D_16s(&size));
        m_dispersion.resize(static_cast<size_t>(size));
        GOOD(veksPhaseDispersionInit_G729D_16s(m_dispersion.data()));
    }

    void add(const int16_t* excitation, const int16_t* code, const int16_t* gains, const int16_t* lpc, int delay) {
        int16_t dispersed[kSub];
        int16_t innovation[kSub];
        std::copy(code, code + kSub, innovation);
        GOOD(veksPhaseDispersion_G729D_16s(excitation, dispersed, gains[1], gains[0], innovation, m_dispersion.data()));
        std::copy(m_synthesis.end() - 10, m_synthesis.end(), m_synthesis.begin());
        int16_t* const speech = m_synthesis.data() + 10;
        GOOD(veksSynthesisFilter_NR_16s_Sfs(lpc, dispersed, speech, kSub, 12, m_synthesis.data()));
        m_post.add(speech, lpc, delay, heard);
    }

private:
    std::vector<char> m_dispersion;
    Samples m_synthesis = Samples(10 + kSub);
    MainPostFilter m_post;
};

class Coder {
public:
    Samples local;
    ShortHearing hearing;

    // With 8 kbit/s as Annex A, or with 6.4.
    explicit Coder(bool atShortRate = false) : m_short(atShortRate) { GOOD(veksHighPassFilterInit_G729(m_filter)); }

    Parameters frame(const int16_t* in) {
        Parameters p{};
        std::copy(m_speech.begin() + kFrame, m_speech.end(), m_speech.begin());
        std::copy(in, in + kFrame, m_speech.end() - kFrame);
        GOOD(veksHighPassFilter_G729_16s_ISfs(m_speech.data() + 160, kFrame, 13, m_filter));
        spectrum(p);
        openLoop();
        for (int sub = 0; sub < 2; ++sub) {
            subframe(sub, p);
        }
        m.endFrame();
        local.insert(local.end(), m.synthesis.end() - kFrame, m.synthesis.end());
        return p;
    }

private:
    Model m;
    bool m_short;
    char m_filter[64] = {};
    Samples m_speech = Samples(240); // the frame at 120
    Samples m_pairs = startOfPairs;
    Samples m_coefficients = {4096, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    Samples m_weighted = Samples(143 + kFrame);
    Samples m_residual = Samples(kFrame);
    Samples m_target = Samples(10);
    int16_t m_weights[2][11] = {};
    int16_t m_openLag = 0;
    int16_t m_delay = 0;

    void spectrum(Parameters& p) {
        int32_t r[13];
        int16_t exponent = 0;
        int16_t reflections[10];
        int16_t error = 0;
        GOOD(veksAutoCorr_G729B(m_speech.data(), &exponent, r));
        GOOD(veksLagWindow_G729_32s_I(r + 1, 10));
        GOOD(veksLevinsonDurbin_G729B(r, m_coefficients.data(), reflections, &error));
        DONE(veksLPCToLSP_G729A_16s(m_coefficients.data(), m_pairs.data(), m_pairs.data()));
        Samples quantised(10);
        int16_t words[2];
        GOOD(veksLSPQuant_G729_16s(m_pairs.data(), m.history.data(), quantised.data(), words));
        p[L0] = words[0] >> 7;
        p[L1] = words[0] & 127;
        p[L2] = words[1] >> 5;
        p[L3] = words[1] & 31;
        m.spectrum(quantised);
    }

    void openLoop() {
        std::copy(m_weighted.begin() + kFrame, m_weighted.end(), m_weighted.begin());
        for (int sub = 0; sub < 2; ++sub) {
            int16_t* const residual = m_residual.data() + sub * kSub;
            GOOD(veksResidualFilter_G729_16s(m_speech.data() + 120 + sub * kSub, m.lpc[sub], residual));
            GOOD(veksMulPowerC_NR_16s_Sfs(m.lpc[sub], 24576, m_weights[sub], 11, 15));
            int16_t low[11] = {4096};
            for (int i = 1; i <= 10; ++i) {
                low[i] = static_cast<int16_t>(m_weights[sub][i] - m_weights[sub][i - 1] * 7 / 10);
            }
            int16_t* const weighted = m_weighted.data() + 143 + sub * kSub;
            GOOD(veksSynthesisFilter_NR_16s_Sfs(low, residual, weighted, kSub, 12, weighted - 10));
        }
        GOOD(veksOpenLoopPitchSearch_G729A_16s(m_weighted.data() + 143, &m_openLag));
    }

    void subframe(int sub, Parameters& p) {
        const int16_t* const weights = m_weights[sub];
        int16_t h[kSub];
        int16_t target[kSub];
        GOOD(veksSynthesisFilterZeroStateResponse_NR_16s(weights, h, kSub, 12));
        const int16_t* const residual = m_residual.data() + sub * kSub;
        GOOD(veksSynthesisFilter_NR_16s_Sfs(weights, residual, target, kSub, 12, m_target.data()));

        std::copy(residual, residual + kSub, m.excitation.begin() + 154);
        int16_t delay[2];
        int16_t vector[kSub];
        const int16_t around = sub == 0 ? m_openLag : m_delay;
        if (m_short) {
            GOOD(veksAdaptiveCodebookSearch_G729D_16s(around, target, h, m.excitation.data(), static_cast<int16_t>(sub),
                                                      delay));
            std::copy(m.excitation.begin() + 154, m.excitation.end(), vector);
        } else {
            GOOD(veksAdaptiveCodebookSearch_G729A_16s(around, target, h, m.excitation.data(), delay, vector,
                                                      static_cast<int16_t>(sub)));
        }
        if (sub == 0) {
            p[P1] = delay[0] <= 85 && !(delay[0] == 85 && delay[1] > 0) ? 3 * delay[0] + delay[1] - 58 : delay[0] + 112;
            p[P0] = 1;
            for (int b = 2; b < 8; ++b) {
                p[P0] ^= p[P1] >> b & 1;
            }
        } else {
            const int thirds = (delay[0] - std::clamp(m_delay - 5, 20, 134)) * 3 + delay[1];
            p[P2] = !m_short ? thirds + 2 : thirds < 10 ? thirds / 3 : thirds < 18 ? thirds - 6 : thirds / 3 + 6;
        }
        m_delay = delay[0];

        int16_t y[kSub];
        int16_t gain = 0;
        GOOD(veksAdaptiveCodebookGain_G729A_16s(target, weights, vector, y, &gain));
        int16_t second[kSub];
        GOOD(veksAdaptiveCodebookContribution_G729_16s(gain, y, target, second));
        m.sharpen(m_delay, h);
        int16_t code[kSub];
        int16_t index[2];
        int16_t z[kSub];
        if (m_short) {
            GOOD(veksFixedCodebookSearch_G729D_16s(second, h, code, z, &index[1], &index[0]));
        } else {
            int16_t d[kSub];
            std::vector<int32_t> matrix(616);
            GOOD(veksCrossCorr_NormM_16s(second, h, kSub, d));
            GOOD(veksToeplizMatrix_G729_16s32s(h, matrix.data()));
            GOOD(veksFixedCodebookSearch_G729A_32s16s(d, matrix.data(), code, index));
            GOOD(veksConvPartial_16s_Sfs(code, h, z, kSub, 13));
        }
        m.sharpen(m_delay, code);
        int16_t gains[2];
        int16_t codes[2];
        if (m_short) {
            GOOD(veksGainQuant_G729D_16s(target, y, code, z, m.past.data(), gains, codes, 0));
        } else {
            GOOD(veksGainQuant_G729_16s(target, y, code, z, m.past.data(), gains, codes, 0));
        }
        const int fields[2][4] = {{C1, S1, GA1, GB1}, {C2, S2, GA2, GB2}};
        const int values[] = {index[0], index[1], codes[0], codes[1]};
        for (int i = 0; i < 4; ++i) {
            p[static_cast<size_t>(fields[sub][i])] = values[i];
        }
        for (int i = 30; i < kSub; ++i) {
            const int adaptive = gains[0] * y[i] >> 14;
            const auto fixed = static_cast<int>(int64_t{gains[1]} * z[i] >> 13);
            m_target[static_cast<size_t>(i - 30)] =
                static_cast<int16_t>(std::clamp(target[i] - adaptive - fixed, -32768, 32767));
        }
        m.take(vector, code, gains, sub);
        if (m_short) {
            hearing.add(m.excitation.data() + 154 - kSub, code, gains, m.lpc[sub], m_delay);
        }
    }
};

class Decoder {
public:
    Samples local;

    // With the post filters of Annex A or of the main body.
    explicit Decoder(bool asMainBody = false) : m_main(asMainBody) { GOOD(veksHighPassFilterInit_G729(m_filter)); }

    Samples frame(const Parameters& p) {
        const int16_t words[4] = {static_cast<int16_t>(p[L0]), static_cast<int16_t>(p[L1]), static_cast<int16_t>(p[L2]),
                                  static_cast<int16_t>(p[L3])};
        Samples next(10);
        GOOD(veksLSFDecode_G729_16s(words, m.history.data(), next.data()));
        GOOD(veksLSFToLSP_G729_16s(next.data(), next.data()));
        m.spectrum(next);
        Samples out;
        for (int sub = 0; sub < 2; ++sub) {
            excite(sub, p);
            if (m_main) {
                m_post.add(m.synthesis.data() + 10 + sub * kSub, m.lpc[sub], m_delay, out);
            } else {
                postFilter(sub, out);
            }
        }
        m.endFrame();
        local.insert(local.end(), m.synthesis.end() - kFrame, m.synthesis.end());
        if (!m_main) {
            GOOD(veksHighPassFilter_G729_16s_ISfs(out.data(), kFrame, 12, m_filter));
        }
        return out;
    }

private:
    Model m;
    bool m_main;
    MainPostFilter m_post;
    char m_filter[64] = {};
    int m_delay = 0;
    Samples m_residual = Samples(194);
    Samples m_harmonic = Samples(1 + kSub);
    Samples m_short = Samples(10 + kSub);
    int16_t m_gain = 4096;

    void excite(int sub, const Parameters& p) {
        int fraction = 0;
        if (sub == 0) {
            m_delay = p[P1] < 197 ? (p[P1] + 2) / 3 + 19 : p[P1] - 112;
            fraction = p[P1] < 197 ? p[P1] - 3 * m_delay + 58 : 0;
        } else {
            const int from = std::clamp(m_delay - 5, 20, 134);
            const int steps = (p[P2] + 2) / 3 - 1;
            m_delay = steps + from;
            fraction = p[P2] - 2 - 3 * steps;
        }
        const int16_t delay[] = {static_cast<int16_t>(m_delay), static_cast<int16_t>(fraction)};
        int16_t vector[kSub];
        GOOD(veksDecodeAdaptiveVector_G729_16s(delay, m.excitation.data(), vector));
        int16_t code[kSub] = {};
        const int positions = p[sub == 0 ? C1 : C2];
        const int signs = p[sub == 0 ? S1 : S2];
        for (int t = 0; t < 4; ++t) {
            const int at =
                5 * (t < 3 ? positions >> 3 * t & 7 : positions >> 10) + t + (t == 3 ? positions >> 9 & 1 : 0);
            code[at] = (signs >> t & 1) != 0 ? 8191 : -8192;
        }
        m.sharpen(m_delay, code);
        int32_t energy = 0;
        GOOD(veksDotProd_G729A_16s32s(code, code, kSub, &energy));
        const int16_t codes[] = {static_cast<int16_t>(p[sub == 0 ? GA1 : GA2]),
                                 static_cast<int16_t>(p[sub == 0 ? GB1 : GB2])};
        int16_t gains[2];
        GOOD(veksDecodeGain_G729_16s(energy, m.past.data(), codes, gains));
        m.take(vector, code, gains, sub);
    }

    void postFilter(int sub, Samples& out) {
        const int16_t* const now = m.synthesis.data() + 10 + sub * kSub;
        const int16_t* const a = m.lpc[sub];
        GOOD(veksLongTermPostFilter_G729A_16s(static_cast<int16_t>(m_delay), now, a, m_residual.data(),
                                              m_harmonic.data() + 1));
        GOOD(veksTiltCompensation_G729A_16s(a, m_harmonic.data() + 1));
        std::copy(m_short.begin() + kSub, m_short.end(), m_short.begin());
        GOOD(veksShortTermPostFilter_G729A_16s(a, m_harmonic.data() + 1, m_short.data() + 10));
        Samples levelled(m_short.begin() + 10, m_short.end());
        GOOD(veksGainControl_G729A_16s_I(now, levelled.data(), &m_gain));
        out.insert(out.end(), levelled.begin(), levelled.end());
        std::copy(m_residual.begin() + kSub, m_residual.end(), m_residual.begin());
    }
};

} // namespace g729chain
