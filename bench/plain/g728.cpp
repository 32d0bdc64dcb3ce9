#include "peers.h"

#include "plain/g728.h"

#include "veksc.h"

#include <cstring>

using namespace PLAIN_BUILD::g728;

namespace {

template <class Object>
Object* started(VekStatus (*size)(int*), VekStatus (*init)(Object*)) {
    int bytes = 0;
    size(&bytes);
    auto* state = reinterpret_cast<Object*>(new Vek8u[static_cast<size_t>(bytes)]);
    init(state);
    return state;
}

Vek16s lpc[kOrder];
Vek16s weights[20];
Vek16s exc[kVector];
Vek16s speech[kVector];
Vek16s shifts;
Vek16s frame[20];
Vek16s frameShifts[4];
Vek16s r[kOrder + 1];
Vek16s a[kOrder];
Vek16s first;
Vek16s q;
Vek32s energy;
Vek16s impulse[kVector] = {8192, 5000, 2000, -900, -1500};
Vek16s energies[kShapes];
Vek16s pn[kVector] = {700, -420, 300, 150, -90};
Vek16s shape;
Vek16s gain;
Vek16s word;
Vek16s residual[260];
int period;
Vek16s post[kVector];

State loops;
volatile int found;

void fill(const PeerData& data) {
    for (int i = 0; i < kOrder; ++i) {
        loops.lpc[i] = (i == 0 ? -0.9F : 0.2F) * std::pow(-0.85F, static_cast<float>(i));
        lpc[i] = static_cast<Vek16s>(std::lround(16384 * loops.lpc[i]));
        loops.correlation[i] = std::pow(0.85F, static_cast<float>(i)) * std::cos(0.6F * static_cast<float>(i));
        r[i] = static_cast<Vek16s>(std::lround(32000 * loops.correlation[i]));
    }
    data.fill(frame, 20, 2000);
    for (int i = 0; i < 20; ++i) {
        weights[i] = static_cast<Vek16s>(lpc[i % 10] / (i < 10 ? 2 : 4));
        loops.weights[i] = static_cast<float>(weights[i]) / 16384;
    }
    for (int i = 0; i < 4; ++i) {
        frameShifts[i] = static_cast<Vek16s>(2 + i % 2);
    }
    for (int i = 0; i < 105; ++i) {
        loops.window[i] = i < 70 ? std::pow(0.9928F, static_cast<float>(70 - i)) : std::sin(0.0478F * (105.0F - i));
    }
    for (int j = 0; j < kShapes; ++j) {
        for (int k = 0; k < kVector; ++k) {
            loops.shapes[j][k] = static_cast<float>((j * 53 + k * 97) % 211 - 105) / 30;
        }
    }
    data.fill(residual, 260, 3000, 1);
    for (int i = 0; i < 260; ++i) {
        loops.residual[i] = residual[i];
    }
    for (int k = 0; k < kVector; ++k) {
        loops.pn[k] = pn[k];
        loops.impulse[k] = static_cast<float>(impulse[k]) / 8192;
        loops.exc[k] = static_cast<float>(k * 37 % 50);
        exc[k] = static_cast<Vek16s>(8 * loops.exc[k]);
    }
}

} // namespace

PEER_ROWS(plaing728) {
    fill(data);
    static auto* iir = started(veksIIR16sGetStateSize_G728_16s, veksIIR16sInit_G728_16s);
    static auto* synthesis = started(veksSynthesisFilterGetStateSize_G728_16s, veksSynthesisFilterInit_G728_16s);
    static auto* cascade = started(veksCombinedFilterGetStateSize_G728_16s, veksCombinedFilterInit_G728_16s);
    static auto* adapter = started(veksPostFilterAdapterGetStateSize_G728, veksPostFilterAdapterInit_G728);
    static auto* postState = started(veksPostFilterGetStateSize_G728_16s, veksPostFilterInit_G728_16s);
    static auto* hybrid = started<VeksWinHybridState_G728>(veksWinHybridGetStateSize_G728_16s, [](auto* state) {
        return veksWinHybridInit_G728_16s(VEK_G728_WINDOW_SYNTHESIS, state);
    });
    peerRow(
        "veksIIR16s_G728_16s", PEER_PLAIN " in float",
        [] { veksIIR16s_G728_16s(weights, frame, speech, kVector, iir); }, [] { poleZero(loops, loops.residual); });
    peerRow(
        "veksSyntesisFilterZeroInput_G728_16s", PEER_PLAIN " in float",
        [] {
            Vek16s e[kVector];
            std::memcpy(e, exc, sizeof e);
            veksSyntesisFilterZeroInput_G728_16s(lpc, e, 3, speech, &shifts, synthesis);
        },
        [] { synthesise(loops); });
    peerRow(
        "veksCombinedFilterZeroInput_G728_16s + veksCombinedFilterZeroState_G728_16s", PEER_PLAIN " in float",
        [] {
            Vek16s e[kVector];
            std::memcpy(e, exc, sizeof e);
            veksCombinedFilterZeroInput_G728_16s(lpc, weights, post, cascade);
            veksCombinedFilterZeroState_G728_16s(lpc, weights, e, 3, speech, &shifts, cascade);
        },
        [] {
            synthesise(loops);
            poleZero(loops, loops.past + kOrder);
        });
    peerRow(
        "veksWinHybridBlock_G728_16s", PEER_PLAIN " in float",
        [] { veksWinHybridBlock_G728_16s(0, frame, frameShifts, r, hybrid); }, [] { window(loops, frame); });
    peerRow(
        "veksWinHybrid_G728_16s", PEER_PLAIN " in float", [] { veksWinHybrid_G728_16s(0, frame, r, hybrid); },
        [] { window(loops, frame); });
    fill(data);
    peerRow(
        "veksLevinsonDurbin_G728_16s_Sfs, 50", PEER_PLAIN " in float",
        [] { veksLevinsonDurbin_G728_16s_Sfs(r, 50, a, &first, &energy, &q); }, [] { levinson(loops, 50); });
    peerRow(
        "veksLevinsonDurbin_G728_16s_ISfs, 10", PEER_PLAIN " in float",
        [] { veksLevinsonDurbin_G728_16s_ISfs(r, 0, 10, a, &energy, &q); }, [] { levinson(loops, 10); });
    peerRow(
        "veksImpulseResponseEnergy_G728_16s", PEER_PLAIN " in float",
        [] { veksImpulseResponseEnergy_G728_16s(impulse, energies); }, [] { filterShapes(loops); });
    peerRow(
        "veksCodebookSearch_G728_16s", PEER_PLAIN " in float",
        [] { veksCodebookSearch_G728_16s(pn, energies, &shape, &gain, &word, VEK_SPCHBR_16000); },
        [] { found = search(loops); });
    peerRow(
        "veksPitchPeriodExtraction_G728_16s", PEER_PLAIN " in float",
        [] {
            period = 50;
            veksPitchPeriodExtraction_G728_16s(residual + 140, &period, adapter);
        },
        [] { found = pitch(loops); });
    peerRow(
        "veksLPCInverseFilter_G728_16s", PEER_PLAIN " in float",
        [] { veksLPCInverseFilter_G728_16s(frame, a, speech, adapter); }, [] { inverse(loops, loops.residual); });
    peerRow(
        "veksPostFilter_G728_16s", PEER_PLAIN " in float",
        [] { veksPostFilter_G728_16s(14247, 8548, 50, 1600, weights, residual + 150, post, postState); },
        [] { found = postFilter(loops); });
}
