// Real-time audio: filters, linear prediction and line spectral pairs, post-filter. Each against its
// definition in double precision.
#include "rta_reference.h"
#include "veksc.h"

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <numbers>
#include <vector>

namespace {

using namespace rtaref;

constexpr VekPCMFrequency kFrequencies[] = {VEK_PCM_FREQ_8000, VEK_PCM_FREQ_11025, VEK_PCM_FREQ_16000,
                                            VEK_PCM_FREQ_22050, VEK_PCM_FREQ_32000};

// A recursion of second order in its direct form.
struct Section {
    double b[3];
    double a[3];
    double x[2] = {};
    double y[2] = {};
    double step(double in) {
        const double out = (b[0] * in + b[1] * x[0] + b[2] * x[1] - a[1] * y[0] - a[2] * y[1]) / a[0];
        x[1] = x[0];
        x[0] = in;
        y[1] = y[0];
        y[0] = out;
        return out;
    }
};

// s^2, s or 1 over s^2 + q s + 1 (or over s + 1), for s = (1 - z^-1) / (1 + z^-1) / edge.
Section highOf(double edge, double q) {
    return {{1, -2, 1}, {1 + q * edge + edge * edge, -2 + 2 * edge * edge, 1 - q * edge + edge * edge}};
}
Section lowOf(double edge, double q) {
    return {{edge * edge, 2 * edge * edge, edge * edge},
            {1 + q * edge + edge * edge, -2 + 2 * edge * edge, 1 - q * edge + edge * edge}};
}
Section firstHighOf(double edge) {
    return {{1, -1, 0}, {1 + edge, edge - 1, 0}};
}

std::vector<Section> highPass(int order, int freq) {
    const double edge = std::tan(kPi * 80 / freq);
    std::vector<Section> sections;
    for (int k = 0; k < order / 2; ++k) {
        sections.push_back(highOf(edge, 2 * std::sin(kPi * (2 * k + 1) / (2 * order))));
    }
    if (order % 2 != 0) {
        sections.push_back(firstHighOf(edge));
    }
    return sections;
}

std::vector<Section> bandPass() {
    return {firstHighOf(std::tan(kPi / 40)), lowOf(std::tan(kPi * 17 / 40), std::sqrt(2.0))};
}

Doubles filtered(std::vector<Section> sections, const Floats& x) {
    Doubles y;
    for (double v : x) {
        for (Section& s : sections) {
            v = s.step(v);
        }
        y.push_back(v);
    }
    return y;
}

void expectNear(const Floats& y, const Doubles& want, double tolerance) {
    ASSERT_EQ(y.size(), want.size());
    for (size_t i = 0; i < y.size(); ++i) {
        ASSERT_NEAR(y[i], want[i], tolerance) << i;
    }
}

TEST(VekRtaHighPass, IsTheButterworthFilterOfItsOrderAndFrequency) {
    atEveryLevel([] {
        std::mt19937 random(1);
        for (const VekPCMFrequency freq : kFrequencies) {
            for (int order = 4; order <= 5; ++order) {
                const Floats x = floatNoise(random, 2000, -100, 110);
                Floats y(2000);
                Floats memory(12);
                int at = 0;
                // Pieces of all kinds give what the whole would.
                for (const int n : {1, 7, 8, 9, 80, 320, 475, 1100}) {
                    ASSERT_EQ(vekStsNoErr,
                              veksHighPassFilter_RTA_32f(x.data() + at, y.data() + at, n, order, freq, memory.data()));
                    at += n;
                }
                ASSERT_EQ(at, 2000);
                expectNear(y, filtered(highPass(order, freq), x), 0.002);
            }
        }
    });
}

TEST(VekRtaHighPass, LosesThreeDecibelsAt80HzAndKeepsSpeech) {
    for (const VekPCMFrequency freq : kFrequencies) {
        const int rate = freq;
        for (const auto& [f, low, high] : {std::tuple{0.0, 0.0, 1e-4},
                                           {20.0, 0.0, 0.005},
                                           {80.0, 0.70, 0.714},
                                           {300.0, 0.999, 1.001},
                                           {3000.0, 0.999, 1.001}}) {
            Floats x(static_cast<size_t>(freq));
            for (size_t i = 0; i < x.size(); ++i) {
                x[i] = static_cast<float>(std::cos(2 * kPi * f * static_cast<double>(i) / rate));
            }
            Floats memory(12);
            ASSERT_EQ(vekStsNoErr, veksHighPassFilter_RTA_32f(x.data(), x.data(), freq, 4, freq, memory.data()));
            const size_t half = x.size() / 2;
            double power = 0;
            for (size_t i = half; i < x.size(); ++i) {
                power += 2.0 * x[i] * x[i] / static_cast<double>(x.size() - half);
            }
            const double peak = std::sqrt(power);
            EXPECT_GE(peak, low - 1e-4) << f << ' ' << freq;
            EXPECT_LE(peak, high) << f << ' ' << freq;
        }
    }
}

TEST(VekRtaHighPass, LevelsGiveTheSameBits) {
    std::mt19937 random(2);
    const Floats x = floatNoise(random, 333, -32768, 32767);
    std::vector<Floats> results;
    atEveryLevel([&] {
        Floats y(333);
        Floats memory(12);
        ASSERT_EQ(vekStsNoErr,
                  veksHighPassFilter_RTA_32f(x.data(), y.data(), 333, 5, VEK_PCM_FREQ_32000, memory.data()));
        results.push_back(y);
    });
    for (const Floats& y : results) {
        EXPECT_EQ(y, results[0]);
    }
}

TEST(VekRtaHighPass, RefusesOtherOrdersAndFrequencies) {
    Floats x(8, 1);
    Floats y(8, 7);
    Floats memory(12, 3);
    float* m = memory.data();
    EXPECT_EQ(vekStsFilterOrderErr, veksHighPassFilter_RTA_32f(x.data(), y.data(), 8, 3, VEK_PCM_FREQ_8000, m));
    EXPECT_EQ(vekStsFilterOrderErr, veksHighPassFilter_RTA_32f(x.data(), y.data(), 8, 6, VEK_PCM_FREQ_8000, m));
    EXPECT_EQ(vekStsRangeErr,
              veksHighPassFilter_RTA_32f(x.data(), y.data(), 8, 4, static_cast<VekPCMFrequency>(8001), m));
    EXPECT_EQ(vekStsSizeErr, veksHighPassFilter_RTA_32f(x.data(), y.data(), 0, 4, VEK_PCM_FREQ_8000, m));
    EXPECT_EQ(y, Floats(8, 7));
    EXPECT_EQ(memory, Floats(12, 3));
}

TEST(VekRtaBandPass, IsTheHighPassBeforeTheLowPass) {
    atEveryLevel([] {
        std::mt19937 random(3);
        for (const int n : {1, 5, 8, 80, 160, 240, 320, 331}) {
            Floats x = floatNoise(random, static_cast<size_t>(3 * n), -1000, 1000);
            const Doubles want = filtered(bandPass(), x);
            Floats memory(3);
            for (int k = 0; k < 3; ++k) {
                ASSERT_EQ(vekStsNoErr, veksBandPassFilter_RTA_32f_I(x.data() + k * n, n, memory.data()));
            }
            expectNear(x, want, 0.002);
        }
    });
}

TEST(VekRtaBandPass, FallsSilentWithItsInput) {
    atEveryLevel([] {
        std::mt19937 random(4);
        Floats x = floatNoise(random, 80, -1000, 1000);
        Floats memory(3);
        ASSERT_EQ(vekStsNoErr, veksBandPassFilter_RTA_32f_I(x.data(), 80, memory.data()));
        // 480 samples bring it to 1e-30, which is still an ordinary number.
        for (int k = 0; k < 6; ++k) {
            std::fill(x.begin(), x.end(), 0.0F);
            ASSERT_EQ(vekStsNoErr, veksBandPassFilter_RTA_32f_I(x.data(), 80, memory.data()));
        }
        EXPECT_EQ(x, Floats(80)) << "no rest";
        EXPECT_EQ(memory, Floats(3));
    });
}

TEST(VekRtaBandPass, RefusesLengthsOutOfRange) {
    Floats x(8, 1);
    Floats memory(3);
    EXPECT_EQ(vekStsSizeErr, veksBandPassFilter_RTA_32f_I(x.data(), 0, memory.data()));
    EXPECT_EQ(vekStsSizeErr, veksBandPassFilter_RTA_32f_I(x.data(), 65537, memory.data()));
    EXPECT_EQ(x, Floats(8, 1));
}

// Rising frequencies at least `least` apart.
Doubles frequencies(std::mt19937& random, int order, double least) {
    std::uniform_real_distribution<double> step(0.0, 0.4);
    Doubles at;
    double sum = 0;
    for (int i = 0; i <= order; ++i) {
        sum += step(random) * step(random);
        at.push_back(sum);
    }
    const double scale = (kPi - (order + 1) * least) / sum;
    for (int i = 0; i <= order; ++i) {
        at[static_cast<size_t>(i)] = at[static_cast<size_t>(i)] * scale + (i + 1) * least;
    }
    at.pop_back();
    return at;
}

// Both filters multiplied out, pair by pair.
Doubles coefficientsOf(const Doubles& at) {
    Doubles f[2] = {{1, 1}, {1, -1}};
    for (size_t i = 0; i < at.size(); ++i) {
        Doubles& now = f[i % 2];
        Doubles next(now.size() + 2);
        for (size_t j = 0; j < now.size(); ++j) {
            next[j] += now[j];
            next[j + 1] -= 2 * std::cos(at[i]) * now[j];
            next[j + 2] += now[j];
        }
        now = next;
    }
    Doubles a;
    for (size_t j = 0; j <= at.size(); ++j) {
        a.push_back((f[0][j] + f[1][j]) / 2);
    }
    return a;
}

TEST(VekRtaPairs, CoefficientsAreTheProductsOfThePairs) {
    std::mt19937 random(5);
    for (int order = 2; order <= 16; order += 2) {
        for (int round = 0; round < 50; ++round) {
            const Doubles at = frequencies(random, order, 0.01);
            const Doubles want = coefficientsOf(at);
            const Floats lsp(at.begin(), at.end());
            Floats a(static_cast<size_t>(order) + 2, 99);
            ASSERT_EQ(vekStsNoErr, veksLSPToLPC_RTA_32f(lsp.data(), a.data(), order));
            double largest = 1;
            for (const double v : want) {
                largest = std::max(largest, std::abs(v));
            }
            for (size_t i = 0; i < want.size(); ++i) {
                ASSERT_NEAR(a[i], want[i], 4e-6 * largest) << order;
            }
            ASSERT_EQ(a.back(), 99) << "nothing after the last coefficient";
        }
    }
}

TEST(VekRtaPairs, AnglesBeyondTheHalfCircleHaveTheirCosinesToo) {
    for (const int order : {2, 10, 16}) {
        Floats inside;
        Floats beyond;
        for (int i = 0; i < order; ++i) {
            const double at = 3.0 * (i + 1) / (order + 1);
            inside.push_back(static_cast<float>(at));
            beyond.push_back(static_cast<float>(i % 2 == 0 ? -at : 4 * std::numbers::pi + at));
        }
        Floats want(static_cast<size_t>(order) + 1);
        Floats got(want.size());
        ASSERT_EQ(vekStsNoErr, veksLSPToLPC_RTA_32f(inside.data(), want.data(), order));
        ASSERT_EQ(vekStsNoErr, veksLSPToLPC_RTA_32f(beyond.data(), got.data(), order));
        for (size_t i = 0; i < want.size(); ++i) {
            ASSERT_NEAR(want[i], got[i], 1e-5 * (1 << (order / 2))) << order;
        }
    }
}

TEST(VekRtaPairs, FrequenciesComeBackFromTheCoefficients) {
    atEveryLevel([] {
        std::mt19937 random(6);
        for (int order = 2; order <= 16; order += 2) {
            for (int round = 0; round < 50; ++round) {
                const Doubles at = frequencies(random, order, 0.03);
                const Floats lsp(at.begin(), at.end());
                Floats a(static_cast<size_t>(order) + 1);
                Floats back(static_cast<size_t>(order) + 1, 99);
                ASSERT_EQ(vekStsNoErr, veksLSPToLPC_RTA_32f(lsp.data(), a.data(), order));
                ASSERT_EQ(vekStsNoErr, veksLPCToLSP_RTA_32f(a.data(), back.data(), order));
                // What the single precision of the coefficients leaves of a zero of 17 of them.
                const double tolerance = order <= 10 ? 1e-4 : 1e-3;
                for (size_t i = 0; i < lsp.size(); ++i) {
                    ASSERT_NEAR(back[i], at[i], tolerance) << order;
                }
                ASSERT_EQ(back.back(), 99);
            }
        }
    });
}

TEST(VekRtaPairs, CoefficientsComeBackFromTheFrequencies) {
    std::mt19937 random(7);
    for (int order = 4; order <= 16; order += 2) {
        for (int round = 0; round < 50; ++round) {
            const size_t n = static_cast<size_t>(order);
            const Floats x = floatNoise(random, 240, -150, 150);
            Floats r(n + 1);
            for (size_t k = 0; k <= n; ++k) {
                for (size_t i = k; i < x.size(); ++i) {
                    r[k] += x[i] * x[i - k];
                }
            }
            Floats a(n + 1);
            Floats rc(n);
            Floats lsp(n);
            Floats back(n + 1);
            ASSERT_EQ(vekStsNoErr, veksLevinsonDurbin_RTA_32f(r.data(), a.data(), rc.data(), order));
            ASSERT_EQ(vekStsNoErr, veksLPCToLSP_RTA_32f(a.data(), lsp.data(), order));
            ASSERT_EQ(vekStsNoErr, veksLSPToLPC_RTA_32f(lsp.data(), back.data(), order));
            for (size_t i = 0; i <= n; ++i) {
                ASSERT_NEAR(back[i], a[i], 2e-5) << order;
            }
        }
    }
}

TEST(VekRtaPairs, EvenlySpacedOnesAreThoseOfAFlatSpectrum) {
    for (int order = 2; order <= 16; order += 2) {
        Floats a(static_cast<size_t>(order) + 1);
        a[0] = 1;
        Floats lsp(static_cast<size_t>(order));
        ASSERT_EQ(vekStsNoErr, veksLPCToLSP_RTA_32f(a.data(), lsp.data(), order));
        for (int i = 0; i < order; ++i) {
            EXPECT_NEAR(lsp[static_cast<size_t>(i)], kPi * (i + 1) / (order + 1), 1e-6);
        }
    }
}

TEST(VekRtaPairs, CloseOnesAreToldApartOnTheFinerGrids) {
    for (const double apart : {0.02, 0.008}) {
        const Doubles at = {0.3, 0.3 + apart, 0.3 + 2 * apart, 0.3 + 3 * apart, 1.9, 2.4};
        const Doubles exact = coefficientsOf(at);
        const Floats a(exact.begin(), exact.end());
        Floats lsp(6);
        ASSERT_EQ(vekStsNoErr, veksLPCToLSP_RTA_32f(a.data(), lsp.data(), 6)) << apart;
        for (size_t i = 0; i < 6; ++i) {
            EXPECT_NEAR(lsp[i], at[i], 0.25 * apart) << apart;
        }
    }
}

TEST(VekRtaPairs, TheFinestGridPartsFourThousandths) {
    const Doubles at = {1.5, 1.504, 1.508, 1.512};
    const Doubles exact = coefficientsOf(at);
    const Floats a(exact.begin(), exact.end());
    Floats lsp(4);
    ASSERT_EQ(vekStsNoErr, veksLPCToLSP_RTA_32f(a.data(), lsp.data(), 4));
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(lsp[i], at[i], 0.001);
    }
}

TEST(VekRtaPairs, FrequenciesAreExactWhereTheCoefficientsTellThem) {
    std::mt19937 random(14);
    for (int round = 0; round < 500; ++round) {
        const Doubles at = frequencies(random, 4, 0.03);
        const Doubles exact = coefficientsOf(at);
        const Floats a(exact.begin(), exact.end());
        // The zeros of what the coefficients have become in single precision: Newton's steps from the ones meant.
        Floats lsp(4);
        ASSERT_EQ(vekStsNoErr, veksLPCToLSP_RTA_32f(a.data(), lsp.data(), 4));
        for (size_t i = 0; i < 4; ++i) {
            const double sign = i % 2 == 0 ? 1 : -1;
            const auto value = [&](double w) {
                std::complex<double> sum = 0;
                for (size_t j = 0; j <= 5; ++j) {
                    const double tap = (j < 5 ? a[j] : 0.0) + sign * (j > 0 ? a[5 - j] : 0.0);
                    sum += tap * std::polar(1.0, w * (2.5 - static_cast<double>(j)));
                }
                return i % 2 == 0 ? sum.real() : sum.imag();
            };
            double w = at[i];
            for (int step = 0; step < 6; ++step) {
                w -= value(w) * 2e-6 / (value(w + 1e-6) - value(w - 1e-6));
            }
            ASSERT_NEAR(lsp[i], w, 3e-7 + 1e-7 / std::sin(w)) << round;
        }
    }
}

TEST(VekRtaPairs, ThoseThatDoNotAlternateAreOfNoStableFilter) {
    const Doubles exact = coefficientsOf({0.5, 0.3, 1.5, 1.2});
    const Floats a(exact.begin(), exact.end());
    Floats lsp(4, 9);
    EXPECT_EQ(vekStsUnstableFilter, veksLPCToLSP_RTA_32f(a.data(), lsp.data(), 4));
    EXPECT_EQ(lsp, Floats(4, 9));
}

TEST(VekRtaPairs, UnstableFiltersAndOddOrdersAreTold) {
    Floats a = {1, -3, 5, -3, 7};
    Floats lsp(4, 9);
    EXPECT_EQ(vekStsUnstableFilter, veksLPCToLSP_RTA_32f(a.data(), lsp.data(), 4));
    a[2] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(vekStsUnstableFilter, veksLPCToLSP_RTA_32f(a.data(), lsp.data(), 4));
    for (const int order : {0, 1, 3, 18, -2}) {
        EXPECT_EQ(vekStsSizeErr, veksLPCToLSP_RTA_32f(a.data(), lsp.data(), order)) << order;
        EXPECT_EQ(vekStsSizeErr, veksLSPToLPC_RTA_32f(a.data(), lsp.data(), order)) << order;
    }
    EXPECT_EQ(lsp, Floats(4, 9));
}

TEST(VekRtaLevinson, CoefficientsSolveTheNormalEquations) {
    std::mt19937 random(8);
    for (int order = 1; order <= 32; ++order) {
        const size_t n = static_cast<size_t>(order);
        Floats r = floatNoise(random, n + 1, -100, 100);
        double sum = 1;
        for (size_t i = 1; i <= n; ++i) {
            sum += 2 * std::abs(r[i]);
        }
        r[0] = static_cast<float>(sum);
        Floats a(n + 2, 99);
        Floats rc(n + 1, 99);
        ASSERT_EQ(vekStsNoErr, veksLevinsonDurbin_RTA_32f(r.data(), a.data(), rc.data(), order));
        EXPECT_EQ(a[0], 1);
        EXPECT_NEAR(rc[n - 1], a[n], 1e-6);
        for (size_t k = 1; k <= n; ++k) {
            double rest = 0;
            for (size_t j = 0; j <= n; ++j) {
                rest += double{1} * a[j] * r[k > j ? k - j : j - k];
            }
            ASSERT_NEAR(rest, 0, 1e-5 * sum) << order;
        }
        EXPECT_EQ(a[n + 1], 99);
        EXPECT_EQ(rc[n], 99);
    }
}

TEST(VekRtaLevinson, KeepsTheLastFilterWhereThereIsNone) {
    Floats r = {1, 2, 1};
    Floats a(3, 4);
    Floats rc(2, 4);
    EXPECT_EQ(vekStsUnstableFilter, veksLevinsonDurbin_RTA_32f(r.data(), a.data(), rc.data(), 2));
    EXPECT_EQ(vekStsSizeErr, veksLevinsonDurbin_RTA_32f(r.data(), a.data(), rc.data(), 0));
    EXPECT_EQ(vekStsSizeErr, veksLevinsonDurbin_RTA_32f(r.data(), a.data(), rc.data(), 33));
    r[0] = 0;
    EXPECT_EQ(vekStsRangeErr, veksLevinsonDurbin_RTA_32f(r.data(), a.data(), rc.data(), 2));
    EXPECT_EQ(a, Floats(3, 4));
    EXPECT_EQ(rc, Floats(2, 4));
}

struct PostFilter {
    Floats memory = Floats(51, 0);
    StateMemory<VeksPostFilterState_RTA_32f> state{veksPostFilterGetStateSize_RTA_32f};
    PostFilter() { EXPECT_EQ(vekStsNoErr, veksPostFilterInit_RTA_32f(state)); }
};

// Pole-zero filter, tilt and level of one kind after the other.
Doubles postFiltered(const Floats& a, const Floats& x, int apfIdx) {
    constexpr double weights[3][2] = {{0.65, 0.75}, {0.55, 0.75}, {0.5, 0.8}};
    const size_t order = a.size() - 1;
    const auto shaped = [&](const Doubles& in) {
        Doubles y;
        for (size_t i = 0; i < in.size(); ++i) {
            double sum = in[i];
            for (size_t j = 1; j <= order && j <= i; ++j) {
                sum += a[j] * std::pow(weights[apfIdx - 1][0], j) * in[i - j];
                sum -= a[j] * std::pow(weights[apfIdx - 1][1], j) * y[i - j];
            }
            y.push_back(sum);
        }
        return y;
    };
    Doubles impulse(24);
    impulse[0] = 1;
    const Doubles h = shaped(impulse);
    double r[2] = {};
    for (size_t i = 0; i < h.size(); ++i) {
        r[0] += h[i] * h[i];
        r[1] += i > 0 ? h[i] * h[i - 1] : 0;
    }
    const Doubles y = shaped({x.begin(), x.end()});
    Doubles out(x.size());
    double gain = 1;
    for (size_t i = 0; i < x.size(); i += 40) {
        double sums[2] = {};
        for (size_t k = i; k < i + 40; ++k) {
            out[k] = y[k] - 0.5 * r[1] / r[0] * (k > 0 ? y[k - 1] : 0);
            sums[0] += std::abs(x[k]);
            sums[1] += std::abs(out[k]);
        }
        for (size_t k = i; k < i + 40; ++k) {
            gain = 0.9875 * gain + 0.0125 * sums[0] / sums[1];
            out[k] *= gain;
        }
    }
    return out;
}

TEST(VekRtaPostFilter, IsThePoleZeroFilterTheTiltAndTheLevel) {
    atEveryLevel([] {
        std::mt19937 random(9);
        for (int order = 1; order <= 17; ++order) {
            for (int apfIdx = 1; apfIdx <= 3; ++apfIdx) {
                Doubles exact = coefficientsOf(frequencies(random, order - order % 2, 0.08));
                if (order % 2 != 0) {
                    exact.push_back(0);
                    for (size_t i = exact.size() - 1; i > 0; --i) {
                        exact[i] -= 0.5 * exact[i - 1];
                    }
                }
                const Floats a(exact.begin(), exact.end());
                const Floats x = floatNoise(random, 480, -3000, 3000);
                Floats y = x;
                PostFilter filter;
                int at = 0;
                for (const int n : {80, 40, 160, 200}) {
                    ASSERT_EQ(vekStsNoErr, veksPostFilter_RTA_32f_I(a.data(), order, y.data() + at, n, apfIdx,
                                                                    filter.memory.data(), filter.state));
                    at += n;
                }
                const Doubles want = postFiltered(a, x, apfIdx);
                const double largest = std::abs(*std::max_element(
                    want.begin(), want.end(), [](double u, double v) { return std::abs(u) < std::abs(v); }));
                expectNear(y, want, 5e-5 * largest);
                EXPECT_TRUE(
                    std::all_of(filter.memory.begin() + 34, filter.memory.end(), [](float v) { return v == 0; }));
            }
        }
    });
}

TEST(VekRtaPostFilter, DeepensTheValleysAndMoreWithEachIndex) {
    const Doubles exact = coefficientsOf({0.35, 0.42, 1.5, 1.65});
    const Floats a(exact.begin(), exact.end());
    std::mt19937 random(10);
    // What remains of a tone in the valley beside one on the formant.
    double before = 1;
    for (int apfIdx = 1; apfIdx <= 3; ++apfIdx) {
        double levels[2] = {};
        for (int k = 0; k < 2; ++k) {
            const double w = k == 0 ? 0.385 : 0.95;
            Floats x(800);
            double in = 0;
            for (size_t i = 0; i < x.size(); ++i) {
                x[i] = static_cast<float>(1000 * std::sin(w * static_cast<double>(i)));
            }
            PostFilter filter;
            Floats y = x;
            ASSERT_EQ(vekStsNoErr,
                      veksPostFilter_RTA_32f_I(a.data(), 4, y.data(), 800, apfIdx, filter.memory.data(), filter.state));
            // The filter's own outputs, before the level is brought back.
            for (size_t i = 17; i < 34; ++i) {
                levels[k] += filter.memory[i] * filter.memory[i];
            }
            for (size_t i = 783; i < 800; ++i) {
                in += x[i] * x[i];
            }
            levels[k] /= in;
        }
        EXPECT_LT(levels[1], 0.7 * levels[0]) << apfIdx;
        EXPECT_LT(levels[1] / levels[0], before) << apfIdx;
        before = levels[1] / levels[0];
    }
}

TEST(VekRtaPostFilter, SilenceStaysSilentWhateverTheCoefficients) {
    atEveryLevel([] {
        std::mt19937 random(11);
        for (int order = 4; order <= 16; order += 2) {
            // The larger ones drive the response to an impulse out of all numbers.
            for (const double low : {10.0, 70.0}) {
                const Floats a = floatNoise(random, static_cast<size_t>(order) + 1, low, low + 30);
                Floats x(160);
                PostFilter filter;
                for (int k = 0; k < 3; ++k) {
                    ASSERT_EQ(vekStsNoErr, veksPostFilter_RTA_32f_I(a.data(), order, x.data(), 160, 3,
                                                                    filter.memory.data(), filter.state));
                }
                EXPECT_EQ(x, Floats(160));
            }
        }
    });
}

TEST(VekRtaPostFilter, SilenceNeitherFadesForeverNorSwallowsWhatComesAfter) {
    const Doubles exact = coefficientsOf({0.35, 0.42, 1.5, 1.65});
    const Floats a(exact.begin(), exact.end());
    atEveryLevel([&] {
        std::mt19937 random(15);
        PostFilter filter;
        Floats x = floatNoise(random, 160, -1000, 1000);
        for (int k = 0; k < 40; ++k) {
            ASSERT_EQ(vekStsNoErr,
                      veksPostFilter_RTA_32f_I(a.data(), 4, x.data(), 160, 1, filter.memory.data(), filter.state));
            std::fill(x.begin(), x.end(), 0.0F);
        }
        EXPECT_EQ(filter.memory, Floats(51));
        std::feclearexcept(FE_ALL_EXCEPT);
        for (int k = 0; k < 100; ++k) {
            ASSERT_EQ(vekStsNoErr,
                      veksPostFilter_RTA_32f_I(a.data(), 4, x.data(), 160, 1, filter.memory.data(), filter.state));
        }
        EXPECT_EQ(std::fetestexcept(FE_UNDERFLOW), 0);
        std::fill(x.begin(), x.end(), 1000.0F);
        ASSERT_EQ(vekStsNoErr,
                  veksPostFilter_RTA_32f_I(a.data(), 4, x.data(), 40, 1, filter.memory.data(), filter.state));
        EXPECT_GT(x[0], 9.87F);
        EXPECT_LT(x[0], 60);
    });
}

TEST(VekRtaPostFilter, RefusesWhatItHasNoFilterFor) {
    PostFilter filter;
    const Floats a(18, 0.1F);
    Floats x(80, 5);
    float* m = filter.memory.data();
    EXPECT_EQ(vekStsSizeErr, veksPostFilter_RTA_32f_I(a.data(), 18, x.data(), 80, 1, m, filter.state));
    EXPECT_EQ(vekStsSizeErr, veksPostFilter_RTA_32f_I(a.data(), 0, x.data(), 80, 1, m, filter.state));
    EXPECT_EQ(vekStsSizeErr, veksPostFilter_RTA_32f_I(a.data(), 4, x.data(), 50, 1, m, filter.state));
    EXPECT_EQ(vekStsBadArgErr, veksPostFilter_RTA_32f_I(a.data(), 4, x.data(), 80, 0, m, filter.state));
    EXPECT_EQ(vekStsBadArgErr, veksPostFilter_RTA_32f_I(a.data(), 4, x.data(), 80, 4, m, filter.state));
    filter.state.clear();
    EXPECT_EQ(vekStsStateErr, veksPostFilter_RTA_32f_I(a.data(), 4, x.data(), 80, 1, m, filter.state));
    EXPECT_EQ(x, Floats(80, 5));
}

} // namespace
