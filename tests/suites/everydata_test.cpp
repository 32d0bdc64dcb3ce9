// The data that all suites hand to their calls, and what the calls make of them, as a whole. A figure of clocks says
// something about the data it was measured with: where these change, the clocks of two versions of the program are no
// longer those of the same work.
#include "machinememory.h"
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
    double answers;     // The same sum behind a call of each of these lines.
    double size = 0;    // Of the terms of these sums that are real numbers.
    double answerSize = 0;
};

// A suite that is to have other data than before, or a new one, has the row that the failing test prints. What the
// library works out for a suite in real numbers may differ a little with its kernels.
const std::map<std::string, Data> kExpected = {
#include "everydata.inc"
};

/// Adds up the elements of a line's vectors, each times its place.
void addVectors(const SuiteLine& line, double& sum, double& size, long long* elements = nullptr) {
    int place = 0;
    for (const SuiteBlock& block : line.blocks()) {
        auto* vector = dynamic_cast<vkVector*>(block.owner);
        if (vector == nullptr) {
            continue;
        }
        if (elements != nullptr) {
            *elements += vector->length();
        }
        for (int i = 0; i < vector->length(); ++i) {
            place = place % 997 + 1;
            const double value = vector->getIndex(i);
            // A word that no call has reached may be any number, or none.
            if (std::isfinite(value)) {
                sum += place * value;
                size += vkIsFloat(vector->type()) ? place * std::fabs(value) : 0;
            }
        }
    }
}

Data dataOf(krTest& test) {
    Data sums{0, 0, 0, 0, 0};
    SuiteLine line(test);
    for (; line.ready(); line.next()) {
        ++sums.lines;
        sums.divisors += test.getDivisor();
        line.restore();
        // The values of neighbouring lines differ by what shows in a few of them.
        if (sums.lines > 4 && sums.lines % 16 != 0) {
            continue;
        }
        addVectors(line, sums.weighted, sums.size, &sums.elements);
        line.call();
        addVectors(line, sums.answers, sums.answerSize);
    }
    return sums;
}

// A function has a test for each of its modes.
std::string titleOf(const krTest& test) {
    const std::string mode = test.m_info.m_mode.c_str();
    return test.m_name.c_str() + (mode.empty() ? mode : ", " + mode);
}

krTest* titled(const std::string& title) {
    for (krTest* test : *pTestList) {
        if (titleOf(*test) == title) {
            return test;
        }
    }
    return nullptr;
}

std::string rowOf(const std::string& title, const Data& data) {
    char row[200];
    std::snprintf(row, sizeof row, "{\"%s\", {%lld, %.12g, %lld, %.12g, %.12g}},", title.c_str(), data.lines,
                  data.divisors, data.elements, data.weighted, data.answers);
    return row;
}

TEST(EverySuitesData, HaveARowEach) {
    for (krTest* test : *pTestList) {
        const std::string title = titleOf(*test);
        EXPECT_EQ(kExpected.count(title), 1U) << rowOf(title, dataOf(*test));
    }
}

class SuitesData : public testing::TestWithParam<std::pair<const std::string, Data>> {};

TEST_P(SuitesData, AreThoseThatItsClocksWereMeasuredWith) {
    const auto& [title, expected] = GetParam();
    krTest* const test = titled(title);
    ASSERT_NE(test, nullptr) << title;
    const Data data = dataOf(*test);
    const std::string row = rowOf(title, data);
    EXPECT_EQ(data.lines, expected.lines) << row;
    EXPECT_EQ(data.elements, expected.elements) << row;
    EXPECT_NEAR(data.divisors, expected.divisors, 1e-6 * data.divisors) << row;
    // Of integers all digits of a row; floating point rounds otherwise at other levels of the kernels.
    constexpr double kDigits = 1e-11;
    EXPECT_NEAR(data.weighted, expected.weighted, kDigits * std::fabs(data.weighted) + 1e-6 * data.size) << row;
    EXPECT_NEAR(data.answers, expected.answers, kDigits * std::fabs(data.answers) + 1e-5 * data.answerSize) << row;
}

INSTANTIATE_TEST_SUITE_P(Every, SuitesData, testing::ValuesIn(kExpected), [](const auto& row) {
    std::string name = row.param.first;
    for (char& c : name) {
        c = c == ' ' || c == ',' ? '_' : c;
    }
    return name;
});

long long g_bytesLeft = 0;

TEST(EverySuitesData, AreRefusedWhereMemoryEndsAtAnyOfTheirBlocks) {
    for (krTest* test : *pTestList) {
        // The sizes of the blocks in the order in which a line makes them.
        std::vector<int> sizes;
        {
            const SuiteLine line(*test);
            for (const SuiteBlock& block : line.blocks()) {
                sizes.push_back(block.bytes);
            }
        }
        const MachineMemory machine([] { return g_bytesLeft; });
        testing::internal::CaptureStdout(); // A message for each of them.
        std::string taken;
        g_bytesLeft = -1;
        for (const int size : sizes) {
            g_bytesLeft += size;
            const SuiteLine line(*test);
            taken += line.ready() ? " with " + std::to_string(g_bytesLeft) + " bytes" : "";
        }
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(taken, "") << titleOf(*test);
    }
}

} // namespace
