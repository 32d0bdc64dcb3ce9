// Real-time audio: the codebook searches against their definitions in double precision, by trying all there is.
#include "rta_reference.h"
#include "veksc.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <functional>
#include <limits>
#include <map>
#include <numbers>
#include <vector>

namespace {

using lpref::convolved;
using lpref::dot;
using namespace rtaref;

// The response of a synthesis filter: a decaying ring.
Floats ring(std::mt19937& random, int n) {
    std::uniform_real_distribution<double> pick(0.2, 1.2);
    const double w = pick(random);
    Floats h(static_cast<size_t>(n));
    for (size_t i = 0; i < h.size(); ++i) {
        h[i] = static_cast<float>(std::pow(0.85, i) * std::cos(w * static_cast<double>(i)));
    }
    return h;
}

// Signed correlation with the target over the root of the energy.
double fitOf(const Floats& target, const Doubles& y) {
    const double energy = dot(y, y);
    return energy > 0 ? dot(y, target) / std::sqrt(energy) : 0;
}

constexpr Floats::value_type kBoundary[5] = {1, 18, 48, 86, 145};

std::vector<double> allLags(const float* b) {
    std::vector<double> lags;
    constexpr int steps[] = {1, 3, 2, 1};
    for (int region = 0; region < 4; ++region) {
        const int first = static_cast<int>(b[region]) * steps[region];
        const int end = static_cast<int>(b[region + 1]) * steps[region];
        for (int i = first; i < end; ++i) {
            lags.push_back(static_cast<double>(i) / steps[region]);
        }
    }
    lags.push_back(b[4]);
    return lags;
}

// The excitation at a lag, continued by itself. past[history + i] is the sample i.
Doubles vectorOf(const Floats& past, size_t history, size_t n, double lag) {
    Doubles x(past.begin(), past.begin() + static_cast<int>(history));
    x.resize(history + n);
    const int whole = static_cast<int>(std::floor(lag + 1e-9));
    const double part = lag - whole;
    for (size_t i = 0; i < n; ++i) {
        const size_t at = history + i - static_cast<size_t>(whole);
        if (part < 1e-6) {
            x[history + i] = x[at];
            continue;
        }
        double sum = 0;
        double weights = 0;
        for (int j = -8; j < 8; ++j) {
            const double t = j + part; // of sample at + j from the place at - part
            const double w = std::sin(kPi * t) / (kPi * t) * std::pow(std::cos(kPi * t / 18), 2);
            sum += w * x[at + static_cast<size_t>(j)];
            weights += w;
        }
        x[history + i] = sum / weights;
    }
    return {x.begin() + static_cast<int>(history), x.end()};
}

struct AdaptiveCase {
    Floats target;
    Floats h;
    Floats exc;
    size_t history = 170;
    size_t n;
    float lag = 0;
    int index = -1;
    Floats contribution;

    AdaptiveCase(std::mt19937& random, int size) : n(static_cast<size_t>(size)) {
        target = floatNoise(random, size, -100, 100);
        h = ring(random, size);
        exc = floatNoise(random, static_cast<int>(history) + size + 1, -50, 50);
        contribution.assign(n + 1, 99);
    }
    VekStatus search(int range, int flag, const float* boundary = kBoundary) {
        return veksAdaptiveCodebookSearch_RTA_32f(target.data(), h.data(), static_cast<int>(n), boundary,
                                                  exc.data() + history, &lag, &index, contribution.data(), range, flag);
    }
};

// The lag found is the best of first..last, and vector and contribution are its own.
void expectBest(const AdaptiveCase& c, const Floats& past, size_t first, size_t last) {
    const std::vector<double> lags = allLags(kBoundary);
    double best = -1e30;
    for (size_t i = first; i <= last; ++i) {
        best = std::max(best, fitOf(c.target, convolved(vectorOf(past, c.history, c.n, lags[i]), c.h)));
    }
    const size_t found = first + static_cast<size_t>(c.index);
    ASSERT_LE(found, last);
    ASSERT_NEAR(c.lag, lags[found], 1e-4);
    const Doubles vector = vectorOf(past, c.history, c.n, lags[found]);
    const Doubles filtered = convolved(vector, c.h);
    ASSERT_NEAR(fitOf(c.target, filtered), best, 1e-3 * std::abs(best));
    for (size_t i = 0; i < c.n; ++i) {
        ASSERT_NEAR(c.exc[c.history + i], vector[i], 1e-3) << i;
        ASSERT_NEAR(c.contribution[i], filtered[i], 5e-3) << i;
    }
    EXPECT_EQ(c.contribution[c.n], 99);
    EXPECT_TRUE(std::equal(past.begin(), past.begin() + static_cast<int>(c.history), c.exc.begin()));
    EXPECT_EQ(c.exc.back(), past.back());
}

TEST(VekRtaAdaptiveSearch, FindsTheBestOfAllLags) {
    atEveryLevel([] {
        std::mt19937 random(1);
        for (const int n : {4, 20, 37, 40, 160}) {
            for (int round = 0; round < 12; ++round) {
                AdaptiveCase c(random, n);
                const Floats past = c.exc;
                ASSERT_EQ(vekStsNoErr, c.search(32, 0));
                expectBest(c, past, 0, 242);
            }
        }
    });
}

TEST(VekRtaAdaptiveSearch, StaysAroundTheLastLagWhereAsked) {
    std::mt19937 random(2);
    const std::vector<double> lags = allLags(kBoundary);
    ASSERT_EQ(lags.size(), 243U);
    for (const int range : {1, 32, 64, 160, 242}) {
        for (const double last : {0.0, 1.0, 17.4, 18.4, 25.4, 47.9, 48.6, 60.3, 85.8, 86.7, 100.0, 145.0, 900.0}) {
            AdaptiveCase c(random, 40);
            c.lag = static_cast<float>(last);
            const Floats past = c.exc;
            ASSERT_EQ(vekStsNoErr, c.search(range, 1));
            // The grid's last lag before a region is not nearer than that region's first to what lies between.
            size_t nearest = 0;
            for (size_t i = 0; i < lags.size(); ++i) {
                nearest = std::abs(lags[i] - last) <= std::abs(lags[nearest] - last) ? i : nearest;
            }
            const int first = std::clamp(static_cast<int>(nearest) - range / 2, 0, 243 - range);
            expectBest(c, past, static_cast<size_t>(first), static_cast<size_t>(first + range - 1));
        }
    }
    AdaptiveCase c(random, 20);
    const Floats past = c.exc;
    c.lag = 30;
    ASSERT_EQ(vekStsNoErr, c.search(243, 1));
    expectBest(c, past, 0, 242);
}

TEST(VekRtaAdaptiveSearch, JudgesALagByWhatItsOwnVectorRepeats) {
    // Lags a little above the subframe repeat, through the interpolation, a pulse from the vector's front at its end.
    std::mt19937 random(18);
    AdaptiveCase c(random, 40);
    std::fill(c.exc.begin(), c.exc.end(), 0.0F);
    c.exc[c.history - 44] = 20;
    c.exc[c.history - 43] = 50;
    c.exc[c.history - 42] = -30;
    std::fill(c.h.begin() + 1, c.h.end(), 0.0F);
    std::fill(c.target.begin(), c.target.end() - 1, 0.0F);
    c.target.back() = 100;
    for (const double last : {40.0, 42.0, 43.0, 44.0, 45.0}) {
        AdaptiveCase now = c;
        now.lag = static_cast<float>(last);
        const Floats past = now.exc;
        const size_t first = 17 + static_cast<size_t>(3 * (last - 18)) - 6;
        ASSERT_EQ(vekStsNoErr, now.search(12, 1));
        expectBest(now, past, first, first + 11);
    }
}

TEST(VekRtaAdaptiveSearch, FindsThePeriodOfAPeriodicSignal) {
    atEveryLevel([] {
        std::mt19937 random(3);
        for (const double period : {12.0, 22.0 + 1.0 / 3, 35.0 + 2.0 / 3, 50.5, 61.0, 97.0, 145.0}) {
            AdaptiveCase c(random, 40);
            // One lobe a period, which nothing but the period itself brings onto the target.
            const auto at = [&](double t) {
                const double turns = (t - 20) / period + 0.5;
                const double phase = turns - std::floor(turns) - 0.5;
                return std::exp(-std::pow(phase * period / 3, 2)) - 0.1;
            };
            for (size_t i = 0; i < c.history; ++i) {
                c.exc[i] = static_cast<float>(100 * at(static_cast<double>(i) - static_cast<double>(c.history) + 2));
            }
            Floats next(c.n);
            for (size_t i = 0; i < c.n; ++i) {
                next[i] = static_cast<float>(100 * at(static_cast<double>(i) + 2));
            }
            const Doubles target = convolved(next, c.h);
            c.target.assign(target.begin(), target.end());
            ASSERT_EQ(vekStsNoErr, c.search(1, 0));
            EXPECT_NEAR(std::fmod(c.lag + 0.25, period), 0.25, 0.02) << period << ' ' << c.lag;
        }
    });
}

TEST(VekRtaAdaptiveSearch, OfASilentPastGivesNothing) {
    std::mt19937 random(4);
    AdaptiveCase c(random, 40);
    std::fill(c.exc.begin(), c.exc.end() - 1, 0.0F);
    ASSERT_EQ(vekStsNoErr, c.search(32, 0));
    EXPECT_EQ(c.index, 0);
    EXPECT_EQ(c.lag, 1);
    EXPECT_TRUE(std::all_of(c.contribution.begin(), c.contribution.end() - 1, [](float v) { return v == 0; }));
}

TEST(VekRtaAdaptiveSearch, RefusesBoundariesThatDoNotRise) {
    std::mt19937 random(5);
    AdaptiveCase c(random, 40);
    const Floats past = c.exc;
    for (const std::array<float, 5>& b : {std::array<float, 5>{0, 18, 48, 86, 145},
                                          {1, 7, 48, 86, 145},
                                          {1, 18, 18, 86, 145},
                                          {1, 18, 48, 86, 257},
                                          {1, 18.5F, 48, 86, 145},
                                          {1, 18, 48, 86, std::numeric_limits<float>::quiet_NaN()}}) {
        EXPECT_EQ(vekStsRangeErr, c.search(32, 0, b.data()));
    }
    EXPECT_EQ(vekStsBadArgErr, c.search(0, 0));
    EXPECT_EQ(vekStsBadArgErr, c.search(32, 2));
    EXPECT_EQ(vekStsBadArgErr, c.search(32, -1));
    c.lag = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(vekStsBadArgErr, c.search(32, 1));
    c.n = 161;
    EXPECT_EQ(vekStsSizeErr, c.search(32, 0));
    c.n = 3;
    EXPECT_EQ(vekStsSizeErr, c.search(32, 0));
    EXPECT_EQ(c.exc, past);
    EXPECT_EQ(c.index, -1);
}

struct PulseCase {
    Floats target;
    Floats h;
    int n;
    Floats vector;
    std::array<int, 6> index{-7, -7, -7, -7, -7, -7};
    float gain = -1;

    PulseCase(std::mt19937& random, int size)
        : target(floatNoise(random, size, -150, 150)), h(ring(random, size)), n(size) {
        vector.assign(static_cast<size_t>(size) + 1, 99);
    }
    VekStatus search(int pulses, int refine = 0) {
        return veksFixedCodebookSearch_RTA_32f(target.data(), h.data(), vector.data(), n, index.data(), &gain, pulses,
                                               refine);
    }
    double fit() const { return fitOf(target, convolved(Floats(vector.begin(), vector.end() - 1), h)); }
};

TEST(VekRtaPulses, IndicesTellTheVectorAndTheGainIsTheBest) {
    atEveryLevel([] {
        std::mt19937 random(6);
        for (const int n : {10, 20, 40, 60, 80}) {
            for (int pulses = 1; pulses <= 10; ++pulses) {
                PulseCase c(random, n);
                ASSERT_EQ(vekStsNoErr, c.search(pulses));
                Floats decoded(static_cast<size_t>(n) + 1);
                decoded.back() = 99;
                for (int i = 0; i < pulses; ++i) {
                    const int word = c.index[static_cast<size_t>(i % 5)] >> (i / 5 * 5) & 31;
                    const int place = (word & 15) * 5 + i % 5;
                    ASSERT_LT(place, n);
                    decoded[static_cast<size_t>(place)] += word >= 16 ? -1.0F : 1.0F;
                }
                ASSERT_EQ(c.vector, decoded);
                for (int track = pulses; track < 5; ++track) {
                    EXPECT_EQ(c.index[static_cast<size_t>(track)], 0);
                }
                EXPECT_EQ(c.index[5], -7);
                const Doubles y = convolved(Floats(c.vector.begin(), c.vector.end() - 1), c.h);
                ASSERT_NEAR(c.gain, dot(y, c.target) / dot(y, y), 1e-3 * std::abs(c.gain));
            }
        }
    });
}

// Pulse by pulse from each track on, in double.
double chained(const PulseCase& c, int pulses) {
    const auto n = static_cast<size_t>(c.n);
    Doubles d(n);
    for (size_t i = 0; i < n; ++i) {
        for (size_t k = i; k < n; ++k) {
            d[i] += double{1} * c.target[k] * c.h[k - i];
        }
    }
    double best = 0;
    for (int start = 0; start < 5; ++start) {
        Doubles x(n);
        double fit = 0;
        for (int i = 0; i < pulses; i += 5) {
            for (int k = 0; k < 5; ++k) {
                const int track = (start + k) % 5;
                if (i + track >= pulses) {
                    continue;
                }
                fit = -1e30;
                size_t place = 0;
                for (auto at = static_cast<size_t>(track); at < n; at += 5) {
                    Doubles tried = x;
                    tried[at] += d[at] < 0 ? -1 : 1;
                    const double now = fitOf(c.target, convolved(tried, c.h));
                    if (now > fit) {
                        fit = now;
                        place = at;
                    }
                }
                x[place] += d[place] < 0 ? -1 : 1;
            }
        }
        best = std::max(best, fit);
    }
    return best;
}

TEST(VekRtaPulses, StandWhereEachFitsBest) {
    atEveryLevel([] {
        std::mt19937 random(7);
        for (const int n : {20, 40, 60, 80}) {
            for (const int pulses : {1, 5, 7, 10}) {
                for (int round = 0; round < 3; ++round) {
                    PulseCase c(random, n);
                    ASSERT_EQ(vekStsNoErr, c.search(pulses));
                    const double want = chained(c, pulses);
                    ASSERT_NEAR(c.fit(), want, 1e-3 * want) << n << ' ' << pulses;
                }
            }
        }
    });
}

TEST(VekRtaPulses, TwoComeNearTheBestPairAndRefiningNeverHurts) {
    std::mt19937 random(8);
    double ratio = 0;
    for (int round = 0; round < 20; ++round) {
        PulseCase c(random, 40);
        double best = 0;
        for (size_t i = 0; i < 40; i += 5) {
            for (size_t k = 1; k < 40; k += 5) {
                for (int signs = 0; signs < 4; ++signs) {
                    Doubles x(40);
                    x[i] = signs % 2 == 0 ? 1 : -1;
                    x[k] = signs / 2 == 0 ? 1 : -1;
                    best = std::max(best, fitOf(c.target, convolved(x, c.h)));
                }
            }
        }
        double before = 0;
        for (const int refine : {0, 1, 4}) {
            ASSERT_EQ(vekStsNoErr, c.search(2, refine));
            EXPECT_GT(c.fit(), before * 0.99999);
            before = c.fit();
        }
        EXPECT_LT(before, best * 1.00001);
        ratio += before / best / 20;
    }
    EXPECT_GT(ratio, 0.95);
    double gained = 0;
    for (int round = 0; round < 20; ++round) {
        PulseCase c(random, 80);
        ASSERT_EQ(vekStsNoErr, c.search(10, 0));
        const double plain = c.fit();
        ASSERT_EQ(vekStsNoErr, c.search(10, 4));
        EXPECT_GT(c.fit(), plain * 0.99999);
        gained += c.fit() / plain - 1;
    }
    EXPECT_GT(gained, 0) << "in all";
}

TEST(VekRtaPulses, OfNothingHaveNoGain) {
    std::mt19937 random(9);
    PulseCase c(random, 40);
    std::fill(c.target.begin(), c.target.end(), 0.0F);
    ASSERT_EQ(vekStsNoErr, c.search(5));
    EXPECT_EQ(c.gain, 0);
    PulseCase deaf(random, 40);
    std::fill(deaf.h.begin(), deaf.h.end(), 0.0F);
    ASSERT_EQ(vekStsNoErr, deaf.search(10));
    EXPECT_EQ(deaf.gain, 0);
}

TEST(VekRtaPulses, RefuseSizesThatTheirTracksDoNotFill) {
    std::mt19937 random(10);
    PulseCase c(random, 40);
    EXPECT_EQ(vekStsBadArgErr, c.search(0));
    EXPECT_EQ(vekStsBadArgErr, c.search(11));
    EXPECT_EQ(vekStsBadArgErr, c.search(5, -1));
    EXPECT_EQ(vekStsBadArgErr, c.search(5, 9));
    for (const int n : {5, 38, 85, -5}) {
        c.n = n;
        EXPECT_EQ(vekStsSizeErr, c.search(5));
    }
    EXPECT_EQ(c.gain, -1);
    EXPECT_EQ(c.vector, Floats(41, 99));
}

// The scaled numbers of a stage, of which each vector is a part.
const Doubles& numbersOf(int stage) {
    static std::map<int, Doubles> known;
    Doubles& numbers = known[stage];
    for (Gauss gauss(static_cast<uint32_t>(stage + 1)); numbers.size() < 670;) {
        numbers.push_back(std::ldexp(gauss.next(), -stage));
    }
    return numbers;
}

struct RandomCase {
    Floats target;
    Floats h;
    int n;
    Floats vector;
    std::array<int, 4> index{-7, -7, -7, -7};
    float gain = -1;

    RandomCase(std::mt19937& random, int size)
        : target(floatNoise(random, size, -150, 150)), h(ring(random, size)), n(size) {
        vector.assign(static_cast<size_t>(size) + 1, 99);
    }
    VekStatus search(int entries, int stage, int limit) {
        return veksFixedCodebookSearchRandom_RTA_32f(target.data(), h.data(), vector.data(), n, index.data(), &gain,
                                                     entries, stage, limit);
    }
};

Doubles entryOf(int stage, int index, int n) {
    const auto from = numbersOf(stage).begin() + 510 - 2 * (index / 2);
    Doubles entry(from, from + n);
    if (index % 2 != 0) {
        std::transform(entry.begin(), entry.end(), entry.begin(), std::negate<>());
    }
    return entry;
}

TEST(VekRtaRandomCodebook, EachStageTakesTheBestOfItsVectors) {
    atEveryLevel([] {
        std::mt19937 random(11);
        for (const int n : {4, 20, 40, 77, 80}) {
            for (const int entries : {1, 64, 160, 256}) {
                for (int stages = 0; stages < 3; ++stages) {
                    RandomCase c(random, n);
                    ASSERT_EQ(vekStsNoErr, c.search(entries, stages, 0));
                    Doubles x(static_cast<size_t>(n));
                    for (int s = 0; s <= stages; ++s) {
                        const int found = c.index[static_cast<size_t>(s)];
                        ASSERT_TRUE(found >= 0 && found < 2 * entries);
                        double best = -1e30;
                        double ours = 0;
                        for (int i = 0; i < 2 * entries; ++i) {
                            Doubles tried = entryOf(s, i, n);
                            std::transform(tried.begin(), tried.end(), x.begin(), tried.begin(), std::plus<>());
                            const double fit = fitOf(c.target, convolved(tried, c.h));
                            best = std::max(best, fit);
                            ours = i == found ? fit : ours;
                        }
                        ASSERT_NEAR(ours, best, 1e-3 * best) << n << ' ' << entries << ' ' << s;
                        const Doubles entry = entryOf(s, found, n);
                        std::transform(x.begin(), x.end(), entry.begin(), x.begin(), std::plus<>());
                    }
                    for (size_t i = 0; i < x.size(); ++i) {
                        ASSERT_NEAR(c.vector[i], x[i], 1e-5);
                    }
                    EXPECT_EQ(c.vector.back(), 99);
                    EXPECT_EQ(c.index[static_cast<size_t>(stages) + 1], -7);
                    const Doubles y = convolved(x, c.h);
                    ASSERT_NEAR(c.gain, dot(y, c.target) / dot(y, y), 1e-3 * std::abs(c.gain));
                }
            }
        }
    });
}

TEST(VekRtaRandomCodebook, TheLimitHoldsTheVectorBelowTheTarget) {
    std::mt19937 random(12);
    int held = 0;
    for (int round = 0; round < 20; ++round) {
        RandomCase c(random, 20);
        ASSERT_EQ(vekStsNoErr, c.search(256, 2, 0));
        const float free = c.gain;
        const std::array<int, 4> index = c.index;
        const Doubles y = convolved(Floats(c.vector.begin(), c.vector.end() - 1), c.h);
        for (int limit = 1; limit <= 4; ++limit) {
            ASSERT_EQ(vekStsNoErr, c.search(256, 2, limit));
            EXPECT_EQ(c.index, index);
            const double most = std::sqrt(dot(c.target, c.target) / dot(y, y)) * std::pow(10.0, -3.0 * limit / 20);
            EXPECT_NEAR(c.gain, std::min<double>(free, most), 1e-4 * free);
            held += c.gain < 0.999F * free ? 1 : 0;
        }
    }
    EXPECT_GT(held, 10);
}

TEST(VekRtaRandomCodebook, OfNothingHasNoGain) {
    std::mt19937 random(13);
    RandomCase c(random, 40);
    std::fill(c.target.begin(), c.target.end(), 0.0F);
    ASSERT_EQ(vekStsNoErr, c.search(64, 2, 3));
    EXPECT_EQ(c.gain, 0);
    RandomCase deaf(random, 40);
    std::fill(deaf.h.begin(), deaf.h.end(), 0.0F);
    ASSERT_EQ(vekStsNoErr, deaf.search(64, 2, 3));
    EXPECT_EQ(deaf.gain, 0);
}

TEST(VekRtaRandomCodebook, RefusesWhatItHasNoVectorsFor) {
    std::mt19937 random(14);
    RandomCase c(random, 40);
    EXPECT_EQ(vekStsRangeErr, c.search(0, 0, 0));
    EXPECT_EQ(vekStsRangeErr, c.search(257, 0, 0));
    EXPECT_EQ(vekStsRangeErr, c.search(64, 3, 0));
    EXPECT_EQ(vekStsRangeErr, c.search(64, -1, 0));
    EXPECT_EQ(vekStsRangeErr, c.search(64, 0, -1));
    EXPECT_EQ(vekStsRangeErr, c.search(64, 0, 21));
    for (const int n : {3, 161}) {
        c.n = n;
        EXPECT_EQ(vekStsSizeErr, c.search(64, 0, 0));
    }
    EXPECT_EQ(c.gain, -1);
    EXPECT_EQ(c.vector, Floats(41, 99));
}

} // namespace
