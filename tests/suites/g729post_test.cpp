// The grids of the post filter, Annex E and floating suites of G.729: every test's lines, first and last, and that each
// call succeeds on the suite's data without leaving memory behind.
#include "suite_grid.h"

namespace {

const GridCase gridCases[] = {
    {"veksSynthesisFilter_G729E_16s_I", 6, "10,40,-,-,-,-", "30,80,-,-,-,-", "p_filt729i", false, 80},
    {"veksSynthesisFilter_G729E_16s", 6, "10,40,-,-,-,-", "30,80,-,-,-,-", "p_filt729i", false, 80},
    {"veksResidualFilter_G729E_16s", 6, "10,40,-,-,-,-", "30,80,-,-,-,-", "p_filt729i", false, 80},
    {"veksOpenLoopPitchSearch_G729A_32f", 1, "223,-,-,-,-,-", "223,-,-,-,-,-", "p_g729fp", false, 223},
    {"veksGainControl_G729_32f_I", 1, "40,-,-,-,-,-", "40,-,-,-,-,-", "p_g729fp", false, 40},
    {"veksSynthesisFilter_G729_32f", 96, "40,3,-,-,-,-", "640,30,-,-,-,-", "p_g729fp", false, 19200},
    {"veksCrossCorrLagMax_32f64f", 14, "40,0,-,-,-,-", "80,6,-,-,-,-", "p_g729fp", false, 400},
    {"veksAutoCorrLagMax_32f", 14, "40,0,-,-,-,-", "80,6,-,-,-,-", "p_g729fp", false, 560},
    {"veksWinHybrid_G729E_32f", 1, "145,-,-,-,-,-", "145,-,-,-,-,-", "p_g729fp_ir1", false, 2545},
    {"veksWinHybrid_G729E_16s32s", 1, "145,-,-,-,-,-", "145,-,-,-,-,-", "p_g729ihw", false, 145},
    {"veksLSPQuant_G729E_32f", 1, "10,-,-,-,-,-", "10,-,-,-,-,-", "p_lspqfp", false, 40},
    {"veksLSPQuant_G729E_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_lspqnt729e", false, 10},
    {"veksTiltCompensation_G729A_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_sag729", false, 20},
    {"veksTiltCompensation_G729_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_sag729", false, 20},
    {"veksLSPQuant_G729_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_sag729", false, 10},
    {"veksShortTermPostFilter_G729_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_sag729", false, 40},
    {"veksShortTermPostFilter_G729A_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_sag729", false, 40},
    {"veksLongTermPostFilter_G729B_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_sag729", false, 40},
    {"veksLongTermPostFilter_G729A_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_sag729", false, 40},
    {"veksLongTermPostFilter_G729_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_sag729", false, 40},
    {"veksAutoCorr_G729B", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_sag729", false, 240},
    {"veksTiltCompensation_G729E_16s", 1, "1,-,-,-,-,-", "1,-,-,-,-,-", "p_sag729i", false, 40},
    {"veksAdaptiveCodebookSearch_G729D_16s", 2, "0,-,-,-,-,-", "1,-,-,-,-,-", "p_sag729i", false, 40},
};

} // namespace

SUITE_GRIDS(G729PostSuites, gridCases)

TEST(G729PostSuiteNames, StandInTheColumnsOfTheirValues) {
    expectNameRows({
        {"veksSynthesisFilter_G729E_16s", "valLPCOrder,lenght,-,-,-,-"},
        {"veksSynthesisFilter_G729_32f", "len,valLPCOrder,-,-,-,-"},
        {"veksAutoCorrLagMax_32f", "len,nLag,-,-,-,-"},
        {"veksGainControl_G729_32f_I", "len,-,-,-,-,-"},
        {"veksWinHybrid_G729E_32f", "len,-,-,-,-,-"},
        {"veksWinHybrid_G729E_16s32s", "lenght,-,-,-,-,-"},
        {"veksLSPQuant_G729E_32f", "lenght,-,-,-,-,-"},
        {"veksAdaptiveCodebookSearch_G729D_16s", "subFrame,-,-,-,-,-"},
    });
}

TEST(G729PostSuiteNames, ParametersWithoutATitleDoNotShow) {
    EXPECT_EQ(nameRow("veksLSPQuant_G729E_16s"), "-,-,-,-,-,-");
    EXPECT_EQ(nameRow("veksLongTermPostFilter_G729_16s"), "-,-,-,-,-,-");
}
