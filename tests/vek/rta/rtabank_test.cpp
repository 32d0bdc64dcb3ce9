// Real-time audio: the filter bank against its definition in double precision.
#include "rta_reference.h"
#include "veksc.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <numbers>
#include <vector>

namespace {

using lpref::bessel;
using namespace rtaref;

struct Bank {
    StateMemory<VeksQMFState_RTA_32f> state{veksQMFGetStateSize_RTA_32f};
    Bank() { EXPECT_EQ(vekStsNoErr, veksQMFInit_RTA_32f(state)); }
};

// The prototype by its rule: the edge where the square of the gain at a quarter is half.
Doubles prototype() {
    Doubles h(64);
    const auto design = [&](double edge) {
        double sum = 0;
        double quarter = 0;
        for (size_t i = 0; i < 64; ++i) {
            const double t = static_cast<double>(i) - 31.5;
            h[i] = std::sin(edge * t) / (kPi * t) * bessel(9 * std::sqrt(1 - t * t / 31.5 / 31.5));
            sum += h[i];
            quarter += h[i] * std::cos(kPi / 2 * t);
        }
        for (double& v : h) {
            v /= sum;
        }
        return quarter / sum;
    };
    double edge = kPi / 2;
    for (double step = 0.1; step > 1e-12; step /= 2) {
        edge += design(edge) < std::sqrt(0.5) ? step : -step;
    }
    return h;
}

TEST(VekRtaBank, SplitIsTheFilterOfTheStatedRule) {
    const Doubles h = prototype();
    atEveryLevel([&] {
        std::mt19937 random(12);
        const Floats x = floatNoise(random, 1000, -32768, 32767);
        Floats low(500);
        Floats high(500);
        Bank bank;
        int at = 0;
        for (const int n : {2, 20, 40, 60, 80, 398, 400}) {
            ASSERT_EQ(vekStsNoErr,
                      veksQMFEncode_RTA_32f(x.data() + at, n, low.data() + at / 2, high.data() + at / 2, bank.state));
            at += n;
        }
        for (int n = 0; n < 500; ++n) {
            double sums[2] = {};
            for (int j = 0; j < 64; ++j) {
                const int i = 2 * n + 1 - j;
                const double v = i >= 0 ? h[static_cast<size_t>(j)] * x[static_cast<size_t>(i)] : 0;
                sums[0] += v;
                sums[1] += j % 2 == 0 ? v : -v;
            }
            ASSERT_NEAR(low[static_cast<size_t>(n)], sums[0], 0.03) << n;
            ASSERT_NEAR(high[static_cast<size_t>(n)], sums[1], 0.03) << n;
        }
    });
}

TEST(VekRtaBank, ReunionIsTheMirrorOfTheSplit) {
    const Doubles h = prototype();
    atEveryLevel([&] {
        std::mt19937 random(13);
        const Floats low = floatNoise(random, 400, -32768, 32767);
        const Floats high = floatNoise(random, 400, -32768, 32767);
        Floats y(800);
        Bank bank;
        int at = 0;
        for (const int n : {1, 10, 20, 30, 40, 99, 200}) {
            ASSERT_EQ(vekStsNoErr,
                      veksQMFDecode_RTA_32f(low.data() + at, high.data() + at, n, y.data() + 2 * at, bank.state));
            at += n;
        }
        for (int n = 0; n < 800; ++n) {
            double sum = 0;
            // Zeros between the samples; the high band's filter has the other sign at even taps.
            for (int j = n % 2; j < 64 && n - j >= 0; j += 2) {
                const auto i = static_cast<size_t>((n - j) / 2);
                sum += 2 * h[static_cast<size_t>(j)] * (low[i] + (j % 2 == 0 ? -high[i] : high[i]));
            }
            ASSERT_NEAR(y[static_cast<size_t>(n)], sum, 0.06) << n;
        }
    });
}

TEST(VekRtaBank, GivesTheSignalBack62SamplesLater) {
    atEveryLevel([] {
        for (const double f : {0.003, 0.11, 0.2, 0.249, 0.2503, 0.3, 0.45}) {
            Floats x(960);
            for (size_t i = 0; i < x.size(); ++i) {
                x[i] = static_cast<float>(10000 * std::sin(2 * kPi * f * static_cast<double>(i)));
            }
            Floats low(480);
            Floats high(480);
            Floats y(960);
            Bank split;
            Bank join;
            ASSERT_EQ(vekStsNoErr, veksQMFEncode_RTA_32f(x.data(), 960, low.data(), high.data(), split.state));
            ASSERT_EQ(vekStsNoErr, veksQMFDecode_RTA_32f(low.data(), high.data(), 480, y.data(), join.state));
            double error = 0;
            double powers[2] = {};
            for (size_t i = 200; i < x.size(); ++i) {
                error = std::max(error, std::abs(double{1} * y[i] - x[i - 62]));
                powers[0] += low[i / 2] * low[i / 2];
                powers[1] += high[i / 2] * high[i / 2];
            }
            EXPECT_LT(error, 10000 * 0.0026) << f;
            if (f < 0.2) {
                EXPECT_LT(powers[1], 1e-6 * powers[0]) << f;
            } else if (f >= 0.3) {
                EXPECT_LT(powers[0], 1e-6 * powers[1]) << f;
            }
        }
    });
}

TEST(VekRtaBank, RefusesOddLengthsAndStatesWithoutAStart) {
    Bank bank;
    Floats x(8, 1);
    Floats y(16, 3);
    float* out = y.data();
    EXPECT_EQ(vekStsSizeErr, veksQMFEncode_RTA_32f(x.data(), 7, out, out + 8, bank.state));
    EXPECT_EQ(vekStsSizeErr, veksQMFEncode_RTA_32f(x.data(), 0, out, out + 8, bank.state));
    EXPECT_EQ(vekStsSizeErr, veksQMFDecode_RTA_32f(x.data(), x.data(), 0, out, bank.state));
    bank.state.clear();
    EXPECT_EQ(vekStsStateErr, veksQMFEncode_RTA_32f(x.data(), 8, out, out + 8, bank.state));
    EXPECT_EQ(vekStsStateErr, veksQMFDecode_RTA_32f(x.data(), x.data(), 8, out, bank.state));
    EXPECT_EQ(y, Floats(16, 3));
}

} // namespace
