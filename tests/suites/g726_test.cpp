// The grids of the G.726 suites: every test's lines, first and last, and that each call succeeds on the suite's data
// without leaving memory behind.
#include "suite_grid.h"

namespace {

const GridCase gridCases[] = {
    {"veksEncode_G726_16s8u", 16, "4,BR_16000,-,-,-,-", "32,BR_40000,-,-,-,-", "p_g726enc", true, 32},
    {"veksDecode_G726_8u16s", 48, "4,BR_16000,MULAW,-,-,-", "32,BR_40000,LINEAR,-,-,-", "p_g726dec", true, 32},
};

} // namespace

SUITE_GRIDS(G726Suites, gridCases)

TEST(G726SuiteNames, StandInTheColumnsOfTheirValues) {
    EXPECT_EQ(nameRow("veksEncode_G726_16s8u"), "Lenght,BitRate,-,-,-,-");
    EXPECT_EQ(nameRow("veksDecode_G726_8u16s"), "Lenght,BitRate,PCMLaw,-,-,-");
}

TEST(G726SuiteUser, MayAskForTheRatesOfTheCodecOnly) {
    g_istrm.dataList().set("BitRate=BR_32000");
    krResult result = krUndefined;
    const std::vector<std::string> lines = runOnce(*findTest("veksEncode_G726_16s8u"), result);
    g_istrm.dataList().set("BitRate=BR_12200");
    const std::vector<std::string> all = runOnce(*findTest("veksEncode_G726_16s8u"), result);
    g_istrm.dataList().clear();
    EXPECT_EQ(lines.size(), 4U);
    EXPECT_EQ(all.size(), 16U);
}
