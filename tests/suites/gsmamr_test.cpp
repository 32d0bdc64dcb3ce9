// The grids of the codebook, gain and post-filter suites of GSM AMR: every test's lines, first and last, and that each
// call succeeds on the suite's data without leaving memory behind.
#include "suite_data.h"
#include "suite_grid.h"

namespace {

const GridCase gridCases[] = {
    {"veksAdaptiveCodebookDecode_GSMAMR_16s", 64, "0,BR_4750,0,-,-,-", "1,BR_12200,3,-,-,-", "p_adcv", true, 40},
    {"veksAdaptiveCodebookSearch_GSMAMR_16s", 32, "1,BR_4750,0,-,-,-", "1,BR_12200,3,-,-,-", "p_adcv", true, 40},
    {"veksAlgebraicCodebookSearch_GSMAMR_16s", 36, "BR_4750,0,-,-,-,-", "BR_DTX,3,-,-,-,-", "p_afc", true, 40},
    {"veksFixedCodebookDecode_GSMAMR_16s", 36, "BR_4750,0,-,-,-,-", "BR_DTX,3,-,-,-,-", "p_afcd", false, 40},
    {"veksAdaptiveCodebookGainCoeffs_GSMAMR_16s", 1, "40,-,-,-,-,-", "40,-,-,-,-,-", "p_saggsm", false, 40},
    {"veksAdaptiveCodebookGain_GSMAMR_16s", 1, "40,-,-,-,-,-", "40,-,-,-,-,-", "p_saggsm", false, 40},
    {"veksPreemphasize_GSMAMR_16s", 4, "10,-,-,-,-,-", "80,-,-,-,-,-", "p_saggsm", false, 80},
    {"veksInterpolate_GSMAMR_16s", 1, "10,-,-,-,-,-", "10,-,-,-,-,-", "p_saggsm", false, 10},
    {"veksLSFToLSP_GSMAMR_16s", 1, "10,-,-,-,-,-", "10,-,-,-,-,-", "p_saggsm", false, 10},
    {"veksPostFilter_GSMAMR_16s", 9, "BR_4750,-,-,-,-,-", "BR_DTX,-,-,-,-,-", "p_sapost", true, 160},
};

} // namespace

SUITE_GRIDS(GsmAmrSuites, gridCases)

TEST(GsmAmrSuiteNames, StandInTheColumnsOfTheirValues) {
    expectNameRows({
        {"veksAdaptiveCodebookDecode_GSMAMR_16s", "Bfi,BitRate,SubFrame,-,-,-"},
        {"veksAlgebraicCodebookSearch_GSMAMR_16s", "BitRate,SubFrame,-,-,-,-"},
        {"veksFixedCodebookDecode_GSMAMR_16s", "BitRate,SubFrame,-,-,-,-"},
        {"veksPreemphasize_GSMAMR_16s", "lenght,-,-,-,-,-"},
        {"veksPostFilter_GSMAMR_16s", "BitRate,-,-,-,-,-"},
    });
}

TEST(GsmAmrSuiteData, TheSearchFindsAnImpulseAsItsResponseInEachCall) {
    SuiteLine line("veksAlgebraicCodebookSearch_GSMAMR_16s");
    ASSERT_TRUE(line.ready());
    std::vector<double> impulse(40, 0);
    impulse[0] = 4096;
    for (int call = 0; call < 2; ++call) {
        line.restore();
        const std::vector<double> whole = line.values(2);
        ASSERT_EQ(whole.size(), 80U);
        EXPECT_EQ(std::vector<double>(whole.begin() + 40, whole.end()), impulse);
        EXPECT_EQ(line.call(), 0);
    }
}

TEST(GsmAmrSuiteGrids, SubframesTurnFastestThenRatesThenTheBadFrame) {
    const std::vector<std::string> lines = runOnce("veksAdaptiveCodebookDecode_GSMAMR_16s").columns(3, 5);
    ASSERT_EQ(lines.size(), 64U);
    EXPECT_EQ(lines[3], "0,BR_4750,3");
    EXPECT_EQ(lines[4], "0,BR_5150,0");
    EXPECT_EQ(lines[31], "0,BR_12200,3");
    EXPECT_EQ(lines[32], "1,BR_4750,0");
}

TEST(GsmAmrSuiteGrids, PreemphasisDoublesItsLength) {
    EXPECT_EQ(runOnce("veksPreemphasize_GSMAMR_16s").columns(3, 3), (std::vector<std::string>{"10", "20", "40", "80"}));
}

TEST(GsmAmrSuiteGrids, RatesAreInTheOrderOfTheirList) {
    EXPECT_EQ(runOnce("veksPostFilter_GSMAMR_16s").columns(3, 3),
              (std::vector<std::string>{"BR_4750", "BR_5150", "BR_5900", "BR_6700", "BR_7400", "BR_7950", "BR_10200",
                                        "BR_12200", "BR_DTX"}));
}
