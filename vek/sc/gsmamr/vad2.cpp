// Voice activity of AMR, option 2: energies of sixteen channels by a transform of each half of the frame, the noise
// beneath them, a sum of metrics of their ratios, and a hangover by the peak ratio.
#include <algorithm>
#include <cstring>

#include "sc/common/logarithm.h"
#include "sc/common/signal_check.h"
#include "sc/gsmamr/rates.h"
#include "sc/kernels/filter.h"
#include "veksc_gsmamrdtx.h"
#include "veksc_signal.h"

static_assert(sizeof(VeksVAD2State_GSMAMR) == 188);

namespace {

using namespace vek::gsmamr;

using State = VeksVAD2State_GSMAMR;

constexpr int kHalf = kFrame / 2;
constexpr int kDelay = 24;
constexpr int kTransform = 128;
constexpr int kChannels = 16;
constexpr int kHeadroom = 2;
constexpr int kFormat[2] = {9, 4};
constexpr int kToOther = kFormat[0] - kFormat[1];
constexpr int32_t kLeastEnergy[2] = {32, 1};
constexpr int32_t kStartNoise[2] = {8192, 256};
constexpr int32_t kNoiseFloor[2] = {512, 16};

struct Spectrum {
    int32_t total;
    bool peaked;
    Vek16s db[kChannels];
    Vek16s ratio[kChannels];
    Vek16s metric;
};

// First line of each channel; a channel ends before the next one's.
constexpr int kFirstLine[kChannels + 1] = {2, 4, 6, 8, 10, 12, 14, 17, 20, 23, 27, 31, 36, 42, 49, 56, 64};
// One over the number of lines, Q15.
constexpr Vek16s kShare[kChannels] = {16384, 16384, 16384, 16384, 16384, 16384, 10923, 10923,
                                      10923, 8192,  8192,  6554,  5461,  4681,  4681,  4096};

// Ten times the decimal logarithm, Q8, of a number with `format` bits behind the point.
Vek16s decibel(int32_t v, int format) {
    Vek16s whole = 0;
    Vek16s fraction = 0;
    Log2(v, whole, fraction);
    whole = sub(whole, static_cast<Vek16s>(format));
    return extract_l(L_shr_r(Mpy_32_16(whole, fraction, 24660), 6));
}

// The half frame with its largest element brought just below the headroom, pre-emphasised, between zeros; doubled,
// since the transform divides by twice of what the formats of the energies count on.
int prepare(State& s, const Vek16s* speech, Vek16s* x) {
    constexpr Vek16s kEmphasis = -26214; // -0.8
    const int top = filterKernels().maxAbs16(speech, kHalf);
    const int shift = (top == 0 ? 15 : norm_s(sat16(top))) - kHeadroom;
    s.preEmphasis = shr_r(s.preEmphasis, s.lastShift - shift);
    s.lastShift = static_cast<Vek16s>(shift);
    std::fill(x, x + kDelay, Vek16s{0});
    std::fill(x + kDelay + kHalf, x + kTransform, Vek16s{0});
    Vek16s before = s.preEmphasis;
    for (int i = 0; i < kHalf; ++i) {
        const Vek16s now = shl(speech[i], shift);
        x[kDelay + i] = shl(add(now, mult(kEmphasis, before)), 1);
        before = now;
    }
    s.preEmphasis = before;
    return shift;
}

// Loud frames count in a coarser format; its change is late on purpose.
void chooseFormat(State& s, int shift) {
    const bool change = s.loud == 0 ? shift <= 2 - kHeadroom : shift >= 5 - kHeadroom;
    if (!change) {
        return;
    }
    s.loud = s.loud == 0 ? Vek16s{1} : Vek16s{0};
    for (int32_t& v : s.energy) {
        v = L_shr(v, s.loud == 1 ? kToOther : -kToOther);
    }
}

void channelEnergies(State& s, const Vek16s* lines, int shift) {
    const bool first = s.frameCount == 1;
    const Vek16s fresh = first ? Vek16s{32767} : Vek16s{18022};
    const Vek16s kept = first ? Vek16s{0} : Vek16s{14746};
    for (int c = 0; c < kChannels; ++c) {
        int32_t sum = 0;
        for (int i = 2 * kFirstLine[c]; i < 2 * kFirstLine[c + 1]; ++i) {
            sum = L_mac(sum, lines[i], lines[i]);
        }
        sum = L_shr_r(sum, 2 * shift - (kFormat[s.loud] + 1));
        const int32_t energy = L_add(Mpy_32_16(sum, mult(fresh, kShare[c])), Mpy_32_16(s.energy[c], kept));
        s.energy[c] = std::max(energy, kLeastEnergy[s.loud]);
    }
}

// Energy in the format of the noise.
int32_t inNoiseFormat(const State& s, int channel) {
    return s.loud == 1 ? L_shr(s.energy[channel], -kToOther) : s.energy[channel];
}

void startNoise(State& s, bool peaked) {
    for (int c = 0; c < kChannels; ++c) {
        const bool fixed = peaked || s.energy[c] < kStartNoise[s.loud];
        s.noise[c] = fixed ? kStartNoise[0] : inNoiseFormat(s, c);
    }
}

void measure(State& s, Spectrum& m) {
    m.total = 0;
    int32_t peak = 0;
    for (int c = 0; c < kChannels; ++c) {
        m.total = L_add(m.total, s.energy[c]);
        peak = c < 2 ? 0 : std::max(peak, s.energy[c]); // sines of low frequency do not count
    }
    m.peaked = peak > Mpy_32_16(m.total, 20480); // 10 dB above the mean of the channels
    if (s.frameCount <= 4) {
        startNoise(s, m.peaked);
    }
    m.metric = 0;
    for (int c = 0; c < kChannels; ++c) {
        m.db[c] = decibel(s.energy[c], kFormat[s.loud]);
        m.ratio[c] = sub(m.db[c], decibel(s.noise[c], kFormat[0]));
        const int step = shr_r(mult(21845, m.ratio[c]), 6); // of 3/8 dB
        m.metric = add(m.metric, kVoiceMetric[std::clamp(step, 0, 89)]);
    }
}

// Ratio of this half, dB in Q8; smooths the peak ratio.
Vek16s trackRatio(State& s, const Spectrum& m) {
    if (s.frameCount <= 4 || s.forcedUpdate != 0) {
        constexpr Vek16s kNominal = 14320; // of speech, 55.9 dB
        s.negativeVariance = 0;
        s.negativeBias = 0;
        int32_t noise = 0;
        for (const int32_t v : s.noise) {
            noise = L_add(noise, v);
        }
        s.peakRatio = sub(kNominal, decibel(noise, kFormat[0]));
        return s.peakRatio;
    }
    int32_t sum = 0;
    for (int c = 0; c < kChannels; ++c) {
        Vek16s whole = 0;
        Vek16s fraction = 0;
        L_Extract(L_shr(L_mult(m.ratio[c], 10885), 8), whole, fraction);
        // Three bits more for ratios below 1.
        sum = L_add(sum, Pow2(add(whole, 3), fraction));
    }
    const Vek16s now = decibel(sum, 4 + 3);
    if (now > s.peakRatio) {
        s.peakRatio = round_s(L_add(L_mult(29491, s.peakRatio), L_mult(3277, now)));
    } else if (now > mult(20480, s.peakRatio)) {
        s.peakRatio = round_s(L_add(L_mult(32702, s.peakRatio), L_mult(66, now)));
    }
    return now;
}

// A signal often below the noise makes the decision less sensitive.
void trackNegative(State& s, Vek16s now) {
    if (now >= 0) {
        return;
    }
    const Vek16s square = round_s(L_shl(L_mult(now, now), 7));
    const Vek16s variance = round_s(L_add(L_mult(32440, s.negativeVariance), L_mult(328, square)));
    s.negativeVariance = std::min(variance, Vek16s{1024});
    const Vek16s bias = mult_r(shl(sub(s.negativeVariance, 166), 4), 24576);
    s.negativeBias = bias < 0 ? Vek16s{0} : shr(bias, 8);
}

bool decide(State& s, const Spectrum& m) {
    const int step = std::clamp<int>(shr(mult(s.peakRatio, 10923), 8), 0, 19); // of 3 dB
    if (m.metric > add(kVoiceThreshold[step], s.negativeBias)) {
        s.burstCount = add(s.burstCount, 1);
        if (s.burstCount > kBurst[step]) {
            s.hangover = kHangover[step];
        }
        return true;
    }
    s.burstCount = 0;
    s.hangover = sub(s.hangover, 1);
    if (s.hangover <= 0) {
        s.hangover = 0;
        return false;
    }
    return true;
}

// Distance of the spectrum from its long-term mean, and the mean taken on: slower where the ratio is near its peak.
Vek16s deviation(State& s, const Spectrum& m, Vek16s now) {
    constexpr Vek16s kHigh = 29491;
    constexpr Vek16s kLow = 22938;
    Vek16s sum = 0;
    if (s.frameCount == 1) {
        std::copy(m.db, m.db + kChannels, s.longTermDb);
    } else {
        for (int c = 0; c < kChannels; ++c) {
            sum = add(sum, abs_s(sub(s.longTermDb[c], m.db[c])));
        }
    }
    const Vek16s below = sub(s.peakRatio, now);
    Vek16s kept = kHigh;
    Vek16s fresh = 32767 - kHigh + 1;
    if (below > 0 && s.peakRatio > 0) {
        if (below > s.peakRatio) {
            kept = kLow;
            fresh = 32767 - kLow + 1;
        } else {
            kept = sub(kHigh, mult(kHigh - kLow, div_s(below, s.peakRatio)));
            fresh = sub(32767, kept);
        }
    }
    for (int c = 0; c < kChannels; ++c) {
        s.longTermDb[c] = round_s(L_add(L_mult(fresh, m.db[c]), L_mult(kept, s.longTermDb[c])));
    }
    return sum;
}

// Whether the noise is to be updated: in noise, or by force when a steady sound has lasted.
bool updateDue(State& s, const Spectrum& m, Vek16s deviated, bool longTerm) {
    constexpr Vek16s kNoiseMetric = 35;
    constexpr Vek16s kSteady = 7168;
    constexpr Vek16s kFrames = 50;
    constexpr Vek16s kIdle = 6;
    bool due = false;
    s.forcedUpdate = 0;
    if (m.metric <= kNoiseMetric) {
        if (s.burstCount == 0) {
            due = true;
            s.updateCount = 0;
        }
    } else if (m.total > kNoiseFloor[s.loud] && deviated < kSteady && !m.peaked && !longTerm) {
        s.updateCount = add(s.updateCount, 1);
        if (s.updateCount >= kFrames) {
            due = true;
            s.forcedUpdate = 1;
        }
    }
    s.hysteresisCount = s.updateCount == s.lastUpdateCount ? add(s.hysteresisCount, 1) : Vek16s{0};
    s.lastUpdateCount = s.updateCount;
    if (s.hysteresisCount > kIdle) {
        s.updateCount = 0;
    }
    return due;
}

bool halfFrame(State& s, const Vek16s* speech, bool longTerm) {
    s.frameCount = L_add(s.frameCount, 1);
    alignas(32) Vek16s x[kTransform];
    const int shift = prepare(s, speech, x);
    veksFFTFwd_RToPerm_GSMAMR_16s_I(x);
    chooseFormat(s, shift);
    channelEnergies(s, x, shift);
    Spectrum m;
    measure(s, m);
    const Vek16s now = trackRatio(s, m);
    trackNegative(s, now);
    const bool active = decide(s, m);
    const Vek16s deviated = deviation(s, m, now);
    if (updateDue(s, m, deviated, longTerm)) {
        for (int c = 0; c < kChannels; ++c) {
            const int32_t next = L_add(Mpy_32_16(s.noise[c], 29491), Mpy_32_16(inNoiseFormat(s, c), 3277));
            s.noise[c] = std::max(next, kLeastEnergy[0]);
        }
    }
    return active;
}

} // namespace

VekStatus veksVAD2_GSMAMR_16s(const Vek16s* pSrcSpch, VeksVAD2State_GSMAMR* pSrcDstVad2State, Vek16s* pResultVadFlag,
                              Vek16s ltpFlag) {
    if (anyNull(pSrcSpch, pResultVadFlag, pSrcDstVad2State)) {
        return vekStsNullPtrErr;
    }
    State& s = *pSrcDstVad2State;
    if (s.loud < 0 || s.loud > 1 || s.frameCount < 0 || s.hangover < 0 || s.burstCount < 0) {
        return vekStsStateErr;
    }
    const bool first = halfFrame(s, pSrcSpch, ltpFlag != 0);
    const bool second = halfFrame(s, pSrcSpch + kHalf, ltpFlag != 0);
    *pResultVadFlag = first || second ? 1 : 0;
    return vekStsNoErr;
}
