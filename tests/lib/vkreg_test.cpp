// The functions that a registration line generates: their calls, clocks and statuses, and the test object.
#include "../api/harness_state.h"
#include "../api/streamcapture.h"
#include "vkreg.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

int s_calls = 0;
int s_inits = 0;
std::string s_order;
std::vector<int> s_statuses;

int libraryCall() {
    s_order += "c";
    const auto i = static_cast<size_t>(s_calls++);
    return i < s_statuses.size() ? s_statuses[i] : 0;
}

void restore() {
    s_order += "i";
    ++s_inits;
}

class TimReg : public prTest {
public:
    using prTest::prTest;
};

VK_REG(TimReg, veksRegPlain_16s, libraryCall())
VK_REG_I(TimReg, veksRegInit_16s_I, libraryCall(), restore())
VK_REG_MODE(TimReg, veksRegMode_16s, libraryCall(), "decimating mode")

// What the registration lines put into the list before any test ran.
const krTest* registered(const char* name) {
    for (const krTest* test : *pTestList) {
        if (test->m_name == name) {
            return test;
        }
    }
    return nullptr;
}

TEST(VkRegistration, TestObjectHoldsTheGeneratedFunctions) {
    EXPECT_TRUE(reg_veksRegPlain_16s);
    const krTest* plain = registered("veksRegPlain_16s");
    ASSERT_NE(plain, nullptr);
    EXPECT_EQ(plain->m_funcCall, tcall_veksRegPlain_16s);
    EXPECT_EQ(plain->m_funcInit, nullptr);
    EXPECT_EQ(plain->m_funcLoop, tim_veksRegPlain_16s_loop);
    EXPECT_EQ(plain->m_funcStat, tim_veksRegPlain_16s_stat);
    EXPECT_STREQ(plain->m_srcName.c_str(), "vkreg_test");
    EXPECT_STREQ(plain->m_info.m_class.c_str(), "TimReg");
    EXPECT_STREQ(plain->m_info.m_mode.c_str(), "");
    EXPECT_STREQ(plain->m_info.m_macro.c_str(), "VK_REG");
}

TEST(VkRegistration, FormWithInitAndFormWithAComment) {
    const krTest* init = registered("veksRegInit_16s_I");
    ASSERT_NE(init, nullptr);
    EXPECT_EQ(init->m_funcInit, tinit_veksRegInit_16s_I);
    EXPECT_STREQ(init->m_info.m_macro.c_str(), "VK_REG_I");
    const krTest* mode = registered("veksRegMode_16s");
    ASSERT_NE(mode, nullptr);
    EXPECT_STREQ(mode->m_info.m_mode.c_str(), "decimating mode");
    EXPECT_STREQ(mode->m_info.m_macro.c_str(), "VK_REG");
}

class VkGenerated : public testing::Test {
protected:
    VkGenerated() : console(ERR | WARN) {
        setVekEnvironment();
        s_calls = 0;
        s_inits = 0;
        s_order = "";
        s_statuses.clear();
    }
    HarnessState state;
    ConsoleCapture console;
    long long clocks = -1;
    int calls = 0;
};

TEST_F(VkGenerated, CallAndInitStandAlone) {
    s_statuses = {-7};
    EXPECT_EQ(tcall_veksRegInit_16s_I(), -7);
    EXPECT_EQ(s_order, "c");
    EXPECT_EQ(tinit_veksRegInit_16s_I(), 0);
    EXPECT_EQ(s_order, "ci");
    EXPECT_EQ(console.text(), "");
}

TEST_F(VkGenerated, LoopOfNoneMakesTheWarmUpOnly) {
    EXPECT_EQ(tim_veksRegPlain_16s_loop(0, &clocks), krOk);
    EXPECT_EQ(s_calls, 1);
    EXPECT_EQ(clocks, 0);
    s_calls = 0;
    s_statuses = {-7};
    EXPECT_EQ(tim_veksRegPlain_16s_loop(0, &clocks), krFuncFail);
    EXPECT_EQ(console.text().find("--VEK ERROR. status = -7 in veksRegPlain_16s: "), 0U);
}

TEST_F(VkGenerated, LoopInitsBeforeEachCall) {
    EXPECT_EQ(tim_veksRegInit_16s_I_loop(3, &clocks), krOk);
    EXPECT_EQ(s_order, "icicicic");
    EXPECT_GT(clocks, 0);
    s_order = "";
    tim_veksRegPlain_16s_loop(2, &clocks);
    EXPECT_EQ(s_order, "ccc");
}

TEST_F(VkGenerated, LoopKeepsTheLastStatusAlone) {
    s_statuses = {0, -7, 3, 0};
    EXPECT_EQ(tim_veksRegPlain_16s_loop(3, &clocks), krOk);
    EXPECT_EQ(s_calls, 4) << "an error does not stop it";
    s_calls = 0;
    s_statuses = {3};
    EXPECT_EQ(tim_veksRegPlain_16s_loop(1, &clocks), krOk);
    s_calls = 0;
    s_statuses = {0, 0, 3};
    EXPECT_EQ(tim_veksRegPlain_16s_loop(2, &clocks), krFuncWrn);
}

TEST_F(VkGenerated, StatisticOfNoneMakesTheWarmUpOnly) {
    clocks = 0;
    EXPECT_EQ(tim_veksRegPlain_16s_stat(&calls, &clocks), krOk);
    EXPECT_EQ(s_calls, 1);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(clocks, 0);
}

TEST_F(VkGenerated, StatisticCountsWithoutTheWarmUp) {
    calls = 4;
    clocks = 0;
    EXPECT_EQ(tim_veksRegInit_16s_I_stat(&calls, &clocks), krOk);
    EXPECT_EQ(calls, 4);
    EXPECT_EQ(s_order, "icicicicic");
    EXPECT_GT(clocks, 0);
}

TEST_F(VkGenerated, StatisticGoesOnUntilTheClocksAreReached) {
    calls = 1;
    clocks = 3000000;
    tim_veksRegPlain_16s_stat(&calls, &clocks);
    EXPECT_GE(clocks, 3000000);
    EXPECT_GT(calls, 1);
    EXPECT_EQ(s_calls, calls + 1);
}

TEST_F(VkGenerated, StatisticKeepsAWarningUntilAnotherComes) {
    calls = 3;
    clocks = 0;
    s_statuses = {3, 0, 0, 0};
    EXPECT_EQ(tim_veksRegPlain_16s_stat(&calls, &clocks), krFuncWrn);
    EXPECT_EQ(console.text().find("--VEK WARNING. status = 3 in veksRegPlain_16s: "), 0U);
    s_calls = 0;
    s_statuses = {3, 0, 5, 0};
    clocks = 0;
    tim_veksRegPlain_16s_stat(&calls, &clocks);
    EXPECT_NE(console.text().find("status = 5 in"), std::string::npos);
}

TEST_F(VkGenerated, StatisticLeavesAtAnError) {
    calls = 10;
    clocks = 0;
    s_statuses = {0, 0, 0, -4};
    EXPECT_EQ(tim_veksRegPlain_16s_stat(&calls, &clocks), krFuncFail);
    EXPECT_EQ(s_calls, 4);
    EXPECT_EQ(calls, 2);
    EXPECT_GT(clocks, 0) << "what was done is still told";
}

TEST(VkRegistrationPath, SourceLosesItsExtension) {
    EXPECT_STREQ(vkSourcePath("../kelvarrig/veksc/src/p_729dphd.cpp").c_str(), "../kelvarrig/veksc/src/p_729dphd");
}

} // namespace
