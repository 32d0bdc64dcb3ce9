// Filters, conversions, quantisers and voice activity of AMR-WB beside two open codecs'.
#include "peers.h"

#include "veksc.h"

#include <algorithm>

#if __has_include(<vo-amrwbenc/enc_if.h>) && __has_include(<opencore-amrwb/dec_if.h>)
#include "amrwbflt_steps.h"

extern "C" {
int16_t wb_vad(void* s, int16_t* x);
int16_t wb_vad_reset(void* s);
void dtx_dec_amr_wb_activity_update(void* s, int16_t* isf, int16_t* x);
int16_t voAWB_dtx_buffer(void* s, int16_t* isf, int32_t energy, int16_t mode);
int16_t Pitch_med_ol(int16_t* speech, void* coder, int16_t n);
int16_t Med_olag(int16_t lag, int16_t* lags);
void Hp_wsp(int16_t* speech, int16_t* filtered, int16_t n, int16_t* memory);
}

PEER_ROWS(amrwbflt) {
    static Vek16s isp[16] = {32120, 30200,  27100,  22900,  17800,  12000,  5800,   -600,
                             -6900, -13000, -18600, -23500, -27500, -30400, -32200, 3000};
    static Vek16s isf[16], a[17], x[320], y[256], z[256], memory, theirs[16], index[8], past[16], frames[48], c[4],
        words[7] = {3, 20, 5, 40, 9, 1, 2}, gain;
    static Vek16s high[80], low[80], place = 7, spectra[128], energies[8], tone, flag;
    static Vek32s wide[80];
    static char filter[32], activity[400];
    alignas(16) static Vek16s record[256], history[512];
    data.fill(x, 320, 200);
    voAWB_Isp_Az(isp, a, 16, 0);
    Isp_isf(isp, isf, 16);
    veksHighPassFilterInit_AMRWB_16s(filter);
    veksVADInit_AMRWB_16s(activity);
    wb_vad_reset(record);
    peerRow(
        "veksResidualFilter_AMRWB_16s_Sfs, 64", "vo-amrwbenc voAWB_Residu",
        [] { veksResidualFilter_AMRWB_16s_Sfs(a, 16, x + 16, y, 64, 11); }, [] { voAWB_Residu(a, x + 16, y, 64); });
    for (const int n : {32, 128, 256}) {
        peerRow(
            "veksPreemphasize_AMRWB_16s_ISfs, " + std::to_string(n), "vo-amrwbenc Preemph2",
            [n] {
                std::copy_n(x, n, y);
                veksPreemphasize_AMRWB_16s_ISfs(22282, y, n, 14, &memory);
            },
            [n] {
                std::copy_n(x, n, y);
                Preemph2(y, 22282, n, &memory);
            });
        peerRow(
            "veksDeemphasize_AMRWB_NR_16s_I, " + std::to_string(n), "vo-amrwbenc Deemph2",
            [n] {
                std::copy_n(x, n, z);
                veksDeemphasize_AMRWB_NR_16s_I(22282, z, n, &memory);
            },
            [n] {
                std::copy_n(x, n, z);
                Deemph2(z, 22282, n, &memory);
            });
    }
    for (const int n : {32, 64}) {
        peerRow(
            "veksDeemphasize_AMRWB_32s16s, " + std::to_string(n), "opencore-amrwb deemphasis_32",
            [n] { veksDeemphasize_AMRWB_32s16s(22282, wide, y, n, &memory); },
            [n] { deemphasis_32(high, low, y, 22282, n, &memory); });
        peerRow(
            "veksSynthesisFilter_AMRWB_16s32s_I, " + std::to_string(n), "opencore-amrwb Syn_filt_32",
            [n] { veksSynthesisFilter_AMRWB_16s32s_I(a, 16, x, wide + 16, n); },
            [n] { Syn_filt_32(a, 16, x, 0, high + 16, low + 16, n); });
    }
    for (const int n : {32, 128, 256}) {
        peerRow(
            "veksHighPassFilter_AMRWB_16s_ISfs, " + std::to_string(n), "vo-amrwbenc HP50_12k8",
            [n] {
                std::copy_n(x, n, y);
                veksHighPassFilter_AMRWB_16s_ISfs(y, n, filter, 14);
            },
            [n] {
                std::copy_n(x, n, y);
                HP50_12k8(y, n, past);
            });
        peerRow(
            "veksHighPassFilter_AMRWB_16s_Sfs, " + std::to_string(n), "vo-amrwbenc HP400_12k8",
            [n] { veksHighPassFilter_AMRWB_16s_Sfs(x, y, n, filter, 12); },
            [n] {
                std::copy_n(x, n, z);
                HP400_12k8(z, n, past);
            });
    }
    peerRow(
        "veksAdaptiveCodebookGainCoeff_AMRWB_16s, 64", "vo-amrwbenc voAWB_G_pitch",
        [] { veksAdaptiveCodebookGainCoeff_AMRWB_16s(x, x + 9, c, &gain, 64); },
        [] { voAWB_G_pitch(x, x + 9, c, 64); });
    peerRowOnce(
        "veksISPToISF_Norm_AMRWB_16s", "vo-amrwbenc Isp_isf", [] { veksISPToISF_Norm_AMRWB_16s(isp, theirs, 16); },
        [] { Isp_isf(isp, theirs, 16); });
    peerRowOnce(
        "veksISFToISP_AMRWB_16s", "vo-amrwbenc voAWB_Isf_isp", [] { veksISFToISP_AMRWB_16s(isf, theirs, 16); },
        [] { voAWB_Isf_isp(isf, theirs, 16); });
    peerRowOnce(
        "veksISPToLPC_AMRWB_16s", "vo-amrwbenc voAWB_Isp_Az", [] { veksISPToLPC_AMRWB_16s(isp, y, 16); },
        [] { voAWB_Isp_Az(isp, y, 16, 0); });
    peerRowOnce(
        "veksLPCToISP_AMRWB_16s", "vo-amrwbenc Az_isp", [] { veksLPCToISP_AMRWB_16s(a, theirs, isp); },
        [] { Az_isp(a, theirs, isp); });
    peerRowOnce(
        "veksISFQuant_AMRWB_16s, 8.85", "vo-amrwbenc Qpisf_2s_46b",
        [] { veksISFQuant_AMRWB_16s(isf, past, theirs, index, VEK_SPCHBR_8850); },
        [] { Qpisf_2s_46b(isf, theirs, past, index, 4); });
    peerRowOnce(
        "veksISFQuant_AMRWB_16s, 6.6", "vo-amrwbenc Qpisf_2s_36b",
        [] { veksISFQuant_AMRWB_16s(isf, past, theirs, index, VEK_SPCHBR_6600); },
        [] { Qpisf_2s_36b(isf, theirs, past, index, 4); });
    peerRowOnce(
        "veksISFQuantDecode_AMRWB_16s, 8.85", "opencore-amrwb Dpisf_2s_46b",
        [] { veksISFQuantDecode_AMRWB_16s(words, theirs, past, isf, frames, 0, VEK_SPCHBR_8850); },
        [] { Dpisf_2s_46b(words, theirs, past, isf, frames, 0, 1); });
    peerRowOnce(
        "veksISFQuantDTX_AMRWB_16s", "vo-amrwbenc voAWB_Qisf_ns", [] { veksISFQuantDTX_AMRWB_16s(isf, theirs, index); },
        [] { voAWB_Qisf_ns(isf, theirs, index); });
    peerRowOnce(
        "veksISFQuantDecodeDTX_AMRWB_16s", "opencore-amrwb Disf_ns",
        [] { veksISFQuantDecodeDTX_AMRWB_16s(index, theirs); }, [] { Disf_ns(index, theirs); });
    peerRow(
        "veksDecDTXBuffer_AMRWB_16s", "opencore-amrwb dtx_dec_amr_wb_activity_update",
        [] { veksDecDTXBuffer_AMRWB_16s(x, isf, &place, spectra, energies); },
        [] { dtx_dec_amr_wb_activity_update(history, isf, x); });
    static Vek16s coderPlace = 7, coderSpectra[128], coderEnergies[8];
    alignas(16) static Vek16s coderRecord[512];
    peerRow(
        "veksEncDTXBuffer_AMRWB_16s", "vo-amrwbenc voAWB_dtx_buffer (energy by a plain loop)",
        [] { veksEncDTXBuffer_AMRWB_16s(x, isf, &coderPlace, coderSpectra, coderEnergies, VEK_SPCHBR_12650); },
        [] {
            int32_t energy = 0;
            for (int i = 0; i < 256; ++i) {
                energy += x[i] * x[i];
            }
            voAWB_dtx_buffer(coderRecord, isf, energy, 2);
        });
    peerRow(
        "veksSynthesisFilter_AMRWBE_16s32s_I, 64", "opencore-amrwb Syn_filt_32",
        [] { veksSynthesisFilter_AMRWBE_16s32s_I(a, 16, x, wide + 16, 64); },
        [] { Syn_filt_32(a, 16, x, 0, high + 16, low + 16, 64); });
    for (const int n : {32, 128, 256}) {
        peerRow(
            "veksDeemphasize_AMRWBE_NR_16s_I, " + std::to_string(n), "vo-amrwbenc Deemph",
            [n] {
                std::copy_n(x, n, z);
                veksDeemphasize_AMRWBE_NR_16s_I(22282, 15, z, n, &memory);
            },
            [n] {
                std::copy_n(x, n, z);
                Deemph(z, 22282, n, &memory);
            });
    }
    static Vek16s coder[4096], passed[243], memory9[9], found, level, lags[5] = {40, 40, 40, 40, 40},
                                                                      values[4] = {40, 30000, 0, 1};
    for (const int n : {64, 128}) {
        peerRow(
            "veksOpenLoopPitchSearch_AMRWBE_16s, " + std::to_string(n), "vo-amrwbenc Pitch_med_ol, Med_olag",
            [n] {
                Hp_wsp(x + 115, passed + 115, static_cast<int16_t>(n), memory9);
                values[3] = 1;
                veksOpenLoopPitchSearch_AMRWBE_16s(x + 115, passed + 115, values, values + 1, &found, values + 2,
                                                   &level, lags, values + 3, n, 17, 115);
            },
            [n] {
                coder[627] = 40;
                coder[630] = 1;
                coder[627] = Med_olag(Pitch_med_ol(x + 115, coder, static_cast<int16_t>(n)), lags);
            });
    }
    peerRow(
        "veksVAD_AMRWB_16s", "vo-amrwbenc wb_vad", [] { veksVAD_AMRWB_16s(x, activity, &tone, &flag); },
        [] { wb_vad(record, x); });
}
#endif
