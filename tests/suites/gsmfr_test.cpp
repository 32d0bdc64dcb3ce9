// The grids of the GSM full rate suites: every test's lines, first and last, and that each call succeeds on the suite's
// data without leaving memory behind.
#include "suite_grid.h"

namespace {

const GridCase gridCases[] = {
    {"veksCrossCorrLagMax_16s", 3, "40,-,-,-,-,-", "60,-,-,-,-,-", "p_ccorrlmaxgsmfr", false, 60},
    {"veksDeemphasize_GSMFR_16s_I", 9, "100,-,-,-,-,-", "180,-,-,-,-,-", "p_deemph", false, 180},
    {"veksHighPassFilter_GSMFR_16s", 9, "100,-,-,-,-,-", "180,-,-,-,-,-", "p_hpassf", false, 180},
    {"veksPreemphasize_GSMFR_16s", 9, "100,-,-,-,-,-", "180,-,-,-,-,-", "p_preemph", false, 180},
    {"veksRPEQuantDecode_GSMFR_16s", 1, "13,-,-,-,-,-", "13,-,-,-,-,-", "p_rpequant", false, 13},
    {"veksSchur_GSMFR_32s16s", 3, "4,-,-,-,-,-", "8,-,-,-,-,-", "p_schur", false, 64},
    {"veksShortTermAnalysisFilter_GSMFR_16s_I", 3, "13,-,-,-,-,-", "120,-,-,-,-,-", "p_staf", false, 960},
    {"veksShortTermSynthesisFilter_GSMFR_16s", 3, "13,-,-,-,-,-", "120,-,-,-,-,-", "p_stafs", false, 960},
    {"veksWeightingFilter_GSMFR_16s", 4, "30,-,-,-,-,-", "60,-,-,-,-,-", "p_weighfilt", false, 60},
};

} // namespace

SUITE_GRIDS(GsmFrSuites, gridCases)

TEST(GsmFrSuiteNames, StandInTheFirstColumn) {
    expectNameRows({
        {"veksSchur_GSMFR_32s16s", "length Dst,-,-,-,-,-"},
        {"veksWeightingFilter_GSMFR_16s", "dstLength,-,-,-,-,-"},
        {"veksPreemphasize_GSMFR_16s", "length,-,-,-,-,-"},
    });
}

TEST(GsmFrSuiteNames, PreemphasisSharesItsFileWithThatOfAnotherCodec) {
    EXPECT_EQ(findTest("veksPreemphasize_GSMFR_16s")->m_info.m_class, "TimPreemphGSMFR");
    EXPECT_EQ(findTest("veksPreemphasize_G729A_16s")->m_info.m_class, "TimPreemph");
}
