// Post filters, tilt, analysis and search of Annex D of G.729 against their definitions.
#include "lp_reference.h"
#include "veksc.h"

#include <cmath>

namespace {

const Samples speechLpc = {4096, -5200, 1900, 1300, -900, -500, 800, -300, -200, 200, -50};

Samples weighted(const Samples& a, double factor) {
    Samples w = a;
    double power = 1;
    for (int16_t& v : w) {
        v = static_cast<int16_t>(std::lround(v * power));
        power *= factor;
    }
    return w;
}

// Residual with a pitch: 154 samples before and the 40 of the subframe.
Samples pitched(std::mt19937& random, double period, double level) {
    Samples x(194);
    for (size_t i = 0; i < x.size(); ++i) {
        double v = 0;
        for (int k = 1; k <= 6; ++k) {
            v += std::cos(2 * 3.14159265358979 * k * static_cast<double>(i) / period + k * k);
        }
        x[i] = static_cast<int16_t>(level * v / 6 + noise(random, 1, -static_cast<int>(level / 20) - 1, 20)[0]);
    }
    return x;
}

TEST(VekG729Analysis, IsTheWindowedAutocorrelationWithItsExponent) {
    atEveryLevel([] {
        std::mt19937 random(8);
        for (const int high : {0, 1, 100, 2048, 32767}) {
            const Samples x = noise(random, 240, -high, high);
            int16_t exponent = 0;
            int32_t r[13];
            ASSERT_EQ(vekStsNoErr, veksAutoCorr_G729B(x.data(), &exponent, r));
            std::vector<double> y;
            for (int n = 0; n < 240; ++n) {
                const double pi = 3.14159265358979323846;
                y.push_back(x[static_cast<size_t>(n)] *
                            (n < 200 ? 0.54 - 0.46 * std::cos(2 * pi * n / 399) : std::cos(2 * pi * (n - 200) / 159)));
            }
            ASSERT_GE(r[0], 1 << 30);
            double energy = 0;
            for (const double v : y) {
                energy += v * v;
            }
            for (size_t k = 0; k < 13; ++k) {
                double want = 0;
                for (size_t n = k; n < 240; ++n) {
                    want += y[n] * y[n - k];
                }
                ASSERT_NEAR(want, std::ldexp(r[k], exponent - 2), 0.002 * energy + (high < 2 ? 80 : 0.6 * high));
            }
        }
    });
    int16_t exponent = 0;
    int32_t r[13];
    const Samples x(240);
    expectNullsRefused(veksAutoCorr_G729B, x.data(), &exponent, r);
}

TEST(VekG729ShortTerm, IsTheRecursiveHalfAndTheMainBodyScalesByTheResponse) {
    atEveryLevel([] {
        std::mt19937 random(9);
        const Samples in = noise(random, 40, -3000, 3000);
        const Samples memory = noise(random, 10, -3000, 3000);
        const Samples denominator = weighted(speechLpc, 0.7);
        const Samples numerator = weighted(speechLpc, 0.55);
        Samples out = memory;
        out.resize(50);
        ASSERT_EQ(vekStsNoErr, veksShortTermPostFilter_G729A_16s(speechLpc.data(), in.data(), out.data() + 10));
        const Samples want = lpref::synthesis(denominator, in, 12, memory);
        for (size_t i = 0; i < 40; ++i) {
            ASSERT_NEAR(want[i], out[i + 10], 12);
        }
        EXPECT_EQ(memory, Samples(out.begin(), out.begin() + 10));

        Samples impulse(20);
        std::copy(numerator.begin(), numerator.end(), impulse.begin());
        const Samples response = lpref::synthesis(denominator, impulse, 12, Samples(10));
        double sum = 0;
        for (const int16_t v : response) {
            sum += std::abs(v / 4096.0);
        }
        ASSERT_GT(sum, 1.1);
        Samples scaled = in;
        for (int16_t& v : scaled) {
            v = static_cast<int16_t>(std::lround(v / sum));
        }
        const Samples quiet = lpref::synthesis(denominator, scaled, 12, memory);
        Samples h(20);
        out = memory;
        out.resize(50);
        ASSERT_EQ(vekStsNoErr,
                  veksShortTermPostFilter_G729_16s(speechLpc.data(), in.data(), out.data() + 10, h.data()));
        for (size_t i = 0; i < 20; ++i) {
            ASSERT_NEAR(response[i], h[i], 4);
        }
        for (size_t i = 0; i < 40; ++i) {
            ASSERT_NEAR(quiet[i], out[i + 10], 16);
        }
    });
    Samples v(60);
    expectNullsRefused(veksShortTermPostFilter_G729A_16s, v.data(), v.data(), v.data() + 10);
    expectNullsRefused(veksShortTermPostFilter_G729_16s, v.data(), v.data(), v.data() + 10, v.data());
}

TEST(VekG729Tilt, FollowsTheFirstReflectionOfTheResponse) {
    std::mt19937 random(10);
    const Samples x = noise(random, 41, -3000, 3000);
    for (const int second : {-3000, 0, 2000}) {
        Samples h(20);
        h[0] = 4096;
        h[1] = static_cast<int16_t>(second);
        const double k = -4096.0 * second / (4096.0 * 4096 + double{1} * second * second);
        const double mu = k * (k > 0 ? 0.2 : 0.9);
        Samples got = x;
        ASSERT_EQ(vekStsNoErr, veksTiltCompensation_G729_16s(h.data(), got.data() + 1));
        Samples direct(40);
        ASSERT_EQ(vekStsNoErr, veksTiltCompensation_G729E_16s(static_cast<int16_t>(std::lround(k * 32768)), x.data(),
                                                              direct.data()));
        for (size_t i = 1; i <= 40; ++i) {
            const double want = (x[i] + mu * x[i - 1]) / (1 - std::abs(mu));
            ASSERT_NEAR(want, got[i], 1.5);
            ASSERT_NEAR(want, direct[i - 1], 1.5);
        }
        EXPECT_EQ(x[40], got[0]);
    }
    Samples silent(20);
    Samples got = x;
    ASSERT_EQ(vekStsNoErr, veksTiltCompensation_G729_16s(silent.data(), got.data() + 1));
    EXPECT_EQ(Samples(x.begin() + 1, x.end()), Samples(got.begin() + 1, got.end()));
    Samples edge(41, 32767);
    Samples out(40);
    ASSERT_EQ(vekStsNoErr, veksTiltCompensation_G729E_16s(32767, edge.data(), out.data()));
    EXPECT_EQ(Samples(40, 32767), out);
    expectNullsRefused(veksTiltCompensation_G729_16s, silent.data(), got.data() + 1);
    expectNullsRefused(veksTiltCompensation_G729E_16s, 0, edge.data(), out.data());
}

TEST(VekG729Tilt, HasTheBitsOfTheQuotientForAllReflectionsAndLoudnesses) {
    std::mt19937 random(13);
    for (const int peak : {30, 3000, 32767}) {
        for (const int k : {-32768, -32767, -20000, -9000, -1, 0, 1, 9000, 32767}) {
            const Samples x = noise(random, 41, -peak - 1, peak);
            const int64_t mu = (k * (k > 0 ? 6554 : 29491) + 0x4000) >> 15;
            const int64_t gain = (int64_t{1} << 29) / (32768 - std::abs(mu));
            Samples got(40);
            ASSERT_EQ(vekStsNoErr, veksTiltCompensation_G729E_16s(static_cast<int16_t>(k), x.data(), got.data()));
            for (size_t i = 1; i <= 40; ++i) {
                const int64_t sum = (x[i] * 32768 + mu * x[i - 1]) * gain;
                ASSERT_EQ(lpref::clip((sum + (1 << 28)) >> 29, 16), got[i - 1]) << k << " " << i;
            }
        }
    }
}

TEST(VekG729Tilt, OfAnnexAWorksAgainstAFallingSpectrumOnly) {
    std::mt19937 random(11);
    const Samples x = noise(random, 41, -3000, 3000);
    for (const int first : {-3000, 3000}) {
        Samples a(11);
        a[0] = 4096;
        a[1] = static_cast<int16_t>(first);
        // (1 + n z) / (1 + d z), n = 0.55 a, d = 0.7 a
        const double d = -0.7 * first / 4096;
        double h[22] = {1, (0.55 - 0.7) * first / 4096};
        for (int i = 2; i < 22; ++i) {
            h[i] = h[i - 1] * d;
        }
        double r0 = 0;
        double r1 = 0;
        for (int i = 0; i < 22; ++i) {
            r0 += h[i] * h[i];
            r1 += i < 21 ? h[i] * h[i + 1] : 0;
        }
        const double mu = r1 > 0 ? 0.8 * r1 / r0 : 0;
        Samples got = x;
        ASSERT_EQ(vekStsNoErr, veksTiltCompensation_G729A_16s(a.data(), got.data() + 1));
        for (size_t i = 1; i <= 40; ++i) {
            ASSERT_NEAR(x[i] - mu * x[i - 1], got[i], 10);
        }
        EXPECT_EQ(first<0, mu> 0.05);
        EXPECT_EQ(x[40], got[0]);
    }
    Samples v(60);
    expectNullsRefused(veksTiltCompensation_G729A_16s, v.data(), v.data() + 1);
}

TEST(VekG729LongTerm, OfAnnexAMixesTheBestWholeDelayIn) {
    atEveryLevel([] {
        std::mt19937 random(12);
        int filtered = 0;
        for (int round = 0; round < 60; ++round) {
            const int period = noise(random, 1, 24, 140)[0];
            // The coefficients are those of no filter, so that the speech is its own residual.
            Samples flat(11);
            flat[0] = 4096;
            const Samples signal = round % 3 == 0 ? noise(random, 194, -2000, 2000) : pitched(random, period, 2000);
            const Samples speech(signal.begin() + 144, signal.end());
            Samples residual = signal;
            std::fill(residual.begin() + 154, residual.end(), int16_t{0});
            Samples y(40);
            ASSERT_EQ(vekStsNoErr, veksLongTermPostFilter_G729A_16s(static_cast<int16_t>(period), speech.data() + 10,
                                                                    flat.data(), residual.data(), y.data()));
            ASSERT_EQ(signal, residual);
            const auto sum = [&](int a, int b) {
                double s = 0;
                for (int n = 154; n < 194; ++n) {
                    s += double{1} * signal[static_cast<size_t>(n - a)] * signal[static_cast<size_t>(n - b)];
                }
                return s;
            };
            const int last = std::min(period + 3, 143);
            int delay = last - 6;
            for (int k = last - 6; k <= last; ++k) {
                delay = sum(0, k) > sum(0, delay) ? k : delay;
            }
            const double c = std::max(sum(0, delay), 0.0);
            const double gain = c * c / (sum(delay, delay) * sum(0, 0));
            if (std::abs(gain - 0.5) < 0.02) {
                continue;
            }
            const double g = gain < 0.5 ? 0 : 0.5 * std::min(c / sum(delay, delay), 1.0);
            filtered += g > 0 ? 1 : 0;
            for (size_t n = 0; n < 40; ++n) {
                const double want = (signal[154 + n] + g * signal[154 + n - static_cast<size_t>(delay)]) / (1 + g);
                ASSERT_NEAR(want, y[n], 12) << round;
            }
        }
        EXPECT_GE(filtered, 25);
    });
}

TEST(VekG729LongTerm, OfTheMainBodyRemovesNoiseBetweenFractionsOfTheDelay) {
    atEveryLevel([] {
        std::mt19937 random(13);
        Samples flat(11);
        flat[0] = 4096;
        for (const double period : {24.0, 40.25, 57.5, 80.125, 120.875, 143.0}) {
            Samples pure = pitched(random, period, 8000);
            for (size_t i = 0; i < pure.size(); ++i) {
                double v = 0;
                for (int k = 1; k <= 4; ++k) {
                    v += 2000 * std::cos(2 * 3.14159265358979 * k * static_cast<double>(i) / period + k);
                }
                pure[i] = static_cast<int16_t>(std::lround(v));
            }
            Samples y(40);
            int16_t voice = -1;
            const auto whole = static_cast<int16_t>(std::lround(period));
            ASSERT_EQ(vekStsNoErr, veksLongTermPostFilter_G729_16s(16384, whole, pure.data() + 154, y.data(), &voice));
            EXPECT_NEAR(period, voice, 1.26);
            // What repeats passes as it is.
            for (size_t n = 0; n < 40; ++n) {
                ASSERT_NEAR(pure[154 + n], y[n], 80) << period;
            }
            // A disturbance of the subframe is divided by 1.5.
            Samples disturbed = pure;
            disturbed[174] = static_cast<int16_t>(disturbed[174] + 900);
            ASSERT_EQ(vekStsNoErr,
                      veksLongTermPostFilter_G729_16s(16384, whole, disturbed.data() + 154, y.data(), &voice));
            EXPECT_NEAR(pure[174] + 600, y[20], 100) << period;

            Samples residual = disturbed;
            Samples same(40);
            int16_t voiceB = -1;
            const Samples speech(disturbed.begin() + 144, disturbed.end());
            ASSERT_EQ(vekStsNoErr, veksLongTermPostFilter_G729B_16s(whole, speech.data() + 10, flat.data(),
                                                                    residual.data(), same.data(), &voiceB, 1));
            EXPECT_EQ(y, same);
            EXPECT_EQ(voice, voiceB);
            for (const int16_t type : {0, 2}) {
                ASSERT_EQ(vekStsNoErr, veksLongTermPostFilter_G729B_16s(whole, speech.data() + 10, flat.data(),
                                                                        residual.data(), same.data(), &voiceB, type));
                EXPECT_EQ(Samples(disturbed.begin() + 154, disturbed.end()), same);
                EXPECT_EQ(0, voiceB);
            }
        }
        Samples hiss = noise(random, 194, -5000, 5000);
        Samples y(40);
        int16_t voice = -1;
        ASSERT_EQ(vekStsNoErr, veksLongTermPostFilter_G729_16s(16384, 60, hiss.data() + 154, y.data(), &voice));
        EXPECT_EQ(0, voice);
        EXPECT_EQ(Samples(hiss.begin() + 154, hiss.end()), y);
        for (const int16_t level : {0, 32767, -32768}) {
            const Samples flatSignal(194, level);
            ASSERT_EQ(vekStsNoErr,
                      veksLongTermPostFilter_G729_16s(16384, 60, flatSignal.data() + 154, y.data(), &voice));
            EXPECT_NEAR(level, y[0], 2);
            EXPECT_NEAR(level, y[39], 2);
        }
    });
}

TEST(VekG729LongTerm, RefusesDelaysGainsAndNullPointers) {
    Samples v(194);
    int16_t voice = 0;
    for (const int16_t delay : {19, 144}) {
        EXPECT_EQ(vekStsRangeErr, veksLongTermPostFilter_G729A_16s(delay, v.data() + 10, v.data(), v.data(), v.data()));
        EXPECT_EQ(vekStsRangeErr,
                  veksLongTermPostFilter_G729B_16s(delay, v.data() + 10, v.data(), v.data(), v.data(), &voice, 1));
        EXPECT_EQ(vekStsRangeErr, veksLongTermPostFilter_G729_16s(1, delay, v.data() + 152, v.data(), &voice));
    }
    EXPECT_EQ(vekStsRangeErr, veksLongTermPostFilter_G729_16s(-1, 60, v.data() + 152, v.data(), &voice));
    for (const int16_t type : {-1, 3}) {
        EXPECT_EQ(vekStsRangeErr,
                  veksLongTermPostFilter_G729B_16s(60, v.data() + 10, v.data(), v.data(), v.data(), &voice, type));
    }
    expectNullsRefused(veksLongTermPostFilter_G729A_16s, 60, v.data() + 10, v.data(), v.data(), v.data());
    expectNullsRefused(veksLongTermPostFilter_G729_16s, 1, 60, v.data() + 152, v.data(), &voice);
    expectNullsRefused(veksLongTermPostFilter_G729B_16s, 60, v.data() + 10, v.data(), v.data(), v.data(), &voice, 1);
}

TEST(VekG729SearchD, IsThatOfTheMainBodyWithFewerThirdsInTheSecondSubframe) {
    atEveryLevel([] {
        std::mt19937 random(14);
        int coarse = 0;
        for (int round = 0; round < 300; ++round) {
            const auto subFrame = static_cast<int16_t>(round % 2);
            const Samples excitation = noise(random, 194, -1500, 1500);
            const Samples target = noise(random, 40, -2000, 2000);
            Samples h = noise(random, 40, -900, 900);
            h[0] = 4096;
            const int16_t open = noise(random, 1, 19, 144)[0];
            Samples main = excitation;
            Samples mine = excitation;
            Samples vector(40);
            int16_t want[2], got[2];
            ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookSearch_G729_16s(open, target.data(), h.data(), main.data(), want,
                                                                       vector.data(), subFrame));
            ASSERT_EQ(vekStsNoErr,
                      veksAdaptiveCodebookSearch_G729D_16s(open, target.data(), h.data(), mine.data(), subFrame, got));
            if (subFrame == 0) {
                ASSERT_EQ(want[0], got[0]);
                ASSERT_EQ(want[1], got[1]);
                ASSERT_EQ(main, mine);
                continue;
            }
            const int centre = std::min(std::max(open - 5, 20), 134) + 5;
            const int thirds = 3 * (got[0] - centre) + got[1];
            ASSERT_TRUE(got[1] == 0 || (thirds >= -5 && thirds <= 2)) << thirds;
            ASSERT_LE(std::abs(3 * (want[0] - got[0]) + want[1] - got[1]), 2);
            coarse += got[1] == 0 && want[1] != 0 ? 1 : 0;
        }
        EXPECT_GE(coarse, 20);
    });
    Samples v(194);
    int16_t delay[2];
    EXPECT_EQ(vekStsRangeErr, veksAdaptiveCodebookSearch_G729D_16s(18, v.data(), v.data(), v.data(), 0, delay));
    EXPECT_EQ(vekStsRangeErr, veksAdaptiveCodebookSearch_G729D_16s(60, v.data(), v.data(), v.data(), 2, delay));
    expectNullsRefused(veksAdaptiveCodebookSearch_G729D_16s, 60, v.data(), v.data(), v.data(), 0, delay);
}

} // namespace
