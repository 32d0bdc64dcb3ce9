// Steps of G.729.1 beside those of an AMR codec and a G.729 codec.
#include "peers.h"

#include "veksc.h"

#if __has_include(<libavutil/tx.h>)
extern "C" {
#include <libavutil/tx.h>
}
#endif

#if __has_include(<opencore-amrnb/interf_enc.h>) && __has_include(<bcg729/encoder.h>)
extern "C" {
int16_t G_pitch(int mode, int16_t* target, int16_t* filtered, int16_t* products, int16_t n, int* overflow);
int16_t Pitch_fr(int16_t* lastDelay, int mode, int16_t* open, int16_t* excitation, int16_t* target, int16_t* h,
                 int16_t n, int16_t offset, int16_t* fraction, int16_t* thirds, int16_t* index, int* overflow);
void fixedCodebookSearch(int16_t* target, int16_t* h, int16_t delay, int16_t sharp, int16_t* adaptive, int16_t gain,
                         uint16_t* positions, uint16_t* signs, int16_t* code, int16_t* filtered);
void decodeLSP(int16_t* context, uint16_t* index, int16_t* lsp, uint8_t erased);
void initDecodeLSP(int16_t* context);
void agc(int16_t* gain, int16_t* in, int16_t* out, int16_t factor, int16_t n, int* overflow);
void Convolve(int16_t* x, int16_t* h, int16_t* y, int16_t n);
}

PEER_ROWS(g7291core) {
    static Vek16s x[40];
    static Vek16s h[40];
    static Vek16s y[40];
    static Vek16s excitation[234];
    static Vek16s words[4];
    static Vek16s code[40];
    static Vek16s adaptive[40];
    static Vek16s residual[40];
    static Vek16s history[40];
    static Vek16s lsf[10];
    static int16_t context[4096];
    static const Vek16s index[4] = {1, 37, 12, 25};
    initDecodeLSP(context);
    data.fill(x, 40, 1000);
    data.fill(residual, 40, 800, 1);
    for (int i = 0; i < 40; ++i) {
        h[i] = static_cast<Vek16s>((i * 3571 % 4001 - 2000) / (i + 1));
        history[i] = static_cast<Vek16s>(2340 * (i % 10 + 1));
    }
    h[0] = 4096;
    data.fill(excitation, 234, 2046, 2);
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
            int16_t fraction, thirds, place;
            int overflow = 0;
            Pitch_fr(&last, 4, &open, excitation + 154, x, h, 40, 0, &fraction, &thirds, &place, &overflow);
        });
    const auto theirPulses = [] {
        uint16_t positions = 0;
        uint16_t signs = 0;
        fixedCodebookSearch(x, h, 60, 4096, adaptive, 8192, &positions, &signs, code, y);
    };
    peerRow(
        "veksAlgebraicCodebookSearchL1_G7291_16s", "bcg729 fixedCodebookSearch",
        [] { veksAlgebraicCodebookSearchL1_G7291_16s(x, residual, adaptive, h, 60, 8192, code, y, words); },
        theirPulses);
    peerRow(
        "veksAlgebraicCodebookSearchL2_G7291_16s", "bcg729 fixedCodebookSearch",
        [] { veksAlgebraicCodebookSearchL2_G7291_16s(x, residual, h, 8192, code, y, words); }, theirPulses);
    peerRowOnce(
        "veksLSFDecode_G7291_16s", "bcg729 decodeLSP", [] { veksLSFDecode_G7291_16s(index, history, lsf); },
        [] {
            uint16_t theirs[4] = {1, 37, 12, 25};
            decodeLSP(context, theirs, lsf, 0);
        });
    peerRow(
        "veksGainControl_G7291_16s_I", "opencore-amrnb agc",
        [] {
            static Vek16s gain = 16384;
            static Vek16s level = 16384;
            veksGainControl_G7291_16s_I(x, residual, &gain, 410, 1, &level);
        },
        [] {
            static int16_t gain = 4096;
            int overflow = 0;
            agc(&gain, x, residual, 29491, 40, &overflow);
        });
}
#endif

#if __has_include(<speex/speex.h>) && __has_include(<bcg729/encoder.h>)
extern "C" {
void qmf_decomp(const float* x, const float* taps, float* low, float* high, int n, int m, float* memory, char* stack);
void qmf_synth(const float* low, const float* high, const float* taps, float* y, int n, int m, float* lowMemory,
               float* highMemory, char* stack);
void* initBcg729EncoderChannel(uint8_t noVoice);
void preProcessing(void* encoder, const int16_t* signal, int16_t* out);
}

PEER_ROWS(g7291filters) {
    static Vek16s x[320];
    static Vek16s low[160];
    static Vek16s high[160];
    static Vek16s y[320];
    static Vek8u state[1024];
    static Vek8u filter[1024];
    alignas(16) static float fx[320], fLow[320], fHigh[320], fy[640], taps[64], memory[64], other[64];
    static char stack[65536];
    static void* const encoder = initBcg729EncoderChannel(0);
    data.fill(x, 320, 2000, 3);
    for (int i = 0; i < 320; ++i) {
        fx[i] = x[i];
    }
    for (int i = 0; i < 64; ++i) {
        taps[i] = 1.0F / static_cast<float>(64 + i);
    }
    veksQMFInit_G7291_16s(state);
    for (const int n : {160, 320}) {
        peerRow(
            "veksQMFEncode_G7291_16s, " + std::to_string(n), "speex qmf_decomp (float, 64 taps)",
            [n] { veksQMFEncode_G7291_16s(x, n, low, high, state); },
            [n] { qmf_decomp(fx, taps, fLow, fHigh, n, 64, memory, stack); });
    }
    for (const int n : {80, 160}) {
        peerRow(
            "veksQMFDecode_G7291_16s, " + std::to_string(n), "speex qmf_synth (float, 64 taps)",
            [n] { veksQMFDecode_G7291_16s(low, high, 16384, n, y, state); },
            [n] { qmf_synth(fLow, fHigh, taps, fy, 2 * n, 64, memory, other, stack); });
    }
    const auto theirHighPass = [] {
        static int16_t frame[80];
        preProcessing(encoder, x, frame);
    };
    veksFilterHighpassInit_G7291_16s(filter);
    peerRow(
        "veksFilterHighpass_G7291_16s_ISfs, 80", "bcg729 preProcessing",
        [] {
            static Vek16s frame[80];
            std::copy(x, x + 80, frame);
            veksFilterHighpass_G7291_16s_ISfs(frame, 80, filter, 1);
        },
        theirHighPass);
    static Vek8u lowFilter[1024];
    veksFilterLowpassInit_G7291_16s(lowFilter);
    peerRow(
        "veksFilterLowpass_G7291_16s_I, 80, one section", "bcg729 preProcessing",
        [] {
            static Vek16s frame[80];
            std::copy(x, x + 80, frame);
            veksFilterLowpass_G7291_16s_I(frame, 80, lowFilter, 1);
        },
        theirHighPass);
}
#endif

#if __has_include(<libavutil/tx.h>)
PEER_ROWS(g7291tdac) {
    static Vek16s x[160];
    static Vek16s before[160];
    static Vek16s coefficients[160];
    static Vek16s y[160];
    alignas(64) static float fx[320], fy[320];
    alignas(64) static int32_t ix[320], iy[320];
    data.fill(x, 160, 2000, 4);
    for (int i = 0; i < 160; ++i) {
        fx[i] = fx[i + 160] = x[i];
        ix[i] = ix[i + 160] = x[i];
    }
    static AVTXContext *real = nullptr, *whole = nullptr, *back = nullptr;
    static av_tx_fn realFn = nullptr, wholeFn = nullptr, backFn = nullptr;
    const float scale = 1;
    if (av_tx_init(&real, &realFn, AV_TX_FLOAT_MDCT, 0, 160, &scale, 0) < 0 ||
        av_tx_init(&whole, &wholeFn, AV_TX_INT32_MDCT, 0, 160, &scale, 0) < 0 ||
        av_tx_init(&back, &backFn, AV_TX_INT32_MDCT, 1, 160, &scale, 0) < 0) {
        return;
    }
    const auto forward = [] {
        int norm = 0;
        veksMDCTFwd_G7291_16s(x, before, &norm, coefficients, 2);
    };
    peerRow("veksMDCTFwd_G7291_16s", "libavutil MDCT of 160 in 32-bit integers", forward,
            [] { wholeFn(whole, iy, ix, sizeof(int32_t)); });
    peerRow("veksMDCTFwd_G7291_16s", "libavutil MDCT of 160 in float (no window)", forward,
            [] { realFn(real, fy, fx, sizeof(float)); });
    peerRow(
        "veksMDCTInv_G7291_16s", "libavutil inverse MDCT of 160 in 32-bit integers",
        [] { veksMDCTInv_G7291_16s(coefficients, before, y, 1); }, [] { backFn(back, iy, ix, sizeof(int32_t)); });
}
#endif
