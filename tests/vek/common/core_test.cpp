// Core of the library: statuses, processor types and the rules behind them, the choice of kernels, versions.
#include <cstring>
#include <map>
#include <set>
#include <string>

#include "core/cpurules.h"
#include "lp_reference.h"
#include "veks.h"
#include "veksc.h"

namespace {

using namespace vek::core;

// A processor from a table of answers.
std::map<std::pair<uint32_t, uint32_t>, CpuidRegs> g_answers;
uint32_t g_saved = 0;

CpuidRegs answer(uint32_t leaf, uint32_t subleaf) {
    const auto it = g_answers.find({leaf, subleaf});
    return it == g_answers.end() ? CpuidRegs{} : it->second;
}

uint32_t savedStates() {
    return g_saved;
}

constexpr CpuReader kPlayed = {answer, savedStates};

void play(std::map<std::pair<uint32_t, uint32_t>, CpuidRegs> answers, uint32_t saved = 0) {
    g_answers = std::move(answers);
    g_saved = saved;
}

TEST(VekStatusText, EachStatusHasItsText) {
    EXPECT_STREQ("no error", vekGetStatusString(vekStsNoErr));
    EXPECT_STREQ("null pointer", vekGetStatusString(vekStsNullPtrErr));
    EXPECT_STREQ("a result has been saturated", vekGetStatusString(vekStsOverflow));
    EXPECT_STREQ("this machine lacks what the processor type needs", vekGetStatusString(vekStsCpuNotSupportedErr));
    EXPECT_STREQ("unknown status", vekGetStatusString(-9999));
}

TEST(VekStatusText, ValuesAreUniqueAndNoneIsMinusTwo) {
    std::set<int> values;
    size_t rows = 0;
#define VEK_ROW(name, value, text)                                                                                     \
    values.insert(value);                                                                                              \
    rows++;
    VEK_STATUSES(VEK_ROW)
#undef VEK_ROW
    EXPECT_EQ(rows, values.size());
    EXPECT_EQ(0U, values.count(-2));
}

TEST(VekCpuTypes, ThirtyRowsInTheOrderOfTheirCodesWithUniqueLabels) {
    std::vector<int> codes;
    std::set<std::string> labels;
#define VEK_ROW(code, label, name, need)                                                                               \
    codes.push_back(code);                                                                                             \
    labels.insert(#label);
    VEK_CPU_TYPES(VEK_ROW)
#undef VEK_ROW
    EXPECT_EQ((std::vector<int>{0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 16, 17, 32,
                                33, 34, 35, 36, 37, 38, 64, 65, 66, 67, 68, 69, 70, 71, 96}),
              codes);
    EXPECT_EQ(30U, labels.size());
}

TEST(VekCpuTypes, RowThirtyFiveHasATwoBetweenBlanksAndOneRowIsOfTheNextGeneration) {
    int next = 0;
    std::string name35;
#define VEK_ROW(code, label, name, need)                                                                               \
    next += std::strncmp(name, "Orvan Next", 10) == 0;                                                                 \
    name35 = (code) == 35 ? name : name35;
    VEK_CPU_TYPES(VEK_ROW)
#undef VEK_ROW
    EXPECT_EQ(1, next);
    EXPECT_NE(std::string::npos, name35.find(" 2 "));
}

TEST(VekCpuRules, EachFeatureBitGivesItsLevel) {
    play({{{0, 0}, {7, 0, 0, 0}}, {{1, 0}, {0, 0, 0, 0}}});
    EXPECT_EQ(0, cpuType(kPlayed));
    const std::map<int, CpuidRegs> levels = {
        {64, {0, 0, 0, 1U << 25}}, {65, {0, 0, 0, 1U << 26}}, {66, {0, 0, 1, 0}},        {67, {0, 0, 1U << 9, 0}},
        {68, {0, 0, 1U << 19, 0}}, {69, {0, 0, 1U << 20, 0}}, {70, {0, 0, 3U << 27, 0}},
    };
    for (const auto& [code, features] : levels) {
        for (const uint32_t top : {0U, 1U, 7U}) {
            play({{{0, 0}, {top, 0, 0, 0}}, {{1, 0}, features}}, 6);
            EXPECT_EQ(top < 1 ? 0 : code, cpuType(kPlayed)) << top;
        }
    }
    for (const uint32_t top : {6U, 7U, 8U}) {
        play({{{0, 0}, {top, 0, 0, 0}}, {{1, 0}, {0, 0, 3U << 27, 0}}, {{7, 0}, {0, 1U << 5, 0, 0}}}, 6);
        EXPECT_EQ(top < 7 ? 70 : 71, cpuType(kPlayed)) << top;
    }
    play({{{0x80000000U, 0}, {0x80000001U, 0, 0, 0}}, {{0x80000001U, 0}, {0, 0, 0, 1U << 29}}});
    EXPECT_EQ(96, cpuType(kPlayed));
}

TEST(VekCpuRules, WideLevelsNeedASystemThatSavesTheWideRegisters) {
    play({{{0, 0}, {7, 0, 0, 0}}, {{1, 0}, {0, 0, (3U << 27) | (1U << 19), 0}}, {{7, 0}, {0, 1U << 5, 0, 0}}}, 2);
    EXPECT_EQ(68, cpuType(kPlayed));
}

TEST(VekCpuRules, LongRegistersNeedEachOfTheirFeaturesAndASystemThatSavesThem) {
    constexpr uint32_t avx2 = 1U << 5;
    constexpr uint32_t shifts = (1U << 3) | (1U << 8);
    constexpr uint32_t features[] = {1U << 16, 1U << 17, 1U << 28, 1U << 30, 1U << 31};
    uint32_t all = avx2 | shifts;
    for (const uint32_t feature : features) {
        all |= feature;
    }
    const auto bestOf = [](uint32_t wide, uint32_t saved) {
        play({{{0, 0}, {7, 0, 0, 0}},
              {{1, 0}, {0, 0, (3U << 27) | (1U << 19), 0}},
              {{7, 0}, {0, wide, 0, 0}},
              {{0x80000000U, 0}, {0x80000001U, 0, 0, 0}},
              {{0x80000001U, 0}, {0, 0, 1U << 5, 0}}},
             saved);
        return bestKernelLevel(kPlayed);
    };
    EXPECT_EQ(3, bestOf(all, 0xe7));
    for (const uint32_t feature : features) {
        EXPECT_EQ(2, bestOf(all & ~feature, 0xe7)) << feature;
    }
    for (const uint32_t state : {0x20U, 0x40U, 0x80U}) {
        EXPECT_EQ(2, bestOf(all, 0xe7U & ~state)) << state;
    }
    EXPECT_EQ(1, bestOf(all, 0xe3));
    EXPECT_EQ(1, bestOf(all & ~avx2, 0xe7));
    for (const uint32_t shift : {1U << 3, 1U << 8}) {
        EXPECT_EQ(1, bestOf(all & ~shift, 0xe7)) << shift;
    }
}

TEST(VekCpuRules, KernelsOfWideRegistersNeedTheirBitInstructionsTooTheTypeDoesNot) {
    constexpr uint32_t shifts = (1U << 3) | (1U << 8);
    const auto kernelsOf = [](uint32_t bits, uint32_t zeros) {
        play({{{0, 0}, {7, 0, 0, 0}},
              {{1, 0}, {0, 0, 3U << 27, 0}},
              {{7, 0}, {0, (1U << 5) | bits, 0, 0}},
              {{0x80000000U, 0}, {0x80000001U, 0, 0, 0}},
              {{0x80000001U, 0}, {0, 0, zeros, 0}}},
             6);
        EXPECT_EQ(vekCpuV8, cpuType(kPlayed));
        EXPECT_EQ(bestKernelLevel(kPlayed), kernelLevel(kPlayed, vekCpuV8));
        return bestKernelLevel(kPlayed);
    };
    EXPECT_EQ(2, kernelsOf(shifts, 1U << 5));
    EXPECT_EQ(1, kernelsOf(1U << 3, 1U << 5));
    EXPECT_EQ(1, kernelsOf(1U << 8, 1U << 5));
    EXPECT_EQ(1, kernelsOf(shifts, 0));
}

TEST(VekCpuRules, TheLargestCacheThatHoldsDataCounts) {
    // 64 ways x 64 bytes x 1024 sets of instructions; 8 x 64 x 64 data; 16 x 64 x 2048 unified.
    play({{{0, 0}, {4, 0, 0, 0}},
          {{4, 0}, {2, (63U << 22) | 63U, 1023, 0}},
          {{4, 1}, {1 | (3U << 26), (7U << 22) | 63U, 63, 0}},
          {{4, 2}, {3, (15U << 22) | 63U, 2047, 0}}});
    EXPECT_EQ(16 * 64 * 2048, maxCacheSize(kPlayed));
}

TEST(VekCpuRules, TheExtendedLeafServesWhereLeafFourIsEmpty) {
    play({{{0, 0}, {16, 0, 0, 0}},
          {{0x80000000U, 0}, {0x8000001eU, 0, 0, 0}},
          {{0x8000001dU, 0}, {1, (7U << 22) | 63U, 63, 0}},
          {{0x80000008U, 0}, {0, 0, 11, 0}}});
    EXPECT_EQ(8 * 64 * 64, maxCacheSize(kPlayed));
    EXPECT_EQ(12, numCores(kPlayed));
}

TEST(VekCpuRules, CoresOfLeafFourAndOneWithoutAnyList) {
    play({{{0, 0}, {4, 0, 0, 0}}, {{4, 0}, {1 | (3U << 26), 0, 0, 0}}});
    EXPECT_EQ(4, numCores(kPlayed));
    play({});
    EXPECT_EQ(1, numCores(kPlayed));
    EXPECT_EQ(0, maxCacheSize(kPlayed));
}

TEST(VekCache, NullPointerIsRefused) {
    EXPECT_EQ(vekStsNullPtrErr, vekGetMaxCacheSizeB(nullptr));
    int size = -1;
    const VekStatus status = vekGetMaxCacheSizeB(&size);
    EXPECT_TRUE(status == vekStsNoErr ? size > 0 : size == 0);
    EXPECT_GE(vekGetNumCoresOnDie(), 1);
}

TEST(VekInit, CodeZeroMeansPlainCodeAndInitTheBestOfTheMachine) {
    ASSERT_EQ(vekStsNoErr, vekInitCpu(0));
    EXPECT_EQ(0, vekGetKernelLevel());
    ASSERT_EQ(vekStsNoErr, vekInit());
    const bool longRegisters = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                               __builtin_cpu_supports("avx512cd") && __builtin_cpu_supports("avx512dq") &&
                               __builtin_cpu_supports("avx512vl");
    // Each processor with these counts leading zeros too.
    const bool bits = __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2");
    const bool wide = __builtin_cpu_supports("avx2") && bits;
    EXPECT_EQ(longRegisters && bits ? 3 : wide ? 2 : __builtin_cpu_supports("sse4.1") ? 1 : 0, vekGetKernelLevel());
}

TEST(VekInit, NoProcessorTypeStandsForKernelsAbove256Bits) {
    for (int code = vekCpuUnknown; code <= 96; ++code) {
        ASSERT_EQ(vekStsNoErr, vekInit());
        if (vekInitCpu(code) == vekStsNoErr) {
            EXPECT_LE(vekGetKernelLevel(), 2) << code;
            EXPECT_TRUE(code != vekCpuV8 || vekGetKernelLevel() == 2);
        }
    }
    ASSERT_EQ(vekStsNoErr, vekInit());
}

TEST(VekInit, UnknownCodesAreRefusedAndLeaveTheChoice) {
    ASSERT_EQ(vekStsNoErr, vekInitCpu(0));
    for (const int code : {-1, 12, 31, 39, 63, 72, 95, 97}) {
        EXPECT_EQ(vekStsUnknownCpuErr, vekInitCpu(code)) << code;
    }
    EXPECT_EQ(0, vekGetKernelLevel());
    ASSERT_EQ(vekStsNoErr, vekInit());
}

TEST(VekInit, AnInstructionLevelAboveTheMachineIsRefused) {
    for (int code = vekCpuV1; code <= vekCpuV8; code++) {
        const VekStatus status = vekInitCpu(code);
        if (code <= vekGetCpuType() && vekGetCpuType() <= vekCpuV8) {
            EXPECT_EQ(vekStsNoErr, status) << code;
        } else {
            EXPECT_EQ(vekStsCpuNotSupportedErr, status) << code;
        }
    }
    ASSERT_EQ(vekStsNoErr, vekInit());
}

int g_heard = -1;

TEST(VekInit, AListenerHearsTheLevelAtOnceAndAtEachChange) {
    ASSERT_EQ(vekStsNullPtrErr, vekOnKernelLevel(nullptr));
    ASSERT_EQ(vekStsNoErr, vekInit());
    ASSERT_EQ(vekStsNoErr, vekOnKernelLevel([](int level) { g_heard = level; }));
    EXPECT_EQ(vekGetKernelLevel(), g_heard);
    ASSERT_EQ(vekStsNoErr, vekInitCpu(0));
    EXPECT_EQ(0, g_heard);
    ASSERT_EQ(vekStsNoErr, vekInit());
}

TEST(VekThreads, OneIsTakenMoreIsAWarningLessAnError) {
    EXPECT_EQ(vekStsNoErr, vekSetNumThreads(1));
    EXPECT_EQ(vekStsSingleThread, vekSetNumThreads(4));
    EXPECT_EQ(vekStsSizeErr, vekSetNumThreads(0));
}

TEST(VekVersion, EachLibraryTellsItsName) {
    EXPECT_STREQ("libvekcore", vekGetLibVersion()->Name);
    EXPECT_STREQ("libveks", veksGetLibVersion()->Name);
    EXPECT_STREQ("libveksc", vekscGetLibVersion()->Name);
    EXPECT_STREQ("1.0.0", vekscGetLibVersion()->Version);
    EXPECT_EQ(11U, std::strlen(vekscGetLibVersion()->BuildDate));
}

TEST(VekEnumerations, RatesCountFromZeroAndFrequenciesAreTheirNumbers) {
    EXPECT_EQ(0, VEK_SPCHBR_4750);
    EXPECT_EQ(12, VEK_SPCHBR_12200);
    EXPECT_EQ(25, VEK_SPCHBR_DTX);
    EXPECT_EQ(2, VEK_PCM_LINEAR);
    EXPECT_EQ(22050, VEK_PCM_FREQ_22050);
}

} // namespace
