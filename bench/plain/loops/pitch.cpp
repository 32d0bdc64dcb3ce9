// Searches for the largest correlation, matrices of correlations, linear prediction and codebook sums by their
// definitions.
#include "plain/pitch.h"

namespace PLAIN_BUILD::pitch {

// The largest sum of a[n] * b[n + step * k], the first of equal ones.
template <class Sum, class T>
inline int best(const T* a, const T* b, int n, int from, int to, int step, Sum* most) {
    int lag = from;
    for (int k = from; k <= to; ++k) {
        Sum sum = 0;
        for (int i = 0; i < n; ++i) {
            sum += static_cast<Sum>(a[i]) * static_cast<Sum>(b[i + step * k]);
        }
        if (k == from || sum > *most) {
            *most = sum;
            lag = k;
        }
    }
    return lag;
}
int bestForward(const Vek16s* x, int n, int from, int to, Vek32s* most) {
    return best(x, x, n, from, to, 1, most);
}
int bestBack(const Vek16s* x, int n, int from, int to, Vek32s* most) {
    return best(x, x, n, from, to, -1, most);
}
int bestOfTwo(const Vek16s* a, const Vek16s* b, int n, int lags, Vek32s* most) {
    return best(a, b, n, 0, lags - 1, 1, most);
}
int bestBackF(const float* x, int n, int from, int to, float* most) {
    return best(x, x, n, from, to, -1, most);
}
int bestOfTwoF(const float* a, const float* b, int n, int lags, double* most) {
    return best(a, b, n, 0, lags - 1, 1, most);
}

// phi(i, j) = sum of h[n - i] * h[n - j] over n to the end: each diagonal is one running sum from its end on.
template <class T, int N, int Step>
inline void matrix(const T* h, T (*phi)[N]) {
    for (int apart = 0; apart < N; apart += Step) {
        T sum = 0;
        for (int i = N - 1; i >= apart; --i) {
            sum += h[N - 1 - i] * h[N - 1 - i + apart];
            phi[i][i - apart] = sum;
            phi[i - apart][i] = sum;
        }
    }
}
void matrix40(const Vek32s* h, Vek32s (*phi)[40]) {
    matrix<Vek32s, 40, 1>(h, phi);
}
void matrix40F(const float* h, float (*phi)[40]) {
    matrix<float, 40, 1>(h, phi);
}
void matrix60(const Vek32s* h, Vek32s (*phi)[60]) {
    matrix<Vek32s, 60, 2>(h, phi);
}
void upper(const Vek32s* from, Vek16s* to, int n) {
    for (int i = 0; i < n; ++i) {
        to[i] = static_cast<Vek16s>(from[i] >> 16);
    }
}

void levinson(const float* r, int order, float* a, float* k, float* left) {
    float e = r[0];
    a[0] = 1;
    for (int m = 1; m <= order; ++m) {
        float sum = r[m];
        for (int i = 1; i < m; ++i) {
            sum += a[i] * r[m - i];
        }
        const float c = -sum / e;
        for (int i = 1; i <= m / 2; ++i) {
            const float x = a[i];
            const float y = a[m - i];
            a[i] = x + c * y;
            a[m - i] = y + c * x;
        }
        a[m] = c;
        k[m - 1] = c;
        e *= 1 - c * c;
    }
    *left = e;
}

// Both polynomials of five pairs each, and the mean of their sum and difference.
void pairsToFilter(const float* lsp, float* a) {
    float f[2][6];
    for (int p = 0; p < 2; ++p) {
        f[p][0] = 1;
        f[p][1] = -2 * lsp[p];
        for (int i = 2; i <= 5; ++i) {
            const float c = -2 * lsp[2 * i - 2 + p];
            f[p][i] = c * f[p][i - 1] + 2 * f[p][i - 2];
            for (int j = i - 1; j > 1; --j) {
                f[p][j] += c * f[p][j - 1] + f[p][j - 2];
            }
            f[p][1] += c;
        }
    }
    a[0] = 1;
    for (int i = 1; i <= 5; ++i) {
        const float sum = f[0][i] + f[0][i - 1];
        const float difference = f[1][i] - f[1][i - 1];
        a[i] = 0.5F * (sum + difference);
        a[11 - i] = 0.5F * (sum - difference);
    }
}

// Twenty taps around a third of a sample.
void delayed(float* y, int delay, const float* taps) {
    for (int i = 0; i < 40; ++i) {
        float sum = 0;
        for (int j = 0; j < 10; ++j) {
            sum += y[i - delay - j] * taps[1 + 3 * j] + y[i - delay + 1 + j] * taps[2 + 3 * j];
        }
        y[i] = sum;
    }
}

void noise(uint16_t* seed, float* y, int n) {
    for (int i = 0; i < n; ++i) {
        int sum = 0;
        for (int k = 0; k < 12; ++k) {
            *seed = static_cast<uint16_t>(*seed * 31821 + 13849);
            sum += static_cast<int16_t>(*seed);
        }
        y[i] = static_cast<float>(sum) / 128;
    }
}

// The window over 145 samples and the sums of the lags 0..30, of which those over the older part go on.
void hybrid(const float* x, const float* window, float* kept, float* r) {
    float w[145];
    for (int i = 0; i < 145; ++i) {
        w[i] = x[i] * window[i];
    }
    for (int k = 0; k <= 30; ++k) {
        float old = 0;
        float fresh = 0;
        for (int i = 30; i < 110; ++i) {
            old += w[i] * w[i - k];
        }
        for (int i = 110; i < 145; ++i) {
            fresh += w[i] * w[i - k];
        }
        kept[k] = 0.5625F * kept[k] + old;
        r[k] = kept[k] + fresh;
    }
}

void toFloat(const Vek16s* x, float* y, int n) {
    for (int i = 0; i < n; ++i) {
        y[i] = x[i];
    }
}
void normalised(const float* r, Vek32s* y, int n) {
    const float scale = 1.9e9F / std::max(r[0], 1.0F);
    for (int i = 0; i < n; ++i) {
        y[i] = static_cast<Vek32s>(r[i] * scale);
    }
}

// The pair of 4 and 8 candidates of the least error, which is quadratic in both gains.
int leastError(const float (*first)[2], const float (*second)[2], const float* c, int from, int other, int firsts,
               int seconds, float predicted) {
    int found = 0;
    float least = 1e30F;
    for (int i = from; i < from + firsts; ++i) {
        for (int j = other; j < other + seconds; ++j) {
            const float p = first[i][0] + second[j][0];
            const float g = predicted * (first[i][1] + second[j][1]);
            const float e = c[0] * p * p + c[1] * p + c[2] * g * g + c[3] * g + c[4] * p * g;
            if (e < least) {
                least = e;
                found = 16 * i + j;
            }
        }
    }
    return found;
}

// The level of least error among `levels`, by the two sums of the error.
int level(const Vek16s* x, const Vek16s* y, float gain, int levels) {
    float xy = 0;
    float yy = 0;
    for (int i = 0; i < 40; ++i) {
        xy += static_cast<float>(x[i]) * y[i];
        yy += static_cast<float>(y[i]) * y[i];
    }
    int found = 0;
    float least = 1e30F;
    for (int k = 0; k < levels; ++k) {
        const float g = gain * static_cast<float>(1 << k) / 8;
        const float e = g * g * yy - 2 * g * xy;
        if (e < least) {
            least = e;
            found = k;
        }
    }
    return found;
}

double segmentalSnr(const Vek16s* x, const Vek16s* y, int n, int segment) {
    double sum = 0;
    for (int from = 0; from < n; from += segment) {
        int64_t signal = 1;
        int64_t error = 1;
        for (int i = from; i < from + segment; ++i) {
            signal += x[i] * x[i];
            error += (x[i] - y[i]) * (x[i] - y[i]);
        }
        sum += 10 * std::log10(static_cast<double>(signal) / static_cast<double>(error));
    }
    return sum * segment / n;
}

} // namespace PLAIN_BUILD::pitch
