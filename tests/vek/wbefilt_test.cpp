// Mid-band prediction and low-band post-filter of the extended wide-band codec: known filters, the error of least
// squares, harmonic signals, tones between the harmonics, memories over frames, and the refusals.
#include <cmath>

#include "lp_reference.h"
#include "veksc.h"

namespace {

using lpref::atEveryLevel;
using lpref::noise;
using Samples = std::vector<int16_t>;

TEST(VekWbeMidBand, FindsAKnownFilter) {
    atEveryLevel([] {
        std::mt19937 random(1);
        const double known[9] = {0.5, -0.25, 0.125, 0, 0.75, -0.375, 0, 0.0625, -0.5};
        const Samples mid = noise(random, 328, -8000, 8000);
        Samples target(320);
        for (size_t n = 0; n < 320; n++) {
            double sum = 0;
            for (size_t k = 0; k < 9; k++) {
                sum += known[k] * mid[8 + n - k];
            }
            target[n] = static_cast<int16_t>(std::lround(sum));
        }
        Samples h(9);
        ASSERT_EQ(vekStsNoErr, veksFIRGenMidBand_AMRWBE_16s(mid.data() + 8, target.data(), h.data()));
        for (size_t k = 0; k < 9; k++) {
            EXPECT_NEAR(4096 * known[k], h[k], 4) << k;
        }
    });
}

TEST(VekWbeMidBand, NoFilterNearbyHasASmallerError) {
    std::mt19937 random(2);
    const Samples mid = noise(random, 328, -3000, 3000);
    const Samples target = noise(random, 320, -3000, 3000);
    Samples h(9);
    ASSERT_EQ(vekStsNoErr, veksFIRGenMidBand_AMRWBE_16s(mid.data() + 8, target.data(), h.data()));
    const auto error = [&](const Samples& taps) {
        double sum = 0;
        for (size_t n = 0; n < 320; n++) {
            double e = target[n];
            for (size_t k = 0; k < 9; k++) {
                e -= taps[k] / 4096.0 * mid[8 + n - k];
            }
            sum += e * e;
        }
        return sum;
    };
    const double least = error(h);
    for (size_t k = 0; k < 9; k++) {
        for (const int change : {-20, 20}) {
            Samples other = h;
            other[k] = static_cast<int16_t>(other[k] + change);
            EXPECT_LT(least, error(other)) << k;
        }
    }
}

TEST(VekWbeMidBand, SilenceHasNoFilterAndLargeOnesSaturate) {
    Samples mid(328, 0);
    Samples target(320, 30000);
    Samples h(9, 7);
    ASSERT_EQ(vekStsNoErr, veksFIRGenMidBand_AMRWBE_16s(mid.data() + 8, target.data(), h.data()));
    EXPECT_EQ(Samples(9, 0), h);
    for (size_t i = 8; i < 328; i += 16) {
        mid[i] = 100;
        target[i - 8] = -32768;
    }
    ASSERT_EQ(vekStsNoErr, veksFIRGenMidBand_AMRWBE_16s(mid.data() + 8, target.data(), h.data()));
    EXPECT_EQ(-32768, h[0]);
    EXPECT_EQ(32767, h[1]);
}

TEST(VekWbeMidBand, Refusals) {
    const Samples x(328, 1);
    Samples h(9, 3);
    expectNullsRefused(veksFIRGenMidBand_AMRWBE_16s, x.data() + 8, x.data(), h.data());
    EXPECT_EQ(Samples(9, 3), h);
}

// A post-filter that runs from frame to frame.
struct PostFilter {
    Samples synth = Samples(503, 0);
    Samples noise = Samples(24, 0);
    Vek16s scale = 0;
    Samples run(const Samples& x, int lag, int gain, int adjust) {
        const Samples lags(16, static_cast<int16_t>(lag));
        const Samples gains(16, static_cast<int16_t>(gain));
        Samples y;
        for (size_t start = 0; start < x.size(); start += 1024) {
            Samples frame(x.begin() + static_cast<long>(start), x.begin() + static_cast<long>(start) + 1024);
            EXPECT_EQ(vekStsNoErr, veksPostFilterLowBand_AMRWBE_16s(lags.data(), gains.data(), frame.data(),
                                                                    synth.data(), noise.data(), &scale, adjust));
            y.insert(y.end(), frame.begin(), frame.end());
        }
        return y;
    }
};

Samples tone(double period, size_t n) {
    Samples x(n);
    for (size_t i = 0; i < n; i++) {
        x[i] = static_cast<int16_t>(std::lround(8000 * std::sin(2 * M_PI * static_cast<double>(i) / period)));
    }
    return x;
}

double lossInDb(double period, int lag, int gain, int adjust) {
    const Samples x = tone(period, 80 * 1024);
    const Samples y = PostFilter().run(x, lag, gain, adjust);
    double in = 0;
    double out = 0;
    for (size_t i = x.size() / 2; i < x.size(); i++) {
        in += static_cast<double>(x[i]) * x[i];
        out += static_cast<double>(y[i]) * y[i];
    }
    return 10 * std::log10(in / out);
}

TEST(VekWbePostFilter, WithoutPitchOrGainIsADelay) {
    std::mt19937 random(3);
    const Samples x = noise(random, 4096, -20000, 20000);
    for (const Samples& y : {PostFilter().run(x, 0, 16384, 0), PostFilter().run(x, 80, 0, 0)}) {
        for (size_t i = 140; i < x.size(); i++) {
            ASSERT_EQ(x[i - 140], y[i]) << i;
        }
    }
}

TEST(VekWbePostFilter, APeriodicSignalPasses) {
    atEveryLevel([] {
        std::mt19937 random(4);
        for (const int lag : {34, 100, 200, 375}) {
            const Samples period = noise(random, lag, -8000, 8000);
            Samples x(8192);
            for (size_t i = 0; i < x.size(); i++) {
                x[i] = period[i % period.size()];
            }
            const Samples y = PostFilter().run(x, lag, 16384, 0);
            for (size_t i = 1100; i < x.size(); i++) {
                ASSERT_EQ(x[i - 140], y[i]) << lag << " " << i;
            }
        }
    });
}

TEST(VekWbePostFilter, ATonesLossDependsOnItsPlaceBetweenTheHarmonicsAndOnItsFrequency) {
    EXPECT_GT(lossInDb(200, 100, 16384, 0), 4); // 64 Hz, half way between the harmonics
    EXPECT_LT(lossInDb(200, 100, 8192, 0), lossInDb(200, 100, 16384, 0) - 1);
    EXPECT_LT(std::abs(lossInDb(100, 100, 16384, 0)), 0.01);       // on a harmonic
    EXPECT_LT(std::abs(lossInDb(200.0 / 49, 100, 16384, 0)), 0.1); // 3136 Hz, between harmonics
}

TEST(VekWbePostFilter, AFalseHalfLagIsLeftAloneAndATrueOneIsTaken) {
    // The lag 160 is twice the period of 80: halving changes nothing for a periodic signal.
    EXPECT_LT(std::abs(lossInDb(80, 160, 16384, 1)), 0.01);
    // A tone of period 160 is turned round after 80 samples; its lag stays and it passes.
    EXPECT_LT(std::abs(lossInDb(160, 160, 16384, 1)), 0.01);
    // A tone of period 79 with a lag of 120 in which half the lag does not repeat: halving must not happen.
    EXPECT_NEAR(lossInDb(79, 120, 16384, 1), lossInDb(79, 120, 16384, 0), 1e-9);
    // A slow tone repeats nearly after half the lag, which then leaves more of it.
    EXPECT_LT(lossInDb(2000, 120, 16384, 1), lossInDb(2000, 120, 16384, 0));
}

TEST(VekWbePostFilter, Refusals) {
    Samples lags(16, 376);
    const Samples gains(16, 16384);
    Samples x(1024, 5);
    Samples synth(503, 6);
    Samples memory(24, 7);
    Vek16s scale = 8;
    const auto run = [&](const Vek16s* l, const Vek16s* g, Vek16s* s, Vek16s* o, Vek16s* n, Vek16s* f, int adjust) {
        return veksPostFilterLowBand_AMRWBE_16s(l, g, s, o, n, f, adjust);
    };
    EXPECT_EQ(vekStsRangeErr, run(lags.data(), gains.data(), x.data(), synth.data(), memory.data(), &scale, 0));
    lags.assign(16, -1);
    EXPECT_EQ(vekStsRangeErr, run(lags.data(), gains.data(), x.data(), synth.data(), memory.data(), &scale, 0));
    lags.assign(16, 80);
    EXPECT_EQ(vekStsRangeErr, run(lags.data(), gains.data(), x.data(), synth.data(), memory.data(), &scale, 2));
    expectNullsRefused(run, lags.data(), gains.data(), x.data(), synth.data(), memory.data(), &scale, 0);
    EXPECT_EQ(Samples(1024, 5), x);
    EXPECT_EQ(Samples(503, 6), synth);
    EXPECT_EQ(Samples(24, 7), memory);
    EXPECT_EQ(8, scale);
}

} // namespace
