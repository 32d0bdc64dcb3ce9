// Kernels of the real-time audio codec. Sums have the same order at all levels, and so the same bits.
#include "sc/kernels/rta.h"

#include "sc/kernels/numbers.h"

namespace vek {
namespace {

using namespace numbers;

// Takes what is below 1e-20 away, and nothing of what is above 1e-6.
VEK_INLINE F8 withoutDust(F8 a) {
    const F8 level = set1(1e-13F);
    return (a + level) - level;
}

void filterBlocks(const BlockFilter& f, float* states, const float* x, float* y, int n) {
    alignas(32) float s[8] = {};
    for (int m = 0; m < f.states; ++m) {
        s[m] = states[m];
    }
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        F8 out = set1(0.0F);
        F8 next = set1(0.0F);
        for (int j = 0; j < 8; ++j) {
            const F8 in = set1(x[i + j]);
            out = out + load(f.response[j]) * in;
            next = next + load(f.drive[j]) * in;
        }
        F8 outOfStates = set1(0.0F);
        F8 nextOfStates = set1(0.0F);
        for (int m = 0; m < f.states; ++m) {
            const F8 state = set1(s[m]);
            outOfStates = outOfStates + load(f.out[m]) * state;
            nextOfStates = nextOfStates + load(f.step[m]) * state;
        }
        store(s, withoutDust(next + nextOfStates));
        store(y + i, withoutDust(out + outOfStates));
    }
    for (; i < n; ++i) {
        const float in = x[i];
        float out = f.direct * in;
        float next[kMostStates];
        for (int m = 0; m < f.states; ++m) {
            out += f.out[m][0] * s[m];
            next[m] = f.drive1[m] * in;
            for (int k = 0; k < f.states; ++k) {
                next[m] += f.one[k][m] * s[k];
            }
        }
        for (int m = 0; m < f.states; ++m) {
            s[m] = next[m];
        }
        y[i] = out;
    }
    for (int m = 0; m < f.states; ++m) {
        states[m] = s[m];
    }
}

VEK_INLINE float total(F8 a) {
    alignas(32) float v[8];
    store(v, a);
    return ((v[0] + v[4]) + (v[1] + v[5])) + ((v[2] + v[6]) + (v[3] + v[7]));
}

CommonSums addResponse(float* y, const float* h, float v, const float* x, const float* z, int n) {
    const F8 factor = set1(v);
    F8 target = set1(0.0F);
    F8 other = set1(0.0F);
    F8 energy = set1(0.0F);
    for (int i = 0; i < n; i += 8) {
        const F8 now = load(y + i) + factor * load(h + i);
        store(y + i, now);
        target = target + load(x + i) * now;
        other = other + load(z + i) * now;
        energy = energy + now * now;
    }
    return {total(target), total(other), total(energy)};
}

void distances(const float* book, int entries, int dim, const float* t, const float* w, float* out) {
    for (int e = 0; e < entries; e += 8) {
        F8 sum = set1(0.0F);
        for (int d = 0; d < dim; ++d) {
            const F8 difference = set1(t[d]) - load(book + d * entries + e);
            sum = sum + set1(w[d]) * (difference * difference);
        }
        store(out + e, sum);
    }
}

// Clenshaw's recursion for eight places.
VEK_INLINE void eightPlaces(const double* f, int terms, const double* x, double* out) {
    double twice[8];
    double b1[8];
    double b2[8];
    for (int l = 0; l < 8; ++l) {
        twice[l] = 2 * x[l];
        b2[l] = 0;
        b1[l] = f[0];
    }
    for (int k = 1; k < terms; ++k) {
        for (int l = 0; l < 8; ++l) {
            const double b0 = twice[l] * b1[l] - b2[l] + f[k];
            b2[l] = b1[l];
            b1[l] = b0;
        }
    }
    for (int l = 0; l < 8; ++l) {
        out[l] = x[l] * b1[l] - b2[l] + f[terms];
    }
}

void series(const double* f, int terms, const double* x, int n, double* out) {
    for (int i = 0; i < n; i += 8) {
        eightPlaces(f, terms, x + i, out + i);
    }
}

// Straight lines between the ends; the value at an end that stays is halved, so that the other one moves too.
void zeros(const double* f, int terms, double* low, double* high) {
    double yLow[8];
    double yHigh[8];
    eightPlaces(f, terms, low, yLow);
    eightPlaces(f, terms, high, yHigh);
    for (int round = 0; round < 7; ++round) {
        double x[8];
        double y[8];
        for (int l = 0; l < 8; ++l) {
            const double rise = yHigh[l] - yLow[l];
            const double way = rise != 0 ? yLow[l] / rise : 0;
            x[l] = low[l] - way * (high[l] - low[l]);
        }
        eightPlaces(f, terms, x, y);
        // The last two places always enclose the zero, so `high` may be the lower of them.
        for (int l = 0; l < 8; ++l) {
            const bool across = (y[l] < 0) != (yLow[l] < 0);
            high[l] = across ? low[l] : high[l];
            yHigh[l] = across ? yLow[l] : 0.5 * yHigh[l];
            low[l] = x[l];
            yLow[l] = y[l];
        }
    }
}

} // namespace

VEK_KERNEL_TABLE(RtaKernels, rtaKernels) = {filterBlocks, addResponse, distances, series, zeros};

} // namespace vek
