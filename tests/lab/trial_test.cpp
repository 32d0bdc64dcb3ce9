// The course of a comparison on rounds with known ratios and noise: who is suspected, who is accused, and on which
// rounds.
#include "trial.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <set>

using namespace krlab;

namespace {

constexpr int functions = 40;
constexpr int linesEach = 5;

Line lineAt(int function, int line) {
    return {"veksF" + std::to_string(100 + function) + "_16s", {{"len", std::to_string(line)}}};
}

// Rounds of two libraries with known ratios on a machine whose noise only adds: a little in each reading, drift of each
// round, functions that run in a slow phase.
class PlayedMachine {
public:
    explicit PlayedMachine(unsigned seed) : m_random(seed) {}

    double noise = 0.01;
    double drift = 0.01;             ///< of a whole round
    double phases = 0;               ///< chance of a function to take 40 % more in a pass
    std::map<Line, double> ratios;   ///< new / old; 1 if not named
    std::set<std::string> silent[2]; ///< functions without figures on a side

    void playRound(Trial& trial, const std::vector<Line>& wanted = {}) {
        std::normal_distribution<double> normal;
        const double level = std::abs(drift * normal(m_random));
        const std::vector<Figure> older = pass(sideOld, level, wanted);
        trial.addRound(older, pass(sideNew, level, wanted));
    }
    void playRounds(Trial& trial, int count) {
        for (int round = 0; round < count; ++round) {
            playRound(trial);
        }
    }
    void slowDown(int function, double ratio) {
        for (int line = 0; line < linesEach; ++line) {
            ratios[lineAt(function, line)] = ratio;
        }
    }

private:
    std::vector<Figure> pass(Side side, double level, const std::vector<Line>& wanted) {
        std::normal_distribution<double> normal;
        std::uniform_real_distribution<double> uniform;
        std::vector<Figure> figures;
        for (int function = 0; function < functions; ++function) {
            const double phase = uniform(m_random) < phases ? std::log(1.4) : 0;
            for (int line = 0; line < linesEach; ++line) {
                Figure figure;
                figure.line = lineAt(function, line);
                const auto ratio = ratios.find(figure.line);
                double log = std::log(100.0 + 10 * function + line) + level + phase;
                log += std::abs(noise * normal(m_random));
                log += side == sideNew && ratio != ratios.end() ? std::log(ratio->second) : 0;
                figure.clocks = std::exp(log);
                const bool asked =
                    wanted.empty() || std::find(wanted.begin(), wanted.end(), figure.line) != wanted.end();
                if (asked && silent[side].count(figure.line.function) == 0) {
                    figures.push_back(figure);
                }
            }
        }
        return figures;
    }

    std::mt19937_64 m_random;
};

// As the lab drives a trial: a sweep, then only suspects and the lines that are not decided.
Trial runTrial(PlayedMachine& machine, const TrialOptions& options, int sweep, int rounds) {
    Trial trial(options);
    std::vector<Line> wanted;
    for (int round = 1; round <= rounds; ++round) {
        machine.playRound(trial, wanted);
        if (round == rounds) {
            trial.look(0, true);
        } else if (round >= sweep && (round == sweep || trial.lookDue())) {
            trial.look(rounds - round, round == sweep);
            wanted = trial.wanted(false);
        }
    }
    return trial;
}

std::map<Line, LineVerdict> byLine(const Trial& trial) {
    std::map<Line, LineVerdict> result;
    for (const LineVerdict& verdict : trial.verdicts()) {
        result[verdict.line] = verdict;
    }
    return result;
}

size_t accused(const Trial& trial) {
    const VerdictCounts counts = countVerdicts(trial.verdicts());
    return counts.slower + counts.faster;
}

} // namespace

TEST(LabTrial, PlantedChangesAreFoundAndNothingElse) {
    PlayedMachine machine(11);
    machine.phases = 0.3;
    machine.slowDown(7, 1.06);
    machine.slowDown(31, 1 / 1.06);
    const Trial trial = runTrial(machine, {0.02, 0.99}, 24, 100);
    for (const auto& [line, verdict] : byLine(trial)) {
        const auto planted = machine.ratios.find(line);
        if (planted == machine.ratios.end()) {
            EXPECT_TRUE(verdict.verdict == Verdict::same || verdict.verdict == Verdict::undecided) << line.text();
            continue;
        }
        EXPECT_EQ(verdict.verdict, planted->second > 1 ? Verdict::slower : Verdict::faster) << line.text();
        EXPECT_LT(verdict.low, planted->second) << line.text();
        EXPECT_GT(verdict.high, planted->second) << line.text();
        EXPECT_NEAR(verdict.newer / verdict.older, verdict.ratio, 1e-9);
    }
}

TEST(LabTrial, CopiesAreNeverAccused) {
    // 1 % of the trials may accuse; six of them with none do not contradict that, and a missing correction would show.
    for (unsigned seed = 0; seed < 6; ++seed) {
        PlayedMachine machine(seed);
        machine.noise = 0.03;
        machine.phases = 0.3;
        const Trial trial = runTrial(machine, {0.001, 0.99}, 8, 36);
        EXPECT_EQ(accused(trial), 0U) << seed;
    }
}

TEST(LabTrial, NobodyIsAccusedOnTheRoundsOfTheSuspicion) {
    PlayedMachine machine(3);
    machine.slowDown(7, 1.2);
    Trial trial({0.03, 0.99});
    machine.playRounds(trial, 30);
    // Thirty rounds with 20 % more are beyond doubt, and yet they are only a suspicion.
    trial.look(30, true);
    EXPECT_EQ(accused(trial), 0U);
    EXPECT_GE(trial.suspects(), size_t{linesEach});
    const LineVerdict before = byLine(trial)[lineAt(7, 0)];
    EXPECT_EQ(before.verdict, Verdict::undecided);
    EXPECT_TRUE(std::isinf(before.high));
    // Fresh rounds in which both are alike clear it.
    machine.ratios.clear();
    machine.playRounds(trial, 30);
    trial.look(0, true);
    EXPECT_EQ(accused(trial), 0U);
    const LineVerdict after = byLine(trial)[lineAt(7, 0)];
    EXPECT_EQ(after.passes, 30);
    EXPECT_NEAR(after.ratio, 1, 0.01);
}

TEST(LabTrial, ChangeOfTheWholeLibraryIsInTheRatios) {
    PlayedMachine machine(5);
    for (int function = 0; function < functions; ++function) {
        machine.slowDown(function, 1.3);
    }
    const Trial trial = runTrial(machine, {0.02, 0.99}, 12, 50);
    EXPECT_TRUE(trial.common().real());
    EXPECT_NEAR(std::exp(trial.common().estimate), 1.3, 0.1);
    EXPECT_GT(accused(trial), size_t{functions * linesEach * 9 / 10});
}

TEST(LabTrial, OnlyFunctionIsJudgedLikeAnyOther) {
    PlayedMachine machine(5);
    for (int function = 0; function < functions; ++function) {
        if (function != 7) {
            machine.silent[sideOld].insert(lineAt(function, 0).function);
            machine.silent[sideNew].insert(lineAt(function, 0).function);
        }
    }
    machine.slowDown(7, 1.1);
    const Trial trial = runTrial(machine, {0.03, 0.99}, 12, 60);
    EXPECT_EQ(trial.verdicts().size(), size_t{linesEach});
    for (const auto& [line, verdict] : byLine(trial)) {
        EXPECT_EQ(verdict.verdict, Verdict::slower) << line.text();
        EXPECT_NEAR(verdict.ratio, 1.1, 0.02) << line.text();
    }
}

TEST(LabTrial, SuspectsAreMeasuredFirst) {
    PlayedMachine machine(4);
    machine.noise = 0.05;
    machine.slowDown(7, 1.3);
    Trial trial({0.001, 0.99});
    machine.playRounds(trial, 16);
    trial.look(40, true);
    ASSERT_GE(trial.suspects(), size_t{linesEach});
    ASSERT_GT(trial.undecided(), trial.suspects());
    const std::vector<Line> suspects = trial.wanted(false);
    EXPECT_EQ(suspects.size(), trial.suspects());
    EXPECT_EQ(std::count_if(suspects.begin(), suspects.end(),
                            [](const Line& line) { return line.function == lineAt(7, 0).function; }),
              linesEach);
    EXPECT_EQ(trial.wanted(true).size(), trial.undecided());
}

TEST(LabTrial, NothingIsWantedWhenAllIsDecided) {
    PlayedMachine machine(4);
    machine.noise = 0.002;
    const Trial trial = runTrial(machine, {0.03, 0.99}, 12, 13);
    EXPECT_EQ(trial.undecided(), 0U);
    EXPECT_TRUE(trial.wanted(true).empty());
}

TEST(LabTrial, LinesOfOneSideAreToldAndNotWaitedFor) {
    PlayedMachine machine(6);
    machine.silent[sideNew].insert(lineAt(3, 0).function);
    machine.silent[sideOld].insert(lineAt(4, 0).function);
    const Trial trial = runTrial(machine, {0.03, 0.99}, 10, 20);
    ASSERT_EQ(trial.onlyOn(sideOld).size(), size_t{linesEach});
    EXPECT_EQ(trial.onlyOn(sideOld)[0], lineAt(3, 0));
    ASSERT_EQ(trial.onlyOn(sideNew).size(), size_t{linesEach});
    EXPECT_EQ(trial.onlyOn(sideNew)[4], lineAt(4, 4));
    EXPECT_EQ(trial.verdicts().size(), size_t{(functions - 2) * linesEach});
    EXPECT_EQ(trial.undecided(), 0U);
}

TEST(LabTrial, LineThatWasNeverMeasuredOnBothSidesOfARoundStaysUndecided) {
    PlayedMachine machine(8);
    Trial trial({0.03, 0.99});
    for (int round = 0; round < 12; ++round) {
        machine.silent[0].clear();
        machine.silent[1].clear();
        machine.silent[round % 2].insert(lineAt(3, 0).function);
        machine.playRound(trial);
    }
    trial.look(0, true);
    const LineVerdict verdict = byLine(trial)[lineAt(3, 2)];
    EXPECT_EQ(verdict.verdict, Verdict::undecided);
    EXPECT_EQ(verdict.passes, 0);
    EXPECT_NEAR(verdict.older, 132, 20);
}

TEST(LabTrial, TooFewRoundsToComeRaiseNoSuspicion) {
    PlayedMachine machine(3);
    machine.slowDown(7, 1.2);
    for (const int left : {0, 8}) {
        Trial trial({0.03, 0.99});
        machine.playRounds(trial, 10);
        trial.look(left, true);
        EXPECT_EQ(trial.suspects(), 0U) << left;
        EXPECT_EQ(accused(trial), 0U) << left;
    }
}
