// Open-loop delay, harmonic noise shaping and the pitch post-filter of G.723.1.
#include <algorithm>

#include "sc/g723/tables.h"
#include "sc/kernels/corr.h"
#include "veksc_g723.h"

using namespace vek::g723;

namespace {

constexpr int kMostOpenDelay = kMostDelay - 3;
constexpr int kHalfFrame = kFrame / 2;
// Those within 3 of one.
constexpr int kDelays = 7;

int64_t dot(const Vek16s* a, const Vek16s* b, int n) {
    return corrKernels().dot16(a, b, n);
}

// Left shifts to 31 bits and a sign, negative for wider sums.
int headroom(int64_t v) {
    return v == 0 ? 0 : norm_64(v) - 32;
}

// Square of a correlation and energy as mantissas, with the exponent of their quotient: larger means smaller.
struct Criterion {
    int exponent = 32;
    int32_t square = 0x4000;
    int32_t energy = 0x7fff;
};

Criterion criterionOf(int64_t correlation, int64_t energy) {
    Criterion c;
    const int n = headroom(correlation);
    const int16_t m = mantissa(correlation, n);
    const int32_t square = m * m;
    const int up = norm_l(square);
    c.square = (square << up) >> 16;
    const int energyUp = headroom(energy);
    c.energy = mantissa(energy, energyUp);
    c.exponent = 2 * n + up - energyUp;
    if (c.square >= c.energy) {
        --c.exponent;
        c.square >>= 1;
    }
    return c;
}

// Whether the criterion of a longer delay beats the one so far; `far` when it is 18 or more longer.
bool beats(const Criterion& c, const Criterion& best, bool far) {
    if (c.exponent > best.exponent) {
        return false;
    }
    if (c.exponent + 1 < best.exponent) {
        return true;
    }
    const int32_t other = c.exponent + 1 == best.exponent ? best.square >> 1 : best.square;
    const int32_t product = c.square * best.energy;
    const int32_t lead = product - c.energy * other;
    return lead > 0 && (!far || lead > product >> 2);
}

// The exact sums of the products of n samples with those `delay` and more before them or, for a step of 1, behind.
void correlations(const Vek16s* x, const Vek16s* from, int n, int step, int count, int64_t* sums) {
    int32_t narrow[kMostOpenDelay];
    if (corrKernels().slide16(x, from, n, step, count, narrow)) {
        std::copy_n(narrow, count, sums);
        return;
    }
    for (int k = 0; k < count; ++k) {
        sums[k] = dot(x, from + step * k, n);
    }
}

struct Share {
    int delay = 0;
    int32_t correlation = 0;
    int32_t energy = 0;
};

int32_t doubled(const Vek16s* a, const Vek16s* b) {
    return sat32(2 * dot(a, b, kSubframe));
}

// The most alike stretch within 3 of the delay, ahead (direction 1) or back (-1), with a positive correlation.
Share mostAlike(const Vek16s* x, int delay, int last, int direction) {
    Share best;
    const int first = delay - 3;
    if (last < first) {
        return best;
    }
    int64_t sums[kDelays];
    correlations(x, x + direction * first, kSubframe, direction, last - first + 1, sums);
    for (int d = first; d <= last; ++d) {
        // All have been filled. NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult)
        const int32_t correlation = sat32(2 * sums[d - first]);
        if (correlation > best.correlation) {
            best.correlation = correlation;
            best.delay = d;
        }
    }
    if (best.delay != 0) {
        best.energy = doubled(x + direction * best.delay, x + direction * best.delay);
        best.delay *= direction;
    }
    return best;
}

void shorten(Share& share, int shift) {
    share.correlation = L_shl(share.correlation, shift) >> 16;
    share.energy = L_shl(share.energy, shift) >> 16;
}

struct Gains {
    int pitch = 0;
    int scaling = 32767;
};

// All three at most 15 bits; weight Q15.
Gains gainsOf(int32_t own, const Share& share, int weight) {
    Gains gains;
    const int32_t correlation = share.correlation;
    if (correlation * correlation * int64_t{2} > (own * share.energy) >> 1) {
        gains.pitch = correlation >= share.energy ? weight : ((correlation << 15) / share.energy) * weight >> 15;
        const int32_t sum = own * 32768 + correlation * gains.pitch * 2;
        const int32_t square = ((gains.pitch * gains.pitch) >> 15) * share.energy;
        const int32_t after = L_add(sum, square + 0x8000) >> 16;
        const int32_t ratio = own >= after * 2 ? 0x7fff : (own << 14) / after;
        gains.scaling = rootOfHalf(static_cast<uint32_t>(ratio) << 16);
    }
    gains.pitch = (gains.pitch * gains.scaling) >> 15;
    return gains;
}

} // namespace

VekStatus veksOpenLoopPitchSearch_G723_16s(const Vek16s* pSrc, Vek16s* pResultOpenDelay) {
    if (!pSrc || !pResultOpenDelay) {
        return vekStsNullPtrErr;
    }
    Criterion best;
    int delay = kLeastDelay;
    const Vek16s* from = pSrc - kLeastDelay + 1;
    int64_t energy = dot(from, from, kHalfFrame);
    constexpr int count = kMostOpenDelay - kLeastDelay + 1;
    int64_t sums[count];
    correlations(pSrc, pSrc - kLeastDelay, kHalfFrame, -1, count, sums);
    for (int d = kLeastDelay; d <= kMostOpenDelay; ++d) {
        --from;
        energy += from[0] * from[0] - int64_t{from[kHalfFrame]} * from[kHalfFrame];
        const int64_t correlation = sums[d - kLeastDelay];
        if (correlation <= 0) {
            continue;
        }
        const Criterion c = criterionOf(correlation, energy);
        if (beats(c, best, d - delay >= kLeastDelay)) {
            best = c;
            delay = d;
        }
    }
    *pResultOpenDelay = static_cast<Vek16s>(delay);
    return vekStsNoErr;
}

VekStatus veksHarmonicSearch_G723_16s(Vek16s valOpenDelay, const Vek16s* pSrc, Vek16s* pResultHarmonicDelay,
                                      Vek16s* pResultHarmonicGain) {
    if (!pSrc || !pResultHarmonicDelay || !pResultHarmonicGain) {
        return vekStsNullPtrErr;
    }
    if (!isDelay(valOpenDelay)) {
        return vekStsRangeErr;
    }
    int64_t energies[kDelays];
    int64_t sums[kDelays];
    correlations(pSrc, pSrc - (valOpenDelay - 3), kSubframe, -1, kDelays, sums);
    const int64_t own = dot(pSrc, pSrc, kSubframe);
    int64_t most = own;
    for (int i = 0; i < kDelays; ++i) {
        const Vek16s* from = pSrc - (valOpenDelay - 3 + i);
        energies[i] = dot(from, from, kSubframe);
        const int64_t magnitude = sums[i] < 0 ? -sums[i] : sums[i];
        most = energies[i] > most ? energies[i] : most;
        most = magnitude > most ? magnitude : most;
    }
    const int n = headroom(most);
    int best = -1;
    int32_t bestSquare = 1;
    int32_t bestEnergy = 0x7fff;
    for (int i = 0; i < kDelays; ++i) {
        const int32_t correlation = mantissa(sums[i], n);
        if (correlation <= 0) {
            continue;
        }
        const int32_t square = (correlation * correlation + 0x4000) >> 15;
        const int32_t energy = mantissa(energies[i], n);
        if (square * bestEnergy > energy * bestSquare) {
            best = i;
            bestSquare = square;
            bestEnergy = energy;
        }
    }
    int gain = 0;
    if (best >= 0) {
        constexpr int kMostGain = 0x2800;
        const int32_t correlation = mantissa(sums[best], n);
        const int32_t energy = mantissa(own, n) * bestEnergy;
        if ((energy >> 2) + (energy >> 3) < correlation * correlation) {
            gain =
                correlation >= bestEnergy ? kMostGain : ((correlation << 15) / bestEnergy * kMostGain + 0x4000) >> 15;
        }
    }
    *pResultHarmonicDelay = static_cast<Vek16s>(best >= 0 ? valOpenDelay - 3 + best : valOpenDelay);
    *pResultHarmonicGain = static_cast<Vek16s>(gain);
    return vekStsNoErr;
}

VekStatus veksPitchPostFilter_G723_16s(Vek16s valBaseDelay, const Vek16s* pSrcResidual, Vek16s* pResultDelay,
                                       Vek16s* pResultPitchGain, Vek16s* pResultScalingGain, Vek16s subFrame,
                                       VekSpchBitRate mode) {
    if (!pSrcResidual || !pResultDelay || !pResultPitchGain || !pResultScalingGain) {
        return vekStsNullPtrErr;
    }
    if (!isDelay(valBaseDelay) || !isSubframe(subFrame)) {
        return vekStsRangeErr;
    }
    if (!isRate(mode)) {
        return vekStsBitRateErr;
    }
    const Vek16s* x = pSrcResidual + kSubframe * subFrame;
    const int delay = valBaseDelay < kMostOpenDelay ? valBaseDelay : kMostOpenDelay;
    const int ahead = kFrame - kSubframe * (subFrame + 1);
    Share next = mostAlike(x, delay, delay + 3 < ahead ? delay + 3 : ahead, 1);
    Share past = mostAlike(x, delay, delay + 3, -1);
    Gains gains;
    int chosen = 0;
    if (next.delay != 0 || past.delay != 0) {
        int32_t own = doubled(x, x);
        int32_t most = own;
        for (const int32_t v : {next.correlation, next.energy, past.correlation, past.energy}) {
            most = v > most ? v : most;
        }
        const int shift = norm_l(most);
        own = L_shl(own, shift) >> 16;
        shorten(next, shift);
        shorten(past, shift);
        bool forward = past.delay == 0;
        if (next.delay != 0 && past.delay != 0) {
            forward = past.energy * ((next.correlation * next.correlation + 0x4000) >> 15) >=
                      next.energy * ((past.correlation * past.correlation + 0x4000) >> 15);
        }
        const Share& best = forward ? next : past;
        chosen = best.delay;
        gains = gainsOf(own, best, mode == VEK_SPCHBR_6300 ? 0x1800 : 0x2000);
    }
    *pResultDelay = static_cast<Vek16s>(chosen);
    *pResultPitchGain = static_cast<Vek16s>(gains.pitch);
    *pResultScalingGain = static_cast<Vek16s>(gains.scaling);
    return vekStsNoErr;
}
