// Time base and priority: the snap to nominal frequencies, the system clock, the bracket of the process priority.
#include "krcputick.h"

#include "krinfo.h"
#include "streamcapture.h"
#include "visits.h"

#include <gtest/gtest.h>

#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

TEST(KrNominalFrequency, SnapsWithinThreePerCent) {
    const int rows[][2] = {{2394, 2400}, {1200, 1200}, {60, 60},     {59, 60},     {50, 50},
                           {3060, 3060}, {3150, 3060}, {3160, 3160}, {5000, 5000}, {0, 0}};
    for (const auto& [mhz, nominal] : rows) {
        EXPECT_EQ(krNominalMHz(mhz), nominal) << mhz;
    }
}

TEST(KrNominalFrequency, IsThatOfTheCountsOverTheTime) {
    EXPECT_EQ(krFrequencyOf(5000000000ULL, 2000000), 2500);
    EXPECT_EQ(krFrequencyOf(4980000000ULL, 2000000), 2500);
    EXPECT_EQ(krFrequencyOf(6550000000ULL, 2000000), 3275) << "no nominal frequency is near";
    EXPECT_EQ(krFrequencyOf(6551100000ULL, 2000000), 3276) << "rounded";
}

TEST(KrNominalFrequency, OfTwoEquallyDistantTheLowerIsTaken) {
    EXPECT_EQ(krNominalMHz(2230), 2200);
    EXPECT_EQ(krNominalMHz(1850), 1800);
    EXPECT_EQ(krNominalMHz(2630), 2600);
}

TEST(KrNominalFrequency, EveryEntryIsItsOwnNominal) {
    const int table[] = {60,   66,   75,   90,   100,  120,  133,  150,  166,  185,  200,  220,  240,
                         266,  300,  333,  400,  450,  500,  530,  550,  600,  800,  1000, 1400, 1700,
                         1800, 1900, 2000, 2200, 2260, 2400, 2500, 2530, 2600, 2660, 2800, 3060};
    for (const int mhz : table) {
        EXPECT_EQ(krNominalMHz(mhz), mhz);
        EXPECT_EQ(krNominalMHz(mhz + (mhz >= 100 ? 1 : 0)), mhz);
    }
}

TEST(KrTicker, StoredFrequencyIsNotEstimatedAgain) {
    const int before = krCpuTicker::m_freqMHz;
    krCpuTicker::m_freqMHz = 1234;
    EXPECT_EQ(krCpuTicker::getFreq(), 1234);
    krCpuTicker::m_freqMHz = before;
    EXPECT_EQ(krCpuTicker::getClockFactor(), 1);
}

TEST(KrTicker, CounterGoesOn) {
    ASSERT_TRUE(vek_has_rdtsc());
    const unsigned long long first = vek_get_cyclon_counter();
    EXPECT_GT(vek_get_cyclon_counter(), first);
    EXPECT_GT(first, 0xFFFFFFFFULL) << "the upper half is in place";
}

TEST(KrOsTimer, CountsProcessMicrosecondsWhileTheRealTimeClockIsClosed) {
    EXPECT_EQ(g_rtc.m_descriptor, -1);
    EXPECT_EQ(OSTimer::getOSFreq(), 1000000);
    long long first = 0;
    OSTimer::GetCounter(&first);
    EXPECT_NEAR(static_cast<double>(first), static_cast<double>(clock()), 1e6);
}

struct OpenClock {
    OpenClock() {
        EXPECT_EQ(pipe(ends), 0);
        g_rtc.m_descriptor = ends[0];
    }
    ~OpenClock() {
        close(ends[0]);
        close(ends[1]);
        g_rtc = LinuxRTClock();
    }
    void put(long long value) const { EXPECT_EQ(write(ends[1], &value, sizeof value), 8); }
    int ends[2] = {};
};

TEST(KrOsTimer, OpenRealTimeClockIsReadAndShifted) {
    OpenClock rtc;
    EXPECT_EQ(OSTimer::getOSFreq(), 8192);
    long long value = 7;
    OSTimer::GetCounter(&value);
    EXPECT_EQ(value, 0) << "not active";
    g_rtc.m_active = true;
    rtc.put(0x12345);
    OSTimer::GetCounter(&value);
    EXPECT_EQ(value, 0x123);
}

TEST(KrOsTimer, SecondsAreTheDifferenceOverTheFrequency) {
    OpenClock rtc;
    g_rtc.m_active = true;
    rtc.put(100 << 8);
    rtc.put((100 + 4096) << 8);
    OSTimer timer;
    timer.start();
    timer.stop();
    EXPECT_FLOAT_EQ(timer.getSec(), 0.5F);
    EXPECT_FLOAT_EQ(timer.getUSec(), 500000.0F);
}

// The estimate on a calendar and an operating system's clock played by hand, with no frequency known.
int s_nice = 0;
int s_policy = 0;
time_t playedCalendar() {
    constexpr time_t seconds[] = {100, 100, 101, 101, 102, 102, 103, 200};
    s_nice = getpriority(PRIO_PROCESS, 0);
    s_policy = sched_getscheduler(0);
    const size_t place = std::min(s_visits.size(), std::size(seconds) - 1);
    visit('t');
    return seconds[place];
}

class KrEstimate : public testing::Test {
protected:
    KrEstimate() {
        krCpuTicker::m_freqMHz = 0;
        krTime = playedCalendar;
        g_rtc.m_active = true;
        m_rtc.put(0);
        m_rtc.put(1 << 8);
        forgetVisits();
    }
    ~KrEstimate() override {
        EXPECT_EQ(getpriority(PRIO_PROCESS, 0), m_nice) << "the bracket is closed";
        EXPECT_EQ(sched_getscheduler(0), m_policy);
        krTime = m_time;
        krCpuTicker::m_freqMHz = m_freq;
    }

    const int m_nice = getpriority(PRIO_PROCESS, 0);
    const int m_policy = sched_getscheduler(0);

private:
    OpenClock m_rtc;
    time_t (*m_time)() = krTime;
    int m_freq = krCpuTicker::m_freqMHz;
};

TEST_F(KrEstimate, LastsUntilTwoSecondsHavePassed) {
    krCpuTicker::getFreq();
    EXPECT_EQ(s_visits.size(), 5U);
}

TEST_F(KrEstimate, IsTheStepsOfTheCounterOverTheTimeOfTheClock) {
    const unsigned long long before = orderedTick();
    const int mhz = krCpuTicker::getFreq();
    const unsigned long long after = orderedTick();
    constexpr float microseconds = 1e6F / 8192;
    ASSERT_EQ(s_visits.size(), 5U);
    EXPECT_GE(mhz, krFrequencyOf(static_cast<unsigned long long>(ticksWithin(0, 4)), microseconds));
    EXPECT_LE(mhz, krFrequencyOf(after - before, microseconds));
    EXPECT_EQ(krCpuTicker::m_freqMHz, mhz);
    EXPECT_EQ(krCpuTicker::getFreq(), mhz);
    EXPECT_EQ(s_visits.size(), 5U) << "made once";
}

TEST_F(KrEstimate, IsMadeAtTheHighestPriority) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "priorities need root rights";
    }
    krSetPriority(1);
    const int highNice = getpriority(PRIO_PROCESS, 0);
    const int highPolicy = sched_getscheduler(0);
    krResetPriority();
    if (highNice == m_nice) {
        GTEST_SKIP() << "a higher priority is not allowed here";
    }
    krCpuTicker::getFreq();
    EXPECT_EQ(s_nice, highNice);
    EXPECT_EQ(s_policy, highPolicy);
}

TEST_F(KrEstimate, IsZeroWithoutACounter) {
    constexpr unsigned counterBit = 1U << 4;
    PlayedCpu cpu;
    cpu.vendor(1);
    cpu.set(1, 0, {0, 0, 0, ~counterBit});
    EXPECT_FALSE(vek_has_rdtsc());
    EXPECT_EQ(krCpuTicker::getFreq(), 0);
    EXPECT_TRUE(s_visits.empty()) << "nobody waits";
    cpu.set(1, 0, {0, 0, 0, counterBit});
    EXPECT_TRUE(vek_has_rdtsc());
}

TEST(KrOsTimerDeathTest, FailedReadOfTheClockEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            g_rtc.m_descriptor = 12345;
            g_rtc.m_active = true;
            long long value = 0;
            OSTimer::GetCounter(&value);
        },
        testing::ExitedWithCode(EBADF), "\n-- OSTimer. read: Reading of TRC data fails\n: ");
}

TEST(KrPriority, BracketPutsThePriorityBack) {
    const int nice = getpriority(PRIO_PROCESS, 0);
    const int policy = sched_getscheduler(0);
    for (const int mode : {0, 2, 3}) {
        krSetPriority(mode);
        if (geteuid() == 0 && mode != 0) {
            EXPECT_EQ(getpriority(PRIO_PROCESS, 0), mode == 3 ? 10 : 0);
        }
        krResetPriority();
        EXPECT_EQ(getpriority(PRIO_PROCESS, 0), nice) << mode;
        EXPECT_EQ(sched_getscheduler(0), policy) << mode;
    }
    krResetPriority();
    EXPECT_EQ(getpriority(PRIO_PROCESS, 0), nice);
}

TEST(KrPriority, PolicyThatIsNotTheUsualOneIsPutBack) {
    const int policy = sched_getscheduler(0);
    const sched_param none = {};
    ASSERT_EQ(sched_setscheduler(0, SCHED_BATCH, &none), 0);
    krSetPriority(2);
    krResetPriority();
    EXPECT_EQ(sched_getscheduler(0), SCHED_BATCH);
    ASSERT_EQ(sched_setscheduler(0, policy, &none), 0);
}

TEST(KrPriority, HighestModeIsRoundRobinInRealTime) {
    const int nice = getpriority(PRIO_PROCESS, 0);
    const int policy = sched_getscheduler(0);
    krSetPriority(1);
    if (geteuid() != 0 || sched_getscheduler(0) != SCHED_RR) {
        krResetPriority();
        GTEST_SKIP() << "real-time scheduling is not allowed here";
    }
    sched_param param = {};
    sched_getparam(0, &param);
    EXPECT_EQ(getpriority(PRIO_PROCESS, 0), -20);
    EXPECT_EQ(param.sched_priority, sched_get_priority_max(SCHED_FIFO));
    krResetPriority();
    EXPECT_EQ(getpriority(PRIO_PROCESS, 0), nice);
    EXPECT_EQ(sched_getscheduler(0), policy);
}

TEST(KrPriority, ModeZeroForgetsTheSavedPriority) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "needs root rights";
    }
    const int before = getpriority(PRIO_PROCESS, 0);
    const int wanted = before == 10 ? 0 : 10;
    krSetPriority(wanted == 10 ? 3 : 2);
    krSetPriority(0);
    krResetPriority();
    EXPECT_EQ(getpriority(PRIO_PROCESS, 0), wanted) << "what was saved is forgotten";
    setpriority(PRIO_PROCESS, 0, before);
}

TEST(KrProcessors, ThereIsAtLeastOne) {
    EXPECT_EQ(krGetNumOfProcessors(), sysconf(_SC_NPROCESSORS_ONLN));
}

} // namespace

TEST(KrCpuTick, CoreIsWokenAfterAPauseUnlessSomebodyKeepsItAwake) {
    unsetenv("KR_CORE_AWAKE");
    usleep(3000);
    EXPECT_TRUE(krWakeCore());
    usleep(3000);
    setenv("KR_CORE_AWAKE", "1", 1);
    EXPECT_FALSE(krWakeCore());
    unsetenv("KR_CORE_AWAKE");
    EXPECT_TRUE(krWakeCore());
}
