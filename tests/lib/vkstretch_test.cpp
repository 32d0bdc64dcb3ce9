// What the measured stretch of a registered function holds: its preparation in the loop form, the call alone in the
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

class TimStretch : public prTest {
public:
    using prTest::prTest;
};

VK_REG_I(TimStretch, veksStretch_16s_I, visitedCall(), visit('i'))

class VkStretch : public testing::Test {
protected:
    VkStretch() {
        setVekEnvironment();
        forgetVisits();
    }
    HarnessState state;
    long long clocks = 0;
};

TEST_F(VkStretch, LoopHoldsThePreparationOfEachCall) {
    EXPECT_EQ(tim_veksStretch_16s_I_loop(3, &clocks), krOk);
    visit('k');
    ASSERT_EQ(visited(), "ic"
                         "icicic"
                         "k");
    EXPECT_GE(clocks, ticksWithin(2, 7));
    EXPECT_LE(clocks, ticksBetween(1, 8));
}

TEST_F(VkStretch, StatisticHoldsTheCallsAlone) {
    int calls = 2;
    EXPECT_EQ(tim_veksStretch_16s_I_stat(&calls, &clocks), krOk);
    visit('k');
    ASSERT_EQ(visited(), "ic"
                         "icic"
                         "k");
    EXPECT_GE(clocks, ticksWithin(3, 3) + ticksWithin(5, 5));
    EXPECT_LE(clocks, ticksBetween(2, 4) + ticksBetween(4, 6));
}

} // namespace
