// The grids of the pitch and gain suites of G.729: every test's lines, first and last, and that each call succeeds on
// the suite's data without leaving memory behind.
#include "suite_data.h"
#include "suite_grid.h"

namespace {

const GridCase gridCases[] = {
    {"veksGainControl_G729A_16s_I", 1, "40,-,-,-,-,-", "40,-,-,-,-,-", "p_agctrl", true, 40},
    {"veksGainControl_G729_16s_I", 1, "40,-,-,-,-,-", "40,-,-,-,-,-", "p_agctrl", true, 40},
    {"veksAdaptiveCodebookContribution_G729_32f", 1, "40,-,-,-,-,-", "40,-,-,-,-,-", "p_adaptcdbgain", false, 40},
    {"veksAdaptiveCodebookContribution_G729_16s", 1, "40,-,-,-,-,-", "40,-,-,-,-,-", "p_adaptcdbgain", false, 40},
    {"veksOpenLoopPitchSearch_G729_16s", 1, "160,143,1,1,-,-", "160,143,1,1,-,-", "p_pitch", false, 160},
    {"veksOpenLoopPitchSearch_G729A_16s", 1, "160,143,1,1,-,-", "160,143,1,1,-,-", "p_pitch", false, 160},
    {"veksAutoCorrLagMax_Fwd_16s", 5, "40,1,20,40,-,-", "80,1,20,40,-,-", "p_pitch", false, 1680},
    {"veksAutoCorrLagMax_Inv_16s", 5, "40,1,20,40,-,-", "80,1,20,40,-,-", "p_pitch", false, 1680},
    {"veksDecodeAdaptiveVector_G729_32f_I", 4, "10,-,-,-,-,-", "40,-,-,-,-,-", "p_pitch1", true, 40},
    {"veksDecodeAdaptiveVector_G729_16s", 1, "1,-,-,-,-,-", "1,-,-,-,-,-", "p_pitch1", true, 1},
    {"veksDecodeAdaptiveVector_G729_16s_I", 1, "1,-,-,-,-,-", "1,-,-,-,-,-", "p_pitch1", true, 1},
    {"veksAdaptiveCodebookSearch_G729A_16s", 2, "0,-,-,-,-,-", "1,-,-,-,-,-", "p_adap", true, 40},
    {"veksAdaptiveCodebookSearch_G729_16s", 2, "0,-,-,-,-,-", "1,-,-,-,-,-", "p_adap", true, 40},
    {"veksAdaptiveCodebookGain_G729A_16s", 1, "1,-,-,-,-,-", "1,-,-,-,-,-", "p_adap", false, 40},
    {"veksAdaptiveCodebookGain_G729_16s", 1, "1,-,-,-,-,-", "1,-,-,-,-,-", "p_adap", false, 40},
};

} // namespace

SUITE_GRIDS(G729PitchSuites, gridCases)

TEST(G729PitchSuiteNames, StandInTheColumnsOfTheirValues) {
    expectNameRows({
        {"veksGainControl_G729_16s_I", "lenght,-,-,-,-,-"},
        {"veksAdaptiveCodebookContribution_G729_16s", "Lenght,-,-,-,-,-"},
        {"veksDecodeAdaptiveVector_G729_16s", "length,-,-,-,-,-"},
        {"veksAutoCorrLagMax_Inv_16s", "lenght,maxLag,lowerLag,upperLag,-,-"},
    });
}

TEST(G729PitchSuiteNames, TheSubframeOfTheOpenLoopSearchHasNoTitleAndDoesNotShow) {
    EXPECT_EQ(nameRow("veksOpenLoopPitchSearch_G729_16s"), "lenght,maxLag,lowerLag,upperLag,-,-");
}

// The samples before the first are those of the longest lag.
TEST(G729PitchSuiteUser, MustLetTheOpenLoopSearchHaveALag) {
    EXPECT_TRUE(SuiteLine("veksAutoCorrLagMax_Fwd_16s", 0, {"maxLag=1"}).ready());
    EXPECT_FALSE(SuiteLine("veksAutoCorrLagMax_Fwd_16s", 0, {"maxLag=0"}).ready());
    EXPECT_FALSE(SuiteLine("veksOpenLoopPitchSearch_G729_16s", 0, {"maxLag=0"}).ready());
}
