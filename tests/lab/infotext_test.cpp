// Reading the console text at level INFO.
#include "fakerig.h"
#include "infotext.h"

#include <gtest/gtest.h>

using namespace krlab;

namespace {

InfoParser parsed(const std::string& text) {
    InfoParser parser;
    parser.feed(text);
    parser.finish();
    return parser;
}

std::string title(const std::string& function) {
    return "| Function  : " + function + "                     Sun Nov 22 02:25:49 2026|\n";
}

} // namespace

TEST(LabInfoText, OneLineIsReadWithItsExactCounts) {
    const InfoParser parser = parsed(consoleTest("veksX_16s") + consoleEnd);
    ASSERT_EQ(parser.tests().size(), 1u);
    const InfoTest& test = parser.tests()[0];
    EXPECT_EQ(test.end.function, "veksX_16s");
    EXPECT_EQ(test.end.test, "TimX");
    EXPECT_EQ(test.end.source, "p_x");
    EXPECT_EQ(test.end.result, "OK");
    EXPECT_EQ(test.grid, std::vector<std::string>{"len = 8"});
    ASSERT_EQ(test.lines.size(), 1u);
    EXPECT_EQ(test.lines[0].parameters, "len=8");
    EXPECT_TRUE(test.lines[0].exact);
    EXPECT_DOUBLE_EQ(test.lines[0].clocks, 401.0 / 16);
    EXPECT_EQ(test.lines[0].loops, 16);
    EXPECT_DOUBLE_EQ(test.lines[0].accuracy, 0.005);
    EXPECT_EQ(test.lines[0].elements, 8);
    EXPECT_TRUE(parser.summarised());
    EXPECT_EQ(parser.summaryTests(), 1);
    EXPECT_EQ(parser.current(), nullptr);
}

TEST(LabInfoText, PiecesMayEndAnywhere) {
    const std::string text = consoleTest("veksX_16s") + consoleTest("veksY_16s") + consoleEnd;
    InfoParser parser;
    for (const char c : text) {
        parser.feed(std::string_view(&c, 1));
    }
    ASSERT_EQ(parser.tests().size(), 2u);
    EXPECT_EQ(parser.tests()[1].lines[0].clocks, 401.0 / 16);
    EXPECT_EQ(parser.ended(), 2u);
}

TEST(LabInfoText, LeastOfIterationAndRepeatedMeasurementsIsKept) {
    const std::string text =
        title("f") + "n=1 \n    Auto method: start\n    Prior Measurement: \n"
                     "        numLoops   = 1\n        numClocks  = 364\n        funcClocks = 364\n"
                     "    Iteration Measurement: \n        stopLoops  = 16\n        stopClocks = 1300\n"
                     "        funcClocks = 81.2\n    Simple Measurements: \n        numLoops   = 16\n"
                     "        numClocks  = 1274\n        funcClocks = 79.6\n        numLoops   = 16\n"
                     "        numClocks  = 1290\n        funcClocks = 80.6\n        bestClocks = 79.6\n"
                     "    Auto method: stop\n  acc=1.4%   nLps=16     perf=     79.6/       45=     1.77 clocks\n";
    const InfoParser parser = parsed(text);
    ASSERT_EQ(parser.tests().size(), 1u);
    ASSERT_EQ(parser.tests()[0].lines.size(), 1u);
    EXPECT_TRUE(parser.tests()[0].lines[0].exact);
    EXPECT_DOUBLE_EQ(parser.tests()[0].lines[0].clocks, 1274.0 / 16);
    EXPECT_EQ(parser.current(), &parser.tests()[0]);
}

TEST(LabInfoText, ALaterIterationReplacesEarlierMeasurements) {
    const std::string text = title("f") +
                             "    Auto method: start\n    Iteration Measurement: \n        stopLoops  = 4\n"
                             "        stopClocks = 400\n    Simple Measurements: \n        numLoops   = 4\n"
                             "        numClocks  = 320\n    Iteration Measurement: \n        stopLoops  = 16\n"
                             "        stopClocks = 1440\n    Auto method: stop\n"
                             "  acc=0.2%   nLps=16     perf=       90/       45=        2 clocks\n";
    EXPECT_DOUBLE_EQ(parsed(text).tests()[0].lines[0].clocks, 90);
    EXPECT_TRUE(parsed(text).tests()[0].lines[0].exact);
}

TEST(LabInfoText, FiguresThatTheCountsDoNotExplainAreNotExact) {
    std::string text = consoleTest("f");
    text.replace(text.find("perf=     25.1"), 14, "perf=     24.9");
    EXPECT_FALSE(parsed(text).tests()[0].lines[0].exact);
    EXPECT_EQ(parsed(text).tests()[0].lines[0].clocks, 24.9);
}

TEST(LabInfoText, CountsThatTheTextRoundsGiveNoExactFigure) {
    std::string text = consoleTest("f");
    text.replace(text.find("= 401"), 5, "= 4.01e+02");
    EXPECT_FALSE(parsed(text).tests()[0].lines[0].exact);
}

TEST(LabInfoText, ManualAndStatisticLinesAreRead) {
    const InfoParser parser =
        parsed(title("f") + "    Manual method: \n        numLoops   = 10\n        funcClocks = 25.1\n"
                            "  nLps=10     perf=     25.1/        8=     3.14 clocks\n"
                            "    Statistical method:\n        numCalls   = 3\n        funcClocks = 30\n"
                            "  nCalls=3    perf= 1.05e+03/      320=     3.29 clocks\n");
    ASSERT_EQ(parser.tests()[0].lines.size(), 2u);
    EXPECT_EQ(parser.tests()[0].lines[0].clocks, 25.1);
    EXPECT_LT(parser.tests()[0].lines[0].accuracy, 0);
    EXPECT_FALSE(parser.tests()[0].lines[0].exact);
    EXPECT_EQ(parser.tests()[0].lines[1].clocks, 1050);
    EXPECT_EQ(parser.tests()[0].lines[1].loops, 3);
}

TEST(LabInfoText, ErrorsBelongToTheTestInWorkAndOthersToTheRun) {
    const InfoParser parser = parsed("Command line options: \n-B: batch mode\n-x: ignored: incorrect option key\n\n"
                                     "-- Can't open file /x to write: Permission denied\n" +
                                     title("f") +
                                     "n=1 \n--VEK ERROR. status = -11 in f: size out of range\n"
                                     "-- lib function error on test parameters:\n");
    EXPECT_EQ(parser.echo().size(), 2u);
    EXPECT_EQ(parser.remarks(), std::vector<std::string>{"-- Can't open file /x to write: Permission denied"});
    EXPECT_EQ(parser.tests()[0].end.messages.size(), 2u);
    EXPECT_EQ(parser.current()->end.function, "f");
}

TEST(LabInfoText, LongNamesLeaveNoGapBeforeTheTime) {
    const InfoParser parser =
        parsed("| Function  : veksACELPFixedCodebookSearch_G723_32s16s Sun Nov 22 03:21:14 2026\n");
    EXPECT_EQ(parser.tests()[0].end.function, "veksACELPFixedCodebookSearch_G723_32s16s");
}

TEST(LabInfoText, AFatalErrorBehindTheKeysIsToldByTheRun) {
    const InfoParser parser = parsed("Command line options: \n-B: batch mode\nFATAL ERROR: can't open output file\n");
    EXPECT_EQ(parser.remarks(), std::vector<std::string>{"FATAL ERROR: can't open output file"});
    EXPECT_EQ(parser.echo().size(), 1u);
}
