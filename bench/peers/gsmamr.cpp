// Codebooks, pitch gain, conversions and post filter of GSM AMR beside an AMR codec's.
#include "peers.h"

#include "veksc.h"

#include <cstring>

#if __has_include(<opencore-amrnb/interf_enc.h>)
#include "gsmamr_steps.h"

extern "C" {
int16_t Pitch_fr(int16_t* lastDelay, int mode, int16_t* open, int16_t* excitation, int16_t* target, int16_t* h,
                 int16_t n, int16_t offset, int16_t* fraction, int16_t* thirds, int16_t* index, int* overflow);
void Pred_lt_3or6(int16_t* excitation, int16_t delay, int16_t fraction, int16_t n, int16_t thirds, int* overflow);
int16_t G_pitch(int mode, int16_t* target, int16_t* filtered, int16_t* products, int16_t n, int* overflow);
}

namespace {

struct Rate {
    const char* name;
    VekSpchBitRate rate;
    int mode;
};
constexpr Rate rates[] = {{"4.75", VEK_SPCHBR_4750, 0}, {"5.9", VEK_SPCHBR_5900, 2},   {"6.7", VEK_SPCHBR_6700, 3},
                          {"7.4", VEK_SPCHBR_7400, 4},  {"10.2", VEK_SPCHBR_10200, 6}, {"12.2", VEK_SPCHBR_12200, 7}};

Vek16s x[40];
Vek16s residual[40];
Vek16s response[40];
Vek16s h[80];
Vek16s vector[40];
Vek16s filtered[40];
Vek16s words[16];
Vek16s past[194];
Vek16s exc[194];
Vek16s open[2] = {60, 60};
Vek16s lpc[44];
Vek16s speech[160];
Vek16s work[160];
Vek16s state[10];
Vek16s fir[10];
Vek16s iir[10];
Vek16s value;
Vek16s other;
int overflow;

void fill(const PeerData& data) {
    data.fill(x, 40, 1000);
    data.fill(residual, 40, 800, 1);
    for (int i = 0; i < 40; ++i) {
        response[i] = static_cast<Vek16s>(i == 0 ? 4096 : (i * 4999 % 4001 - 2000) * 5 / (5 + i));
    }
    data.fill(past, 194, 1500, 2);
    for (int i = 0; i < 44; ++i) {
        lpc[i] = static_cast<Vek16s>(i % 11 == 0 ? 4096 : i % 11 == 1 ? -3000 : i * 97 % 401 - 200);
    }
    data.fill(speech, 160, 2000, 3);
}

} // namespace

PEER_ROWS(gsmamr) {
    fill(data);
    static AmrTables tables;
    get_const_tbls(&tables);
    for (const Rate& rate : rates) {
        peerRow(
            std::string("veksAlgebraicCodebookSearch_GSMAMR_16s, ") + rate.name, "opencore-amrnb cbsearch",
            [&rate] {
                std::memcpy(h + 40, response, sizeof response);
                veksAlgebraicCodebookSearch_GSMAMR_16s(50, 8192, x, residual, h + 40, vector, filtered, words, 1,
                                                       rate.rate);
            },
            [&rate] {
                std::memcpy(h + 40, response, sizeof response);
                Vek16s* to = words;
                cbsearch(x, h + 40, 50, 8192, 8192, residual, vector, filtered, &to, rate.mode, 1, &tables, &overflow);
            });
    }
    for (const Rate& rate : rates) {
        for (const Vek16s subframe : {Vek16s{0}, Vek16s{1}}) {
            peerRow(
                std::string("veksAdaptiveCodebookSearch_GSMAMR_16s, ") + rate.name + (subframe == 0 ? "" : " relative"),
                "opencore-amrnb Pitch_fr, Pred_lt_3or6",
                [&rate, subframe] {
                    std::memcpy(exc, past, sizeof past);
                    value = 60;
                    veksAdaptiveCodebookSearch_GSMAMR_16s(x, response, open, &value, exc, &other, words, vector,
                                                          subframe, rate.rate);
                },
                [&rate, subframe] {
                    std::memcpy(exc, past, sizeof past);
                    value = 60;
                    Vek16s thirds = 0;
                    const Vek16s lag = Pitch_fr(&value, rate.mode, open, exc + 154, x, response, 40,
                                                static_cast<Vek16s>(40 * subframe), &other, &thirds, words, &overflow);
                    Pred_lt_3or6(exc + 154, lag, other, 40, thirds, &overflow);
                });
        }
    }
    peerRow(
        "veksAdaptiveCodebookDecode_GSMAMR_16s", "opencore-amrnb Dec_lag3, Pred_lt_3or6",
        [] {
            value = 60;
            veksAdaptiveCodebookDecode_GSMAMR_16s(100, &value, &other, exc, vector, 0, 0, 0, 0, VEK_SPCHBR_7400);
        },
        [] {
            Dec_lag3(100, 55, 64, 0, 60, &value, &other, 0, &overflow);
            Pred_lt_3or6(exc + 154, value, other, 40, 1, &overflow);
        });
    static Vek16s codes[10] = {1, 0, 1, 0, 77, 99, 55, 3, 2, 1};
    peerRowOnce(
        "veksFixedCodebookDecode_GSMAMR_16s, 7.4", "opencore-amrnb decode_4i40_17bits",
        [] { veksFixedCodebookDecode_GSMAMR_16s(codes, vector, 0, VEK_SPCHBR_7400); },
        [] { decode_4i40_17bits(codes[1], codes[0], dgray, vector); });
    peerRowOnce(
        "veksFixedCodebookDecode_GSMAMR_16s, 10.2", "opencore-amrnb dec_8i40_31bits",
        [] { veksFixedCodebookDecode_GSMAMR_16s(codes, vector, 0, VEK_SPCHBR_10200); },
        [] { dec_8i40_31bits(codes, vector, &overflow); });
    peerRowOnce(
        "veksFixedCodebookDecode_GSMAMR_16s, 12.2", "opencore-amrnb dec_10i40_35bits",
        [] { veksFixedCodebookDecode_GSMAMR_16s(codes, vector, 0, VEK_SPCHBR_12200); },
        [] { dec_10i40_35bits(codes, vector, dgray); });
    static Vek16s products[4];
    peerRow(
        "veksAdaptiveCodebookGainCoeffs_GSMAMR_16s", "opencore-amrnb G_pitch",
        [] { veksAdaptiveCodebookGainCoeffs_GSMAMR_16s(x, residual, &value, products); },
        [] { value = G_pitch(0, x, residual, products, 40, &overflow); });
    peerRow(
        "veksPreemphasize_GSMAMR_16s", "opencore-amrnb preemphasis",
        [] { veksPreemphasize_GSMAMR_16s(16384, x, work, 40, &value); },
        [] {
            std::memcpy(work, x, sizeof x);
            preemphasis(&value, work, 16384, 40, &overflow);
        });
    peerRow(
        "veksInterpolate_GSMAMR_16s", "opencore-amrnb Int_lsf",
        [] { veksInterpolate_GSMAMR_16s(x, residual, work, 10); }, [] { Int_lsf(x, residual, 80, work, &overflow); });
    static Vek16s lsf[10] = {800, 1600, 3000, 4500, 6000, 7500, 9000, 11000, 13000, 15000};
    peerRowOnce(
        "veksLSFToLSP_GSMAMR_16s", "opencore-amrnb Lsf_lsp", [] { veksLSFToLSP_GSMAMR_16s(lsf, work); },
        [] { Lsf_lsp(lsf, work, 10, &overflow); });
    static int64_t post[1000];
    Post_Filter_reset(post);
    peerRow(
        "veksPostFilter_GSMAMR_16s", "opencore-amrnb Post_Filter",
        [] { veksPostFilter_GSMAMR_16s(lpc, speech, state, state + 1, fir, iir, work, VEK_SPCHBR_7400); },
        [] {
            std::memcpy(work, speech, sizeof speech);
            Post_Filter(post, 4, work, lpc, &overflow);
        });
}
#endif
