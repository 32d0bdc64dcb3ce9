// Adaptive codebook of AMR-WB: lags and indices by rate and subframe, closed-loop search, decoding, lost lags.
#include <algorithm>
#include <cstring>

#include "sc/amrwb/normal.h"
#include "sc/amrwb/rates.h"
#include "sc/amrwb/tables.h"
#include "sc/common/correlate.h"
#include "sc/common/fixmath.h"
#include "sc/common/markedstate.h"
#include "sc/common/signal_check.h"
#include "sc/kernels/filter.h"
#include "veksc_amrwb.h"

using namespace vek::amrwb;

namespace {

constexpr int kHistory = 5;

// The caller's memory holds it at any address.
struct State {
    Vek16s lags[kHistory];
    Vek16s gains[kHistory];
    Vek16s former;
    Vek16s seed;

    static State of(const void* memory) {
        State state;
        std::memcpy(&state, memory, sizeof state);
        return state;
    }
    void give(void* memory) const { std::memcpy(memory, this, sizeof *this); }
};

constexpr int kShortest = 34;
constexpr int kSpan = 16;

struct Lag {
    int whole;
    int quarters;
};

// How a subframe's index tells the lag: quarters below `halves`, then halves below `wholes`.
struct Law {
    bool relative;
    bool coarse;
    int halves;
    int wholes;

    Law(int subframe, Rate rate)
        : relative(subframe % 2 != 0 || (subframe == 2 && rate == Rate::R660)), coarse(rate <= Rate::R885),
          halves(coarse ? kShortest : 128), wholes(coarse ? 92 : 160) {}

    int bits() const { return coarse ? (relative ? 5 : 8) : (relative ? 6 : 9); }
    int firstHalf() const { return 4 * (halves - kShortest); }
    int firstWhole() const { return firstHalf() + 2 * (wholes - halves); }

    int encode(Lag lag, int first) const {
        if (relative) {
            return coarse ? 2 * (lag.whole - first) + lag.quarters / 2 : 4 * (lag.whole - first) + lag.quarters;
        }
        if (lag.whole < halves) {
            return 4 * (lag.whole - kShortest) + lag.quarters;
        }
        if (lag.whole < wholes) {
            return firstHalf() + 2 * (lag.whole - halves) + lag.quarters / 2;
        }
        return firstWhole() + lag.whole - wholes;
    }

    Lag decode(int index, int first) const {
        if (relative) {
            return coarse ? Lag{first + index / 2, 2 * (index % 2)} : Lag{first + index / 4, index % 4};
        }
        if (index < firstHalf()) {
            return {kShortest + index / 4, index % 4};
        }
        if (index < firstWhole()) {
            const int steps = index - firstHalf();
            return {halves + steps / 2, 2 * (steps % 2)};
        }
        return {wholes + index - firstWhole(), 0};
    }
};

int bounded(int first) {
    constexpr int kLongest = 231;
    return std::clamp(first, kShortest, kLongest - kSpan + 1);
}

// The first of the sixteen lags around one.
int firstAround(int lag) {
    return bounded(lag - kSpan / 2);
}

void setBounds(int first, Vek16s* bounds) {
    bounds[0] = static_cast<Vek16s>(first);
    bounds[1] = static_cast<Vek16s>(first + kSpan - 1);
}

// The past excitation at a lag of quarters, one sample more than the subframe.
void predict(Vek16s* exc, Lag lag) {
    constexpr int kBefore = kQuarterTaps / 2 - 1;
    const int shift = lag.quarters == 0 ? 0 : 1;
    const Vek16s* x = exc - lag.whole - shift - kBefore;
    const Vek16s* taps = kQuarters[3 - (4 - lag.quarters) % 4];
    Vek16s turned[kQuarterTaps];
    std::reverse_copy(taps, taps + kQuarterTaps, turned);
    // Short lags read what has been written before: each time as many as need no later one.
    const int most = std::max(lag.whole + shift - kQuarterTaps / 2, 1);
    for (int i = 0; i <= kSubframe; i += most) {
        filterKernels().fir16(turned, kQuarterTaps - 1, x + i + kQuarterTaps - 1, exc + i,
                              std::min(most, kSubframe + 1 - i), 14);
    }
}

// The sums of all delays, where they may not fit 32 bits.
void wideSums(const Vek16s* past, const Vek16s* h, Vek16s* y, const Vek16s* target, int count, Normal* cross,
              Normal* energy) {
    for (int k = 0; k < count; ++k) {
        cross[k] = product(target, y, kSubframe);
        energy[k] = product(y, y, kSubframe);
        for (int i = kSubframe - 1; i > 0; --i) {
            y[i] = sat16(mult(past[-k], h[i]) + y[i - 1]);
        }
        y[0] = mult(past[-k], h[0]);
    }
}

constexpr int kMargin = 4;
constexpr int kDelays = kSpan + 2 * kMargin;

// Correlations over the root of the energy for kDelays delays from the first on.
void correlations(const Vek16s* exc, const Vek16s* target, const Vek16s* h, int first, Vek16s* out) {
    Vek16s y[kSubframe];
    convolve(exc - first, h, kSubframe, [&](int n, auto sum) { y[n] = round_s(sat32(2 * int64_t{sum})); });
    const int scale = -((product(target, target, kSubframe).exponent + 2) >> 1);
    Normal cross[kDelays];
    Normal energy[kDelays];
    const Vek16s* const past = exc - first - 1;
    int32_t sums[kDelays];
    int32_t squares[kDelays];
    if (corrKernels().delayed16(past, h, 15, y, target, kSubframe, kDelays, sums, squares)) {
        std::transform(sums, sums + kDelays, cross, [](int32_t sum) { return normalOf(2 * sum + 1); });
        std::transform(squares, squares + kDelays, energy, [](int32_t sum) { return normalOf(2 * sum + 1); });
    } else {
        wideSums(past, h, y, target, kDelays, cross, energy);
    }
    for (int k = 0; k < kDelays; ++k) {
        const Normal root = inverseRoot(energy[k]);
        const int32_t value = L_mult(extract_h(cross[k].mantissa), extract_h(root.mantissa));
        out[k] = round_s(L_shl(value, cross[k].exponent + root.exponent + scale));
    }
}

// The correlation at `quarters` of a sample (-3..3) from x[0].
Vek16s between(const Vek16s* x, int quarters) {
    constexpr Vek16s taps[4][2 * kMargin] = {{206, -766, 1376, 14746, 1376, -766, 206, 0},
                                             {32, 73, -1242, 13418, 5429, -1732, 420, -12},
                                             {-26, 455, -2142, 9910, 9910, -2142, 455, -26},
                                             {-12, 420, -1732, 5429, 13418, -1242, 73, 32}};
    if (quarters < 0) {
        quarters += 4;
        --x;
    }
    int32_t sum = 0;
    for (int i = 0; i < 2 * kMargin; ++i) {
        sum = L_mac(sum, x[i - kMargin + 1], taps[quarters][i]);
    }
    return round_s(L_shl(sum, 1));
}

Lag bestLag(const Vek16s* correlations, const Law& law, int first) {
    const Vek16s* at = correlations + kMargin;
    int k = 0;
    for (int i = 1; i < kSpan; ++i) {
        k = at[i] >= at[k] ? i : k;
    }
    const int whole = first + k;
    if (!law.relative && whole >= law.wholes) {
        return {whole, 0};
    }
    const int step = law.coarse || (!law.relative && whole >= law.halves) ? 2 : 1;
    int found = k == 0 ? 0 : step - 4;
    Vek16s best = between(at + k, found);
    for (int i = found + step; i <= 3; i += step) {
        const Vek16s value = between(at + k, i);
        if (value > best) {
            best = value;
            found = i;
        }
    }
    return found < 0 ? Lag{whole - 1, found + 4} : Lag{whole, found};
}

// A lag out of those that went before, towards the longer ones, with a random part.
int randomLag(State& state) {
    Vek16s sorted[kHistory];
    std::copy_n(state.lags, kHistory, sorted);
    std::sort(sorted, sorted + kHistory);
    const int spread = std::min(sorted[4] - sorted[2], 40);
    state.seed = static_cast<Vek16s>(state.seed * 31821 + 13849);
    const int wander = ((spread >> 1) * state.seed) >> 15;
    return mult(static_cast<Vek16s>(sorted[2] + sorted[3] + sorted[4]), 10923) + wander;
}

// TS 26.191: the lag of a bad frame is kept where the history makes it likely.
int conceal(State& state, int lag, bool lost) {
    constexpr Vek16s kHalf = 8192;
    constexpr Vek16s kWeak = 6554;
    const auto [minLag, maxLag] = std::minmax_element(state.lags, state.lags + kHistory);
    const int shortest = *minLag;
    const int longest = *maxLag;
    const int spread = longest - shortest;
    const Vek16s weakest = *std::min_element(state.gains, state.gains + kHistory);
    const Vek16s last = state.gains[kHistory - 1];
    const bool voiced = last > kHalf && state.gains[kHistory - 2] > kHalf;
    const bool steady = weakest > kHalf && spread < 10;
    if (lost) {
        const int chosen = steady ? state.former : voiced ? state.lags[0] : randomLag(state);
        return std::clamp(chosen, shortest, longest);
    }
    int sum = 0;
    for (const Vek16s l : state.lags) {
        sum += l;
    }
    const int mean = (sum * 6554) >> 15;
    const bool inside = lag > shortest && lag < longest;
    const int away = lag - state.lags[0];
    if ((spread < 10 && lag > shortest - 5 && lag - longest < 5) || (voiced && away > -10 && away < 10) ||
        (weakest < kWeak && last == weakest && inside) || (spread < 70 && inside) || (lag > mean && lag < longest)) {
        return lag;
    }
    return std::clamp(steady || voiced ? state.lags[0] : randomLag(state), shortest, longest);
}

} // namespace

VekStatus veksAdaptiveCodebookDecodeGetSize_AMRWB_16s(int* pSize) {
    return stateSize<State>(pSize);
}

VekStatus veksAdaptiveCodebookDecodeInit_AMRWB_16s(VekAdaptiveCodebookState_AMRWB* pState) {
    if (anyNull(pState)) {
        return vekStsNullPtrErr;
    }
    State{{64, 64, 64, 64, 64}, {}, 64, 21845}.give(pState);
    return vekStsNoErr;
}

VekStatus veksAdaptiveCodebookDecodeGain_AMRWB_16s(Vek16s valPitchGain, VekAdaptiveCodebookState_AMRWB* pState) {
    if (anyNull(pState)) {
        return vekStsNullPtrErr;
    }
    State state = State::of(pState);
    std::copy(state.gains + 1, state.gains + kHistory, state.gains);
    state.gains[kHistory - 1] = valPitchGain;
    state.give(pState);
    return vekStsNoErr;
}

VekStatus veksAdaptiveCodebookDecode_AMRWB_16s(int valAdptIndex, Vek16s* pFracPitchLag, Vek16s* pSrcDstExcitation,
                                               Vek16s* pResultIntPitchLag, Vek16s* pResultPrevIntPitchLagBounds,
                                               int Subframe, int bfi, int unusableFrame, VekSpchBitRate mode,
                                               VekAdaptiveCodebookState_AMRWB* pState) {
    if (anyNull(pFracPitchLag, pSrcDstExcitation, pResultIntPitchLag, pResultPrevIntPitchLagBounds, pState)) {
        return vekStsNullPtrErr;
    }
    const Rate rate = rateOf(mode);
    if (rate == Rate::None) {
        return vekStsBitRateErr;
    }
    if (Subframe < 0 || Subframe > 3 || !isFlag(bfi) || !isFlag(unusableFrame)) {
        return vekStsRangeErr;
    }
    const Law law(Subframe, rate);
    if (valAdptIndex < 0 || valAdptIndex >= 1 << law.bits()) {
        return vekStsRangeErr;
    }
    Lag lag = law.decode(valAdptIndex, bounded(pResultPrevIntPitchLagBounds[0]));
    if (!law.relative) {
        setBounds(firstAround(lag.whole), pResultPrevIntPitchLagBounds);
    }
    State state = State::of(pState);
    if (bfi == 1) {
        lag = {conceal(state, lag.whole, unusableFrame == 1), 0};
    } else {
        std::copy_backward(state.lags, state.lags + kHistory - 1, state.lags + kHistory);
        state.lags[0] = static_cast<Vek16s>(lag.whole);
        state.former = state.lags[0];
    }
    state.give(pState);
    predict(pSrcDstExcitation, lag);
    *pResultIntPitchLag = static_cast<Vek16s>(lag.whole);
    *pFracPitchLag = static_cast<Vek16s>(lag.quarters);
    return vekStsNoErr;
}

VekStatus veksAdaptiveCodebookSearch_AMRWB_16s(const Vek16s* pSrcAdptTarget, const Vek16s* pSrcImpulseResponse,
                                               const Vek16s* pSrcOpenLoopLag, Vek16s* pPitchLag,
                                               Vek16s* pPitchLagBounds, Vek16s* pSrcDstExcitation,
                                               Vek16s* pFracPitchLag, Vek16s* pAdptIndex, int Subframe,
                                               VekSpchBitRate mode) {
    if (anyNull(pSrcAdptTarget, pSrcImpulseResponse, pSrcOpenLoopLag, pPitchLag, pPitchLagBounds, pSrcDstExcitation,
                pFracPitchLag, pAdptIndex)) {
        return vekStsNullPtrErr;
    }
    const Rate rate = rateOf(mode);
    if (rate == Rate::None) {
        return vekStsBitRateErr;
    }
    if (Subframe < 0 || Subframe > 3) {
        return vekStsRangeErr;
    }
    const Law law(Subframe, rate);
    const int first = law.relative ? bounded(pPitchLagBounds[0]) : firstAround(2 * pSrcOpenLoopLag[Subframe / 2]);
    Vek16s values[kDelays];
    correlations(pSrcDstExcitation, pSrcAdptTarget, pSrcImpulseResponse, first - kMargin, values);
    const Lag lag = bestLag(values, law, first);
    predict(pSrcDstExcitation, lag);
    *pAdptIndex = static_cast<Vek16s>(law.encode(lag, first));
    *pPitchLag = static_cast<Vek16s>(lag.whole);
    *pFracPitchLag = static_cast<Vek16s>(lag.quarters);
    if (!law.relative) {
        setBounds(firstAround(lag.whole), pPitchLagBounds);
    }
    return vekStsNoErr;
}
