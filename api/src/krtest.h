// One test: a library function with its own grid of parameters, its life from registration to result, and the list of
// all tests. The numbers come from krtool, the layout of what is written from krreport.
#pragma once

#include "krbase.h"
#include "krctrl87.h"
#include "krdefault.h"
#include "krresult.h"
#include "krstring.h"
#include "krtool.h"

#include <ctime>

class krCacheIterator;
class krConditions;
template <class T>
class krIterator;
template <class T>
class krStepIterator;

/// Name rows go into the result table, the name table, or both.
enum krNameBits { krNameInResults = 1, krNameInNames = 2 };

/// A base of the session: what its keys say of name rows.
class krNameTables {
public:
    static int m_nameMode;
    static bool m_nameExit;
};

/// "class/mode/macro", split at the slashes.
struct krTestInfo {
    krTestInfo() = default;
    explicit krTestInfo(const krString& text);
    krString m_class;
    krString m_mode;
    krString m_macro;
};

/// One measurement. Suites derive from it and answer which parameter values exist, what data go with a line and on how
/// many elements one call works; `run` does the rest.
class krTest : public krVectorCopies, public krCtrlStatus {
public:
    krTest(krFuncOld funcOld, const krString& name, const krString& file, const krString& info);
    krTest(krFuncLoop funcLoop, krFuncStat funcStat, const krString& name, const krString& file, const krString& info);
    krTest(krFuncCall funcCall, krFuncCall funcInit, krFuncLoop funcLoop, krFuncStat funcStat, const krString& name,
           const krString& file, const krString& info);
    krTest(const krTest&) = delete;
    krTest& operator=(const krTest&) = delete;

    virtual ~krTest();
    virtual bool tobeRun(krConditions& conditions);
    virtual krResult run();
    virtual int compareFunc(const krTest* other) const;
    virtual void putTableResult_Deprecated(krResult result);
    virtual bool canStart() { return true; }
    virtual void flushStart() {}
    /// Steps the odometer of the parameters, the last one fastest.
    virtual bool canContinue();
    virtual bool initData() { return true; }
    virtual void flushData() {}
    virtual krResult runTiming();
    /// Floating-point operations of one call; -1.0 if not known.
    virtual double getFlops() { return -1.0; }
    /// Elements that one call handles.
    virtual double getDivisor() { return 1.0; }
    /// The word for one element.
    virtual krString getUnit() { return " "; }
    virtual void funcToCstrm();
    virtual void parmsFromIstrm();
    virtual void parmsToOstrm();
    virtual void parmsToCstrm();
    virtual void parmsNameToCstrm();
    virtual void resultToCstrm(krResult result);
    virtual void constToOstrm() {}
    virtual void beginTest() { initSettings(); }
    virtual void endTest() {}
    virtual krString getComment();
    virtual bool isFloatFunction() { return getFlops() > 0.0; }
    virtual bool isHotLine();
    virtual void initSettings();
    virtual int printAllMemoryBlocks(const krString& title);
    virtual krString formatClocks(double value);
    virtual krString regInfo();
    virtual void putTableParms();
    virtual void putTableResult(krResult result);
    virtual void putTextParms();
    virtual void putTextParms(MessageLevel level);
    virtual void loopData();
    virtual void outputResult(krResult result);
    virtual void outputConst();
    virtual void outputRegInfo();
    virtual void putTextResult(krResult result);

    /// Clocks per element, or MFlops.
    double performance(bool flops);
    krString perfString(bool flops);
    void setTimingResult(double clocks, const krString& comment);
    bool setDeprecatedFlag(bool flag);
    void putTableName();
    void putTextError(krResult result);
    krString testResultString();
    /// Exercises the registration of the parameters without running the test.
    void startAndStop();

    /// Appends a parameter to the grid; with the cache key, a cache-state iterator around it.
    void regCacheParm(krIterator<int>& parm, krObject* object, bool (*setFunc)(krParameter*, int, int, bool) = nullptr);
    void regCacheParm(krStepIterator<int>& parm, krObject* object,
                      bool (*setFunc)(krParameter*, int, int, bool) = nullptr);

    /// The tests' way to the aligned allocator; a negative `align` means that many units of the misalignment setting.
    static void* allocate(int size, int align, void* owner = nullptr);
    static void deallocate(void* pointer);

    krResult checkCtrlStatus();
    /// Tells a status that is not 0, and makes a failure of a negative one and a warning of a positive one, also for
    /// the test in work. A blank name is left out.
    static krResult reportStatus(int status, const krString& name);
    static void raiseResult(krResult result) { m_currentResult = krWorst(m_currentResult, result); }

    bool m_deprecated = false;
    time_t m_startTime;
    time_t m_endTime;
    krString m_name;
    krString m_srcName;
    krTestInfo m_info;
    krTool m_tool;
    krFuncLoop m_funcLoop = nullptr;
    krFuncStat m_funcStat = nullptr;
    krFuncCall m_funcCall = nullptr;
    krFuncCall m_funcInit = nullptr;
    krFuncOld m_funcOld = nullptr;
    bool m_isFirst = true;
    bool m_bad87 = false;
    bool m_badSSX = false;
    krResult m_result = krUndefined;
    krList<krParameter*> m_parms;
    krCacheIterator* m_cacheIter = nullptr;
    bool m_cacheFailed = false;

    // Of the run: set by keys and by the table title.
    static int m_numParmsColm;
    static int m_numResultColm;
    static int m_hot;
    static bool m_pressing;
    static bool m_cache;
    // Of the test in work: cleared at the start of `run`.
    static krResult m_currentResult;
    // Of the line: cleared at its head.
    static int m_vectorNum;
    static int m_vectorShift;

private:
    void construct(const krString& name, const krString& file, const krString& info);
    krResult guarded(bool (krTest::*section)());
    bool trapped(bool (krTest::*section)());
    bool startAndStopPhases();
    bool runInSection();
    bool reportResult();
    bool runEnd();
    void runPhases();
    void runLine(bool& prepared);
    void measureLine();
    bool repeatCacheLine();
    void putTableNameLine();
    static void swapNameTable();
    static void dropTableLine();
    static bool setIniSection(const krString& section);
    static bool namesOnly();
    void registerCacheIterator(krDefault_NSC<int>& parm, krObject* object,
                               bool (*setFunc)(krParameter*, int, int, bool));
};

/// "-- Can't run <word> timing: no program support for function <name>".
void printNotSupportTiming(const krString& word, const krString& name);
/// Clocks of the tool over the frequency: microseconds per call.
krString usecString(const krTool& tool);

/// All registered tests, in the order in which they run. The list owns them.
class krTestList : public krList<krTest*> {
public:
    /// Counts one test and its result; the totals of warnings and failures stand at the codes 6 and 11. A value that is
    /// no result counts as a test of no class.
    void plus(krResult result);
    int count() const { return m_count; }
    int counter(int code) const { return m_counters[code]; }
    /// Runs the selected tests; true if any ended in a failure of the codes 7 to 10.
    bool runTests(krConditions& conditions);
    void sortFunc();
    /// Reduces `parms` to those that some selected test uses.
    void selectCommonParms(krConditions& conditions, krList<krParameter*>& parms);

    time_t m_startTime = 0;
    time_t m_endTime = 0;

    static krString m_startFunc;
    static krTest* m_pCurrentTest;

protected:
    // Hooks of a run, for lists that derive from this one.
    virtual void beforeAll() {}
    virtual void beforeTest() {}
    virtual void afterTest(krTest* /*test*/) {}

private:
    int m_count = 0;
    int m_counters[krResultCount] = {};
};

/// Null until the first registration.
extern krTestList* pTestList;
/// The names of the hot functions; null until the first registration.
extern krStringList* g_pHotList;

/// Deletes every test and the list.
void deleteTestList();
