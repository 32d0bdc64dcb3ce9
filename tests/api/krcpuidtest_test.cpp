// The machine reports, whole, on processors played by hand.
#include "krcond.h"
#include "krcpuidtest.h"
#include "krinfo.h"
#include "streamcapture.h"

#include <gtest/gtest.h>

namespace {

const std::string s_double(79, '=');
const std::string s_single(79, '-');
const std::string s_star(79, '*');

std::string report(OutputLevel level = ERR | WARN | PERF) {
    ConsoleCapture console(level);
    __krOrvanCpuTest test("__krOrvanCpu", "kr", "__krOrvanCpuTest/Orvan CPU information");
    krTest::m_currentResult = krUndefined;
    test.loopData();
    EXPECT_EQ(krTest::m_currentResult, krOk);
    return console.text();
}

// Family 6, model 15, stepping 7, type 0; two threads, two cores.
void play(PlayedCpu& cpu, const char* vendor = "GenuineOrvan") {
    cpu.vendor(4, vendor);
    cpu.set(1, 0, {0x6F7, 2U << 16, 1U | 1U << 9, 1U << 23 | 1U << 25 | 1U << 26 | 1U << 28});
    cpu.cache(0, 1, 1, 8, 64);
    cpu.cache(1, 3, 2, 16, 4096);
    cpu.set(0x80000000U, 0, {0x80000006U, 0, 0, 0});
    cpu.set(0x80000001U, 0, {0, 0, 0, 1U << 29});
    cpu.set(0x80000002U, 0, {0x6D6F4E20U, 0x206C6564U, 0x00000037U, 0x42412DU}); // " Nom" "del " "7" "-AB"
    cpu.set(0x80000006U, 0, {0, 0, 4096U << 16 | 8U << 12 | 64, 0});
}

const std::string s_head = s_star + "\n    Orvan Processor Identification\n"
                                    "    Got by CPUID Instruction Functions\n";
const std::string s_body = "\n" + s_double +
                           "\n"
                           "    Processor Identification Signature\n\n"
                           "Family   6\n"
                           "Model    15\n"
                           "Stepping 7\n"
                           "Type     0\n"
                           "\n" +
                           s_double +
                           "\n"
                           "    Selected Feature Flags\n\n"
                           "PKI        1 - Packed integer instructions\n"
                           "SSX        1 - SSX vector unit\n"
                           "SSX2       1 - SSX vector unit, level 2\n"
                           "SSX3       1 - SSX vector unit, level 3\n"
                           "SSX3S      1 - SSX vector unit, supplement to level 3\n"
                           "SSX4.1     0 - SSX vector unit, level 4.1\n"
                           "SSX4.2     0 - SSX vector unit, level 4.2\n"
                           "X2APIC     0 - Extended interrupt controller\n"
                           "64-bit     1 - 64-bit extension\n"
                           "\n" +
                           s_double +
                           "\n"
                           "    Multi Threading Features\n\n"
                           "Simultaneous threads or several cores are supported\n"
                           "Logical Processors 2 - Number of logical processors per physical package\n"
                           "Cores per Package  2 - Maximum number of processor cores per package\n"
                           "\n" +
                           s_double +
                           "\n"
                           "    Deterministic Cache Parameters\n"
                           "\n" +
                           s_single +
                           "\n"
                           "    Data Cache\n\n"
                           "Cache Level       1\n"
                           "Cache Size Kb     32\n"
                           "Threads Sharing   4    - Maximum number of threads sharing this cache\n"
                           "Number of Sets    64\n"
                           "Line Size         64   - System coherency line size\n"
                           "Line Partitions   1    - Physical line partitions\n"
                           "Associativity     8    - Ways of associativity\n"
                           "Self Initializing cache level\n"
                           "Cache is inclusive to lower cache levels\n"
                           "\n" +
                           s_single +
                           "\n"
                           "    Unified Cache\n\n"
                           "Cache Level       2\n"
                           "Cache Size Kb     4096\n"
                           "Threads Sharing   4    - Maximum number of threads sharing this cache\n"
                           "Number of Sets    4096\n"
                           "Line Size         64   - System coherency line size\n"
                           "Line Partitions   1    - Physical line partitions\n"
                           "Associativity     16   - Ways of associativity\n"
                           "Self Initializing cache level\n"
                           "Cache is inclusive to lower cache levels\n"
                           "\n" +
                           s_double +
                           "\n"
                           "    Extended L2 Cache Features\n\n"
                           "L2 Cache Size Kb       4096\n"
                           "L2 Cache Line Size     64\n"
                           "L2 Cache Associativity 16-Way\n" +
                           s_star + "\n";

TEST(KrCpuReport, WholeReportOfAProcessorOfTheMaker) {
    PlayedCpu cpu;
    play(cpu);
    EXPECT_EQ(report(), s_head + s_star +
                            "\n\n"
                            "Largest Standard Function 0x00000004\n"
                            "Largest Extended Function 0x80000006\n"
                            "Vendor-ID      GenuineOrvan\n"
                            "Brand String    Nomdel 7-AB\n" +
                            s_body);
}

TEST(KrCpuReport, OtherMakerIsWarnedOfAndTheRestFollows) {
    PlayedCpu cpu;
    play(cpu, "OtherVendor!");
    cpu.set(0x80000002U, 0, {0, 0, 0, 0});
    EXPECT_EQ(report(ERR), s_head +
                               "\n    ATTENTION! It is not Genuine Orvan processor.\n"
                               "    Information below may be inadequate.\n" +
                               s_star +
                               "\n\n"
                               "Vendor-ID      OtherVendor!\n" +
                               s_body);
}

TEST(KrCpuReport, NothingIsSaidOfCachesAndCoresWithoutFunctionFour) {
    PlayedCpu cpu;
    play(cpu);
    cpu.vendor(2);
    const std::string text = report();
    EXPECT_EQ(text.find("Deterministic Cache Parameters"), std::string::npos);
    EXPECT_EQ(text.find("Cores per Package"), std::string::npos);
    EXPECT_NE(text.find("Logical Processors 2"), std::string::npos);
}

TEST(KrCpuReport, OnlyTheHeadIsLeftWithoutFunctionOne) {
    PlayedCpu cpu;
    cpu.vendor(0);
    EXPECT_EQ(report(ERR), s_head + s_star + "\n\nVendor-ID      GenuineOrvan\n" + s_star + "\n");
}

TEST(KrCpuReport, SignatureAddsTheExtendedFields) {
    PlayedCpu cpu;
    cpu.vendor(1);
    cpu.set(1, 0, {2U << 20 | 1U << 16 | 2U << 12 | 15U << 8 | 10U << 4 | 3U, 1U << 16 | 0xAB, 0, 1U << 28});
    const std::string text = report();
    EXPECT_NE(text.find("Family   17\nModel    26\nStepping 3\nType     2\nBrand ID 0xAB\n"), std::string::npos);
    EXPECT_NE(text.find("Neither simultaneous threads nor several cores are supported\n"), std::string::npos);
}

// The report of a processor with one leaf set by hand, the others as they must be for it to show.
std::string reportOf(unsigned leaf, PlayedCpu::Regs regs) {
    PlayedCpu cpu;
    cpu.vendor(4);
    cpu.set(0x80000000U, 0, {0x80000006U, 0, 0, 0});
    cpu.set(leaf, 0, regs);
    return report();
}

TEST(KrCpuReport, FieldsOfTheSignatureEndAtTheirEdges) {
    const struct {
        unsigned eax;
        const char* lines;
    } rows[] = {{0x00000F00, "Family   15\nModel    0\nStepping 0\nType     0\n"},
                {0x0FF00000, "Family   255\nModel    0\nStepping 0\nType     0\n"},
                {0x000000F0, "Family   0\nModel    15\nStepping 0\nType     0\n"},
                {0x000F0000, "Family   0\nModel    240\nStepping 0\nType     0\n"},
                {0x0000000F, "Family   0\nModel    0\nStepping 15\nType     0\n"},
                {0x00003000, "Family   0\nModel    0\nStepping 0\nType     3\n"},
                {0xF000C000, "Family   0\nModel    0\nStepping 0\nType     0\n"}};
    for (const auto& row : rows) {
        EXPECT_NE(reportOf(1, {row.eax, 0, 0, 0}).find(row.lines), std::string::npos) << row.lines;
    }
    EXPECT_NE(reportOf(1, {0, 0xFF, 0, 0}).find("Brand ID 0xFF\n"), std::string::npos);
    EXPECT_EQ(reportOf(1, {0, 0xFFFFFF00, 0, 0}).find("Brand ID"), std::string::npos);
}

TEST(KrCpuReport, ThreadsAndCoresEndAtTheEdgesOfTheirFields) {
    const auto told = [](unsigned ebx, unsigned edx, const char* line) {
        return reportOf(1, {0, ebx, 0, edx}).find(line) != std::string::npos;
    };
    EXPECT_TRUE(told(0x00FF0000, 0, "Logical Processors 255 - "));
    EXPECT_TRUE(told(0xFF00FFFF, 0, "Logical Processors 0 - "));
    constexpr const char* several = "\nSimultaneous threads or several cores are supported\n";
    constexpr const char* one = "\nNeither simultaneous threads nor several cores are supported\n";
    EXPECT_TRUE(told(2U << 16, 1U << 28, several));
    EXPECT_TRUE(told(1U << 16, 1U << 28, one));
    EXPECT_TRUE(told(2U << 16, ~(1U << 28), one));
    EXPECT_NE(reportOf(4, {0xFC000000, 0, 0, 0}).find("Cores per Package  64 - "), std::string::npos);
    EXPECT_NE(reportOf(4, {0x03FFFFE0, 0, 0, 0}).find("Cores per Package  1 - "), std::string::npos);
}

TEST(KrCpuReport, FlagRowsAreSingleBits) {
    const struct {
        const char* row;
        unsigned leaf;
        unsigned PlayedCpu::Regs::*reg;
        int bit;
    } rows[] = {
        {"\nPKI        ", 1, &PlayedCpu::Regs::edx, 23},          {"\nSSX        ", 1, &PlayedCpu::Regs::edx, 25},
        {"\nSSX2       ", 1, &PlayedCpu::Regs::edx, 26},          {"\nSSX3       ", 1, &PlayedCpu::Regs::ecx, 0},
        {"\nSSX3S      ", 1, &PlayedCpu::Regs::ecx, 9},           {"\nSSX4.1     ", 1, &PlayedCpu::Regs::ecx, 19},
        {"\nSSX4.2     ", 1, &PlayedCpu::Regs::ecx, 20},          {"\nX2APIC     ", 1, &PlayedCpu::Regs::ecx, 21},
        {"\n64-bit     ", 0x80000001U, &PlayedCpu::Regs::edx, 29}};
    for (const auto& row : rows) {
        PlayedCpu::Regs alone;
        alone.*row.reg = 1U << row.bit;
        PlayedCpu::Regs others;
        others.*row.reg = ~(1U << row.bit);
        EXPECT_NE(reportOf(row.leaf, alone).find(std::string(row.row) + "1 - "), std::string::npos) << row.row;
        EXPECT_NE(reportOf(row.leaf, others).find(std::string(row.row) + "0 - "), std::string::npos) << row.row;
    }
}

TEST(KrCpuReport, FieldsOfACacheEndAtTheirEdges) {
    constexpr const char* fully = "Fully Associative cache\n";
    constexpr const char* self = "Self Initializing cache level\n";
    constexpr const char* inclusive = "Cache is inclusive to lower cache levels\n";
    constexpr const char* writeBack = "WBINVD/INVD behavior on lower level caches\n";
    const struct {
        unsigned eax, edx;
        const char* title;
        const char* level;
        const char* threads;
        std::vector<const char*> remarks;
    } rows[] = {{0x00000001, 0, "Data Cache", "Level       0", "Sharing   1 ", {}},
                {0x0000001F, 0, "Cache Type 31", "Level       0", "Sharing   1 ", {}},
                {0x000000E1, 0, "Data Cache", "Level       7", "Sharing   1 ", {}},
                {0x00000101, 0, "Data Cache", "Level       0", "Sharing   1 ", {self}},
                {0x00000201, 0, "Data Cache", "Level       0", "Sharing   1 ", {fully}},
                {0xFC003C01, 0xFFFFFFFC, "Data Cache", "Level       0", "Sharing   1 ", {}},
                {0x03FFC001, 0, "Data Cache", "Level       0", "Sharing   4096 ", {}},
                {0x00000001, 2, "Data Cache", "Level       0", "Sharing   1 ", {inclusive}},
                {0x00000001, 1, "Data Cache", "Level       0", "Sharing   1 ", {writeBack}}};
    for (const auto& row : rows) {
        const std::string text = reportOf(4, {row.eax, 63, 0, row.edx});
        for (const std::string& line :
             {std::string("    ") + row.title + "\n\n", std::string("Cache ") + row.level + "\n",
              std::string("Threads ") + row.threads}) {
            EXPECT_NE(text.find(line), std::string::npos) << std::hex << row.eax << " " << line;
        }
        for (const char* remark : {fully, self, inclusive, writeBack}) {
            const bool wanted = std::count(row.remarks.begin(), row.remarks.end(), remark) != 0;
            EXPECT_EQ(text.find(remark) != std::string::npos, wanted) << std::hex << row.eax << " " << remark;
        }
    }
    EXPECT_EQ(reportOf(4, {0xFFFFFFE0, 63, 0, 0}).find("Cache Level"), std::string::npos) << "type 0 ends the list";
}

TEST(KrCpuReport, FieldsOfTheSecondLevelEndAtTheirEdges) {
    const struct {
        unsigned ecx;
        const char* lines;
    } rows[] = {{0xFFFF0000, "Size Kb       65535\nL2 Cache Line Size     0\nL2 Cache Associativity Disabled\n"},
                {0x0000F000, "Size Kb       0\nL2 Cache Line Size     0\nL2 Cache Associativity Fully associative\n"},
                {0x00000F00, "Size Kb       0\nL2 Cache Line Size     0\nL2 Cache Associativity Disabled\n"},
                {0x000000FF, "Size Kb       0\nL2 Cache Line Size     255\nL2 Cache Associativity Disabled\n"}};
    for (const auto& row : rows) {
        EXPECT_NE(reportOf(0x80000006U, {0, 0, row.ecx, 0}).find(row.lines), std::string::npos) << row.lines;
    }
}

TEST(KrCpuReport, CachesOfOtherKindsAreNamedByNumber) {
    PlayedCpu cpu;
    cpu.vendor(4);
    cpu.cache(0, 2, 1, 1, 1);
    PlayedCpu::Regs& odd = cpu.set(4, 1, {9U | 3U << 5 | 1U << 9, 63, 0, 1});
    odd.ebx |= 1U << 12;
    const std::string text = report();
    EXPECT_NE(text.find("    Instruction Cache\n\n"), std::string::npos);
    EXPECT_NE(text.find("    Cache Type 9\n\nCache Level       3\nCache Size Kb     0\n"), std::string::npos);
    EXPECT_NE(text.find("Line Partitions   2    - Physical line partitions\nAssociativity     1    - Ways of "
                        "associativity\nFully Associative cache\nWBINVD/INVD behavior on lower level caches\n"),
              std::string::npos);
}

TEST(KrCpuReport, AssociativityOfTheSecondLevelHasItsWords) {
    const std::map<unsigned, std::string> words = {
        {0, "Disabled"},   {1, "Direct mapped"},      {2, "2-Way"},    {4, "4-Way"}, {6, "8-Way"}, {8, "16-Way"},
        {10, "code 0x0A"}, {15, "Fully associative"}, {3, "code 0x03"}};
    for (const auto& [code, word] : words) {
        PlayedCpu cpu;
        cpu.vendor(0);
        cpu.set(0x80000000U, 0, {0x80000006U, 0, 0, 0});
        cpu.set(0x80000006U, 0, {0, 0, code << 12, 0});
        EXPECT_NE(report().find("L2 Cache Associativity " + word + "\n"), std::string::npos) << code;
    }
}

TEST(KrCpuReport, ShortFormStandsForAProcessorWithoutTheInstruction) {
    auto* const reader = krCpuidReader;
    krCpuidReader = nullptr;
    const std::string text = report();
    krCpuidReader = reader;
    EXPECT_EQ(text, s_star + "\n    Orvan Processor Identification\n" + s_star +
                        "\n\n"
                        "    Genuine Orvan      false\n"
                        "Family   0\n"
                        "Model    0\n"
                        "Stepping 0\n"
                        "PKI        0 - Packed integer instructions\n"
                        "SSX        0 - SSX vector unit\n"
                        "SSX2       0 - SSX vector unit, level 2\n"
                        "SSX3       0 - SSX vector unit, level 3\n"
                        "64-bit     0 - 64-bit extension\n" +
                        s_star + "\n");
}

TEST(KrCpuReport, LevelsAreAsBeforeBehindTheReport) {
    const MessageLevel level = g_ostrm.msgLevel();
    report();
    EXPECT_EQ(g_ostrm.msgLevel(), level);
}

TEST(KrCpuReport, SelectionReachesItLikeAnyTest) {
    __krOrvanCpuTest test("__krOrvanCpu", "kr", "__krOrvanCpuTest/Orvan CPU information");
    krConditions all;
    EXPECT_TRUE(test.tobeRun(all));
    krConditions other;
    other.append(new RunCondition_f("veksFoo"));
    EXPECT_FALSE(test.tobeRun(other));
    krConditions own;
    own.append(new RunCondition_f("__krOrvanCpu"));
    EXPECT_TRUE(test.tobeRun(own));
}

TEST(KrInfoReports, HostAndSystemAreOneLineEach) {
    ConsoleCapture console(ERR);
    __krOSTest os("__krOS", "kr", "__krOSTest");
    __krHostTest host("__krHost", "kr", "__krHostTest");
    os.loopData();
    host.loopData();
    EXPECT_EQ(console.text(),
              std::string(" OS       : ") + g_os.text().c_str() + "\n Computer : " + g_host.text().c_str() + "\n");
}

} // namespace
