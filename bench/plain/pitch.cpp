// Searches for the largest correlation, matrices of correlations, linear prediction and codebook sums by their
// definitions.
#include "plain.h"

namespace {

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
PLAIN int bestForward(const Vek16s* x, int n, int from, int to, Vek32s* most) {
    return best(x, x, n, from, to, 1, most);
}
PLAIN int bestBack(const Vek16s* x, int n, int from, int to, Vek32s* most) {
    return best(x, x, n, from, to, -1, most);
}
PLAIN int bestOfTwo(const Vek16s* a, const Vek16s* b, int n, int lags, Vek32s* most) {
    return best(a, b, n, 0, lags - 1, 1, most);
}
PLAIN int bestBackF(const float* x, int n, int from, int to, float* most) {
    return best(x, x, n, from, to, -1, most);
}
PLAIN int bestOfTwoF(const float* a, const float* b, int n, int lags, double* most) {
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
PLAIN void matrix40(const Vek32s* h, Vek32s (*phi)[40]) {
    matrix<Vek32s, 40, 1>(h, phi);
}
PLAIN void matrix40F(const float* h, float (*phi)[40]) {
    matrix<float, 40, 1>(h, phi);
}
PLAIN void matrix60(const Vek32s* h, Vek32s (*phi)[60]) {
    matrix<Vek32s, 60, 2>(h, phi);
}
PLAIN void upper(const Vek32s* from, Vek16s* to, int n) {
    for (int i = 0; i < n; ++i) {
        to[i] = static_cast<Vek16s>(from[i] >> 16);
    }
}

PLAIN void levinson(const float* r, int order, float* a, float* k, float* left) {
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
PLAIN void pairsToFilter(const float* lsp, float* a) {
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
PLAIN void delayed(float* y, int delay, const float* taps) {
    for (int i = 0; i < 40; ++i) {
        float sum = 0;
        for (int j = 0; j < 10; ++j) {
            sum += y[i - delay - j] * taps[1 + 3 * j] + y[i - delay + 1 + j] * taps[2 + 3 * j];
        }
        y[i] = sum;
    }
}

PLAIN void noise(uint16_t* seed, float* y, int n) {
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
float g_kept[31];
PLAIN void hybrid(const float* x, const float* window, float* r) {
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
        g_kept[k] = 0.5625F * g_kept[k] + old;
        r[k] = g_kept[k] + fresh;
    }
}

PLAIN void toFloat(const Vek16s* x, float* y, int n) {
    for (int i = 0; i < n; ++i) {
        y[i] = x[i];
    }
}
PLAIN void normalised(const float* r, Vek32s* y, int n) {
    const float scale = 1.9e9F / std::max(r[0], 1.0F);
    for (int i = 0; i < n; ++i) {
        y[i] = static_cast<Vek32s>(r[i] * scale);
    }
}

// The pair of 4 and 8 candidates of the least error, which is quadratic in both gains.
float g_first[8][2];
float g_second[16][2];
PLAIN int leastError(const float* c, int from, int other, int firsts, int seconds, float predicted) {
    int found = 0;
    float least = 1e30F;
    for (int i = from; i < from + firsts; ++i) {
        for (int j = other; j < other + seconds; ++j) {
            const float p = g_first[i][0] + g_second[j][0];
            const float g = predicted * (g_first[i][1] + g_second[j][1]);
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
PLAIN int level(const Vek16s* x, const Vek16s* y, float gain, int levels) {
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

PLAIN double segmentalSnr(const Vek16s* x, const Vek16s* y, int n, int segment) {
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

Vek16s x[1600], z[1600], y[1600];
float xF[400], zF[400], yF[400], r[40], a[40], k[40];
Vek32s most, wide[1000];
float mostF;
double mostD;
int lag;

} // namespace

PEER_ROWS(plainpitch) {
    data.fill(x, 1600, 1000);
    data.fill(z, 1600, 900, 1);
    data.fill(xF, 400, 1);
    data.fill(zF, 400, 1, 1);
    const struct { int n, from, to; } ranges[] = {{40, 20, 39}, {80, 40, 79}, {80, 20, 143}};
    for (const auto& range : ranges) {
        const int n = range.n;
        const int from = range.from;
        const int to = range.to;
        const std::string size =
            ", " + std::to_string(n) + " at lags " + std::to_string(from) + ".." + std::to_string(to);
        peerRow(
            "veksAutoCorrLagMax_Fwd_16s" + size, PEER_PLAIN,
            [=] { veksAutoCorrLagMax_Fwd_16s(x, n, from, to, &most, &lag); },
            [=] { lag = bestForward(x, n, from, to, &most); });
        peerRow(
            "veksAutoCorrLagMax_Inv_16s" + size, PEER_PLAIN,
            [=] { veksAutoCorrLagMax_Inv_16s(x + 150, n, from, to, &most, &lag); },
            [=] { lag = bestBack(x + 150, n, from, to, &most); });
        peerRow(
            "veksAutoCorrLagMax_32f" + size, PEER_PLAIN,
            [=] { veksAutoCorrLagMax_32f(xF + 150, n, from, to, &mostF, &lag); },
            [=] { lag = bestBackF(xF + 150, n, from, to, &mostF); });
    }
    for (const int n : {40, 80}) {
        peerRow(
            "veksCrossCorrLagMax_32f64f, " + std::to_string(n) + "x20", PEER_PLAIN,
            [n] { veksCrossCorrLagMax_32f64f(xF, zF, n, 20, &mostD, &lag); },
            [n] { lag = bestOfTwoF(xF, zF, n, 20, &mostD); });
    }
    peerRow(
        "veksCrossCorrLagMax_16s, 40x81", PEER_PLAIN, [] { veksCrossCorrLagMax_16s(x, z, 40, 81, &most, &lag); },
        [] { lag = bestOfTwo(x, z, 40, 81, &most); });
    static const float taps[34] = {0.9F, 0.8F, 0.5F, 0.1F, -0.1F, -0.2F, 0.1F};
    static const Vek32s delay[2] = {60, 1};
    peerRow(
        "veksDecodeAdaptiveVector_G729_32f_I", PEER_PLAIN, [] { veksDecodeAdaptiveVector_G729_32f_I(delay, xF + 154); },
        [] { delayed(xF + 154, 60, taps); });
}

PEER_ROWS(plainprediction) {
    data.fill(x, 1600, 1000);
    data.fill(z, 1600, 900, 1);
    data.fill(xF, 400, 1);
    for (int i = 0; i < 40; ++i) {
        r[i] = std::pow(0.85F, static_cast<float>(i)) * std::cos(0.6F * static_cast<float>(i));
    }
    for (const int order : {10, 20, 30}) {
        peerRow(
            "veksLevinsonDurbin_G729_32f, " + std::to_string(order), PEER_PLAIN,
            [order] { veksLevinsonDurbin_G729_32f(r, order, a, k, &mostF); },
            [order] { levinson(r, order, a, k, &mostF); });
    }
    static float window[145];
    for (int i = 0; i < 145; ++i) {
        window[i] =
            i >= 110 ? std::sin(0.0478F * static_cast<float>(145 - i)) : std::pow(0.993F, static_cast<float>(110 - i));
    }
    static Vek8u state[4096];
    static Vek8u stateF[4096];
    veksWinHybridInit_G729E_16s(state);
    veksWinHybridInit_G729E_32f(stateF);
    peerRow(
        "veksWinHybrid_G729E_32f", PEER_PLAIN, [] { veksWinHybrid_G729E_32f(xF, yF, stateF); },
        [] { hybrid(xF, window, yF); });
    peerRow(
        "veksWinHybrid_G729E_16s32s", std::string(PEER_PLAIN) + " in float",
        [] { veksWinHybrid_G729E_16s32s(x, wide, state); },
        [] {
            toFloat(x, yF, 145);
            hybrid(yF, window, yF + 200);
            normalised(yF + 200, wide, 31);
        });
    for (const int n : {256, 1536}) {
        static Vek16s snr;
        peerRow(
            "veksSNR_AMRWBE_16s, " + std::to_string(n), PEER_PLAIN, [n] { veksSNR_AMRWBE_16s(x, z, n, 64, &snr); },
            [n] { mostD = segmentalSnr(x, z, n, 64); });
    }
    static Vek16s index;
    static Vek16s gain;
    for (const Vek16s subframe : {Vek16s{1}, Vek16s{2}}) {
        peerRow(
            "veksGainQuant_G7291_16s, subframe " + std::to_string(subframe), PEER_PLAIN,
            [subframe] { veksGainQuant_G7291_16s(x, z, 1000, &index, &gain, subframe); },
            [subframe] { lag = level(x, z, 1000, subframe == 1 ? 8 : 4); });
    }
}

PEER_ROWS_ONCE(plaincodebook) {
    static const float lsp[10] = {0.95F, 0.85F, 0.65F, 0.42F, 0.15F, -0.14F, -0.41F, -0.64F, -0.84F, -0.94F};
    peerRow(
        "veksLSPToLPC_G729_32f", PEER_PLAIN, [] { veksLSPToLPC_G729_32f(lsp, a); }, [] { pairsToFilter(lsp, a); });
    static Vek16s seed = 1000;
    static uint16_t theirSeed = 1000;
    for (const int n : {40, 80}) {
        peerRow(
            "veksRandomNoiseExcitation_G729B_16s32f, " + std::to_string(n), PEER_PLAIN,
            [n] { veksRandomNoiseExcitation_G729B_16s32f(&seed, yF, n); }, [n] { noise(&theirSeed, yF, n); });
    }
    static Vek32s h[60];
    static float hF[40];
    for (int i = 0; i < 60; ++i) {
        x[i] = static_cast<Vek16s>(4096 * std::pow(0.85, i) * std::cos(0.6 * i));
        h[i] = x[i];
    }
    for (int i = 0; i < 40; ++i) {
        hF[i] = x[i];
    }
    static Vek32s phi40[40][40];
    static Vek32s phi60[60][60];
    static float phiF[40][40];
    peerRow(
        "veksToeplizMatrix_G729_16s32s", PEER_PLAIN, [] { veksToeplizMatrix_G729_16s32s(x, wide); },
        [] { matrix40(h, phi40); });
    peerRow(
        "veksToeplizMatrix_G729_16s", PEER_PLAIN, [] { veksToeplizMatrix_G729_16s(x, y); },
        [] {
            matrix40(h, phi40);
            upper(phi40[0], y, 616);
        });
    peerRow(
        "veksToeplizMatrix_G729_32f", PEER_PLAIN,
        [] {
            static float made[616];
            veksToeplizMatrix_G729_32f(hF, made);
        },
        [] { matrix40F(hF, phiF); });
    peerRow(
        "veksToeplizMatrix_G723_16s32s", PEER_PLAIN, [] { veksToeplizMatrix_G723_16s32s(x, wide); },
        [] { matrix60(h, phi60); });
    peerRow(
        "veksToeplizMatrix_G723_16s", PEER_PLAIN, [] { veksToeplizMatrix_G723_16s(x, y); },
        [] {
            matrix60(h, phi60);
            upper(phi60[0], y, 416);
        });
    for (int i = 0; i < 16; ++i) {
        g_first[i % 8][0] = 0.05F * static_cast<float>(i % 8);
        g_first[i % 8][1] = 0.3F * static_cast<float>(i % 8);
        g_second[i][0] = 0.06F * static_cast<float>(i);
        g_second[i][1] = 0.1F * static_cast<float>(i);
    }
    static const float terms[5] = {9e6F, -1.4e7F, 4e6F, -5e6F, 2e6F};
    static const Vek16s first[2] = {1, 1};
    static Vek16s found[2];
    peerRow(
        "veksGainCodebookSearch_G729_32f", PEER_PLAIN,
        [] { veksGainCodebookSearch_G729_32f(terms, first, found, 0, 2); },
        [] { lag = leastError(terms, 1, 1, 4, 8, 2); });
    peerRow(
        "veksGainCodebookSearch_G729D_32f", PEER_PLAIN,
        [] { veksGainCodebookSearch_G729D_32f(terms, first, found, 0, 2); },
        [] { lag = leastError(terms, 1, 1, 6, 6, 2); });
}
