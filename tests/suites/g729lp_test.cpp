// The grids of the G.729 suites of linear prediction, phase dispersion and correlation matrix: every test's lines,
// first and last, and that each call succeeds on the suite's data without leaving memory behind.
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
    {"veksPhaseDispersion_G729D_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_729dphd", false, 40},
    {"veksToeplizMatrix_G729_32f", 1, "40,616,-,-,-,-", "40,616,-,-,-,-", "p_toeprmatr", false, 616},
    {"veksToeplizMatrix_G729_16s", 1, "40,616,-,-,-,-", "40,616,-,-,-,-", "p_toeprmatr", false, 616},
    {"veksToeplizMatrix_G729_16s32s", 1, "40,616,-,-,-,-", "40,616,-,-,-,-", "p_toeprmatr", false, 616},
    {"veksPreemphasize_32f_I", 5, "40,-,-,-,-,-", "80,-,-,-,-,-", "p_preemph", true, 80},
    {"veksPreemphasize_G729A_16s_I", 5, "40,-,-,-,-,-", "80,-,-,-,-,-", "p_preemph", true, 80},
    {"veksPreemphasize_G729A_16s", 5, "40,-,-,-,-,-", "80,-,-,-,-,-", "p_preemph", false, 80},
    {"veksLSPToLPC_G729_32f", 1, "11,-,-,-,-,-", "11,-,-,-,-,-", "p_lpcnv", false, 11},
    {"veksLPCToLSP_G729A_32f", 1, "11,-,-,-,-,-", "11,-,-,-,-,-", "p_lpcnv", false, 11},
    {"veksLPCToLSP_G729_32f", 1, "11,-,-,-,-,-", "11,-,-,-,-,-", "p_lpcnv", false, 11},
    {"veksLSPToLPC_G729_16s", 1, "11,-,-,-,-,-", "11,-,-,-,-,-", "p_lpcnv", false, 11},
    {"veksLPCToLSP_G729A_16s", 1, "11,-,-,-,-,-", "11,-,-,-,-,-", "p_lpcnv", false, 11},
    {"veksLPCToLSP_GSMAMR_16s", 1, "11,-,-,-,-,-", "11,-,-,-,-,-", "p_lpcnv", false, 11},
    {"veksLPCToLSP_G729_16s", 1, "11,-,-,-,-,-", "11,-,-,-,-,-", "p_lpcnv", false, 11},
    {"veksLSPToLSF_Norm_G729_16s", 1, "11,-,-,-,-,-", "11,-,-,-,-,-", "p_lpcnv", false, 11},
    {"veksLSPToLSF_G729_16s", 1, "11,-,-,-,-,-", "11,-,-,-,-,-", "p_lpcnv", false, 11},
    {"veksLSFToLSP_G729_16s", 1, "11,-,-,-,-,-", "11,-,-,-,-,-", "p_lpcnv", false, 11},
    {"veksLevinsonDurbin_G729_32f", 5, "10,-,-,-,-,-", "30,-,-,-,-,-", "p_lpld", false, 900},
    {"veksLevinsonDurbin_G729_32s16s", 5, "10,-,-,-,-,-", "30,-,-,-,-,-", "p_lpld", false, 900},
    {"veksLevinsonDurbin_G729B", 1, "10,-,-,-,-,-", "10,-,-,-,-,-", "p_lpld", false, 100},
    {"veksLSFDecodeErased_G729_16s", 1, "10,40,-,-,-,-", "10,40,-,-,-,-", "p_lspqnt", false, 10},
    {"veksLSFDecode_G729B_16s", 1, "10,40,-,-,-,-", "10,40,-,-,-,-", "p_lspqnt", false, 10},
    {"veksLSFDecode_G729_16s", 1, "10,40,-,-,-,-", "10,40,-,-,-,-", "p_lspqnt", false, 10},
    {"veksLSFQuant_G729B_16s", 1, "10,40,-,-,-,-", "10,40,-,-,-,-", "p_lspqnt", false, 10},
    {"veksLSFQuant_G729_16s", 1, "10,40,-,-,-,-", "10,40,-,-,-,-", "p_lspqnt", false, 10},
};

class G729LpSuites : public testing::TestWithParam<GridCase> {};

TEST_P(G729LpSuites, WalkTheirGridAndEveryCallSucceeds) {
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

INSTANTIATE_TEST_SUITE_P(Grid, G729LpSuites, testing::ValuesIn(gridCases),
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

TEST(G729LpSuiteNames, StandInTheColumnsOfTheirValues) {
    EXPECT_EQ(nameRow("veksToeplizMatrix_G729_16s"), "Lenght Src,Lenght Dst,-,-,-,-");
    EXPECT_EQ(nameRow("veksLSFQuant_G729_16s"), "lenght,lenght LSFTable,-,-,-,-");
    EXPECT_EQ(nameRow("veksPreemphasize_32f_I"), "lenght,-,-,-,-,-");
}

TEST(G729LpSuiteNames, TheRecursionHasAnOrder) {
    EXPECT_EQ(nameRow("veksLevinsonDurbin_G729B"), "Order,-,-,-,-,-");
}

TEST(G729LpSuiteNames, TheLengthOfPhaseDispersionHasNoTitleAndDoesNotShow) {
    EXPECT_EQ(nameRow("veksPhaseDispersion_G729D_16s"), "-,-,-,-,-,-");
}

} // namespace
