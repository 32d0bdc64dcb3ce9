// The grids of the echo cancellation suites: every test's lines, first and last, and that each call succeeds on the
// suite's data without leaving memory behind.
#include "machinememory.h"
#include "suite_grid.h"

namespace {

const GridCase gridCases[] = {
    {"veksToneDetect_EC_16s", 4, "64,0,-,-,-,-", "80,1,-,-,-,-", "p_ec", false, 80},
    {"veksSubbandAnalysis_16s32sc_Sfs", 2, "16,33,-,-,-,0", "16,33,-,-,-,1", "p_ec", false, 64},
    {"veksSubbandSynthesis_32sc16s_Sfs", 2, "16,33,-,-,-,0", "16,33,-,-,-,1", "p_ec", false, 64},
    {"veksSubbandControllerUpdate_EC_16s", 2, "65,0,-,-,-,-", "65,1,-,-,-,-", "p_ec", false, 65},
    {"veksSubbandController_EC_16s", 2, "65,0,-,-,-,-", "65,1,-,-,-,-", "p_ec", false, 260},
    {"veksFullbandControllerUpdate_EC_16s", 4, "8,128,0,-,-,-", "8,256,1,-,-,-", "p_ec", false, 181},
    {"veksFullbandController_EC_16s", 4, "8,128,0,-,-,-", "8,256,1,-,-,-", "p_ec", false, 181},
    {"veksFIR_EC_16s", 2, "8,128,-,-,-,-", "8,256,-,-,-,-", "p_ec", false, 2048},
    {"veksNLMS_EC_16s", 2, "8,128,-,-,-,-", "8,256,-,-,-,-", "p_ec", false, 2048},
    {"veksToneDetect_EC_32f", 4, "64,0,-,-,-,-", "80,1,-,-,-,-", "p_ec", false, 80},
    {"veksSubbandAnalysis_32f32fc", 1, "65,-,-,-,-,-", "65,-,-,-,-,-", "p_ec", false, 32},
    {"veksSubbandSynthesis_32fc32f", 1, "65,-,-,-,-,-", "65,-,-,-,-,-", "p_ec", false, 32},
    {"veksSubbandControllerUpdate_EC_32f", 2, "65,0,-,-,-,-", "65,1,-,-,-,-", "p_ec", false, 65},
    {"veksSubbandController_EC_32f", 2, "65,0,-,-,-,-", "65,1,-,-,-,-", "p_ec", false, 260},
    {"veksFullbandControllerUpdate_EC_32f", 4, "8,128,0,-,-,-", "8,256,1,-,-,-", "p_ec", false, 181},
    {"veksFullbandController_EC_32f", 4, "8,128,0,-,-,-", "8,256,1,-,-,-", "p_ec", false, 181},
    {"veksFIR_EC_32f", 2, "8,128,-,-,-,-", "8,256,-,-,-,-", "p_ec", false, 2048},
    {"veksNLMS_EC_32f", 1, "8,8,-,-,-,-", "8,8,-,-,-,-", "p_ec", false, 64},
    {"veksSubbandControllerDTUpdate_EC_16s", 8, "2,0,0,-,-,-", "3,1,1,-,-,-", "p_ecdt", false, 30},
    {"veksSubbandControllerDT_EC_16s", 8, "2,0,0,-,-,-", "3,1,1,-,-,-", "p_ecdt", false, 30},
    {"veksFIRSubbandLow_EC_32sc_Sfs", 180, "32,8,2,-,-,0", "64,32,6,-,-,20", "p_firsubband", false, 1856},
    {"veksFIRSubband_EC_32sc_Sfs", 60, "32,8,-,-,-,-16", "64,32,-,-,-,16", "p_firsubband", false, 2048},
    {"veksFIRSubbandAPCoeffUpdate_EC_32fc_I", 2, "65,12,1,-,-,-", "65,12,4,-,-,-", "p_firsubbandcoeff", false, 780},
    {"veksFIRSubbandLowCoeffUpdate_EC_32sc_I", 180, "32,8,1,2,-,-", "64,32,31,6,-,-", "p_firsubbandcoeff", false, 1856},
    {"veksFIRSubbandCoeffUpdate_EC_32sc_I", 60, "32,8,1,-,-,-", "64,32,31,-,-,-", "p_firsubbandcoeff", false, 2048},
};

// The scale factors over all lines: each in so many of them, and then again from the first.
void expectScales(const char* function, size_t lines, size_t each, const std::vector<std::string>& scales) {
    const auto values = runOnce(function).columns(8, 8);
    ASSERT_EQ(lines, values.size());
    for (size_t i = 0; i < lines; ++i) {
        EXPECT_EQ(scales[i / each % scales.size()], values[i]) << i;
    }
}

} // namespace

SUITE_GRIDS(EcSuites, gridCases)

TEST(EcSuiteNames, StandInTheColumnsOfTheirValues) {
    expectNameRows({
        {"veksNLMS_EC_32f", "len,tapLen,-,-,-,-"},
        {"veksFullbandController_EC_16s", "len,tapLen,mode,-,-,-"},
        {"veksToneDetect_EC_32f", "len,mode,-,-,-,-"},
        {"veksSubbandAnalysis_16s32sc_Sfs", "len,numSubbands,-,-,-,scaleFactor"},
        {"veksSubbandControllerDT_EC_16s", "startSubband,mode,doubleTalk,-,-,-"},
        {"veksFIRSubbandLow_EC_32sc_Sfs", "Length,Num Segments,Start Number Segments,-,-,scaleFactor"},
        {"veksFIRSubbandAPCoeffUpdate_EC_32fc_I", "Length,Number of segments,affine projection order,-,-,-"},
        {"veksFIRSubbandLowCoeffUpdate_EC_32sc_I", "Length,Num Segments,scaleFactor,Srart Number Segments,-,-"},
    });
}

TEST(EcSuiteUser, AnUpdateOfNoTapsIsADataError) {
    for (const char* function : {"veksFullbandControllerUpdate_EC_16s", "veksFullbandControllerUpdate_EC_32f"}) {
        EXPECT_EQ(runOnce(function, {"tapLen=0"}).result, krDataFail) << function;
    }
}

TEST(EcSuiteRows, ThatNoMemoryHoldsAreADataError) {
    const MachineMemory machine([] { return 1000LL; });
    EXPECT_EQ(runOnce("veksFIRSubbandAPCoeffUpdate_EC_32fc_I").result, krDataFail);
}

// Scale factors are walked outside the start of the subbands.
TEST(EcSuiteScales, OfTheLowFilterAre0And16And20) {
    expectScales("veksFIRSubbandLow_EC_32sc_Sfs", 180, 3, {"0", "16", "20"});
}

TEST(EcSuiteScales, OfTheFullFilterAreMinus16And0And16) {
    expectScales("veksFIRSubband_EC_32sc_Sfs", 60, 1, {"-16", "0", "16"});
}

// A state that a first test had left behind would be lost.
TEST(EcSuiteStates, OfOneTestAreNotSeenByTheNext) {
    for (int round = 0; round < 2; ++round) {
        for (const char* function : {"veksToneDetect_EC_16s", "veksSubbandAnalysis_32f32fc",
                                     "veksFullbandController_EC_32f", "veksSubbandController_EC_16s", "veksFIR_EC_32f",
                                     "veksSubbandControllerDT_EC_16s", "veksSubbandControllerDTUpdate_EC_16s"}) {
            EXPECT_EQ(krOk, runOnce(function).result) << function;
            EXPECT_EQ(krMallocFirst(nullptr, nullptr), nullptr) << function;
        }
    }
}
