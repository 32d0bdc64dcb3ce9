// Phase dispersion of G.729 Annex D: at 6.4 kbit/s the few pulses of the innovation are smeared over the subframe
// wherever the gains speak for noise.
#include <algorithm>
#include <cstring>

#include "sc/common/fixmath.h"
#include "sc/common/markedstate.h"
#include "sc/g729/sizes.h"
#include "sc/kernels/filter.h"
#include "veksc_g729.h"

namespace {

using namespace vek::g729;

constexpr int kGains = 6;

enum Dispersion { kStrong, kMild, kNone };

// Pitch gains in Q14: 0.6 and 0.9.
constexpr Vek16s kLowPitchGain = 9830;
constexpr Vek16s kHighPitchGain = 14745;

// Impulse responses of the all-pass filters, Q15: the published table, each twice in a row for the circular reading.
constexpr int kStrongResponse[kSubframe] = {
    14690, 11518, 1268,  -2762, -5672, 7514,  -36,  -2808, -3041, 4823,  2952, -8425, 3785, 1455,
    2179,  -8638, 8051,  -2104, -1455, 777,   1108, -2386, 2254,  -364,  -675, -2104, 6046, -5682,
    1072,  3123,  -5059, 5312,  -2330, -3729, 6924, -3890, 675,   -1776, 29,   10145,
};
constexpr int kMildResponse[kSubframe] = {
    30274, 3831,  -4037, 2972, -1049, -1003, 2477,  -3044, 2815, -2232, 1753, -1612, 1714,  -1776,
    1543,  -1009, 429,   -170, 472,   -1265, 2176,  -2707, 2523, -1622, 344,  826,   -1530, 1724,
    -1658, 1701,  -2064, 2644, -3061, 2897,  -1979, 557,   780,  -1370, 842,  655,
};
constexpr int kUnitResponse[kSubframe] = {32767};

struct Twice {
    Vek16s value[2 * kSubframe];
};

constexpr Twice twice(const int (&response)[kSubframe]) {
    Twice t{};
    for (int i = 0; i < 2 * kSubframe; i++) {
        t.value[i] = static_cast<Vek16s>(response[i % kSubframe]);
    }
    return t;
}

constexpr Twice kFilters[] = {twice(kStrongResponse), twice(kMildResponse), twice(kUnitResponse)};

struct State {
    Vek16s pitchGain[kGains]; // newest first
    Vek16s codebookGain;
    Vek16s onset;      // 2 at an onset, then counted down
    Vek16s dispersion; // last decision
};
using DispersionState = Marked<State, 0x50686473>;

// Updates the state with the gains of this subframe and decides on the filter.
Dispersion decide(State& s, Vek16s codebookGain, Vek16s pitchGain) {
    std::copy_backward(s.pitchGain, s.pitchGain + kGains - 1, s.pitchGain + kGains);
    s.pitchGain[0] = pitchGain;
    s.onset = static_cast<Vek16s>((codebookGain >> 1) > s.codebookGain ? 2 : std::max(s.onset - 1, 0));
    s.codebookGain = codebookGain;

    int d = pitchGain >= kHighPitchGain ? kNone : pitchGain >= kLowPitchGain ? kMild : kStrong;
    const auto weak =
        std::count_if(s.pitchGain, s.pitchGain + kGains, [](Vek16s gain) { return gain < kLowPitchGain; });
    if (s.onset == 0) {
        if (weak > 2) {
            d = kStrong;
        }
        if (d > s.dispersion + 1) {
            d--;
        }
    } else if (d < kNone) {
        d++;
    }
    s.dispersion = static_cast<Vek16s>(d);
    return static_cast<Dispersion>(d);
}

} // namespace

VekStatus veksPhaseDispersionGetStateSize_G729D_16s(int* pSize) {
    return DispersionState::size(pSize);
}

VekStatus veksPhaseDispersionInit_G729D_16s(void* pPhDMem) {
    State s{};
    s.dispersion = kNone;
    return DispersionState::init(pPhDMem, s);
}

VekStatus veksPhaseDispersion_G729D_16s(const Vek16s* pSrcExcSignal, Vek16s* pDstFltExcSignal, Vek16s valCodebookGain,
                                        Vek16s valPitchGain, Vek16s* pSrcDstInnovation, void* pPhDMem) {
    if (!pSrcExcSignal || !pDstFltExcSignal || !pSrcDstInnovation || !pPhDMem) {
        return vekStsNullPtrErr;
    }
    DispersionState state;
    if (!state.take(pPhDMem)) {
        return vekStsStateErr;
    }
    const Dispersion d = decide(state.content, valCodebookGain, valPitchGain);
    state.give(pPhDMem);

    Vek16s before[kSubframe];
    Vek16s after[kSubframe];
    Vek16s dispersed[kSubframe];
    const FilterKernels& k = filterKernels();
    k.circular40(pSrcDstInnovation, kFilters[d].value, dispersed);
    // Innovation Q13, gain Q1: to the excitation's Q0.
    k.mulC(pSrcDstInnovation, valCodebookGain, before, kSubframe, 14);
    k.mulC(dispersed, valCodebookGain, after, kSubframe, 14);
    for (int i = 0; i < kSubframe; i++) {
        pDstFltExcSignal[i] = add(sub(pSrcExcSignal[i], before[i]), after[i]);
    }
    std::memcpy(pSrcDstInnovation, dispersed, sizeof dispersed);
    return vekStsNoErr;
}
