// Steps of GSM full rate against their definitions, sample by sample.
#include "lp_reference.h"
#include "veksc.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace {

int cut(int v) {
    return std::clamp(v, -32768, 32767);
}

// Rounded product in Q15.
int product(int a, int b) {
    return cut((a * b + 0x4000) >> 15);
}

TEST(VekGsmFrPreprocess, OffsetDecaysAndSignalPasses) {
    Samples x(2000, 8000);
    Samples y(x.size());
    Vek32s memory[2] = {};
    ASSERT_EQ(vekStsNoErr, veksHighPassFilter_GSMFR_16s(x.data(), y.data(), 2000, memory));
    // The step passes as it is, less the last three bits and halved; then the pole 0.999 takes it down.
    EXPECT_NEAR(y[0], 4000, 2);
    for (const int n : {100, 500, 1500}) {
        EXPECT_NEAR(y[static_cast<size_t>(n)], 4000 * std::pow(32735.0 / 32768, n), 12) << n;
    }
}

// The recursion in two words: the lower one is rounded by itself.
TEST(VekGsmFrPreprocess, IsTheRecursionInTwoWordsRoundedSampleBySample) {
    std::mt19937 random(11);
    for (const int level : {40, 3000, 32767}) {
        const Samples x = noise(random, 400, -level, level);
        Samples y(x.size());
        Vek32s memory[2] = {-1204, 123456789};
        ASSERT_EQ(vekStsNoErr, veksHighPassFilter_GSMFR_16s(x.data(), y.data(), 400, memory));
        int past = -1204;
        int64_t sum = 123456789;
        for (size_t i = 0; i < x.size(); ++i) {
            const int scaled = (x[i] >> 3) * 4;
            const int64_t upper = sum >> 15;
            const int64_t lower = sum - (upper << 15);
            sum = (scaled - past) * int64_t{32768} + ((lower * 32735 + 0x4000) >> 15) + upper * 32735;
            past = scaled;
            ASSERT_EQ((sum + 0x4000) >> 15, y[i]) << level << ' ' << i;
        }
        EXPECT_EQ(past, memory[0]);
        EXPECT_EQ(sum, memory[1]);
    }
}

TEST(VekGsmFrPreprocess, TheSumStaysAtItsLimits) {
    Vek16s y = 0;
    const Vek16s up = 32767;
    Vek32s memory[2] = {0, 2147483647};
    ASSERT_EQ(vekStsNoErr, veksHighPassFilter_GSMFR_16s(&up, &y, 1, memory));
    EXPECT_EQ(16380, memory[0]);
    EXPECT_EQ(2147483647, memory[1]);
    const Vek16s down = -32768;
    memory[0] = 0;
    memory[1] = -2147483647 - 1;
    ASSERT_EQ(vekStsNoErr, veksHighPassFilter_GSMFR_16s(&down, &y, 1, memory));
    EXPECT_EQ(-16384, memory[0]);
    EXPECT_EQ(-2147483647 - 1, memory[1]);
}

TEST(VekGsmFrPreprocess, TwoCallsAreOne) {
    std::mt19937 random(1);
    const Samples x = noise(random, 320, -32768, 32767);
    Samples whole(320);
    Samples halves(320);
    Vek32s memory[2] = {};
    Vek32s split[2] = {};
    ASSERT_EQ(vekStsNoErr, veksHighPassFilter_GSMFR_16s(x.data(), whole.data(), 320, memory));
    for (const int first : {0, 160}) {
        ASSERT_EQ(vekStsNoErr, veksHighPassFilter_GSMFR_16s(x.data() + first, halves.data() + first, 160, split));
    }
    EXPECT_EQ(whole, halves);
    EXPECT_EQ(memory[0], split[0]);
    EXPECT_EQ(memory[1], split[1]);
}

TEST(VekGsmFrEmphasis, PreemphasisIsADifference) {
    std::mt19937 random(2);
    const Samples x = noise(random, 160, -32768, 32767);
    Samples y(160);
    Vek16s memory = 1234;
    ASSERT_EQ(vekStsNoErr, veksPreemphasize_GSMFR_16s(x.data(), y.data(), 160, &memory));
    EXPECT_EQ(memory, x.back());
    for (size_t i = 0; i < x.size(); ++i) {
        const int past = i == 0 ? 1234 : x[i - 1];
        ASSERT_EQ(y[i], cut(x[i] + product(past, -28180))) << i;
    }
}

TEST(VekGsmFrEmphasis, DeemphasisIsDoubledAndCutToThirteenBits) {
    std::mt19937 random(3);
    for (const int level : {1000, 32767}) {
        Samples x = noise(random, 160, -level, level);
        const Samples in = x;
        Vek16s memory = -321;
        ASSERT_EQ(vekStsNoErr, veksDeemphasize_GSMFR_16s_I(x.data(), 160, &memory));
        int sum = -321;
        for (size_t i = 0; i < x.size(); ++i) {
            sum = cut(in[i] + product(sum, 28180));
            ASSERT_EQ(x[i], static_cast<int16_t>(cut(2 * sum) & ~7)) << i;
        }
        EXPECT_EQ(memory, sum);
    }
}

// The recursion in double precision.
std::vector<double> reflections(const std::vector<double>& r, size_t order) {
    std::vector<double> a(order + 1);
    std::vector<double> k;
    double error = r[0];
    for (size_t i = 1; i <= order; ++i) {
        double sum = r[i];
        for (size_t j = 1; j < i; ++j) {
            sum += a[j] * r[i - j];
        }
        k.push_back(-sum / error);
        std::vector<double> next = a;
        for (size_t j = 1; j < i; ++j) {
            next[j] = a[j] + k.back() * a[i - j];
        }
        next[i] = k.back();
        a = next;
        error *= 1 - k.back() * k.back();
    }
    return k;
}

TEST(VekGsmFrSchur, GivesTheReflectionCoefficients) {
    std::mt19937 random(4);
    for (int round = 0; round < 200; ++round) {
        const Samples x = noise(random, 160, -1000, 1000);
        Samples smooth(160);
        for (size_t i = 1; i < x.size(); ++i) {
            smooth[i] = static_cast<int16_t>(x[i] + 0.8 * smooth[i - 1]);
        }
        Vek32s r[9];
        ASSERT_EQ(vekStsNoErr, veksAutoCorr_16s32s(smooth.data(), 160, r, 9));
        const std::vector<double> want = reflections({r, r + 9}, 8);
        for (const int order : {1, 4, 6, 8}) {
            Vek16s k[8];
            ASSERT_EQ(vekStsNoErr, veksSchur_GSMFR_32s16s(r, k, order));
            for (int i = 0; i < order; ++i) {
                ASSERT_NEAR(k[i], 32768 * want[static_cast<size_t>(i)], 40) << i;
            }
        }
    }
}

TEST(VekGsmFrSchur, WhatIsNoAutocorrelationEndsInZeros) {
    const Vek32s silent[9] = {};
    const Vek32s none[9] = {1000, 2000, 300};
    const Vek32s later[9] = {1000, 500, -1000, 900, 800, 700, 600, 500, 400};
    Vek16s k[8];
    for (const Vek32s* r : {silent, none}) {
        std::fill_n(k, 8, Vek16s{7});
        ASSERT_EQ(vekStsNoErr, veksSchur_GSMFR_32s16s(r, k, 8));
        EXPECT_EQ(std::count(k, k + 8, 0), 8);
    }
    ASSERT_EQ(vekStsNoErr, veksSchur_GSMFR_32s16s(later, k, 8));
    EXPECT_EQ(k[0], -16384);
    EXPECT_EQ(std::count(k + 1, k + 8, 0), 7);
}

// A lattice as drawn: eight sections, one sample at a time.
void analysis(const Samples& rc, Samples& x, Samples& u) {
    for (int16_t& sample : x) {
        int d = sample;
        int back = sample;
        for (size_t i = 0; i < 8; ++i) {
            const int old = u[i];
            u[i] = static_cast<int16_t>(back);
            back = cut(old + product(rc[i], d));
            d = cut(d + product(rc[i], old));
        }
        sample = static_cast<int16_t>(d);
    }
}

TEST(VekGsmFrLattice, AnalysisEqualsSectionBySection) {
    atEveryLevel([] {
        std::mt19937 random(5);
        for (const int level : {3000, 32767}) {
            for (const int n : {1, 13, 14, 120, 160, 161, 500}) {
                Samples rc = noise(random, 8, -32767, 32767);
                if (n == 120) {
                    rc[3] = -32768;
                }
                Samples u = noise(random, 8, -level, level);
                Samples x = noise(random, n, -level - 1, level);
                Samples want = x;
                Samples wantState = u;
                analysis(rc, want, wantState);
                ASSERT_EQ(vekStsNoErr, veksShortTermAnalysisFilter_GSMFR_16s_I(rc.data(), x.data(), n, u.data()));
                ASSERT_EQ(want, x) << n;
                ASSERT_EQ(wantState, u) << n;
            }
        }
    });
}

TEST(VekGsmFrLattice, SynthesisEqualsSectionBySection) {
    std::mt19937 random(9);
    for (const bool lowest : {false, true}) {
        for (const int level : {3000, 32767}) {
            Samples rc = noise(random, 8, -32767, 32767);
            if (lowest) {
                rc[5] = -32768;
            }
            Samples v = noise(random, 9, -level - 1, level);
            const Samples x = noise(random, 160, -level - 1, level);
            Samples want = v;
            Samples y(160);
            ASSERT_EQ(vekStsNoErr,
                      veksShortTermSynthesisFilter_GSMFR_16s(rc.data(), x.data(), y.data(), 160, v.data()));
            for (size_t n = 0; n < x.size(); ++n) {
                int s = x[n];
                for (size_t i = 8; i > 0; --i) {
                    s = cut(s - product(rc[i - 1], want[i - 1]));
                    want[i] = static_cast<int16_t>(cut(want[i - 1] + product(rc[i - 1], s)));
                }
                want[0] = static_cast<int16_t>(s);
                ASSERT_EQ(y[n], s) << n;
            }
            EXPECT_EQ(v, want);
        }
    }
}

TEST(VekGsmFrLattice, SynthesisUndoesTheAnalysis) {
    std::mt19937 random(6);
    const Samples rc = noise(random, 8, -16000, 16000);
    Samples u(8);
    Samples v(9);
    const Samples x = noise(random, 320, -4000, 4000);
    Samples residual = x;
    Samples y(320);
    ASSERT_EQ(vekStsNoErr, veksShortTermAnalysisFilter_GSMFR_16s_I(rc.data(), residual.data(), 320, u.data()));
    ASSERT_EQ(vekStsNoErr, veksShortTermSynthesisFilter_GSMFR_16s(rc.data(), residual.data(), y.data(), 320, v.data()));
    int worst = 0;
    for (size_t i = 0; i < x.size(); ++i) {
        worst = std::max(worst, std::abs(x[i] - y[i]));
    }
    EXPECT_LE(worst, 24) << "nothing but the roundings of sixteen products";
    EXPECT_NE(residual, x);
    // In place, and in two calls.
    Samples again = residual;
    Samples state(9);
    ASSERT_EQ(vekStsNoErr,
              veksShortTermSynthesisFilter_GSMFR_16s(rc.data(), again.data(), again.data(), 13, state.data()));
    ASSERT_EQ(vekStsNoErr, veksShortTermSynthesisFilter_GSMFR_16s(rc.data(), again.data() + 13, again.data() + 13, 307,
                                                                  state.data()));
    EXPECT_EQ(again, y);
    EXPECT_EQ(state, v);
}

TEST(VekGsmFrLag, LargestCorrelationOfAllAndTheLastOfEqualOnes) {
    atEveryLevel([] {
        std::mt19937 random(7);
        for (const int len : {40, 50, 60}) {
            const Samples x = noise(random, len, -4000, 4000);
            Samples past = noise(random, len + 80, -4000, 4000);
            std::copy(x.begin(), x.end(), past.begin() + 31);
            int64_t best = INT64_MIN;
            int at = 0;
            for (int k = 0; k < 81; ++k) {
                int64_t sum = 0;
                for (int i = 0; i < len; ++i) {
                    sum += int64_t{x[static_cast<size_t>(i)]} * past[static_cast<size_t>(i + k)];
                }
                if (sum >= best) {
                    best = sum;
                    at = k;
                }
            }
            Vek32s sum = 0;
            int lag = -1;
            ASSERT_EQ(vekStsNoErr, veksCrossCorrLagMax_16s(x.data(), past.data(), len, 81, &sum, &lag));
            EXPECT_EQ(sum, best);
            EXPECT_EQ(lag, at);
            EXPECT_EQ(lag, 31);
        }
        const Samples zeros(200);
        Vek32s sum = 1;
        int lag = -1;
        ASSERT_EQ(vekStsNoErr, veksCrossCorrLagMax_16s(zeros.data(), zeros.data(), 40, 81, &sum, &lag));
        EXPECT_EQ(sum, 0);
        EXPECT_EQ(lag, 80);
        const Samples loud(200, -32768);
        ASSERT_EQ(vekStsNoErr, veksCrossCorrLagMax_16s(loud.data(), loud.data(), 60, 1, &sum, &lag));
        EXPECT_EQ(sum, INT32_MAX);
        EXPECT_EQ(lag, 0);
    });
}

TEST(VekGsmFrWeighting, ElevenTapsAroundEachSample) {
    atEveryLevel([] {
        constexpr int taps[] = {-134, -374, 0, 2054, 5741, 8192, 5741, 2054, 0, -374, -134};
        std::mt19937 random(8);
        for (const int level : {2000, 32767}) {
            for (const int n : {13, 30, 40, 60}) {
                const Samples x = noise(random, n + 10, -level - 1, level);
                Samples y(static_cast<size_t>(n));
                ASSERT_EQ(vekStsNoErr, veksWeightingFilter_GSMFR_16s(x.data() + 5, y.data(), n));
                for (size_t k = 0; k < y.size(); ++k) {
                    int sum = 4096;
                    for (size_t i = 0; i < 11; ++i) {
                        sum += taps[i] * x[k + i];
                    }
                    ASSERT_EQ(y[k], cut(sum >> 13)) << k;
                }
            }
        }
    });
}

TEST(VekGsmFrBlocks, CodesBecomeLevelsAroundZero) {
    Samples codes(13);
    for (size_t i = 0; i < codes.size(); ++i) {
        codes[i] = static_cast<int16_t>(i % 8);
    }
    Vek16s y[13];
    for (int exponent = -4; exponent <= 6; ++exponent) {
        for (int mantissa = 0; mantissa < 8; ++mantissa) {
            ASSERT_EQ(vekStsNoErr, veksRPEQuantDecode_GSMFR_16s(codes.data(), static_cast<Vek16s>(mantissa),
                                                                static_cast<Vek16s>(exponent), y));
            const double step = (18431.0 + 2048 * mantissa) / 8 * std::pow(2.0, exponent - 6);
            for (size_t i = 0; i < 13; ++i) {
                ASSERT_NEAR(y[i], step * (2 * codes[i] - 7), 1.001) << exponent << " " << mantissa;
            }
        }
    }
}

TEST(VekGsmFrErrors, NullsAndSizesAreRefused) {
    Vek16s w[200] = {1};
    Vek16s codes[13] = {};
    Vek32s l[20] = {};
    int lag = 0;
    expectNullsRefused(veksHighPassFilter_GSMFR_16s, w, w, 10, l);
    EXPECT_EQ(vekStsNullPtrErr, veksPreemphasize_GSMFR_16s(w, nullptr, 10, w));
    EXPECT_EQ(vekStsNullPtrErr, veksDeemphasize_GSMFR_16s_I(w, 10, nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksSchur_GSMFR_32s16s(nullptr, w, 8));
    EXPECT_EQ(vekStsNullPtrErr, veksShortTermAnalysisFilter_GSMFR_16s_I(w, w, 10, nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksShortTermSynthesisFilter_GSMFR_16s(w, nullptr, w, 10, w));
    EXPECT_EQ(vekStsNullPtrErr, veksCrossCorrLagMax_16s(w, w, 10, 10, nullptr, &lag));
    EXPECT_EQ(vekStsNullPtrErr, veksWeightingFilter_GSMFR_16s(w, nullptr, 10));
    EXPECT_EQ(vekStsNullPtrErr, veksRPEQuantDecode_GSMFR_16s(codes, 0, 0, nullptr));
    for (const int bad : {0, -1, 65537}) {
        EXPECT_EQ(vekStsSizeErr, veksHighPassFilter_GSMFR_16s(w, w, bad, l));
        EXPECT_EQ(vekStsSizeErr, veksPreemphasize_GSMFR_16s(w, w, bad, w));
        EXPECT_EQ(vekStsSizeErr, veksDeemphasize_GSMFR_16s_I(w, bad, w));
        EXPECT_EQ(vekStsSizeErr, veksSchur_GSMFR_32s16s(l, w, bad));
        EXPECT_EQ(vekStsSizeErr, veksShortTermAnalysisFilter_GSMFR_16s_I(w, w, bad, w));
        EXPECT_EQ(vekStsSizeErr, veksShortTermSynthesisFilter_GSMFR_16s(w, w, w, bad, w));
        EXPECT_EQ(vekStsSizeErr, veksCrossCorrLagMax_16s(w, w, bad, 10, l, &lag));
        EXPECT_EQ(vekStsRangeErr, veksCrossCorrLagMax_16s(w, w, 10, bad, l, &lag));
        EXPECT_EQ(vekStsSizeErr, veksWeightingFilter_GSMFR_16s(w, w, bad));
    }
    EXPECT_EQ(vekStsSizeErr, veksSchur_GSMFR_32s16s(l, w, 9));
    for (const auto& [mantissa, exponent] : {std::pair<Vek16s, Vek16s>{-1, 0}, {8, 0}, {0, -5}, {0, 7}}) {
        EXPECT_EQ(vekStsRangeErr, veksRPEQuantDecode_GSMFR_16s(codes, mantissa, exponent, w));
    }
    codes[12] = 8;
    EXPECT_EQ(vekStsRangeErr, veksRPEQuantDecode_GSMFR_16s(codes, 0, 0, w));
    EXPECT_EQ(w[0], 1) << "nothing is written";
}

} // namespace
