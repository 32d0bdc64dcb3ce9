// The data that the suites of AMR-WB hand to their calls: sizes and fills, what is restored before a call, and the
// arguments that no column of the table shows.
#include "suite_data.h"

namespace {

using Values = std::vector<double>;
using Lengths = std::vector<int>;

TEST(AmrWbCodebookData, TheResponseIsRestoredFromItsCopyBeforeEachSearch) {
    SuiteLine line("veksAlgebraicCodebookSearch_AMRWB_16s");
    ASSERT_TRUE(line.ready());
    EXPECT_EQ(line.lengths(), (Lengths{8, 64, 64, 64, 64, 64, 64, 64, 4}));
    EXPECT_EQ(line.values(4), Values(64, 0));
    line.restore();
    EXPECT_EQ(line.values(4)[0], 4096);
    EXPECT_EQ(line.values(4), line.values(5));
    EXPECT_EQ(line.call(), 0);
    EXPECT_NE(line.values(6), Values(64, 0));
}

TEST(AmrWbCodebookData, TheAdaptiveBookHasAHistoryOf505AndLagsOfTheCodec) {
    for (const char* function : {"veksAdaptiveCodebookDecode_AMRWB_16s", "veksAdaptiveCodebookSearch_AMRWB_16s"}) {
        SuiteLine line(function);
        ASSERT_TRUE(line.ready());
        Lengths lengths = line.lengths();
        lengths.pop_back(); // The state's.
        EXPECT_EQ(lengths, (Lengths{505, 2, 64, 64, 2, 2, 2, 1}));
        for (const int index : {0, 2, 3}) {
            expectRandom(line.values(index), -4096, 4096);
        }
        for (const int index : {4, 6}) {
            for (const double lag : line.values(index)) {
                EXPECT_GE(lag, 17);
                EXPECT_LE(lag, 115);
            }
        }
    }
}

TEST(AmrWbFilterData, IsConstantAndHoldsTheSamplesBeforeTheFirst) {
    SuiteLine line("veksResidualFilter_AMRWB_16s_Sfs");
    ASSERT_TRUE(line.ready());
    EXPECT_EQ(line.lengths(), (Lengths{32, 32, 32, 9, 73, 64}));
    EXPECT_EQ(line.values(3), Values(9, 4000));
    EXPECT_EQ(line.values(4), Values(73, 4000));
    EXPECT_EQ(line.values(5), Values(64, 0));
    EXPECT_EQ(line.values(0), Values(32, 4000));
    EXPECT_EQ(line.values(1), Values(32, 4000));
}

TEST(AmrWbEmphasisData, PreemphasisDoublesTheLevel) {
    SuiteLine line("veksPreemphasize_AMRWB_16s_ISfs");
    ASSERT_TRUE(line.ready());
    EXPECT_EQ(line.lengths(), (Lengths{32, 32, 32, 1}));
    line.vector(1).setConst(1000, 0);
    line.vector(3).setConst(0, 0);
    EXPECT_EQ(line.call(), 0);
    EXPECT_EQ(line.values(1)[0], 2000);
    EXPECT_EQ(line.values(1)[1], 640);
    EXPECT_EQ(line.values(3), Values(1, 1000));
}

TEST(AmrWbGainData, FixedVectorsOfTheExtendedCodecAreAQuarterAsLoud) {
    for (const auto& [function, loud] :
         {std::pair{"veksGainQuant_AMRWB_16s", 4096}, {"veksGainQuant_AMRWBE_16s", 1024}}) {
        SuiteLine line(function);
        ASSERT_TRUE(line.ready());
        EXPECT_EQ(line.lengths(), (Lengths{64, 64, 64, 64, 4, 4, 1, 1, 1}));
        for (const int index : {0, 1}) {
            expectRandom(line.values(index), -4096, 4096);
        }
        for (const int index : {2, 3}) {
            expectRandom(line.values(index), -loud, loud);
        }
    }
}

TEST(AmrWbHighPassData, IsAsLongAsTheFunctionsOwnLengthByWhichItIsDivided) {
    for (const auto& [function, lines] : {std::pair{"veksHighPassFilter_Direct_AMRWB_16s", 32},
                                          {"veksHighPassFilter_AMRWB_16s_ISfs", 16},
                                          {"veksHighPassFilter_AMRWB_16s_Sfs", 16}}) {
        SuiteLine line(function, lines - 1);
        ASSERT_TRUE(line.ready()) << function;
        EXPECT_EQ(line.test().getDivisor(), 256) << function;
        EXPECT_EQ(line.lengths()[0], 256) << function;
        EXPECT_FALSE(line.next()) << function;
    }
}

TEST(AmrWbHighPassData, TheMemoryIsBroughtToRestForEachLine) {
    for (const char* function : {"veksHighPassFilter_AMRWB_16s_ISfs", "veksHighPassFilter_AMRWB_16s_Sfs"}) {
        int size = 0;
        ASSERT_EQ(veksHighPassFilterGetSize_AMRWB_16s(&size), 0);
        SuiteLine line(function);
        for (int round = 0; round < 8; ++round) {
            ASSERT_TRUE(line.ready());
            const SuiteBlock memory = line.plain().back();
            ASSERT_EQ(memory.bytes, size);
            auto* const bytes = static_cast<unsigned char*>(memory.data);
            EXPECT_EQ(std::count(bytes, bytes + size, 0), size) << function << round;
            // The next line's memory is likely to lie where this one's did.
            std::fill_n(bytes, size, static_cast<unsigned char>(0x5a));
            line.next();
        }
    }
}

TEST(AmrWbInterpolationData, TheScaleFactorsOfBothSidesAddUpToNine) {
    for (const auto& [index, sum] : {std::pair{0, 128 + 2048}, {1, 4096 + 64}}) {
        SuiteLine line("veksInterpolateC_NR_16s", index);
        ASSERT_TRUE(line.ready());
        EXPECT_EQ(line.lengths(), (Lengths{16, 16, 16}));
        line.vector(0).setConst(512, 0);
        line.vector(1).setConst(256, 0);
        EXPECT_EQ(line.call(), 0);
        EXPECT_EQ(line.values(2), Values(16, sum));
    }
}

TEST(AmrWbConversionData, CoefficientsBehindTheFirstFallToZeroAndGivePairs) {
    SuiteLine line("veksLPCToISP_AMRWB_16s");
    ASSERT_TRUE(line.ready());
    const Values lpc = line.values(0);
    ASSERT_EQ(lpc.size(), 17u);
    EXPECT_EQ(lpc[0], 4096);
    EXPECT_TRUE(std::is_sorted(lpc.rbegin(), lpc.rend()));
    EXPECT_GE(lpc[16], 0);
    EXPECT_EQ(line.call(), 0);
    EXPECT_NE(line.values(1), line.values(2));
}

TEST(AmrWbConversionData, PairsFallAndFrequenciesRise) {
    SuiteLine line("veksISPToLPC_AMRWB_16s");
    ASSERT_TRUE(line.ready());
    EXPECT_EQ(line.lengths(), (Lengths{16, 16, 17, 16, 16}));
    const Values isp = line.values(0);
    EXPECT_TRUE(std::is_sorted(isp.rbegin(), isp.rend()));
    EXPECT_EQ(isp[0], 32000 - 64000 / 17);
    const Values isf = line.values(3);
    EXPECT_TRUE(std::is_sorted(isf.begin(), isf.end()));
    EXPECT_EQ(isf[0], 16384 / 17);
}

TEST(AmrWbQuantiserData, TheMemoryHoldsThreeFramesAndIndicesTheirCounts) {
    for (const char* function : {"veksISFQuant_AMRWB_16s", "veksISFQuantDecode_AMRWB_16s"}) {
        SuiteLine line(function);
        ASSERT_TRUE(line.ready());
        EXPECT_EQ(line.lengths(), (Lengths{16, 48, 16, 7, 16, 16, 7}));
        for (const int index : {0, 1, 2}) {
            expectRandom(line.values(index), 0, 2048);
        }
        expectRandom(line.values(5), -2048, 2048);
    }
    for (const char* function : {"veksISFQuantDTX_AMRWB_16s", "veksISFQuantDecodeDTX_AMRWB_16s"}) {
        SuiteLine line(function);
        ASSERT_TRUE(line.ready());
        EXPECT_EQ(line.lengths(), (Lengths{5, 16, 16, 5}));
    }
}

TEST(AmrWbActivityData, SpeechIsRandomOverTheWholeType) {
    for (const char* function : {"veksVAD_AMRWB_16s", "veksDecDTXBuffer_AMRWB_16s", "veksEncDTXBuffer_AMRWB_16s"}) {
        SuiteLine line(function);
        ASSERT_TRUE(line.ready());
        EXPECT_EQ(line.lengths()[0], 256);
        expectRandom(line.values(0), -32768, 32767);
    }
    SuiteLine history("veksDecDTXBuffer_AMRWB_16s");
    EXPECT_EQ(history.lengths(), (Lengths{256, 16, 144, 9}));
    expectRandom(history.values(2), -32768, 32767);
}

// ---- Open-loop pitch ----

constexpr int kPast = 166; // Samples before those of the call.

// In the searched signal a pulse at the first sample and one of some size at each lag before it; the other signal is
// the same at any lag, so that each lag found is remembered.
void setPulses(SuiteLine& line, std::initializer_list<std::pair<int, int>> pulses) {
    vkVector& signal = line.vector(0);
    signal.setConst(0, 0);
    signal.m_16s[kPast] = 8000;
    for (const auto& [lag, size] : pulses) {
        signal.m_16s[kPast - lag] = static_cast<Vek16s>(size);
    }
    line.vector(1).setConst(1000, 0);
}

// The newest of the lags that a call has remembered.
int lagOf(SuiteLine& line) {
    EXPECT_EQ(line.call(), 0);
    return static_cast<int>(line.values(3)[0]);
}

TEST(AmrWbOpenLoopData, HasTheSizesAndTheLagsOfForty) {
    SuiteLine line("veksOpenLoopPitchSearch_AMRWB_16s");
    ASSERT_TRUE(line.ready());
    EXPECT_EQ(line.lengths(), (Lengths{371, 243, 5, 5}));
    expectRandom(line.values(0), -4096, 4096);
    expectRandom(line.values(1), -4096, 4096);
    EXPECT_EQ(line.values(2), Values(5, 40));
    EXPECT_EQ(line.values(3), Values(5, 40));
}

TEST(AmrWbOpenLoopData, OfTheExtendedCodecReachesOverItsLongestLag) {
    SuiteLine line("veksOpenLoopPitchSearch_AMRWBE_16s");
    ASSERT_TRUE(line.ready());
    EXPECT_EQ(line.lengths(), (Lengths{230, 230, 5, 5}));
    EXPECT_EQ(line.values(3), Values(5, 40));
}

// The lag is above the lesser and not above the greater bound.
TEST(AmrWbOpenLoopData, TheBoundsOfTheLagFollowTheFourteenRates) {
    constexpr int bounds[14][2] = {{17, 115}, {8, 64},   {9, 70},   {10, 76},  {11, 82},  {13, 91},  {14, 97},
                                   {16, 109}, {17, 115}, {19, 127}, {21, 142}, {22, 148}, {24, 157}, {25, 166}};
    for (int rate = 0; rate < 14; ++rate) {
        SuiteLine line("veksOpenLoopPitchSearch_AMRWBE_16s", 2 * rate);
        ASSERT_TRUE(line.ready());
        const auto found = [&line](int lag) {
            setPulses(line, {{lag, 8000}});
            line.restore();
            line.vector(3).setConst(0, 0);
            return lagOf(line) == lag;
        };
        const auto [least, most] = bounds[rate];
        EXPECT_FALSE(found(least)) << rate;
        EXPECT_TRUE(found(least + 1)) << rate;
        EXPECT_TRUE(found(most)) << rate;
        EXPECT_TRUE(most == kPast || !found(most + 1)) << rate;
    }
}

// A lag near the median weighs more where the switch is on: of two equal pulses the farther one wins for a median of 40
// and more, of two that differ by half a per cent for one above 40.
TEST(AmrWbOpenLoopData, EachCallBeginsWithAMedianOfForty) {
    SuiteLine line("veksOpenLoopPitchSearch_AMRWBE_16s", 1);
    ASSERT_TRUE(line.ready());
    for (int call = 0; call < 5; ++call) {
        setPulses(line, {{100, 8000}});
        line.call();
    }
    EXPECT_EQ(line.values(3), Values(5, 100));
    setPulses(line, {{20, 8000}, {40, 8000}});
    line.restore();
    EXPECT_EQ(lagOf(line), 40);
    setPulses(line, {{20, 8040}, {40, 8000}});
    line.restore();
    EXPECT_EQ(lagOf(line), 20);
}

TEST(AmrWbOpenLoopData, EachCallBeginsWithTheSwitchOfItsLine) {
    for (const int on : {0, 1}) {
        SuiteLine line("veksOpenLoopPitchSearch_AMRWBE_16s", on);
        ASSERT_TRUE(line.ready());
        setPulses(line, {{20, 8000}, {40, 8000}});
        for (int call = 0; call < 3; ++call) {
            // A voiced call leaves the switch on.
            line.restore();
            EXPECT_EQ(lagOf(line), on == 0 ? 20 : 40);
        }
    }
}

TEST(AmrWbOpenLoopData, TheLagsThatACallLeavesAreCopiedBesideThem) {
    for (const char* function : {"veksOpenLoopPitchSearch_AMRWB_16s", "veksOpenLoopPitchSearch_AMRWBE_16s"}) {
        SuiteLine line(function);
        ASSERT_TRUE(line.ready());
        for (int i = 0; i < 5; ++i) {
            line.vector(3).m_16s[i] = static_cast<Vek16s>(50 + i);
        }
        line.restore();
        EXPECT_EQ(line.values(2), (Values{50, 51, 52, 53, 54}));
        EXPECT_EQ(line.values(3), (Values{50, 51, 52, 53, 54}));
    }
}

} // namespace
