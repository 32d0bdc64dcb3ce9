// G.728's blocks in single precision, which is how open codecs of this kind do them.
#include "plain/g728.h"

#include <cstring>

namespace PLAIN_BUILD::g728 {

// Over a vector; the memory moves with it.
void synthesise(State& s) {
    float* y = s.past + kOrder;
    for (int n = 0; n < kVector; ++n) {
        float sum = s.exc[n];
        for (int i = 0; i < kOrder; ++i) {
            sum -= s.lpc[i] * y[n - 1 - i];
        }
        y[n] = sum;
    }
    std::memmove(s.past, s.past + kVector, kOrder * sizeof(float));
}

void window(State& s, const Vek16s* frame) {
    std::memmove(s.history, s.history + 20, 85 * sizeof(float));
    for (int i = 0; i < 20; ++i) {
        s.history[85 + i] = frame[i];
    }
    for (int i = 0; i < 105; ++i) {
        s.windowed[i] = s.history[i] * s.window[i];
    }
    for (int k = 0; k <= kOrder; ++k) {
        float old = 0;
        float fresh = 0;
        for (int n = kOrder; n < kOrder + 20; ++n) {
            old += s.windowed[n] * s.windowed[n - k];
        }
        for (int n = kOrder + 20; n < 105; ++n) {
            fresh += s.windowed[n] * s.windowed[n - k];
        }
        s.kept[k] = 0.75F * s.kept[k] + old;
        s.correlation[k] = s.kept[k] + fresh;
    }
}

void levinson(State& s, int order) {
    float e = s.correlation[0];
    for (int m = 0; m < order; ++m) {
        float sum = s.correlation[m + 1];
        for (int i = 0; i < m; ++i) {
            sum += s.a[i] * s.correlation[m - i];
        }
        const float k = -sum / e;
        for (int i = 0; i < (m + 1) / 2; ++i) {
            const float x = s.a[i];
            const float y = s.a[m - 1 - i];
            s.a[i] = x + k * y;
            s.a[m - 1 - i] = y + k * x;
        }
        s.a[m] = k;
        e *= 1 - k * k;
    }
}

int search(const State& s) {
    constexpr float g[4] = {0.515625F, 0.90234375F, 1.57910156F, 2.76342773F};
    float least = 1e30F;
    int found = 0;
    for (int j = 0; j < kShapes; ++j) {
        float p = 0;
        for (int k = 0; k < kVector; ++k) {
            p += s.pn[k] * s.shapes[j][k];
        }
        p = std::fabs(p);
        for (const float level : g) {
            const float d = level * (level * s.energies[j] - 2 * p);
            if (d < least) {
                least = d;
                found = j;
            }
        }
    }
    return found;
}

void filterShapes(State& s) {
    for (int j = 0; j < kShapes; ++j) {
        float e = 0;
        for (int k = 0; k < kVector; ++k) {
            float y = 0;
            for (int i = 0; i <= k; ++i) {
                y += s.impulse[k - i] * s.shapes[j][i];
            }
            e += y * y;
        }
        s.energies[j] = e;
    }
}

// Ten zeros and ten poles over a vector.
inline void zerosAndPoles(State& s, const float* __restrict x) {
    for (int n = 0; n < kVector; ++n) {
        float sum = x[n];
        s.in[10 + n] = x[n];
        for (int i = 0; i < 10; ++i) {
            sum += s.weights[i] * s.in[9 + n - i] - s.weights[10 + i] * s.out[9 + n - i];
        }
        s.out[10 + n] = sum;
    }
    std::memmove(s.in, s.in + kVector, 10 * sizeof(float));
    std::memmove(s.out, s.out + kVector, 10 * sizeof(float));
}

void poleZero(State& s, const float* __restrict x) {
    zerosAndPoles(s, x);
}

// Ten zeros alone.
void inverse(State& s, const float* __restrict x) {
    for (int n = 0; n < kVector; ++n) {
        float sum = x[n];
        s.in[10 + n] = x[n];
        for (int i = 0; i < 10; ++i) {
            sum += s.weights[i] * s.in[9 + n - i];
        }
        s.out[10 + n] = sum;
    }
    std::memmove(s.in, s.in + kVector, 10 * sizeof(float));
}

int postFilter(State& s) {
    float x[kVector];
    for (int n = 0; n < kVector; ++n) {
        x[n] = 0.87F * s.residual[150 + n] + 0.13F * s.residual[100 + n];
    }
    zerosAndPoles(s, x);
    float before = 0;
    float after = 0;
    for (int n = 0; n < kVector; ++n) {
        x[n] = s.out[5 + n] + 0.1F * s.out[4 + n];
        before += std::fabs(s.residual[150 + n]);
        after += std::fabs(x[n]);
    }
    const float target = after > 1 ? before / after : 1;
    for (float& v : x) {
        s.scale = 0.99F * s.scale + 0.01F * target;
        v *= s.scale;
    }
    return static_cast<int>(x[4]);
}

inline int bestLag(const float* x, int n, int from, int to) {
    int best = from;
    float most = -1e30F;
    for (int lag = from; lag <= to; ++lag) {
        float c = 0;
        for (int k = 0; k < n; ++k) {
            c += x[k] * x[k - lag];
        }
        if (c > most) {
            most = c;
            best = lag;
        }
    }
    return best;
}

// The correlations alone, without the filter before them.
int pitch(const State& s) {
    const int coarse = bestLag(s.residual + 40, 25, 5, 35);
    return bestLag(s.residual + 140, 100, std::max(4 * coarse - 3, 20), std::min(4 * coarse + 3, 140));
}

} // namespace PLAIN_BUILD::g728
