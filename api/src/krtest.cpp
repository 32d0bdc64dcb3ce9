// The life of a test: registration, the phases of a run, the walk over the grid, and how a failure leaves each phase.
// What a line writes is in krtestout, the list of tests in krtestlist.
#include "krtest.h"

#include "krcache.h"
#include "krcputick.h"
#include "krexcept.h"
#include "krguard.h"
#include "krinfo.h"
#include "krinifile.h"
#include "krreport.h"
#include "krstream.h"

int krNameTables::m_nameMode = 0;
bool krNameTables::m_nameExit = false;
krStringList* g_pHotList = nullptr;

int krTest::m_numParmsColm = 0;
int krTest::m_numResultColm = 0;
int krTest::m_hot = 0;
bool krTest::m_pressing = false;
bool krTest::m_cache = false;
krResult krTest::m_currentResult = krUndefined;
int krTest::m_vectorNum = 0;
int krTest::m_vectorShift = 0;

// The output level around timing and around a whole test; an exception puts it back.
static OutputLevel OldOutLevel = ERR;

static constexpr int vectorShiftLimit = 32768;

krTestInfo::krTestInfo(const krString& text) {
    const int first = text.find('/');
    if (first < 0) {
        m_class = text;
        return;
    }
    m_class = text.substr(0, first);
    const int second = text.find('/', first + 1);
    if (second < 0) {
        m_mode = text.substr(first + 1);
        return;
    }
    m_mode = text.substr(first + 1, second - first - 1);
    m_macro = text.substr(second + 1);
}

krTest::krTest(krFuncOld funcOld, const krString& name, const krString& file, const krString& info)
    : m_funcOld(funcOld) {
    construct(name, file, info);
}

krTest::krTest(krFuncLoop funcLoop, krFuncStat funcStat, const krString& name, const krString& file,
               const krString& info)
    : m_funcLoop(funcLoop), m_funcStat(funcStat) {
    construct(name, file, info);
}

krTest::krTest(krFuncCall funcCall, krFuncCall funcInit, krFuncLoop funcLoop, krFuncStat funcStat, const krString& name,
               const krString& file, const krString& info)
    : m_funcLoop(funcLoop), m_funcStat(funcStat), m_funcCall(funcCall), m_funcInit(funcInit) {
    construct(name, file, info);
}

krTest::~krTest() {
    delete m_cacheIter;
}

void krTest::construct(const krString& name, const krString& file, const krString& info) {
    m_startTime = krTime();
    m_endTime = m_startTime;
    m_name = name;
    m_srcName = file.getFileName();
    m_info = krTestInfo(info);
    krTest::initSettings();
}

void krTest::initSettings() {
    m_currentResult = krUndefined;
    m_isFirst = true;
    m_bad87 = false;
    m_badSSX = false;
    delete m_cacheIter;
    m_cacheIter = nullptr;
    m_cacheFailed = false;
    m_deprecated = false;
    m_parms.clear();
}

int krTest::compareFunc(const krTest* other) const {
    return m_name.compare(other->m_name);
}

bool krTest::isHotLine() {
    return g_pHotList != nullptr && g_pHotList->has(m_name);
}

int krTest::printAllMemoryBlocks(const krString& /*title*/) {
    return 0;
}

bool krTest::setIniSection(const krString& section) {
    krIniFile* file = g_istrm.iniFile();
    if (m_pressing && file != nullptr && !file->sectionExist(section)) {
        return false;
    }
    if (file != nullptr && g_istrm.iniWrite()) {
        file->write(section);
    }
    g_istrm.setIniSection(section);
    return true;
}

// Parameters are walked for the ini-file or the name table, and nothing is measured.
bool krTest::namesOnly() {
    return (g_istrm.iniFile() != nullptr && g_istrm.iniWrite()) || krNameTables::m_nameExit;
}

void printNotSupportTiming(const krString& word, const krString& name) {
    g_ostrm << ERR << "-- Can't run " << word << " timing: no program support for function " << name << "\n" << msgEnd;
}

// Runs a section in which a trapped fault leaves by the same exception as bad input.
bool krTest::trapped(bool (krTest::*section)()) {
    tsSignal::arm();
    const krFaultMark mark;
    if (setjmp(tsSignal::m_jmpbuf) != 0) {
        tsSignal::contain();
        throw krException(tsSignal::getInfo());
    }
    return (this->*section)();
}

// EXCPTFAIL after a fault, with what the section left half done put in order; else OK, or undefined if it declines.
krResult krTest::guarded(bool (krTest::*section)()) {
    const int depth = g_trace.size();
    const int messages = g_ostrm.openMessages();
    try {
        return trapped(section) ? krOk : krUndefined;
    } catch (const krException& fault) {
        krEndForkedChild();
        krResetPriority();
        g_ostrm.closeMessages(messages);
        g_ostrm.setOutLevel(OldOutLevel);
        g_ostrm << ERR << fault.msg() << " in " << g_trace.getCurName() << "\n" << msgEnd;
        g_trace.leave(depth);
        krForgetBlocks();
        dropTableLine();
    }
    m_currentResult = krExcptFail;
    return krExcptFail;
}

krResult krTest::run() {
    m_result = krOk;
    m_currentResult = krUndefined;
    OldOutLevel = g_ostrm.outLevel();
    if (guarded(&krTest::runInSection) == krUndefined) {
        return krUndefined;
    }
    m_result = m_currentResult;
    m_endTime = krTime();
    for (const auto section : {&krTest::reportResult, &krTest::runEnd}) {
        if (guarded(section) == krExcptFail) {
            m_result = krExcptFail;
        }
    }
    return m_result;
}

bool krTest::runInSection() {
    m_tool = g_tool;
    if (m_info.m_macro.contains("Ibs")) {
        m_tool.m_ibsMode = true;
    }
    g_trace.m_log = "";
    g_trace.m_indent = "";
    const bool wanted = g_trace.trace("setIniSection", [&] { return setIniSection(m_name); });
    if (wanted) {
        runPhases();
    }
    return wanted;
}

bool krTest::reportResult() {
    g_trace.traceIn("testResult");
    krReportTestResult report(this);
    g_ostrm << report;
    g_ustrm << report;
    g_ostrm.flush();
    g_cstrm.flush();
    g_ustrm.flush();
    g_trace.traceOut("testResult");
    return true;
}

bool krTest::runEnd() {
    g_trace.trace("endTest", [&] { endTest(); });
    return true;
}

void krTest::runPhases() {
    g_trace.trace("beginTest", [&] { beginTest(); });
    OldOutLevel = g_ostrm.outLevel();
    m_startTime = krTime();

    g_trace.traceIn("testTitle");
    krReportTestTitle title(this);
    g_trace.traceIn("g_ostrm<<testTitle");
    g_ostrm << ERR;
    g_ostrm << title;
    g_ostrm << msgEnd;
    g_trace.traceOut("g_ostrm<<testTitle");
    g_trace.trace("g_ustrm<<testTitle", [&] { g_ustrm << title; });
    g_trace.traceOut("testTitle");

    const bool started = g_trace.trace("canStart", [&] { return canStart(); });
    if (!started) {
        g_ostrm << ERR << "-- Can't start timing\n" << msgEnd;
        m_currentResult = krDataFail;
    } else if (m_cache && m_cacheIter == nullptr) {
        printNotSupportTiming("In-Outof-Cache", m_name);
    } else {
        g_trace.trace("parmsFromIstrm", [&] { parmsFromIstrm(); });
        putTableName();
        if (namesOnly()) {
            m_currentResult = krOk;
        } else {
            outputRegInfo();
            g_trace.trace("loopData", [&] { loopData(); });
        }
    }
    g_trace.trace("flushStart", [&] { flushStart(); });
}

void krTest::loopData() {
    m_isFirst = true;
    const krString keptLog = g_trace.m_log;
    g_cstrm.identicalLinesStart(m_numParmsColm);
    bool prepared = false;
    do {
        g_trace.m_log = keptLog;
        m_vectorNum = 0;
        m_vectorShift = 0;
        const bool more = g_trace.trace("canContinue", [&] { return canContinue(); });
        if (!more) {
            if (m_isFirst) {
                g_ostrm << ERR << "-- One of argument list for timing is empty\n" << msgEnd;
                raiseResult(krDataFail);
            }
            break;
        }
        m_isFirst = false;
        runLine(prepared);
        g_trace.trace("flushData", [&] { flushData(); });
    } while (!krIsFailure(m_currentResult));

    if (m_currentResult == krUndefined) {
        g_ostrm << ERR << "-- Error while initialization of function data\n" << msgEnd;
        raiseResult(krDataFail);
    }
    g_cstrm.linePostponeOut(m_numResultColm + m_numParmsColm);
    if (g_cstrm.identicalLinesStop()) {
        g_ostrm << WARN << "-- Warning: duplicate lines in performance table (csv-file)\n" << msgEnd;
        raiseResult(g_ostrm.outLevel() < WARN ? krOk : krDataWrn);
    }
}

// One line of the grid, from its data to its written result.
void krTest::runLine(bool& prepared) {
    const bool initialised = g_trace.trace("initData", [&] { return initData(); });
    if (!initialised) {
        return;
    }
    if (!prepared) {
        prepared = true;
        outputConst();
    }
    if (m_cacheIter != nullptr && !m_cacheIter->validateSize()) {
        m_cacheFailed = true;
        return;
    }
    putTextParms(PERF);
    if (m_tool.m_setUse) {
        g_trace.trace("reserveAllVectors", [&] { reserveAllVectors(); });
    }
    if (m_hot == 2 && !isHotLine()) {
        g_ostrm << "  measuring is omitted: not hot line\n";
        return;
    }
    measureLine();
}

void krTest::measureLine() {
    printAllMemoryBlocks("before function calls");
    OldOutLevel = g_ostrm.outLevel();
    initCtrlStatus();
    if (OldOutLevel == (ERR | WARN)) {
        g_ostrm.setOutLevel(ERR | WARN | PERF);
    }
    const krResult timed = g_trace.trace("runTiming", [&] { return runTiming(); });
    krEndForkedChild();
    g_ostrm.setOutLevel(OldOutLevel);
    if (timed != krUndefined) {
        printAllMemoryBlocks("after function calls");
    } else {
        g_ostrm << ERR << "-- Internal test problem: runTiming() function returns undefined result\n" << msgEnd;
        raiseResult(krFail);
    }
    const krResult line = krWorst(timed, checkCtrlStatus());
    const bool hidden = g_ostrm.outLevel() < WARN && krIsWarning(line);
    raiseResult(hidden ? krOk : line);
    outputResult(line);
}

bool krTest::canContinue() {
    if (m_parms.empty()) {
        return m_isFirst;
    }
    if (m_cacheIter != nullptr && m_cacheFailed) {
        return repeatCacheLine();
    }
    if (m_isFirst) {
        return krFirstValues(m_parms);
    }
    auto parm = m_parms.end();
    while (!(parm == m_parms.begin())) {
        --parm;
        if ((*parm)->nextValue()) {
            return true;
        }
        (*parm)->firstValue();
    }
    return false;
}

// The data of the line did not fit its cache state: the same line with another size, as long as there is one.
bool krTest::repeatCacheLine() {
    m_cacheFailed = false;
    if (m_cacheIter->repeatValue()) {
        return true;
    }
    g_ostrm << ERR;
    m_cacheIter->outputInfo();
    putTextParms();
    g_ostrm << "-- Fail to allocate " << m_cacheIter->getComment() << " data\n" << msgEnd;
    raiseResult(krDataFail);
    return false;
}

krResult krTest::runTiming() {
    if (m_funcLoop != nullptr || m_funcStat != nullptr || m_funcCall != nullptr) {
        return m_tool.timing(m_funcLoop, m_funcStat, m_funcCall, m_funcInit);
    }
    return m_funcOld != nullptr ? m_tool.timing(m_funcOld) : krUndefined;
}

void krTest::startAndStop() {
    const OutputLevel level = g_ostrm.outLevel();
    const int depth = g_trace.size();
    const int messages = g_ostrm.openMessages();
    g_ostrm.setOutLevel(ERR);
    try {
        trapped(&krTest::startAndStopPhases);
    } catch (const krException& fault) {
        g_ostrm.closeMessages(messages);
        g_ostrm << ERR << fault.msg() << " in startAndStop of " << m_name << " test\n" << msgEnd;
        g_trace.leave(depth);
        krForgetBlocks();
    }
    g_ostrm.setOutLevel(level);
}

bool krTest::startAndStopPhases() {
    beginTest();
    canStart();
    flushStart();
    endTest();
    return true;
}

void krTest::parmsFromIstrm() {
    for (krParameter* parm : m_parms) {
        parm->fromIStream(g_istrm);
    }
}

void krTest::registerCacheIterator(krDefault_NSC<int>& parm, krObject* object,
                                   bool (*setFunc)(krParameter*, int, int, bool)) {
    if (m_cache && m_cacheIter == nullptr) {
        m_cacheIter = new krCacheIteratorInt(parm, object, setFunc);
        m_parms.append(m_cacheIter);
    } else {
        m_parms.append(&parm);
    }
}

void krTest::regCacheParm(krIterator<int>& parm, krObject* object, bool (*setFunc)(krParameter*, int, int, bool)) {
    registerCacheIterator(parm, object, setFunc);
}

void krTest::regCacheParm(krStepIterator<int>& parm, krObject* object, bool (*setFunc)(krParameter*, int, int, bool)) {
    registerCacheIterator(parm, object, setFunc);
}

void* krTest::allocate(int size, int align, void* owner) {
    int bytes = align;
    if (align < 0) {
        // Only the place within a line counts, and the product of any two settings fits 64 bits.
        bytes = static_cast<int>(-static_cast<long long>(align) * krGetVectorAlign() % krCacheLine);
        if (krGetAlignSrc() && m_vectorNum != 0) {
            bytes = 0;
        }
    }
    void* pointer = krMalloc(size, bytes, m_vectorShift, owner == nullptr ? MEM_OBJECT_IS_BUFFER : owner);
    if (pointer == nullptr) {
        return nullptr;
    }
    ++m_vectorNum;
    const int shift = krGetVectorShift() + m_vectorShift;
    m_vectorShift = shift < vectorShiftLimit ? shift : 0;
    return pointer;
}

void krTest::deallocate(void* pointer) {
    krFree(pointer);
}

krResult krTest::checkCtrlStatus() {
    krResult result = krUndefined;
    bool bad87 = false;
    bool badSSX = false;
    if (badCtrlStatus(bad87, badSSX)) {
        m_bad87 = m_bad87 || bad87;
        m_badSSX = m_badSSX || badSSX;
        printCtrlStatus(bad87, badSSX);
        result = krBadStsWrn;
    }
    clearCtrlStatus();
    return result;
}
