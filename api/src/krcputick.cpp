// Time base and process priority.
#include "krcputick.h"

#include "krcpuid.h"
#include "krinfo.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <sched.h>
#include <sys/resource.h>
#include <sys/types.h>
#include <unistd.h>

int krCpuTicker::m_freqMHz = 0;
LinuxRTClock g_rtc;

static const int nominalMHz[] = {60,   66,   75,   90,   100,  120,  133,  150,  166,  185,  200,  220,  240,
                                 266,  300,  333,  400,  450,  500,  530,  550,  600,  800,  1000, 1400, 1700,
                                 1800, 1900, 2000, 2200, 2260, 2400, 2500, 2530, 2600, 2660, 2800, 3060};

// The scheduling of the process before the bracket was opened.
static int _prio = 0;
static int _policy = 0;
static sched_param _param = {};
static bool _bSavedPrio = false;

// When the core was last known to run dense code, in nanoseconds of the monotonic clock; 0 before the first
// measurement.
static long long s_lastBusy = 0;
static constexpr long long idleGapNs = 2000000;
static constexpr long long wakeNs = 10000000;

bool vek_has_rdtsc() {
    return vek_has_cpuid() && CPUID(1, 0).getBit(3, 4) != 0;
}

int krNominalMHz(int mhz) {
    int best = mhz;
    int distance = 1000;
    for (const int entry : nominalMHz) {
        const int away = std::abs(entry - mhz);
        if (away < distance) {
            distance = away;
            best = entry;
        }
    }
    return mhz > 0 && static_cast<double>(distance) / mhz < 0.03 ? best : mhz;
}

int krFrequencyOf(unsigned long long counts, float microseconds) {
    const auto clocks = static_cast<float>(krCpuTicker::getClockFactor()) * static_cast<float>(counts);
    return krNominalMHz(static_cast<int>(clocks / microseconds + 0.5F)); // NOLINT(bugprone-incorrect-roundings)
}

static int estimateCpuFreqMHz() {
    if (!vek_has_rdtsc()) {
        return 0;
    }
    krSetPriority(1);
    OSTimer timer;
    timer.start();
    const unsigned long long first = vek_get_cyclon_counter();
    const time_t begin = krTime();
    while (difftime(krTime(), begin) < 2.0) {
    }
    const unsigned long long last = vek_get_cyclon_counter();
    timer.stop();
    krResetPriority();
    return krFrequencyOf(last - first, timer.getUSec());
}

int krCpuTicker::getFreq() {
    if (m_freqMHz == 0) {
        m_freqMHz = estimateCpuFreqMHz();
    }
    return m_freqMHz;
}

void OSTimer::GetCounter(long long* to) {
    if (g_rtc.m_descriptor == -1) {
        *to = clock();
        return;
    }
    *to = 0;
    if (g_rtc.m_active) {
        long long data = 0;
        if (read(g_rtc.m_descriptor, &data, sizeof data) != static_cast<ssize_t>(sizeof data)) {
            std::perror("\n-- OSTimer. read: Reading of TRC data fails\n");
            std::exit(errno);
        }
        *to = data >> 8;
    }
}

int OSTimer::getOSFreq() {
    return g_rtc.m_descriptor == -1 ? 1000000 : LinuxRTClock::INT_PER_SEC;
}

float OSTimer::getSec() const {
    return static_cast<float>(m_stop - m_start) / static_cast<float>(getOSFreq());
}

float OSTimer::getUSec() const {
    return getSec() * 1e6F;
}

static void _savePriority() {
    if (getuid() == 0) {
        _prio = getpriority(PRIO_PROCESS, 0);
        _policy = sched_getscheduler(0);
        sched_getparam(0, &_param);
    }
}

static void _resetPriority() {
    if (getuid() == 0) {
        setpriority(PRIO_PROCESS, 0, _prio);
        sched_setscheduler(0, _policy, &_param);
    }
}

void krSetPriority(int mode) {
    if (mode == 0) {
        _bSavedPrio = false;
        return;
    }
    _bSavedPrio = true;
    _savePriority();
    if (getuid() != 0) {
        return;
    }
    sched_param wanted = {};
    if (mode == 1) {
        setpriority(PRIO_PROCESS, 0, -20);
        wanted.sched_priority = sched_get_priority_max(SCHED_FIFO);
        if (wanted.sched_priority != -1) {
            sched_setscheduler(0, SCHED_RR, &wanted);
        }
    } else if (mode == 2 || mode == 3) {
        setpriority(PRIO_PROCESS, 0, mode == 2 ? 0 : 10);
        sched_setscheduler(0, SCHED_OTHER, &wanted);
    }
}

void krResetPriority() {
    if (_bSavedPrio) {
        _bSavedPrio = false;
        _resetPriority();
    }
}

int krGetNumOfProcessors() {
    const long count = sysconf(_SC_NPROCESSORS_ONLN);
    return count < 1 ? 1 : static_cast<int>(count);
}

static long long monotonicNs() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<long long>(now.tv_sec) * 1000000000 + now.tv_nsec;
}

bool krWakeCore() {
    const long long begin = monotonicNs();
    // Who lets rigs take turns on one core keeps it busy, and a rig that was stopped can't know that.
    if ((s_lastBusy != 0 && begin - s_lastBusy < idleGapNs) || getenv("KR_CORE_AWAKE") != nullptr) {
        return false;
    }
    unsigned long long lanes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    while (monotonicNs() - begin < wakeNs) {
        for (int i = 0; i < 4096; ++i) {
            for (unsigned long long& lane : lanes) {
                lane = lane * 6364136223846793005ULL + 1442695040888963407ULL;
            }
            __asm__ volatile("" : : "r"(lanes) : "memory");
        }
    }
    krCoreWasBusy();
    return true;
}

void krCoreWasBusy() {
    s_lastBusy = monotonicNs();
}
