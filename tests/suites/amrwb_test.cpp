// The grids of the codebook, open-loop pitch, excitation and gain suites of AMR-WB: every test's lines, first and last,
// and that each call succeeds on the suite's data without leaving memory behind.
#include "suite_grid.h"

namespace {

const GridCase gridCases[] = {
    {"veksInterpolateC_NR_16s", 16, "16,2,-,-,-,-", "128,7,-,-,-,-", "p_intwb", false, 128},
    {"veksOpenLoopPitchSearch_AMRWB_16s", 4, "64,0,-,-,-,-", "128,1,-,-,-,-", "p_olpwb", true, 128},
    {"veksOpenLoopPitchSearch_AMRWBE_16s", 28, "0,0,-,-,-,-", "13,1,-,-,-,-", "p_olpwb", true, 64},
    {"veksAlgebraicCodebookDecode_AMRWB_16s", 10, "64,BR_6600,-,-,-,-", "64,BR_DTX,-,-,-,-", "p_cdbkwb", false, 64},
    {"veksAlgebraicCodebookSearch_AMRWB_16s", 10, "64,BR_6600,-,-,-,-", "64,BR_DTX,-,-,-,-", "p_cdbkwb", true, 64},
    {"veksAdaptiveCodebookDecode_AMRWB_16s", 160, "64,0,0,0,BR_6600,-", "64,1,1,3,BR_DTX,-", "p_cdbkwb", false, 64},
    {"veksAdaptiveCodebookSearch_AMRWB_16s", 40, "64,-,-,0,BR_6600,-", "64,-,-,3,BR_DTX,-", "p_cdbkwb", false, 64},
    {"veksGainQuant_AMRWBE_16s", 1, "64,-,-,-,-,-", "64,-,-,-,-,-", "p_gainqntwb", false, 128},
    {"veksDecodeGain_AMRWB_16s", 40, "BR_6600,0,0,64,-,-", "BR_DTX,1,1,64,-,-", "p_gainqntwb", false, 64},
    {"veksGainQuant_AMRWB_16s", 20, "BR_6600,-,-,64,0,-", "BR_DTX,-,-,64,1,-", "p_gainqntwb", false, 128},
};

} // namespace

SUITE_GRIDS(AmrWbSuites, gridCases)

TEST(AmrWbSuiteNames, StandInTheColumnsOfTheirValues) {
    expectNameRows({
        {"veksInterpolateC_NR_16s", "Lenght,Sfs,-,-,-,-"},
        {"veksOpenLoopPitchSearch_AMRWB_16s", "Lenght,lagSwitcher,-,-,-,-"},
        {"veksOpenLoopPitchSearch_AMRWBE_16s", "freqScaleCounter,lagSwitcher,-,-,-,-"},
        {"veksAlgebraicCodebookSearch_AMRWB_16s", "Lenght,BitRate,-,-,-,-"},
        {"veksAdaptiveCodebookDecode_AMRWB_16s", "Lenght,bfi,unusableFrame,Subframe,BitRate,-"},
        {"veksAdaptiveCodebookSearch_AMRWB_16s", "Lenght,-,-,Subframe,BitRate,-"},
        {"veksDecodeGain_AMRWB_16s", "BitRate,bfi,prevBfi,Lenght,-,-"},
        {"veksGainQuant_AMRWB_16s", "BitRate,-,-,Lenght,valClipFlag,-"},
        {"veksGainQuant_AMRWBE_16s", "Lenght,-,-,-,-,-"},
    });
}
