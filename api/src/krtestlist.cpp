// The list of tests: their order, which of them run, and the counters of their results.
#include "krcache.h"
#include "krcond.h"
#include "krheaplot.h"
#include "krtest.h"

#include <cstdlib>

krTestList* pTestList = nullptr;

krString krTestList::m_startFunc;
krTest* krTestList::m_pCurrentTest = nullptr;

static constexpr int sortBins = 16;

bool krTest::tobeRun(krConditions& conditions) {
    if (!conditions.tobeRun(this)) {
        return false;
    }
    return m_hot != 2 || krTest::isHotLine();
}

void krTestList::plus(krResult result) {
    ++m_count;
    if (!krIsResult(result)) {
        return;
    }
    ++m_counters[result];
    if (result >= krAccurWrn && result < krWarning) {
        ++m_counters[krWarning];
    } else if (result >= krAccurFail && result < krFail) {
        ++m_counters[krFail];
    }
}

bool krTestList::runTests(krConditions& conditions) {
    beforeAll();
    krHeapLot heap(std::getenv("KR_HEAP_LOT"));
    for (krTest* test : *this) {
        if (!test->tobeRun(conditions)) {
            continue;
        }
        if (!m_startFunc.empty() && !test->m_name.contains(m_startFunc)) {
            continue;
        }
        m_startFunc = "";
        m_pCurrentTest = test;
        beforeTest();
        heap.draw();
        const krResult result = test->run();
        afterTest(test);
        if (result != krUndefined || test->m_result != krOk) {
            plus(result);
        }
        m_pCurrentTest = nullptr;
    }
    return m_counters[krAccurFail] + m_counters[krDataFail] + m_counters[krFuncFail] + m_counters[krExcptFail] > 0;
}

static bool aless(const krTest* a, const krTest* b) {
    return a != nullptr && b != nullptr && a->compareFunc(b) < 0;
}

// Moves all of `from` into `into`, both sorted; of equal tests those of `into` stay in front.
static void mergeTests(krList<krTest*>& into, krList<krTest*>& from) {
    auto place = into.begin();
    while (!from.empty()) {
        if (place == into.end() || aless(*from.begin(), *place)) {
            into.splice(place, from, from.begin());
        } else {
            ++place;
        }
    }
}

void krTestList::sortFunc() {
    if (empty() || ++begin() == end()) {
        return;
    }
    krList<krTest*> bins[sortBins];
    int used = 0;
    while (!empty()) {
        krList<krTest*> carry;
        carry.splice(carry.begin(), *this, begin());
        int i = 0;
        while (i < used && !bins[i].empty()) {
            mergeTests(bins[i], carry);
            carry.swap(bins[i]);
            ++i;
        }
        if (i == sortBins) {
            --i;
        }
        mergeTests(bins[i], carry);
        if (i == used) {
            ++used;
        }
    }
    for (int i = 1; i < used; ++i) {
        mergeTests(bins[i], bins[i - 1]);
    }
    swap(bins[used - 1]);
}

// Whether a test uses the parameter, also as the one that a cache-state iterator wraps.
static bool usesParameter(const krTest& test, const krParameter* parm) {
    for (const krParameter* entry : test.m_parms) {
        const bool wrapped = test.m_cacheIter != nullptr && entry == test.m_cacheIter;
        if ((wrapped ? test.m_cacheIter->parm() : entry) == parm) {
            return true;
        }
    }
    return false;
}

void krTestList::selectCommonParms(krConditions& conditions, krList<krParameter*>& parms) {
    for (krParameter* parm : parms) {
        parm->setEnabled(false);
    }
    bool all = parms.empty();
    for (auto place = begin(); !all && !(place == end()); ++place) {
        krTest* test = *place;
        if (!test->tobeRun(conditions)) {
            continue;
        }
        test->startAndStop();
        all = true;
        for (krParameter* parm : parms) {
            if (!parm->enabled()) {
                parm->setEnabled(usesParameter(*test, parm));
            }
            all = all && parm->enabled();
        }
        delete test->m_cacheIter;
        test->m_cacheIter = nullptr;
        test->m_parms.clear();
    }
    for (auto parm = parms.begin(); !(parm == parms.end());) {
        if ((*parm)->enabled()) {
            ++parm;
        } else {
            parm = parms.erase(parm);
        }
    }
}

void deleteTestList() {
    if (pTestList == nullptr) {
        return;
    }
    for (krTest* test : *pTestList) {
        delete test;
    }
    delete pTestList;
    pTestList = nullptr;
}
