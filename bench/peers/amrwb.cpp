// Codebooks, gains and open-loop pitch of AMR-WB beside an AMR-WB coder's and decoder's.
#include "peers.h"

#include "veksc.h"

#include <cstring>

#if __has_include(<vo-amrwbenc/enc_if.h>) && __has_include(<opencore-amrwb/dec_if.h>)
#include "amrwb_steps.h"

extern "C" {
void Hp_wsp(int16_t* speech, int16_t* filtered, int16_t n, int16_t* memory);
}

namespace {

struct Rate {
    const char* name;
    VekSpchBitRate rate;
    int16_t bits;
    int16_t frame;
};
constexpr Rate rates[] = {
    {"6.6", VEK_SPCHBR_6600, 12, 132},    {"8.85", VEK_SPCHBR_8850, 20, 177},   {"12.65", VEK_SPCHBR_12650, 36, 253},
    {"14.25", VEK_SPCHBR_14250, 44, 285}, {"15.85", VEK_SPCHBR_15850, 52, 317}, {"18.25", VEK_SPCHBR_18250, 64, 365},
    {"19.85", VEK_SPCHBR_19850, 72, 397}, {"23.05", VEK_SPCHBR_23050, 88, 461}, {"23.85", VEK_SPCHBR_23850, 88, 477},
};

Vek16s x[64];
Vek16s residual[64];
Vek16s h[64];
Vek16s loudH[64];
Vek16s work[64];
Vek16s dn[64];
Vek16s vector[64];
Vek16s filtered[64];
Vek16s words[8];
Vek16s past[505];
Vek16s exc[505];
Vek16s open[2] = {60, 60};
Vek16s bounds[2];
Vek16s lag;
Vek16s fraction;

void fill(const PeerData& data) {
    data.fill(x, 64, 1000);
    data.fill(residual, 64, 800, 1);
    for (int i = 0; i < 64; ++i) {
        h[i] = static_cast<Vek16s>(i == 0 ? 4096 : (i * 4999 % 4001 - 2000) * 5 / (5 + i));
        loudH[i] = static_cast<Vek16s>(6 * h[i]);
    }
    data.fill(past, 505, 1500, 2);
}

} // namespace

PEER_ROWS(amrwb) {
    fill(data);
    for (const Rate& r : rates) {
        peerRow(
            std::string("veksAlgebraicCodebookSearch_AMRWB_16s, ") + r.name,
            r.bits == 12 ? "vo-amrwbenc voAWB_cor_h_x, ACELP_2t64_fx" : "vo-amrwbenc voAWB_cor_h_x, ACELP_4t64_fx",
            [&r] {
                std::memcpy(work, h, sizeof h);
                veksAlgebraicCodebookSearch_AMRWB_16s(x, residual, work, vector, filtered, r.rate, words);
            },
            [&r] {
                std::memcpy(work, h, sizeof h);
                voAWB_cor_h_x(work, x, dn);
                if (r.bits == 12) {
                    ACELP_2t64_fx(dn, residual, work, vector, filtered, words);
                } else {
                    ACELP_4t64_fx(dn, residual, work, vector, filtered, r.bits, r.frame, words);
                }
            });
    }
    static Vek16s codes[8] = {5, 17, 3, 30, 77, 99, 55, 3};
    for (const Rate& r : rates) {
        peerRowOnce(
            std::string("veksAlgebraicCodebookDecode_AMRWB_16s, ") + r.name,
            r.bits == 12 ? "opencore-amrwb dec_acelp_2p_in_64" : "opencore-amrwb dec_acelp_4p_in_64",
            [&r] { veksAlgebraicCodebookDecode_AMRWB_16s(codes, vector, r.rate); },
            [&r] {
                if (r.bits == 12) {
                    dec_acelp_2p_in_64(codes[0], vector);
                } else {
                    dec_acelp_4p_in_64(codes, r.bits, vector);
                }
            });
    }
    for (const Vek16s subframe : {Vek16s{0}, Vek16s{1}}) {
        for (const VekSpchBitRate rate : {VEK_SPCHBR_8850, VEK_SPCHBR_12650}) {
            const bool coarse = rate == VEK_SPCHBR_8850;
            peerRow(
                std::string("veksAdaptiveCodebookSearch_AMRWB_16s, ") + (coarse ? "8.85" : "12.65") +
                    (subframe == 0 ? "" : " relative"),
                "vo-amrwbenc Pitch_fr4, voAWB_Pred_lt4",
                [rate, subframe] {
                    std::memcpy(exc, past, sizeof past);
                    bounds[0] = 112;
                    veksAdaptiveCodebookSearch_AMRWB_16s(x, loudH, open, &lag, bounds, exc + 248, &fraction, words,
                                                         subframe, rate);
                },
                [coarse, subframe] {
                    std::memcpy(exc, past, sizeof past);
                    lag = Pitch_fr4(exc + 248, x, loudH, 112, 127, &fraction, static_cast<int16_t>(64 * subframe),
                                    coarse ? 34 : 128, coarse ? 92 : 160, 64);
                    voAWB_Pred_lt4(exc + 248, lag, fraction, 65);
                });
        }
    }
    static int64_t memory[32];
    auto* state = reinterpret_cast<VekAdaptiveCodebookState_AMRWB*>(memory);
    veksAdaptiveCodebookDecodeInit_AMRWB_16s(state);
    peerRow(
        "veksAdaptiveCodebookDecode_AMRWB_16s", "opencore-amrwb Pred_lt4",
        [state] {
            veksAdaptiveCodebookDecode_AMRWB_16s(201, &fraction, exc + 248, &lag, bounds, 0, 0, 0, VEK_SPCHBR_12650,
                                                 state);
        },
        [] { Pred_lt4(exc + 248, 84, 1, 65); });
    // That search high-passes the speech by itself, so ours is given the same filter.
    static Vek16s coder[4096];
    static Vek16s lags[5] = {40, 40, 40, 40, 40};
    static Vek16s passed[243];
    static Vek16s memory9[9];
    static Vek16s values[6] = {40, 30000, 0, 0, 0, 1};
    for (const int n : {64, 128}) {
        peerRow(
            "veksOpenLoopPitchSearch_AMRWB_16s, " + std::to_string(n), "vo-amrwbenc Pitch_med_ol, Med_olag",
            [n] {
                Hp_wsp(past + 115, passed + 115, static_cast<int16_t>(n), memory9);
                values[5] = 1;
                veksOpenLoopPitchSearch_AMRWB_16s(past + 115, passed + 115, values, values + 1, values + 2, values + 3,
                                                  values + 4, lags, values + 5, n);
            },
            [n] {
                coder[627] = 40;
                coder[630] = 1;
                const Vek16s found = Pitch_med_ol(past + 115, coder, static_cast<int16_t>(n));
                coder[627] = Med_olag(found, lags);
            });
    }
    static Vek16s corr[4];
    static Vek16s energies[4];
    static Vek32s gain;
    voAWB_G_pitch(x, residual, corr, 64);
    for (const VekSpchBitRate rate : {VEK_SPCHBR_8850, VEK_SPCHBR_12650}) {
        peerRow(
            rate == VEK_SPCHBR_8850 ? "veksGainQuant_AMRWB_16s, 8.85" : "veksGainQuant_AMRWB_16s, 12.65",
            "vo-amrwbenc Q_gain2",
            [rate] {
                lag = 9000;
                veksGainQuant_AMRWB_16s(x, residual, 2, vector, h, corr, energies, &lag, &gain, 0, words, 64, rate);
            },
            [rate] {
                lag = 9000;
                Q_gain2(x, residual, 2, h, vector, corr, 64, rate == VEK_SPCHBR_8850 ? 6 : 7, &lag, &gain, 0, energies);
            });
    }
    // All entries against a window of half of them.
    peerRow(
        "veksGainQuant_AMRWBE_16s", "vo-amrwbenc Q_gain2, half the entries",
        [] { veksGainQuant_AMRWBE_16s(x, residual, 2, vector, h, 64, corr, 7000, &lag, &fraction, &gain, words); },
        [] {
            lag = 9000;
            Q_gain2(x, residual, 2, h, vector, corr, 64, 7, &lag, &gain, 0, energies);
        });
    static Vek16s decoder[23];
    static Vek16s former[2];
    dec_gain2_amr_wb_init(decoder);
    peerRowOnce(
        "veksDecodeGain_AMRWB_16s", "opencore-amrwb dec_gain2_amr_wb",
        [] { veksDecodeGain_AMRWB_16s(50, 8192, &lag, &gain, 0, 0, energies, former, former + 1, VEK_SPCHBR_12650); },
        [] { dec_gain2_amr_wb(50, 7, vector, 64, &lag, &gain, 0, 0, 0, 0, 0, decoder); });
}
#endif
