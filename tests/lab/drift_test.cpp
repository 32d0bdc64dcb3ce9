// Drift of passes: phases are taken out, changes of subjects are not.
#include "drift.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace krlab;

namespace {

constexpr size_t functions = 60;
constexpr size_t linesEach = 5;
constexpr size_t lines = functions * linesEach;

std::vector<LineRole> allControls() {
    std::vector<LineRole> roles;
    for (size_t line = 0; line < lines; ++line) {
        roles.push_back({line / linesEach, true});
    }
    return roles;
}

// The quiet reading of a line.
double quiet(size_t line) {
    return 5.0 + 0.01 * static_cast<double>(line);
}

std::vector<Round> quietRounds(size_t count) {
    std::vector<Round> rounds(count);
    for (Round& round : rounds) {
        for (std::vector<double>& side : round) {
            for (size_t line = 0; line < lines; ++line) {
                side.push_back(quiet(line));
            }
        }
    }
    return rounds;
}

std::vector<const Round*> all(const std::vector<Round>& rounds) {
    std::vector<const Round*> pointers;
    for (const Round& round : rounds) {
        pointers.push_back(&round);
    }
    return pointers;
}

std::vector<double> medianDifferences(const std::vector<Round>& rounds, const std::vector<LineRole>& roles) {
    std::vector<double> medians;
    for (const std::vector<double>& line : pairedDifferences(all(rounds), roles)) {
        medians.push_back(medianOf(line));
    }
    return medians;
}

} // namespace

TEST(LabDrift, SlowPhaseWithinOnePassIsTakenOut) {
    std::vector<Round> rounds = quietRounds(7);
    // In one pass of the new side everything from line 100 to 199 runs 40 % slower.
    for (size_t line = 100; line < 200; ++line) {
        rounds[3][sideNew][line] += std::log(1.4);
    }
    const auto differences = pairedDifferences(all(rounds), allControls());
    size_t off = 0;
    for (size_t line = 0; line < lines; ++line) {
        off += std::abs(differences[line][3]) > 1e-12;
    }
    // Only around the two ends of the phase can a line belong to either side.
    EXPECT_LE(off, 4 * linesEach);
    EXPECT_NEAR(differences[150][3], 0, 1e-12);
}

TEST(LabDrift, ChangeOfOneFunctionIsKept) {
    std::vector<Round> rounds = quietRounds(7);
    for (Round& round : rounds) {
        for (size_t line = 50; line < 55; ++line) {
            round[sideNew][line] += 0.05;
        }
    }
    const std::vector<double> medians = medianDifferences(rounds, allControls());
    for (size_t line = 0; line < lines; ++line) {
        EXPECT_NEAR(medians[line], line >= 50 && line < 55 ? 0.05 : 0, 1e-12) << line;
    }
}

TEST(LabDrift, ChangeOfNeighboursIsKeptOnceTheyAreNoControls) {
    std::vector<Round> rounds = quietRounds(7);
    std::vector<LineRole> roles = allControls();
    // Thirty functions in a row are slower: more than a median over the nearest ones bears.
    for (Round& round : rounds) {
        for (size_t line = 50; line < 200; ++line) {
            round[sideNew][line] += 0.05;
        }
    }
    EXPECT_NEAR(medianDifferences(rounds, roles)[125], 0, 1e-12);
    for (size_t line = 50; line < 200; ++line) {
        roles[line].control = false;
    }
    EXPECT_NEAR(medianDifferences(rounds, roles)[125], 0.05, 1e-12);
    EXPECT_NEAR(medianDifferences(rounds, roles)[20], 0, 1e-12);
}

TEST(LabDrift, FunctionIsNoMeasureForItsOwnLines) {
    // Six functions, three of which run 10 % slower in one pass: with its own lines among them the median of a slow one
    // would lie half way.
    std::vector<Round> rounds = quietRounds(7);
    std::vector<LineRole> roles = allControls();
    roles.resize(6 * linesEach);
    for (const size_t function : {0, 2, 4}) {
        for (size_t line = function * linesEach; line < (function + 1) * linesEach; ++line) {
            rounds[3][sideNew][line] += 0.1;
        }
    }
    EXPECT_NEAR(pairedDifferences(all(rounds), roles)[2 * linesEach][3], 0.1, 1e-12);
}

TEST(LabDrift, StateThatAFunctionHasInSomePassesIsNotMadeADifference) {
    // A function that is 10 % slower in half of the processes, by lot: the differences must show both signs. Held
    // against its own side's median, each side would be drawn to the state that it met more often, and all differences
    // to one.
    std::vector<Round> rounds = quietRounds(9);
    const int slow[9][2] = {{1, 1}, {1, 0}, {0, 1}, {1, 1}, {0, 0}, {1, 0}, {1, 0}, {0, 1}, {0, 0}};
    for (size_t r = 0; r < rounds.size(); ++r) {
        for (const Side side : {sideOld, sideNew}) {
            for (size_t line = 50; line < 55; ++line) {
                rounds[r][side][line] += 0.1 * slow[r][side];
            }
        }
    }
    const auto differences = pairedDifferences(all(rounds), allControls());
    for (size_t r = 0; r < rounds.size(); ++r) {
        EXPECT_NEAR(differences[52][r], 0.1 * (slow[r][sideNew] - slow[r][sideOld]), 1e-12) << r;
    }
}

TEST(LabDrift, MissingSideGivesNoDifference) {
    std::vector<Round> rounds = quietRounds(3);
    rounds[1][sideOld][7] = std::nan("");
    rounds[2][sideNew].resize(200);
    const auto differences = pairedDifferences(all(rounds), allControls());
    EXPECT_TRUE(std::isnan(differences[7][1]));
    EXPECT_NEAR(differences[7][2], 0, 1e-12);
    EXPECT_TRUE(std::isnan(differences[250][2]));
}

TEST(LabDrift, CommonShiftIsRealOnlyIfTheRoundsAgreeOnIt) {
    std::vector<Round> rounds = quietRounds(12);
    const double drift[12] = {0.05, -0.03, 0.02, -0.06, 0.01, 0.04, -0.02, -0.01, 0.03, -0.04, 0.06, -0.05};
    for (size_t r = 0; r < rounds.size(); ++r) {
        for (double& reading : rounds[r][sideNew]) {
            reading += drift[r];
        }
    }
    EXPECT_FALSE(commonShift(all(rounds), allControls(), 0.0025).real());
    for (Round& round : rounds) {
        for (double& reading : round[sideNew]) {
            reading += 0.11;
        }
    }
    const CommonShift shift = commonShift(all(rounds), allControls(), 0.0025);
    EXPECT_TRUE(shift.real());
    EXPECT_NEAR(shift.estimate, 0.11, 0.01);
}
