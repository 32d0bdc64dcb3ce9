// The identification instruction played by hand: valid leaves, bit fields, the record, cache sizes, the flag table.
#include "streamcapture.h"

#include <gtest/gtest.h>

#include <set>

namespace {

TEST(KrCpuid, LeavesBeyondTheLargestOneAreZeros) {
    PlayedCpu cpu;
    cpu.vendor(1);
    cpu.set(1, 0, {1, 2, 3, 4});
    cpu.set(2, 0, {9, 9, 9, 9});
    cpu.set(0x80000000U, 0, {0x80000001U, 0, 0, 0});
    cpu.set(0x80000001U, 0, {0, 0, 7, 0});
    cpu.set(0x80000002U, 0, {9, 9, 9, 9});
    EXPECT_EQ(CPUID(1, 0).m_regs[CPUID::EDX], 4U);
    EXPECT_EQ(CPUID(2, 0).m_regs[CPUID::EAX], 0U);
    EXPECT_EQ(CPUID(0x80000001U, 0).m_regs[CPUID::ECX], 7U);
    EXPECT_EQ(CPUID(0x80000002U, 0).m_regs[CPUID::EAX], 0U);
    EXPECT_TRUE(CPUID::validFunction(0));
    EXPECT_TRUE(CPUID::validFunction(0x80000000U));
    EXPECT_FALSE(CPUID::validFunction(0x7FFFFFFFU));
    EXPECT_FALSE(CPUID::validFunction(0x80000002U));
}

TEST(KrCpuid, ProcessorWithoutExtendedLeavesHasNone) {
    PlayedCpu cpu;
    cpu.vendor(2);
    cpu.set(0x80000000U, 0, {2, 0, 0, 0});
    EXPECT_FALSE(CPUID::validFunction(0x80000001U));
}

TEST(KrCpuid, BitsAndBytesAreCountedFromTheLowEnd) {
    PlayedCpu cpu;
    cpu.vendor(1);
    cpu.set(1, 0, {0x12345678U, 0xFFFFFFFFU, 0, 0});
    const CPUID id(1, 0);
    EXPECT_EQ(id.getBits(CPUID::EAX, 15, 8), 0x56U);
    EXPECT_EQ(id.getBits(CPUID::EBX, 31, 0), 0xFFFFFFFFU);
    EXPECT_EQ(id.getBit(CPUID::EAX, 3), 1U);
    EXPECT_EQ(id.getBit(CPUID::EAX, 0), 0U);
    EXPECT_EQ(id.getByte(CPUID::EAX, 0), 0x78);
    EXPECT_EQ(id.getByte(CPUID::EAX, 3), 0x12);
}

TEST(KrCpuid, MakerIsKnownByAllTwelveCharacters) {
    PlayedCpu cpu;
    cpu.vendor(1);
    EXPECT_TRUE(vek_is_GenuineOrvan());
    cpu.vendor(1, "GenuineOrvaX");
    EXPECT_FALSE(vek_is_GenuineOrvan());
    cpu.vendor(1, "genuineOrvan");
    EXPECT_FALSE(vek_is_GenuineOrvan());
    EXPECT_EQ(vek_max_cpuid_input(), 1U);
}

TEST(KrCpuid, NoReaderIsAProcessorWithoutTheInstruction) {
    auto* const reader = krCpuidReader;
    krCpuidReader = nullptr;
    EXPECT_FALSE(vek_has_cpuid());
    EXPECT_EQ(vek_max_cpuid_input(), 0U);
    EXPECT_FALSE(vek_is_GenuineOrvan());
    EXPECT_EQ(getMaxCacheSizeB(), 0);
    krCpuidReader = reader;
    EXPECT_TRUE(vek_has_cpuid());
}

TEST(KrCpuid, RealProcessorAnswers) {
    EXPECT_GE(vek_max_cpuid_input(), 1U);
    EXPECT_EQ(CPUID(1, 0).getBit(CPUID::EDX, 26), 1U); // every x86-64 processor has it
}

TEST(KrCyclonIdent, FieldsComeFromTheirBits) {
    PlayedCpu cpu;
    cpu.vendor(4);
    // Extended family 0x12, extended model 0x3, type bits 0b11 at 12..11, family 0xF, model 0xA, stepping 0x5.
    cpu.set(1, 0,
            {0x01230000U | 0x1800U | 0x0F00U | 0xA0U | 0x5U, 2U << 16, 1U | 1U << 19 | 1U << 27,
             1U << 23 | 1U << 26 | 1U << 28});
    cpu.set(2, 0, {0x11, 0, 0, 0x22});
    cpu.set(4, 0, {3U << 26 | 1, 0, 0, 0});
    cpu.set(0x80000000U, 0, {0x80000001U, 0, 0, 0});
    cpu.set(0x80000001U, 0, {0, 0, 0, 1U << 29});
    vekCyclonIdent id{};
    vek_get_cyclon_ident(&id);
    EXPECT_EQ(id.family, 0xFU);
    EXPECT_EQ(id.stepping, 0x5U);
    EXPECT_EQ(id.model, 0xAU);
    EXPECT_EQ(id.type, 3U);
    EXPECT_EQ(id.feature, 1U << 23 | 1U << 26 | 1U << 28);
    EXPECT_EQ(id.cacheEax, 0x11U);
    EXPECT_EQ(id.cacheEdx, 0x22U);
    EXPECT_EQ(id.hasPki, 1U);
    EXPECT_EQ(id.hasSsx, 0U);
    EXPECT_EQ(id.hasSsx2, 1U);
    EXPECT_EQ(id.multiThread, 1U);
    EXPECT_EQ(id.hasSsx3, 1U);
    EXPECT_EQ(id.has64bit, 1U);
    EXPECT_EQ(id.hasSsx3s, 0U);
    EXPECT_EQ(id.cores, 4U);
    EXPECT_EQ(id.hasSsx41, 1U);
    EXPECT_EQ(id.hasSsx42, 0U);
    EXPECT_EQ(id.exFamily, 0x12U);
    EXPECT_EQ(id.exModel, 3U);
    EXPECT_EQ(id.hasMovbe, 0U);
    EXPECT_EQ(id.hasSsx5, 0U);
    EXPECT_EQ(id.hasOsxsave, 1U);
}

// Bits `high` down to `low`, both included.
constexpr unsigned field(int high, int low) {
    return (~0U >> (31 - high)) & (~0U << low);
}

vekCyclonIdent identOf(PlayedCpu::Regs one, PlayedCpu::Regs extended = {}) {
    PlayedCpu cpu;
    cpu.vendor(1);
    cpu.set(1, 0, one);
    cpu.set(0x80000000U, 0, {0x80000001U, 0, 0, 0});
    cpu.set(0x80000001U, 0, extended);
    vekCyclonIdent id{};
    vek_get_cyclon_ident(&id);
    return id;
}

TEST(KrCyclonIdent, FieldsOfTheSignatureEndAtTheirEdges) {
    const struct {
        unsigned vekCyclonIdent::*member;
        int high, low;
    } rows[] = {{&vekCyclonIdent::family, 11, 8},    {&vekCyclonIdent::stepping, 3, 0},
                {&vekCyclonIdent::model, 7, 4},      {&vekCyclonIdent::type, 12, 11},
                {&vekCyclonIdent::exFamily, 27, 20}, {&vekCyclonIdent::exModel, 19, 16}};
    for (const auto& row : rows) {
        const unsigned bits = field(row.high, row.low);
        EXPECT_EQ(identOf({bits, 0, 0, 0}).*row.member, bits >> row.low) << row.high;
        EXPECT_EQ(identOf({~bits, 0, 0, 0}).*row.member, 0U) << row.high;
    }
}

TEST(KrCyclonIdent, FlagsAreSingleBits) {
    const struct {
        unsigned vekCyclonIdent::*member;
        unsigned PlayedCpu::Regs::*reg;
        int bit;
        bool extended;
    } rows[] = {{&vekCyclonIdent::hasPki, &PlayedCpu::Regs::edx, 23, false},
                {&vekCyclonIdent::hasSsx, &PlayedCpu::Regs::edx, 25, false},
                {&vekCyclonIdent::hasSsx2, &PlayedCpu::Regs::edx, 26, false},
                {&vekCyclonIdent::hasSsx3, &PlayedCpu::Regs::ecx, 0, false},
                {&vekCyclonIdent::hasSsx3s, &PlayedCpu::Regs::ecx, 9, false},
                {&vekCyclonIdent::hasSsx41, &PlayedCpu::Regs::ecx, 19, false},
                {&vekCyclonIdent::hasSsx42, &PlayedCpu::Regs::ecx, 20, false},
                {&vekCyclonIdent::hasMovbe, &PlayedCpu::Regs::ecx, 22, false},
                {&vekCyclonIdent::hasOsxsave, &PlayedCpu::Regs::ecx, 27, false},
                {&vekCyclonIdent::hasSsx5, &PlayedCpu::Regs::ecx, 28, false},
                {&vekCyclonIdent::has64bit, &PlayedCpu::Regs::edx, 29, true}};
    for (const auto& row : rows) {
        PlayedCpu::Regs alone;
        alone.*row.reg = 1U << row.bit;
        PlayedCpu::Regs others;
        others.*row.reg = ~(1U << row.bit);
        const PlayedCpu::Regs none;
        EXPECT_EQ(identOf(row.extended ? none : alone, row.extended ? alone : none).*row.member, 1U) << row.bit;
        EXPECT_EQ(identOf(row.extended ? none : others, row.extended ? others : none).*row.member, 0U) << row.bit;
    }
}

TEST(KrCyclonIdent, ThreadsNeedTheirFlagAndANumberAboveOne) {
    constexpr unsigned flag = 1U << 28;
    const auto threads = [](unsigned ebx, unsigned edx) { return identOf({0, ebx, 0, edx}).multiThread; };
    EXPECT_EQ(threads(2U << 16, flag), 1U);
    EXPECT_EQ(threads(0x80U << 16, flag), 1U);
    EXPECT_EQ(threads(1U << 16, flag), 0U);
    EXPECT_EQ(threads(~field(23, 16), flag), 0U);
    EXPECT_EQ(threads(field(23, 16), ~flag), 0U);
}

TEST(KrCyclonIdent, CoresAreOneMoreThanTheirField) {
    const auto cores = [](unsigned eax) {
        PlayedCpu cpu;
        cpu.vendor(4);
        cpu.set(4, 0, {eax, 0, 0, 0});
        return krCoresOfPackage();
    };
    EXPECT_EQ(cores(field(31, 26)), 64U);
    EXPECT_EQ(cores(~field(31, 26)), 1U);
}

TEST(KrCacheSize, FieldsEndAtTheirEdges) {
    PlayedCpu cpu;
    cpu.vendor(4);
    const auto parms = [&cpu](unsigned ebx) {
        cpu.set(4, 0, {1, ebx, 0, 0});
        return krCacheParms(CPUID(4, 0));
    };
    for (const bool alone : {true, false}) {
        EXPECT_EQ(parms(alone ? field(31, 22) : ~field(31, 22)).ways, alone ? 1024U : 1U);
        EXPECT_EQ(parms(alone ? field(21, 12) : ~field(21, 12)).partitions, alone ? 1024U : 1U);
        EXPECT_EQ(parms(alone ? field(11, 0) : ~field(11, 0)).line, alone ? 4096U : 1U);
    }
    for (int bit = 0; bit < 5; ++bit) {
        cpu.set(4, 0, {1U << bit, 63, 0, 0});
        EXPECT_EQ(getCacheSizeB(0), 64) << "type " << (1 << bit);
    }
    cpu.set(4, 0, {~field(4, 0), 63, 0, 0});
    EXPECT_EQ(getCacheSizeB(0), -1) << "type 0";
}

TEST(KrCyclonIdent, OneThreadIsNoMultiThreading) {
    PlayedCpu cpu;
    cpu.vendor(1);
    cpu.set(1, 0, {0, 1U << 16, 0, 1U << 28});
    vekCyclonIdent id{};
    vek_get_cyclon_ident(&id);
    EXPECT_EQ(id.multiThread, 0U);
    EXPECT_EQ(id.cores, 1U);
}

TEST(KrCacheSize, IsTheProductOfItsFields) {
    PlayedCpu cpu;
    cpu.vendor(4);
    cpu.cache(0, 1, 1, 8, 64);
    EXPECT_EQ(getCacheSizeB(0), 32768);
    EXPECT_EQ(getCacheSizeB(1), -1);
}

TEST(KrCacheSize, InstructionCachesCountForTheLargest) {
    PlayedCpu cpu;
    cpu.vendor(4);
    cpu.cache(0, 1, 1, 8, 64);
    cpu.cache(1, 2, 1, 8, 128);
    EXPECT_EQ(getMaxCacheSizeB(), 65536);
}

TEST(KrCacheSize, IsZeroWithoutFunctionFour) {
    PlayedCpu cpu;
    cpu.vendor(3);
    cpu.cache(0, 1, 1, 8, 64);
    EXPECT_EQ(getMaxCacheSizeB(), 0);
}

TEST(KrCacheSize, ListWithoutAnEndIsLeft) {
    auto* const reader = krCpuidReader;
    krCpuidReader = [](unsigned, unsigned, unsigned regs[4]) {
        regs[0] = 5;
        regs[1] = 63;
        regs[2] = 1;
        regs[3] = 0;
    };
    EXPECT_EQ(getMaxCacheSizeB(), 128);
    krCpuidReader = reader;
}

TEST(KrFeatureFlags, TableHasEveryBitOfFunctionOneAndFourMore) {
    std::set<std::pair<int, int>> bits;
    std::set<std::pair<int, int>> extended;
    for (const FlagInfo& flag : FeatureFlags) {
        ASSERT_TRUE(flag.function == 1 || flag.function == 0x80000001U);
        (flag.function == 1 ? bits : extended).insert({flag.reg, flag.bit});
        EXPECT_EQ(flag.name[0] == '\0', flag.description[0] == '\0');
    }
    EXPECT_EQ(bits.size(), 64U);
    for (int bit = 0; bit < 32; ++bit) {
        EXPECT_EQ(bits.count({CPUID::EDX, bit}), 1U);
        EXPECT_EQ(bits.count({CPUID::ECX, bit}), 1U);
    }
    const std::set<std::pair<int, int>> four = {{CPUID::EDX, 11}, {CPUID::EDX, 20}, {CPUID::EDX, 29}, {CPUID::ECX, 0}};
    EXPECT_EQ(extended, four);
}

TEST(KrFeatureFlags, NamesAreUnlike) {
    std::set<std::string> names;
    int named = 0;
    for (const FlagInfo& flag : FeatureFlags) {
        if (flag.name[0] != '\0') {
            names.insert(flag.name);
            ++named;
        }
    }
    EXPECT_EQ(static_cast<int>(names.size()), named);
    ASSERT_NE(findFeatureFlag("SSX4.1"), nullptr);
    EXPECT_EQ(findFeatureFlag("SSX4.1")->bit, 19);
    EXPECT_EQ(findFeatureFlag("none"), nullptr);
}

} // namespace
