#include "peers.h"

#include "plain/signal.h"

#include "veksc.h"

using namespace PLAIN_BUILD::signal;

namespace {

Vek16s h[100];
// None of these lies across two pages: short calls would take some 30 clocks more.
alignas(1024) Vek16s x[400], z[400], y[400];
alignas(1024) Vek32s r[100];
alignas(2048) float xF[400], zF[400];
Vek32s sum;
float sumF;
int shift;

} // namespace

PEER_ROWS(plainsignal) {
    data.fill(x, xF, 400, 1000);
    data.fill(z, zF, 400, 1000, 1);
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
                normaliseByLargest(r, n, 12);
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
