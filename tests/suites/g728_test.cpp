// The grids of the G.728 suites: every test's lines, first and last, and that each call succeeds on the suite's data
// without leaving memory behind.
#include "suite_grid.h"

namespace {

const GridCase gridCases[] = {
    {"veksIIR16s_G728_16s", 1, "5,-,-,-,-,-", "5,-,-,-,-,-", "p_flt728", false, 5},
    {"veksSyntesisFilterZeroInput_G728_16s", 4, "0,50,-,-,-,-", "15,50,-,-,-,-", "p_flt728", false, 5},
    {"veksCombinedFilterZeroState_G728_16s", 4, "0,50,-,-,-,-", "15,50,-,-,-,-", "p_flt728", false, 5},
    {"veksCombinedFilterZeroInput_G728_16s", 1, "50,-,-,-,-,-", "50,-,-,-,-,-", "p_flt728", false, 5},
    {"veksWinHybridBlock_G728_16s", 2, "0,-,-,-,-,-", "1,-,-,-,-,-", "p_hwg728", false, 10},
    {"veksWinHybrid_G728_16s", 2, "0,-,-,-,-,-", "1,-,-,-,-,-", "p_hwg728", false, 10},
    {"veksLevinsonDurbin_G728_16s_ISfs", 4, "10,0,-,-,-,-", "50,5,-,-,-,-", "p_lp728", true, 50},
    {"veksLevinsonDurbin_G728_16s_Sfs", 2, "10,-,-,-,-,-", "50,-,-,-,-,-", "p_lp728", false, 50},
    {"veksPitchPeriodExtraction_G728_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_pfadapg728", true, 100},
    {"veksLPCInverseFilter_G728_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_pfadapg728", false, 5},
    {"veksPostFilter_G728_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_post728", false, 5},
    {"veksImpulseResponseEnergy_G728_16s", 1, "BR_16000,-,-,-,-,-", "BR_16000,-,-,-,-,-", "p_vq728", false, 1},
    {"veksCodebookSearch_G728_16s", 3, "BR_16000,-,-,-,-,-", "BR_9600,-,-,-,-,-", "p_vq728", false, 1},
};

} // namespace

SUITE_GRIDS(G728Suites, gridCases)

TEST(G728SuiteTrellis, PrintsNoParameterAndNoUnit) {
    krTest* test = findTest("veksCodebookSearchTCQ_G728_16s8u");
    ASSERT_NE(test, nullptr);
    const SuiteRun run = runOnce("veksCodebookSearchTCQ_G728_16s8u");
    EXPECT_EQ(run.result, krOk);
    EXPECT_EQ(run.columns(3, 8), (std::vector<std::string>{"-,-,-,-,-,-"}));
    EXPECT_EQ(run.columns(11, 11), (std::vector<std::string>{" "}));
    EXPECT_EQ(test->m_srcName, "p_g728j_tcq");
    EXPECT_EQ(test->m_funcInit, nullptr);
    EXPECT_EQ(test->getDivisor(), 5);
    EXPECT_EQ(krMallocFirst(nullptr, nullptr), nullptr);
}

TEST(G728SuiteNames, StandInTheColumnsOfTheirValues) {
    expectNameRows({
        {"veksIIR16s_G728_16s", "Lengt,-,-,-,-,-"},
        {"veksSyntesisFilterZeroInput_G728_16s", "excSfs,Lengt,-,-,-,-"},
        {"veksWinHybrid_G728_16s", "bfi,-,-,-,-,-"},
        {"veksLevinsonDurbin_G728_16s_ISfs", "order,numSrcLPC,-,-,-,-"},
        {"veksCodebookSearch_G728_16s", "BitRate,-,-,-,-,-"},
    });
}
