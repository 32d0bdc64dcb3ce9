// Fixed codebook of G.723.1 at 6.3 kbit/s: multi-pulse maximum likelihood quantisation.
#include <array>
#include <cstring>

#include "sc/common/correlate.h"
#include "sc/g723/tables.h"
#include "veksc_g723.h"

using namespace vek::g723;

namespace {

constexpr int kMostPulses = 6;
constexpr int kPlaces = kSubframe / 2;
constexpr int kGrids = 2;
constexpr int kLevelsTried = 4;

// [r][i]: sets of 5 - r places among the 29 - i behind place i.
using Counts = std::array<std::array<int32_t, kPlaces>, kMostPulses>;
constexpr Counts kCounts = [] {
    Counts c{};
    for (int r = kMostPulses - 1; r >= 0; --r) {
        for (int i = kPlaces - 1; i >= 0; --i) {
            if (r == kMostPulses - 1) {
                c[r][i] = 1;
            } else if (i < kPlaces - 1) {
                c[r][i] = c[r][i + 1] + c[r + 1][i + 1];
            }
        }
    }
    return c;
}();

struct Pulses {
    int positions[kMostPulses];
    int amplitudes[kMostPulses];
};

// Correlations of one impulse response, common to all grids and levels.
struct Field {
    int16_t h[kSubframe + kCorrPadding] = {};
    int16_t target[kSubframe + kCorrPadding] = {};
    int16_t correlation[kSubframe];
    int32_t cross[kSubframe];

    Field(const Vek16s* response, const Vek16s* wanted) {
        std::memcpy(h, response, kSubframe * sizeof(int16_t));
        std::memcpy(target, wanted, kSubframe * sizeof(int16_t));
        int16_t half[kSubframe + kCorrPadding] = {};
        for (int i = 0; i < kSubframe; ++i) {
            half[i] = static_cast<int16_t>(h[i] >> 1);
        }
        int shift = 0;
        correlate(half, half, kSubframe, kSubframe, [&](int, const auto* sums, int count) {
            shift = norm_l(sat32(2 * int64_t{sums[0]}));
            for (int k = 0; k < count; ++k) {
                correlation[k] = round_s(L_shl(sat32(2 * int64_t{sums[k]}), shift));
            }
        });
        shift -= 4;
        correlate(target, h, kSubframe, kSubframe, [&](int, const auto* sums, int count) {
            for (int k = 0; k < count; ++k) {
                cross[k] = L_shl(sat32(2 * int64_t{sums[k]}), shift);
            }
        });
    }

    int strongest(int grid) const {
        int best = grid;
        for (int i = grid; i < kSubframe; i += kGrids) {
            best = L_abs(cross[i]) >= L_abs(cross[best]) ? i : best;
        }
        return best;
    }

    // The level that the strongest correlation asks for, 2..22.
    int levelOf(int position) const {
        int best = kAmplitudes - 2;
        int32_t least = 1 << 30;
        for (int i = kAmplitudes - 2; i >= 2; --i) {
            const int32_t off = L_abs(L_sub(L_mult(kAmplitude[i], correlation[0]), L_abs(cross[position])));
            if (off < least) {
                least = off;
                best = i;
            }
        }
        return best;
    }

    // Pulses of one level, one after the other where what is left correlates most.
    Pulses place(int grid, int first, int level, int count) const {
        Pulses p{};
        int32_t left[kSubframe];
        bool taken[kSubframe] = {};
        std::memcpy(left, cross, sizeof left);
        int position = first;
        for (int k = 0;; ++k) {
            const int16_t amplitude = left[position] < 0 ? negate(kAmplitude[level]) : kAmplitude[level];
            p.positions[k] = position;
            p.amplitudes[k] = amplitude;
            taken[position] = true;
            if (k + 1 == count) {
                return p;
            }
            int next = -1;
            for (int i = grid; i < kSubframe; i += kGrids) {
                if (taken[i]) {
                    continue;
                }
                const int distance = i < position ? position - i : i - position;
                left[i] = L_sub(left[i], L_mult(correlation[distance], amplitude));
                if (next < 0 || L_abs(left[i]) > L_abs(left[next])) {
                    next = i;
                }
            }
            position = next;
        }
    }

    // Twice the correlation with the target less the energy.
    int32_t measure(const Pulses& p, int count) const {
        int64_t filtered[kSubframe] = {};
        for (int k = 0; k < count; ++k) {
            const int64_t amplitude = 2 * p.amplitudes[k];
            for (int i = p.positions[k]; i < kSubframe; ++i) {
                filtered[i] += amplitude * h[i - p.positions[k]];
            }
        }
        int64_t sum = 0;
        for (int i = 0; i < kSubframe; ++i) {
            const int64_t y = extract_h(L_shl(sat32(filtered[i]), 2));
            sum += (2 * target[i] - y) * y;
        }
        return sat32(sum);
    }
};

struct Best {
    int32_t measure;
    int grid;
    int level;
    Pulses pulses;
};

bool improve(const Vek16s* response, const Vek16s* target, int count, Best& best) {
    const Field field(response, target);
    bool improved = false;
    for (int grid = 0; grid < kGrids; ++grid) {
        const int first = field.strongest(grid);
        const int level = field.levelOf(first) - 2;
        for (int l = level; l < level + kLevelsTried; ++l) {
            const Pulses pulses = field.place(grid, first, l, count);
            const int32_t measure = field.measure(pulses, count);
            if (measure > best.measure) {
                best = {measure, grid, l, pulses};
                improved = true;
            }
        }
    }
    return improved;
}

} // namespace

VekStatus veksGainQuant_G723_16s(const Vek16s* pImp, const Vek16s* pVec, Vek16s* pDstLoc, Vek16s* pDstLocAmp,
                                 Vek32s* pSrcDstMaxErr, Vek16s* pResultGrid, Vek16s* pResultAmp, Vek16s Np,
                                 Vek16s* pIsBest) {
    if (!pImp || !pVec || !pDstLoc || !pDstLocAmp || !pSrcDstMaxErr || !pResultGrid || !pResultAmp || !pIsBest) {
        return vekStsNullPtrErr;
    }
    if (Np < 1 || Np > kMostPulses) {
        return vekStsRangeErr;
    }
    Best best{*pSrcDstMaxErr, 0, 0, {}};
    *pIsBest = improve(pImp, pVec, Np, best) ? 1 : 0;
    if (*pIsBest) {
        *pSrcDstMaxErr = best.measure;
        *pResultGrid = static_cast<Vek16s>(best.grid);
        *pResultAmp = static_cast<Vek16s>(best.level);
        for (int k = 0; k < Np; ++k) {
            pDstLoc[k] = static_cast<Vek16s>(best.pulses.positions[k]);
            pDstLocAmp[k] = static_cast<Vek16s>(best.pulses.amplitudes[k]);
        }
    }
    return vekStsNoErr;
}

VekStatus veksMPMLQFixedCodebookSearch_G723(Vek16s valBaseDelay, const Vek16s* pSrcImpulseResponse,
                                            const Vek16s* pSrcResidualTarget, Vek16s* pDstFixedVector,
                                            Vek16s* pResultGrid, Vek16s* pResultTrainDirac, Vek16s* pResultAmpIndex,
                                            Vek16s* pResultAmplitude, Vek32s* pResultPosition, Vek16s subFrame) {
    if (!pSrcImpulseResponse || !pSrcResidualTarget || !pDstFixedVector || !pResultGrid || !pResultTrainDirac ||
        !pResultAmpIndex || !pResultAmplitude || !pResultPosition) {
        return vekStsNullPtrErr;
    }
    if (!isDelay(valBaseDelay) || !isSubframe(subFrame)) {
        return vekStsRangeErr;
    }
    const int count = (subFrame & 1) != 0 ? 5 : 6;
    Best best{kMin32, 0, 0, {}};
    improve(pSrcImpulseResponse, pSrcResidualTarget, count, best);
    bool trains = false;
    if (valBaseDelay < kShortDelay) {
        int16_t response[kSubframe];
        std::memcpy(response, pSrcImpulseResponse, sizeof response);
        pulseTrain(response, valBaseDelay);
        trains = improve(response, pSrcResidualTarget, count, best);
    }
    int16_t vector[kSubframe] = {};
    for (int k = 0; k < count; ++k) {
        vector[best.pulses.positions[k]] = static_cast<int16_t>(best.pulses.amplitudes[k]);
    }
    int signs = 0;
    int32_t number = 0;
    int rank = kMostPulses - count;
    for (int i = 0; i < kPlaces && rank < kMostPulses; ++i) {
        const int16_t pulse = vector[best.grid + kGrids * i];
        if (pulse == 0) {
            number += kCounts[static_cast<size_t>(rank)][static_cast<size_t>(i)];
        } else {
            signs = signs * 2 + (pulse < 0 ? 1 : 0);
            ++rank;
        }
    }
    if (trains) {
        pulseTrain(vector, valBaseDelay);
    }
    std::memcpy(pDstFixedVector, vector, sizeof vector);
    *pResultGrid = static_cast<Vek16s>(best.grid);
    *pResultTrainDirac = trains ? 1 : 0;
    *pResultAmpIndex = static_cast<Vek16s>(best.level);
    *pResultAmplitude = static_cast<Vek16s>(signs);
    *pResultPosition = number;
    return vekStsNoErr;
}
