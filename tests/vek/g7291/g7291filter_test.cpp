// Filters of G.729.1: their responses, the pair of split and reunion, states.
#include "lp_reference.h"
#include "veksc.h"

#include <cmath>
#include <complex>

namespace {

using namespace lpref;
using Reals = std::vector<double>;

constexpr double pi = 3.14159265358979323846;

// The prototype by its rule.
Reals prototype() {
    Reals h(64);
    double total = 0;
    for (int n = 0; n < 64; ++n) {
        const double m = n - 31.5;
        const double window = bessel(5 * std::sqrt(1 - m * m / (31.5 * 31.5))) / bessel(5);
        h[static_cast<size_t>(n)] = std::sin(1.6102357 * m) / (pi * m) * window;
        total += h[static_cast<size_t>(n)];
    }
    for (double& v : h) {
        v /= total;
    }
    return h;
}

struct Qmf {
    std::vector<uint8_t> state;

    Qmf() {
        int size = 0;
        EXPECT_EQ(vekStsNoErr, veksQMFGetStateSize_G7291_16s(&size));
        state.assign(static_cast<size_t>(size), 0xAA);
        EXPECT_EQ(vekStsNoErr, veksQMFInit_G7291_16s(state.data()));
    }
    std::pair<Samples, Samples> split(const Samples& x) {
        Samples low(x.size() / 2);
        Samples high(x.size() / 2);
        EXPECT_EQ(vekStsNoErr,
                  veksQMFEncode_G7291_16s(x.data(), static_cast<int>(x.size()), low.data(), high.data(), state.data()));
        return {low, high};
    }
    Samples join(const Samples& low, const Samples& high, int gain = 16384) {
        Samples y(2 * low.size());
        EXPECT_EQ(vekStsNoErr, veksQMFDecode_G7291_16s(low.data(), high.data(), static_cast<int16_t>(gain),
                                                       static_cast<int>(low.size()), y.data(), state.data()));
        return y;
    }
};

TEST(VekG7291Qmf, BandsAreTheSumsOverThePrototype) {
    atEveryLevel([] {
        std::mt19937 random(51);
        const Reals h = prototype();
        for (const int size : {2, 160, 320, 700}) {
            const Samples x = noise(random, size, -32768, 32767);
            Qmf qmf;
            const auto [low, high] = qmf.split(x);
            for (int n = 0; n < size / 2; ++n) {
                double wantLow = 0;
                double wantHigh = 0;
                for (int k = 0; k < 64 && k <= 2 * n + 1; ++k) {
                    const double v = h[static_cast<size_t>(k)] * x[static_cast<size_t>(2 * n + 1 - k)];
                    wantLow += v;
                    wantHigh += k % 2 == 0 ? v : -v;
                }
                // Taps of 15 bits: an error of half a unit each.
                ASSERT_NEAR(std::clamp(wantLow, -32768.0, 32767.0), low[static_cast<size_t>(n)], 8);
                ASSERT_NEAR(std::clamp(wantHigh, -32768.0, 32767.0), high[static_cast<size_t>(n)], 8);
            }
        }
    });
}

TEST(VekG7291Qmf, ReunionIsTheSumOverThePrototype) {
    atEveryLevel([] {
        std::mt19937 random(52);
        const Reals h = prototype();
        for (const int level : {2000, 32767}) {
            for (const int gain : {0, 5000, 16384}) {
                const Samples low = noise(random, 200, -level, level);
                const Samples high = noise(random, 200, -level, level);
                Qmf qmf;
                const Samples y = qmf.join(low, high, gain);
                for (int m = 0; m < 400; ++m) {
                    double want = 0;
                    for (int k = m % 2; k < 64 && k <= m; k += 2) {
                        const auto i = static_cast<size_t>((m - k) / 2);
                        const double scaled = high[i] * gain / 16384.0;
                        want += 2 * h[static_cast<size_t>(k)] * (low[i] + (k % 2 == 0 ? -scaled : scaled));
                    }
                    ASSERT_NEAR(std::clamp(want, -32768.0, 32767.0), y[static_cast<size_t>(m)], 3 + level * 4e-4);
                }
            }
        }
    });
}

TEST(VekG7291Qmf, PairGivesTheSignalBackWith62SamplesOfDelay) {
    atEveryLevel([] {
        std::mt19937 random(53);
        const Samples x = noise(random, 1600, -8000, 8000);
        Qmf encoder;
        Qmf decoder;
        const auto [low, high] = encoder.split(x);
        const Samples y = decoder.join(low, high);
        double error = 0;
        double energy = 0;
        for (size_t n = 62; n < x.size(); ++n) {
            const double e = y[n] - x[n - 62];
            error += e * e;
            energy += double{1} * x[n - 62] * x[n - 62];
        }
        EXPECT_LT(error, energy * 1e-4); // 40 dB
    });
}

TEST(VekG7291Qmf, ToneGoesToItsBandAndItsAliasIsGoneAfterTheReunion) {
    for (const int hertz : {300, 1900, 3300, 4700, 6100, 7700}) {
        Samples x(1600);
        for (size_t n = 0; n < x.size(); ++n) {
            x[n] = static_cast<int16_t>(std::lround(16000 * std::sin(2 * pi * hertz / 16000 * static_cast<double>(n))));
        }
        Qmf encoder;
        Qmf decoder;
        const auto [low, high] = encoder.split(x);
        const auto power = [](const Samples& v) {
            double sum = 0;
            for (size_t n = 64; n < v.size(); ++n) {
                sum += double{1} * v[n] * v[n];
            }
            return sum / static_cast<double>(v.size() - 64);
        };
        const double own = power(hertz < 4000 ? low : high);
        const double other = power(hertz < 4000 ? high : low);
        EXPECT_NEAR(16000.0 * 16000 / 2, own, 16000.0 * 16000 / 2 * 0.02) << hertz;
        EXPECT_LT(other, own * 4e-5) << hertz;
        // The mirror of the tone at 8000 Hz less it.
        const Samples y = decoder.join(low, high);
        std::complex<double> alias = 0;
        std::complex<double> tone = 0;
        for (size_t n = 160; n < 1440; ++n) {
            alias += double{1} * y[n] * std::polar(1.0, 2 * pi * (8000 - hertz) / 16000 * static_cast<double>(n));
            tone += double{1} * y[n] * std::polar(1.0, 2 * pi * hertz / 16000 * static_cast<double>(n));
        }
        EXPECT_LT(std::abs(alias), std::abs(tone) * 1e-3) << hertz;
    }
}

TEST(VekG7291Qmf, PiecesGiveTheSameAsTheWhole) {
    std::mt19937 random(54);
    const Samples x = noise(random, 960, -32768, 32767);
    Qmf whole;
    Qmf pieces;
    const auto [low, high] = whole.split(x);
    Samples lows;
    Samples highs;
    for (const auto& [from, to] : {std::pair{0, 2}, {2, 300}, {300, 316}, {316, 960}}) {
        const auto [l, h] = pieces.split(Samples(x.begin() + from, x.begin() + to));
        lows.insert(lows.end(), l.begin(), l.end());
        highs.insert(highs.end(), h.begin(), h.end());
    }
    EXPECT_EQ(low, lows);
    EXPECT_EQ(high, highs);
    const Samples a = noise(random, 400, -9000, 9000);
    const Samples b = noise(random, 400, -9000, 9000);
    Qmf first;
    Qmf second;
    const Samples want = first.join(a, b, 12000);
    Samples got;
    for (const auto& [from, to] : {std::pair{0, 1}, {1, 90}, {90, 400}}) {
        const Samples part =
            second.join(Samples(a.begin() + from, a.begin() + to), Samples(b.begin() + from, b.begin() + to), 12000);
        got.insert(got.end(), part.begin(), part.end());
    }
    EXPECT_EQ(want, got);
}

TEST(VekG7291Qmf, ExtremesSaturate) {
    atEveryLevel([] {
        // The signs of the taps: the largest sum that there is.
        const Reals h = prototype();
        Samples x(64);
        for (size_t k = 0; k < 64; ++k) {
            x[63 - k] = h[k] < 0 ? -32768 : 32767;
        }
        Qmf encoder;
        EXPECT_EQ(32767, encoder.split(x).first[31]);
        for (int16_t& v : x) {
            v = v < 0 ? 32767 : -32768;
        }
        Qmf other;
        EXPECT_EQ(-32768, other.split(x).first[31]);
        Qmf decoder;
        const Samples y = decoder.join(Samples(200, 32767), Samples(200, -32768));
        EXPECT_EQ(32767, y[300]);
        EXPECT_NEAR(0, y[301], 2);
    });
}

TEST(VekG7291Qmf, RefusesSizesGainsAndStatesThatWereNotSetUp) {
    Qmf qmf;
    Samples a(160, 3);
    Samples b(320, 4);
    Samples c(160, 5);
    EXPECT_EQ(vekStsSizeErr, veksQMFEncode_G7291_16s(b.data(), 0, a.data(), c.data(), qmf.state.data()));
    EXPECT_EQ(vekStsSizeErr, veksQMFEncode_G7291_16s(b.data(), 3, a.data(), c.data(), qmf.state.data()));
    EXPECT_EQ(vekStsSizeErr, veksQMFDecode_G7291_16s(a.data(), c.data(), 100, 0, b.data(), qmf.state.data()));
    EXPECT_EQ(vekStsRangeErr, veksQMFDecode_G7291_16s(a.data(), c.data(), -1, 9, b.data(), qmf.state.data()));
    EXPECT_EQ(vekStsRangeErr, veksQMFDecode_G7291_16s(a.data(), c.data(), 16385, 9, b.data(), qmf.state.data()));
    std::vector<uint8_t> fresh(qmf.state.size());
    EXPECT_EQ(vekStsStateErr, veksQMFEncode_G7291_16s(b.data(), 2, a.data(), c.data(), fresh.data()));
    EXPECT_EQ(vekStsStateErr, veksQMFDecode_G7291_16s(a.data(), c.data(), 1, 2, b.data(), fresh.data()));
    EXPECT_EQ(Samples(160, 3), a);
    EXPECT_EQ(Samples(320, 4), b);
}

using Init = VekStatus (*)(void*);

std::vector<uint8_t> fresh(VekStatus (*size)(int*), Init init) {
    int bytes = 0;
    EXPECT_EQ(vekStsNoErr, size(&bytes));
    std::vector<uint8_t> state(static_cast<size_t>(bytes), 0x55);
    EXPECT_EQ(vekStsNoErr, init(state.data()));
    return state;
}
std::vector<uint8_t> freshHigh() {
    return fresh(veksFilterHighpassGetStateSize_G7291_16s, veksFilterHighpassInit_G7291_16s);
}
std::vector<uint8_t> freshLow() {
    return fresh(veksFilterLowpassGetStateSize_G7291_16s, veksFilterLowpassInit_G7291_16s);
}

// Gain at a frequency in dB, from the response to an impulse.
template <class Filter>
double gainAt(double hertz, Filter filter) {
    Samples x(8000);
    x[0] = 32767;
    filter(x);
    std::complex<double> sum = 0;
    for (size_t n = 0; n < x.size(); ++n) {
        sum += double{1} * x[n] * std::polar(1.0, -2 * pi * hertz / 8000 * static_cast<double>(n));
    }
    return 20 * std::log10(std::abs(sum) / 32767 + 1e-9);
}

TEST(VekG7291Elliptic, HighPassHasItsEdgeAt50Hertz) {
    const auto filter = [](Samples& x) {
        std::vector<uint8_t> state = freshHigh();
        ASSERT_EQ(vekStsNoErr,
                  veksFilterHighpass_G7291_16s_ISfs(x.data(), static_cast<int>(x.size()), state.data(), 0));
    };
    for (const double hertz : {60.0, 100.0, 300.0, 1000.0, 2500.0, 4000.0}) {
        EXPECT_NEAR(-0.125, gainAt(hertz, filter), 0.16) << hertz;
    }
    EXPECT_NEAR(-0.25, gainAt(50, filter), 0.05);
    EXPECT_NEAR(-9.68, gainAt(20, filter), 0.3);
    EXPECT_LT(gainAt(4, filter), -32);
    // A constant is down by 40 dB in the end.
    Samples x(8000, 20000);
    filter(x);
    EXPECT_NEAR(200, x.back(), 5);
}

TEST(VekG7291Elliptic, LowPassHasItsEdgeAt3000Hertz) {
    for (const int sections : {1, 2}) {
        const auto filter = [sections](Samples& x) {
            std::vector<uint8_t> state = freshLow();
            ASSERT_EQ(vekStsNoErr,
                      veksFilterLowpass_G7291_16s_I(x.data(), static_cast<int>(x.size()), state.data(), sections));
        };
        const double ripple = sections == 1 ? 0.5 : 0.25;
        for (const double hertz : {0.0, 500.0, 1500.0, 2000.0, 2500.0, 2900.0}) {
            EXPECT_NEAR(-ripple / 2, gainAt(hertz, filter), ripple / 2 + 0.02) << hertz;
        }
        EXPECT_NEAR(-ripple, gainAt(3000, filter), 0.03);
        EXPECT_NEAR(sections == 1 ? -20 : -50, gainAt(4000, filter), 1);
        for (const double hertz : {3650.0, 3800.0, 3900.0}) {
            EXPECT_LT(gainAt(hertz, filter), sections == 1 ? -19.9 : -49) << hertz;
        }
        if (sections == 2) {
            EXPECT_NEAR(-17.8, gainAt(3300, filter), 0.5);
        }
    }
}

// The elliptic rational function of order 2, 1 at the edge of the pass band; t by its least value in the stop band.
double rational(double least, double x) {
    const double t = (least - 1) / (least + 1);
    return ((t + 1) * x * x - 1) / ((t - 1) * x * x + 1);
}

// Magnitude of an elliptic filter of so many sections, x: the frequency over that of the edge.
double elliptic(int sections, double ripple, double stop, double x) {
    const double epsilon = std::pow(10, ripple / 10) - 1;
    const double least = std::sqrt((std::pow(10, stop / 10) - 1) / epsilon);
    double r = 0;
    if (sections == 1) {
        r = rational(least, x);
    } else {
        // Order 4 is the function of order 2 of itself.
        const double t = (least - 1) / (least + 1);
        r = rational(least, rational(1 / std::sqrt(1 - t * t), x));
    }
    return 1 / std::sqrt(1 + epsilon * r * r);
}

TEST(VekG7291Elliptic, ResponsesAreThoseOfTheEllipticFunctions) {
    const auto warped = [](double hertz) { return std::tan(pi * hertz / 8000); };
    const auto high = [](Samples& x) {
        std::vector<uint8_t> state = freshHigh();
        ASSERT_EQ(vekStsNoErr, veksFilterHighpass_G7291_16s_ISfs(x.data(), 8000, state.data(), 0));
    };
    for (const double hertz : {10.0, 25.0, 40.0, 50.0, 65.0, 90.0, 150.0, 400.0, 1700.0, 3900.0}) {
        const double want = elliptic(1, 0.25, 40, warped(50) / warped(hertz));
        EXPECT_NEAR(want, std::pow(10, gainAt(hertz, high) / 20), 3e-3) << hertz;
    }
    for (const int sections : {1, 2}) {
        const auto low = [sections](Samples& x) {
            std::vector<uint8_t> state = freshLow();
            ASSERT_EQ(vekStsNoErr, veksFilterLowpass_G7291_16s_I(x.data(), 8000, state.data(), sections));
        };
        for (double hertz = 0; hertz < 4000; hertz += 110) {
            const double want = sections == 1 ? elliptic(1, 0.5, 20, warped(hertz) / warped(3000))
                                              : elliptic(2, 0.25, 50, warped(hertz) / warped(3000));
            EXPECT_NEAR(want, std::pow(10, gainAt(hertz, low) / 20), 5e-4) << sections << " " << hertz;
        }
    }
}

TEST(VekG7291Elliptic, FollowsTheRecursionInDoubleSampleBySample) {
    std::mt19937 random(55);
    const double unit = 67108864;
    const double high[] = {64131070 / unit, -128261659 / unit, -131983191 / unit, 64922373 / unit};
    const Samples x = noise(random, 2000, -20000, 20000);
    Samples y = x;
    std::vector<uint8_t> state = freshHigh();
    ASSERT_EQ(vekStsNoErr, veksFilterHighpass_G7291_16s_ISfs(y.data(), 2000, state.data(), 0));
    double y1 = 0;
    double y2 = 0;
    for (size_t n = 0; n < x.size(); ++n) {
        const double x1 = n > 0 ? x[n - 1] : 0;
        const double x2 = n > 1 ? x[n - 2] : 0;
        const double want = high[0] * (x[n] + x2) + high[1] * x1 - high[2] * y1 - high[3] * y2;
        ASSERT_NEAR(std::clamp(want, -32768.0, 32767.0), y[n], 1.1);
        y2 = y1;
        y1 = want;
    }
}

TEST(VekG7291Elliptic, ScaleFactorDividesAndSaturates) {
    std::mt19937 random(56);
    const Samples x = noise(random, 500, -20000, 20000);
    const auto filtered = [&x](int scale) {
        Samples y = x;
        std::vector<uint8_t> state = freshHigh();
        EXPECT_EQ(vekStsNoErr, veksFilterHighpass_G7291_16s_ISfs(y.data(), 500, state.data(), scale));
        return y;
    };
    const Samples plain = filtered(0);
    for (const int scale : {-8, -1, 1, 8}) {
        const Samples y = filtered(scale);
        for (size_t n = 0; n < y.size(); ++n) {
            const double want = std::ldexp(plain[n], -scale);
            ASSERT_NEAR(std::clamp(want, -32768.0, 32767.0), y[n], scale < 0 ? std::ldexp(0.51, -scale) : 1);
        }
    }
}

TEST(VekG7291Elliptic, PiecesGiveTheSameAsTheWhole) {
    std::mt19937 random(57);
    const Samples x = noise(random, 500, -32768, 32767);
    for (const int kind : {0, 1, 2}) {
        std::vector<uint8_t> states[] = {kind == 0 ? freshHigh() : freshLow(), kind == 0 ? freshHigh() : freshLow()};
        const auto run = [kind](int16_t* p, int n, std::vector<uint8_t>& state) {
            return kind == 0 ? veksFilterHighpass_G7291_16s_ISfs(p, n, state.data(), 1)
                             : veksFilterLowpass_G7291_16s_I(p, n, state.data(), kind);
        };
        Samples whole = x;
        Samples pieces = x;
        ASSERT_EQ(vekStsNoErr, run(whole.data(), 500, states[0]));
        for (const auto& [from, n] : {std::pair{0, 1}, {1, 160}, {161, 339}}) {
            ASSERT_EQ(vekStsNoErr, run(pieces.data() + from, n, states[1]));
        }
        EXPECT_EQ(whole, pieces);
    }
}

TEST(VekG7291Elliptic, RefusesSizesScalesSectionsAndForeignStates) {
    Samples x(10, 7);
    std::vector<uint8_t> high = freshHigh();
    std::vector<uint8_t> low = freshLow();
    EXPECT_EQ(vekStsSizeErr, veksFilterHighpass_G7291_16s_ISfs(x.data(), 0, high.data(), 0));
    EXPECT_EQ(vekStsScaleRangeErr, veksFilterHighpass_G7291_16s_ISfs(x.data(), 10, high.data(), 9));
    EXPECT_EQ(vekStsScaleRangeErr, veksFilterHighpass_G7291_16s_ISfs(x.data(), 10, high.data(), -9));
    EXPECT_EQ(vekStsStateErr, veksFilterHighpass_G7291_16s_ISfs(x.data(), 10, low.data(), 0));
    EXPECT_EQ(vekStsSizeErr, veksFilterLowpass_G7291_16s_I(x.data(), 65537, low.data(), 2));
    EXPECT_EQ(vekStsFilterOrderErr, veksFilterLowpass_G7291_16s_I(x.data(), 10, low.data(), 0));
    EXPECT_EQ(vekStsFilterOrderErr, veksFilterLowpass_G7291_16s_I(x.data(), 10, low.data(), 3));
    EXPECT_EQ(vekStsStateErr, veksFilterLowpass_G7291_16s_I(x.data(), 10, high.data(), 2));
    EXPECT_EQ(Samples(10, 7), x);
}

} // namespace
