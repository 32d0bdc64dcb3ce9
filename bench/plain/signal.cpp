// Correlation, convolution, products and scaling by their definitions, which hold for any data: inner products are
// exact, then saturated or brought to 32 bits; correlations look at the energies before they count in 32 bits.
// Convolutions count so without a look, as the data leave them room.
#include "plain.h"

namespace {

int64_t exactDot(const Vek16s* a, const Vek16s* b, int n) {
    int64_t sum = 0;
    for (int i = 0; i < n; ++i) {
        sum += a[i] * b[i];
    }
    return sum;
}

PLAIN int32_t dot(const Vek16s* a, const Vek16s* b, int n) {
    return static_cast<int32_t>(std::clamp<int64_t>(exactDot(a, b, n), INT32_MIN, INT32_MAX));
}

PLAIN int32_t scaledDot(const Vek16s* a, const Vek16s* b, int n, int* drop) {
    const int64_t sum = exactDot(a, b, n);
    *drop = 0;
    while (sum >> *drop != static_cast<int32_t>(sum >> *drop)) {
        ++*drop;
    }
    return static_cast<int32_t>(sum >> *drop);
}

PLAIN float dotF(const float* a, const float* b, int n) {
    float sum = 0;
    for (int i = 0; i < n; ++i) {
        sum += a[i] * b[i];
    }
    return sum;
}

// sum of a[i] * b[i - k], of which the autocorrelation is the case of a = b. The energies tell whether 32 bits hold the
// sums, as they do here.
PLAIN void correlate(const Vek16s* a, const Vek16s* b, int n, int32_t* d, int lags) {
    const auto energyA = static_cast<double>(exactDot(a, a, n));
    const double energyB = a == b ? energyA : static_cast<double>(exactDot(b, b, n));
    if (energyA * energyB > 4.6e18) {
        for (int k = 0; k < lags; ++k) {
            d[k] = dot(a + k, b, n - k);
        }
        return;
    }
    for (int k = 0; k < lags; ++k) {
        int32_t sum = 0;
        for (int i = k; i < n; ++i) {
            sum += a[i] * b[i - k];
        }
        d[k] = sum;
    }
}

// Brings d to where d[0], or its largest magnitude, has its top bit at `top`.
PLAIN void normalise(int32_t* d, int n, int32_t most, int top) {
    const int shift = most == 0 ? 0 : top + 1 - (32 - __builtin_clz(static_cast<unsigned>(most)));
    for (int k = 0; k < n; ++k) {
        d[k] = shift > 0 ? d[k] << shift : d[k] >> -shift;
    }
}

PLAIN void high(const int32_t* d, Vek16s* y, int n, int shift) {
    for (int k = 0; k < n; ++k) {
        y[k] = rounded(d[k], shift);
    }
}

int32_t largest(const int32_t* d, int n) {
    int32_t most = 0;
    for (int k = 0; k < n; ++k) {
        most = std::max(most, std::abs(d[k]));
    }
    return most;
}

// Sample by sample of x, which compilers vectorise better than output by output.
PLAIN void convolve(const Vek16s* x, const Vek16s* h, int32_t* y, int n) {
    std::fill_n(y, n, 0);
    for (int i = 0; i < n; ++i) {
        for (int k = 0; k < n - i; ++k) {
            y[i + k] += x[i] * h[k];
        }
    }
}

PLAIN void convolve16(const Vek16s* x, const Vek16s* h, Vek16s* y, int n, int shift, int half) {
    int32_t sums[80];
    convolve(x, h, sums, n);
    for (int k = 0; k < n; ++k) {
        y[k] = narrow((sums[k] + half) >> shift);
    }
}

PLAIN int scaled(const Vek16s* x, Vek16s* y, int n, int bits) {
    int most = 0;
    for (int i = 0; i < n; ++i) {
        most = std::max<int>(most, x[i] < 0 ? ~x[i] : x[i]);
    }
    const int shift = most == 0 ? 0 : __builtin_clz(static_cast<unsigned>(most)) - 17 - bits;
    for (int i = 0; i < n; ++i) {
        y[i] = static_cast<Vek16s>(shift > 0 ? x[i] * (1 << shift) : x[i] >> -shift);
    }
    return shift;
}

Vek16s x[400], z[400], h[100], y[400];
Vek32s r[100];
float xF[400], zF[400];
Vek32s sum;
float sumF;
int shift;

} // namespace

PEER_ROWS(plainsignal) {
    data.fill(x, 400, 1000);
    data.fill(z, 400, 1000, 1);
    data.fill(xF, 400, 1);
    data.fill(zF, 400, 1, 1);
    for (int i = 0; i < 100; ++i) {
        h[i] = static_cast<Vek16s>(4096 * std::pow(0.85, i) * std::cos(0.6 * i));
    }
    for (const int n : {40, 60, 100}) {
        peerRow(
            "veksDotProd_G729A_16s32s, " + std::to_string(n), PEER_PLAIN,
            [n] { veksDotProd_G729A_16s32s(x, z, n, &sum); }, [n] { sum = dot(x, z, n); });
    }
    for (const int n : {80, 223}) {
        peerRow(
            "veksDotProdAutoScale_16s32s_Sfs, " + std::to_string(n), PEER_PLAIN,
            [n] { veksDotProdAutoScale_16s32s_Sfs(x, z, n, &sum, &shift); }, [n] { sum = scaledDot(x, z, n, &shift); });
    }
    for (const int n : {12, 40, 80}) {
        peerRow(
            "veksDotProd_G729A_32f, " + std::to_string(n), PEER_PLAIN, [n] { veksDotProd_G729A_32f(xF, zF, n, &sumF); },
            [n] { sumF = dotF(xF, zF, n); });
    }
    const struct { int n, lags; } frames[] = {{40, 4}, {160, 9}, {240, 12}};
    for (const auto& frame : frames) {
        const int n = frame.n;
        const int lags = frame.lags;
        const std::string size = ", " + std::to_string(n) + "x" + std::to_string(lags);
        peerRow(
            "veksAutoCorr_16s32s" + size, PEER_PLAIN, [=] { veksAutoCorr_16s32s(x, n, r, lags); },
            [=] { correlate(x, x, n, r, lags); });
        peerRow(
            "veksAutoCorr_NormE_16s32s" + size, PEER_PLAIN, [=] { veksAutoCorr_NormE_16s32s(x, n, r, lags, &shift); },
            [=] {
                correlate(x, x, n, r, lags);
                normalise(r, lags, r[0], 30);
            });
        peerRow(
            "veksAutoCorr_NormE_NR_16s" + size, PEER_PLAIN, [=] { veksAutoCorr_NormE_NR_16s(x, n, y, lags, &shift); },
            [=] {
                correlate(x, x, n, r, lags);
                normalise(r, lags, r[0], 30);
                high(r, y, lags, 16);
            });
        peerRow(
            "veksCrossCorr_NR_16s" + size, PEER_PLAIN, [=] { veksCrossCorr_NR_16s(x, z, n, y, lags); },
            [=] {
                correlate(x, z, n, r, lags);
                high(r, y, lags, 15);
            });
    }
    peerRow(
        "veksAutoCorr_NormE_G723_16s, 180x10", PEER_PLAIN, [] { veksAutoCorr_NormE_G723_16s(x, y, &shift); },
        [] {
            correlate(x, x, 180, r, 10);
            normalise(r, 10, r[0], 30);
            high(r, y, 10, 16);
        });
    for (const int n : {40, 80}) {
        const std::string size = ", " + std::to_string(n);
        peerRow(
            "veksCrossCorr_16s32s_Sfs" + size, PEER_PLAIN, [n] { veksCrossCorr_16s32s_Sfs(x, h, n, r, 0); },
            [n] { correlate(x, h, n, r, n); });
        peerRow(
            "veksCrossCorr_NormM_16s" + size, PEER_PLAIN, [n] { veksCrossCorr_NormM_16s(x, h, n, y); },
            [n] {
                correlate(x, h, n, r, n);
                normalise(r, n, largest(r, n), 12);
                high(r, y, n, 0);
            });
        peerRow(
            "veksConvPartial_16s_Sfs" + size, PEER_PLAIN, [n] { veksConvPartial_16s_Sfs(x, h, y, n, 12); },
            [n] { convolve16(x, h, y, n, 12, 0); });
        peerRow(
            "veksConvPartial_NR_16s" + size, PEER_PLAIN, [n] { veksConvPartial_NR_16s(x, h, y, n); },
            [n] { convolve16(x, h, y, n, 15, 1 << 14); });
    }
    for (const int n : {10, 20, 40}) {
        peerRow(
            "veksConvPartial_16s32s, " + std::to_string(n), PEER_PLAIN, [n] { veksConvPartial_16s32s(x, h, r, n); },
            [n] { convolve(x, h, r, n); });
    }
    for (const int n : {60, 80, 385}) {
        const std::string size = ", " + std::to_string(n);
        peerRow(
            "veksAutoScale_16s" + size, PEER_PLAIN,
            [n] {
                shift = 2;
                veksAutoScale_16s(x, y, n, &shift);
            },
            [n] { shift = scaled(x, y, n, 2); });
        peerRow(
            "veksAutoScale_16s_I" + size, PEER_PLAIN,
            [n] {
                std::copy_n(x, n, y);
                shift = 2;
                veksAutoScale_16s_I(y, n, &shift);
            },
            [n] {
                std::copy_n(x, n, y);
                shift = scaled(y, y, n, 2);
            });
    }
}
