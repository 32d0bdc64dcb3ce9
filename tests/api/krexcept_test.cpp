// Fault containment: real crashes inside tests, and the exception type.
#include "harness_state.h"
#include "krbase.h"
#include "krexcept.h"
#include "kriterator.h"
#include "noleakcheck.h"
#include "streamcapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

namespace {

TEST(KrExceptionText, BadInputHasMessageAndInfo) {
    const krException fault(krString("bad value"));
    EXPECT_STREQ(fault.msg(), "--VEK. Exception: bad value");
    EXPECT_STREQ(fault.info(), "bad value");
    EXPECT_STREQ(fault.what(), fault.msg());
}

TEST(KrExceptionText, SignalHasTheMessageAlone) {
    const krException fault("Illegal instruction.");
    EXPECT_STREQ(fault.msg(), "--VEK. Signal: Illegal instruction.");
}

TEST(KrExceptionText, LengthyTextIsCut) {
    const std::string lengthy(1000, 'x');
    const krException fault{krString(lengthy.c_str())};
    EXPECT_EQ(std::string(fault.info()).size(), 255U);
    EXPECT_EQ(std::string(fault.msg()).size(), 255U);
}

TEST(KrSignalText, EachSignalHasItsText) {
    const int before = tsSignal::m_code;
    const struct {
        int code;
        const char* text;
    } rows[] = {{SIGFPE, "FP error, such as overflow, division by zero, invalid operation."},
                {SIGILL, "Illegal instruction."},
                {SIGSEGV, "Illegal storage access."},
                {SIGTERM, "Unknown exception"}};
    for (const auto& row : rows) {
        tsSignal::m_code = row.code;
        EXPECT_STREQ(tsSignal::getInfo(), row.text);
        EXPECT_EQ(tsSignal::code(), row.code);
    }
    tsSignal::m_code = before;
}

void nullWrite() {
    __asm__ volatile("movl $1, (%0)" : : "r"(nullptr) : "memory");
}
void integerZeroDivide() {
    __asm__ volatile("xorl %%edx, %%edx\n\tmovl $1, %%eax\n\txorl %%ecx, %%ecx\n\tidivl %%ecx"
                     :
                     :
                     : "eax", "ecx", "edx", "cc");
}
void illegalInstruction() {
    __asm__ volatile("ud2");
}
void x87ZeroDivide() {
    __asm__ volatile("fld1\n\tfldz\n\tfdivrp\n\tfwait\n\tfstp %%st(0)" : : : "st", "st(1)");
}

void (*s_fault)() = nullptr;
int s_stopped = 0;

krResult faultyLoop(int, long long* clocks) {
    *clocks = 100;
    if (s_fault != nullptr) {
        s_fault();
    }
    return krOk;
}

class Faulty : public krTest {
public:
    Faulty() : krTest(faultyLoop, nullptr, "veksFaulty", "f", "Tim//KR_REG") {}
    void endTest() override { ++s_stopped; }
};

class KrFaults : public testing::Test {
protected:
    KrFaults() {
        krTest::m_numParmsColm = 1;
        krTest::m_numResultColm = 5;
        s_fault = nullptr;
        s_stopped = 0;
    }
    std::string faultText(void (*fault)()) {
        s_fault = fault;
        Faulty test;
        ConsoleCapture console;
        TableCapture table(g_cstrm);
        EXPECT_EQ(test.run(), krExcptFail);
        EXPECT_EQ(table.text(), "");
        EXPECT_EQ(g_ostrm.outLevel(), ERR | WARN | PERF);
        EXPECT_EQ(g_ostrm.msgLevel(), PERF);
        const std::string text = console.text();
        const size_t at = text.find("--VEK.");
        return at == std::string::npos ? text : text.substr(at, text.find('\n', at) + 1 - at);
    }
    HarnessState state;
    NoLeakCheck noLeakCheck;
};

TEST_F(KrFaults, NullWriteIsToldWithThePlaceWhereItStruck) {
    EXPECT_EQ(faultText(nullWrite), "--VEK. Signal: Illegal storage access. in vekFunctionCalls\n");
    EXPECT_EQ(s_stopped, 1);
}

TEST_F(KrFaults, IntegerDivisionByZero) {
    EXPECT_EQ(faultText(integerZeroDivide),
              "--VEK. Signal: FP error, such as overflow, division by zero, invalid operation. in vekFunctionCalls\n");
}

TEST_F(KrFaults, X87DivisionByZeroIsNotMasked) {
    EXPECT_EQ(faultText(x87ZeroDivide),
              "--VEK. Signal: FP error, such as overflow, division by zero, invalid operation. in vekFunctionCalls\n");
    EXPECT_EQ(kr_get_sw_fpu() & 0x3F, 0U);
}

TEST_F(KrFaults, IllegalInstruction) {
    EXPECT_EQ(faultText(illegalInstruction), "--VEK. Signal: Illegal instruction. in vekFunctionCalls\n");
}

TEST_F(KrFaults, SameFaultManyTimesCostsOneTestEach) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(faultText(nullWrite), "--VEK. Signal: Illegal storage access. in vekFunctionCalls\n");
        EXPECT_EQ(faultText(x87ZeroDivide).find("--VEK. Signal: FP error"), 0U);
    }
    EXPECT_EQ(s_stopped, 6);
}

TEST_F(KrFaults, NextTestRuns) {
    krTestList list;
    struct Good : Faulty {
        krResult runTiming() override {
            m_tool.m_funcClocks = 1;
            return krOk;
        }
    } good;
    Faulty bad;
    list.append(&bad);
    list.append(&good);
    s_fault = nullWrite;
    krConditions all;
    ConsoleCapture console;
    EXPECT_TRUE(list.runTests(all));
    EXPECT_EQ(list.counter(krExcptFail), 1);
    EXPECT_EQ(list.counter(krOk), 1);
}

TEST_F(KrFaults, ParametersReadBeforeDoNotMoveTheMark) {
    struct WithParm : Faulty {
        void beginTest() override {
            initSettings();
            a.setList({1});
            m_parms.append(&a);
        }
        krIterator<int> a{"a"};
    } test;
    s_fault = nullWrite;
    ConsoleCapture console;
    EXPECT_EQ(test.run(), krExcptFail);
    EXPECT_NE(console.text().find("Illegal storage access. in vekFunctionCalls\n"), std::string::npos);
}

TEST_F(KrFaults, FaultInAPhaseNamesThePhase) {
    struct BadStart : Faulty {
        bool canStart() override {
            nullWrite();
            return true;
        }
    } test;
    ConsoleCapture console;
    EXPECT_EQ(test.run(), krExcptFail);
    EXPECT_NE(console.text().find("--VEK. Signal: Illegal storage access. in canStart\n"), std::string::npos);
    ConsoleCapture second;
    test.startAndStop();
    EXPECT_EQ(second.text(), "--VEK. Signal: Illegal storage access. in startAndStop of veksFaulty test\n");
}

TEST_F(KrFaults, FaultSetsTheWordsAnew) {
    faultText([] {
        kr_set_cw_fpu(0xC3F, 0xF3F);
        kr_set_ssx(0x7F80, 0xFFC0);
        nullWrite();
    });
    EXPECT_EQ(kr_get_cw_fpu() & 0xF3F, 0x23BU);
    EXPECT_EQ(kr_get_ssx() & 0xFFBF, 0x9F80U);
}

TEST_F(KrFaults, FaultAndBadInputCloseThePriorityBracket) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "priorities need root rights";
    }
    const int before = getpriority(PRIO_PROCESS, 0);
    krTool::m_priority = before == 10 ? 2 : 3;
    static int s_within = 0;
    faultText([] {
        s_within = getpriority(PRIO_PROCESS, 0);
        nullWrite();
    });
    EXPECT_NE(s_within, before) << "the bracket was open";
    EXPECT_EQ(getpriority(PRIO_PROCESS, 0), before);
    faultText([] { throw krException(krString("bad value")); });
    EXPECT_EQ(getpriority(PRIO_PROCESS, 0), before);
}

// Faults in what a test answers while its lines, its report or its end are in work.
class FaultyAnswer : public Faulty {
public:
    enum class Where { nowhere, comment, cell, names, text, report, end };
    explicit FaultyAnswer(Where where) : m_where(where) { m_name = "veksFaulty"; }
    bool canContinue() override { return m_isFirst; }
    krString getComment() override { return strike(Where::comment, "note"); }
    krString getUnit() override { return strike(Where::cell, "e"); }
    void parmsNameToCstrm() override { strike(Where::names, ""); }
    void parmsToOstrm() override { strike(Where::text, ""); }
    krString regInfo() override { return strike(Where::report, "info"); }
    void endTest() override {
        ++s_stopped;
        strike(Where::end, "");
    }

private:
    krString strike(Where where, const char* text) const {
        if (where == m_where) {
            nullWrite();
        }
        return text;
    }
    Where m_where;
};

TEST_F(KrFaults, FaultWhileARowIsWrittenSparesTheNextRow) {
    using Where = FaultyAnswer::Where;
    krSession::m_nameMode = krNameInNames;
    for (const Where where : {Where::comment, Where::cell, Where::names, Where::text}) {
        ConsoleCapture console;
        TableCapture table(g_cstrm);
        TableCapture names(g_qstrm);
        FaultyAnswer faulty(where);
        faulty.m_name = "veksFaulty";
        EXPECT_EQ(faulty.run(), krExcptFail);
        EXPECT_EQ(g_ostrm.msgLevel(), PERF);
        const size_t written = table.text().size();
        const size_t named = names.text().size();
        FaultyAnswer good(Where::nowhere);
        good.m_name = "veksGood";
        EXPECT_EQ(good.run(), krOk);
        EXPECT_EQ(table.text().substr(written, 14), "veksGood,note,") << static_cast<int>(where);
        EXPECT_EQ(names.text().substr(named), "veksGood,parmNames,-,-,-,-\n");
    }
    krSession::m_nameMode = 0;
}

TEST_F(KrFaults, FaultWithinAMessageClosesIt) {
    struct Within : Faulty {
        bool canContinue() override { return m_isFirst; }
        krResult runTiming() override { return krFuncFail; }
        void parmsToOstrm() override {
            if (g_ostrm.msgLevel() == ERR) {
                struck = true;
                nullWrite();
            }
        }
        bool struck = false;
    } test;
    ConsoleCapture console;
    const int open = g_ostrm.openMessages();
    EXPECT_EQ(test.run(), krExcptFail);
    EXPECT_TRUE(test.struck);
    EXPECT_EQ(g_ostrm.msgLevel(), PERF);
    EXPECT_EQ(g_ostrm.openMessages(), open);
}

TEST_F(KrFaults, FaultInTheEndCostsTheTestOnce) {
    ConsoleCapture console;
    TableCapture summary(g_ustrm);
    FaultyAnswer test(FaultyAnswer::Where::end);
    EXPECT_EQ(test.run(), krExcptFail);
    EXPECT_EQ(s_stopped, 1);
    const std::string text = console.text();
    const size_t at = text.find("--VEK. Signal: Illegal storage access. in endTest\n");
    ASSERT_NE(at, std::string::npos);
    EXPECT_EQ(text.find("--VEK.", at + 1), std::string::npos);
    const std::string rows = summary.text();
    EXPECT_EQ(std::count(rows.begin(), rows.end(), '\n'), 1);
    EXPECT_EQ(tsSignal::m_armed, 0);
}

// An object of test memory that counts how often its contents are put back.
struct CountedOwner : krObject {
    bool reserveCopy() override { return true; }
    bool setReservedCopy() override {
        ++resets;
        return true;
    }
    int resets = 0;
};

// Takes a block of its own in each phase that may take memory.
class Taking : public Faulty {
public:
    bool canContinue() override { return m_isFirst; }
    bool initData() override {
        block = krTest::allocate(1000, 0, &owner);
        return true;
    }
    void flushData() override { krTest::deallocate(block); }
    void* block = nullptr;
    CountedOwner owner;
};

TEST_F(KrFaults, BlocksOfADeadLineAreForgottenAndNotReleased) {
    for (void (*fault)() : {+nullWrite, +[] { throw krException(krString("bad value")); }}) {
        Taking test;
        s_fault = fault;
        std::string text;
        {
            ConsoleCapture console;
            EXPECT_EQ(test.run(), krExcptFail);
            EXPECT_EQ(krMallocFirst(nullptr, nullptr), nullptr);
            EXPECT_EQ(krTest::reserveAllVectors(), 0);
            EXPECT_FALSE(krMallocInfo(test.block, nullptr, nullptr));
        }
        static_cast<char*>(test.block)[999] = 1;
        {
            // Who still holds the block can release it.
            ConsoleCapture console(MEM);
            krTest::deallocate(test.block);
            krTest::deallocate(test.block);
            text = console.text();
        }
        EXPECT_EQ(text.find(" - krFree: size:1000  address:"), 0U) << text;
        EXPECT_NE(text.find("\n - krFree: \n"), std::string::npos) << text;
    }
}

TEST_F(KrFaults, SetAndUseOfTheNextTestSparesTheBlocksOfADeadLine) {
    Taking dead;
    s_fault = nullWrite;
    ConsoleCapture console;
    EXPECT_EQ(dead.run(), krExcptFail);
    struct Called : Taking {
        krResult runTiming() override {
            return m_tool.timing(
                nullptr, nullptr, [] { return 0; }, nullptr);
        }
    } next;
    g_tool.setMethodLoop(5);
    g_tool.m_setUse = true;
    EXPECT_EQ(next.run(), krOk);
    EXPECT_EQ(next.owner.resets, 5);
    EXPECT_EQ(dead.owner.resets, 0);
    krTest::deallocate(dead.block);
}

TEST_F(KrFaults, BlocksOfAFaultyStartAndStopAreForgotten) {
    struct BadStart : Faulty {
        bool canStart() override {
            block = krTest::allocate(1000, 0);
            nullWrite();
            return true;
        }
        void* block = nullptr;
    } test;
    ConsoleCapture console;
    test.startAndStop();
    EXPECT_EQ(krMallocFirst(nullptr, nullptr), nullptr);
    krTest::deallocate(test.block);
}

TEST_F(KrFaults, BlocksThatAFaultyParameterFindsStay) {
    struct Crashing : krDefault<int> {
        Crashing() : krDefault<int>(3, "n") {}
        int validItem(const krString& /*text*/) override {
            nullWrite();
            return 0;
        }
    } parm;
    void* const block = krTest::allocate(1000, 0);
    {
        ConsoleCapture console;
        parm.fromIStream(g_istrm);
    }
    EXPECT_EQ(krMallocFirst(nullptr, nullptr), block);
    krTest::deallocate(block);
}

TEST_F(KrFaults, FaultWithinAMessageOfStartAndStopClosesIt) {
    struct Within : Faulty {
        bool canStart() override {
            g_ostrm << TRACE << "hidden\n" << INFO;
            nullWrite();
            return true;
        }
    } test;
    ConsoleCapture console;
    const int open = g_ostrm.openMessages();
    test.startAndStop();
    EXPECT_EQ(g_ostrm.openMessages(), open);
    g_ostrm << "seen\n";
    EXPECT_EQ(console.text(), "--VEK. Signal: Illegal storage access. in startAndStop of veksFaulty test\nseen\n");
}

TEST_F(KrFaults, FaultWithinAMessageOfAParameterLosesNeitherItsLineNorTheValues) {
    struct Within : krDefault<int> {
        Within() : krDefault<int>(3, "n") {}
        int validItem(const krString& /*text*/) override {
            g_ostrm << TRACE << "hidden\n" << INFO;
            if (bad) {
                throw krException(krString("bad n"));
            }
            nullWrite();
            return 0;
        }
        bool bad = false;
    } parm;
    ConsoleCapture console;
    const int open = g_ostrm.openMessages();
    parm.fromIStream(g_istrm);
    parm.bad = true;
    parm.fromIStream(g_istrm);
    EXPECT_EQ(g_ostrm.openMessages(), open);
    EXPECT_EQ(console.text(), "---VEK. Signal: Illegal storage access.\n n = 3\n-bad n\n n = 3\n");
}

TEST_F(KrFaults, TraceForgetsThePhasesOfAFault) {
    const int before = g_trace.size();
    for (int i = 0; i < 3; ++i) {
        faultText(nullWrite);
    }
    EXPECT_EQ(g_trace.size(), before);
}

TEST_F(KrFaults, BadParameterTextIsToldAndNotAskedAgain) {
    krIterator<int> parm("size");
    parm.setList({7});
    g_istrm.dataList().set("size", "abc");
    ConsoleCapture console;
    parm.fromIStream(g_istrm);
    const std::string text = console.text();
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(text[0], '-');
    EXPECT_EQ(text.back(), '\n');
    EXPECT_TRUE(parm.firstValue());
    EXPECT_EQ(parm.value(), 7);
}

TEST(KrFaultMarkScope, OuterMarkComesBack) {
    EXPECT_EQ(tsSignal::m_armed, 0);
    {
        const krFaultMark outer;
        EXPECT_EQ(tsSignal::m_armed, 1);
        { const krFaultMark inner; }
        EXPECT_EQ(tsSignal::m_armed, 1);
    }
    EXPECT_EQ(tsSignal::m_armed, 0);
}

TEST(KrFaultMarkDeathTest, FaultOutsideEveryMarkEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(nullWrite(), testing::KilledBySignal(SIGSEGV), "");
}

} // namespace
