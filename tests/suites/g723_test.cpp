// The grids of the suites of G.723.1: every test's lines, first and last, and that each call succeeds on the suite's
// data without leaving memory behind.
#include "suite_grid.h"

namespace {

const GridCase gridCases[] = {
    {"veksMPMLQFixedCodebookSearch_G723", 4, "0,BR_6300,-,-,-,-", "3,BR_6300,-,-,-,-", "p_adap2", false, 60},
    {"veksAdaptiveCodebookSearch_G723", 8, "0,BR_6300,-,-,-,-", "3,BR_5300,-,-,-,-", "p_adap2", false, 60},
    {"veksGainControl_G723_16s_I", 1, "60,-,-,-,-,-", "60,-,-,-,-,-", "p_agctrl2", true, 60},
    {"veksHarmonicSearch_G723_16s", 1, "208,60,-,-,-,-", "208,60,-,-,-,-", "p_cdbk2", false, 60},
    {"veksOpenLoopPitchSearch_G723_16s", 1, "265,120,-,-,-,-", "265,120,-,-,-,-", "p_cdbk2", false, 120},
    {"veksToeplizMatrix_G723_16s", 1, "60,416,-,-,-,-", "60,416,-,-,-,-", "p_cdbk2", false, 416},
    {"veksToeplizMatrix_G723_16s32s", 1, "60,416,-,-,-,-", "60,416,-,-,-,-", "p_cdbk2", false, 416},
    {"veksTiltCompensation_G723_32s16s", 1, "62,-,-,-,-,-", "62,-,-,-,-,-", "p_filt2", false, 62},
    {"veksHighPassFilter_G723_16s", 1, "241,-,-,-,-,-", "241,-,-,-,-,-", "p_filt2", false, 241},
    {"veksHarmonicNoiseSubtract_G723_16s_I", 6, "10,-,-,-,-,-", "60,-,-,-,-,-", "p_filt2", true, 60},
    {"veksPitchPostFilter_G723_16s", 8, "0,BR_5300,-,-,-,-", "3,BR_6300,-,-,-,-", "p_filtpitch", false, 40},
    {"veksACELPFixedCodebookSearch_G723_16s", 1, "64,-,-,-,-,-", "64,-,-,-,-,-", "p_fixcod723", false, 64},
    {"veksACELPFixedCodebookSearch_G723_32s16s", 1, "64,-,-,-,-,-", "64,-,-,-,-,-", "p_fixcod723", false, 64},
    {"veksLSFToLPC_G723_16s_I", 1, "1,-,-,-,-,-", "1,-,-,-,-,-", "p_lpcnv2", true, 12},
    {"veksLSFDecode_G723_16s", 2, "0,-,-,-,-,-", "1,-,-,-,-,-", "p_lpcnv2", false, 12},
    {"veksLevinsonDurbin_G723_16s", 1, "10,-,-,-,-,-", "10,-,-,-,-,-", "p_lpld2", false, 10},
    {"veksLSFQuant_G723_16s32s", 1, "10,-,-,-,-,-", "10,-,-,-,-,-", "p_lsf723", false, 10},
    {"veksLSFToLPC_G723_16s", 1, "10,-,-,-,-,-", "10,-,-,-,-,-", "p_lsf723", false, 10},
    {"veksLPCToLSF_G723_16s", 1, "10,-,-,-,-,-", "10,-,-,-,-,-", "p_lsf723", false, 10},
    {"veksGainQuant_G723_16s", 1, "60,6,-,-,-,-", "60,6,-,-,-,-", "p_quant723", false, 60},
    {"veksDecodeAdaptiveVector_G723_16s", 2, "BR_6300,-,-,-,-,-", "BR_5300,-,-,-,-,-", "p_sag723", false, 60},
    {"veksAutoCorr_G723_16s", 2, "BR_6300,-,-,-,-,-", "BR_5300,-,-,-,-,-", "p_sag723", false, 180},
    {"veksSynthesisFilter_G723_16s", 1, "60,10,-,-,-,-", "60,10,-,-,-,-", "p_sinfilt2", false, 60},
    {"veksSynthesisFilter_G723_16s32s", 1, "60,10,-,-,-,-", "60,10,-,-,-,-", "p_sinfilt2", false, 60},
};

} // namespace

SUITE_GRIDS(G723Suites, gridCases)

TEST(G723SuiteNames, StandInTheColumnsOfTheirValues) {
    EXPECT_EQ(nameRow("veksAdaptiveCodebookSearch_G723"), "subFrame,BitRate,-,-,-,-");
    EXPECT_EQ(nameRow("veksPitchPostFilter_G723_16s"), "SubFrame,BitRate,-,-,-,-");
    EXPECT_EQ(nameRow("veksLSFDecode_G723_16s"), "Erase,-,-,-,-,-");
    EXPECT_EQ(nameRow("veksLevinsonDurbin_G723_16s"), "Lenght,-,-,-,-,-");
    EXPECT_EQ(nameRow("veksGainQuant_G723_16s"), "lenght,lenght DST,-,-,-,-");
    EXPECT_EQ(nameRow("veksSynthesisFilter_G723_16s"), "lenght,lenght LPC,-,-,-,-");
    EXPECT_EQ(nameRow("veksTiltCompensation_G723_32s16s"), "lenght,-,-,-,-,-");
}

TEST(G723SuiteNames, BothLengthsOfTheSearchesAreNamedForTheSource) {
    EXPECT_EQ(nameRow("veksToeplizMatrix_G723_16s"), "lenght SRC,lenght SRC,-,-,-,-");
}

TEST(G723SuiteNames, TheSubframeOfTheAdaptiveVectorHasNoTitleAndDoesNotShow) {
    EXPECT_EQ(nameRow("veksDecodeAdaptiveVector_G723_16s"), "BitRate,-,-,-,-,-");
}
