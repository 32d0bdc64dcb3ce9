// Measures, gain and high-band frequencies of the extended wide-band codec: against their definitions in double
// precision, the laws of the quantisers, and the refusals.
#include <cmath>

#include "lp_reference.h"
#include "veksc.h"

namespace {

const int tcxLengths[] = {48, 96, 192, 288, 576, 1152};

TEST(VekWbeSnr, IsTheMeanOfTheSegmentsInDecibels) {
    atEveryLevel([] {
        std::mt19937 random(1);
        for (const int len : {128, 256, 1024}) {
            const Samples x = noise(random, len, -3000, 3000);
            Samples y = x;
            for (int i = 0; i < len; i++) {
                y[static_cast<size_t>(i)] = static_cast<int16_t>(y[static_cast<size_t>(i)] + i / 5 % 9 - 4);
            }
            double sum = 0;
            for (int s = 0; s < len; s += 64) {
                double signal = 0;
                double error = 0;
                for (int i = s; i < s + 64; i++) {
                    const auto at = static_cast<size_t>(i);
                    signal += std::pow(x[at], 2);
                    error += std::pow(x[at] - y[at], 2);
                }
                sum += 10 * std::log10(signal / error);
            }
            Vek16s snr = 0;
            ASSERT_EQ(vekStsNoErr, veksSNR_AMRWBE_16s(x.data(), y.data(), len, 64, &snr));
            EXPECT_NEAR(256 * sum * 64 / len, snr, 0.51);
        }
    });
}

TEST(VekWbeSnr, EnergiesOfNothingCountAsOne) {
    const Samples zero(64, 0);
    const Samples ten(64, 10);
    Vek16s snr = -1;
    ASSERT_EQ(vekStsNoErr, veksSNR_AMRWBE_16s(zero.data(), zero.data(), 64, 64, &snr));
    EXPECT_EQ(0, snr);
    ASSERT_EQ(vekStsNoErr, veksSNR_AMRWBE_16s(ten.data(), ten.data(), 64, 64, &snr));
    EXPECT_EQ(9744, snr); // 10 log10(6400)
    ASSERT_EQ(vekStsNoErr, veksSNR_AMRWBE_16s(zero.data(), ten.data(), 64, 64, &snr));
    EXPECT_EQ(-9744, snr);
}

TEST(VekWbeSnr, LoudestDifferencesCountInFull) {
    const Samples up(192, 32767);
    const Samples down(192, -32768);
    Vek16s snr = 0;
    ASSERT_EQ(vekStsNoErr, veksSNR_AMRWBE_16s(up.data(), down.data(), 192, 64, &snr));
    EXPECT_EQ(-1541, snr); // 20 log10(32767 / 65535)
}

TEST(VekWbeSnr, Refusals) {
    const Samples x(128, 1);
    Vek16s snr = 77;
    expectNullsRefused(veksSNR_AMRWBE_16s, x.data(), x.data(), 64, 64, &snr);
    EXPECT_EQ(vekStsSizeErr, veksSNR_AMRWBE_16s(x.data(), x.data(), 0, 64, &snr));
    EXPECT_EQ(vekStsSizeErr, veksSNR_AMRWBE_16s(x.data(), x.data(), 100, 64, &snr));
    EXPECT_EQ(vekStsSizeErr, veksSNR_AMRWBE_16s(x.data(), x.data(), 64, 0, &snr));
    EXPECT_EQ(77, snr);
}

TEST(VekWbeTcxGain, WithoutQuantisingIsTheGainOfLeastSquares) {
    atEveryLevel([] {
        std::mt19937 random(2);
        for (const int len : tcxLengths) {
            for (const int scale : {0, 1, 3}) {
                const Samples x = noise(random, len, -2000, 4000);
                const Samples y = noise(random, len, -20, 60);
                double cross = 0;
                double energy = 0;
                for (size_t i = 0; i < x.size(); i++) {
                    cross += x[i] * y[i];
                    energy += y[i] * y[i];
                }
                Vek32s gain = 0;
                Vek16s index = 55;
                ASSERT_EQ(vekStsNoErr, veksGainQuantTCX_AMRWBE_16s(x.data(), scale, y.data(), len, 0, &gain, &index));
                EXPECT_NEAR(std::max(0.0, cross / energy) * 65536 / (1 << scale), gain, 0.51);
                EXPECT_EQ(55, index);
            }
        }
    });
}

TEST(VekWbeTcxGain, QuantisedLevelIsWithinHalfAStepAndTheDecoderHasTheSameGain) {
    std::mt19937 random(3);
    for (const int len : tcxLengths) {
        for (int loudness = 8; loudness <= 30000; loudness *= 3) {
            const Samples y = noise(random, len, -9, 9);
            Samples x(y.size());
            for (size_t i = 0; i < x.size(); i++) {
                x[i] = static_cast<int16_t>(y[i] * loudness / 9);
            }
            Vek32s exact = 0;
            Vek32s gain = 0;
            Vek32s decoded = 0;
            Vek32s rms = 0;
            Vek16s index = -1;
            ASSERT_EQ(vekStsNoErr, veksGainQuantTCX_AMRWBE_16s(x.data(), 0, y.data(), len, 0, &exact, &index));
            ASSERT_EQ(vekStsNoErr, veksGainQuantTCX_AMRWBE_16s(x.data(), 0, y.data(), len, 1, &gain, &index));
            EXPECT_LE(std::abs(std::log10(static_cast<double>(gain) / exact)), 0.501 / 28) << loudness;
            ASSERT_EQ(vekStsNoErr, veksGainDecodeTCX_AMRWBE_16s(y.data(), len, index, 0, &rms, &decoded));
            EXPECT_NEAR(gain, decoded, 2 + gain * 1e-4);
            EXPECT_NEAR(std::pow(10, index / 28.0) * 32768, rms, 0.51);
        }
    }
}

TEST(VekWbeTcxGain, DecodedGainIsTheLevelOfTheIndexOverTheRootMeanSquare) {
    std::mt19937 random(5);
    for (const int len : tcxLengths) {
        const Samples y = noise(random, len, -9, 9);
        double energy = 0;
        for (const int16_t v : y) {
            energy += v * v;
        }
        for (Vek16s index = 0; index < 100; ++index) {
            Vek32s rms = 0;
            Vek32s gain = 0;
            ASSERT_EQ(vekStsNoErr, veksGainDecodeTCX_AMRWBE_16s(y.data(), len, index, 0, &rms, &gain));
            const double want = std::pow(10, index / 28.0) / std::sqrt(energy / len) * 65536;
            EXPECT_NEAR(want, gain, 2 + want * 1e-4) << len << " " << index;
        }
    }
}

TEST(VekWbeTcxGain, ALostFrameHasSevenTenthsOfTheLastLevel) {
    const Samples y(48, 2);
    Vek32s rms = 0;
    Vek32s gain = 0;
    ASSERT_EQ(vekStsNoErr, veksGainDecodeTCX_AMRWBE_16s(y.data(), 48, 56, 0, &rms, &gain));
    EXPECT_EQ(3276800, rms);
    EXPECT_EQ(3276800, gain); // 50
    ASSERT_EQ(vekStsNoErr, veksGainDecodeTCX_AMRWBE_16s(y.data(), 48, 999, 1, &rms, &gain));
    EXPECT_EQ(2293760, rms);
    EXPECT_EQ(2293760, gain);
}

TEST(VekWbeTcxGain, ZerosAndTheEndsOfTheLaw) {
    const Samples zero(48, 0);
    const Samples one(48, 1);
    const Samples loud(48, 32767);
    Vek32s gain = 9;
    Vek32s rms = 0;
    Vek16s index = 9;
    ASSERT_EQ(vekStsNoErr, veksGainQuantTCX_AMRWBE_16s(one.data(), 0, zero.data(), 48, 1, &gain, &index));
    EXPECT_EQ(0, gain);
    EXPECT_EQ(0, index);
    ASSERT_EQ(vekStsNoErr, veksGainQuantTCX_AMRWBE_16s(loud.data(), 0, one.data(), 48, 1, &gain, &index));
    EXPECT_EQ(126, index);
    ASSERT_EQ(vekStsNoErr, veksGainDecodeTCX_AMRWBE_16s(zero.data(), 48, 127, 0, &rms, &gain));
    EXPECT_EQ(0, gain);
}

TEST(VekWbeTcxGain, Refusals) {
    const Samples x(48, 1);
    Vek32s gain = 5;
    Vek32s rms = 6;
    Vek16s index = 7;
    expectNullsRefused(veksGainQuantTCX_AMRWBE_16s, x.data(), 0, x.data(), 48, 1, &gain, &index);
    EXPECT_EQ(vekStsSizeErr, veksGainQuantTCX_AMRWBE_16s(x.data(), 0, x.data(), 47, 1, &gain, &index));
    EXPECT_EQ(vekStsRangeErr, veksGainQuantTCX_AMRWBE_16s(x.data(), 16, x.data(), 48, 1, &gain, &index));
    EXPECT_EQ(vekStsRangeErr, veksGainQuantTCX_AMRWBE_16s(x.data(), 0, x.data(), 48, 2, &gain, &index));
    expectNullsRefused(veksGainDecodeTCX_AMRWBE_16s, x.data(), 48, 1, 0, &rms, &gain);
    EXPECT_EQ(vekStsSizeErr, veksGainDecodeTCX_AMRWBE_16s(x.data(), 64, 1, 0, &rms, &gain));
    EXPECT_EQ(vekStsRangeErr, veksGainDecodeTCX_AMRWBE_16s(x.data(), 48, 128, 0, &rms, &gain));
    EXPECT_EQ(vekStsRangeErr, veksGainDecodeTCX_AMRWBE_16s(x.data(), 48, 1, 2, &rms, &gain));
    EXPECT_EQ(5, gain);
    EXPECT_EQ(6, rms);
    EXPECT_EQ(7, index);
}

// A code vector as its rule says, without the mean.
double codeElement(int first, int second, int mode, int i) {
    double sum = (2 * first - 3) * 300.0;
    for (int b = 1; b < 8; b++) {
        sum += ((second >> (b - 1) & 1) != 0 ? 600.0 : -600.0) / (b + 1) * std::cos(M_PI * b * (i + 0.5) / 8);
    }
    return sum * (mode == 0 ? 1 : 0.75);
}

double meanElement(int mode, int i) {
    return 16384 * (mode == 0 ? (i + 1) / 9.0 : (i + 0.5) / 8);
}

TEST(VekWbeHighIsf, TheSearchFindsTheNearestOfAllCodeVectors) {
    std::mt19937 random(4);
    for (int mode = 0; mode < 2; mode++) {
        for (int frame = 0; frame < 200; frame++) {
            const Samples deviation = noise(random, 8, -1200, 1200);
            Samples past = noise(random, 8, -500, 500);
            const Samples before = past;
            Samples isf(8);
            for (int i = 0; i < 8; i++) {
                const auto at = static_cast<size_t>(i);
                isf[at] = static_cast<int16_t>(std::lround(meanElement(mode, i)) + deviation[at]);
            }
            Samples quantised(8);
            Vek16s index[2] = {-1, -1};
            ASSERT_EQ(vekStsNoErr,
                      veksISFQuantHighBand_AMRWBE_16s(isf.data(), quantised.data(), past.data(), index, mode));
            const auto distance = [&](int first, int second) {
                double sum = 0;
                for (int i = 0; i < 8; i++) {
                    const auto at = static_cast<size_t>(i);
                    const double target = isf[at] - meanElement(mode, i) - before[at] / 2.0;
                    sum += std::pow(target - codeElement(first, second, mode, i), 2);
                }
                return std::sqrt(sum);
            };
            double least = 1e9;
            for (int c = 0; c < 512; c++) {
                least = std::min(least, distance(c / 128, c % 128));
            }
            ASSERT_LE(distance(index[0], index[1]), least + 4);
            for (int i = 0; i < 8; i++) {
                ASSERT_NEAR(codeElement(index[0], index[1], mode, i), past[static_cast<size_t>(i)], 1.1);
            }
        }
    }
}

TEST(VekWbeHighIsf, TheDecoderFollowsTheCoderOverManyFrames) {
    std::mt19937 random(5);
    for (int mode = 0; mode < 2; mode++) {
        Samples pastCoder(8, 0);
        Samples pastDecoder(8, 0);
        Samples decoded(8, 0);
        for (int frame = 0; frame < 300; frame++) {
            const Samples deviation = noise(random, 8, -3000, 3000);
            Samples isf(8);
            for (int i = 0; i < 8; i++) {
                const auto at = static_cast<size_t>(i);
                isf[at] = static_cast<int16_t>(std::lround(meanElement(mode, i)) + deviation[at]);
            }
            Samples quantised(8);
            Vek16s index[2];
            ASSERT_EQ(vekStsNoErr,
                      veksISFQuantHighBand_AMRWBE_16s(isf.data(), quantised.data(), pastCoder.data(), index, mode));
            ASSERT_EQ(vekStsNoErr,
                      veksISFQuantDecodeHighBand_AMRWBE_16s(index, decoded.data(), pastDecoder.data(), 0, mode));
            ASSERT_EQ(quantised, decoded);
            ASSERT_EQ(pastCoder, pastDecoder);
            for (size_t i = 1; i < 8; i++) {
                ASSERT_GE(decoded[i] - decoded[i - 1], 128);
            }
            ASSERT_GE(decoded[0], 128);
            ASSERT_LE(decoded[7], 16384 - 128);
        }
    }
}

TEST(VekWbeHighIsf, TheDecoderFollowsTheRuleInDoublePrecision) {
    std::mt19937 random(15);
    for (int mode = 0; mode < 2; mode++) {
        double past[8] = {};
        double want[8] = {};
        Samples history(8, 0);
        Samples isf(8, 0);
        for (int frame = 0; frame < 1000; frame++) {
            const Vek16s index[2] = {noise(random, 1, 0, 3)[0], noise(random, 1, 0, 127)[0]};
            const int lost = frame > 0 && noise(random, 1, 0, 4)[0] == 0 ? 1 : 0;
            for (int i = 0; i < 8; i++) {
                const double code = codeElement(index[0], index[1], mode, i);
                want[i] =
                    lost == 1 ? 0.9 * want[i] + 0.1 * meanElement(mode, i) : meanElement(mode, i) + code + past[i] / 2;
                const double floor = i == 0 ? 128 : want[i - 1] + 128;
                want[i] = std::min(std::max(want[i], floor), 16384.0 - 128 * (8 - i));
                past[i] = lost == 1 ? (want[i] - meanElement(mode, i) - past[i] / 2) / 2 : code;
            }
            ASSERT_EQ(vekStsNoErr,
                      veksISFQuantDecodeHighBand_AMRWBE_16s(index, isf.data(), history.data(), lost, mode));
            for (size_t i = 0; i < 8; i++) {
                ASSERT_NEAR(want[i], isf[i], 4) << mode << " " << frame << " " << i;
                ASSERT_NEAR(past[i], history[i], 4) << mode << " " << frame << " " << i;
            }
        }
    }
}

TEST(VekWbeHighIsf, LostFramesMoveToTheMean) {
    const Vek16s index[2] = {3, 127};
    Samples past(8, 0);
    Samples isf(8, 0);
    ASSERT_EQ(vekStsNoErr, veksISFQuantDecodeHighBand_AMRWBE_16s(index, isf.data(), past.data(), 0, 0));
    const Samples start = isf;
    ASSERT_EQ(vekStsNoErr, veksISFQuantDecodeHighBand_AMRWBE_16s(index, isf.data(), past.data(), 1, 0));
    for (int i = 0; i < 8; i++) {
        const auto at = static_cast<size_t>(i);
        EXPECT_NEAR(0.9 * start[at] + 0.1 * meanElement(0, i), isf[at], 1.5);
    }
    for (int frame = 0; frame < 100; frame++) {
        ASSERT_EQ(vekStsNoErr, veksISFQuantDecodeHighBand_AMRWBE_16s(index, isf.data(), past.data(), 1, 0));
    }
    for (int i = 0; i < 8; i++) {
        EXPECT_NEAR(meanElement(0, i), isf[static_cast<size_t>(i)], 8);
    }
}

TEST(VekWbeHighIsf, Refusals) {
    Samples isf(8, 100);
    Samples past(8, 5);
    Vek16s index[2] = {4, 0};
    Vek16s shape[2] = {0, 128};
    expectNullsRefused(veksISFQuantHighBand_AMRWBE_16s, isf.data(), isf.data(), past.data(), index, 0);
    EXPECT_EQ(vekStsRangeErr, veksISFQuantHighBand_AMRWBE_16s(isf.data(), isf.data(), past.data(), index, 2));
    expectNullsRefused(veksISFQuantDecodeHighBand_AMRWBE_16s, index, isf.data(), past.data(), 0, 0);
    EXPECT_EQ(vekStsRangeErr, veksISFQuantDecodeHighBand_AMRWBE_16s(index, isf.data(), past.data(), 0, 0));
    EXPECT_EQ(vekStsRangeErr, veksISFQuantDecodeHighBand_AMRWBE_16s(shape, isf.data(), past.data(), 0, 0));
    EXPECT_EQ(vekStsRangeErr, veksISFQuantDecodeHighBand_AMRWBE_16s(index, isf.data(), past.data(), 2, 0));
    EXPECT_EQ(vekStsRangeErr, veksISFQuantDecodeHighBand_AMRWBE_16s(index, isf.data(), past.data(), 1, -1));
    EXPECT_EQ(Samples(8, 100), isf);
    EXPECT_EQ(Samples(8, 5), past);
    EXPECT_EQ(4, index[0]);
}

} // namespace
