// The life of a test: registration, the phases of a run, the walk over the grid and how a failure leaves each phase.
#include "krbase.h"
#include "krexcept.h"
#include "notedtest.h"
#include "tempdir.h"

namespace {

TEST(KrTestInfoText, IsSplitAtTwoSlashes) {
    const struct {
        const char *text, *cls, *mode, *macro;
    } table[] = {{"Tim7291cdbk//VK_REG", "Tim7291cdbk", "", "VK_REG"},
                 {"krPoly/decimating mode/VK_REG", "krPoly", "decimating mode", "VK_REG"},
                 {"Tim", "Tim", "", ""},
                 {"Tim/rest of it", "Tim", "rest of it", ""},
                 {"a/b/c/d", "a", "b", "c/d"},
                 {"", "", "", ""}};
    for (const auto& row : table) {
        const krTestInfo info(row.text);
        EXPECT_STREQ(info.m_class.c_str(), row.cls);
        EXPECT_STREQ(info.m_mode.c_str(), row.mode);
        EXPECT_STREQ(info.m_macro.c_str(), row.macro);
    }
}

TEST(KrTestStart, ATestThatIsMadeHasNoResult) {
    krTest::m_currentResult = krDataWrn;
    const Noted test;
    EXPECT_EQ(krTest::m_currentResult, krUndefined);
}

TEST(KrResultScale, NamesAndTexts) {
    enum Kind { plain, warning, failure };
    static constexpr struct {
        Kind kind;
        const char* name;
        const char* text;
    } scale[] = {{plain, "UNDEFINED", "was not run"},
                 {plain, "OK", "successfully"},
                 {warning, "ACCURWRN", "wrong measure accuracy"},
                 {warning, "BADSTSWRN", "modified control status"},
                 {warning, "DATAWRN", "test data warning"},
                 {warning, "FUNCWRN", "lib function warning"},
                 {warning, "WARNING", "warning"},
                 {failure, "ACCURFAIL", "accuracy error"},
                 {failure, "DATAFAIL", "test data error"},
                 {failure, "FUNCFAIL", "lib function error"},
                 {failure, "EXCPTFAIL", "exception"},
                 {failure, "FAIL", "error"}};
    int code = 0;
    for (const auto& row : scale) {
        const auto result = static_cast<krResult>(code++);
        EXPECT_STREQ(krResultName(result).c_str(), row.name);
        EXPECT_STREQ(krResultString(result).c_str(), row.text);
        EXPECT_EQ(krIsFailure(result), row.kind == failure) << row.name;
        EXPECT_EQ(krIsWarning(result), row.kind == warning) << row.name;
    }
    EXPECT_STREQ(krResultName(static_cast<krResult>(12)).c_str(), "UNKNOWN");
    EXPECT_STREQ(krResultString(static_cast<krResult>(-1)).c_str(), "unknown result");
}

TEST_F(KrTestRun, ConstructorsTakeTheirFunctions) {
    krTest old(krFuncOld([](krTool&, int) { return krOk; }), "n", "a\\b/c", "T");
    EXPECT_NE(old.m_funcOld, nullptr);
    EXPECT_EQ(old.m_funcLoop, nullptr);
    EXPECT_STREQ(old.m_srcName.c_str(), "c");
    krTest two(nullptr, krFuncStat([](int*, long long*) { return krOk; }), "n", "f", "T");
    EXPECT_EQ(two.m_funcLoop, nullptr);
    EXPECT_NE(two.m_funcStat, nullptr);
    krTest four(krFuncCall([] { return 0; }), nullptr, nullptr, nullptr, "n", "f", "T");
    EXPECT_NE(four.m_funcCall, nullptr);
    EXPECT_EQ(four.m_funcInit, nullptr);
    EXPECT_EQ(four.m_funcOld, nullptr);
    EXPECT_EQ(four.m_startTime, four.m_endTime);
}

TEST_F(KrTestRun, PhasesOfARunAndTheOdometer) {
    Noted test;
    EXPECT_EQ(run(test), krOk);
    EXPECT_EQ(test.log, "begin start line(1,10) const time flush line(1,20) time flush line(2,10) time flush "
                        "line(2,20) time flush end stop endTest");
    EXPECT_EQ(rows, fourRows);
}

TEST_F(KrTestRun, TestWithoutParametersHasOneLine) {
    Noted test;
    test.withParms = false;
    EXPECT_EQ(run(test), krOk);
    EXPECT_EQ(rows, "veksFoo,-,-,-,nLps=1,100, ,0.1,-\n");
}

TEST_F(KrTestRun, EmptyListIsTold) {
    struct Empty : Noted {
        void parmsFromIstrm() override { b.clear(); }
    } test;
    EXPECT_EQ(run(test, ERR), krDataFail);
    EXPECT_EQ(test.log, "begin start end stop endTest");
    EXPECT_TRUE(told("-- One of argument list for timing is empty\n"));
    EXPECT_FALSE(told("-- Error while initialization"));
}

TEST_F(KrTestRun, NormalEndDoesNotTellOfAnEmptyList) {
    Noted test;
    run(test);
    EXPECT_FALSE(told("-- One of argument"));
}

TEST_F(KrTestRun, FailureEndsTheWalkAndKeepsTheLinesBeforeIt) {
    Noted test;
    int line = 0;
    test.time = [&line] { return ++line == 2 ? krFuncFail : krOk; };
    EXPECT_EQ(run(test), krFuncFail);
    EXPECT_EQ(test.log, "begin start line(1,10) const time flush line(1,20) time flush stop endTest");
    EXPECT_EQ(rows, "veksFoo,1,10,-,nLps=1,100, ,0.1,-\n");
    EXPECT_TRUE(told("-- lib function error on test parameters:\n"));
}

TEST_F(KrTestRun, WarningGoesOn) {
    Noted test;
    test.time = [] { return krFuncWrn; };
    EXPECT_EQ(run(test), krFuncWrn);
    EXPECT_EQ(std::count(rows.begin(), rows.end(), '\n'), 4);
}

TEST_F(KrTestRun, WarningAtErrorLevelStaysOkAndIsWritten) {
    Noted test;
    test.time = [] { return krAccurWrn; };
    EXPECT_EQ(run(test, ERR), krOk);
    EXPECT_EQ(std::count(rows.begin(), rows.end(), '\n'), 4);
    EXPECT_FALSE(told("-- wrong measure accuracy"));
    test.time = [] { return krAccurFail; };
    EXPECT_EQ(run(test, ERR), krAccurFail);
}

TEST_F(KrTestRun, HiddenWarningReachesTheOutputAllTheSame) {
    struct Outputs : Noted {
        void outputResult(krResult result) override { seen = result; }
        krResult seen = krUndefined;
    } test;
    test.time = [] { return krAccurWrn; };
    EXPECT_EQ(run(test, ERR), krOk);
    EXPECT_EQ(test.seen, krAccurWrn);
}

TEST_F(KrTestRun, MemoryIsShownBeforeAndAfterTheMeasurement) {
    struct Shown : Noted {
        int printAllMemoryBlocks(const krString& title) override {
            log += std::string("<") + title.c_str() + "> ";
            return 0;
        }
    } test;
    test.withParms = false;
    run(test);
    EXPECT_NE(test.log.find("<before function calls> time <after function calls> flush"), std::string::npos)
        << test.log;
    test.time = [] { return krUndefined; };
    run(test, ERR);
    EXPECT_NE(test.log.find("<before function calls> time flush"), std::string::npos) << test.log;
}

TEST_F(KrTestRun, SetAndUseReservesTheVectorsOfEachLine) {
    struct Owner final : krObject {
        bool reserveCopy() override { return ++copies > 0; }
        int copies = 0;
    } owner;
    void* const block = krMalloc(8, 0, 0, &owner);
    Noted test;
    run(test);
    EXPECT_EQ(owner.copies, 0);
    g_tool.m_setUse = true;
    run(test);
    EXPECT_EQ(owner.copies, 4);
    krFree(block);
}

TEST_F(KrTestRun, RowsHeldBackStandBehindAllOthers) {
    Noted test;
    test.a.addDeprecated(1, "old");
    EXPECT_EQ(run(test), krOk);
    EXPECT_EQ(rows, fourRows + "veksFoo,old,10,-,deprecated,100, ,0.1,-\n"
                               "veksFoo,old,20,-,deprecated,100, ,0.1,-\n");
}

TEST_F(KrTestRun, TraceLogDoesNotGrowWithTheGridAndStartsEmpty) {
    Noted test;
    g_trace.m_log = "old";
    run(test);
    const int length = g_trace.m_log.length();
    EXPECT_EQ(g_trace.m_log.find("old"), -1);
    struct Wide : Noted {
        void beginTest() override {
            Noted::beginTest();
            for (int i = 3; i < 30; ++i) {
                a.add(i);
            }
        }
    } wide;
    run(wide);
    EXPECT_EQ(g_trace.m_log.length(), length);
}

TEST_F(KrTestRun, BadStatusOfAnyLineMarksTheTestAndTheNextRunStartsClean) {
    Noted test;
    int line = 0;
    test.time = [&line] {
        krTool::ctrlStart();
        ++line;
        if (line == 1) {
            const double denormal = 4.9406564584124654e-324;
            __asm__ volatile("fldl %0\n\tfstp %%st(0)" : : "m"(denormal));
        } else if (line == 2) {
            kr_set_ssx(2, 2);
        }
        krTool::ctrlStop();
        return krOk;
    };
    EXPECT_EQ(run(test), krBadStsWrn);
    EXPECT_TRUE(test.m_bad87);
    EXPECT_TRUE(test.m_badSSX);
    EXPECT_EQ(run(test), krOk);
    EXPECT_FALSE(test.m_bad87);
    EXPECT_FALSE(test.m_badSSX);
}

TEST_F(KrTestRun, UndefinedTimingIsAFailure) {
    Noted test;
    test.time = [] { return krUndefined; };
    EXPECT_EQ(run(test, ERR), krFail);
    EXPECT_TRUE(told("-- Internal test problem: runTiming() function returns undefined result\n"));
    EXPECT_EQ(rows, "");
    EXPECT_EQ(test.log, "begin start line(1,10) const time flush stop endTest");
}

TEST_F(KrTestRun, CannotStart) {
    Noted test;
    test.start = [] { return false; };
    EXPECT_EQ(run(test, ERR), krDataFail);
    EXPECT_EQ(test.log, "begin start stop endTest");
    EXPECT_TRUE(told("-- Can't start timing\n"));
}

TEST_F(KrTestRun, CacheKeyNeedsACacheParameter) {
    Noted test;
    krTest::m_cache = true;
    EXPECT_EQ(run(test, ERR), krUndefined);
    EXPECT_EQ(test.log, "begin start stop endTest");
    EXPECT_EQ(test.m_result, krUndefined);
    EXPECT_TRUE(told("-- Can't run In-Outof-Cache timing: no program support for function veksFoo\n"));
}

TEST_F(KrTestRun, LinesWithoutDataAreSkippedSilently) {
    Noted test;
    int line = 0;
    test.init = [&line] { return ++line > 2; };
    EXPECT_EQ(run(test), krOk);
    EXPECT_EQ(test.log, "begin start line(1,10) flush line(1,20) flush line(2,10) const time flush "
                        "line(2,20) time flush end stop endTest");
    test.init = [] { return false; };
    EXPECT_EQ(run(test, ERR), krDataFail);
    EXPECT_TRUE(told("-- Error while initialization of function data\n"));
    EXPECT_EQ(rows, "");
}

TEST_F(KrTestRun, ColdLinesOfAHotRunAreOmitted) {
    struct Cold : Noted {
        bool isHotLine() override { return a.value() == 2; }
    } test;
    krTest::m_hot = 2;
    krTest::m_numResultColm = 6;
    EXPECT_EQ(run(test), krOk);
    EXPECT_EQ(rows, "veksFoo,2,10,-,nLps=1,100, ,0.1,-,Hot\n"
                    "veksFoo,2,20,-,nLps=1,100, ,0.1,-,Hot\n");
    EXPECT_TRUE(told("  measuring is omitted: not hot line\n"));
    struct AllCold : Noted {
        bool isHotLine() override { return false; }
    } cold;
    EXPECT_EQ(run(cold, ERR), krDataFail);
    EXPECT_TRUE(told("-- Error while initialization of function data\n"));
    krTest::m_hot = 1;
    EXPECT_EQ(run(cold), krOk);
}

TEST_F(KrTestRun, DuplicateLinesAreAWarning) {
    struct Twice : Noted {
        void beginTest() override {
            Noted::beginTest();
            a.setList({1, 1});
            b.setList({5});
        }
    } test;
    EXPECT_EQ(run(test), krDataWrn);
    EXPECT_TRUE(told("-- Warning: duplicate lines in performance table (csv-file)\n"));
    EXPECT_EQ(run(test, ERR), krOk);
    EXPECT_FALSE(told("-- Warning"));
}

TEST_F(KrTestRun, SecondRunStartsAfresh) {
    Noted test;
    run(test);
    const std::string first = test.log;
    test.m_tool.setMethodLoop(77);
    g_tool.setMethodStat(3, 4);
    EXPECT_EQ(run(test), krOk);
    EXPECT_EQ(test.log, first);
    EXPECT_EQ(test.m_tool.m_method, krTool::Statistic);
    EXPECT_EQ(test.m_parms.size(), 2);
}

TEST_F(KrTestRun, IbsIsReadFromTheMacro) {
    Noted ibs("TimFoo//KR_REG_Ibs");
    run(ibs);
    EXPECT_TRUE(ibs.m_tool.m_ibsMode);
    Noted plain("TimIbs/Ibs/KR_REG");
    run(plain);
    EXPECT_FALSE(plain.m_tool.m_ibsMode);
}

TEST_F(KrTestRun, NameExitMeasuresNothing) {
    krSession::m_nameExit = true;
    krSession::m_nameMode = krNameInResults;
    Noted test;
    EXPECT_EQ(run(test), krOk);
    EXPECT_EQ(test.log, "begin start stop endTest");
    EXPECT_EQ(rows, "veksFoo,a,b,-,parmNames,-,-,-,-\n");
    EXPECT_FALSE(told("Test has been registered"));
}

TEST_F(KrTestRun, IniFileForWritingMeasuresNothing) {
    const TempDir dir;
    Noted test;
    g_istrm.setIniFile(dir.path("a.ini").c_str(), true);
    EXPECT_EQ(run(test), krOk);
    EXPECT_EQ(test.log, "begin start stop endTest");
    g_istrm.deleteIniFile();
    EXPECT_NE(dir.read("a.ini").find("[veksFoo]"), std::string::npos);
    EXPECT_NE(dir.read("a.ini").find('a'), std::string::npos);
}

TEST_F(KrTestRun, PressedTestNeedsItsSection) {
    const TempDir dir;
    dir.write("a.ini", "[veksBar]\n");
    krTest::m_pressing = true;
    Noted test;
    EXPECT_EQ(run(test), krOk) << "no ini-file, no effect";
    g_istrm.setIniFile(dir.path("a.ini").c_str(), false);
    EXPECT_EQ(run(test), krUndefined);
    EXPECT_EQ(test.log, "");
    EXPECT_EQ(text, "");
    EXPECT_EQ(sum, "");
    EXPECT_EQ(test.m_result, krOk);
    dir.write("b.ini", "[veksFoo]\na = 7\n");
    g_istrm.setIniFile(dir.path("b.ini").c_str(), false);
    EXPECT_EQ(run(test), krOk);
    EXPECT_EQ(rows, "veksFoo,7,10,-,nLps=1,100, ,0.1,-\nveksFoo,7,20,-,nLps=1,100, ,0.1,-\n");
}

TEST_F(KrTestRun, ExceptionSkipsTheRestOfTheWalkAndEndsTheTestProperly) {
    Noted test;
    test.time = []() -> krResult { throw krException(krString("bad value")); };
    EXPECT_EQ(run(test), krExcptFail);
    EXPECT_EQ(test.log, "begin start line(1,10) const time endTest");
    EXPECT_TRUE(told("--VEK. Exception: bad value in runTiming\n"));
    EXPECT_NE(sum.find(",EXCPTFAIL,"), std::string::npos);
}

TEST_F(KrTestRun, OtherExceptionsPassThrough) {
    Noted test;
    test.time = []() -> krResult { throw 5; };
    ConsoleCapture console;
    EXPECT_THROW(test.run(), int);
}

TEST_F(KrTestRun, ModifiedStatusIsAWarningInTheTable) {
    Noted test;
    test.time = [] {
        krTool::ctrlStart();
        kr_set_ssx(2, 2);
        krTool::ctrlStop();
        return krOk;
    };
    EXPECT_EQ(run(test), krBadStsWrn);
    EXPECT_TRUE(test.m_badSSX);
    EXPECT_FALSE(test.m_bad87);
    EXPECT_TRUE(told("-- Status    SSX: ?Denormal \n"));
    EXPECT_EQ(std::count(rows.begin(), rows.end(), '\n'), 4);
    EXPECT_NE(sum.find(",-,-,-,?,TimFoo,"), std::string::npos);
}

TEST_F(KrTestRun, PerformanceShowsDuringMeasurementAtWarningLevel) {
    struct Levels : Noted {
        krResult runTiming() override {
            seen = g_ostrm.outLevel();
            return Noted::runTiming();
        }
        OutputLevel seen = 0;
    } test;
    run(test, ERR | WARN);
    EXPECT_EQ(test.seen, ERR | WARN | PERF);
    run(test, ERR);
    EXPECT_EQ(test.seen, ERR);
    run(test, ERR | WARN | TRACE);
    EXPECT_EQ(test.seen, ERR | WARN | TRACE);
}

TEST_F(KrTestRun, LevelThatALineSetsOutlastsItsMeasurement) {
    struct Quieter : Noted {
        bool initData() override {
            g_ostrm.setOutLevel(ERR);
            return Noted::initData();
        }
        void flushData() override {
            seen = g_ostrm.outLevel();
            g_ostrm.setOutLevel(ERR | WARN | TRACE);
            Noted::flushData();
        }
        OutputLevel seen = 0;
    } test;
    run(test, ERR | WARN | TRACE);
    EXPECT_EQ(test.seen, ERR);
}

TEST_F(KrTestRun, FunctionsAreTimedByWhatIsRegistered) {
    krTest none(krFuncOld(nullptr), "n", "f", "T");
    EXPECT_EQ(none.runTiming(), krUndefined);
    krTest old(krFuncOld([](krTool& tool, int loops) {
                   tool.m_numClocks = 30LL * loops;
                   return krOk;
               }),
               "n", "f", "T");
    EXPECT_EQ(old.runTiming(), krOk);
    EXPECT_EQ(old.m_tool.m_funcClocks, 30);
}

TEST_F(KrTestRun, StartAndStopExercisesTheRegistration) {
    Noted test;
    ConsoleCapture console;
    OutputLevel seen = 0;
    test.start = [&seen] {
        seen = g_ostrm.outLevel();
        return false;
    };
    test.startAndStop();
    EXPECT_EQ(test.log, "begin start stop endTest");
    EXPECT_EQ(seen, ERR);
    EXPECT_EQ(g_ostrm.outLevel(), ERR | WARN | PERF);
    EXPECT_EQ(test.m_parms.size(), 2);
    test.start = []() -> bool { throw krException(krString("no")); };
    test.startAndStop();
    EXPECT_EQ(console.text(), "--VEK. Exception: no in startAndStop of veksFoo test\n");
    EXPECT_EQ(g_ostrm.outLevel(), ERR | WARN | PERF);
}

TEST_F(KrTestRun, AllocateCountsAndShiftsTheVectorsOfALine) {
    krTest::m_vectorNum = 0;
    krTest::m_vectorShift = 0;
    void* first = krTest::allocate(100, 16);
    EXPECT_EQ(krTest::m_vectorNum, 1);
    EXPECT_EQ(krTest::m_vectorShift, krGetVectorShift() % 32768);
    void* info = nullptr;
    int size = 0;
    EXPECT_TRUE(krMallocInfo(first, &size, &info));
    EXPECT_EQ(size, 100);
    EXPECT_EQ(info, MEM_OBJECT_IS_BUFFER);
    krTest::deallocate(first);
    EXPECT_FALSE(krMallocInfo(first, nullptr, nullptr));
}

TEST_F(KrTestRun, VectorShiftWrapsAt32768) {
    krTest::m_vectorShift = 32768 - krGetVectorShift();
    if (krGetVectorShift() == 0) {
        krTest::m_vectorShift = 32768;
    }
    void* block = krTest::allocate(16, 0);
    EXPECT_EQ(krTest::m_vectorShift, 0);
    krTest::deallocate(block);
    krTest::m_vectorShift = 0;
}

TEST_F(KrTestRun, ReserveAndResetWalkTheOwners) {
    struct Owner : krObject {
        explicit Owner(bool answer) : keeps(answer) {}
        bool reserveCopy() override {
            ++reserved;
            return keeps;
        }
        bool setReservedCopy() override {
            ++reset;
            return true;
        }
        bool keeps;
        int reserved = 0;
        int reset = 0;
    } yes(true), no(false);
    void* blocks[] = {krMalloc(16, 0, 0, &yes), krMalloc(16, 0, 0, &no), krMalloc(16, 0, 0, MEM_OBJECT_IS_BUFFER),
                      krMalloc(16, 0, 0, MEM_OBJECT_IS_SUBOBJECT)};
    EXPECT_EQ(krTest::reserveAllVectors(), 1);
    EXPECT_EQ(no.reserved, 1);
    krTest::resetAllVectors();
    EXPECT_EQ(yes.reset, 1);
    EXPECT_EQ(no.reset, 1);
    for (void* block : blocks) {
        krFree(block);
    }
}

} // namespace
