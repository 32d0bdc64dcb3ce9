// Functions of one's own: what a registration makes of parameters, vectors, arguments and results.
#include "krown.h"

#include "harness_state.h"
#include "krbase.h"
#include "noleakcheck.h"
#include "streamcapture.h"
#include "visits.h"

#include <gtest/gtest.h>

#include <map>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// ------------------------------------------------------------------------------------------------ what is measured

int s_calls = 0;
std::string s_log;
int s_status = 0;
std::vector<short> s_seen;

void count() {
    ++s_calls;
}

void stay() {
    visit('c');
}

int status() {
    ++s_calls;
    return s_status;
}

void throwIfPositive(int n) {
    if (n > 0) {
        throw std::runtime_error("no way");
    }
}

int noteArgument(int value) {
    s_log += std::to_string(value) + " ";
    return 0;
}

void noteTwo(int a, int b) {
    s_log += std::to_string(a) + "," + std::to_string(b) + " ";
}

void look(const short* data, int n) {
    s_seen.assign(data, data + n);
}

// Fails if the contents are not those that were declared.
int spoil(short* data, int n) {
    int status = 0;
    for (int i = 0; i < n; ++i) {
        status = data[i] == 7 ? status : -4;
        data[i] = 1;
    }
    return status;
}

class KrOwn : public testing::Test {
protected:
    KrOwn() {
        s_calls = 0;
        s_log = "";
        s_status = 0;
        s_seen.clear();
        krTest::m_numParmsColm = 9;
        krTest::m_numResultColm = 5;
        g_pHotList = &hot;
        g_tool.setMethodLoop(2);
        vek_GetStatusString = [](int code) { return code < 0 ? "Error" : "Warning"; };
    }
    ~KrOwn() override { vek_GetStatusString = statusString; }
    // The test that was registered last.
    static krOwnTest& last() { return *static_cast<krOwnTest*>(*--pTestList->end()); }
    krResult run(OutputLevel level = ERR | WARN) { return run(last(), level); }
    krResult run(krTest& test, OutputLevel level = ERR | WARN) {
        ConsoleCapture console(level);
        TableCapture table(g_cstrm);
        TableCapture sums(g_ustrm);
        const krResult result = test.run();
        text = console.text();
        rows = table.text();
        return result;
    }
    bool told(const std::string& part) const { return text.find(part) != std::string::npos; }

    HarnessState state;
    const char* (*statusString)(int) = vek_GetStatusString;
    krStringList hot;
    std::string text;
    std::string rows;
};

} // namespace

// ------------------------------------------------------------------------------------------------ calls and results

TEST_F(KrOwn, FunctionIsCalledOnceBeforehandAndThenAsOftenAsTheToolAsks) {
    kr::measure<count>("count");
    g_tool.setMethodLoop(5);
    EXPECT_EQ(krOk, run());
    EXPECT_EQ(6, s_calls);
    s_calls = 0;
    g_tool.setMethodLoop(1);
    EXPECT_EQ(krOk, run());
    EXPECT_EQ(2, s_calls);
}

TEST_F(KrOwn, StatisticCallsOnceBeforehandAndThenToItsMinima) {
    kr::measure<count>("count");
    g_tool.setMethodStat(9, 0);
    EXPECT_EQ(krOk, run());
    EXPECT_EQ(10, s_calls);
    EXPECT_EQ("nCalls=9", std::string(last().m_tool.m_comment.c_str()));
}

TEST_F(KrOwn, StatisticAddsUpTheClocksOfEachCallButTheFirst) {
    kr::measure<stay>("stay");
    run();
    forgetVisits();
    int calls = 2;
    long long clocks = 0;
    EXPECT_EQ(krOk, last().m_funcStat(&calls, &clocks));
    visit('k');
    ASSERT_EQ("ccck", visited());
    EXPECT_GE(clocks, ticksWithin(1, 1) + ticksWithin(2, 2));
    EXPECT_LE(clocks, ticksBetween(0, 2) + ticksBetween(1, 3));
}

TEST_F(KrOwn, LoopTakesTheClocksOfAllItsCallsButTheFirst) {
    kr::measure<stay>("stay");
    run();
    forgetVisits();
    long long clocks = 0;
    EXPECT_EQ(krOk, last().m_funcLoop(2, &clocks));
    visit('k');
    ASSERT_EQ("ccck", visited());
    EXPECT_GE(clocks, ticksWithin(1, 2));
    EXPECT_LE(clocks, ticksBetween(0, 3));
}

TEST_F(KrOwn, ALoopOfNoCallsStillCallsOnceAndGivesNoClocks) {
    kr::measure<count>("count");
    run();
    s_calls = 0;
    long long clocks = 77;
    EXPECT_EQ(krOk, last().m_funcLoop(0, &clocks));
    EXPECT_EQ(0, clocks);
    EXPECT_EQ(1, s_calls);
}

TEST_F(KrOwn, LambdaIsMeasuredLikeAFunction) {
    kr::measure<[](int n) { s_calls += n; }>("lambda", 10);
    g_tool.setMethodLoop(3);
    EXPECT_EQ(krOk, run());
    EXPECT_EQ(40, s_calls);
}

TEST_F(KrOwn, NegativeIntFailsTheTestAndThePossibleMistakeIsNamed) {
    kr::measure<status>("status");
    s_status = -5;
    EXPECT_EQ(krFuncFail, run());
    EXPECT_TRUE(told("--VEK ERROR. status = -5 in status: Error\n"
                     "  If this int is a value and no status, register the function with .returnsValue()\n"))
        << text;
    EXPECT_EQ("", rows);
}

TEST_F(KrOwn, PositiveIntIsAWarningAndTheLineIsKept) {
    kr::measure<status>("status");
    s_status = 3;
    EXPECT_EQ(krFuncWrn, run());
    EXPECT_TRUE(told("--VEK WARNING. status = 3 in status: Warning\n")) << text;
    EXPECT_NE("", rows);
}

TEST_F(KrOwn, StatisticEndsAtANegativeStatusAndKeepsAWarning) {
    kr::measure<status>("status");
    g_tool.setMethodStat(9, 0);
    s_status = -1;
    EXPECT_EQ(krFuncFail, run());
    EXPECT_EQ(1, s_calls);
    s_status = 1;
    EXPECT_EQ(krFuncWrn, run());
}

TEST_F(KrOwn, AnIntThatIsDeclaredAValueFailsNothingInAnyMethod) {
    kr::measure<status>("status").returnsValue();
    s_status = -5;
    EXPECT_EQ(krOk, run());
    g_tool.setMethodStat(9, 0);
    s_calls = 0;
    EXPECT_EQ(krOk, run());
    EXPECT_EQ(10, s_calls);
    EXPECT_EQ(0, last().m_funcCall());
    EXPECT_EQ("", text.substr(0, text.find("+--"))) << text;
}

TEST_F(KrOwn, OtherResultsAreValues) {
    kr::measure<[] { return -1.5; }>("real");
    EXPECT_EQ(krOk, run());
    kr::measure<[] { return -7L; }>("wide");
    EXPECT_EQ(krOk, run());
    kr::measure<[] { return std::pair<long, double>(-1, -1); }>("pair");
    EXPECT_EQ(krOk, run());
}

TEST_F(KrOwn, EnumerationIsAStatus) {
    enum Outcome { bad = -2 };
    kr::measure<[] { return bad; }>("outcome");
    EXPECT_EQ(krFuncFail, run());
    EXPECT_FALSE(told("returnsValue"));
}

TEST_F(KrOwn, ExceptionCostsOneTestAlone) {
    kr::measure<throwIfPositive>("thrower", 1);
    EXPECT_EQ(krExcptFail, run());
    EXPECT_TRUE(told("no way")) << text;
    kr::measure<[] { throw 5; }>("oddThrower");
    EXPECT_EQ(krExcptFail, run());
    kr::measure<count>("count");
    EXPECT_EQ(krOk, run());
    int blocks = 0;
    EXPECT_EQ(nullptr, krMallocFirst(&blocks, nullptr));
}

TEST_F(KrOwn, FaultLeavesNoVectorBehind) {
    [[maybe_unused]] const NoLeakCheck jump;
    kr::Vector<short> data(16);
    kr::measure<[](short*) { __asm__ volatile("movl $1, (%0)"
                                              :
                                              : "r"(static_cast<int*>(nullptr))
                                              : "memory"); }>(
        "fault", data);
    EXPECT_EQ(krExcptFail, run());
    EXPECT_EQ(nullptr, data.data());
    EXPECT_EQ(nullptr, krMallocFirst(nullptr, nullptr));
}

// ------------------------------------------------------------------------------------------------ the grid

TEST_F(KrOwn, ParametersAreWalkedInTheOrderInWhichTheArgumentsNameThem) {
    kr::Param outer("outer", {1, 2});
    kr::Param inner("inner", kr::steps(10, 30, 10));
    kr::measure<noteTwo>("two", outer, inner);
    g_tool.setMethodLoop(1);
    EXPECT_EQ(krOk, run());
    EXPECT_EQ("1,10 1,10 1,20 1,20 1,30 1,30 2,10 2,10 2,20 2,20 2,30 2,30 ", s_log);
}

TEST_F(KrOwn, OverSettlesTheOrderAndBringsParametersThatAreNoArguments) {
    kr::Param a("a", {1, 2});
    kr::Param b("b", {5, 6});
    kr::Param c("c", {8});
    kr::measure<noteTwo>("two", a, b).over(c, b);
    g_tool.setMethodStat(1, 0);
    EXPECT_EQ(krOk, run());
    EXPECT_EQ("1,5 1,5 2,5 2,5 1,6 1,6 2,6 2,6 ", s_log);
    EXPECT_EQ(0U, rows.find("two,-,-,8,5,1,")) << rows;
}

TEST_F(KrOwn, SizesBringTheirParameters) {
    kr::Param len("len", {2, 3});
    kr::Param lags("lags", {1});
    kr::Vector<short> data(len * lags + 1);
    kr::measure<[](short*) {}>("sized", data).elements(len * lags);
    EXPECT_EQ(krOk, run(ERR | WARN | PERF));
    EXPECT_TRUE(told("len=2 lags=1 \n")) << text;
    EXPECT_TRUE(told("len=3 lags=1 \n")) << text;
    EXPECT_TRUE(told("/        3=")) << text;
}

TEST_F(KrOwn, ASizeOfAVectorThatIsNoArgumentIsWalkedToo) {
    kr::Param len("len", {2, 3});
    kr::Vector<short> table(len);
    kr::measure<count>("count").with(table);
    EXPECT_EQ(krOk, run(ERR | WARN | PERF));
    EXPECT_TRUE(told("len=2 \n")) << text;
    EXPECT_TRUE(told("len=3 \n")) << text;
}

TEST_F(KrOwn, SizeExpressionsAreComputedForEachLineWithinInt) {
    kr::Param len("len", {100});
    len.define();
    ASSERT_TRUE(len.firstValue());
    EXPECT_EQ(110, (len + 10).value());
    EXPECT_EQ(-90, (10 - len).value());
    EXPECT_EQ(20000, (2 * len * len).value());
    EXPECT_EQ(33, (len / 3).value());
    EXPECT_EQ(2147483647, (len * 2000000000).value());
    EXPECT_EQ(-2147483647 - 1, (len * -2000000000).value());
    const kr::Size twice = [&len] { return len.value() * 2; };
    EXPECT_EQ(200, twice.value());
}

TEST_F(KrOwn, DivisionByAZeroParameterIsToldAndContained) {
    kr::Param none("none", {0});
    kr::measure<noteArgument>("div", 8 / none);
    EXPECT_EQ(krExcptFail, run());
    EXPECT_TRUE(told("a size is divided by zero")) << text;
}

TEST_F(KrOwn, AWalkThatGetsNowhereIsToldWhenTheTestStarts) {
    kr::Param bad("bad", kr::steps(1, 5, -2));
    kr::measure<noteArgument>("walk", bad);
    EXPECT_EQ(krExcptFail, run());
    EXPECT_TRUE(told("Conflict between iterator limits and operation")) << text;
}

TEST_F(KrOwn, WalksGoUpDownAndByFactors) {
    kr::Param up("up", kr::steps(40, 130, 40));
    kr::Param down("down", kr::steps(9, 5, 2));
    kr::Param factor("factor", kr::powers(1, 20, 4));
    const auto values = [](kr::Param& parm) {
        std::string list;
        parm.define();
        for (bool more = parm.firstValue(); more; more = parm.nextValue()) {
            list += std::to_string(static_cast<int>(parm)) + " ";
        }
        return list;
    };
    EXPECT_EQ("40 80 120 ", values(up));
    EXPECT_EQ("9 7 5 ", values(down));
    EXPECT_EQ("1 4 16 ", values(factor));
}

TEST_F(KrOwn, AUsersValuesHoldForOneTest) {
    kr::Param len("len", {1, 2});
    kr::measure<noteArgument>("first", len);
    kr::measure<noteArgument>("second", len);
    g_tool.setMethodStat(1, 0);
    g_istrm.setIniSection("first");
    len.define();
    len.translate("77");
    EXPECT_EQ(krOk, run());
    EXPECT_EQ("1 1 2 2 ", s_log);
}

// ------------------------------------------------------------------------------------------------ data

TEST_F(KrOwn, VectorsAreFilledAsDeclared) {
    kr::Vector<short> zeros(4);
    kr::measure<look>("zeros", zeros, 4);
    run();
    EXPECT_EQ((std::vector<short>{0, 0, 0, 0}), s_seen);
    kr::Vector<short> same(3, kr::constant(-9));
    kr::measure<look>("same", same, 3);
    run();
    EXPECT_EQ((std::vector<short>{-9, -9, -9}), s_seen);
    kr::Vector<short> squares(4, [](int i) { return static_cast<short>(i * i); });
    kr::measure<look>("squares", squares, 4);
    run();
    EXPECT_EQ((std::vector<short>{0, 1, 4, 9}), s_seen);
}

TEST_F(KrOwn, RandomIntegersSpreadOverTheWholeRangeAndNoFurther) {
    kr::Vector<short> data(6000, kr::random(-1, 1));
    kr::measure<look>("random", data, 6000);
    run();
    std::map<int, int> counts;
    for (const short value : s_seen) {
        ++counts[value];
    }
    ASSERT_EQ(3U, counts.size());
    for (const auto& [value, number] : counts) {
        EXPECT_NEAR(2000, number, 200) << value;
    }
}

TEST_F(KrOwn, RandomRealsStayInTheirRange) {
    kr::Vector<float> data(1000, kr::random(0.5, 0.75));
    static float least;
    static float most;
    kr::measure<[](const float* values) {
        least = *std::min_element(values, values + 1000);
        most = *std::max_element(values, values + 1000);
    }>("reals", data);
    run();
    EXPECT_GE(least, 0.5F);
    EXPECT_LT(least, 0.51F);
    EXPECT_LT(most, 0.75F);
    EXPECT_GT(most, 0.74F);
}

TEST(KrOwnRandom, DataAreTheSameInEveryVersion) {
    // Tables of two versions compare only if both were measured on the same data.
    EXPECT_EQ(0.7457795094105547, kr::detail::spread(0, 0));
    EXPECT_EQ(0.27357846347706083, kr::detail::spread(0, 1));
    EXPECT_EQ(0.4915590192867708, kr::detail::spread(1, 0));
    EXPECT_EQ(0.8295739015444097, kr::detail::spread(7, 1000));
}

TEST_F(KrOwn, RandomDataAreTheSameInEveryRunAndDifferFromVectorToVector) {
    static std::vector<short> second;
    kr::Vector<short> a(50, kr::random(-1000, 1000));
    kr::Vector<short> b(50, kr::random(-1000, 1000));
    kr::measure<[](const short* first, const short* other) {
        look(first, 50);
        second.assign(other, other + 50);
    }>("both", a, b);
    run();
    EXPECT_NE(s_seen, second);
    const std::vector<short> before = s_seen;
    run();
    EXPECT_EQ(before, s_seen);
}

TEST_F(KrOwn, VectorsFollowTheAlignmentSettings) {
    static std::uintptr_t where;
    kr::Vector<int> data(16);
    kr::measure<[](int* place) { where = reinterpret_cast<std::uintptr_t>(place); }>("place", data);
    krSetAlignByByte(true);
    krSetVectorAlign(3);
    run();
    EXPECT_EQ(3U, where % 64);
    krSetAlignByByte(false);
    run();
    EXPECT_EQ(12U, where % 64);
    krSetAlignByByte(true);
    krSetVectorAlign(0);
    run();
    EXPECT_EQ(0U, where % 64);
}

TEST_F(KrOwn, ASizeBelowOneEndsTheTestAsADataErrorAndKeepsTheLinesBefore) {
    kr::Param len("len", {2, -3, 4});
    kr::Vector<short> data(len);
    kr::measure<look>("look", data, len);
    EXPECT_EQ(krDataFail, run());
    EXPECT_TRUE(told("-- Memory error: can't allocate -6 bytes\n-- test data error on test parameters:\nlen=-3 \n"))
        << text;
    EXPECT_EQ(2U, s_seen.size());
    EXPECT_EQ(0U, rows.find("look,-,-,2,")) << rows;
}

TEST_F(KrOwn, ALineWithoutElementsIsADataError) {
    kr::Param len("len", {0});
    kr::measure<noteArgument>("none", len).elements(len);
    EXPECT_EQ(krDataFail, run());
    EXPECT_TRUE(told("-- test data error on test parameters:\nlen=0 \n")) << text;
    EXPECT_EQ("", s_log);
}

TEST_F(KrOwn, ASizeThatNoMemoryHoldsIsToldAndFailsNothingElse) {
    kr::Param len("len", {2147483647});
    kr::Vector<double> data(len);
    kr::measure<[](double*) {}>("huge", data);
    EXPECT_EQ(krDataFail, run());
    EXPECT_TRUE(told("-- Memory error: can't allocate 2147483647 bytes\n")) << text;
}

TEST_F(KrOwn, RestoredVectorIsWholeBeforeEveryCallInEveryMethod) {
    kr::Restored<short> data(8, kr::constant(7));
    kr::measure<spoil>("spoil", data, 8);
    g_tool.setMethodLoop(5);
    EXPECT_EQ(krOk, run()) << text;
    g_tool.setMethodStat(5, 0);
    EXPECT_EQ(krOk, run()) << text;
}

TEST_F(KrOwn, AVectorIsLeftAsTheFunctionLeavesIt) {
    kr::Vector<short> data(8, kr::constant(7));
    kr::measure<spoil>("spoil", data, 8);
    EXPECT_EQ(krFuncFail, run());
}

TEST_F(KrOwn, RestoredContentsAreThoseThatTheSetUpLeft) {
    kr::Restored<short> data(8);
    kr::measure<spoil>("spoil", data, 8).setup([&data] { std::fill_n(data.data(), 8, short{7}); });
    g_tool.setMethodLoop(5);
    EXPECT_EQ(krOk, run()) << text;
}

TEST_F(KrOwn, BeforeRunsBeforeEveryCall) {
    kr::measure<[] { s_log += "call "; }, [] { s_log += "before "; }>("pair");
    g_tool.setMethodLoop(2);
    EXPECT_EQ(krOk, run());
    EXPECT_EQ("before call before call before call ", s_log);
    s_log = "";
    g_tool.setMethodStat(1, 0);
    EXPECT_EQ(krOk, run());
    EXPECT_EQ("before call before call ", s_log);
    EXPECT_NE(nullptr, last().m_funcInit);
}

TEST_F(KrOwn, SetUpAndTeardownFrameEachLine) {
    kr::Param n("n", {1, 2});
    kr::measure<noteArgument>("framed", n).setup([] { s_log += "["; }).teardown([] { s_log += "] "; });
    g_tool.setMethodStat(1, 0);
    EXPECT_EQ(krOk, run());
    EXPECT_EQ("[1 1 ] [2 2 ] ", s_log);
}

TEST_F(KrOwn, ALineForWhichTheSetUpSaysNoIsLeftOut) {
    kr::Param n("n", {1, 2, 3});
    kr::measure<noteArgument>("some", n).setup([&n] { return n != 2; });
    g_tool.setMethodStat(1, 0);
    EXPECT_EQ(krOk, run());
    EXPECT_EQ("1 1 3 3 ", s_log);
}

TEST_F(KrOwn, AnExceptionOfTheSetUpIsContained) {
    kr::measure<count>("count").setup([] { throw std::runtime_error("no input file"); });
    EXPECT_EQ(krExcptFail, run());
    EXPECT_TRUE(told("no input file")) << text;
    EXPECT_EQ(0, s_calls);
}

TEST_F(KrOwn, VectorsThatAreNoArgumentsStandForTheSetUp) {
    static kr::Vector<int> table(4, kr::constant(5));
    static int seen;
    kr::measure<count>("count").with(table).setup([] { seen = table[3]; });
    EXPECT_EQ(krOk, run());
    EXPECT_EQ(5, seen);
}

// ------------------------------------------------------------------------------------------------ arguments

TEST_F(KrOwn, ArgumentsAreConvertedToWhatTheFunctionTakes) {
    enum class Mode { fast = 1, slow = 2 };
    static std::string seen;
    static int object;
    object = 0;
    kr::Param mode("mode", {2});
    kr::Vector<float> data(3, kr::constant(4));
    kr::measure<[](Mode m, double real, std::span<const float> view, int& target, const int& constant, bool flag) {
        seen = std::to_string(static_cast<int>(m)) + " " + std::to_string(real) + " " + std::to_string(view.size()) +
               " " + std::to_string(view[2]) + " " + std::to_string(constant) + " " + (flag ? "yes" : "no");
        ++target;
    }>("many", mode, 3, data, object, 12.9, [] { return true; });
    EXPECT_EQ(krOk, run());
    EXPECT_EQ("2 3.000000 3 4.000000 12 yes", seen);
    EXPECT_EQ(3, object);
}

TEST_F(KrOwn, AnArgumentMayPointIntoAVectorAndBeComputedForEachLine) {
    kr::Param lag("lag", {1, 3});
    kr::Vector<short> data(8, [](int i) { return static_cast<short>(i); });
    kr::measure<noteTwo>(
        "place", [&] { return data.data()[lag]; }, lag + 100)
        .with(data);
    g_tool.setMethodStat(1, 0);
    EXPECT_EQ(krOk, run());
    EXPECT_EQ("1,101 1,101 3,103 3,103 ", s_log);
    kr::measure<look>("look", data + lag, 2);
    run();
    EXPECT_EQ((std::vector<short>{3, 4}), s_seen);
}

TEST_F(KrOwn, OneFunctionMayBeMeasuredTwiceOnDifferentData) {
    kr::measure<noteArgument>("first", 1);
    krOwnTest& first = last();
    kr::measure<noteArgument>("second", 2);
    g_tool.setMethodStat(1, 0);
    run(first);
    run();
    run(first);
    EXPECT_EQ("1 1 2 2 1 1 ", s_log);
}

TEST_F(KrOwn, OpaqueAndKeepLeaveTheValueAsItIs) {
    EXPECT_EQ(5, kr::opaque(5));
    EXPECT_EQ(-2.5, kr::opaque(-2.5));
    const std::pair<int, double> both(3, 4.5);
    kr::keep(both);
    kr::keep(1.5F);
    kr::keep(7L);
    kr::keep(2.5L);
    const std::pair<short, short> small(1, 2);
    kr::keep(small);
    EXPECT_EQ(3, both.first);
    EXPECT_EQ(2, small.second);
}

// ------------------------------------------------------------------------------------------------ what shows

TEST_F(KrOwn, TitleNamesTheFileAndTheRowHasThreeCellsForTheName) {
    kr::Param len("len", {40});
    kr::measure<noteArgument>("noted", len).elements(len, "smp").flops(2 * len);
    EXPECT_EQ(krOk, run(ERR | WARN | PERF));
    EXPECT_TRUE(told("| Test      : kr::measure ")) << text;
    EXPECT_TRUE(told("| Source    : krown_test ")) << text;
    EXPECT_TRUE(told("Test has been registered with loopMethod, statMethod, funcCall.\n")) << text;
    EXPECT_EQ(0U, rows.find("noted,-,-,40,-,-,-,-,-,nLps=2,")) << rows;
    EXPECT_NE(std::string::npos, rows.find(",smp,")) << rows;
    EXPECT_EQ(80, last().getFlops());
    EXPECT_EQ(40, last().getDivisor());
}

TEST_F(KrOwn, AFileWithoutOptimisationIsToldWithEachOfItsTests) {
    kr::detail::Code code;
    kr::measure<count>("count");
    run();
#ifdef __OPTIMIZE__
    EXPECT_FALSE(told("without optimisation")) << text;
#else
    EXPECT_TRUE(told("-- Warning: krown_test was compiled without optimisation")) << text;
#endif
}

TEST_F(KrOwn, CacheStatesChangeTheFirstParameterThatSizesAVector) {
    PlayedCpu cpu;
    cpu.vendor(4);
    cpu.cache(0, 1, 1, 125, 125);
    kr_vekForgetMaxCacheSizeB();
    krTest::m_cache = true;
    kr::Param mode("mode", {1});
    kr::Param len("len", {64});
    kr::Vector<char> data(len);
    kr::measure<[](int, char*) {}>("cached", mode, data);
    EXPECT_EQ(krOk, run(ERR | WARN | PERF)) << text;
    EXPECT_TRUE(told("inCache:mode=1 len=")) << text;
    EXPECT_TRUE(told("outofCache:mode=1 len=")) << text;
    kr::measure<count>("uncached");
    run();
    EXPECT_TRUE(told("-- Can't run In-Outof-Cache timing: no program support for function uncached\n")) << text;
    kr_vekForgetMaxCacheSizeB();
}

TEST_F(KrOwn, SetAndUseBringsAllVectorsBackBeforeEachCall) {
    kr::Vector<short> data(8, kr::constant(7));
    kr::measure<spoil>("spoil", data, 8);
    g_tool.m_setUse = true;
    krTool::m_pCheckStatus = [](int status) { return status < 0 ? krFuncFail : krOk; };
    // The call beforehand spoils the data; all others find them whole.
    s_status = 0;
    g_tool.setMethodLoop(3);
    EXPECT_EQ(krOk, run()) << text;
}
