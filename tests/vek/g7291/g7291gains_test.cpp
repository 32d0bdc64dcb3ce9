// Spectral frequencies, gains, level and tilt of G.729.1 against their definitions.
#include "lp_reference.h"
#include "veksc.h"

#include <cmath>
#include <numeric>

namespace {

TEST(VekG7291LsfDecode, IsTheQuantiserOfG729) {
    std::mt19937 random(31);
    Samples ours(40);
    for (size_t i = 0; i < 40; ++i) {
        ours[i] = static_cast<int16_t>(2340 * (i % 10 + 1));
    }
    Samples theirs = ours;
    for (int round = 0; round < 200; ++round) {
        const int16_t index[4] = {noise(random, 1, 0, 1)[0], noise(random, 1, 0, 127)[0], noise(random, 1, 0, 31)[0],
                                  noise(random, 1, 0, 31)[0]};
        Samples got(10);
        Samples want(10);
        ASSERT_EQ(vekStsNoErr, veksLSFDecode_G7291_16s(index, ours.data(), got.data()));
        ASSERT_EQ(vekStsNoErr, veksLSFDecode_G729_16s(index, theirs.data(), want.data()));
        ASSERT_EQ(want, got);
        ASSERT_EQ(theirs, ours);
        ASSERT_TRUE(std::is_sorted(got.begin(), got.end()));
    }
    const Samples before = ours;
    Samples lsf(10, 3);
    for (const auto& bad : {Samples{2, 0, 0, 0}, {0, 128, 0, 0}, {0, 0, 32, 0}, {0, 0, 0, 32}, {0, -1, 0, 0}}) {
        EXPECT_EQ(vekStsRangeErr, veksLSFDecode_G7291_16s(bad.data(), ours.data(), lsf.data()));
    }
    EXPECT_EQ(before, ours);
    EXPECT_EQ(Samples(10, 3), lsf);
}

double levelOf(int subFrame, int code) {
    return subFrame % 2 == 1 ? std::pow(2.0, (code - 6) / 2.0) : std::pow(2.0, (2 * code - 5) / 2.0);
}

TEST(VekG7291GainQuant, TakesTheLevelOfLeastError) {
    atEveryLevel([] {
        std::mt19937 random(32);
        for (int round = 0; round < 800; ++round) {
            const auto subFrame = static_cast<int16_t>(1 + round % 4);
            const auto reference = static_cast<int16_t>(50 << (round % 9));
            const int codes = subFrame % 2 == 1 ? 8 : 4;
            const Samples z = noise(random, 40, -6000, 6000);
            const double wanted = reference / 2.0 * std::exp2(noise(random, 1, -400, 100)[0] / 100.0);
            Samples x(40);
            for (size_t i = 0; i < 40; ++i) {
                x[i] = static_cast<int16_t>(
                    lpref::clip(std::lround(wanted * z[i] / 4096) + noise(random, 1, -20, 20)[0], 16));
            }
            int16_t index = -1;
            int16_t gain = -1;
            ASSERT_EQ(vekStsNoErr, veksGainQuant_G7291_16s(x.data(), z.data(), reference, &index, &gain, subFrame));
            ASSERT_GE(index, 0);
            ASSERT_LT(index, codes);
            ASSERT_NEAR(std::min(reference * levelOf(subFrame, index), 32767.0), gain, 2.5);
            const auto error = [&](double g) {
                double sum = 0;
                for (size_t i = 0; i < 40; ++i) {
                    const double e = x[i] - g / 2 * z[i] / 4096;
                    sum += e * e;
                }
                return sum;
            };
            for (int k = 0; k < codes; ++k) {
                const double other = std::min(std::floor(reference * levelOf(subFrame, k) + 0.5), 32767.0);
                ASSERT_LE(error(gain), error(other) * 1.03 + 1) << k << " beats " << index;
            }
        }
    });
}

TEST(VekG7291GainQuant, EachLevelIsItsOwnCode) {
    Samples z(40);
    z[0] = 4096;
    z[7] = -2048;
    for (int16_t subFrame = 1; subFrame <= 4; ++subFrame) {
        for (int code = 0; code < (subFrame % 2 == 1 ? 8 : 4); ++code) {
            Samples x(40);
            const double g = 2000 * levelOf(subFrame, code);
            x[0] = static_cast<int16_t>(std::lround(g));
            x[7] = static_cast<int16_t>(std::lround(-g / 2));
            int16_t index = -1;
            int16_t gain = -1;
            ASSERT_EQ(vekStsNoErr, veksGainQuant_G7291_16s(x.data(), z.data(), 4000, &index, &gain, subFrame));
            EXPECT_EQ(code, index);
            EXPECT_NEAR(2 * g, gain, 1);
        }
    }
}

TEST(VekG7291GainQuant, NegativeGainsAndNothingTakeTheLowestAndLargeOnesSaturate) {
    const Samples none(40);
    const Samples loud(40, 32767);
    const Samples opposite(40, -32768);
    const Samples quiet(40, 1);
    int16_t index = -1;
    int16_t gain = -1;
    ASSERT_EQ(vekStsNoErr, veksGainQuant_G7291_16s(loud.data(), none.data(), 1000, &index, &gain, 1));
    EXPECT_EQ(0, index);
    EXPECT_EQ(125, gain);
    ASSERT_EQ(vekStsNoErr, veksGainQuant_G7291_16s(opposite.data(), loud.data(), 1000, &index, &gain, 2));
    EXPECT_EQ(0, index);
    EXPECT_EQ(177, gain);
    ASSERT_EQ(vekStsNoErr, veksGainQuant_G7291_16s(loud.data(), quiet.data(), 32767, &index, &gain, 3));
    EXPECT_EQ(32767, gain);
    EXPECT_GE(index, 6);
    ASSERT_EQ(vekStsNoErr, veksGainQuant_G7291_16s(loud.data(), quiet.data(), 0, &index, &gain, 4));
    EXPECT_EQ(0, gain);
    gain = 5;
    index = 5;
    EXPECT_EQ(vekStsRangeErr, veksGainQuant_G7291_16s(loud.data(), quiet.data(), -1, &index, &gain, 1));
    EXPECT_EQ(vekStsRangeErr, veksGainQuant_G7291_16s(loud.data(), quiet.data(), 1, &index, &gain, 0));
    EXPECT_EQ(vekStsRangeErr, veksGainQuant_G7291_16s(loud.data(), quiet.data(), 1, &index, &gain, 5));
    EXPECT_EQ(5, gain);
    EXPECT_EQ(5, index);
}

double magnitudes(const Samples& x) {
    return std::accumulate(x.begin(), x.end(), 0.0,
                           [](double sum, int16_t v) { return sum + std::abs(double{1} * v); });
}

TEST(VekG7291GainControl, MovesTheGainToTheRatioOfLevels) {
    std::mt19937 random(33);
    for (const int16_t narrow : {0, 1}) {
        for (const int16_t share : {410, 4096, 32767}) {
            int16_t gain = 16384;
            int16_t level = 16384;
            double wantGain = 1;
            double wantLevel = 1;
            for (int round = 0; round < 30; ++round) {
                const int high = 100 + 900 * (round % 7);
                const Samples in = noise(random, 40, -high, high);
                const int other = high * (2 + round % 3) / 3;
                const Samples out = noise(random, 40, -other, other);
                Samples x = out;
                const double ratio = std::min(magnitudes(in) / magnitudes(out), 2.0);
                wantLevel = narrow == 1 ? 0.75 * wantLevel + 0.25 * ratio : ratio;
                ASSERT_EQ(vekStsNoErr, veksGainControl_G7291_16s_I(in.data(), x.data(), &gain, share, narrow, &level));
                ASSERT_NEAR(wantLevel, level / 16384.0, 0.003);
                for (size_t i = 0; i < 40; ++i) {
                    wantGain += (wantLevel - wantGain) * share / 32768;
                    ASSERT_NEAR(out[i] * wantGain, x[i], 1 + 0.007 * std::abs(out[i]));
                }
                ASSERT_NEAR(wantGain, gain / 16384.0, 0.007); // each step cuts off
            }
        }
    }
}

TEST(VekG7291GainControl, SilenceAndExtremes) {
    const Samples none(40);
    const Samples loud(40, -32768);
    Samples x = none;
    int16_t gain = 9000;
    int16_t level = 12000;
    ASSERT_EQ(vekStsNoErr, veksGainControl_G7291_16s_I(loud.data(), x.data(), &gain, 410, 1, &level));
    EXPECT_EQ(none, x);
    EXPECT_EQ(0, gain);
    EXPECT_EQ(12000, level);
    gain = 16384;
    x = loud;
    ASSERT_EQ(vekStsNoErr, veksGainControl_G7291_16s_I(none.data(), x.data(), &gain, 32767, 0, &level));
    EXPECT_EQ(0, level);
    EXPECT_LE(gain, 1);
    gain = 32767;
    x = Samples(40, 1);
    ASSERT_EQ(vekStsNoErr, veksGainControl_G7291_16s_I(loud.data(), x.data(), &gain, 410, 0, &level));
    EXPECT_EQ(32767, level); // a ratio of 2 at the most
    EXPECT_EQ(Samples(40, 2), x);
    gain = 32767;
    x = loud;
    ASSERT_EQ(vekStsNoErr, veksGainControl_G7291_16s_I(loud.data(), x.data(), &gain, 0, 0, &level));
    EXPECT_EQ(loud, x); // saturated
    for (const auto& [g, share, flag, smooth] : {std::tuple<int, int, int, int>{-1, 410, 0, 0},
                                                 {1, -1, 0, 0},
                                                 {1, 410, 2, 0},
                                                 {1, 410, -1, 0},
                                                 {1, 410, 1, -1}}) {
        auto badGain = static_cast<int16_t>(g);
        auto badLevel = static_cast<int16_t>(smooth);
        EXPECT_EQ(vekStsRangeErr,
                  veksGainControl_G7291_16s_I(none.data(), x.data(), &badGain, static_cast<int16_t>(share),
                                              static_cast<int16_t>(flag), &badLevel));
    }
    EXPECT_EQ(loud, x);
}

TEST(VekG7291Tilt, IsTheFirstOrderFilterOfUnitGain) {
    std::mt19937 random(34);
    for (const int k : {-32768, -20000, -1, 0, 1, 15000, 32767}) {
        const double mu = k / 32768.0 * (k > 0 ? 0.2 : 0.9);
        const int high = k < -10000 ? 1500 : 12000;
        const Samples x = noise(random, 41, -high, high);
        Samples y(40);
        ASSERT_EQ(vekStsNoErr, veksTiltCompensation_G7291_16s(x.data(), y.data(), static_cast<int16_t>(k)));
        for (size_t i = 0; i < 40; ++i) {
            ASSERT_NEAR((x[i + 1] + mu * x[i]) / (1 - std::abs(mu)), y[i], 1.5 + 0.001 * std::abs(y[i]));
        }
    }
    Samples loud(41, 32767);
    loud[20] = -32768;
    Samples y(40);
    ASSERT_EQ(vekStsNoErr, veksTiltCompensation_G7291_16s(loud.data(), y.data(), -32768));
    EXPECT_EQ(-32768, y[19]);
    EXPECT_EQ(32767, y[20]);
}

} // namespace
