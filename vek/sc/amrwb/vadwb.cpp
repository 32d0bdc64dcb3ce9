// Voice activity of AMR-WB: levels of twelve bands from a tree of all-pass filters, the noise beneath them, the level
// of speech, and a decision with hangover.
#include <algorithm>
#include <cstring>

#include "sc/amrwb/rates.h"
#include "sc/common/bandvad.h"
#include "sc/common/fixmath.h"
#include "sc/common/markedstate.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/corr.h"
#include "veksc_amrwbflt.h"

namespace {

using namespace vek::bandvad;

using amrwb::kFrame;
constexpr int kBands = 12;
constexpr Vek16s kMostNoise = 20000;
constexpr Vek16s kNominalLevel = 2050; // about -26 dBov
constexpr int kReady = 0x57425644;

struct State {
    int ready;
    Vek32s lastPower;
    Vek16s noise[kBands];
    Vek16s average[kBands];  // levels smoothed for the measure of stationarity
    Vek16s oldLevel[kBands]; // levels of the last frame
    Vek16s subLevel[kBands]; // levels over the end of a frame
    Vek16s filter5[5][2];    // filter bank
    Vek16s filter3[6];
    Vek16s burst;
    Vek16s hang;
    Vek16s stationary;
    Vek16s flags; // of the intermediate decisions, the newest in bit 14
    Vek16s speechFrames;
    Vek16s speechMax;
    Vek16s speechActive;
    Vek16s speechLevel;
};

void filterBank(State& s, const Vek16s* in, Vek16s* levels) {
    Vek16s x[kFrame];
    for (int i = 0; i < kFrame; ++i) {
        x[i] = static_cast<Vek16s>(in[i] >> 1);
    }
    splitBand5<kFrame>(x, 1, s.filter5[0]);
    splitBand5<kFrame>(x, 2, s.filter5[1]);
    splitBand5<kFrame - 1>(x + 1, 2, s.filter5[2]);
    splitBand5<kFrame>(x, 4, s.filter5[3]);
    splitBand5<kFrame - 2>(x + 2, 4, s.filter5[4]);
    splitBand3<kFrame - 3>(x + 3, 4, s.filter3[0]);
    splitBand3<kFrame>(x, 8, s.filter3[1]);
    splitBand3<kFrame - 4>(x + 4, 8, s.filter3[2]);
    splitBand3<kFrame - 6>(x + 6, 8, s.filter3[3]);
    splitBand3<kFrame>(x, 16, s.filter3[4]);
    splitBand3<kFrame - 8>(x + 8, 16, s.filter3[5]);
    static constexpr Band bands[kBands] = {{6, 32, 0, 17},   {6, 32, 16, 17}, {6, 32, 24, 17}, {6, 32, 8, 17},
                                           {12, 16, 12, 16}, {12, 16, 4, 16}, {12, 16, 6, 16}, {12, 16, 14, 16},
                                           {24, 8, 2, 15},   {24, 8, 3, 15},  {24, 8, 7, 15},  {48, 4, 1, 14}};
    levelsOf<kFrame>(x, bands, s.subLevel, levels);
}

// A falling logarithm to the base 2, 1024 a factor of two: 31743 for 1.
Vek16s fallingLog(Vek16s v) {
    Vek16s m = v <= 0 ? Vek16s{1} : v;
    const int first = norm_s(m);
    m = shl(m, first);
    for (int i = 0; i < 3; ++i) {
        m = mult(m, m);
    }
    const int32_t square = L_mult(m, m);
    const int second = norm_l(square);
    m = extract_h(L_shl(square, second));
    return static_cast<Vek16s>((first + 16) * 1024 + second * 64 + 127 - (m >> 8));
}

void updateNoise(State& s, const Vek16s (&levels)[kBands], Vek16s toneFlag) {
    constexpr Vek16s kRestless = 1000;
    const bool restless =
        (toneFlag & 0x7c00) == 0x7c00 || (s.flags & 0x7f80) == 0 || unrest(levels, s.average) > kRestless;
    countStationary(levels, restless, (s.flags & 0x4000) != 0, s.stationary, s.average);
    followNoise(levels, paceOf((s.flags & 0x7800) == 0, s.stationary == 0), kMostNoise, s.oldLevel, s.noise);
}

// A sixteenth of the sum of the upper eleven bands' values.
Vek16s meanLevel(const Vek16s* bands) {
    int32_t sum = 0;
    for (int i = 1; i < kBands; ++i) {
        sum += bands[i];
    }
    return extract_h(L_shl(sum, 12));
}

// Sum over the bands of the squared ratio of level to noise.
int32_t ratio(const Vek16s* levels, const Vek16s* noise) {
    int32_t sum = 0;
    for (int i = 0; i < kBands; ++i) {
        const int norm = norm_s(noise[i]);
        const Vek16s q = shl(div_s(shr(levels[i], 1), shl(noise[i], norm)), norm - 6);
        sum = L_mac(sum, q, q);
    }
    return sum;
}

// The threshold falls with the noise and with the level of speech.
Vek16s thresholdOf(const State& s, Vek16s noise, Vek16s corrupted) {
    constexpr int kScale = 128;
    constexpr Vek16s kHighest = 6 * kScale;
    constexpr Vek16s kNoiseAtHighest = 31744;
    constexpr Vek16s kNoiseSlope = static_cast<Vek16s>(32767.0F * (217 - kHighest) / (19786 - kNoiseAtHighest));
    constexpr Vek16s kSpeechShare = 96; // either way
    constexpr Vek16s kSpeechAtLeast = 22527;
    constexpr Vek16s kSpeechSlope = static_cast<Vek16s>(32767.0F * (2 * kSpeechShare) / (17832 - kSpeechAtLeast));
    constexpr Vek16s kLowest = 204;
    const Vek16s byNoise = add(mult(kNoiseSlope, sub(fallingLog(noise), kNoiseAtHighest)), kHighest);
    const Vek16s speech = fallingLog(sub(s.speechLevel, corrupted));
    const Vek16s bySpeech = add(static_cast<Vek16s>(-kSpeechShare), mult(kSpeechSlope, sub(speech, kSpeechAtLeast)));
    const Vek16s limited = std::clamp(bySpeech, static_cast<Vek16s>(-kSpeechShare), kSpeechShare);
    return std::max(add(byNoise, limited), kLowest);
}

bool decide(State& s, const Vek16s (&levels)[kBands], int32_t power, Vek16s toneFlag) {
    constexpr int32_t kQuiet = 30000;
    constexpr Vek16s kHangSlope = static_cast<Vek16s>(32767.0F * (2 - 12) / (512 - 217));
    constexpr Vek16s kBurstSlope = static_cast<Vek16s>(32767.0F * (3 - 8) / (217 - 768));
    const int32_t sum = ratio(levels, s.noise);
    const Vek16s noise = meanLevel(s.noise);
    // Speech is no softer than the noise.
    const Vek16s floor = shl(mult(noise, 4096), 3);
    s.speechLevel = std::max(s.speechLevel, floor);
    const Vek16s threshold = thresholdOf(s, noise, floor);
    s.flags = shr(s.flags, 1);
    if (sum > L_mult(threshold, 512 * kBands)) {
        s.flags = static_cast<Vek16s>(s.flags | 0x4000);
    }
    updateNoise(s, levels, toneFlag);
    const Vek16s hang = add(mult(kHangSlope, sub(threshold, 217)), 12);
    const Vek16s burst = add(mult(kBurstSlope, sub(threshold, 768)), 8);
    if (power < kQuiet) {
        s.burst = 0;
        s.hang = 0;
        return false;
    }
    return withHangover((s.flags & 0x4000) != 0, burst, std::max(hang, Vek16s{2}), s.burst, s.hang);
}

void followSpeech(State& s, Vek16s in) {
    constexpr int kFrames = 80;
    constexpr int kActiveFrames = 25;
    constexpr Vek16s kLeast = 129;       // 24 dB below the nominal level
    constexpr Vek16s kLeastSpeech = 410; // 14 dB below
    constexpr Vek16s kSpeed = 4915;      // 0.15
    const auto startAgain = [&s] {
        s.speechFrames = 0;
        s.speechMax = 0;
        s.speechActive = 0;
    };
    if (s.speechFrames - s.speechActive > kFrames - kActiveFrames) {
        startAgain();
    }
    s.speechFrames = add(s.speechFrames, 1);
    if (((s.flags & 0x4000) == 0 && in <= s.speechLevel) || in <= kLeast) {
        return;
    }
    s.speechMax = std::max(s.speechMax, in);
    s.speechActive = add(s.speechActive, 1);
    if (s.speechActive < kActiveFrames) {
        return;
    }
    const Vek16s mean = shr(s.speechMax, 1);
    if (mean > kLeastSpeech) {
        s.speechLevel = add(s.speechLevel, mult_r(kSpeed, sub(mean, s.speechLevel)));
    }
    startAgain();
}

} // namespace

VekStatus veksVADGetSize_AMRWB_16s(int* pSize) {
    return stateSize<State>(pSize);
}

VekStatus veksVADInit_AMRWB_16s(char* pState) {
    if (anyNull(pState)) {
        return vekStsNullPtrErr;
    }
    State s = {};
    s.ready = kReady;
    for (Vek16s* const bands : {s.noise, s.average, s.oldLevel}) {
        std::fill_n(bands, kBands, Vek16s{150});
    }
    s.speechLevel = kNominalLevel;
    std::memcpy(pState, &s, sizeof s);
    return vekStsNoErr;
}

VekStatus veksVAD_AMRWB_16s(const Vek16s* pSrcSpch, char* pSrcDstVadState, Vek16s* pToneFlag, Vek16s* pResultVadFlag) {
    constexpr int32_t kNoTone = 686080;
    if (anyNull(pSrcSpch, pToneFlag, pResultVadFlag, pSrcDstVadState)) {
        return vekStsNullPtrErr;
    }
    // The caller's buffer has no alignment.
    State s;
    std::memcpy(&s, pSrcDstVadState, sizeof s);
    if (s.ready != kReady) {
        return vekStsStateErr;
    }
    const int32_t power = sat32(2 * corrKernels().dot16(pSrcSpch, pSrcSpch, kFrame));
    const int32_t powerOfTwo = L_add(power, s.lastPower);
    s.lastPower = power;
    if (powerOfTwo < kNoTone) {
        *pToneFlag = static_cast<Vek16s>(*pToneFlag & 0x1fff);
    }
    Vek16s levels[kBands];
    filterBank(s, pSrcSpch, levels);
    *pResultVadFlag = decide(s, levels, powerOfTwo, *pToneFlag) ? 1 : 0;
    followSpeech(s, meanLevel(levels));
    std::memcpy(pSrcDstVadState, &s, sizeof s);
    return vekStsNoErr;
}
