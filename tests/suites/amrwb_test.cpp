// The grids of the open-loop pitch and excitation suites of AMR-WB: every test's lines, first and last, and
// that each call succeeds on the suite's data without leaving memory behind.
#include "suite_grid.h"

namespace {

const GridCase gridCases[] = {
    {"veksInterpolateC_NR_16s", 16, "16,2,-,-,-,-", "128,7,-,-,-,-", "p_intwb", false, 128},
    {"veksOpenLoopPitchSearch_AMRWB_16s", 4, "64,0,-,-,-,-", "128,1,-,-,-,-", "p_olpwb", true, 128},
    {"veksOpenLoopPitchSearch_AMRWBE_16s", 28, "0,0,-,-,-,-", "13,1,-,-,-,-", "p_olpwb", true, 64},
};

} // namespace

SUITE_GRIDS(AmrWbSuites, gridCases)

TEST(AmrWbSuiteNames, StandInTheColumnsOfTheirValues) {
    EXPECT_EQ(nameRow("veksInterpolateC_NR_16s"), "Lenght,Sfs,-,-,-,-");
    EXPECT_EQ(nameRow("veksOpenLoopPitchSearch_AMRWB_16s"), "Lenght,lagSwitcher,-,-,-,-");
    EXPECT_EQ(nameRow("veksOpenLoopPitchSearch_AMRWBE_16s"), "freqScaleCounter,lagSwitcher,-,-,-,-");
}
