// DTX, open-loop pitch, line spectra and autocorrelation of AMR: what they refuse, and their arithmetic where it
// saturates.
#include "lp_reference.h"
#include "veksc.h"

#include <cmath>
#include <numbers>

namespace {

using namespace lpref;

constexpr VekSpchBitRate kRates[] = {VEK_SPCHBR_4750, VEK_SPCHBR_5150, VEK_SPCHBR_5900,  VEK_SPCHBR_6700,
                                     VEK_SPCHBR_7400, VEK_SPCHBR_7950, VEK_SPCHBR_10200, VEK_SPCHBR_12200};

Samples flatLsp() {
    Samples lsp;
    for (int i = 1; i <= 10; ++i) {
        lsp.push_back(static_cast<int16_t>(std::lround(32767 * std::cos(i * std::numbers::pi / 11))));
    }
    return lsp;
}

TEST(VekAmrDtxBuffer, EntersInARingAndTheEncoderKeepsHalfTheLogarithm) {
    Samples speech(160, 0);
    Samples spectrum = flatLsp();
    Samples spectra(80, 9);
    Samples energies(8, 9);
    int16_t at = 7;
    ASSERT_EQ(0, veksDecDTXBuffer_GSMAMR_16s(speech.data(), spectrum.data(), &at, spectra.data(), energies.data()));
    EXPECT_EQ(0, at);
    EXPECT_EQ(spectrum, Samples(spectra.begin(), spectra.begin() + 10));
    EXPECT_EQ(Samples(70, 9), Samples(spectra.begin() + 10, spectra.end()));
    EXPECT_EQ(-8521, energies[0]);
    speech.assign(160, 64); // 12 above 1
    ASSERT_EQ(0, veksDecDTXBuffer_GSMAMR_16s(speech.data(), spectrum.data(), &at, spectra.data(), energies.data()));
    EXPECT_EQ(1, at);
    EXPECT_NEAR(12 * 1024, energies[1], 2);
    ASSERT_EQ(0, veksEncDTXBuffer_GSMAMR_16s(speech.data(), spectrum.data(), &at, spectra.data(), energies.data()));
    EXPECT_EQ(2, at);
    EXPECT_NEAR(6 * 1024, energies[2], 1);
    EXPECT_EQ(9, energies[3]);
}

TEST(VekAmrDtxBuffer, RefusesNullAndAPlaceOutsideTheRing) {
    Samples speech(160), spectrum(10), spectra(80, 3), energies(8, 3);
    for (const auto function : {veksDecDTXBuffer_GSMAMR_16s, veksEncDTXBuffer_GSMAMR_16s}) {
        int16_t at = 7;
        expectNullsRefused(function, speech.data(), spectrum.data(), &at, spectra.data(), energies.data());
        for (const int16_t wrong : {-1, 8}) {
            at = wrong;
            EXPECT_EQ(vekStsRangeErr, function(speech.data(), spectrum.data(), &at, spectra.data(), energies.data()));
            EXPECT_EQ(wrong, at);
        }
    }
    EXPECT_EQ(Samples(80, 3), spectra);
    EXPECT_EQ(Samples(8, 3), energies);
}

TEST(VekAmrDtxHandler, HangsOverSevenFramesAfterLongSpeechAndNoneAfterShort) {
    int16_t hangover = 0;
    int16_t elapsed = 0;
    int16_t sid = 9;
    const auto frame = [&](int16_t vad) {
        VekSpchBitRate mode = VEK_SPCHBR_7400;
        EXPECT_EQ(0, veksEncDTXHandler_GSMAMR_16s(&hangover, &elapsed, &mode, &sid, vad));
        return mode;
    };
    for (int f = 0; f < 40; ++f) {
        EXPECT_EQ(VEK_SPCHBR_7400, frame(1));
        EXPECT_EQ(0, sid);
    }
    for (int f = 0; f < 7; ++f) {
        EXPECT_EQ(VEK_SPCHBR_7400, frame(0)) << f;
        EXPECT_EQ(0, sid);
    }
    EXPECT_EQ(VEK_SPCHBR_DTX, frame(0));
    EXPECT_EQ(1, sid);
    EXPECT_EQ(0, elapsed);
    frame(1);
    EXPECT_EQ(VEK_SPCHBR_DTX, frame(0));
    EXPECT_EQ(0, sid);
    EXPECT_EQ(6, hangover);
}

TEST(VekAmrDtxHandler, TheCountOfFramesStaysAtItsLargest) {
    int16_t hangover = 0;
    int16_t elapsed = 32766;
    int16_t sid = 9;
    VekSpchBitRate mode = VEK_SPCHBR_7400;
    for (int f = 0; f < 3; ++f) {
        EXPECT_EQ(0, veksEncDTXHandler_GSMAMR_16s(&hangover, &elapsed, &mode, &sid, 1));
        EXPECT_EQ(32767, elapsed) << f;
    }
}

TEST(VekAmrDtxHandler, RefusesNullAndANegativeHangover) {
    int16_t hangover = 3;
    int16_t elapsed = 4;
    int16_t sid = 9;
    VekSpchBitRate mode = VEK_SPCHBR_7400;
    expectNullsRefused(veksEncDTXHandler_GSMAMR_16s, &hangover, &elapsed, &mode, &sid, 0);
    hangover = -1;
    EXPECT_EQ(vekStsRangeErr, veksEncDTXHandler_GSMAMR_16s(&hangover, &elapsed, &mode, &sid, 0));
    EXPECT_EQ(4, elapsed);
    EXPECT_EQ(9, sid);
    EXPECT_EQ(VEK_SPCHBR_7400, mode);
}

TEST(VekAmrDtxSid, KeepsTheLastDescriptionWithoutTheFlag) {
    Samples lsp, energies(8, 2000);
    for (int k = 0; k < 8; ++k) {
        const Samples one = flatLsp();
        lsp.insert(lsp.end(), one.begin(), one.end());
    }
    int16_t energyIndex = 5, start = 6, index[3] = {7, 8, 9}, error[4] = {1, 1, 1, 1}, error122[4] = {2, 2, 2, 2};
    ASSERT_EQ(0,
              veksEncDTXSID_GSMAMR_16s(lsp.data(), energies.data(), &energyIndex, &start, index, error, error122, 0));
    EXPECT_EQ(5, energyIndex);
    EXPECT_EQ(6, start);
    EXPECT_EQ(8, index[1]);
    EXPECT_EQ(1, error[3]);
    ASSERT_EQ(0,
              veksEncDTXSID_GSMAMR_16s(lsp.data(), energies.data(), &energyIndex, &start, index, error, error122, 1));
    EXPECT_EQ((2000 + 2560 + 128) >> 8, energyIndex); // eight quarters, halved
    EXPECT_EQ(energyIndex * 256 - 2560 - 9000, error[0]);
    EXPECT_EQ(error[0], error[3]);
    EXPECT_EQ((5443 * error[0]) >> 15, error122[3]);
    Samples residual(10), quantised(10), parts(5);
    ASSERT_EQ(0, veksLSPQuant_GSMAMR_16s(lsp.data(), residual.data(), quantised.data(), parts.data(), VEK_SPCHBR_DTX));
    EXPECT_EQ(parts[0], start);
    EXPECT_EQ(Samples(index, index + 3), Samples(parts.begin() + 1, parts.begin() + 4));
}

TEST(VekAmrDtxSid, RefusesNull) {
    Samples lsp(80), energies(8);
    int16_t a = 1, b = 1, index[3] = {}, e1[4] = {}, e2[4] = {};
    const int16_t* src[] = {lsp.data(), energies.data()};
    for (int missing = 0; missing < 7; ++missing) {
        EXPECT_EQ(vekStsNullPtrErr,
                  veksEncDTXSID_GSMAMR_16s(missing == 0 ? nullptr : src[0], missing == 1 ? nullptr : src[1],
                                           missing == 2 ? nullptr : &a, missing == 3 ? nullptr : &b,
                                           missing == 4 ? nullptr : index, missing == 5 ? nullptr : e1,
                                           missing == 6 ? nullptr : e2, 1))
            << missing;
    }
    EXPECT_EQ(1, a);
}

// Filters step by step, with the saturation of each step.
int16_t rounded(int64_t s) {
    return static_cast<int16_t>(clip(clip(s * 8, 32) + 0x8000, 32) >> 16);
}
Samples residual(const int16_t* a, const Samples& x) {
    Samples y;
    for (size_t i = 10; i < x.size(); ++i) {
        int64_t s = step(0, a[0], x[i], 1);
        for (size_t j = 1; j <= 10; ++j) {
            s = step(s, a[j], x[i - j], 1);
        }
        y.push_back(rounded(s));
    }
    return y;
}
Samples synthesis(const int16_t* a, const Samples& x, const Samples& memory) {
    Samples y = memory;
    for (const int16_t v : x) {
        int64_t s = step(0, a[0], v, 1);
        for (size_t j = 1; j <= 10; ++j) {
            s = step(s, a[j], y[y.size() - j], -1);
        }
        y.push_back(rounded(s));
    }
    return Samples(y.begin() + 10, y.end());
}

Samples predictor(std::mt19937& random) {
    Samples lsp = flatLsp();
    for (int16_t& v : lsp) {
        v = static_cast<int16_t>(clip(v + static_cast<int>(random() % 2001) - 1000, 16));
    }
    Samples a(11);
    veksLSPToLPC_G729_16s(lsp.data(), a.data());
    return a;
}

TEST(VekAmrTarget, EqualsItsFiltersStepByStepEvenWhereTheySaturate) {
    atEveryLevel([] {
        std::mt19937 random(1);
        for (int round = 0; round < 80; ++round) {
            const Samples w1 = predictor(random), w2 = predictor(random), q = predictor(random);
            const int level = round % 16 == 15 ? 32767 : 1 << (round % 16);
            const Samples speech = noise(random, 50, -level, level);
            const Samples error = noise(random, 10, -level, level);
            const Samples memory = noise(random, 10, -level, level);
            Samples start(40);
            std::copy(w1.begin(), w1.end(), start.begin());
            const Samples zero(10);
            const Samples response = synthesis(w2.data(), synthesis(q.data(), start, zero), zero);
            const Samples rest = residual(q.data(), speech);
            Samples both = error;
            const Samples fresh = synthesis(q.data(), rest, error);
            both.insert(both.end(), fresh.begin(), fresh.end());
            const Samples target = synthesis(w2.data(), residual(w1.data(), both), memory);
            Samples h(40), r(40), t(40);
            ASSERT_EQ(0,
                      veksImpulseResponseTarget_GSMAMR_16s(speech.data() + 10, w1.data(), w2.data(), q.data(),
                                                           error.data(), memory.data(), h.data(), r.data(), t.data()));
            ASSERT_EQ(response, h) << round;
            ASSERT_EQ(rest, r) << round;
            ASSERT_EQ(target, t) << round;
        }
    });
}

TEST(VekAmrTarget, RefusesNull) {
    Samples v(60, 1);
    for (int missing = 0; missing < 9; ++missing) {
        int16_t* p[9];
        for (int i = 0; i < 9; ++i) {
            p[i] = i == missing ? nullptr : v.data();
        }
        EXPECT_EQ(vekStsNullPtrErr,
                  veksImpulseResponseTarget_GSMAMR_16s(p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], p[8]))
            << missing;
    }
    EXPECT_EQ(Samples(60, 1), v);
}

// An open-loop search with its memories; the filters are wires, so that the weighted speech is the speech.
struct Search {
    Samples one = Samples(44);
    Samples weighted = Samples(303);
    Samples lags = Samples(5, 40);
    int16_t median = 40, strength = 0, tone = 0, maxHp = 0;
    int32_t correlation = 0, energy = 0;
    int16_t lag[2] = {}, gain[2] = {};

    Search() {
        for (size_t i = 0; i < 44; i += 11) {
            one[i] = 4096;
        }
    }
    VekStatus plain(const int16_t* x, VekSpchBitRate mode) {
        return veksOpenLoopPitchSearchNonDTX_GSMAMR_16s(one.data(), one.data(), x, &median, &strength, lags.data(),
                                                        weighted.data(), lag, gain, mode);
    }
    VekStatus vad1(const int16_t* x, VekSpchBitRate mode) {
        return veksOpenLoopPitchSearchDTXVAD1_GSMAMR_16s(one.data(), one.data(), x, &tone, &median, &strength,
                                                         lags.data(), weighted.data(), &maxHp, lag, gain, mode);
    }
    VekStatus vad2(const int16_t* x, VekSpchBitRate mode) {
        return veksOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s(one.data(), one.data(), x, &median, &strength, lags.data(),
                                                            weighted.data(), &correlation, &energy, lag, gain, mode);
    }
};

TEST(VekAmrOpenLoop, FindsThePeriodAtAllRatesAndBringsTheHistoryForward) {
    for (const VekSpchBitRate mode : kRates) {
        for (const int period : {31, 57, 93}) {
            Search s;
            const Samples x = pulses(period, 4000, 10 + 3 * 160);
            for (int f = 0; f < 3; ++f) {
                ASSERT_EQ(0, s.plain(x.data() + 10 + 160 * f, mode));
            }
            EXPECT_EQ(period, s.lag[0]) << mode;
            EXPECT_EQ(period, s.lag[1]) << mode;
            EXPECT_EQ(Samples(x.end() - 143, x.end()), Samples(s.weighted.begin(), s.weighted.begin() + 143));
            EXPECT_EQ(Samples(x.end() - 160, x.end()), Samples(s.weighted.begin() + 143, s.weighted.end()));
            EXPECT_EQ(mode == VEK_SPCHBR_10200, s.gain[1] > 0);
            EXPECT_EQ(mode == VEK_SPCHBR_10200 ? 32767 : 0, s.strength);
            EXPECT_EQ(mode == VEK_SPCHBR_10200 ? period : 40, s.lags[0]);
        }
    }
}

TEST(VekAmrOpenLoop, Only122TakesDelaysBelow20) {
    const Samples x = pulses(18, 4000, 10 + 3 * 160);
    for (const VekSpchBitRate mode : kRates) {
        Search s;
        for (int f = 0; f < 3; ++f) {
            ASSERT_EQ(0, s.plain(x.data() + 10 + 160 * f, mode));
        }
        EXPECT_EQ(mode == VEK_SPCHBR_12200 ? 18 : 36, s.lag[1]) << mode;
    }
}

TEST(VekAmrOpenLoop, AMedianBeyondTheDelaysCountsAsTheNearest) {
    const Samples x = pulses(70, 4000, 10 + 160);
    for (const auto& [wild, nearest] : {std::pair<int16_t, int16_t>{5, 20}, {-300, 20}, {900, 143}}) {
        Search a, b;
        a.median = wild;
        b.median = nearest;
        a.strength = b.strength = 32767;
        ASSERT_EQ(0, a.plain(x.data() + 10, VEK_SPCHBR_10200));
        ASSERT_EQ(0, b.plain(x.data() + 10, VEK_SPCHBR_10200));
        EXPECT_EQ(b.lag[0], a.lag[0]);
        EXPECT_EQ(b.gain[0], a.gain[0]);
    }
}

TEST(VekAmrOpenLoop, AToneSetsAFlagAHalfAndTwoAtTheLowestRates) {
    Samples x(10 + 3 * 160);
    for (size_t i = 0; i < x.size(); ++i) {
        x[i] = static_cast<int16_t>(std::lround(5000 * std::sin(2 * std::numbers::pi * static_cast<double>(i) / 40)));
    }
    for (const VekSpchBitRate mode : kRates) {
        Search s;
        for (int f = 0; f < 3; ++f) {
            ASSERT_EQ(0, s.vad1(x.data() + 10 + 160 * f, mode));
        }
        EXPECT_EQ(0x7800, s.tone & 0x7800) << mode;
        EXPECT_EQ(0, s.tone & 0x00ff) << mode;
    }
}

TEST(VekAmrOpenLoop, Vad2GetsCorrelationAndEnergyAtTheDelaysFound) {
    for (const VekSpchBitRate mode : kRates) {
        Search s;
        const Samples x = pulses(60, 900, 10 + 2 * 160);
        ASSERT_EQ(0, s.vad2(x.data() + 10, mode));
        ASSERT_EQ(0, s.vad2(x.data() + 170, mode));
        const bool whole = mode == VEK_SPCHBR_4750 || mode == VEK_SPCHBR_5150;
        int64_t correlation = 0;
        int64_t energy = 0;
        for (int half = 0; half < 2; ++half) {
            for (int i = 0; i < 80; ++i) {
                const int at = 170 + 80 * half + i;
                const int past = at - s.lag[half];
                correlation += 2 * x[static_cast<size_t>(at)] * x[static_cast<size_t>(past)];
                energy += 2 * x[static_cast<size_t>(past)] * x[static_cast<size_t>(past)];
            }
        }
        EXPECT_EQ(correlation, s.correlation) << mode << whole;
        EXPECT_EQ(energy, s.energy) << mode;
    }
}

// At full scale even the divided signal's sums saturate on their way.
TEST(VekAmrOpenLoop, SumsThatSaturateAreMadeStepByStep) {
    atEveryLevel([] {
        std::mt19937 random(3);
        Samples x = noise(random, 170, 0, 1);
        for (int16_t& v : x) {
            v = static_cast<int16_t>(v == 0 ? -32768 : 32767);
        }
        Search s;
        s.weighted.assign(303, -32768);
        ASSERT_EQ(0, s.vad2(x.data() + 10, VEK_SPCHBR_4750));
        Samples scaled(143, -4096);
        for (size_t i = 10; i < 170; ++i) {
            scaled.push_back(static_cast<int16_t>(x[i] >> 3));
        }
        int64_t correlation = 0;
        int64_t energy = 0;
        for (size_t i = 143; i < 303; ++i) {
            const int16_t past = scaled[i - static_cast<size_t>(s.lag[0])];
            correlation = step(correlation, scaled[i], past, 1);
            energy = step(energy, past, past, 1);
        }
        EXPECT_EQ(correlation, s.correlation);
        EXPECT_EQ(INT32_MAX, energy);
        EXPECT_EQ(energy, s.energy);
    });
}

TEST(VekAmrOpenLoop, RefusesNullAndOtherRates) {
    Samples v(303, 1);
    int32_t w[2] = {7, 7};
    for (int missing = 0; missing < 12; ++missing) {
        int16_t* p[12];
        for (int i = 0; i < 12; ++i) {
            p[i] = i == missing ? nullptr : v.data();
        }
        if (missing < 9) {
            EXPECT_EQ(vekStsNullPtrErr, veksOpenLoopPitchSearchNonDTX_GSMAMR_16s(p[0], p[1], p[2], p[3], p[4], p[5],
                                                                                 p[6], p[7], p[8], VEK_SPCHBR_7400));
        }
        if (missing < 11) {
            EXPECT_EQ(vekStsNullPtrErr,
                      veksOpenLoopPitchSearchDTXVAD1_GSMAMR_16s(p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], p[8],
                                                                p[9], p[10], VEK_SPCHBR_7400));
            EXPECT_EQ(vekStsNullPtrErr, veksOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s(
                                            p[0], p[1], p[2], p[3], p[4], p[5], p[6], missing == 7 ? nullptr : w,
                                            missing == 8 ? nullptr : w + 1, p[9], p[10], VEK_SPCHBR_7400));
        }
    }
    Search s;
    for (const VekSpchBitRate mode : {VEK_SPCHBR_DTX, VEK_SPCHBR_5300, VEK_SPCHBR_12650}) {
        EXPECT_EQ(vekStsBitRateErr, s.plain(v.data() + 10, mode));
        EXPECT_EQ(vekStsBitRateErr, s.vad1(v.data() + 10, mode));
        EXPECT_EQ(vekStsBitRateErr, s.vad2(v.data() + 10, mode));
    }
    EXPECT_EQ(Samples(303), s.weighted);
    EXPECT_EQ(Samples(303, 1), v);
    EXPECT_EQ(7, w[0]);
}

TEST(VekAmrLsp, DecodingTheIndicesGivesTheQuantisedPairs) {
    atEveryLevel([] {
        for (const VekSpchBitRate mode : {VEK_SPCHBR_DTX, VEK_SPCHBR_4750, VEK_SPCHBR_5150, VEK_SPCHBR_5900,
                                          VEK_SPCHBR_7950, VEK_SPCHBR_10200, VEK_SPCHBR_12200}) {
            Samples lsp = flatLsp();
            const Samples again = flatLsp();
            lsp.insert(lsp.end(), again.begin(), again.end());
            Samples encoder(10), decoder(10), lsf(10), old(10), quantised(20), out(40), index(5);
            for (int f = 0; f < 5; ++f) {
                lsp[3] = static_cast<int16_t>(lsp[3] + 400);
                ASSERT_EQ(0, veksLSPQuant_GSMAMR_16s(lsp.data(), encoder.data(), quantised.data(), index.data(), mode));
                ASSERT_EQ(0, veksQuantLSPDecode_GSMAMR_16s(index.data(), decoder.data(), lsf.data(), old.data(),
                                                           out.data(), 0, mode));
                const bool two = mode == VEK_SPCHBR_12200;
                EXPECT_EQ(Samples(quantised.begin() + (two ? 10 : 0), quantised.begin() + (two ? 20 : 10)),
                          Samples(out.begin() + 30, out.end()));
                EXPECT_EQ(encoder, decoder);
                EXPECT_EQ(Samples(out.begin() + 30, out.end()), old);
                for (size_t i = 0; i < 10; ++i) {
                    EXPECT_NEAR(lsp[i], out[30 + i], 2500) << mode << " " << i;
                }
            }
        }
    });
}

TEST(VekAmrLsp, RefusesNullRatesFlagsAndIndicesBeyondTheirBooks) {
    Samples index(5), a(10, 2), b(10, 2), c(10, 2), out(40, 2), lsp(20);
    for (int missing = 0; missing < 5; ++missing) {
        int16_t* p[5] = {index.data(), a.data(), b.data(), c.data(), out.data()};
        p[missing] = nullptr;
        EXPECT_EQ(vekStsNullPtrErr, veksQuantLSPDecode_GSMAMR_16s(p[0], p[1], p[2], p[3], p[4], 0, VEK_SPCHBR_7400));
        if (missing < 4) {
            int16_t* q[4] = {lsp.data(), a.data(), out.data(), index.data()};
            q[missing] = nullptr;
            EXPECT_EQ(vekStsNullPtrErr, veksLSPQuant_GSMAMR_16s(q[0], q[1], q[2], q[3], VEK_SPCHBR_7400));
        }
    }
    const auto decode = [&](int16_t bfi, VekSpchBitRate mode) {
        return veksQuantLSPDecode_GSMAMR_16s(index.data(), a.data(), b.data(), c.data(), out.data(), bfi, mode);
    };
    EXPECT_EQ(vekStsBitRateErr, decode(0, VEK_SPCHBR_6300));
    EXPECT_EQ(vekStsBitRateErr,
              veksLSPQuant_GSMAMR_16s(lsp.data(), a.data(), out.data(), index.data(), VEK_SPCHBR_6300));
    EXPECT_EQ(vekStsRangeErr, decode(-1, VEK_SPCHBR_7400));
    EXPECT_EQ(vekStsRangeErr, decode(2, VEK_SPCHBR_7400));
    struct Limits {
        VekSpchBitRate mode;
        std::vector<int16_t> rows;
    };
    for (const Limits& limits :
         {Limits{VEK_SPCHBR_4750, {256, 256, 128}}, Limits{VEK_SPCHBR_5150, {256, 256, 128}},
          Limits{VEK_SPCHBR_6700, {256, 512, 512}}, Limits{VEK_SPCHBR_7950, {512, 512, 512}},
          Limits{VEK_SPCHBR_12200, {128, 256, 512, 256, 64}}, Limits{VEK_SPCHBR_DTX, {8, 256, 512, 512}}}) {
        for (size_t part = 0; part < limits.rows.size(); ++part) {
            for (const int16_t wrong : {int16_t{-1}, limits.rows[part]}) {
                index.assign(5, 0);
                index[part] = wrong;
                EXPECT_EQ(vekStsOutOfRangeErr, decode(0, limits.mode)) << limits.mode << " " << part;
            }
        }
    }
    EXPECT_EQ(Samples(10, 2), a);
    EXPECT_EQ(Samples(10, 2), b);
    EXPECT_EQ(Samples(10, 2), c);
    EXPECT_EQ(Samples(40, 2), out);
    index.assign(5, -1);
    EXPECT_EQ(0, decode(1, VEK_SPCHBR_7400));
}

TEST(VekAmrLsp, BadFramesComeNearerToTheMean) {
    Samples index(5), residual(10), lsf, lsp(10), out(40);
    for (int i = 0; i < 10; ++i) {
        lsf.push_back(static_cast<int16_t>(600 + 1500 * i));
    }
    const Samples first = lsf;
    for (int f = 0; f < 60; ++f) {
        ASSERT_EQ(0, veksQuantLSPDecode_GSMAMR_16s(index.data(), residual.data(), lsf.data(), lsp.data(), out.data(), 1,
                                                   VEK_SPCHBR_5900));
    }
    const Samples mean = {1546, 2272, 3778, 5488, 6972, 8382, 10047, 11229, 12766, 13714};
    for (size_t i = 0; i < 10; ++i) {
        EXPECT_NEAR(mean[i], lsf[i], 20) << i;
    }
    EXPECT_EQ(lsp, Samples(out.begin() + 30, out.end()));
}

TEST(VekAmrAutoCorr, OverflowingFramesAreDividedByFourUntilTheyFit) {
    atEveryLevel([] {
        const Samples x(240, -32768);
        int32_t r[11];
        ASSERT_EQ(0, veksAutoCorr_GSMAMR_16s32s(x.data(), r, VEK_SPCHBR_DTX));
        // The window's energy over 240 samples, normalised: no overflow has gone around.
        EXPECT_EQ(1672898434, r[0]);
        for (int k = 1; k < 11; ++k) {
            EXPECT_LT(r[k], r[k - 1]);
            EXPECT_GT(r[k], r[0] / 2);
        }
    });
}

TEST(VekAmrAutoCorr, SilenceGivesOneAndRefusalsLeaveTheResult) {
    const Samples x(240, 0);
    std::vector<int32_t> r(22, 5);
    expectNullsRefused(veksAutoCorr_GSMAMR_16s32s, x.data(), r.data(), VEK_SPCHBR_7400);
    EXPECT_EQ(vekStsBitRateErr, veksAutoCorr_GSMAMR_16s32s(x.data(), r.data(), VEK_SPCHBR_24000));
    EXPECT_EQ(std::vector<int32_t>(22, 5), r);
    ASSERT_EQ(0, veksAutoCorr_GSMAMR_16s32s(x.data(), r.data(), VEK_SPCHBR_7400));
    EXPECT_EQ(1 << 30, r[0]);
    EXPECT_EQ(0, r[10]);
    EXPECT_EQ(5, r[11]);
    ASSERT_EQ(0, veksAutoCorr_GSMAMR_16s32s(x.data(), r.data(), VEK_SPCHBR_12200));
    EXPECT_EQ(1 << 30, r[11]);
    EXPECT_EQ(0, r[21]);
}

} // namespace
