// Pre-emphasis, recursion and spectral conversions against their definitions in double precision.
#include "lp_reference.h"

#include <algorithm>
#include <cmath>

#include "sc/common/fixmath.h"
#include "sc/g729/lsptables.h"
#include "veksc.h"

namespace {

using lpref::clip;

Samples emphasised(int gamma, const Samples& x, int before) {
    Samples y;
    for (const int16_t sample : x) {
        y.push_back(static_cast<int16_t>(clip(sample - clip((gamma * before) >> 15, 16), 16)));
        before = sample;
    }
    return y;
}

TEST(VekPreemphasize, SubtractsTheScaledPredecessorAndKeepsTheLastInput) {
    std::mt19937 random(1);
    for (const int gamma : {26214, 0, -16384, 32767, -32768}) {
        for (const int n : {1, 2, 16, 17, 33, 40, 80}) {
            const Samples x = noise(random, n, -32768, 32767);
            int16_t memory = -32768;
            Samples y(x.size());
            ASSERT_EQ(vekStsNoErr,
                      veksPreemphasize_G729A_16s(static_cast<int16_t>(gamma), x.data(), y.data(), n, &memory));
            EXPECT_EQ(emphasised(gamma, x, -32768), y);
            EXPECT_EQ(x.back(), memory);
            Samples z = x;
            memory = -32768;
            ASSERT_EQ(vekStsNoErr, veksPreemphasize_G729A_16s_I(static_cast<int16_t>(gamma), z.data(), n, &memory));
            EXPECT_EQ(y, z);
            EXPECT_EQ(x.back(), memory);
        }
    }
}

TEST(VekPreemphasize, SaturatesProductAndDifference) {
    const int16_t x[] = {32767, -32768, 32767};
    int16_t y[3];
    int16_t memory = 0;
    ASSERT_EQ(vekStsNoErr, veksPreemphasize_G729A_16s(32767, x, y, 3, &memory));
    EXPECT_EQ(32767, y[0]);
    EXPECT_EQ(-32768, y[1]);
    EXPECT_EQ(32767, y[2]);
}

TEST(VekPreemphasize, FloatFormIsTheDifferenceOfExactValues) {
    float x[] = {8, 4, -2, 16};
    float memory = 2;
    ASSERT_EQ(vekStsNoErr, veksPreemphasize_32f_I(x, 4, &memory, 0.5F));
    EXPECT_EQ(7, x[0]);
    EXPECT_EQ(0, x[1]);
    EXPECT_EQ(-4, x[2]);
    EXPECT_EQ(17, x[3]);
    EXPECT_EQ(16, memory);
    std::mt19937 random(2);
    for (const int n : {1, 15, 16, 17, 33, 160}) {
        const Samples whole = noise(random, n, -1000, 1000);
        std::vector<float> y(whole.begin(), whole.end());
        float before = 3;
        ASSERT_EQ(vekStsNoErr, veksPreemphasize_32f_I(y.data(), n, &before, 0.25F));
        for (size_t i = 0; i < y.size(); ++i) {
            ASSERT_EQ(static_cast<float>(whole[i]) - 0.25F * (i > 0 ? static_cast<float>(whole[i - 1]) : 3.0F), y[i]);
        }
        EXPECT_EQ(static_cast<float>(whole.back()), before);
    }
}

TEST(VekPreemphasize, RefusesNullAndLengthsOutOfRange) {
    int16_t x[4] = {1, 2, 3, 4};
    int16_t y[4] = {};
    int16_t memory = 7;
    float f[4] = {};
    float m = 0;
    expectNullsRefused(veksPreemphasize_G729A_16s, 1, x, y, 4, &memory);
    expectNullsRefused(veksPreemphasize_G729A_16s_I, 1, x, 4, &memory);
    expectNullsRefused(veksPreemphasize_32f_I, f, 4, &m, 1);
    EXPECT_EQ(vekStsSizeErr, veksPreemphasize_G729A_16s(1, x, y, 0, &memory));
    EXPECT_EQ(vekStsSizeErr, veksPreemphasize_G729A_16s_I(1, x, 65537, &memory));
    EXPECT_EQ(vekStsSizeErr, veksPreemphasize_32f_I(f, -1, &m, 1));
    EXPECT_EQ(7, memory);
    EXPECT_EQ(4, x[3]);
}

constexpr double kPi = 3.14159265358979;

// Ten rising angles of pairs, apart from each other as those of speech.
std::vector<double> angles(std::mt19937& random) {
    std::uniform_real_distribution<double> step(0.08, 0.4);
    std::vector<double> at(11);
    double sum = 0;
    for (double& a : at) {
        sum += step(random);
        a = sum;
    }
    at.pop_back();
    for (double& a : at) {
        a *= kPi / sum;
    }
    return at;
}

// Sum and difference polynomials multiplied out.
std::vector<double> coefficientsOf(const std::vector<double>& at) {
    std::vector<double> p = {1, 1};
    std::vector<double> q = {1, -1};
    for (size_t i = 0; i < at.size(); ++i) {
        std::vector<double>& f = i % 2 == 0 ? p : q;
        std::vector<double> g(f.size() + 2, 0.0);
        for (size_t j = 0; j < f.size(); ++j) {
            g[j] += f[j];
            g[j + 1] -= 2 * std::cos(at[i]) * f[j];
            g[j + 2] += f[j];
        }
        f = g;
    }
    std::vector<double> a;
    for (size_t j = 0; j <= at.size(); ++j) {
        a.push_back((p[j] + q[j]) / 2);
    }
    return a;
}

TEST(VekSpectralPairs, CoefficientsAreTheProductsOfThePairs) {
    std::mt19937 random(2);
    for (int round = 0; round < 200; ++round) {
        const std::vector<double> at = angles(random);
        Samples lsp(10);
        std::vector<float> lspFloat(10);
        for (size_t i = 0; i < 10; ++i) {
            lsp[i] = static_cast<int16_t>(std::lround(32767 * std::cos(at[i])));
            lspFloat[i] = static_cast<float>(std::cos(at[i]));
        }
        const std::vector<double> want = coefficientsOf(at);
        Samples a(11);
        std::vector<float> aFloat(11);
        ASSERT_EQ(vekStsNoErr, veksLSPToLPC_G729_16s(lsp.data(), a.data()));
        ASSERT_EQ(vekStsNoErr, veksLSPToLPC_G729_32f(lspFloat.data(), aFloat.data()));
        EXPECT_EQ(4096, a[0]);
        EXPECT_EQ(1.0F, aFloat[0]);
        for (size_t j = 0; j <= 10; ++j) {
            ASSERT_NEAR(want[j] * 4096, a[j], 12) << j;
            ASSERT_NEAR(want[j], aFloat[j], 2e-5) << j;
        }
    }
}

TEST(VekSpectralPairs, EqualPairsSaturateInsteadOfWrapping) {
    const Samples lsp(10, -32768);
    Samples a(11);
    ASSERT_EQ(vekStsNoErr, veksLSPToLPC_G729_16s(lsp.data(), a.data()));
    // (1 + z)^10 in Q12 has 10 * 4096 in second place, which the word cuts to its lower 16 bits.
    EXPECT_EQ(static_cast<int16_t>(40960), a[1]);
}

TEST(VekSpectralPairs, AreTheRootsOfTheCoefficients) {
    std::mt19937 random(3);
    int whole = 0;
    for (int round = 0; round < 300; ++round) {
        const std::vector<double> at = angles(random);
        const std::vector<double> exact = coefficientsOf(at);
        Samples a(11);
        std::vector<float> aFloat(11);
        for (size_t j = 0; j <= 10; ++j) {
            a[j] = static_cast<int16_t>(clip(std::lround(exact[j] * 4096), 16));
            aFloat[j] = static_cast<float>(exact[j]);
        }
        const std::vector<float> previous(10, 0.5F);
        for (const bool annexA : {false, true}) {
            std::vector<float> found(10);
            const auto search = annexA ? veksLPCToLSP_G729A_32f : veksLPCToLSP_G729_32f;
            if (search(aFloat.data(), previous.data(), found.data()) == vekStsNoErr) {
                ++whole;
                for (size_t i = 0; i < 10; ++i) {
                    ASSERT_NEAR(std::cos(at[i]), found[i], annexA ? 1e-3 : 2e-4) << round;
                }
            }
            Samples foundFixed(10);
            const Samples previousFixed(10, 100);
            const auto searchFixed = annexA ? veksLPCToLSP_G729A_16s : veksLPCToLSP_G729_16s;
            if (searchFixed(a.data(), previousFixed.data(), foundFixed.data()) == vekStsNoErr) {
                for (size_t i = 0; i < 10; ++i) {
                    ASSERT_NEAR(32768 * std::cos(at[i]), foundFixed[i], 100) << round;
                }
            }
        }
    }
    EXPECT_GT(whole, 500);
}

TEST(VekSpectralPairs, OfAFlatSpectrumAreEvenlySpread) {
    const Samples a = {4096, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    const Samples previous(10, 2000);
    Samples lsp(10);
    ASSERT_EQ(vekStsNoErr, veksLPCToLSP_G729_16s(a.data(), previous.data(), lsp.data()));
    for (int i = 0; i < 10; ++i) {
        EXPECT_NEAR(32768 * std::cos((i + 1) * kPi / 11), lsp[static_cast<size_t>(i)], 12) << i;
    }
}

TEST(VekSpectralPairs, WithoutTenRootsThePreviousOnesAreGiven) {
    Samples a(11, 0);
    a[0] = 4096;
    a[10] = 8000; // a root outside the unit circle
    Samples previous = {30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000, -26000};
    Samples lsp(10, 1);
    EXPECT_EQ(vekStsUnstableFilter, veksLPCToLSP_G729_16s(a.data(), previous.data(), lsp.data()));
    EXPECT_EQ(previous, lsp);
    lsp.assign(10, 1);
    EXPECT_EQ(vekStsUnstableFilter, veksLPCToLSP_G729A_16s(a.data(), previous.data(), lsp.data()));
    EXPECT_EQ(previous, lsp);
    const std::vector<float> f = {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2};
    const std::vector<float> before = {.9F, .8F, .7F, .6F, .5F, .4F, .3F, .2F, .1F, 0};
    std::vector<float> now(10);
    EXPECT_EQ(vekStsUnstableFilter, veksLPCToLSP_G729_32f(f.data(), before.data(), now.data()));
    EXPECT_EQ(before, now);
}

// The search for the pairs, one point after the other, with products of split words and sums that cannot overflow.
struct PairSearch {
    int points, bisections;

    static int clipped(int64_t v) { return static_cast<int>(std::clamp<int64_t>(v, -32768, 32767)); }
    static int64_t times(int64_t t, int x) { return (t >> 16) * x + ((((t >> 1) & 0x7fff) * x) >> 15); }

    static int series(const std::vector<int64_t>& f, int x) {
        int64_t b2 = 1 << 24;
        int64_t t = x * 1024 + f[1] * 16384;
        for (size_t i = 2; i < 5; ++i) {
            const int64_t next = 4 * times(t, x) - b2 + f[i] * 16384;
            b2 = t & ~int64_t{1};
            t = next;
        }
        return clipped((2 * times(t, x) - b2 + f[5] * 8192) >> 10);
    }

    static int crossing(int xLow, int yLow, int xHigh, int yHigh) {
        const int width = clipped(xHigh - xLow);
        const int rise = clipped(yHigh - yLow);
        if (rise == 0) {
            return xLow;
        }
        int steep = std::min(std::abs(rise), 32767);
        int exponent = 0;
        for (; steep < 16384; steep *= 2) {
            ++exponent;
        }
        const auto slope = static_cast<int16_t>((int64_t{2} * width * ((16383 << 15) / steep)) >> (20 - exponent));
        const int turned = rise < 0 ? clipped(-slope) : slope;
        return clipped(xLow - static_cast<int16_t>((int64_t{2} * yLow * turned) >> 11));
    }

    Samples operator()(const Samples& a) const {
        std::vector<std::vector<int64_t>> f(2, {1024});
        for (size_t i = 0; i < 5; ++i) {
            f[0].push_back(clipped(static_cast<int16_t>((a[i + 1] + a[10 - i]) >> 2) - f[0][i]));
            f[1].push_back(clipped(static_cast<int16_t>((a[i + 1] - a[10 - i]) >> 2) + f[1][i]));
        }
        const auto at = [this](int j) {
            const double ends = j == 0 ? 32760 : -32760;
            return static_cast<int>(j == 0 || j == points ? ends : std::trunc(32768 * std::cos(kPi * j / points)));
        };
        Samples found;
        int xLow = at(0);
        int yLow = series(f[0], xLow);
        for (int j = 1; j <= points && found.size() < 10; ++j) {
            int xHigh = xLow;
            int yHigh = yLow;
            xLow = at(j);
            yLow = series(f[found.size() % 2], xLow);
            if (yLow * yHigh > 0) {
                continue;
            }
            for (int i = 0; i < bisections; ++i) {
                const int x = (xLow >> 1) + (xHigh >> 1);
                const int y = series(f[found.size() % 2], x);
                const bool upper = yLow * y <= 0;
                (upper ? yHigh : yLow) = y;
                (upper ? xHigh : xLow) = x;
            }
            xLow = crossing(xLow, yLow, xHigh, yHigh);
            found.push_back(static_cast<int16_t>(xLow));
            yLow = series(f[found.size() % 2], xLow);
        }
        return found;
    }
};

TEST(VekSpectralPairs, HaveTheBitsOfTheSearchWrittenOut) {
    atEveryLevel([] {
        std::mt19937 random(21);
        std::uniform_int_distribution<int> any(-32768, 32767);
        int whole = 0;
        for (int round = 0; round < 3000; ++round) {
            Samples a = {4096};
            const int down = round % 6;
            for (int i = 0; i < 10; ++i) {
                a.push_back(static_cast<int16_t>(any(random) >> down >> (i * (round % 3) / 4)));
            }
            const Samples previous(10, 7);
            for (const auto& [search, want] : {std::pair{&veksLPCToLSP_G729_16s, PairSearch{60, 4}(a)},
                                               std::pair{&veksLPCToLSP_G729A_16s, PairSearch{50, 2}(a)}}) {
                Samples lsp(10);
                const VekStatus status = search(a.data(), previous.data(), lsp.data());
                ASSERT_EQ(want.size() == 10 ? vekStsNoErr : vekStsUnstableFilter, status) << round;
                ASSERT_EQ(want.size() == 10 ? want : previous, lsp) << round;
                whole += want.size() == 10 ? 1 : 0;
            }
        }
        EXPECT_GT(whole, 500);
    });
}

// A pair that lies above the one before it is measured from the step of that one, or of an earlier one: steps are only
// ever left downwards.
TEST(VekSpectralPairs, OutOfOrderAreMeasuredFromTheStepThatWasReached) {
    using namespace vek;
    std::mt19937 random(12);
    std::uniform_int_distribution<int> any(-32768, 32767);
    for (int round = 0; round < 2000; ++round) {
        Samples lsp(10);
        for (int16_t& v : lsp) {
            v = static_cast<int16_t>(any(random));
        }
        if (round % 2 == 0) {
            std::sort(lsp.rbegin(), lsp.rend());
            std::swap(lsp[static_cast<size_t>(round) % 9], lsp[static_cast<size_t>(round) % 9 + 1]);
        }
        Samples norm(10), wide(10), want(10), wantWide(10);
        int place = 63;
        for (size_t i = 10; i-- > 0;) {
            while (g729::kCos[place] < lsp[i]) {
                --place;
            }
            const int product = g729::kAcosSlope[place] * fix::sub(lsp[i], g729::kCos[place]);
            want[i] = fix::sat16((product + place * (1 << 20) + 0x800) >> 12);
            wantWide[i] = fix::mult(fix::sat16(place * 512 + fix::extract_l(product >> 11)), 25736);
        }
        ASSERT_EQ(vekStsNoErr, veksLSPToLSF_Norm_G729_16s(lsp.data(), norm.data()));
        ASSERT_EQ(vekStsNoErr, veksLSPToLSF_G729_16s(lsp.data(), wide.data()));
        ASSERT_EQ(want, norm) << round;
        ASSERT_EQ(wantWide, wide) << round;
    }
}

TEST(VekSpectralPairs, RefuseNull) {
    int16_t x[11] = {};
    float f[11] = {};
    for (const auto search : {veksLPCToLSP_G729_16s, veksLPCToLSP_G729A_16s, veksLPCToLSP_GSMAMR_16s}) {
        expectNullsRefused(search, x, x, x);
    }
    for (const auto search : {veksLPCToLSP_G729_32f, veksLPCToLSP_G729A_32f}) {
        expectNullsRefused(search, f, f, f);
    }
    for (const auto convert :
         {veksLSPToLPC_G729_16s, veksLSPToLSF_Norm_G729_16s, veksLSPToLSF_G729_16s, veksLSFToLSP_G729_16s}) {
        expectNullsRefused(convert, x, x);
    }
    expectNullsRefused(veksLSPToLPC_G729_32f, f, f);
}

struct Recursion {
    std::vector<double> a, rc;
    double error;
};

Recursion recursion(const std::vector<double>& r, int order) {
    Recursion x = {{1}, {}, r[0]};
    for (int i = 1; i <= order; ++i) {
        double sum = 0;
        for (int j = 0; j < i; ++j) {
            sum += x.a[static_cast<size_t>(j)] * r[static_cast<size_t>(i - j)];
        }
        const double k = -sum / x.error;
        std::vector<double> next = x.a;
        next.push_back(k);
        for (int j = 1; j < i; ++j) {
            next[static_cast<size_t>(j)] += k * x.a[static_cast<size_t>(i - j)];
        }
        x.a = next;
        x.rc.push_back(k);
        x.error *= 1 - k * k;
    }
    return x;
}

TEST(VekLevinsonDurbin, AgreesWithDoublePrecisionAtAllOrders) {
    std::mt19937 random(6);
    for (const int order : {1, 2, 10, 15, 20, 25, 30, 32}) {
        for (int round = 0; round < 30; ++round) {
            const std::vector<int16_t> x = noise(random, 300, -1000, 1000);
            std::vector<double> r;
            std::vector<int32_t> fixedR;
            std::vector<float> floatR;
            for (int lag = 0; lag <= order; ++lag) {
                double sum = 0;
                for (size_t i = static_cast<size_t>(lag) + 2; i < x.size(); ++i) {
                    const size_t j = i - static_cast<size_t>(lag);
                    sum += (x[i] + x[i - 1] + 0.5 * x[i - 2]) * (x[j] + x[j - 1] + (j < 2 ? 0 : 0.5 * x[j - 2]));
                }
                r.push_back(lag == 0 ? sum * 1.05 : sum * std::exp(-0.0005 * lag * lag));
                fixedR.push_back(static_cast<int32_t>(r.back() / r[0] * 2e9));
                floatR.push_back(static_cast<float>(r.back()));
            }
            const Recursion want = recursion(r, order);
            const auto size = static_cast<size_t>(order);
            Samples a(size + 1);
            Samples rc(size);
            int16_t err = 0;
            ASSERT_EQ(vekStsNoErr, veksLevinsonDurbin_G729_32s16s(fixedR.data(), order, a.data(), rc.data(), &err));
            std::vector<float> aFloat(size + 1);
            std::vector<float> rcFloat(size);
            float errFloat = 0;
            ASSERT_EQ(vekStsNoErr,
                      veksLevinsonDurbin_G729_32f(floatR.data(), order, aFloat.data(), rcFloat.data(), &errFloat));
            for (size_t j = 0; j <= size; ++j) {
                ASSERT_NEAR(want.a[j] * 4096, a[j], 3) << order;
                ASSERT_NEAR(want.a[j], aFloat[j], 2e-4) << order;
            }
            for (size_t j = 0; j < size; ++j) {
                ASSERT_NEAR(want.rc[j] * 32768, rc[j], 6) << order;
                ASSERT_NEAR(want.rc[j], rcFloat[j], 1e-4) << order;
            }
            ASSERT_NEAR(want.error / r[0] * 2e9 / 65536, err, 8);
            ASSERT_NEAR(want.error / r[0], errFloat / floatR[0], 1e-4);
        }
    }
}

TEST(VekLevinsonDurbin, InFloatingPointHasTheSameFloatsAtAllLevelsAndWritesNoMore) {
    std::mt19937 random(91);
    for (int order = 1; order <= 32; ++order) {
        const auto size = static_cast<size_t>(order);
        const std::vector<int16_t> x = noise(random, 200, -1000, 1000);
        std::vector<float> r(size + 1);
        for (size_t lag = 0; lag <= size; ++lag) {
            for (size_t i = lag + 1; i < x.size(); ++i) {
                r[lag] += static_cast<float>((x[i] + x[i - 1]) * (x[i - lag] + (i > lag ? x[i - lag - 1] : 0)));
            }
        }
        std::vector<std::vector<float>> results;
        atEveryLevel([&] {
            std::vector<float> a(size + 2, 77);
            std::vector<float> rc(size + 1, 78);
            std::vector<float> error(1);
            ASSERT_EQ(vekStsNoErr, veksLevinsonDurbin_G729_32f(r.data(), order, a.data(), rc.data(), error.data()));
            EXPECT_EQ(1, a[0]);
            EXPECT_EQ(77, a.back());
            EXPECT_EQ(78, rc.back());
            EXPECT_EQ(a[size], rc[size - 1]);
            results.push_back(a);
            results.push_back(rc);
            results.push_back(error);
        });
        for (size_t i = 3; i < results.size(); ++i) {
            ASSERT_EQ(results[i % 3], results[i]) << order;
        }
    }
}

TEST(VekLevinsonDurbin, OfAnUnstableFilterLeavesTheLastOne) {
    // No signal has these correlations.
    const std::vector<int32_t> r = {1 << 30, 0, 1 << 30, 1 << 29, 0, 0, 0, 0, 0, 0, 0};
    Samples a(11, 77);
    Samples rc(10, 78);
    int16_t err = 79;
    EXPECT_EQ(vekStsUnstableFilter, veksLevinsonDurbin_G729_32s16s(r.data(), 10, a.data(), rc.data(), &err));
    EXPECT_EQ(Samples(11, 77), a);
    EXPECT_EQ(Samples(10, 78), rc);
    EXPECT_EQ(79, err);
    const std::vector<float> f = {1, 0, 2, 0};
    std::vector<float> aFloat(4, 5);
    std::vector<float> rcFloat(3, 6);
    float errFloat = 7;
    EXPECT_EQ(vekStsUnstableFilter, veksLevinsonDurbin_G729_32f(f.data(), 3, aFloat.data(), rcFloat.data(), &errFloat));
    EXPECT_EQ(std::vector<float>(4, 5), aFloat);
    EXPECT_EQ(7, errFloat);
}

TEST(VekLevinsonDurbin, RefusesNullOrdersAndEnergiesOutOfRange) {
    const std::vector<int32_t> r(34, 1 << 30);
    Samples a(34);
    Samples rc(34);
    int16_t err = 0;
    expectNullsRefused(veksLevinsonDurbin_G729B, r.data(), a.data(), rc.data(), &err);
    EXPECT_EQ(vekStsSizeErr, veksLevinsonDurbin_G729_32s16s(r.data(), 0, a.data(), rc.data(), &err));
    EXPECT_EQ(vekStsSizeErr, veksLevinsonDurbin_G729_32s16s(r.data(), 33, a.data(), rc.data(), &err));
    const std::vector<int32_t> low(11, (1 << 30) - 1);
    EXPECT_EQ(vekStsRangeErr, veksLevinsonDurbin_G729B(low.data(), a.data(), rc.data(), &err));
    const std::vector<float> silence(11, 0);
    std::vector<float> f(11);
    float e = 0;
    EXPECT_EQ(vekStsRangeErr, veksLevinsonDurbin_G729_32f(silence.data(), 10, f.data(), f.data(), &e));
    EXPECT_EQ(vekStsSizeErr, veksLevinsonDurbin_G729_32f(silence.data(), 33, f.data(), f.data(), &e));
    EXPECT_EQ(vekStsNullPtrErr, veksLevinsonDurbin_G729_32f(nullptr, 10, f.data(), f.data(), &e));
}

TEST(VekLevinsonDurbin, TakesTheLimitingCaseOfAConstantSignal) {
    const std::vector<int32_t> r(31, 1 << 30);
    for (const int order : {10, 15, 20, 25, 30}) {
        Samples a(31);
        Samples rc(30);
        int16_t err = -1;
        ASSERT_EQ(vekStsNoErr, veksLevinsonDurbin_G729_32s16s(r.data(), order, a.data(), rc.data(), &err)) << order;
        EXPECT_EQ(-32768, rc[0]);
        EXPECT_EQ(0, err);
    }
}

TEST(VekLevinsonDurbin, TakesAnyCorrelations) {
    std::mt19937 random(8);
    std::uniform_int_distribution<int32_t> any(INT32_MIN, INT32_MAX);
    int stable = 0;
    for (int round = 0; round < 20000; ++round) {
        std::vector<int32_t> r(33);
        const int reach = round % 33;
        for (int32_t& v : r) {
            v = any(random) >> (round % 7 == 0 ? 0 : reach % 31);
        }
        r[0] = (any(random) & 0x3fffffff) | 0x40000000;
        if (round % 5 == 0) {
            r[1] = round % 2 == 0 ? r[0] : -r[0];
            r[2] = round % 3 == 0 ? INT32_MIN : r[0];
        }
        Samples a(33, 77);
        Samples rc(32);
        int16_t err = -1;
        const VekStatus status = veksLevinsonDurbin_G729_32s16s(r.data(), 32, a.data(), rc.data(), &err);
        if (status == vekStsNoErr) {
            ++stable;
            EXPECT_EQ(4096, a[0]);
            EXPECT_GE(err, 0);
        } else {
            ASSERT_EQ(vekStsUnstableFilter, status);
            EXPECT_EQ(Samples(33, 77), a);
        }
    }
    EXPECT_GT(stable, 1000);
    EXPECT_LT(stable, 19000);
}

} // namespace
