// Float steps of the real-time audio codec and of G.729 beside those of another float codec.
#include "peers.h"

#include "veks.h"
#include "veksc.h"

#include <algorithm>
#include <cmath>

#if __has_include(<speex/speex.h>)
#include "rta_steps.h"

PEER_ROWS(rta) {
    alignas(16) static char stack[1 << 16];
    static Vek32f r[17];
    static Vek32f a[17];
    static Vek32f rc[16];
    static Vek32f lsp[16];
    static Vek32f out[17];
    static Vek32f a10[11];
    static Vek32f x[320];
    static Vek32f y[320];
    static Vek32f low[40];
    static Vek32f high[40];
    static Vek32f memory[64];
    static Vek32f memory2[64];
    static Vek32f taps[64];
    static Vek32f small[3][10];
    data.fill(x, 320, 4000);
    std::fill_n(r, 17, 0.0F);
    for (int k = 0; k <= 16; ++k) {
        for (int i = k; i < 320; ++i) {
            r[k] += x[i] * x[i - k];
        }
    }
    veksLevinsonDurbin_RTA_32f(r, a10, rc, 10);
    peerRow(
        "veksLevinsonDurbin_RTA_32f, 10", "speex _spx_lpc", [] { veksLevinsonDurbin_RTA_32f(r, out, rc, 10); },
        [] { _spx_lpc(out, r, 10); });
    static Vek32f left;
    peerRow(
        "veksLevinsonDurbin_G729_32f, 10", "speex _spx_lpc", [] { veksLevinsonDurbin_G729_32f(r, 10, out, rc, &left); },
        [] { _spx_lpc(out, r, 10); });
    static const Vek32f cosines[10] = {0.95F, 0.85F, 0.65F, 0.42F, 0.15F, -0.14F, -0.41F, -0.64F, -0.84F, -0.94F};
    peerRow(
        "veksLPCToLSP_G729_32f", "speex lpc_to_lsp", [] { veksLPCToLSP_G729_32f(a10, cosines, lsp); },
        [] { lpc_to_lsp(a10 + 1, 10, lsp, 4, 0.05F, stack); });
    peerRow(
        "veksLPCToLSP_G729A_32f", "speex lpc_to_lsp", [] { veksLPCToLSP_G729A_32f(a10, cosines, lsp); },
        [] { lpc_to_lsp(a10 + 1, 10, lsp, 2, 0.06F, stack); });
    veksLevinsonDurbin_RTA_32f(r, a, rc, 16);
    peerRow(
        "veksLPCToLSP_RTA_32f, 10", "speex lpc_to_lsp", [] { veksLPCToLSP_RTA_32f(a10, lsp, 10); },
        [] { lpc_to_lsp(a10 + 1, 10, lsp, 10, 0.2F, stack); });
    peerRow(
        "veksLPCToLSP_RTA_32f, 16", "speex lpc_to_lsp", [] { veksLPCToLSP_RTA_32f(a, lsp, 16); },
        [] { lpc_to_lsp(a + 1, 16, lsp, 15, 0.02F, stack); });
    veksLPCToLSP_RTA_32f(a, lsp, 16);
    peerRow(
        "veksLSPToLPC_RTA_32f, 16", "speex lsp_to_lpc", [] { veksLSPToLPC_RTA_32f(lsp, out, 16); },
        [] { lsp_to_lpc(lsp, out, 16, stack); });
    for (int i = 0; i < 64; ++i) {
        taps[i] = static_cast<float>(std::sin(1.6 * (i - 31.5)) / (i - 31.5) / 3);
    }
    static auto* state = peerState<VeksQMFState_RTA_32f>(veksQMFGetStateSize_RTA_32f);
    veksQMFInit_RTA_32f(state);
    for (const int n : {20, 40, 80}) {
        peerRow(
            "veksQMFEncode_RTA_32f, " + std::to_string(n), "speex qmf_decomp, 64 taps",
            [n] { veksQMFEncode_RTA_32f(x, n, low, high, state); },
            [n] { qmf_decomp(x, taps, low, high, n, 64, memory, stack); });
    }
    veksQMFInit_RTA_32f(state);
    peerRow(
        "veksQMFDecode_RTA_32f, 80", "speex qmf_synth, 64 taps", [] { veksQMFDecode_RTA_32f(x, x + 40, 40, y, state); },
        [] { qmf_synth(x, x + 40, taps, y, 80, 64, memory, memory2, stack); });
    // Its filters have orders 8 and 10 alone.
    small[1][0] = -1.5F;
    small[1][1] = 0.7F;
    static Vek32f states[12];
    static Vek32f speech[320];
    for (const int n : {80, 160, 320}) {
        peerRow(
            "veksHighPassFilter_RTA_32f, " + std::to_string(n), "speex filter_mem16, order 8",
            [n] { veksHighPassFilter_RTA_32f(x, y, n, 5, VEK_PCM_FREQ_8000, states); },
            [n] { filter_mem16(x, small[0], small[1], y, n, 8, small[2], stack); });
        peerRow(
            "veksBandPassFilter_RTA_32f_I, " + std::to_string(n), "speex filter_mem16, order 8",
            [n] {
                veksCopy_32f(x, speech, n);
                veksBandPassFilter_RTA_32f_I(speech, n, states);
            },
            [n] {
                veksCopy_32f(x, speech, n);
                filter_mem16(speech, small[0], small[1], speech, n, 8, small[2], stack);
            });
    }
    static auto* postState = peerState<VeksPostFilterState_RTA_32f>(veksPostFilterGetStateSize_RTA_32f);
    veksPostFilterInit_RTA_32f(postState);
    static Vek32f shortTerm[51];
    // Theirs is the pole-zero filter; response, tilt and level by plain loops.
    static Vek32f response[24];
    static Vek32f level = 1;
    peerRow(
        "veksPostFilter_RTA_32f_I, 160", "speex filter_mem16 and plain loops, order 10",
        [] {
            veksCopy_32f(x, speech, 160);
            veksPostFilter_RTA_32f_I(a10, 10, speech, 160, 1, shortTerm, postState);
        },
        [] {
            static Vek32f impulse[24] = {1};
            static Vek32f none[10];
            std::fill_n(none, 10, 0.0F);
            filter_mem16(impulse, small[0], small[1], response, 24, 10, none, stack);
            float power[2] = {};
            for (int i = 1; i < 24; ++i) {
                power[0] += response[i] * response[i];
                power[1] += response[i] * response[i - 1];
            }
            filter_mem16(x, small[0], small[1], speech, 160, 10, small[2], stack);
            const float tilt = 0.5F * power[1] / (power[0] + 1);
            for (int first = 0; first < 160; first += 40) {
                float sums[2] = {};
                float past = 0;
                for (int i = first; i < first + 40; ++i) {
                    const float now = speech[i];
                    speech[i] -= tilt * past;
                    past = now;
                    sums[0] += std::fabs(x[i]);
                    sums[1] += std::fabs(speech[i]);
                }
                for (int i = first; i < first + 40; ++i) {
                    level = 0.9875F * level + 0.0125F * (sums[0] / sums[1]);
                    speech[i] *= level;
                }
            }
        });
}
#endif
