// Runs that something from outside disturbs: a kill, a full disk, a directory that vanishes or can't be written, and a
// console that is not there.
#include "faultrun.h"
#include "filelimit.h"
#include "rig_process.h"

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>

TEST(DisturbedRun, KillInMidMeasurementLeavesEveryFinishedLineAndTheNextRunWorks) {
    const RigDirectory rig(FAULTRIG, "rig");
    rig.write("hold", "");
    const std::vector<std::string> measuring = quickKeys({"-ffrGood", "-f=hdHolds", "-f-AtTheEnd", "-r", "-u", "-g"});
    const pid_t process = rig.start(measuring);
    EXPECT_TRUE(waitUntil([&] { return countOf(rig.read("rig.csv"), "\nhdHolds,") == 2; }));
    kill(process, SIGKILL);
    EXPECT_EQ(SIGKILL, RigDirectory::wait(process).signal);
    const std::string finished = grid("frGood") + sized("hdHolds", "8") + sized("hdHolds", "16");
    EXPECT_EQ(faultTableHead + faultTableTitle + finished, rig.masked("rig.csv"));
    EXPECT_EQ(1, countOf(rig.read("rig_sum.csv"), "frGood,Timing,"));
    EXPECT_FALSE(rig.exists("rig.end"));

    std::filesystem::remove(rig.file("hold"));
    EXPECT_EQ(0, rig.run(measuring).exitCode);
    EXPECT_EQ(faultTableHead + faultTableTitle + finished + sized("hdHolds", "32"), rig.masked("rig.csv"));
    EXPECT_TRUE(rig.exists("rig.end"));
}

TEST(DisturbedRun, KillBeforeTheRegularExitKeepsTheOldIniFile) {
    const RigDirectory rig(FAULTRIG, "rig");
    rig.write("rig.ini", "[frGood]\nSize=4\n");
    rig.write("hold", "");
    const pid_t process = rig.start(quickKeys({"-f=hdHolds", "-i", "-r"}));
    EXPECT_TRUE(waitUntil([&] { return countOf(rig.read("rig.csv"), "\nhdHolds,") == 2; }));
    kill(process, SIGKILL);
    RigDirectory::wait(process);
    EXPECT_EQ("[frGood]\nSize=4\n", rig.read("rig.ini"));
}

TEST(DisturbedRun, FullDiskEndsNoRun) {
    const RigDirectory rig(FAULTRIG, "rig");
    const RigResult run = rig.run(quickKeys(
        {"-ffrGood", "-r/dev/full", "-rgood", "-o/dev/full", "-u/dev/full", "-q/dev/full", "-g/dev/full", "-LI"}));
    EXPECT_EQ(0, run.exitCode) << run.signal;
    EXPECT_EQ(3, countOf(rig.read("good.csv"), "\nfrGood,"));
    EXPECT_NE(std::string::npos, run.out.find(".Successes       : 2"));
}

TEST(DisturbedRun, FilesThatAFullDiskLeavesIncompleteAreToldAtTheEnd) {
    const RigDirectory rig(FAULTRIG, "rig");
    const RigResult run = rig.run(quickKeys({"-f=frGood", "-r/dev/full", "-o/dev/full", "-q/dev/full", "-g/dev/full"}));
    EXPECT_EQ(0, run.exitCode);
    // Title, names of the columns and three rows; title, columns and one name line.
    const std::string told = "-- File /dev/full is incomplete: 8 lines could not be written\n"
                             "-- File /dev/full is incomplete: 6 lines could not be written\n"
                             "-- File /dev/full is incomplete\n"
                             "-- File /dev/full is incomplete\n";
    const size_t at = run.out.find("-- File");
    EXPECT_EQ(told, run.out.substr(at == std::string::npos ? run.out.size() : at)) << run.out;
}

TEST(DisturbedRun, TableThatCouldNotBeFinishedEndsInAWholeRow) {
    const RigDirectory rig(FAULTRIG, "rig");
    RigResult run;
    {
        const FileSizeLimit limit(350);
        run = rig.run(quickKeys({"-ffrGood", "-r"}));
    }
    EXPECT_EQ(0, run.exitCode) << run.signal;
    const std::string table = rig.read("rig.csv");
    EXPECT_LT(200U, table.size()) << table;
    EXPECT_EQ('\n', table.back()) << table;
    const int rows = countOf(table, "\nfrGood");
    EXPECT_GT(6, rows);
    const std::string told = " is incomplete: " + std::to_string(6 - rows) + " lines could not be written\n";
    EXPECT_EQ(1, countOf(run.out, told)) << told << run.out;
}

TEST(DisturbedRun, IniFileThatDoesNotFitStaysAsItWas) {
    const RigDirectory rig(FAULTRIG, "rig");
    const std::string old = "[frGood]\nSize=4\n";
    rig.write("rig.ini", old);
    RigResult run;
    {
        const FileSizeLimit limit(40);
        run = rig.run(quickKeys({"-f=frGood", "-I"}));
    }
    EXPECT_EQ(old, rig.read("rig.ini"));
    EXPECT_EQ(1, countOf(rig.mask(run.out), "-- Can't write file <dir>/rig.ini: it stays as it was\n")) << run.out;
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(rig.path()), std::filesystem::directory_iterator()));
    EXPECT_EQ(0, rig.run(quickKeys({"-f=frGood", "-I"})).exitCode);
    EXPECT_EQ(1, countOf(rig.read("rig.ini"), "\n[frGood]\nSize=4\n"));
}

TEST(DisturbedRun, FileThatTwoKeysNameIsTold) {
    const RigDirectory rig(FAULTRIG, "rig");
    const struct {
        std::vector<std::string> keys;
        const char* told;
    } rows[] = {
        {{"-r", "-R"}, "-- File <dir>/rig.csv is named by more than one key\n"},
        {{"-ix.csv", "-rx.csv"}, "-- File <dir>/x.csv is named by more than one key\n"},
        {{"-rk", "-gk.csv"}, "-- File <dir>/k.csv is named by more than one key\n"},
        {{"-r", "-rlink.csv"}, "-- File <dir>/link.csv is named by more than one key\n"},
        {{"-oa.b", "-ua.b", "-qa.b"}, "-- File <dir>/a.b is named by more than one key\n"},
        {{"-Ia.b", "-ga.b"}, "-- File <dir>/a.b is named by more than one key\n"},
        {{"-r", "-u", "-q", "-o", "-g", "-i", "-r/dev/null", "-u/dev/null"}, ""},
    };
    std::filesystem::create_symlink("rig.csv", rig.file("link.csv"));
    for (const auto& row : rows) {
        const RigResult run = rig.run(quickKeys(row.keys));
        const std::string out = rig.mask(run.out);
        EXPECT_EQ(*row.told != '\0' ? 1 : 0, countOf(out, "is named by more than one key")) << out;
        EXPECT_NE(std::string::npos, out.find(row.told)) << row.told << out;
    }
}

TEST(DisturbedRun, VanishedOutputDirectoryEndsNoRun) {
    const RigDirectory rig(FAULTRIG, "rig");
    std::filesystem::create_directory(rig.file("results"));
    rig.write("hold", "");
    const pid_t process = rig.start(quickKeys({"-f=hdHolds", "-f=frGood", "-lresults", "-r", "-u", "-o", "-g"}));
    EXPECT_TRUE(waitUntil([&] { return countOf(rig.read("results/rig.csv"), "\nhdHolds,") == 2; }));
    std::filesystem::remove_all(rig.file("results"));
    std::filesystem::remove(rig.file("hold"));
    EXPECT_EQ(0, RigDirectory::wait(process).exitCode);
    EXPECT_FALSE(rig.exists("results"));
}

TEST(DisturbedRun, SignalFileThatCantBeWrittenIsToldAndNothingElseHappens) {
    const RigDirectory rig(FAULTRIG, "rig");
    const RigResult run = rig.run(quickKeys({"-f=frGood", "-g/proc/none/x.end"}));
    EXPECT_EQ(0, run.exitCode);
    EXPECT_NE(std::string::npos, run.out.find("-- Can't open file /proc/none/x.end to write: ")) << run.out;
}

TEST(DisturbedRun, UnwritableDirectoryIsAFatalErrorWithExitStatusZeroAndTheSignalFile) {
    const RigDirectory rig(FAULTRIG, "rig");
    for (const char* key : {"-r/proc/none/t.csv", "-R/proc/none/t.csv", "-u/proc/none/t.csv", "-U/proc/none/t.csv",
                            "-q/proc/none/t.csv", "-o/proc/none/t.txt", "-O/proc/none/t.txt"}) {
        std::filesystem::remove(rig.file("rig.end"));
        const RigResult run = rig.run({"-B", key, "-f=frGood", "-g"});
        EXPECT_EQ(0, run.exitCode) << key;
        EXPECT_EQ(1, countOf(run.out, "-- Can't open file /proc/none/t.")) << run.out;
        EXPECT_EQ(1, countOf(run.out, "FATAL ERROR: can't open output file for writing\n")) << key;
        EXPECT_EQ(0, countOf(run.out, "Sorting functions...")) << key;
        EXPECT_EQ(0, countOf(run.out, "KR Summary")) << key;
        EXPECT_TRUE(rig.exists("rig.end")) << key;
    }
}

TEST(DisturbedRun, FileInThePlaceOfTheOutputDirectoryIsAFatalError) {
    const RigDirectory rig(FAULTRIG, "rig");
    rig.write("results", "a file");
    const RigResult run = rig.run({"-B", "-lresults", "-r", "-f=frGood"});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ(1, countOf(run.out, "FATAL ERROR: can't open output file for writing\n"));
}

TEST(DisturbedRun, IniFileThatCantBeCreatedIsAFatalError) {
    const RigDirectory rig(FAULTRIG, "rig");
    const RigResult run = rig.run({"-B", "-I/proc/none/x.ini", "-f=frGood"});
    EXPECT_EQ(0, run.exitCode);
    expectOnce(run.out,
               {"-- Can't open file /proc/none/x.ini to write: ", "FATAL ERROR: can't open ini-file for writing\n"});
    EXPECT_EQ(0, countOf(run.out, "Method = "));
}

TEST(DisturbedRun, IniFileThatIsMissingForReadingLeavesTheDefaults) {
    const RigDirectory rig(FAULTRIG, "rig");
    const RigResult run = rig.run({"-B", "-inone", "-f=frGood", "-dMethod=Manual"});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ(1, countOf(rig.mask(run.out), "-- Can't open file <dir>/none.ini to read: "));
    expectOnce(run.out, {"\n NumLoops = 10\n", "-OK         frGood"});
}

TEST(DisturbedRun, ClosedInputTakesTheDefaults) {
    const RigDirectory rig(FAULTRIG, "rig");
    RigConsole console;
    console.inputClosed = true;
    const RigResult run = rig.run({"-AAll", "-f=frGood", "-o"}, console);
    EXPECT_EQ(0, run.exitCode);
    expectOnce(run.out, {"\n Method {Auto|Manual|Statistic|Iterative} [Auto] =  Method = Auto\n",
                         "\n Size [8; 16; 32] =  Size = 8; 16; 32\n"});
}

TEST(DisturbedRun, ClosedConsoleKeepsConsoleTextOutOfTheTables) {
    const RigDirectory rig(FAULTRIG, "rig");
    RigConsole console;
    console.inputClosed = true;
    console.outputClosed = true;
    EXPECT_EQ(0, rig.run(quickKeys({"-f=frGood", "-r", "-u", "-o", "-LI"}), console).exitCode);
    EXPECT_EQ(faultTableHead + faultTableTitle + grid("frGood"), rig.masked("rig.csv"));
    EXPECT_EQ(0U, rig.read("rig_sum.csv").find("CPU,"));
    EXPECT_EQ(1, countOf(rig.read("rig.txt"), "KR Summary"));
}

TEST(DisturbedRun, ConsoleOnAFullDiskLosesNoFile) {
    const RigDirectory rig(FAULTRIG, "rig");
    RigConsole console;
    console.outputFile = "/dev/full";
    EXPECT_EQ(0, rig.run(quickKeys({"-f=frGood", "-r", "-o", "-LI"}), console).exitCode);
    EXPECT_EQ(3, countOf(rig.read("rig.csv"), "\nfrGood,"));
    EXPECT_EQ(1, countOf(rig.read("rig.txt"), "KR Summary"));
}
