// Verdicts of a fleet: on each kind of machine and over all, whatever the order in which tasks came.
#include "fault.h"
#include "fleetstores.h"
#include "fleetverdict.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <random>

using namespace krlab;

namespace {

constexpr int lines = 8;

// How much slower the new subject is, by model and line.
using Change = std::function<double(int model, int line)>;

// Noise as machines have it: it only ever adds, mostly little and sometimes much. It is the same for the same place.
double noise(int task, int round, bool newer, int line) {
    std::seed_seq seed{task, round, newer ? 1 : 0, line};
    std::mt19937 random(seed);
    const double often = std::uniform_real_distribution<double>(0, 0.01)(random);
    return 1 + often + (random() % 10 == 0 ? 0.3 : 0.0);
}

// `tasks` tasks of 4 rounds on the models in turn; a machine of model 2 is three times as fast.
void fill(Store& store, int tasks, const std::vector<int>& models, const Change& change, bool backwards = false) {
    for (int i = 0; i < tasks; ++i) {
        const int number = backwards ? tasks - 1 - i : i;
        const int model = models[static_cast<size_t>(number) % models.size()];
        addTask(store, {"p", number, "n" + std::to_string(number), model}, 0, 4, lines,
                [&](int round, bool newer, int line) {
                    return (500 + 100 * line) / (model == 2 ? 3.0 : 1.0) * (newer ? change(model, line) : 1) *
                           noise(number, round, newer, line);
                });
    }
}

Verdict verdictOf(const std::vector<LineVerdict>& all, int line) {
    for (const LineVerdict& one : all) {
        if (one.line.parameters[0].value == std::to_string(line)) {
            return one.verdict;
        }
    }
    return Verdict::undecided;
}

} // namespace

TEST(LabFleetVerdict, AChangeOnAllMachinesIsFoundOnEachKindAndOverAll) {
    const TempDir directory;
    Store store(directory.path("all.db"));
    fill(store, 12, {1, 2}, [](int, int line) { return line == 3 ? 1.1 : line == 5 ? 0.9 : 1.0; });
    const VerdictReport report = fleetVerdict(store, {});
    ASSERT_EQ(report.kinds.size(), 2U);
    EXPECT_EQ(report.kinds[0].machine, "family 6 model 1 stepping 1"); // whatever the microcode is
    EXPECT_EQ(report.kinds[0].hosts.size(), 6U);
    EXPECT_EQ(report.kinds[0].rounds, 24);
    EXPECT_EQ(report.rounds, 48);
    for (const std::vector<LineVerdict>* all : {&report.lines, &report.kinds[0].lines, &report.kinds[1].lines}) {
        ASSERT_EQ(all->size(), size_t{lines});
        for (int line = 0; line < lines; ++line) {
            EXPECT_EQ(verdictOf(*all, line), line == 3   ? Verdict::slower
                                             : line == 5 ? Verdict::faster
                                                         : Verdict::same)
                << line;
        }
    }
    EXPECT_NEAR(report.kinds[1].lines[3].older, 800 / 3.0, 5);
    EXPECT_NEAR(report.kinds[1].lines[3].ratio, 1.1, 0.01);
    EXPECT_EQ(exitStatus(report, true), exitWorse);
}

TEST(LabFleetVerdict, AChangeOnOneKindOnlyIsToldAsSuch) {
    const TempDir directory;
    Store store(directory.path("all.db"));
    fill(store, 18, {1, 2, 3}, [](int model, int line) { return model == 2 && line == 3 ? 1.2 : 1.0; });
    const VerdictReport report = fleetVerdict(store, {});
    ASSERT_EQ(report.kinds.size(), 3U);
    EXPECT_EQ(verdictOf(report.kinds[0].lines, 3), Verdict::same);
    EXPECT_EQ(verdictOf(report.kinds[1].lines, 3), Verdict::slower);
    EXPECT_EQ(verdictOf(report.kinds[2].lines, 3), Verdict::same);
    EXPECT_NE(verdictOf(report.lines, 3), Verdict::slower);
    EXPECT_EQ(exitStatus(report, false), exitWorse);
    const std::string text = describe(report);
    const size_t section = text.find("Slower on family 6 model 2 stepping 1, and not on all kinds of machines (1)\n");
    ASSERT_NE(section, std::string::npos) << text;
    EXPECT_NE(text.find("veksX_G729_16s len=3\n", section), std::string::npos) << text;
    EXPECT_EQ(text.find("Slower on family 6 model 1"), std::string::npos);
    const nlohmann::json json = toJson(report);
    EXPECT_EQ(json["schema"], "krlab-verdict-1");
    ASSERT_EQ(json["machines"].size(), 3U);
    EXPECT_EQ(json["machines"][1]["summary"]["slower"], 1);
    EXPECT_EQ(json["machines"][1]["lines"][3]["verdict"], "slower");
    EXPECT_EQ(json["machines"][1]["hosts"].size(), 6U);
    EXPECT_EQ(json["lines"].size(), size_t{lines});
}

TEST(LabFleetVerdict, TheOrderInWhichTasksWereFetchedDoesNotMatter) {
    const TempDir directory;
    Store forwards(directory.path("f.db"));
    Store backwards(directory.path("b.db"));
    const Change change = [](int, int line) { return line == 3 ? 1.1 : 1.0; };
    fill(forwards, 6, {1, 2}, change);
    fill(backwards, 6, {1, 2}, change, true);
    const nlohmann::json a = toJson(fleetVerdict(forwards, {}));
    const nlohmann::json b = toJson(fleetVerdict(backwards, {}));
    for (const char* member : {"machines", "summary", "rounds", "common"}) {
        EXPECT_EQ(a[member], b[member]) << member;
    }
}

TEST(LabFleetVerdict, WhoIsTheOldOneOfTwoCopiesMakesNoDifference) {
    const TempDir directory;
    Store store(directory.path("all.db"));
    fill(store, 12, {1, 2}, [](int, int) { return 1.0; });
    const VerdictReport report = fleetVerdict(store, {"", "before", "after"});
    const VerdictReport turned = fleetVerdict(store, {"", "after", "before"});
    for (size_t i = 0; i < report.lines.size(); ++i) {
        EXPECT_NEAR(report.lines[i].ratio * turned.lines[i].ratio, 1, 1e-6);
        EXPECT_NEAR(report.lines[i].low * turned.lines[i].high, 1, 1e-6);
    }
    EXPECT_EQ(countVerdicts(report.lines).slower + countVerdicts(report.lines).faster, 0U);
}

// With one kind alone each line has an eighth of the error; with two kinds, lines over all count as well.
TEST(LabFleetVerdict, LinesAreAccountedForOverAllKindsOfMachines) {
    const auto width = [](const std::vector<int>& models) {
        const TempDir directory;
        Store store(directory.path("all.db"));
        // Rounds whose noise is a ladder: the interval reaches as far up as the tail asks for.
        int task = 0;
        for (const int model : models) {
            addTask(store, {"p", task, "n", model}, 0, 40, lines,
                    [](int round, bool, int) { return 1000.0 * (1 + 0.01 * round); });
            ++task;
        }
        FleetChoice choice;
        choice.threshold = 0.0001; // none is the same: intervals are those of the step-down
        return fleetVerdict(store, choice).kinds[0].lines[0].high;
    };
    EXPECT_LT(width({1}), width({1, 2}));
    EXPECT_LT(width({1, 2}), width({1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(LabFleetVerdict, SettingsAreJudgedApart) {
    const TempDir directory;
    Store store(directory.path("all.db"));
    for (int task = 0; task < 8; ++task) {
        const bool second = task % 2 == 1;
        addTask(store, {"p", task, "n", 1, second ? "misaligned" : "usual"}, 0, 6, lines,
                [&](int round, bool newer, int line) {
                    return (second ? 2000 : 1000) * (newer && second && line == 2 ? 1.1 : 1) *
                           noise(task, round, newer, line);
                });
    }
    const VerdictReport report = fleetVerdict(store, {});
    ASSERT_EQ(report.kinds.size(), 2U);
    EXPECT_EQ(report.kinds[0].name(), "family 6 model 1 stepping 1, misaligned");
    EXPECT_EQ(verdictOf(report.kinds[0].lines, 2), Verdict::slower);
    EXPECT_EQ(verdictOf(report.kinds[1].lines, 2), Verdict::same);
}

TEST(LabFleetVerdict, FeaturesAloneTellKindsApartAndAreThenNamed) {
    const TempDir directory;
    Store store(directory.path("all.db"));
    for (int task = 0; task < 2; ++task) {
        const long long run = store.beginRun({});
        store.markFleet({run, "p", task, "usual", {"before", "after"}});
        for (const bool newer : {false, true}) {
            Pass pass = fleetPass({"p", task, "n"}, newer ? "after" : "before", 0, 1, [](int) { return 100.0; });
            pass.identity.machine.features = task == 0 ? "1-1" : "1-2";
            store.addPass(run, 0, pass);
        }
    }
    const VerdictReport report = fleetVerdict(store, {});
    ASSERT_EQ(report.kinds.size(), 2U);
    EXPECT_EQ(report.kinds[0].machine, "family 6 model 1 stepping 1 features 1-1");
}

TEST(LabFleetVerdict, WhatCanNotBeJudgedIsTold) {
    const TempDir directory;
    Store store(directory.path("all.db"));
    EXPECT_THROW(fleetVerdict(store, {}), Fault);
    fill(store, 1, {1}, [](int, int) { return 1.0; });
    EXPECT_THROW(fleetVerdict(store, {"other", "", ""}), Fault);
    EXPECT_THROW(fleetVerdict(store, {"", "before", "before"}), Fault);
    EXPECT_THROW(fleetVerdict(store, {"", "before", "nobody"}), Fault);
    EXPECT_EQ(fleetVerdict(store, {"nightly", "", ""}).rounds, 4); // by the plan's name
    const VerdictReport report = fleetVerdict(store, {"p", "", ""});
    EXPECT_EQ(report.rounds, 4);
    ASSERT_EQ(report.remarks.size(), 1U);
    EXPECT_EQ(report.remarks[0], "8 lines have too few rounds for an interval: give the plan more tasks or passes");
}

TEST(LabFleetVerdict, LinesOfOneSubjectAloneMakeTheStatusTwo) {
    const TempDir directory;
    Store store(directory.path("all.db"));
    fill(store, 4, {1}, [](int, int line) { return line == 1 ? 0.0 : 1.0; }); // no clocks on the new side
    const VerdictReport report = fleetVerdict(store, {});
    ASSERT_EQ(report.onlyOld.size(), 1U);
    EXPECT_EQ(report.onlyOld[0].parameters[0].value, "1");
    EXPECT_EQ(exitStatus(report, false), exitFailed);
}
