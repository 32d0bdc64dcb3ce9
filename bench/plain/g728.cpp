// G.728's blocks in single precision, which is how open codecs of this kind do them.
#include "plain.h"

#include <cstring>
#include <vector>

namespace {

constexpr int kOrder = 50;
constexpr int kVector = 5;
constexpr int kShapes = 128;

template <class State>
State* started(VekStatus (*size)(int*), VekStatus (*init)(State*)) {
    int bytes = 0;
    size(&bytes);
    auto* state = reinterpret_cast<State*>(new Vek8u[static_cast<size_t>(bytes)]);
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

float lpcF[kOrder];
float pastF[kOrder + 4 * kVector];
float excF[kVector];
float windowF[105];
float historyF[105];
float windowedF[105];
float correlationF[kOrder + 1];
float keptF[kOrder + 1];
float aF[kOrder];
float shapesF[kShapes][kVector];
float energiesF[kShapes];
float pnF[kVector];
float impulseF[kVector];
float weightsF[20];
float residualF[260];
float inF[15];
float outF[15];
float scaleF = 1;
volatile int found;

// Over a vector; the memory moves with it.
PLAIN void synthesise() {
    float* y = pastF + kOrder;
    for (int n = 0; n < kVector; ++n) {
        float s = excF[n];
        for (int i = 0; i < kOrder; ++i) {
            s -= lpcF[i] * y[n - 1 - i];
        }
        y[n] = s;
    }
    std::memmove(pastF, pastF + kVector, kOrder * sizeof(float));
}

PLAIN void window() {
    std::memmove(historyF, historyF + 20, 85 * sizeof(float));
    for (int i = 0; i < 20; ++i) {
        historyF[85 + i] = frame[i];
    }
    for (int i = 0; i < 105; ++i) {
        windowedF[i] = historyF[i] * windowF[i];
    }
    for (int k = 0; k <= kOrder; ++k) {
        float old = 0;
        float fresh = 0;
        for (int n = kOrder; n < kOrder + 20; ++n) {
            old += windowedF[n] * windowedF[n - k];
        }
        for (int n = kOrder + 20; n < 105; ++n) {
            fresh += windowedF[n] * windowedF[n - k];
        }
        keptF[k] = 0.75F * keptF[k] + old;
        correlationF[k] = keptF[k] + fresh;
    }
}

PLAIN void levinson(int order) {
    float e = correlationF[0];
    for (int m = 0; m < order; ++m) {
        float s = correlationF[m + 1];
        for (int i = 0; i < m; ++i) {
            s += aF[i] * correlationF[m - i];
        }
        const float k = -s / e;
        for (int i = 0; i < (m + 1) / 2; ++i) {
            const float x = aF[i];
            const float y = aF[m - 1 - i];
            aF[i] = x + k * y;
            aF[m - 1 - i] = y + k * x;
        }
        aF[m] = k;
        e *= 1 - k * k;
    }
}

PLAIN void search() {
    constexpr float g[4] = {0.515625F, 0.90234375F, 1.57910156F, 2.76342773F};
    float least = 1e30F;
    for (int j = 0; j < kShapes; ++j) {
        float p = 0;
        for (int k = 0; k < kVector; ++k) {
            p += pnF[k] * shapesF[j][k];
        }
        p = std::fabs(p);
        for (const float level : g) {
            const float d = level * (level * energiesF[j] - 2 * p);
            if (d < least) {
                least = d;
                found = j;
            }
        }
    }
}

PLAIN void filterShapes() {
    for (int j = 0; j < kShapes; ++j) {
        float e = 0;
        for (int k = 0; k < kVector; ++k) {
            float y = 0;
            for (int i = 0; i <= k; ++i) {
                y += impulseF[k - i] * shapesF[j][i];
            }
            e += y * y;
        }
        energiesF[j] = e;
    }
}

// Ten zeros and ten poles over a vector.
void zerosAndPoles(const float* __restrict x) {
    for (int n = 0; n < kVector; ++n) {
        float s = x[n];
        inF[10 + n] = x[n];
        for (int i = 0; i < 10; ++i) {
            s += weightsF[i] * inF[9 + n - i] - weightsF[10 + i] * outF[9 + n - i];
        }
        outF[10 + n] = s;
    }
    std::memmove(inF, inF + kVector, 10 * sizeof(float));
    std::memmove(outF, outF + kVector, 10 * sizeof(float));
}

PLAIN void poleZero(const float* __restrict x) {
    zerosAndPoles(x);
}

// Ten zeros alone.
PLAIN void inverse(const float* __restrict x) {
    for (int n = 0; n < kVector; ++n) {
        float s = x[n];
        inF[10 + n] = x[n];
        for (int i = 0; i < 10; ++i) {
            s += weightsF[i] * inF[9 + n - i];
        }
        outF[10 + n] = s;
    }
    std::memmove(inF, inF + kVector, 10 * sizeof(float));
}

PLAIN void postFilter() {
    float x[kVector];
    for (int n = 0; n < kVector; ++n) {
        x[n] = 0.87F * residualF[150 + n] + 0.13F * residualF[100 + n];
    }
    zerosAndPoles(x);
    float before = 0;
    float after = 0;
    for (int n = 0; n < kVector; ++n) {
        x[n] = outF[5 + n] + 0.1F * outF[4 + n];
        before += std::fabs(residualF[150 + n]);
        after += std::fabs(x[n]);
    }
    const float target = after > 1 ? before / after : 1;
    for (float& v : x) {
        scaleF = 0.99F * scaleF + 0.01F * target;
        v *= scaleF;
    }
    found = static_cast<int>(x[4]);
}

int bestLag(const float* x, int n, int from, int to) {
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
PLAIN void pitch() {
    const int coarse = bestLag(residualF + 40, 25, 5, 35);
    found = bestLag(residualF + 140, 100, std::max(4 * coarse - 3, 20), std::min(4 * coarse + 3, 140));
}

void fill(const PeerData& data) {
    for (int i = 0; i < kOrder; ++i) {
        lpcF[i] = (i == 0 ? -0.9F : 0.2F) * std::pow(-0.85F, static_cast<float>(i));
        lpc[i] = static_cast<Vek16s>(std::lround(16384 * lpcF[i]));
        correlationF[i] = std::pow(0.85F, static_cast<float>(i)) * std::cos(0.6F * static_cast<float>(i));
        r[i] = static_cast<Vek16s>(std::lround(32000 * correlationF[i]));
    }
    data.fill(frame, 20, 2000);
    for (int i = 0; i < 20; ++i) {
        weights[i] = static_cast<Vek16s>(lpc[i % 10] / (i < 10 ? 2 : 4));
        weightsF[i] = static_cast<float>(weights[i]) / 16384;
    }
    for (int i = 0; i < 4; ++i) {
        frameShifts[i] = static_cast<Vek16s>(2 + i % 2);
    }
    for (int i = 0; i < 105; ++i) {
        windowF[i] = i < 70 ? std::pow(0.9928F, static_cast<float>(70 - i)) : std::sin(0.0478F * (105.0F - i));
    }
    for (int j = 0; j < kShapes; ++j) {
        for (int k = 0; k < kVector; ++k) {
            shapesF[j][k] = static_cast<float>((j * 53 + k * 97) % 211 - 105) / 30;
        }
    }
    data.fill(residual, 260, 3000, 1);
    for (int i = 0; i < 260; ++i) {
        residualF[i] = residual[i];
    }
    for (int k = 0; k < kVector; ++k) {
        pnF[k] = pn[k];
        impulseF[k] = static_cast<float>(impulse[k]) / 8192;
        excF[k] = static_cast<float>(k * 37 % 50);
        exc[k] = static_cast<Vek16s>(8 * excF[k]);
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
        [] { veksIIR16s_G728_16s(weights, frame, speech, kVector, iir); }, [] { poleZero(residualF); });
    peerRow(
        "veksSyntesisFilterZeroInput_G728_16s", PEER_PLAIN " in float",
        [] {
            Vek16s e[kVector];
            std::memcpy(e, exc, sizeof e);
            veksSyntesisFilterZeroInput_G728_16s(lpc, e, 3, speech, &shifts, synthesis);
        },
        [] { synthesise(); });
    peerRow(
        "veksCombinedFilterZeroInput_G728_16s + veksCombinedFilterZeroState_G728_16s", PEER_PLAIN " in float",
        [] {
            Vek16s e[kVector];
            std::memcpy(e, exc, sizeof e);
            veksCombinedFilterZeroInput_G728_16s(lpc, weights, post, cascade);
            veksCombinedFilterZeroState_G728_16s(lpc, weights, e, 3, speech, &shifts, cascade);
        },
        [] {
            synthesise();
            poleZero(pastF + kOrder);
        });
    peerRow(
        "veksWinHybridBlock_G728_16s", PEER_PLAIN " in float",
        [] { veksWinHybridBlock_G728_16s(0, frame, frameShifts, r, hybrid); }, [] { window(); });
    peerRow(
        "veksWinHybrid_G728_16s", PEER_PLAIN " in float", [] { veksWinHybrid_G728_16s(0, frame, r, hybrid); },
        [] { window(); });
    fill(data);
    peerRow(
        "veksLevinsonDurbin_G728_16s_Sfs, 50", PEER_PLAIN " in float",
        [] { veksLevinsonDurbin_G728_16s_Sfs(r, 50, a, &first, &energy, &q); }, [] { levinson(50); });
    peerRow(
        "veksLevinsonDurbin_G728_16s_ISfs, 10", PEER_PLAIN " in float",
        [] { veksLevinsonDurbin_G728_16s_ISfs(r, 0, 10, a, &energy, &q); }, [] { levinson(10); });
    peerRow(
        "veksImpulseResponseEnergy_G728_16s", PEER_PLAIN " in float",
        [] { veksImpulseResponseEnergy_G728_16s(impulse, energies); }, [] { filterShapes(); });
    peerRow(
        "veksCodebookSearch_G728_16s", PEER_PLAIN " in float",
        [] { veksCodebookSearch_G728_16s(pn, energies, &shape, &gain, &word, VEK_SPCHBR_16000); }, [] { search(); });
    peerRow(
        "veksPitchPeriodExtraction_G728_16s", PEER_PLAIN " in float",
        [] {
            period = 50;
            veksPitchPeriodExtraction_G728_16s(residual + 140, &period, adapter);
        },
        [] { pitch(); });
    peerRow(
        "veksLPCInverseFilter_G728_16s", PEER_PLAIN " in float",
        [] { veksLPCInverseFilter_G728_16s(frame, a, speech, adapter); }, [] { inverse(residualF); });
    peerRow(
        "veksPostFilter_G728_16s", PEER_PLAIN " in float",
        [] { veksPostFilter_G728_16s(14247, 8548, 50, 1600, weights, residual + 150, post, postState); },
        [] { postFilter(); });
}
