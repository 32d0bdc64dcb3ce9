// The grids of the suite of G.729.1's band extension: every test's lines, first and last, and that each call succeeds
// on the suite's data without leaving memory behind.
#include "suite_grid.h"

namespace {

const GridCase gridCases[] = {
    {"veksQuantParam_G7291_16s", 1, "6,-,-,-,-,-", "6,-,-,-,-,-", "p_7291tdbwe", false, 6},
    {"veksGenerateExcitation_G7291_16s", 1, "160,-,-,-,-,-", "160,-,-,-,-,-", "p_7291tdbwe", false, 160},
    {"veksCompressEnvelopTime_G7291_16s", 1, "160,-,-,-,-,-", "160,-,-,-,-,-", "p_7291tdbwe", false, 160},
    {"veksShapeEnvelopFrequency_G7291_16s", 1, "160,-,-,-,-,-", "160,-,-,-,-,-", "p_7291tdbwe", false, 160},
    {"veksShapeEnvelopTime_G7291_16s", 1, "80,-,-,-,-,-", "80,-,-,-,-,-", "p_7291tdbwe", false, 80},
    {"veksEnvelopFrequency_G7291_16s", 1, "12,-,-,-,-,-", "12,-,-,-,-,-", "p_7291tdbwe", false, 12},
    {"veksEnvelopTime_G7291_16s", 4, "8,0,-,-,-,-", "16,12,-,-,-,-", "p_7291tdbwe", false, 16},
};

} // namespace

SUITE_GRIDS(G7291BandExtensionSuites, gridCases)

TEST(G7291BandExtensionSuiteNames, OnlyTheTimeEnvelopeShowsTheShift) {
    EXPECT_EQ(nameRow("veksEnvelopTime_G7291_16s"), "len,nls,-,-,-,-");
    EXPECT_EQ(nameRow("veksShapeEnvelopTime_G7291_16s"), "len,-,-,-,-,-");
}
