// Correlations, prediction and residuals beside those of a codec for speech and music, some of them written for
// vectors.
#include "peers.h"

#include "veksc.h"

#if __has_include(<opus/opus.h>)
#include <algorithm>
#include <cmath>

extern "C" {
void celt_pitch_xcorr_c(const float* x, const float* y, float* sums, int n, int lags, int arch);
void _celt_lpc(float* lpc, const float* r, int order);
void silk_LPC_analysis_filter(int16_t* out, const int16_t* in, const int16_t* a, int32_t n, int32_t order, int arch);
double silk_inner_product_FLP(const float* a, const float* b, int n);
}

namespace {

Vek16s x[400], y[400];
alignas(64) float xF[400], zF[400];
float sums[200], r[40], a[41], k[40];
float most;
double mostWide;
int lag;

// The lags from..to of x behind it, then the largest.
void searchBack(int n, int from, int to) {
    const int lags = to - from + 1;
    celt_pitch_xcorr_c(xF + 150, xF + 150 - to, sums, n, lags, 0);
    const float* found = std::max_element(sums, sums + lags);
    most = *found;
    lag = to - static_cast<int>(found - sums);
}

} // namespace

PEER_ROWS(opus) {
    data.fill(x, 400, 1000);
    data.fill(xF, 400, 1);
    data.fill(zF, 400, 1, 1);
    for (int i = 0; i < 40; ++i) {
        r[i] = std::pow(0.85F, static_cast<float>(i)) * std::cos(0.6F * static_cast<float>(i));
    }
    peerRow(
        "veksAutoCorrLagMax_32f, 40 at lags 20..39", "opus celt_pitch_xcorr_c, then the largest",
        [] { veksAutoCorrLagMax_32f(xF + 150, 40, 20, 39, &most, &lag); }, [] { searchBack(40, 20, 39); });
    peerRow(
        "veksAutoCorrLagMax_32f, 80 at lags 20..143", "opus celt_pitch_xcorr_c, then the largest",
        [] { veksAutoCorrLagMax_32f(xF + 150, 80, 20, 143, &most, &lag); }, [] { searchBack(80, 20, 143); });
    for (const int n : {40, 80}) {
        peerRow(
            "veksCrossCorrLagMax_32f64f, " + std::to_string(n) + "x20",
            "opus celt_pitch_xcorr_c in float, then the largest",
            [n] { veksCrossCorrLagMax_32f64f(xF, zF, n, 20, &mostWide, &lag); },
            [n] {
                celt_pitch_xcorr_c(xF, zF, sums, n, 20, 0);
                const float* found = std::max_element(sums, sums + 20);
                mostWide = *found;
                lag = static_cast<int>(found - sums);
            });
    }
    for (const int n : {12, 40, 80}) {
        peerRow(
            "veksDotProd_G729A_32f, " + std::to_string(n), "opus silk_inner_product_FLP",
            [n] { veksDotProd_G729A_32f(xF, zF, n, &most); },
            [n] { most = static_cast<float>(silk_inner_product_FLP(xF, zF, n)); });
    }
    for (const int order : {10, 20, 30}) {
        if (order <= 20) {
            peerRowOnce(
                "veksLevinsonDurbin_RTA_32f, " + std::to_string(order), "opus _celt_lpc",
                [order] { veksLevinsonDurbin_RTA_32f(r, a, k, order); }, [order] { _celt_lpc(a, r, order); });
        }
        peerRowOnce(
            "veksLevinsonDurbin_G729_32f, " + std::to_string(order), "opus _celt_lpc",
            [order] { veksLevinsonDurbin_G729_32f(r, order, a, k, &most); }, [order] { _celt_lpc(a, r, order); });
    }
    // Theirs has no leading coefficient and makes zeros of the samples that have no whole past.
    static Vek16s lpc[17] = {4096, -5200, 1900, 1300, -900, -500, 800, -300, -200, 200, -50};
    static int16_t predictor[16];
    for (int j = 0; j < 16; ++j) {
        predictor[j] = static_cast<int16_t>(-lpc[j + 1]);
    }
    peerRow(
        "veksResidualFilter_G729_16s, 40", "opus silk_LPC_analysis_filter",
        [] { veksResidualFilter_G729_16s(x + 10, lpc, y); },
        [] { silk_LPC_analysis_filter(y, x, predictor, 50, 10, 0); });
    for (const int n : {64, 256}) {
        peerRow(
            "veksResidualFilter_AMRWB_16s_Sfs, " + std::to_string(n), "opus silk_LPC_analysis_filter",
            [n] { veksResidualFilter_AMRWB_16s_Sfs(lpc, 16, x + 16, y, n, 12); },
            [n] { silk_LPC_analysis_filter(y, x, predictor, n + 16, 16, 0); });
    }
}
#endif
