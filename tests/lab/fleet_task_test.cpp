// A task of a fleet with a program in place of the rig: what it leaves, where it goes on, what it refuses.
#include "fakerig.h"
#include "faultof.h"
#include "fleetmerge.h"
#include "fleetstatus.h"
#include "fleettask.h"
#include "interrupt.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace krlab;

namespace {

namespace fs = std::filesystem;

// Counts its uses in the file that its first line names.
std::string rigText(const std::string& uses) {
    return "echo used >>" + shellQuoted(uses) + "\n" + scriptHead + scriptTest("f1") + "\nfi\n" + scriptEnd;
}

class Fleet {
public:
    explicit Fleet(int passes = 2, int subjects = 2, const std::string& processor = "")
        : m_older(rigText(m_directory.path("uses-older"))), m_newer(rigText(m_directory.path("uses-newer"))) {
        FleetPlan plan;
        plan.subjects = {{"before", m_older.file("rig.sh")}, {"after", m_newer.file("rig.sh")}};
        plan.subjects.resize(static_cast<size_t>(subjects));
        plan.selections = {{"-ff1"}};
        plan.settings.emplace_back().name = "usual";
        plan.nodes.push_back({"", processor, 2});
        plan.passes = passes;
        FleetFolder::create(path(), plan, m_directory.path(), "");
        fs::create_directory(m_directory.path("node"));
    }
    std::string path() const { return m_directory.path("folder"); }
    FleetFolder folder() const { return FleetFolder(path()); }
    int run(int task) {
        const FleetFolder opened = folder();
        FleetTaskOptions options;
        options.task = task;
        options.local = m_directory.path("node");
        options.note = [&](const std::string& text) {
            std::ofstream(opened.logFile(task), std::ios::app) << text << "\n";
            log += text + "\n";
        };
        return runFleetTask(opened, options);
    }
    size_t uses(const std::string& subject) const {
        const std::string text = m_directory.read("uses-" + subject);
        return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
    }
    bool nodeIsEmpty() const { return fs::is_empty(m_directory.path("node")); }
    const TempDir& directory() const { return m_directory; }

    std::string log;

private:
    TempDir m_directory;
    FakeRig m_older;
    FakeRig m_newer;
};

std::vector<std::string> placesOf(const std::string& file) {
    std::vector<std::string> places;
    for (const PassRecord& pass : Store(file).passes()) {
        places.push_back(std::to_string(pass.round) + " " + pass.subject);
    }
    std::sort(places.begin(), places.end());
    return places;
}

} // namespace

TEST(LabFleetTask, ATaskLeavesAWholeStoreAndNothingElse) {
    Fleet fleet;
    EXPECT_EQ(fleet.run(1), 0);
    const FleetFolder folder = fleet.folder();
    EXPECT_TRUE(fs::exists(folder.taskFile(1)));
    EXPECT_FALSE(fs::exists(folder.partFile(1)));
    EXPECT_TRUE(fleet.nodeIsEmpty());
    EXPECT_EQ(folder.missing(), (std::vector<int>{0}));
    EXPECT_EQ(placesOf(folder.taskFile(1).string()),
              (std::vector<std::string>{"0 after", "0 before", "1 after", "1 before"}));
    const Store store(folder.taskFile(1).string());
    ASSERT_EQ(store.fleetRuns().size(), 1U);
    EXPECT_EQ(store.fleetRuns()[0].plan, folder.id());
    EXPECT_EQ(store.runs()[0].status, 0);
    EXPECT_EQ(store.runs()[0].label, "fleet");
    const PassRecord pass = store.passes()[0];
    EXPECT_EQ(pass.figures, 1);
    EXPECT_EQ(pass.identity.machine.processor, thisMachine().processor);
    EXPECT_EQ(pass.identity.machine.features, thisMachine().features);
    EXPECT_FALSE(pass.identity.machine.features.empty());
}

TEST(LabFleetTask, AWholeTaskIsNotMeasuredAgain) {
    Fleet fleet;
    fleet.run(0);
    const size_t uses = fleet.uses("older");
    EXPECT_EQ(fleet.run(0), 0);
    EXPECT_EQ(fleet.uses("older"), uses);
    EXPECT_NE(fleet.log.find("task 0 is whole already"), std::string::npos);
}

TEST(LabFleetTask, ATaskGoesOnBehindItsFinishedRounds) {
    Fleet fleet(4);
    fleet.run(0);
    const FleetFolder folder = fleet.folder();
    // As it was after two rounds.
    const TempDir directory;
    const Store whole(folder.taskFile(0).string());
    {
        Store part(directory.path("part"));
        const long long run = part.beginRun(whole.runs()[0]);
        FleetRun mark = whole.fleetRuns()[0];
        mark.run = run;
        part.markFleet(mark);
        for (const PassRecord& pass : whole.passes()) {
            if (pass.round == 1 || pass.round == 3) {
                part.addPass(run, pass.round, whole.pass(pass.id));
            }
        }
        part.copyTo(directory.path("copy"));
    }
    fs::remove(folder.taskFile(0));
    fs::copy(directory.path("copy"), folder.partFile(0));
    const size_t before = fleet.uses("older");
    EXPECT_EQ(fleet.run(0), 0);
    EXPECT_NE(fleet.log.find("2 of 4 rounds to measure"), std::string::npos);
    EXPECT_GE(fleet.uses("older") - before, 2U); // each pass, and asking for its libraries
    EXPECT_EQ(placesOf(folder.taskFile(0).string()).size(), 8U);
}

TEST(LabFleetTask, ATaskThatIsEndedKeepsNoPassThatWasCutOff) {
    Fleet fleet;
    setInterrupted(true);
    EXPECT_EQ(fleet.run(0), exitInterrupted);
    setInterrupted(false);
    EXPECT_FALSE(fs::exists(fleet.folder().taskFile(0)));
    EXPECT_FALSE(fs::exists(fleet.folder().partFile(0)));
    EXPECT_TRUE(fleet.nodeIsEmpty());
    EXPECT_EQ(fleet.run(0), 0);
}

TEST(LabFleetTask, ASingleSubjectIsMeasuredAlone) {
    Fleet fleet(3, 1);
    EXPECT_EQ(fleet.run(0), 0);
    EXPECT_EQ(placesOf(fleet.folder().taskFile(0).string()),
              (std::vector<std::string>{"0 before", "1 before", "2 before"}));
}

TEST(LabFleetTask, AnotherBuildThanTheSubmittedOneIsRefused) {
    Fleet fleet;
    std::ofstream(fs::path(fleet.path()) / "subjects/1/rig.sh", std::ios::app) << "# changed\n";
    EXPECT_NE(faultIn([&] { fleet.run(0); }).find("is not what was submitted"), std::string::npos);
    EXPECT_TRUE(fleet.nodeIsEmpty());
    EXPECT_EQ(fleet.folder().missing().size(), 2U);
}

TEST(LabFleetTask, ANodeOfAnotherProcessorIsRefused) {
    Fleet fleet(1, 2, "family 0 model 0");
    EXPECT_NE(faultIn([&] { fleet.run(0); }).find("and the plan wants family 0 model 0: name \"features\""),
              std::string::npos);
}

TEST(LabFleetTask, APartOfAnotherTaskIsRefused) {
    Fleet fleet;
    fleet.run(0);
    fs::rename(fleet.folder().taskFile(0), fleet.folder().partFile(1));
    EXPECT_NE(faultIn([&] { fleet.run(1); }).find("does not belong to task 1"), std::string::npos);
}

TEST(LabFleetTask, WhatAKilledTaskLeftOnItsNodeIsTakenAway) {
    Fleet fleet;
    const fs::path left = fs::path(fleet.directory().path("node")) / ("krlab-" + fleet.folder().id() + "-0.abcdef");
    fs::create_directory(left);
    std::ofstream(left / "task.db") << "half";
    fleet.run(0);
    EXPECT_TRUE(fleet.nodeIsEmpty());
}

TEST(LabFleetTask, ARigThatDiesEndsTheTaskWithStatusTwoAndKeepsTheRest) {
    const TempDir directory;
    const FakeRig rig(scriptHead + scriptTest("f1") + "\nfi\n" + scriptTest("f2", false) + "kill -ABRT $$\nfi\n" +
                      scriptEnd);
    FleetPlan plan;
    plan.subjects = {{"before", rig.file("rig.sh")}, {"after", rig.file("rig.sh")}};
    plan.selections = {{"-ff"}};
    plan.settings.emplace_back().name = "usual";
    plan.nodes.emplace_back();
    plan.passes = 1;
    const FleetFolder folder = FleetFolder::create(directory.path("folder"), plan, directory.path(), "");
    std::string log;
    FleetTaskOptions options;
    options.local = directory.path();
    options.note = [&](const std::string& text) { log += text + "\n"; };
    EXPECT_EQ(runFleetTask(folder, options), exitFailed);
    EXPECT_NE(log.find("before: the rig was ended by signal 6 (Aborted) in f2"), std::string::npos) << log;
    const std::vector<PassRecord> passes = Store(folder.taskFile(0).string()).passes();
    ASSERT_EQ(passes.size(), 2U);
    EXPECT_GE(passes[0].figures, 1);
    EXPECT_FALSE(passes[0].complete);
}

TEST(LabFleetFolder, WhatCanNotBeMeasuredLeavesNoFolder) {
    const TempDir directory;
    const FakeRig rig(rigText(directory.path("uses")));
    FleetPlan plan;
    plan.subjects = {{"before", rig.file("rig.sh")}, {"after", "nowhere"}};
    plan.selections = {{"-ff1"}};
    plan.settings.emplace_back();
    plan.nodes.emplace_back();
    EXPECT_NE(faultIn([&] { FleetFolder::create(directory.path("f"), plan, directory.path(), ""); }), "");
    plan.subjects.pop_back();
    EXPECT_NE(faultIn([&] {
                  FleetFolder::create(directory.path("50%"), plan, directory.path(), "");
              }).find("Slurm can't take a folder"),
              std::string::npos);
    EXPECT_EQ(std::distance(fs::directory_iterator(directory.path()), fs::directory_iterator()), 0);
    FleetFolder::create(directory.path("f"), plan, directory.path(), "");
    EXPECT_NE(
        faultIn([&] { FleetFolder::create(directory.path("f"), plan, directory.path(), ""); }).find("is there already"),
        std::string::npos);
}

TEST(LabFleetFolder, ADamagedPlanIsTold) {
    Fleet fleet;
    writeWhole(fs::path(fleet.path()) / "plan.json", "{ \"id\": 3");
    EXPECT_NE(faultIn([&] { fleet.folder(); }).find("plan.json: is damaged"), std::string::npos);
    EXPECT_NE(faultIn([&] { const FleetFolder folder(fleet.directory().path("node")); }).find("is no job folder"),
              std::string::npos);
}

TEST(LabFleetFetch, AFleetIsFetchedAsFarAsItIsAndTwiceChangesNothing) {
    Fleet fleet;
    fleet.run(0);
    Store store(fleet.directory().path("all.db"));
    const auto fetch = [&] { return fetchFleet(fleet.folder(), store, [](size_t) {}); };
    FetchResult result = fetch();
    EXPECT_EQ(result.merged.passes, 4U);
    EXPECT_EQ(result.tasks, 1U);
    result = fetch();
    EXPECT_EQ(result.merged.passes, 0U);
    EXPECT_EQ(result.tasks, 1U);
    fleet.run(1);
    EXPECT_EQ(fetch().merged.passes, 4U);
    EXPECT_EQ(store.passes().size(), 8U);
}

TEST(LabFleetFetch, ADamagedTaskIsNamedAndTheOthersAreMerged) {
    Fleet fleet;
    fleet.run(0);
    fleet.run(1);
    writeWhole(fleet.folder().taskFile(0), "no store");
    Store store(fleet.directory().path("all.db"));
    const FetchResult result = fetchFleet(fleet.folder(), store, [](size_t) {});
    ASSERT_EQ(result.failures.size(), 1U);
    EXPECT_NE(result.failures[0].find("/tasks/0.db: can't be merged into "), std::string::npos) << result.failures[0];
    EXPECT_EQ(result.merged.passes, 4U);
}

TEST(LabFleetStatus, FolderAndSlurmTellTheStateOfEachTask) {
    Fleet fleet;
    fleet.run(0);
    const FleetFolder folder = fleet.folder();
    FleetStatus status =
        fleetStatus(folder, {{0, {0, "COMPLETED", "n1", "", 8}}, {1, {1, "PENDING", "", "Resources", 0}}});
    EXPECT_EQ(status.tasks[0].state, FleetTaskState::State::whole);
    EXPECT_EQ(status.tasks[1].state, FleetTaskState::State::waiting);
    EXPECT_EQ(status.secondsLeft, 8);
    EXPECT_EQ(describe(status), "fleet: 2 tasks: 1 whole, 0 running, 1 waiting, 0 ended without a whole store, some 8s "
                                "left\n 1 waiting for: Resources\n");
    status = fleetStatus(folder, {{1, {1, "TIMEOUT", "n1", "", 60}}});
    EXPECT_EQ(status.tasks[1].state, FleetTaskState::State::ended);
    EXPECT_TRUE(status.done());
    EXPECT_EQ(describe(status),
              "fleet: 2 tasks: 1 whole, 0 running, 0 waiting, 1 ended without a whole store\n task 1: "
              "ended (TIMEOUT) on n1, 0 rounds done\n");
}

TEST(LabFleetStatus, TheTimeLeftComesFromFinishedTasksElseFromFinishedRounds) {
    using State = FleetTaskState::State;
    const auto task = [](State state, int rounds, double seconds) {
        FleetTaskState one;
        one.state = state;
        one.rounds = rounds;
        one.seconds = seconds;
        return one;
    };
    EXPECT_LT(secondsLeft({task(State::waiting, 0, 0)}, 4), 0);
    EXPECT_LT(secondsLeft({task(State::running, 0, 9), task(State::waiting, 0, 0)}, 4), 0);
    // A quarter took 10 s: 40 s a task.
    EXPECT_EQ(secondsLeft({task(State::running, 1, 10), task(State::waiting, 0, 0)}, 4), 30 + 40);
    EXPECT_EQ(secondsLeft({task(State::whole, 4, 20), task(State::running, 1, 5), task(State::running, 1, 15),
                           task(State::waiting, 2, 0)},
                          4),
              (15 + 5 + 10) / 2.0);
}
