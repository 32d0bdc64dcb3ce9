// What the measured region of a registered function holds: its preparation in the loop form, the call alone in the
// statistic form, and the warm-up in neither.
#include "../api/harness_state.h"
#include "../api/streamcapture.h"
#include "visits.h"
#include "vkreg.h"

#include <gtest/gtest.h>

namespace {

int visitedCall() {
    visit('c');
    return 0;
}

class TimRegion : public prTest {
public:
    using prTest::prTest;
};

VK_REG_I(TimRegion, veksRegion_16s_I, visitedCall(), visit('i'))

class VkMeasuredRegion : public testing::Test {
protected:
    VkMeasuredRegion() {
        setVekEnvironment();
        forgetVisits();
    }
    HarnessState state;
    long long clocks = 0;
};

TEST_F(VkMeasuredRegion, LoopHoldsThePreparationOfEachCall) {
    EXPECT_EQ(tim_veksRegion_16s_I_loop(3, &clocks), krOk);
    visit('k');
    ASSERT_EQ(visited(), "ic"
                         "icicic"
                         "k");
    EXPECT_GE(clocks, ticksWithin(2, 7));
    EXPECT_LE(clocks, ticksBetween(1, 8));
}

TEST_F(VkMeasuredRegion, StatisticHoldsTheCallsAlone) {
    int calls = 2;
    EXPECT_EQ(tim_veksRegion_16s_I_stat(&calls, &clocks), krOk);
    visit('k');
    ASSERT_EQ(visited(), "ic"
                         "icic"
                         "k");
    EXPECT_GE(clocks, ticksWithin(3, 3) + ticksWithin(5, 5));
    EXPECT_LE(clocks, ticksBetween(2, 4) + ticksBetween(4, 6));
}

} // namespace
