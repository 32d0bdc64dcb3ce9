// What a measured function may do to the process of the run, beside a fault: it costs no other test and no finished
// row.
#include "commalocale.h"
#include "faultrun.h"
#include "rig_process.h"

#include <csignal>
#include <gtest/gtest.h>

namespace {

std::vector<std::string> loudKeys(const std::vector<std::string>& more) {
    std::vector<std::string> keys = quickKeys({"-LPERF"});
    keys.insert(keys.end(), more.begin(), more.end());
    return keys;
}

// The rows of a table, without its head.
std::string rowsOf(const RigDirectory& rig) {
    const std::string table = rig.masked("rig.csv");
    const size_t title = table.find("\nfunction,");
    return title == std::string::npos ? table : table.substr(table.find('\n', title + 1) + 1);
}

} // namespace

TEST(GuardedRun, ExitOfAMeasuredFunctionIsToldAndKeepsEveryFinishedRow) {
    const struct {
        const char* key;
        const char* message;
        int status;
    } rows[] = {{"-f=dmExits", "-- The run is cut short: exit(0) in vekFunctionCalls of dmExits\n", 1},
                {"-f=dmExitsWithFive", "-- The run is cut short: exit(5) in vekFunctionCalls of dmExitsWithFive\n", 5}};
    for (const auto& row : rows) {
        const RigDirectory rig(FAULTRIG, "rig");
        const RigResult run = rig.run(loudKeys({"-f=frGood", row.key, "-r", "-o", "-g"}));
        EXPECT_EQ(row.status, run.exitCode) << run.signal;
        EXPECT_EQ(1, countOf(run.out, row.message)) << run.out;
        EXPECT_EQ(grid("frGood"), rowsOf(rig));
        EXPECT_EQ(rig.read("rig.txt"), run.out);
        EXPECT_FALSE(rig.exists("rig.end"));
    }
}

TEST(GuardedRun, FaultInAnotherThreadEndsTheRunAsUsualAndKeepsEveryFinishedRow) {
    const RigDirectory rig(FAULTRIG, "rig");
    const RigResult run = rig.run(loudKeys({"-f=frGood", "-f=dmCrashesInThread", "-r", "-o"}));
    EXPECT_EQ(SIGSEGV, run.signal) << run.exitCode;
    EXPECT_EQ(1, countOf(run.out, "-- The run is cut short: a fault in another thread\n")) << run.out;
    EXPECT_EQ(1, countOf(run.out, "-OK         frGood"));
    EXPECT_EQ(1, countOf(rig.read("rig.txt"), "-OK         frGood"));
    EXPECT_EQ(grid("frGood"), rowsOf(rig));
}

TEST(GuardedRun, SignalsThatAFunctionSpoiledAreSetAnewForTheNextTest) {
    const RigDirectory rig(FAULTRIG, "rig");
    const std::vector<std::string> keys =
        loudKeys({"-f=dmSpoilsSignals", "-f=frMany0000", "-f=frMany0001", "-f=frMany0002", "-f=frMany0003",
                  "-f=dmRunAway", "-f=frManySurvived", "-r", "-g"});
    const RigResult run = rig.run(keys);
    EXPECT_EQ(1, run.exitCode) << run.signal;
    EXPECT_EQ(5, countOf(run.out, "in vekFunctionCalls\n")) << run.out;
    EXPECT_EQ(1, countOf(run.out, "-OK         dmSpoilsSignals"));
    EXPECT_NE(std::string::npos, rowsOf(rig).find(grid("frManySurvived")));

    RigConsole console;
    console.outputHangsUp = true;
    EXPECT_EQ(1, rig.run(keys, console).exitCode) << "a write to nobody ends no run either";
    EXPECT_NE(std::string::npos, rowsOf(rig).find(grid("frManySurvived")));
}

TEST(GuardedRun, LocaleOfAFunctionReachesNoNumber) {
    const CommaLocale locale;
    if (!locale.exists()) {
        GTEST_SKIP() << "no locale can be made";
    }
    const RigDirectory rig(FAULTRIG, "rig");
    const RigResult run = rig.run(loudKeys({"-f=dmSetsLocale", "-f=frManySurvived", "-r"}));
    EXPECT_EQ(0, run.exitCode) << run.out;
    EXPECT_EQ("dmSetsLocale,-,-,-,-,-,-,-,-,nLps=2,<clocks>, ,<usec>,-\n" + grid("frManySurvived"), rowsOf(rig));
}

TEST(GuardedRun, DirectoryOfAFunctionMovesNoFileOfTheRun) {
    const RigDirectory rig(FAULTRIG, "rig");
    RigConsole console;
    console.relativeName = true;
    const RigResult run = rig.run(loudKeys({"-f=dmChangesDirectory", "-r", "-g"}), console);
    EXPECT_EQ(0, run.exitCode) << run.out;
    EXPECT_EQ(1, countOf(run.out, "create file ./rig.end at the end of KR work\n"));
    EXPECT_EQ(0, countOf(run.out, "Can't open file"));
    EXPECT_TRUE(rig.exists("rig.end"));
}

TEST(GuardedRun, ChildOfAFunctionWritesNothingOfTheRun) {
    const struct {
        const char* name;
        std::vector<std::string> way;
    } rows[] = {{"dmChildExits", {}},
                {"dmChildExits", {"-dMethod=Statistic", "-dNumCalls=2", "-dTotalCpuClocks=0"}},
                {"dmChildExits", {"-SU"}},
                {"dmChildExits", {"-SU", "-dMethod=Statistic", "-dNumCalls=2", "-dTotalCpuClocks=0"}},
                {"dmChildReturns", {}},
                {"dmChildCrashes", {}}};
    for (const auto& row : rows) {
        const RigDirectory rig(FAULTRIG, "rig");
        const std::string name = row.name;
        std::vector<std::string> keys =
            loudKeys({"-LINFO", "-f=frGood", "-f=" + name, "-f=frManySurvived", "-r", "-u", "-o"});
        keys.insert(keys.end(), row.way.begin(), row.way.end());
        const RigResult run = rig.run(keys);
        EXPECT_EQ(0, run.exitCode) << name << run.out;
        for (const std::string& text : {run.out, rig.read("rig.txt")}) {
            EXPECT_EQ(1, countOf(text, "Command line options:")) << name << text;
            EXPECT_EQ(1, countOf(text, "| -OK         frGood ")) << name;
            EXPECT_EQ(1, countOf(text, "| Function  : " + name)) << name;
            EXPECT_EQ(1, countOf(text, "| -OK         " + name)) << name << text;
            EXPECT_EQ(3, countOf(text, "Test has been registered")) << name << (row.way.empty() ? "" : row.way[0]);
            EXPECT_EQ(1, countOf(text, "KR Summary")) << name;
        }
        EXPECT_EQ(1, countOf(rig.read("rig.csv"), name + ","));
        EXPECT_EQ(1, countOf(rig.read("rig_sum.csv"), name + ","));
        EXPECT_EQ(1, countOf(rig.read("rig_sum.csv"), ".Number of tests,3\n"));
    }
}

TEST(GuardedRun, ConsoleThatHangsUpCutsNoTableShort) {
    const RigDirectory rig(FAULTRIG, "rig");
    RigConsole console;
    console.outputHangsUp = true;
    const RigResult run = rig.run(loudKeys({"-LTRACE", "-f=frGood", "-f=frManySurvived", "-r", "-g"}), console);
    EXPECT_EQ(0, run.exitCode) << run.signal;
    EXPECT_EQ(grid("frGood") + grid("frManySurvived"), rowsOf(rig));
    EXPECT_TRUE(rig.exists("rig.end"));
}
