// DTX, open-loop pitch, line spectrum quantiser, autocorrelation and voice activity of AMR against an independent open
// codec. Its step functions are in no public header: they and their records are declared here, and the package's header
// tells whether to link.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "samples.h"
#include "vekcore.h"
#include "veksc.h"

#if __has_include(<opencore-amrnb/interf_enc.h>)
#define ORACLE_AMR 1
extern "C" {
struct PredictorRecord {
    int16_t error[4];
    int16_t error122[4];
};
struct EncoderDtxRecord {
    int16_t lsp[80];
    int16_t energy[8];
    int16_t place;
    int16_t energyIndex;
    int16_t start;
    int16_t index[3];
    int16_t hangover;
    int16_t elapsed;
};
struct DecoderDtxRecord {
    int16_t before[4];
    int32_t seed;
    int16_t lsp[20];
    int16_t lsf[80];
    int16_t lsfPlace;
    int16_t means[80];
    int16_t meanGain;
    int16_t energy[8];
    int16_t energyPlace;
    int16_t behind[16];
};
struct DecoderLsfRecord {
    int16_t residual[10];
    int16_t lsf[10];
};
struct ActivityRecord {
    int16_t noise[9], average[9], old[9], sub[9];
    int16_t filter5[6], filter3[5];
    int16_t burst, hang, stat, reg, pitch, tone, high, low, oldLagCount, oldLag, complexHang, complexTimer, best,
        decision, warning, spBurst, fast;
};
struct WeightRecord {
    int16_t median, strength, flag;
};
extern const int16_t window_200_40[], window_160_80[], window_232_8[];
void get_const_tbls(void* tables);
void dtx_dec_activity_update(DecoderDtxRecord* s, int16_t* lsf, int16_t* frame, int* overflow);
void dtx_buffer(EncoderDtxRecord* s, int16_t* lsp, int16_t* speech, int* overflow);
int16_t tx_dtx_handler(EncoderDtxRecord* s, int16_t vad, int* mode, int* overflow);
void dtx_enc(EncoderDtxRecord* s, int16_t flag, int16_t* residual, PredictorRecord* predictor, int16_t** words,
             int* overflow);
void subframePreProc(int mode, const int16_t* g1, const int16_t* g1High, const int16_t* g2, int16_t* a, int16_t* aq,
                     int16_t* speech, int16_t* error, int16_t* weight, int16_t* zero, int16_t* response, int16_t* exc,
                     int16_t* h1, int16_t* xn, int16_t* res2, int16_t* err);
void pre_big(int mode, const int16_t* g1, const int16_t* g1High, const int16_t* g2, int16_t* a, int16_t offset,
             int16_t* speech, int16_t* memory, int16_t* weighted, int* overflow);
void ol_ltp(WeightRecord* s, ActivityRecord* vad, int mode, int16_t* weighted, int16_t* lag, int16_t* lags,
            int16_t* gains, int16_t half, int dtx, int* overflow);
void Weight_Ai(int16_t* a, const int16_t* factors, int16_t* weighted);
void D_plsf_3(DecoderLsfRecord* s, int mode, int16_t bfi, int16_t* index, void* tables, int16_t* lsp, int* overflow);
void D_plsf_5(DecoderLsfRecord* s, int16_t bfi, int16_t* index, void* tables, int16_t* lsp1, int16_t* lsp2,
              int* overflow);
void Init_D_plsf_3(DecoderLsfRecord* s, int16_t index, const int16_t* start);
void Int_lpc_1to3(int16_t* old, int16_t* now, int16_t* a, int* overflow);
void Int_lpc_1and3(int16_t* old, int16_t* mid, int16_t* now, int16_t* a, int* overflow);
void Q_plsf_3(int16_t* residual, int mode, int16_t* lsp, int16_t* quantised, int16_t* index, int16_t* start,
              int* overflow);
void Q_plsf_5(int16_t* residual, int16_t* lsp1, int16_t* lsp2, int16_t* q1, int16_t* q2, int16_t* index, int* overflow);
int16_t Autocorr(int16_t* x, int16_t order, int16_t* high, int16_t* low, const int16_t* window, int* overflow);
int16_t vad1(ActivityRecord* s, int16_t* frame, int* overflow);
int16_t vad1_reset(ActivityRecord* s);
void vad_pitch_detection(ActivityRecord* s, int16_t* lags, int* overflow);
extern const int16_t past_rq_init[80];
}
#endif

#if defined(ORACLE_AMR)

namespace {

constexpr VekSpchBitRate kRates[9] = {VEK_SPCHBR_4750,  VEK_SPCHBR_5150,  VEK_SPCHBR_5900,
                                      VEK_SPCHBR_6700,  VEK_SPCHBR_7400,  VEK_SPCHBR_7950,
                                      VEK_SPCHBR_10200, VEK_SPCHBR_12200, VEK_SPCHBR_DTX};
constexpr int k1220 = 7;
constexpr int kDtx = 8;

int pick(std::mt19937& random, int count) {
    return ::pick(random, 0, count - 1);
}

int16_t clip(double v) {
    return static_cast<int16_t>(std::clamp(std::lround(v), -32768L, 32767L));
}

// Speech of a kind: pulses, sines, noise and silence take turns; every kind of level.
Samples signal(unsigned seed, int frames, int steps = 41) {
    std::mt19937 random(seed);
    Samples x;
    double phase = 0;
    for (int f = 0; f < frames; f += 5) {
        const int kind = pick(random, 6);
        const double level = std::pow(10.0, 0.5 + pick(random, steps) / 10.0);
        const double period = 18 + pick(random, 130);
        for (int i = 0; i < 5 * 160; ++i) {
            const double hiss = std::uniform_real_distribution<double>(-1, 1)(random);
            phase = phase + 1 >= period ? phase + 1 - period : phase + 1;
            const double pulse = std::exp(-phase / 7) * std::cos(phase * 0.9);
            const double sine = std::sin(6.283185307 * phase / period);
            const double v = kind == 0   ? hiss
                             : kind == 1 ? sine
                             : kind == 2 ? 0.001 * hiss
                             : kind == 3 ? 2 * pulse + 0.3 * hiss
                                         : pulse + 0.1 * hiss;
            x.push_back(clip(v * level));
        }
    }
    return x;
}

Samples walkOfPairs(std::mt19937& random, bool wild = false, double least = 0.4) {
    double at = 0;
    double gaps[11];
    double sum = 0;
    for (double& g : gaps) {
        g = std::uniform_real_distribution<double>(wild ? 0.01 : least, 1.6)(random);
        sum += g;
    }
    Samples lsp;
    for (int i = 0; i < 10; ++i) {
        at += gaps[i] * 3.14159265 / sum;
        lsp.push_back(clip(32767 * std::cos(at)));
    }
    return lsp;
}

Samples predictor(std::mt19937& random, double least = 0.4) {
    Samples a(11);
    veksLSPToLPC_G729_16s(walkOfPairs(random, false, least).data(), a.data());
    return a;
}

Samples weighted(Samples a, const int16_t* factors) {
    Samples w(11);
    Weight_Ai(a.data(), factors, w.data());
    return w;
}

// Powers of 0.94, 0.9 and 0.6.
const int16_t gamma1[10] = {30802, 28954, 27217, 25584, 24049, 22606, 21250, 19975, 18777, 17650};
const int16_t gamma1_12k2[10] = {29491, 26542, 23888, 21499, 19349, 17414, 15672, 14105, 12694, 11425};
const int16_t gamma2[10] = {19661, 11797, 7078, 4247, 2548, 1529, 917, 550, 330, 198};

struct Tables {
    alignas(16) unsigned char bytes[1024] = {};
    Tables() { get_const_tbls(bytes); }
};

TEST(AmrDtxOracle, BuffersOfBothSidesEqualTheOtherCodec) {
    std::mt19937 random(1);
    const Samples x = signal(2, 400);
    EncoderDtxRecord enc{};
    DecoderDtxRecord dec{};
    enc.place = 7;
    dec.lsfPlace = 70;
    dec.energyPlace = 7;
    Samples lsp(80);
    Samples lsf(80);
    Samples energy(8);
    Samples energyDec(8);
    int16_t at = 7;
    int16_t atDec = 7;
    int overflow = 0;
    for (size_t f = 0; f < 400; ++f) {
        Samples frame(x.begin() + static_cast<long>(f) * 160, x.begin() + static_cast<long>(f + 1) * 160);
        if (f % 50 == 3) {
            frame.assign(160, f % 100 == 3 ? -32768 : 0);
        }
        Samples pairs = walkOfPairs(random);
        dtx_buffer(&enc, pairs.data(), frame.data(), &overflow);
        dtx_dec_activity_update(&dec, pairs.data(), frame.data(), &overflow);
        ASSERT_EQ(0, veksEncDTXBuffer_GSMAMR_16s(frame.data(), pairs.data(), &at, lsp.data(), energy.data()));
        ASSERT_EQ(0, veksDecDTXBuffer_GSMAMR_16s(frame.data(), pairs.data(), &atDec, lsf.data(), energyDec.data()));
        ASSERT_EQ(enc.place, at);
        ASSERT_EQ(dec.energyPlace, atDec);
        ASSERT_EQ(Samples(enc.lsp, enc.lsp + 80), lsp);
        ASSERT_EQ(Samples(dec.lsf, dec.lsf + 80), lsf);
        ASSERT_EQ(Samples(enc.energy, enc.energy + 8), energy) << f;
        ASSERT_EQ(Samples(dec.energy, dec.energy + 8), energyDec) << f;
    }
}

TEST(AmrDtxOracle, HandlerEqualsTheOtherCodec) {
    std::mt19937 random(3);
    EncoderDtxRecord s{};
    s.elapsed = 32767;
    int16_t hangover = 0;
    int16_t elapsed = 32767;
    int overflow = 0;
    bool speech = false;
    for (int f = 0; f < 5000; ++f) {
        speech = pick(random, 12) == 0 ? !speech : speech;
        int mode = f % 8;
        VekSpchBitRate ours = kRates[mode];
        int16_t flag = 5;
        const int16_t want = tx_dtx_handler(&s, speech ? 1 : 0, &mode, &overflow);
        ASSERT_EQ(0, veksEncDTXHandler_GSMAMR_16s(&hangover, &elapsed, &ours, &flag, speech ? 1 : 0));
        ASSERT_EQ(want, flag) << f;
        ASSERT_EQ(kRates[mode], ours) << f;
        ASSERT_EQ(s.hangover, hangover);
        ASSERT_EQ(s.elapsed, elapsed);
    }
}

TEST(AmrDtxOracle, SilenceFrameEqualsTheOtherCodec) {
    std::mt19937 random(4);
    EncoderDtxRecord s{};
    PredictorRecord p{};
    int16_t residual[10] = {};
    int16_t energyIndex = 0;
    int16_t start = 0;
    int16_t index[3] = {};
    int16_t error[4] = {};
    int16_t error122[4] = {};
    int overflow = 0;
    for (int f = 0; f < 600; ++f) {
        for (int k = 0; k < 8; ++k) {
            const Samples lsp = f % 7 == 0 ? noise(random, 10, 32767) : walkOfPairs(random, f % 3 == 0);
            std::copy(lsp.begin(), lsp.end(), s.lsp + 10 * k);
            s.energy[k] = static_cast<int16_t>(pick(random, 24000) - 8000);
        }
        const int16_t flag = pick(random, 3) == 0 ? 0 : 1;
        int16_t words[8];
        int16_t* at = words;
        dtx_enc(&s, flag, residual, &p, &at, &overflow);
        ASSERT_EQ(0, veksEncDTXSID_GSMAMR_16s(s.lsp, s.energy, &energyIndex, &start, index, error, error122, flag));
        ASSERT_EQ(s.energyIndex, energyIndex) << f;
        ASSERT_EQ(s.start, start) << f;
        ASSERT_EQ(Samples(s.index, s.index + 3), Samples(index, index + 3)) << f;
        ASSERT_EQ(Samples(p.error, p.error + 4), Samples(error, error + 4)) << f;
        ASSERT_EQ(Samples(p.error122, p.error122 + 4), Samples(error122, error122 + 4)) << f;
    }
}

TEST(AmrPitchOracle, ResponseResidualAndTargetEqualTheOtherCodec) {
    std::mt19937 random(5);
    for (int round = 0; round < 300; ++round) {
        const int mode = round % 8;
        // Louder frames overflow, where the other codec's filters wrap and ours saturate.
        const int level = 2 << (round % 11);
        Samples a = predictor(random);
        Samples aq = predictor(random);
        Samples speech = noise(random, 50, level);
        Samples error = noise(random, 50, level / 2);
        Samples memory = noise(random, 10, level / 2);
        int16_t zero[40] = {};
        int16_t response[51] = {};
        Samples exc(40), h(40), xn(40), residual(40);
        Samples theirError = error;
        Samples theirMemory = memory;
        subframePreProc(mode, gamma1, gamma1_12k2, gamma2, a.data(), aq.data(), speech.data() + 10, theirError.data(),
                        theirMemory.data(), zero, response, exc.data(), h.data(), xn.data(), residual.data(),
                        theirError.data() + 10);
        const Samples w1 = weighted(a, mode >= 6 ? gamma1_12k2 : gamma1);
        const Samples w2 = weighted(a, gamma2);
        Samples ourH(40), ourResidual(40), target(40);
        ASSERT_EQ(0, veksImpulseResponseTarget_GSMAMR_16s(speech.data() + 10, w1.data(), w2.data(), aq.data(),
                                                          error.data(), memory.data(), ourH.data(), ourResidual.data(),
                                                          target.data()));
        ASSERT_EQ(h, ourH) << round;
        ASSERT_EQ(residual, ourResidual) << round;
        ASSERT_EQ(xn, target) << round;
    }
}

// Frames in a row through both codecs, at one rate; the memories go on.
void searchesEqual(int mode, unsigned seed, int frames) {
    SCOPED_TRACE(mode);
    std::mt19937 random(seed);
    // The other codec's residual wraps where it overflows: speech stays below that, but loud enough to be scaled.
    Samples x = signal(seed, frames + 5, 33);
    WeightRecord weight{40, 0, 0};
    ActivityRecord vad{};
    Samples theirs(303);
    Samples memory(10);
    Samples lags(5, 40);
    Samples ours[3] = {theirs, theirs, theirs};
    Samples ourLags[3] = {lags, lags, lags};
    int16_t median[3] = {40, 40, 40};
    int16_t strength[3] = {};
    int16_t tone = 0;
    int overflow = 0;
    for (int f = 0; f < frames; ++f) {
        Samples a, w1, w2;
        for (int s = 0; s < 4; ++s) {
            Samples one = predictor(random, 1.2);
            const Samples n = weighted(one, mode >= 6 ? gamma1_12k2 : gamma1);
            const Samples d = weighted(one, gamma2);
            a.insert(a.end(), one.begin(), one.end());
            w1.insert(w1.end(), n.begin(), n.end());
            w2.insert(w2.end(), d.begin(), d.end());
        }
        int16_t* speech = x.data() + 160 * (f + 1);
        int16_t lag[2] = {};
        int16_t gain[2] = {};
        for (int half = 0; half < 2; ++half) {
            pre_big(mode, gamma1, gamma1_12k2, gamma2, a.data(), static_cast<int16_t>(80 * half), speech, memory.data(),
                    theirs.data() + 143, &overflow);
            if (mode > 1) {
                ol_ltp(&weight, &vad, mode, theirs.data() + 143 + 80 * half, lag + half, lags.data(), gain,
                       static_cast<int16_t>(half), 1, &overflow);
            }
        }
        if (mode <= 1) {
            ol_ltp(&weight, &vad, mode, theirs.data() + 143, lag, lags.data(), gain, 1, 1, &overflow);
            lag[1] = lag[0];
        }
        std::copy(theirs.begin() + 160, theirs.end(), theirs.begin());
        int16_t ourLag[3][2] = {};
        int16_t ourGain[3][2] = {};
        int16_t maxHp = 0;
        int32_t correlation = 0;
        int32_t energy = 0;
        ASSERT_EQ(0, veksOpenLoopPitchSearchNonDTX_GSMAMR_16s(w1.data(), w2.data(), speech, &median[0], &strength[0],
                                                              ourLags[0].data(), ours[0].data(), ourLag[0], ourGain[0],
                                                              kRates[mode]));
        ASSERT_EQ(0, veksOpenLoopPitchSearchDTXVAD1_GSMAMR_16s(w1.data(), w2.data(), speech, &tone, &median[1],
                                                               &strength[1], ourLags[1].data(), ours[1].data(), &maxHp,
                                                               ourLag[1], ourGain[1], kRates[mode]));
        ASSERT_EQ(0, veksOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s(
                         w1.data(), w2.data(), speech, &median[2], &strength[2], ourLags[2].data(), ours[2].data(),
                         &correlation, &energy, ourLag[2], ourGain[2], kRates[mode]));
        for (int form = 0; form < 3; ++form) {
            ASSERT_EQ(theirs, ours[form]) << f;
            ASSERT_EQ(Samples(lag, lag + 2), Samples(ourLag[form], ourLag[form] + 2)) << f;
            if (mode == 6) {
                ASSERT_EQ(Samples(gain, gain + 2), Samples(ourGain[form], ourGain[form] + 2)) << f;
                ASSERT_EQ(lags, ourLags[form]) << f;
                ASSERT_EQ(weight.median, median[form]) << f;
                ASSERT_EQ(weight.strength, strength[form]) << f;
            }
        }
        ASSERT_EQ(vad.tone, tone) << f;
        ASSERT_EQ(vad.best, maxHp) << f;
        ASSERT_LE(correlation, energy == 0 ? 0 : INT32_MAX);
    }
}

TEST(AmrPitchOracle, DelaysTonesAndCorrelationEqualTheOtherCodecAtAllRates) {
    for (int mode = 0; mode < 8; ++mode) {
        searchesEqual(mode, 70u + static_cast<unsigned>(mode), 300);
    }
}

TEST(AmrPitchOracle, EveryLevelEqualsTheOtherCodec) {
    for (const int mode : {0, 4, 6, 7}) {
        searchesEqual(mode, 90, 60);
    }
}

TEST(AmrLspOracle, DecodedPairsEqualTheOtherCodecGoodAndBad) {
    Tables tables;
    int overflow = 0;
    for (int mode = 0; mode < 9; ++mode) {
        SCOPED_TRACE(mode);
        std::mt19937 random(6);
        DecoderLsfRecord s{};
        Samples old = walkOfPairs(random);
        for (int i = 0; i < 10; ++i) {
            s.lsf[i] = static_cast<int16_t>(1384 + 1400 * i);
        }
        Samples residual(10);
        Samples lsf(s.lsf, s.lsf + 10);
        Samples ourOld = old;
        for (int f = 0; f < 500; ++f) {
            const bool lowest = mode <= 1;
            int16_t index[5] = {static_cast<int16_t>(pick(random, mode == 5 ? 512 : 256)),
                                static_cast<int16_t>(pick(random, lowest ? 256 : 512)),
                                static_cast<int16_t>(pick(random, lowest ? 128 : 512)), 0, 0};
            if (mode == k1220) {
                index[0] = static_cast<int16_t>(pick(random, 128));
                index[1] = static_cast<int16_t>(pick(random, 256));
                index[3] = static_cast<int16_t>(pick(random, 256));
                index[4] = static_cast<int16_t>(pick(random, 64));
            }
            const int16_t bfi = pick(random, 5) == 0 ? 1 : 0;
            Samples a(44), mid(10), now(10), out(40);
            int16_t theirs[5];
            std::copy(index, index + 5, theirs);
            if (mode == k1220) {
                D_plsf_5(&s, bfi, theirs, tables.bytes, mid.data(), now.data(), &overflow);
                Int_lpc_1and3(old.data(), mid.data(), now.data(), a.data(), &overflow);
            } else {
                if (mode == kDtx) {
                    const auto start = static_cast<int16_t>(pick(random, 8));
                    if (bfi == 0) {
                        Init_D_plsf_3(&s, start, past_rq_init);
                    }
                    std::copy_backward(index, index + 3, index + 4);
                    index[0] = start;
                }
                D_plsf_3(&s, mode, bfi, theirs, tables.bytes, now.data(), &overflow);
                Int_lpc_1to3(old.data(), now.data(), a.data(), &overflow);
            }
            old = now;
            ASSERT_EQ(0, veksQuantLSPDecode_GSMAMR_16s(index, residual.data(), lsf.data(), ourOld.data(), out.data(),
                                                       bfi, kRates[mode]));
            ASSERT_EQ(Samples(s.residual, s.residual + 10), residual) << f;
            ASSERT_EQ(Samples(s.lsf, s.lsf + 10), lsf) << f;
            ASSERT_EQ(now, Samples(out.begin() + 30, out.end())) << f;
            ASSERT_EQ(now, ourOld);
            for (int sub = 0; sub < 4; ++sub) {
                Samples coefficients(11);
                veksLSPToLPC_G729_16s(out.data() + 10 * sub, coefficients.data());
                ASSERT_EQ(Samples(a.begin() + 11 * sub, a.begin() + 11 * (sub + 1)), coefficients) << f << " " << sub;
            }
        }
    }
}

TEST(AmrLspOracle, QuantisedPairsEqualTheOtherCodec) {
    int overflow = 0;
    for (int mode = 0; mode < 9; ++mode) {
        SCOPED_TRACE(mode);
        std::mt19937 random(7);
        int16_t theirs[10] = {};
        Samples ours(10);
        for (int f = 0; f < 1500; ++f) {
            Samples lsp = walkOfPairs(random, f % 3 == 0);
            const Samples second = walkOfPairs(random, f % 4 == 0);
            lsp.resize(10);
            lsp.insert(lsp.end(), second.begin(), second.end());
            Samples want(20), got(20);
            int16_t index[5] = {};
            int16_t ourIndex[5] = {};
            if (mode == k1220) {
                Q_plsf_5(theirs, lsp.data(), lsp.data() + 10, want.data(), want.data() + 10, index, &overflow);
            } else if (mode == kDtx) {
                Q_plsf_3(theirs, mode, lsp.data(), want.data(), index + 1, index, &overflow);
            } else {
                int16_t start = 0;
                Q_plsf_3(theirs, mode, lsp.data(), want.data(), index, &start, &overflow);
            }
            ASSERT_EQ(0, veksLSPQuant_GSMAMR_16s(lsp.data(), ours.data(), got.data(), ourIndex, kRates[mode]));
            ASSERT_EQ(Samples(index, index + 5), Samples(ourIndex, ourIndex + 5)) << f;
            ASSERT_EQ(want, got) << f;
            ASSERT_EQ(Samples(theirs, theirs + 10), ours) << f;
        }
    }
}

TEST(AmrAutocorrelationOracle, EqualsTheOtherCodecWithItsThreeWindows) {
    std::mt19937 random(8);
    int overflow = 0;
    for (int round = 0; round < 200; ++round) {
        // At full scale the other codec's energy wraps.
        Samples x = noise(random, 240, 1 << (round % 15));
        for (const int mode : {0, 7, 8}) {
            Vek32s r[22] = {};
            ASSERT_EQ(0, veksAutoCorr_GSMAMR_16s32s(x.data(), r, kRates[mode]));
            for (int half = 0; half < (mode == k1220 ? 2 : 1); ++half) {
                int16_t high[11], low[11];
                Autocorr(x.data(), 10, high, low,
                         mode != k1220 ? window_200_40
                         : half == 0   ? window_160_80
                                       : window_232_8,
                         &overflow);
                for (int k = 0; k < 11; ++k) {
                    // The other codec's two words hold 31 bits.
                    ASSERT_EQ(high[k] * 65536 + low[k] * 2, r[11 * half + k] & ~1) << round << " " << k;
                }
            }
        }
    }
}

// A noise whose level wanders, so that decisions stand near the threshold at every noise that it knows.
Samples wandering(unsigned seed, int frames) {
    std::mt19937 random(seed);
    Samples x;
    double level = 30 * std::pow(2.0, seed % 8);
    const double base = level;
    for (int f = 0; f < frames; ++f) {
        level = std::clamp(level * std::uniform_real_distribution<double>(0.7, 1.45)(random), base / 3, base * 3);
        for (int i = 0; i < 160; ++i) {
            x.push_back(clip(level * std::uniform_real_distribution<double>(-1, 1)(random)));
        }
    }
    return x;
}

TEST(AmrVad1Oracle, DecisionsAndMemoryEqualTheOtherCodec) {
    for (unsigned seed = 20; seed < 44; ++seed) {
        const bool near = seed >= 28;
        std::mt19937 random(seed);
        Samples x = near ? wandering(seed, 600) : signal(seed, 600);
        ActivityRecord s{};
        vad1_reset(&s);
        VeksVAD1State_GSMAMR ours{};
        for (int i = 0; i < 9; ++i) {
            ours.bckrEst[i] = ours.aveLevel[i] = ours.oldLevel[i] = 150;
        }
        ours.corrHpFast = 13106;
        int overflow = 0;
        int speech = 0;
        int16_t base = 60;
        for (int f = 1; f < 600; ++f) {
            s.best = static_cast<int16_t>(near            ? 9000
                                          : f % 200 < 120 ? pick(random, 32768)
                                                          : 25000 + pick(random, 7000));
            s.tone = static_cast<int16_t>(near ? 0 : pick(random, 3) == 0 ? 0x7fff : pick(random, 32768));
            int16_t* frame = x.data() + 160 * f;
            const int16_t maxHp = s.best;
            const int16_t tone = s.tone;
            int16_t flag = -1;
            const int16_t want = vad1(&s, frame, &overflow);
            ASSERT_EQ(0, veksVAD1_GSMAMR_16s(frame - 40, &ours, &flag, maxHp, tone));
            ASSERT_EQ(want, flag) << f;
            speech += want;
            ASSERT_EQ(Samples(s.noise, s.noise + 9), Samples(ours.bckrEst, ours.bckrEst + 9)) << f;
            ASSERT_EQ(Samples(s.average, s.average + 9), Samples(ours.aveLevel, ours.aveLevel + 9)) << f;
            ASSERT_EQ(Samples(s.old, s.old + 9), Samples(ours.oldLevel, ours.oldLevel + 9)) << f;
            ASSERT_EQ(Samples(s.sub, s.sub + 9), Samples(ours.subLevel, ours.subLevel + 9)) << f;
            ASSERT_EQ(
                Samples(
                    {s.burst, s.hang, s.stat, s.reg, s.pitch, s.high, s.low, s.complexHang, s.complexTimer, s.fast}),
                Samples({ours.burstCount, ours.hangCount, ours.statCount, ours.vadReg, ours.pitch, ours.complexHigh,
                         ours.complexLow, ours.complexHangCount, ours.complexHangTimer, ours.corrHpFast}))
                << f;
            base = near || pick(random, 6) == 0 ? static_cast<int16_t>(20 + pick(random, 120)) : base;
            int16_t lags[2] = {base, static_cast<int16_t>(base + pick(random, 3))};
            vad_pitch_detection(&s, lags, &overflow);
            ours.pitch = s.pitch;
        }
        EXPECT_GT(speech, 50);
        EXPECT_LT(speech, 599);
    }
}

} // namespace

#else

TEST(AmrDtxOracle, NeedsAPackage) {
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
}

#endif
