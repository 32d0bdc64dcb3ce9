// Post filters, analysis and searches of G.729 beside a G.729 and an AMR codec.
#include "peers.h"

#include "veksc.h"

#if __has_include(<bcg729/decoder.h>)
extern "C" {
void initPostFilter(void* channel);
void postFilter(void* channel, int16_t* lpc, int16_t* speech, int16_t delay, int subframe, int16_t* out);
void computeLP(int16_t* signal, int16_t* lpc, int32_t* reflection, int32_t* windowed, int32_t* plain, int8_t* scale,
               uint8_t count);
uint16_t findOpenLoopPitchDelay(int16_t* signal);
}

PEER_ROWS(g729post) {
    static Vek16s a[11] = {4096, -5200, 1900, 1300, -900, -500, 800, -300, -200, 200, -50};
    static Vek16s x[240];
    static Vek32f xf[240];
    static Vek16s residual[194];
    static Vek16s harmonic[41];
    static Vek16s out[50];
    static Vek16s gain = 4096;
    static long long channel[4096];
    initPostFilter(channel);
    data.fill(x, 240, 2000);
    for (int i = 0; i < 240; ++i) {
        xf[i] = x[i];
    }
    peerRow(
        "veksLongTermPostFilter_G729A_16s + veksTiltCompensation_G729A_16s + veksShortTermPostFilter_G729A_16s + "
        "veksGainControl_G729A_16s_I",
        "bcg729 postFilter",
        [] {
            veksLongTermPostFilter_G729A_16s(60, x + 10, a, residual, harmonic + 1);
            veksTiltCompensation_G729A_16s(a, harmonic + 1);
            veksShortTermPostFilter_G729A_16s(a, harmonic + 1, out + 10);
            veksGainControl_G729A_16s_I(x + 10, out + 10, &gain);
        },
        [] { postFilter(channel, a + 1, x + 10, 60, 0, out + 10); });
    peerRow(
        "veksLongTermPostFilter_G729B_16s + veksTiltCompensation_G729A_16s + veksShortTermPostFilter_G729A_16s + "
        "veksGainControl_G729A_16s_I",
        "bcg729 postFilter",
        [] {
            static Vek16s voice;
            veksLongTermPostFilter_G729B_16s(60, x + 10, a, residual, harmonic + 1, &voice, 1);
            veksTiltCompensation_G729A_16s(a, harmonic + 1);
            veksShortTermPostFilter_G729A_16s(a, harmonic + 1, out + 10);
            veksGainControl_G729A_16s_I(x + 10, out + 10, &gain);
        },
        [] { postFilter(channel, a + 1, x + 10, 60, 0, out + 10); });
    peerRow(
        "veksAutoCorr_G729B", "bcg729 computeLP (with its recursion)",
        [] {
            static Vek16s exponent;
            static Vek32s r[13];
            veksAutoCorr_G729B(x, &exponent, r);
        },
        [] {
            static int16_t lpc[10];
            static int32_t reflection[10];
            static int32_t windowed[13];
            static int32_t plain[13];
            static int8_t scale;
            computeLP(x, lpc, reflection, windowed, plain, &scale, 13);
        });
    peerRow(
        "veksOpenLoopPitchSearch_G729A_32f", "bcg729 findOpenLoopPitchDelay",
        [] {
            static int lag;
            veksOpenLoopPitchSearch_G729A_32f(xf + 143, &lag);
        },
        [] { findOpenLoopPitchDelay(x + 143); });
}
#endif

#if __has_include(<opencore-amrnb/interf_enc.h>)
extern "C" {
int16_t Pitch_fr(int16_t* lastDelay, int mode, int16_t* open, int16_t* excitation, int16_t* target, int16_t* h,
                 int16_t n, int16_t offset, int16_t* fraction, int16_t* thirds, int16_t* index, int* overflow);
}

PEER_ROWS(g729search) {
    static Vek16s excitation[194];
    static Vek16s target[40];
    static Vek16s h[40] = {4096};
    data.fill(excitation, 194, 1000, 1);
    data.fill(target, 40, 1500, 2);
    for (int i = 1; i < 40; ++i) {
        h[i] = static_cast<Vek16s>(i * 1299709 % 1401 - 700);
    }
    peerRow(
        "veksAdaptiveCodebookSearch_G729D_16s", "opencore-amrnb Pitch_fr",
        [] {
            static Vek16s delay[2];
            veksAdaptiveCodebookSearch_G729D_16s(60, target, h, excitation, 1, delay);
        },
        [] {
            static int16_t last = 60;
            static int16_t open[2] = {60, 60};
            static int16_t fraction;
            static int16_t thirds;
            static int16_t index;
            static int overflow;
            Pitch_fr(&last, 2, open, excitation + 154, target, h, 40, 40, &fraction, &thirds, &index, &overflow);
        });
}
#endif
