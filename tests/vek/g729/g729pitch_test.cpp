// Gain control and the adaptive codebook's share against their definitions in double.
#include "lp_reference.h"
#include "veksc.h"

#include <cmath>

namespace {

using lpref::clip;
using lpref::energy;

double magnitudes(const Samples& x) {
    double sum = 0;
    for (const int16_t v : x) {
        sum += std::abs(double{1} * v);
    }
    return sum;
}

// The last gain, and the samples that the gains give.
double controlled(const Samples& x, double gain, double keep, double ratio, std::vector<double>& y) {
    for (const int16_t v : x) {
        gain = keep * gain + (1 - keep) * ratio;
        y.push_back(gain * v);
    }
    return gain;
}

TEST(VekGainControl, FollowsTheRatioOfEnergiesInAnnexA) {
    atEveryLevel([] {
        std::mt19937 random(2);
        for (const int high : {300, 2000, 9000}) {
            for (const int low : {250, 1500, 9000}) {
                const Samples in = noise(random, 40, -high, high);
                Samples out = noise(random, 40, -low, low);
                const double ratio = std::sqrt(energy(in) / energy(out));
                if (ratio > 7 || ratio < 0.05) {
                    continue; // the format of the gain ends at 8, that of the ratio of energies at 1/512
                }
                std::vector<double> want;
                const double last = controlled(out, 0.75, 0.9, ratio, want);
                int16_t gain = 3072;
                ASSERT_EQ(vekStsNoErr, veksGainControl_G729A_16s_I(in.data(), out.data(), &gain));
                EXPECT_NEAR(last, gain / 4096.0, 0.004 + 0.01 * last);
                for (size_t i = 0; i < 40; ++i) {
                    ASSERT_NEAR(clip(std::lround(want[i]), 16), out[i], 2 + 0.02 * std::abs(want[i]));
                }
            }
        }
    });
}

TEST(VekGainControl, FollowsTheRatioOfMagnitudesInTheMainBody) {
    atEveryLevel([] {
        std::mt19937 random(3);
        for (const int high : {1, 50, 2000, 9000, 32767}) {
            for (const int low : {30, 1500, 9000, 32767}) {
                const Samples in = noise(random, 40, -high, high);
                Samples out = noise(random, 40, -low, low);
                const double ratio = magnitudes(in) / magnitudes(out);
                if (ratio > 1.9) {
                    continue; // the format of the gain ends at 2
                }
                std::vector<double> want;
                const double last = controlled(out, 0.75, 0.9875, ratio, want);
                int16_t gain = 12288;
                ASSERT_EQ(vekStsNoErr, veksGainControl_G729_16s_I(in.data(), out.data(), &gain));
                EXPECT_NEAR(last, gain / 16384.0, 0.005) << high << " " << low;
                for (size_t i = 0; i < 40; ++i) {
                    ASSERT_NEAR(clip(std::lround(want[i]), 16), out[i], 2 + 0.008 * std::abs(want[i]));
                }
            }
        }
    });
}

TEST(VekGainControl, AnOutputOfZerosResetsTheGain) {
    const Samples in(40, 1000);
    Samples out(40, 0);
    int16_t gain = 4096;
    EXPECT_EQ(vekStsNoErr, veksGainControl_G729A_16s_I(in.data(), out.data(), &gain));
    EXPECT_EQ(0, gain);
    gain = 16384;
    EXPECT_EQ(vekStsNoErr, veksGainControl_G729_16s_I(in.data(), out.data(), &gain));
    EXPECT_EQ(0, gain);
    EXPECT_EQ(Samples(40, 0), out);
}

TEST(VekGainControl, AnInputOfZerosLetsTheGainDecay) {
    const Samples in(40, 0);
    Samples out(40, 4096);
    int16_t gain = 4096;
    EXPECT_EQ(vekStsNoErr, veksGainControl_G729A_16s_I(in.data(), out.data(), &gain));
    int decayed = 4096;
    for (size_t i = 0; i < 40; ++i) {
        decayed = (decayed * 29491) >> 15;
        EXPECT_EQ(decayed, out[i]);
    }
    EXPECT_EQ(decayed, gain);
    out.assign(40, 16384);
    gain = 16384;
    EXPECT_EQ(vekStsNoErr, veksGainControl_G729_16s_I(in.data(), out.data(), &gain));
    decayed = 16384;
    for (size_t i = 0; i < 40; ++i) {
        decayed = (decayed * 32358) >> 15;
        EXPECT_EQ(decayed, out[i]);
    }
}

TEST(VekGainControl, Saturates) {
    const Samples in(40, 32767);
    Samples out(40, 16384);
    int16_t gain = 32767;
    EXPECT_EQ(vekStsNoErr, veksGainControl_G729A_16s_I(in.data(), out.data(), &gain));
    EXPECT_EQ(32767, out[0]);
    out.assign(40, -32768);
    gain = 32767;
    EXPECT_EQ(vekStsNoErr, veksGainControl_G729_16s_I(in.data(), out.data(), &gain));
    EXPECT_EQ(-32768, out[0]);
}

TEST(VekGainControl, RefusesNull) {
    Samples x(40, 5);
    const Samples before = x;
    int16_t gain = 7;
    expectNullsRefused(veksGainControl_G729A_16s_I, x.data(), x.data(), &gain);
    expectNullsRefused(veksGainControl_G729_16s_I, x.data(), x.data(), &gain);
    EXPECT_EQ(before, x);
    EXPECT_EQ(7, gain);
}

TEST(VekAdaptiveContribution, IsTheTargetLessTheScaledVector) {
    std::mt19937 random(4);
    for (const int gain : {0, 1, 8192, 16384, 19661, -16384, 32767, -32768}) {
        const Samples y = noise(random, 40, -32768, 32767);
        const Samples x = noise(random, 40, -32768, 32767);
        Samples got(40);
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookContribution_G729_16s(static_cast<int16_t>(gain), y.data(), x.data(),
                                                                         got.data()));
        for (size_t i = 0; i < 40; ++i) {
            ASSERT_EQ(clip(x[i] - clip((y[i] * gain) >> 14, 16), 16), got[i]);
        }
        Samples place = x;
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookContribution_G729_16s(static_cast<int16_t>(gain), y.data(),
                                                                         place.data(), place.data()));
        EXPECT_EQ(got, place);
    }
    const std::vector<float> y(40, 3);
    std::vector<float> x(40, 10);
    ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookContribution_G729_32f(0.5F, y.data(), x.data(), x.data()));
    EXPECT_EQ(std::vector<float>(40, 8.5F), x);
}

TEST(VekAdaptiveContribution, RefusesNull) {
    Samples x(40);
    std::vector<float> f(40);
    expectNullsRefused(veksAdaptiveCodebookContribution_G729_16s, 1, x.data(), x.data(), x.data());
    expectNullsRefused(veksAdaptiveCodebookContribution_G729_32f, 1, f.data(), f.data(), f.data());
}

} // namespace
