// The grids of the G.722 suites: every test's lines, first and last, and that each call succeeds on the suite's data
// without leaving memory behind.
#include "suite_grid.h"

namespace {

const GridCase gridCases[] = {
    {"veksDownsampleFilter_G722_16s", 4, "80,-,-,-,-,-", "320,-,-,-,-,-", "p_g722sb", false, 320},
    {"veksFilterHighband_G722_16s_I", 4, "80,-,-,-,-,-", "320,-,-,-,-,-", "p_g722sb", false, 320},
    {"veksClassifyFrame_G722_16s_I", 2, "80,-,-,-,-,-", "143,-,-,-,-,-", "p_g722sb", false, 143},
    {"veksQMFDecode_G722_16s", 4, "80,-,-,-,-,-", "320,-,-,-,-,-", "p_g722sb", false, 320},
    {"veksSBADPCMDecode_G722_16s", 12, "80,1,-,-,-,-", "320,3,-,-,-,-", "p_g722sb", false, 320},
    {"veksQMFEncode_G722_16s", 4, "80,-,-,-,-,-", "320,-,-,-,-,-", "p_g722sb", false, 320},
    {"veksSBADPCMEncode_G722_16s", 4, "80,-,-,-,-,-", "320,-,-,-,-,-", "p_g722sb", false, 320},
    {"veksHuffmanEncode_G722_16s32u", 3, "0,-,-,-,-,-", "2,-,-,-,-,-", "p_huffenc", false, 20},
};

} // namespace

SUITE_GRIDS(G722Suites, gridCases)

TEST(G722SuiteNames, StandInTheColumnsOfTheirValues) {
    EXPECT_EQ(nameRow("veksClassifyFrame_G722_16s_I"), "valDelay,-,-,-,-,-");
    EXPECT_EQ(nameRow("veksSBADPCMDecode_G722_16s"), "len,mode,-,-,-,-");
    EXPECT_EQ(nameRow("veksHuffmanEncode_G722_16s32u"), "modeCount,-,-,-,-,-");
}
