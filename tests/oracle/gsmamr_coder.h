// A coder of GSM AMR put together from the library's functions. The quantiser of the gains, which is no function of the
// library, is the other codec's; the high-pass before and the limit of the pitch gain in tones stand here.
// A program includes this only where the header of the other codec's package is found.
#pragma once

#include <algorithm>
#include <array>

#include "good.h"
#include "gsmamr_stream.h"
#include "sc/common/fixmath.h"
#include "veksc.h"

extern "C" {
int16_t gainQuant_init(void** state);
void gainQuant_exit(void** state);
void gainQuant(void* state, int mode, int16_t* residual, int16_t* excitation, int16_t* code, int16_t* target,
               int16_t* second, int16_t* y1, int16_t* y2, int16_t* coeffs, int16_t even, int16_t limit,
               int16_t* formerPitch, int16_t* formerCode, int16_t* pitch, int16_t* codeGain, int16_t** words,
               void* tables, int* overflow);
void get_const_tbls(void* tables);
}

namespace amrcoder {

using namespace amr;
using namespace vek::fix;

constexpr int kOrder = 10;
constexpr int kRow = kOrder + 1;
constexpr int kPast = 154;
constexpr int16_t kMostSharp = 13017;
constexpr int16_t kClipped = 15565; // 0.95

// Tells resonances that lasted for twelve frames, and pitch gains that stay near one: TS 26.090 5.6.
class Tones {
public:
    void frame(const Samples& lsp) {
        int upper = 32767;
        int lower = 32767;
        for (size_t i = 1; i < 8; ++i) {
            int& least = i < 3 ? lower : upper;
            least = std::min<int>(least, lsp[i] - lsp[i + 1]);
        }
        const int narrow = lsp[1] > 32000 ? 600 : lsp[1] > 30500 ? 800 : 1100;
        m_count = upper < 1500 || lower < narrow ? std::min(m_count + 1, 12) : 0;
    }
    bool clips(int16_t gain) const {
        int sum = gain >> 3;
        for (const int16_t g : m_gains) {
            sum += g;
        }
        return m_count == 12 && gain > kClipped && sum > kClipped;
    }
    void enter(int16_t gain) {
        std::copy(m_gains.begin() + 1, m_gains.end(), m_gains.begin());
        m_gains.back() = static_cast<int16_t>(gain >> 3);
    }

private:
    int m_count = 0;
    std::array<int16_t, 7> m_gains{};
};

// What the filters remember from one subframe to the next.
struct Filters {
    Samples synthesis = Samples(kOrder);
    Samples error = Samples(kOrder);
    Samples weighted = Samples(kOrder);
};

struct Gains {
    int16_t pitch;
    int16_t code;
};

// A subframe as the search has it.
struct Subframe {
    int16_t h[kSub];
    int16_t residual[kSub];
    int16_t target[kSub];
    int16_t vector[kSub];
    int16_t y1[kSub];
    int16_t second[kSub];
    int16_t code[kSub];
    int16_t y2[kSub];
    int16_t lagIndex;
    int16_t formerLag;
};

class Coder {
public:
    int limited = 0;

    Coder() {
        gainQuant_init(&m_quantiser);
        get_const_tbls(m_tables);
    }
    ~Coder() { gainQuant_exit(&m_quantiser); }
    Coder(const Coder&) = delete;
    Coder& operator=(const Coder&) = delete;

    Samples frame(int mode, const int16_t* in) {
        std::copy(m_speech.begin() + kFrame, m_speech.end(), m_speech.begin());
        for (int i = 0; i < kFrame; ++i) {
            m_speech[static_cast<size_t>(kFrame + i)] = static_cast<int16_t>(in[i] & ~7);
        }
        m_highPass.apply(m_speech.data() + kFrame, kFrame);
        Samples p(64);
        m_words = p.data();
        spectrum(mode);
        openLoop(mode);
        for (int16_t sub = 0; sub < 4; ++sub) {
            subframe(mode, sub);
        }
        std::copy(m_excitation.begin() + kFrame, m_excitation.end(), m_excitation.begin());
        p.resize(static_cast<size_t>(m_words - p.data()));
        return p;
    }

private:
    // Halves, and takes away what is below 80 Hz: TS 26.090 5.1.
    HighPass m_highPass{{1899, -3798, 1899}, {7807, -3733}, 3, 0};
    Samples m_speech = Samples(320); // the frame at 120
    Samples m_coefficients = {4096, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    Samples m_lsp = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};
    Samples m_quantised = m_lsp;
    Samples m_lsfResidual = Samples(kOrder);
    Samples m_lpc = Samples(4 * kRow);
    Samples m_quantisedLpc = Samples(4 * kRow);
    Samples m_numerators = Samples(4 * kRow);
    Samples m_denominators = Samples(4 * kRow);
    Samples m_weighted = Samples(303);
    Samples m_lags = Samples(5, 40);
    int16_t m_median = 40;
    int16_t m_strength = 0;
    int16_t m_openLags[2] = {};
    int16_t m_openGains[2] = {};
    Samples m_excitation = Samples(kPast + kFrame);
    Filters m_filters;
    Filters m_provisional;
    Subframe m_former = {};
    int16_t m_lag = 0;
    int16_t m_sharp = 0;
    Tones m_tones;
    int16_t* m_words = nullptr;
    void* m_quantiser = nullptr;
    void* m_tables[64] = {};

    const int16_t* speech() const { return m_speech.data() + 120; }

    void predictor(const int32_t* correlations, Samples& lsp, int16_t* lpc) {
        int32_t r[kRow];
        std::copy_n(correlations, kRow, r);
        int16_t reflections[kOrder];
        int16_t error = 0;
        GOOD(veksLagWindow_G729_32s_I(r + 1, kOrder));
        GOOD(veksLevinsonDurbin_G729B(r, m_coefficients.data(), reflections, &error));
        std::copy(m_coefficients.begin(), m_coefficients.end(), lpc);
        GOOD(veksLPCToLSP_GSMAMR_16s(m_coefficients.data(), lsp.data(), lsp.data()));
    }

    // The predictors of the subframes between two or three spectra; those of the spectra themselves if asked for.
    static void spread(const Samples& old, const Samples& middle, const Samples& now, bool all, Samples& lpc) {
        int16_t lsp[kOrder];
        int16_t* const a = lpc.data();
        if (middle.empty()) {
            GOOD(veksInterpolate_GSMAMR_16s(now.data(), old.data(), lsp, kOrder));
            GOOD(veksLSPToLPC_G729_16s(lsp, a));
            GOOD(veksInterpolate_G729_16s(old.data(), now.data(), lsp, kOrder));
            GOOD(veksLSPToLPC_G729_16s(lsp, a + kRow));
            GOOD(veksInterpolate_GSMAMR_16s(old.data(), now.data(), lsp, kOrder));
        } else {
            GOOD(veksInterpolate_G729_16s(old.data(), middle.data(), lsp, kOrder));
            GOOD(veksLSPToLPC_G729_16s(lsp, a));
            if (all) {
                GOOD(veksLSPToLPC_G729_16s(middle.data(), a + kRow));
            }
            GOOD(veksInterpolate_G729_16s(middle.data(), now.data(), lsp, kOrder));
        }
        GOOD(veksLSPToLPC_G729_16s(lsp, a + 2 * kRow));
        if (all) {
            GOOD(veksLSPToLPC_G729_16s(now.data(), a + 3 * kRow));
        }
    }

    void spectrum(int mode) {
        const bool two = mode == R122;
        int32_t r[2 * kRow];
        GOOD(veksAutoCorr_GSMAMR_16s32s(m_speech.data() + (two ? 40 : 80), r, kRate[mode]));
        Samples now = m_lsp;
        Samples middle;
        if (two) {
            predictor(r, now, m_lpc.data() + kRow);
            middle = now;
        }
        predictor(two ? r + kRow : r, now, m_lpc.data() + 3 * kRow);
        spread(m_lsp, middle, now, false, m_lpc);
        Samples both = middle;
        both.insert(both.end(), now.begin(), now.end());
        Samples out(both.size());
        GOOD(veksLSPQuant_GSMAMR_16s(both.data(), m_lsfResidual.data(), out.data(), m_words, kRate[mode]));
        m_words += two ? 5 : 3;
        const Samples outNow(out.end() - kOrder, out.end());
        spread(m_quantised, Samples(out.begin(), out.end() - kOrder), outNow, true, m_quantisedLpc);
        m_lsp = now;
        m_quantised = outNow;
        m_tones.frame(m_lsp);
    }

    void openLoop(int mode) {
        for (int sub = 0; sub < 4; ++sub) {
            const int16_t* const a = m_lpc.data() + sub * kRow;
            const int16_t numerator = mode >= R102 ? 29491 : 30802; // 0.9, 0.94
            GOOD(veksMulPowerC_NR_16s_Sfs(a, numerator, m_numerators.data() + sub * kRow, kRow, 15));
            GOOD(veksMulPowerC_NR_16s_Sfs(a, 19661, m_denominators.data() + sub * kRow, kRow, 15));
        }
        GOOD(veksOpenLoopPitchSearchNonDTX_GSMAMR_16s(m_numerators.data(), m_denominators.data(), speech(), &m_median,
                                                      &m_strength, m_lags.data(), m_weighted.data(), m_openLags,
                                                      m_openGains, kRate[mode]));
    }

    // From the speech to the target, by what the filters remember.
    void start(int sub, const Filters& filters, Subframe& s) {
        GOOD(veksImpulseResponseTarget_GSMAMR_16s(speech() + sub * kSub, m_numerators.data() + sub * kRow,
                                                  m_denominators.data() + sub * kRow,
                                                  m_quantisedLpc.data() + sub * kRow, filters.error.data(),
                                                  filters.weighted.data(), s.h, s.residual, s.target));
    }

    // The excitation with its gains, and what the filters remember of it.
    void finish(int mode, int sub, const Gains& gains, const Subframe& s, Filters& filters) {
        int16_t* const now = m_excitation.data() + kPast + sub * kSub;
        const auto pitch = static_cast<int16_t>(mode == R122 ? gains.pitch >> 1 : gains.pitch);
        GOOD(veksInterpolateC_NR_G729_16s_Sfs(s.vector, pitch, s.code, gains.code, now, kSub, mode == R122 ? 13 : 14));
        int16_t out[kSub];
        GOOD(veksSynthesisFilter_NR_16s_Sfs(m_quantisedLpc.data() + sub * kRow, now, out, kSub, 12,
                                            filters.synthesis.data()));
        for (int i = kSub - kOrder; i < kSub; ++i) {
            const auto at = static_cast<size_t>(i - kSub + kOrder);
            const int adaptive = s.y1[i] * gains.pitch >> 14;
            const int fixed = s.y2[i] * gains.code >> (mode == R122 ? 11 : 13);
            filters.synthesis[at] = out[i];
            filters.error[at] = static_cast<int16_t>(speech()[sub * kSub + i] - out[i]);
            filters.weighted[at] = static_cast<int16_t>(s.target[i] - adaptive - fixed);
        }
    }

    static int16_t quantisedPitch(int16_t gain, int16_t limit, int16_t*& words) {
        int16_t best = 0;
        for (int16_t i = 1; i < 16; ++i) {
            if (qua_gain_pitch[i] <= limit &&
                abs_s(sub(gain, qua_gain_pitch[i])) < abs_s(sub(gain, qua_gain_pitch[best]))) {
                best = i;
            }
        }
        *words++ = best;
        return static_cast<int16_t>(qua_gain_pitch[best] & ~3);
    }

    void subframe(int mode, int16_t sub) {
        const bool pairs = mode == R475;
        const bool even = sub % 2 == 0;
        if (pairs && even) {
            m_provisional = m_filters;
        }
        Filters& filters = pairs ? m_provisional : m_filters;
        int16_t* const row = m_excitation.data() + sub * kSub;
        Subframe s{};
        start(sub, filters, s);
        std::copy_n(s.residual, kSub, row + kPast);
        int16_t fraction = 0;
        s.formerLag = m_lag;
        GOOD(veksAdaptiveCodebookSearch_GSMAMR_16s(s.target, s.h, m_openLags, &m_lag, row, &fraction, &s.lagIndex,
                                                   s.vector, sub, kRate[mode]));
        *m_words++ = s.lagIndex;
        GOOD(veksConvPartial_16s_Sfs(s.vector, s.h, s.y1, kSub, 12));
        int16_t coeffs[6] = {};
        Gains gains{};
        GOOD(veksAdaptiveCodebookGainCoeffs_GSMAMR_16s(s.target, s.y1, &gains.pitch, coeffs));
        const int16_t limit = m_tones.clips(gains.pitch) ? kClipped : int16_t{32767};
        limited += limit == kClipped ? 1 : 0;
        if (mode <= R515) {
            gains.pitch = std::min<int16_t>(gains.pitch, 13926);
        } else {
            gains.pitch = std::min(gains.pitch, limit);
            if (mode == R122) {
                gains.pitch = quantisedPitch(static_cast<int16_t>(gains.pitch & ~3), limit, m_words);
            }
        }
        GOOD(veksAdaptiveCodebookContribution_G729_16s(gains.pitch, s.y1, s.target, s.second));
        int16_t left[kSub];
        GOOD(veksAdaptiveCodebookContribution_G729_16s(gains.pitch, s.vector, s.residual, left));
        if (sub % 3 == 0 && m_openGains[sub / 3] > 0) {
            m_lags[sub == 0 ? 1 : 0] = m_lag;
        }
        int16_t h[kSub];
        std::copy_n(s.h, kSub, h);
        GOOD(veksAlgebraicCodebookSearch_GSMAMR_16s(m_lag, mode == R122 ? gains.pitch : m_sharp, s.second, left, h,
                                                    s.code, s.y2, m_words, sub, kRate[mode]));
        m_words += mode == R122 ? 10 : mode == R102 ? 7 : 2;

        Gains former{};
        int overflow = 0;
        gainQuant(m_quantiser, mode, s.residual, s.vector, s.code, s.target, s.second, s.y1, s.y2, coeffs, even ? 1 : 0,
                  limit, &former.pitch, &former.code, &gains.pitch, &gains.code, &m_words, m_tables, &overflow);
        m_tones.enter(gains.pitch);
        if (pairs && !even) {
            // Both gains are known now: the two subframes once more.
            finish(mode, sub - 1, former, m_former, m_filters);
            start(sub, m_filters, s);
            int16_t lag = s.formerLag;
            int16_t told = 0;
            GOOD(veksAdaptiveCodebookDecode_GSMAMR_16s(s.lagIndex, &lag, &told, row, s.vector, sub, 0, 0, 0,
                                                       kRate[mode]));
            SAME(m_lag, lag);
            GOOD(veksConvPartial_16s_Sfs(s.vector, s.h, s.y1, kSub, 12));
            finish(mode, sub, gains, s, m_filters);
        } else {
            finish(mode, sub, gains, s, filters);
            m_former = s;
        }
        if (!pairs || !even) {
            m_sharp = std::min(gains.pitch, kMostSharp);
        }
    }
};

} // namespace amrcoder
