// Time base and process priority: the time-stamp counter, the frequency estimate, the priority bracket around measured
// calls, and the work that keeps the core awake before a measurement.
#pragma once

#include "krstring.h"

/// The time-stamp counter, with no serialising instruction around it: its cost stays in the measurement.
inline unsigned long long vek_get_cyclon_counter() {
    unsigned low = 0;
    unsigned high = 0;
    __asm__ volatile("rdtsc" : "=a"(low), "=d"(high));
    return (static_cast<unsigned long long>(high) << 32) | low;
}
bool vek_has_rdtsc();

/// Processor clocks: the frequency of the counter and the factor from counts to clocks.
class krCpuTicker {
public:
    /// MHz, estimated on first use by two seconds of polling; 0 without a counter.
    static int getFreq();
    /// For processors whose counter does not count every clock; 1 here.
    static int getClockFactor() { return 1; }
    static int m_freqMHz;
};

/// The nominal frequency nearest to a measured one if it lies within 3 per cent, else the measured one. Both in MHz.
int krNominalMHz(int mhz);
/// MHz of a counter that made `counts` steps in a time: rounded, then taken to the nominal frequency near it.
int krFrequencyOf(unsigned long long counts, float microseconds);

/// The real-time clock of the system as an optional source of time; closed unless a caller opens it.
class LinuxRTClock {
public:
    static constexpr int INT_PER_SEC = 8192;
    int m_descriptor = -1;
    bool m_active = false;
};
extern LinuxRTClock g_rtc;

/// Pair of readings of the operating system's clock.
class OSTimer {
public:
    void start() { GetCounter(&m_start); }
    void stop() { GetCounter(&m_stop); }
    static void GetCounter(long long* to);
    static int getOSFreq();
    float getSec() const;
    float getUSec() const;

private:
    long long m_start = 0;
    long long m_stop = 0;
};

/// Opens the bracket: 1 high, 2 normal, 3 low, 0 leaves the process alone. Needs root rights, else does nothing.
void krSetPriority(int mode);
void krResetPriority();
int krGetNumOfProcessors();

/// Some 10 ms of dense integer work if the core has not measured for a while: after a pause or mere clock polling it
/// runs dense code 1.3 to 1.4 times slower for some milliseconds. False if there was nothing to do: with KR_CORE_AWAKE
/// in the environment somebody else keeps the core busy.
bool krWakeCore();
/// Notes that the core has just been busy with measured work.
void krCoreWasBusy();
