// The dialogue before the first test, held at a pseudo-terminal and at pipes: its whole text, the end of input at any
// place, and answers that no person would type.
#include "rig_process.h"

#include <gtest/gtest.h>

namespace {

const char eof = 4; // the terminal's end-of-input character

RigConsole typed(const std::string& text) {
    RigConsole console;
    console.terminal = true;
    console.input = text;
    return console;
}

} // namespace

TEST(Dialogue, AsksEverythingAtATerminalAndEchoesEachAnswer) {
    const RigDirectory rig(FAULTRIG, "rig");
    const RigResult run =
        rig.run({"-AAll", "-f=frGood", "-f=cmParameter"}, typed("stat\n4\n1000\n7\nbyte\n65\nn\n8;24\n"));
    EXPECT_EQ(0, run.exitCode);
    const std::string expected = R"(Command line options: 
-AAll: ask timing method, common parameters, data misalignment, each test parameters from console
-f=frGood: test function equal to 'frGood'
-f=cmParameter: test function equal to 'cmParameter'
Sorting functions...
)" + startFrame() + R"( ******************************************************************************
 *                       Specify timing method, please                        *
 ******************************************************************************

 Method {Auto|Manual|Statistic|Iterative} [Auto] =  Method = Statistic

 NumCalls [3] =  NumCalls = 4

 TotalCpuClocks [10000] =  TotalCpuClocks = 1000
 ******************************************************************************
 *                   Specify common test parameters, please                   *
 ******************************************************************************

 Common number [3] =  Common = 7
 ******************************************************************************
 *                     Specify vectors alignment, please                      *
 ******************************************************************************

 AlignVectorsBy {byte|element} [element] =  AlignVectorsBy = byte

 VectorAlign by Byte, 0..63 [0] =  VectorAlign = 1

 MisalignFirstVectorOnly {yes|no} [yes] =  MisalignFirstVectorOnly = no
 ******************************************************************************
 *                        End of common specifications                        *
 ******************************************************************************
| Function  : cmParameter                             Day Mon dd hh:mm:ss yyyy|
| -OK         cmParameter                             Day Mon dd hh:mm:ss yyyy|
| Function  : frGood                                  Day Mon dd hh:mm:ss yyyy|

 Size [8; 16; 32] =  Size = 8; 24
| -OK         frGood                                  Day Mon dd hh:mm:ss yyyy|
)" + summaryFrame({.tests = 2, .successes = 2});
    EXPECT_EQ(expected, rig.mask(run.out));
}

TEST(Dialogue, WithoutKeysAsksMethodAndCommonParametersOnly) {
    const RigDirectory rig(FAULTRIG, "rig");
    const RigResult run = rig.run({"-f=cmParameter"}, typed("i\n10\n20\n50\n9\n"));
    EXPECT_EQ(0, run.exitCode);
    const size_t begin = run.out.find(" ****");
    const size_t end = run.out.find("| Function");
    ASSERT_NE(std::string::npos, begin);
    ASSERT_NE(std::string::npos, end);
    const std::string expected = R"( ******************************************************************************
 *                       Specify timing method, please                        *
 ******************************************************************************

 Method {Auto|Manual|Statistic|Iterative} [Auto] =  Method = Iterative

 StartNumLoops [1] =  StartNumLoops = 10

 StopNumLoops [2048] =  StopNumLoops = 20

 Accuracy, % [5] =  Accuracy = 50
 ******************************************************************************
 *                   Specify common test parameters, please                   *
 ******************************************************************************

 Common number [3] =  Common = 9
 AlignVectorsBy = element
 VectorAlign = 0
 ******************************************************************************
 *                        End of common specifications                        *
 ******************************************************************************
)";
    EXPECT_EQ(expected, run.out.substr(begin, end - begin));
}

TEST(Dialogue, EndOfInputAtATerminalGivesTheDefaultsFromThereOn) {
    const RigDirectory rig(FAULTRIG, "rig");
    const RigResult run = rig.run({"-AAll", "-f=frGood"}, typed(std::string("manual\n") + eof + eof + eof + eof + eof));
    EXPECT_EQ(0, run.exitCode);
    expectOnce(run.out, {"[Auto] =  Method = Manual\n", "\n NumLoops [10] =  NumLoops = 10\n",
                         "\n VectorAlign by Element, 0..63 [0] =  VectorAlign = 0\n",
                         "\n Size [8; 16; 32] =  Size = 8; 16; 32\n"});
}

TEST(Dialogue, BadAnswerIsToldAndNotAskedAgain) {
    const RigDirectory rig(FAULTRIG, "rig");
    RigConsole console;
    console.input = "quick\n";
    const RigResult run = rig.run({"-AT", "-f=frGood", "-dAccuracy=100"}, console);
    EXPECT_EQ(0, run.exitCode);
    expectOnce(run.out, {"\n Method {Auto|Manual|Statistic|Iterative} [Auto] = -Invalid value of Method = "
                         "quick\n Method = Auto\n",
                         "[Auto] = "});
}

TEST(Dialogue, CrashOfAParameterAtTheConsoleIsToldAndTheDialogueGoesOn) {
    const RigDirectory rig(FAULTRIG, "rig");
    RigConsole console;
    console.input = "crash\n";
    const RigResult run = rig.run({"-AP", "-f=cmParameter", "-f=frNullWrite", "-dMethod=Manual"}, console);
    EXPECT_EQ(1, run.exitCode);
    expectOnce(run.out, {"\n Common number [3] = ---VEK. Signal: Illegal storage access.\n Common = 3\n"
                         " AlignVectorsBy = element\n",
                         "-OK         cmParameter", "--VEK. Signal: Illegal storage access. in vekFunctionCalls\n"});
}

TEST(Dialogue, AnswersOfAHundredKilobytesAreTakenWhole) {
    const RigDirectory rig(FAULTRIG, "rig");
    std::string list = "8";
    while (list.size() < 100000) {
        list += "; 8";
    }
    for (const bool terminal : {false, true}) {
        RigConsole console;
        console.terminal = terminal;
        console.rawTerminal = terminal;
        console.input = "manual\n1\n\n\n" + list + "\n";
        const RigResult run = rig.run({"-AAll", "-f=frGood", "-I"}, console);
        EXPECT_EQ(0, run.exitCode);
        EXPECT_NE(std::string::npos, run.out.find(" Size = " + list + "\n"));
        EXPECT_NE(std::string::npos, rig.read("rig.ini").find("\nSize=" + list + "\n"));
        std::remove(rig.file("rig.ini").c_str());
    }
}

TEST(Dialogue, AWordOfAHundredKilobytesIsABadAnswer) {
    const RigDirectory rig(FAULTRIG, "rig");
    RigConsole console;
    const std::string word(100000, 'A');
    console.input = word + "\n" + word + "\n" + word + "\n" + word + "\n" + word + "\n";
    const RigResult run = rig.run({"-AAll", "-f=frGood", "-dAccuracy=100"}, console);
    EXPECT_EQ(0, run.exitCode);
    expectOnce(run.out,
               {"-Invalid value of Method = AAA", "\n Method = Auto\n", "\n Size = 8; 16; 32\n", "-OK         frGood"});
}

TEST(Dialogue, ForcedValuesAndTheIniFileAreNotAsked) {
    const RigDirectory rig(FAULTRIG, "rig");
    rig.write("rig.ini", "[Kelvar Rig]\nNumLoops = 6\nAlignVectorsBy=\n[frGood]\nSize = 1; 2\n");
    RigConsole console;
    console.input = "b\n\n";
    const RigResult run = rig.run({"-AAll", "-f=frGood", "-dMethod=man", "-i"}, console);
    EXPECT_EQ(0, run.exitCode);
    expectOnce(run.out, {"*\n Method = Manual\n NumLoops = 6\n ****",
                         "\n AlignVectorsBy {byte|element} [element] =  AlignVectorsBy = byte\n", "\n Size = 1; 2\n"});
    EXPECT_EQ(0, countOf(run.out, "Size ["));
}
