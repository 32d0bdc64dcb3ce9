// The session: the phases of a run in their fixed order, header and footer, and the registries.
#include "kr.h"

#include "krcpuidtest.h"
#include "krinfo.h"
#include "krreport.h"
#include "krstream.h"

krList<krParameter*>* g_pParmList = nullptr;
void (*s_parmFunc)() = nullptr;
krString* pCmdLine = nullptr;
void (*initTimingMethod)(krTool& tool) = nullptr;
bool qKeys = true;
krSession* pSession = nullptr;

const char* KR_version = KR_VERSION; // that of the project, from the build
const char* KR_buildDate = "Mar 16 2010";

int krSession::m_exitLevel = 0;

int krRegTest(krTest* test) {
    return krRegister(pTestList, test);
}

int krRegParm(krParameter& parm) {
    return krRegister(g_pParmList, &parm);
}

int krRegParmFunc(void (*func)()) {
    s_parmFunc = func;
    return 1;
}

int krRegCmdLine(const krString& keys) {
    if (pCmdLine == nullptr) {
        pCmdLine = new krString;
    }
    *pCmdLine += krString(" ") + keys;
    return 1;
}

int krRegTimingMethod(void (*init)(krTool& tool)) {
    initTimingMethod = init;
    return 1;
}

int krRegQKeys() {
    qKeys = true;
    return 1;
}

int krRegHotFunction(const krString& name) {
    return krRegister(g_pHotList, name);
}

int krRegSession(krSession* session) {
    pSession = session;
    return 1;
}

krSession::~krSession() {
    dropOptions();
    delete m_conditions;
}

void krSession::setSglName(const krString& name) {
    m_sglName = genOutPath(name, extSgl);
}

void krSession::setIniMode(const krString& name, bool write) {
    m_iniName = name;
    m_iniWrite = write;
}

void krSession::initSession() {
    delete m_conditions;
    m_conditions = new krConditions;
    m_batchMode = false;
    m_quickMode = false;
    m_askMode = 0;
    m_enumMode = krNoEnumeration;
    m_levelMode = ERR;
    fillOptions();
}

int krSession::run(int argc, char** argv) {
    g_ostrm.setMsgLevel(PERF);
    g_ostrm.append(&c_out);
    setVekEnvironment();
    initSession();
    krRegTest(new __krOrvanCpuTest("__krOrvanCpu", "kr", "__krOrvanCpuTest/Orvan CPU information"));
    pTestList->m_startTime = krTime();

    int result = 0;
    bool headerWritten = false;
    if (parseCommandLine(argc, argv) && startSession() && !quickOutput()) {
        if (vekEnvironment != nullptr) {
            initStaticCpu();
            setNumThreads();
            setVekEnvironment();
        }
        setVekLibInfo();
        if (!m_quickMode) {
            std::fputs("Sorting functions...", stdout);
            pTestList->sortFunc();
            std::fputs("\n", stdout);
        }
        headerWritten = true;
        outputHeader();
        if (s_parmFunc != nullptr) {
            s_parmFunc();
        }
        selectTestParameters();
        beginCommonData();
        readCommonData();
        endCommonData();
        if (g_pHotList == nullptr) {
            g_pHotList = new krStringList;
        }
        putTableTitle();
        result = pTestList->runTests(*m_conditions) ? 1 : 0;
    }
    pTestList->m_endTime = krTime();
    if (headerWritten) {
        outputFooter();
    }
    krTellLosses();
    outputSignal();
    deleteTestList();
    return result;
}

// Every key that ends the run before a test is touched.
bool krSession::quickOutput() {
    if (s_version || s_hintArg != 0) {
        g_ostrm << "\nOrvan Vek Primitives. Kelvar Rig " << KR_version << ", " << KR_buildDate << "\n";
    }
    if (s_hintArg != 0) {
        hint(s_hintArg, s_hintHide);
        return true;
    }
    if (m_enumMode > 1) {
        return s_version;
    }
    if (m_enumMode == 0 && !m_quickMode) {
        pTestList->sortFunc();
    }
    listTests(m_enumMode);
    return true;
}

void krSession::listTests(int mode) {
    krReportTitle title(*pTestList);
    g_ostrm << title;
    g_cstrm << title;
    krReportList list(*pTestList, *m_conditions, mode);
    g_ostrm << list;
    g_cstrm << list;
}

void krSession::outputHeader() {
    krReportTitle title(*pTestList);
    g_ostrm << title;
    g_cstrm << title;
    g_qstrm << title;
    g_ustrm << title;
    krReportTestResult heading(nullptr);
    g_ustrm << heading;
}

void krSession::outputFooter() {
    krReportEnd end(*pTestList);
    g_ostrm << ERR;
    g_ostrm << end;
    g_ostrm << msgEnd;
    g_ustrm << end;
}

void krSession::outputSignal() {
    if (m_sglName.empty()) {
        return;
    }
    o_stream file(m_sglName, ioWrite | ioRawName, true);
    if (file.m_file == nullptr) {
        return;
    }
    const auto seconds = static_cast<int>(difftime(pTestList->m_endTime, pTestList->m_startTime));
    file << krReportFormat::getTimeStr(seconds) + "\n";
    file << krTimeText(pTestList->m_endTime) + "\n";
    file.tellLosses();
}

void krSession::putTableTitle() {
    putTableTitleLine();
    if ((m_nameMode & krNameInNames) != 0) {
        g_cstrm.swap(g_qstrm);
        putTableTitleLine();
        g_cstrm.swap(g_qstrm);
    }
}

void krSession::putTableTitleLine() {
    funcTitleToCStream();
    parmsTitleToCStream();
    krTest::m_numParmsColm = g_cstrm.colmCount();
    resultTitleToCStream();
    krTest::m_numResultColm = g_cstrm.colmCount() - krTest::m_numParmsColm;
    g_cstrm << "\n";
}

void krSession::funcTitleToCStream() {
    vkFuncTitleToCStream();
}

void krSession::parmsTitleToCStream() {
    vkParmsTitleToCStream();
}

void krSession::resultTitleToCStream() {
    g_cstrm << "Comment"
            << "Clocks"
            << "per"
            << "Time (usec)"
            << "MFlops";
    if (krTest::m_hot != 0) {
        g_cstrm << "Interest";
    }
}

void vkFuncTitleToCStream() {
    g_cstrm << "funcBase"
            << "funcDataType"
            << "funcDescriptor";
}

void vkParmsTitleToCStream() {
    g_cstrm << "Len/Size"
            << "Parm1"
            << "Parm2"
            << "Parm3"
            << "Parm4"
            << "scaleFactor";
}

void krFuncTitleToCStream() {
    g_cstrm << "function";
}

void krParmsTitleToCStream() {
    for (int i = 1; i <= 8; ++i) {
        g_cstrm << krString("Parm") + krText(i);
    }
}
