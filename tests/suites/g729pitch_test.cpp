// The grids of the pitch and gain suites of G.729: every test's lines, first and last, and that each call succeeds on
// the suite's data without leaving memory behind.
#include "suite_runner.h"

#include "krbase.h"

#include <gtest/gtest.h>

namespace {

struct GridCase {
    const char* function;
    int lines;
    const char* first;
    const char* last;
    const char* source;
    bool restored;
    double divisor;
};

const GridCase gridCases[] = {
    {"veksGainControl_G729A_16s_I", 1, "40,-,-,-,-,-", "40,-,-,-,-,-", "p_agctrl", true, 40},
    {"veksGainControl_G729_16s_I", 1, "40,-,-,-,-,-", "40,-,-,-,-,-", "p_agctrl", true, 40},
    {"veksAdaptiveCodebookContribution_G729_32f", 1, "40,-,-,-,-,-", "40,-,-,-,-,-", "p_adaptcdbgain", false, 40},
    {"veksAdaptiveCodebookContribution_G729_16s", 1, "40,-,-,-,-,-", "40,-,-,-,-,-", "p_adaptcdbgain", false, 40},
    {"veksOpenLoopPitchSearch_G729_16s", 1, "160,143,1,1,-,-", "160,143,1,1,-,-", "p_pitch", false, 160},
    {"veksOpenLoopPitchSearch_G729A_16s", 1, "160,143,1,1,-,-", "160,143,1,1,-,-", "p_pitch", false, 160},
    {"veksAutoCorrLagMax_Fwd_16s", 5, "40,1,20,40,-,-", "80,1,20,40,-,-", "p_pitch", false, 80},
    {"veksAutoCorrLagMax_Inv_16s", 5, "40,1,20,40,-,-", "80,1,20,40,-,-", "p_pitch", false, 80},
    {"veksDecodeAdaptiveVector_G729_32f_I", 4, "10,-,-,-,-,-", "40,-,-,-,-,-", "p_pitch1", true, 40},
    {"veksDecodeAdaptiveVector_G729_16s", 1, "1,-,-,-,-,-", "1,-,-,-,-,-", "p_pitch1", true, 1},
    {"veksDecodeAdaptiveVector_G729_16s_I", 1, "1,-,-,-,-,-", "1,-,-,-,-,-", "p_pitch1", true, 1},
    {"veksAdaptiveCodebookSearch_G729A_16s", 2, "0,-,-,-,-,-", "1,-,-,-,-,-", "p_adap", true, 40},
    {"veksAdaptiveCodebookSearch_G729_16s", 2, "0,-,-,-,-,-", "1,-,-,-,-,-", "p_adap", true, 40},
    {"veksAdaptiveCodebookGain_G729A_16s", 1, "1,-,-,-,-,-", "1,-,-,-,-,-", "p_adap", false, 40},
    {"veksAdaptiveCodebookGain_G729_16s", 1, "1,-,-,-,-,-", "1,-,-,-,-,-", "p_adap", false, 40},
};

class G729PitchSuites : public testing::TestWithParam<GridCase> {};

TEST_P(G729PitchSuites, WalkTheirGridAndEveryCallSucceeds) {
    const GridCase& expected = GetParam();
    krTest* test = findTest(expected.function);
    ASSERT_NE(test, nullptr);
    krResult result = krUndefined;
    const std::vector<std::string> lines = runOnce(*test, result);
    EXPECT_EQ(result, krOk);
    ASSERT_EQ(static_cast<int>(lines.size()), expected.lines);
    EXPECT_EQ(cells(lines.front(), 3, 8), expected.first);
    EXPECT_EQ(cells(lines.back(), 3, 8), expected.last);
    EXPECT_EQ(cells(lines.front(), 11, 11), "e");
    EXPECT_EQ(test->m_srcName, expected.source);
    EXPECT_EQ(test->m_funcInit != nullptr, expected.restored);
    EXPECT_EQ(test->m_info.m_macro == "VK_REG_I", expected.restored);
    const double perElement = std::atof(cells(lines.back(), 10, 10).c_str());
    EXPECT_NEAR(test->m_tool.m_funcClocks / perElement, expected.divisor, expected.divisor * 0.02);
    EXPECT_EQ(krMallocFirst(nullptr, nullptr), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Grid, G729PitchSuites, testing::ValuesIn(gridCases),
                         [](const testing::TestParamInfo<GridCase>& test) { return std::string(test.param.function); });

// The names of a function's parameters, in the columns of their values.
std::string nameRow(const char* function) {
    krTest* test = findTest(function);
    krSession::m_nameMode = krNameInResults;
    krSession::m_nameExit = true;
    g_ostrm.setOutLevel(ERR);
    const std::vector<std::string> lines = tableLines([&] { test->run(); });
    krSession::m_nameMode = 0;
    krSession::m_nameExit = false;
    return lines.size() == 1 ? cells(lines.front(), 3, 8) : std::string("no single line");
}

TEST(G729PitchSuiteNames, StandInTheColumnsOfTheirValues) {
    EXPECT_EQ(nameRow("veksGainControl_G729_16s_I"), "lenght,-,-,-,-,-");
    EXPECT_EQ(nameRow("veksAdaptiveCodebookContribution_G729_16s"), "Lenght,-,-,-,-,-");
    EXPECT_EQ(nameRow("veksDecodeAdaptiveVector_G729_16s"), "length,-,-,-,-,-");
    EXPECT_EQ(nameRow("veksAutoCorrLagMax_Inv_16s"), "lenght,maxLag,lowerLag,upperLag,-,-");
}

TEST(G729PitchSuiteNames, TheSubframeOfTheOpenLoopSearchHasNoTitleAndDoesNotShow) {
    EXPECT_EQ(nameRow("veksOpenLoopPitchSearch_G729_16s"), "lenght,maxLag,lowerLag,upperLag,-,-");
}

} // namespace
