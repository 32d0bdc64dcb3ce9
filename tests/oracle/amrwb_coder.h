// AMR-WB's frame of another codec as the bits of its parameters, and a coder of whole frames put together from the
// library's functions. What is no function of the library stands here (scalings, targets, the choice of the filter) or
// is the other codec's: decimation, lag window, high-pass of the weighted speech, clipping of the pitch gain, voicing.
// A test includes this only where the headers of both packages are found.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "amrwb_frames.h"
#include "good.h"
#include "sc/common/fixmath.h"
#include "veksc.h"

extern "C" {
void Init_Decim_12k8(int16_t* mem);
void Decim_12k8(int16_t* in, int16_t n, int16_t* out, int16_t* mem);
void voAWB_Lag_window(int16_t* high, int16_t* low);
void Init_Hp_wsp(int16_t* mem);
void scale_mem_Hp_wsp(int16_t* mem, int16_t exponent);
void Hp_wsp(int16_t* x, int16_t* y, int16_t n, int16_t* mem);
void Init_gp_clip(int16_t* mem);
int16_t Gp_clip(int16_t* mem);
void Gp_clip_test_isf(int16_t* isf, int16_t* mem);
void Gp_clip_test_gain_pit(int16_t gain, int16_t* mem);
int16_t voAWB_voice_factor(int16_t* exc, int16_t format, int16_t gain, int16_t* code, int16_t codeGain, int16_t n);
void voAWB_cor_h_x(int16_t* h, int16_t* x, int16_t* dn);
void ACELP_2t64_fx(int16_t* dn, int16_t* cn, int16_t* h, int16_t* code, int16_t* y, int16_t* index);
void ACELP_4t64_fx(int16_t* dn, int16_t* cn, int16_t* h, int16_t* code, int16_t* y, int16_t bits, int16_t size,
                   int16_t* index);
extern const int16_t vo_window[];
}

namespace amrwb {

constexpr int kFrame = 256;
constexpr int kSub = 64;
constexpr int kOrder = 16;
constexpr int kRow = kOrder + 1;

constexpr int kBits[kRates] = {132, 177, 253, 285, 317, 365, 397, 461, 477};

// A bit that the coder below leaves open: the gain of the upper band at 23.85 kbit/s.
constexpr int8_t kOpen = -1;
using Bits = std::vector<int8_t>;

// The bits of a frame in the order of TS 26.201.
inline Bits bitsIn(int mode, const Octets& octets) {
    Bits bits(static_cast<size_t>(kBits[mode]));
    for (int i = 0; i < kBits[mode]; ++i) {
        bits[static_cast<size_t>(order(mode)[i])] = static_cast<int8_t>(bitOf(octets, i));
    }
    return bits;
}

// x * 2^exponent, rounded.
inline void scale(int16_t* x, int n, int exponent) {
    for (int i = 0; i < n; ++i) {
        using namespace vek::fix;
        x[i] = exponent > 0 ? sat16_64(int64_t{x[i]} << exponent) : round_s(L_shr(L_deposit_h(x[i]), -exponent));
    }
}

// The level of the backward filtered target is that of the sum of four maxima, each of which the recommendation takes
// by 1/4 and 1/8, cut off; the other codec cuts off their sum. True where this makes a difference of one bit.
inline bool levelsDiffer(const int16_t* target, const int16_t* h) {
    int64_t single = 1;
    int64_t most[4] = {};
    for (int i = 0; i < kSub; ++i) {
        int64_t sum = 1;
        for (int k = i; k < kSub; ++k) {
            sum += 2 * target[k] * h[k - i];
        }
        most[i % 4] = std::max(most[i % 4], std::abs(sum));
    }
    for (const int64_t m : most) {
        single += (m >> 2) + (m >> 3);
    }
    const int64_t all = (most[0] + most[1] + most[2] + most[3]) >> 2;
    return vek::fix::norm_64(single) != vek::fix::norm_64(1 + all + (all >> 1));
}

// The factor of such a weak residual is limited; in the other codec's search for two pulses its rounding wraps.
inline bool factorWraps(const int16_t* residual) {
    int64_t energy = 0;
    for (int i = 0; i < kSub; ++i) {
        energy += residual[i] * residual[i];
    }
    return energy <= 1024;
}

// What is left of a target without its adaptive part: TS 26.190 5.8.
inline void without(const int16_t* x, const int16_t* y, int gain, int16_t* out) {
    for (int i = 0; i < kSub; ++i) {
        out[i] = vek::fix::sat16((x[i] * 16384 - y[i] * gain) >> 14);
    }
}

class Coder {
public:
    // How often the voice was active, the vector was taken without its low-pass, the pitch gain was held down, a frame
    // was too loud to be doubled.
    struct Counts {
        int active = 0;
        int plain = 0;
        int clipped = 0;
        int loud = 0;
        // Searches for pulses in which the other codec has a short cut that shows.
        int wrapped = 0;
        int otherLevel = 0;
    };
    Counts counts;

    Coder() {
        int size = 0;
        GOOD(veksHighPassFilterGetSize_AMRWB_16s(&size));
        m_highPass.resize(static_cast<size_t>(size));
        GOOD(veksHighPassFilterInit_AMRWB_16s(m_highPass.data()));
        GOOD(veksVADGetSize_AMRWB_16s(&size));
        m_activity.resize(static_cast<size_t>(size));
        GOOD(veksVADInit_AMRWB_16s(m_activity.data()));
        Init_Decim_12k8(m_decimation.data());
        Init_Hp_wsp(m_wspHighPass);
        Init_gp_clip(m_clip);
    }

    Bits frame(int mode, const int16_t* in) {
        m_bits.clear();
        m_mode = mode;
        input(in);
        spectrum();
        openLoop();
        quantise();
        for (int sub = 0; sub < 4; ++sub) {
            subframe(sub);
        }
        std::copy_n(m_excitation.begin() + kFrame, kPast, m_excitation.begin());
        std::copy_n(m_speech.begin() + kFrame, 128, m_speech.begin());
        return m_bits;
    }

private:
    static constexpr int kPast = 248;
    static constexpr int kAhead = 12; // of the decimated signal, guessed at the end of the window
    static constexpr int kMostScale = 8;
    static constexpr int16_t kTilt = 22282;   // 0.68
    static constexpr int16_t kWeight = 30147; // 0.92
    static constexpr int16_t kSharp = 27853;  // 0.85
    static constexpr int16_t kHeld = 15565;   // 0.95
    static constexpr int kLags = 115;

    int m_mode = 0;
    Bits m_bits;
    Samples m_decimation = Samples(30);
    std::vector<char> m_highPass;
    std::vector<char> m_activity;
    int16_t m_tone = 0;
    int m_scale = 15;
    int m_scales[2] = {15, 15};
    int m_change = 0;
    int16_t m_sample = 0;
    Samples m_speech = Samples(384); // the frame at 64, the new samples at 116
    Samples m_coefficients = Samples(kRow);
    Samples m_isp = {32138, 30274,  27246,  23170,  18205,  12540,  6393,   0,
                     -6393, -12540, -18205, -23170, -27246, -30274, -32138, 1475};
    Samples m_quantisedIsp;
    Samples m_isf = Samples(kOrder);
    Samples m_isfResidual = Samples(kOrder);
    Samples m_lpc = Samples(4 * kRow);
    Samples m_quantisedLpc = Samples(4 * kRow);
    int16_t m_clip[2] = {};
    // Weighted speech, decimated by two, and the same without its low frequencies.
    Samples m_weighted = Samples(kLags + kFrame);
    Samples m_passed = Samples(kLags + kFrame / 2);
    int16_t m_wspHighPass[9] = {};
    int16_t m_wspSample = 0;
    int16_t m_wspBefore[3] = {};
    int m_largest = 0;
    int m_shift = 0;
    int16_t m_median = 40;
    int16_t m_strength = 0;
    int16_t m_near = 0;
    int16_t m_lagsBefore[5] = {40, 40, 40, 40, 40};
    int16_t m_openLags[2] = {};
    int16_t m_bounds[2] = {};
    Samples m_excitation = Samples(kPast + kFrame + 1);
    Samples m_synthesis = Samples(kOrder);
    int16_t m_targetSample = 0;
    int16_t m_codeTilt = 0;
    int16_t m_energies[4] = {-14336, -14336, -14336, -14336};

    int16_t* speech() { return m_speech.data() + 64; }

    void put(int value, int width) {
        for (int b = width - 1; b >= 0; --b) {
            m_bits.push_back(static_cast<int8_t>(value >> b & 1));
        }
    }

    // From 16 kHz to the scaled and emphasised signal, and the decision about its voice: TS 26.190 5.1, TS 26.194.
    void input(const int16_t* in) {
        int16_t wide[kWide];
        for (int i = 0; i < kWide; ++i) {
            wide[i] = static_cast<int16_t>(in[i] & ~3); // 14 bits
        }
        int16_t* const fresh = m_speech.data() + 116;
        Decim_12k8(wide, kWide, fresh, m_decimation.data());
        Samples decimation = m_decimation;
        int16_t silence[15] = {};
        Decim_12k8(silence, 15, fresh + kFrame, decimation.data());
        GOOD(veksHighPassFilter_AMRWB_16s_ISfs(fresh, kFrame, m_highPass.data(), 14));
        std::vector<char> highPass = m_highPass;
        GOOD(veksHighPassFilter_AMRWB_16s_ISfs(fresh + kFrame, kAhead, highPass.data(), 14));
        emphasise(fresh);
        scale(m_speech.data(), 116, m_change);
        scale(m_excitation.data(), kPast, m_change);
        scale(m_synthesis.data(), kOrder, m_change);
        scale(m_wspBefore, 3, m_change);
        scale(&m_wspSample, 1, m_change);
        scale(&m_targetSample, 1, m_change);

        Samples plain(fresh, fresh + kFrame);
        scale(plain.data(), kFrame, 1 - m_scale);
        int16_t active = 0;
        GOOD(veksVAD_AMRWB_16s(plain.data(), m_activity.data(), &m_tone, &active));
        counts.active += active;
        put(active, 1);
    }

    // As many bits as the loudest of this and the last two frames leaves, eight at the most.
    void emphasise(int16_t* fresh) {
        using namespace vek::fix;
        int32_t most = 0;
        int16_t before = m_sample;
        for (int i = 0; i < kFrame + kAhead; ++i) {
            most = std::max(most, L_abs(fresh[i] * 32768 - before * kTilt));
            before = fresh[i];
        }
        const int16_t high = extract_h(most);
        const int room = high == 0 ? kMostScale : std::clamp(norm_s(high) - 1, 0, kMostScale);
        const int now = std::min({room, m_scales[0], m_scales[1]});
        m_change = now - m_scale;
        m_scale = now;
        m_scales[1] = m_scales[0];
        m_scales[0] = room;
        const int16_t last = fresh[kFrame - 1];
        if (now == 0) {
            ++counts.loud;
            before = m_sample;
            for (int i = 0; i < kFrame + kAhead; ++i) {
                const int16_t x = fresh[i];
                fresh[i] = round_s(x * 32768 - before * kTilt);
                before = x;
            }
        } else {
            GOOD(veksPreemphasize_AMRWB_16s_ISfs(kTilt, fresh, kFrame + kAhead, 16 - now, &m_sample));
        }
        m_sample = last;
    }

    // The predictors of the four subframes: TS 26.190 5.2.6.
    static void spread(const Samples& old, const Samples& now, Samples& lpc) {
        constexpr int16_t kShare[3] = {14746, 26214, 31457}; // 0.45, 0.8, 0.96
        int16_t isp[kOrder];
        for (int sub = 0; sub < 3; ++sub) {
            const int16_t share = kShare[sub];
            GOOD(veksInterpolateC_NR_16s(old.data(), static_cast<int16_t>(32768 - share), 1, now.data(), share, 1, isp,
                                         kOrder));
            GOOD(veksISPToLPC_AMRWB_16s(isp, lpc.data() + sub * kRow, kOrder));
        }
        GOOD(veksISPToLPC_AMRWB_16s(now.data(), lpc.data() + 3 * kRow, kOrder));
    }

    void spectrum() {
        using namespace vek::fix;
        constexpr int kWindow = 384;
        int16_t x[kWindow];
        int32_t energy = 16 << 16;
        for (int i = 0; i < kWindow; ++i) {
            x[i] = mult_r(m_speech[static_cast<size_t>(i)], vo_window[i]);
            energy += x[i] * x[i] >> 7;
        }
        const int down = 4 - (norm_l(energy) >> 1);
        for (int i = 0; down > 0 && i < kWindow; ++i) {
            x[i] = shr_r(x[i], down);
        }
        int32_t r[kRow];
        int norm = 0;
        GOOD(veksAutoCorr_NormE_16s32s(x, kWindow, r, kRow, &norm));
        r[0] = r[0] == 0 ? 1 << 30 : r[0] + (1 << (norm - 1));
        int16_t high[kRow];
        int16_t low[kRow];
        for (int i = 0; i < kRow; ++i) {
            L_Extract(r[i], high[i], low[i]);
        }
        voAWB_Lag_window(high, low);
        for (int i = 0; i < kRow; ++i) {
            r[i] = L_Comp(high[i], low[i]);
        }
        int16_t reflections[kOrder];
        int16_t error = 0;
        m_coefficients[0] = 4096;
        DONE(veksLevinsonDurbin_G729_32s16s(r, kOrder, m_coefficients.data(), reflections, &error));
        Samples isp(kOrder);
        DONE(veksLPCToISP_AMRWB_16s(m_coefficients.data(), isp.data(), m_isp.data()));
        spread(m_isp, isp, m_lpc);
        m_isp = isp;
        GOOD(veksISPToISF_Norm_AMRWB_16s(isp.data(), m_isf.data(), kOrder));
        Gp_clip_test_isf(m_isf.data(), m_clip);
    }

    void openLoop() {
        using namespace vek::fix;
        int16_t* const w = m_weighted.data() + kLags;
        for (int sub = 0; sub < 4; ++sub) {
            int16_t a[kRow];
            GOOD(veksMulPowerC_NR_16s_Sfs(m_lpc.data() + sub * kRow, kWeight, a, kRow, 15));
            GOOD(veksResidualFilter_AMRWB_16s_Sfs(a, kOrder, speech() + sub * kSub, w + sub * kSub, kSub, 11));
        }
        GOOD(veksDeemphasize_AMRWB_NR_16s_I(kTilt, w, kFrame, &m_wspSample));
        int largest = 0;
        for (int i = 0; i < kFrame; ++i) {
            largest = std::max<int>(largest, abs_s(w[i]));
        }
        const int shift = std::min(0, norm_s(static_cast<int16_t>(std::max(largest, m_largest))) - 3);
        m_largest = largest;
        halve(w);
        scale(w, kFrame / 2, shift);
        const int change = m_change + shift - m_shift;
        m_shift = shift;
        scale(m_weighted.data(), kLags, change);
        scale(m_passed.data(), kLags, change);
        scale_mem_Hp_wsp(m_wspHighPass, static_cast<int16_t>(change));

        const int parts = m_mode == R660 ? 1 : 2;
        const int n = kFrame / 2 / parts;
        for (int part = 0; part < parts; ++part) {
            int16_t* const passed = m_passed.data() + kLags + part * n;
            Hp_wsp(w + part * n, passed, static_cast<int16_t>(n), m_wspHighPass);
            int16_t gain = 0;
            GOOD(veksOpenLoopPitchSearch_AMRWB_16s(w + part * n, passed, &m_median, &m_strength, &m_openLags[part],
                                                   &m_tone, &gain, m_lagsBefore, &m_near, n));
        }
        std::copy_n(m_weighted.begin() + kFrame / 2, kLags, m_weighted.begin());
        std::copy_n(m_passed.begin() + kFrame / 2, kLags, m_passed.begin());
    }

    // Every second sample of a low-passed frame: TS 26.190 5.4.
    void halve(int16_t* x) {
        constexpr int kTaps[5] = {4260, 7536, 9175, 7536, 4260}; // of 32768
        int16_t all[3 + kFrame];
        std::copy_n(m_wspBefore, 3, all);
        std::copy_n(x, kFrame, all + 3);
        std::copy_n(all + kFrame, 3, m_wspBefore);
        for (int i = 0; i < kFrame / 2; ++i) {
            int sum = 16384;
            for (int k = 0; k < 5; ++k) {
                sum += all[2 * i + k] * kTaps[k];
            }
            x[i] = static_cast<int16_t>(sum >> 15);
        }
    }

    void quantise() {
        constexpr int kWidths[7] = {8, 8, 6, 7, 7, 5, 5};
        constexpr int kLowWidths[5] = {8, 8, 7, 7, 6};
        int16_t index[7] = {};
        Samples isf(kOrder);
        GOOD(veksISFQuant_AMRWB_16s(m_isf.data(), m_isfResidual.data(), isf.data(), index, kRate[m_mode]));
        for (int i = 0; i < (m_mode == R660 ? 5 : 7); ++i) {
            put(index[i], m_mode == R660 ? kLowWidths[i] : kWidths[i]);
        }
        Samples isp(kOrder);
        GOOD(veksISFToISP_AMRWB_16s(isf.data(), isp.data(), kOrder));
        spread(m_quantisedIsp.empty() ? isp : m_quantisedIsp, isp, m_quantisedLpc);
        m_quantisedIsp = isp;
    }

    // Recursion of order 16 whose first coefficient is not that of the predictor.
    static void synthesise(const int16_t* lpc, int first, const int16_t* x, int16_t* y, int n, int16_t* memory) {
        int16_t a[kRow];
        std::copy_n(lpc, kRow, a);
        a[0] = static_cast<int16_t>(first);
        GOOD(veksSynthesisFilter_G729E_16s(a, kOrder, x, y, n, memory));
    }

    struct Vectors {
        int16_t target[kSub];
        int16_t second[kSub];
        int16_t residual[kSub]; // the target before the filters
        int16_t response[kSub];
        int16_t sharpened[kSub];
        int16_t adaptive[kSub]; // filtered
        int16_t code[kSub];
        int16_t filteredCode[kSub];
    };

    // Target and impulse response: TS 26.190 5.5, 5.6. The residual is twice as large, the recursions halve it.
    void start(int sub, Vectors& v) {
        using namespace vek::fix;
        int16_t* const x = speech() + sub * kSub;
        int16_t* const exc = m_excitation.data() + kPast + sub * kSub;
        const int16_t* const a = m_quantisedLpc.data() + sub * kRow;
        int16_t weights[kRow];
        GOOD(veksMulPowerC_NR_16s_Sfs(m_lpc.data() + sub * kRow, kWeight, weights, kRow, 15));
        GOOD(veksResidualFilter_AMRWB_16s_Sfs(a, kOrder, x, exc, kSub, 11));
        int16_t error[kOrder + kSub];
        for (int i = 0; i < kOrder; ++i) {
            error[i] = vek::fix::sub(x[i - kOrder], m_synthesis[static_cast<size_t>(i)]);
        }
        int16_t memory[kOrder];
        std::copy_n(error, kOrder, memory);
        synthesise(a, a[0] / 2, exc, error + kOrder, kSub, memory);
        GOOD(veksResidualFilter_AMRWB_16s_Sfs(weights, kOrder, error + kOrder, v.target, kSub, 11));
        GOOD(veksDeemphasize_AMRWB_NR_16s_I(kTilt, v.target, kSub, &m_targetSample));

        // Its first half brought back through the filters, its second one that of the speech.
        int16_t back[kOrder + kSub / 2] = {};
        int16_t none = 0;
        std::copy_n(v.target, kSub / 2, back + kOrder);
        GOOD(veksPreemphasize_AMRWB_16s_ISfs(kTilt, back + kOrder, kSub / 2, 14, &none));
        std::fill_n(memory, kOrder, int16_t{0});
        synthesise(weights, weights[0] / 2, back + kOrder, back + kOrder, kSub / 2, memory);
        GOOD(veksResidualFilter_AMRWB_16s_Sfs(a, kOrder, back + kOrder, v.residual, kSub / 2, 11));
        std::copy_n(exc + kSub / 2, kSub / 2, v.residual + kSub / 2);

        int16_t impulse[kSub] = {};
        std::copy_n(weights, kRow, impulse);
        std::fill_n(memory, kOrder, int16_t{0});
        synthesise(a, 16384, impulse, v.response, kSub, memory);
        none = 0;
        GOOD(veksDeemphasize_AMRWB_NR_16s_I(kTilt, v.response, kSub, &none));
        std::copy_n(v.response, kSub, v.sharpened);
        scale(v.sharpened, kSub, -2);
        scale(v.target, kSub, m_shift);
        scale(v.response, kSub, 1 + m_shift);
    }

    // The adaptive vector with or without its low-pass, whichever leaves less: TS 26.190 5.7.
    int16_t adaptive(int16_t* exc, int16_t clip, int16_t* coeffs, Vectors& v) {
        const int16_t taps[2] = {5898, 20972};
        const bool choice = m_mode > R885;
        int16_t gains[2] = {};
        int16_t smooth[kSub];
        int16_t vectors[2][kSub];
        int16_t left[2][kSub];
        int16_t correlations[2][4];
        int64_t energies[2] = {};
        GOOD(veksHighPassFilter_Direct_AMRWB_16s(taps, exc, smooth, kSub, 1));
        for (int plain = 0; plain < (choice ? 2 : 1); ++plain) {
            GOOD(veksConvPartial_NR_16s(plain == 1 ? exc : smooth, v.response, vectors[plain], kSub));
            GOOD(veksAdaptiveCodebookGainCoeff_AMRWB_16s(v.target, vectors[plain], correlations[plain], &gains[plain],
                                                         kSub));
            if (clip == 1 && gains[plain] > kHeld) {
                gains[plain] = kHeld;
                ++counts.clipped;
            }
            without(v.target, vectors[plain], gains[plain], left[plain]);
            for (const int e : left[plain]) {
                energies[plain] += e * e;
            }
        }
        const int chosen = choice && energies[1] <= energies[0] ? 1 : 0;
        if (choice) {
            put(chosen, 1);
        }
        counts.plain += chosen;
        if (chosen == 0) {
            std::copy_n(smooth, kSub, exc);
        }
        std::copy_n(vectors[chosen], kSub, v.adaptive);
        std::copy_n(left[chosen], kSub, v.second);
        std::copy_n(correlations[chosen], 4, coeffs);
        return gains[chosen];
    }

    void sharpen(int lag, int16_t* x) const {
        int16_t none = 0;
        GOOD(veksPreemphasize_AMRWB_16s_ISfs(m_codeTilt, x, kSub, 15, &none));
        if (lag < kSub) {
            GOOD(veksHarmonicFilter_NR_16s(kSharp, lag, x + lag, x + lag, kSub - lag));
        }
    }

    // Takes the other codec's pulses where its short cuts show, so that the frames to come can be compared.
    void followShortCuts(Vectors& v, int16_t* index) {
        constexpr int16_t kCodeBits[kRates] = {12, 20, 36, 44, 52, 64, 72, 88, 88};
        const bool wraps = m_mode == R660 && factorWraps(v.residual);
        if (!wraps && !levelsDiffer(v.second, v.sharpened)) {
            return;
        }
        int16_t backward[kSub];
        int16_t code[kSub];
        int16_t filtered[kSub];
        int16_t words[8] = {};
        voAWB_cor_h_x(v.sharpened, v.second, backward);
        if (m_mode == R660) {
            ACELP_2t64_fx(backward, v.residual, v.sharpened, code, filtered, words);
        } else {
            ACELP_4t64_fx(backward, v.residual, v.sharpened, code, filtered, kCodeBits[m_mode],
                          static_cast<int16_t>(kBits[m_mode]), words);
        }
        if (!std::equal(words, words + 8, index)) {
            ++(wraps ? counts.wrapped : counts.otherLevel);
            std::copy_n(words, 8, index);
            std::copy_n(code, kSub, v.code);
            std::copy_n(filtered, kSub, v.filteredCode);
        }
    }

    void putCode(const int16_t* index) {
        for (const int width : codeWidths(m_mode)) {
            put(*index++, width);
        }
    }

    void subframe(int sub) {
        using namespace vek::fix;
        const VekSpchBitRate rate = kRate[m_mode];
        int16_t* const exc = m_excitation.data() + kPast + sub * kSub;
        Vectors v{};
        start(sub, v);

        int16_t lag[2] = {};
        int16_t quarters = 0;
        int16_t index[8] = {};
        GOOD(veksAdaptiveCodebookSearch_AMRWB_16s(v.target, v.response, m_openLags, lag, m_bounds, exc, &quarters,
                                                  index, sub, rate));
        const bool relative = sub % 2 == 1 || (sub == 2 && m_mode == R660);
        put(index[0], (relative ? 5 : 8) + (m_mode > R885 ? 1 : 0));

        const int16_t clip = Gp_clip(m_clip);
        int16_t coeffs[4];
        int16_t pitchGain = adaptive(exc, clip, coeffs, v);
        without(v.residual, exc, pitchGain, v.residual);
        scale(v.residual, kSub, m_shift);

        const int whole = lag[0] + (quarters > 2 ? 1 : 0);
        sharpen(whole, v.sharpened);
        GOOD(veksAlgebraicCodebookSearch_AMRWB_16s(v.second, v.residual, v.sharpened, v.code, v.filteredCode, rate,
                                                   index));
        followShortCuts(v, index);
        putCode(index);
        sharpen(whole, v.code);

        int32_t longGain = 0;
        GOOD(veksGainQuant_AMRWB_16s(v.target, v.adaptive, m_scale + m_shift, v.code, v.filteredCode, coeffs,
                                     m_energies, &pitchGain, &longGain, clip, index, kSub, rate));
        put(index[0], m_mode > R885 ? 7 : 6);
        if (m_mode == R2385) {
            m_bits.insert(m_bits.end(), 4, kOpen);
        }
        Gp_clip_test_gain_pit(pitchGain, m_clip);
        const int16_t gain = round_s(L_shl(longGain, m_scale));

        int16_t scaled[kSub];
        std::copy_n(exc, kSub, scaled);
        scale(scaled, kSub, m_shift);
        const int16_t voicing =
            voAWB_voice_factor(scaled, static_cast<int16_t>(m_shift), pitchGain, v.code, gain, kSub);
        m_codeTilt = static_cast<int16_t>((voicing >> 2) + 8192);

        int32_t rest = L_negate(L_shl(2 * gain * v.filteredCode[kSub - 1], 5 + m_shift));
        rest = L_add(rest, v.target[kSub - 1] * 32768 - 2 * v.adaptive[kSub - 1] * pitchGain);
        m_targetSample = round_s(L_shl(rest, 1 - m_shift));

        GOOD(veksInterpolateC_NR_16s(v.code, gain, 7, exc, pitchGain, 2, exc, kSub));
        int16_t out[kSub];
        const int16_t* const a = m_quantisedLpc.data() + sub * kRow;
        synthesise(a, a[0] / 2, exc, out, kSub, m_synthesis.data());
    }
};

} // namespace amrwb
