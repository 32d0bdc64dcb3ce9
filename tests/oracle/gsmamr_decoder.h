// A decoder of GSM AMR put together from the library's functions. The steps that are no function of the library stand
// here: gains, phase dispersion, enhancement of the pitch, smoothing of the gain, high-pass. A program includes this
// only where the header of the other codec's package is found.
#pragma once

#include <algorithm>
#include <array>

#include "good.h"
#include "gsmamr_stream.h"
#include "sc/common/fixmath.h"
#include "sc/common/inverseroot.h"
#include "sc/common/logarithm.h"
#include "veksc.h"

namespace amrdecoder {

using namespace amr;
using namespace vek::fix;

constexpr int kOrder = 10;
constexpr int kPast = 154;
constexpr int16_t kMostSharp = 13017;

// The code vector's gain foretold from its energy and the last four errors: TS 26.090 5.7 to 5.9 and 6.1. The errors
// are kept as dB and as log2, since only 12.2 takes the latter.
class Gains {
public:
    struct Pair {
        int16_t pitch;
        int16_t code;
    };

    // The joint codes of both gains, and 7.95's and 12.2's code gains with the pitch gain that is known.
    Pair joint(int mode, int code, int subframe, const int16_t* vector) {
        if (mode == R475) {
            const int16_t* const row = table_gain_MR475 + 4 * code + 2 * (subframe % 2);
            int16_t exponent = 0;
            int16_t fraction = 0;
            Log2(row[1], exponent, fraction);
            exponent = sub(exponent, 12);
            const int16_t log = add(shr_r(fraction, 5), shl(exponent, 10));
            const int16_t db = round_s(L_shl(Mpy_32_16(exponent, fraction, 24660), 13));
            return {row[0], scaled(mode, row[1], 10, log, db, vector)};
        }
        const bool high = mode == R67 || mode == R74 || mode == R102;
        const int16_t* const row = (high ? table_gain_highrates : table_gain_lowrates) + 4 * code;
        return {row[0], scaled(mode, row[1], 10, row[2], row[3], vector)};
    }
    int16_t alone(int mode, int code, const int16_t* vector) {
        const int16_t* const row = qua_gain_code + 3 * code;
        return scaled(mode, row[0], 9, row[1], row[2], vector);
    }

private:
    std::array<int16_t, 4> m_db = {-14336, -14336, -14336, -14336};
    std::array<int16_t, 4> m_log = {-2381, -2381, -2381, -2381};

    int16_t scaled(int mode, int16_t factor, int shift, int16_t log, int16_t db, const int16_t* vector) {
        int32_t energy = 0;
        for (int i = 0; i < kSub; ++i) {
            energy = L_mac(energy, vector[i], vector[i]);
        }
        int16_t gain = 0;
        int16_t exponent = 0;
        int16_t fraction = 0;
        if (mode == R122) {
            Log2(L_mult(round_s(energy), 26214), exponent, fraction); // a fortieth
            int32_t sum = 783741;                                     // 36 dB
            constexpr int16_t taps[] = {44, 37, 22, 12};
            for (size_t i = 0; i < 4; ++i) {
                sum = L_mac(sum, m_log[i], taps[i]);
            }
            sum = L_sub(sum, L_Comp(sub(exponent, 30), fraction)) >> 1;
            L_Extract(sum, exponent, fraction);
            gain = shl(mult(shl(extract_l(Pow2(exponent, fraction)), 4), factor), 1);
        } else {
            Log2(energy, exponent, fraction);
            constexpr int16_t mean[] = {16678, 16678, 16678, 32268, 32588, 17062, 16678};
            int32_t sum = Mpy_32_16(exponent, fraction, -24660);
            sum = L_shl(L_mac(sum, mean[mode], mode == R67 || mode == R74 ? 32 : 64), 10);
            constexpr int16_t taps[] = {5571, 4751, 2785, 1556};
            for (size_t i = 0; i < 4; ++i) {
                sum = L_mac(sum, taps[i], m_db[i]);
            }
            sum = L_mult(extract_h(sum), mode == R74 ? 5439 : 5443) >> 8;
            L_Extract(sum, exponent, fraction);
            gain = extract_h(L_shr(L_mult(factor, extract_l(Pow2(14, fraction))), shift - exponent));
        }
        std::copy_backward(m_log.begin(), m_log.end() - 1, m_log.end());
        std::copy_backward(m_db.begin(), m_db.end() - 1, m_db.end());
        m_log[0] = log;
        m_db[0] = db;
        return gain;
    }
};

// Spreads the few pulses of the lower rates where the pitch is weak: TS 26.090 6.1.
class Dispersion {
public:
    void apply(int mode, int16_t codeGain, int16_t pitchGain, int16_t* vector) {
        std::copy_backward(m_pitch.begin(), m_pitch.end() - 1, m_pitch.end());
        m_pitch[0] = pitchGain;
        int strength = pitchGain >= 14746 ? 2 : pitchGain > 9830 ? 1 : 0; // 0.9, 0.6
        if (codeGain > sat16(2 * m_codeGain)) {
            m_onset = 2;
        } else if (m_onset > 0) {
            --m_onset;
        }
        if (m_onset == 0) {
            if (std::count_if(m_pitch.begin(), m_pitch.end(), [](int16_t g) { return g < 9830; }) > 2) {
                strength = 0;
            }
            strength = std::min(strength, m_strength + 1);
        } else {
            strength = std::min(strength + 1, 2);
        }
        if (codeGain < 10) {
            strength = 2;
        }
        m_strength = strength;
        m_codeGain = codeGain;
        if (strength < 2 && mode != R74 && mode != R102 && mode != R122) {
            const int16_t* const response = mode == R795 ? (strength == 0 ? ph_imp_low_MR795 : ph_imp_mid_MR795)
                                                         : (strength == 0 ? ph_imp_low : ph_imp_mid);
            std::array<int16_t, kSub> pulses;
            std::copy_n(vector, kSub, pulses.begin());
            std::fill_n(vector, kSub, int16_t{0});
            for (int at = 0; at < kSub; ++at) {
                for (int i = 0; i < kSub && pulses[static_cast<size_t>(at)] != 0; ++i) {
                    int16_t& out = vector[(at + i) % kSub];
                    out = add(out, mult(pulses[static_cast<size_t>(at)], response[i]));
                }
            }
        }
    }

private:
    std::array<int16_t, 5> m_pitch{};
    int16_t m_codeGain = 0;
    int m_strength = 0;
    int m_onset = 0;
};

// Smooths the code gain of steady spectra at the rates up to 6.7 and at 10.2: TS 26.090 6.1.
class Smoother {
public:
    int16_t apply(int mode, int16_t gain, const int16_t* lsf) {
        std::copy(m_gains.begin() + 1, m_gains.end(), m_gains.begin());
        m_gains[6] = gain;
        int16_t distance = 0;
        for (int i = 0; i < kOrder; ++i) {
            const int16_t far = abs_s(sub(m_mean[i], lsf[i]));
            const int up = norm_s(far) - 1;
            const int upMean = norm_s(m_mean[i]);
            distance = add(distance, shr(div_s(shl(far, up), shl(m_mean[i], upMean)), 2 + up - upMean));
        }
        m_moving = distance > 5325 ? m_moving + 1 : 0; // 0.65
        if (m_moving > 10) {
            m_steady = 0;
        }
        int16_t mixed = gain;
        if (mode <= R67 || mode == R102) {
            const int above = std::max(distance - 3277, 0); // 0.4
            const auto share =
                static_cast<int16_t>(above > 2048 || m_steady < 40 || distance > 5325 ? 8192 : 4 * above);
            int32_t sum = 0;
            for (size_t i = 2; i < 7; ++i) {
                sum = L_mac(sum, 6554, m_gains[i]);
            }
            const int16_t mean = round_s(sum);
            sum = L_mac(L_mult(share, gain), 8192, mean);
            mixed = round_s(L_shl(L_msu(sum, share, mean), 2));
            smoothed += share < 8192 ? 1 : 0;
        }
        ++m_steady;
        return mixed;
    }

    void endFrame(const Samples& lsf) {
        for (size_t i = 0; i < kOrder; ++i) {
            int32_t sum = L_deposit_h(m_mean[i]);
            sum = L_msu(sum, 5243, m_mean[i]); // 0.16
            m_mean[i] = round_s(L_mac(sum, 5243, lsf[i]));
        }
    }

    int smoothed = 0;

private:
    std::array<int16_t, 7> m_gains{};
    int16_t m_mean[kOrder] = {mean_lsf_5[0], mean_lsf_5[1], mean_lsf_5[2], mean_lsf_5[3], mean_lsf_5[4],
                              mean_lsf_5[5], mean_lsf_5[6], mean_lsf_5[7], mean_lsf_5[8], mean_lsf_5[9]};
    int m_moving = 0;
    int m_steady = 0;
};

inline int32_t inverseRoot(int32_t x) {
    if (x <= 0) {
        return 0x3fffffff;
    }
    const int up = norm_l(x);
    const int exponent = 30 - up;
    const int32_t mantissa = x << up >> (exponent % 2 == 0 ? 10 : 9);
    const int at = (mantissa >> 16) - 16;
    const int16_t part = static_cast<int16_t>(mantissa >> 1 & 0x7fff);
    const int32_t y = L_msu(L_deposit_h(vek::kInverseRoots[at]),
                            static_cast<int16_t>(vek::kInverseRoots[at] - vek::kInverseRoots[at + 1]), part);
    return y >> (exponent / 2 + 1);
}

inline int32_t energyOf(const int16_t* x) {
    int64_t energy = 0;
    for (int i = 0; i < kSub; ++i) {
        energy += int64_t{2} * x[i] * x[i];
    }
    if (energy <= kMax32) {
        return static_cast<int32_t>(energy >> 4);
    }
    energy = 0;
    for (int i = 0; i < kSub; ++i) {
        energy += int64_t{2} * (x[i] >> 2) * (x[i] >> 2);
    }
    return sat32(energy);
}

// Gives out the energy of in: TS 26.090 6.1.
inline void level(const int16_t* in, int16_t* out) {
    const int32_t have = energyOf(out);
    const int32_t want = energyOf(in);
    if (have == 0) {
        return;
    }
    int16_t gain = 0;
    if (want != 0) {
        const int up = norm_l(have) - 1;
        const int upWant = norm_l(want);
        const int16_t ratio = div_s(round_s(L_shl(have, up)), round_s(L_shl(want, upWant)));
        gain = round_s(L_shl(inverseRoot(L_shr(L_shl(ratio, 7), up - upWant)), 9));
    }
    for (int i = 0; i < kSub; ++i) {
        out[i] = extract_h(L_shl(L_mult(out[i], gain), 3));
    }
}

class Decoder {
public:
    Samples frame(int mode, const Samples& p) {
        const VekSpchBitRate rate = kRate[mode];
        const Samples before = m_lsf;
        Samples pairs(4 * kOrder);
        GOOD(veksQuantLSPDecode_GSMAMR_16s(p.data(), m_residual.data(), m_lsf.data(), m_lsp.data(), pairs.data(), 0,
                                           rate));
        const int16_t* at = p.data() + (mode == R122 ? 5 : 3);
        Samples lpc(4 * (kOrder + 1));
        Samples speech(kFrame);
        for (int16_t sub = 0; sub < 4; ++sub) {
            int16_t* const a = lpc.data() + sub * (kOrder + 1);
            GOOD(veksLSPToLPC_G729_16s(pairs.data() + sub * kOrder, a));
            subframe(mode, sub, before, a, at, speech.data() + sub * kSub);
        }
        SAME(p.data() + p.size(), at);
        m_smoother.endFrame(m_lsf);
        Samples out(kFrame);
        GOOD(veksPostFilter_GSMAMR_16s(lpc.data(), speech.data(), &m_tilt, &m_level, m_fir.data(), m_iir.data(),
                                       out.data(), rate));
        m_highPass.apply(out.data(), kFrame);
        for (int16_t& v : out) {
            v = static_cast<int16_t>(v & ~7);
        }
        return out;
    }

    int smoothed() const { return m_smoother.smoothed; }
    int enhanced = 0;
    int clipped = 0;

private:
    Samples m_residual = Samples(kOrder);
    Samples m_lsf = Samples(mean_lsf_5, mean_lsf_5 + kOrder);
    Samples m_lsp = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};
    Samples m_excitation = Samples(kPast + kSub);
    Samples m_synthesis = Samples(kOrder);
    Samples m_fir = Samples(kOrder);
    Samples m_iir = Samples(kOrder);
    int16_t m_tilt = 0;
    int16_t m_level = 4096;
    int16_t m_lag = 40;
    int16_t m_sharp = 0;
    int m_joint475 = 0;
    Gains m_gains;
    Dispersion m_dispersion;
    Smoother m_smoother;
    // Doubles, and takes away what is below 60 Hz: TS 26.090 6.2.2.
    HighPass m_highPass{{7699, -15398, 7699}, {15836, -7667}, 2, 1};

    void codeVector(int mode, int16_t sub, int16_t sharp, const int16_t*& at, int16_t* code) {
        GOOD(veksFixedCodebookDecode_GSMAMR_16s(at, code, sub, kRate[mode]));
        at += mode == R122 ? 10 : mode == R102 ? 7 : 2;
        if (m_lag < kSub) {
            Samples row(144 + kSub);
            std::copy_n(code, kSub, row.begin() + 144);
            GOOD(veksHarmonicFilter_16s_I(sharp, m_lag, row.data() + 144, kSub));
            std::copy_n(row.begin() + 144, kSub, code);
        }
    }

    void subframe(int mode, int16_t sub, const Samples& before, const int16_t* lpc, const int16_t*& at, int16_t* out) {
        int16_t vector[kSub];
        int16_t told = 0;
        const int16_t former = m_lag;
        GOOD(veksAdaptiveCodebookDecode_GSMAMR_16s(*at++, &m_lag, &told, m_excitation.data(), vector, sub, 0, 0, 0,
                                                   kRate[mode]));
        int16_t code[kSub];
        Gains::Pair gain{};
        if (mode == R122) {
            gain.pitch = static_cast<int16_t>(qua_gain_pitch[*at++] & ~3);
            codeVector(mode, sub, shl(gain.pitch, 1), at, code);
            gain.code = m_gains.alone(mode, *at++, code);
        } else {
            codeVector(mode, sub, shl(m_sharp, 1), at, code);
            if (mode == R795) {
                gain.pitch = qua_gain_pitch[*at++];
                gain.code = m_gains.alone(mode, *at++, code);
            } else if (mode == R475) {
                // One code for two subframes.
                m_joint475 = sub % 2 == 0 ? *at++ : m_joint475;
                gain = m_gains.joint(mode, m_joint475, sub, code);
            } else {
                gain = m_gains.joint(mode, *at++, sub, code);
            }
        }
        if (mode != R475 || sub % 2 == 1) {
            m_sharp = std::min(gain.pitch, kMostSharp);
        }
        int16_t weight = mode == R122 ? gain.pitch : std::min(gain.pitch, kMostSharp);
        if (mode == R102 && former > kSub + 5) {
            weight = static_cast<int16_t>(weight / 4);
        }
        excite(mode, sub, gain, shl(weight, 1), before, vector, code);
        GOOD(veksSynthesisFilter_NR_16s_Sfs(lpc, vector, out, kSub, 12, m_synthesis.data()));
        if (std::any_of(out, out + kSub, [](int16_t v) { return v == 32767 || v == -32768; })) {
            ++clipped;
        }
        std::copy_n(out + kSub - kOrder, kOrder, m_synthesis.begin());
    }

    // Brings the excitation on, and makes of the adaptive vector what is to be synthesised.
    void excite(int mode, int16_t sub, const Gains::Pair& gain, int16_t weight, const Samples& before, int16_t* vector,
                int16_t* code) {
        Samples lsf = m_lsf;
        if (sub == 0) {
            GOOD(veksInterpolate_GSMAMR_16s(m_lsf.data(), before.data(), lsf.data(), kOrder));
        } else if (sub == 1) {
            GOOD(veksInterpolate_G729_16s(before.data(), m_lsf.data(), lsf.data(), kOrder));
        } else if (sub == 2) {
            GOOD(veksInterpolate_GSMAMR_16s(before.data(), m_lsf.data(), lsf.data(), kOrder));
        }
        const int16_t smooth = m_smoother.apply(mode, gain.code, lsf.data());
        const int16_t codeGain = mode == R74 || mode == R795 || mode == R122 ? gain.code : smooth;
        const auto pitchGain = static_cast<int16_t>(mode == R122 ? gain.pitch >> 1 : gain.pitch);
        const int scale = mode == R122 ? 13 : 14;

        int16_t pitched[kSub];
        for (int i = 0; i < kSub; ++i) {
            const int32_t v = L_mult(mult(vector[i], weight), gain.pitch);
            pitched[i] = round_s(mode == R122 ? v >> 1 : v);
        }
        GOOD(veksInterpolateC_NR_G729_16s_Sfs(vector, pitchGain, code, gain.code, m_excitation.data() + kPast, kSub,
                                              scale));
        std::copy(m_excitation.begin() + kSub, m_excitation.end(), m_excitation.begin());
        m_dispersion.apply(mode, codeGain, gain.pitch, code);
        int16_t total[kSub];
        GOOD(veksInterpolateC_NR_G729_16s_Sfs(vector, pitchGain, code, codeGain, total, kSub, scale));
        std::copy_n(total, kSub, vector);
        if (weight > 16384) {
            ++enhanced;
            for (int i = 0; i < kSub; ++i) {
                vector[i] = add(vector[i], pitched[i]);
            }
            level(total, vector);
        }
    }
};

} // namespace amrdecoder
