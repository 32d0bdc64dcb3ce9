// The grids of the suites of G.729.1: every test's lines, first and last, and that each call succeeds on the suite's
// data without leaving memory behind.
#include "suite_grid.h"

namespace {

const GridCase gridCases[] = {
    {"veksAlgebraicCodebookSearchL1_G7291_16s", 1, "40,-,-,-,-,-", "40,-,-,-,-,-", "p_7291cdbk", false, 40},
    {"veksAlgebraicCodebookSearchL2_G7291_16s", 1, "40,-,-,-,-,-", "40,-,-,-,-,-", "p_7291cdbk", false, 40},
    {"veksQMFDecode_G7291_16s", 2, "80,-,-,-,-,-", "160,-,-,-,-,-", "p_7291flt", false, 160},
    {"veksQMFEncode_G7291_16s", 2, "160,-,-,-,-,-", "320,-,-,-,-,-", "p_7291flt", false, 320},
    {"veksFilterLowpass_G7291_16s_I", 2, "80,-,-,-,-,-", "160,-,-,-,-,-", "p_7291flt", false, 160},
    {"veksFilterHighpass_G7291_16s_ISfs", 3, "160,-,-,-,-,-1", "160,-,-,-,-,1", "p_7291flt", false, 160},
    {"veksMDCTQuantInv_G7291_32u16s", 1, "18,-,-,-,-,-", "18,-,-,-,-,-", "p_7291tdac", false, 18},
    {"veksMDCTQuantFwd_G7291_16s32u", 1, "18,-,-,-,-,-", "18,-,-,-,-,-", "p_7291tdac", false, 18},
    {"veksMDCTPostProcess_G7291_16s", 12, "160,0,-,-,-,-", "160,11,-,-,-,-", "p_7291tdac", false, 160},
    {"veksMDCTInv_G7291_16s", 2, "160,1,-,-,-,-", "160,2,-,-,-,-", "p_7291tdac", false, 160},
    {"veksMDCTFwd_G7291_16s", 1, "160,-,-,-,-,-", "160,-,-,-,-,-", "p_7291tdac", false, 160},
    {"veksLSFDecode_G7291_16s", 1, "10,-,-,-,-,-", "10,-,-,-,-,-", "p_7291gainqnt", false, 10},
    {"veksGainQuant_G7291_16s", 4, "40,1,-,-,-,-", "40,4,-,-,-,-", "p_7291gainqnt", false, 40},
    {"veksGainControl_G7291_16s_I", 1, "40,-,-,-,-,-", "40,-,-,-,-,-", "p_7291gainqnt", false, 40},
    {"veksTiltCompensation_G7291_16s", 1, "40,-,-,-,-,-", "40,-,-,-,-,-", "p_7291gainqnt", false, 40},
    {"veksAdaptiveCodebookSearch_G7291_16s", 9, "40,20,0,-,-,-", "40,100,80,-,-,-", "p_7291pitch", false, 40},
    {"veksAdaptiveCodebookGain_G7291_16s", 3, "40,0,-,-,-,-", "40,80,-,-,-,-", "p_7291pitch", false, 40},
};

} // namespace

SUITE_GRIDS(G7291Suites, gridCases)

TEST(G7291SuiteNames, StandInTheColumnsOfTheirValues) {
    expectNameRows({
        {"veksAdaptiveCodebookSearch_G7291_16s", "len,lag,subFrame,-,-,-"},
        {"veksAdaptiveCodebookGain_G7291_16s", "len,subFrame,-,-,-,-"},
        {"veksGainQuant_G7291_16s", "len,subFrame,-,-,-,-"},
        {"veksMDCTPostProcess_G7291_16s", "len,numBits,-,-,-,-"},
        {"veksMDCTInv_G7291_16s", "len,normFactor,-,-,-,-"},
        {"veksAlgebraicCodebookSearchL1_G7291_16s", "len,-,-,-,-,-"},
    });
}

TEST(G7291SuiteNames, TheAdaptiveVectorOfTheDecoderHasNoTest) {
    EXPECT_EQ(findTest("veksAdaptiveCodebookDecode_G7291_16s_I"), nullptr);
}
