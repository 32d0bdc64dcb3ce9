// The timing tool: its settings, the four methods and one measurement. The adaptive search is in krtoolbest.
#include "krtool.h"

#include "krbase.h"
#include "krcputick.h"
#include "krctrl87.h"
#include "krguard.h"
#include "krio.h"
#include "krstream.h"

#include <algorithm>
#include <climits>

krTool g_tool;
krResult (*krTool::m_pCheckStatus)(int status) = nullptr;
int krTool::m_priority = 0;

// The context of the old method.
static krFuncOld _funcOld = nullptr;
static krTool* _pTool = nullptr;

static krResult internalError(int line) {
    g_ostrm << ERR << "KR internal error: file krtool, line " << line << "\n" << msgEndFlush;
    return krFail;
}

static krResult _funcLoop(int numLoops, long long* numClocks) {
    const krResult result = _funcOld(*_pTool, numLoops);
    *numClocks = _pTool->m_numClocks * krCpuTicker::getClockFactor();
    return result;
}

krString clockStr(long long value) {
    krString suffix;
    auto v = static_cast<double>(value);
    while (v > INT_MAX || v < INT_MIN) {
        v /= 10;
        suffix += '0';
    }
    return krText(static_cast<int>(v)) + suffix;
}

void krTool::reset() {
    m_actualAccuracy = 1.0;
    m_result = krUndefined;
    m_funcClocks = 0;
    m_numLoops = 0;
    m_numClocks = 0;
    m_resultStr = "";
    m_comment = "";
    m_funcLoop = nullptr;
    m_funcStat = nullptr;
    m_funcCall = nullptr;
    m_funcInit = nullptr;
    m_startTime = time(nullptr);
    m_endTime = m_startTime;
}

void krTool::setMethodLoop(int loops) {
    m_method = Manual;
    m_loops = loops < 1 ? 1 : loops;
}

void krTool::setMethodStat(int minCalls, long long maxClocks) {
    m_method = Statistic;
    m_minCalls = minCalls;
    m_maxClocks = maxClocks;
}

void krTool::setMethodBest(int start, int stop, long long minClocks) {
    // Eight times the start as a 64-bit product: a start typed by a user may be any int.
    const long long least = start * 8LL;
    m_method = Iterative;
    m_minClocks = minClocks;
    m_startLoops = start < 1 ? 1 : start;
    m_stopLoops = least > stop ? static_cast<int>(least > 0x7FFFFFFF ? 0x7FFFFFFF : least) : stop;
}

bool krTool::getMethodLoop(int& loops) const {
    if (m_method != Manual) {
        return false;
    }
    loops = m_loops;
    return true;
}

bool krTool::getMethodStat(int& minCalls, long long& maxClocks) const {
    if (m_method != Statistic) {
        return false;
    }
    minCalls = m_minCalls;
    maxClocks = m_maxClocks;
    return true;
}

bool krTool::getMethodBest(int& start, int& stop, long long& minClocks) const {
    if (m_method != Iterative) {
        return false;
    }
    start = m_startLoops;
    stop = m_stopLoops;
    minClocks = m_minClocks;
    return true;
}

void krTool::getAutoParameters(int& start, int& stop, long long& minClocks) {
    start = 1;
    stop = 2048;
    minClocks = 10 * krCpuTicker::getClockFactor();
}

void krTool::setLoopFactor(int f) {
    int start = 0;
    int stop = 0;
    long long minClocks = 0;
    getAutoParameters(start, stop, minClocks);
    if (f == 0) {
        m_factorStart = 0;
        m_factorStop = 0;
    } else if (f > 0) {
        m_factorStart = f < 32 ? start >> f : 0;
        m_factorStop = f < 32 ? stop >> f : 0;
    } else {
        constexpr int most = 31;
        const int shift = f < -most ? most : -f;
        m_factorStart = static_cast<int>(std::min<long long>(static_cast<long long>(start) << shift, INT_MAX));
        m_factorStop = static_cast<int>(std::min<long long>(static_cast<long long>(stop) << shift, INT_MAX));
    }
}

krResult krTool::timing(krFuncOld funcOld) {
    _funcOld = funcOld;
    _pTool = this;
    return timing(_funcLoop, nullptr, nullptr, nullptr);
}

krResult krTool::timing(krFuncLoop funcLoop, krFuncStat funcStat, krFuncCall funcCall, krFuncCall funcInit) {
    reset();
    if (funcLoop == nullptr && funcStat == nullptr && funcCall == nullptr) {
        g_ostrm << ERR
                << " Internal test problem: The test cannot execute standard timing.\n"
                   " No one of funcLoop, funcStat or funcCall is registered in the test.\n"
                << msgEnd;
        return krFail;
    }
    m_funcLoop = funcLoop;
    m_funcStat = funcStat;
    m_funcCall = funcCall;
    m_funcInit = funcInit;
    krWakeCore();
    switch (m_method) {
    case Auto:
        g_trace.trace("autoTiming", [&] { autoLoopTiming(); });
        break;
    case Manual:
        if (funcLoop == nullptr && funcCall == nullptr) {
            g_ostrm << ERR
                    << " ATTENTION! The test cannot execute Manual loop timing.\n"
                       " Statistic timing will be run instead.\n"
                    << msgEnd;
            setMethodStat(m_loops, 0);
            return timing(nullptr, funcStat, nullptr, funcInit);
        }
        g_trace.trace("customLoopTiming", [&] { customLoopTiming(); });
        break;
    case Statistic:
        if (funcStat == nullptr && funcCall == nullptr) {
            g_ostrm << ERR
                    << " ATTENTION! The test cannot execute Statistic timing.\n"
                       " Manual loop timing will be run instead.\n"
                    << msgEnd;
            setMethodLoop(m_minCalls);
            return timing(funcLoop, nullptr, nullptr, funcInit);
        }
        g_trace.trace("statisticTiming", [&] { statisticTiming(); });
        break;
    case Iterative:
        g_trace.trace("iterativeTiming", [&] { bestTiming(m_startLoops, m_stopLoops, m_minClocks); });
        break;
    default:
        m_result = internalError(__LINE__);
        break;
    }
    krCoreWasBusy();
    return m_result;
}

krString krTool::getAccuracyStr(double accuracy) {
    const double percent = accuracy * 100;
    return krFormat(percent < 0.1 ? "%.2f%c" : "%.1f%c", percent, '%');
}

void krTool::ctrlStart() {
    g_ctrl87.start();
    g_ssx.start();
}

void krTool::ctrlStop() {
    g_ctrl87.stop();
    g_ssx.stop();
}

void krTool::autoLoopTiming() {
    int start = 0;
    int stop = 0;
    long long minClocks = 0;
    getAutoParameters(start, stop, minClocks);
    if (m_factorStart != 0) {
        start = m_factorStart;
    }
    if (m_factorStop != 0) {
        stop = m_factorStop;
    }
    bestTiming(start, stop, minClocks);
}

void krTool::customLoopTiming() {
    g_ostrm << INFO << "    Manual method: \n"
            << "        numLoops   = " << m_loops << "\n"
            << msgEnd;
    g_trace.trace("runTimFunc", [&] { runTimFunc(m_loops, &m_funcClocks, true); });
    m_actualAccuracy = 0;
    m_comment << "nLps=" << m_loops;
    g_ostrm << INFO << "        funcClocks = " << m_funcClocks << "\n"
            << "        result     = " << krResultString(m_result) << "\n"
            << msgEnd;
}

void krTool::statisticTiming() {
    g_ostrm << INFO << "    Statistical method:\n"
            << "        minCalls   = " << m_minCalls << "\n"
            << "        maxClocks  = " << clockStr(m_maxClocks) << "\n"
            << msgEnd;
    int calls = m_minCalls;
    g_trace.trace("runTimFuncStat", [&] { runTimFuncStat(m_maxClocks, &calls, &m_funcClocks); });
    m_actualAccuracy = 0;
    m_comment << "nCalls=" << calls;
    g_ostrm << INFO << "        numCalls   = " << calls << "\n"
            << "        funcClocks = " << m_funcClocks << "\n"
            << "        result     = " << krResultString(m_result) << "\n"
            << msgEnd;
}

void krTool::updateResult(krResult result) {
    if (m_result < result) {
        m_result = result;
        m_resultStr = krResultString(result);
    }
}

krResult krTool::measureOnce(int& loops, bool useLoops) {
    if (m_setUse) {
        g_trace.traceIn("vekFunctionCalls");
        krBeforeMeasuredCode();
        const krResult result =
            useLoops ? timCall_Loop(loops, &m_numClocks, true) : timCall_Stat(&loops, &m_numClocks, true);
        g_trace.traceOut("vekFunctionCalls");
        return result;
    }
    if (m_ibsMode && m_funcInit != nullptr) {
        g_trace.traceIn("initFunc call");
        m_funcInit();
        g_trace.traceOut("initFunc call");
    }
    ctrlStart();
    g_trace.traceIn("vekFunctionCalls");
    krBeforeMeasuredCode();
    krSetPriority(m_priority);
    g_ssx.start(); // the trace and the priority have used vector registers again
    krResult result = krUndefined;
    if (useLoops) {
        if (m_funcLoop != nullptr) {
            result = m_funcLoop(loops, &m_numClocks);
        } else if (m_funcCall != nullptr) {
            result = timCall_Loop(loops, &m_numClocks, false);
        } else {
            result = internalError(__LINE__);
        }
    } else {
        if (m_funcStat != nullptr) {
            result = m_funcStat(&loops, &m_numClocks);
        } else if (m_funcCall != nullptr) {
            result = timCall_Stat(&loops, &m_numClocks, false);
        } else {
            result = internalError(__LINE__);
        }
    }
    krResetPriority();
    g_trace.traceOut("vekFunctionCalls");
    ctrlStop();
    return result;
}

void krTool::runTimFunc(int loops, double* clocksPerCall, bool forceLoop) {
    const bool useLoops = forceLoop || !m_autoStat;
    for (int attempt = 0;; ++attempt) {
        m_numClocks = 0;
        if (m_setUse && m_funcCall == nullptr) {
            m_result = krUndefined;
            return;
        }
        updateResult(measureOnce(loops, useLoops));
        if (krIsFailure(m_result) || m_numClocks > 0 || attempt == 1) {
            *clocksPerCall = loops == 0 ? 0.0 : static_cast<double>(m_numClocks) / loops;
            return;
        }
    }
}

void krTool::runTimFuncStat(long long maxClocks, int* calls, double* clocksPerCall) {
    long long clocks = maxClocks;
    krResult result = krUndefined;
    if (m_setUse) {
        if (m_funcCall == nullptr) {
            m_result = krUndefined;
            return;
        }
        krBeforeMeasuredCode();
        result = timCall_Stat(calls, &clocks, true);
    } else {
        ctrlStart();
        krSetPriority(m_priority);
        g_trace.traceIn("vekFunctionCalls");
        krBeforeMeasuredCode();
        g_ssx.start(); // as in measureOnce
        result = m_funcStat != nullptr ? m_funcStat(calls, &clocks) : timCall_Stat(calls, &clocks, false);
        g_trace.traceOut("vekFunctionCalls");
        krResetPriority();
        ctrlStop();
    }
    m_numClocks = clocks;
    *clocksPerCall = *calls == 0 ? 0.0 : static_cast<double>(clocks) / *calls;
    updateResult(result);
}

// The call before the clock starts. A failure ends the measurement with its result.
struct FirstCall {
    int status;
    bool ended;
    krResult result;
};

static FirstCall firstCall(const krTool& tool) {
    if (tool.m_funcCall == nullptr) {
        return {0, true, internalError(__LINE__)};
    }
    if (tool.m_funcInit != nullptr) {
        tool.m_funcInit();
    }
    const int status = tool.m_funcCall();
    if (krTool::m_pCheckStatus == nullptr || status >= 0) {
        return {status, false, krOk};
    }
    return {status, true, krTool::m_pCheckStatus(status)};
}

krResult krTool::timCall_Loop(int loops, long long* clocks, bool reset) {
    const FirstCall before = firstCall(*this);
    if (before.ended) {
        return before.result;
    }
    int status = before.status;
    const unsigned long long first = vek_get_cyclon_counter();
    for (int i = 0; i < loops; ++i) {
        if (m_funcInit != nullptr) {
            m_funcInit();
        }
        if (reset) {
            krVectorCopies::resetAllVectors();
        }
        const int returned = m_funcCall();
        if (returned != 0) {
            status = returned;
            if (returned < 0) {
                break;
            }
        }
    }
    const unsigned long long last = vek_get_cyclon_counter();
    *clocks = krCpuTicker::getClockFactor() * static_cast<long long>(last - first);
    return m_pCheckStatus != nullptr ? m_pCheckStatus(status) : krOk;
}

krResult krTool::timCall_Stat(int* calls, long long* clocks, bool reset) {
    const FirstCall before = firstCall(*this);
    if (before.ended) {
        return before.result;
    }
    int status = before.status;
    int i = 0;
    long long sum = 0;
    while (i < *calls || krCpuTicker::getClockFactor() * sum < *clocks) {
        if (m_funcInit != nullptr) {
            m_funcInit();
        }
        const unsigned long long first = vek_get_cyclon_counter();
        if (reset) {
            krVectorCopies::resetAllVectors();
        }
        const int timed = m_funcCall();
        const unsigned long long last = vek_get_cyclon_counter();
        sum += static_cast<long long>(last - first);
        // A second call, outside the clock: its return decides, and the timed one's only where it says nothing.
        const int untimed = m_funcCall();
        if (untimed < 0) {
            status = untimed;
            break;
        }
        status = untimed > 0 ? untimed : timed;
        ++i;
    }
    *calls = i;
    *clocks = krCpuTicker::getClockFactor() * sum;
    return m_pCheckStatus != nullptr ? m_pCheckStatus(status) : krOk;
}
