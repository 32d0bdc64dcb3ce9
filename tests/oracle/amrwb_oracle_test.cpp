// Codebooks, open-loop pitch and gains of AMR-WB against independent open codecs. Their step functions are in no public
// header; the packages' headers tell whether to link.
#include <gtest/gtest.h>

#include "noise.h"
#include "veksc.h"

#if __has_include(<vo-amrwbenc/enc_if.h>) && __has_include(<opencore-amrwb/dec_if.h>)

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "amrwb_steps.h"

extern "C" {
void lagconceal(int16_t* gains, int16_t* lags, int16_t* lag, int16_t* former, int16_t* seed, int16_t lost);
int32_t Dot_product12(int16_t* x, int16_t* y, int16_t n, int16_t* exponent);
void one_ov_sqrt_norm(int32_t* fraction, int16_t* exponent);
}

namespace {

constexpr VekSpchBitRate kRates[] = {VEK_SPCHBR_6600,  VEK_SPCHBR_8850,  VEK_SPCHBR_12650,
                                     VEK_SPCHBR_14250, VEK_SPCHBR_15850, VEK_SPCHBR_18250,
                                     VEK_SPCHBR_19850, VEK_SPCHBR_23050, VEK_SPCHBR_23850};
constexpr int16_t kCodeBits[] = {12, 20, 36, 44, 52, 64, 72, 88, 88};
constexpr int16_t kFrameBits[] = {132, 177, 253, 285, 317, 365, 397, 461, 477};

Samples response(std::mt19937& random, int first) {
    Samples h = noise(random, 64, -first / 2, first / 2);
    for (size_t i = 1; i < 64; ++i) {
        h[i] = static_cast<int16_t>(h[i] * 6 / static_cast<int>(i + 5));
    }
    h[0] = static_cast<int16_t>(first);
    return h;
}

TEST(AmrWbAlgebraicSearchOracle, HasTheSameBitsAtAllRates) {
    std::mt19937 random(1);
    for (int round = 0; round < 3000; ++round) {
        for (size_t r = 0; r < 9; ++r) {
            // Energies of the response below 2, above it and far above it.
            constexpr int kFirst[3] = {4096, 6500, 16000};
            Samples h = response(random, r > 3 ? kFirst[round % 3] : 4096);
            Samples x = noise(random, 64, -(8 << round % 9), 8 << round % 9);
            Samples cn = noise(random, 64, -(8 << round % 8), 8 << round % 8);
            Samples dn(64);
            Samples code(64);
            Samples y(64);
            Samples want(8);
            voAWB_cor_h_x(h.data(), x.data(), dn.data());
            if (r == 0) {
                ACELP_2t64_fx(dn.data(), cn.data(), h.data(), code.data(), y.data(), want.data());
            } else {
                ACELP_4t64_fx(dn.data(), cn.data(), h.data(), code.data(), y.data(), kCodeBits[r], kFrameBits[r],
                              want.data());
            }
            Samples vector(64);
            Samples filtered(64);
            Samples got(8);
            ASSERT_EQ(vekStsNoErr, veksAlgebraicCodebookSearch_AMRWB_16s(x.data(), cn.data(), h.data(), vector.data(),
                                                                         filtered.data(), kRates[r], got.data()));
            EXPECT_EQ(want, got) << "rate " << r << " round " << round;
            EXPECT_EQ(code, vector) << "rate " << r;
            EXPECT_EQ(y, filtered) << "rate " << r;
        }
    }
}

TEST(AmrWbAlgebraicDecodeOracle, HasTheSameVectorsAtAllRates) {
    std::mt19937 random(2);
    for (int round = 0; round < 2000 && !testing::Test::HasFailure(); ++round) {
        for (size_t r = 0; r < 9; ++r) {
            Samples words = noise(random, 8, 0, 16383);
            const int upper = r == 0 ? 4095 : r == 1 ? 31 : r == 2 ? 511 : r <= 4 ? 8191 : r == 5 ? 3 : 2047;
            for (size_t i = 0; i < 4; ++i) {
                const int track = r == 6 ? (i < 2 ? 1023 : 3) : r == 3 && i >= 2 ? 511 : upper;
                const int low = r == 6 ? (i < 2 ? 1023 : 16383) : r >= 7 ? 2047 : 16383;
                words[i] = static_cast<int16_t>(words[i] & track);
                words[i + 4] = static_cast<int16_t>(words[i + 4] & low);
            }
            Samples want(64);
            Samples copy = words;
            if (r == 0) {
                dec_acelp_2p_in_64(copy[0], want.data());
            } else {
                dec_acelp_4p_in_64(copy.data(), kCodeBits[r], want.data());
            }
            Samples got(64);
            ASSERT_EQ(vekStsNoErr, veksAlgebraicCodebookDecode_AMRWB_16s(words.data(), got.data(), kRates[r]));
            EXPECT_EQ(want, got) << "rate " << r;
        }
    }
}

TEST(AmrWbAdaptiveSearchOracle, HasTheSameLagIndexAndVector) {
    std::mt19937 random(3);
    for (int round = 0; round < 200 && !testing::Test::HasFailure(); ++round) {
        for (size_t r = 0; r < 9; ++r) {
            int first = 0;
            int16_t bounds[2] = {};
            for (int subframe = 0; subframe < 4; ++subframe) {
                Samples h = response(random, 24000);
                Samples x = noise(random, 64, -(8 << round % 10), 8 << round % 10);
                Samples exc = noise(random, 505, -(8 << round % 10), 8 << round % 10);
                Samples theirs = exc;
                const int16_t open[2] = {static_cast<int16_t>(pick(random, 17, 115)),
                                         static_cast<int16_t>(pick(random, 17, 115))};
                const bool coarse = r < 2;
                const bool relative = subframe % 2 == 1 || (subframe == 2 && r == 0);
                if (!relative) {
                    first = std::min(std::max(2 * open[subframe / 2] - 8, 34), 216);
                }
                int16_t fraction = 0;
                const int lag = Pitch_fr4(theirs.data() + 248, x.data(), h.data(), static_cast<int16_t>(first),
                                          static_cast<int16_t>(first + 15), &fraction, relative ? 64 : 0,
                                          coarse ? 34 : 128, coarse ? 92 : 160, 64);
                voAWB_Pred_lt4(theirs.data() + 248, static_cast<int16_t>(lag), fraction, 65);
                int16_t gotLag[2] = {};
                int16_t gotFraction = 0;
                int16_t index = 0;
                int16_t before[2] = {bounds[0], bounds[1]};
                ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookSearch_AMRWB_16s(x.data(), h.data(), open, gotLag, bounds,
                                                                            exc.data() + 248, &gotFraction, &index,
                                                                            subframe, kRates[r]));
                EXPECT_EQ(lag, gotLag[0]) << "rate " << r;
                EXPECT_EQ(fraction, gotFraction) << "rate " << r;
                EXPECT_EQ(theirs, exc);
                if (!relative) {
                    first = std::min(std::max(lag - 8, 34), 216);
                    EXPECT_EQ(first, bounds[0]);
                }
                // The decoder finds the same from the index.
                std::vector<char> memory(256);
                auto* state = reinterpret_cast<VekAdaptiveCodebookState_AMRWB*>(memory.data());
                ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookDecodeInit_AMRWB_16s(state));
                int16_t decoded = 0;
                ASSERT_EQ(vekStsNoErr,
                          veksAdaptiveCodebookDecode_AMRWB_16s(index, &gotFraction, exc.data() + 248, &decoded, before,
                                                               subframe, 0, 0, kRates[r], state));
                EXPECT_EQ(lag, decoded);
                EXPECT_EQ(fraction, gotFraction);
                Pred_lt4(theirs.data() + 248, static_cast<int16_t>(lag), fraction, 65);
                // That codec writes groups of four and the last one alone.
                EXPECT_EQ(Samples(theirs.begin(), theirs.begin() + 313), Samples(exc.begin(), exc.begin() + 313));
            }
        }
    }
}

TEST(AmrWbConcealmentOracle, SubstitutesTheSameLags) {
    std::mt19937 random(4);
    std::vector<char> memory(256);
    auto* state = reinterpret_cast<VekAdaptiveCodebookState_AMRWB*>(memory.data());
    ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookDecodeInit_AMRWB_16s(state));
    int16_t lags[5] = {64, 64, 64, 64, 64};
    int16_t gains[5] = {};
    int16_t former = 64;
    int16_t seed = 21845;
    for (int round = 0; round < 5000 && !testing::Test::HasFailure(); ++round) {
        const int index = round / 40 % 2 == 0 ? pick(random, 60, 75) : pick(random, 0, 511);
        const int bfi = pick(random, 0, 2) == 0 ? 1 : 0;
        const int lost = pick(random, 0, 1);
        Samples exc = noise(random, 505, -4096, 4096);
        int16_t bounds[2] = {};
        int16_t fraction = 0;
        int16_t lag = 0;
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookDecode_AMRWB_16s(index, &fraction, exc.data() + 248, &lag, bounds, 0,
                                                                    bfi, lost, VEK_SPCHBR_12650, state));
        int16_t want = static_cast<int16_t>(index < 376   ? 34 + index / 4
                                            : index < 440 ? 128 + (index - 376) / 2
                                                          : index - 280);
        if (bfi == 1) {
            lagconceal(gains, lags, &want, &former, &seed, static_cast<int16_t>(lost));
        } else {
            std::memmove(lags + 1, lags, 4 * sizeof(int16_t));
            lags[0] = want;
            former = want;
        }
        EXPECT_EQ(want, lag) << round;
        const auto gain =
            static_cast<int16_t>(round / 100 % 2 == 0 ? pick(random, 8000, 16384) : pick(random, 0, 16384));
        std::memmove(gains, gains + 1, 4 * sizeof(int16_t));
        gains[4] = gain;
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookDecodeGain_AMRWB_16s(gain, state));
    }
}

// Where a coder's record keeps what its open-loop search remembers, in elements.
struct CoderRecord {
    static constexpr size_t kMedian = 627;
    static constexpr size_t kLags = kMedian + 4;
    static constexpr size_t kHighPassed = kLags + 14;

    Samples all = Samples(4096);
    int16_t& median() { return all[kMedian]; }
    int16_t& gain() { return all[kMedian + 1]; }
    int16_t& weight() { return all[kMedian + 2]; }
    int16_t& near() { return all[kMedian + 3]; }
    int16_t* lags() { return all.data() + kLags; }
    Samples::iterator highPassed() { return all.begin() + kHighPassed; }
};

TEST(AmrWbOpenLoopOracle, HasTheSameLagGainAndMemory) {
    std::mt19937 random(7);
    for (const int n : {64, 128}) {
        CoderRecord coder;
        coder.median() = 40;
        std::fill_n(coder.lags(), 5, int16_t{40});
        int16_t median = 40;
        int16_t strength = 0;
        int16_t near = 0;
        int16_t tone = 0;
        int16_t lags[5] = {40, 40, 40, 40, 40};
        Samples speech(115);
        int voiced = 0;
        for (int round = 0; round < 600 && !testing::Test::HasFailure(); ++round) {
            // Stretches of a drifting period, others of noise, loud and soft.
            const int loud = 16 << round / 8 % 9;
            const auto period = static_cast<size_t>(20 + round / 16 * 37 % 90);
            for (int i = 0; i < n; ++i) {
                const int fresh = pick(random, -loud, loud);
                const int before = speech[speech.size() - period];
                const int v = round % 16 < 11 ? before * 29 / 32 + fresh / 5 : fresh;
                speech.push_back(static_cast<int16_t>(std::min(std::max(v, -8000), 8000)));
            }
            Samples filtered(coder.highPassed(), coder.highPassed() + 115);
            const int16_t want = Pitch_med_ol(speech.data() + 115, coder.all.data(), static_cast<int16_t>(n));
            filtered.insert(filtered.end(), coder.highPassed() + 115, coder.highPassed() + 115 + n);
            if (coder.gain() == -32768) {
                coder.gain() = 32767; // that coder's gain of 1 has no saturation
            }
            if (coder.gain() > 19661) {
                coder.median() = Med_olag(want, coder.lags());
                coder.weight() = 32767;
                ++voiced;
            } else {
                coder.weight() = static_cast<int16_t>(coder.weight() * 29491 >> 15);
            }
            coder.near() = coder.weight() >= 26214 ? 1 : 0;
            int16_t lag = 0;
            int16_t gain = 0;
            ASSERT_EQ(vekStsNoErr,
                      veksOpenLoopPitchSearch_AMRWB_16s(speech.data() + 115, filtered.data() + 115, &median, &strength,
                                                        &lag, &tone, &gain, lags, &near, n));
            EXPECT_EQ(want, lag) << round;
            EXPECT_EQ(coder.gain(), gain) << round;
            EXPECT_EQ(coder.median(), median);
            EXPECT_EQ(coder.weight(), strength);
            EXPECT_EQ(coder.near(), near);
            EXPECT_EQ(Samples(coder.lags(), coder.lags() + 5), Samples(lags, lags + 5));
            EXPECT_EQ(gain > 21298 ? 0x4000 : 0, tone & 0x4000);
            speech.erase(speech.begin(), speech.begin() + n);
        }
        EXPECT_GT(voiced, 60);
        EXPECT_LT(voiced, 540);
    }
}

TEST(AmrWbGainQuantOracle, HasTheSameIndexAndGains) {
    std::mt19937 random(5);
    for (int clip = 0; clip < 2; ++clip) {
        for (const VekSpchBitRate rate : {VEK_SPCHBR_8850, VEK_SPCHBR_12650}) {
            int16_t past[4] = {-14336, -14336, -14336, -14336};
            int16_t theirPast[4] = {-14336, -14336, -14336, -14336};
            for (int round = 0; round < 1000 && !testing::Test::HasFailure(); ++round) {
                Samples x = noise(random, 64, -(16 << round % 8), 16 << round % 8);
                Samples y1 = noise(random, 64, -(16 << round % 8), 16 << round % 8);
                Samples y2 = noise(random, 64, -1024, 1024);
                Samples code = noise(random, 64, -600, 600);
                int16_t corr[4] = {};
                voAWB_G_pitch(x.data(), y1.data(), corr, 64);
                int16_t pitch = static_cast<int16_t>(pick(random, 0, 19661));
                int16_t theirPitch = pitch;
                int32_t want = 0;
                const int16_t format = static_cast<int16_t>(pick(random, -3, 8));
                const int16_t wantIndex =
                    Q_gain2(x.data(), y1.data(), format, y2.data(), code.data(), corr, 64,
                            rate == VEK_SPCHBR_8850 ? 6 : 7, &theirPitch, &want, static_cast<int16_t>(clip), theirPast);
                int32_t got = 0;
                int16_t index = 0;
                ASSERT_EQ(vekStsNoErr, veksGainQuant_AMRWB_16s(x.data(), y1.data(), format, code.data(), y2.data(),
                                                               corr, past, &pitch, &got, clip, &index, 64, rate));
                EXPECT_EQ(wantIndex, index);
                EXPECT_EQ(theirPitch, pitch);
                EXPECT_EQ(want, got);
                EXPECT_EQ(0, std::memcmp(past, theirPast, sizeof past));
            }
        }
    }
}

// The inverse root of the energy a sample of a vector in Q9, Q12, as that decoder has it.
int16_t inverseRoot(Samples& code) {
    int16_t exponent = 0;
    int32_t energy = Dot_product12(code.data(), code.data(), 64, &exponent);
    exponent = static_cast<int16_t>(exponent - 18 - 6);
    one_ov_sqrt_norm(&energy, &exponent);
    return static_cast<int16_t>((exponent >= 3 ? energy << (exponent - 3) : energy >> (3 - exponent)) >> 16);
}

TEST(AmrWbGainDecodeOracle, HasTheSameGainsAndEnergiesInLostFramesToo) {
    std::mt19937 random(6);
    int16_t memory[23] = {};
    dec_gain2_amr_wb_init(memory);
    int16_t past[4] = {-14336, -14336, -14336, -14336};
    int16_t former = 0;
    int16_t pastCode = 0;
    int16_t prevBfi = 0;
    int bounded = 0;
    for (int round = 0; round < 4000 && !testing::Test::HasFailure(); ++round) {
        Samples code(64);
        for (int i = 0; i < 2 << round % 4; ++i) {
            code[static_cast<size_t>(pick(random, 0, 63))] = pick(random, 0, 1) == 0 ? 512 : -512;
        }
        const bool six = round / 50 % 2 == 0;
        const int index = pick(random, 0, six ? 63 : 127);
        const auto bfi = static_cast<int16_t>(pick(random, 0, 4) == 0);
        int16_t wantPitch = 0;
        int32_t want = 0;
        // With a speech history the loss does not fade the code gain.
        dec_gain2_amr_wb(static_cast<int16_t>(index), six ? 6 : 7, code.data(), 64, &wantPitch, &want, bfi, prevBfi, 0,
                         0, 3, memory);
        int16_t pitch = wantPitch;
        if (bfi == 1) {
            pastCode = memory[5];
        }
        int32_t got = 0;
        const int16_t root = inverseRoot(code);
        ASSERT_EQ(vekStsNoErr, veksDecodeGain_AMRWB_16s(index, root, &pitch, &got, bfi, prevBfi, past, &former,
                                                        &pastCode, six ? VEK_SPCHBR_6600 : VEK_SPCHBR_23850));
        EXPECT_EQ(wantPitch, pitch);
        EXPECT_EQ(want, got) << round;
        EXPECT_EQ(memory[5], pastCode);
        EXPECT_EQ(memory[6], former);
        if (bfi == 1) {
            // That decoder halves the mean of the past energies and keeps the oldest one; TS 26.191 has it otherwise.
            std::copy_n(memory, 4, past);
        }
        EXPECT_EQ(Samples(memory, memory + 4), Samples(past, past + 4));
        bounded += bfi == 0 && prevBfi == 1 ? 1 : 0;
        prevBfi = bfi;
    }
    EXPECT_GT(bounded, 300);
}

} // namespace
#else
TEST(AmrWbOracle, NeedsAnIndependentCodec) {
    GTEST_SKIP() << "libvo-amrwbenc-dev and libopencore-amrwb-dev are not installed";
}
#endif
