// Estimate and interval of a shift from paired differences, against values counted by hand and by brute force.
#include "signedrank.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

using namespace krlab;

namespace {

// P(T < k) by going through all 2^n sign patterns.
double chanceBelow(int pairs, int k) {
    int below = 0;
    for (int signs = 0; signs < 1 << pairs; ++signs) {
        int sum = 0;
        for (int rank = 1; rank <= pairs; ++rank) {
            sum += (signs >> (rank - 1) & 1) != 0 ? rank : 0;
        }
        below += sum < k;
    }
    return below / std::exp2(pairs);
}

} // namespace

TEST(LabSignedRank, BoundIsTheLargestThatKeepsTheTail) {
    for (int pairs = 1; pairs <= 12; ++pairs) {
        for (const double tail : {0.2, 0.1, 0.025, 0.005, 0.0005}) {
            const int bound = signedRankBound(pairs, tail);
            EXPECT_TRUE(bound == 0 || chanceBelow(pairs, bound) <= tail) << pairs << " " << tail;
            EXPECT_GT(chanceBelow(pairs, bound + 1), tail) << pairs << " " << tail;
        }
    }
}

TEST(LabSignedRank, BoundsOfPublishedTablesAreMet) {
    // Critical values of the two-sided test at 5 % and 1 %: T at most 8 and 3 for 10 pairs, 52 and 37 for 20.
    EXPECT_EQ(signedRankBound(10, 0.025) - 1, 8);
    EXPECT_EQ(signedRankBound(10, 0.005) - 1, 3);
    EXPECT_EQ(signedRankBound(20, 0.025) - 1, 52);
    EXPECT_EQ(signedRankBound(20, 0.005) - 1, 37);
}

TEST(LabSignedRank, NormalBoundsGoOnWhereExactOnesEnd) {
    for (const double tail : {0.05, 0.0005}) {
        const double exact = signedRankBound(200, tail);
        const double normal = signedRankBound(201, tail);
        // From 200 to 201 pairs the mean of the statistic grows by 100.5.
        EXPECT_NEAR(normal - exact, 90, 40);
    }
}

TEST(LabSignedRank, FewestPairsAreThoseThatCanBeAllOnOneSide) {
    // Eight pairs: 1/256. Seven: 1/128.
    EXPECT_EQ(signedRankBound(7, 0.005), 0);
    EXPECT_EQ(signedRankBound(8, 0.005), 1);
}

TEST(LabSignedRank, EstimateIsTheMedianOfAllPairsAverages) {
    // Averages 1 1.5 2 3 3.5 5 of 1, 2, 5: middle (2 + 3) / 2.
    const WalshAverages averages(std::vector<double>{5, 1, 2});
    EXPECT_EQ(averages.pairs(), 3);
    EXPECT_DOUBLE_EQ(averages.estimate(), 2.5);
}

TEST(LabSignedRank, IntervalIsReadFromTheAveragesEnds) {
    // Three pairs: P(T < 1) = 1/8, P(T < 2) = 2/8.
    const WalshAverages averages(std::vector<double>{5, 1, 2});
    EXPECT_DOUBLE_EQ(averages.bounds(0.125).low, 1);
    EXPECT_DOUBLE_EQ(averages.bounds(0.125).high, 5);
    EXPECT_DOUBLE_EQ(averages.bounds(0.25).low, 1.5);
    EXPECT_DOUBLE_EQ(averages.bounds(0.25).high, 3.5);
    EXPECT_FALSE(averages.bounds(0.1).known);
    EXPECT_TRUE(std::isinf(averages.bounds(0.1).high));
}

TEST(LabSignedRank, MissingDifferencesAreLeftOut) {
    const double none = std::nan("");
    EXPECT_EQ(WalshAverages(std::vector<double>{none, 1, none}).pairs(), 1);
    EXPECT_TRUE(std::isnan(WalshAverages(std::vector<double>{none}).estimate()));
    EXPECT_FALSE(WalshAverages(std::vector<double>{}).bounds(0.4).known);
}

TEST(LabSignedRank, IntervalMissesTheShiftAsOftenAsStated) {
    // Heavy-tailed symmetric noise about 0.25; 12 pairs, 5 % on each side: the exact chance is just below.
    std::mt19937_64 random(7);
    std::cauchy_distribution<double> noise(0.25, 0.02);
    int missed = 0;
    constexpr int trials = 4000;
    for (int i = 0; i < trials; ++i) {
        std::vector<double> differences(12);
        for (double& difference : differences) {
            difference = noise(random);
        }
        const Bounds bounds = WalshAverages(differences).bounds(0.05);
        missed += bounds.low > 0.25 || bounds.high < 0.25;
    }
    const double expected = 2 * chanceBelow(12, signedRankBound(12, 0.05));
    EXPECT_NEAR(missed / static_cast<double>(trials), expected, 4 * std::sqrt(expected / trials));
    EXPECT_LE(expected, 0.1);
}

TEST(LabSignedRank, MedianOfEvenCountIsTheMeanOfTheMiddle) {
    EXPECT_DOUBLE_EQ(medianOf({4, 1, 3, 2}), 2.5);
    EXPECT_DOUBLE_EQ(medianOf({3, 1, 2}), 2);
    EXPECT_TRUE(std::isnan(medianOf({})));
}
