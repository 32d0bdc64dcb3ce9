// Report items: the layout of framed lines, and each item whole, on the console and in a table.
#include "kr.h"
#include "krcputick.h"
#include "krinfo.h"
#include "krreport.h"
#include "streamcapture.h"

#include <gtest/gtest.h>

namespace {

constexpr time_t s_start = 1794699000; // Sat Nov 14 23:30:00 2026, UTC
const std::string s_sep = "+" + std::string(77, '-') + "+\n";

krReportFormat framed() {
    return {true, 4, 1, 12, 14, -79, -79, -79};
}

TEST(KrReportFormat, SeparatorHasEightyCharactersWithItsNewline) {
    EXPECT_EQ(krReportFormat::sepLine().c_str(), s_sep);
    EXPECT_EQ(krReportFormat::sepLine().length(), 80);
}

TEST(KrReportFormat, FirstAndLastLineSwitchTheFrame) {
    krReportFormat format(false, 1, 1, -79, -79, -79, -79, -79);
    EXPECT_STREQ(format.getLine("a", "", "", "", "", "").c_str(), "  a\n");
    EXPECT_EQ(format.firstLine().c_str(), s_sep);
    EXPECT_EQ(format.getLine("a", "", "", "", "", "").c_str(), "| a" + std::string(75, ' ') + "|\n");
    EXPECT_EQ(format.lastLine().c_str(), s_sep);
    EXPECT_STREQ(format.getLine("a", "", "", "", "", "").c_str(), "  a\n");
}

TEST(KrReportFormat, ItemsStandAtTheirPlaces) {
    EXPECT_EQ(framed().getLine("Function", ":", "veksFoo", "right", "", "").c_str(),
              "| Function  : veksFoo" + std::string(52, ' ') + "right|\n");
}

TEST(KrReportFormat, EmptyItemLeavesTheLineAlone) {
    for (const int position : {0, 5, 70, -79, -1}) {
        krString line = "| x";
        krReportFormat::setItem(line, "", position);
        EXPECT_STREQ(line.c_str(), "| x");
    }
}

TEST(KrReportFormat, ItemLongerThanTheFrameIsDroppedAtTheRight) {
    krString line = "|";
    krReportFormat::setItem(line, std::string(78, 'x').c_str(), -79);
    EXPECT_STREQ(line.c_str(), "|");
    krReportFormat::setItem(line, std::string(200, 'x').c_str(), -79);
    EXPECT_STREQ(line.c_str(), "|");
    krReportFormat::setItem(line, std::string(77, 'x').c_str(), -79);
    EXPECT_EQ(line.c_str(), "| " + std::string(77, 'x'));
}

TEST(KrReportFormat, RightItemEndsJustInsideTheBorder) {
    krString line = "|";
    krReportFormat::setItem(line, "abc", -79);
    EXPECT_EQ(line.c_str(), "|" + std::string(74, ' ') + "abc");
}

TEST(KrReportFormat, TooLongLineHasNoRightBorder) {
    const std::string item(77, 'x');
    EXPECT_EQ(framed().getLine(item.c_str(), "", "", "", "", "").c_str(), "| " + item + "\n");
    const std::string fits(76, 'x');
    EXPECT_EQ(framed().getLine(fits.c_str(), "", "", "", "", "").c_str(), "| " + fits + "|\n");
}

TEST(KrReportFormat, ItemsAtOnePlaceStandOneBlankApart) {
    const krReportFormat format(false, 2, 5, 5, -79, -79, -79, -79);
    EXPECT_STREQ(format.getLine("ab", "cd", "", "", "", "").c_str(), "     ab cd\n");
}

TEST(KrReportFormat, OffsetIsCountedFromTheLastNewline) {
    krString line = "first\nab";
    EXPECT_EQ(krReportFormat::getLastLen(line), 2);
    EXPECT_EQ(krReportFormat::getLastLen("abc"), 3);
    EXPECT_TRUE(krReportFormat::setOffsetLine(line, 4));
    EXPECT_STREQ(line.c_str(), "first\nab  ");
    EXPECT_TRUE(krReportFormat::setOffsetLine(line, 4));
    EXPECT_FALSE(krReportFormat::setOffsetLine(line, 3));
    EXPECT_STREQ(line.c_str(), "first\nab  ");
    krReportFormat::setItemLeft(line, "x", 6);
    EXPECT_STREQ(line.c_str(), "first\nab    x");
}

TEST(KrReportFormat, HoursAreNotWrapped) {
    EXPECT_STREQ(krReportFormat::getTimeStr(0).c_str(), "00:00:00");
    EXPECT_STREQ(krReportFormat::getTimeStr(3661).c_str(), "01:01:01");
    EXPECT_STREQ(krReportFormat::getTimeStr(360000).c_str(), "100:00:00");
}

// "piece|rest" of a text; "piece|rest not cut" where that is the answer. The piece is "kept" before.
std::string pieceOf(const char* text, int limit) {
    krString rest = text;
    krString piece = "kept";
    const bool cut = krReportFormat::getPieceItem(rest, piece, limit);
    return std::string(piece.c_str()) + "|" + rest.c_str() + (cut ? "" : " not cut");
}

TEST(KrReportFormat, PieceIsCutAtABlankWithinTheLimit) {
    EXPECT_EQ(pieceOf("aaa bbb ccc", 5), "aaa|bbb ccc");
    EXPECT_EQ(pieceOf("aaa bbb ccc", 7), "aaa bbb|ccc");
}

TEST(KrReportFormat, TextWithoutAFittingBlankIsNotCut) {
    EXPECT_EQ(pieceOf("aaaaaaaa", 5), "aaaaaaaa|aaaaaaaa not cut");
    EXPECT_EQ(pieceOf("short", 5), "kept|short not cut");
}

TEST(KrReportFormat, TextIsCutAtItsFirstBlankIfThatStandsBeyondTheLimit) {
    EXPECT_EQ(pieceOf("aaaaaaaa bbb ccc", 5), "aaaaaaaa|bbb ccc");
}

TEST(KrReportFormat, TextIsCutAtItsFirstNewline) {
    EXPECT_STREQ(cutoffNL("one\ntwo\n").c_str(), "one");
    EXPECT_STREQ(cutoffNL("one").c_str(), "one");
    EXPECT_STREQ(cutoffNL("\n").c_str(), "");
}

// Known figures in place of the machine's.
class KrReport : public ::testing::Test {
protected:
    KrReport() : m_freq(krCpuTicker::m_freqMHz), m_getCpuType(vek_GetCpuType), m_info(g_pLibInfoList) {
        setenv("TZ", "UTC", 1);
        tzset();
        m_exePath = krSession::m_exePath;
        krCpuTicker::m_freqMHz = 2400;
        vek_GetCpuType = [] { return 37; };
        g_pLibInfoList = nullptr;
        krSession::m_exePath = "/opt/rig/speechbench";
        kr_vekForgetMaxCacheSizeB();
        m_cpu.vendor(4);
        m_cpu.cache(0, 1, 1, 8, 64);
        m_cpu.cache(1, 3, 2, 16, 4096);
    }
    ~KrReport() override {
        krCpuTicker::m_freqMHz = m_freq;
        vek_GetCpuType = m_getCpuType;
        delete g_pLibInfoList;
        g_pLibInfoList = m_info;
        krSession::m_exePath = m_exePath;
        kr_vekForgetMaxCacheSizeB();
    }
    static std::string count() {
        const int processors = krGetNumOfProcessors();
        return processors > 1 ? std::to_string(processors) + "x" : "";
    }
    static std::string line(const std::string& text) { return "|" + text + std::string(77 - text.size(), ' ') + "|\n"; }

    PlayedCpu m_cpu;
    krTestList m_tests;

private:
    int m_freq;
    int (*m_getCpuType)();
    krStringList* m_info;
    krString m_exePath;
};

class FixedTest : public krTest {
public:
    FixedTest(const char* name, const char* info, bool selected = true)
        : krTest(nullptr, nullptr, name, "p_foo", info), m_selected(selected) {
        m_startTime = s_start;
        m_endTime = s_start + 3;
    }
    bool tobeRun(krConditions&) override { return m_selected; }

private:
    bool m_selected;
};

TEST_F(KrReport, CpuInfoTellsFrequencyAndCache) {
    EXPECT_EQ(cpuInfo().c_str(), "Orvan generation 37, " + count() + "2.4 GHz, Max cache size 4096 K");
    krCpuTicker::m_freqMHz = 999;
    EXPECT_EQ(cpuInfo().c_str(), "Orvan generation 37, " + count() + "999 MHz, Max cache size 4096 K");
    krCpuTicker::m_freqMHz = 1000;
    EXPECT_EQ(cpuInfo().c_str(), "Orvan generation 37, " + count() + "1 GHz, Max cache size 4096 K");
}

TEST_F(KrReport, CpuInfoWithoutACacheEndsInTheComma) {
    kr_vekForgetMaxCacheSizeB();
    m_cpu.vendor(1);
    EXPECT_EQ(cpuInfo().c_str(), "Orvan generation 37, " + count() + "2.4 GHz, ");
}

TEST_F(KrReport, ProcessorIsNamedWithoutALibrary) {
    vek_GetCpuType = nullptr;
    m_cpu.set(1, 0, {0, 0, 0, 1U << 26});
    EXPECT_EQ(cpuInfo().c_str(), "Processor supporting SSX level 2, " + count() + "2.4 GHz, Max cache size 4096 K");
}

TEST_F(KrReport, RunTitleOnTheConsole) {
    krRegLibInfo("veksc, 1.0, Nov 14 2026");
    m_tests.m_startTime = s_start;
    ConsoleCapture console(ERR);
    g_ostrm << krReportTitle(m_tests);
    std::string expected = s_sep + line(" CPU      : " + std::string(cpuInfo().c_str())) +
                           line(" OS       : " + std::string(g_os.text().c_str())) +
                           line(" Computer : " + std::string(g_host.text().c_str())) +
                           line(" Library  : veksc, 1.0, Nov 14 2026") + line(" Test     : Timing") +
                           line(std::string(53, ' ') + "Sat Nov 14 23:30:00 2026") + s_sep;
    EXPECT_EQ(console.text(), expected);
}

TEST_F(KrReport, RunTitleInATable) {
    krRegLibInfo("veksc, 1.0, Nov 14 2026");
    m_tests.m_startTime = s_start;
    TableCapture table(g_cstrm);
    g_cstrm << krReportTitle(m_tests);
    EXPECT_EQ(table.text(), "CPU," + std::string(cpuInfo().c_str()) + "\nOS," + g_os.text().c_str() + "\nComputer," +
                                g_host.text().c_str() +
                                "\nLibrary,veksc, 1.0, Nov 14 2026\nStart,Sat Nov 14 23:30:00 2026\n");
}

TEST_F(KrReport, RunEndCountsEveryResult) {
    for (const krResult result : {krOk, krOk, krAccurWrn, krBadStsWrn, krDataWrn, krFuncWrn, krAccurFail, krDataFail,
                                  krFuncFail, krExcptFail, krUndefined}) {
        m_tests.plus(result);
    }
    m_tests.m_startTime = s_start;
    m_tests.m_endTime = s_start + 3661;
    ConsoleCapture console(ERR);
    g_ostrm << krReportEnd(m_tests);
    EXPECT_EQ(console.text(), s_sep + line(" KR Summary") + line(" .Number of tests : 11") +
                                  line(" .Successes       : 2") + line(" .Failures        : 8") +
                                  line(" ...Fails         : 4") + line(" .....-FAIL       : 3") +
                                  line(" .....-EXCPTFAIL  : 1") + line(" ...Warnings      : 4") +
                                  line(" .....-WARNING    : 3") + line(" .....-BADSTSWRN  : 1") +
                                  line(" ...Undefined     : 1") + line(" .Total time      : 01:01:01") + s_sep);
}

TEST_F(KrReport, RunEndShowsAPlainWarningAsUndefined) {
    m_tests.plus(krWarning);
    TableCapture table(g_ustrm);
    g_ustrm << krReportEnd(m_tests);
    EXPECT_EQ(table.text(), "END_DATA\n"
                            ".Number of tests,1\n"
                            ".Successes      ,0\n"
                            ".Failures       ,0\n"
                            "...Fails        ,0\n"
                            ".....-FAIL      ,0\n"
                            ".....-EXCPTFAIL ,0\n"
                            "...Warnings     ,0\n"
                            ".....-WARNING   ,0\n"
                            ".....-BADSTSWRN ,0\n"
                            "...Undefined    ,1\n"
                            ".Total time     ,00:00:00\n");
}

TEST_F(KrReport, TestTitleIsOneLineAtALowLevel) {
    const FixedTest test("veksFoo_16s", "TimFoo");
    ConsoleCapture console(ERR);
    const krReportTestTitle title(&test);
    EXPECT_EQ(title.size(), 3);
    g_ostrm << ERR << title << msgEnd;
    EXPECT_EQ(console.text(), "| Function  : veksFoo_16s" + std::string(29, ' ') + "Sat Nov 14 23:30:00 2026|\n");
}

TEST_F(KrReport, TestTitleIsOneLineWithWarningsToo) {
    const FixedTest test("veksFoo_16s", "TimFoo/decimating mode/VK_REG");
    ConsoleCapture console(2);
    const krReportTestTitle title(&test);
    EXPECT_EQ(title.size(), 12);
    g_ostrm << WARN << title << msgEnd;
    EXPECT_EQ(console.text(), "| Function  : veksFoo_16s" + std::string(29, ' ') + "Sat Nov 14 23:30:00 2026|\n");
}

TEST_F(KrReport, TestTitleIsABlockAtAHigherLevel) {
    const FixedTest test("veksFoo_16s", "TimFoo/decimating mode/VK_REG");
    ConsoleCapture console(ERR | WARN);
    g_ostrm << ERR << krReportTestTitle(&test) << msgEnd;
    EXPECT_EQ(console.text(), s_sep + "| Function  : veksFoo_16s" + std::string(29, ' ') +
                                  "Sat Nov 14 23:30:00 2026|\n" + line(" Test      : TimFoo") +
                                  line(" Source    : p_foo") + line(" Description : decimating mode") + s_sep);
}

TEST_F(KrReport, TestRowOfTheSummaryIsTitleAndResult) {
    FixedTest test("veksFoo_16s", "TimFoo");
    test.m_result = krBadStsWrn;
    test.m_badSSX = true;
    TableCapture table(g_ustrm);
    g_ustrm << krReportTestTitle(&test);
    EXPECT_EQ(table.text(), "");
    g_ustrm << krReportTestResult(&test);
    EXPECT_EQ(table.text(), "veksFoo_16s,Timing,-,-,-,?,TimFoo,3,p_foo,BADSTSWRN,speechbench\n");
}

TEST_F(KrReport, MachineReportsAreOfTheClassInformation) {
    FixedTest test("__krOrvanCpu", "T");
    test.m_bad87 = true;
    test.m_result = krOk;
    TableCapture table(g_ustrm);
    g_ustrm << krReportTestTitle(&test) << krReportTestResult(&test);
    EXPECT_EQ(table.text(), "__krOrvanCpu,Information,-,?,-,-,T,3,p_foo,OK,speechbench\n");
}

TEST_F(KrReport, NoTestGivesTheHeadOfTheSummary) {
    TableCapture table(g_ustrm);
    g_ustrm << krReportTestResult(nullptr);
    EXPECT_EQ(table.text(),
              "Function,Class,Control87,Status87,ControlSSX,StatusSSX,Test,Time (sec.),SrcName,Result,ExeName\n");
}

TEST_F(KrReport, TestResultIsALineOrABlock) {
    FixedTest test("veksFoo_16s", "TimFoo");
    test.m_result = krOk;
    const std::string middle = "| -OK         veksFoo_16s" + std::string(29, ' ') + "Sat Nov 14 23:30:03 2026|\n";
    {
        ConsoleCapture console(ERR);
        g_ostrm << krReportTestResult(&test);
        EXPECT_EQ(console.text(), middle);
    }
    ConsoleCapture console(ERR | WARN);
    g_ostrm << krReportTestResult(&test);
    EXPECT_EQ(console.text(), s_sep + middle + s_sep);
}

TEST_F(KrReport, MessageStandsForATestThatMeasuredNothing) {
    FixedTest test("veksFoo_16s", "TimFoo");
    test.m_result = krUndefined;
    EXPECT_STREQ(krReportTestResult(&test).m_message.c_str(), "--No measurements have been done\n");
    test.m_result = krOk;
    EXPECT_STREQ(krReportTestResult(&test).m_message.c_str(), "");
}

class KrReportListing : public KrReport {
protected:
    KrReportListing() : m_functions(g_pLibFuncList) {
        g_pLibFuncList = nullptr;
        m_tests.append(&m_a);
        m_tests.append(&m_hidden);
        m_tests.append(&m_b);
    }
    ~KrReportListing() override {
        delete g_pLibFuncList;
        g_pLibFuncList = m_functions;
    }
    std::string list(int mode) {
        ConsoleCapture console;
        g_ostrm << ERR << krReportList(m_tests, m_conditions, mode) << msgEnd;
        return console.text();
    }
    krConditions m_conditions;
    FixedTest m_a{"veksA", "TimA"};
    FixedTest m_hidden{"veksH", "TimH", false};
    FixedTest m_b{"veksB", "TimB"};
    krStringList* m_functions;
    const std::string m_enumeration = "   #\tFunction\tTest\tSource\t\n"
                                      "   1\tveksA\tTimA\tp_foo\t\n"
                                      "   2\tveksB\tTimB\tp_foo\t\n";
};

TEST_F(KrReportListing, SelectedTestsAreNumbered) {
    EXPECT_EQ(list(0), m_enumeration);
    TableCapture table(g_cstrm);
    g_cstrm << krReportList(m_tests, m_conditions, 0);
    EXPECT_EQ(table.text(), "   #,Function,Test,Source\n   1,veksA,TimA,p_foo\n   2,veksB,TimB,p_foo\n");
}

TEST_F(KrReportListing, ModeMakesNoDifferenceWithoutFunctions) {
    EXPECT_EQ(list(1), m_enumeration);
    EXPECT_EQ(list(-1), m_enumeration);
    krRegLibFunc("veksFooInit_16s");
    EXPECT_EQ(list(1), m_enumeration);
}

TEST_F(KrReportListing, FunctionsAreMarkedByTheirTests) {
    for (const char* name : {"veksB", "veksBar", "veksA", "veks"}) {
        krRegLibFunc(name);
    }
    EXPECT_EQ(list(1), "Exist\tFunction\t\n+\tveksB\t\n-\tveksBar\t\n+\tveksA\t\n-\tveks\t\n");
    EXPECT_EQ(list(-1), "Exist\tFunction\t\n-\tveksBar\t\n-\tveks\t\n");
    EXPECT_EQ(list(0), m_enumeration);
}

TEST_F(KrReportListing, ServiceFunctionsAreLeftOut) {
    for (const char* name : {"aInit", "aClose", "aAlloc", "aMalloc", "aFree", "aPutVal", "aRotateCenter",
                             "aResizeShift", "aGetSize", "aGet_16s", "aSetSize", "aSet_16s", "aDrawText", "aPlain"}) {
        krRegLibFunc(name);
    }
    EXPECT_EQ(list(1), "Exist\tFunction\t\n-\taGet_16s\t\n-\taSet_16s\t\n-\taPlain\t\n");
}

TEST_F(KrReportListing, NothingShowsBelowItsLevel) {
    ConsoleCapture console(ERR);
    g_ostrm << PERF << krReportList(m_tests, m_conditions, 0) << msgEnd;
    EXPECT_EQ(console.text(), "");
}

TEST(KrTime, TextOfATimeEndsInANewline) {
    setenv("TZ", "UTC", 1);
    tzset();
    EXPECT_STREQ(krTimeText(s_start).c_str(), "Sat Nov 14 23:30:00 2026\n");
}

TEST(KrTime, ReaderCanBeReplaced) {
    time_t (*const reader)() = krTime;
    krTime = [] { return s_start; };
    const krTest test(nullptr, nullptr, "veksFoo", "p_foo", "TimFoo");
    krTime = reader;
    EXPECT_EQ(test.m_startTime, s_start);
    EXPECT_EQ(test.m_endTime, s_start);
}

} // namespace
