// The timing tool on calls that it loops itself: how often, how prepared, at which priority, with which status.
#include "toolrun.h"

#include <sys/resource.h>
#include <unistd.h>

namespace {

TEST_F(KrToolRun, CallsAreLoopedByTheTool) {
    tool.setMethodLoop(5);
    EXPECT_EQ(run(nullptr, nullptr, call, prepare), krOk);
    EXPECT_EQ(s_calls, 6);
    EXPECT_EQ(s_inits, 6);
    EXPECT_GT(tool.m_numClocks, 0);
}

TEST_F(KrToolRun, NegativeReturnEndsTheLoop) {
    tool.setMethodLoop(5);
    s_statuses = {0, 0, -3};
    EXPECT_EQ(run(nullptr, nullptr, call), krOk);
    EXPECT_EQ(s_calls, 3);
}

int s_checked;
krResult check(int status) {
    s_checked = status;
    return status < 0 ? krFuncFail : status > 0 ? krFuncWrn : krOk;
}

TEST_F(KrToolRun, StatusCheckOfTheLoop) {
    krTool::m_pCheckStatus = check;
    tool.setMethodLoop(3);
    s_statuses = {0, 5, 0, 0};
    EXPECT_EQ(run(nullptr, nullptr, call), krFuncWrn);
    EXPECT_EQ(s_checked, 5) << "a later 0 does not take the place of a warning";
    s_calls = 0;
    s_statuses = {-2};
    EXPECT_EQ(run(nullptr, nullptr, call), krFuncFail);
    EXPECT_EQ(s_calls, 1) << "the untimed call failed";
    s_calls = 0;
    s_statuses = {7};
    EXPECT_EQ(run(nullptr, nullptr, call), krFuncWrn);
    EXPECT_EQ(s_calls, 4);
}

TEST_F(KrToolRun, StatisticCallsTwiceForEachPass) {
    tool.setMethodStat(3, 0);
    EXPECT_EQ(run(nullptr, nullptr, call, prepare), krOk);
    EXPECT_EQ(s_calls, 7);
    EXPECT_EQ(s_inits, 4);
    EXPECT_STREQ(tool.m_comment.c_str(), "nCalls=3");
}

TEST_F(KrToolRun, StatisticOfNoPassMakesTheFirstCallAlone) {
    tool.setMethodStat(0, 0);
    run(nullptr, nullptr, call, prepare);
    EXPECT_EQ(s_calls, 1);
}

TEST_F(KrToolRun, StatisticLooksAtTheSecondReturn) {
    krTool::m_pCheckStatus = check;
    tool.setMethodStat(3, 0);
    s_statuses = {0, -9, 0, 0, -4};
    EXPECT_EQ(run(nullptr, nullptr, call), krFuncFail);
    EXPECT_EQ(s_checked, -4);
    EXPECT_EQ(s_calls, 5);
    EXPECT_STREQ(tool.m_comment.c_str(), "nCalls=1") << "the failed pass is not counted";
    s_calls = 0;
    s_statuses = {0, 0, 0, 0, 0, 6, 0};
    EXPECT_EQ(run(nullptr, nullptr, call), krFuncWrn);
    EXPECT_EQ(s_checked, 6) << "the timed return where the second says nothing";
}

TEST_F(KrToolRun, StatisticGoesOnUntilTheClocksAreReached) {
    tool.setMethodStat(1, 2000000);
    run(nullptr, nullptr, call);
    EXPECT_GT(s_calls, 3);
    EXPECT_GE(tool.m_numClocks, 2000000);
}

struct Owner : krObject {
    bool setReservedCopy() override {
        ++resets;
        return true;
    }
    int resets = 0;
};

TEST_F(KrToolRun, SetAndUseResetsTheVectorsBeforeEachTimedCall) {
    Owner owner;
    void* block = krMalloc(64, 0, 0, &owner);
    tool.m_setUse = true;
    tool.setMethodLoop(5);
    EXPECT_EQ(run(loop, nullptr, call), krOk);
    EXPECT_EQ(owner.resets, 5);
    EXPECT_TRUE(s_asked.empty()) << "the call is measured and not the loop";
    tool.setMethodStat(2, 0);
    EXPECT_EQ(run(nullptr, stat, call), krOk);
    EXPECT_EQ(owner.resets, 7);
    tool.m_setUse = false;
    tool.setMethodLoop(5);
    EXPECT_EQ(run(nullptr, nullptr, call), krOk);
    tool.setMethodAuto();
    tool.m_autoStat = true;
    run(nullptr, nullptr, call);
    EXPECT_EQ(owner.resets, 7) << "only where it is asked for";
    krFree(block);
}

std::string s_place;

int notePlace() {
    s_place = g_trace.getCurName().c_str();
    return 0;
}

TEST_F(KrToolRun, TraceNamesTheMeasuredCalls) {
    for (const bool setUse : {false, true}) {
        tool.m_setUse = setUse;
        tool.setMethodLoop(1);
        run(nullptr, nullptr, notePlace);
        EXPECT_EQ(s_place, "vekFunctionCalls") << setUse;
        tool.setMethodStat(1, 0);
        run(nullptr, nullptr, notePlace);
        EXPECT_EQ(s_place, setUse ? "runTimFuncStat" : "vekFunctionCalls");
    }
}

int s_nice = 0;

krResult notePriority(int loops, long long* clocks) {
    s_nice = getpriority(PRIO_PROCESS, 0);
    return loop(loops, clocks);
}

krResult notePriorityStat(int* calls, long long* clocks) {
    s_nice = getpriority(PRIO_PROCESS, 0);
    return stat(calls, clocks);
}

int notePriorityCall() {
    s_nice = getpriority(PRIO_PROCESS, 0);
    return 0;
}

TEST_F(KrToolRun, MeasuredCallsHaveThePriorityOfTheSetting) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "priorities need root rights";
    }
    const int before = getpriority(PRIO_PROCESS, 0);
    const int wanted = before == 10 ? 0 : 10;
    krTool::m_priority = wanted == 10 ? 3 : 2;
    tool.setMethodLoop(5);
    EXPECT_EQ(run(notePriority), krOk);
    EXPECT_EQ(s_nice, wanted);
    EXPECT_EQ(getpriority(PRIO_PROCESS, 0), before);
    tool.setMethodStat(2, 0);
    s_nice = before;
    EXPECT_EQ(run(nullptr, notePriorityStat), krOk);
    EXPECT_EQ(s_nice, wanted);
    EXPECT_EQ(getpriority(PRIO_PROCESS, 0), before);
    tool.m_setUse = true;
    tool.setMethodLoop(5);
    EXPECT_EQ(run(notePriority, nullptr, notePriorityCall), krOk);
    EXPECT_EQ(s_nice, before) << "a set-and-use call is not bracketed";
}

// The vector registers as a function finds them.
struct VectorRegisters {
    unsigned long long words[32] = {};
    int notFull() const {
        int count = 0;
        for (const unsigned long long word : words) {
            count += word != ~0ULL;
        }
        return count;
    }
};
VectorRegisters s_found;

#define READ_XMM(n) "movdqu %%xmm" #n ", 16*" #n "(%0)\n\t"
__attribute__((always_inline)) inline void readRegisters() {
    __asm__ volatile(READ_XMM(0) READ_XMM(1) READ_XMM(2) READ_XMM(3) READ_XMM(4) READ_XMM(5) READ_XMM(6) READ_XMM(7)
                         READ_XMM(8) READ_XMM(9) READ_XMM(10) READ_XMM(11) READ_XMM(12) READ_XMM(13) READ_XMM(14)
                             READ_XMM(15)
                     :
                     : "r"(s_found.words)
                     : "memory");
}
#undef READ_XMM

krResult registersOfTheLoop(int /*loops*/, long long* clocks) {
    readRegisters();
    *clocks = 100;
    return krOk;
}

krResult registersOfTheStatistic(int* /*calls*/, long long* clocks) {
    readRegisters();
    *clocks = 100;
    return krOk;
}

int registersOfTheFirstCall() {
    if (s_calls++ == 0) {
        readRegisters();
    }
    return 0;
}

TEST_F(KrToolRun, AllVectorRegistersAreFullOfOnesAtTheEntryOfTheMeasuredFunction) {
    for (const int priority : {0, 2}) {
        krTool::m_priority = priority;
        for (const OutputLevel level : {ERR | WARN | PERF, ERR | WARN | PERF | TRACE}) {
            m_level = level;
            tool.setMethodLoop(2);
            s_found = VectorRegisters();
            run(registersOfTheLoop);
            EXPECT_EQ(s_found.notFull(), 0) << "loop";
            s_found = VectorRegisters();
            s_calls = 0;
            run(nullptr, nullptr, registersOfTheFirstCall);
            EXPECT_EQ(s_found.notFull(), 0) << "call";
            tool.setMethodStat(2, 0);
            s_found = VectorRegisters();
            run(nullptr, registersOfTheStatistic);
            EXPECT_EQ(s_found.notFull(), 0) << "statistic";
            tool.setMethodAuto();
            tool.m_autoStat = true;
            s_found = VectorRegisters();
            run(nullptr, registersOfTheStatistic, call);
            EXPECT_EQ(s_found.notFull(), 0) << "statistic in Auto";
            tool.m_autoStat = false;
        }
    }
}

TEST_F(KrToolRun, SetAndUseCallsAreNotGuarded) {
    tool.m_setUse = true;
    tool.setMethodLoop(1);
    krTest::clearCtrlStatus();
    const unsigned before = kr_get_ssx();
    run(loop, nullptr, [] {
        kr_set_ssx(2, 2);
        return 0;
    });
    EXPECT_FALSE(g_ssx.badStatus());
    kr_set_ssx(before, 0xFFFF);
}

TEST_F(KrToolRun, SetAndUseWithoutCallIsUndefined) {
    tool.m_setUse = true;
    tool.setMethodLoop(5);
    EXPECT_EQ(run(loop), krUndefined);
    tool.setMethodStat(5, 0);
    EXPECT_EQ(run(nullptr, stat), krUndefined);
    EXPECT_TRUE(s_asked.empty());
}

} // namespace
