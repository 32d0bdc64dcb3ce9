// What the measured region of a call holds that the tool loops itself: preparation and reset in the loop form, the
// reset alone in the statistic form, and neither the untimed calls nor the status check.
#include "toolrun.h"
#include "visits.h"

namespace {

int visitedCall() {
    visit('c');
    return 0;
}
int visitedInit() {
    visit('i');
    return 0;
}
// The tool asks it straight after its last reading of the counter.
krResult visitedCheck(int /*status*/) {
    visit('k');
    return krOk;
}

class KrMeasuredRegion : public KrToolRun {
protected:
    struct Owner final : krObject {
        bool setReservedCopy() override {
            visit('r');
            return true;
        }
    };
    KrMeasuredRegion() : m_block(krMalloc(64, 0, 0, &m_owner)) {
        krTool::m_pCheckStatus = visitedCheck;
        forgetVisits();
    }
    ~KrMeasuredRegion() override { krFree(m_block); }
    std::string calls() {
        EXPECT_EQ(run(nullptr, nullptr, visitedCall, visitedInit), krOk);
        return visited();
    }
    // The clocks between two visits of the last run lie around those measured.
    void expectClocks(int first, int last) {
        EXPECT_GE(tool.m_numClocks, ticksWithin(first, last));
        EXPECT_LE(tool.m_numClocks, ticksBetween(first - 1, last + 1));
    }

    Owner m_owner;
    void* m_block;
};

TEST_F(KrMeasuredRegion, LoopHoldsThePreparationOfEachCall) {
    tool.setMethodLoop(3);
    ASSERT_EQ(calls(), "ic"
                       "icicic"
                       "k");
    expectClocks(2, 7);
}

TEST_F(KrMeasuredRegion, LoopHoldsTheResetOfEachCall) {
    tool.m_setUse = true;
    tool.setMethodLoop(2);
    ASSERT_EQ(calls(), "ic"
                       "ircirc"
                       "k");
    expectClocks(2, 7);
}

TEST_F(KrMeasuredRegion, StatisticLeavesThePreparationAndTheSecondCallOut) {
    tool.setMethodStat(2, 0);
    ASSERT_EQ(calls(), "ic"
                       "iccicc"
                       "k");
    EXPECT_GE(tool.m_numClocks, ticksWithin(3, 3) + ticksWithin(6, 6));
    EXPECT_LE(tool.m_numClocks, ticksBetween(2, 4) + ticksBetween(5, 7));
}

TEST_F(KrMeasuredRegion, StatisticHoldsTheResetOfEachCall) {
    tool.m_setUse = true;
    tool.setMethodStat(2, 0);
    ASSERT_EQ(calls(), "ic"
                       "irccircc"
                       "k");
    EXPECT_GE(tool.m_numClocks, ticksWithin(3, 4) + ticksWithin(7, 8));
    EXPECT_LE(tool.m_numClocks, ticksBetween(2, 5) + ticksBetween(6, 9));
}

TEST_F(KrMeasuredRegion, ClocksOfACallAreTheRegionOverItsCalls) {
    tool.setMethodLoop(2);
    calls();
    EXPECT_EQ(tool.m_funcClocks, static_cast<double>(tool.m_numClocks) / 2);
    tool.setMethodStat(3, 0);
    calls();
    EXPECT_EQ(tool.m_funcClocks, static_cast<double>(tool.m_numClocks) / 3);
}

} // namespace
