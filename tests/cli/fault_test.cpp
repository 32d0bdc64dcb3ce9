// Runs of the fault program: every kind of fault in every phase of a test, its result, and that the run gets over it.
#include "faultrun.h"
#include "rig_process.h"

#include <gtest/gtest.h>

namespace {

// Text of a frame's line, `end` at its right edge.
std::string framed(const std::string& text, const std::string& end = "") {
    return "| " + text + std::string(76 - text.size() - end.size(), ' ') + end + "|\n";
}

const std::string edge = "+" + std::string(77, '-') + "+\n";
const std::string date = "Day Mon dd hh:mm:ss yyyy";

// The frame before a test.
std::string testFrame(const std::string& function, const std::string& test, const std::string& description = "") {
    return edge + framed("Function  : " + function, date) + framed("Test      : " + test) +
           framed("Source    : faultrig.cpp") + (description.empty() ? "" : framed("Description : " + description)) +
           edge;
}

// The frame behind it.
std::string resultFrame(const std::string& result, const std::string& function) {
    return edge + framed("-" + result + std::string(11 - result.size(), ' ') + function, date) + edge;
}

const char* const storage = "Illegal storage access.";
const char* const arithmetic = "FP error, such as overflow, division by zero, invalid operation.";
const char* const instruction = "Illegal instruction.";

std::string signalled(const std::string& signal, const std::string& where) {
    return "--VEK. Signal: " + signal + " in " + where + "\n";
}

// A test of one line has no element and no known operations.
std::string single(const char* name) {
    return std::string(name) + ",-,-,-,-,-,-,-,-,nLps=2,<clocks>, ,<usec>,-\n";
}

} // namespace

TEST(FaultRun, ConsoleTellsEachFaultWhereItStruckAndTheRunGoesOn) {
    const RigDirectory rig(FAULTRIG, "rig");
    const RigResult run = rig.run(quickKeys({"-ffr", "-f-frMany", "-LWARN"}));
    EXPECT_EQ(1, run.exitCode);
    const std::string expected =
        R"(Command line options: 
-B: batch mode
-s-: don't sort functions
-dMethod=Manual: set KR parameter Method=Manual
-dNumLoops=2: set KR parameter NumLoops=2
-ffr: test functions containing 'fr'
-f-frMany: don't test functions containing 'frMany'
-LWARN: write errors,warnings to console
)" + startFrame() +
        R"(--VEK. Signal: Illegal storage access. in startAndStop of frCrashInBegin test
--VEK. Signal: FP error, such as overflow, division by zero, invalid operation. in startAndStop of frCrashInStart test
 Method = Manual
 NumLoops = 2
 AlignVectorsBy = element
 VectorAlign = 0
)" + testFrame("frGood", "FrGrid", "adding up") +
        resultFrame("OK", "frGood") + testFrame("frNullWrite", "FrSingle") + signalled(storage, "vekFunctionCalls") +
        resultFrame("EXCPTFAIL", "frNullWrite") + testFrame("frIntegerDivide", "FrSingle") +
        signalled(arithmetic, "vekFunctionCalls") + resultFrame("EXCPTFAIL", "frIntegerDivide") +
        testFrame("frX87Divide", "FrSingle") + signalled(arithmetic, "vekFunctionCalls") +
        resultFrame("EXCPTFAIL", "frX87Divide") + testFrame("frIllegalInstruction", "FrSingle") +
        signalled(instruction, "vekFunctionCalls") + resultFrame("EXCPTFAIL", "frIllegalInstruction") +
        testFrame("frRunAway", "FrSingle") + signalled(storage, "vekFunctionCalls") +
        resultFrame("EXCPTFAIL", "frRunAway") + testFrame("frWordsAfterFaults", "FrSingle") +
        resultFrame("OK", "frWordsAfterFaults") + testFrame("frDenormalFlag", "FrSingle") +
        "-- Status    SSX: ?Denormal \n"
        "-- modified control status on test parameters:\n"
        "\n"
        "-- performance:\n"
        "  nLps=2      perf=<clocks>/1=<clocks> clocks\n" +
        resultFrame("BADSTSWRN", "frDenormalFlag") + testFrame("frInexactFlag", "FrSingle") +
        resultFrame("OK", "frInexactFlag") + testFrame("frRoundingMode", "FrSingle") +
        resultFrame("OK", "frRoundingMode") + testFrame("frWordsAfterRounding", "FrSingle") +
        resultFrame("OK", "frWordsAfterRounding") + testFrame("frError", "FrSingle") +
        "-- lib function error on test parameters:\n"
        "\n" +
        resultFrame("FUNCFAIL", "frError") + testFrame("frWarning", "FrSingle") +
        "-- lib function warning on test parameters:\n"
        "\n"
        "-- performance:\n"
        "  nLps=2      perf=<clocks>/1=<clocks> clocks\n" +
        resultFrame("FUNCWRN", "frWarning") + testFrame("frCantStart", "FrCantStart") + "-- Can't start timing\n" +
        resultFrame("DATAFAIL", "frCantStart") + signalled(storage, "beginTest") +
        resultFrame("EXCPTFAIL", "frCrashInBegin") + testFrame("frCrashInStart", "FrCrashInStart") +
        signalled(arithmetic, "canStart") + resultFrame("EXCPTFAIL", "frCrashInStart") +
        testFrame("frCrashInData", "FrCrashInData") + signalled(instruction, "initData") +
        resultFrame("EXCPTFAIL", "frCrashInData") + testFrame("frFailsAtSixteen", "FrGrid") +
        "-- lib function error on test parameters:\n"
        "Size=16 \n" +
        resultFrame("FUNCFAIL", "frFailsAtSixteen") + testFrame("frCrashesAtSixteen", "FrGrid") +
        signalled(storage, "vekFunctionCalls") + resultFrame("EXCPTFAIL", "frCrashesAtSixteen") +
        testFrame("frEmptyGrid", "FrEmptyGrid") + "-- One of argument list for timing is empty\n" +
        resultFrame("DATAFAIL", "frEmptyGrid") + testFrame("frDuplicates", "FrDuplicates") +
        " Performance table warning:\n"
        " Lines 19 & 21 have identical parameters\n"
        "-- Warning: duplicate lines in performance table (csv-file)\n" +
        resultFrame("DATAWRN", "frDuplicates") + testFrame("frSkipsAll", "FrSkipsAll") +
        "-- Error while initialization of function data\n" + resultFrame("DATAFAIL", "frSkipsAll") +
        testFrame("frNoFunction", "FrNoFunction") +
        "-- Internal test problem: runTiming() function returns undefined result\n" +
        resultFrame("FAIL", "frNoFunction") + testFrame("frGoodAtTheEnd", "FrGrid") +
        resultFrame("OK", "frGoodAtTheEnd") +
        summaryFrame({.tests = 24,
                      .successes = 6,
                      .failures = 17,
                      .fails = 14,
                      .fail = 5,
                      .exceptFail = 9,
                      .warnings = 3,
                      .warning = 2,
                      .badStatus = 1,
                      .undefined = 1});
    EXPECT_EQ(expected, rig.mask(run.out));
}

TEST(FaultRun, TableHoldsEveryLineThatWasMeasuredBeforeAFault) {
    const RigDirectory rig(FAULTRIG, "rig");
    const RigResult run = rig.run(quickKeys({"-ffr", "-f-frMany", "-r"}));
    EXPECT_EQ(1, run.exitCode);
    const std::string expected = faultTableHead + faultTableTitle + grid("frGood") + single("frWordsAfterFaults") +
                                 single("frDenormalFlag") + single("frInexactFlag") + single("frRoundingMode") +
                                 single("frWordsAfterRounding") + single("frWarning") + sized("frCrashInData", "8") +
                                 sized("frCrashInData", "16") + sized("frFailsAtSixteen", "8") +
                                 sized("frCrashesAtSixteen", "8") + sized("frDuplicates", "8") +
                                 sized("frDuplicates", "16") + sized("frDuplicates", "8") + grid("frGoodAtTheEnd");
    EXPECT_EQ(expected, rig.masked("rig.csv"));
}

TEST(FaultRun, SummaryTableGivesEachTestItsResultAndTheCounters) {
    const RigDirectory rig(FAULTRIG, "rig");
    rig.run(quickKeys({"-ffr", "-f-frMany", "-LWARN", "-u"}));
    const std::string expected =
        faultTableHead +
        R"(Function,Class,Control87,Status87,ControlSSX,StatusSSX,Test,Time (sec.),SrcName,Result,ExeName
frGood,Timing,-,-,-,-,FrGrid,<sec>,faultrig.cpp,OK,rig
frNullWrite,Timing,-,-,-,-,FrSingle,<sec>,faultrig.cpp,EXCPTFAIL,rig
frIntegerDivide,Timing,-,-,-,-,FrSingle,<sec>,faultrig.cpp,EXCPTFAIL,rig
frX87Divide,Timing,-,-,-,-,FrSingle,<sec>,faultrig.cpp,EXCPTFAIL,rig
frIllegalInstruction,Timing,-,-,-,-,FrSingle,<sec>,faultrig.cpp,EXCPTFAIL,rig
frRunAway,Timing,-,-,-,-,FrSingle,<sec>,faultrig.cpp,EXCPTFAIL,rig
frWordsAfterFaults,Timing,-,-,-,-,FrSingle,<sec>,faultrig.cpp,OK,rig
frDenormalFlag,Timing,-,-,-,?,FrSingle,<sec>,faultrig.cpp,BADSTSWRN,rig
frInexactFlag,Timing,-,-,-,-,FrSingle,<sec>,faultrig.cpp,OK,rig
frRoundingMode,Timing,-,-,-,-,FrSingle,<sec>,faultrig.cpp,OK,rig
frWordsAfterRounding,Timing,-,-,-,-,FrSingle,<sec>,faultrig.cpp,OK,rig
frError,Timing,-,-,-,-,FrSingle,<sec>,faultrig.cpp,FUNCFAIL,rig
frWarning,Timing,-,-,-,-,FrSingle,<sec>,faultrig.cpp,FUNCWRN,rig
frCantStart,Timing,-,-,-,-,FrCantStart,<sec>,faultrig.cpp,DATAFAIL,rig
-,-,-,-,FrCrashInBegin,<sec>,faultrig.cpp,EXCPTFAIL,rig
frCrashInStart,Timing,-,-,-,-,FrCrashInStart,<sec>,faultrig.cpp,EXCPTFAIL,rig
frCrashInData,Timing,-,-,-,-,FrCrashInData,<sec>,faultrig.cpp,EXCPTFAIL,rig
frFailsAtSixteen,Timing,-,-,-,-,FrGrid,<sec>,faultrig.cpp,FUNCFAIL,rig
frCrashesAtSixteen,Timing,-,-,-,-,FrGrid,<sec>,faultrig.cpp,EXCPTFAIL,rig
frEmptyGrid,Timing,-,-,-,-,FrEmptyGrid,<sec>,faultrig.cpp,DATAFAIL,rig
frDuplicates,Timing,-,-,-,-,FrDuplicates,<sec>,faultrig.cpp,DATAWRN,rig
frSkipsAll,Timing,-,-,-,-,FrSkipsAll,<sec>,faultrig.cpp,DATAFAIL,rig
frNoFunction,Timing,-,-,-,-,FrNoFunction,<sec>,faultrig.cpp,FAIL,rig
frGoodAtTheEnd,Timing,-,-,-,-,FrGrid,<sec>,faultrig.cpp,OK,rig
END_DATA
.Number of tests,24
.Successes      ,6
.Failures       ,17
...Fails        ,14
.....-FAIL      ,5
.....-EXCPTFAIL ,9
...Warnings     ,3
.....-WARNING   ,2
.....-BADSTSWRN ,1
...Undefined    ,1
.Total time     ,hh:mm:ss
)";
    EXPECT_EQ(expected, rig.masked("rig_sum.csv"));
}

TEST(FaultRun, WarningsCountAsSuccessesWhenOnlyErrorsAreShown) {
    const RigDirectory rig(FAULTRIG, "rig");
    const RigResult run = rig.run(quickKeys({"-f=frDenormalFlag", "-f=frWarning", "-f=frDuplicates", "-u"}));
    EXPECT_EQ(0, run.exitCode);
    const std::string summary = rig.masked("rig_sum.csv");
    EXPECT_NE(std::string::npos, summary.find("frDenormalFlag,Timing,-,-,-,?,FrSingle,<sec>,faultrig.cpp,OK,rig\n"));
    EXPECT_NE(std::string::npos, summary.find(".Successes      ,3\n"));
    EXPECT_NE(std::string::npos, summary.find(".Failures       ,0\n"));
}

TEST(FaultRun, WarningsAloneGiveExitStatusZero) {
    const RigDirectory rig(FAULTRIG, "rig");
    const RigResult run = rig.run(quickKeys({"-f=frDenormalFlag", "-f=frWarning", "-f=frDuplicates", "-LW", "-u"}));
    EXPECT_EQ(0, run.exitCode);
    const std::string summary = rig.masked("rig_sum.csv");
    EXPECT_NE(std::string::npos, summary.find(".....-WARNING   ,2\n"));
    EXPECT_NE(std::string::npos, summary.find(".....-BADSTSWRN ,1\n"));
}

TEST(FaultRun, UndefinedTimingResultIsAnErrorThatKeepsExitStatusZero) {
    const RigDirectory rig(FAULTRIG, "rig");
    const RigResult run = rig.run(quickKeys({"-f=frNoFunction", "-u"}));
    EXPECT_EQ(0, run.exitCode);
    EXPECT_NE(std::string::npos, rig.read("rig_sum.csv").find(",FAIL,rig\n"));
    EXPECT_NE(std::string::npos, rig.read("rig_sum.csv").find("...Undefined    ,1\n"));
}

TEST(FaultRun, OneFailureAmongGoodTestsGivesExitStatusOne) {
    const RigDirectory rig(FAULTRIG, "rig");
    EXPECT_EQ(0, rig.run(quickKeys({"-ffrGood"})).exitCode);
    EXPECT_EQ(1, rig.run(quickKeys({"-ffrGood", "-f=frError"})).exitCode);
    EXPECT_EQ(1, rig.run(quickKeys({"-ffrGood", "-f=frCantStart"})).exitCode);
    EXPECT_EQ(1, rig.run(quickKeys({"-ffrGood", "-f=frIllegalInstruction"})).exitCode);
}

TEST(FaultRun, AThousandFaultsOfFourKindsCostOneTestEach) {
    const RigDirectory rig(FAULTRIG, "rig");
    const RigResult run = rig.run(quickKeys({"-ffrMany", "-r", "-u", "-g"}));
    EXPECT_EQ(1, run.exitCode);
    EXPECT_EQ(500, countOf(run.out, "--VEK. Signal: FP error, such as overflow, division by zero, invalid operation."
                                    " in vekFunctionCalls\n"));
    EXPECT_EQ(250, countOf(run.out, "--VEK. Signal: Illegal storage access. in vekFunctionCalls\n"));
    EXPECT_EQ(250, countOf(run.out, "--VEK. Signal: Illegal instruction. in vekFunctionCalls\n"));
    EXPECT_EQ(faultTableHead + faultTableTitle + grid("frManySurvived"), rig.masked("rig.csv"));
    const std::string summary = rig.read("rig_sum.csv");
    EXPECT_EQ(1000, countOf(summary, ",EXCPTFAIL,rig\n"));
    EXPECT_NE(std::string::npos, summary.find(".Number of tests,1001\n.Successes      ,1\n.Failures       ,1000\n"
                                              "...Fails        ,1000\n.....-FAIL      ,0\n.....-EXCPTFAIL ,1000\n"));
    EXPECT_TRUE(rig.exists("rig.end"));
}

TEST(FaultRun, EveryTimingMethodGetsOverAFault) {
    for (const char* method : {"Auto", "Manual", "Statistic", "Iterative"}) {
        const RigDirectory rig(FAULTRIG, "rig");
        const RigResult run = rig.run({"-B", "-s-", "-LI", "-r", "-dAccuracy=100", std::string("-dMethod=") + method,
                                       "-ffrGood", "-f=frNullWrite", "-f=frX87Divide", "-f=frRunAway"});
        EXPECT_EQ(1, run.exitCode) << method;
        EXPECT_EQ(3, countOf(run.out, "in vekFunctionCalls\n")) << method;
        EXPECT_EQ(3, countOf(rig.read("rig.csv"), "\nfrGoodAtTheEnd,")) << method;
    }
}

TEST(FaultRun, AFaultIsContainedAtEveryLevelOfOutput) {
    for (const char* level : {"-LE", "-LW", "-LP", "-LI", "-LT", "-LD", "-LM", "-LTDMI"}) {
        const RigDirectory rig(FAULTRIG, "rig");
        const RigResult run = rig.run(quickKeys({level, "-f=frCrashesAtSixteen", "-f=frGoodAtTheEnd", "-o"}));
        EXPECT_EQ(1, run.exitCode) << level;
        EXPECT_NE(std::string::npos, run.out.find("--VEK. Signal: Illegal storage access. in vekFunctionCalls\n"));
        EXPECT_NE(std::string::npos, run.out.find("-OK         frGoodAtTheEnd")) << level;
    }
}

TEST(FaultRun, EveryPriorityGetsOverAFault) {
    for (const char* priority : {"-YHIGH", "-YNORMAL", "-YLOW"}) {
        const RigDirectory rig(FAULTRIG, "rig");
        const RigResult run = rig.run(quickKeys({priority, "-f=frIntegerDivide", "-f=frGoodAtTheEnd"}));
        EXPECT_EQ(1, run.exitCode);
        EXPECT_NE(std::string::npos, run.out.find("-OK         frGoodAtTheEnd")) << priority;
    }
}

TEST(FaultRun, ACrashWhileAParameterIsReadIsToldAndTheParameterKeepsItsValue) {
    const RigDirectory rig(FAULTRIG, "rig");
    const RigResult run = rig.run(quickKeys({"-f=cmParameter", "-f=frIllegalInstruction", "-dCommon=crash"}));
    EXPECT_EQ(1, run.exitCode);
    const std::string expected = " NumLoops = 2\n"
                                 "---VEK. Signal: Illegal storage access.\n"
                                 " Common = 3\n"
                                 " AlignVectorsBy = element\n";
    EXPECT_NE(std::string::npos, run.out.find(expected)) << run.out;
    EXPECT_NE(std::string::npos, run.out.find("-OK         cmParameter"));
    EXPECT_NE(std::string::npos, run.out.find("--VEK. Signal: Illegal instruction. in vekFunctionCalls\n"));
}

TEST(FaultRun, AFaultWhileParametersAreWrittenToTheIniFileKeepsTheOthers) {
    const RigDirectory rig(FAULTRIG, "rig");
    const RigResult run = rig.run(quickKeys({"-ffrCrash", "-ffrGood", "-I"}));
    EXPECT_EQ(1, run.exitCode);
    const std::string expected = "\n[Kelvar Rig]\n"
                                 "Method=Manual\t// Auto|Manual|Statistic|Iterative\n"
                                 "NumLoops=2\n"
                                 "AlignVectorsBy=element\t// byte|element\n"
                                 "VectorAlign=0\n"
                                 "\n[frGood]\nSize=8; 16; 32\n"
                                 "\n[frCrashInBegin]\n"
                                 "\n[frCrashInStart]\n"
                                 "\n[frCrashInData]\nSize=8; 16; 32\n"
                                 "\n[frCrashesAtSixteen]\nSize=8; 16; 32\n"
                                 "\n[frGoodAtTheEnd]\nSize=8; 16; 32\n";
    EXPECT_EQ(expected, rig.read("rig.ini"));
}
