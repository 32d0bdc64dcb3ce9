// krlab run: readings brought together, restless lines again, deaths and interrupts.
#include "fakerig.h"
#include "labprocess.h"
#include "linecourse.h"
#include "store.h"

#include <csignal>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace krlab;

namespace {

Pass passWith(const std::vector<std::pair<std::string, double>>& figures) {
    Pass pass;
    for (const auto& [function, clocks] : figures) {
        Figure figure;
        figure.line.function = function;
        figure.clocks = clocks;
        pass.figures.push_back(figure);
    }
    return pass;
}

/// A rig that never ends; its process number lies in the file pid.
std::string endlessRig(const std::string& file) {
    return "echo $$ >" + file + ".new; mv " + file + ".new " + file + "; exec sleep 600\n";
}

bool lives(const std::string& pidText) {
    return ::kill(static_cast<pid_t>(std::stol(pidText)), 0) == 0;
}

/// A lab in the midst of its first pass, with a store.
struct EndlessRun {
    EndlessRun() : rig(endlessRig(directory.path("pid"))) {
        lab = directory.start({"--rig", rig.subject().program, "run", "--store", "s.db"});
        EXPECT_TRUE(comesTrue([&] { return directory.exists("pid"); }));
    }

    LabDirectory directory;
    FakeRig rig;
    pid_t lab = 0;
};

} // namespace

TEST(LabCourse, SmallestMedianAndSpreadComeFromAllReadings) {
    LineCourse course;
    for (const double clocks : {110.0, 100.0, 103.0, 150.0}) {
        course.take(passWith({{"f", clocks}}), false);
    }
    const Readings& readings = course.lines()[0];
    EXPECT_EQ(readings.smallest(), 100);
    EXPECT_EQ(readings.median(), 106.5);
    EXPECT_DOUBLE_EQ(readings.spread(), 0.10);
    course.take(passWith({{"f", 101}}), false);
    EXPECT_EQ(course.lines()[0].median(), 103);
    EXPECT_DOUBLE_EQ(course.lines()[0].spread(), 0.03);
    EXPECT_EQ(course.restless(0.03, false).size(), 0u);
    EXPECT_EQ(course.restless(0.02, false).size(), 1u);
}

TEST(LabCourse, TwoReadingsNeverAgree) {
    LineCourse course;
    course.take(passWith({{"f", 100}}), false);
    course.take(passWith({{"f", 100}}), false);
    EXPECT_EQ(course.restless(0.5, false).size(), 1u);
}

TEST(LabCourse, ShortCallsKeepReadingsOfTheirOwnMethodOnly) {
    LineCourse course;
    course.take(passWith({{"short", 40}, {"long", 400}}), false);
    ASSERT_EQ(course.shortLines().size(), 1u);
    EXPECT_EQ(course.shortLines()[0].function, "short");
    course.take(passWith({{"short", 20}}), true);
    course.take(passWith({{"short", 41}, {"long", 401}}), false);
    EXPECT_EQ(course.lines()[0].clocks, std::vector<double>{20});
    EXPECT_EQ(course.lines()[1].clocks, (std::vector<double>{400, 401}));
    EXPECT_EQ(course.shortLines().size(), 1u);
    EXPECT_EQ(course.restless(0.01, true).size(), 1u);
}

TEST(LabCourse, AChosenMethodIsLeftToTheUser) {
    EXPECT_EQ(shortCallKeys({"-fX"}).size(), 2u);
    EXPECT_TRUE(shortCallKeys({"-dMethod=Manual"}).empty());
    EXPECT_TRUE(shortCallKeys({"-d", "Method=Manual"}).empty());
}

TEST(LabRun, AllPassesAreKeptAndReported) {
    const LabDirectory directory;
    const LabResult result = directory.run({"run", "--passes", "2", "--accuracy", "50%", "--label", "abc", "--json",
                                            "r.json", "--", "-f=veksDCTFwd_G7221_16s", "-dAccuracy=50"});
    EXPECT_EQ(result.status, 0) << result.err;
    const auto document = nlohmann::json::parse(directory.read("r.json"));
    ASSERT_EQ(document["lines"].size(), 2u);
    EXPECT_EQ(document["lines"][1]["parameters"]["Lenght"], "640");
    EXPECT_GE(document["lines"][1]["passes"], 3);
    EXPECT_LE(document["lines"][1]["smallest"], document["lines"][1]["median"]);
    EXPECT_EQ(document["identity"]["libraries"].size(), 3u);
    const Store store(directory.path("krlab.db"));
    EXPECT_GE(store.passes().size(), 3u);
    EXPECT_EQ(store.runs()[0].label, "abc");
    EXPECT_EQ(store.runs()[0].status, 0);
}

TEST(LabRun, ADyingRigIsToldAndTheRestIsMeasured) {
    const FakeRig rig(scriptHead + scriptTest("f1") + "fi\n" + scriptTest("f2", false) + "kill -ABRT $$; fi\n" +
                      scriptTest("f3") + "fi\n" + scriptEnd);
    const LabDirectory directory;
    const LabResult result = directory.run(
        {"--rig", rig.subject().program, "run", "--quiet", "--passes", "3", "--json", "r.json", "--", "-dMethod=Auto"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "krlab: the rig was ended by signal 6 (Aborted) in f2\n");
    const auto document = nlohmann::json::parse(directory.read("r.json"));
    std::vector<std::string> functions;
    for (const auto& line : document["lines"]) {
        functions.push_back(line["function"]);
    }
    EXPECT_NE(std::find(functions.begin(), functions.end(), "f3"), functions.end());
    // So few lines are all shown, restless or not.
    EXPECT_NE(result.out.find("smallest     median   spread"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("  f1 "), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("  f3 "), std::string::npos) << result.out;
}

TEST(LabRun, AStoreThatIsTakenAwayCostsNoReport) {
    const LabDirectory directory;
    const FakeRig rig("rm -f s.db s.db-*\n" + scriptHead + scriptTest("f1") + "fi\n" + scriptEnd);
    const LabResult result = directory.run(
        {"--rig", rig.subject().program, "run", "--quiet", "--passes", "1", "--store", "s.db", "--", "-dMethod=Auto"});
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.out.find("1 lines in"), std::string::npos) << result.out;
    EXPECT_EQ(result.err, "krlab: s.db: the store was moved or deleted while it was in use\n");
}

TEST(LabRun, CtrlCEndsWithAReportAndWithoutTheRig) {
    const EndlessRun run;
    ::kill(run.lab, SIGINT);
    const LabResult result = run.directory.wait(run.lab);
    EXPECT_EQ(result.status, 130);
    EXPECT_NE(result.out.find("0 lines in 1 passes"), std::string::npos) << result.out;
    EXPECT_FALSE(lives(run.directory.read("pid")));
    EXPECT_EQ(Store(run.directory.path("s.db")).runs()[0].status, 130);
}

TEST(LabRun, AKilledLabLeavesNoRigBehind) {
    const EndlessRun run;
    ::kill(run.lab, SIGKILL);
    run.directory.wait(run.lab);
    EXPECT_TRUE(comesTrue([&] { return !lives(run.directory.read("pid")); }));
    EXPECT_EQ(Store(run.directory.path("s.db")).runs()[0].status, -1);
}

TEST(LabRun, TwiceCtrlCEndsAtOnce) {
    const LabDirectory directory;
    const FakeRig rig(endlessRig(directory.path("pid")));
    const pid_t lab = directory.start({"--rig", rig.subject().program, "run", "--store", "s.db"});
    ASSERT_TRUE(comesTrue([&] { return directory.exists("pid"); }));
    ::kill(lab, SIGINT);
    ::kill(lab, SIGTERM);
    EXPECT_EQ(directory.wait(lab).status, 130);
    EXPECT_TRUE(comesTrue([&] { return !lives(directory.read("pid")); }));
}
