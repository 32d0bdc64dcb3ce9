// One pass: rigs that end well, die, hang or talk nonsense; chosen lines of the real rig.
#include "fakerig.h"
#include "fault.h"
#include "interrupt.h"
#include "pass.h"

#include <csignal>
#include <gtest/gtest.h>
#include <set>

using namespace krlab;

namespace {

PassRequest requestOf(const Subject& subject, std::vector<std::string> keys = {}) {
    PassRequest request;
    request.subject = subject;
    request.keys = std::move(keys);
    return request;
}

std::vector<std::string> functionsOf(const Pass& pass) {
    std::vector<std::string> functions;
    for (const Figure& figure : pass.figures) {
        functions.push_back(figure.line.function);
    }
    return functions;
}

Subject realRig() {
    return {"rig", QUICKRIG, {}};
}

} // namespace

TEST(LabPass, FiguresOfTheTableAreMadeExactByTheCounts) {
    const FakeRig rig(scriptHead + scriptTest("f1") + "fi\n" + scriptTest("f2") + "fi\n" + scriptEnd);
    const Pass pass = runPass(requestOf(rig.subject()));
    EXPECT_TRUE(pass.complete());
    EXPECT_EQ(functionsOf(pass), (std::vector<std::string>{"f1", "f2"}));
    EXPECT_TRUE(pass.figures[1].exact);
    EXPECT_DOUBLE_EQ(pass.figures[1].clocks, 401.0 / 16);
    EXPECT_EQ(pass.tests.size(), 2u);
    EXPECT_EQ(pass.identity.program.path, rig.subject().program.string());
    EXPECT_FALSE(pass.identity.arguments.empty());
}

TEST(LabPass, RepeatedLineKeepsItsSmallestFigure) {
    const FakeRig rig(scriptHead + R"(
for told in 30 26 28; do
    echo "f1,-,-,8,-,-,-,-,-,nLps=16,3.14,e,0.01,-" >> "$table"
    [ $told = 30 ] && printf '| Function  : f1                     Sun Nov 22 02:25:49 2026|\n| Test      : TimX |\n| Source    : p_x |\n len = 8; 8; 8\n'
    printf 'len=8 \n    Auto method: start\n    Iteration Measurement: \n        stopLoops  = 16\n        stopClocks = %d\n' $((told * 16))
    printf '        funcClocks = %d\n    Auto method: stop\n  acc=0.5%%   nLps=16     perf=     %d/        8=     3.14 clocks\n' $told $told
done
echo '| -OK         f1     Sun Nov 22 02:25:49 2026|'
)" + scriptEnd);
    PassRequest request = requestOf(rig.subject());
    request.lines = {{"f1", {{"Len/Size", "8"}}}};
    request.repeats = 3;
    Pass pass = runPass(request);
    ASSERT_EQ(pass.figures.size(), 1u);
    EXPECT_DOUBLE_EQ(pass.figures[0].clocks, 26);
    // Without a wish for it a line that stands twice has its first figure.
    request.repeats = 1;
    EXPECT_DOUBLE_EQ(runPass(request).figures.at(0).clocks, 30);
}

TEST(LabPass, ADeadRigCostsTheTestInWorkOnly) {
    const FakeRig rig(scriptHead + scriptTest("f1") + "fi\n" + scriptTest("f2", false) + "kill -BUS $$; fi\n" +
                      scriptTest("f3") + "fi\n" + scriptEnd);
    const Pass pass = runPass(requestOf(rig.subject()));
    EXPECT_FALSE(pass.complete());
    ASSERT_EQ(pass.ends.size(), 2u);
    EXPECT_EQ(pass.ends[0].how, ProcessEnd::How::signalled);
    EXPECT_EQ(pass.ends[0].signal, SIGBUS);
    EXPECT_EQ(pass.ends[0].function, "f2");
    EXPECT_EQ(pass.failures(), std::vector<std::string>{"the rig was ended by signal 7 (Bus error) in f2"});
    EXPECT_EQ(pass.ends[1].how, ProcessEnd::How::complete);
    const std::vector<std::string> functions = functionsOf(pass);
    // The row that the dying test had written is kept with the table's digits.
    EXPECT_EQ(functions, (std::vector<std::string>{"f1", "f2", "f3"}));
    EXPECT_EQ(pass.tests.size(), 2u);
}

TEST(LabPass, ARigOverItsTimeLimitIsEndedAndTheRestMeasured) {
    const FakeRig rig(scriptHead + scriptTest("f1", false) + "sleep 60; fi\n" + scriptTest("f2") + "fi\n" +
                      scriptTest("f3") + "fi\n" + scriptEnd);
    PassRequest request = requestOf(rig.subject());
    request.timeLimit = 0.7;
    const Pass pass = runPass(request);
    ASSERT_EQ(pass.ends.size(), 2u);
    EXPECT_EQ(pass.ends[0].how, ProcessEnd::How::timeLimit);
    EXPECT_EQ(pass.ends[0].function, "f1");
    EXPECT_EQ(pass.ends[1].how, ProcessEnd::How::complete);
}

TEST(LabPass, ARigThatDiesBetweenTwoTestsLosesNone) {
    const FakeRig rig(scriptHead + scriptTest("f1") + "kill -SEGV $$; fi\n" + scriptTest("f2") + "fi\n" +
                      scriptTest("f3") + "fi\n" + scriptEnd);
    const Pass pass = runPass(requestOf(rig.subject()));
    ASSERT_EQ(pass.ends.size(), 2u);
    EXPECT_EQ(pass.ends[0].text, "was ended by signal 11 (Segmentation fault)");
    EXPECT_EQ(functionsOf(pass), (std::vector<std::string>{"f1", "f2", "f3"}));
}

TEST(LabPass, WithoutGoingOnTheRestIsLeftOut) {
    const FakeRig rig(scriptHead + scriptTest("f1", false) + "kill -ABRT $$; fi\n" + scriptTest("f2") + "fi\n" +
                      scriptEnd);
    PassRequest request = requestOf(rig.subject());
    request.goOn = false;
    EXPECT_EQ(runPass(request).ends.size(), 1u);
}

TEST(LabPass, ARigThatEndsEarlyWithAGoodStatusHasFailed) {
    const FakeRig rig("echo \"FATAL ERROR: can't open output file for writing\"\n");
    const Pass pass = runPass(requestOf(rig.subject()));
    ASSERT_EQ(pass.ends.size(), 1u);
    EXPECT_EQ(pass.ends[0].how, ProcessEnd::How::failed);
    EXPECT_EQ(pass.ends[0].text, "ended without its summary: FATAL ERROR: can't open output file for writing");
}

TEST(LabPass, AnInterruptEndsTheProcess) {
    const FakeRig rig(scriptHead + scriptTest("f1", false) + "kill -INT $PPID; sleep 60; fi\n");
    watchInterrupts();
    const Pass pass = runPass(requestOf(rig.subject()));
    setInterrupted(false);
    ASSERT_EQ(pass.ends.size(), 1u);
    EXPECT_EQ(pass.ends[0].how, ProcessEnd::How::interrupted);
    EXPECT_EQ(pass.ends[0].text, "ended by the user in f1");
}

TEST(LabPass, KeysThatMeasureNothingAreRefused) {
    for (const char* key : {"-e", "-v", "-h", "-IX", "-Q", "-AAll"}) {
        EXPECT_THROW(runPass(requestOf(realRig(), {key})), Fault) << key;
    }
}

TEST(LabPass, AProgramThatCannotStartIsTold) {
    EXPECT_THROW(runPass(requestOf({"x", "/nowhere/kelvarrig", {}})), Fault);
}

TEST(LabPass, TheRealRigTellsExactFigures) {
    const Pass pass = runPass(requestOf(realRig(), {"-f=veksAutoCorr_16s32s"}));
    EXPECT_TRUE(pass.complete());
    ASSERT_EQ(pass.figures.size(), 6u);
    EXPECT_EQ(pass.figures[0].line.text(), "veksAutoCorr_16s32s lenght=9 \"lenght Dst\"=5");
    EXPECT_EQ(pass.figures[0].elements, 45);
    for (const Figure& figure : pass.figures) {
        EXPECT_TRUE(figure.exact);
        EXPECT_GT(figure.clocks, 0);
        EXPECT_NEAR(figure.clocks / figure.elements / figure.perElement, 1, 0.006) << figure.line.text();
    }
    ASSERT_EQ(pass.tests.size(), 1u);
    EXPECT_EQ(pass.tests[0].source, "p_autocorr");
    ASSERT_EQ(pass.identity.libraries.size(), 3u);
    EXPECT_EQ(pass.identity.libraries[1].name, "libveks.so.1");
    EXPECT_EQ(pass.identity.libraries[2].sha256.size(), 64u);
    EXPECT_FALSE(pass.identity.libraries[2].version.empty());
}

TEST(LabPass, ChosenLinesAreMeasuredAndNoOthers) {
    const std::vector<Line> lines = {Line::parse("veksAutoCorr_16s32s lenght=160 \"lenght Dst\"=9"),
                                     Line::parse("veksAutoCorr_16s32s lenght=9 \"lenght Dst\"=5"),
                                     Line::parse("veksDCTFwd_G7221_16s Lenght=640"),
                                     Line::parse("veksResamplePolyphase_AMRWBE_16s cntFact=2 Parm1=(oversamp)")};
    PassRequest request = requestOf(realRig(), {"-fNothing", "-dLenght=320", "-dAccuracy=50"});
    request.lines = lines;
    const Pass pass = runPass(request);
    EXPECT_TRUE(pass.complete());
    std::set<Line> measured;
    for (const Figure& figure : pass.figures) {
        measured.insert(figure.line);
    }
    EXPECT_EQ(measured, std::set<Line>(lines.begin(), lines.end()));
    request.keepOthers = true;
    EXPECT_GT(runPass(request).figures.size(), 4u);
}

TEST(LabPass, TestsAndParametersAreListed) {
    const std::vector<TestName> tests = listTests(realRig(), {"-fResamplePolyphase"});
    ASSERT_EQ(tests.size(), 2u);
    EXPECT_EQ(tests[0].function, "veksResamplePolyphase_AMRWBE_16s");
    EXPECT_EQ(tests[1].source, "p_wberes");
    const std::vector<TestParameters> parameters = listParameters(realRig(), {"-f=veksAutoCorr_16s32s"});
    ASSERT_EQ(parameters.size(), 1u);
    EXPECT_EQ(parameters[0].columns[1], "lenght Dst");
}

TEST(LabPass, EveryLineOfTheGridIsExactAndCanBeChosen) {
    const PassRequest whole = requestOf(realRig(), {"-dMethod=Iterative", "-dStopNumLoops=1"});
    const Pass grid = runPass(whole);
    EXPECT_TRUE(grid.complete());
    EXPECT_GT(grid.figures.size(), 2800u);
    PassRequest chosen = whole;
    size_t exact = 0;
    for (const Figure& figure : grid.figures) {
        exact += figure.exact ? 1 : 0;
        EXPECT_EQ(Line::parse(figure.line.text()), figure.line);
        chosen.lines.push_back(figure.line);
    }
    // A bad control status leaves figures behind whose counts are not printed.
    EXPECT_GT(exact, grid.figures.size() * 99 / 100);
    EXPECT_EQ(runPass(chosen).figures.size(), grid.figures.size());
    // Of each function the last line alone: its values must not hang on others.
    std::set<Line> last;
    for (size_t i = 0; i < grid.figures.size(); ++i) {
        if (i + 1 == grid.figures.size() || grid.figures[i + 1].line.function != grid.figures[i].line.function) {
            last.insert(grid.figures[i].line);
        }
    }
    chosen.lines.assign(last.begin(), last.end());
    std::set<Line> measured;
    for (const Figure& figure : runPass(chosen).figures) {
        measured.insert(figure.line);
    }
    EXPECT_EQ(measured, last);
}
