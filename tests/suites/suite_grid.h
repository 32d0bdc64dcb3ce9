// What every suite's test checks of a function: its grid, its data and its registration.
#pragma once

#include "suite_runner.h"

#include "krbase.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <utility>

/// A function's grid: the number of lines, the parameter cells of the first and last line, the source file, whether the
/// input is restored before each call, and the elements of one call on the last line.
struct GridCase {
    const char* function;
    int lines;
    const char* first;
    const char* last;
    const char* source;
    bool restored;
    double divisor;
};

/// Runs a whole grid of so many lines between two of these parameter cells, with one loop a line: every call succeeds
/// and no memory is left behind. The lines are kept.
inline void expectLines(krTest& test, int count, const char* first, const char* last, std::vector<std::string>& lines) {
    krResult result = krUndefined;
    lines = runOnce(test, result);
    EXPECT_EQ(result, krOk);
    ASSERT_EQ(static_cast<int>(lines.size()), count);
    EXPECT_EQ(cells(lines.front(), 3, 8), first);
    EXPECT_EQ(cells(lines.back(), 3, 8), last);
    EXPECT_EQ(krMallocFirst(nullptr, nullptr), nullptr);
}

inline void expectGrid(const GridCase& expected) {
    krTest* test = findTest(expected.function);
    ASSERT_NE(test, nullptr);
    std::vector<std::string> lines;
    ASSERT_NO_FATAL_FAILURE(expectLines(*test, expected.lines, expected.first, expected.last, lines));
    EXPECT_EQ(cells(lines.front(), 9, 9), "nLps=1");
    EXPECT_EQ(cells(lines.front(), 11, 11), "e");
    EXPECT_EQ(test->m_srcName, expected.source);
    EXPECT_EQ(test->m_funcInit != nullptr, expected.restored);
    EXPECT_EQ(test->m_info.m_macro == "VK_REG_I", expected.restored);
    const double perElement = std::atof(cells(lines.back(), 10, 10).c_str());
    EXPECT_NEAR(test->m_tool.m_funcClocks / perElement, expected.divisor, expected.divisor * 0.02);
}

/// A test for each function of a table of grids.
#define SUITE_GRIDS(Suites, table)                                                                                     \
    class Suites : public testing::TestWithParam<GridCase> {};                                                         \
    TEST_P(Suites, WalkTheirGridAndEveryCallSucceeds) {                                                                \
        expectGrid(GetParam());                                                                                        \
    }                                                                                                                  \
    INSTANTIATE_TEST_SUITE_P(Grid, Suites, testing::ValuesIn(table),                                                   \
                             [](const auto& test) { return std::string(test.param.function); });

/// Cells of a test's name row, by default those of the parameters.
inline std::string nameRow(krTest& test, int first = 3, int last = 8) {
    krSession::m_nameMode = krNameInResults;
    krSession::m_nameExit = true;
    g_ostrm.setOutLevel(ERR);
    const std::vector<std::string> lines = tableLines([&] { test.run(); });
    krSession::m_nameMode = 0;
    krSession::m_nameExit = false;
    return lines.size() == 1 ? cells(lines.front(), first, last) : std::string("no single line");
}

/// The same of a function's test.
inline std::string nameRow(const char* function, int first = 3, int last = 8) {
    return nameRow(*findTest(function), first, last);
}

/// Function and parameter cells of name rows.
inline void expectNameRows(std::initializer_list<std::pair<const char*, const char*>> rows) {
    for (const auto& [function, names] : rows) {
        krTest* test = findTest(function);
        ASSERT_NE(test, nullptr) << function;
        EXPECT_EQ(nameRow(*test), names) << function;
    }
}
