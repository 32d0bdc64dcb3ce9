// Selection and order of tests: the conditions of -f and -t, the hot filter, the sort.
#include "kr.h"
#include "krcond.h"
#include "krkeys.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

struct Named : krTest {
    Named(const char* name, const char* className)
        : krTest(krFuncOld(nullptr), name, "p_file", (std::string(className) + "//KR_REG").c_str()) {}
};

// Whether a test runs under keys such as {"fX", "f-XY", "tTim"}.
bool runs(const char* name, const char* className, std::initializer_list<const char*> keys) {
    krSession session;
    session.m_conditions = new krConditions;
    for (const char* key : keys) {
        (key[0] == 'f' ? f_apply : t_apply)(key + 1, &session);
    }
    Named test(name, className);
    return session.m_conditions->tobeRun(&test);
}

bool runsFunc(const char* name, std::initializer_list<const char*> keys) {
    return runs(name, "Tim", keys);
}

TEST(KrConditionForm, PrefixIsTakenOff) {
    const struct {
        const char* text;
        krConditionForm form;
        const char* rest;
    } rows[] = {{"", krCondEmpty, ""},      {"abc", krCondPlain, "abc"}, {"=abc", krCondEqual, "abc"},
                {"+abc", krCondAnd, "abc"}, {"-abc", krCondNot, "abc"},  {"=", krCondEmpty, ""},
                {"+", krCondEmpty, ""},     {"-", krCondEmpty, ""},      {"--a", krCondNot, "-a"}};
    for (const auto& row : rows) {
        krString text = row.text;
        EXPECT_EQ(getCondition(text), row.form) << row.text;
        EXPECT_STREQ(text.c_str(), row.rest) << row.text;
    }
    EXPECT_EQ(krCondPlain, 0);
    EXPECT_EQ(krCondAnd, 1);
    EXPECT_EQ(krCondNot, 2);
    EXPECT_EQ(krCondEqual, 3);
    EXPECT_EQ(krCondEmpty, 4);
}

TEST(KrSelection, NoKeyRunsAll) {
    EXPECT_TRUE(runsFunc("anything", {}));
    EXPECT_TRUE(runsFunc("anything", {"f", "f+", "f-", "f=", "t", "t="}));
}

TEST(KrSelection, PlainAndNotTogether) {
    EXPECT_TRUE(runsFunc("aXb", {"fX", "f-XY"}));
    EXPECT_FALSE(runsFunc("aXYb", {"fX", "f-XY"}));
    EXPECT_FALSE(runsFunc("ab", {"fX", "f-XY"}));
    EXPECT_FALSE(runsFunc("aXYb", {"f-XY", "fX"}));
}

TEST(KrSelection, EqualKeyDoesNotSaveFromNot) {
    EXPECT_FALSE(runsFunc("veksFoo", {"f=veksFoo", "f-Foo"}));
    EXPECT_FALSE(runsFunc("veksFoo", {"f=veksFoo", "f+Bar"}));
    EXPECT_TRUE(runsFunc("veksFoo", {"f=veksFoo", "fBar"}));
}

TEST(KrSelection, AndKeysAloneSelect) {
    EXPECT_TRUE(runsFunc("AxB", {"f+A", "f+B"}));
    EXPECT_FALSE(runsFunc("Ax", {"f+A", "f+B"}));
    EXPECT_FALSE(runsFunc("xB", {"f+A", "f+B"}));
}

TEST(KrSelection, NotKeyAloneKeepsTheRest) {
    EXPECT_FALSE(runsFunc("xAx", {"f-A"}));
    EXPECT_TRUE(runsFunc("xax", {"f-A"}));
}

TEST(KrSelection, EqualMeansTheWholeNameInItsCase) {
    EXPECT_TRUE(runsFunc("veksFoo", {"f=veksFoo"}));
    EXPECT_FALSE(runsFunc("veksFooBar", {"f=veksFoo"}));
    EXPECT_FALSE(runsFunc("veksfoo", {"f=veksFoo"}));
}

TEST(KrSelection, ThereAreNoWildcards) {
    EXPECT_FALSE(runsFunc("veksFoo", {"fveks*"}));
    EXPECT_TRUE(runsFunc("veks*", {"f*"}));
}

TEST(KrSelection, TestAndFunctionKeysAreAlternatives) {
    EXPECT_TRUE(runs("veksAMR", "TimOther", {"fAMR", "tTim7291"}));
    EXPECT_TRUE(runs("veksX", "Tim7291cdbk", {"fAMR", "tTim7291"}));
    EXPECT_FALSE(runs("veksX", "TimOther", {"fAMR", "tTim7291"}));
}

TEST(KrSelection, TestKeysLookAtTheClassName) {
    EXPECT_TRUE(runs("f", "Tim7291cdbk", {"t7291"}));
    EXPECT_TRUE(runs("f", "Tim7291cdbk", {"t=Tim7291cdbk"}));
    EXPECT_FALSE(runs("f", "Tim7291cdbk", {"t=Tim7291"}));
    EXPECT_FALSE(runs("f", "Tim7291cdbk", {"t-cdbk"}));
    EXPECT_TRUE(runs("f", "Tim7291cdbk", {"t+cdbk", "t+Tim"}));
    EXPECT_FALSE(runs("f", "Tim7291cdbk", {"t+cdbk", "t+xyz"}));
    EXPECT_FALSE(runs("Tim", "Class", {"tTim"}));
}

struct HotList {
    HotList() : saved(g_pHotList), hot(krTest::m_hot) { g_pHotList = &names; }
    ~HotList() {
        g_pHotList = saved;
        krTest::m_hot = hot;
    }
    krStringList names;
    krStringList* saved;
    int hot;
};

TEST(KrHotFilter, FiltersOnlyAtTwo) {
    HotList list;
    list.names.append("veksHot");
    krConditions all;
    Named hot("veksHot", "Tim");
    Named cold("veksHotter", "Tim");
    for (const int level : {0, 1}) {
        krTest::m_hot = level;
        EXPECT_TRUE(hot.tobeRun(all));
        EXPECT_TRUE(cold.tobeRun(all));
    }
    krTest::m_hot = 2;
    EXPECT_TRUE(hot.tobeRun(all));
    EXPECT_FALSE(cold.tobeRun(all));
}

TEST(KrHotFilter, ConditionsComeFirst) {
    HotList list;
    list.names.append("veksHot");
    krTest::m_hot = 2;
    krConditions conditions;
    conditions.append(new RunCondition_fNot("Hot"));
    Named hot("veksHot", "Tim");
    EXPECT_FALSE(hot.tobeRun(conditions));
}

TEST(KrHotFilter, EmptyOrAbsentListSelectsNothing) {
    HotList list;
    krTest::m_hot = 2;
    krConditions all;
    Named test("veksHot", "Tim");
    EXPECT_FALSE(test.tobeRun(all));
    g_pHotList = nullptr;
    EXPECT_FALSE(test.tobeRun(all));
}

// The order of a list as "name.class name.class ".
std::string sorted(krTestList& list) {
    list.sortFunc();
    std::string order;
    for (const krTest* test : list) {
        order += std::string(test->m_name.c_str()) + "." + test->m_info.m_class.c_str() + " ";
    }
    return order;
}

TEST(KrTestOrder, EqualNamesKeepTheirRegistrationOrder) {
    Named tests[] = {{"b", "1"}, {"a", "1"}, {"b", "2"}, {"a", "2"}, {"b", "3"}, {"a", "3"}, {"c", "1"}};
    krTestList list;
    for (Named& test : tests) {
        list.append(&test);
    }
    EXPECT_EQ(sorted(list), "a.1 a.2 a.3 b.1 b.2 b.3 c.1 ");
}

TEST(KrTestOrder, ShortListsAreLeftAlone) {
    krTestList list;
    EXPECT_EQ(sorted(list), "");
    Named one("x", "1");
    list.append(&one);
    EXPECT_EQ(sorted(list), "x.1 ");
}

TEST(KrTestOrder, ManyTestsAreSortedStably) {
    std::vector<std::unique_ptr<Named>> tests;
    krTestList list;
    unsigned seed = 1;
    for (int i = 0; i < 1000; ++i) {
        seed = seed * 1103515245U + 12345U;
        const std::string name = "f" + std::to_string((seed >> 16) % 40);
        tests.push_back(std::make_unique<Named>(name.c_str(), krFormat("%04d", i).c_str()));
        list.append(tests.back().get());
    }
    list.sortFunc();
    EXPECT_EQ(list.size(), 1000);
    const krTest* before = nullptr;
    for (const krTest* test : list) {
        if (before != nullptr) {
            const int order = before->m_name.compare(test->m_name);
            EXPECT_LE(order, 0);
            if (order == 0) {
                EXPECT_LT(before->m_info.m_class.compare(test->m_info.m_class), 0);
            }
        }
        before = test;
    }
}

TEST(KrTestOrder, NullEntriesAreEqualToAll) {
    Named b("b", "1");
    krTestList list;
    list.append(&b);
    list.append(nullptr);
    list.sortFunc();
    EXPECT_EQ(*list.begin(), &b);
    EXPECT_EQ(list.size(), 2);
}

} // namespace
