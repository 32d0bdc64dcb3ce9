// The timing tool: turns "call this function" into clocks per call with a known accuracy, by one of four methods.
// Auto and Iterative share bestTiming, which searches a loop count until two successive values agree and then repeats.
#pragma once

#include "krresult.h"

#include <ctime>

class krTool;

/// Runs the function `numLoops` times and stores the total clocks.
using krFuncLoop = krResult (*)(int numLoops, long long* numClocks);
/// Takes the least number of calls and the clock sum to reach, and stores back what was done and spent.
using krFuncStat = krResult (*)(int* numCalls, long long* numClocks);
/// One call; negative for an error, positive for a warning.
using krFuncCall = int (*)();
/// The old method: loops by itself and leaves its clocks in the tool.
using krFuncOld = krResult (*)(krTool& tool, int numLoops);

class krTool {
public:
    enum Method { Auto = 0, Manual = 1, Statistic = 2, Iterative = 3 };

    krTool() { reset(); }
    krTool(const krTool&) = default;
    krTool& operator=(const krTool&) = default;
    virtual ~krTool() = default;

    /// Clears the results and the functions of a line; the settings stay.
    void reset();

    void setMethodAuto() { m_method = Auto; }
    void setMethodLoop(int loops);
    void setMethodStat(int minCalls, long long maxClocks);
    void setMethodBest(int start, int stop, long long minClocks);
    bool getMethodAuto() const { return m_method == Auto; }
    bool getMethodLoop(int& loops) const;
    bool getMethodStat(int& minCalls, long long& maxClocks) const;
    bool getMethodBest(int& start, int& stop, long long& minClocks) const;
    static void getAutoParameters(int& start, int& stop, long long& minClocks);
    /// Shifts the loop bounds of Auto right (f > 0) or left (f < 0); 0 takes the shift away.
    void setLoopFactor(int f);
    void setFuncTicks(double clocks) { m_funcClocks = clocks; }

    krResult timing(krFuncOld funcOld);
    krResult timing(krFuncLoop funcLoop, krFuncStat funcStat, krFuncCall funcCall, krFuncCall funcInit);

    static krString getAccuracyStr(double accuracy);
    static void ctrlStart();
    static void ctrlStop();

    krResult startIterations(int loops, long long minClocks);
    krResult continueIterations(int startLoops, int maxLoops);
    /// `n` readings of `loops` calls, of which the present one may be the first; the least one counts.
    krResult repeatTiming(int loops, int n);
    void bestTiming(int start, int stop, long long minClocks);

    static double computeAccuracy(double a, double b);
    /// The largest relative deviation from the mean, which is stored at `mean`.
    static double computeAccuracy(const double* values, int n, double* mean);
    static double computeBest(const double* values, int n);

    krResult m_result;
    double m_funcClocks;
    int m_numLoops;
    double m_accuracy = 0.05;
    int m_method = Auto;
    int m_loops = 10;
    int m_startLoops = 1;
    int m_stopLoops = 2048;
    bool m_autoStat = false;
    bool m_setUse = false;
    long long m_minClocks = 100;
    int m_minCalls = 12;
    long long m_maxClocks = 10000;
    bool m_ibsMode = false;
    bool m_checkBadStatus = false;
    krString m_resultStr;
    krString m_comment;
    long long m_numClocks;
    double m_actualAccuracy;
    int m_factorStart = 0;
    int m_factorStop = 0;
    time_t m_startTime;
    time_t m_endTime;
    krFuncLoop m_funcLoop;
    krFuncStat m_funcStat;
    krFuncCall m_funcCall;
    krFuncCall m_funcInit;

    static krResult (*m_pCheckStatus)(int status);
    static int m_priority;

private:
    void autoLoopTiming();
    void customLoopTiming();
    void statisticTiming();
    void runTimFunc(int loops, double* clocksPerCall, bool forceLoop);
    void runTimFuncStat(long long maxClocks, int* calls, double* clocksPerCall);
    krResult measureOnce(int& loops, bool useLoops);
    krResult timCall_Loop(int loops, long long* clocks, bool reset);
    krResult timCall_Stat(int* calls, long long* clocks, bool reset);
    void avoidBadStatus();
    void finishBest();
    void failBest();
    void updateResult(krResult result);
    const char* loopWord() const { return m_autoStat ? "numCalls" : "numLoops"; }
};

/// What the user chose; each test copies it.
extern krTool g_tool;

/// The value as an integer, in tens where it leaves the int range.
krString clockStr(long long value);
