// Steps of GSM full rate beside those of a GSM codec. Its steps are composites: theirs decode the log area ratios too.
#include "peers.h"

#include "veksc.h"

#include <algorithm>

#if __has_include(<gsm.h>) || __has_include(<gsm/gsm.h>)
extern "C" {
struct gsm_state;
gsm_state* gsm_create(void);
void Gsm_LPC_Analysis(gsm_state* state, int16_t* s, int16_t* ratios);
void Gsm_Preprocess(gsm_state* state, int16_t* s, int16_t* out);
void Gsm_Short_Term_Analysis_Filter(gsm_state* state, int16_t* codes, int16_t* s);
void Gsm_Short_Term_Synthesis_Filter(gsm_state* state, int16_t* codes, int16_t* residual, int16_t* s);
void Gsm_Long_Term_Predictor(gsm_state* state, int16_t* d, int16_t* past, int16_t* e, int16_t* predicted, int16_t* lag,
                             int16_t* gain);
void Gsm_RPE_Decoding(gsm_state* state, int16_t maximum, int16_t grid, int16_t* codes, int16_t* e);
}

PEER_ROWS(gsmfr) {
    static gsm_state* state = gsm_create();
    static Vek16s pcm[160];
    static Vek16s x[160];
    static Vek16s y[160];
    static Vek16s past[160];
    static Vek16s codes[13] = {3, 1, 7, 0, 4, 5, 2, 6, 3, 3, 4, 1, 0};
    static Vek16s ratios[8] = {35, 24, 20, 14, 9, 10, 3, 4};
    static Vek16s rc[8] = {-12000, 9000, -5000, 3000, -2000, 1500, -900, 500};
    static Vek16s memory[10];
    static Vek32s offset[2];
    static Vek16s emphasis;
    data.fill(past, 160, 3000);
    data.fill(pcm, 160, 4000, 1);
    for (Vek16s& v : pcm) {
        v = static_cast<Vek16s>(v & ~7);
    }
    peerRow(
        "veksHighPassFilter_GSMFR_16s + veksPreemphasize_GSMFR_16s, 160", "libgsm Gsm_Preprocess",
        [] {
            veksHighPassFilter_GSMFR_16s(pcm, x, 160, offset);
            veksPreemphasize_GSMFR_16s(x, y, 160, &emphasis);
        },
        [] { Gsm_Preprocess(state, pcm, y); });
    // It scales the frame and codes the ratios too.
    peerRow(
        "veksAutoScale_16s + veksAutoCorr_16s32s + veksSchur_GSMFR_32s16s, 160", "libgsm Gsm_LPC_Analysis",
        [] {
            static Vek16s scaled[160];
            static Vek32s r[9];
            static Vek16s reflection[8];
            int scale = 4;
            veksAutoScale_16s(pcm, scaled, 160, &scale);
            veksAutoCorr_16s32s(scaled, 160, r, 9);
            veksSchur_GSMFR_32s16s(r, reflection, 8);
        },
        [] {
            static int16_t coded[8];
            std::copy_n(pcm, 160, y);
            Gsm_LPC_Analysis(state, y, coded);
        });
    peerRow(
        "veksShortTermAnalysisFilter_GSMFR_16s_I, 160", "libgsm Gsm_Short_Term_Analysis_Filter",
        [] { veksShortTermAnalysisFilter_GSMFR_16s_I(rc, x, 160, memory); },
        [] { Gsm_Short_Term_Analysis_Filter(state, ratios, y); });
    peerRow(
        "veksShortTermSynthesisFilter_GSMFR_16s, 160", "libgsm Gsm_Short_Term_Synthesis_Filter",
        [] { veksShortTermSynthesisFilter_GSMFR_16s(rc, pcm, x, 160, memory); },
        [] { Gsm_Short_Term_Synthesis_Filter(state, ratios, pcm, y); });
    peerRow(
        "veksCrossCorrLagMax_16s, 40x81", "libgsm Gsm_Long_Term_Predictor",
        [] {
            Vek32s most = 0;
            int lag = 0;
            veksCrossCorrLagMax_16s(pcm, past, 40, 81, &most, &lag);
        },
        [] {
            int16_t e[40];
            int16_t predicted[40];
            int16_t lag = 0;
            int16_t gain = 0;
            Gsm_Long_Term_Predictor(state, pcm, past + 120, e, predicted, &lag, &gain);
        });
    peerRowOnce(
        "veksRPEQuantDecode_GSMFR_16s", "libgsm Gsm_RPE_Decoding", [] { veksRPEQuantDecode_GSMFR_16s(codes, 3, 2, y); },
        [] { Gsm_RPE_Decoding(state, 27, 1, codes, y); });
}
#endif
