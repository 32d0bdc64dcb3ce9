// The bounds of the adaptive search, each met exactly and missed by little, and what goes before what in it.
#include "toolrun.h"

namespace {

// Clocks per call of the measurements in their order; the last one stays.
void script(std::vector<double> perCall) {
    s_clocks = [perCall = std::move(perCall)](int loops) {
        const size_t place = std::min(s_asked.size(), perCall.size()) - 1;
        return static_cast<long long>(perCall[place] * loops);
    };
}

TEST_F(KrToolRun, AccuracyOfTheBoundItselfIsAgreement) {
    tool.m_accuracy = 0.5;
    script({100, 60}); // 2 * 40 / 160
    EXPECT_EQ(run(loop), krOk);
    EXPECT_EQ(s_asked, (Loops{1, 4, 4, 4}));
    s_asked.clear();
    tool.m_accuracy = 0.499;
    EXPECT_EQ(run(loop), krOk);
    EXPECT_EQ(s_asked, (Loops{1, 4, 8}));
}

TEST_F(KrToolRun, OnePerCentItselfIsTrustedWithoutRepetition) {
    script({201, 199}); // 2 * 2 / 400
    EXPECT_EQ(run(loop), krOk);
    EXPECT_EQ(tool.m_actualAccuracy, 0.01);
    EXPECT_EQ(s_asked, (Loops{1, 4}));
    s_asked.clear();
    script({2011, 1989}); // 2 * 22 / 4000
    run(loop);
    EXPECT_EQ(s_asked, (Loops{1, 4, 4, 4}));
    s_asked.clear();
    script({20199, 20000}); // 2 * 199 / 40199
    run(loop);
    EXPECT_EQ(s_asked, (Loops{1, 4}));
}

TEST_F(KrToolRun, RepetitionWithinTheBoundItselfEndsTheSearchWell) {
    tool.m_accuracy = 0.5;
    script({110, 100, 50, 150}); // about the mean of 100
    EXPECT_EQ(run(loop), krOk);
    EXPECT_EQ(tool.m_actualAccuracy, 0.5);
    EXPECT_EQ(s_asked, (Loops{1, 4, 4, 4}));
    EXPECT_EQ(tool.m_funcClocks, 50);
    EXPECT_STREQ(tool.m_comment.c_str(), "nLps=4");
    EXPECT_STREQ(tool.m_resultStr.c_str(), "successfully");
}

TEST_F(KrToolRun, StopIsReachedByDoublingUpToItself) {
    tool.m_accuracy = 0;
    s_clocks = [](int loops) { return (s_asked.size() % 2 == 0 ? 200LL : 100LL) * loops; };
    tool.setMethodBest(1, 16, 10);
    run(loop);
    EXPECT_EQ(s_asked, (Loops{1, 4, 8, 16, 16, 16}));
    s_asked.clear();
    tool.setMethodBest(1, 15, 10);
    run(loop);
    EXPECT_EQ(s_asked, (Loops{1, 4, 8, 8, 8, 15, 15, 15})) << "the restart is held to the stop";
}

TEST_F(KrToolRun, BadAccuracyTakesNoPlaceOfAWorseResult) {
    s_clocks = [](int loops) { return (s_asked.size() % 2 == 0 ? 200LL : 100LL) * loops; };
    s_result = krFuncWrn;
    EXPECT_EQ(run(loop), krFuncWrn);
    EXPECT_STREQ(tool.m_resultStr.c_str(), "lib function warning");
    EXPECT_STREQ(tool.m_comment.c_str(), "nLps=2048 acc=50.0%");
}

TEST_F(KrToolRun, BadAccuracyOfTheFunctionItselfIsToldOnce) {
    s_clocks = [](int loops) { return (s_asked.size() % 2 == 0 ? 200LL : 100LL) * loops; };
    s_result = krAccurWrn;
    EXPECT_EQ(run(loop), krAccurWrn);
    EXPECT_STREQ(tool.m_resultStr.c_str(), "wrong measure accuracy");
}

TEST_F(KrToolRun, LoopFactorBelowZeroStartsAtMoreLoops) {
    tool.setLoopFactor(-2);
    EXPECT_EQ(run(loop), krOk);
    EXPECT_EQ(s_asked, (Loops{4, 16}));
    EXPECT_NE(text.find("        startLoops = 16\n        maxLoops   = 8192\n"), std::string::npos);
}

TEST_F(KrToolRun, LoopFactorAboveZeroLowersTheStopAlone) {
    tool.setLoopFactor(3);
    EXPECT_EQ(run(loop), krOk);
    EXPECT_EQ(s_asked, (Loops{1, 4}));
    EXPECT_NE(text.find("        startLoops = 4\n        maxLoops   = 256\n"), std::string::npos);
}

} // namespace
