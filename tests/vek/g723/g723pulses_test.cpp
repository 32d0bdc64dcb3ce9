// Fixed codebooks of G.723.1 against their criteria, in double or 64 bits, over all candidates.
#include "lp_reference.h"
#include "veksc.h"

#include <cmath>

namespace {

using namespace lpref;

// Twice the correlation of target and filtered pulses less their energy. The filtered pulses are Q13 times 2 and 4.
double measureOf(const Samples& h, const Samples& target, const std::vector<int>& at,
                 const std::vector<int>& amplitude) {
    std::vector<double> y(60, 0.0);
    for (size_t k = 0; k < at.size(); ++k) {
        for (int i = at[k]; i < 60; ++i) {
            y[static_cast<size_t>(i)] += amplitude[k] * double{1} * h[static_cast<size_t>(i - at[k])] / 8192;
        }
    }
    double sum = 0;
    for (size_t i = 0; i < 60; ++i) {
        sum += (2 * target[i] - y[i]) * y[i];
    }
    return sum;
}

const int levels[24] = {1,   2,   3,   4,   6,   9,   13,   18,   26,   38,   55,   80,
                        115, 166, 240, 348, 502, 726, 1050, 1517, 2193, 3170, 4582, 6623};

TEST(VekGainQuantG723, PlacesPulsesOneByOneWhereTheRestCorrelatesMost) {
    atEveryLevel([] {
        std::mt19937 random(8);
        for (int n = 0; n < 40; ++n) {
            const Samples h = decaying(random);
            const Samples target = noise(random, 60, -900, 900);
            const int count = 5 + (n & 1);
            // All levels, not only those around the one that the strongest correlation asks for.
            double best = -1e30;
            for (int grid = 0; grid < 2; ++grid) {
                for (const int level : levels) {
                    std::vector<int> at;
                    std::vector<int> amplitude;
                    std::vector<double> rest(60);
                    for (int i = 0; i < 60; ++i) {
                        rest[static_cast<size_t>(i)] = dot(&target[static_cast<size_t>(i)], h.data(), 60 - i) / 8192;
                    }
                    for (int k = 0; k < count; ++k) {
                        int strongest = -1;
                        for (int i = grid; i < 60; i += 2) {
                            if (std::find(at.begin(), at.end(), i) == at.end() &&
                                (strongest < 0 || std::abs(rest[static_cast<size_t>(i)]) >
                                                      std::abs(rest[static_cast<size_t>(strongest)]))) {
                                strongest = i;
                            }
                        }
                        const int a = rest[static_cast<size_t>(strongest)] < 0 ? -level : level;
                        at.push_back(strongest);
                        amplitude.push_back(a);
                        for (int i = 0; i < 60; ++i) {
                            const int off = std::abs(i - strongest);
                            rest[static_cast<size_t>(i)] -=
                                a * dot(h.data(), h.data() + off, 60 - off) / (8192.0 * 8192.0);
                        }
                    }
                    best = std::max(best, measureOf(h, target, at, amplitude));
                }
            }
            Samples at(6, -1);
            Samples amplitude(6, 0);
            int32_t measure = INT32_MIN;
            int16_t grid = -1;
            int16_t level = -1;
            int16_t isBest = -1;
            ASSERT_EQ(vekStsNoErr,
                      veksGainQuant_G723_16s(h.data(), target.data(), at.data(), amplitude.data(), &measure, &grid,
                                             &level, static_cast<int16_t>(count), &isBest));
            EXPECT_EQ(1, isBest);
            for (int k = 0; k < count; ++k) {
                EXPECT_EQ(levels[level], std::abs(amplitude[static_cast<size_t>(k)]));
                EXPECT_EQ(grid, at[static_cast<size_t>(k)] & 1);
            }
            const double own =
                measureOf(h, target, {at.begin(), at.begin() + count}, {amplitude.begin(), amplitude.begin() + count});
            EXPECT_NEAR(own, measure, 0.01 * own + 30000);
            EXPECT_GE(own, best * 0.97) << n;
            // What is not better leaves all as it was.
            const Samples before = at;
            ASSERT_EQ(vekStsNoErr, veksGainQuant_G723_16s(h.data(), target.data(), at.data(), amplitude.data(),
                                                          &measure, &grid, &level, 1, &isBest));
            EXPECT_EQ(0, isBest);
            EXPECT_EQ(before, at);
        }
    });
}

TEST(VekMultiPulseG723, TrainsWinForAPeriodicTargetAndAShortDelay) {
    std::mt19937 random(9);
    const Samples h = decaying(random);
    std::vector<double> wanted(60, 0.0);
    for (int i = 4; i < 60; i += 23) {
        for (int k = i; k < 60; ++k) {
            wanted[static_cast<size_t>(k)] += 500.0 * h[static_cast<size_t>(k - i)] / 8192;
        }
    }
    Samples target;
    for (const double v : wanted) {
        target.push_back(static_cast<int16_t>(std::lround(v)));
    }
    Samples vector(60);
    int16_t grid = 0;
    int16_t train = 0;
    int16_t level = 0;
    int16_t signs = 0;
    int32_t position = 0;
    ASSERT_EQ(vekStsNoErr, veksMPMLQFixedCodebookSearch_G723(23, h.data(), target.data(), vector.data(), &grid, &train,
                                                             &level, &signs, &position, 1));
    EXPECT_EQ(1, train);
    EXPECT_GT(vector[4] + vector[27] + vector[50], 0);
    // Without what comes from 23 samples before, five pulses are left.
    int pulses = 0;
    for (int i = 0; i < 60; ++i) {
        pulses += vector[static_cast<size_t>(i)] != (i < 23 ? 0 : vector[static_cast<size_t>(i - 23)]) ? 1 : 0;
    }
    EXPECT_EQ(5, pulses);
    ASSERT_EQ(vekStsNoErr, veksMPMLQFixedCodebookSearch_G723(58, h.data(), target.data(), vector.data(), &grid, &train,
                                                             &level, &signs, &position, 1));
    EXPECT_EQ(0, train);
    EXPECT_EQ(5, 60 - std::count(vector.begin(), vector.end(), int16_t{0}));
    EXPECT_LT(position, 142506);
    ASSERT_EQ(vekStsNoErr, veksMPMLQFixedCodebookSearch_G723(58, h.data(), target.data(), vector.data(), &grid, &train,
                                                             &level, &signs, &position, 2));
    EXPECT_EQ(6, 60 - std::count(vector.begin(), vector.end(), int16_t{0}));
    EXPECT_LT(position, 593775);
}

int64_t choose(int n, int k) {
    int64_t ways = 1;
    for (int i = 1; i <= k; ++i) {
        ways = ways * (n - k + i) / i;
    }
    return k > n ? 0 : ways;
}

// The pulses that a decoder makes of the codes of a multi-pulse vector: sets of places are numbered place by place,
// those with a pulse there first.
Samples decodedPulses(int grid, int level, int signs, int64_t position, int count) {
    Samples vector(60, 0);
    for (int place = 0; place < 30 && count > 0; ++place) {
        const int64_t here = choose(29 - place, count - 1);
        if (position >= here) {
            position -= here;
            continue;
        }
        --count;
        vector[static_cast<size_t>(2 * place + grid)] =
            static_cast<int16_t>(((signs >> count) & 1) != 0 ? -levels[level] : levels[level]);
    }
    return vector;
}

TEST(VekMultiPulseG723, CodesTellTheVectorToADecoder) {
    std::mt19937 random(12);
    int trains = 0;
    int odd = 0;
    for (int n = 0; n < 60; ++n) {
        const Samples h = decaying(random);
        const Samples target = noise(random, 60, -900, 900);
        const int base = n % 3 == 0 ? 20 + n % 30 : 58 + n;
        const int subFrame = n & 3;
        Samples vector(60);
        int16_t grid = -1;
        int16_t train = -1;
        int16_t level = -1;
        int16_t signs = -1;
        int32_t position = -1;
        ASSERT_EQ(vekStsNoErr, veksMPMLQFixedCodebookSearch_G723(static_cast<int16_t>(base), h.data(), target.data(),
                                                                 vector.data(), &grid, &train, &level, &signs,
                                                                 &position, static_cast<int16_t>(subFrame)));
        ASSERT_TRUE(grid == 0 || grid == 1);
        ASSERT_TRUE(level >= 0 && level < 24);
        const Samples once = decodedPulses(grid, level, signs, position, (subFrame & 1) != 0 ? 5 : 6);
        Samples want = once;
        for (int start = base; train != 0 && start < 60; start += base) {
            for (int i = start; i < 60; ++i) {
                want[static_cast<size_t>(i)] =
                    static_cast<int16_t>(want[static_cast<size_t>(i)] + once[static_cast<size_t>(i - start)]);
            }
        }
        EXPECT_EQ(want, vector) << n;
        trains += train;
        odd += grid;
    }
    EXPECT_GT(trains, 2);
    EXPECT_GT(odd, 10);
    EXPECT_LT(odd, 50);
}

TEST(VekToeplizG723, HasTheCorrelationsOfTheScaledResponse) {
    atEveryLevel([] {
        std::mt19937 random(10);
        // 8000 is halved and saturates nowhere, -32768 saturates at most places.
        for (const int high : {3, 900, 8000, 20000, 32767, -32768}) {
            const Samples source = high > 0 ? noise(random, 60, -high, high) : Samples(60, static_cast<int16_t>(high));
            const int64_t energy = clip(static_cast<int64_t>(2 * dot(source.data(), source.data(), 60)), 32);
            int shift = -1;
            if ((energy >> 16) <= 32000) {
                int free = 0;
                while ((energy << (free + 1)) <= INT32_MAX) {
                    ++free;
                }
                shift = free / 2;
            }
            std::vector<int64_t> h;
            for (const int16_t v : source) {
                h.push_back(shift < 0 ? v >> 1 : clip(int64_t{v} << shift, 16));
            }
            const auto phi = [&](int i, int j) {
                int64_t sum = 0;
                for (int k = std::max(i, j); k < 60; ++k) {
                    sum += 2 * h[static_cast<size_t>(k - i)] * h[static_cast<size_t>(k - j)];
                }
                return static_cast<int32_t>(clip(sum, 32));
            };
            std::vector<int32_t> want;
            for (int t = 0; t < 4; ++t) {
                for (int k = 0; k < 8; ++k) {
                    want.push_back(phi(8 * k + 2 * t, 8 * k + 2 * t));
                }
            }
            for (int t = 0; t < 4; ++t) {
                for (int u = t + 1; u < 4; ++u) {
                    for (int e = 0; e < 64; ++e) {
                        want.push_back(phi(8 * (e / 8) + 2 * t, 8 * (e % 8) + 2 * u));
                    }
                }
            }
            std::vector<int32_t> wide(416);
            Samples narrow(416);
            ASSERT_EQ(vekStsNoErr, veksToeplizMatrix_G723_16s32s(source.data(), wide.data()));
            ASSERT_EQ(vekStsNoErr, veksToeplizMatrix_G723_16s(source.data(), narrow.data()));
            ASSERT_EQ(want, wide);
            for (size_t i = 0; i < 416; ++i) {
                ASSERT_EQ(want[i] >> 16, narrow[i]);
            }
        }
    });
}

struct FourPulses {
    Samples corr = Samples(64, 0);
    std::vector<int32_t> wide = std::vector<int32_t>(416);
    Samples narrow = Samples(416);

    explicit FourPulses(std::mt19937& random) {
        const Samples h = decaying(random);
        const Samples target = noise(random, 60, -2000, 2000);
        for (int i = 0; i < 60; ++i) {
            corr[static_cast<size_t>(i)] =
                static_cast<int16_t>(dot(&target[static_cast<size_t>(i)], h.data(), 60 - i) / 32768);
        }
        veksToeplizMatrix_G723_16s32s(h.data(), wide.data());
        veksToeplizMatrix_G723_16s(h.data(), narrow.data());
    }

    double cross(const std::vector<double>& m, int t, int k, int u, int l) const {
        static const int block[4][4] = {{0, 0, 1, 2}, {0, 0, 3, 4}, {0, 0, 0, 5}, {}};
        return m[static_cast<size_t>(32 + 64 * block[t][u] + 8 * k + l)];
    }

    double measure(const std::vector<double>& m, const int* lanes, const int* signs, int grid) const {
        double sum = 0;
        double energy = 0;
        for (int t = 0; t < 4; ++t) {
            sum += signs[t] * corr[static_cast<size_t>(8 * lanes[t] + 2 * t + grid)];
            energy += m[static_cast<size_t>(8 * t + lanes[t])];
            for (int u = t + 1; u < 4; ++u) {
                energy += 2 * signs[t] * signs[u] * cross(m, t, lanes[t], u, lanes[u]);
            }
        }
        return sum > 0 ? sum * sum / energy : 0;
    }

    // The best of all positions on both grids whose first three reach the threshold.
    double best(const std::vector<double>& m) const {
        int sign[4][8];
        int larger[4][8];
        for (int t = 0; t < 4; ++t) {
            for (int k = 0; k < 8; ++k) {
                const int even = corr[static_cast<size_t>(8 * k + 2 * t)];
                const int odd = corr[static_cast<size_t>(8 * k + 2 * t + 1)];
                larger[t][k] = std::max(std::abs(even), std::abs(odd));
                sign[t][k] = (std::abs(even) > std::abs(odd) ? even : odd) < 0 ? -1 : 1;
            }
        }
        int most = 0;
        int sum = 0;
        for (int t = 0; t < 3; ++t) {
            most += *std::max_element(larger[t], larger[t] + 8);
            for (int k = 0; k < 8; ++k) {
                sum += larger[t][k];
            }
        }
        const int threshold = (most + sum / 8) / 2;
        double found = 0;
        for (int e = 0; e < 4096; ++e) {
            const int lanes[4] = {e >> 9, (e >> 6) & 7, (e >> 3) & 7, e & 7};
            const int signs[4] = {sign[0][lanes[0]], sign[1][lanes[1]], sign[2][lanes[2]], sign[3][lanes[3]]};
            int three[2] = {};
            for (int g = 0; g < 2; ++g) {
                for (int t = 0; t < 3; ++t) {
                    three[g] += signs[t] * corr[static_cast<size_t>(8 * lanes[t] + 2 * t + g)];
                }
            }
            if (std::max(three[0], three[1]) >= threshold) {
                found = std::max({found, measure(m, lanes, signs, 0), measure(m, lanes, signs, 1)});
            }
        }
        return found;
    }
};

TEST(VekFourPulsesG723, FindTheBestOfAllBehindTheThreshold) {
    std::mt19937 random(11);
    for (int n = 0; n < 60; ++n) {
        const FourPulses p(random);
        for (const bool wide : {false, true}) {
            const std::vector<double> m = wide ? std::vector<double>(p.wide.begin(), p.wide.end())
                                               : std::vector<double>(p.narrow.begin(), p.narrow.end());
            int16_t sign = 0;
            int16_t position = 0;
            int16_t grid = 0;
            int16_t times = 30000;
            Samples vector(60);
            ASSERT_EQ(vekStsNoErr,
                      wide ? veksACELPFixedCodebookSearch_G723_32s16s(p.corr.data(), p.wide.data(), &sign, &position,
                                                                      &grid, vector.data(), &times)
                           : veksACELPFixedCodebookSearch_G723_16s(p.corr.data(), p.narrow.data(), &sign, &position,
                                                                   &grid, vector.data(), &times));
            int lanes[4];
            int signs[4];
            Samples pulses(64, 0);
            for (int t = 0; t < 4; ++t) {
                lanes[t] = (position >> (3 * t)) & 7;
                signs[t] = ((sign >> t) & 1) != 0 ? 1 : -1;
                pulses[static_cast<size_t>(8 * lanes[t] + 2 * t + grid)] = static_cast<int16_t>(signs[t]);
            }
            EXPECT_EQ(Samples(pulses.begin(), pulses.begin() + 60), vector);
            const double best = p.best(m);
            EXPECT_NEAR(best, p.measure(m, lanes, signs, grid), best * 1e-9) << n;
            EXPECT_LT(times, 30120);
            EXPECT_GE(times, 30120 - 512);
        }
    }
}

TEST(VekFourPulsesG723, StopWhenTheTimesAreSpent) {
    const Samples corr(64, 0);
    const Samples matrix(416, 100);
    int16_t sign = 0;
    int16_t position = 0;
    int16_t grid = 0;
    Samples vector(60);
    // All triples reach a threshold of zero.
    for (const int16_t held : {0, 100, 391}) {
        int16_t times = held;
        ASSERT_EQ(vekStsNoErr, veksACELPFixedCodebookSearch_G723_16s(corr.data(), matrix.data(), &sign, &position,
                                                                     &grid, vector.data(), &times));
        EXPECT_EQ(0, times);
    }
    int16_t times = 400;
    ASSERT_EQ(vekStsNoErr, veksACELPFixedCodebookSearch_G723_16s(corr.data(), matrix.data(), &sign, &position, &grid,
                                                                 vector.data(), &times));
    EXPECT_EQ(520 - 512, times);
    EXPECT_EQ(15, sign);
    // Where no loop is entered all times are left, and the next search takes them.
    Samples alone(64, 0);
    alone[0] = 30000;
    times = 30000;
    for (int again = 0; again < 3; ++again) {
        ASSERT_EQ(vekStsNoErr, veksACELPFixedCodebookSearch_G723_16s(alone.data(), matrix.data(), &sign, &position,
                                                                     &grid, vector.data(), &times));
        EXPECT_LE(times, 30000);
        EXPECT_GT(times, 29000);
    }
    EXPECT_EQ(0, position);
}

} // namespace
