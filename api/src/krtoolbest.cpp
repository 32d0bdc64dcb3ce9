// The adaptive search shared by Auto and Iterative: a prior measurement, the doubling of the loop count until two
// successive values agree, and the confirmation by repeated measurements, of which the smallest is kept.
#include "krcputick.h"
#include "krctrl87.h"
#include "krio.h"
#include "krstream.h"
#include "krtool.h"

#include <vector>

namespace {

// What the info text of a search shows about the last measurement.
krString clocksLines(const krTool& tool) {
    krString info;
    info << "        numClocks  = " << tool.m_numClocks << "\n        funcClocks = " << tool.m_funcClocks << "\n";
    return info;
}

krString resultLine(krResult result) {
    return krString("        result     = ") + krResultString(result) + "\n";
}

void writeInfo(const krString& info) {
    g_ostrm << INFO << info << msgEnd;
}

bool badCtrlStatus() {
    bool bad87 = false;
    bool badSSX = false;
    return krCtrlStatus::badCtrlStatus(bad87, badSSX);
}

void printBadCtrlStatus(bool wanted) {
    bool bad87 = false;
    bool badSSX = false;
    if (wanted && krCtrlStatus::badCtrlStatus(bad87, badSSX)) {
        krCtrlStatus::printCtrlStatus(bad87, badSSX);
    }
}

void clearCtrlStatus() {
    krCtrlStatus::clearCtrlStatus();
}

// Ten times, as far as an int goes.
int tenfold(int value) {
    return value > 0x7FFFFFFF / 10 ? 0x7FFFFFFF : value * 10;
}

int fourfold(int value) {
    return value > 0x7FFFFFFF / 4 ? 0x7FFFFFFF : value * 4;
}

} // namespace

double krTool::computeAccuracy(double a, double b) {
    const double difference = a < b ? b - a : a - b;
    return 2 * difference / (a + b);
}

double krTool::computeAccuracy(const double* values, int n, double* mean) {
    double sum = 0;
    for (int i = 0; i < n; ++i) {
        sum += values[i];
    }
    *mean = sum / n;
    double largest = 0;
    for (int i = 0; i < n; ++i) {
        const double away = (values[i] < *mean ? *mean - values[i] : values[i] - *mean) / *mean;
        if (away > largest) {
            largest = away;
        }
    }
    return largest;
}

double krTool::computeBest(const double* values, int n) {
    double best = values[0];
    for (int i = 1; i < n; ++i) {
        if (values[i] < best) {
            best = values[i];
        }
    }
    return best;
}

krResult krTool::startIterations(int loops, long long minClocks) {
    m_numLoops = loops;
    g_trace.trace("runTimFunc", [&] { runTimFunc(m_numLoops, &m_funcClocks, false); });
    if (krIsFailure(m_result)) {
        return m_result;
    }
    return static_cast<double>(minClocks) > m_numLoops * m_funcClocks ? krAccurFail : krOk;
}

krResult krTool::continueIterations(int startLoops, int maxLoops) {
    double prev = m_funcClocks;
    m_numLoops = startLoops < maxLoops ? startLoops : maxLoops;
    for (;;) {
        g_trace.trace("runTimFunc", [&] { runTimFunc(m_numLoops, &m_funcClocks, false); });
        if (m_funcClocks <= 0) {
            return krAccurFail;
        }
        m_actualAccuracy = computeAccuracy(m_funcClocks, prev);
        if (m_checkBadStatus && badCtrlStatus()) {
            m_numLoops >>= 1;
            m_funcClocks = prev;
            return krBadStsWrn;
        }
        if (m_accuracy >= m_actualAccuracy) {
            return krOk;
        }
        prev = m_funcClocks;
        if (m_numLoops > maxLoops / 2) {
            return krAccurWrn;
        }
        m_numLoops *= 2;
    }
}

krResult krTool::repeatTiming(int loops, int n) {
    const int count = n < 1 ? 1 : n;
    std::vector<double> values(static_cast<size_t>(count));
    size_t done = 0;
    if (m_numLoops == loops) {
        values[done++] = m_funcClocks;
    }
    m_numLoops = loops;
    for (; done < values.size(); ++done) {
        g_trace.trace("runTimFunc", [&] { runTimFunc(m_numLoops, &values[done], false); });
        g_ostrm << INFO << "        " << loopWord() << "   = " << loops << "\n"
                << "        numClocks  = " << m_numClocks << "\n"
                << "        funcClocks = " << values[done] << "\n"
                << msgEnd;
    }
    double mean = 0;
    m_actualAccuracy = computeAccuracy(values.data(), count, &mean);
    m_funcClocks = computeBest(values.data(), count);
    krResult result = m_actualAccuracy > m_accuracy ? krAccurWrn : krOk;
    if (m_checkBadStatus && badCtrlStatus()) {
        result = krBadStsWrn;
    }
    g_ostrm << INFO << "        accuracy   = " << getAccuracyStr(m_actualAccuracy) << "\n"
            << "        bestClocks = " << m_funcClocks << "\n"
            << resultLine(result) << msgEnd;
    printBadCtrlStatus(m_checkBadStatus);
    return result;
}

// The search stopped at a bad control status: try to do with fewer loops.
void krTool::avoidBadStatus() {
    const double limit = 2 * m_accuracy;
    printBadCtrlStatus(m_checkBadStatus);
    g_ostrm << WARN << "-- Attempting to avoid bad control status\n" << msgEnd;
    writeInfo("    Reduce loops to avoid bad ctrl status.\n    Simple Measurements: \n");
    clearCtrlStatus();
    const krResult result = repeatTiming(m_numLoops, 6);
    if (result != krBadStsWrn && limit >= m_actualAccuracy) {
        g_ostrm << WARN << "-- Attempt is successful\n" << msgEnd;
    } else {
        writeInfo("    Cannot avoid bad ctrl status\n");
        g_ostrm << WARN << "-- Attempt fails: "
                << (result == krBadStsWrn ? "Bad control status repeats.\n" : "Accuracy is unsatisfactory.\n")
                << msgEnd;
    }
}

void krTool::finishBest() {
    m_comment << (m_autoStat ? "nCalls=" : "nLps=") << m_numLoops;
    if (m_actualAccuracy > m_accuracy) {
        const krString reached = getAccuracyStr(m_actualAccuracy);
        m_comment << " acc=" << reached;
        if (m_result < krAccurWrn) {
            m_result = krAccurWrn;
            m_resultStr << "actual accuracy = " << reached;
        }
    }
    writeInfo("    Auto method: stop\n");
}

void krTool::failBest() {
    m_result = krAccurFail;
    writeInfo("    Auto method: exit\n");
}

void krTool::bestTiming(int start, int stop, long long minClocks) {
    int maxLoops = stop;
    int priorLoops = start;
    m_checkBadStatus = m_ibsMode;
    if (m_autoStat && m_funcStat == nullptr && m_funcCall == nullptr) {
        m_autoStat = false;
    }
    writeInfo(krString("    Auto method: start\n        minClocks  = ") + clockStr(minClocks) + "\n");

    for (;;) {
        writeInfo(krString("    Prior Measurement: \n        ") + loopWord() + "   = " + krText(priorLoops) + "\n");
        const krResult prior = startIterations(priorLoops, minClocks);
        writeInfo(clocksLines(*this) + resultLine(prior));
        if (prior > krAccurFail) {
            m_result = prior;
            writeInfo("    Auto method: exit\n");
            return;
        }
        if (prior != krAccurFail) {
            break;
        }
        if (priorLoops > krCpuTicker::getClockFactor()) {
            failBest();
            return;
        }
        priorLoops = tenfold(priorLoops);
        maxLoops = tenfold(maxLoops);
    }

    int startLoops = fourfold(m_numLoops);
    while (m_numLoops < maxLoops) {
        krString info;
        info << "    Iteration Measurement: \n        startLoops = " << startLoops
             << "\n        maxLoops   = " << maxLoops << "\n";
        writeInfo(info);
        krResult result = continueIterations(startLoops, maxLoops);
        info = "";
        info << "        stopLoops  = " << m_numLoops << "\n        stopClocks = " << m_numClocks
             << "\n        accuracy   = " << getAccuracyStr(m_actualAccuracy)
             << "\n        funcClocks = " << m_funcClocks << "\n";
        writeInfo(info + resultLine(result));
        if (result == krBadStsWrn) {
            avoidBadStatus();
            break;
        }
        if (result != krAccurFail) {
            // A value that is merely within the bound, but above 1 per cent, is not trusted yet.
            if (m_actualAccuracy <= 0.01) {
                break;
            }
            writeInfo("    Simple Measurements: \n");
            result = repeatTiming(m_numLoops, 3);
            if (result == krAccurWrn) {
                startLoops = fourfold(m_numLoops);
                continue;
            }
        }
        if (result != krAccurFail) {
            break;
        }
        if (startLoops >= krCpuTicker::getClockFactor()) {
            failBest();
            return;
        }
        startLoops = tenfold(startLoops);
        maxLoops = tenfold(maxLoops);
    }
    finishBest();
}
