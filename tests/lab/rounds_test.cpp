// Readings of paired rounds: the interval from the low ones, what all lines have in common.
#include "rounds.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

using namespace krlab;

namespace {

constexpr double none = std::numeric_limits<double>::quiet_NaN();

// One line; its readings of the old side and of the new one.
std::vector<Round> roundsOf(const std::vector<double>& older, const std::vector<double>& newer) {
    std::vector<Round> rounds;
    for (size_t i = 0; i < older.size(); ++i) {
        rounds.push_back({std::vector<double>{older[i]}, std::vector<double>{newer[i]}});
    }
    return rounds;
}

// The old side reads 0, 1, 2 ..., the new one 100, 102, 104 ...
LowReadings risingReadings(int rounds) {
    std::vector<double> older;
    std::vector<double> newer;
    for (int i = 0; i < rounds; ++i) {
        older.push_back(i);
        newer.push_back(100 + 2 * i);
    }
    return {roundsOf(older, newer), 0};
}

} // namespace

TEST(LabRounds, FewestRoundsAreThoseInWhichAllOfOneSideLieBelow) {
    // Ten heads in ten tosses have a chance of 1 in 1024.
    EXPECT_EQ(leastRounds(1.0 / 1024), 10);
    EXPECT_EQ(leastRounds(1.0 / 1023), 10);
    EXPECT_EQ(leastRounds(1.0 / 1025), 11);
    const std::vector<double> zeros(10, 0.0);
    const std::vector<double> ones(10, 1.0);
    const LowReadings ten(roundsOf(zeros, ones), 0);
    EXPECT_EQ(ten.rounds(), 10);
    EXPECT_TRUE(ten.shift(1.0 / 1024).bounds.known);
    EXPECT_FALSE(ten.shift(1.0 / 1025).bounds.known);
    EXPECT_TRUE(std::isinf(ten.shift(1.0 / 1025).bounds.low));
    EXPECT_NEAR(ten.shift(1.0 / 1025).estimate, 1, 1e-12);
}

TEST(LabRounds, IntervalLiesBetweenLowReadingsOfTheSides) {
    // Ten rounds at 1 in 16: all of the four lowest.
    const LowShift four = risingReadings(10).shift(1.0 / 16);
    EXPECT_NEAR(four.bounds.low, 100 - 3, 1e-12);
    EXPECT_NEAR(four.bounds.high, 106 - 0, 1e-12);
    EXPECT_NEAR(four.estimate, 101.5, 1e-12);
    EXPECT_NEAR(four.logClocks, (101.5 + 2 * 1.5) / 2, 1e-12);
    // Of 32 rounds the seven lowest, a quarter at most, with one stray: 8 of 128 outcomes of seven tosses.
    const LowShift seven = risingReadings(32).shift(1.0 / 16);
    EXPECT_NEAR(seven.bounds.low, 102 - 5, 1e-12);
    EXPECT_NEAR(seven.bounds.high, 110 - 1, 1e-12);
}

TEST(LabRounds, RoundWithoutOneSideCountsForNeither) {
    const auto rounds = roundsOf({5, none, 9, 1}, {6, 0, 3, none});
    const LowReadings readings(rounds, 0);
    EXPECT_EQ(readings.rounds(), 2);
    EXPECT_NEAR(readings.shift(0.5).estimate, -3 + 1, 1e-12);
    const LowReadings absent(rounds, 7);
    EXPECT_EQ(absent.rounds(), 0);
    EXPECT_FALSE(absent.shift(0.5).bounds.known);
    EXPECT_TRUE(std::isnan(absent.shift(0.5).estimate));
}

TEST(LabRounds, SlowPhasesHideNoDifference) {
    // Two readings of three run 40 % slow, on each side in other rounds; the new side is 3 % slower throughout.
    std::vector<double> older;
    std::vector<double> newer;
    for (int i = 0; i < 60; ++i) {
        older.push_back(i % 3 == 0 ? 0.0 : 0.34);
        newer.push_back(0.03 + (i % 3 == 1 ? 0.0 : 0.34));
    }
    const LowShift shift = LowReadings(roundsOf(older, newer), 0).shift(1e-4);
    EXPECT_NEAR(shift.bounds.low, 0.03, 1e-12);
    EXPECT_NEAR(shift.bounds.high, 0.03, 1e-12);
}

TEST(LabRounds, IntervalsOfCopiesMissAsSeldomAsTheySay) {
    // Noise that only adds, of which half comes in jumps, and rounds that are slow on both sides at once.
    std::mt19937_64 random(17);
    std::uniform_real_distribution<double> uniform;
    std::exponential_distribution<double> exponential(30);
    int missed = 0;
    constexpr int trials = 4000;
    for (int trial = 0; trial < trials; ++trial) {
        std::vector<double> sides[2];
        for (int round = 0; round < 20; ++round) {
            const double both = exponential(random);
            for (std::vector<double>& side : sides) {
                side.push_back(both + exponential(random) + (uniform(random) < 0.5 ? 0.3 : 0));
            }
        }
        const Bounds bounds = LowReadings(roundsOf(sides[0], sides[1]), 0).shift(0.05).bounds;
        missed += bounds.low > 0 || bounds.high < 0 ? 1 : 0;
    }
    // 10 % at most; 3.3 standard deviations of the count above that.
    EXPECT_LT(missed, trials / 10 + 63);
    EXPECT_GT(missed, trials / 100);
}

TEST(LabRounds, CommonShiftIsRealOnlyIfTheRoundsAgreeOnIt) {
    const double drift[12] = {0.05, -0.03, 0.02, -0.06, 0.01, 0.04, -0.02, -0.01, 0.03, -0.04, 0.06, -0.05};
    std::vector<Round> rounds(12);
    for (size_t r = 0; r < rounds.size(); ++r) {
        for (int line = 0; line < 300; ++line) {
            rounds[r][sideOld].push_back(5 + 0.01 * line);
            rounds[r][sideNew].push_back(5 + 0.01 * line + drift[r]);
        }
        // A line that changed by itself, and one that only the new side has.
        rounds[r][sideNew][7] += 2;
        rounds[r][sideNew].push_back(9);
    }
    EXPECT_FALSE(commonShift(rounds, 0.0025).real());
    for (Round& round : rounds) {
        for (double& reading : round[sideNew]) {
            reading += 0.11;
        }
    }
    const CommonShift shift = commonShift(rounds, 0.0025);
    EXPECT_TRUE(shift.real());
    EXPECT_NEAR(shift.estimate, 0.11, 0.01);
}
