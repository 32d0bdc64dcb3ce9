// Steps of G.729.1 beside those of an AMR codec and a G.729 codec.
#include "peers.h"

#include "veksc.h"

#if __has_include(<opencore-amrnb/interf_enc.h>) && __has_include(<bcg729/encoder.h>)
extern "C" {
int16_t G_pitch(int mode, int16_t* target, int16_t* filtered, int16_t* products, int16_t n, int* overflow);
int16_t Pitch_fr(int16_t* lastDelay, int mode, int16_t* open, int16_t* excitation, int16_t* target, int16_t* h,
                 int16_t n, int16_t offset, int16_t* fraction, int16_t* thirds, int16_t* index, int* overflow);
void Convolve(int16_t* x, int16_t* h, int16_t* y, int16_t n);
}

PEER_ROWS(g7291core) {
    static Vek16s x[40];
    static Vek16s h[40];
    static Vek16s y[40];
    static Vek16s excitation[234];
    static Vek16s words[2];
    for (int i = 0; i < 40; ++i) {
        x[i] = static_cast<Vek16s>(i * 7919 % 2003 - 1000);
        h[i] = static_cast<Vek16s>((i * 3571 % 4001 - 2000) / (i + 1));
    }
    h[0] = 4096;
    for (int i = 0; i < 234; ++i) {
        excitation[i] = static_cast<Vek16s>(i * 6007 % 4093 - 2046);
    }
    peerRow(
        "veksAdaptiveCodebookGain_G7291_16s", "opencore-amrnb Convolve, G_pitch",
        [] { veksAdaptiveCodebookGain_G7291_16s(x, h, excitation + 80, y, words); },
        [] {
            static int16_t products[4];
            int overflow = 0;
            Convolve(excitation + 80, h, y, 40);
            G_pitch(4, x, y, products, 40, &overflow);
        });
    peerRow(
        "veksAdaptiveCodebookSearch_G7291_16s", "opencore-amrnb Pitch_fr",
        [] { veksAdaptiveCodebookSearch_G7291_16s(x, h, excitation, words, 57, 63, 0); },
        [] {
            int16_t open = 60;
            int16_t last = 60;
            int16_t fraction, thirds, index;
            int overflow = 0;
            Pitch_fr(&last, 4, &open, excitation + 154, x, h, 40, 0, &fraction, &thirds, &index, &overflow);
        });
}
#endif
