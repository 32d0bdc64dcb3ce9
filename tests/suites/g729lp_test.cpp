// The grids of the G.729 suites of linear prediction, phase dispersion and correlation matrix: every test's lines,
// first and last, and that each call succeeds on the suite's data without leaving memory behind.
#include "suite_grid.h"

namespace {

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

} // namespace

SUITE_GRIDS(G729LpSuites, gridCases)

TEST(G729LpSuiteNames, StandInTheColumnsOfTheirValues) {
    expectNameRows({
        {"veksToeplizMatrix_G729_16s", "Lenght Src,Lenght Dst,-,-,-,-"},
        {"veksLSFQuant_G729_16s", "lenght,lenght LSFTable,-,-,-,-"},
        {"veksPreemphasize_32f_I", "lenght,-,-,-,-,-"},
    });
}

TEST(G729LpSuiteNames, TheRecursionHasAnOrder) {
    EXPECT_EQ(nameRow("veksLevinsonDurbin_G729B"), "Order,-,-,-,-,-");
}

TEST(G729LpSuiteNames, TheLengthOfPhaseDispersionHasNoTitleAndDoesNotShow) {
    EXPECT_EQ(nameRow("veksPhaseDispersion_G729D_16s"), "-,-,-,-,-,-");
}
