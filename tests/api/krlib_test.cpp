// The binding to the library: registries, fallbacks, the actions of -T and -N, library information, processor types and
// what the harness finds out by itself.
#include "krlib.h"
#include "streamcapture.h"

#include <gtest/gtest.h>

namespace {

std::string s_calls;
int s_status = 0;
int s_initStatus = 0;

int fakeInit() {
    s_calls += "init;";
    return s_initStatus;
}
int fakeInitCpu(int cpuType) {
    s_calls += "initCpu " + std::to_string(cpuType) + ";";
    return s_status;
}
int fakeSetNumThreads(int threads) {
    s_calls += "threads " + std::to_string(threads) + ";";
    return s_status;
}
const char* fakeStatusString(int status) {
    return status < 0 ? "bad" : "odd";
}
void fakeBinder() {
    s_calls += "bind;";
    vek_Init = fakeInit;
    vek_InitCpu = fakeInitCpu;
    vek_SetNumThreads = fakeSetNumThreads;
    vek_GetStatusString = fakeStatusString;
}

// Nothing registered and nothing bound, and all of it put back.
class KrLib : public ::testing::Test {
protected:
    KrLib() {
        std::swap(m_environment, vekEnvironment);
        std::swap(m_versions, vekVersionList);
        std::swap(m_info, g_pLibInfoList);
        std::swap(m_functions, g_pLibFuncList);
        vek_GetCpuType = nullptr;
        vek_GetNumCoresOnDie = nullptr;
        vek_GetMaxCacheSizeB = nullptr;
        unbind();
        setCpuType(-1);
        setNumThreadsKey(0);
        s_calls.clear();
        s_status = 0;
        s_initStatus = 0;
    }
    ~KrLib() override {
        delete vekVersionList;
        delete g_pLibInfoList;
        delete g_pLibFuncList;
        vekEnvironment = m_environment;
        vekVersionList = m_versions;
        g_pLibInfoList = m_info;
        g_pLibFuncList = m_functions;
        unbind();
        setCpuType(-1);
        setNumThreadsKey(0);
        kr_vekForgetMaxCacheSizeB();
    }
    static void unbind() {
        vek_GetStatusString = nullptr;
        vek_Init = nullptr;
        vek_InitCpu = nullptr;
        vek_SetNumThreads = nullptr;
    }
    static void bind() {
        krRegVekEnvironment(fakeBinder);
        setVekEnvironment();
        s_calls.clear();
    }
    // What is told of the dispatch to a processor by a library that answers with these statuses.
    static std::string dispatched(int cpuType, int status, int initStatus = 0) {
        bind();
        setCpuType(cpuType);
        s_status = status;
        s_initStatus = initStatus;
        ConsoleCapture console(ERR);
        initStaticCpu();
        return console.text();
    }

private:
    void (*m_environment)() = nullptr;
    krVekVersionList* m_versions = nullptr;
    krStringList* m_info = nullptr;
    krStringList* m_functions = nullptr;
};

TEST_F(KrLib, EveryPointerHasAFallback) {
    ConsoleCapture console;
    EXPECT_EQ(setVekEnvironment(), 1);
    EXPECT_EQ(console.text(), "");
    EXPECT_EQ(vek_GetCpuType, kr_vekGetCpuType);
    EXPECT_EQ(vek_GetNumCoresOnDie, kr_vekGetNumCoresOnDie);
    EXPECT_EQ(vek_GetMaxCacheSizeB, kr_vekGetMaxCacheSizeB);
    EXPECT_EQ(vek_Init(), -2);
    EXPECT_EQ(vek_InitCpu(0), -2);
    EXPECT_EQ(vek_SetNumThreads(1), -2);
    EXPECT_STREQ(vek_GetStatusString(-1), "Error");
    EXPECT_STREQ(vek_GetStatusString(0), "OK");
    EXPECT_STREQ(vek_GetStatusString(5), "Warning");
}

TEST_F(KrLib, BinderIsCalledAndToldAndLeavesTheRestToFallbacks) {
    ConsoleCapture console;
    EXPECT_EQ(krRegVekEnvironment(fakeBinder), 1);
    setVekEnvironment();
    EXPECT_EQ(s_calls, "bind;");
    EXPECT_EQ(console.text(), "\nVEK Core library functions have been integrated into KR\n");
    EXPECT_EQ(vek_Init, fakeInit);
    EXPECT_EQ(vek_GetCpuType, kr_vekGetCpuType);
}

TEST_F(KrLib, LastBinderWins) {
    krRegVekEnvironment([] { s_calls += "first;"; });
    krRegVekEnvironment(fakeBinder);
    setVekEnvironment();
    EXPECT_EQ(s_calls, "bind;");
}

TEST_F(KrLib, KeysDoNothingWithoutABinder) {
    ConsoleCapture console;
    setVekEnvironment();
    setCpuType(64);
    setNumThreadsKey(2);
    initStaticCpu();
    setNumThreads();
    EXPECT_EQ(console.text(), "");
}

TEST_F(KrLib, LibraryDispatchesByItselfWithoutTheKey) {
    bind();
    s_initStatus = -5;
    ConsoleCapture console;
    initStaticCpu();
    EXPECT_EQ(s_calls, "init;");
    EXPECT_EQ(console.text(), "");
}

TEST_F(KrLib, CodeZeroIsAProcessorToo) {
    EXPECT_EQ(dispatched(krCpuType::cpuType("Unknown"), 0),
              "\n--calling vekInitCpu( vekCpuUnknown=0 )\n--status = vekStsNoErr\n");
    EXPECT_EQ(s_calls, "initCpu 0;");
}

TEST_F(KrLib, RefusedProcessorFallsBackToTheLibrarysDispatch) {
    EXPECT_EQ(dispatched(64, -9), "\n--calling vekInitCpu( vekCpuV1=64 )\n--VEK ERROR. status = -9: bad\n"
                                  "--calling vekInit()\n");
    EXPECT_EQ(s_calls, "initCpu 64;init;");
}

TEST_F(KrLib, WarningOfTheFallBackIsNotTold) {
    EXPECT_EQ(dispatched(64, -9, 5), "\n--calling vekInitCpu( vekCpuV1=64 )\n--VEK ERROR. status = -9: bad\n"
                                     "--calling vekInit()\n");
}

TEST_F(KrLib, FailureOfTheFallBackIsToldAndTheRunGoesOn) {
    EXPECT_EQ(dispatched(64, -9, -3), "\n--calling vekInitCpu( vekCpuV1=64 )\n--VEK ERROR. status = -9: bad\n"
                                      "--calling vekInit()\n--VEK ERROR. status = -3: bad\n");
}

TEST_F(KrLib, WarningOfTheDispatchIsToldAndKept) {
    EXPECT_EQ(dispatched(70, 36), "\n--calling vekInitCpu( vekCpuV7=70 )\n--VEK WARNING. status = 36: odd\n");
    EXPECT_EQ(s_calls, "initCpu 70;");
}

TEST_F(KrLib, ThreadsAreSetAndTheStatusIsTold) {
    bind();
    setNumThreadsKey(3);
    {
        ConsoleCapture console(ERR);
        setNumThreads();
        EXPECT_EQ(console.text(), "\n--calling vekSetNumThreads( 3 )\n--status = vekStsNoErr\n");
    }
    s_status = -9;
    ConsoleCapture console(ERR);
    setNumThreads();
    EXPECT_EQ(console.text(), "\n--calling vekSetNumThreads( 3 )\n--VEK ERROR. status = -9: bad\n");
    EXPECT_EQ(s_calls, "threads 3;threads 3;");
}

TEST_F(KrLib, NumberOfThreadsBelowOneHasNoEffect) {
    bind();
    setNumThreadsKey(0);
    ConsoleCapture console(ERR);
    setNumThreads();
    setNumThreadsKey(-4);
    setNumThreads();
    EXPECT_EQ(s_calls, "");
    EXPECT_EQ(console.text(), "");
}

// The numbers of a record stand before its texts.
struct FakeVersion {
    int numbers[4];
    const char* Name;
    const char* Version;
    const char* BuildDate;
};
const FakeVersion s_versions[] = {{{}, "libA", "1.0", "Mar 1"}, {{}, "libB", "2.0", "Mar 2"}};
const FakeVersion* versionA() {
    return &s_versions[0];
}
const FakeVersion* versionB() {
    return &s_versions[1];
}
const FakeVersion* noVersion() {
    return nullptr;
}

TEST_F(KrLib, VersionRegisteredManyTimesGivesOneEntry) {
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(krRegVekVersion(versionA), 1);
        krRegVekVersion(versionB);
    }
    krRegVekVersion(noVersion);
    EXPECT_EQ(vekVersionList->size(), 201);
    ConsoleCapture console;
    setVekLibInfo();
    ASSERT_NE(g_pLibInfoList, nullptr);
    ASSERT_EQ(g_pLibInfoList->size(), 2);
    EXPECT_STREQ(g_pLibInfoList->begin()->c_str(), "libA, 1.0, Mar 1");
    EXPECT_STREQ((++g_pLibInfoList->begin())->c_str(), "libB, 2.0, Mar 2");
    EXPECT_EQ(console.text(), "VEK libraries information has been set into KR\n");
}

TEST_F(KrLib, NoVersionListMeansNoMessage) {
    ConsoleCapture console;
    setVekLibInfo();
    EXPECT_EQ(console.text(), "");
    EXPECT_EQ(g_pLibInfoList, nullptr);
}

TEST_F(KrLib, InformationIsKeptOnceAndMayBeEmpty) {
    EXPECT_EQ(krRegLibInfo(""), 1);
    EXPECT_EQ(krRegLibInfo("a"), 1);
    EXPECT_EQ(krRegLibInfo("a"), 0);
    EXPECT_EQ(krRegLibInfo(""), 0);
    EXPECT_EQ(g_pLibInfoList->size(), 2);
}

TEST_F(KrLib, FunctionNamesAreKeptUnlessEmpty) {
    EXPECT_EQ(krRegLibFunc(""), 0);
    EXPECT_EQ(g_pLibFuncList, nullptr);
    EXPECT_EQ(krRegLibFunc("veksFoo"), 1);
    EXPECT_EQ(krRegLibFunc("veksFoo"), 1);
    EXPECT_EQ(g_pLibFuncList->size(), 2);
}

// ---------------------------------------------------------------------------------------------------- types

TEST(KrCpuType, CodesAreTheLibrarys) {
    const int codes[] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 16, 17, 32,
                         33, 34, 35, 36, 37, 38, 64, 65, 66, 67, 68, 69, 70, 71, 96};
    ASSERT_EQ(krCpuType::count(), 30);
    for (int i = 0; i < 30; ++i) {
        int code = -1;
        krString label;
        krString name;
        krCpuType::row(i, code, label, name);
        EXPECT_EQ(code, codes[i]);
        EXPECT_EQ(krCpuType::cpuType(label), code);
        EXPECT_TRUE(krCpuType::cpuLabel(code) == label);
        EXPECT_EQ(name.find("Processor supporting") == 0, code >= 64);
        EXPECT_EQ(name.contains(" 2 ") && code == 35, code == 35);
    }
}

TEST(KrCpuType, LabelsAreExact) {
    EXPECT_EQ(krCpuType::cpuType("Unknown"), 0);
    EXPECT_EQ(krCpuType::cpuType("unknown"), -1);
    EXPECT_EQ(krCpuType::cpuType("Unk"), -1);
    EXPECT_EQ(krCpuType::cpuType(""), -1);
}

TEST(KrCpuType, UnknownCodesHaveTheirWords) {
    EXPECT_STREQ(krCpuType::cpuName(0).c_str(), "Unknown processor");
    EXPECT_STREQ(krCpuType::cpuName(12345).c_str(), "Unknown processor");
    EXPECT_STREQ(krCpuType::cpuLabel(12345).c_str(), "Undefined");
}

TEST(KrCpuType, NumberOfCoresIsNamedAtCodeThirtyFiveOnly) {
    PlayedCpu cpu;
    cpu.vendor(4);
    cpu.set(4, 0, {1U << 26, 0, 0, 0});
    krString name = "Orvan 2 series";
    krCpuType::updateCpuName(35, name);
    EXPECT_STREQ(name.c_str(), "Orvan 2 Duo series");
    EXPECT_STREQ(krCpuType::cpuName(35).c_str(), "Orvan generation 2 Duo series 35");
    cpu.set(4, 0, {3U << 26, 0, 0, 0});
    EXPECT_STREQ(krCpuType::cpuName(35).c_str(), "Orvan generation 2 Quad series 35");
    cpu.set(4, 0, {2U << 26, 0, 0, 0});
    EXPECT_STREQ(krCpuType::cpuName(35).c_str(), "Orvan generation 2 series 35");
    cpu.set(4, 0, {1U << 26, 0, 0, 0});
    name = "Orvan 2 series";
    krCpuType::updateCpuName(34, name);
    EXPECT_STREQ(name.c_str(), "Orvan 2 series");
    name = "Orvan 22";
    krCpuType::updateCpuName(35, name);
    EXPECT_STREQ(name.c_str(), "Orvan 22");
}

TEST(KrCpuType, HelpListsWhatCodeIsOptimizedFor) {
    PlayedCpu cpu;
    const std::string list = krCpuType::optimizedList().c_str();
    EXPECT_EQ(list.find("Unknown  : non optimized code\nG1       : optimized for Orvan generation 1\n"), 0U);
    EXPECT_NE(list.find("\nV8       : optimized for Processor supporting the 256-bit integer extension\n"),
              std::string::npos);
    EXPECT_EQ(list.find("Orvan Next"), std::string::npos);
    EXPECT_EQ(std::count(list.begin(), list.end(), '\n'), 29);
}

// ---------------------------------------------------------------------------------------------------- detection

struct Signature {
    unsigned eax;
    unsigned ecx;
    unsigned edx;
    unsigned cores;
};

int detect(const Signature& signature, const char* vendor = "GenuineOrvan") {
    PlayedCpu cpu;
    cpu.vendor(4, vendor);
    cpu.set(1, 0, {signature.eax, 0, signature.ecx, signature.edx});
    cpu.set(4, 0, {(signature.cores - 1) << 26 | 1, 0, 0, 0});
    return kr_vekGetCpuType();
}

constexpr unsigned family6(unsigned model) {
    return (model >> 4) << 16 | 6U << 8 | (model & 15) << 4;
}

TEST(KrDetection, GenerationsAreKnownByFamilyAndModel) {
    EXPECT_EQ(detect({family6(15), 1U << 9, 0, 1}), 33);
    EXPECT_EQ(detect({family6(15), 1U << 9, 0, 2}), 33);
    EXPECT_EQ(detect({family6(15), 1U << 9, 0, 4}), 34);
    EXPECT_EQ(detect({family6(23), 1U << 19, 0, 2}), 35);
    EXPECT_EQ(detect({family6(26), 1U << 28 | 1U << 20, 0, 4}), 70);
    EXPECT_EQ(detect({family6(26), 1U << 20, 0, 4}), 37);
    EXPECT_EQ(detect({family6(28), 1U << 9 | 1U << 22, 0, 2}), 36);
    EXPECT_EQ(detect({15U << 8, 0, 0, 1}), 66);
}

TEST(KrDetection, ModelWithoutItsFeatureGoesByTheLevels) {
    EXPECT_EQ(detect({family6(15), 1U, 0, 2}), 66);
    EXPECT_EQ(detect({family6(23), 1U << 9, 0, 2}), 67);
    EXPECT_EQ(detect({family6(28), 1U << 9, 0, 2}), 67);
}

TEST(KrDetection, ExtendedFamilyIsAddedToFifteen) {
    EXPECT_EQ(detect({1U << 20 | 15U << 8, 0, 0, 1}), 0);
}

TEST(KrDetection, FamiliesOutsideTheMakersListGoByTheLevels) {
    EXPECT_EQ(detect({1U << 16 | 5U << 8 | 7U << 4, 1U << 19, 0, 1}), 68);
}

TEST(KrDetection, OtherMakersGoByTheLevels) {
    EXPECT_EQ(detect({family6(15), 1U << 9, 0, 4}, "OtherVendor!"), 67);
    EXPECT_EQ(detect({15U << 8, 0, 0, 1}, "OtherVendor!"), 0);
    EXPECT_EQ(detect({0, 1U << 28 | 1U << 20, 0, 1}, "OtherVendor!"), 70);
    EXPECT_EQ(detect({0, 1U << 20, 0, 1}, "OtherVendor!"), 69);
    EXPECT_EQ(detect({0, 1U << 19, 0, 1}, "OtherVendor!"), 68);
    EXPECT_EQ(detect({0, 1U, 0, 1}, "OtherVendor!"), 66);
    EXPECT_EQ(detect({0, 0, 1U << 26 | 1U << 25, 1}, "OtherVendor!"), 65);
    EXPECT_EQ(detect({0, 0, 1U << 25, 1}, "OtherVendor!"), 64);
}

TEST(KrDetection, SixtyFourBitsAreTheLastLevel) {
    PlayedCpu cpu;
    cpu.vendor(1);
    cpu.set(0x80000000U, 0, {0x80000001U, 0, 0, 0});
    cpu.set(0x80000001U, 0, {0, 0, 0, 1U << 29});
    EXPECT_EQ(kr_vekGetCpuType(), 96);
}

TEST(KrDetection, ProcessorWithoutIdentificationIsUnknownWithOneCore) {
    auto* const reader = krCpuidReader;
    krCpuidReader = nullptr;
    EXPECT_EQ(kr_vekGetCpuType(), 0);
    EXPECT_EQ(kr_vekGetNumCoresOnDie(), 1);
    krCpuidReader = reader;
}

TEST(KrDetection, CoresComeFromFunctionFour) {
    PlayedCpu cpu;
    cpu.vendor(3);
    cpu.set(4, 0, {7U << 26, 0, 0, 0});
    EXPECT_EQ(kr_vekGetNumCoresOnDie(), 1);
    cpu.vendor(4);
    EXPECT_EQ(kr_vekGetNumCoresOnDie(), 8);
}

// ---------------------------------------------------------------------------------------------------- cache

class KrLargestCache : public ::testing::Test {
protected:
    KrLargestCache() { kr_vekForgetMaxCacheSizeB(); }
    ~KrLargestCache() override { kr_vekForgetMaxCacheSizeB(); }
    int ask() {
        kr_vekForgetMaxCacheSizeB();
        m_size = -1;
        return kr_vekGetMaxCacheSizeB(&m_size);
    }
    PlayedCpu m_cpu;
    int m_size = -1;
};

TEST_F(KrLargestCache, InstructionCachesDoNotCount) {
    m_cpu.vendor(4);
    m_cpu.cache(0, 1, 1, 8, 64);
    m_cpu.cache(1, 2, 1, 8, 1024);
    m_cpu.cache(2, 3, 2, 4, 512);
    EXPECT_EQ(ask(), 0);
    EXPECT_EQ(m_size, 131072);
}

TEST_F(KrLargestCache, ProcessorIsAskedOnce) {
    m_cpu.vendor(4);
    m_cpu.cache(0, 1, 1, 8, 64);
    EXPECT_EQ(ask(), 0);
    const int calls = PlayedCpu::calls;
    EXPECT_GT(calls, 0);
    m_cpu.cache(0, 1, 1, 8, 128);
    int size = 0;
    EXPECT_EQ(kr_vekGetMaxCacheSizeB(&size), 0);
    EXPECT_EQ(size, 32768);
    EXPECT_EQ(PlayedCpu::calls, calls);
}

TEST_F(KrLargestCache, OnlyInstructionCachesAreNoAnswer) {
    m_cpu.vendor(4);
    m_cpu.cache(0, 2, 1, 8, 64);
    EXPECT_EQ(ask(), 37);
    EXPECT_EQ(m_size, 0);
    EXPECT_EQ(krGetMaxCacheSizeB(), 32768);
}

TEST_F(KrLargestCache, OtherMakersAndOldProcessorsAreNotAnswered) {
    m_cpu.cache(0, 1, 1, 8, 64);
    m_cpu.vendor(4, "OtherVendor!");
    EXPECT_EQ(ask(), 36);
    EXPECT_EQ(m_size, 0);
    EXPECT_EQ(krGetMaxCacheSizeB(), 32768);
    m_cpu.vendor(1);
    EXPECT_EQ(ask(), 36);
    EXPECT_EQ(krGetMaxCacheSizeB(), 0);
}

TEST_F(KrLargestCache, DescriptorsServeBelowFunctionFour) {
    m_cpu.vendor(2);
    m_cpu.set(2, 0, {0x00004301, 0, 0, 0x7D00});
    EXPECT_EQ(ask(), 0);
    EXPECT_EQ(m_size, 2048 * 1024);
    EXPECT_EQ(krGetMaxCacheSizeB(), 2048 * 1024);
    m_cpu.set(2, 0, {0x00004301, 0, 0, 0});
    EXPECT_EQ(ask(), 0);
    EXPECT_EQ(m_size, 512 * 1024);
}

TEST_F(KrLargestCache, RegistersWithBitThirtyOneDoNotCount) {
    m_cpu.vendor(2);
    m_cpu.set(2, 0, {0x00004101, 0x800000ECU, 0, 0});
    EXPECT_EQ(ask(), 0);
    EXPECT_EQ(m_size, 128 * 1024);
}

TEST_F(KrLargestCache, LowByteOfTheFirstRegisterThatCountsIsNeverCompared) {
    m_cpu.vendor(2);
    m_cpu.set(2, 0, {0x80000001U, 0x000000EC, 0x41, 0});
    EXPECT_EQ(ask(), 0);
    EXPECT_EQ(m_size, 128 * 1024);
}

TEST_F(KrLargestCache, AFirstRegisterWithItsCountAloneCounts) {
    m_cpu.vendor(2);
    m_cpu.set(2, 0, {1, 0x000000EC, 0, 0});
    EXPECT_EQ(ask(), 0);
    EXPECT_EQ(m_size, 24576 * 1024);
}

TEST_F(KrLargestCache, EveryDescriptorHasItsSize) {
    constexpr struct {
        unsigned descriptor;
        int kilobytes;
    } known[] = {
        {0xEC, 24576}, {0xEB, 18432}, {0x4D, 16384}, {0xEA, 12288}, {0x4C, 12288}, {0xE4, 8192}, {0xDE, 8192},
        {0x4B, 8192},  {0x47, 8192},  {0x4E, 6144},  {0x4A, 6144},  {0xE3, 4096},  {0xDD, 4096}, {0xD8, 4096},
        {0x49, 4096},  {0x29, 4096},  {0x46, 4096},  {0x48, 3072},  {0xE2, 2048},  {0xDC, 2048}, {0xD7, 2048},
        {0xD2, 2048},  {0x25, 2048},  {0x7D, 2048},  {0x85, 2048},  {0x45, 2048},  {0xD6, 1024}, {0xD1, 1024},
        {0x23, 1024},  {0x87, 1024},  {0x7C, 1024},  {0x78, 1024},  {0x84, 1024},  {0x44, 1024}, {0xD0, 512},
        {0x22, 512},   {0x7B, 512},   {0x80, 512},   {0x86, 512},   {0x3E, 512},   {0x7F, 512},  {0x83, 512},
        {0x43, 512},   {0x3D, 384},   {0x21, 256},   {0x7A, 256},   {0x82, 256},   {0x3C, 256},  {0x3F, 256},
        {0x42, 256},   {0x3A, 192},   {0x79, 128},   {0x39, 128},   {0x3B, 128},   {0x41, 128},
    };
    static_assert(std::size(known) == 55);
    for (const auto& row : known) {
        m_cpu.vendor(2);
        m_cpu.set(2, 0, {row.descriptor << 8 | 1U, 0, 0, 0});
        EXPECT_EQ(ask(), 0) << row.descriptor;
        EXPECT_EQ(m_size, row.kilobytes * 1024) << row.descriptor;
    }
}

TEST_F(KrLargestCache, ThirtyTwoSubLeavesAreLookedAt) {
    m_cpu.vendor(4);
    for (unsigned i = 0; i < 33; ++i) {
        m_cpu.cache(i, 1, 1, 8, 64 * (i + 1));
    }
    EXPECT_EQ(ask(), 0);
    EXPECT_EQ(m_size, 32 * 32768);
}

TEST_F(KrLargestCache, UnknownDescriptorsAreNoAnswer) {
    m_cpu.vendor(2);
    m_cpu.set(2, 0, {0x00FFFF01, 0, 0, 0});
    EXPECT_EQ(ask(), 37);
    EXPECT_EQ(m_size, 0);
    m_cpu.set(2, 0, {0x00004302, 0, 0, 0});
    EXPECT_EQ(ask(), 37);
}

} // namespace
