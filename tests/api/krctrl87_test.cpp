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
}

TEST(KrWordsSSX, DestroyFillsTheRegistersWithOnes) {
    unsigned char first[16] = {};
    unsigned char last[16] = {};
    kr_destroy_ssx();
    __asm__ volatile("pxor %%xmm0, %%xmm0\n\tpxor %%xmm15, %%xmm15\n\tcall *%2\n\t"
                     "movdqu %%xmm0, %0\n\tmovdqu %%xmm15, %1"
                     : "=m"(first), "=m"(last)
                     : "r"(kr_destroy_ssx)
                     : "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7", "xmm8", "xmm9", "xmm10", "xmm11",
                       "xmm12", "xmm13", "xmm14", "xmm15", "rax", "rcx", "rdx", "rsi", "rdi", "r8", "r9", "r10", "r11",
                       "memory", "cc");
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(first[i], 0xFF);
        EXPECT_EQ(last[i], 0xFF);
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
    krTool::ctrlStart();
    krTool::ctrlStop();
    bool bad87 = false;
    bool badSSX = true;
    EXPECT_TRUE(krTest::badCtrlStatus(bad87, badSSX));
    EXPECT_TRUE(bad87);
    EXPECT_FALSE(badSSX);
    EXPECT_EQ(g_ctrl87.getCW() & 0xC00, 0x400U);
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
