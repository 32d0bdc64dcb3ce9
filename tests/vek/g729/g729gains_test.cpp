// Gains of G.729 and its annexes against their definition, and the noise of Annex B.
#include "lp_reference.h"
#include "veksc.h"

#include <cmath>

namespace {

TEST(VekRandomNoise, IsTheSumOfTwelveNumbersOfTheGenerator) {
    atEveryLevel([] {
        for (const int start : {1000, 0, -1, 11111}) {
            for (const int n : {1, 4, 40, 333}) {
                uint32_t state = static_cast<uint16_t>(start);
                Samples y(n);
                std::vector<float> f(n);
                int16_t seed = static_cast<int16_t>(start);
                int16_t realSeed = seed;
                ASSERT_EQ(vekStsNoErr, veksRandomNoiseExcitation_G729B_16s(&seed, y.data(), n));
                ASSERT_EQ(vekStsNoErr, veksRandomNoiseExcitation_G729B_16s32f(&realSeed, f.data(), n));
                for (int i = 0; i < n; ++i) {
                    int sum = 0;
                    for (int k = 0; k < 12; ++k) {
                        state = (state * 31821 + 13849) & 0xffff;
                        sum += static_cast<int16_t>(state);
                    }
                    ASSERT_EQ(static_cast<int>(std::floor(sum / 128.0)), y[i]);
                    ASSERT_EQ(static_cast<float>(sum / 128.0), f[i]);
                }
                ASSERT_EQ(static_cast<int16_t>(state), seed);
                ASSERT_EQ(seed, realSeed);
            }
        }
    });
}

TEST(VekRandomNoise, RefusesNullAndLengths) {
    int16_t seed = 5;
    int16_t y = 6;
    float f = 7;
    expectNullsRefused(veksRandomNoiseExcitation_G729B_16s, &seed, &y, 1);
    expectNullsRefused(veksRandomNoiseExcitation_G729B_16s32f, &seed, &f, 1);
    for (const int len : {0, -1, 65537}) {
        EXPECT_EQ(vekStsSizeErr, veksRandomNoiseExcitation_G729B_16s(&seed, &y, len));
        EXPECT_EQ(vekStsSizeErr, veksRandomNoiseExcitation_G729B_16s32f(&seed, &f, len));
    }
    EXPECT_EQ(5, seed);
    EXPECT_EQ(6, y);
    EXPECT_EQ(7, f);
}

struct Entry {
    int adaptive;
    int factor;
};

const std::vector<Entry> firsts = {{3242, 9949}, {1551, 2425}, {2678, 27162}, {1921, 9291},
                                   {1831, 5022}, {1, 1516},    {356, 14756},  {57, 5404}};
const std::vector<Entry> seconds = {{5142, 592},   {17299, 1861},  {6160, 2395},  {16112, 3392},
                                    {826, 2005},   {18973, 5935},  {1994, 0},     {15434, 237},
                                    {10573, 2966}, {15132, 4914},  {11569, 1196}, {14194, 1630},
                                    {8091, 4861},  {15161, 14276}, {9120, 525},   {13260, 3256}};
const std::vector<Entry> firstsD = {{5849, 0},    {3171, 9280}, {3617, 6747}, {4987, 22294},
                                    {2929, 1078}, {6068, 6093}, {9425, 2731}, {3915, 12872}};
const std::vector<Entry> secondsD = {{0, 4175}, {10828, 27602}, {16423, 15724}, {4478, 7324},
                                     {3988, 0}, {10291, 11385}, {11956, 10735}, {7876, 7821}};

// 3.9.1: the gain that the past predicts for a code vector of this energy, in 1.0.
double predicted(double energy, const Samples& past) {
    const double weights[] = {0.68, 0.58, 0.34, 0.19};
    double level = 30 - 10 * std::log10(energy / 67108864 / 40);
    for (size_t i = 0; i < 4; ++i) {
        level += weights[i] * past[i] / 1024.0;
    }
    return std::pow(10, level / 20);
}

const Samples fresh(4, -14336);

TEST(VekDecodeGain, FollowsTheDefinitionForAllCodes) {
    std::mt19937 random(1);
    for (int a = 0; a < 8; ++a) {
        for (int b = 0; b < 16; ++b) {
            Samples past = noise(random, 4, -14336, 5000);
            const Samples before = past;
            const int16_t codes[] = {static_cast<int16_t>(a), static_cast<int16_t>(b)};
            int16_t gains[2] = {};
            ASSERT_EQ(vekStsNoErr, veksDecodeGain_G729_16s(4 << 26, past.data(), codes, gains));
            EXPECT_EQ(firsts[a].adaptive + seconds[b].adaptive, gains[0]);
            const double factor = (firsts[a].factor + seconds[b].factor) / 8192.0;
            const double want = 2 * factor * predicted(4 << 26, before);
            EXPECT_NEAR(want, gains[1], 1.5 + 0.005 * want) << a << " " << b;
            EXPECT_NEAR(1024 * 20 * std::log10(factor), past[0], 8);
            EXPECT_EQ(Samples(before.begin(), before.end() - 1), Samples(past.begin() + 1, past.end()));
        }
    }
}

TEST(VekDecodeGain, CodesOfAFrameAsOneWordCountByTheirLowBits) {
    Samples past = fresh;
    Samples other = fresh;
    const int16_t wide[] = {86, 86};
    const int16_t low[] = {6, 6};
    int16_t gains[2] = {};
    int16_t same[2] = {};
    ASSERT_EQ(vekStsNoErr, veksDecodeGain_G729_16s(1 << 28, past.data(), wide, gains));
    ASSERT_EQ(vekStsNoErr, veksDecodeGain_G729_16s(1 << 28, other.data(), low, same));
    EXPECT_EQ(2350, gains[0]);
    EXPECT_EQ(same[0], gains[0]);
    EXPECT_EQ(same[1], gains[1]);
    EXPECT_EQ(other, past);
}

TEST(VekDecodeGain, LostFramesFadeTheGainsAndThePast) {
    const int16_t lost[] = {-1, 0};
    Samples past = {1000, 2000, -3000, 400};
    int16_t gains[] = {10000, 1000};
    ASSERT_EQ(vekStsNoErr, veksDecodeGain_G729I_16s(0, 32113, past.data(), lost, gains));
    EXPECT_EQ(9000, gains[0] + 1);
    EXPECT_EQ(980, gains[1]);
    EXPECT_EQ((Samples{100 - 4096, 1000, 2000, -3000}), past);
    int16_t loud[] = {18000, 1000};
    past = fresh;
    ASSERT_EQ(vekStsNoErr, veksDecodeGain_G729I_16s(0, 16384, past.data(), lost, loud));
    EXPECT_EQ(14745, loud[0]);
    EXPECT_EQ(500, loud[1]);
    EXPECT_EQ(fresh, past);
}

TEST(VekDecodeGain, FormOfAnnexIDecodesGoodFramesAlike) {
    const int16_t codes[] = {3, 9};
    Samples past = fresh;
    Samples other = fresh;
    int16_t gains[] = {1, 2};
    int16_t same[] = {3, 4};
    ASSERT_EQ(vekStsNoErr, veksDecodeGain_G729I_16s(1 << 28, 0, past.data(), codes, gains));
    ASSERT_EQ(vekStsNoErr, veksDecodeGain_G729_16s(1 << 28, other.data(), codes, same));
    EXPECT_EQ(same[0], gains[0]);
    EXPECT_EQ(same[1], gains[1]);
    EXPECT_EQ(other, past);
}

TEST(VekDecodeGain, RefusesNullAndCodesOutOfRange) {
    Samples past = fresh;
    int16_t gains[] = {7, 8};
    const int16_t good[] = {1, 1};
    expectNullsRefused(veksDecodeGain_G729_16s, 1, past.data(), good, gains);
    expectNullsRefused(veksDecodeGain_G729I_16s, 1, 1, past.data(), good, gains);
    EXPECT_EQ(vekStsRangeErr, veksDecodeGain_G729_16s(-1, past.data(), good, gains));
    EXPECT_EQ(vekStsRangeErr, veksDecodeGain_G729I_16s(-1, 1, past.data(), good, gains));
    EXPECT_EQ(vekStsRangeErr, veksDecodeGain_G729I_16s(1, -1, past.data(), good, gains));
    for (const auto& [a, b] : {std::pair{-1, 0}, {128, 0}, {0, -1}, {0, 128}}) {
        const int16_t bad[] = {static_cast<int16_t>(a), static_cast<int16_t>(b)};
        EXPECT_EQ(vekStsRangeErr, veksDecodeGain_G729_16s(1, past.data(), bad, gains));
        EXPECT_EQ(a == -1 ? vekStsNoErr : vekStsRangeErr,
                  veksDecodeGain_G729I_16s(1, 32113, Samples(fresh).data(), bad, Samples(2).data()));
    }
    EXPECT_EQ(fresh, past);
    EXPECT_EQ(7, gains[0]);
    EXPECT_EQ(8, gains[1]);
}

// A subframe: target from an adaptive and a code vector with known gains and some noise.
struct Subframe {
    Samples target, adaptive, code = Samples(40), z = Samples(40);
    std::vector<double> terms;

    Subframe(std::mt19937& random, double pitch, double gain) : adaptive(noise(random, 40, -2000, 2000)) {
        for (int t = 0; t < 4; ++t) {
            const auto at = static_cast<size_t>(5 * noise(random, 1, 0, 7)[0] + t);
            code[at] = static_cast<int16_t>(noise(random, 1, 0, 1)[0] == 0 ? 8191 : -8192);
        }
        double response = 4096;
        for (size_t n = 0; n < 40; ++n, response *= -0.7) {
            for (size_t i = 0; i + n < 40; ++i) {
                z[i + n] = static_cast<int16_t>(z[i + n] + std::lround(code[i] * response / 8192));
            }
        }
        for (size_t i = 0; i < 40; ++i) {
            target.push_back(
                static_cast<int16_t>(pitch * adaptive[i] + gain * z[i] / 4096 + noise(random, 1, -50, 50)[0]));
        }
        terms.assign(5, 0);
        for (size_t i = 0; i < 40; ++i) {
            const double x = target[i];
            const double y = adaptive[i];
            const double filtered = z[i] / 4096.0;
            terms[0] += y * y;
            terms[1] -= 2 * x * y;
            terms[2] += filtered * filtered;
            terms[3] -= 2 * x * filtered;
            terms[4] += 2 * y * filtered;
        }
    }

    double error(double gp, double gc) const {
        return gp * gp * terms[0] + gp * terms[1] + gc * gc * terms[2] + gc * terms[3] + gp * gc * terms[4];
    }
    double energy() const {
        double e = 0;
        for (const double v : code) {
            e += v * v;
        }
        return e;
    }
};

using Quantiser = VekStatus (*)(const Vek16s*, const Vek16s*, const Vek16s*, const Vek16s*, Vek16s*, Vek16s*, Vek16s*,
                                Vek16s);

// The windows of entries around the best gains, where these may be off a little.
struct Windows {
    double least = -1e30; // The largest of their least errors.
    int lowFactor = 32767;
    int highFactor = -32768;
    int lowAdaptive = 32767;
    int highAdaptive = -32768;
};

Windows windowsOf(const Subframe& s, std::vector<Entry> one, std::vector<Entry> two, size_t tried1, size_t tried2,
                  double unit, double size) {
    std::sort(one.begin(), one.end(), [](const Entry& a, const Entry& b) { return a.factor < b.factor; });
    std::sort(two.begin(), two.end(), [](const Entry& a, const Entry& b) { return a.adaptive < b.adaptive; });
    const std::vector<double>& t = s.terms;
    const double determinant = 4 * t[0] * t[2] - t[4] * t[4];
    const double bestPitch = (t[4] * t[3] - 2 * t[2] * t[1]) / determinant;
    const double bestGain = (t[4] * t[1] - 2 * t[0] * t[3]) / determinant;
    const auto from = [](auto below, size_t tried, size_t entries) {
        return std::min(std::max(static_cast<size_t>(below), tried / 2) - tried / 2, entries - tried);
    };
    Windows windows;
    for (const double off : {-0.006, 0.006}) {
        for (const double other : {-0.006, 0.006}) {
            const size_t from1 =
                from(std::count_if(one.begin(), one.end(),
                                   [&](const Entry& e) { return bestGain * (1 + off) > e.factor / unit * size; }),
                     tried1, one.size());
            const size_t from2 =
                from(std::count_if(two.begin(), two.end(),
                                   [&](const Entry& e) { return bestPitch * (1 + other) > e.adaptive / 16384.0; }),
                     tried2, two.size());
            double least = 1e30;
            for (size_t i = from1; i < from1 + tried1; ++i) {
                for (size_t j = from2; j < from2 + tried2; ++j) {
                    least = std::min(least, s.error((one[i].adaptive + two[j].adaptive) / 16384.0,
                                                    (one[i].factor + two[j].factor) / unit * size));
                }
            }
            windows.least = std::max(windows.least, least);
            windows.lowFactor = std::min<int>(windows.lowFactor, one[from1].factor);
            windows.highFactor = std::max<int>(windows.highFactor, one[from1 + tried1 - 1].factor);
            windows.lowAdaptive = std::min<int>(windows.lowAdaptive, two[from2].adaptive);
            windows.highAdaptive = std::max<int>(windows.highAdaptive, two[from2 + tried2 - 1].adaptive);
        }
    }
    return windows;
}

void expectLeastOfNearest(Quantiser quantise, const std::vector<Entry>& one, const std::vector<Entry>& two,
                          size_t tried1, size_t tried2, double unit) {
    std::mt19937 random(2);
    for (int round = 0; round < 300; ++round) {
        const Subframe s(random, round % 12 * 0.1, 100 + 10 * round);
        Samples past = noise(random, 4, -5000, 2000);
        const double size = predicted(s.energy(), past);
        Samples gains(2), codes(2);
        ASSERT_EQ(vekStsNoErr, quantise(s.target.data(), s.adaptive.data(), s.code.data(), s.z.data(), past.data(),
                                        gains.data(), codes.data(), 0));
        const Entry a = one[static_cast<size_t>(codes[0])];
        const Entry b = two[static_cast<size_t>(codes[1])];
        const double factor = (a.factor + b.factor) / unit;
        EXPECT_EQ(a.adaptive + b.adaptive, gains[0]);
        EXPECT_NEAR(2 * factor * size, gains[1], 2 + 0.005 * 2 * factor * size);
        EXPECT_NEAR(1024 * std::max(20 * std::log10(factor), -24.08), past[0], 10);
        // Rounding of the prediction costs little.
        const Windows windows = windowsOf(s, one, two, tried1, tried2, unit, size);
        ASSERT_LE(s.error(gains[0] / 16384.0, factor * size), windows.least + 0.002 * std::abs(windows.least)) << round;
        // Nor are others tried.
        ASSERT_GE(a.factor, windows.lowFactor) << round;
        ASSERT_LE(a.factor, windows.highFactor) << round;
        ASSERT_GE(b.adaptive, windows.lowAdaptive) << round;
        ASSERT_LE(b.adaptive, windows.highAdaptive) << round;
    }
}

TEST(VekGainQuant, HasTheLeastErrorOfTheEntriesNearestToTheBestGains) {
    atEveryLevel([] { expectLeastOfNearest(veksGainQuant_G729_16s, firsts, seconds, 4, 8, 8192); });
}

TEST(VekGainQuant, HasTheLeastErrorOfTheEntriesNearestToTheBestGainsInAnnexD) {
    atEveryLevel([] { expectLeastOfNearest(veksGainQuant_G729D_16s, firstsD, secondsD, 6, 6, 16384); });
}

TEST(VekGainQuant, DecoderGivesTheSameGains) {
    std::mt19937 random(3);
    Samples past = fresh;
    Samples other = fresh;
    for (int round = 0; round < 100; ++round) {
        const Subframe s(random, 0.7, 300);
        Samples gains(2), codes(2), back(2);
        ASSERT_EQ(vekStsNoErr, veksGainQuant_G729_16s(s.target.data(), s.adaptive.data(), s.code.data(), s.z.data(),
                                                      past.data(), gains.data(), codes.data(), 0));
        Vek32s energy = 0;
        veksDotProd_G729A_16s32s(s.code.data(), s.code.data(), 40, &energy);
        ASSERT_EQ(vekStsNoErr, veksDecodeGain_G729_16s(energy, other.data(), codes.data(), back.data()));
        ASSERT_EQ(gains, back);
        ASSERT_EQ(past, other);
    }
}

TEST(VekGainQuant, SilenceTakesTheSmallestFactors) {
    const Samples none(40);
    Samples past = fresh;
    Samples gains(2), codes(2);
    ASSERT_EQ(vekStsNoErr, veksGainQuant_G729_16s(none.data(), none.data(), none.data(), none.data(), past.data(),
                                                  gains.data(), codes.data(), 0));
    EXPECT_EQ((Samples{5, 6}), codes);
    EXPECT_EQ(1 + 1994, gains[0]);
}

TEST(VekGainQuant, FullScaleIsWeighedWithoutSaturation) {
    // The target is the adaptive vector alone, at the largest size; the fixed vector is orthogonal to it.
    Samples x(40), z(40), code(40), past(4, 0);
    for (size_t i = 0; i < 40; ++i) {
        x[i] = i % 2 == 0 ? 32767 : -32768;
        z[i] = i % 4 < 2 ? 32767 : -32768;
        code[i] = i % 10 == 0 ? 8191 : 0;
    }
    Samples gains(2), codes(2);
    ASSERT_EQ(vekStsNoErr, veksGainQuant_G729_16s(x.data(), x.data(), code.data(), z.data(), past.data(), gains.data(),
                                                  codes.data(), 0));
    EXPECT_NEAR(16384, gains[0], 1300);
    // Target -x / 2: no adaptive gain helps, the smallest entries of all are taken.
    Samples against(40);
    for (size_t i = 0; i < 40; ++i) {
        against[i] = static_cast<int16_t>(-x[i] / 2);
    }
    past = fresh;
    ASSERT_EQ(vekStsNoErr, veksGainQuant_G729_16s(against.data(), x.data(), code.data(), z.data(), past.data(),
                                                  gains.data(), codes.data(), 0));
    EXPECT_EQ((Samples{5, 4}), codes);
}

TEST(VekGainQuant, TamedGainStaysBelowOne) {
    std::mt19937 random(4);
    for (const Quantiser quantise : {veksGainQuant_G729_16s, veksGainQuant_G729D_16s}) {
        int above = 0;
        for (int round = 0; round < 100; ++round) {
            const Subframe s(random, 1.2, 100);
            Samples past = fresh;
            Samples gains(2), codes(2);
            ASSERT_EQ(vekStsNoErr, quantise(s.target.data(), s.adaptive.data(), s.code.data(), s.z.data(), past.data(),
                                            gains.data(), codes.data(), 0));
            above += gains[0] >= 16383 ? 1 : 0;
            ASSERT_EQ(vekStsNoErr, quantise(s.target.data(), s.adaptive.data(), s.code.data(), s.z.data(), past.data(),
                                            gains.data(), codes.data(), 1));
            EXPECT_LT(gains[0], 16383);
        }
        EXPECT_GT(above, 90);
    }
}

TEST(VekGainQuant, RefusesNullAndOtherFlags) {
    Samples x(40, 1), past = fresh, gains(2, 7), codes(2, 8);
    for (const Quantiser quantise : {veksGainQuant_G729_16s, veksGainQuant_G729D_16s}) {
        int16_t* p[] = {x.data(), x.data(), x.data(), x.data(), past.data(), gains.data(), codes.data()};
        for (int16_t*& one : p) {
            int16_t* const kept = one;
            one = nullptr;
            EXPECT_EQ(vekStsNullPtrErr, quantise(p[0], p[1], p[2], p[3], p[4], p[5], p[6], 0));
            one = kept;
        }
        EXPECT_EQ(vekStsRangeErr, quantise(p[0], p[1], p[2], p[3], p[4], p[5], p[6], -1));
        EXPECT_EQ(vekStsRangeErr, quantise(p[0], p[1], p[2], p[3], p[4], p[5], p[6], 2));
    }
    EXPECT_EQ(fresh, past);
    EXPECT_EQ(Samples(2, 7), gains);
    EXPECT_EQ(Samples(2, 8), codes);
}

using Search = VekStatus (*)(const Vek32f*, const Vek16s*, Vek16s*, int, Vek32f);

void expectLeastOfWindow(Search search, std::vector<Entry> one, std::vector<Entry> two, size_t tried1, size_t tried2,
                         double unit) {
    const std::vector<Entry> codes1 = one;
    const std::vector<Entry> codes2 = two;
    std::sort(one.begin(), one.end(), [](const Entry& a, const Entry& b) { return a.factor < b.factor; });
    std::sort(two.begin(), two.end(), [](const Entry& a, const Entry& b) { return a.adaptive < b.adaptive; });
    std::mt19937 random(5);
    for (size_t from1 = 0; from1 + tried1 <= one.size(); ++from1) {
        for (size_t from2 = 0; from2 + tried2 <= two.size(); ++from2) {
            for (int tame = 0; tame < 2; ++tame) {
                const Subframe s(random, 1.1, 300);
                const std::vector<float> terms(s.terms.begin(), s.terms.end());
                const int16_t from[] = {static_cast<int16_t>(from1), static_cast<int16_t>(from2)};
                int16_t codes[2] = {};
                ASSERT_EQ(vekStsNoErr, search(terms.data(), from, codes, tame, 250));
                double least = 1e30;
                for (size_t i = from1; i < from1 + tried1; ++i) {
                    for (size_t j = from2; j < from2 + tried2; ++j) {
                        const int gp = one[i].adaptive + two[j].adaptive;
                        if (tame == 0 || gp < 16383) {
                            least =
                                std::min(least, s.error(gp / 16384.0, (one[i].factor + two[j].factor) / unit * 250));
                        }
                    }
                }
                const Entry a = codes1[static_cast<size_t>(codes[0])];
                const Entry b = codes2[static_cast<size_t>(codes[1])];
                EXPECT_NEAR(least, s.error((a.adaptive + b.adaptive) / 16384.0, (a.factor + b.factor) / unit * 250),
                            1e-5 * std::abs(least));
            }
        }
    }
}

TEST(VekGainCodebookSearch, FindsTheLeastErrorOfTheEntriesTried) {
    atEveryLevel([] {
        expectLeastOfWindow(veksGainCodebookSearch_G729_32f, firsts, seconds, 4, 8, 8192);
        expectLeastOfWindow(veksGainCodebookSearch_G729D_32f, firstsD, secondsD, 6, 6, 16384);
    });
}

TEST(VekGainCodebookSearch, RefusesNullAndEntriesBeyondTheCodebooks) {
    const std::vector<float> terms(5, 1);
    const int16_t good[] = {1, 1};
    int16_t codes[] = {7, 8};
    for (const Search search : {veksGainCodebookSearch_G729_32f, veksGainCodebookSearch_G729D_32f}) {
        expectNullsRefused(search, terms.data(), good, codes, 0, 1);
        EXPECT_EQ(vekStsRangeErr, search(terms.data(), good, codes, -1, 1));
        EXPECT_EQ(vekStsRangeErr, search(terms.data(), good, codes, 2, 1));
        const bool d = search == veksGainCodebookSearch_G729D_32f;
        for (const auto& [a, b] : {std::pair{-1, 0}, {0, -1}, {d ? 3 : 5, 0}, {0, d ? 3 : 9}}) {
            const int16_t bad[] = {static_cast<int16_t>(a), static_cast<int16_t>(b)};
            EXPECT_EQ(vekStsRangeErr, search(terms.data(), bad, codes, 0, 1));
        }
    }
    EXPECT_EQ(7, codes[0]);
    EXPECT_EQ(8, codes[1]);
}

} // namespace
