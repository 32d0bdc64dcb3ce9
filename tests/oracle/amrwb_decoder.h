// A decoder of AMR-WB put together from the library's functions. The steps that are no function of the library stand
// here: voicing, scaling, enhancement of the excitation, oversampling to 16 kHz, the band above 6.4 kHz. Dispersion of
// the pulses, gain control after the pitch's enhancement (both at the two lowest rates) and the extrapolated spectrum
// of 6.6 kbit/s are the other codec's. A program includes this only where the headers of both other codecs' packages
// are found.
#pragma once

#include <algorithm>
#include <array>

#include "amrwb_stream.h"
#include "good.h"
#include "sc/common/fixmath.h"
#include "sc/common/inverseroot.h"
#include "veksc.h"

extern "C" {
void phase_dispersion(int16_t codeGain, int16_t pitchGain, int16_t* code, int16_t strength, int16_t* memory,
                      int16_t* scratch);
void agc2_amr_wb(int16_t* in, int16_t* out, int16_t n);
void isf_extrapolation(int16_t* isf);
extern const int16_t fir_up[4][24];
extern const int16_t fir_6k_7k[30];
extern const int16_t fir_7k[31];
extern const int16_t HP_gain[16];
}

namespace amrwbdecoder {

using namespace amrwb;
using namespace vek::fix;

constexpr int kOrder = 16;
constexpr int kHighOrder = 20;
constexpr int kSub = 64;
constexpr int kHighSub = 80;
constexpr int kPast = 248;
constexpr int16_t kMostRoom = 8;
constexpr int16_t kShare[4] = {14746, 26214, 31457, 32767}; // of the new spectrum

struct Float {
    int32_t mantissa;
    int exponent;
};

// Sum of squares, normalised.
inline Float energyOf(const int16_t* x, int n) {
    int32_t sum = 1;
    for (int i = 0; i < n; ++i) {
        sum = L_mac(sum, x[i], x[i]);
    }
    const int up = norm_l(sum);
    return {sum << up, 30 - up};
}

inline Float inverseRoot(Float x) {
    const int32_t m = (x.exponent % 2 == 0 ? x.mantissa : x.mantissa >> 1) >> 9;
    const int at = (m >> 16) - 16;
    const auto part = static_cast<int16_t>(m >> 1 & 0x7fff);
    const auto step = static_cast<int16_t>(vek::kInverseRoots[at] - vek::kInverseRoots[at + 1]);
    return {L_msu(L_deposit_h(vek::kInverseRoots[at]), step, part), -((x.exponent - 1) >> 1)};
}

inline void scale(int16_t* x, int n, int up) {
    for (int i = 0; i < n && up != 0; ++i) {
        x[i] = round_s(L_shl(L_deposit_h(x[i]), up));
    }
}

inline int32_t part(int32_t x, int16_t share) {
    int16_t hi = 0;
    int16_t lo = 0;
    L_Extract(x, hi, lo);
    return Mpy_32_16(hi, lo, share);
}

// 1 where the adaptive vector has all of the energy, -1 where the code has it: TS 26.190 6.1.
inline int16_t voicing(const int16_t* adaptive, int16_t pitchGain, const int16_t* code, int16_t codeGain) {
    const Float first = energyOf(adaptive, kSub);
    const int32_t square = L_mult(pitchGain, pitchGain);
    const int up = norm_l(square);
    int16_t one = mult(extract_h(first.mantissa), extract_h(square << up));
    const int exponent = first.exponent + 6 - up - 10;

    const Float second = energyOf(code, kSub);
    const int upGain = norm_s(codeGain);
    const int16_t gain = shl(codeGain, upGain);
    int16_t two = mult(extract_h(second.mantissa), mult(gain, gain));
    const int apart = exponent - (second.exponent - 2 * upGain);
    one = shr(one, apart >= 0 ? 1 : 1 - apart);
    two = shr(two, apart >= 0 ? apart + 1 : 1);
    const int16_t sum = add(add(one, two), 1);
    return one >= two ? div_s(sub(one, two), sum) : negate(div_s(sub(two, one), sum));
}

// Finite response of 31 taps, Q15, with a memory of 30 samples.
class Fir {
public:
    void apply(const int16_t* taps, int down, Samples& x) {
        m_row.resize(30);
        for (const int16_t v : x) {
            m_row.push_back(static_cast<int16_t>(v >> down));
        }
        for (size_t i = 0; i < x.size(); ++i) {
            int64_t sum = int64_t{m_row[i + 30]} * taps[0]; // symmetric
            for (size_t k = 0; k < 30; ++k) {
                sum += int64_t{m_row[i + k]} * taps[k];
            }
            x[i] = round_s(sat32(2 * sum));
        }
        m_row.erase(m_row.begin(), m_row.end() - 30);
    }

private:
    Samples m_row;
};

// From 12.8 to 16 kHz, 12 samples late: TS 26.190 6.2.
class Oversampling {
public:
    void apply(const int16_t* x, int16_t* y) {
        m_row.insert(m_row.end(), x, x + kSub);
        for (size_t i = 0; i < kHighSub; ++i) {
            const size_t at = 4 * i / 5;
            const size_t fifths = 4 * i % 5;
            if (fifths == 0) {
                y[i] = m_row[at + 12];
                continue;
            }
            int32_t sum = 0;
            for (size_t k = 0; k < 24; ++k) {
                sum = L_mac(sum, m_row[at + k + 1], fir_up[4 - fifths][k]);
            }
            y[i] = round_s(L_shl(sum, 1));
        }
        m_row.erase(m_row.begin(), m_row.begin() + kSub);
    }
    const Samples& memory() const { return m_row; }

private:
    Samples m_row = Samples(24);
};

// Noise from 6.4 to 7 kHz in the shape of the speech below: TS 26.190 6.3.
class HighBand {
public:
    HighBand() {
        int size = 0;
        GOOD(veksHighPassFilterGetSize_AMRWB_16s(&size));
        m_highPass.resize(static_cast<size_t>(size));
        GOOD(veksHighPassFilterInit_AMRWB_16s(m_highPass.data()));
    }

    // The excitation is in the scale q; the spectrum, with room for 20 frequencies, is looked at for 6.6 only.
    Samples subframe(int mode, bool pause, int gainIndex, int16_t* excitation, int q, int16_t* speech,
                     const int16_t* lpc, Samples spectrum) {
        Samples noise(kHighSub);
        for (int16_t& v : noise) {
            m_seed = static_cast<int16_t>(m_seed * 31821 + 13849);
            v = static_cast<int16_t>(m_seed >> 3);
        }
        for (int i = 0; i < kSub; ++i) {
            excitation[i] = static_cast<int16_t>(add(excitation[i], 4) >> 3);
        }
        const Float want = energyOf(excitation, kSub);
        const Float have = energyOf(noise.data(), kHighSub);
        int16_t ratio = extract_h(have.mantissa);
        int exponent = have.exponent - (want.exponent - 2 * (q - 3));
        if (ratio > extract_h(want.mantissa)) {
            ratio = static_cast<int16_t>(ratio >> 1);
            ++exponent;
        }
        const Float root = inverseRoot({L_deposit_h(div_s(ratio, extract_h(want.mantissa))), exponent});
        const int16_t level = extract_h(L_shl(root.mantissa, root.exponent + 1));
        const int16_t slope = leveled(pause, speech);
        for (int16_t& v : noise) {
            v = mult(v, level);
            v = mode == R2385 ? shl(mult(v, HP_gain[gainIndex]), 1) : mult(v, slope);
        }
        Samples a(kHighOrder + 1);
        if (mode == R660) {
            isf_extrapolation(spectrum.data());
            GOOD(veksISPToLPC_AMRWB_16s(spectrum.data(), a.data(), kHighOrder));
            GOOD(veksMulPowerC_NR_16s_Sfs(a.data(), 29491, a.data(), kHighOrder + 1, 15)); // 0.9
            synthesise(a.data(), kHighOrder, noise);
        } else {
            GOOD(veksMulPowerC_NR_16s_Sfs(lpc, 19661, a.data(), kOrder + 1, 15)); // 0.6
            synthesise(a.data(), kOrder, noise);
            std::fill_n(m_past.begin(), kHighOrder - kOrder, int16_t{0}); // 6.6 starts without them
        }
        m_band.apply(fir_6k_7k, 2, noise);
        if (mode == R2385) {
            m_low.apply(fir_7k, 0, noise);
        }
        return noise;
    }

private:
    std::vector<char> m_highPass;
    int16_t m_seed = 21845;
    Samples m_past = Samples(kHighOrder);
    Fir m_band;
    Fir m_low;

    // Less noise the more the speech falls towards the high frequencies.
    int16_t leveled(bool pause, int16_t* speech) {
        GOOD(veksHighPassFilter_AMRWB_16s_ISfs(speech, kSub, m_highPass.data(), 12));
        int32_t zero = 1;
        int32_t one = 1;
        for (int i = 0; i < kSub; ++i) {
            zero = L_mac(zero, speech[i], speech[i]);
            one = i == 0 ? one : L_mac(one, speech[i], speech[i - 1]);
        }
        const int up = norm_l(zero);
        const int16_t first = extract_h(one << up);
        const int16_t tilt = first > 0 ? div_s(first, extract_h(zero << up)) : int16_t{0};
        int16_t gain = sub(32767, tilt);
        if (pause) {
            gain = shl(mult(gain, 20480), 1); // 1.25
        }
        return std::max(gain, int16_t{3277});
    }

    void synthesise(const int16_t* a, int order, Samples& x) {
        for (int16_t& v : x) {
            int32_t sum = L_mult(v, static_cast<int16_t>(a[0] >> 1)); // at half the level
            for (int k = 1; k <= order; ++k) {
                sum = L_msu(sum, a[k], m_past[m_past.size() - static_cast<size_t>(k)]);
            }
            v = round_s(L_shl(sum, 3));
            m_past.push_back(v);
        }
        m_past.erase(m_past.begin(), m_past.end() - kHighOrder);
    }
};

class Decoder {
public:
    Decoder() {
        int size = 0;
        GOOD(veksAdaptiveCodebookDecodeGetSize_AMRWB_16s(&size));
        m_adaptive.resize(static_cast<size_t>(size));
        GOOD(veksAdaptiveCodebookDecodeInit_AMRWB_16s(adaptive()));
        GOOD(veksHighPassFilterGetSize_AMRWB_16s(&size));
        m_highPass.resize(static_cast<size_t>(size));
        GOOD(veksHighPassFilterInit_AMRWB_16s(m_highPass.data()));
        for (int i = 0; i < 3; ++i) {
            std::copy(m_isf.begin(), m_isf.end(), m_isfHistory.begin() + i * kOrder);
        }
    }

    Samples frame(int mode, const Samples& p) {
        const int16_t* at = p.data();
        m_pauses = *at++ == 0 ? m_pauses + 1 : 0;
        const Samples before = m_isf;
        GOOD(veksISFQuantDecode_AMRWB_16s(at, m_isf.data(), m_residual.data(), before.data(), m_isfHistory.data(), 0,
                                          kRate[mode]));
        at += mode == R660 ? 5 : 7;
        Samples isp(kOrder);
        GOOD(veksISFToISP_AMRWB_16s(m_isf.data(), isp.data(), kOrder));
        if (m_isp.empty()) {
            m_isp = isp;
        }
        int32_t moved = 0;
        for (size_t i = 0; i + 1 < kOrder; ++i) {
            const int16_t d = sub(m_isf[i], before[i]);
            moved = L_mac(moved, d, d);
        }
        const int16_t far = mult(extract_h(L_shl(moved, 8)), 26214);
        m_steady = std::max(shl(sub(20480, far), 1), int16_t{0});

        Samples out(kWide);
        for (int sub = 0; sub < 4; ++sub) {
            Samples lpc(kOrder + 1);
            Samples mixed = isp;
            if (sub < 3) {
                GOOD(veksInterpolateC_NR_16s(m_isp.data(), static_cast<int16_t>(32768 - kShare[sub]), 1, isp.data(),
                                             kShare[sub], 1, mixed.data(), kOrder));
            }
            GOOD(veksISPToLPC_AMRWB_16s(mixed.data(), lpc.data(), kOrder));
            Samples spectrum(kHighOrder);
            GOOD(veksInterpolateC_NR_16s(before.data(), static_cast<int16_t>(32767 - kShare[sub]), 1, m_isf.data(),
                                         kShare[sub], 1, spectrum.data(), kOrder));
            subframe(mode, sub, lpc, spectrum, at, out.data() + sub * kHighSub);
        }
        SAME(p.data() + p.size(), at);
        m_isp = isp;
        return out;
    }

    // Whether all that goes to the next frame, the speech at 12.8 kHz included, is what the record has.
    bool agrees(const DecoderRecord& r) const {
        bool same = std::equal(m_excitation.begin(), m_excitation.begin() + kPast, r.excitation) && m_scale == r.scale;
        same = same && std::equal(m_isp.begin(), m_isp.end(), r.isp) && std::equal(m_isf.begin(), m_isf.end(), r.isf);
        same = same && std::equal(m_isfHistory.begin(), m_isfHistory.end(), r.isfHistory);
        same = same && std::equal(m_residual.begin(), m_residual.end(), r.residual) && m_tilt == r.tilt;
        for (size_t i = 0; i < kOrder; ++i) {
            same = same && m_synthesis[i] == r.synthesisHigh[i] * 65536 + r.synthesisLow[i] * 16;
        }
        return same && m_threshold == r.threshold && m_deemphasis == r.deemphasis &&
               std::equal(m_oversampling.memory().begin(), m_oversampling.memory().end(), r.speech);
    }

    int enhanced = 0;
    bool clipped = false;

private:
    std::vector<char> m_adaptive;
    std::vector<char> m_highPass;
    Samples m_isf = {1024, 2048,  3072,  4096,  5120,  6144,  7168,  8192,
                     9216, 10240, 11264, 12288, 13312, 14336, 15360, 3840};
    Samples m_isfHistory = Samples(3 * kOrder);
    Samples m_residual = Samples(kOrder);
    Samples m_isp;
    Samples m_excitation = Samples(kPast + kSub + 1);
    std::vector<int32_t> m_synthesis = std::vector<int32_t>(kOrder + kSub);
    int16_t m_bounds[2] = {};
    int16_t m_energies[4] = {-14336, -14336, -14336, -14336};
    int16_t m_formerGain = 0;
    int16_t m_pastGain = 0;
    int16_t m_tilt = 0;
    int16_t m_scale = kMostRoom;
    std::array<int16_t, 4> m_room = {kMostRoom, kMostRoom, kMostRoom, kMostRoom};
    int32_t m_threshold = 0;
    int16_t m_steady = 0;
    int16_t m_deemphasis = 0;
    int m_pauses = 0;
    int16_t m_dispersion[8] = {};
    Oversampling m_oversampling;
    HighBand m_high;

    VekAdaptiveCodebookState_AMRWB* adaptive() {
        return reinterpret_cast<VekAdaptiveCodebookState_AMRWB*>(m_adaptive.data());
    }

    // The adaptive vector comes to its place in the excitation. The lag that sharpens the code.
    int adaptiveVector(int mode, int sub, const int16_t*& at) {
        int16_t* const here = m_excitation.data() + kPast;
        int16_t quarters = 0;
        int16_t lag = 0;
        GOOD(veksAdaptiveCodebookDecode_AMRWB_16s(*at++, &quarters, here, &lag, m_bounds, sub, 0, 0, kRate[mode],
                                                  adaptive()));
        if (mode <= R885 || *at++ == 0) {
            constexpr int16_t taps[] = {5898, 20972};
            Samples low(kSub);
            GOOD(veksHighPassFilter_Direct_AMRWB_16s(taps, here, low.data(), kSub, 1));
            std::copy(low.begin(), low.end(), here);
        }
        return quarters > 2 ? lag + 1 : lag;
    }

    Samples codeVector(int mode, int lag, const int16_t*& at) {
        Samples row(2 * kSub);
        int16_t* const code = row.data() + kSub;
        GOOD(veksAlgebraicCodebookDecode_AMRWB_16s(at, code, kRate[mode]));
        at += codeWidths(mode).size();
        int16_t last = 0;
        GOOD(veksPreemphasize_AMRWB_16s_ISfs(m_tilt, code, kSub, 15, &last));
        if (lag < kSub) {
            GOOD(veksHarmonicFilter_NR_16s(27853, lag, code, code, kSub)); // 0.85
        }
        return {code, code + kSub};
    }

    void subframe(int mode, int sub, const Samples& lpc, const Samples& spectrum, const int16_t*& at, int16_t* out) {
        int16_t* const here = m_excitation.data() + kPast;
        const int lag = adaptiveVector(mode, sub, at);
        Samples code = codeVector(mode, lag, at);
        Float root = energyOf(code.data(), kSub);
        root = inverseRoot({root.mantissa, root.exponent - 18 - 6});
        int16_t pitchGain = 0;
        int32_t codeGain = 0;
        GOOD(veksDecodeGain_AMRWB_16s(*at++, extract_h(L_shl(root.mantissa, root.exponent - 3)), &pitchGain, &codeGain,
                                      0, 0, m_energies, &m_formerGain, &m_pastGain, kRate[mode]));
        GOOD(veksAdaptiveCodebookDecodeGain_AMRWB_16s(pitchGain, adaptive()));
        const int highGain = mode == R2385 ? *at++ : 0;

        // The scale that leaves room for what comes.
        const int most = std::min(*std::min_element(m_room.begin(), m_room.end()), kMostRoom);
        int q = 0;
        int32_t raised = codeGain;
        while (raised < 0x08000000 && q < most) {
            raised *= 2;
            ++q;
        }
        const int16_t gain = round_s(raised);
        scale(m_excitation.data(), kPast + kSub, q - m_scale);
        m_scale = static_cast<int16_t>(q);

        Samples vector(here, here + kSub);
        Samples eighth = vector;
        scale(eighth.data(), kSub, -3);
        const int16_t voiced = voicing(eighth.data(), pitchGain, code.data(), gain);
        m_tilt = add(shr(voiced, 2), 8192);

        GOOD(veksInterpolateC_NR_16s(code.data(), gain, 7, vector.data(), pitchGain, 2, here, kSub));
        int16_t peak = 1;
        for (int i = 0; i < kSub; ++i) {
            peak = std::max(peak, abs_s(here[i]));
        }
        std::copy_backward(m_room.begin(), m_room.end() - 1, m_room.end());
        m_room[0] = static_cast<int16_t>(norm_s(peak) + q - 1);

        int16_t scratch[2 * kSub] = {};
        const auto strength = static_cast<int16_t>(std::min(mode, 2)); // from 12.65 on none
        phase_dispersion(extract_h(codeGain), pitchGain, code.data(), strength, m_dispersion, scratch);
        enhance(mode, pitchGain, codeGain, voiced, q, eighth, code, vector);
        synthesise(mode, highGain, lpc, spectrum, vector, out);
        std::copy(m_excitation.begin() + kSub, m_excitation.begin() + kSub + kPast, m_excitation.begin());
    }

    // Makes of the adaptive vector the excitation that is to be synthesised: TS 26.190 6.1.
    void enhance(int mode, int16_t pitchGain, int32_t codeGain, int16_t voiced, int q, const Samples& eighth,
                 const Samples& code, Samples& vector) {
        // Steady noise.
        const int16_t share = mult(m_steady, sub(16384, shr(voiced, 1)));
        if (codeGain < m_threshold) {
            m_threshold = std::min(L_add(codeGain, part(codeGain, 6226)), m_threshold);
        } else {
            m_threshold = std::max(part(codeGain, 27536), m_threshold);
        }
        const int32_t calm = L_add(part(codeGain, sub(32767, share)), part(m_threshold, share));
        const int16_t gain = round_s(L_shl(calm, q));
        // Less of the code at low frequencies.
        const int16_t side = add(shr(voiced, 3), 4096);
        Samples high(kSub);
        for (size_t i = 0; i < kSub; ++i) {
            int32_t v = L_deposit_h(code[i]);
            v = i + 1 < kSub ? L_msu(v, code[i + 1], side) : v;
            v = i > 0 ? L_msu(v, code[i - 1], side) : v;
            high[i] = round_s(v);
        }
        GOOD(veksInterpolateC_NR_16s(high.data(), gain, 7, vector.data(), pitchGain, 2, vector.data(), kSub));
        // A strong pitch.
        const int16_t sharp = shl(pitchGain, 1);
        if (mode <= R885 && sharp > 16384) {
            ++enhanced;
            Samples more(kSub);
            for (size_t i = 0; i < kSub; ++i) {
                more[i] = add(round_s(L_mult(mult(eighth[i], sharp), pitchGain) >> 1), vector[i]);
            }
            agc2_amr_wb(vector.data(), more.data(), kSub);
            vector = more;
        }
    }

    void synthesise(int mode, int highGain, const Samples& lpc, const Samples& spectrum, Samples& vector,
                    int16_t* out) {
        Samples a = lpc;
        a[0] = static_cast<int16_t>(a[0] >> m_scale);
        GOOD(veksSynthesisFilter_AMRWB_16s32s_I(a.data(), kOrder, vector.data(), m_synthesis.data() + kOrder, kSub));
        int16_t speech[kSub];
        GOOD(veksDeemphasize_AMRWB_32s16s(22282, m_synthesis.data() + kOrder, speech, kSub, &m_deemphasis)); // 0.68
        std::copy_n(m_synthesis.begin() + kSub, kOrder, m_synthesis.begin());
        const auto atLimit = [](int16_t v) { return v == 32767 || v == -32768; };
        clipped = clipped || std::any_of(speech, speech + kSub, atLimit);
        GOOD(veksHighPassFilter_AMRWB_16s_ISfs(speech, kSub, m_highPass.data(), 14));
        clipped = clipped || std::any_of(speech, speech + kSub, atLimit);
        m_oversampling.apply(speech, out);
        const Samples above =
            m_high.subframe(mode, m_pauses > 0, highGain, vector.data(), m_scale, speech, lpc.data(), spectrum);
        for (int i = 0; i < kHighSub; ++i) {
            out[i] = add(out[i], above[static_cast<size_t>(i)]);
        }
    }
};

} // namespace amrwbdecoder
