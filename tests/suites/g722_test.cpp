// The grids of the G.722 suites: every test's lines, first and last, and that each call succeeds on the suite's data
// without leaving memory behind; and the data themselves.
#include "suite_data.h"
#include "suite_grid.h"

namespace {

using Values = std::vector<double>;

const GridCase gridCases[] = {
    {"veksDownsampleFilter_G722_16s", 4, "80,-,-,-,-,-", "320,-,-,-,-,-", "p_g722sb", false, 320},
    {"veksFilterHighband_G722_16s_I", 4, "80,-,-,-,-,-", "320,-,-,-,-,-", "p_g722sb", false, 320},
    {"veksClassifyFrame_G722_16s_I", 2, "80,-,-,-,-,-", "143,-,-,-,-,-", "p_g722sb", false, 143},
    {"veksQMFDecode_G722_16s", 4, "80,-,-,-,-,-", "320,-,-,-,-,-", "p_g722sb", false, 320},
    {"veksSBADPCMDecode_G722_16s", 12, "80,1,-,-,-,-", "320,3,-,-,-,-", "p_g722sb", false, 320},
    {"veksQMFEncode_G722_16s", 4, "80,-,-,-,-,-", "320,-,-,-,-,-", "p_g722sb", false, 320},
    {"veksSBADPCMEncode_G722_16s", 4, "80,-,-,-,-,-", "320,-,-,-,-,-", "p_g722sb", false, 320},
    {"veksHuffmanEncode_G722_16s32u", 3, "0,-,-,-,-,-", "2,-,-,-,-,-", "p_huffenc", false, 20},
};

} // namespace

SUITE_GRIDS(G722Suites, gridCases)

TEST(G722SuiteNames, StandInTheColumnsOfTheirValues) {
    expectNameRows({
        {"veksClassifyFrame_G722_16s_I", "valDelay,-,-,-,-,-"},
        {"veksSBADPCMDecode_G722_16s", "len,mode,-,-,-,-"},
        {"veksHuffmanEncode_G722_16s32u", "modeCount,-,-,-,-,-"},
    });
}

TEST(G722SuiteData, InputsAreOnes) {
    for (const auto& [function, length] : {std::pair{"veksDownsampleFilter_G722_16s", 90},
                                           {"veksFilterHighband_G722_16s_I", 80},
                                           {"veksClassifyFrame_G722_16s_I", 88},
                                           {"veksQMFDecode_G722_16s", 80},
                                           {"veksSBADPCMDecode_G722_16s", 80},
                                           {"veksQMFEncode_G722_16s", 80},
                                           {"veksSBADPCMEncode_G722_16s", 80}}) {
        SuiteLine line(function);
        ASSERT_TRUE(line.ready());
        EXPECT_EQ(line.values(0), Values(static_cast<std::size_t>(length), 1)) << function;
    }
}

TEST(G722SuiteData, EachLineOfTheEntropyCoderHasItsOwnRegion) {
    SuiteLine line("veksHuffmanEncode_G722_16s32u");
    for (const Values& first : {Values{48, -91, 17}, {-19, 31, 8}, {4, -7, 1}}) {
        ASSERT_TRUE(line.ready());
        const Values region = line.values(0);
        ASSERT_EQ(region.size(), 20U);
        EXPECT_EQ(Values(region.begin(), region.begin() + 3), first);
        line.next();
    }
    EXPECT_FALSE(line.ready());
}

TEST(G722SuiteData, AUsersLineOutsideTheRegionsHasNone) {
    EXPECT_TRUE(SuiteLine("veksHuffmanEncode_G722_16s32u", 0, {"modeCount=2"}).ready());
    EXPECT_FALSE(SuiteLine("veksHuffmanEncode_G722_16s32u", 0, {"modeCount=3"}).ready());
    EXPECT_FALSE(SuiteLine("veksHuffmanEncode_G722_16s32u", 0, {"modeCount=-1"}).ready());
}

TEST(G722SuiteDivisors, TimePerElementOfTheEntropyCoderIsThatOfACall) {
    auto* test = dynamic_cast<prTest*>(findTest("veksHuffmanEncode_G722_16s32u"));
    ASSERT_NE(test, nullptr);
    EXPECT_EQ(test->getDivisor_el(), 1.0);
    EXPECT_EQ(test->getDivisor(), 20.0);
}
