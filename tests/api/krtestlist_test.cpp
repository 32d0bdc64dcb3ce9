// The list of tests: counters, which tests a run reaches, and the common parameters that they use.
#include "harness_state.h"
#include "krheaplot.h"
#include "kriterator.h"
#include "streamcapture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <list>
#include <memory>
#include <set>
#include <string>

namespace {

std::string s_ran;

class Fixed : public krTest {
public:
    Fixed(const char* name, krResult returned, krResult kept)
        : krTest(krFuncOld(nullptr), name, "f", "Tim"), m_returned(returned), m_kept(kept) {}
    // Lists of them are written as lists of names. NOLINTNEXTLINE(google-explicit-constructor)
    Fixed(const char* name, krResult result = krOk) : Fixed(name, result, result) {}
    krResult run() override {
        s_ran += std::string(m_name.c_str()) + " ";
        EXPECT_EQ(krTestList::m_pCurrentTest, this);
        m_result = m_kept;
        return m_returned;
    }
    void beginTest() override {
        initSettings();
        if (m_parm != nullptr) {
            m_parms.append(m_parm);
        }
        ++m_begun;
    }
    krParameter* m_parm = nullptr;
    int m_begun = 0;

private:
    krResult m_returned;
    krResult m_kept;
};

class KrTestListRun : public testing::Test {
protected:
    KrTestListRun() { s_ran = ""; }
    std::string counters() const {
        std::string text;
        for (int code = 0; code < 12; ++code) {
            text += std::to_string(list.counter(code)) + " ";
        }
        return text + "of " + std::to_string(list.count());
    }
    HarnessState state;
    krTestList list;
    krConditions all;
};

TEST_F(KrTestListRun, TotalsStandAtTheCodesOfWarningAndError) {
    for (int code = 0; code < 12; ++code) {
        list.plus(static_cast<krResult>(code));
    }
    EXPECT_EQ(counters(), "1 1 1 1 1 1 5 1 1 1 1 5 of 12");
}

TEST_F(KrTestListRun, FailuresOfTheCodesSevenToTenAreTold) {
    for (int code = 0; code < 12; ++code) {
        krTestList one;
        Fixed test("x", static_cast<krResult>(code));
        one.append(&test);
        EXPECT_EQ(one.runTests(all), code >= 7 && code <= 10) << code;
        EXPECT_EQ(one.count(), 1);
        EXPECT_EQ(krTestList::m_pCurrentTest, nullptr);
    }
}

TEST_F(KrTestListRun, ResultThatIsNoneIsATestOfNoClass) {
    for (const int code : {-1, 12, 13, 1000000, -2147483647 - 1, 2147483647}) {
        list.plus(static_cast<krResult>(code));
    }
    EXPECT_EQ(counters(), "0 0 0 0 0 0 0 0 0 0 0 0 of 6");
    Fixed strange("x", static_cast<krResult>(12));
    list.append(&strange);
    EXPECT_FALSE(list.runTests(all));
    EXPECT_EQ(list.count(), 7);
}

TEST_F(KrTestListRun, TestThatWasNotToBeMeasuredIsNotCounted) {
    Fixed skipped("a", krUndefined, krOk);
    Fixed undefined("b", krUndefined, krUndefined);
    Fixed good("c");
    for (krTest* test : {&skipped, &undefined, &good}) {
        list.append(test);
    }
    EXPECT_FALSE(list.runTests(all));
    EXPECT_EQ(counters(), "1 1 0 0 0 0 0 0 0 0 0 0 of 2");
}

TEST_F(KrTestListRun, StartFunctionIsAPartOfAName) {
    Fixed tests[] = {{"aaa"}, {"veksStartHere"}, {"bbb"}, {"veksStartToo"}};
    for (Fixed& test : tests) {
        list.append(&test);
    }
    krTestList::m_startFunc = "Start";
    list.runTests(all);
    EXPECT_EQ(s_ran, "veksStartHere bbb veksStartToo ");
    EXPECT_STREQ(krTestList::m_startFunc.c_str(), "");
    s_ran = "";
    krTestList::m_startFunc = "nowhere";
    EXPECT_FALSE(list.runTests(all));
    EXPECT_EQ(s_ran, "");
}

TEST_F(KrTestListRun, StartFunctionLooksAtSelectedTestsOnly) {
    Fixed tests[] = {{"xStart"}, {"bbb"}, {"cStart"}};
    for (Fixed& test : tests) {
        list.append(&test);
    }
    all.append(new RunCondition_fNot("x"));
    krTestList::m_startFunc = "Start";
    list.runTests(all);
    EXPECT_EQ(s_ran, "cStart ");
}

TEST_F(KrTestListRun, HooksStandAroundTheRunAndEachTestThatRuns) {
    struct Hooked : krTestList {
        void beforeAll() override { s_ran += "all "; }
        void beforeTest() override { s_ran += "before(" + std::string(m_pCurrentTest->m_name.c_str()) + ") "; }
        void afterTest(krTest* test) override {
            EXPECT_EQ(test, m_pCurrentTest);
            s_ran += "after(" + std::string(test->m_name.c_str()) + ") ";
        }
    } hooked;
    Fixed tests[] = {{"a"}, {"skipped"}, {"b", krExcptFail}};
    for (Fixed& test : tests) {
        hooked.append(&test);
    }
    all.append(new RunCondition_fNot("skipped"));
    EXPECT_TRUE(hooked.runTests(all));
    EXPECT_EQ(s_ran, "all before(a) a after(a) before(b) b after(b) ");
}

TEST_F(KrTestListRun, UnselectedTestsDoNotRun) {
    Fixed tests[] = {{"a"}, {"b"}};
    for (Fixed& test : tests) {
        list.append(&test);
    }
    all.append(new RunCondition_f("none"));
    EXPECT_FALSE(list.runTests(all));
    EXPECT_EQ(s_ran, "");
    EXPECT_EQ(list.count(), 0);
}

TEST_F(KrTestListRun, CommonParametersAreReducedToThoseUsed) {
    krDefault<int> used(1, "used");
    krDefault<int> unused(2, "unused");
    Fixed with("with");
    with.m_parm = &used;
    Fixed without("without");
    list.append(&without);
    list.append(&with);
    krList<krParameter*> parms;
    parms.append(&unused);
    parms.append(&used);
    list.selectCommonParms(all, parms);
    ASSERT_EQ(parms.size(), 1);
    EXPECT_EQ(*parms.begin(), &used);
    EXPECT_TRUE(with.m_parms.empty());
}

TEST_F(KrTestListRun, SearchForCommonParametersStopsWhenAllAreFound) {
    krDefault<int> used(1, "used");
    Fixed tests[] = {{"a"}, {"b"}, {"c"}};
    for (Fixed& test : tests) {
        list.append(&test);
    }
    tests[1].m_parm = &used;
    krList<krParameter*> parms;
    parms.append(&used);
    list.selectCommonParms(all, parms);
    EXPECT_EQ(tests[1].m_begun, 1);
    EXPECT_EQ(tests[2].m_begun, 0);
}

TEST_F(KrTestListRun, ParameterOfAnUnselectedTestIsNotUsed) {
    krDefault<int> used(1, "used");
    Fixed test("a");
    test.m_parm = &used;
    list.append(&test);
    all.append(new RunCondition_fNot("a"));
    krList<krParameter*> parms;
    parms.append(&used);
    list.selectCommonParms(all, parms);
    EXPECT_TRUE(parms.empty());
    EXPECT_EQ(test.m_begun, 0);
}

TEST_F(KrTestListRun, CacheIteratorStandsForWhatItWraps) {
    krTest::m_cache = true;
    class Cached : public Fixed {
    public:
        explicit Cached(krIterator<int>& size) : Fixed("cached"), m_size(size) {}
        void beginTest() override {
            initSettings();
            regCacheParm(m_size, nullptr);
            EXPECT_NE(m_cacheIter, nullptr);
        }
        krIterator<int>& m_size;
    };
    krIterator<int> size("size");
    size.setList({16});
    Cached test(size);
    list.append(&test);
    krList<krParameter*> parms;
    parms.append(&size);
    list.selectCommonParms(all, parms);
    EXPECT_EQ(parms.size(), 1);
    EXPECT_EQ(test.m_cacheIter, nullptr);
}

// Where a block comes to lie within a page in each of some tests.
std::set<std::uintptr_t> placesOfBlocks() {
    class Placing : public Fixed {
    public:
        Placing(const char* name, std::set<std::uintptr_t>& places) : Fixed(name), m_places(places) {}
        krResult run() override {
            const auto block = std::make_unique<char[]>(2000);
            m_places.insert(reinterpret_cast<std::uintptr_t>(block.get()) % 4096);
            return Fixed::run();
        }
        std::set<std::uintptr_t>& m_places;
    };
    std::set<std::uintptr_t> places;
    std::list<Placing> tests;
    krTestList list;
    for (int i = 0; i < 20; ++i) {
        list.append(&tests.emplace_back("placing", places));
    }
    krConditions all;
    list.runTests(all);
    list.clear();
    return places;
}

TEST(KrTestList, DataOfEachTestLieElsewhereIfALotIsWanted) {
    EXPECT_EQ(krHeapLot(nullptr).draw(), 0U);
    std::set<size_t> sizes;
    krHeapLot lot("7");
    krHeapLot same("7");
    for (int i = 0; i < 20; ++i) {
        const size_t size = lot.draw();
        EXPECT_EQ(same.draw(), size);
        EXPECT_GE(size, 64U);
        EXPECT_LE(size, 4096U);
        EXPECT_EQ(size % 64, 0U);
        sizes.insert(size);
    }
    EXPECT_GT(sizes.size(), 10U);
    unsetenv("KR_HEAP_LOT");
    const size_t usual = placesOfBlocks().size();
    setenv("KR_HEAP_LOT", "7", 1);
    const size_t drawn = placesOfBlocks().size();
    unsetenv("KR_HEAP_LOT");
#ifdef __SANITIZE_ADDRESS__
    // It lays blocks wherever it likes.
    EXPECT_GE(usual, 1U);
    EXPECT_GE(drawn, 1U);
#else
    EXPECT_LE(usual, 2U);
    EXPECT_GT(drawn, 5U);
#endif
}

} // namespace
