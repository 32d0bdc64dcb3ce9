// The pulse search of Annex E in floating point.
#include "sc/g729/floatpulses.h"

#include <algorithm>
#include <cmath>

#include "sc/common/correlate.h"
#include "sc/kernels/filter.h"

namespace vek::floatpulses {
namespace {

float inverseRoot(const Vek32f* v) {
    const float energy = corrKernels().dot32f(v, v, kSubframe);
    return energy > 0 ? 1 / std::sqrt(energy) : 0;
}

} // namespace

void correlate(const Vek32f* h, const Vek32f* x, Vek32f* d) {
    for (int n = 0; n < kSubframe; ++n) {
        float s = 0;
        for (int i = n; i < kSubframe; ++i) {
            s += x[i] * h[i - n];
        }
        d[n] = s;
    }
}

void presetSigns(Vek32f* d, const Vek32f* r, int pulses, signed char* sign, Start& start) {
    const float dScale = inverseRoot(d);
    const float rScale = inverseRoot(r);
    float weight[kSubframe];
    for (int i = 0; i < kSubframe; ++i) {
        const float v = rScale * r[i] + dScale * d[i];
        sign[i] = v >= 0 ? 1 : -1;
        weight[i] = std::abs(v);
        d[i] = v >= 0 ? d[i] : -d[i];
    }
    int first = 0;
    for (int t = 0; t < kTracks; ++t) {
        int best = t;
        for (int i = t; i < kSubframe; i += kTracks) {
            best = weight[i] > weight[best] ? i : best;
        }
        start.position[t] = best;
        first = weight[best] > weight[start.position[first]] ? t : first;
    }
    for (int n = 0; n < pulses; ++n) {
        start.track[n] = (first + n) % kTracks;
    }
}

void matrix(const Vek32f* h, const signed char* sign, Vek32f (*rr)[kSubframe]) {
    alignas(32) Vek32f rows[kSubframe * kSubframe];
    filterKernels().corrRows32f(h, rows);
    for (int m = 0; m < kSubframe; ++m) {
        const int j = kSubframe - 1 - m;
        for (int distance = 0; distance <= j; ++distance) {
            const int i = j - distance;
            const float v = rows[m * kSubframe + distance];
            rr[i][j] = sign[i] == sign[j] ? v : -v;
            rr[j][i] = rr[i][j];
        }
    }
}

void search(const Vek32f* d, const Vek32f (*rr)[kSubframe], int pulses, Start start, int* positions) {
    for (int n = 0; n < pulses; ++n) {
        positions[n] = n;
    }
    float bestSquare = -1;
    float bestEnergy = 1;
    for (int turn = 1; turn < kTracks; ++turn) {
        int at[kMostPulses] = {start.position[start.track[0]], start.position[start.track[1]]};
        float c0 = d[at[0]] + d[at[1]];
        float e0 = rr[at[0]][at[0]] + rr[at[1]][at[1]] + 2 * rr[at[0]][at[1]];
        float square = -1;
        for (int n = 2; n < pulses; n += 2) {
            float second[kSubframe];
            for (int j = start.track[n + 1]; j < kSubframe; j += kTracks) {
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
            for (int i = start.track[n]; i < kSubframe; i += kTracks) {
                float cross = 0;
                for (int p = 0; p < n; ++p) {
                    cross += rr[i][at[p]];
                }
                const float e1 = e0 + rr[i][i] + 2 * cross;
                for (int j = start.track[n + 1]; j < kSubframe; j += kTracks) {
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
        std::rotate(start.track + 1, start.track + 2, start.track + pulses);
    }
}

} // namespace vek::floatpulses
