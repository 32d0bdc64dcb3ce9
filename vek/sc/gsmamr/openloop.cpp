// Open-loop pitch of AMR: weighting of the frame, search of the halves in three ranges or, at 10.2 kbit/s, with
// weighted correlations, and what the two voice activity detectors take from it.
#include <algorithm>
#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/common/lpfilter.h"
#include "sc/common/signal_check.h"
#include "sc/gsmamr/rates.h"
#include "sc/kernels/corr.h"
#include "veksc_filter.h"
#include "veksc_gsmamrdtx.h"

namespace {

using namespace vek::gsmamr;

constexpr int kHalf = kFrame / 2;
constexpr int kRow = kOrder + 1;
constexpr int kPrevious = 5;

// What the searches leave to the detectors.
struct Detectors {
    bool tones = false;
    Vek16s tone = 0;
    Vek16s maxHp = 0;
    Vek32s correlation = 0;
    Vek32s energy = 0;
};

// What 10.2 remembers.
struct Memory {
    Vek16s* median;
    Vek16s* strength;
    Vek16s* lags;
};

// A stretch of weighted speech, scaled to fit, with its correlations to the delayed ones.
class Stretch {
public:
    Stretch(const Vek16s* signal, int length, int shortest) : m_length(length) {
        const CorrKernels& kernels = corrKernels();
        const Vek16s* from = signal - kLongestDelay;
        const int span = kLongestDelay + length;
        const int64_t energy = 2 * kernels.dot16(from, from, span);
        m_down = energy > kMax32 ? 3 : energy < 1048576 ? -3 : 0;
        kernels.shift16(from, m_scaled, span, -m_down);
        // No sum over two parts of the stretch exceeds the energy of the whole.
        m_exact = 2 * kernels.dot16(m_scaled, m_scaled, span) <= kMax32;
        const Vek16s* const now = m_scaled + kLongestDelay;
        if (m_exact &&
            kernels.slide16(now, now - shortest, length, -1, kLongestDelay - shortest + 1, m_sums + shortest)) {
            std::transform(m_sums + shortest, m_sums + kLongestDelay + 1, m_sums + shortest,
                           [](int32_t s) { return 2 * s; });
        } else {
            for (int lag = shortest; lag <= kLongestDelay; ++lag) {
                m_sums[lag] = product(0, lag);
            }
        }
    }

    int length() const { return m_length; }
    int down() const { return m_down; }
    int32_t correlation(int lag) const { return m_sums[lag]; }
    int32_t energyAt(int lag) const { return product(lag, lag); }

    // Doubled sum of the products of the stretch at two delays, saturating at each step.
    int32_t product(int lagA, int lagB) const {
        const Vek16s* a = m_scaled + kLongestDelay - lagA;
        const Vek16s* b = m_scaled + kLongestDelay - lagB;
        if (m_exact) {
            return static_cast<int32_t>(2 * corrKernels().dot16(a, b, m_length));
        }
        int32_t sum = 0;
        for (int i = 0; i < m_length; ++i) {
            sum = L_mac(sum, a[i], b[i]);
        }
        return sum;
    }

private:
    int m_length;
    int m_down;
    bool m_exact;
    alignas(32) Vek16s m_scaled[kLongestDelay + kFrame];
    int32_t m_sums[kLongestDelay + 1];
};

struct Peak {
    int lag;
    int32_t correlation;
    int32_t energy;
};

// A signal whose delayed self comes near to it, 0.65 of its energy, is a tone.
void detectTone(Detectors& detectors, const Peak& peak) {
    constexpr Vek16s kTone = 21298;
    const Vek16s energy = round_s(peak.energy);
    if (detectors.tones && energy > 0 && L_msu(peak.correlation, energy, kTone) > 0) {
        detectors.tone = static_cast<Vek16s>(detectors.tone | 0x4000);
    }
}

// A search more; one over the whole frame counts for two.
void shiftTones(Detectors& detectors, bool wholeFrame) {
    detectors.tone = shr(detectors.tone, 1);
    if (wholeFrame) {
        detectors.tone = static_cast<Vek16s>(shr(detectors.tone, 1) | 0x2000);
    }
}

Peak largest(const Stretch& stretch, int longest, int shortest) {
    Peak peak{longest, kMin32, 0};
    for (int lag = longest; lag >= shortest; --lag) {
        if (stretch.correlation(lag) >= peak.correlation) {
            peak.correlation = stretch.correlation(lag);
            peak.lag = lag;
        }
    }
    peak.energy = stretch.energyAt(peak.lag);
    return peak;
}

// Correlation over the root of the energy; 12.2 takes more bits of it.
Vek16s normalised(const Stretch& stretch, const Peak& peak, bool fine) {
    Vek32s root = peak.energy;
    veksInvSqrt_32s_I(&root, 1);
    root = fine ? L_shl(root, 1) : root;
    const int32_t ratio = Mpy_32(peak.correlation, root);
    return fine ? extract_h(L_shl(L_shr(ratio, stretch.down()), 15)) : extract_l(ratio);
}

// The largest second difference of the correlations over that at no delay, Q15.
Vek16s highPassed(const Stretch& stretch, int shortest) {
    int32_t max = kMin32;
    for (int lag = kLongestDelay - 1; lag > shortest; --lag) {
        const int32_t bend = L_sub(L_sub(L_shl(stretch.correlation(lag), 1), stretch.correlation(lag + 1)),
                                   stretch.correlation(lag - 1));
        max = std::max(max, L_abs(bend));
    }
    const int32_t zero = L_abs(L_sub(L_shl(stretch.product(0, 0), 1), L_shl(stretch.product(0, 1), 1)));
    const int shiftMax = norm_l(max) - 1;
    const int shiftZero = norm_l(zero);
    const Vek16s num = extract_h(L_shl(max, shiftMax));
    const Vek16s den = extract_h(L_shl(zero, shiftZero));
    return den == 0 ? Vek16s{0} : shr(div_s(num, den), shiftMax - shiftZero);
}

int searchRanges(const Stretch& stretch, int shortest, bool fine, Detectors& detectors) {
    constexpr Vek16s kFavour = 27853; // 0.85
    Peak best{};
    Vek16s bestValue = 0;
    int longest = kLongestDelay;
    for (int lowest = 4 * shortest; lowest >= shortest; lowest /= 2) {
        const Peak peak = largest(stretch, longest, lowest);
        detectTone(detectors, peak);
        const Vek16s value = normalised(stretch, peak, fine);
        if (longest == kLongestDelay || mult(bestValue, kFavour) < value) {
            best = peak;
            bestValue = value;
        }
        longest = lowest - 1;
    }
    detectors.correlation = L_add(detectors.correlation, best.correlation);
    detectors.energy = L_add(detectors.energy, best.energy);
    return best.lag;
}

// The one of five that two others at most are below, and two at most above.
Vek16s median(const Vek16s* lags) {
    for (int i = 0; i < kPrevious - 1; ++i) {
        const auto below = std::count_if(lags, lags + kPrevious, [&](Vek16s v) { return v < lags[i]; });
        const auto above = std::count_if(lags, lags + kPrevious, [&](Vek16s v) { return v > lags[i]; });
        if (below <= kPrevious / 2 && above <= kPrevious / 2) {
            return lags[i];
        }
    }
    return lags[kPrevious - 1];
}

int searchWeighted(const Stretch& stretch, const Memory& memory, Vek16s* gain, Detectors& detectors) {
    constexpr Vek16s kFade = 29491;   // 0.9
    constexpr Vek16s kWeak = 9830;    // 0.3
    constexpr Vek16s kVoiced = 13107; // 0.4
    const bool near = *memory.strength >= kWeak;
    const int centre = std::clamp<int>(*memory.median, kShortestDelay, kLongestDelay);
    const Vek16s* lagWeight = kDelayWeight + 250 - kLongestDelay;
    const Vek16s* nearWeight = kDelayWeight + 123 - centre;
    int best = kLongestDelay;
    int32_t max = kMin32;
    for (int lag = kLongestDelay; lag >= kShortestDelay; --lag) {
        int32_t value = Mpy_32_16(stretch.correlation(lag), lagWeight[lag]);
        if (near) {
            value = Mpy_32_16(value, nearWeight[lag]);
        }
        if (value >= max) {
            max = value;
            best = lag;
        }
    }
    const Peak peak{best, stretch.correlation(best), stretch.energyAt(best)};
    detectTone(detectors, peak);
    *gain = round_s(L_msu(peak.correlation, round_s(peak.energy), kVoiced));
    if (*gain > 0) {
        std::memmove(memory.lags + 1, memory.lags, (kPrevious - 1) * sizeof(Vek16s));
        memory.lags[0] = static_cast<Vek16s>(best);
        *memory.median = median(memory.lags);
        *memory.strength = 32767;
    } else {
        *memory.median = static_cast<Vek16s>(best);
        *memory.strength = mult(*memory.strength, kFade);
    }
    detectors.correlation = L_add(detectors.correlation, peak.correlation);
    detectors.energy = L_add(detectors.energy, peak.energy);
    return best;
}

void weightFrame(const Vek16s* numerators, const Vek16s* denominators, const Vek16s* speech, Vek16s* weighted) {
    for (int at = 0, row = 0; at < kFrame; at += kSubframe, row += kRow) {
        Vek16s* y = weighted + at;
        residualFilter(numerators + row, kOrder, speech + at, y, kSubframe, 12);
        synthesisFilter(denominators + row, kOrder, y, y, kSubframe, 12, y - kOrder);
    }
}

struct Frame {
    const Vek16s* numerators;
    const Vek16s* denominators;
    const Vek16s* speech;
    Vek16s* weighted;
    Vek16s* lags;
    Vek16s* gains;
};

void search(const Frame& frame, Rate rate, const Memory& memory, Detectors& detectors) {
    const bool whole = rate == Rate::R475 || rate == Rate::R515;
    const int shortest = rate == Rate::R1220 ? 18 : kShortestDelay;
    Vek16s* now = frame.weighted + kLongestDelay;
    weightFrame(frame.numerators, frame.denominators, frame.speech, now);
    for (int half = whole ? 1 : 0; half < 2; ++half) {
        const Stretch stretch(whole ? now : now + half * kHalf, whole ? kFrame : kHalf, shortest);
        shiftTones(detectors, whole);
        frame.gains[half] = 0;
        const int lag = rate == Rate::R1020 ? searchWeighted(stretch, memory, frame.gains + half, detectors)
                                            : searchRanges(stretch, shortest, rate == Rate::R1220, detectors);
        frame.lags[half] = static_cast<Vek16s>(lag);
        if (half == 1 && detectors.tones) {
            detectors.maxHp = highPassed(stretch, shortest);
        }
    }
    if (whole) {
        frame.gains[0] = 0;
        frame.lags[0] = frame.lags[1];
    }
    std::memmove(frame.weighted, frame.weighted + kFrame, kLongestDelay * sizeof(Vek16s));
}

VekStatus checked(const Frame& frame, const Memory& memory, VekSpchBitRate mode) {
    if (anyNull(frame.numerators, frame.denominators, frame.speech, frame.weighted, frame.lags, frame.gains,
                memory.median, memory.strength, memory.lags)) {
        return vekStsNullPtrErr;
    }
    const Rate rate = rateOf(mode);
    return rate == Rate::None || rate == Rate::Dtx ? vekStsBitRateErr : vekStsNoErr;
}

VekStatus searchChecked(const Frame& frame, const Memory& memory, VekSpchBitRate mode, Detectors& detectors) {
    const VekStatus status = checked(frame, memory, mode);
    if (status == vekStsNoErr) {
        search(frame, rateOf(mode), memory, detectors);
    }
    return status;
}

} // namespace

VekStatus veksOpenLoopPitchSearchNonDTX_GSMAMR_16s(const Vek16s* pSrcWgtLpc1, const Vek16s* pSrcWgtLpc2,
                                                   const Vek16s* pSrcSpch, Vek16s* pValResultPrevMidPitchLag,
                                                   Vek16s* pValResultVvalue, Vek16s* pSrcDstPrevPitchLag,
                                                   Vek16s* pSrcDstPrevWgtSpch, Vek16s* pDstOpenLoopLag,
                                                   Vek16s* pDstOpenLoopGain, VekSpchBitRate mode) {
    const Frame frame{pSrcWgtLpc1, pSrcWgtLpc2, pSrcSpch, pSrcDstPrevWgtSpch, pDstOpenLoopLag, pDstOpenLoopGain};
    const Memory memory{pValResultPrevMidPitchLag, pValResultVvalue, pSrcDstPrevPitchLag};
    Detectors detectors;
    return searchChecked(frame, memory, mode, detectors);
}

VekStatus veksOpenLoopPitchSearchDTXVAD1_GSMAMR_16s(const Vek16s* pSrcWgtLpc1, const Vek16s* pSrcWgtLpc2,
                                                    const Vek16s* pSrcSpch, Vek16s* pValResultToneFlag,
                                                    Vek16s* pValResultPrevMidPitchLag, Vek16s* pValResultVvalue,
                                                    Vek16s* pSrcDstPrevPitchLag, Vek16s* pSrcDstPrevWgtSpch,
                                                    Vek16s* pResultMaxHpCorr, Vek16s* pDstOpenLoopLag,
                                                    Vek16s* pDstOpenLoopGain, VekSpchBitRate mode) {
    const Frame frame{pSrcWgtLpc1, pSrcWgtLpc2, pSrcSpch, pSrcDstPrevWgtSpch, pDstOpenLoopLag, pDstOpenLoopGain};
    const Memory memory{pValResultPrevMidPitchLag, pValResultVvalue, pSrcDstPrevPitchLag};
    if (anyNull(pValResultToneFlag, pResultMaxHpCorr)) {
        return vekStsNullPtrErr;
    }
    Detectors detectors;
    detectors.tones = true;
    detectors.tone = *pValResultToneFlag;
    if (const VekStatus status = searchChecked(frame, memory, mode, detectors); status != vekStsNoErr) {
        return status;
    }
    *pValResultToneFlag = detectors.tone;
    *pResultMaxHpCorr = detectors.maxHp;
    return vekStsNoErr;
}

VekStatus veksOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s(const Vek16s* pSrcWgtLpc1, const Vek16s* pSrcWgtLpc2,
                                                       const Vek16s* pSrcSpch, Vek16s* pValResultPrevMidPitchLag,
                                                       Vek16s* pValResultVvalue, Vek16s* pSrcDstPrevPitchLag,
                                                       Vek16s* pSrcDstPrevWgtSpch, Vek32s* pResultMaxCorr,
                                                       Vek32s* pResultWgtEnergy, Vek16s* pDstOpenLoopLag,
                                                       Vek16s* pDstOpenLoopGain, VekSpchBitRate mode) {
    const Frame frame{pSrcWgtLpc1, pSrcWgtLpc2, pSrcSpch, pSrcDstPrevWgtSpch, pDstOpenLoopLag, pDstOpenLoopGain};
    const Memory memory{pValResultPrevMidPitchLag, pValResultVvalue, pSrcDstPrevPitchLag};
    if (anyNull(pResultMaxCorr, pResultWgtEnergy)) {
        return vekStsNullPtrErr;
    }
    Detectors detectors;
    if (const VekStatus status = searchChecked(frame, memory, mode, detectors); status != vekStsNoErr) {
        return status;
    }
    *pResultMaxCorr = detectors.correlation;
    *pResultWgtEnergy = detectors.energy;
    return vekStsNoErr;
}
