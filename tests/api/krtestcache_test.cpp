// Runs in the cache and out of it: lines that are repeated until their data fit, what shows of it, and which parameter
// takes part.
#include "krbase.h"
#include "krcache.h"
#include "notedtest.h"

namespace {

// A test whose only vector has `size` bytes, on a processor with a cache of 64 KB.
class KrCacheRun : public KrTestRun {
protected:
    struct Sized : Noted {
        void beginTest() override {
            initSettings();
            a.setList({start});
            regCacheParm(a, nullptr);
        }
        bool initData() override {
            block = krTest::allocate(a.value(), 0);
            return block != nullptr;
        }
        void flushData() override {
            krTest::deallocate(block);
            block = nullptr;
        }
        krString getComment() override { return krTest::getComment(); }
        int start = 1000;
        void* block = nullptr;
    };
    KrCacheRun() {
        cpu.vendor(4);
        cpu.cache(0, 1, 1, 8, 128);
        kr_vekForgetMaxCacheSizeB();
        krTest::m_cache = true;
    }
    ~KrCacheRun() override { kr_vekForgetMaxCacheSizeB(); }
    PlayedCpu cpu;
};

TEST_F(KrCacheRun, LineIsRepeatedUntilItsDataFitTheState) {
    Sized test;
    EXPECT_EQ(run(test), krOk);
    EXPECT_EQ(rows, "veksFoo,8000,-,-,inCache nLps=1,100, ,0.1,-\n"
                    "veksFoo,128000,-,-,outofCache nLps=1,100, ,0.1,-\n");
    EXPECT_TRUE(told("      inCache try: cacheParm=1000 totalSize=1000 < 6553\n")) << text;
    EXPECT_FALSE(told("-- Fail to allocate"));
}

TEST_F(KrCacheRun, SizeThatCanNotFitIsTold) {
    struct Huge : Sized {
        bool initData() override {
            block = krTest::allocate(1000000, 0);
            return true;
        }
    } test;
    test.start = 1;
    EXPECT_EQ(run(test, ERR), krDataFail);
    EXPECT_EQ(rows, "");
    EXPECT_TRUE(told("      inCache try: cacheParm=1 totalSize=1000000 > 58982\n")) << text;
    EXPECT_TRUE(told("-- Fail to allocate inCache data\n"));
    EXPECT_FALSE(told("-- One of argument list"));
    EXPECT_EQ(krMallocFirst(nullptr, nullptr), nullptr);
}

TEST_F(KrCacheRun, ChecksThatFailedAreToldOnceAtEachLevel) {
    struct Huge : Sized {
        bool initData() override {
            block = krTest::allocate(1000000, 0);
            return true;
        }
    };
    const std::string line = "      inCache try: cacheParm=1 totalSize=1000000 > 58982\n";
    for (const OutputLevel level : {+ERR, ERR | WARN, ERR | WARN | PERF}) {
        Huge test;
        test.start = 1;
        run(test, level);
        const size_t first = text.find(line);
        ASSERT_NE(first, std::string::npos) << level;
        EXPECT_EQ(text.find(line, first + 1), std::string::npos) << level;
    }
}

TEST_F(KrCacheRun, ParametersOfALineStandBehindItsState) {
    Sized test;
    run(test);
    EXPECT_TRUE(told("inCache:a=8000 \n  ")) << text;
    EXPECT_TRUE(told("outofCache:a=128000 \n  "));
}

TEST_F(KrCacheRun, OnlyTheFirstSizeParameterIsWrapped) {
    struct Two : Sized {
        void beginTest() override {
            Sized::beginTest();
            b.setList({10, 20});
            regCacheParm(b, nullptr);
        }
    } test;
    EXPECT_EQ(run(test), krOk);
    EXPECT_EQ(rows, "veksFoo,8000,10,-,inCache nLps=1,100, ,0.1,-\n"
                    "veksFoo,8000,20,-,inCache nLps=1,100, ,0.1,-\n"
                    "veksFoo,128000,10,-,outofCache nLps=1,100, ,0.1,-\n"
                    "veksFoo,128000,20,-,outofCache nLps=1,100, ,0.1,-\n");
    ASSERT_EQ(test.m_parms.size(), 2);
    EXPECT_EQ(*test.m_parms.begin(), test.m_cacheIter);
    EXPECT_EQ(*++test.m_parms.begin(), &test.b);
    EXPECT_EQ(test.m_cacheIter->parm(), &test.a);
}

TEST_F(KrCacheRun, NothingIsWrappedWithoutTheKey) {
    krTest::m_cache = false;
    Sized test;
    EXPECT_EQ(run(test), krOk);
    EXPECT_EQ(rows, "veksFoo,1000,-,-,nLps=1,100, ,0.1,-\n");
    EXPECT_EQ(test.m_cacheIter, nullptr);
}

} // namespace
