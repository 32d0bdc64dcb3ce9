// Blocks that are larger than the machine's memory.
#include "machinememory.h"
#include "streamcapture.h"

#include <gtest/gtest.h>

namespace {

class KrMemory : public testing::Test {
    const MachineMemory m_machine{[] { return 1000LL; }};
};

TEST_F(KrMemory, HoldsABlockOfItsSizeAndNoneThatIsLarger) {
    void* const whole = krMalloc(1000, 0, 0, nullptr);
    ASSERT_NE(whole, nullptr);
    krFree(whole);
    ConsoleCapture console(ERR);
    EXPECT_EQ(krMalloc(1001, 0, 0, nullptr), nullptr);
    EXPECT_EQ(console.text(), "-- Memory error: can't allocate 1001 bytes\n");
    EXPECT_EQ(krMallocFirst(nullptr, nullptr), nullptr);
}

TEST_F(KrMemory, HoldsWhatTheLiveBlocksLeave) {
    void* const most = krMalloc(900, 0, 0, nullptr);
    ASSERT_NE(most, nullptr);
    EXPECT_TRUE(krMemoryHolds(100));
    EXPECT_FALSE(krMemoryHolds(101));
    krFree(most);
    EXPECT_TRUE(krMemoryHolds(1000));
}

TEST(KrMachine, HasMemoryForTheRigAndAnEnd) {
    EXPECT_TRUE(krMemoryHolds(1 << 20));
    EXPECT_FALSE(krMemoryHolds(1LL << 60));
}

} // namespace
