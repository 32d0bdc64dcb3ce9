// krlab history: steps in courses, the drift taken out, machines apart, the gate.
#include "history.h"
#include "labprocess.h"
#include "referencekernel.h"

#include <cmath>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <random>

using namespace krlab;

namespace {

std::vector<double> noiseOf(size_t count, double deviation, unsigned seed) {
    std::mt19937_64 random(seed);
    std::normal_distribution<double> normal(0, deviation);
    std::vector<double> course(count);
    for (double& value : course) {
        value = normal(random);
    }
    return course;
}

struct PlayedPoint {
    std::string label;
    double clocks = 1000;
    double reference = 400;
    std::string host = "box";
};

/// A point of two passes with the lines f1, which has the clocks, and f2 with 500; both with the reference's drift.
void addPoint(Store& store, const PlayedPoint& point, int number) {
    RunRecord run;
    run.command = "history";
    run.label = point.label;
    const long long id = store.beginRun(run);
    for (int i = 0; i < 2; ++i) {
        Pass pass;
        pass.identity.machine.host = point.host;
        pass.identity.started = "2026-11-22T02:30:05+01:00";
        pass.ends.emplace_back();
        const double drift = point.reference / 400 * (1 + 0.001 * ((number * 7 + i * 3) % 5 - 2));
        for (const auto& [function, clocks] : {std::pair<const char*, double>{"f1", point.clocks}, {"f2", 500.0}}) {
            Figure figure;
            figure.line = Line{function, {{"len", "8"}}};
            figure.clocks = clocks * drift;
            pass.figures.push_back(figure);
        }
        store.addReference(store.addPass(id, i, pass), point.reference);
    }
    store.endRun(id, 0);
}

/// Twelve points c0 to c11: f1 takes 5 % longer from c6 on, and the machine is 8 % slower from c3 to c5.
void fillStore(const std::string& file) {
    Store store(file);
    for (int i = 0; i < 12; ++i) {
        addPoint(store, {"c" + std::to_string(i), i < 6 ? 1000.0 : 1050.0, i >= 3 && i < 6 ? 432.0 : 400.0}, i);
    }
}

} // namespace

TEST(LabSteps, ALevelThatChangesIsDividedAtItsPlace) {
    std::vector<double> course = noiseOf(40, 0.01, 1);
    for (size_t i = 25; i < course.size(); ++i) {
        course[i] += 0.05;
    }
    const std::vector<Step> steps = findSteps(course);
    ASSERT_EQ(steps.size(), 1u);
    EXPECT_EQ(steps[0].at, 25u);
    EXPECT_NEAR(steps[0].after - steps[0].before, 0.05, 0.01);
}

TEST(LabSteps, TwoStepsHaveTheLevelBetweenThemInCommon) {
    std::vector<double> course = noiseOf(60, 0.005, 2);
    for (size_t i = 20; i < course.size(); ++i) {
        course[i] += i < 35 ? 0.1 : 0.05;
    }
    const std::vector<Step> steps = findSteps(course);
    ASSERT_EQ(steps.size(), 2u);
    EXPECT_EQ(steps[0].at, 20u);
    EXPECT_EQ(steps[1].at, 35u);
    EXPECT_EQ(steps[1].before, steps[0].after);
    EXPECT_NEAR(steps[1].before, 0.1, 0.01);
}

TEST(LabSteps, CoursesWithoutAStepAreAccusedInOneOfAHundredAtMost) {
    int accused = 0;
    for (unsigned seed = 0; seed < 300; ++seed) {
        accused += findSteps(noiseOf(30, 0.02, 100 + seed)).empty() ? 0 : 1;
    }
    EXPECT_LE(accused, 6); // 2.7 expected at 0.9 %
    EXPECT_GE(accused, 1);
}

TEST(LabSteps, TwoReadingsAndEqualOnesAreNoStep) {
    std::vector<double> course = noiseOf(30, 0.01, 3);
    course[28] += 1;
    course[29] += 1;
    EXPECT_TRUE(findSteps(course).empty());
    EXPECT_TRUE(findSteps(std::vector<double>(30, 0.7)).empty());
    EXPECT_TRUE(findSteps({}).empty());
    EXPECT_TRUE(findSteps({1, 2, 3, 4, 5}).empty());
}

TEST(LabSteps, BoundaryIsTheOneOfMillerAndSiegmund) {
    // 20000 readings are as good as normal: density(4) * (4 / 4 + (4 - 1 / 4) * 2 * log((n - k) / k)) with k = 2000.
    const double density = 1.338302258e-4;
    EXPECT_NEAR(chanceOfDivision(4, 20000, 2000), density * (1 + 3.75 * 2 * std::log(9)), 1e-5);
    // With few divisions their number is the better bound: 2 * P(t > 4) of 4 degrees of freedom, which is 0.016130.
    EXPECT_NEAR(chanceOfDivision(4, 6, 3), 0.016130, 1e-5);
    EXPECT_EQ(chanceOfDivision(0, 30, 3), 1);
}

TEST(LabSteps, ManyLinesAskForMore) {
    std::vector<double> course = noiseOf(30, 0.01, 4);
    for (size_t i = 20; i < course.size(); ++i) {
        course[i] += 0.02;
    }
    StepRule rule;
    EXPECT_EQ(findSteps(course, rule).size(), 1u);
    rule.error = 0.01 / 3000;
    EXPECT_TRUE(findSteps(course, rule).empty());
    for (size_t i = 20; i < course.size(); ++i) {
        course[i] += 0.05;
    }
    EXPECT_EQ(findSteps(course, rule).size(), 1u);
}

TEST(LabSteps, AStepOfFivePercentUnderTwoPercentOfNoiseIsFoundWithinFiveReadings) {
    int even = 0;
    int heavy = 0;
    std::mt19937_64 random(8);
    for (unsigned seed = 0; seed < 200; ++seed) {
        std::vector<double> course = noiseOf(45, 0.02, 1000 + seed);
        // The same deviation with a tenth of the readings four times as noisy.
        std::vector<double> disturbed = noiseOf(45, 0.02 / std::sqrt(2.5), 2000 + seed);
        for (size_t i = 0; i < course.size(); ++i) {
            disturbed[i] *= std::uniform_int_distribution(0, 9)(random) == 0 ? 4 : 1;
            course[i] += i < 40 ? 0 : 0.05;
            disturbed[i] += i < 40 ? 0 : 0.05;
        }
        const auto isFound = [](const std::vector<double>& readings) {
            for (size_t seen = 41; seen <= readings.size(); ++seen) {
                const std::vector<Step> steps =
                    findSteps({readings.begin(), readings.begin() + static_cast<long>(seen)});
                if (!steps.empty() && steps.back().at >= 35 && steps.back().after > steps.back().before) {
                    return true;
                }
            }
            return false;
        };
        even += isFound(course) ? 1 : 0;
        heavy += isFound(disturbed) ? 1 : 0;
    }
    EXPECT_GE(even, 190);
    EXPECT_GE(heavy, 190);
}

TEST(LabSteps, NewestReadingsWithoutAStepSpendTheirShareOfTheError) {
    int risen = 0;
    for (unsigned seed = 0; seed < 4000; ++seed) {
        risen += newestRise(noiseOf(40, 0.02, 5000 + seed)).chance < 0.01 / 6 ? 1 : 0;
    }
    EXPECT_LE(risen, 4000 * 3 * 0.01 / 6);
    EXPECT_GE(risen, 4);
}

TEST(LabSteps, OnlyARiseOfTheNewestReadingsCountsAndTwoOfThemAreNone) {
    std::vector<double> course = noiseOf(40, 0.01, 6);
    course[38] += 1;
    course[39] += 1;
    EXPECT_GT(newestRise(course).chance, 0.001);
    course[37] += 1;
    EXPECT_EQ(newestRise(course).at, 37u);
    EXPECT_LT(newestRise(course).chance, 0.01 / 6);
    for (double& value : course) {
        value = -value;
    }
    EXPECT_EQ(newestRise(course).chance, 1);
    EXPECT_EQ(newestRise({}).chance, 1);
    EXPECT_EQ(newestRise(std::vector<double>(30, 0.7)).chance, 1);
    // The level before is not known of so few.
    EXPECT_EQ(newestRise(std::span(course).first(14)).chance, 1);
}

TEST(LabReference, KernelTakesAClockForAnAddition) {
    EXPECT_EQ(referenceKernel(40000), 40000u);
    EXPECT_GT(referenceClocks(0.001), 0);
}

TEST(LabHistory, ReferenceTakesTheDriftOut) {
    const LabDirectory directory;
    fillStore(directory.path("krlab.db"));
    const auto courses = readHistory(Store(directory.path("krlab.db")), HistoryRule());
    ASSERT_EQ(courses.size(), 1u);
    EXPECT_NEAR(courses[0].points[4].drift, 1.08, 1e-9);
    EXPECT_NEAR(courses[0].lines[0].clocks[4], 1000, 3);
    ASSERT_EQ(courses[0].lines[0].steps.size(), 1u);
    EXPECT_EQ(courses[0].points[courses[0].lines[0].steps[0].point].label, "c6");
    EXPECT_NEAR(courses[0].lines[0].steps[0].factor(), 1.05, 0.002);
    EXPECT_TRUE(courses[0].lines[1].steps.empty());
}

TEST(LabHistory, CheckNamesLineStepFactorAndFirstLabelBehind) {
    const LabDirectory directory;
    fillStore(directory.path("krlab.db"));
    const LabResult result = directory.run({"history", "check", "--json", "h.json"});
    EXPECT_EQ(result.status, 1) << result.err;
    EXPECT_NE(result.out.find("c6                f1 len=8\n"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("steps to slower: 1\n"), std::string::npos) << result.out;
    const auto document = nlohmann::json::parse(directory.read("h.json"));
    const auto& step = document["machines"][0]["lines"][0]["steps"][0];
    EXPECT_EQ(step["label"], "c6");
    EXPECT_NEAR(step["factor"].get<double>(), 1.05, 0.002);
    EXPECT_EQ(directory.run({"history", "check", "--since", "c7"}).status, 0);
    EXPECT_EQ(directory.run({"history", "check", "--last", "5"}).status, 0);
    EXPECT_EQ(directory.run({"history", "check", "--threshold", "6%"}).status, 0);
    EXPECT_EQ(directory.run({"history", "check", "--since", "c99"}).status, 2);
    const LabResult shown = directory.run({"history", "show", "f1 len=8"});
    EXPECT_EQ(shown.status, 0);
    EXPECT_NE(shown.out.find("c6  <- step"), std::string::npos) << shown.out;
    EXPECT_EQ(directory.run({"history", "show", "f9"}).status, 2);
}

TEST(LabHistory, MachinesAreKeptApart) {
    const LabDirectory directory;
    {
        Store store(directory.path("krlab.db"));
        for (int i = 0; i < 12; ++i) {
            addPoint(store, {"c" + std::to_string(i), i < 6 ? 1000.0 : 2000.0, 400, i < 6 ? "one" : "two"}, i);
        }
    }
    EXPECT_EQ(directory.run({"history", "check"}).status, 0);
    const LabResult shown = directory.run({"history", "show", "--machine", "two", "--json", "-"});
    const auto document = nlohmann::json::parse(shown.out);
    ASSERT_EQ(document["machines"].size(), 1u);
    EXPECT_EQ(document["machines"][0]["points"].size(), 6u);
    EXPECT_EQ(directory.run({"history", "check", "--machine", "three"}).status, 2);
}

TEST(LabHistory, APointIsMeasuredAndKept) {
    const LabDirectory directory;
    const LabResult missing = directory.run({"history", "show"});
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.err, "krlab: krlab.db: there is no such store; krlab history add makes it\n");
    const LabResult added =
        directory.run({"history", "add", "--label", "abc", "--passes", "2", "--", "-f=veksDCTFwd_G7221_16s"});
    EXPECT_EQ(added.status, 0) << added.err;
    EXPECT_EQ(added.out, "abc: 2 lines in 2 passes, kept in krlab.db, run 1\n");
    const Store store(directory.path("krlab.db"));
    for (const PassRecord& pass : store.passes()) {
        EXPECT_GT(pass.reference, 0);
    }
    EXPECT_EQ(store.runs()[0].command, "history");
    // One point proves nothing, and it is said.
    for (const char* action : {"check", "show"}) {
        const LabResult result = directory.run({"history", action});
        EXPECT_EQ(result.status, 0);
        EXPECT_NE(result.out.find("too few points to find a step: from 6 on\n"), std::string::npos) << result.out;
        EXPECT_EQ(result.out.find("no "), std::string::npos) << result.out;
    }
}
