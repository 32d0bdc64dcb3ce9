// Depth-first search of signed pulses, in integers and in floating point.
#include "sc/common/pulsesearch.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "sc/common/correlate.h"
#include "sc/common/fixmath.h"
#include "sc/kernels/filter.h"
#include "veksc_filter.h"

namespace vek::pulses {

using namespace vek::fix;

namespace {

int16_t inverseRoot(const Vek16s* v) {
    Vek32s energy = sat32(256 + 2 * corrKernels().dot16(v, v, kSub));
    veksInvSqrt_32s_I(&energy, 1);
    return extract_h(L_shl(energy, 5));
}

float inverseRoot(const Vek32f* v) {
    const float energy = corrKernels().dot32f(v, v, kSub);
    return energy > 0 ? 1 / std::sqrt(energy) : 0;
}

template <class Value>
void order(const Value* weight, int tracks, int pulses, Start& start) {
    int first = 0;
    for (int t = 0; t < tracks; ++t) {
        int best = t;
        for (int i = t; i < kSub; i += tracks) {
            best = weight[i] > weight[best] ? i : best;
        }
        start.position[t] = best;
        first = weight[best] > weight[start.position[first]] ? t : first;
    }
    for (int n = 0; n < pulses; ++n) {
        start.track[n] = (first + n) % tracks;
    }
}

void rotate(Start& start, int pulses) {
    std::rotate(start.track + 1, start.track + 2, start.track + pulses);
}

// Shifts that weigh the elements of the matrix in a round of two pulses: at the energy's first pulse its own element
// and those with the pulses before; at the second the same, rounded to 16 bits, then that sum; the two together.
struct Weights {
    int own, cross, secondOwn, secondCross, second, both;
};

constexpr Weights kWeights[] = {
    {12, 13, 13, 14, 15, 13}, {11, 12, 13, 14, 14, 12}, {10, 11, 12, 13, 14, 11},
    {9, 10, 12, 13, 13, 10},  {8, 9, 11, 12, 13, 9},
};

inline int64_t times(Vek16s v, int shift) {
    return int64_t{v} * (int64_t{1} << shift);
}

inline int16_t upper(int64_t v) {
    return sat16_64((v + 0x8000) >> 16);
}

struct Best {
    int square = -1;
    int energy = 1;

    bool take(int c2, int e) {
        if (int64_t{c2} * energy <= int64_t{square} * e) {
            return false;
        }
        square = c2;
        energy = e;
        return true;
    }
};

} // namespace

void correlate(const Vek16s* h, const Vek16s* x, int tracks, int scale, Vek16s* d) {
    const Scratch16 target(x, kSub, kCorrPadding);
    const Scratch16 response(h, kSub, kCorrPadding);
    int32_t sums[kSub];
    vek::correlate(target.data(), response.data(), kSub, kSub, [&](int k, int64_t s) { sums[k] = sat32(2 * s); });
    int64_t total = 5;
    for (int t = 0; t < tracks; ++t) {
        int32_t most = 0;
        for (int i = t; i < kSub; i += tracks) {
            most = std::max(most, L_abs(sums[i]));
        }
        total += most >> 1;
    }
    const int shift = norm_l(sat32(total)) - scale;
    for (int i = 0; i < kSub; ++i) {
        d[i] = round_s(L_shl(sums[i], shift));
    }
}

void presetSigns(Vek16s* d, const Vek16s* r, int tracks, int pulses, signed char* sign, Start& start) {
    const int16_t dScale = inverseRoot(d);
    const int16_t rScale = inverseRoot(r);
    int16_t weight[kSub];
    for (int i = 0; i < kSub; ++i) {
        const int16_t v = round_s(L_shl(L_mac(L_mult(rScale, r[i]), dScale, d[i]), 10));
        sign[i] = v >= 0 ? 1 : -1;
        weight[i] = v >= 0 ? v : negate(v);
        d[i] = v >= 0 ? d[i] : negate(d[i]);
    }
    order(weight, tracks, pulses, start);
}

void presetSigns(Vek32f* d, const Vek32f* r, int tracks, int pulses, signed char* sign, Start& start) {
    const float dScale = inverseRoot(d);
    const float rScale = inverseRoot(r);
    float weight[kSub];
    for (int i = 0; i < kSub; ++i) {
        const float v = rScale * r[i] + dScale * d[i];
        sign[i] = v >= 0 ? 1 : -1;
        weight[i] = std::abs(v);
        d[i] = v >= 0 ? d[i] : -d[i];
    }
    order(weight, tracks, pulses, start);
}

void matrix(const Vek16s* h, const signed char* sign, Vek16s (*rr)[kSub]) {
    // Products of two signs of 32767 in Q15: different, equal.
    constexpr int factor[] = {-32767, 32766};
    const int32_t energy = sat32(2 + 2 * corrKernels().dot16(h, h, kSub));
    Vek16s scaled[kSub];
    if (extract_h(energy) == 32767) {
        std::transform(h, h + kSub, scaled, [](Vek16s v) { return static_cast<Vek16s>(v >> 1); });
    } else {
        Vek32s root = energy >> 1;
        veksInvSqrt_32s_I(&root, 1);
        const int k = mult(extract_h(L_shl(root, 7)), 32440); // 0.99: rounding may not saturate
        std::transform(h, h + kSub, scaled, [k](Vek16s v) { return sat16((v * k + 0x20) >> 6); });
    }
    alignas(32) Vek32s rows[kSub * kSub];
    filterKernels().corrRows16(scaled, rows);
    for (int m = 0; m < kSub; ++m) {
        const int j = kSub - 1 - m;
        const Vek32s* row = rows + m * kSub;
        rr[j][j] = sat16((row[0] + 0x4000) >> 15);
        for (int distance = 1; distance <= j; ++distance) {
            const int i = j - distance;
            const int v = sat16((row[distance] + 0x4000) >> 15);
            const auto e = static_cast<Vek16s>((v * factor[sign[i] == sign[j]]) >> 15);
            rr[i][j] = e;
            rr[j][i] = e;
        }
    }
}

void matrix(const Vek32f* h, const signed char* sign, Vek32f (*rr)[kSub]) {
    alignas(32) Vek32f rows[kSub * kSub];
    filterKernels().corrRows32f(h, rows);
    for (int m = 0; m < kSub; ++m) {
        const int j = kSub - 1 - m;
        for (int distance = 0; distance <= j; ++distance) {
            const int i = j - distance;
            const float v = rows[m * kSub + distance];
            rr[i][j] = sign[i] == sign[j] ? v : -v;
            rr[j][i] = rr[i][j];
        }
    }
}

namespace {

// What the pulses found so far add up to: correlation, energy as the next round weighs it.
struct Sums {
    int correlation;
    int64_t energy;
};

template <class Row, std::size_t... P>
inline int crossTerms(const Row* row, const int* at, std::index_sequence<P...> /*before*/) {
    return (row[at[P]] + ...);
}

// The pair of pulses N and N + 1 of the best energy ratio; `at` receives their positions.
template <int Tracks, std::size_t N>
Best searchPair(const Vek16s* d, const Vek16s (*rr)[kSub], const Start& start, int* at, Sums& sums) {
    constexpr std::make_index_sequence<N> before;
    constexpr Weights w = kWeights[N / 2 - 1];
    constexpr int positions = kSub / Tracks;
    const int first = start.track[N];
    const int other = start.track[N + 1];
    int64_t second[positions];
    int correlation[positions];
    for (int l = 0; l < positions; ++l) {
        const int j = other + Tracks * l;
        const int64_t s = times(rr[j][j], w.secondOwn) + int64_t{crossTerms(rr[j], at, before)} * (1 << w.secondCross);
        second[l] = times(upper(s), w.second) + 0x8000;
        correlation[l] = sums.correlation + d[j];
    }
    Best best;
    int found = 0;
    int foundFirst = first;
    int foundOther = other;
    for (int i = first; i < kSub; i += Tracks) {
        const Vek16s* row = rr[i];
        const int64_t e1 = sums.energy + times(row[i], w.own) + int64_t{crossTerms(row, at, before)} * (1 << w.cross);
        for (int l = 0; l < positions; ++l) {
            const int j = other + Tracks * l;
            const int c = d[i] + correlation[l];
            const int e = static_cast<int>((e1 + second[l] + times(row[j], w.both)) >> 16);
            if (best.take(static_cast<int>((int64_t{c} * c) >> 15), e)) {
                found = c;
                foundFirst = i;
                foundOther = j;
            }
        }
    }
    at[N] = foundFirst;
    at[N + 1] = foundOther;
    sums = {found, int64_t{best.energy} * (1 << 15)};
    return best;
}

template <int Tracks>
void searchTracks(const Vek16s* d, const Vek16s (*rr)[kSub], int pulses, Start start, int* positions) {
    for (int n = 0; n < pulses; ++n) {
        positions[n] = n;
    }
    Best best;
    for (int turn = 1; turn < Tracks; ++turn) {
        int at[kMostPulses] = {start.position[start.track[0]], start.position[start.track[1]]};
        Sums sums = {d[at[0]] + d[at[1]],
                     times(rr[at[0]][at[0]], 12) + times(rr[at[1]][at[1]], 12) + times(rr[at[0]][at[1]], 13)};
        Best last = searchPair<Tracks, 2>(d, rr, start, at, sums);
        if (pulses > 4) {
            last = searchPair<Tracks, 4>(d, rr, start, at, sums);
        }
        if (pulses > 6) {
            last = searchPair<Tracks, 6>(d, rr, start, at, sums);
        }
        if (pulses > 8) {
            last = searchPair<Tracks, 8>(d, rr, start, at, sums);
        }
        if (pulses > 10) {
            last = searchPair<Tracks, 10>(d, rr, start, at, sums);
        }
        if (best.take(last.square, last.energy)) {
            std::copy_n(at, pulses, positions);
        }
        rotate(start, pulses);
    }
}

} // namespace

void search(const Vek16s* d, const Vek16s (*rr)[kSub], int tracks, int pulses, Start start, int* positions) {
    tracks == 5 ? searchTracks<5>(d, rr, pulses, start, positions) : searchTracks<4>(d, rr, pulses, start, positions);
}

void search(const Vek32f* d, const Vek32f (*rr)[kSub], int tracks, int pulses, Start start, int* positions) {
    for (int n = 0; n < pulses; ++n) {
        positions[n] = n;
    }
    float bestSquare = -1;
    float bestEnergy = 1;
    for (int turn = 1; turn < tracks; ++turn) {
        int at[kMostPulses] = {start.position[start.track[0]], start.position[start.track[1]]};
        float c0 = d[at[0]] + d[at[1]];
        float e0 = rr[at[0]][at[0]] + rr[at[1]][at[1]] + 2 * rr[at[0]][at[1]];
        float square = -1;
        for (int n = 2; n < pulses; n += 2) {
            float second[kSub];
            for (int j = start.track[n + 1]; j < kSub; j += tracks) {
                float cross = 0;
                for (int p = 0; p < n; ++p) {
                    cross += rr[j][at[p]];
                }
                second[j] = rr[j][j] + 2 * cross;
            }
            square = -1;
            float energy = 1;
            float c2 = c0;
            at[n] = start.track[n];
            at[n + 1] = start.track[n + 1];
            for (int i = start.track[n]; i < kSub; i += tracks) {
                float cross = 0;
                for (int p = 0; p < n; ++p) {
                    cross += rr[i][at[p]];
                }
                const float e1 = e0 + rr[i][i] + 2 * cross;
                for (int j = start.track[n + 1]; j < kSub; j += tracks) {
                    const float c = c0 + d[i] + d[j];
                    const float e = e1 + second[j] + 2 * rr[i][j];
                    if (c * c * energy > square * e) {
                        square = c * c;
                        energy = e;
                        c2 = c;
                        at[n] = i;
                        at[n + 1] = j;
                    }
                }
            }
            c0 = c2;
            e0 = energy;
        }
        if (square * bestEnergy > bestSquare * e0) {
            bestSquare = square;
            bestEnergy = e0;
            std::copy_n(at, pulses, positions);
        }
        rotate(start, pulses);
    }
}

void addResponse(const Vek16s* h, int position, int sign, Vek16s* y) {
    for (int i = position; i < kSub; ++i) {
        y[i] = sat16(y[i] + sign * h[i - position]);
    }
}

void addResponse(const Vek32f* h, int position, int sign, Vek32f* y) {
    for (int i = position; i < kSub; ++i) {
        y[i] += static_cast<float>(sign) * h[i - position];
    }
}

} // namespace vek::pulses
