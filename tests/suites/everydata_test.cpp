// The data that all suites hand to their calls, as a whole. A figure of clocks says something about the data it was
// measured with: where these change, the clocks of two versions of the program are no longer those of the same work.
#include "suite_data.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <map>

namespace {

/// Sums over the lines of a suite's grid.
struct Data {
    long long lines;
    double divisors;
    long long elements; // As the sum after it of the first four lines and each sixteenth.
    double weighted;    // Each times its place in its line.
    double size = 0;    // Of the terms of that sum.
};

// A suite that is to have other data than before, or a new one, has the row that the failing test prints. What the
// library works out for a suite in real numbers may differ a little with its kernels.
const std::map<std::string, Data> kExpected = {
#include "everydata.inc"
};

Data dataOf(krTest& test) {
    Data sums{0, 0, 0, 0};
    SuiteLine line(test.m_name.c_str());
    for (; line.ready(); line.next()) {
        ++sums.lines;
        sums.divisors += test.getDivisor();
        line.restore();
        // The values of neighbouring lines differ by what shows in a few of them.
        if (sums.lines > 4 && sums.lines % 16 != 0) {
            continue;
        }
        int place = 0;
        for (const SuiteBlock& block : line.blocks()) {
            auto* vector = dynamic_cast<vkVector*>(block.owner);
            if (vector == nullptr) {
                continue;
            }
            sums.elements += vector->length();
            for (int i = 0; i < vector->length(); ++i) {
                const double value = vector->getIndex(i);
                place = place % 997 + 1;
                sums.weighted += place * value;
                sums.size += place * std::fabs(value);
            }
        }
    }
    return sums;
}

// Of a function with or without a row.
std::string rowOf(const std::string& name, const Data& data) {
    char row[200];
    std::snprintf(row, sizeof row, "{\"%s\", {%lld, %.12g, %lld, %.12g}},", name.c_str(), data.lines, data.divisors,
                  data.elements, data.weighted);
    return row;
}

TEST(EverySuitesData, HaveARowEach) {
    for (krTest* test : *pTestList) {
        const std::string name = test->m_name.c_str();
        EXPECT_EQ(kExpected.count(name), 1U) << rowOf(name, dataOf(*test));
    }
}

class SuitesData : public testing::TestWithParam<std::pair<const std::string, Data>> {};

TEST_P(SuitesData, AreThoseThatItsClocksWereMeasuredWith) {
    const auto& [name, expected] = GetParam();
    krTest* const test = findTest(name.c_str());
    ASSERT_NE(test, nullptr) << name;
    const Data data = dataOf(*test);
    const std::string row = rowOf(name, data);
    EXPECT_EQ(data.lines, expected.lines) << row;
    EXPECT_EQ(data.elements, expected.elements) << row;
    EXPECT_NEAR(data.divisors, expected.divisors, 1e-6 * data.divisors) << row;
    EXPECT_NEAR(data.weighted, expected.weighted, 1e-6 * data.size) << row;
}

INSTANTIATE_TEST_SUITE_P(Every, SuitesData, testing::ValuesIn(kExpected),
                         [](const auto& row) { return row.param.first; });

long long g_bytesLeft = 0;

TEST(EverySuitesData, AreRefusedWhereMemoryEndsAtAnyOfTheirBlocks) {
    long long (*const kept)() = krMachineMemory;
    for (const krTest* test : *pTestList) {
        // The sizes of the blocks in the order in which a line makes them.
        std::vector<int> sizes;
        {
            const SuiteLine line(test->m_name.c_str());
            for (const SuiteBlock& block : line.blocks()) {
                sizes.push_back(block.bytes);
            }
        }
        krMachineMemory = [] { return g_bytesLeft; };
        testing::internal::CaptureStdout(); // A message for each of them.
        std::string taken;
        g_bytesLeft = -1;
        for (const int size : sizes) {
            g_bytesLeft += size;
            const SuiteLine line(test->m_name.c_str());
            taken += line.ready() ? " with " + std::to_string(g_bytesLeft) + " bytes" : "";
        }
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(taken, "") << test->m_name.c_str();
        krMachineMemory = kept;
    }
}

} // namespace
