// The grids of the general signal kernels: every test's lines, first and last, and that each call succeeds on the
// suite's data without leaving memory behind.
#include "suite_runner.h"

#include "krbase.h"

#include <gtest/gtest.h>

namespace {

struct GridCase {
    const char* function;
    int lines;
    const char* first;
    const char* last;
};

const GridCase gridCases[] = {
    {"veksAutoCorr_NormE_NR_16s", 18, "40,4,-,-,-,-", "240,12,-,-,-,-"},
    {"veksAutoCorr_NormE_16s32s", 18, "40,4,-,-,-,-", "240,12,-,-,-,-"},
    {"veksAutoCorr_16s32s", 6, "9,5,-,-,-,-", "160,9,-,-,-,-"},
    {"veksAutoScale_16s_I", 3, "60,-,-,-,-,-", "385,-,-,-,-,-"},
    {"veksAutoScale_16s", 3, "40,-,-,-,-,-", "80,-,-,-,-,-"},
    {"veksConvPartial_16s32s", 4, "10,-,-,-,-,-", "40,-,-,-,-,-"},
    {"veksConvPartial_16s_Sfs", 2, "40,-,-,-,-,0", "40,-,-,-,-,12"},
    {"veksCrossCorr_16s32s_Sfs", 16, "40,-,-,-,-,0", "100,-,-,-,-,-1"},
    {"veksCrossCorr_NR_16s", 18, "40,4,-,-,-,-", "240,12,-,-,-,-"},
    {"veksCrossCorr_NormM_16s", 2, "40,-,-,-,-,-", "80,-,-,-,-,-"},
    {"veksAutoCorr_NormE_G723_16s", 1, "10,-,-,-,-,-", "10,-,-,-,-,-"},
    {"veksDCTInv_G7221_16s", 2, "320,-,-,-,-,-", "640,-,-,-,-,-"},
    {"veksDCTInv_G722_16s", 1, "320,-,-,-,-,-", "320,-,-,-,-,-"},
    {"veksDCTFwd_G7221_16s", 2, "320,-,-,-,-,-", "640,-,-,-,-,-"},
    {"veksDCTFwd_G722_16s", 1, "320,-,-,-,-,-", "320,-,-,-,-,-"},
    {"veksDecomposeDCTToMLT_G7221_16s", 2, "320,-,-,-,-,-", "640,-,-,-,-,-"},
    {"veksDecomposeDCTToMLT_G722_16s", 1, "320,-,-,-,-,-", "320,-,-,-,-,-"},
    {"veksDotProdAutoScale_16s32s_Sfs", 5, "12,-,-,-,-,-", "80,-,-,-,-,-"},
    {"veksDotProd_G729A_32f", 5, "12,-,-,-,-,-", "80,-,-,-,-,-"},
    {"veksDotProd_G729A_16s32s", 2, "80,-,-,-,-,-", "223,-,-,-,-,-"},
    {"veksFFTFwd_RToPerm_GSMAMR_16s_I", 1, "128,-,-,-,-,-", "128,-,-,-,-,-"},
    {"veksHarmonicFilter_NR_16s", 8, "15,-,-,-,-,-", "50,-,-,-,-,-"},
    {"veksHarmonicFilter_32f_I", 8, "15,-,-,-,-,-", "50,-,-,-,-,-"},
    {"veksHarmonicFilter_16s_I", 8, "15,-,-,-,-,-", "50,-,-,-,-,-"},
    {"veksResidualFilter_G729_16s", 1, "40,-,-,-,-,-", "40,-,-,-,-,-"},
    {"veksSynthesisFilter_NR_16s_ISfs", 6, "40,0,-,-,-,12", "60,1,-,-,-,12"},
    {"veksSynthesisFilterZeroStateResponse_NR_16s", 6, "40,12,-,-,-,-", "60,13,-,-,-,-"},
    {"veksSynthesisFilter_NR_16s_Sfs", 6, "40,0,-,-,-,12", "60,1,-,-,-,12"},
    {"veksSynthesisFilterLow_NR_16s_ISfs", 6, "40,0,-,-,-,12", "60,1,-,-,-,12"},
    {"veksHighPassFilter_G729_16s_ISfs", 3, "40,-,-,-,-,13", "60,-,-,-,-,13"},
    {"veksIIR16sLow_G729_16s", 1, "50,-,-,-,-,-", "50,-,-,-,-,-"},
    {"veksIIR16s_G729_16s", 1, "50,-,-,-,-,-", "50,-,-,-,-,-"},
    {"veksIIR16s_G723_16s_I", 1, "61,-,-,-,-,-", "61,-,-,-,-,-"},
    {"veksIIR16s_G723_32s16s_Sfs", 1, "61,-,-,-,-,-", "61,-,-,-,-,-"},
    {"veksIIR16s_G723_16s32s", 1, "61,-,-,-,-,-", "61,-,-,-,-,-"},
    {"veksInvSqrt_32s_I", 6, "40,-,-,-,-,-", "240,-,-,-,-,-"},
    {"veksInterpolateC_NR_G729_16s_Sfs", 24, "11,-,-,-,-,0", "223,-,-,-,-,15"},
    {"veksInterpolateC_G729_32f", 6, "40,-,-,-,-,-", "240,-,-,-,-,-"},
    {"veksInterpolateC_G729_16s_Sfs", 18, "40,-,-,-,-,0", "240,-,-,-,-,15"},
    {"veksInterpolate_G729_16s", 5, "8,-,-,-,-,-", "64,-,-,-,-,-"},
    {"veksLagWindow_G729_32s_I", 3, "2,-,-,-,-,-", "10,-,-,-,-,-"},
    {"veksMulC_NR_16s_ISfs", 18, "40,-,-,-,-,0", "240,-,-,-,-,15"},
    {"veksMul_NR_16s_ISfs", 18, "40,-,-,-,-,0", "240,-,-,-,-,15"},
    {"veksMulC_NR_16s_Sfs", 18, "40,-,-,-,-,0", "240,-,-,-,-,15"},
    {"veksMul_NR_16s_Sfs", 18, "40,-,-,-,-,0", "240,-,-,-,-,15"},
    {"veksMulPowerC_NR_16s_Sfs", 18, "9,-,-,-,-,0", "128,-,-,-,-,15"},
    {"veksFilteredExcitation_G729_32f", 11, "80,-,-,-,-,-", "90,-,-,-,-,-"},
    {"veksDecomposeMLTToDCT_G7221_16s", 2, "320,-,-,-,-,-", "640,-,-,-,-,-"},
    {"veksDecomposeMLTToDCT_G722_16s", 1, "320,-,-,-,-,-", "320,-,-,-,-,-"},
};

class CommonSuites : public testing::TestWithParam<GridCase> {};

} // namespace

TEST_P(CommonSuites, WalkTheirGridAndEveryCallSucceeds) {
    krTest* test = findTest(GetParam().function);
    ASSERT_NE(test, nullptr);
    krResult result = krUndefined;
    const std::vector<std::string> lines = runOnce(*test, result);
    EXPECT_EQ(result, krOk);
    ASSERT_EQ(static_cast<int>(lines.size()), GetParam().lines);
    EXPECT_EQ(cells(lines.front(), 3, 8), GetParam().first);
    EXPECT_EQ(cells(lines.back(), 3, 8), GetParam().last);
    EXPECT_EQ(cells(lines.front(), 9, 9), "nLps=1");
    EXPECT_EQ(cells(lines.front(), 11, 11), "e");
    EXPECT_EQ(krMallocFirst(nullptr, nullptr), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Grid, CommonSuites, testing::ValuesIn(gridCases),
                         [](const testing::TestParamInfo<GridCase>& test) { return std::string(test.param.function); });

// Whether the test stands in one of the suites of this room; the codec families have rooms of their own.
static bool isOfCommonSuites(const krTest& test) {
    static const char* const sources[] = {"p_autocorr", "p_autoscale", "p_conv",   "p_corr",    "p_corr2", "p_dct",
                                          "p_dct2mlt",  "p_dotprod",   "p_fft",    "p_filt",    "p_iir",   "p_iir2",
                                          "p_math",     "p_math2",     "p_mathfp", "p_mlttodct"};
    for (const char* source : sources) {
        if (test.m_srcName == source) {
            return true;
        }
    }
    return false;
}

TEST(CommonSuiteList, HoldsTheseFunctionsAndNoOther) {
    int count = 0;
    for (const krTest* test : *pTestList) {
        if (!isOfCommonSuites(*test)) {
            continue;
        }
        ++count;
        bool listed = false;
        for (const GridCase& entry : gridCases) {
            listed = listed || test->m_name == entry.function;
        }
        EXPECT_TRUE(listed) << test->m_name.c_str();
    }
    EXPECT_EQ(count, 49);
}

TEST(CommonSuiteList, ElevenFunctionsRestoreTheirInput) {
    int restored = 0;
    for (const krTest* test : *pTestList) {
        if (!isOfCommonSuites(*test)) {
            continue;
        }
        EXPECT_EQ(test->m_info.m_macro == "VK_REG_I", test->m_funcInit != nullptr);
        restored += test->m_funcInit != nullptr ? 1 : 0;
    }
    EXPECT_EQ(restored, 11);
}

TEST(CommonSuiteList, SourceNamesHaveNoPathAndNoExtension) {
    EXPECT_EQ(findTest("veksDotProd_G729A_32f")->m_srcName, "p_dotprod");
    EXPECT_EQ(findTest("veksMulPowerC_NR_16s_Sfs")->m_srcName, "p_math");
    EXPECT_EQ(findTest("veksMulPowerC_NR_16s_Sfs")->m_info.m_class, "krMulPowerC");
}

// The name row of a function: its parameter columns behind the three of the function.
static std::string nameRow(const char* function) {
    krTest* test = findTest(function);
    krSession::m_nameMode = krNameInResults;
    krSession::m_nameExit = true;
    g_ostrm.setOutLevel(ERR);
    const std::vector<std::string> lines = tableLines([&] { test->run(); });
    krSession::m_nameMode = 0;
    krSession::m_nameExit = false;
    return lines.size() == 1 ? cells(lines.front(), 0, 9) : std::string("no single line");
}

TEST(CommonSuiteNames, StandInTheColumnsOfTheirValues) {
    EXPECT_EQ(nameRow("veksAutoCorr_16s32s"), "veksAutoCorr,16s32s,-,lenght,lenght Dst,-,-,-,-,parmNames");
    EXPECT_EQ(nameRow("veksSynthesisFilter_NR_16s_ISfs"),
              "veksSynthesisFilter_NR,16s,ISfs,lenght,i_mem,-,-,-,scaleFactor,parmNames");
    EXPECT_EQ(nameRow("veksSynthesisFilterZeroStateResponse_NR_16s"),
              "veksSynthesisFilterZeroStateResponse_NR,16s,-,lenght,scaleFactor,-,-,-,-,parmNames");
    EXPECT_EQ(nameRow("veksInterpolate_G729_16s"), "veksInterpolate_G729,16s,-,length,-,-,-,-,-,parmNames");
    EXPECT_EQ(nameRow("veksDCTFwd_G722_16s"), "veksDCTFwd_G722,16s,-,Lenght,-,-,-,-,-,parmNames");
    EXPECT_EQ(nameRow("veksMulPowerC_NR_16s_Sfs"), "veksMulPowerC_NR,16s,Sfs,length,-,-,-,-,scaleFactor,parmNames");
}

// The divisor that the last line of a function's grid leaves behind.
static double lastDivisor(const char* function) {
    krResult result = krUndefined;
    krTest* test = findTest(function);
    const std::vector<std::string> lines = runOnce(*test, result);
    const std::string perElement = cells(lines.back(), 10, 10);
    return test->m_tool.m_funcClocks / std::atof(perElement.c_str());
}

TEST(CommonSuiteDivisors, AreTheElementsOfOneCall) {
    EXPECT_NEAR(lastDivisor("veksAutoCorr_16s32s"), 160 * 9, 160 * 9 * 0.01);
    EXPECT_NEAR(lastDivisor("veksCrossCorr_NR_16s"), 240 * 12, 240 * 12 * 0.01);
    EXPECT_NEAR(lastDivisor("veksCrossCorr_NormM_16s"), 80 * 80, 80 * 80 * 0.01);
    EXPECT_NEAR(lastDivisor("veksAutoScale_16s_I"), 385, 4);
    EXPECT_NEAR(lastDivisor("veksResidualFilter_G729_16s"), 40, 1);
    EXPECT_NEAR(lastDivisor("veksMulPowerC_NR_16s_Sfs"), 128, 2);
}

TEST(CommonSuiteUser, ValuesReplaceTheGrid) {
    g_istrm.dataList().set("lenght=20; 40; +20");
    krResult result = krUndefined;
    const std::vector<std::string> lines = runOnce(*findTest("veksConvPartial_16s32s"), result);
    g_istrm.dataList().clear();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(cells(lines[0], 3, 3), "20");
    EXPECT_EQ(cells(lines[1], 3, 3), "40");
}

TEST(CommonSuiteUser, ListThatIsNotAdmissibleLeavesTheGrid) {
    g_istrm.dataList().set("lenght=11; 12");
    krResult result = krUndefined;
    const std::vector<std::string> lines = runOnce(*findTest("veksInterpolateC_NR_G729_16s_Sfs"), result);
    g_istrm.dataList().clear();
    EXPECT_EQ(lines.size(), 24U);
}

TEST(CommonSuiteUser, SizeThatTheLibraryRefusesEndsTheTestAsFunctionError) {
    g_istrm.dataList().set("lenght=11");
    krResult result = krUndefined;
    const std::vector<std::string> lines = runOnce(*findTest("veksLagWindow_G729_32s_I"), result);
    g_istrm.dataList().clear();
    EXPECT_EQ(result, krFuncFail);
    EXPECT_TRUE(lines.empty());
}

TEST(CommonSuiteUser, StepBeyondItsLimitIsAnEmptyGrid) {
    g_istrm.dataList().set("lenght=0");
    krResult result = krUndefined;
    runOnce(*findTest("veksConvPartial_16s32s"), result);
    g_istrm.dataList().clear();
    EXPECT_EQ(result, krDataFail);
}
