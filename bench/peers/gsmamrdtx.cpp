// DTX, open-loop pitch, line spectra, autocorrelation and voice activity of AMR beside an AMR codec's.
#include "peers.h"

#include "veksc.h"

#if __has_include(<opencore-amrnb/interf_enc.h>)
#include <cstring>

extern "C" {
extern const int16_t window_200_40[];
void get_const_tbls(void* tables);
void dtx_dec_activity_update(void* s, int16_t* lsf, int16_t* frame, int* overflow);
void dtx_buffer(void* s, int16_t* lsp, int16_t* speech, int* overflow);
void dtx_enc(void* s, int16_t flag, int16_t* residual, int16_t* predictor, int16_t** words, int* overflow);
int16_t tx_dtx_handler(void* s, int16_t vad, int* mode, int* overflow);
void subframePreProc(int mode, const int16_t* g1, const int16_t* g1High, const int16_t* g2, int16_t* a, int16_t* aq,
                     int16_t* speech, int16_t* error, int16_t* weight, int16_t* zero, int16_t* response, int16_t* exc,
                     int16_t* h1, int16_t* xn, int16_t* res2, int16_t* err);
void pre_big(int mode, const int16_t* g1, const int16_t* g1High, const int16_t* g2, int16_t* a, int16_t offset,
             int16_t* speech, int16_t* memory, int16_t* weighted, int* overflow);
void ol_ltp(int16_t* s, void* vad, int mode, int16_t* weighted, int16_t* lag, int16_t* lags, int16_t* gains,
            int16_t half, int dtx, int* overflow);
void D_plsf_3(int16_t* s, int mode, int16_t bfi, int16_t* words, void* tables, int16_t* lsp, int* overflow);
void Q_plsf_3(int16_t* residual, int mode, int16_t* lsp, int16_t* quantised, int16_t* words, int16_t* start,
              int* overflow);
void Q_plsf_5(int16_t* residual, int16_t* lsp1, int16_t* lsp2, int16_t* q1, int16_t* q2, int16_t* words, int* overflow);
int16_t Autocorr(int16_t* x, int16_t order, int16_t* high, int16_t* low, const int16_t* window, int* overflow);
int16_t vad1(void* s, int16_t* frame, int* overflow);
int16_t vad1_reset(void* s);
}

namespace {

int overflow;
int16_t x[640];
int16_t spectrum[20] = {30000, 26000, 21000, 15000, 8000, 0,    -8000, -15000, -21000, -26000,
                        29500, 26500, 20000, 14000, 9000, 1000, -7000, -14000, -22000, -27000};
int16_t a[44], flat[44];
int16_t powers[3][10];
alignas(16) unsigned char tables[1024];
alignas(16) int16_t record[256], vadRecord[128];
int16_t out[64], words[8];
VeksVAD1State_GSMAMR state1;

enum class Detector { none, first, second };

void pitchRow(const char* name, int mode, VekSpchBitRate rate, Detector detector) {
    static int16_t median = 40, strength, tone, maxHp, lags[5], weighted[303], lag[2], gain[2];
    static int16_t theirs[303], memory[10], weight[3] = {40, 0, 0};
    static Vek32s correlation, energy;
    const bool dtx = detector == Detector::first;
    peerRow(
        name, "opencore-amrnb pre_big, ol_ltp",
        [=] {
            if (detector == Detector::second) {
                veksOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s(a, flat, x + 40, &median, &strength, lags, weighted,
                                                             &correlation, &energy, lag, gain, rate);
            } else if (dtx) {
                veksOpenLoopPitchSearchDTXVAD1_GSMAMR_16s(a, flat, x + 40, &tone, &median, &strength, lags, weighted,
                                                          &maxHp, lag, gain, rate);
            } else {
                veksOpenLoopPitchSearchNonDTX_GSMAMR_16s(a, flat, x + 40, &median, &strength, lags, weighted, lag, gain,
                                                         rate);
            }
        },
        [=] {
            for (int half = 0; half < 2; ++half) {
                pre_big(mode, powers[0], powers[1], powers[2], a, static_cast<int16_t>(80 * half), x + 40, memory,
                        theirs + 143, &overflow);
                if (mode > 1 || half == 1) {
                    ol_ltp(weight, vadRecord, mode, theirs + 143 + (mode > 1 ? 80 * half : 0), lag + half, lags, gain,
                           static_cast<int16_t>(half), dtx ? 1 : 0, &overflow);
                }
            }
            std::memmove(theirs, theirs + 160, 143 * sizeof(int16_t));
        });
}

} // namespace

PEER_ROWS(gsmamrdtx) {
    data.fill(x, 640, 1000);
    for (int s = 0; s < 4; ++s) {
        veksLSPToLPC_G729_16s(spectrum, a + 11 * s);
        flat[11 * s] = 4096;
        flat[11 * s + 1] = -1000;
    }
    for (int i = 0; i < 10; ++i) {
        powers[0][i] = static_cast<int16_t>(30802 >> i / 3);
        powers[1][i] = static_cast<int16_t>(29491 >> i / 2);
        powers[2][i] = static_cast<int16_t>(19661 >> i);
    }
    get_const_tbls(tables);
    vad1_reset(vadRecord);
    for (int i = 0; i < 9; ++i) {
        state1.bckrEst[i] = state1.aveLevel[i] = state1.oldLevel[i] = 150;
    }
    static int16_t place = 7, spectra[80], energies[8], residual[10], theirResidual[10];
    static int16_t hangover, elapsed, sid, energyIndex, start, parts[3], error[8], previous[10], pairs[10],
        subframes[40];
    static VekSpchBitRate used = VEK_SPCHBR_7400;
    static int usedTheirs = 4;
    static int16_t zero[40], response[51], exc[40], h[40], target[40], rest[40], errors[50];
    static Vek32s r[22];
    static int16_t high[11], low[11], decoder[20];
    static int16_t flag;
    for (int k = 0; k < 80; ++k) {
        spectra[k] = record[k] = spectrum[k % 10];
    }
    peerRow(
        "veksEncDTXBuffer_GSMAMR_16s", "opencore-amrnb dtx_buffer",
        [] { veksEncDTXBuffer_GSMAMR_16s(x, spectrum, &place, spectra, energies); },
        [] { dtx_buffer(record, spectrum, x, &overflow); });
    static Vek16s decoderPlace = 7, frequencies[80], decoderEnergies[8];
    alignas(16) static int16_t decoderRecord[512];
    peerRow(
        "veksDecDTXBuffer_GSMAMR_16s", "opencore-amrnb dtx_dec_activity_update",
        [] { veksDecDTXBuffer_GSMAMR_16s(x, spectrum, &decoderPlace, frequencies, decoderEnergies); },
        [] { dtx_dec_activity_update(decoderRecord, spectrum, x, &overflow); });
    peerRowOnce(
        "veksEncDTXHandler_GSMAMR_16s", "opencore-amrnb tx_dtx_handler",
        [] { veksEncDTXHandler_GSMAMR_16s(&hangover, &elapsed, &used, &sid, 1); },
        [] { tx_dtx_handler(record, 1, &usedTheirs, &overflow); });
    peerRow(
        "veksEncDTXSID_GSMAMR_16s", "opencore-amrnb dtx_enc",
        [] { veksEncDTXSID_GSMAMR_16s(spectra, energies, &energyIndex, &start, parts, error, error + 4, 1); },
        [] {
            int16_t* at = words;
            dtx_enc(record, 1, theirResidual, out, &at, &overflow);
        });
    peerRow(
        "veksImpulseResponseTarget_GSMAMR_16s", "opencore-amrnb subframePreProc",
        [] { veksImpulseResponseTarget_GSMAMR_16s(x + 10, a, flat, a, errors, previous, h, rest, target); },
        [] {
            subframePreProc(4, powers[0], powers[1], powers[2], a, a, x + 10, errors, previous, zero, response, exc, h,
                            target, rest, errors + 10);
        });
    pitchRow("veksOpenLoopPitchSearchNonDTX_GSMAMR_16s, 4.75", 0, VEK_SPCHBR_4750, Detector::none);
    pitchRow("veksOpenLoopPitchSearchNonDTX_GSMAMR_16s, 7.4", 4, VEK_SPCHBR_7400, Detector::none);
    pitchRow("veksOpenLoopPitchSearchDTXVAD1_GSMAMR_16s, 10.2", 6, VEK_SPCHBR_10200, Detector::first);
    pitchRow("veksOpenLoopPitchSearchDTXVAD1_GSMAMR_16s, 12.2", 7, VEK_SPCHBR_12200, Detector::first);
    pitchRow("veksOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s, 4.75", 0, VEK_SPCHBR_4750, Detector::second);
    pitchRow("veksOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s, 7.4", 4, VEK_SPCHBR_7400, Detector::second);
    peerRowOnce(
        "veksQuantLSPDecode_GSMAMR_16s, 7.4", "opencore-amrnb D_plsf_3",
        [] { veksQuantLSPDecode_GSMAMR_16s(words, residual, previous, pairs, subframes, 0, VEK_SPCHBR_7400); },
        [] { D_plsf_3(decoder, 4, 0, words, tables, out, &overflow); });
    peerRowOnce(
        "veksLSPQuant_GSMAMR_16s, 7.4", "opencore-amrnb Q_plsf_3",
        [] { veksLSPQuant_GSMAMR_16s(spectrum, residual, out, words, VEK_SPCHBR_7400); },
        [] { Q_plsf_3(theirResidual, 4, spectrum, out, words, &start, &overflow); });
    peerRowOnce(
        "veksLSPQuant_GSMAMR_16s, 12.2", "opencore-amrnb Q_plsf_5",
        [] { veksLSPQuant_GSMAMR_16s(spectrum, residual, out, words, VEK_SPCHBR_12200); },
        [] { Q_plsf_5(theirResidual, spectrum, spectrum + 10, out, out + 10, words, &overflow); });
    peerRow(
        "veksAutoCorr_GSMAMR_16s32s", "opencore-amrnb Autocorr",
        [] { veksAutoCorr_GSMAMR_16s32s(x, r, VEK_SPCHBR_7400); },
        [] { Autocorr(x, 10, high, low, window_200_40, &overflow); });
    peerRow(
        "veksVAD1_GSMAMR_16s", "opencore-amrnb vad1", [] { veksVAD1_GSMAMR_16s(x, &state1, &flag, 0, 0); },
        [] { vad1(vadRecord, x + 40, &overflow); });
}
#endif
