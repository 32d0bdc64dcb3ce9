// Cosine transform of type IV, lapped transform and the 128-point Fourier transform: against the definitions in double
// precision at every level, same bits between the levels, saturation, and the refusals.
#include <cmath>
#include <complex>

#include "lp_reference.h"
#include "veksc.h"

namespace {

using lpref::clip;

std::vector<double> dct4(const Samples& x) {
    const size_t n = x.size();
    std::vector<double> cosine(8 * n);
    for (size_t i = 0; i < cosine.size(); i++) {
        cosine[i] = std::cos(M_PI * static_cast<double>(i) / (4.0 * static_cast<double>(n)));
    }
    std::vector<double> y(n);
    for (size_t m = 0; m < n; m++) {
        double s = 0;
        for (size_t i = 0; i < n; i++) {
            s += x[i] * cosine[(2 * i + 1) * (2 * m + 1) % (8 * n)];
        }
        y[m] = s * std::sqrt(2.0 / static_cast<double>(n));
    }
    return y;
}

// Quiet and loud noise, one pulse, a tone, a signal that saturates.
std::vector<Samples> signals(int n, unsigned seed) {
    std::mt19937 random(seed);
    Samples pulse(static_cast<size_t>(n), 0);
    pulse[static_cast<size_t>(n) / 3] = -32768;
    Samples tone(static_cast<size_t>(n));
    for (size_t i = 0; i < tone.size(); i++) {
        tone[i] = static_cast<int16_t>(std::lround(1500 * std::sin(0.3 * static_cast<double>(i))));
    }
    return {noise(random, n, -1024, 1024), noise(random, n, -32768, 32767),        pulse, tone,
            noise(random, n, -3, 3),       Samples(static_cast<size_t>(n), -32768)};
}

TEST(VekDct, WithinOneOfTheExactTransformAndSaturated) {
    atEveryLevel([] {
        for (const int n : {320, 640}) {
            for (const Samples& x : signals(n, 1)) {
                Samples y(x.size());
                ASSERT_EQ(vekStsNoErr, veksDCTFwd_G7221_16s(x.data(), y.data(), n));
                lpref::expectSaturated(dct4(x), y, 0.6);
            }
        }
    });
}

TEST(VekDct, EveryPulsePositionAgreesWithTheDefinition) {
    for (const int n : {320, 640}) {
        for (int at = 0; at < n; at++) {
            Samples x(static_cast<size_t>(n), 0);
            x[static_cast<size_t>(at)] = 16384;
            Samples y(x.size());
            ASSERT_EQ(vekStsNoErr, veksDCTFwd_G7221_16s(x.data(), y.data(), n));
            for (int m = 0; m < n; m++) {
                const double exact = 16384 * std::sqrt(2.0 / n) * std::cos(M_PI / n * (at + 0.5) * (m + 0.5));
                ASSERT_NEAR(exact, y[static_cast<size_t>(m)], 0.6) << n << " " << at << " " << m;
            }
        }
    }
}

TEST(VekDct, LevelsGiveTheSameBits) {
    for (const int n : {320, 640}) {
        for (const Samples& x : signals(n, 2)) {
            std::vector<Samples> results;
            atEveryLevel([&] {
                Samples y(x.size());
                ASSERT_EQ(vekStsNoErr, veksDCTInv_G7221_16s(x.data(), y.data(), n));
                results.push_back(y);
            });
            for (const Samples& y : results) {
                ASSERT_EQ(results[0], y);
            }
        }
    }
}

TEST(VekDct, ForwardThenInverseGivesTheSignalBack) {
    std::mt19937 random(3);
    const Samples x = noise(random, 320, -1500, 1500);
    Samples y(320);
    ASSERT_EQ(vekStsNoErr, veksDCTFwd_G722_16s(x.data(), y.data()));
    Samples wide(320);
    ASSERT_EQ(vekStsNoErr, veksDCTFwd_G7221_16s(x.data(), wide.data(), 320));
    EXPECT_EQ(wide, y);
    ASSERT_EQ(vekStsNoErr, veksDCTInv_G722_16s(y.data(), y.data()));
    for (size_t i = 0; i < x.size(); i++) {
        ASSERT_NEAR(x[i], y[i], 2);
    }
}

TEST(VekDct, TheInverseIsTheForwardTransform) {
    for (const int n : {320, 640}) {
        for (const Samples& x : signals(n, 5)) {
            Samples forward(x.size());
            Samples inverse(x.size());
            ASSERT_EQ(vekStsNoErr, veksDCTFwd_G7221_16s(x.data(), forward.data(), n));
            ASSERT_EQ(vekStsNoErr, veksDCTInv_G7221_16s(x.data(), inverse.data(), n));
            EXPECT_EQ(forward, inverse);
            if (n == 320) {
                ASSERT_EQ(vekStsNoErr, veksDCTInv_G722_16s(x.data(), inverse.data()));
                EXPECT_EQ(forward, inverse);
            }
        }
    }
}

TEST(VekLappedTransform, FoldFollowsTheDefinition) {
    atEveryLevel([] {
        for (const int n : {320, 640}) {
            for (const Samples& fresh : signals(n, 4)) {
                std::mt19937 random(5);
                Samples old = noise(random, n, -32768, 32767);
                const auto x = [&, before = old](int i) {
                    return static_cast<double>(i < n ? before[static_cast<size_t>(i)]
                                                     : fresh[static_cast<size_t>(i - n)]);
                };
                const auto w = [&](int i) { return std::sin(M_PI / (2 * n) * (i + 0.5)); };
                Samples v(fresh.size());
                ASSERT_EQ(vekStsNoErr, veksDecomposeMLTToDCT_G7221_16s(fresh.data(), old.data(), v.data(), n));
                EXPECT_EQ(fresh, old);
                for (int i = 0; i < n / 2; i++) {
                    const int h = n / 2;
                    const double a = w(h - 1 - i) * x(h - 1 - i) + w(h + i) * x(h + i);
                    const double b = w(n - 1 - i) * x(n + i) - w(i) * x(2 * n - 1 - i);
                    ASSERT_NEAR(std::min(32767.0, std::max(-32768.0, a)), v[static_cast<size_t>(i)], 1.6);
                    ASSERT_NEAR(std::min(32767.0, std::max(-32768.0, b)), v[static_cast<size_t>(i + h)], 1.6);
                }
            }
        }
    });
}

TEST(VekLappedTransform, UnfoldFollowsTheDefinition) {
    atEveryLevel([] {
        for (const int n : {320, 640}) {
            for (const Samples& fresh : signals(n, 9)) {
                std::mt19937 random(10);
                const Samples before = noise(random, n, -32768, 32767);
                Samples old = before;
                Samples y(fresh.size());
                ASSERT_EQ(vekStsNoErr, veksDecomposeDCTToMLT_G7221_16s(fresh.data(), old.data(), y.data(), n));
                EXPECT_EQ(fresh, old);
                const auto w = [&](int i) { return std::sin(M_PI / (2 * n) * (i + 0.5)); };
                const auto cut = [](double v) { return std::min(32767.0, std::max(-32768.0, v)); };
                // The second half of the block before and the first half of this one hold the frame, folded.
                for (int i = 0; i < n / 2; i++) {
                    const double late = before[static_cast<size_t>(n / 2 + i)];
                    const double early = fresh[static_cast<size_t>(n / 2 - 1 - i)];
                    ASSERT_NEAR(cut(w(n - 1 - i) * late + w(i) * early), y[static_cast<size_t>(i)], 1.6);
                    ASSERT_NEAR(cut(w(n - 1 - i) * early - w(i) * late), y[static_cast<size_t>(n - 1 - i)], 1.6);
                }
            }
        }
    });
}

TEST(VekLappedTransform, FoldAndTransformAreTheModulatedTransform) {
    std::mt19937 random(6);
    const Samples before = noise(random, 320, -1000, 1000);
    const Samples fresh = noise(random, 320, -1000, 1000);
    Samples old = before;
    Samples v(320);
    ASSERT_EQ(vekStsNoErr, veksDecomposeMLTToDCT_G722_16s(fresh.data(), old.data(), v.data()));
    ASSERT_EQ(vekStsNoErr, veksDCTFwd_G722_16s(v.data(), v.data()));
    for (int m = 0; m < 320; m++) {
        double s = 0;
        for (int n = 0; n < 640; n++) {
            const double x = n < 320 ? before[static_cast<size_t>(n)] : fresh[static_cast<size_t>(n - 320)];
            s += std::sin(M_PI / 640 * (n + 0.5)) * std::cos(M_PI / 320 * (n - 159.5) * (m + 0.5)) * x;
        }
        ASSERT_NEAR(s * std::sqrt(2.0 / 320), v[static_cast<size_t>(m)], 2.5) << m;
    }
}

TEST(VekLappedTransform, TheChainGivesEachFrameBackOneFrameLater) {
    atEveryLevel([] {
        for (const int n : {320, 640}) {
            std::mt19937 random(7);
            Samples oldTime(static_cast<size_t>(n), 0);
            Samples oldBlock(static_cast<size_t>(n), 0);
            Samples before(static_cast<size_t>(n), 0);
            for (int frame = 0; frame < 4; frame++) {
                const Samples x = noise(random, n, -1024, 1024);
                Samples block(x.size());
                Samples y(x.size());
                ASSERT_EQ(vekStsNoErr, veksDecomposeMLTToDCT_G7221_16s(x.data(), oldTime.data(), block.data(), n));
                ASSERT_EQ(vekStsNoErr, veksDCTFwd_G7221_16s(block.data(), block.data(), n));
                ASSERT_EQ(vekStsNoErr, veksDCTInv_G7221_16s(block.data(), block.data(), n));
                ASSERT_EQ(vekStsNoErr, veksDecomposeDCTToMLT_G7221_16s(block.data(), oldBlock.data(), y.data(), n));
                for (size_t i = 0; i < y.size(); i++) {
                    ASSERT_NEAR(before[i], y[i], 3) << n << " frame " << frame << " sample " << i;
                }
                before = x;
            }
        }
    });
}

TEST(VekLappedTransform, UnfoldOfTheG722FormIsTheOneOf320AndKeepsTheBlock) {
    std::mt19937 random(8);
    const Samples x = noise(random, 320, -32768, 32767);
    const Samples before = noise(random, 320, -32768, 32767);
    Samples old1 = before;
    Samples old2 = before;
    Samples y1(320);
    Samples y2(320);
    ASSERT_EQ(vekStsNoErr, veksDecomposeDCTToMLT_G722_16s(x.data(), old1.data(), y1.data()));
    ASSERT_EQ(vekStsNoErr, veksDecomposeDCTToMLT_G7221_16s(x.data(), old2.data(), y2.data(), 320));
    EXPECT_EQ(y1, y2);
    EXPECT_EQ(x, old1);
}

TEST(VekLappedTransform, OtherLengthsAndNullPointersAreRefused) {
    Samples a(640, 1);
    Samples b(640, 2);
    Samples c(640, 3);
    for (const int n : {0, 319, 480, 641, -320}) {
        EXPECT_EQ(vekStsLengthErr, veksDecomposeMLTToDCT_G7221_16s(a.data(), b.data(), c.data(), n));
        EXPECT_EQ(vekStsLengthErr, veksDecomposeDCTToMLT_G7221_16s(a.data(), b.data(), c.data(), n));
        EXPECT_EQ(vekStsLengthErr, veksDCTFwd_G7221_16s(a.data(), c.data(), n));
        EXPECT_EQ(vekStsLengthErr, veksDCTInv_G7221_16s(a.data(), c.data(), n));
    }
    EXPECT_EQ(vekStsNullPtrErr, veksDecomposeMLTToDCT_G7221_16s(nullptr, b.data(), c.data(), 320));
    EXPECT_EQ(vekStsNullPtrErr, veksDecomposeMLTToDCT_G722_16s(a.data(), nullptr, c.data()));
    EXPECT_EQ(vekStsNullPtrErr, veksDecomposeDCTToMLT_G722_16s(a.data(), b.data(), nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksDCTFwd_G722_16s(nullptr, c.data()));
    EXPECT_EQ(vekStsNullPtrErr, veksDCTInv_G722_16s(a.data(), nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksFFTFwd_RToPerm_GSMAMR_16s_I(nullptr));
    EXPECT_EQ(Samples(640, 3), c);
    EXPECT_EQ(Samples(640, 2), b);
}

std::vector<std::complex<double>> spectrum128(const Samples& x) {
    std::vector<std::complex<double>> y(65);
    for (size_t k = 0; k < y.size(); k++) {
        for (size_t n = 0; n < x.size(); n++) {
            y[k] += std::polar(x[n] / 128.0, -2 * M_PI * static_cast<double>(n * k % 128) / 128);
        }
    }
    return y;
}

TEST(VekFft128, WithinOneOfTheExactSpectrumInPermutedOrder) {
    atEveryLevel([] {
        for (const Samples& x : signals(128, 9)) {
            Samples y = x;
            ASSERT_EQ(vekStsNoErr, veksFFTFwd_RToPerm_GSMAMR_16s_I(y.data()));
            const auto exact = spectrum128(x);
            ASSERT_NEAR(exact[0].real(), y[0], 0.6);
            ASSERT_NEAR(exact[64].real(), y[1], 0.6);
            for (size_t k = 1; k < 64; k++) {
                ASSERT_NEAR(exact[k].real(), y[2 * k], 0.6) << k;
                ASSERT_NEAR(exact[k].imag(), y[2 * k + 1], 0.6) << k;
            }
        }
    });
}

TEST(VekFft128, FullScaleDirectAndAlternatingSignalsDoNotSaturate) {
    atEveryLevel([] {
        Samples direct(128, -32768);
        ASSERT_EQ(vekStsNoErr, veksFFTFwd_RToPerm_GSMAMR_16s_I(direct.data()));
        Samples expected(128, 0);
        expected[0] = -32768;
        EXPECT_EQ(expected, direct);
        Samples alternating(128);
        for (size_t i = 0; i < 128; i++) {
            alternating[i] = i % 2 == 0 ? 32767 : -32767;
        }
        ASSERT_EQ(vekStsNoErr, veksFFTFwd_RToPerm_GSMAMR_16s_I(alternating.data()));
        expected[0] = 0;
        expected[1] = 32767;
        EXPECT_EQ(expected, alternating);
    });
}

TEST(VekFft128, LevelsGiveTheSameBits) {
    for (const Samples& x : signals(128, 10)) {
        std::vector<Samples> results;
        atEveryLevel([&] {
            Samples y = x;
            ASSERT_EQ(vekStsNoErr, veksFFTFwd_RToPerm_GSMAMR_16s_I(y.data()));
            results.push_back(y);
        });
        for (const Samples& y : results) {
            ASSERT_EQ(results[0], y);
        }
    }
}

} // namespace
