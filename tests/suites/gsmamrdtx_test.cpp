// The grids of the DTX, open-loop, line spectrum and voice activity suites of AMR: every test's lines, first and last,
// and that each call succeeds on the suite's data without leaving memory behind.
#include "suite_data.h"
#include "suite_grid.h"

// The suite once more, under a name of its own: its state is in the library's memory, where no list tells of it.
namespace vad1 {
#pragma push_macro("VK_REG")
#undef VK_REG
#define VK_REG(test, name, call)                                                                                       \
    int callOnce() {                                                                                                   \
        return call;                                                                                                   \
    }
#include "p_vad1.cpp" // NOLINT(bugprone-suspicious-include)
#pragma pop_macro("VK_REG")
} // namespace vad1

namespace {

const GridCase gridCases[] = {
    {"veksDecDTXBuffer_GSMAMR_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_adtx", true, 10},
    {"veksEncDTXBuffer_GSMAMR_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_adtx", true, 10},
    {"veksEncDTXHandler_GSMAMR_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_adtx", false, 160},
    {"veksEncDTXSID_GSMAMR_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_adtx", true, 80},
    {"veksImpulseResponseTarget_GSMAMR_16s", 8, "BR_4750,-,-,-,-,-", "BR_12200,-,-,-,-,-", "p_olps", false, 363},
    {"veksOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s", 8, "BR_4750,-,-,-,-,-", "BR_12200,-,-,-,-,-", "p_olps", true, 363},
    {"veksOpenLoopPitchSearchDTXVAD1_GSMAMR_16s", 8, "BR_4750,-,-,-,-,-", "BR_12200,-,-,-,-,-", "p_olps", true, 363},
    {"veksOpenLoopPitchSearchNonDTX_GSMAMR_16s", 8, "BR_4750,-,-,-,-,-", "BR_12200,-,-,-,-,-", "p_olps", true, 363},
    {"veksQuantLSPDecode_GSMAMR_16s", 18, "BR_DTX,-,-,0,-,-", "BR_12200,-,-,1,-,-", "p_salpanls", false, 10},
    {"veksLSPQuant_GSMAMR_16s", 9, "BR_DTX,-,-,-,-,-", "BR_12200,-,-,-,-,-", "p_salpanls", false, 10},
    {"veksAutoCorr_GSMAMR_16s32s", 9, "BR_DTX,-,-,-,-,-", "BR_12200,-,-,-,-,-", "p_salpanls", false, 240},
    {"veksVAD1_GSMAMR_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_vad1", false, 200},
    {"veksVAD2_GSMAMR_16s", 1, "-,-,-,-,-,-", "-,-,-,-,-,-", "p_vad2", false, 160},
};

} // namespace

SUITE_GRIDS(AmrDtxSuites, gridCases)

TEST(AmrDtxSuiteNames, RatesAndBadFramesHaveTitlesAndLengthsHaveNone) {
    expectNameRows({
        {"veksQuantLSPDecode_GSMAMR_16s", "BitRate,-,-,Num bfi,-,-"},
        {"veksLSPQuant_GSMAMR_16s", "BitRate,-,-,-,-,-"},
        {"veksOpenLoopPitchSearchNonDTX_GSMAMR_16s", "BitRate,-,-,-,-,-"},
        {"veksVAD1_GSMAMR_16s", "-,-,-,-,-,-"},
        {"veksEncDTXSID_GSMAMR_16s", "-,-,-,-,-,-"},
    });
}

TEST(AmrDtxSuiteRates, FramesOfSilenceComeFirstInTheLineSpectrumSuite) {
    EXPECT_EQ(runOnce("veksLSPQuant_GSMAMR_16s").columns(3, 3),
              (std::vector<std::string>{"BR_DTX", "BR_4750", "BR_5150", "BR_5900", "BR_6700", "BR_7400", "BR_7950",
                                        "BR_10200", "BR_12200"}));
}

// Three sets of nine levels of noise, and the coefficient of a filter; all else begins at zero.
TEST(AmrVad1Data, StateBeginsWithItsLevels) {
    vad1::TimVAD1 suite(vad1::callOnce, nullptr, nullptr, nullptr, "veksVAD1_GSMAMR_16s", "p_vad1", "TimVAD1//VK_REG");
    SuiteLine line(suite);
    ASSERT_TRUE(line.ready());
    std::vector<Vek16s> words(vad1::stateSize / 2);
    std::memcpy(words.data(), vad1::pSrcDstVad1State, vad1::stateSize);
    std::vector<Vek16s> expected(words.size());
    std::fill_n(expected.begin() + 9, 27, Vek16s{150});
    expected.at(56) = 13106;
    EXPECT_EQ(words, expected);
    EXPECT_EQ(line.call(), 0);
}
