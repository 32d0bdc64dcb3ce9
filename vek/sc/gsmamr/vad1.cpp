// Voice activity of AMR, option 1: levels of nine bands from a tree of all-pass filters, the noise beneath them, and a
// decision with hangover.
#include "sc/common/bandvad.h"
#include "sc/common/fixmath.h"
#include "sc/common/signal_check.h"
#include "sc/gsmamr/sizes.h"
#include "sc/kernels/corr.h"
#include "veksc_gsmamrdtx.h"

static_assert(sizeof(VeksVAD1State_GSMAMR) == 116);

namespace {

using namespace vek::bandvad;

using State = VeksVAD1State_GSMAMR;

using gsmamr::kFrame;
constexpr int kLookAhead = 40;
constexpr int kBands = 9;
constexpr Vek16s kMostNoise = 16000;
constexpr Vek16s kLeastCorrelation = 13106; // 0.4

void filterBank(State& s, const Vek16s* in, Vek16s* levels) {
    Vek16s x[kFrame];
    for (int i = 0; i < kFrame; ++i) {
        x[i] = static_cast<Vek16s>(in[i] >> 2);
    }
    splitBand5<kFrame, 0>(x, 1, s.filter5[0]);
    splitBand5<kFrame>(x, 2, s.filter5[1]);
    splitBand5<kFrame - 1>(x + 1, 2, s.filter5[2]);
    splitBand3<kFrame>(x, 4, s.filter3[0]);
    splitBand3<kFrame - 2>(x + 2, 4, s.filter3[1]);
    splitBand3<kFrame - 3>(x + 3, 4, s.filter3[4]);
    splitBand3<kFrame>(x, 8, s.filter3[2]);
    splitBand3<kFrame - 4>(x + 4, 8, s.filter3[3]);
    static constexpr Band bands[kBands] = {{2, 16, 0, 16}, {2, 16, 8, 16}, {2, 16, 12, 16},
                                           {2, 16, 4, 16}, {4, 8, 6, 16},  {4, 8, 2, 16},
                                           {4, 8, 3, 16},  {4, 8, 7, 16},  {8, 4, 1, 15}};
    levelsOf<kFrame>(x, bands, s.subLevel, levels);
}

// Whether the signal has been complex for long; smooths the correlation first.
bool complexSignal(State& s, Vek16s maxHpCorr, bool quiet) {
    constexpr Vek16s kHigh = 19660; // 0.6
    constexpr Vek16s kLow = 16383;  // 0.5
    constexpr Vek16s kHang = 22936; // 0.7
    constexpr Vek16s kSlow = 655;
    constexpr Vek16s kFast = 2621;
    constexpr Vek16s kFastest = 6553;
    const bool below = s.corrHpFast < kHigh;
    const Vek16s speed = below ? kFast : maxHpCorr < s.corrHpFast ? kFastest : kSlow;
    int32_t smooth = L_deposit_h(s.corrHpFast);
    smooth = L_msu(smooth, speed, s.corrHpFast);
    s.corrHpFast = round_s(L_mac(smooth, speed, maxHpCorr));
    if (s.corrHpFast < kLeastCorrelation || quiet) {
        s.corrHpFast = kLeastCorrelation;
    }
    s.complexHigh = shr(s.complexHigh, 1);
    s.complexLow = shr(s.complexLow, 1);
    if (!quiet && s.corrHpFast > kHigh) {
        s.complexHigh = static_cast<Vek16s>(s.complexHigh | 0x4000);
    }
    if (!quiet && s.corrHpFast > kLow) {
        s.complexLow = static_cast<Vek16s>(s.complexLow | 0x4000);
    }
    s.complexHangTimer = s.corrHpFast > kHang ? add(s.complexHangTimer, 1) : Vek16s{0};
    return (s.complexHigh & 0x7f80) == 0x7f80 || (s.complexLow & 0x7fff) == 0x7fff;
}

void updateNoise(State& s, const Vek16s (&levels)[kBands], Vek16s toneFlag, bool complex) {
    constexpr Vek16s kLeastComplex = 5;
    constexpr Vek16s kRestless = 1000;
    if (complex && s.statCount < kLeastComplex) {
        s.statCount = kLeastComplex;
    }
    const bool restless = (s.pitch & 0x6000) == 0x6000 || (toneFlag & 0x7c00) == 0x7c00 || (s.vadReg & 0x7f80) == 0 ||
                          unrest(levels, s.aveLevel) > kRestless;
    countStationary(levels, restless, (s.vadReg & 0x4000) != 0, s.statCount, s.aveLevel);
    const bool simple = s.complexHangCount == 0;
    const bool pause = (s.vadReg & 0x7800) == 0 && (s.pitch & 0x7800) == 0 && simple;
    followNoise(levels, paceOf(pause, s.statCount == 0 && simple), kMostNoise, s.oldLevel, s.bckrEst);
}

bool activity(State& s, Vek16s noise, bool quiet) {
    constexpr Vek16s kComplexFrames = 100;
    constexpr Vek16s kComplexHang = 250;
    constexpr Vek16s kInNoise = 21298; // 0.65
    const bool noisy = noise > 100;
    if (quiet) {
        s.burstCount = 0;
        s.hangCount = 0;
        s.complexHangCount = 0;
        s.complexHangTimer = 0;
        return false;
    }
    if (s.complexHangTimer > kComplexFrames && s.complexHangCount < kComplexHang) {
        s.complexHangCount = kComplexHang;
    }
    if (s.complexHangCount != 0) {
        s.burstCount = 4;
        s.complexHangCount = sub(s.complexHangCount, 1);
        return true;
    }
    if ((s.vadReg & 0x3ff0) == 0 && s.corrHpFast > kInNoise) {
        return true;
    }
    return withHangover((s.vadReg & 0x4000) != 0, noisy ? 4 : 5, noisy ? 7 : 4, s.burstCount, s.hangCount);
}

// Mean over the bands of the squared ratio of level to noise.
Vek16s ratio(const Vek16s* levels, const Vek16s* noise) {
    constexpr Vek16s kOneOfNine = 3641;
    int32_t sum = 0;
    for (int i = 0; i < kBands; ++i) {
        const int norm = norm_s(noise[i]);
        const Vek16s q = shl(div_s(shr(levels[i], 1), shl(noise[i], norm)), norm - 5);
        sum = L_mac(sum, q, q);
    }
    return mult(extract_h(L_shl(sum, 6)), kOneOfNine);
}

bool decide(State& s, const Vek16s (&levels)[kBands], bool quiet, Vek16s maxHpCorr, Vek16s toneFlag) {
    constexpr Vek16s kHigh = 1260;
    constexpr Vek16s kLow = 720;
    constexpr Vek16s kSlope = -2808; // from high to low over a noise of 0 to 6300
    const Vek16s mean = ratio(levels, s.bckrEst);
    int32_t sum = 0;
    for (const Vek16s v : s.bckrEst) {
        sum += v;
    }
    const Vek16s noise = extract_h(L_shl(sum, 13));
    Vek16s threshold = add(mult(kSlope, noise), kHigh);
    threshold = threshold < kLow ? kLow : threshold;
    s.vadReg = shr(s.vadReg, 1);
    if (mean > threshold) {
        s.vadReg = static_cast<Vek16s>(s.vadReg | 0x4000);
    }
    const bool complex = complexSignal(s, maxHpCorr, quiet);
    updateNoise(s, levels, toneFlag, complex);
    return activity(s, noise, quiet);
}

} // namespace

VekStatus veksVAD1_GSMAMR_16s(const Vek16s* pSrcSpch, VeksVAD1State_GSMAMR* pSrcDstVad1State, Vek16s* pResultVadFlag,
                              Vek16s maxHpCorr, Vek16s toneFlag) {
    constexpr int32_t kNoPitch = 343040;
    constexpr int32_t kQuiet = 15000;
    if (anyNull(pSrcSpch, pResultVadFlag, pSrcDstVad1State)) {
        return vekStsNullPtrErr;
    }
    State& s = *pSrcDstVad1State;
    for (const Vek16s noise : s.bckrEst) {
        if (noise < kLeastNoise || noise > kMostNoise) {
            return vekStsStateErr;
        }
    }
    const int32_t power = sat32(2 * corrKernels().dot16(pSrcSpch, pSrcSpch, kFrame));
    if (power < kNoPitch) {
        s.pitch = static_cast<Vek16s>(s.pitch & 0x3fff);
    }
    if (power < kQuiet) {
        s.complexLow = static_cast<Vek16s>(s.complexLow & 0x3fff);
    }
    Vek16s levels[kBands];
    filterBank(s, pSrcSpch + kLookAhead, levels);
    s.vadDecision = decide(s, levels, power < kQuiet, maxHpCorr, toneFlag) ? 1 : 0;
    *pResultVadFlag = s.vadDecision;
    return vekStsNoErr;
}
