// Mid-band prediction and low-band post-filter of the extended wide-band codec: known filters, the error of least
// squares, harmonic signals, tones between the harmonics, memories over frames, and the refusals.
#include <algorithm>
#include <array>
#include <cmath>

#include "lp_reference.h"
#include "veksc.h"

namespace {

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

// The solution of equations by elimination.
std::array<long double, 9> solved(std::array<std::array<long double, 10>, 9> m) {
    for (size_t i = 0; i < 9; i++) {
        for (size_t k = 0; k < 9; k++) {
            const long double factor = m[k][i] / m[i][i];
            for (size_t j = i; j < 10 && k != i; j++) {
                m[k][j] -= factor * m[i][j];
            }
        }
    }
    std::array<long double, 9> x{};
    for (size_t i = 0; i < 9; i++) {
        x[i] = m[i][9] / m[i][i];
    }
    return x;
}

TEST(VekWbeMidBand, TapsSolveTheNormalEquations) {
    atEveryLevel([] {
        std::mt19937 random(12);
        for (int round = 0; round < 60; round++) {
            const int level = 50 << (round % 9);
            Samples mid = noise(random, 328, -level, level);
            Samples target = noise(random, 320, -level, level);
            // White, low-pass, nearly a tone.
            const double feedback[] = {0, 0.97, 1.99};
            const double second[] = {0, 0, -0.9995};
            double y[2] = {};
            for (size_t n = 0; n < mid.size(); n++) {
                const auto kind = static_cast<size_t>(round % 3);
                const double v = mid[n] * (kind == 0 ? 1 : 0.05) + feedback[kind] * y[0] + second[kind] * y[1];
                y[1] = y[0];
                y[0] = std::clamp(v, -32768.0, 32767.0);
                mid[n] = static_cast<int16_t>(std::lround(y[0]));
                if (n >= 8) {
                    target[n - 8] = static_cast<int16_t>(target[n - 8] / 4 + mid[n] / 2 - mid[n - 5] / 4);
                }
            }
            std::array<std::array<long double, 10>, 9> equations{};
            for (size_t i = 0; i < 9; i++) {
                for (size_t n = 0; n < 320; n++) {
                    for (size_t k = 0; k < 9; k++) {
                        equations[i][k] += static_cast<long double>(mid[8 + n - i]) * mid[8 + n - k];
                    }
                    equations[i][9] += static_cast<long double>(mid[8 + n - i]) * target[n];
                }
            }
            // A floor of 40 dB below the signal, as told in the source.
            const long double floor = equations[0][0] * 1e-4L + 1;
            for (size_t i = 0; i < 9; i++) {
                equations[i][i] += floor;
            }
            const auto want = solved(equations);
            Samples h(9);
            ASSERT_EQ(vekStsNoErr, veksFIRGenMidBand_AMRWBE_16s(mid.data() + 8, target.data(), h.data()));
            for (size_t k = 0; k < 9; k++) {
                const double tap = std::clamp(static_cast<double>(4096 * want[k]), -32768.0, 32767.0);
                ASSERT_NEAR(tap, h[k], 0.501) << round << " " << k;
            }
        }
    });
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

// The whole post-filter over a signal in double precision, rounding nothing in between.
std::vector<double> filteredInDouble(const Samples& x, const Samples& lags, const Samples& gains, int adjust) {
    const auto at = [&](long i) { return i < 0 || i >= static_cast<long>(x.size()) ? 0.0 : x[static_cast<size_t>(i)]; };
    std::vector<double> weighted(x.size() + 256); // of the sample 140 before
    double mean = 0;
    for (size_t j = 0; j < lags.size(); j++) {
        const long start = static_cast<long>(64 * j) - 128;
        long lag = lags[j];
        if (lag == 0) {
            continue;
        }
        double cross = 0;
        double now = 0;
        double then = 0;
        for (long n = start; n < start + 64; n++) {
            cross += at(n) * at(n - lag / 2);
            now += at(n) * at(n);
            then += at(n - lag / 2) * at(n - lag / 2);
        }
        if (adjust == 1 && lag > 1 && cross > 0 && cross * cross > 0.9025 * now * then) {
            lag /= 2;
        }
        double difference[64];
        double energy = 0;
        for (long i = 0; i < 64; i++) {
            const long n = start + i;
            difference[i] = lag <= 128 ? at(n) - (at(n - lag) + at(n + lag)) / 2 : (at(n) - at(n - lag)) / 2;
            energy += difference[i] * difference[i] / 64;
        }
        mean += 0.01 * (20 * std::log10(std::max(std::sqrt(energy), 1.0)) - mean);
        const double usual = std::pow(10, mean / 20);
        const double share = std::clamp(gains[j] / 16384.0, 0.0, 1.0) * usual / (usual + std::sqrt(energy));
        for (long i = 0; i < 64; i++) {
            weighted[static_cast<size_t>(start + i + 140)] = share * difference[i];
        }
    }
    double taps[25];
    double sum = 0;
    for (int k = 0; k < 25; k++) {
        const double angle = 2 * M_PI * (k - 12) * 500 / 12800;
        taps[k] = (k == 12 ? 1 : std::sin(angle) / angle) * (0.54 + 0.46 * std::cos(2 * M_PI * (k - 12) / 26));
        sum += taps[k];
    }
    std::vector<double> y(x.size());
    for (size_t n = 0; n < x.size(); n++) {
        y[n] = at(static_cast<long>(n) - 140);
        for (size_t k = 0; k < 25; k++) {
            y[n] -= n + k >= 12 ? taps[k] / sum * weighted[n + k - 12] : 0;
        }
    }
    return y;
}

TEST(VekWbePostFilter, FollowsItsDefinitionInDoublePrecision) {
    atEveryLevel([] {
        std::mt19937 random(13);
        for (const int adjust : {0, 1}) {
            Samples x = noise(random, 8 * 1024, -300, 300);
            for (size_t i = 0; i < x.size(); i++) {
                const double t = 2 * M_PI * static_cast<double>(i);
                const double v = 2500 * std::sin(t / 110) + 1500 * std::sin(t / 47.3) + 600 * std::sin(t / 9);
                x[i] = static_cast<int16_t>(x[i] + v * (1 + std::sin(t / 3000)));
            }
            Samples lags = noise(random, 8 * 16, 1, 375);
            const Samples gains = noise(random, 8 * 16, -3000, 22000);
            for (size_t j = 0; j < lags.size(); j += 3) {
                lags[j] = static_cast<int16_t>(j % 2 == 0 ? 220 : 110);
            }
            lags[50] = 0;
            lags[51] = 0;
            const std::vector<double> want = filteredInDouble(x, lags, gains, adjust);
            Samples synth(503);
            Samples memory(24);
            Vek16s scale = 0;
            for (size_t frame = 0; frame < 8; frame++) {
                Samples y(x.begin() + static_cast<long>(1024 * frame),
                          x.begin() + static_cast<long>(1024 * frame + 1024));
                ASSERT_EQ(vekStsNoErr, veksPostFilterLowBand_AMRWBE_16s(&lags[16 * frame], &gains[16 * frame], y.data(),
                                                                        synth.data(), memory.data(), &scale, adjust));
                for (size_t i = 0; i < 1024; i++) {
                    ASSERT_NEAR(want[1024 * frame + i], y[i], 3) << adjust << " " << frame << " " << i;
                }
            }
        }
    });
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
