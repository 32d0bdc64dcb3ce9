// What the suites share: the list of hot functions, and the class that is built with no function to measure.
#include "suite_data.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <numeric>

// The suite once more, under a name of its own, so that a test can hand it a function.
namespace unmeasured {
#include "p_math2.cpp" // NOLINT(bugprone-suspicious-include)
}

namespace {

TEST(HotList, HoldsTheTwentySevenFunctionsInTheirOrder) {
    const char* const expected[] = {
        "veksACELPFixedCodebookSearch_G723_32s16s",
        "veksAdaptiveCodebookSearch_G723",
        "veksAdaptiveCodebookSearch_GSMAMR_16s",
        "veksAlgebraicCodebookSearch_GSMAMR_16s",
        "veksAutoCorr_GSMAMR_16s32s",
        "veksAutoCorr_NormE_16s32s",
        "veksAutoCorrLagMax_Inv_16s",
        "veksFixedCodebookSearch_G729_16s",
        "veksFixedCodebookSearch_G729_32s16s",
        "veksFixedCodebookSearch_G729D_16s",
        "veksFixedCodebookSearch_G729E_16s",
        "veksGainQuant_G723_16s",
        "veksHarmonicSearch_G723_16s",
        "veksHighPassFilter_G729_16s_ISfs",
        "veksIIR16s_G723_16s32s",
        "veksIIR16s_G729_16s",
        "veksLongTermPostFilter_G729_16s",
        "veksLPCToLSP_G729_16s",
        "veksLPCToLSP_G729A_16s",
        "veksLPCToLSP_GSMAMR_16s",
        "veksLSFQuant_G723_16s32s",
        "veksOpenLoopPitchSearch_G723_16s",
        "veksOpenLoopPitchSearchDTXVAD1_GSMAMR_16s",
        "veksOpenLoopPitchSearchDTXVAD2_GSMAMR_16s32s",
        "veksOpenLoopPitchSearchNonDTX_GSMAMR_16s",
        "veksPitchPostFilter_G723_16s",
        "veksSynthesisFilter_NR_16s_ISfs",
    };
    ASSERT_NE(g_pHotList, nullptr);
    std::vector<std::string> names;
    for (const krString& name : *g_pHotList) {
        names.emplace_back(name.c_str());
    }
    EXPECT_EQ(names, std::vector<std::string>(std::begin(expected), std::end(expected)));
}

int callNothing() {
    return 0;
}

krResult loopNothing(int calls, long long* clocks) {
    *clocks = 1000LL * calls;
    return krOk;
}

// What a suite restores before a call it restores to the end: the rest would go on from call to call.
TEST(EverySuite, RestoresAVectorWholeOrNotAtAll) {
    for (krTest* test : *pTestList) {
        if (test->m_funcInit == nullptr) {
            continue;
        }
        SuiteLine line(*test);
        for (const SuiteBlock& block : line.blocks()) {
            const auto* vector = dynamic_cast<vkVector*>(block.owner);
            if (vector == nullptr || dynamic_cast<const vkrMatrice*>(vector) != nullptr) {
                continue;
            }
            line.restore();
            auto* const bytes = static_cast<unsigned char*>(vector->data());
            const std::vector<unsigned char> before(bytes, bytes + vector->objectSize());
            std::transform(before.begin(), before.end(), bytes, [](unsigned char byte) { return ~byte; });
            line.restore();
            const auto restored = std::inner_product(before.begin(), before.end(), bytes, std::size_t{0}, std::plus<>(),
                                                     std::equal_to<>());
            EXPECT_TRUE(restored == 0 || restored == before.size())
                << test->m_name.c_str() << ": " << restored << " of " << before.size();
            std::copy(before.begin(), before.end(), bytes);
        }
    }
}

// A run counts a call that warns as a success: a short cut with a warning would be measured in place of the work.
TEST(EverySuite, CallsAgainAndAgainWithoutAWarningOnEachLineOfItsGrid) {
    for (krTest* test : *pTestList) {
        SuiteLine line(*test);
        EXPECT_TRUE(line.ready()) << test->m_name.c_str();
        for (int index = 0; line.ready(); ++index) {
            for (int call = 0; call < 4; ++call) {
                line.restore();
                EXPECT_EQ(line.call(), 0) << test->m_name.c_str() << ' ' << index << ' ' << call;
            }
            line.next();
        }
    }
}

class TwoVectors : public vkcTest {
public:
    using vkcTest::vkcTest;

    bool canStart() override {
        initVectors({&m_words}, vk32s);
        initVectors({&m_samples}, vkArg::src);
        return true;
    }

    bool makeData() override {
        m_made += m_samples.type() == vk16s && m_words.type() == vk32s ? 1 : 0;
        return m_words.createVector(4, setOne, 0, 0) && m_samples.createVector(4, setOne, 0, 0);
    }

    double getDivisor() override { return 4; }

    vkVector m_words;
    vkVector m_samples;
    int m_made = 0;
};

TEST(SuiteBase, DeletesTheVectorsOfALineInEachRun) {
    TwoVectors suite(callNothing, nullptr, loopNothing, nullptr, "veksFoo_16s", "p_foo", "TwoVectors//VK_REG");
    for (int run = 1; run <= 2; ++run) {
        krResult result = krUndefined;
        EXPECT_EQ(runOnce(suite, result).size(), 1U);
        EXPECT_EQ(result, krOk);
        EXPECT_EQ(suite.m_made, run);
        EXPECT_EQ(krMallocFirst(nullptr, nullptr), nullptr);
    }
}

TEST(UnmeasuredSuite, IsAWholeSuiteWithNoTest) {
    for (const krTest* test : *pTestList) {
        EXPECT_NE(test->m_info.m_class, "TimMath2");
    }
    unmeasured::TimMath2 suite(callNothing, nullptr, loopNothing, nullptr, "veksFoo_16s", "p_math2",
                               "TimMath2//VK_REG");
    krResult result = krUndefined;
    const std::vector<std::string> lines = runOnce(suite, result);
    EXPECT_EQ(result, krOk);
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_EQ(cells(lines.front(), 3, 5), "200,10,-");
    EXPECT_EQ(cells(lines.back(), 3, 5), "200,60,-");
    EXPECT_EQ(cells(lines.back(), 11, 11), "e");
    const double perElement = std::atof(cells(lines.back(), 10, 10).c_str());
    EXPECT_NEAR(suite.m_tool.m_funcClocks / perElement, 60, 1);
    EXPECT_EQ(krMallocFirst(nullptr, nullptr), nullptr);
}

} // namespace
