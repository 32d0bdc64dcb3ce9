// Gains and adaptive codebook of G.729 beside a G.729 codec and an AMR codec.
#include "peers.h"

#include "veksc.h"

#if __has_include(<bcg729/encoder.h>)
extern "C" {
void* initBcg729EncoderChannel(uint8_t noVoice);
void gainQuantization(void* encoder, int16_t* target, int16_t* adaptive, int16_t* filtered, int16_t* code, int64_t xy,
                      int64_t yy, int16_t* pitch, int16_t* gain, uint16_t* first, uint16_t* second);
void* initBcg729DecoderChannel();
void decodeGains(void* decoder, uint16_t first, uint16_t second, int16_t* code, uint8_t erased, int16_t* pitch,
                 int16_t* gain);
int16_t computeAdaptativeCodebookGain(int16_t* target, int16_t* filtered, int64_t* xy, int64_t* yy);
void synthesisFilter(int16_t* x, int16_t* a, int16_t* y);
void computeImpulseResponseCorrelationMatrix(int16_t* h, int16_t* d, int* sign, int32_t (*phi)[40]);
void computeAdaptativeCodebookVector(int16_t* excitation, int16_t fraction, int16_t delay);
void adaptativeCodebookSearch(int16_t* excitation, int16_t* shortest, int16_t* longest, int16_t* h, int16_t* target,
                              int16_t* delay, int16_t* fraction, uint16_t* code, uint16_t offset);
}

PEER_ROWS(g729gain) {
    static Vek16s target[40];
    static Vek16s adaptive[40];
    static Vek16s filtered[40];
    static Vek16s code[40];
    static Vek16s h[40];
    static Vek16s excitation[194];
    static Vek16s lpc[11] = {4096, -5200, 1900, 1300, -900, -500, 800, -300, -200, 200, -50};
    static Vek16s y[50];
    static Vek16s past[4] = {-14336, -14336, -14336, -14336};
    static Vek16s gains[2];
    static Vek16s codes[2];
    static void* const encoder = initBcg729EncoderChannel(0);
    static void* const decoder = initBcg729DecoderChannel();
    static int64_t xy = 0;
    static int64_t yy = 0;
    data.fill(adaptive, 40, 1000);
    data.fill(filtered, 40, 4000, 1);
    for (int i = 0; i < 40; ++i) {
        target[i] = static_cast<Vek16s>(adaptive[i] * 3 / 4 + filtered[i] / 16);
        code[i] = i % 11 == 2 ? 8192 : 0;
        h[i] = static_cast<Vek16s>((i * 3571 % 4001 - 2000) / (i + 1));
        xy += adaptive[i] * target[i];
        yy += adaptive[i] * adaptive[i];
    }
    h[0] = 4096;
    data.fill(excitation, 194, 1000, 2);
    const auto theirQuantiser = [] {
        static uint16_t first;
        static uint16_t second;
        gainQuantization(encoder, target, adaptive, filtered, code, xy, yy, gains, gains + 1, &first, &second);
    };
    peerRow(
        "veksGainQuant_G729_16s", "bcg729 gainQuantization (two sums given)",
        [] { veksGainQuant_G729_16s(target, adaptive, code, filtered, past, gains, codes, 0); }, theirQuantiser);
    peerRow(
        "veksDotProd_G729A_16s32s + veksDecodeGain_G729_16s", "bcg729 decodeGains",
        [] {
            static Vek16s both[2] = {3, 9};
            static Vek32s energy;
            veksDotProd_G729A_16s32s(code, code, 40, &energy);
            veksDecodeGain_G729_16s(energy, past, both, gains);
        },
        [] { decodeGains(decoder, 3, 9, code, 0, gains, gains + 1); });
    peerRow(
        "veksGainQuant_G729D_16s", "bcg729 gainQuantization (two sums given, 3 and 4 bits)",
        [] { veksGainQuant_G729D_16s(target, adaptive, code, filtered, past, gains, codes, 0); }, theirQuantiser);
    peerRow(
        "veksDotProd_G729A_16s32s + veksDecodeGain_G729I_16s", "bcg729 decodeGains",
        [] {
            static const Vek16s both[2] = {3, 9};
            static Vek32s energy;
            veksDotProd_G729A_16s32s(code, code, 40, &energy);
            veksDecodeGain_G729I_16s(energy, 32113, past, both, gains);
        },
        [] { decodeGains(decoder, 3, 9, code, 0, gains, gains + 1); });
    peerRowOnce(
        "veksDecodeGain_G729I_16s, erased", "bcg729 decodeGains",
        [] {
            static const Vek16s none[2] = {-1, 0};
            veksDecodeGain_G729I_16s(1 << 26, 32113, past, none, gains);
        },
        [] { decodeGains(decoder, 3, 9, code, 1, gains, gains + 1); });
    peerRow(
        "veksAdaptiveCodebookGain_G729A_16s", "bcg729 synthesisFilter, computeAdaptativeCodebookGain",
        [] { veksAdaptiveCodebookGain_G729A_16s(target, lpc, adaptive, y + 10, gains); },
        [] {
            static int64_t sums[2];
            synthesisFilter(adaptive, lpc + 1, y + 10);
            gains[0] = computeAdaptativeCodebookGain(target, y + 10, sums, sums + 1);
        });
    peerRow(
        "veksAdaptiveCodebookSearch_G729A_16s", "bcg729 adaptativeCodebookSearch",
        [] {
            static Vek16s delay[2];
            static Vek16s vector[40];
            veksAdaptiveCodebookSearch_G729A_16s(60, target, h, excitation, delay, vector, 0);
        },
        [] {
            static int16_t delay;
            static int16_t fraction;
            static uint16_t word;
            int16_t shortest = 57;
            int16_t longest = 63;
            adaptativeCodebookSearch(excitation + 154, &shortest, &longest, h, target, &delay, &fraction, &word, 0);
        });
    peerRow(
        "veksDecodeAdaptiveVector_G729_16s_I", "bcg729 computeAdaptativeCodebookVector",
        [] {
            static const Vek16s delay[2] = {60, 1};
            veksDecodeAdaptiveVector_G729_16s_I(delay, excitation);
        },
        [] { computeAdaptativeCodebookVector(excitation + 154, 1, 60); });
    peerRow(
        "veksToeplizMatrix_G729_16s32s", "bcg729 computeImpulseResponseCorrelationMatrix",
        [] {
            static Vek32s matrix[616];
            veksToeplizMatrix_G729_16s32s(h, matrix);
        },
        [] {
            static int32_t phi[40][40];
            static int signs[40];
            computeImpulseResponseCorrelationMatrix(h, filtered, signs, phi);
        });
}
#endif
