// Runs a program of tests once at each level of the kernels: 512-bit, 256-bit, 128-bit and plain code, as far as the
// machine has them. Who tests a function that works by kernels need do nothing for it. A test that compares the levels
// with one another walks through them by atEveryLevel, and is run once.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>

#include "vekcore.h"

namespace kernellevels {

/// The level of this run, and the tests that need no run at another one.
struct Run {
    bool best = true;
    VekCpuType cpu = vekCpuUnknown;
    std::set<std::string> done;

    void choose() const {
        if (best) {
            vekInit();
        } else {
            vekInitCpu(cpu);
        }
    }
};

inline Run& run() {
    static Run only;
    return only;
}

inline std::string nameOf(const testing::TestInfo& test) {
    return std::string(test.test_suite_name()) + "." + test.name();
}

/// The test in work looks at nothing that hangs on the kernels: it needs no run at another level.
inline void onceIsEnough() {
    run().done.insert(nameOf(*testing::UnitTest::GetInstance()->current_test_info()));
}

/// Runs the body with plain, 128-bit, 256-bit and 512-bit kernels, as far as the machine has them.
template <class Body>
void atEveryLevel(Body body) {
    onceIsEnough();
    const auto atThis = [&body] {
        SCOPED_TRACE("kernel level " + std::to_string(vekGetKernelLevel()));
        body();
    };
    int named = 0;
    for (const VekCpuType cpu : {vekCpuUnknown, vekCpuV5, vekCpuV8}) {
        if (vekInitCpu(cpu) == vekStsNoErr) {
            named = vekGetKernelLevel();
            atThis();
        }
    }
    // Above what has a name.
    vekInit();
    if (vekGetKernelLevel() > named) {
        atThis();
    }
    run().choose();
}

/// What a test before has set does not last.
class Chooser : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { run().choose(); }
};

/// Names of the tests that ran and need another run, as a filter takes them.
inline std::string left(const std::set<std::string>& single) {
    const testing::UnitTest& all = *testing::UnitTest::GetInstance();
    std::string names;
    for (int s = 0; s < all.total_test_suite_count(); ++s) {
        const testing::TestSuite& suite = *all.GetTestSuite(s);
        for (int t = 0; single.count(suite.name()) == 0 && t < suite.total_test_count(); ++t) {
            const testing::TestInfo& test = *suite.GetTestInfo(t);
            if (test.should_run() && run().done.count(nameOf(test)) == 0) {
                names += nameOf(test) + ":";
            }
        }
    }
    return names;
}

/// The main function of a test program. `single` are test suites that use no kernel and take their time.
inline int runTests(int argc, char** argv, const std::set<std::string>& single) {
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests)) {
        return RUN_ALL_TESTS();
    }
    testing::UnitTest::GetInstance()->listeners().Append(new Chooser);
    vekInit();
    const int best = vekGetKernelLevel();
    int result = RUN_ALL_TESTS();
    const std::string again = left(single);
    // What another shard runs is not among them.
    unsetenv("GTEST_TOTAL_SHARDS");
    unsetenv("GTEST_SHARD_INDEX");
    run().best = false;
    for (const VekCpuType cpu : {vekCpuV8, vekCpuV5, vekCpuUnknown}) {
        if (!again.empty() && vekInitCpu(cpu) == vekStsNoErr && vekGetKernelLevel() < best) {
            std::printf("Note: kernel level %d\n", vekGetKernelLevel());
            run().cpu = cpu;
            testing::GTEST_FLAG(filter) = again;
            result = RUN_ALL_TESTS() != 0 ? 1 : result;
        }
    }
    return result;
}

} // namespace kernellevels

using kernellevels::atEveryLevel;
