// Values that a user gives for the parameters of every registered test.
#include "suite_grid.h"

#include "krstream.h"

#include <sstream>

namespace {

/// The titles of a test's parameters.
std::vector<std::string> titles(const krTest& test) {
    std::vector<std::string> found;
    std::istringstream row(nameRow(test.m_name.c_str()));
    for (std::string title; std::getline(row, title, ',');) {
        if (!title.empty()) {
            found.push_back(title);
        }
    }
    return found;
}

class UserSizes : public testing::TestWithParam<const char*> {
protected:
    void TearDown() override { g_istrm.dataList().clear(); }
};

// The call may be refused or be measured; it must leave other memory alone, which the sanitizer watches, and the table
// must have a line for each value that was measured.
TEST_P(UserSizes, OfOneParameterEndAsAResult) {
    for (krTest* test : *pTestList) {
        for (const std::string& title : titles(*test)) {
            SCOPED_TRACE((test->m_name.c_str() + (" " + title)) + "=" + GetParam());
            g_istrm.dataList().clear();
            g_istrm.dataList().set((title + "=" + GetParam()).c_str());
            krResult result = krUndefined;
            const std::vector<std::string> lines = runOnce(*test, result);
            EXPECT_NE(result, krUndefined);
            EXPECT_NE(result, krExcptFail);
            EXPECT_TRUE(!lines.empty() || krIsFailure(result));
            test->flushData();
        }
    }
}
INSTANTIATE_TEST_SUITE_P(Values, UserSizes, testing::Values("1", "7"));

} // namespace
