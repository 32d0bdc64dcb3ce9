// Fixed codebook searches of G.729 beside those of a G.729 codec and an AMR codec, set-up included on both sides.
#include "peers.h"

#include "veksc.h"

#include <algorithm>

#if __has_include(<opencore-amrnb/interf_enc.h>) && __has_include(<bcg729/encoder.h>)
extern "C" {
void cor_h_x(int16_t* h, int16_t* x, int16_t* d, int16_t scale, int* overflow);
void cor_h(int16_t* h, int16_t* sign, int16_t (*rr)[40], int* overflow);
void set_sign12k2(int16_t* d, int16_t* r, int16_t* sign, int16_t* largest, int16_t tracks, int16_t* start, int16_t step,
                  int* overflow);
void search_10and8i40(int16_t pulses, int16_t step, int16_t tracks, int16_t* d, int16_t (*rr)[40], int16_t* start,
                      int16_t* largest, int16_t* positions, int* overflow);
int16_t code_2i40_11bits(int16_t* x, int16_t* h, int16_t delay, int16_t sharp, int16_t* code, int16_t* y, int16_t* sign,
                         int* overflow);
void fixedCodebookSearch(int16_t* target, int16_t* h, int16_t delay, int16_t sharp, int16_t* adaptive, int16_t gain,
                         uint16_t* positions, uint16_t* signs, int16_t* code, int16_t* filtered);
uint16_t pseudoRandom(uint16_t* seed);
}

PEER_ROWS(g729code) {
    static Vek16s x[40];
    static Vek16s h[40];
    static Vek16s residual[40];
    static Vek16s none[40];
    static Vek16s code[40];
    static Vek16s y[40];
    static Vek16s d[40];
    static Vek16s words[5];
    static Vek16s narrow[616];
    static Vek32s wide[616];
    data.fill(x, 40, 1000);
    data.fill(residual, 40, 800, 1);
    for (int i = 0; i < 40; ++i) {
        h[i] = static_cast<Vek16s>((i * 3571 % 4001 - 2000) / (i + 1));
    }
    h[0] = 4096;
    const auto theirSearch = [] {
        uint16_t positions = 0;
        uint16_t signs = 0;
        fixedCodebookSearch(x, h, 40, 0, none, 0, &positions, &signs, code, y);
    };
    const auto theirTenPulses = [] {
        static int16_t sign[40], largest[5], start[10], positions[10], rr[40][40];
        int overflow = 0;
        cor_h_x(h, x, d, 2, &overflow);
        set_sign12k2(d, residual, sign, largest, 5, start, 5, &overflow);
        cor_h(h, sign, rr, &overflow);
        search_10and8i40(10, 5, 5, d, rr, start, largest, positions, &overflow);
    };
    const auto theirTwoPulses = [] {
        int overflow = 0;
        code_2i40_11bits(x, h, 40, 0, code, y, words, &overflow);
    };
    const auto searchRow = [&](const char* functions, auto search) {
        peerRow(
            functions, "bcg729 fixedCodebookSearch",
            [search] {
                veksCrossCorr_NormM_16s(x, h, 40, d);
                search();
            },
            theirSearch);
    };
    searchRow("veksCrossCorr_NormM_16s + veksToeplizMatrix_G729_16s32s + veksFixedCodebookSearch_G729A_32s16s", [] {
        veksToeplizMatrix_G729_16s32s(h, wide);
        veksFixedCodebookSearch_G729A_32s16s(d, wide, code, words);
    });
    searchRow("veksCrossCorr_NormM_16s + veksToeplizMatrix_G729_16s + veksFixedCodebookSearch_G729A_16s", [] {
        veksToeplizMatrix_G729_16s(h, narrow);
        veksFixedCodebookSearch_G729A_16s(d, narrow, code, words);
    });
    peerRow(
        "veksFixedCodebookSearch_G729E_16s", "opencore-amrnb search of ten pulses",
        [] { veksFixedCodebookSearch_G729E_16s(0, x, residual, h, code, y, words); }, theirTenPulses);
    peerRow(
        "veksFixedCodebookSearch_G729D_16s", "opencore-amrnb code_2i40_11bits",
        [] { veksFixedCodebookSearch_G729D_16s(x, h, code, y, words, words + 1); }, theirTwoPulses);
    static Vek32f matrix[616];
    static Vek32f xF[40], hF[40], residualF[40], dF[40], codeF[40], filteredF[40];
    std::copy_n(x, 40, xF);
    std::copy_n(h, 40, hF);
    std::copy_n(residual, 40, residualF);
    for (int k = 0; k < 40; ++k) {
        dF[k] = 0;
        for (int i = k; i < 40; ++i) {
            dF[k] += xF[i] * hF[i - k];
        }
    }
    // The search of the main body tries more than theirs, which is that of Annex A.
    static Vek16s times = 75;
    searchRow("veksCrossCorr_NormM_16s + veksToeplizMatrix_G729_16s + veksFixedCodebookSearch_G729_16s", [] {
        times = 75;
        veksToeplizMatrix_G729_16s(h, narrow);
        veksFixedCodebookSearch_G729_16s(d, narrow, code, words, &times, 0);
    });
    searchRow("veksCrossCorr_NormM_16s + veksToeplizMatrix_G729_16s32s + veksFixedCodebookSearch_G729_32s16s", [] {
        times = 75;
        veksToeplizMatrix_G729_16s32s(h, wide);
        veksFixedCodebookSearch_G729_32s16s(d, wide, code, words, &times, 0);
    });
    peerRow(
        "veksToeplizMatrix_G729_32f + veksFixedCodebookSearch_G729_32f",
        "bcg729 fixedCodebookSearch (correlations too)",
        [] {
            times = 75;
            veksToeplizMatrix_G729_32f(hF, matrix);
            veksFixedCodebookSearch_G729_32f(dF, matrix, codeF, words, &times, 0);
        },
        theirSearch);
    peerRow(
        "veksToeplizMatrix_G729_32f + veksFixedCodebookSearch_G729A_32f",
        "bcg729 fixedCodebookSearch (correlations too)",
        [] {
            veksToeplizMatrix_G729_32f(hF, matrix);
            veksFixedCodebookSearch_G729A_32f(dF, matrix, codeF, words);
        },
        theirSearch);
    peerRow(
        "veksFixedCodebookSearch_G729E_32f", "opencore-amrnb search of ten pulses",
        [] { veksFixedCodebookSearch_G729E_32f(0, xF, residualF, hF, codeF, filteredF, words); }, theirTenPulses);
    peerRow(
        "veksToeplizMatrix_G729_32f + veksFixedCodebookSearch_G729D_32f",
        "opencore-amrnb code_2i40_11bits (correlations too)",
        [] {
            veksToeplizMatrix_G729_32f(hF, matrix);
            veksFixedCodebookSearch_G729D_32f(dF, matrix, hF, codeF, filteredF, words);
        },
        theirTwoPulses);
    peerRowOnce(
        "veksRandomNoiseExcitation_G729B_16s", "bcg729 pseudoRandom",
        [] { veksRandomNoiseExcitation_G729B_16s(words, code, 40); },
        [] {
            static uint16_t seed = 1000;
            for (int i = 0; i < 40; ++i) {
                int sum = 0;
                for (int k = 0; k < 12; ++k) {
                    sum += static_cast<int16_t>(pseudoRandom(&seed));
                }
                code[i] = static_cast<Vek16s>(sum >> 7);
            }
        });
}
#endif
