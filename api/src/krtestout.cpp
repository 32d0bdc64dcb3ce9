// What a measured line writes: clocks per element, microseconds, MFlops, the comment, and the text and table lines.
#include "krcache.h"
#include "krcputick.h"
#include "krio.h"
#include "krlib.h"
#include "krstream.h"
#include "krtest.h"

static constexpr const char* separator = "  ";

double krTest::performance(bool flops) {
    if (!flops) {
        return m_tool.m_funcClocks / getDivisor();
    }
    if (!isFloatFunction()) {
        return 0.0;
    }
    return static_cast<double>(krCpuTicker::getFreq()) * getFlops() / m_tool.m_funcClocks;
}

krString krTest::perfString(bool flops) {
    return formatClocks(performance(flops));
}

krString usecString(const krTool& tool) {
    return krText(tool.m_funcClocks / krCpuTicker::getFreq());
}

void krTest::setTimingResult(double clocks, const krString& comment) {
    m_tool.setFuncTicks(clocks);
    m_tool.m_comment = comment;
}

krString krTest::formatClocks(double value) {
    if (value <= 0) {
        return "";
    }
    if (value < 0.0001 || value > 1e7) {
        return krFormat("%.3e", value);
    }
    int decimals = 0;
    for (double bound = 100; decimals < 6 && value < bound; bound /= 10) {
        ++decimals;
    }
    return krFormat(krFormat("%c.%df", '%', decimals).c_str(), value);
}

krString krTest::getComment() {
    if (m_deprecated) {
        return "deprecated";
    }
    return m_cacheIter != nullptr ? m_cacheIter->getComment() + " " + m_tool.m_comment : m_tool.m_comment;
}

void krTest::funcToCstrm() {
    g_cstrm << m_name;
}

void krTest::parmsToOstrm() {
    for (const krParameter* parm : m_parms) {
        parm->toOStream(g_ostrm);
    }
}

void krTest::parmsToCstrm() {
    for (const krParameter* parm : m_parms) {
        parm->toCStream(g_cstrm);
    }
}

void krTest::parmsNameToCstrm() {
    for (const krParameter* parm : m_parms) {
        parm->nameToCStream(g_cstrm);
    }
}

void krTest::resultToCstrm(krResult /*result*/) {
    g_cstrm << getComment() << perfString(false) << getUnit() << usecString(m_tool) << perfString(true);
    g_cstrm << (isHotLine() ? "Hot" : "");
}

void krTest::putTableParms() {
    g_trace.trace("funcToCstrm", [&] { funcToCstrm(); });
    g_trace.trace("parmsToCstrm", [&] { parmsToCstrm(); });
    g_cstrm.setColmCount(m_numParmsColm);
}

void krTest::putTableResult(krResult result) {
    putTableParms();
    g_trace.trace("resultToCstrm", [&] { resultToCstrm(result); });
    g_cstrm.lineOut(m_numResultColm + m_numParmsColm);
}

void krTest::putTableResult_Deprecated(krResult result) {
    if (setDeprecatedFlag(true)) {
        putTableParms();
        g_trace.trace("resultToCstrm", [&] { resultToCstrm(result); });
        g_cstrm.linePostpone();
    }
    setDeprecatedFlag(false);
}

bool krTest::setDeprecatedFlag(bool flag) {
    m_deprecated = flag;
    bool any = false;
    for (krParameter* parm : m_parms) {
        if (!flag) {
            parm->setDeprecatedFlag(false);
        } else if (parm->isDeprecatedParm()) {
            if (!parm->setDeprecatedFlag(true)) {
                return false;
            }
            any = true;
        }
    }
    return any;
}

void krTest::putTableName() {
    if ((krNameTables::m_nameMode & krNameInResults) != 0) {
        putTableNameLine();
    }
    if ((krNameTables::m_nameMode & krNameInNames) != 0) {
        swapNameTable();
        putTableNameLine();
        swapNameTable();
    }
}

// Whether the destinations of the result table and the name table are exchanged.
static bool s_tablesSwapped = false;

void krTest::swapNameTable() {
    g_cstrm.swap(g_qstrm);
    s_tablesSwapped = !s_tablesSwapped;
}

// After a fault: a line in work is lost, lines held back are not.
void krTest::dropTableLine() {
    if (s_tablesSwapped) {
        swapNameTable();
    }
    g_cstrm.tableFlush();
    g_cstrm.identicalLinesStart(0);
    g_cstrm.linePostponeOut(m_numResultColm + m_numParmsColm);
}

void krTest::putTableNameLine() {
    g_trace.trace("funcToCstrm", [&] { funcToCstrm(); });
    g_trace.trace("parmsNameToCstrm", [&] { parmsNameToCstrm(); });
    g_cstrm.setColmCount(m_numParmsColm);
    g_cstrm << "parmNames";
    g_cstrm.lineOut(m_numResultColm + m_numParmsColm);
}

void krTest::outputResult(krResult result) {
    if (result == krUndefined) {
        return;
    }
    putTextError(result);
    putTextResult(result);
    if (!krIsFailure(result)) {
        putTableResult(result);
        putTableResult_Deprecated(result);
    }
}

krResult krTest::reportStatus(int status, const krString& name) {
    const bool error = status < 0;
    g_ostrm << (error ? ERR : WARN);
    g_ostrm << (error ? "--VEK ERROR. " : "--VEK WARNING. ") << "status = " << status;
    if (!name.empty()) {
        g_ostrm << " in " << name;
    }
    g_ostrm << ": " << vek_GetStatusString(status) << "\n" << msgEnd;
    const krResult result = error ? krFuncFail : krFuncWrn;
    raiseResult(!error && g_ostrm.outLevel() < WARN ? krOk : result);
    return result;
}

void krTest::putTextError(krResult result) {
    if (result > krOk) {
        g_ostrm << (krIsFailure(result) ? ERR : WARN);
        g_ostrm << "-- " << krResultString(result) << " on test parameters:\n";
        putTextParms();
        g_ostrm << msgEnd;
    }
}

void krTest::putTextResult(krResult result) {
    if (result == krOk || krIsWarning(result)) {
        g_ostrm << (result == krOk ? PERF : WARN);
        if (result != krOk) {
            g_ostrm << "-- performance:\n";
        }
        g_ostrm << testResultString() << "\n" << msgEnd;
    }
}

krString krTest::testResultString() {
    krString line;
    if (m_tool.m_method == krTool::Auto || m_tool.m_method == krTool::Iterative) {
        line << separator << "acc=" << sFormat(krTool::getAccuracyStr(m_tool.m_actualAccuracy), -5);
    }
    line << separator << sFormat(m_tool.m_comment, -10);
    line << separator << "perf=" << sFormat(m_tool.m_funcClocks, 9) << "/" << sFormat(getDivisor(), 9) << "="
         << sFormat(performance(false), 9) << " clocks";
    return line;
}

void krTest::putTextParms() {
    putTextParms(g_ostrm.msgLevel());
}

void krTest::putTextParms(MessageLevel level) {
    if (!g_ostrm.beginMessage(level)) {
        return;
    }
    if (m_cacheIter != nullptr) {
        g_ostrm << m_cacheIter->getComment() << ":";
    }
    g_trace.trace("parmsToOstrm", [&] { parmsToOstrm(); });
    g_ostrm << "\n";
    g_ostrm.endMessage();
}

void krTest::outputConst() {
    g_trace.trace("constToOstrm", [&] { constToOstrm(); });
}

void krTest::outputRegInfo() {
    g_ostrm << PERF << regInfo() << "\n" << msgEnd;
}

// Which of the functions present the tool will measure.
static const char* measuredFunction(const krTest& test) {
    if (test.m_funcOld != nullptr) {
        return "oldMethod";
    }
    if (test.m_funcCall != nullptr) {
        if (test.m_tool.m_setUse) {
            return "funcCall with Set&Use";
        }
        if (test.m_funcLoop == nullptr && test.m_funcStat == nullptr) {
            return "funcCall";
        }
    }
    const int method = test.m_tool.m_method;
    const bool adaptive = method == krTool::Auto || method == krTool::Iterative;
    const bool prefersLoop = method == krTool::Manual || (adaptive && !test.m_tool.m_autoStat);
    if (prefersLoop) {
        return test.m_funcLoop != nullptr ? "loopMethod" : "statMethod";
    }
    return test.m_funcStat != nullptr ? "statMethod" : "loopMethod";
}

krString krTest::regInfo() {
    krString text = "   Test has been registered";
    if (!m_info.m_macro.empty()) {
        text << " by " << m_info.m_macro << " macro";
    }
    const struct {
        bool present;
        const char* word;
    } functions[] = {{m_funcLoop != nullptr, "loopMethod"},
                     {m_funcStat != nullptr, "statMethod"},
                     {m_funcOld != nullptr, "oldMethod"},
                     {m_funcCall != nullptr, "funcCall"}};
    krString list;
    for (const auto& function : functions) {
        if (function.present) {
            list << (list.empty() ? "" : ", ") << function.word;
        }
    }
    if (list.empty()) {
        return text << " without any function to call.\n No standard timing method is available";
    }
    if (m_funcInit != nullptr) {
        list << ", funcInit";
    }
    return text << " with " << list << ".\n   " << measuredFunction(*this) << " is called for measuring.";
}
