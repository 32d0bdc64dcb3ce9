#include "peers.h"

#include "plain/pitch.h"

#include "veksc.h"

using namespace PLAIN_BUILD::pitch;

namespace {

Vek16s x[1600], z[1600], y[1600];
float xF[400], zF[400], yF[400], r[40], a[40], k[40];
Vek32s most, wide[1000];
float mostF;
float kept[31], firsts[8][2], seconds[16][2];
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
        [] { hybrid(xF, window, kept, yF); });
    peerRow(
        "veksWinHybrid_G729E_16s32s", std::string(PEER_PLAIN) + " in float",
        [] { veksWinHybrid_G729E_16s32s(x, wide, state); },
        [] {
            toFloat(x, yF, 145);
            hybrid(yF, window, kept, yF + 200);
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
        firsts[i % 8][0] = 0.05F * static_cast<float>(i % 8);
        firsts[i % 8][1] = 0.3F * static_cast<float>(i % 8);
        seconds[i][0] = 0.06F * static_cast<float>(i);
        seconds[i][1] = 0.1F * static_cast<float>(i);
    }
    static const float terms[5] = {9e6F, -1.4e7F, 4e6F, -5e6F, 2e6F};
    static const Vek16s first[2] = {1, 1};
    static Vek16s found[2];
    peerRow(
        "veksGainCodebookSearch_G729_32f", PEER_PLAIN,
        [] { veksGainCodebookSearch_G729_32f(terms, first, found, 0, 2); },
        [] { lag = leastError(firsts, seconds, terms, 1, 1, 4, 8, 2); });
    peerRow(
        "veksGainCodebookSearch_G729D_32f", PEER_PLAIN,
        [] { veksGainCodebookSearch_G729D_32f(terms, first, found, 0, 2); },
        [] { lag = leastError(firsts, seconds, terms, 1, 1, 6, 6, 2); });
}
