// The dialogue before the first test: what is asked in which order, where each value goes, what lands in the ini-file.
#include "kr.h"
#include "krbase.h"
#include "streamcapture.h"
#include "tempdir.h"

#include <gtest/gtest.h>

#include <tuple>

namespace {

const std::string s_stars = " " + std::string(78, '*') + "\n";

// A session whose settings are put back, with nothing registered.
class KrDialog : public ::testing::Test {
protected:
    KrDialog()
        : m_tool(g_tool), m_initTiming(initTimingMethod), m_parms(g_pParmList), m_shift(krGetVectorShift()),
          m_align(krGetVectorAlign()), m_src(krGetAlignSrc()), m_byByte(krGetAlignByByte()) {
        initTimingMethod = nullptr;
        g_pParmList = nullptr;
        g_tool = krTool();
        g_istrm.dataList().clear();
    }
    ~KrDialog() override {
        g_tool = m_tool;
        initTimingMethod = m_initTiming;
        g_pParmList = m_parms;
        krSetVectorShift(m_shift);
        krSetVectorAlign(m_align);
        krSetAlignSrc(m_src);
        krSetAlignByByte(m_byByte);
        g_istrm.dataList().clear();
        g_istrm.setIStream(nullptr);
    }
    void force(const char* pair) { g_istrm.dataList().set(pair); }
    // Runs the whole dialogue and returns the console text.
    std::string dialogue() {
        ConsoleCapture console;
        m_session.beginCommonData();
        m_session.readCommonData();
        return console.text();
    }
    // Loops of the iterative method at the start and at the end, and its least clocks.
    using Best = std::tuple<int, int, long long>;
    static Best best() {
        Best numbers;
        EXPECT_TRUE(g_tool.getMethodBest(std::get<0>(numbers), std::get<1>(numbers), std::get<2>(numbers)));
        return numbers;
    }
    krSession m_session;

private:
    krTool m_tool;
    void (*m_initTiming)(krTool&);
    krList<krParameter*>* m_parms;
    int m_shift;
    int m_align;
    bool m_src;
    bool m_byByte;
};

TEST_F(KrDialog, DefaultsOfABatchRun) {
    krSetVectorShift(64);
    EXPECT_EQ(dialogue(), " Method = Auto\n Accuracy = 5\n AlignVectorsBy = element\n VectorAlign = 0\n");
    EXPECT_TRUE(g_tool.getMethodAuto());
    EXPECT_DOUBLE_EQ(g_tool.m_accuracy, 0.05);
    EXPECT_FALSE(krGetAlignByByte());
    EXPECT_EQ(krGetVectorAlign(), 0);
    EXPECT_EQ(krGetVectorShift(), 512);
}

TEST_F(KrDialog, NumberOfLoopsIsAtLeastOne) {
    force("Method=Manual");
    force("NumLoops=0");
    EXPECT_EQ(dialogue(), " Method = Manual\n NumLoops = 0\n AlignVectorsBy = element\n VectorAlign = 0\n");
    int loops = 0;
    ASSERT_TRUE(g_tool.getMethodLoop(loops));
    EXPECT_EQ(loops, 1);
}

TEST_F(KrDialog, MethodIsABeginningOfItsWord) {
    force("Method=s");
    dialogue();
    int calls = 0;
    long long clocks = 0;
    ASSERT_TRUE(g_tool.getMethodStat(calls, clocks));
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(clocks, 10000);
}

TEST_F(KrDialog, AccuracyOutsideOneToFiftyPerCentControlsNothing) {
    const struct {
        const char* pair;
        double accuracy;
    } cases[] = {{"Accuracy=51", 500.0},
                 {"Accuracy=0", 10.0},
                 {"Accuracy=-3", 10.0},
                 {"Accuracy=50", 0.5},
                 {"Accuracy=1", 0.01}};
    for (const auto& one : cases) {
        force(one.pair);
        dialogue();
        EXPECT_DOUBLE_EQ(g_tool.m_accuracy, one.accuracy) << one.pair;
    }
}

TEST_F(KrDialog, AccuracyIsNotReadForTheFixedMethods) {
    g_tool.m_accuracy = 0.25;
    force("Accuracy=7");
    for (const char* method : {"Method=Manual", "Method=Statistic"}) {
        force(method);
        EXPECT_EQ(dialogue().find("Accuracy"), std::string::npos);
        EXPECT_DOUBLE_EQ(g_tool.m_accuracy, 0.25);
    }
}

TEST_F(KrDialog, IterativeStopsAtEightTimesItsStart) {
    force("Method=Iterative");
    force("StartNumLoops=10");
    force("StopNumLoops=20");
    EXPECT_EQ(dialogue(), " Method = Iterative\n StartNumLoops = 10\n StopNumLoops = 20\n Accuracy = 5\n"
                          " AlignVectorsBy = element\n VectorAlign = 0\n");
    EXPECT_EQ(best(), (Best{10, 80, 10}));
}

TEST_F(KrDialog, IterativeHasItsDefaults) {
    force("Method=i");
    dialogue();
    EXPECT_EQ(std::get<0>(best()), 1);
    EXPECT_EQ(std::get<1>(best()), 2048);
}

TEST_F(KrDialog, PresetGivesTheMethodAndItsNumbers) {
    initTimingMethod = [](krTool& tool) { tool.setMethodStat(7, 5000); };
    EXPECT_EQ(dialogue(), " Method = Statistic\n NumCalls = 7\n TotalCpuClocks = 5000\n AlignVectorsBy = element\n"
                          " VectorAlign = 0\n");
    initTimingMethod = [](krTool& tool) { tool.setMethodLoop(33); };
    EXPECT_EQ(dialogue().find(" Method = Manual\n NumLoops = 33\n"), 0U);
    force("Method=Statistic");
    EXPECT_EQ(dialogue().find(" Method = Statistic\n NumCalls = 3\n TotalCpuClocks = 10000\n"), 0U);
}

TEST_F(KrDialog, PresetOfTheIterativeMethodGivesItsThreeNumbers) {
    initTimingMethod = [](krTool& preset) { preset.setMethodBest(3, 40, 77); };
    EXPECT_EQ(dialogue().find(" Method = Iterative\n StartNumLoops = 3\n StopNumLoops = 40\n Accuracy = 5\n"), 0U);
    EXPECT_EQ(best(), (Best{3, 40, 77}));
}

TEST_F(KrDialog, AlignmentIsHeldToTheRemainderBySixtyFour) {
    krSetAlignSrc(false);
    force("VectorAlign=65");
    force("AlignVectorsBy=b");
    EXPECT_EQ(dialogue(), " Method = Auto\n Accuracy = 5\n AlignVectorsBy = byte\n VectorAlign = 1\n"
                          " MisalignFirstVectorOnly = yes\n");
    EXPECT_EQ(krGetVectorAlign(), 1);
    EXPECT_TRUE(krGetAlignByByte());
    EXPECT_TRUE(krGetAlignSrc());
    force("VectorAlign=-65");
    force("MisalignFirstVectorOnly=no");
    dialogue();
    EXPECT_EQ(krGetVectorAlign(), -1);
    EXPECT_FALSE(krGetAlignSrc());
}

TEST_F(KrDialog, AlignmentOfZeroAsksNoMore) {
    krSetAlignSrc(true);
    force("VectorAlign=64");
    force("MisalignFirstVectorOnly=no");
    EXPECT_EQ(dialogue().find("MisalignFirstVectorOnly"), std::string::npos);
    EXPECT_EQ(krGetVectorAlign(), 0);
    EXPECT_TRUE(krGetAlignSrc());
}

TEST_F(KrDialog, MutualShiftIsReachedByNoSource) {
    force("MutualVectorShift=0");
    EXPECT_EQ(dialogue().find("MutualVectorShift"), std::string::npos);
    EXPECT_EQ(krGetVectorShift(), 512);
}

TEST_F(KrDialog, TimingIsAskedWithATitleAndTheEndIsTold) {
    TypedAnswers typed("m\n20\n");
    m_session.addAskMode(krAskTiming);
    const std::string text = dialogue();
    EXPECT_EQ(typed.prompts(), "\n Method {Auto|Manual|Statistic|Iterative} [Auto] = \n NumLoops [10] = ");
    EXPECT_EQ(text, std::string(krSession::getEnterTitle("Specify timing method, please").c_str()) +
                        " Method = Manual\n NumLoops = 20\n AlignVectorsBy = element\n VectorAlign = 0\n" +
                        krSession::getEnterTitle("End of common specifications").c_str());
    EXPECT_FALSE(g_istrm.interactive());
}

TEST_F(KrDialog, AlignmentIsAskedByItsUnit) {
    TypedAnswers typed("byte\n3\nno\n");
    m_session.addAskMode(krAskAlign);
    const std::string text = dialogue();
    EXPECT_EQ(typed.prompts(), "\n AlignVectorsBy {byte|element} [element] = "
                               "\n VectorAlign by Byte, 0..63 [0] = "
                               "\n MisalignFirstVectorOnly {yes|no} [yes] = ");
    EXPECT_EQ(text.find(" Method = Auto\n Accuracy = 5\n" +
                        std::string(krSession::getEnterTitle("Specify vectors alignment, please").c_str())),
              0U);
    EXPECT_EQ(krGetVectorAlign(), 3);
    EXPECT_FALSE(krGetAlignSrc());
}

TEST_F(KrDialog, BadAnswerIsReportedAndTheDefaultStands) {
    TypedAnswers typed("xyz\n\n");
    m_session.addAskMode(krAskTiming);
    const std::string text = dialogue();
    EXPECT_NE(text.find("Invalid value of Method = xyz"), std::string::npos);
    EXPECT_TRUE(g_tool.getMethodAuto());
}

TEST_F(KrDialog, ClosedConsoleBehavesLikeABatchRun) {
    TypedAnswers typed("");
    m_session.addAskMode(krAskTiming | krAskAlign);
    dialogue();
    EXPECT_TRUE(g_tool.getMethodAuto());
    EXPECT_DOUBLE_EQ(g_tool.m_accuracy, 0.05);
    EXPECT_EQ(typed.prompts(), "\n Method {Auto|Manual|Statistic|Iterative} [Auto] = \n Accuracy, % [5] = "
                               "\n AlignVectorsBy {byte|element} [element] = "
                               "\n VectorAlign by Element, 0..63 [0] = ");
}

TEST_F(KrDialog, CommonParametersAreAskedOnceAndThenOnlyEchoed) {
    krDefault<int> frames(160, "Frames", "Number of frames");
    krList<krParameter*> parms;
    parms.append(&frames);
    g_pParmList = &parms;
    TypedAnswers typed("80\n");
    m_session.addAskMode(krAskParms);
    ConsoleCapture console;
    EXPECT_EQ(m_session.readTestParameters(), krAskParms);
    EXPECT_EQ(console.text(), std::string(krSession::getEnterTitle("Specify common test parameters, please").c_str()) +
                                  " Frames = 80\n");
    EXPECT_EQ(typed.prompts(), "\n Number of frames [160] = ");
    EXPECT_EQ(frames.value(), 80);
    EXPECT_FALSE(frames.enabled());
}

TEST_F(KrDialog, NoCommonParametersMeanNoTitle) {
    m_session.addAskMode(krAskParms);
    ConsoleCapture console;
    EXPECT_EQ(m_session.readTestParameters(), 0);
    krList<krParameter*> none;
    g_pParmList = &none;
    EXPECT_EQ(m_session.readTestParameters(), 0);
    EXPECT_EQ(console.text(), "");
}

krDefault<int> s_used(160, "Used");
krDefault<int> s_unused(8, "Unused");

class UsingTest : public krTest {
public:
    UsingTest() : krTest(nullptr, nullptr, "veksFoo", "p_foo", "TimFoo") {}
    void beginTest() override {
        krTest::beginTest();
        m_parms.append(&s_used);
        const krSession* session = pSession;
        m_batchWhileStarting = session->m_batchMode && session->m_askMode == 0;
    }
    bool m_batchWhileStarting = false;
};

TEST_F(KrDialog, ParametersThatNoSelectedTestUsesAreDropped) {
    krList<krParameter*> parms;
    parms.append(&s_unused);
    parms.append(&s_used);
    g_pParmList = &parms;
    UsingTest test;
    krTestList tests;
    tests.append(&test);
    krConditions conditions;
    krTestList* const list = pTestList;
    krSession* const session = pSession;
    pTestList = &tests;
    pSession = &m_session;
    m_session.m_conditions = &conditions;
    m_session.m_askMode = krAskTiming | krAskParms;
    m_session.selectTestParameters();
    m_session.m_conditions = nullptr;
    pTestList = list;
    pSession = session;
    ASSERT_EQ(parms.size(), 1);
    EXPECT_EQ(*parms.begin(), &s_used);
    EXPECT_TRUE(test.m_batchWhileStarting);
    EXPECT_FALSE(m_session.m_batchMode);
    EXPECT_EQ(m_session.m_askMode, krAskTiming | krAskParms);
}

TEST_F(KrDialog, IniFileGetsTheValuesThatTheRunTook) {
    const TempDir dir;
    ASSERT_TRUE(g_istrm.setIniFile(dir.path("p.ini").c_str(), true));
    force("Method=Manual");
    force("VectorAlign=65");
    dialogue();
    g_istrm.deleteIniFile();
    EXPECT_EQ(dir.read("p.ini"), "\n[Kelvar Rig]\n"
                                 "Method=Manual\t// Auto|Manual|Statistic|Iterative\n"
                                 "NumLoops=10\n"
                                 "AlignVectorsBy=element\t// byte|element\n"
                                 "VectorAlign=65\n"
                                 "MisalignFirstVectorOnly=yes\t// yes|no\n");
}

TEST_F(KrDialog, OutputLevelIsSevenUntilTheEnd) {
    ConsoleCapture console(ERR);
    m_session.beginCommonData();
    EXPECT_EQ(g_ostrm.outLevel(), 7);
    m_session.m_levelMode = ERR | DATA;
    g_istrm.setIStream(&c_in);
    m_session.endCommonData();
    EXPECT_EQ(g_ostrm.outLevel(), ERR | DATA);
    EXPECT_FALSE(g_istrm.interactive());
}

TEST_F(KrDialog, TestsGoOnAskingWithTheirBit) {
    ConsoleCapture console;
    m_session.addAskMode(krAskTests);
    g_istrm.setIStream(&c_in);
    m_session.endCommonData();
    EXPECT_TRUE(g_istrm.interactive());
}

TEST(KrEnterTitle, TitleStandsInTheMiddleOfABox) {
    EXPECT_EQ(krSession::getEnterTitle("abcd").c_str(),
              s_stars + " *" + std::string(36, ' ') + "abcd" + std::string(36, ' ') + "*\n" + s_stars);
    EXPECT_EQ(krSession::getEnterTitle("abc").c_str(),
              s_stars + " *" + std::string(36, ' ') + "abc" + std::string(37, ' ') + "*\n" + s_stars);
}

TEST(KrEnterTitle, LongTitleHasNoBlanks) {
    const std::string title(90, 't');
    EXPECT_EQ(krSession::getEnterTitle(title.c_str()).c_str(), s_stars + " *" + title + "*\n" + s_stars);
}

} // namespace
