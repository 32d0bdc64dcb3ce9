// A suite's data as its calls see them: a test brought by hand to a line of its grid, with the blocks that it made.
#pragma once

#include "suite_runner.h"

#include "krbase.h"
#include "krstream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>

/// One block of test memory; blocks of states and of row pointers have no owner.
struct SuiteBlock {
    void* data;
    int bytes;
    krObject* owner;
};

/// A function's test on line `line` of its grid, with data and before any call. `values` are a user's, as
/// "title=value". Vectors, matrices and plain blocks are counted from 0 in the order in which the suite made them.
/// A suite's tests share their data: one line stands at a time.
class SuiteLine {
public:
    explicit SuiteLine(const char* function, int line = 0, std::initializer_list<const char*> values = {})
        : SuiteLine(*findTest(function), line, values) {}
    /// Of the tests of a function with several modes findTest knows the first.
    explicit SuiteLine(krTest& test, int line = 0, std::initializer_list<const char*> values = {}) : m_test(test) {
        EXPECT_EQ(krMallocFirst(nullptr, nullptr), nullptr) << "another line stands";
        setVekEnvironment();
        g_ostrm.setOutLevel(ERR);
        for (const char* value : values) {
            g_istrm.dataList().set(value);
        }
        vkVector::m_seed = 7; // As a run starts.
        m_test.beginTest();
        if (!m_test.canStart()) {
            return;
        }
        m_test.parmsFromIstrm();
        next();
        while (m_ready && line-- > 0) {
            next();
        }
    }
    SuiteLine(const SuiteLine&) = delete;
    SuiteLine& operator=(const SuiteLine&) = delete;
    ~SuiteLine() {
        m_test.flushData();
        m_test.flushStart();
        m_test.endTest();
        g_istrm.dataList().clear();
        EXPECT_EQ(krMallocFirst(nullptr, nullptr), nullptr) << m_test.m_name.c_str() << " leaves memory";
    }

    krTest& test() { return m_test; }
    /// Whether the grid has the line and its data stand.
    bool ready() const { return m_ready; }
    /// Takes the next line of the grid; false if there is none or its data fail.
    bool next() {
        if (!m_test.m_isFirst) {
            m_test.flushData();
        }
        m_ready = m_test.canContinue() && m_test.initData();
        m_test.m_isFirst = false;
        return m_ready;
    }
    /// The status of one call.
    int call() { return m_test.m_funcCall(); }
    /// What is done before each call, if anything.
    void restore() {
        if (m_test.m_funcInit != nullptr) {
            m_test.m_funcInit();
        }
    }

    std::vector<SuiteBlock> blocks() const {
        std::vector<SuiteBlock> found;
        int bytes = 0;
        void* owner = nullptr;
        for (void* block = krMallocFirst(&bytes, &owner); block != nullptr; block = krMallocNext(&bytes, &owner)) {
            const bool plain = owner == MEM_OBJECT_IS_BUFFER || owner == MEM_OBJECT_IS_SUBOBJECT;
            found.push_back({block, bytes, plain ? nullptr : static_cast<krObject*>(owner)});
        }
        return found;
    }

    /// The vectors but no matrices.
    vkVector& vector(int index) { return owned<vkVector>(index, m_noVector, false); }
    vkrMatrice& matrix(int index) { return owned<vkrMatrice>(index, m_noMatrix, true); }
    /// The elements of a vector; of a complex one the real parts.
    std::vector<double> values(int index) {
        vkVector& found = vector(index);
        std::vector<double> all;
        for (int i = 0; i < found.length(); ++i) {
            all.push_back(found.getIndex(i));
        }
        return all;
    }
    /// The lengths of all vectors.
    std::vector<int> lengths() {
        std::vector<int> all;
        for (const SuiteBlock& block : blocks()) {
            const auto* found = dynamic_cast<vkVector*>(block.owner);
            if (found != nullptr && dynamic_cast<const vkrMatrice*>(found) == nullptr) {
                all.push_back(found->length());
            }
        }
        return all;
    }
    /// The blocks without an owner; the state, where a suite has one, is the last of them.
    std::vector<SuiteBlock> plain() const {
        std::vector<SuiteBlock> found;
        for (const SuiteBlock& block : blocks()) {
            if (block.owner == nullptr) {
                found.push_back(block);
            }
        }
        return found;
    }

private:
    template <class Owner>
    Owner& owned(int index, Owner& none, bool matrices) {
        for (const SuiteBlock& block : blocks()) {
            auto* found = dynamic_cast<Owner*>(block.owner);
            const bool isMatrix = dynamic_cast<vkrMatrice*>(block.owner) != nullptr;
            if (found != nullptr && isMatrix == matrices && index-- == 0) {
                return *found;
            }
        }
        ADD_FAILURE() << "no such data of " << m_test.m_name.c_str();
        return none;
    }

    krTest& m_test;
    bool m_ready = false;
    vkVector m_noVector;
    vkrMatrice m_noMatrix;
};

/// Random values: all within lo..hi, with some in the first and some in the last quarter of that range.
inline void expectRandom(const std::vector<double>& values, double lo, double hi) {
    ASSERT_FALSE(values.empty());
    const auto [least, most] = std::minmax_element(values.begin(), values.end());
    EXPECT_GE(*least, lo);
    EXPECT_LE(*most, hi);
    EXPECT_LT(*least, lo + (hi - lo) * 0.25);
    EXPECT_GT(*most, hi - (hi - lo) * 0.25);
}
