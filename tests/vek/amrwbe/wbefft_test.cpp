// Fourier transforms of the extended wide-band codec: against the definition in double precision at every level, same
// bits between the levels, saturation, and the refusals.
#include <cmath>

#include "lp_reference.h"
#include "veksc.h"

namespace {

const int lengths[] = {48, 96, 192, 288, 576, 1152};

// The spectrum in the order of the library, not rounded.
std::vector<double> spectrum(const Samples& x) {
    const size_t n = x.size();
    std::vector<double> cosine(n);
    std::vector<double> sine(n);
    for (size_t i = 0; i < n; i++) {
        cosine[i] = std::cos(2 * M_PI * static_cast<double>(i) / static_cast<double>(n));
        sine[i] = std::sin(2 * M_PI * static_cast<double>(i) / static_cast<double>(n));
    }
    std::vector<double> y(n);
    for (size_t k = 0; k <= n / 2; k++) {
        double re = 0;
        double im = 0;
        for (size_t i = 0; i < n; i++) {
            re += x[i] * cosine[i * k % n];
            im -= x[i] * sine[i * k % n];
        }
        const double scale = 1 / std::sqrt(static_cast<double>(n));
        if (k == n / 2) {
            y[1] = re * scale;
        } else {
            y[2 * k] = re * scale;
            if (k > 0) {
                y[2 * k + 1] = im * scale;
            }
        }
    }
    return y;
}

TEST(VekWbeFft, ForwardIsWithinARoundingOfTheDefinitionAndSaturates) {
    atEveryLevel([] {
        std::mt19937 random(1);
        for (const int n : lengths) {
            Samples pulse(static_cast<size_t>(n), 0);
            pulse[static_cast<size_t>(n) / 3] = -32768;
            for (const Samples& x : {noise(random, n, -1024, 1024), noise(random, n, -32768, 32767), pulse,
                                     noise(random, n, -3, 3), Samples(static_cast<size_t>(n), -32768)}) {
                Samples y(x.size());
                ASSERT_EQ(vekStsNoErr, veksFFTFwd_RToPerm_AMRWBE_16s(x.data(), y.data(), n));
                lpref::expectSaturated(spectrum(x), y, 0.55);
            }
        }
    });
}

TEST(VekWbeFft, EveryPulsePositionAgreesWithTheDefinition) {
    for (const int n : lengths) {
        for (int at = 0; at < n; at++) {
            Samples x(static_cast<size_t>(n), 0);
            x[static_cast<size_t>(at)] = 30000;
            Samples y(x.size());
            ASSERT_EQ(vekStsNoErr, veksFFTFwd_RToPerm_AMRWBE_16s(x.data(), y.data(), n));
            for (int k = 1; k < n / 2; k++) {
                const double phase = 2 * M_PI * (static_cast<int64_t>(at) * k % n) / n;
                ASSERT_NEAR(30000 / std::sqrt(n) * std::cos(phase), y[static_cast<size_t>(2 * k)], 0.52);
                ASSERT_NEAR(-30000 / std::sqrt(n) * std::sin(phase), y[static_cast<size_t>(2 * k + 1)], 0.52);
            }
            ASSERT_NEAR(30000 / std::sqrt(n) * (at % 2 == 0 ? 1 : -1), y[1], 0.52);
        }
    }
}

TEST(VekWbeFft, TheInverseOfEachLineIsItsWave) {
    atEveryLevel([] {
        for (const int n : lengths) {
            for (int k = 0; k <= n / 2; k += 5) {
                Samples x(static_cast<size_t>(n), 0);
                const size_t at = k == n / 2 ? 1 : static_cast<size_t>(2 * k);
                x[at] = 20000;
                Samples y(x.size());
                ASSERT_EQ(vekStsNoErr, veksFFTInv_PermToR_AMRWBE_16s(x.data(), y.data(), n));
                const double height = 20000 / std::sqrt(n) * (k == 0 || k == n / 2 ? 1 : 2);
                for (int i = 0; i < n; i++) {
                    const double phase = 2 * M_PI * (static_cast<int64_t>(i) * k % n) / n;
                    ASSERT_NEAR(height * std::cos(phase), y[static_cast<size_t>(i)], 0.52) << n << " " << k;
                }
            }
        }
    });
}

TEST(VekWbeFft, ForwardThenInverseGivesTheSignalBackInPlace) {
    std::mt19937 random(3);
    for (const int n : lengths) {
        const Samples x = noise(random, n, -1500, 1500);
        Samples y = x;
        ASSERT_EQ(vekStsNoErr, veksFFTFwd_RToPerm_AMRWBE_16s(y.data(), y.data(), n));
        ASSERT_EQ(vekStsNoErr, veksFFTInv_PermToR_AMRWBE_16s(y.data(), y.data(), n));
        for (size_t i = 0; i < x.size(); i++) {
            ASSERT_NEAR(x[i], y[i], 2) << n;
        }
    }
}

TEST(VekWbeFft, LevelsGiveTheSameBits) {
    std::mt19937 random(4);
    for (const int n : lengths) {
        const Samples x = noise(random, n, -20000, 20000);
        std::vector<Samples> results;
        atEveryLevel([&] {
            Samples y(x.size());
            Samples z(x.size());
            ASSERT_EQ(vekStsNoErr, veksFFTFwd_RToPerm_AMRWBE_16s(x.data(), y.data(), n));
            ASSERT_EQ(vekStsNoErr, veksFFTInv_PermToR_AMRWBE_16s(x.data(), z.data(), n));
            y.insert(y.end(), z.begin(), z.end());
            results.push_back(y);
        });
        for (const Samples& y : results) {
            ASSERT_EQ(results[0], y) << n;
        }
    }
}

TEST(VekWbeFft, RefusesNullPointersAndOtherLengths) {
    Samples x(2048, 7);
    Samples y(2048, 9);
    for (const auto transform : {veksFFTFwd_RToPerm_AMRWBE_16s, veksFFTInv_PermToR_AMRWBE_16s}) {
        expectNullsRefused(transform, x.data(), y.data(), 48);
        for (const int len : {-48, 0, 47, 64, 384, 1151, 1153, 2048}) {
            EXPECT_EQ(vekStsFftOrderErr, transform(x.data(), y.data(), len));
        }
    }
    EXPECT_EQ(Samples(2048, 9), y);
}

} // namespace
