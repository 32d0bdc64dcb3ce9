// The grids of the general signal kernels: every test's lines, first and last, and that each call succeeds on the
// suite's data without leaving memory behind.
#include "krlib.h"
#include "machinememory.h"
#include "suite_data.h"
#include "suite_grid.h"
#include "vkc.h"

#include <tuple>

namespace {

const GridCase gridCases[] = {
    {"veksAutoCorr_NormE_NR_16s", 18, "40,4,-,-,-,-", "240,12,-,-,-,-", "p_autocorr", false, 2880},
    {"veksAutoCorr_NormE_16s32s", 18, "40,4,-,-,-,-", "240,12,-,-,-,-", "p_autocorr", false, 2880},
    {"veksAutoCorr_16s32s", 6, "9,5,-,-,-,-", "160,9,-,-,-,-", "p_autocorr", false, 1440},
    {"veksAutoScale_16s_I", 3, "60,-,-,-,-,-", "385,-,-,-,-,-", "p_autoscale", true, 385},
    {"veksAutoScale_16s", 3, "40,-,-,-,-,-", "80,-,-,-,-,-", "p_autoscale", true, 80},
    {"veksConvPartial_16s32s", 4, "10,-,-,-,-,-", "40,-,-,-,-,-", "p_conv", false, 40},
    {"veksConvPartial_16s_Sfs", 2, "40,-,-,-,-,0", "40,-,-,-,-,12", "p_conv", false, 40},
    {"veksCrossCorr_16s32s_Sfs", 16, "40,-,-,-,-,0", "100,-,-,-,-,-1", "p_corr", false, 10000},
    {"veksCrossCorr_NR_16s", 18, "40,4,-,-,-,-", "240,12,-,-,-,-", "p_corr", false, 2880},
    {"veksCrossCorr_NormM_16s", 2, "40,-,-,-,-,-", "80,-,-,-,-,-", "p_corr", false, 6400},
    {"veksAutoCorr_NormE_G723_16s", 1, "10,-,-,-,-,-", "10,-,-,-,-,-", "p_corr2", false, 10},
    {"veksDCTInv_G7221_16s", 2, "320,-,-,-,-,-", "640,-,-,-,-,-", "p_dct", false, 640},
    {"veksDCTInv_G722_16s", 1, "320,-,-,-,-,-", "320,-,-,-,-,-", "p_dct", false, 320},
    {"veksDCTFwd_G7221_16s", 2, "320,-,-,-,-,-", "640,-,-,-,-,-", "p_dct", false, 640},
    {"veksDCTFwd_G722_16s", 1, "320,-,-,-,-,-", "320,-,-,-,-,-", "p_dct", false, 320},
    {"veksDecomposeDCTToMLT_G7221_16s", 2, "320,-,-,-,-,-", "640,-,-,-,-,-", "p_dct2mlt", false, 640},
    {"veksDecomposeDCTToMLT_G722_16s", 1, "320,-,-,-,-,-", "320,-,-,-,-,-", "p_dct2mlt", false, 320},
    {"veksDotProdAutoScale_16s32s_Sfs", 5, "12,-,-,-,-,-", "80,-,-,-,-,-", "p_dotprod", false, 80},
    {"veksDotProd_G729A_32f", 5, "12,-,-,-,-,-", "80,-,-,-,-,-", "p_dotprod", false, 80},
    {"veksDotProd_G729A_16s32s", 2, "80,-,-,-,-,-", "223,-,-,-,-,-", "p_dotprod", false, 223},
    {"veksFFTFwd_RToPerm_GSMAMR_16s_I", 1, "128,-,-,-,-,-", "128,-,-,-,-,-", "p_fft", true, 128},
    {"veksHarmonicFilter_NR_16s", 8, "15,-,-,-,-,-", "50,-,-,-,-,-", "p_filt", false, 50},
    {"veksHarmonicFilter_32f_I", 8, "15,-,-,-,-,-", "50,-,-,-,-,-", "p_filt", true, 50},
    {"veksHarmonicFilter_16s_I", 8, "15,-,-,-,-,-", "50,-,-,-,-,-", "p_filt", true, 50},
    {"veksResidualFilter_G729_16s", 3, "40,-,-,-,-,-", "60,-,-,-,-,-", "p_filt", false, 60},
    {"veksSynthesisFilter_NR_16s_ISfs", 6, "40,0,-,-,-,12", "60,1,-,-,-,12", "p_filt", false, 60},
    {"veksSynthesisFilterZeroStateResponse_NR_16s", 6, "40,12,-,-,-,-", "60,13,-,-,-,-", "p_filt", false, 60},
    {"veksSynthesisFilter_NR_16s_Sfs", 6, "40,0,-,-,-,12", "60,1,-,-,-,12", "p_filt", false, 60},
    {"veksSynthesisFilterLow_NR_16s_ISfs", 6, "40,0,-,-,-,12", "60,1,-,-,-,12", "p_filt", false, 60},
    {"veksHighPassFilter_G729_16s_ISfs", 3, "40,-,-,-,-,13", "60,-,-,-,-,13", "p_filt", true, 60},
    {"veksIIR16sLow_G729_16s", 1, "50,-,-,-,-,-", "50,-,-,-,-,-", "p_iir", false, 50},
    {"veksIIR16s_G729_16s", 1, "50,-,-,-,-,-", "50,-,-,-,-,-", "p_iir", false, 50},
    {"veksIIR16s_G723_16s_I", 1, "61,-,-,-,-,-", "61,-,-,-,-,-", "p_iir2", true, 61},
    {"veksIIR16s_G723_32s16s_Sfs", 1, "61,-,-,-,-,-", "61,-,-,-,-,-", "p_iir2", false, 61},
    {"veksIIR16s_G723_16s32s", 1, "61,-,-,-,-,-", "61,-,-,-,-,-", "p_iir2", false, 61},
    {"veksInvSqrt_32s_I", 6, "40,-,-,-,-,-", "240,-,-,-,-,-", "p_math", true, 240},
    {"veksInterpolateC_NR_G729_16s_Sfs", 24, "11,-,-,-,-,0", "223,-,-,-,-,15", "p_math", false, 223},
    {"veksInterpolateC_G729_32f", 6, "40,-,-,-,-,-", "240,-,-,-,-,-", "p_math", false, 240},
    {"veksInterpolateC_G729_16s_Sfs", 18, "40,-,-,-,-,0", "240,-,-,-,-,15", "p_math", false, 240},
    {"veksInterpolate_G729_16s", 5, "8,-,-,-,-,-", "64,-,-,-,-,-", "p_math", false, 64},
    {"veksLagWindow_G729_32s_I", 3, "2,-,-,-,-,-", "10,-,-,-,-,-", "p_math", true, 10},
    {"veksMulC_NR_16s_ISfs", 18, "40,-,-,-,-,0", "240,-,-,-,-,15", "p_math", true, 240},
    {"veksMul_NR_16s_ISfs", 18, "40,-,-,-,-,0", "240,-,-,-,-,15", "p_math", true, 240},
    {"veksMulC_NR_16s_Sfs", 18, "40,-,-,-,-,0", "240,-,-,-,-,15", "p_math", false, 240},
    {"veksMul_NR_16s_Sfs", 18, "40,-,-,-,-,0", "240,-,-,-,-,15", "p_math", false, 240},
    {"veksMulPowerC_NR_16s_Sfs", 18, "9,-,-,-,-,0", "128,-,-,-,-,15", "p_math", false, 128},
    {"veksFilteredExcitation_G729_32f", 11, "80,-,-,-,-,-", "90,-,-,-,-,-", "p_mathfp", false, 90},
    {"veksDecomposeMLTToDCT_G7221_16s", 2, "320,-,-,-,-,-", "640,-,-,-,-,-", "p_mlttodct", false, 640},
    {"veksDecomposeMLTToDCT_G722_16s", 1, "320,-,-,-,-,-", "320,-,-,-,-,-", "p_mlttodct", false, 320},
};

} // namespace

SUITE_GRIDS(CommonSuites, gridCases)

// Whether a test stands in one of the source files of this table.
static bool isOfCommonSuites(const krTest& test) {
    for (const GridCase& entry : gridCases) {
        if (test.m_srcName == entry.source) {
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

TEST(CommonSuiteNames, StandInTheColumnsOfTheirValues) {
    EXPECT_EQ(nameRow("veksAutoCorr_16s32s", 0, 9), "veksAutoCorr,16s32s,-,lenght,lenght Dst,-,-,-,-,parmNames");
    EXPECT_EQ(nameRow("veksSynthesisFilter_NR_16s_ISfs", 0, 9),
              "veksSynthesisFilter_NR,16s,ISfs,lenght,i_mem,-,-,-,scaleFactor,parmNames");
    EXPECT_EQ(nameRow("veksSynthesisFilterZeroStateResponse_NR_16s", 0, 9),
              "veksSynthesisFilterZeroStateResponse_NR,16s,-,lenght,scaleFactor,-,-,-,-,parmNames");
    EXPECT_EQ(nameRow("veksInterpolate_G729_16s", 0, 9), "veksInterpolate_G729,16s,-,length,-,-,-,-,-,parmNames");
    EXPECT_EQ(nameRow("veksDCTFwd_G722_16s", 0, 9), "veksDCTFwd_G722,16s,-,Lenght,-,-,-,-,-,parmNames");
    EXPECT_EQ(nameRow("veksMulPowerC_NR_16s_Sfs", 0, 9),
              "veksMulPowerC_NR,16s,Sfs,length,-,-,-,-,scaleFactor,parmNames");
}

TEST(CommonSuiteData, TheMemoryOfTheFiltersIsZeroOnEachLine) {
    for (const int row : {0, 1}) {
        SuiteLine line("veksSynthesisFilter_NR_16s_Sfs", row);
        ASSERT_TRUE(line.ready());
        EXPECT_EQ(line.values(3), std::vector<double>(40, 0));
    }
}

// The pointer of the call moves with the length, and a subframe follows it.
TEST(CommonSuiteData, TheResidualFilterHasItsLengthBeforeTheSubframe) {
    for (const auto& [row, length] : {std::pair{0, 40}, {1, 50}, {2, 60}}) {
        SuiteLine line("veksResidualFilter_G729_16s", row);
        ASSERT_TRUE(line.ready());
        EXPECT_EQ(line.lengths()[1], 2 * length);
        EXPECT_EQ(line.call(), 0);
    }
    SuiteLine shorter("veksResidualFilter_G729_16s", 0, {"lenght=3"});
    ASSERT_TRUE(shorter.ready());
    EXPECT_EQ(shorter.call(), 0);
}

TEST(CommonSuiteUser, ValuesReplaceTheGrid) {
    EXPECT_EQ(runOnce("veksConvPartial_16s32s", {"lenght=20; 40; +20"}).columns(3, 3),
              (std::vector<std::string>{"20", "40"}));
}

TEST(CommonSuiteUser, ListThatIsNotAdmissibleLeavesTheGrid) {
    EXPECT_EQ(runOnce("veksInterpolateC_NR_G729_16s_Sfs", {"lenght=11; 12"}).lines.size(), 24U);
}

TEST(CommonSuiteUser, SizeThatTheLibraryRefusesEndsTheTestAsFunctionError) {
    const SuiteRun run = runOnce("veksLagWindow_G729_32s_I", {"lenght=11"});
    EXPECT_EQ(run.result, krFuncFail);
    EXPECT_TRUE(run.lines.empty());
}

TEST(CommonSuiteRows, FitIfTheMachinesMemoryHoldsTheirProduct) {
    const MachineMemory machine([] { return 1000LL; });
    EXPECT_TRUE(vkcFits(20, 20));
    EXPECT_FALSE(vkcFits(40, 40));
}

TEST(CommonSuiteEnvironment, IsTheLibrarys) {
    const auto former = std::tuple(vek_GetCpuType, vek_GetNumCoresOnDie, vek_GetMaxCacheSizeB, vek_GetStatusString,
                                   vek_Init, vek_InitCpu, vek_SetNumThreads);
    auto now = std::tie(vek_GetCpuType, vek_GetNumCoresOnDie, vek_GetMaxCacheSizeB, vek_GetStatusString, vek_Init,
                        vek_InitCpu, vek_SetNumThreads);
    now = decltype(former)();
    vkSetVekEnvironment();
    const auto given = decltype(former)(now);
    now = former;
    ASSERT_TRUE(std::apply([](auto*... function) { return (function && ...); }, given));
    const auto& [cpuType, cores, cacheSize, statusString, start, startFor, setThreads] = given;
    int size = 0;
    int sizeOfLibrary = 0;
    EXPECT_EQ(vekGetMaxCacheSizeB(&sizeOfLibrary), cacheSize(&size));
    EXPECT_EQ(sizeOfLibrary, size);
    EXPECT_EQ(vekGetCpuType(), cpuType());
    EXPECT_EQ(vekGetNumCoresOnDie(), cores());
    EXPECT_STREQ(vekGetStatusString(vekStsSizeErr), statusString(vekStsSizeErr));
}

TEST(CommonSuiteUser, StepBeyondItsLimitIsAnEmptyGrid) {
    EXPECT_EQ(runOnce("veksConvPartial_16s32s", {"lenght=0"}).result, krDataFail);
}
