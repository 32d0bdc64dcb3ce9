// The grids of the G.726 suites: every test's lines, first and last, and that each call succeeds on the suite's data
// without leaving memory behind; and the data themselves.
#include "suite_data.h"
#include "suite_grid.h"

namespace {

using Values = std::vector<double>;

const GridCase gridCases[] = {
    {"veksEncode_G726_16s8u", 16, "4,BR_16000,-,-,-,-", "32,BR_40000,-,-,-,-", "p_g726enc", true, 32},
    {"veksDecode_G726_8u16s", 48, "4,BR_16000,MULAW,-,-,-", "32,BR_40000,LINEAR,-,-,-", "p_g726dec", true, 32},
};

// The samples of the first call on a line of 32.
Values heard(const char* rate, const char* law) {
    SuiteLine line("veksDecode_G726_8u16s", 0, {"Lenght=32", rate, law});
    EXPECT_TRUE(line.ready());
    line.restore();
    EXPECT_EQ(line.call(), 0);
    Values samples = line.values(1);
    // Each call begins with the state at the start.
    line.restore();
    EXPECT_EQ(line.call(), 0);
    EXPECT_EQ(line.values(1), samples);
    return samples;
}

} // namespace

SUITE_GRIDS(G726Suites, gridCases)

TEST(G726SuiteNames, StandInTheColumnsOfTheirValues) {
    EXPECT_EQ(nameRow("veksEncode_G726_16s8u"), "Lenght,BitRate,-,-,-,-");
    EXPECT_EQ(nameRow("veksDecode_G726_8u16s"), "Lenght,BitRate,PCMLaw,-,-,-");
}

TEST(G726SuiteUser, MayAskForTheRatesOfTheCodecOnly) {
    EXPECT_EQ(runOnce("veksEncode_G726_16s8u", {"BitRate=BR_32000"}).lines.size(), 4U);
    EXPECT_EQ(runOnce("veksEncode_G726_16s8u", {"BitRate=BR_12200"}).lines.size(), 16U);
}

TEST(G726SuiteData, CodesHaveTwoBits) {
    SuiteLine line("veksDecode_G726_8u16s", 47);
    ASSERT_TRUE(line.ready());
    const Values codes = line.values(0);
    ASSERT_EQ(codes.size(), 32U);
    EXPECT_EQ(*std::min_element(codes.begin(), codes.end()), 0);
    // The upper bound itself is as good as never drawn.
    const double most = *std::max_element(codes.begin(), codes.end());
    EXPECT_TRUE(most == 2 || most == 3) << most;
}

TEST(G726SuiteData, SamplesReach4096) {
    SuiteLine line("veksEncode_G726_16s8u", 15);
    ASSERT_TRUE(line.ready());
    ASSERT_EQ(line.values(0).size(), 32U);
    expectRandom(line.values(0), -4096, 4096);
}

TEST(G726SuiteData, RateAndLawReachTheDecoder) {
    const Values coarse = heard("BitRate=BR_16000", "PCMLaw=LINEAR");
    EXPECT_NE(coarse, heard("BitRate=BR_24000", "PCMLaw=LINEAR"));
    EXPECT_NE(coarse, heard("BitRate=BR_40000", "PCMLaw=LINEAR"));
    EXPECT_NE(coarse, heard("BitRate=BR_16000", "PCMLaw=ALAW"));
    EXPECT_NE(coarse, heard("BitRate=BR_16000", "PCMLaw=MULAW"));
    EXPECT_NE(heard("BitRate=BR_16000", "PCMLaw=ALAW"), heard("BitRate=BR_16000", "PCMLaw=MULAW"));
}
