// Floating-point status guard: words, their texts, and what a line leaves behind.
#include "harness_state.h"
#include "streamcapture.h"

#include <gtest/gtest.h>

namespace {

// x87 division by zero with the exception masked.
void divideByZero87() {
    kr_set_cw_fpu(0x3F, 0x3F);
    __asm__ volatile("fld1\n\tfldz\n\tfdivrp\n\tfstp %%st(0)" : : : "st", "st(1)");
}

TEST(KrWords87, StatusTexts) {
    const ts87Base base;
    EXPECT_STREQ(base.strSW(0).c_str(), "Ok");
    EXPECT_STREQ(base.strSW(0x40).c_str(), "Ok");
    EXPECT_STREQ(base.strSW(0x3F).c_str(), "?Invalid ?Denormal ?Zerodivide ?Overflow ?Underflow _Inexact ");
    EXPECT_STREQ(base.strSW(0x24).c_str(), "?Zerodivide _Inexact ");
}

TEST(KrWords87, ControlTexts) {
    const ts87Base base;
    EXPECT_STREQ(base.strCW(0x23B).c_str(), "Near 53 Invalid Denormal Overflow Underflow Inexact ");
    EXPECT_STREQ(base.strCW(0x000).c_str(), "Near 24 ");
    EXPECT_STREQ(base.strCW(0xF04).c_str(), "Zero 64 Zerodivide ");
    EXPECT_STREQ(base.strCW(0xA00).c_str(), "Up 53 ");
    EXPECT_STREQ(base.strCW(0x400).c_str(), "Down 24 ");
    EXPECT_STREQ(base.strCW(0x100).c_str(), "Near ");
}

TEST(KrWordsSSX, StatusAndControlTexts) {
    const tsSSXBase base(true);
    EXPECT_STREQ(base.strExceptionState(0).c_str(), "Ok");
    EXPECT_STREQ(base.strExceptionState(0x3F).c_str(), "?Invalid ?Denormal ?Zerodivide ?Overflow ?Underflow _Inexact ");
    EXPECT_STREQ(base.strCW(0x9F80).c_str(),
                 "Near Invalid Denormal Zerodivide Overflow Underflow Inexact FlushToZero ");
    EXPECT_STREQ(base.strCW(0x6000).c_str(), "Zero NoFlushToZero ");
    EXPECT_STREQ(base.strCW(0x4080).c_str(), "Up Invalid NoFlushToZero ");
    EXPECT_STREQ(base.strCW(0xA000).c_str(), "Down FlushToZero ");
}

TEST(KrWordsSSX, ProcessorWithoutTheExtension) {
    const tsSSXBase base(false);
    EXPECT_STREQ(base.strExceptionState(0x3F).c_str(), "cpu has not SSX extension");
    EXPECT_STREQ(base.strCW(0x9F80).c_str(), "cpu has not SSX extension");
    EXPECT_EQ(base.get(), 0U);
    const unsigned before = kr_get_ssx();
    base.set(0, 0x1F80);
    base.clear();
    base.setDefault();
    EXPECT_EQ(kr_get_ssx(), before);
    krSSX guard(false);
    guard.stop();
    EXPECT_FALSE(guard.badStatus());
}

TEST(KrWords87, DefaultLeavesZeroDivideAlone) {
    const HarnessState state;
    divideByZero87();
    EXPECT_EQ(kr_get_sw_fpu() & 0x3F, 0x4U);
    const ts87Base base;
    kr_set_cw_fpu(0xC00, 0xC00);
    base.setDefault();
    EXPECT_EQ(base.getCW() & 0xF3F, 0x23BU);
    EXPECT_EQ(base.getSW() & 0x3F, 0U);
}

TEST(KrWords87, MaskedSetKeepsTheOtherBits) {
    const HarnessState state;
    const ts87Base base;
    base.setDefault();
    base.disableExceptions();
    EXPECT_EQ(base.getCW() & 0xF3F, 0x23FU);
    base.enableExceptions();
    EXPECT_EQ(base.getCW() & 0xF3F, 0x200U);
    base.disableInexactException();
    EXPECT_EQ(base.getCW() & 0x3F, 0x20U);
    base.set(0xFFFF, 0xC00);
    EXPECT_EQ(base.getCW() & 0xF3F, 0xE20U);
}

TEST(KrWords87, SetClearsTheStatusFirst) {
    const HarnessState state;
    const ts87Base base;
    divideByZero87();
    base.set(0, 0);
    EXPECT_EQ(base.getSW() & 0x3F, 0U);
    // The flags that are up become masks, beside that of the inexact result.
    divideByZero87();
    base.disableInexactException();
    EXPECT_EQ(base.getCW() & 0x3F, 0x24U);
}

TEST(KrWords87, ClearGivesTheStatusFromBefore) {
    const HarnessState state;
    divideByZero87();
    EXPECT_EQ(kr_clear_fpu() & 0x3F, 0x4U);
    EXPECT_EQ(kr_get_sw_fpu() & 0x3F, 0U);
}

TEST(KrWordsSSX, DefaultKeepsDenormalsAreZero) {
    const HarnessState state;
    const tsSSXBase base(true);
    kr_set_ssx(0x0040, 0xFFFF & ~0x1F80U);
    base.setDefault();
    EXPECT_EQ(kr_get_ssx(), 0x9FC0U);
    kr_set_ssx(0x6004, 0xE07F);
    base.setDefault();
    EXPECT_EQ(kr_get_ssx(), 0x9F80U);
}

TEST(KrWordsSSX, ClearTakesTheStatusBitsOnly) {
    const HarnessState state;
    const tsSSXBase base(true);
    base.setDefault();
    kr_set_ssx(0x3F, 0x3F);
    base.clear();
    EXPECT_EQ(base.get(), 0x9F80U);
    base.disableInexactException();
    EXPECT_EQ(base.get(), 0x9F80U);
    base.disableExceptions();
    EXPECT_EQ(base.get(), 0x9F80U);
    base.set(0, 0x1F00);
    base.disableInexactException();
    EXPECT_EQ(base.get(), 0x9080U);
    base.enableExceptions();
    const unsigned enabled = base.get();
    base.disableExceptions();
    EXPECT_EQ(enabled, 0x8000U);
    EXPECT_EQ(base.get(), 0x9F80U);
}

// The sixteen vector registers as a function leaves them that is called with zeros in all of them.
struct Registers {
    explicit Registers(void (*function)()) {
        // The stack is moved below the red zone, and by the alignment that a call wants.
        __asm__ volatile(
            "pxor %%xmm0, %%xmm0\n\tpxor %%xmm1, %%xmm1\n\tpxor %%xmm2, %%xmm2\n\t"
            "pxor %%xmm3, %%xmm3\n\tpxor %%xmm4, %%xmm4\n\tpxor %%xmm5, %%xmm5\n\t"
            "pxor %%xmm6, %%xmm6\n\tpxor %%xmm7, %%xmm7\n\tpxor %%xmm8, %%xmm8\n\t"
            "pxor %%xmm9, %%xmm9\n\tpxor %%xmm10, %%xmm10\n\tpxor %%xmm11, %%xmm11\n\t"
            "pxor %%xmm12, %%xmm12\n\tpxor %%xmm13, %%xmm13\n\tpxor %%xmm14, %%xmm14\n\t"
            "pxor %%xmm15, %%xmm15\n\t"
            "movq %%rsp, %%rbx\n\tsubq $256, %%rsp\n\tandq $-16, %%rsp\n\tcall *%0\n\tmovq %%rbx, %%rsp\n\t"
            "movdqu %%xmm0, (%1)\n\tmovdqu %%xmm1, 16(%1)\n\tmovdqu %%xmm2, 32(%1)\n\t"
            "movdqu %%xmm3, 48(%1)\n\tmovdqu %%xmm4, 64(%1)\n\tmovdqu %%xmm5, 80(%1)\n\t"
            "movdqu %%xmm6, 96(%1)\n\tmovdqu %%xmm7, 112(%1)\n\tmovdqu %%xmm8, 128(%1)\n\t"
            "movdqu %%xmm9, 144(%1)\n\tmovdqu %%xmm10, 160(%1)\n\tmovdqu %%xmm11, 176(%1)\n\t"
            "movdqu %%xmm12, 192(%1)\n\tmovdqu %%xmm13, 208(%1)\n\tmovdqu %%xmm14, 224(%1)\n\t"
            "movdqu %%xmm15, 240(%1)"
            :
            : "r"(function), "r"(m_bytes)
            : "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7", "xmm8", "xmm9", "xmm10", "xmm11", "xmm12",
              "xmm13", "xmm14", "xmm15", "rax", "rbx", "rcx", "rdx", "rsi", "rdi", "r8", "r9", "r10", "r11", "memory",
              "cc");
    }
    bool isFull(int number) const {
        return std::all_of(m_bytes[number], m_bytes[number] + 16, [](unsigned char byte) { return byte == 0xFF; });
    }

private:
    unsigned char m_bytes[16][16] = {};
};

TEST(KrWordsSSX, DestroyFillsEveryRegisterWithOnes) {
    const Registers untouched([] {});
    const Registers destroyed(kr_destroy_ssx);
    for (int number = 0; number < 16; ++number) {
        EXPECT_FALSE(untouched.isFull(number));
        EXPECT_TRUE(destroyed.isFull(number)) << number;
    }
}

TEST(KrWordsSSX, EachStepOfTheGuardDestroysTheRegisters) {
    const HarnessState state;
    const struct {
        const char* step;
        void (*function)();
    } steps[] = {{"init", [] { g_ssx.init(); }},     {"start", [] { g_ssx.start(); }},
                 {"clear", [] { g_ssx.clear(); }},   {"line", krTest::initCtrlStatus},
                 {"measurement", krTool::ctrlStart}, {"end", krTest::clearCtrlStatus}};
    for (const auto& row : steps) {
        const Registers after(row.function);
        for (int number = 0; number < 16; ++number) {
            EXPECT_TRUE(after.isFull(number)) << row.step << " " << number;
        }
    }
}

class KrGuard : public testing::Test {
protected:
    KrGuard() : test(krFuncOld(nullptr), "n", "f", "T") { krTest::initCtrlStatus(); }
    krResult leave(unsigned bits) {
        krTool::ctrlStart();
        kr_set_ssx(bits, 0x3F);
        krTool::ctrlStop();
        ConsoleCapture console;
        const krResult result = test.checkCtrlStatus();
        text = console.text();
        return result;
    }
    // What the harness remembers of the units.
    static void expectNoWords() {
        EXPECT_EQ(g_ctrl87.getCW(), 0U);
        EXPECT_EQ(g_ctrl87.getSW(), 0U);
        EXPECT_EQ(g_ssx.get(), 0U);
    }
    HarnessState state;
    krTest test;
    std::string text;
};

TEST_F(KrGuard, InexactAloneIsGood) {
    EXPECT_EQ(leave(0x20), krUndefined);
    EXPECT_EQ(text, "");
    EXPECT_FALSE(test.m_badSSX);
}

TEST_F(KrGuard, EachOtherConditionIsBad) {
    const char* words[] = {"?Invalid ", "?Denormal ", "?Zerodivide ", "?Overflow ", "?Underflow "};
    for (int bit = 0; bit < 5; ++bit) {
        EXPECT_EQ(leave(1U << bit), krBadStsWrn);
        EXPECT_EQ(text, std::string("-- Status    SSX: ") + words[bit] + "\n");
        EXPECT_TRUE(test.m_badSSX);
        EXPECT_FALSE(test.m_bad87);
        EXPECT_EQ(kr_get_ssx() & 0x3F, 0U) << "cleared";
    }
}

TEST_F(KrGuard, CheckClearsWhatItFound) {
    leave(0x4);
    ConsoleCapture console;
    EXPECT_EQ(test.checkCtrlStatus(), krUndefined);
    EXPECT_TRUE(test.m_badSSX) << "the mark of the test stays";
}

TEST_F(KrGuard, MeasurementsOfALineAccumulate) {
    krTool::ctrlStart();
    kr_set_ssx(0x8, 0x3F);
    krTool::ctrlStop();
    kr_set_ssx(0, 0x3F);
    krTool::ctrlStart();
    krTool::ctrlStop();
    bool bad87 = true;
    bool badSSX = false;
    EXPECT_TRUE(krTest::badCtrlStatus(bad87, badSSX));
    EXPECT_FALSE(bad87);
    EXPECT_TRUE(badSSX);
    EXPECT_EQ(g_ssx.get(), 0x9F88U);
    EXPECT_STREQ(g_ssx.strExceptionState().c_str(), "?Overflow ");
    EXPECT_EQ(g_ctrl87.getCW() & 0xF3F, 0x23BU);
}

TEST_F(KrGuard, X87WordsOfALineAccumulate) {
    krTool::ctrlStart();
    divideByZero87();
    kr_set_cw_fpu(0x400, 0xC00);
    krTool::ctrlStop();
    kr_set_cw_fpu(0, 0xC00);
    krTool::ctrlStart();
    krTool::ctrlStop();
    bool bad87 = false;
    bool badSSX = true;
    EXPECT_TRUE(krTest::badCtrlStatus(bad87, badSSX));
    EXPECT_TRUE(bad87);
    EXPECT_FALSE(badSSX);
    EXPECT_EQ(g_ctrl87.getCW() & 0xC00, 0x400U);
}

// Words of both units that differ from what a line starts with, taken down by the guard.
void leaveWords() {
    krTool::ctrlStart();
    divideByZero87();
    kr_set_cw_fpu(0x400, 0xC00);
    kr_set_ssx(0x6004, 0x603F);
    krTool::ctrlStop();
    EXPECT_EQ(g_ctrl87.getCW() & 0xF3F, 0x63FU);
    EXPECT_EQ(g_ctrl87.getSW() & 0x3F, 0x4U);
    EXPECT_EQ(g_ssx.get() & 0xE03F, 0xE004U);
}

// What the units hold: no exception of the x87, and under the mask these bits of the SSE word.
void expectUnits(unsigned control87, unsigned mask, unsigned sse) {
    EXPECT_EQ(kr_get_cw_fpu() & 0xF3F, control87);
    EXPECT_EQ(kr_get_sw_fpu() & 0x3F, 0U);
    EXPECT_EQ(kr_get_ssx() & mask, sse);
}

TEST_F(KrGuard, InitForgetsTheWordsAndSetsTheUnits) {
    leaveWords();
    krTest::initCtrlStatus();
    expectNoWords();
    expectUnits(0x23B, 0xFFBF, 0x9F80);
}

TEST_F(KrGuard, ClearForgetsTheWordsAndLeavesTheControlOfTheUnits) {
    leaveWords();
    krTest::clearCtrlStatus();
    expectNoWords();
    expectUnits(0x63F, 0xE03F, 0xE000);
}

TEST_F(KrGuard, CheckOfAGoodStatusClearsToo) {
    krTool::ctrlStart();
    kr_set_ssx(0x20, 0x3F);
    krTool::ctrlStop();
    EXPECT_EQ(test.checkCtrlStatus(), krUndefined);
    EXPECT_EQ(g_ctrl87.getCW(), 0U);
    EXPECT_EQ(g_ssx.get(), 0U);
    EXPECT_EQ(kr_get_ssx() & 0x3F, 0U);
}

// Directly, as the system empties the stack by itself before it calls a handler.
TEST_F(KrGuard, RestoringTheWordsEmptiesTheStackOfTheX87) {
    __asm__ volatile("fld1\n\tfld1\n\tfld1\n\tfld1\n\tfld1\n\tfld1\n\tfld1\n\tfld1");
    krRestoreCtrlWords();
    unsigned environment[7] = {};
    __asm__ volatile("fnstenv %0\n\tfldenv %0" : "=m"(environment));
    EXPECT_EQ(environment[2] & 0xFFFF, 0xFFFFU) << "two bits a register, 3 where it is empty";
    EXPECT_EQ(environment[0] & 0xF3F, 0x23BU);
}

TEST_F(KrGuard, TextsAreThoseOfTheWordsTakenDown) {
    leaveWords();
    EXPECT_STREQ(g_ctrl87.strCW().c_str(), "Down 53 Invalid Denormal Zerodivide Overflow Underflow Inexact ");
    EXPECT_STREQ(g_ctrl87.strSW().c_str(), "?Zerodivide ");
    EXPECT_STREQ(g_ssx.strCW().c_str(), "Zero Invalid Denormal Zerodivide Overflow Underflow Inexact FlushToZero ");
    EXPECT_STREQ(g_ssx.strExceptionState().c_str(), "?Zerodivide ");
}

TEST_F(KrGuard, X87StatusIsTold) {
    krTool::ctrlStart();
    divideByZero87();
    krTool::ctrlStop();
    ConsoleCapture console;
    EXPECT_EQ(test.checkCtrlStatus(), krBadStsWrn);
    EXPECT_EQ(console.text(), "-- Status    87: ?Zerodivide \n");
    EXPECT_TRUE(test.m_bad87);
    EXPECT_FALSE(test.m_badSSX);
}

TEST_F(KrGuard, StartOfAMeasurementClearsX87Only) {
    divideByZero87();
    kr_set_ssx(0x4, 0x3F);
    krTool::ctrlStart();
    EXPECT_EQ(kr_get_sw_fpu() & 0x3F, 0U);
    EXPECT_EQ(kr_get_ssx() & 0x3F, 0x4U);
}

TEST_F(KrGuard, StatusIsToldAtWarningLevel) {
    krTool::ctrlStart();
    kr_set_ssx(0x4, 0x3F);
    krTool::ctrlStop();
    ConsoleCapture console(ERR);
    EXPECT_EQ(test.checkCtrlStatus(), krBadStsWrn);
    EXPECT_EQ(console.text(), "");
}

} // namespace
