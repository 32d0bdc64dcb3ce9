// The dialogue before the first test: timing method, accuracy, common parameters, alignment of vectors. Each value
// comes from a -d key, the ini-file, the console or its default, in this order; the parameters themselves are
// krdefault's.
#include "kr.h"
#include "krbase.h"
#include "krstream.h"

static void printTitle(const krString& title) {
    g_ostrm << ERR << krSession::getEnterTitle(title) << msgEnd;
}

// Turns the console on for a group of questions if its bit is set. Returns the bit if so, else 0.
static int beginGroup(int askMode, int bit, const char* title) {
    const bool ask = (askMode & bit) != 0;
    g_istrm.setIStream(ask ? &c_in : nullptr);
    if (!ask) {
        return 0;
    }
    printTitle(title);
    return bit;
}

static int readInt(int defaultValue, const char* name, const char* prompt = "") {
    krDefault<int> parm(defaultValue, name, prompt);
    parm.fromIStream(g_istrm);
    return parm.value();
}

static bool readFlag(bool defaultValue, const char* name, const char* yes, const char* no) {
    krMapDefault<bool> parm(defaultValue, name);
    parm[true] = yes;
    parm[false] = no;
    parm.fromIStream(g_istrm);
    return parm.value();
}

// Manual and Statistic have no use for the accuracy.
static void readAccuracy(int method) {
    if (method == krTool::Manual || method == krTool::Statistic) {
        return;
    }
    const bool known = method == krTool::Auto || method == krTool::Iterative;
    double accuracy = 0.01 * readInt(known ? 5 : 100, "Accuracy", "Accuracy, %");
    // Both values lie far above any measured scatter: outside 1 to 50 per cent nothing is controlled.
    if (accuracy < 0.01) {
        accuracy = 10.0;
    } else if (accuracy > 0.5) {
        accuracy = 500.0;
    }
    g_tool.m_accuracy = accuracy;
}

void krSession::beginCommonData() {
    g_ostrm.setOutLevel(ERR | WARN | PERF);
}

void krSession::endCommonData() {
    g_ostrm.setOutLevel(m_levelMode);
    if ((m_askMode & krAskTests) == 0) {
        g_istrm.setIStream(nullptr);
    }
}

void krSession::readCommonData() {
    const int timing = readTimingMethod();
    const int parms = readTestParameters();
    const int offset = readDataOffset();
    if (timing + parms + offset != 0) {
        printTitle("End of common specifications");
    }
}

int krSession::readTimingMethod() {
    krTool preset;
    if (initTimingMethod != nullptr) {
        initTimingMethod(preset);
    } else {
        preset.setMethodAuto();
    }
    const int asked = beginGroup(m_askMode, krAskTiming, "Specify timing method, please");

    krMapDefault<int> method(preset.m_method, "Method");
    method[krTool::Auto] = "Auto";
    method[krTool::Manual] = "Manual";
    method[krTool::Statistic] = "Statistic";
    method[krTool::Iterative] = "Iterative";
    method.fromIStream(g_istrm);

    switch (method.value()) {
    case krTool::Auto:
        g_tool.setMethodAuto();
        break;
    case krTool::Manual: {
        int loops = 10;
        preset.getMethodLoop(loops);
        g_tool.setMethodLoop(readInt(loops, "NumLoops"));
        break;
    }
    case krTool::Statistic: {
        int calls = 3;
        long long clocks = 10000;
        preset.getMethodStat(calls, clocks);
        calls = readInt(calls, "NumCalls");
        g_tool.setMethodStat(calls, readInt(static_cast<int>(clocks), "TotalCpuClocks"));
        break;
    }
    case krTool::Iterative: {
        int start = 0;
        int stop = 0;
        long long clocks = 0;
        krTool::getAutoParameters(start, stop, clocks);
        preset.getMethodBest(start, stop, clocks);
        start = readInt(start, "StartNumLoops");
        g_tool.setMethodBest(start, readInt(stop, "StopNumLoops"), clocks);
        break;
    }
    default:
        break;
    }
    readAccuracy(method.value());
    return asked;
}

void krSession::selectTestParameters() {
    if (g_pParmList == nullptr || pTestList == nullptr) {
        return;
    }
    const bool batchMode = m_batchMode;
    const int askMode = m_askMode;
    m_batchMode = true;
    m_askMode = 0;
    pTestList->selectCommonParms(*m_conditions, *g_pParmList);
    m_batchMode = batchMode;
    m_askMode = askMode;
}

int krSession::readTestParameters() {
    if (g_pParmList == nullptr || g_pParmList->empty()) {
        return 0;
    }
    const int asked = beginGroup(m_askMode, krAskParms, "Specify common test parameters, please");
    for (krParameter* parm : *g_pParmList) {
        parm->fromIStream(g_istrm);
        parm->setEnabled(false);
    }
    return asked;
}

int krSession::readDataOffset() {
    const int asked = beginGroup(m_askMode, krAskAlign, "Specify vectors alignment, please");
    const bool byByte = readFlag(false, "AlignVectorsBy", "byte", "element");
    krSetAlignByByte(byByte);

    DefaultAlign align(0, "VectorAlign", byByte ? "VectorAlign by Byte, 0..63" : "VectorAlign by Element, 0..63");
    align.fromIStream(g_istrm);
    krSetVectorAlign(align.value());
    if (align.value() != 0) {
        krSetAlignSrc(readFlag(true, "MisalignFirstVectorOnly", "yes", "no"));
    }

    // A parameter for its default alone: no source reaches the mutual shift of a run.
    const DefaultShift shift(512, "MutualVectorShift", "MutualVectorShift in Bytes, divisible by 64");
    krSetVectorShift(shift.value());
    return asked;
}

krString krSession::getEnterTitle(const krString& title) {
    const int n = title.length();
    const int pad = n <= 80 ? (80 - n) / 2 : -((n - 79) / 2);
    krString stars = " ";
    stars.resize(79, '*');
    krString line = " *";
    if (pad > 2) {
        line.resize(pad, ' ');
    }
    line += title;
    if (n + pad < 78) {
        line.resize(line.length() + 78 - n - pad, ' ');
    }
    return stars + "\n" + line + "*\n" + stars + "\n";
}
