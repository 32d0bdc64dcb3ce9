// What a measured line writes: numbers, comments, the text lines, the table lines and the registration text.
#include "harness_state.h"
#include "kriterator.h"
#include "streamcapture.h"

#include <gtest/gtest.h>

#include <string>

namespace {

krResult anyLoop(int, long long*) {
    return krOk;
}
krResult anyStat(int*, long long*) {
    return krOk;
}
int anyCall() {
    return 0;
}
krResult anyOld(krTool&, int) {
    return krOk;
}

class Measured : public krTest {
public:
    Measured() : krTest(anyLoop, nullptr, "veksFoo", "p_foo", "Tim//KR_REG") {
        m_tool.m_funcClocks = 1234.5;
        m_tool.m_actualAccuracy = 0.02;
        m_tool.m_comment = "nLps=8";
        a.setList({5});
        a.firstValue();
        m_parms.append(&a);
    }
    double getDivisor() override { return divisor; }
    krString getUnit() override { return "sample"; }
    double getFlops() override { return flops; }
    double divisor = 10;
    double flops = -1;
    krIterator<int> a{"a"};
};

class KrOutput : public testing::Test {
protected:
    KrOutput() {
        krTest::m_numParmsColm = 3;
        krTest::m_numResultColm = 5;
    }
    std::string texts(krResult result, OutputLevel level = ERR | WARN | PERF) {
        ConsoleCapture console(level);
        TableCapture table(g_cstrm);
        test.outputResult(result);
        rows = table.text();
        return console.text();
    }
    HarnessState state;
    Measured test;
    std::string rows;
};

TEST_F(KrOutput, ClocksShowAboutFourDigits) {
    const struct {
        double value;
        const char* text;
    } table[] = {{0, ""},
                 {-1, ""},
                 {0.00009, "9.000e-05"},
                 {0.0001, "0.000100"},
                 {0.00123, "0.00123"},
                 {0.00099, "0.000990"},
                 {0.001, "0.00100"},
                 {0.01, "0.0100"},
                 {0.1, "0.100"},
                 {0.5, "0.500"},
                 {1, "1.00"},
                 {9.994, "9.99"},
                 {10, "10.0"},
                 {99.94, "99.9"},
                 {99.99, "100.0"},
                 {100, "100"},
                 {1234567, "1234567"},
                 {1e7, "10000000"},
                 {1.5e7, "1.500e+07"}};
    for (const auto& row : table) {
        EXPECT_STREQ(test.formatClocks(row.value).c_str(), row.text) << row.value;
    }
}

TEST_F(KrOutput, PerformanceIsPerElement) {
    EXPECT_DOUBLE_EQ(test.performance(false), 123.45);
    EXPECT_STREQ(test.perfString(false).c_str(), "123");
    EXPECT_STREQ(usecString(test.m_tool).c_str(), "1.23");
}

TEST_F(KrOutput, FlopsNeedAKnownFigure) {
    EXPECT_EQ(test.performance(true), 0);
    EXPECT_STREQ(test.perfString(true).c_str(), "");
    test.flops = 24.69;
    EXPECT_DOUBLE_EQ(test.performance(true), 20);
    EXPECT_STREQ(test.perfString(true).c_str(), "20.0");
    test.flops = 0;
    EXPECT_FALSE(test.isFloatFunction());
}

TEST_F(KrOutput, GoodLineGoesToTextAndTable) {
    EXPECT_EQ(texts(krOk), "  acc=2.0%   nLps=8      perf= 1.23e+03/       10=      123 clocks\n");
    EXPECT_EQ(rows, "veksFoo,5,-,nLps=8,123,sample,1.23,-\n");
    EXPECT_EQ(texts(krOk, ERR | WARN), "");
    EXPECT_EQ(rows, "veksFoo,5,-,nLps=8,123,sample,1.23,-\n");
}

TEST_F(KrOutput, WarningShowsItsParametersAndThePerformance) {
    TextStream expected;
    std::string parms;
    {
        ConsoleCapture console;
        test.putTextParms(PERF);
        parms = console.text();
    }
    EXPECT_NE(parms.find('5'), std::string::npos);
    EXPECT_EQ(texts(krFuncWrn), "-- lib function warning on test parameters:\n" + parms +
                                    "-- performance:\n"
                                    "  acc=2.0%   nLps=8      perf= 1.23e+03/       10=      123 clocks\n");
    EXPECT_EQ(rows, "veksFoo,5,-,nLps=8,123,sample,1.23,-\n");
    EXPECT_EQ(texts(krFuncWrn, ERR), "");
    EXPECT_NE(rows, "");
}

TEST_F(KrOutput, FailureShowsItsParametersAndHasNoTableLine) {
    const std::string text = texts(krAccurFail, ERR);
    EXPECT_EQ(text.find("-- accuracy error on test parameters:\n"), 0U);
    EXPECT_EQ(text.find("perf="), std::string::npos);
    EXPECT_EQ(rows, "");
}

TEST_F(KrOutput, UndefinedWritesNothing) {
    EXPECT_EQ(texts(krUndefined), "");
    EXPECT_EQ(rows, "");
}

TEST_F(KrOutput, AccuracyIsShownByTheAdaptiveMethodsOnly) {
    test.m_tool.m_comment = "a comment that is long";
    test.m_tool.setMethodLoop(5);
    EXPECT_STREQ(test.testResultString().c_str(),
                 "  a comment that is long  perf= 1.23e+03/       10=      123 clocks");
    test.m_tool.setMethodStat(5, 5);
    EXPECT_EQ(test.testResultString().find("acc="), -1);
    test.m_tool.setMethodBest(1, 2, 3);
    EXPECT_EQ(test.testResultString().find("  acc=2.0% "), 0);
}

TEST_F(KrOutput, HotLineHasItsColumn) {
    krStringList hot;
    hot.append("veksFoo");
    g_pHotList = &hot;
    krTest::m_numResultColm = 6;
    texts(krOk);
    EXPECT_EQ(rows, "veksFoo,5,-,nLps=8,123,sample,1.23,-,Hot\n");
    krTest::m_numResultColm = 5;
    texts(krOk);
    EXPECT_EQ(rows, "veksFoo,5,-,nLps=8,123,sample,1.23,-\n");
}

TEST_F(KrOutput, OwnResultIsTakenOver) {
    test.setTimingResult(50, "own");
    EXPECT_EQ(test.m_tool.m_funcClocks, 50);
    EXPECT_STREQ(test.getComment().c_str(), "own");
}

TEST_F(KrOutput, DeprecatedNameGetsALineOfItsOwnAtTheEnd) {
    test.a.addDeprecated(5, "five");
    ConsoleCapture console;
    TableCapture table(g_cstrm);
    test.outputResult(krOk);
    EXPECT_EQ(table.text(), "veksFoo,5,-,nLps=8,123,sample,1.23,-\n");
    g_cstrm.linePostponeOut(8);
    EXPECT_EQ(table.text(), "veksFoo,5,-,nLps=8,123,sample,1.23,-\n"
                            "veksFoo,five,-,deprecated,123,sample,1.23,-\n");
    EXPECT_FALSE(test.m_deprecated);
    EXPECT_FALSE(test.a.isDeprecatedValue());
}

TEST_F(KrOutput, ValueWithoutDeprecatedNameHasNoSecondLine) {
    test.a.addDeprecated(6, "six");
    ConsoleCapture console;
    TableCapture table(g_cstrm);
    test.outputResult(krOk);
    g_cstrm.linePostponeOut(8);
    EXPECT_EQ(table.text(), "veksFoo,5,-,nLps=8,123,sample,1.23,-\n");
    EXPECT_FALSE(test.setDeprecatedFlag(true));
    EXPECT_FALSE(test.setDeprecatedFlag(false));
}

TEST_F(KrOutput, NameLinesGoWhereTheModeSays) {
    TableCapture results(g_cstrm);
    TableCapture names(g_qstrm);
    test.putTableName();
    EXPECT_EQ(results.text() + names.text(), "");
    krSession::m_nameMode = krNameInNames;
    test.putTableName();
    EXPECT_EQ(results.text(), "");
    EXPECT_EQ(names.text(), "veksFoo,a,-,parmNames,-,-,-,-\n");
    krSession::m_nameMode = krNameInResults | krNameInNames;
    test.putTableName();
    EXPECT_EQ(results.text(), "veksFoo,a,-,parmNames,-,-,-,-\n");
    EXPECT_EQ(names.text(), "veksFoo,a,-,parmNames,-,-,-,-\nveksFoo,a,-,parmNames,-,-,-,-\n");
    krSession::m_nameMode = krNameInResults;
    test.putTableName();
    EXPECT_EQ(results.text(), "veksFoo,a,-,parmNames,-,-,-,-\nveksFoo,a,-,parmNames,-,-,-,-\n");
    EXPECT_EQ(names.text(), "veksFoo,a,-,parmNames,-,-,-,-\nveksFoo,a,-,parmNames,-,-,-,-\n");
}

TEST_F(KrOutput, ParametersAreWrittenWhenTheirLevelPasses) {
    ConsoleCapture console(ERR);
    test.putTextParms(PERF);
    EXPECT_EQ(console.text(), "");
    test.putTextParms(ERR);
    EXPECT_NE(console.text(), "");
    EXPECT_EQ(g_ostrm.msgLevel(), PERF);
}

TEST_F(KrOutput, ParametersAreALineOfTheMessageTheyAreGiven) {
    ConsoleCapture console(ERR | WARN);
    const int open = g_ostrm.openMessages();
    test.putTextParms(WARN);
    EXPECT_EQ(console.text(), "a=5 \n");
    g_ostrm << "of the level before\n";
    EXPECT_EQ(console.text(), "a=5 \n") << "the message is closed";
    EXPECT_EQ(g_ostrm.openMessages(), open);
}

TEST_F(KrOutput, ParametersWithoutALevelGoWithTheMessageThatIsOpen) {
    ConsoleCapture console(ERR | WARN);
    g_ostrm << WARN;
    test.putTextParms();
    g_ostrm << msgEnd;
    EXPECT_EQ(console.text(), "a=5 \n");
    g_ostrm << INFO;
    test.putTextParms();
    g_ostrm << msgEnd;
    EXPECT_EQ(console.text(), "a=5 \n");
}

TEST_F(KrOutput, ParametersAreNotComposedForAMessageAboveTheLevel) {
    struct Counted : Measured {
        void parmsToOstrm() override { ++composed; }
        int composed = 0;
    } counted;
    ConsoleCapture console(ERR | WARN);
    counted.putTextParms(PERF);
    EXPECT_EQ(counted.composed, 0);
    counted.putTextParms(WARN);
    EXPECT_EQ(counted.composed, 1);
}

// A second parameter after the first.
class TwoMeasured : public Measured {
public:
    TwoMeasured() {
        b.setList({7});
        b.firstValue();
        m_parms.append(&b);
    }
    krIterator<int> b{"b"};
};

class KrDeprecated : public KrOutput {
protected:
    // The rows of one line, those held back at the end.
    std::string rowsOf(krTest& measured) {
        ConsoleCapture console;
        TableCapture table(g_cstrm);
        measured.outputResult(krOk);
        g_cstrm.linePostponeOut(8);
        return table.text();
    }
    const std::string line = "veksFoo,5,7,nLps=8,123,sample,1.23,-\n";
    TwoMeasured two;
};

TEST_F(KrDeprecated, FormReplacesTheValuesThatHaveOneAndKeepsTheOthers) {
    two.b.addDeprecated(7, "seven");
    EXPECT_EQ(rowsOf(two), line + "veksFoo,5,seven,deprecated,123,sample,1.23,-\n");
    two.a.addDeprecated(5, "five");
    EXPECT_EQ(rowsOf(two), line + "veksFoo,five,seven,deprecated,123,sample,1.23,-\n");
}

TEST_F(KrDeprecated, OneParameterWhoseValueHasNoFormPreventsTheRow) {
    two.a.addDeprecated(5, "five");
    two.b.addDeprecated(8, "eight");
    EXPECT_EQ(rowsOf(two), line);
    EXPECT_FALSE(two.a.isDeprecatedValue()) << "what was set before the refusal is put back";
    TwoMeasured other;
    other.a.addDeprecated(6, "six");
    other.b.addDeprecated(7, "seven");
    EXPECT_FALSE(other.setDeprecatedFlag(true));
    EXPECT_FALSE(other.b.isDeprecatedValue()) << "the first refusal ends it";
}

TEST_F(KrDeprecated, FlagIsThatOfTheTestAndOfItsParameters) {
    two.a.addDeprecated(5, "five");
    EXPECT_TRUE(two.setDeprecatedFlag(true));
    EXPECT_TRUE(two.m_deprecated);
    EXPECT_TRUE(two.a.isDeprecatedValue());
    EXPECT_FALSE(two.setDeprecatedFlag(false));
    EXPECT_FALSE(two.m_deprecated);
    EXPECT_FALSE(two.a.isDeprecatedValue());
}

TEST_F(KrDeprecated, ParametersWithoutFormsHaveNone) {
    EXPECT_FALSE(two.setDeprecatedFlag(true));
    EXPECT_TRUE(two.m_deprecated) << "stored whatever the answer";
    two.setDeprecatedFlag(false);
    EXPECT_EQ(rowsOf(two), line);
    EXPECT_FALSE(two.m_deprecated);
}

// ------------------------------------------------------------------------------------------------- registration

TEST_F(KrOutput, RegistrationTellsItsFunctionsAndTheOneMeasured) {
    krTest full(anyCall, anyCall, anyLoop, anyStat, "n", "f", "Tim//KR_REG_I");
    EXPECT_STREQ(full.regInfo().c_str(),
                 "   Test has been registered by KR_REG_I macro with loopMethod, statMethod, funcCall, funcInit.\n"
                 "   loopMethod is called for measuring.");
    full.m_tool.setMethodStat(1, 1);
    EXPECT_EQ(full.regInfo().find("\n   statMethod is called") >= 0, true);
    full.m_tool.setMethodLoop(1);
    EXPECT_EQ(full.regInfo().find("\n   loopMethod is called") >= 0, true);
    full.m_tool.setMethodBest(1, 1, 1);
    EXPECT_EQ(full.regInfo().find("\n   loopMethod is called") >= 0, true);
    full.m_tool.m_autoStat = true;
    EXPECT_EQ(full.regInfo().find("\n   statMethod is called") >= 0, true);
    full.m_tool.m_setUse = true;
    EXPECT_EQ(full.regInfo().find("\n   funcCall with Set&Use is called for measuring.") >= 0, true);
}

TEST_F(KrOutput, RegistrationFallsBackOnTheOtherFunction) {
    krTest loopOnly(anyLoop, nullptr, "n", "f", "Tim");
    loopOnly.m_tool.setMethodStat(1, 1);
    EXPECT_STREQ(loopOnly.regInfo().c_str(), "   Test has been registered with loopMethod.\n"
                                             "   loopMethod is called for measuring.");
    krTest statOnly(nullptr, anyStat, "n", "f", "Tim");
    EXPECT_STREQ(statOnly.regInfo().c_str(), "   Test has been registered with statMethod.\n"
                                             "   statMethod is called for measuring.");
}

TEST_F(KrOutput, RegistrationOfACallAloneAndOfTheOldMethod) {
    krTest callOnly(anyCall, nullptr, nullptr, nullptr, "n", "f", "Tim//KR_REG_C");
    EXPECT_STREQ(callOnly.regInfo().c_str(), "   Test has been registered by KR_REG_C macro with funcCall.\n"
                                             "   funcCall is called for measuring.");
    krTest old(anyOld, "n", "f", "Tim");
    EXPECT_STREQ(old.regInfo().c_str(), "   Test has been registered with oldMethod.\n"
                                        "   oldMethod is called for measuring.");
}

TEST_F(KrOutput, RegistrationWithoutFunctions) {
    krTest none(nullptr, anyCall, nullptr, nullptr, "n", "f", "Tim//KR_REG");
    EXPECT_STREQ(none.regInfo().c_str(), "   Test has been registered by KR_REG macro without any function to call.\n"
                                         " No standard timing method is available");
}

TEST_F(KrOutput, RegistrationIsWrittenAtPerformanceLevel) {
    ConsoleCapture console;
    test.outputRegInfo();
    EXPECT_EQ(console.text(), "   Test has been registered by KR_REG macro with loopMethod.\n"
                              "   loopMethod is called for measuring.\n");
    ConsoleCapture quiet(ERR | WARN);
    test.outputRegInfo();
    EXPECT_EQ(quiet.text(), "");
}

} // namespace
