// Fault containment: real crashes inside tests, and the exception type.
#include "harness_state.h"
#include "krexcept.h"
#include "kriterator.h"
#include "streamcapture.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
// The jump out of a fault leaves the text objects of the interrupted functions behind.
using NoLeakCheck = __lsan::ScopedDisabler;
#else
struct NoLeakCheck {};
#endif

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

TEST_F(KrFaults, FaultClosesThePriorityBracketAndSetsTheWords) {
    krTool::m_priority = 2;
    faultText(nullWrite);
    EXPECT_EQ(kr_get_cw_fpu() & 0xF3F, 0x23BU);
    EXPECT_EQ(kr_get_ssx() & 0xFFBF, 0x9F80U);
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
