// The grids of the filter, conversion, quantiser and voice activity suites of AMR-WB: every test's lines, first and
// last, and that each call succeeds on the suite's data without leaving memory behind.
#include "suite_grid.h"

namespace {

const GridCase gridCases[] = {
    {"veksConvPartial_NR_16s", 8, "32,-,-,-,-,-", "256,-,-,-,-,-", "p_filtwb", false, 65536},
    {"veksResidualFilter_Low_16s_Sfs", 49, "8,64,-,-,-,10", "40,256,-,-,-,10", "p_filtwb", false, 10240},
    {"veksResidualFilter_AMRWB_16s_Sfs", 49, "8,64,-,-,-,10", "40,256,-,-,-,10", "p_filtwb", false, 10240},
    {"veksPreemphasize_AMRWB_16s_ISfs", 8, "32,-,-,-,-,-", "256,-,-,-,-,-", "p_fltwb", false, 256},
    {"veksDeemphasize_AMRWB_32s16s", 8, "32,-,-,-,-,-", "256,-,-,-,-,-", "p_fltwb", false, 256},
    {"veksDeemphasize_AMRWB_NR_16s_I", 8, "32,-,-,-,-,-", "256,-,-,-,-,-", "p_fltwb", false, 256},
    {"veksSynthesisFilter_AMRWB_16s32s_I", 12, "32,8,-,-,-,-", "128,24,-,-,-,-", "p_fltwb", false, 3072},
    {"veksDeemphasize_AMRWBE_NR_16s_I", 24, "13,32,-,-,-,-", "15,256,-,-,-,-", "p_fltwb", false, 256},
    {"veksSynthesisFilter_AMRWBE_16s32s_I", 4, "32,10,-,-,-,-", "128,10,-,-,-,-", "p_fltwb", false, 1280},
    {"veksAdaptiveCodebookGainCoeff_AMRWB_16s", 4, "32,-,-,-,-,-", "128,-,-,-,-,-", "p_lpcnvwb", false, 128},
    {"veksISPToISF_Norm_AMRWB_16s", 1, "16,-,-,-,-,-", "16,-,-,-,-,-", "p_lpcnvwb", false, 16},
    {"veksISPToLPC_AMRWB_16s", 2, "16,-,-,-,-,-", "20,-,-,-,-,-", "p_lpcnvwb", false, 20},
    {"veksISFToISP_AMRWB_16s", 2, "16,-,-,-,-,-", "20,-,-,-,-,-", "p_lpcnvwb", false, 20},
    {"veksLPCToISP_AMRWB_16s", 1, "17,-,-,-,-,-", "17,-,-,-,-,-", "p_lpcnvwb", false, 17},
    {"veksISFQuantDecode_AMRWB_16s", 4, "BR_6600,0,-,-,-,-", "BR_8850,1,-,-,-,-", "p_qntwb", false, 16},
    {"veksISFQuant_AMRWB_16s", 2, "BR_6600,-,-,-,-,-", "BR_8850,-,-,-,-,-", "p_qntwb", false, 16},
    {"veksISFQuantDecodeDTX_AMRWB_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_qntwb", false, 16},
    {"veksISFQuantDTX_AMRWB_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_qntwb", false, 16},
    {"veksDecDTXBuffer_AMRWB_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_vadwb", false, 256},
    {"veksEncDTXBuffer_AMRWB_16s", 10, "BR_6600,-,-,-,-,-", "BR_DTX,-,-,-,-,-", "p_vadwb", false, 256},
    {"veksVAD_AMRWB_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_vadwb", false, 256},
};

// These have no unit, which the common check asks for.
struct PlainCase {
    const char* function;
    int lines;
    const char* first;
    const char* last;
};
const PlainCase plainCases[] = {
    {"veksHighPassFilter_Direct_AMRWB_16s", 32, "16,0,-,-,-,-", "256,1,-,-,-,-"},
    {"veksHighPassFilter_AMRWB_16s_ISfs", 16, "16,-,-,-,-,14", "256,-,-,-,-,14"},
    {"veksHighPassFilter_AMRWB_16s_Sfs", 16, "16,-,-,-,-,12", "256,-,-,-,-,12"},
};

} // namespace

SUITE_GRIDS(AmrWbFilterSuites, gridCases)

TEST(AmrWbHighPassSuite, WalksALengthOfItsOwnForEachFunctionAndHasNoUnit) {
    for (const PlainCase& expected : plainCases) {
        krTest* test = findTest(expected.function);
        ASSERT_NE(test, nullptr);
        std::vector<std::string> lines;
        expectLines(*test, expected.lines, expected.first, expected.last, lines);
        EXPECT_EQ(test->getUnit(), " ");
        EXPECT_EQ(test->m_srcName, "p_hpfltwb");
    }
    expectNameRows({
        {"veksHighPassFilter_Direct_AMRWB_16s", "lend,valBounds,-,-,-,-"},
        {"veksHighPassFilter_AMRWB_16s_ISfs", "leni,-,-,-,-,scaleFactor"},
        {"veksHighPassFilter_AMRWB_16s_Sfs", "len,-,-,-,-,scaleFactor"},
    });
}

TEST(AmrWbFilterSuiteNames, StandInTheColumnsOfTheirValues) {
    expectNameRows({
        {"veksConvPartial_NR_16s", "len_c,-,-,-,-,-"},
        {"veksResidualFilter_AMRWB_16s_Sfs", "LPCOrder,len,-,-,-,scaleFactor"},
        {"veksDeemphasize_AMRWBE_NR_16s_I", "scale,Lenght,-,-,-,-"},
        {"veksSynthesisFilter_AMRWB_16s32s_I", "Lenght,valLpcOrder,-,-,-,-"},
        {"veksISFQuantDecode_AMRWB_16s", "BitRate,Bfi,-,-,-,-"},
        {"veksEncDTXBuffer_AMRWB_16s", "BitRate,-,-,-,-,-"},
        {"veksISPToLPC_AMRWB_16s", "len,-,-,-,-,-"},
    });
}

TEST(AmrWbResidualSuite, WalksSevenOrdersUnderTheTitleLPCOrder) {
    const auto lines = runOnce("veksResidualFilter_AMRWB_16s_Sfs").columns(3, 3);
    const char* const orders[] = {"8", "10", "16", "22", "28", "34", "40"};
    EXPECT_EQ(nameRow("veksResidualFilter_AMRWB_16s_Sfs"), "LPCOrder,len,-,-,-,scaleFactor");
    EXPECT_EQ(nameRow("veksResidualFilter_Low_16s_Sfs"), "LPCOrder,len,-,-,-,scaleFactor");
    ASSERT_EQ(lines.size(), 49u);
    for (size_t i = 0; i < 49; ++i) {
        EXPECT_EQ(lines[i], orders[i / 7]);
    }
}

TEST(AmrWbNoiseQuantiserSuite, WithoutAnyParameterYieldsOneLine) {
    for (const char* function : {"veksISFQuantDecodeDTX_AMRWB_16s", "veksISFQuantDTX_AMRWB_16s"}) {
        EXPECT_EQ(nameRow(function), "-,-,-,-,-,-");
        EXPECT_EQ(runOnce(function).lines.size(), 1u);
    }
}
