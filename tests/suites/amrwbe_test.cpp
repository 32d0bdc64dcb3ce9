// The grids of the suites of the extended wide-band codec: every test's lines, first and last, and that each call
// succeeds on the suite's data without leaving memory behind.
#include "suite_grid.h"

namespace {

const GridCase gridCases[] = {
    {"veksFFTInv_PermToR_AMRWBE_16s", 6, "48,-,-,-,-,-", "1152,-,-,-,-,-", "p_wbefft", false, 1152},
    {"veksFFTFwd_RToPerm_AMRWBE_16s", 6, "48,-,-,-,-,-", "1152,-,-,-,-,-", "p_wbefft", false, 1152},
    {"veksSNR_AMRWBE_16s", 7, "0,-,-,-,-,-", "6,-,-,-,-,-", "p_wbemisc", false, 160},
    {"veksGainQuantTCX_AMRWBE_16s", 12, "0,0,-,-,-,-", "1,5,-,-,-,-", "p_wbemisc", false, 1152},
    {"veksGainDecodeTCX_AMRWBE_16s", 6, "0,-,-,-,-,-", "5,-,-,-,-,-", "p_wbemisc", false, 1152},
    {"veksISFQuantHighBand_AMRWBE_16s", 2, "0,-,-,-,-,-", "1,-,-,-,-,-", "p_wbemisc", false, 8},
    {"veksISFQuantDecodeHighBand_AMRWBE_16s", 4, "0,0,-,-,-,-", "1,1,-,-,-,-", "p_wbemisc", false, 8},
    {"veksFIRGenMidBand_AMRWBE_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_wbefilt", false, 256},
    {"veksPostFilterLowBand_AMRWBE_16s", 24, "128,17,0,-,-,-", "8192,117,1,-,-,-", "p_wbefilt", true, 1024},
    {"veksQuantTCX_AMRWBE_16s", 18, "0,-,-,-,-,-", "17,-,-,-,-,-", "p_wbemux", false, 1152},
    {"veksDecodeDemux_AMRWBE_16s", 18, "0,-,-,-,-,-", "17,-,-,-,-,-", "p_wbemux", false, 1152},
};

} // namespace

SUITE_GRIDS(AmrWbeSuites, gridCases)

TEST(AmrWbeSuiteNames, StandInTheColumnsOfTheirValues) {
    EXPECT_EQ(nameRow("veksFFTInv_PermToR_AMRWBE_16s"), "length,-,-,-,-,-");
    EXPECT_EQ(nameRow("veksSNR_AMRWBE_16s"), "LengthCounter,-,-,-,-,-");
    EXPECT_EQ(nameRow("veksGainQuantTCX_AMRWBE_16s"), "quantFlag,LengthCounter,-,-,-,-");
    EXPECT_EQ(nameRow("veksISFQuantHighBand_AMRWBE_16s"), "pitchAdjust,-,-,-,-,-");
    EXPECT_EQ(nameRow("veksISFQuantDecodeHighBand_AMRWBE_16s"), "bfi,pitchAdjust,-,-,-,-");
    EXPECT_EQ(nameRow("veksPostFilterLowBand_AMRWBE_16s"), "itRangeData,itLags,itPitchAdjust,-,-,-");
    EXPECT_EQ(nameRow("veksQuantTCX_AMRWBE_16s"), "ModeCounter,-,-,-,-,-");
    EXPECT_EQ(nameRow("veksDecodeDemux_AMRWBE_16s"), "ModeCounter,-,-,-,-,-");
}
