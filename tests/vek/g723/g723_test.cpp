// Linear prediction, spectral frequencies and filters of G.723.1 against their definitions.
#include "lp_reference.h"
#include "veksc.h"

#include <cmath>
#include <numbers>

namespace {

using lpref::clip;

constexpr int kOrder = 10;

const Samples mean = {3131, 4721, 7690, 10806, 13872, 16495, 19752, 22260, 25484, 27718};

// Autocorrelations of decaying resonances, of lag 0 to 10, with the largest at 32000.
std::vector<double> resonance(double f1, double f2, double decay) {
    std::vector<double> r(kOrder + 1);
    for (int k = 0; k <= kOrder; ++k) {
        r[k] = std::pow(decay, k) * (0.6 * std::cos(f1 * k) + 0.4 * std::cos(f2 * k)) * 32000;
    }
    return r;
}

std::vector<double> levinson(const std::vector<double>& r, double& error, double& second) {
    std::vector<double> a(kOrder, 0.0);
    error = r[0];
    for (int i = 0; i < kOrder; ++i) {
        double sum = r[i + 1];
        for (int j = 0; j < i; ++j) {
            sum -= a[j] * r[i - j];
        }
        const double k = sum / error;
        second = i == 1 ? k : second;
        std::vector<double> next = a;
        next[i] = k;
        for (int j = 0; j < i; ++j) {
            next[j] = a[j] - k * a[i - 1 - j];
        }
        a = next;
        error *= 1 - k * k;
    }
    return a;
}

TEST(VekLevinsonG723, SolvesTheNormalEquations) {
    for (const double f1 : {0.3, 0.9, 1.7}) {
        std::vector<double> r = resonance(f1, 2.2, 0.85);
        Samples lags;
        for (double& v : r) {
            v = std::round(v);
            lags.push_back(static_cast<int16_t>(v));
        }
        double error = 0;
        double second = 0;
        const std::vector<double> want = levinson(r, error, second);
        int16_t pk2 = 0;
        int16_t err = lags[0];
        Samples a(kOrder);
        ASSERT_EQ(vekStsNoErr, veksLevinsonDurbin_G723_16s(lags.data() + 1, &pk2, &err, a.data()));
        for (int i = 0; i < kOrder; ++i) {
            EXPECT_NEAR(want[i] * 8192, a[i], 30) << i;
        }
        EXPECT_NEAR(-second * 32768, pk2, 30);
        EXPECT_NEAR(error, err, 20);
    }
}

TEST(VekLevinsonG723, ASineIsToldByItsSecondReflection) {
    Samples lags;
    for (int k = 0; k <= kOrder; ++k) {
        lags.push_back(static_cast<int16_t>(16384 * std::cos(0.6 * k)));
    }
    lags[0] = 16400;
    int16_t pk2 = 0;
    int16_t err = lags[0];
    Samples a(kOrder);
    ASSERT_EQ(vekStsNoErr, veksLevinsonDurbin_G723_16s(lags.data() + 1, &pk2, &err, a.data()));
    EXPECT_GT(pk2, 0x799a);
}

TEST(VekLevinsonG723, BreaksOffAtAReflectionOfOne) {
    const Samples lags = {16384, 32767, 5, 5, 5, 5, 5, 5, 5, 5};
    int16_t pk2 = 0;
    int16_t err = 32767;
    Samples a(kOrder, 7);
    EXPECT_EQ(vekStsNoErr, veksLevinsonDurbin_G723_16s(lags.data(), &pk2, &err, a.data()));
    EXPECT_EQ(32767, pk2);
    EXPECT_EQ((Samples{4096, 0, 0, 0, 0, 0, 0, 0, 0, 0}), a);
    err = 0;
    EXPECT_EQ(vekStsNoErr, veksLevinsonDurbin_G723_16s(lags.data(), &pk2, &err, a.data()));
    EXPECT_EQ(Samples(kOrder, 0), a);
    EXPECT_EQ(0, err);
}

// Prediction coefficients of line spectral frequencies in double.
std::vector<double> predictor(const Samples& lsf) {
    std::vector<double> even = {1};
    std::vector<double> odd = {1};
    for (int i = 0; i < kOrder; ++i) {
        std::vector<double>& p = i % 2 == 0 ? even : odd;
        const double c = -2 * std::cos(std::numbers::pi * lsf[i] / 32768);
        std::vector<double> q(p.size() + 2, 0.0);
        for (size_t k = 0; k < p.size(); ++k) {
            q[k] += p[k];
            q[k + 1] += c * p[k];
            q[k + 2] += p[k];
        }
        p = q;
    }
    std::vector<double> a;
    for (int i = 1; i <= kOrder; ++i) {
        a.push_back(-(even[i] + even[i - 1] + odd[i] - odd[i - 1]) / 2);
    }
    return a;
}

Samples spectrum(std::mt19937& random) {
    Samples lsf = mean;
    for (int16_t& v : lsf) {
        v = static_cast<int16_t>(v + static_cast<int>(random() % 1001) - 500);
    }
    return lsf;
}

TEST(VekLsfG723, ToPredictionCoefficientsIsTheProductOfItsFactors) {
    std::mt19937 random(4);
    for (int n = 0; n < 100; ++n) {
        const Samples lsf = spectrum(random);
        const std::vector<double> want = predictor(lsf);
        Samples a(kOrder);
        ASSERT_EQ(vekStsNoErr, veksLSFToLPC_G723_16s(lsf.data(), a.data()));
        for (int i = 0; i < kOrder; ++i) {
            ASSERT_NEAR(want[i] * 8192, a[i], 12) << n << " " << i;
        }
        Samples place = lsf;
        ASSERT_EQ(vekStsNoErr, veksLSFToLPC_G723_16s_I(place.data()));
        ASSERT_EQ(a, place);
    }
}

// Of three factors that meet the product leaves 32 bits; of the whole, with two at the other end, it does not.
TEST(VekLsfG723, FactorsThatMeetSaturateInEachStep) {
    for (const int16_t frequency : {0, 32767}) {
        int64_t c = frequency == 0 ? -32767 : 32767;
        int64_t f[6] = {1 << 28, 2 * c * 16384, c * c + (int64_t{2} << 28)};
        bool saturated = false;
        const auto cut = [&saturated](int64_t v) {
            saturated = saturated || clip(v, 32) != v;
            return static_cast<int64_t>(clip(v, 32));
        };
        for (int size = 3; size <= 5; ++size) {
            c = size == 4 ? -c : c;
            f[size] = cut(f[size - 2] + ((f[size - 1] * c) >> 15));
            for (int j = size - 1; j >= 2; --j) {
                f[j] = cut(((f[j - 1] * c) >> 15) + (f[j] >> 1) + (f[j - 2] >> 1));
            }
            f[0] >>= 1;
            f[1] = (((c * 65536) >> (size - 1)) + f[1]) >> 1;
        }
        ASSERT_TRUE(saturated);
        Samples want(kOrder);
        for (int i = 0; i < kOrder / 2; ++i) {
            const int64_t even = f[i + 1] + f[i];
            const int64_t odd = f[i + 1] - f[i];
            const auto rounded = [](int64_t v) { return (clip(v, 32) + 0x8000) >> 16; };
            want[i] = static_cast<int16_t>(clip(-clip(rounded((even + odd) * 8), 16), 16));
            want[kOrder - 1 - i] = static_cast<int16_t>(clip(-clip(rounded((even - odd) * 8), 16), 16));
        }
        Samples lsf(kOrder, frequency);
        std::fill_n(lsf.begin() + 6, 4, static_cast<int16_t>(32767 - frequency));
        Samples a(kOrder);
        ASSERT_EQ(vekStsNoErr, veksLSFToLPC_G723_16s(lsf.data(), a.data()));
        EXPECT_EQ(want, a) << frequency;
    }
}

TEST(VekLsfG723, FrequenciesComeBackThroughThePredictor) {
    std::mt19937 random(5);
    for (int n = 0; n < 100; ++n) {
        const Samples lsf = spectrum(random);
        Samples a(kOrder);
        ASSERT_EQ(vekStsNoErr, veksLSFToLPC_G723_16s(lsf.data(), a.data()));
        // Undoes the bandwidth expansion beforehand.
        for (int i = 0; i < kOrder; ++i) {
            a[i] = static_cast<int16_t>(clip(std::lround(a[i] / std::pow(0.994, i + 1)), 16));
        }
        Samples back(kOrder);
        const Samples past(kOrder, 1);
        ASSERT_EQ(vekStsNoErr, veksLPCToLSF_G723_16s(a.data(), past.data(), back.data()));
        for (int i = 0; i < kOrder; ++i) {
            ASSERT_NEAR(lsf[i], back[i], 30) << n << " " << i;
        }
    }
}

TEST(VekLsfG723, WithoutTenCrossingsTheLastFrequenciesStay) {
    const Samples wild = {32767, -32768, 32767, -32768, 32767, -32768, 32767, -32768, 32767, -32768};
    Samples back(kOrder);
    EXPECT_EQ(vekStsNoErr, veksLPCToLSF_G723_16s(wild.data(), mean.data(), back.data()));
    EXPECT_EQ(mean, back);
}

TEST(VekLsfG723, IndexZeroAtTheMeanIsTheMean) {
    const Samples index(3, 0);
    Samples lsf(kOrder);
    EXPECT_EQ(vekStsNoErr, veksLSFDecode_G723_16s(index.data(), mean.data(), 0, lsf.data()));
    EXPECT_EQ(mean, lsf);
    EXPECT_EQ(vekStsNoErr, veksLSFDecode_G723_16s(index.data(), mean.data(), 1, lsf.data()));
    EXPECT_EQ(mean, lsf);
}

TEST(VekLsfG723, PredictionIsStrongerForAnErasedFrameAndItsIndicesAreNotUsed) {
    Samples past = mean;
    past[5] = static_cast<int16_t>(past[5] + 800);
    const Samples index(3, 0);
    const Samples wrong = {-1, 999, 3};
    Samples lsf(kOrder);
    EXPECT_EQ(vekStsNoErr, veksLSFDecode_G723_16s(index.data(), past.data(), 0, lsf.data()));
    EXPECT_EQ(mean[5] + 300, lsf[5]);
    EXPECT_EQ(vekStsNoErr, veksLSFDecode_G723_16s(wrong.data(), past.data(), 1, lsf.data()));
    EXPECT_EQ(mean[5] + 575, lsf[5]);
}

TEST(VekLsfG723, DecodedFrequenciesKeepTheirDistanceOrTheLastOnesStay) {
    std::mt19937 random(6);
    int kept = 0;
    for (int n = 0; n < 3000; ++n) {
        const Samples past = noise(random, kOrder, n % 3 == 0 ? -32768 : 0, 32767);
        const Samples index = noise(random, 3, 0, 255);
        const int erase = n & 1;
        Samples lsf(kOrder);
        const VekStatus status = veksLSFDecode_G723_16s(index.data(), past.data(), erase, lsf.data());
        if (status == vekStsUnstableFilter) {
            ASSERT_EQ(past, lsf);
            ++kept;
            continue;
        }
        ASSERT_EQ(vekStsNoErr, status);
        for (int i = 1; i < kOrder; ++i) {
            ASSERT_GE(lsf[i] - lsf[i - 1], (erase ? 512 : 256) - 4);
        }
    }
    EXPECT_GT(kept, 0);
    EXPECT_LT(kept, 2000);
}

// An erased frame's frequencies from a history of the mean with some others, and the status.
std::pair<VekStatus, Samples> erased(const Samples& past) {
    Samples lsf(kOrder);
    const Samples index(3, 0);
    const VekStatus status = veksLSFDecode_G723_16s(index.data(), past.data(), 1, lsf.data());
    return {status, lsf};
}

TEST(VekLsfG723, DecodedFrequenciesAreMovedApartInUpToTenRounds) {
    // Two neighbours come from far below: after 3, 8 and 10 rounds all are apart.
    EXPECT_EQ(
        erased({3131, 2000, 2000, 10806, 13872, 16495, 19752, 22260, 25484, 27718}),
        std::pair(VekStatus{vekStsNoErr}, Samples{2656, 3164, 3676, 10806, 13872, 16495, 19752, 22260, 25484, 27718}));
    EXPECT_EQ(
        erased({3131, 0, 0, 0, 13872, 16495, 19752, 22260, 25484, 27718}),
        std::pair(VekStatus{vekStsNoErr}, Samples{1650, 2159, 2670, 3182, 13872, 16495, 19752, 22260, 25484, 27718}));
    EXPECT_EQ(
        erased({3131, 4721, 7690, 0, 0, 16495, 19752, 22260, 25484, 27718}),
        std::pair(VekStatus{vekStsNoErr}, Samples{3131, 4073, 4582, 5093, 5604, 16495, 19752, 22260, 25484, 27718}));
    // An eleventh would be needed.
    const Samples far = {3131, 4721, 7690, 10806, 250, 250, 19752, 22260, 25484, 27718};
    EXPECT_EQ(erased(far), std::pair(VekStatus{vekStsUnstableFilter}, far));
}

TEST(VekLsfG723, TheFirstDecodedFrequencyIsAtLeast384) {
    Samples past = mean;
    past[0] = -1000; // 162 without the limit
    Samples want = mean;
    want[0] = 384;
    EXPECT_EQ(erased(past), std::pair(VekStatus{vekStsNoErr}, want));
}

// The weighted distance of a decoded vector from the wanted one, within a band.
double distance(const Samples& want, const Samples& past, int index, int band) {
    Samples split(3, 0);
    split[band] = static_cast<int16_t>(index);
    Samples lsf(kOrder);
    veksLSFDecode_G723_16s(split.data(), past.data(), 0, lsf.data());
    const int first = band * 3;
    double sum = 0;
    for (int i = first; i < (band == 2 ? kOrder : first + 3); ++i) {
        const int below = i > 0 ? want[i] - want[i - 1] : 99999;
        const int above = i < kOrder - 1 ? want[i + 1] - want[i] : 99999;
        sum += (want[i] - lsf[i]) * double(want[i] - lsf[i]) / std::min(below, above);
    }
    return sum;
}

TEST(VekLsfG723, QuantiserFindsTheNearestEntries) {
    std::mt19937 random(8);
    for (int n = 0; n < 25; ++n) {
        const Samples want = spectrum(random);
        const Samples past = n % 2 == 0 ? mean : spectrum(random);
        int32_t word = 0;
        ASSERT_EQ(vekStsNoErr, veksLSFQuant_G723_16s32s(want.data(), past.data(), &word));
        for (int band = 0; band < 3; ++band) {
            double best = 1e30;
            for (int i = 0; i < 256; ++i) {
                best = std::min(best, distance(want, past, i, band));
            }
            // Neighbours across bands may be moved apart by the decoder, which the quantiser does not see.
            EXPECT_LE(distance(want, past, (word >> (16 - 8 * band)) & 255, band), best * 1.03 + 1) << n << " " << band;
        }
    }
}

TEST(VekLsfG723, QuantiserStandsEqualAndReversedFrequencies) {
    int32_t word = -1;
    const Samples same(kOrder, 32767);
    EXPECT_EQ(vekStsNoErr, veksLSFQuant_G723_16s32s(same.data(), Samples(kOrder, -32768).data(), &word));
    EXPECT_GE(word, 0);
    EXPECT_LT(word, 1 << 24);
    EXPECT_EQ(vekStsNoErr, veksLSFQuant_G723_16s32s(mean.data(), mean.data(), &word));
    EXPECT_EQ(0, word);
}

// --- filters ---

TEST(VekFiltersG723, HighPassHalvesAndTakesTheMeanAway) {
    std::mt19937 random(9);
    const Samples x = noise(random, 240, -20000, 20000);
    Samples y(240);
    int32_t memory[2] = {};
    ASSERT_EQ(vekStsNoErr, veksHighPassFilter_G723_16s(x.data(), y.data(), memory));
    double sum = 0;
    double last = 0;
    for (int i = 0; i < 240; ++i) {
        sum = (x[i] - last) / 2 + sum * 127 / 128;
        last = x[i];
        ASSERT_NEAR(sum, y[i], 1);
    }
    EXPECT_EQ(x[239], memory[0]);
    EXPECT_NEAR(sum, memory[1] / 65536.0, 0.01);
    const Samples steady(240, 8000);
    for (int frame = 0; frame < 8; ++frame) {
        ASSERT_EQ(vekStsNoErr, veksHighPassFilter_G723_16s(steady.data(), y.data(), memory));
    }
    EXPECT_NEAR(0, y[239], 1);
}

TEST(VekFiltersG723, HighPassSaturates) {
    Samples x(240, 32767);
    std::fill(x.begin(), x.begin() + 120, int16_t{-32768});
    int32_t memory[2] = {32767, -0x7fff0000};
    Samples y(240);
    ASSERT_EQ(vekStsNoErr, veksHighPassFilter_G723_16s(x.data(), y.data(), memory));
    EXPECT_EQ(-32768, y[0]);
    EXPECT_GT(y[120], 15000);
}

TEST(VekFiltersG723, SynthesisHalvesAndKeepsTheNewestOutputsFirst) {
    atEveryLevel([] {
        std::mt19937 random(10);
        for (const int loud : {100, 4000, 32767}) {
            for (const int steep : {300, 2500, 32767}) {
                const Samples a = noise(random, kOrder, -steep, steep);
                const Samples x = noise(random, 60, -loud, loud);
                const Samples memory = noise(random, kOrder, -loud, loud);
                std::vector<int64_t> y(memory.rbegin(), memory.rend());
                std::vector<int64_t> sums;
                for (int i = 0; i < 60; ++i) {
                    int64_t sum = x[i] * 4096;
                    for (int j = 0; j < kOrder; ++j) {
                        sum += a[j] * y[y.size() - 1 - j];
                    }
                    sums.push_back(clip(clip(sum, 32) * 8, 32));
                    y.push_back(clip((sum + 4096) >> 13, 16));
                }
                Samples narrow(60);
                Samples state = memory;
                ASSERT_EQ(vekStsNoErr, veksSynthesisFilter_G723_16s(a.data(), x.data(), state.data(), narrow.data()));
                ASSERT_EQ(Samples(y.begin() + kOrder, y.end()), narrow);
                ASSERT_EQ(Samples(y.rbegin(), y.rbegin() + kOrder), state);
                std::vector<int32_t> wide(60);
                state = memory;
                ASSERT_EQ(vekStsNoErr, veksSynthesisFilter_G723_16s32s(a.data(), x.data(), wide.data(), state.data()));
                ASSERT_EQ(std::vector<int32_t>(sums.begin(), sums.end()), wide);
                ASSERT_EQ(Samples(y.rbegin(), y.rbegin() + kOrder), state);
            }
        }
    });
}

TEST(VekFiltersG723, SynthesisStandsTheLeastCoefficient) {
    Samples a(kOrder, 0);
    a[0] = -32768;
    Samples memory(kOrder, 0);
    Samples x(60, 0);
    x[0] = 4000;
    Samples y(60);
    ASSERT_EQ(vekStsNoErr, veksSynthesisFilter_G723_16s(a.data(), x.data(), memory.data(), y.data()));
    EXPECT_EQ((Samples{2000, -8000, 32000, -32768}), Samples(y.begin(), y.begin() + 4));
}

TEST(VekFiltersG723, HarmonicNoiseIsTheSignalLessItsShapedForm) {
    std::mt19937 random(11);
    const Samples past = noise(random, 208, -32768, 32767);
    for (const int delay : {1, 18, 60, 148}) {
        for (const int gain : {0, 8192, 32767, -32768}) {
            const Samples before = noise(random, 60, -32768, 32767);
            Samples after = before;
            ASSERT_EQ(vekStsNoErr, veksHarmonicNoiseSubtract_G723_16s_I(static_cast<int16_t>(gain), delay,
                                                                        past.data() + 148, after.data()));
            for (int i = 0; i < 60; ++i) {
                const double want = before[i] - past[148 + i] + gain / 32768.0 * past[148 + i - delay];
                ASSERT_EQ(clip(static_cast<int64_t>(std::floor(want + 0.5)), 16), after[i]);
            }
        }
    }
}

TEST(VekFiltersG723, TiltTakesTheRoundedNeighbour) {
    std::mt19937 random(12);
    std::vector<int32_t> x(61);
    for (int32_t& v : x) {
        v = static_cast<int32_t>(random());
    }
    for (const int val : {0, -9000, 32767}) {
        Samples y(60);
        ASSERT_EQ(vekStsNoErr, veksTiltCompensation_G723_32s16s(static_cast<int16_t>(val), x.data(), y.data()));
        for (int i = 0; i < 60; ++i) {
            const double near = static_cast<double>(clip((int64_t{x[i]} + 0x8000) >> 16, 16));
            const double want = std::floor(clip(x[i + 1] + 2 * static_cast<int64_t>(val * near), 32) / 65536.0 + 0.5);
            ASSERT_EQ(clip(static_cast<int64_t>(want), 16), y[i]);
        }
    }
}

TEST(VekFiltersG723, GainControlApproachesTwiceTheWantedEnergy) {
    std::mt19937 random(13);
    for (const double ratio : {0.3, 1.0, 1.7}) {
        int16_t gain = 4096;
        double own = 0;
        Samples x;
        for (int n = 0; n < 8; ++n) {
            x = noise(random, 60, -3000, 3000);
            own = 0;
            for (const int16_t v : x) {
                own += double(v) * v;
            }
            const Samples before = x;
            const int16_t old = gain;
            ASSERT_EQ(vekStsNoErr,
                      veksGainControl_G723_16s_I(static_cast<int32_t>(own * ratio * ratio / 8), x.data(), &gain));
            double smooth = old / 4096.0;
            for (int i = 0; i < 60; ++i) {
                smooth = (15 * smooth + ratio) / 16;
                ASSERT_NEAR(before[i] * smooth * 17 / 8, x[i], 3 + 0.01 * std::abs(x[i]));
            }
        }
        EXPECT_NEAR(ratio * 4096, gain, 40);
    }
}

TEST(VekFiltersG723, GainControlOfSilenceGoesToOne) {
    int16_t gain = 0;
    Samples x(60, 1000);
    ASSERT_EQ(vekStsNoErr, veksGainControl_G723_16s_I(0, x.data(), &gain));
    EXPECT_NEAR(4096 * (1 - std::pow(15 / 16.0, 60)), gain, 12);
    Samples none(60, 0);
    ASSERT_EQ(vekStsNoErr, veksGainControl_G723_16s_I(1000, none.data(), &gain));
    EXPECT_EQ(Samples(60, 0), none);
}

// --- refusals ---

TEST(VekG723, RefusesNullPointersAndValuesOutOfRange) {
    int16_t p[512] = {};
    int32_t w[512] = {};
    expectNullsRefused(veksLevinsonDurbin_G723_16s, p, p, p, p);
    expectNullsRefused(veksLPCToLSF_G723_16s, p, p, p);
    expectNullsRefused(veksLSFQuant_G723_16s32s, p, p, w);
    expectNullsRefused(veksLSFDecode_G723_16s, p, p, 0, p);
    EXPECT_EQ(vekStsRangeErr, veksLSFDecode_G723_16s(p, p, 2, p));
    EXPECT_EQ(vekStsRangeErr, veksLSFDecode_G723_16s(p, p, -1, p));
    for (const Samples& index : {Samples{256, 0, 0}, Samples{0, -1, 0}, Samples{0, 0, 300}}) {
        EXPECT_EQ(vekStsRangeErr, veksLSFDecode_G723_16s(index.data(), p, 0, p));
    }
    expectNullsRefused(veksLSFToLPC_G723_16s, p, p);
    EXPECT_EQ(vekStsNullPtrErr, veksLSFToLPC_G723_16s_I(nullptr));
    expectNullsRefused(veksHighPassFilter_G723_16s, p, p, w);
    expectNullsRefused(veksSynthesisFilter_G723_16s, p, p, p, p);
    expectNullsRefused(veksSynthesisFilter_G723_16s32s, p, p, w, p);
    expectNullsRefused(veksHarmonicNoiseSubtract_G723_16s_I, 0, 60, p + 148, p);
    EXPECT_EQ(vekStsRangeErr, veksHarmonicNoiseSubtract_G723_16s_I(0, 0, p + 148, p));
    EXPECT_EQ(vekStsRangeErr, veksHarmonicNoiseSubtract_G723_16s_I(0, 149, p + 148, p));
    expectNullsRefused(veksTiltCompensation_G723_32s16s, 0, w, p);
    expectNullsRefused(veksGainControl_G723_16s_I, 0, p, p);
    EXPECT_EQ(vekStsRangeErr, veksGainControl_G723_16s_I(-1, p, p));
    EXPECT_EQ(Samples(512, 0), Samples(p, p + 512));
}

} // namespace
