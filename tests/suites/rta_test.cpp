// The grids of the real-time audio suites: every test's lines, first and last, and that each call succeeds on the
// suite's data without leaving memory behind.
#include "suite_grid.h"

namespace {

const GridCase gridCases[] = {
    {"veksAdaptiveCodebookSearch_RTA_32f", 12, "20,0,32,-,-,-", "40,1,160,-,-,-", "p_adsrtafp", false, 40},
    {"veksBandPassFilter_RTA_32f_I", 4, "80,-,-,-,-,-", "320,-,-,-,-,-", "p_fcbrtafp", false, 320},
    {"veksFixedCodebookSearchRandom_RTA_32f", 180, "20,0,0,64,-,-", "80,2,4,256,-,-", "p_fcbrtafp", false, 80},
    {"veksFixedCodebookSearch_RTA_32f", 8, "20,5,-,-,-,-", "80,10,-,-,-,-", "p_fcbrtafp", false, 80},
    {"veksLevinsonDurbin_RTA_32f", 4, "4,-,-,-,-,-", "10,-,-,-,-,-", "p_filrtafp", false, 10},
    {"veksHighPassFilter_RTA_32f", 28, "0,80,-,-,-,-", "6,320,-,-,-,-", "p_filrtafp", false, 320},
    {"veksLPCToLSP_RTA_32f", 7, "4,-,-,-,-,-", "16,-,-,-,-,-", "p_lsplpcrtafp", false, 16},
    {"veksLSPToLPC_RTA_32f", 7, "4,-,-,-,-,-", "16,-,-,-,-,-", "p_lsplpcrtafp", false, 16},
    {"veksLSPQuant_RTA_32f", 3, "0,-,-,-,-,-", "2,-,-,-,-,-", "p_lspqntrtafp", false, 4},
    {"veksPostFilter_RTA_32f_I", 42, "80,4,1,-,-,-", "160,16,3,-,-,-", "p_pfrtafp", false, 160},
    {"veksQMFEncode_RTA_32f", 4, "20,-,-,-,-,-", "80,-,-,-,-,-", "p_qmfrtafp1", false, 80},
    {"veksQMFDecode_RTA_32f", 4, "10,-,-,-,-,-", "40,-,-,-,-,-", "p_qmfrtafp", false, 40},
};

} // namespace

SUITE_GRIDS(RtaSuites, gridCases)

TEST(RtaSuiteNames, StandInTheColumnsOfTheirValues) {
    expectNameRows({
        {"veksAdaptiveCodebookSearch_RTA_32f", "subFrameSize,searchFlag,deltaSearchRange,-,-,-"},
        {"veksFixedCodebookSearchRandom_RTA_32f", "subFrameSize,nStage,gainLimit,codebookSize,-,-"},
        {"veksFixedCodebookSearch_RTA_32f", "subFrameSize,numPulses,-,-,-,-"},
        {"veksLevinsonDurbin_RTA_32f", "hpfOrder,-,-,-,-,-"},
        {"veksHighPassFilter_RTA_32f", "stage,Lenght,-,-,-,-"},
        {"veksLPCToLSP_RTA_32f", "Order,-,-,-,-,-"},
        {"veksLSPQuant_RTA_32f", "stage,-,-,-,-,-"},
        {"veksPostFilter_RTA_32f_I", "Lenght,Order,apfIdx,-,-,-"},
        {"veksQMFDecode_RTA_32f", "Lenght,-,-,-,-,-"},
    });
}

TEST(RtaSuiteUser, AStageThatTheHighPassFilterHasNotIsADataError) {
    EXPECT_EQ(runOnce("veksHighPassFilter_RTA_32f", {"stage=9"}).result, krDataFail);
}
