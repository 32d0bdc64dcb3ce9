// The statics of a run, put to their start values for one test and back as they were at its end.
#pragma once

#include "kr.h"
#include "krcputick.h"
#include "krctrl87.h"
#include "krinfo.h"
#include "krstream.h"

/// Closes the files that keys added to the console text after its first destination, which is that of the capture.
inline void dropAddedFiles() {
    while (g_ostrm.begin() != g_ostrm.end() && ++g_ostrm.begin() != g_ostrm.end()) {
        auto added = ++g_ostrm.begin();
        if (*added != &c_out) {
            delete *added;
        }
        g_ostrm.erase(added);
    }
}

/// A processor of 1000 MHz, so that nothing waits for an estimate, and no keys given.
class HarnessState {
public:
    HarnessState() {
        krCpuTicker::m_freqMHz = 1000;
        pTestList = nullptr;
        g_pHotList = nullptr;
        g_pParmList = nullptr;
        pCmdLine = nullptr;
        s_parmFunc = nullptr;
        vekEnvironment = nullptr;
        start();
    }
    HarnessState(const HarnessState&) = delete;
    HarnessState& operator=(const HarnessState&) = delete;
    ~HarnessState() {
        start();
        deleteTestList();
        pTestList = m_testList;
        g_pHotList = m_hotList;
        g_pParmList = m_parmList;
        pCmdLine = m_cmdLine;
        s_parmFunc = m_parmFunc;
        vekEnvironment = m_environment;
        vek_Init = m_init;
        krCpuTicker::m_freqMHz = m_freq;
        krTime = m_time;
        __asm__ volatile("fninit");
        kr_set_ssx(m_ssx, 0xFFFF);
    }

private:
    static void start() {
        krSession::m_exePath = "";
        krSession::m_defName = "";
        krSession::m_inDir = "";
        krSession::m_outDir = "";
        krSession::m_nameMode = 0;
        krSession::m_nameExit = false;
        krSession::m_exitLevel = 0;
        krTest::m_numParmsColm = 0;
        krTest::m_numResultColm = 0;
        krTest::m_hot = 0;
        krTest::m_pressing = false;
        krTest::m_cache = false;
        krTest::m_currentResult = krUndefined;
        krTool::m_priority = 0;
        krTool::m_pCheckStatus = nullptr;
        krTestList::m_startFunc = "";
        g_tool = krTool();
        s_hintArg = 0;
        s_hintHide = false;
        s_version = false;
        setCpuType(-1);
        setNumThreadsKey(0);
        g_istrm.deleteIStream();
        g_istrm.deleteIniFile();
        g_istrm.dataList().clear();
        g_istrm.setIniSection("Kelvar Rig");
        g_cstrm.tableFlush();
        g_ustrm.tableFlush();
        g_qstrm.tableFlush();
        g_trace.clear();
        g_trace.m_log = "";
        g_trace.m_indent = "";
        g_ostrm.setMsgLevel(PERF);
    }

    krTestList* m_testList = pTestList;
    krStringList* m_hotList = g_pHotList;
    krList<krParameter*>* m_parmList = g_pParmList;
    krString* m_cmdLine = pCmdLine;
    void (*m_parmFunc)() = s_parmFunc;
    void (*m_environment)() = vekEnvironment;
    int (*m_init)() = vek_Init;
    int m_freq = krCpuTicker::m_freqMHz;
    time_t (*m_time)() = krTime;
    unsigned m_ssx = kr_get_ssx();
};
