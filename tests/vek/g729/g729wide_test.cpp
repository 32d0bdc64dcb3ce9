// Wide-order filters, hybrid window, quantiser of Annex E and floating kernels of G.729 against their definitions.
#include "lp_reference.h"
#include "veksc.h"

#include <cmath>

namespace {

TEST(VekG729WideFilters, EqualTheStepwiseFiltersOfBothOrders) {
    atEveryLevel([] {
        std::mt19937 random(1);
        for (const int order : {4, 10, 30, 40}) {
            for (const int n : {1, 13, 40, 60, 80, 200}) {
                for (const int high : {300, 6000, 32767}) {
                    Samples a = noise(random, order + 1, -900, 900);
                    a[0] = 4096;
                    const Samples x = noise(random, order + n, -high, high);
                    Samples y(static_cast<size_t>(n));
                    ASSERT_EQ(vekStsNoErr,
                              veksResidualFilter_G729E_16s(a.data(), order, x.data() + order, y.data(), n));
                    ASSERT_EQ(lpref::residual(a, x, n, 12), y);

                    Samples memory = noise(random, order, -high, high);
                    const Samples in(x.begin() + order, x.end());
                    const Samples want = lpref::synthesis(a, in, 12, memory);
                    Samples past = memory;
                    past.insert(past.end(), want.begin(), want.end());
                    Samples again = memory;
                    ASSERT_EQ(vekStsNoErr,
                              veksSynthesisFilter_G729E_16s(a.data(), order, in.data(), y.data(), n, memory.data()));
                    ASSERT_EQ(want, y);
                    ASSERT_EQ(Samples(past.end() - order, past.end()), memory);
                    y = in;
                    ASSERT_EQ(vekStsNoErr, veksSynthesisFilter_G729E_16s_I(a.data(), order, y.data(), n, again.data()));
                    ASSERT_EQ(want, y);
                    ASSERT_EQ(memory, again);
                }
            }
        }
    });
}

TEST(VekG729WideFilters, RefuseOrdersSizesAndNullPointers) {
    Samples a(41), x(200), y(100), m(40);
    for (const int order : {2, 11, 42}) {
        EXPECT_EQ(vekStsFilterOrderErr, veksResidualFilter_G729E_16s(a.data(), order, x.data() + 40, y.data(), 40));
        EXPECT_EQ(vekStsFilterOrderErr,
                  veksSynthesisFilter_G729E_16s(a.data(), order, x.data(), y.data(), 40, m.data()));
        EXPECT_EQ(vekStsFilterOrderErr, veksSynthesisFilter_G729E_16s_I(a.data(), order, y.data(), 40, m.data()));
    }
    for (const int n : {0, 65537}) {
        EXPECT_EQ(vekStsSizeErr, veksResidualFilter_G729E_16s(a.data(), 10, x.data() + 40, y.data(), n));
        EXPECT_EQ(vekStsSizeErr, veksSynthesisFilter_G729E_16s(a.data(), 10, x.data(), y.data(), n, m.data()));
        EXPECT_EQ(vekStsSizeErr, veksSynthesisFilter_G729E_16s_I(a.data(), 10, y.data(), n, m.data()));
    }
    expectNullsRefused(veksResidualFilter_G729E_16s, a.data(), 10, x.data() + 40, y.data(), 40);
    expectNullsRefused(veksSynthesisFilter_G729E_16s, a.data(), 10, x.data(), y.data(), 40, m.data());
    expectNullsRefused(veksSynthesisFilter_G729E_16s_I, a.data(), 10, y.data(), 40, m.data());
}

TEST(VekG729FloatSynthesis, EqualsTheRecursionInDouble) {
    atEveryLevel([] {
        std::mt19937 random(2);
        for (const int order : {1, 3, 4, 6, 10, 16, 30, 40}) {
            for (const int n : {1, 7, 8, 40, 161, 640}) {
                Floats a = floats(random, static_cast<size_t>(order) + 1, 0.9F / static_cast<float>(order));
                a[0] = 1.5F;
                const Floats x = floats(random, static_cast<size_t>(n), 1000);
                const Floats memory = floats(random, static_cast<size_t>(order), 1000);
                std::vector<double> want(memory.begin(), memory.end());
                for (const float v : x) {
                    double s = 1.5 * v;
                    for (int j = 1; j <= order; ++j) {
                        s -= double{1} * a[static_cast<size_t>(j)] * want[want.size() - static_cast<size_t>(j)];
                    }
                    want.push_back(s);
                }
                Floats y(static_cast<size_t>(n));
                ASSERT_EQ(vekStsNoErr,
                          veksSynthesisFilter_G729_32f(a.data(), order, x.data(), y.data(), n, memory.data()));
                for (size_t i = 0; i < y.size(); ++i) {
                    ASSERT_NEAR(want[i + memory.size()], y[i], 0.02);
                }
            }
        }
    });
    float v[50] = {};
    EXPECT_EQ(vekStsFilterOrderErr, veksSynthesisFilter_G729_32f(v, 0, v, v, 1, v));
    EXPECT_EQ(vekStsFilterOrderErr, veksSynthesisFilter_G729_32f(v, 41, v, v, 1, v));
    EXPECT_EQ(vekStsSizeErr, veksSynthesisFilter_G729_32f(v, 10, v, v, 0, v));
    expectNullsRefused(veksSynthesisFilter_G729_32f, v, 10, v, v, 1, v);
}

TEST(VekG729FloatLagMax, WhatLiesBeyondALagDoesNotTouchIt) {
    atEveryLevel([] {
        for (const int n : {5, 8, 41}) {
            constexpr int lags = 9;
            const Floats x(static_cast<size_t>(n), 1.0F);
            Floats y(static_cast<size_t>(n + lags - 1), 2.0F);
            y.back() = -HUGE_VALF; // the last lag alone reads it
            double wide = 0;
            int lag = -1;
            ASSERT_EQ(vekStsNoErr, veksCrossCorrLagMax_32f64f(x.data(), y.data(), n, lags, &wide, &lag));
            EXPECT_EQ(0, lag);
            EXPECT_EQ(2.0 * n, wide);
        }
    });
}

TEST(VekG729FloatLagMax, FindsTheLargestSumOfEitherKind) {
    atEveryLevel([] {
        std::mt19937 random(3);
        for (const int n : {1, 3, 40, 80, 641}) {
            for (const auto& [low, high] : {std::pair{0, 0}, {20, 39}, {5, 8}, {80, 143}, {1, 700}}) {
                const Floats x = floats(random, static_cast<size_t>(n + high), 100);
                const Floats y = floats(random, static_cast<size_t>(n + high), 100);
                const auto sum = [&](const Floats& b, int from, int k) {
                    double s = 0;
                    for (int i = 0; i < n; ++i) {
                        s += double{1} * x[static_cast<size_t>(from + i)] * b[static_cast<size_t>(i + k)];
                    }
                    return s;
                };
                float max = 0;
                int lag = -1;
                ASSERT_EQ(vekStsNoErr, veksAutoCorrLagMax_32f(x.data() + high, n, low, high, &max, &lag));
                ASSERT_GE(lag, low);
                ASSERT_LE(lag, high);
                EXPECT_NEAR(sum(x, high, high - lag), max, 0.5);
                for (int k = low; k <= high; ++k) {
                    ASSERT_LE(sum(x, high, high - k), max + 0.5);
                }
                double wide = 0;
                ASSERT_EQ(vekStsNoErr, veksCrossCorrLagMax_32f64f(x.data(), y.data(), n, high - low + 1, &wide, &lag));
                ASSERT_GE(lag, 0);
                ASSERT_LE(lag, high - low);
                EXPECT_NEAR(sum(y, 0, lag), wide, 1e-6);
                for (int k = 0; k <= high - low; ++k) {
                    ASSERT_LE(sum(y, 0, k), wide + 1e-6);
                }
            }
        }
        const Floats ones(900, 1.0F);
        float max = 0;
        double wide = 0;
        int lag = -1;
        veksAutoCorrLagMax_32f(ones.data() + 800, 40, 20, 790, &max, &lag);
        EXPECT_EQ(20, lag);
        EXPECT_EQ(40.0F, max);
        veksCrossCorrLagMax_32f64f(ones.data(), ones.data(), 40, 800, &wide, &lag);
        EXPECT_EQ(0, lag);
        EXPECT_EQ(40.0, wide);
    });
    float v[100] = {};
    float max = 0;
    double wide = 0;
    int lag = 0;
    EXPECT_EQ(vekStsSizeErr, veksAutoCorrLagMax_32f(v + 50, 0, 1, 2, &max, &lag));
    EXPECT_EQ(vekStsRangeErr, veksAutoCorrLagMax_32f(v + 50, 1, -1, 2, &max, &lag));
    EXPECT_EQ(vekStsRangeErr, veksAutoCorrLagMax_32f(v + 50, 1, 3, 2, &max, &lag));
    EXPECT_EQ(vekStsRangeErr, veksAutoCorrLagMax_32f(v + 50, 1, 3, 65537, &max, &lag));
    expectNullsRefused(veksAutoCorrLagMax_32f, v, 1, 1, 2, &max, &lag);
    EXPECT_EQ(vekStsSizeErr, veksCrossCorrLagMax_32f64f(v, v, 0, 1, &wide, &lag));
    EXPECT_EQ(vekStsSizeErr, veksCrossCorrLagMax_32f64f(v, v, 1, 0, &wide, &lag));
    expectNullsRefused(veksCrossCorrLagMax_32f64f, v, v, 1, 1, &wide, &lag);
}

TEST(VekG729FloatOpenLoop, OfEqualDelaysTheShortestIsTaken) {
    const std::vector<float> silence(143 + 80);
    int lag = 0;
    ASSERT_EQ(vekStsNoErr, veksOpenLoopPitchSearch_G729A_32f(silence.data() + 143, &lag));
    EXPECT_EQ(20, lag);
}

TEST(VekG729FloatOpenLoop, FindsTheDelayOfTheFixedPointSearch) {
    atEveryLevel([] {
        std::mt19937 random(4);
        for (int round = 0; round < 300; ++round) {
            Samples x = noise(random, 223, -4000, 4000);
            const auto period = static_cast<size_t>(noise(random, 1, 20, 143)[0]);
            for (size_t i = period; i < x.size(); ++i) {
                const int quarter = x[i] / 4;
                x[i] = static_cast<int16_t>(quarter + 0.8 * x[i - period]);
            }
            const Floats y(x.begin(), x.end());
            int16_t want = 0;
            int lag = 0;
            veksOpenLoopPitchSearch_G729A_16s(x.data() + 143, &want);
            ASSERT_EQ(vekStsNoErr, veksOpenLoopPitchSearch_G729A_32f(y.data() + 143, &lag));
            ASSERT_EQ(want, lag) << round;
        }
    });
    float v = 0;
    int lag = 0;
    expectNullsRefused(veksOpenLoopPitchSearch_G729A_32f, &v, &lag);
}

TEST(VekG729FloatGainControl, MovesTheGainToTheRatioOfMagnitudes) {
    std::mt19937 random(5);
    const Floats in = floats(random, 40, 3000);
    Floats out = floats(random, 40, 500);
    const auto sum = [](const Floats& x) {
        double s = 0;
        for (const float v : x) {
            s += std::fabs(v);
        }
        return s;
    };
    const double ratio = sum(in) / sum(out);
    Floats got = out;
    float gain = 0.5F;
    ASSERT_EQ(vekStsNoErr, veksGainControl_G729_32f_I(in.data(), got.data(), &gain));
    double want = 0.5;
    for (size_t i = 0; i < 40; ++i) {
        want = 0.9875 * want + 0.0125 * ratio;
        ASSERT_NEAR(want * out[i], got[i], 0.01);
    }
    EXPECT_NEAR(want, gain, 1e-4);
    const Floats silence(40);
    Floats same = silence;
    EXPECT_EQ(vekStsNoErr, veksGainControl_G729_32f_I(in.data(), same.data(), &gain));
    EXPECT_EQ(0.0F, gain);
    gain = 1;
    EXPECT_EQ(vekStsNoErr, veksGainControl_G729_32f_I(silence.data(), got.data(), &gain));
    EXPECT_NEAR(std::pow(0.9875, 40), gain, 1e-5);
    expectNullsRefused(veksGainControl_G729_32f_I, in.data(), got.data(), &gain);
}

// The window's sine part ends where its slope is that of the exponential: c found by halving on paper's condition.
double hybridWindow(int age) {
    static const double c = [] {
        double at = 0.0478;
        for (int i = 0; i < 200; ++i) {
            at = (3.14159265358979323846 + std::atan(at / (std::log(0.75) / 40))) / 36;
        }
        return at;
    }();
    return age <= 35 ? std::sin(c * age) : std::sin(c * 36) * std::pow(0.75, (age - 36) / 40.0);
}

TEST(VekG729HybridWindow, IsTheWindowedAutocorrelationOfTheWholePast) {
    atEveryLevel([] {
        std::mt19937 random(6);
        int size = 0;
        ASSERT_EQ(vekStsNoErr, veksWinHybridGetStateSize_G729E_16s(&size));
        std::vector<char> fixedState(static_cast<size_t>(size) + 1);
        ASSERT_EQ(vekStsNoErr, veksWinHybridGetStateSize_G729E_32f(&size));
        std::vector<char> floatState(static_cast<size_t>(size) + 1);
        ASSERT_EQ(vekStsNoErr, veksWinHybridInit_G729E_16s(fixedState.data() + 1));
        ASSERT_EQ(vekStsNoErr, veksWinHybridInit_G729E_32f(floatState.data() + 1));
        Samples past(145);
        for (int frame = 0; frame < 30; ++frame) {
            const Samples fresh = noise(random, 80, -4000 + 100 * frame, 4000);
            past.insert(past.end(), fresh.begin(), fresh.end());
            const Samples in(past.end() - 145, past.end());
            const Floats floatIn(in.begin(), in.end());
            int32_t got[31];
            float gotFloat[31];
            ASSERT_EQ(vekStsNoErr, veksWinHybrid_G729E_16s32s(in.data(), got, fixedState.data() + 1));
            ASSERT_EQ(vekStsNoErr, veksWinHybrid_G729E_32f(floatIn.data(), gotFloat, floatState.data() + 1));
            double want[31] = {};
            const int n = static_cast<int>(past.size());
            for (int k = 0; k <= 30; ++k) {
                for (int i = k; i < n; ++i) {
                    want[k] += hybridWindow(n - i) * past[static_cast<size_t>(i)] * hybridWindow(n - i + k) *
                               past[static_cast<size_t>(i - k)];
                }
            }
            ASSERT_GE(got[0], 1 << 30);
            for (int k = 0; k <= 30; ++k) {
                ASSERT_NEAR(want[k] / want[0], static_cast<double>(got[k]) / got[0], 2e-4) << frame << ' ' << k;
                ASSERT_NEAR(want[k], gotFloat[k], 2e-5 * want[0]) << frame << ' ' << k;
            }
        }
    });
}

TEST(VekG729HybridWindow, SilenceIsWhiteAndAStateMustBeSetUp) {
    std::vector<int64_t> state(200);
    const Samples zeros(145);
    const Floats floatZeros(145);
    int32_t r[31];
    float f[31];
    EXPECT_EQ(vekStsStateErr, veksWinHybrid_G729E_16s32s(zeros.data(), r, state.data()));
    EXPECT_EQ(vekStsStateErr, veksWinHybrid_G729E_32f(floatZeros.data(), f, state.data()));
    ASSERT_EQ(vekStsNoErr, veksWinHybridInit_G729E_16s(state.data()));
    ASSERT_EQ(vekStsNoErr, veksWinHybrid_G729E_16s32s(zeros.data(), r, state.data()));
    EXPECT_EQ(1 << 30, r[0]);
    EXPECT_EQ(0, r[1]);
    EXPECT_EQ(0, r[30]);
    int16_t lpc[31];
    int16_t reflection[30];
    int16_t error = 0;
    EXPECT_EQ(vekStsNoErr, veksLevinsonDurbin_G729_32s16s(r, 30, lpc, reflection, &error));
    EXPECT_EQ(vekStsNullPtrErr, veksWinHybridGetStateSize_G729E_16s(nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksWinHybridGetStateSize_G729E_32f(nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksWinHybridInit_G729E_16s(nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksWinHybridInit_G729E_32f(nullptr));
    expectNullsRefused(veksWinHybrid_G729E_16s32s, zeros.data(), r, state.data());
    expectNullsRefused(veksWinHybrid_G729E_32f, floatZeros.data(), f, state.data());
}

TEST(VekG729LspQuantE, ChoosesAsTheMainBodyAndSoDoesFloatingPoint) {
    std::mt19937 random(7);
    Samples previous;
    for (int k = 0; k < 40; ++k) {
        previous.push_back(static_cast<int16_t>(std::lround((k % 10 + 1) * 8192 * 3.14159265 / 11)));
    }
    Samples other = previous;
    int equal = 0;
    for (int round = 0; round < 300; ++round) {
        Samples lsp(10);
        double gaps[11];
        double sum = 0;
        for (double& g : gaps) {
            g = noise(random, 1, 30, 100)[0];
            sum += g;
        }
        double at = 0;
        for (size_t i = 0; i < 10; ++i) {
            at += gaps[i] * 3.14159265358979 / sum;
            lsp[i] = static_cast<int16_t>(std::lround(32767 * std::cos(at)));
        }
        Floats floatLsp, floatPrevious;
        for (const int16_t v : lsp) {
            floatLsp.push_back(static_cast<float>(v) / 32768);
        }
        for (const int16_t v : previous) {
            floatPrevious.push_back(static_cast<float>(v) / 8192);
        }
        Samples lsf(10), q(10), want(10);
        int16_t index[2], wantIndex[2];
        ASSERT_EQ(vekStsNoErr, veksLSPQuant_G729_16s(lsp.data(), other.data(), want.data(), wantIndex));
        ASSERT_EQ(vekStsNoErr, veksLSPQuant_G729E_16s(lsp.data(), previous.data(), lsf.data(), q.data(), index));
        ASSERT_EQ(want, q);
        ASSERT_EQ(other, previous);
        ASSERT_EQ(wantIndex[0], index[0]);
        ASSERT_EQ(wantIndex[1], index[1]);
        for (size_t i = 0; i < 10; ++i) {
            ASSERT_NEAR(std::cos(lsf[i] / 8192.0), q[i] / 32768.0, 4e-4);
        }
        Floats floatLsf(10), floatQ(10);
        int32_t floatIndex[2];
        ASSERT_EQ(vekStsNoErr, veksLSPQuant_G729E_32f(floatLsp.data(), floatPrevious.data(), floatLsf.data(),
                                                      floatQ.data(), floatIndex));
        if (floatIndex[0] == index[0] && floatIndex[1] == index[1]) {
            ++equal;
            for (size_t i = 0; i < 10; ++i) {
                ASSERT_NEAR(lsf[i] / 8192.0, floatLsf[i], 0.002);
                ASSERT_NEAR(std::cos(floatLsf[i]), floatQ[i], 1e-6);
                ASSERT_NEAR(previous[i] / 8192.0, floatPrevious[i], 0.002);
            }
        }
    }
    EXPECT_GE(equal, 285);
}

TEST(VekG729LspQuantE, RefusesNullPointersAndWhatIsNoCosine) {
    Samples v(40);
    Floats f(40);
    int32_t index[2];
    expectNullsRefused(veksLSPQuant_G729E_16s, v.data(), v.data(), v.data(), v.data(), v.data());
    expectNullsRefused(veksLSPQuant_G729E_32f, f.data(), f.data(), f.data(), f.data(), index);
    Floats lsp(10);
    for (const float wrong : {1.01F, -1.01F, NAN}) {
        lsp[9] = wrong;
        EXPECT_EQ(vekStsRangeErr, veksLSPQuant_G729E_32f(lsp.data(), f.data(), f.data(), f.data(), index));
    }
}

} // namespace
