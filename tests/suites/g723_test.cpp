// The grids of the suites of G.723.1: every test's lines, first and last, and that each call succeeds on the suite's
// data without leaving memory behind; and the data themselves.
#include "suite_data.h"
#include "suite_grid.h"

namespace {

const GridCase gridCases[] = {
    {"veksMPMLQFixedCodebookSearch_G723", 4, "0,BR_6300,-,-,-,-", "3,BR_6300,-,-,-,-", "p_adap2", false, 60},
    {"veksAdaptiveCodebookSearch_G723", 8, "0,BR_6300,-,-,-,-", "3,BR_5300,-,-,-,-", "p_adap2", false, 60},
    {"veksGainControl_G723_16s_I", 1, "60,-,-,-,-,-", "60,-,-,-,-,-", "p_agctrl2", true, 60},
    {"veksHarmonicSearch_G723_16s", 1, "208,60,-,-,-,-", "208,60,-,-,-,-", "p_cdbk2", false, 60},
    {"veksOpenLoopPitchSearch_G723_16s", 1, "265,120,-,-,-,-", "265,120,-,-,-,-", "p_cdbk2", false, 120},
    {"veksToeplizMatrix_G723_16s", 1, "60,416,-,-,-,-", "60,416,-,-,-,-", "p_cdbk2", false, 416},
    {"veksToeplizMatrix_G723_16s32s", 1, "60,416,-,-,-,-", "60,416,-,-,-,-", "p_cdbk2", false, 416},
    {"veksTiltCompensation_G723_32s16s", 1, "62,-,-,-,-,-", "62,-,-,-,-,-", "p_filt2", false, 62},
    {"veksHighPassFilter_G723_16s", 1, "241,-,-,-,-,-", "241,-,-,-,-,-", "p_filt2", false, 241},
    {"veksHarmonicNoiseSubtract_G723_16s_I", 6, "10,-,-,-,-,-", "60,-,-,-,-,-", "p_filt2", true, 60},
    {"veksPitchPostFilter_G723_16s", 8, "0,BR_5300,-,-,-,-", "3,BR_6300,-,-,-,-", "p_filtpitch", false, 40},
    {"veksACELPFixedCodebookSearch_G723_16s", 1, "64,-,-,-,-,-", "64,-,-,-,-,-", "p_fixcod723", false, 64},
    {"veksACELPFixedCodebookSearch_G723_32s16s", 1, "64,-,-,-,-,-", "64,-,-,-,-,-", "p_fixcod723", false, 64},
    {"veksLSFToLPC_G723_16s_I", 1, "1,-,-,-,-,-", "1,-,-,-,-,-", "p_lpcnv2", true, 12},
    {"veksLSFDecode_G723_16s", 2, "0,-,-,-,-,-", "1,-,-,-,-,-", "p_lpcnv2", false, 12},
    {"veksLevinsonDurbin_G723_16s", 1, "10,-,-,-,-,-", "10,-,-,-,-,-", "p_lpld2", true, 10},
    {"veksLSFQuant_G723_16s32s", 1, "10,-,-,-,-,-", "10,-,-,-,-,-", "p_lsf723", false, 10},
    {"veksLSFToLPC_G723_16s", 1, "10,-,-,-,-,-", "10,-,-,-,-,-", "p_lsf723", false, 10},
    {"veksLPCToLSF_G723_16s", 1, "10,-,-,-,-,-", "10,-,-,-,-,-", "p_lsf723", false, 10},
    {"veksGainQuant_G723_16s", 1, "60,6,-,-,-,-", "60,6,-,-,-,-", "p_quant723", false, 60},
    {"veksDecodeAdaptiveVector_G723_16s", 2, "BR_6300,-,-,-,-,-", "BR_5300,-,-,-,-,-", "p_sag723", false, 60},
    {"veksAutoCorr_G723_16s", 2, "BR_6300,-,-,-,-,-", "BR_5300,-,-,-,-,-", "p_sag723", false, 180},
    {"veksSynthesisFilter_G723_16s", 1, "60,10,-,-,-,-", "60,10,-,-,-,-", "p_sinfilt2", false, 60},
    {"veksSynthesisFilter_G723_16s32s", 1, "60,10,-,-,-,-", "60,10,-,-,-,-", "p_sinfilt2", false, 60},
};

} // namespace

SUITE_GRIDS(G723Suites, gridCases)

TEST(G723SuiteNames, StandInTheColumnsOfTheirValues) {
    expectNameRows({
        {"veksAdaptiveCodebookSearch_G723", "subFrame,BitRate,-,-,-,-"},
        {"veksPitchPostFilter_G723_16s", "SubFrame,BitRate,-,-,-,-"},
        {"veksLSFDecode_G723_16s", "Erase,-,-,-,-,-"},
        {"veksLevinsonDurbin_G723_16s", "Lenght,-,-,-,-,-"},
        {"veksGainQuant_G723_16s", "lenght,lenght DST,-,-,-,-"},
        {"veksSynthesisFilter_G723_16s", "lenght,lenght LPC,-,-,-,-"},
        {"veksTiltCompensation_G723_32s16s", "lenght,-,-,-,-,-"},
    });
}

TEST(G723SuiteNames, BothLengthsOfTheSearchesAreNamedForTheSource) {
    EXPECT_EQ(nameRow("veksToeplizMatrix_G723_16s"), "lenght SRC,lenght SRC,-,-,-,-");
}

TEST(G723SuiteNames, TheSubframeOfTheAdaptiveVectorHasNoTitleAndDoesNotShow) {
    EXPECT_EQ(nameRow("veksDecodeAdaptiveVector_G723_16s"), "BitRate,-,-,-,-,-");
}

// --- what a user may ask for ---

TEST(G723SuiteUser, MayAskForTheRatesOfTheCodecOnly) {
    const struct {
        const char* function;
        std::size_t all;
        std::size_t ofOneRate;
    } rows[] = {
        {"veksAdaptiveCodebookSearch_G723", 8, 4}, {"veksMPMLQFixedCodebookSearch_G723", 4, 4},
        {"veksPitchPostFilter_G723_16s", 8, 4},    {"veksDecodeAdaptiveVector_G723_16s", 2, 1},
        {"veksAutoCorr_G723_16s", 2, 1},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(runOnce(row.function, {"BitRate=BR_5300"}).lines.size(), row.ofOneRate) << row.function;
        EXPECT_EQ(runOnce(row.function, {"BitRate=BR_12200"}).lines.size(), row.all) << row.function;
    }
}

// --- what the calls are given ---

namespace {

using Values = std::vector<double>;

Values firstOf(const Values& values, int count) {
    return {values.begin(), values.begin() + count};
}

// Before each call `data` is this input, and the call overwrites it.
void expectRestored(SuiteLine& line, int data, const Values& input) {
    line.restore();
    EXPECT_EQ(line.values(data), input);
    EXPECT_EQ(line.call(), 0);
    EXPECT_NE(line.values(data), input);
    line.restore();
    EXPECT_EQ(line.values(data), input);
}

} // namespace

TEST(G723SuiteData, ErrorsOfTheAdaptiveSearchAreFiveFrom4To300) {
    SuiteLine line("veksAdaptiveCodebookSearch_G723");
    ASSERT_TRUE(line.ready());
    EXPECT_EQ(line.lengths(), (std::vector<int>{60, 60, 148, 5, 60, 60}));
    EXPECT_EQ(line.vector(3).size(), 20);
    const Values errors = line.values(3);
    EXPECT_GE(*std::min_element(errors.begin(), errors.end()), 4);
    EXPECT_LE(*std::max_element(errors.begin(), errors.end()), 300);
    EXPECT_NE(errors, Values(5, errors[0]));
    expectRandom(line.values(0), -2048, 2048);
    expectRandom(line.values(2), -4096, 4096);
    expectRandom(line.values(4), -2048, 2048);
}

TEST(G723SuiteData, TheResponseOfTheSearchesBeginsWithItsLargestValue) {
    for (const char* function : {"veksAdaptiveCodebookSearch_G723", "veksMPMLQFixedCodebookSearch_G723"}) {
        SuiteLine line(function);
        ASSERT_TRUE(line.ready());
        Values response = line.values(1);
        EXPECT_EQ(response[0], 8192);
        response.erase(response.begin());
        expectRandom(response, -4096, 4096);
    }
}

// The error that comes out would be the next call's energy, and the recursion would break off.
TEST(G723SuiteData, RecursionDoesTheSameWorkInEachCall) {
    SuiteLine line("veksLevinsonDurbin_G723_16s");
    ASSERT_TRUE(line.ready());
    line.restore();
    ASSERT_EQ(line.call(), 0);
    const Values first = line.values(1);
    for (int call = 0; call < 8; ++call) {
        line.restore();
        ASSERT_EQ(line.call(), 0);
    }
    EXPECT_EQ(line.values(1), first);
    EXPECT_EQ(std::count(first.begin(), first.end(), 0.0), 0);
}

TEST(G723SuiteData, GainControlBeginsEachCallWithItsWholeInput) {
    SuiteLine line("veksGainControl_G723_16s_I");
    ASSERT_TRUE(line.ready());
    const Values input = line.values(1);
    expectRandom(input, -32768, 32767);
    EXPECT_EQ(line.values(0), Values(60, 0));
    expectRestored(line, 0, input);
}

TEST(G723SuiteData, HarmonicNoiseBeginsEachCallWithItsWholeInput) {
    SuiteLine line("veksHarmonicNoiseSubtract_G723_16s_I");
    ASSERT_TRUE(line.ready());
    const Values input = line.values(0);
    EXPECT_EQ(line.vector(1).size(), 770);
    expectRandom(line.values(2), -8192, 8192);
    expectRestored(line, 1, input);
}

TEST(G723SuiteData, TiltCompensationWritesWordsOf16Bits) {
    SuiteLine line("veksTiltCompensation_G723_32s16s");
    ASSERT_TRUE(line.ready());
    EXPECT_EQ(line.vector(0).size(), 62 * 4);
    expectRandom(line.values(0), -16384, 16384);
    EXPECT_EQ(line.vector(1).size(), 62 * 2);
    EXPECT_EQ(line.values(1), Values(62, 0));
}

TEST(G723SuiteData, FrequenciesToConvertAreElevenWords) {
    SuiteLine line("veksLSFToLPC_G723_16s_I");
    ASSERT_TRUE(line.ready());
    const Values lsf = {3244, 4648, 7441, 11200, 13758, 16670, 19822, 22012, 25916, 27949, -13108};
    EXPECT_EQ(firstOf(line.values(1), 11), lsf);
    EXPECT_EQ(firstOf(line.values(2), 10), (Values{4143, 733, 14, -39, -29, -61, -903, -6692, 4084, 428}));
    EXPECT_EQ(line.values(5), Values(20, 16384));
    EXPECT_EQ(firstOf(line.values(6), 11), lsf);
    line.restore();
    EXPECT_EQ(line.values(3), line.values(1));
}

TEST(G723SuiteData, RecursionHasOneStrongLag) {
    SuiteLine line("veksLevinsonDurbin_G723_16s");
    ASSERT_TRUE(line.ready());
    EXPECT_EQ(line.values(0), (Values{16384, 1024, 1024, 1024, 1024, 1024, 1024, 1024, 1024, 1024}));
}

TEST(G723SuiteData, FrequenciesToQuantiseAreTenWords) {
    SuiteLine line("veksLSFQuant_G723_16s32s");
    ASSERT_TRUE(line.ready());
    EXPECT_EQ(line.values(4), (Values{3244, 4648, 7441, 11200, 13758, 16670, 19822, 22012, 25916, 27949}));
    for (const int other : {2, 3}) {
        const Values values = line.values(other);
        const auto [least, most] = std::minmax_element(values.begin(), values.end());
        EXPECT_GE(*least, -2048);
        EXPECT_LT(*least, 0);
        EXPECT_GT(*most, 0);
        EXPECT_LE(*most, 2048);
    }
}

TEST(G723SuiteData, SynthesisHasElevenCoefficients) {
    for (const char* function : {"veksSynthesisFilter_G723_16s", "veksSynthesisFilter_G723_16s32s"}) {
        SuiteLine line(function);
        ASSERT_TRUE(line.ready());
        EXPECT_EQ(line.values(0), (Values{4096, -1315, 1099, -527, 427, -135, 97, -33, 17, -4, 2}));
        EXPECT_EQ(line.values(1), Values(60, 4));
        EXPECT_EQ(line.values(2), Values(60, 4));
        EXPECT_EQ(line.values(3), Values(10, 1));
        EXPECT_EQ(line.values(4), Values(60, 4));
    }
}

TEST(G723SuiteData, InputsAreRandomWithinTheirRanges) {
    const struct {
        const char* function;
        int vector;
        std::size_t length;
        double lo;
        double hi;
    } rows[] = {
        {"veksHarmonicSearch_G723_16s", 0, 208, -32768, 32767},
        {"veksOpenLoopPitchSearch_G723_16s", 0, 265, -32768, 32767},
        {"veksHighPassFilter_G723_16s", 0, 241, -16384, 16384},
        {"veksPitchPostFilter_G723_16s", 0, 385, -2048, 2048},
        {"veksACELPFixedCodebookSearch_G723_16s", 0, 416, 0, 4096},
        {"veksACELPFixedCodebookSearch_G723_32s16s", 0, 416, 0, 4096},
        {"veksGainQuant_G723_16s", 0, 60, -8192, 8192},
        {"veksGainQuant_G723_16s", 1, 60, -8192, 8192},
        {"veksAutoCorr_G723_16s", 0, 180, -2048, 2048},
        {"veksDecodeAdaptiveVector_G723_16s", 2, 148, -2048, 2048},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.function);
        SuiteLine line(row.function);
        ASSERT_TRUE(line.ready());
        EXPECT_EQ(line.values(row.vector).size(), row.length);
        expectRandom(line.values(row.vector), row.lo, row.hi);
    }
}

TEST(G723SuiteData, MatrixIsMadeOfZerosAndSearchedWithoutCorrelations) {
    for (const auto& [function, bytes] :
         {std::pair{"veksToeplizMatrix_G723_16s", 832}, {"veksToeplizMatrix_G723_16s32s", 1664}}) {
        SuiteLine line(function);
        ASSERT_TRUE(line.ready());
        EXPECT_EQ(line.values(0), Values(60, 0));
        EXPECT_EQ(line.vector(1).size(), bytes);
    }
    for (const auto& [function, bytes] : {std::pair{"veksACELPFixedCodebookSearch_G723_16s", 832},
                                          {"veksACELPFixedCodebookSearch_G723_32s16s", 1664}}) {
        SuiteLine line(function);
        ASSERT_TRUE(line.ready());
        EXPECT_EQ(line.vector(0).size(), bytes);
        EXPECT_EQ(line.values(2), Values(64, 0));
        ASSERT_EQ(line.values(3).size(), 1U);
        EXPECT_GE(line.values(3)[0], 0);
        EXPECT_LE(line.values(3)[0], 128);
    }
}
