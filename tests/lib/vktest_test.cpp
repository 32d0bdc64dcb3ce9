// The base of library tests: status rule, order, cells, registration text, memory dump, second form of the table row.
#include "../api/harness_state.h"
#include "../api/streamcapture.h"
#include "vktest.h"

#include <gtest/gtest.h>

#include <string>

namespace {

const char* statusText(int status) {
    return status < 0 ? "text of an error" : "text of a warning";
}

krResult anyLoop(int, long long* clocks) {
    *clocks = 100;
    return krOk;
}

class Plain : public prTest {
public:
    explicit Plain(const char* name, const char* info = "TimPlain//KR_REG")
        : prTest(nullptr, nullptr, anyLoop, nullptr, name, "p_plain", info) {}
    double getFlops() override { return flops; }
    double getDivisor_el() override { return 4; }
    krResult runTiming() override {
        seed = vkVector::m_seed;
        errorsOnly = m_checkErrorsOnly;
        m_tool.m_funcClocks = 100;
        vkVector::m_seed = 99;
        return krOk;
    }
    double flops = -1;
    unsigned seed = 0;
    bool errorsOnly = true;
};

class VkTestBase : public testing::Test {
protected:
    VkTestBase() : m_status(vek_GetStatusString) { vek_GetStatusString = statusText; }
    ~VkTestBase() override {
        vek_GetStatusString = m_status;
        vkTest::m_checkErrorsOnly = false;
    }
    HarnessState state;

private:
    const char* (*m_status)(int);
};

class VkStatusRule : public VkTestBase {
protected:
    krResult check(int status, const char* name, OutputLevel level = ERR | WARN) {
        krTest::m_currentResult = krUndefined;
        ConsoleCapture console(level);
        const krResult result = vkTest::checkStatus(status, name);
        text = console.text();
        EXPECT_EQ(g_ostrm.msgLevel(), PERF);
        return result;
    }
    std::string text;
};

TEST_F(VkStatusRule, SuccessIsSilent) {
    EXPECT_EQ(check(0, "f"), krOk);
    EXPECT_EQ(text, "");
    EXPECT_EQ(krTest::m_currentResult, krUndefined);
}

TEST_F(VkStatusRule, ErrorIsToldAndRaises) {
    EXPECT_EQ(check(-5, "veksFoo", ERR), krFuncFail);
    EXPECT_EQ(text, "--VEK ERROR. status = -5 in veksFoo: text of an error\n");
    EXPECT_EQ(krTest::m_currentResult, krFuncFail);
}

TEST_F(VkStatusRule, WarningIsToldAndRaises) {
    EXPECT_EQ(check(3, "veksFoo"), krFuncWrn);
    EXPECT_EQ(text, "--VEK WARNING. status = 3 in veksFoo: text of a warning\n");
    EXPECT_EQ(krTest::m_currentResult, krFuncWrn);
}

TEST_F(VkStatusRule, WarningRaisesWhereWarningsAloneAreShown) {
    EXPECT_EQ(check(3, "veksFoo", WARN), krFuncWrn);
    EXPECT_EQ(krTest::m_currentResult, krFuncWrn);
}

TEST_F(VkStatusRule, HiddenWarningCountsAsOk) {
    EXPECT_EQ(check(1, "veksFoo", ERR), krFuncWrn);
    EXPECT_EQ(text, "");
    EXPECT_EQ(krTest::m_currentResult, krOk);
}

TEST_F(VkStatusRule, EmptyNameIsLeftOut) {
    check(-5, "");
    EXPECT_EQ(text, "--VEK ERROR. status = -5: text of an error\n");
}

TEST_F(VkStatusRule, ErrorsOnlyIgnoresWarnings) {
    vkTest::m_checkErrorsOnly = true;
    EXPECT_EQ(check(3, "f"), krOk);
    EXPECT_EQ(text, "");
    EXPECT_EQ(krTest::m_currentResult, krUndefined);
    EXPECT_EQ(check(-3, "f"), krFuncFail);
}

TEST_F(VkStatusRule, ResultNeverFalls) {
    check(-1, "f");
    ConsoleCapture console;
    vkTest::checkStatus(2, "f");
    EXPECT_EQ(krTest::m_currentResult, krFuncFail);
}

TEST_F(VkStatusRule, TestFillsInItsOwnName) {
    const Plain test("veksOwn_16s");
    ConsoleCapture console;
    EXPECT_EQ(test.checkStatus(-1), krFuncFail);
    EXPECT_EQ(console.text(), "--VEK ERROR. status = -1 in veksOwn_16s: text of an error\n");
}

TEST_F(VkTestBase, FloatingFunctionsAreNamedSo) {
    Plain floating("veksLPCToLSP_G729A_32f");
    Plain integer("veksLPCToLSP_G729A_16s");
    EXPECT_FALSE(floating.isFloatFunction()) << "flops are not known";
    floating.flops = integer.flops = 10;
    EXPECT_TRUE(floating.isFloatFunction());
    EXPECT_FALSE(integer.isFloatFunction());
    Plain wide("veksFFT_64fc");
    wide.flops = 1;
    EXPECT_TRUE(wide.isFloatFunction());
}

TEST_F(VkTestBase, EveryRunStartsFromTheSameSeed) {
    Plain test("veksA_16s");
    for (int i = 0; i < 2; ++i) {
        ConsoleCapture console(ERR);
        vkTest::m_checkErrorsOnly = true;
        EXPECT_EQ(test.run(), krOk);
        EXPECT_EQ(test.seed, 7U);
        EXPECT_FALSE(test.errorsOnly);
    }
}

TEST_F(VkTestBase, NameIsWrittenInThreeCells) {
    Plain test("veksAutoCorr_NormE_16s32s_ISfs");
    TableCapture table(g_cstrm);
    test.funcToCstrm();
    g_cstrm << "\n";
    EXPECT_EQ(table.text(), "veksAutoCorr_NormE,16s32s,ISfs\n");
}

TEST_F(VkTestBase, OrderIsThatOfTheGrammar) {
    const Plain a("veksAbc_16s");
    const Plain b("veksAbc_32f");
    EXPECT_LT(a.compareFunc(&b), 0);
    EXPECT_GT(b.compareFunc(&a), 0);
    EXPECT_EQ(a.compareFunc(&a), 0);
    EXPECT_EQ(a.compareFunc(&b), a.m_func.compare(vkFunc("veksAbc_32f")));
}

TEST_F(VkTestBase, RegistrationNamesTheLibraryLevelMacro) {
    Plain test("veksA", "Tim//KR_REG_KR_X");
    EXPECT_STREQ(test.regInfo().c_str(), "   Test has been registered by VK_REG_KR_X macro with loopMethod.\n"
                                         "   loopMethod is called for measuring.");
    Plain other("veksA", "Tim//VK_REG");
    EXPECT_STREQ(other.regInfo().c_str(), other.krTest::regInfo().c_str());
}

TEST_F(VkTestBase, MemoryIsDumpedAtDataLevelOnly) {
    Plain test("veksA");
    vkVector vector(vk16s);
    vector.init(vk16s);
    void* buffer = krMalloc(3, 0, 0, MEM_OBJECT_IS_BUFFER);
    void* part = krMalloc(8, 0, 0, MEM_OBJECT_IS_SUBOBJECT);
    void* none = krMalloc(8, 0, 0, nullptr);
    void* owned = krMalloc(4, 0, 0, static_cast<krObject*>(&vector));
    std::memcpy(buffer, "\1\2\3", 3);
    std::memset(owned, 0, 4);
    {
        ConsoleCapture console(ERR | WARN | PERF | INFO);
        EXPECT_EQ(test.printAllMemoryBlocks("t"), 0);
        EXPECT_EQ(console.text(), "");
    }
    ConsoleCapture console(ERR | WARN | PERF | DATA);
    EXPECT_EQ(test.printAllMemoryBlocks("before function calls"), 2);
    EXPECT_EQ(g_ostrm.msgLevel(), PERF);
    const std::string text = console.text();
    const std::string start =
        "======== OBJECTS OUTPUT START === before function calls === OBJECTS OUTPUT START ========\n";
    const std::string end = "======== OBJECTS OUTPUT END === before function calls === OBJECTS OUTPUT END ========\n";
    const std::string block = std::string("MemoryBlock size=3\n") + vkVector::getByteString(buffer, 3).c_str() + "\n\n";
    const std::string object = std::string(vector.objectInfo().c_str()) + "\n" + vector.getString().c_str() + "\n\n";
    const std::string one = "======== Object 1: ";
    const std::string two = "======== Object 2: ";
    EXPECT_TRUE(text == start + one + block + two + object + end || text == start + one + object + two + block + end)
        << text;
    for (void* pointer : {buffer, part, none, owned}) {
        krFree(pointer);
    }
}

TEST_F(VkTestBase, SizeParameterJoinsTheGridOrItsCacheIterator) {
    Plain test("veksA");
    test.initSettings();
    krIterator<VekiSize> size("size");
    EXPECT_EQ(test.regCacheParm(size, nullptr), &size);
    EXPECT_EQ(test.m_parms.size(), 1);
    EXPECT_EQ(test.m_cacheIter, nullptr);
    krTest::m_cache = true;
    test.initSettings();
    vkImage image;
    krParameter* wrapped = test.regCacheParm(size, image, nullptr);
    EXPECT_EQ(wrapped, test.m_cacheIter);
    EXPECT_EQ(*test.m_parms.begin(), wrapped);
    krIterator<VekiSize> second("second");
    EXPECT_EQ(test.regCacheParm(second, nullptr), &second) << "one cache parameter a test";
}

TEST_F(VkTestBase, SecondFormOfTheTableRow) {
    Plain test("veksA_32f");
    test.m_tool.m_funcClocks = 2000;
    test.m_tool.m_numLoops = 16;
    test.flops = 4000;
    TableCapture table(g_cstrm);
    test.resultTitleToCStream();
    g_cstrm << "\n";
    krTest::m_hot = 1;
    test.resultTitleToCStream();
    g_cstrm << "\n";
    static_cast<prTest&>(test).resultToCstrm();
    g_cstrm << "\n";
    krStringList hot;
    hot.append("veksA_32f");
    g_pHotList = &hot;
    test.m_tool.setMethodStat(1, 1);
    static_cast<prTest&>(test).resultToCstrm();
    g_cstrm << "\n";
    EXPECT_EQ(table.text(), "Comment,Clocks,per,Time(usec),Time_el(usec),MFlops\n"
                            "Comment,Clocks,per,Time(usec),Time_el(usec),MFlops,Interest\n"
                            "nLps=16,2000, ,2.000e+03,5.000e+02,2000,-\n"
                            "nStat=16,2000, ,2.000e+03,5.000e+02,2000,Hot\n");
}

} // namespace
