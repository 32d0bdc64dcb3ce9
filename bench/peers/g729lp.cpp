// Linear prediction, line spectra and pitch of G.729 beside an AMR codec and a G.729 codec.
#include "peers.h"

#include "veksc.h"

#include <algorithm>

#if __has_include(<opencore-amrnb/interf_enc.h>)
extern "C" {
void preemphasis(int16_t* state, int16_t* signal, int16_t g, int16_t n, int* overflow);
void Az_lsp(int16_t* a, int16_t* lsp, int16_t* previous, int* overflow);
void Lsp_Az(int16_t* lsp, int16_t* a, int* overflow);
void Lsp_lsf(int16_t* lsp, int16_t* lsf, int16_t order, int* overflow);
void Lsf_lsp(int16_t* lsf, int16_t* lsp, int16_t order, int* overflow);
int16_t Levinson(int16_t* state, int16_t* high, int16_t* low, int16_t* a, int16_t* rc, int* overflow);
void agc(int16_t* gain, int16_t* in, int16_t* out, int16_t factor, int16_t n, int* overflow);
int16_t Pitch_ol(void* vad, int mode, int16_t* signal, int16_t shortest, int16_t longest, int16_t n, int16_t half,
                 int dtx, int* overflow);
int16_t Pitch_fr(int16_t* lastDelay, int mode, int16_t* open, int16_t* excitation, int16_t* target, int16_t* h,
                 int16_t n, int16_t offset, int16_t* fraction, int16_t* thirds, int16_t* index, int* overflow);
void Pred_lt_3or6(int16_t* excitation, int16_t delay, int16_t fraction, int16_t n, int16_t thirds, int* overflow);
int16_t G_pitch(int mode, int16_t* target, int16_t* filtered, int16_t* products, int16_t n, int* overflow);
void Convolve(int16_t* x, int16_t* h, int16_t* y, int16_t n);
}

PEER_ROWS(g729lp) {
    static Vek16s lsp[10] = {31441, 27567, 21458, 13612, 4664, -4662, -13612, -21458, -27566, -31440};
    static Vek16s previous[10];
    static Vek16s found[10];
    static Vek16s lsf[10];
    static Vek16s a[11];
    static Vek16s rc[10];
    static Vek16s state[11];
    static Vek16s high[11];
    static Vek16s low[11];
    static Vek32s r[11];
    static int overflow = 0;
    for (int i = 0; i < 10; ++i) {
        lsp[i] = static_cast<Vek16s>(lsp[i] - i * 7919 % 1201);
    }
    std::copy(lsp, lsp + 10, previous);
    veksLSPToLPC_G729_16s(lsp, a);
    for (int i = 0; i < 11; ++i) {
        r[i] = i == 0 ? 2000000000 : (1800000000 / (i + 1)) * (i % 3 - 1);
        high[i] = static_cast<Vek16s>(r[i] >> 16);
        low[i] = static_cast<Vek16s>((r[i] >> 1) & 0x7fff);
    }
    peerRowOnce(
        "veksLPCToLSP_G729_16s", "opencore-amrnb Az_lsp", [] { veksLPCToLSP_G729_16s(a, previous, found); },
        [] { Az_lsp(a, found, previous, &overflow); });
    peerRowOnce(
        "veksLPCToLSP_GSMAMR_16s", "opencore-amrnb Az_lsp", [] { veksLPCToLSP_GSMAMR_16s(a, previous, found); },
        [] { Az_lsp(a, found, previous, &overflow); });
    peerRowOnce(
        "veksLSPToLPC_G729_16s", "opencore-amrnb Lsp_Az", [] { veksLSPToLPC_G729_16s(lsp, a); },
        [] { Lsp_Az(lsp, a, &overflow); });
    peerRowOnce(
        "veksLSPToLSF_Norm_G729_16s", "opencore-amrnb Lsp_lsf", [] { veksLSPToLSF_Norm_G729_16s(lsp, lsf); },
        [] { Lsp_lsf(lsp, lsf, 10, &overflow); });
    peerRowOnce(
        "veksLSPToLSF_G729_16s", "opencore-amrnb Lsp_lsf (frequencies to 16384)",
        [] { veksLSPToLSF_G729_16s(lsp, found); }, [] { Lsp_lsf(lsp, found, 10, &overflow); });
    peerRowOnce(
        "veksLSFToLSP_G729_16s", "opencore-amrnb Lsf_lsp (frequencies to 16384)",
        [] { veksLSFToLSP_G729_16s(lsf, found); }, [] { Lsf_lsp(lsf, found, 10, &overflow); });
    peerRowOnce(
        "veksLevinsonDurbin_G729_32s16s, 10", "opencore-amrnb Levinson",
        [] {
            static Vek16s error;
            veksLevinsonDurbin_G729_32s16s(r, 10, found, rc, &error);
        },
        [] { Levinson(state, high, low, a, rc, &overflow); });
    static Vek16s x[223];
    static Vek16s y[40];
    static Vek16s out[40];
    static Vek16s h[40] = {4096};
    static Vek16s gain = 4096;
    static Vek16s memory = 0;
    static Vek16s excitation[194];
    data.fill(x, 223, 2000);
    data.fill(y, 40, 800, 1);
    for (int i = 0; i < 40; ++i) {
        h[i] = i == 0 ? Vek16s{4096} : static_cast<Vek16s>((i * 3571 % 4001 - 2000) / (i + 1));
    }
    std::copy(x, x + 194, excitation);
    for (const int n : {10, 40}) {
        peerRow(
            "veksPreemphasize_G729A_16s_I, " + std::to_string(n), "opencore-amrnb preemphasis",
            [n] { veksPreemphasize_G729A_16s_I(16384, y, n, &memory); },
            [n] { preemphasis(&memory, y, 16384, n, &overflow); });
    }
    peerRow(
        "veksGainControl_G729A_16s_I", "opencore-amrnb agc",
        [] {
            std::copy(x + 40, x + 80, out);
            veksGainControl_G729A_16s_I(x, out, &gain);
        },
        [] {
            std::copy(x + 40, x + 80, out);
            agc(&gain, x, out, 29491, 40, &overflow);
        });
    peerRow(
        "veksOpenLoopPitchSearch_G729_16s", "opencore-amrnb Pitch_ol 7.4",
        [] {
            static Vek16s lag;
            veksOpenLoopPitchSearch_G729_16s(x + 143, &lag);
        },
        [] {
            static long long vad[1000];
            Pitch_ol(vad, 4, x + 143, 20, 143, 80, 0, 0, &overflow);
        });
    peerRow(
        "veksAdaptiveCodebookSearch_G729_16s", "opencore-amrnb Pitch_fr, Pred_lt_3or6",
        [] {
            static Vek16s delay[2];
            static Vek16s vector[40];
            veksAdaptiveCodebookSearch_G729_16s(60, y, h, excitation, delay, vector, 1);
        },
        [] {
            static int16_t last = 60;
            static int16_t open[2] = {60, 60};
            static int16_t fraction;
            static int16_t thirds;
            static int16_t index;
            const int16_t delay =
                Pitch_fr(&last, 4, open, excitation + 154, y, h, 40, 40, &fraction, &thirds, &index, &overflow);
            Pred_lt_3or6(excitation + 154, delay, fraction, 40, 1, &overflow);
        });
    peerRow(
        "veksAdaptiveCodebookGain_G729_16s", "opencore-amrnb Convolve, G_pitch",
        [] { veksAdaptiveCodebookGain_G729_16s(y, h, excitation, out, &gain); },
        [] {
            static int16_t products[4];
            Convolve(excitation, h, out, 40);
            gain = G_pitch(4, y, out, products, 40, &overflow);
        });
}
#endif

#if __has_include(<bcg729/encoder.h>)
extern "C" {
int LP2LSPConversion(int16_t* a, int16_t* lsp);
void interpolateqLSP(int16_t* previous, int16_t* current, int16_t* out);
void* initBcg729EncoderChannel(uint8_t noVoice);
void* initBcg729DecoderChannel();
void LSPQuantization(void* encoder, int16_t* lsp, int16_t* quantised, uint16_t* words);
void noiseLSPQuantization(int16_t (*previous)[10], int16_t* lsp, int16_t* quantised, uint8_t* words);
void decodeLSP(void* decoder, uint16_t* words, int16_t* lsp, uint8_t erased);
uint16_t findOpenLoopPitchDelay(int16_t* signal);
void preProcessing(void* encoder, const int16_t* signal, int16_t* out);
}

PEER_ROWS(g729spectrum) {
    static Vek16s lsp[10] = {31341, 27067, 21958, 13012, 4964, -4062, -13212, -20458, -26566, -31140};
    static Vek16s lsf[10];
    static Vek16s a[11];
    static Vek16s quantised[10];
    static Vek16s words[4];
    static uint16_t theirs[4];
    static Vek16s history[40];
    static Vek16s theirHistory[4][10];
    static Vek16s x[223];
    static char filter[64];
    static void* const encoder = initBcg729EncoderChannel(0);
    static void* const decoder = initBcg729DecoderChannel();
    veksLSPToLPC_G729_16s(lsp, a);
    veksLSPToLSF_G729_16s(lsp, lsf);
    veksHighPassFilterInit_G729(filter);
    for (int i = 0; i < 40; ++i) {
        history[i] = theirHistory[i / 10][i % 10] = static_cast<Vek16s>(2339 * (i % 10 + 1));
    }
    data.fill(x, 223, 2000, 2);
    peerRowOnce(
        "veksLPCToLSP_G729A_16s", "bcg729 LP2LSPConversion", [] { veksLPCToLSP_G729A_16s(a, lsp, quantised); },
        [] { LP2LSPConversion(a + 1, quantised); });
    peerRowOnce(
        "veksLSPQuant_G729_16s", "bcg729 LSPQuantization",
        [] { veksLSPQuant_G729_16s(lsp, history, quantised, words); },
        [] { LSPQuantization(encoder, lsp, quantised, theirs); });
    static Vek32f lspF[10], historyF[40], lsfF[10], quantisedF[10];
    static Vek32s wordsF[2];
    for (int i = 0; i < 10; ++i) {
        lspF[i] = static_cast<Vek32f>(lsp[i]) / 32768;
    }
    for (int i = 0; i < 40; ++i) {
        historyF[i] = static_cast<Vek32f>(history[i]) / 8192;
    }
    peerRowOnce(
        "veksLSPQuant_G729E_16s", "bcg729 LSPQuantization",
        [] { veksLSPQuant_G729E_16s(lsp, history, lsf, quantised, words); },
        [] { LSPQuantization(encoder, lsp, quantised, theirs); });
    peerRowOnce(
        "veksLSPQuant_G729E_32f", "bcg729 LSPQuantization",
        [] { veksLSPQuant_G729E_32f(lspF, historyF, lsfF, quantisedF, wordsF); },
        [] { LSPQuantization(encoder, lsp, quantised, theirs); });
    peerRow(
        "veksInterpolate_G729_16s, 10", "bcg729 interpolateqLSP",
        [] { veksInterpolate_G729_16s(lsp, history, quantised, 10); },
        [] { interpolateqLSP(lsp, history, quantised); });
    peerRowOnce(
        "veksLSFQuant_G729_16s", "bcg729 LSPQuantization (converts both ways)",
        [] { veksLSFQuant_G729_16s(lsf, history, quantised, words); },
        [] { LSPQuantization(encoder, lsp, quantised, theirs); });
    peerRowOnce(
        "veksLSFQuant_G729B_16s", "bcg729 noiseLSPQuantization (converts both ways)",
        [] { veksLSFQuant_G729B_16s(lsf, history, quantised, words); },
        [] {
            static uint8_t three[3];
            noiseLSPQuantization(theirHistory, lsp, quantised, three);
        });
    peerRowOnce(
        "veksLSFDecode_G729_16s + veksLSFToLSP_G729_16s", "bcg729 decodeLSP",
        [] {
            static const Vek16s index[4] = {1, 57, 12, 23};
            veksLSFDecode_G729_16s(index, history, quantised);
            veksLSFToLSP_G729_16s(quantised, quantised);
        },
        [] {
            static uint16_t index[4] = {1, 57, 12, 23};
            decodeLSP(decoder, index, quantised, 0);
        });
    peerRowOnce(
        "veksLSFDecodeErased_G729_16s + veksLSFToLSP_G729_16s", "bcg729 decodeLSP of an erased frame",
        [] {
            veksLSFDecodeErased_G729_16s(1, history, lsf);
            veksLSFToLSP_G729_16s(lsf, quantised);
        },
        [] {
            static uint16_t index[4] = {1, 57, 12, 23};
            decodeLSP(decoder, index, quantised, 1);
        });
    peerRow(
        "veksOpenLoopPitchSearch_G729A_16s", "bcg729 findOpenLoopPitchDelay",
        [] {
            static Vek16s lag;
            veksOpenLoopPitchSearch_G729A_16s(x + 143, &lag);
        },
        [] { findOpenLoopPitchDelay(x + 143); });
    peerRow(
        "veksHighPassFilter_G729_16s_ISfs, 80", "bcg729 preProcessing",
        [] {
            static Vek16s frame[80];
            std::copy(x, x + 80, frame);
            veksHighPassFilter_G729_16s_ISfs(frame, 80, 13, filter);
        },
        [] {
            static int16_t frame[80];
            preProcessing(encoder, x, frame);
        });
}
#endif
