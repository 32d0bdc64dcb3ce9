// The cache-state iterator: the windows of sizes, the retries, and what shows of it.
#include "krcache.h"
#include "krlib.h"
#include "krstream.h"
#include "streamcapture.h"

#include <gtest/gtest.h>

namespace {

class SizedObject final : public krObject {
public:
    int objectSize() const override { return m_size; }
    int m_size = 0;
};

// A cache of 1,000,000 bytes, a size parameter, and blocks that are what the line has allocated.
class KrCacheIterator : public testing::Test {
protected:
    void SetUp() override {
        m_cpu.vendor(4);
        m_cpu.cache(0, 1, 1, 125, 125);
        kr_vekForgetMaxCacheSizeB();
    }
    void TearDown() override {
        kr_vekForgetMaxCacheSizeB();
        dropBlock();
    }
    void takeBlock(int bytes) {
        dropBlock();
        m_block = krMalloc(bytes, 0, 0, nullptr);
    }
    void dropBlock() {
        if (m_block) {
            krFree(m_block);
        }
        m_block = nullptr;
    }

    PlayedCpu m_cpu;
    void* m_block = nullptr;
    SizedObject m_object;
    krStepIterator<int> m_size{"size", "the size"};
    ConsoleCapture m_console{ERR | WARN | PERF};
};

int seenSize = 0;
int seenBound = 0;
bool seenStepwise = false;

bool noteAndRefuse(krParameter* /*parm*/, int size, int bound, bool stepwise) {
    seenSize = size;
    seenBound = bound;
    seenStepwise = stepwise;
    return false;
}

bool acceptAlways(krParameter* /*parm*/, int /*size*/, int /*bound*/, bool /*stepwise*/) {
    return true;
}

krStepIterator<int>& withOneSize(krStepIterator<int>& size) {
    size.setList({100});
    return size;
}

// The iterator at its first state, over a size whose one value is 100.
class IteratorAt100 : public krCacheIteratorInt {
public:
    IteratorAt100(krStepIterator<int>& size, krObject* object, krCacheSetFunc setFunc)
        : krCacheIteratorInt(withOneSize(size), object, setFunc) {
        firstValue();
    }
};

// Whether there is a next size, and which.
std::pair<bool, int> updated(int value, int size, int bound, bool stepwise) {
    const bool found = krCacheIteratorInt::updateValue(value, size, bound, stepwise);
    return {found, value};
}

} // namespace

TEST_F(KrCacheIterator, WindowsOfBothStates) {
    m_size.setList({100});
    krCacheIteratorInt iter(m_size, nullptr, nullptr);
    ASSERT_TRUE(iter.firstValue());
    EXPECT_EQ(iter.value(), 0);
    EXPECT_STREQ(iter.getComment().c_str(), "inCache");
    EXPECT_EQ(iter.lowSize(), 100000);
    EXPECT_EQ(iter.highSize(), 900000);
    ASSERT_TRUE(iter.nextValue());
    EXPECT_EQ(iter.value(), 1);
    EXPECT_STREQ(iter.getComment().c_str(), "outofCache");
    EXPECT_EQ(iter.lowSize(), 1050000);
    EXPECT_EQ(iter.highSize(), 2147483647);
    EXPECT_FALSE(iter.nextValue());
}

TEST_F(KrCacheIterator, EachStateStartsAtTheFirstSize) {
    m_size.setList({100, 200});
    krCacheIteratorInt iter(m_size, nullptr, nullptr);
    iter.firstValue();
    m_size.setValue(999);
    EXPECT_TRUE(iter.nextValue());
    EXPECT_EQ(m_size.value(), 100);
    EXPECT_FALSE(iter.nextValue());
}

TEST_F(KrCacheIterator, SizeParameterWithoutValuesEndsTheWalk) {
    krCacheIteratorInt iter(m_size, nullptr, nullptr);
    EXPECT_FALSE(iter.firstValue());
}

TEST_F(KrCacheIterator, UserSeesTheSizeParameterAlone) {
    m_size.set(40, 80, 20, '+');
    m_size.firstValue();
    krCacheIteratorInt iter(m_size, nullptr, nullptr);
    EXPECT_STREQ(iter.valueString().c_str(), "40");
    EXPECT_STREQ(iter.defaultString().c_str(), "40; 80; +20");
    EXPECT_STREQ(iter.description().c_str(), "for (size = 40; size <= 80; size += 20)");
    EXPECT_STREQ(iter.prompt().c_str(), "for size");
    EXPECT_STREQ(iter.validString().c_str(), "");
    EXPECT_STREQ(iter.name().c_str(), "cacheIterator");
    EXPECT_EQ(iter.parm(), &m_size);
    iter.toOStream(g_ostrm);
    krIStream nobody;
    iter.fromIStream(nobody);
    EXPECT_EQ(m_console.text(), "size=40  for (size = 40; size <= 80; size += 20)\n");
    krCStream table;
    iter.toCStream(table);
    krString cell;
    table.getColm(0, cell);
    EXPECT_STREQ(cell.c_str(), "40");
}

TEST_F(KrCacheIterator, FittingSizeIsSilent) {
    IteratorAt100 iter(m_size, nullptr, nullptr);
    takeBlock(100000);
    EXPECT_TRUE(iter.validateSize());
    takeBlock(900000);
    EXPECT_TRUE(iter.validateSize());
    iter.nextValue();
    takeBlock(1050000);
    EXPECT_TRUE(iter.validateSize());
    EXPECT_EQ(m_console.text(), "");
}

TEST_F(KrCacheIterator, MissedLimitsAreTold) {
    IteratorAt100 iter(m_size, nullptr, nullptr);
    takeBlock(99999);
    EXPECT_FALSE(iter.validateSize());
    EXPECT_EQ(m_console.text(), "      inCache try: cacheParm=100 totalSize=99999 < 100000\n");
    takeBlock(900001);
    EXPECT_FALSE(iter.validateSize());
    EXPECT_EQ(m_console.text(), "      inCache try: cacheParm=100 totalSize=99999 < 100000\n"
                                "      inCache try: cacheParm=100 totalSize=900001 > 900000\n");
}

TEST_F(KrCacheIterator, FailedChecksComeLateAtTheErrorLevel) {
    m_object.m_size = 5;
    IteratorAt100 iter(m_size, &m_object, nullptr);
    takeBlock(500000);
    g_ostrm.setOutLevel(ERR);
    EXPECT_FALSE(iter.validateSize());
    EXPECT_EQ(m_console.text(), "");
    iter.outputInfo();
    EXPECT_EQ(m_console.text(), "      inCache try: cacheParm=100 objectSize=5 < 100000\n");
    g_ostrm.setOutLevel(ERR | WARN | PERF);
    iter.outputInfo();
    EXPECT_EQ(m_console.text(), "      inCache try: cacheParm=100 objectSize=5 < 100000\n");
}

TEST_F(KrCacheIterator, BothLimitsMissedDropTheFloorOnceAndThenGiveUp) {
    m_object.m_size = 5000;
    IteratorAt100 iter(m_size, &m_object, acceptAlways);
    takeBlock(950000);
    EXPECT_FALSE(iter.validateSize());
    EXPECT_EQ(iter.lowSize(), 10000);
    EXPECT_TRUE(iter.repeatValue());
    EXPECT_FALSE(iter.validateSize());
    EXPECT_FALSE(iter.repeatValue());
}

TEST_F(KrCacheIterator, SwingingSearchLowersTheFloorAndChecksAgain) {
    IteratorAt100 iter(m_size, nullptr, acceptAlways);
    takeBlock(2000000);
    EXPECT_FALSE(iter.validateSize());
    iter.repeatValue();
    EXPECT_FALSE(iter.validateSize());
    iter.repeatValue();
    takeBlock(50000);
    EXPECT_TRUE(iter.validateSize());
    EXPECT_EQ(iter.lowSize(), 10000);
}

TEST_F(KrCacheIterator, SwingingSearchEndsWithTheFloorDown) {
    IteratorAt100 iter(m_size, nullptr, acceptAlways);
    takeBlock(2000000);
    EXPECT_FALSE(iter.validateSize());
    iter.repeatValue();
    iter.repeatValue();
    takeBlock(5000);
    EXPECT_FALSE(iter.validateSize());
    EXPECT_FALSE(iter.repeatValue());
}

TEST_F(KrCacheIterator, NewStateHasItsFloorAndRetriesAnew) {
    m_object.m_size = 5000;
    IteratorAt100 iter(m_size, &m_object, acceptAlways);
    takeBlock(950000);
    iter.validateSize();
    EXPECT_EQ(iter.lowSize(), 10000);
    iter.firstValue();
    EXPECT_EQ(iter.lowSize(), 100000);
}

TEST_F(KrCacheIterator, EachStateAndEachFitHasElevenRetriesAnew) {
    IteratorAt100 iter(m_size, nullptr, acceptAlways);
    const auto retries = [&iter] {
        int count = 0;
        while (iter.repeatValue()) {
            ++count;
        }
        return count;
    };
    EXPECT_EQ(retries(), 11);
    EXPECT_EQ(retries(), 0);
    takeBlock(500000);
    EXPECT_TRUE(iter.validateSize());
    EXPECT_EQ(retries(), 11);
    iter.nextValue();
    EXPECT_EQ(retries(), 11);
}

TEST_F(KrCacheIterator, FailedChecksAreForgottenByAFitAndByANewState) {
    IteratorAt100 iter(m_size, nullptr, nullptr);
    g_ostrm.setOutLevel(ERR);
    takeBlock(99999);
    iter.validateSize();
    takeBlock(900001);
    iter.validateSize();
    iter.outputInfo();
    const std::string both = "      inCache try: cacheParm=100 totalSize=99999 < 100000\n"
                             "      inCache try: cacheParm=100 totalSize=900001 > 900000\n";
    EXPECT_EQ(m_console.text(), both) << "every check since the last fit";
    takeBlock(500000);
    EXPECT_TRUE(iter.validateSize());
    iter.outputInfo();
    EXPECT_EQ(m_console.text(), both);
    takeBlock(99999);
    iter.validateSize();
    iter.nextValue();
    iter.outputInfo();
    EXPECT_EQ(m_console.text(), both);
}

TEST_F(KrCacheIterator, FailedChecksComeLateBelowThePerformanceLevelOnly) {
    IteratorAt100 iter(m_size, nullptr, nullptr);
    takeBlock(99999);
    g_ostrm.setOutLevel(ERR);
    iter.validateSize();
    for (const OutputLevel level : {ERR | WARN | PERF, ERR | PERF, ERR | INFO}) {
        g_ostrm.setOutLevel(level);
        iter.outputInfo();
        EXPECT_EQ(m_console.text(), "") << level;
    }
    g_ostrm.setOutLevel(ERR | WARN);
    iter.outputInfo();
    EXPECT_EQ(m_console.text(), "      inCache try: cacheParm=100 totalSize=99999 < 100000\n");
}

TEST_F(KrCacheIterator, BothLimitsMissedAreToldBoth) {
    m_object.m_size = 5000;
    IteratorAt100 iter(m_size, &m_object, nullptr);
    takeBlock(950000);
    EXPECT_FALSE(iter.validateSize());
    EXPECT_EQ(m_console.text(), "      inCache try: cacheParm=100 objectSize=5000 < 100000\n"
                                "      inCache try: cacheParm=100 totalSize=950000 > 900000\n");
}

// The floor of the in-cache window after checks of blocks of these sizes, with a retry before each but the first.
class KrCacheSwing : public KrCacheIterator {
protected:
    int floorAfter(std::initializer_list<int> sizes) {
        IteratorAt100 iter(m_size, nullptr, acceptAlways);
        bool first = true;
        for (const int bytes : sizes) {
            if (!first) {
                iter.repeatValue();
            }
            first = false;
            takeBlock(bytes);
            m_fits = iter.validateSize();
        }
        return iter.lowSize();
    }
    static constexpr int big = 2000000;
    static constexpr int small = 50000;
    static constexpr int fit = 500000;
    bool m_fits = false;
};

TEST_F(KrCacheSwing, IsATooSmallBlockRightBehindATooBigOneFromTheSecondRetryOn) {
    EXPECT_EQ(floorAfter({big, small}), 100000) << "the first retry";
    EXPECT_FALSE(m_fits);
    EXPECT_EQ(floorAfter({big, big, small}), 10000);
    EXPECT_TRUE(m_fits);
    EXPECT_EQ(floorAfter({small, big, small}), 10000);
    EXPECT_TRUE(m_fits);
}

TEST_F(KrCacheSwing, IsNoSeriesOfEqualChecks) {
    EXPECT_EQ(floorAfter({big, big, big, big}), 100000);
    EXPECT_EQ(floorAfter({small, small, small, small}), 100000);
    EXPECT_EQ(floorAfter({big, small, small, small}), 100000) << "the last check found it too small";
    EXPECT_FALSE(m_fits);
}

TEST_F(KrCacheSwing, TooBigBlockIsRememberedAcrossAFit) {
    EXPECT_EQ(floorAfter({big, fit, fit, small}), 100000) << "the fit counts the retries anew";
    IteratorAt100 iter(m_size, nullptr, acceptAlways);
    takeBlock(big);
    EXPECT_FALSE(iter.validateSize());
    takeBlock(fit);
    EXPECT_TRUE(iter.validateSize());
    iter.repeatValue();
    iter.repeatValue();
    takeBlock(small);
    EXPECT_TRUE(iter.validateSize());
    EXPECT_EQ(iter.lowSize(), 10000);
}

TEST_F(KrCacheIterator, RetriesEndAfterEleven) {
    IteratorAt100 iter(m_size, nullptr, acceptAlways);
    for (int i = 0; i < 11; ++i) {
        EXPECT_TRUE(iter.repeatValue()) << i;
    }
    EXPECT_FALSE(iter.repeatValue());
}

TEST_F(KrCacheIterator, SetFunctionGetsTheMissedLimit) {
    m_object.m_size = 60000;
    IteratorAt100 iter(m_size, &m_object, noteAndRefuse);
    takeBlock(70000);
    iter.validateSize();
    EXPECT_FALSE(iter.repeatValue());
    EXPECT_EQ(seenSize, 60000);
    EXPECT_EQ(seenBound, 100000);
    EXPECT_FALSE(seenStepwise);
    takeBlock(980000);
    iter.validateSize();
    EXPECT_FALSE(iter.repeatValue());
    EXPECT_EQ(seenSize, 980000);
    EXPECT_EQ(seenBound, 900000);
    EXPECT_TRUE(seenStepwise);
}

TEST_F(KrCacheIterator, FirstRetryEstimatesTheNextOnesStep) {
    IteratorAt100 iter(m_size, nullptr, nullptr);
    iter.nextValue();
    takeBlock(100000);
    EXPECT_FALSE(iter.validateSize());
    EXPECT_TRUE(iter.repeatValue());
    EXPECT_EQ(m_size.value(), 800);
    takeBlock(800000);
    EXPECT_FALSE(iter.validateSize());
    EXPECT_TRUE(iter.repeatValue());
    EXPECT_EQ(m_size.value(), 1600);
    takeBlock(1600000);
    EXPECT_TRUE(iter.validateSize());
}

TEST_F(KrCacheIterator, SizeThatHalvesToZeroEndsTheRetries) {
    m_size.setList({2});
    krCacheIteratorInt iter(m_size, nullptr, nullptr);
    iter.firstValue();
    takeBlock(3800000);
    EXPECT_FALSE(iter.validateSize());
    EXPECT_FALSE(iter.repeatValue());
    EXPECT_EQ(m_size.value(), 2);
}

TEST_F(KrCacheIterator, UnknownCacheLetsNoDataFitInside) {
    m_cpu.vendor(0);
    kr_vekForgetMaxCacheSizeB();
    m_size.setList({64});
    krCacheIteratorInt iter(m_size, nullptr, nullptr);
    iter.firstValue();
    EXPECT_EQ(iter.cacheSize(), 0);
    EXPECT_EQ(iter.highSize(), 0);
    takeBlock(1000);
    EXPECT_FALSE(iter.validateSize());
    EXPECT_FALSE(iter.repeatValue());
}

TEST(KrCacheIteratorInt, EstimateCountsNetDoublings) {
    EXPECT_EQ(updated(10, 1000, 5000, false), std::pair(true, 40));
    EXPECT_EQ(updated(160, 10000, 900, false), std::pair(true, 10));
    EXPECT_EQ(updated(8, 4096, 4096, false), std::pair(true, 4));
}

TEST(KrCacheIteratorInt, StepDoublesBelowTheBoundAndHalvesOtherwise) {
    EXPECT_EQ(updated(5, 99, 100, true), std::pair(true, 10));
    EXPECT_EQ(updated(10, 100, 100, true), std::pair(true, 5));
    EXPECT_EQ(updated(1, 100, 100, true), std::pair(false, 0));
}

TEST(KrCacheIteratorInt, EstimateEndsWithoutDataAndWithoutBound) {
    EXPECT_EQ(updated(7, 0, 1000, false), std::pair(true, 7));
    EXPECT_FALSE(updated(7, 1000, 0, false).first);
    EXPECT_FALSE(updated(2000000000, 1, 2147483647, false).first);
}

TEST(KrCacheIteratorBase, ParameterOfUnknownTypeHasNoNewValue) {
    krDefault<int> parm(3, "x", "");
    krCacheIterator iter(parm, nullptr, nullptr);
    EXPECT_FALSE(iter.setNewValueToParm(1, 2, true));
}
