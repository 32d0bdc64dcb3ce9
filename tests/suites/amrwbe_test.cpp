// The grids of the suites of the extended wide-band codec: every test's lines, first and last, and that each call
// succeeds on the suite's data without leaving memory behind.
#include "suite_grid.h"

namespace {

const GridCase gridCases[] = {
    {"veksFFTInv_PermToR_AMRWBE_16s", 6, "48,-,-,-,-,-", "1152,-,-,-,-,-", "p_wbefft", false, 1152},
    {"veksFFTFwd_RToPerm_AMRWBE_16s", 6, "48,-,-,-,-,-", "1152,-,-,-,-,-", "p_wbefft", false, 1152},
    {"veksSNR_AMRWBE_16s", 7, "0,-,-,-,-,-", "6,-,-,-,-,-", "p_wbemisc", false, 160},
    {"veksGainQuantTCX_AMRWBE_16s", 12, "0,0,-,-,-,-", "1,5,-,-,-,-", "p_wbemisc", false, 1152},
    {"veksGainDecodeTCX_AMRWBE_16s", 6, "0,-,-,-,-,-", "5,-,-,-,-,-", "p_wbemisc", false, 1152},
    {"veksISFQuantHighBand_AMRWBE_16s", 2, "0,-,-,-,-,-", "1,-,-,-,-,-", "p_wbemisc", false, 8},
    {"veksISFQuantDecodeHighBand_AMRWBE_16s", 4, "0,0,-,-,-,-", "1,1,-,-,-,-", "p_wbemisc", false, 8},
    {"veksFIRGenMidBand_AMRWBE_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_wbefilt", false, 256},
    {"veksPostFilterLowBand_AMRWBE_16s", 24, "128,17,0,-,-,-", "8192,117,1,-,-,-", "p_wbefilt", true, 1024},
    {"veksQuantTCX_AMRWBE_16s", 18, "0,-,-,-,-,-", "17,-,-,-,-,-", "p_wbemux", false, 1152},
    {"veksDecodeDemux_AMRWBE_16s", 18, "0,-,-,-,-,-", "17,-,-,-,-,-", "p_wbemux", false, 1152},
    {"veksBandJoin_AMRWBE_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_wberes", false, 1024},
    {"veksBandSplit_AMRWBE_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_wberes", false, 1024},
    {"veksDownsample_AMRWBE_16s", 6, "0,0,-,-,-,-", "1,2,-,-,-,-", "p_wberes", false, 1920},
    {"veksUpsample_AMRWBE_16s", 16, "0,0,0,-,-,-", "1,3,1,-,-,-", "p_wberes", false, 1920},
    {"veksBandSplitDownsample_AMRWBE_16s", 26, "1,3528,-,-,-,-", "13,3840,-,-,-,-", "p_wberes", false, 7680},
    {"veksBandJoinUpsample_AMRWBE_16s", 26, "1,3528,-,-,-,-", "13,3840,-,-,-,-", "p_wberes", false, 7680},
};

// The two tests of one function, by what their rows tell.
krTest* testOfMode(const char* mode) {
    for (krTest* test : *pTestList) {
        if (test->m_name == "veksResamplePolyphase_AMRWBE_16s" && test->m_info.m_mode == mode) {
            return test;
        }
    }
    return nullptr;
}

void expectMode(const char* mode, const char* className, const std::vector<std::string>& lastColumns, int lines) {
    krTest* test = testOfMode(mode);
    ASSERT_NE(test, nullptr);
    EXPECT_EQ(test->m_info.m_class, className);
    EXPECT_EQ(test->m_info.m_macro, "VK_REG");
    EXPECT_EQ(test->m_srcName, "p_wberes");
    krResult result = krUndefined;
    const std::vector<std::string> rows = runOnce(*test, result);
    EXPECT_EQ(result, krOk);
    ASSERT_EQ(static_cast<int>(rows.size()), lines);
    EXPECT_EQ(cells(rows.front(), 3, 8), lastColumns[0]);
    EXPECT_EQ(cells(rows.back(), 3, 8), lastColumns[1]);
    const double perElement = std::atof(cells(rows.back(), 10, 10).c_str());
    EXPECT_NEAR(test->m_tool.m_funcClocks / perElement, 1764, 36);
    EXPECT_EQ(krMallocFirst(nullptr, nullptr), nullptr);
}

} // namespace

SUITE_GRIDS(AmrWbeSuites, gridCases)

TEST(AmrWbeSuiteNames, StandInTheColumnsOfTheirValues) {
    expectNameRows({
        {"veksFFTInv_PermToR_AMRWBE_16s", "length,-,-,-,-,-"},
        {"veksSNR_AMRWBE_16s", "LengthCounter,-,-,-,-,-"},
        {"veksGainQuantTCX_AMRWBE_16s", "quantFlag,LengthCounter,-,-,-,-"},
        {"veksISFQuantHighBand_AMRWBE_16s", "pitchAdjust,-,-,-,-,-"},
        {"veksISFQuantDecodeHighBand_AMRWBE_16s", "bfi,pitchAdjust,-,-,-,-"},
        {"veksPostFilterLowBand_AMRWBE_16s", "itRangeData,itLags,itPitchAdjust,-,-,-"},
        {"veksQuantTCX_AMRWBE_16s", "ModeCounter,-,-,-,-,-"},
        {"veksDecodeDemux_AMRWBE_16s", "ModeCounter,-,-,-,-,-"},
        {"veksDownsample_AMRWBE_16s", "bandIdx,cntLen,-,-,-,-"},
        {"veksUpsample_AMRWBE_16s", "bandIdx,cntLen,addFlag,-,-,-"},
        {"veksBandSplitDownsample_AMRWBE_16s", "cntFS,length,-,-,-,-"},
        {"veksBandJoinUpsample_AMRWBE_16s", "cntFS,length,-,-,-,-"},
    });
}

TEST(AmrWbePolyphaseSuites, MeasureOneFunctionInTwoModesAndTellWhich) {
    expectMode("oversampling mode", "krPolyResample_Over_wbe", {"0,(oversamp),-,-,-,-", "5,(oversamp),-,-,-,-"}, 6);
    expectMode("decimating mode", "krPolyResample_Decim_wbe", {"0,1,(decimate),-,-,-", "5,13,(decimate),-,-,-"}, 78);
}

TEST(AmrWbePolyphaseSuites, NameTheirParametersAlone) {
    for (const auto& [mode, names] :
         {std::pair("oversampling mode", "cntFact,-,-,-,-,-"), std::pair("decimating mode", "cntFact,cntFS,-,-,-,-")}) {
        krTest* test = testOfMode(mode);
        ASSERT_NE(test, nullptr);
        EXPECT_EQ(nameRow(*test), names);
    }
}

TEST(AmrWbeSuiteUser, AModeThatTheExtensionHasNotIsADataError) {
    for (const char* function : {"veksQuantTCX_AMRWBE_16s", "veksDecodeDemux_AMRWBE_16s"}) {
        EXPECT_EQ(runOnce(function, {"ModeCounter=18"}).result, krDataFail) << function;
    }
}
