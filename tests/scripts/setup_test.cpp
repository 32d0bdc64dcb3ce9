// What ./run, ./test and ./krlab do before and around a build.
#include "checkout.h"
#include "patterns.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

} // namespace

TEST(ScriptsRun, SetsUpBuildsAndPassesTheKeysOnUntouched) {
    const Checkout checkout;
    const RigResult first = checkout.type("./run -B '-dlenght Dst=9; 12' -L\"PERF\"");
    EXPECT_EQ("Configuring build\nBuilding build\n<-B><-dlenght Dst=9; 12><-LPERF>\n", first.out);
    EXPECT_EQ(3, first.exitCode);
    const RigResult second = checkout.type("cd cmake && ../run -e");
    EXPECT_EQ("Building build\n<-e>\n", second.out);
}

TEST(ScriptsRun, AFailedBuildShowsItsLogAndOneLine) {
    const Checkout checkout;
    checkout.type("./run");
    checkout.standIn("cmake", "[ $1 != --build ] || { echo 'one.cpp:1: error: no'; exit 1; }\n");
    expectTyped(checkout, "./run", "Building build\none.cpp:1: error: no\n./run: the build failed\n", 1);
}

TEST(ScriptsRun, AFolderThatCannotBeWrittenIsToldInOneLine) {
    const Checkout checkout;
    checkout.write("build", "a file of that name");
    expectTyped(checkout, "./run", "./run: can't write to " + checkout.path() + "/build\n", 1);
}

TEST(ScriptsLab, OnlyTheProgramWritesToStandardOutput) {
    const Checkout checkout;
    expectTyped(checkout, "./krlab doctor 'a b' 2>/dev/null", "<doctor><a b>\n", 3);
}

TEST(ScriptsFolder, OneOfAnotherCheckoutIsRefusedAndKept) {
    const Checkout checkout;
    checkout.type("./run");
    checkout.type("./test --quick");
    checkout.write("build/kelvarrig.csv", "measured");
    for (const char* folder : {"build", "build-test"}) {
        checkout.write(std::string(folder) + "/CMakeCache.txt", "CMAKE_HOME_DIRECTORY:INTERNAL=/other/kelvar rig\n");
    }
    checkout.forgetCalls();
    const std::pair<std::string, std::string> commands[] = {
        {"./run", "build"}, {"./krlab doctor", "build"}, {"./test --quick", "build-test"}};
    for (const auto& [command, folder] : commands) {
        const RigResult result = checkout.type(command);
        EXPECT_TRUE(holds(result.out, command.substr(0, command.find(' ')) + ": " + folder +
                                          " belongs to the checkout in /other/kelvar rig; save your tables from it, "
                                          "remove it and try again\n"))
            << result.out;
        EXPECT_EQ(1, result.exitCode);
    }
    EXPECT_FALSE(holds(checkout.calls(), "cmake")) << checkout.calls();
    EXPECT_EQ("measured", checkout.read("build/kelvarrig.csv"));
    EXPECT_TRUE(checkout.exists("build/build.ninja"));
}

TEST(ScriptsFolder, OneOfTheSameCheckoutByAnotherPathIsTaken) {
    const Checkout checkout;
    checkout.type("./run");
    std::filesystem::create_directory_symlink(checkout.path(), checkout.path() + ".link");
    const RigResult result = checkout.type("cd ..; \"" + checkout.path() + ".link/run\" -e");
    EXPECT_EQ("Building build\n<-e>\n", result.out);
}

TEST(ScriptsFolder, WithoutACacheItIsSetUpAnew) {
    const Checkout checkout;
    checkout.type("./run");
    checkout.type("rm build/CMakeCache.txt");
    EXPECT_EQ("Configuring build\nBuilding build\n<-e>\n", checkout.type("./run -e").out);
}

TEST(ScriptsChoices, WhatIsNotAsThePresetHasItIsToldInOneLine) {
    const Checkout checkout;
    checkout.type("./run");
    const std::string own = checkout.read("build/CMakeCache.txt");
    checkout.write("build/CMakeCache.txt", own + "VEK_ROOT:PATH=/opt/my vek\n"
                                                 "CMAKE_CXX_COMPILER:FILEPATH=/usr/bin/clang++\n"
                                                 "CMAKE_CXX_FLAGS:STRING=-O0 -g=1\n"
                                                 "CMAKE_BUILD_TYPE:STRING=Debug\n"
                                                 "KR_TESTS:BOOL=OFF\n"
                                                 "KR_LAB:BOOL=ON\n"
                                                 "KR_WERROR:BOOL=ON\n");
    EXPECT_EQ("In force in build by an earlier choice: VEK_ROOT=/opt/my vek CMAKE_CXX_COMPILER=/usr/bin/clang++ "
              "CMAKE_CXX_FLAGS=-O0 -g=1 CMAKE_BUILD_TYPE=Debug KR_WERROR=ON (rm -r build/CMakeCache.txt "
              "build/CMakeFiles forgets it)\nBuilding build\n<-e>\n",
              checkout.type("./run -e").out);
}

TEST(ScriptsChoices, WhatIsAsThePresetHasItIsNotTold) {
    const Checkout checkout;
    checkout.type("./test --quick");
    const std::string own = checkout.read("build-test/CMakeCache.txt");
    checkout.write("build-test/CMakeCache.txt", own + "VEK_ROOT:PATH=\n"
                                                      "CMAKE_CXX_COMPILER:FILEPATH=/usr/bin/c++\n"
                                                      "CMAKE_CXX_FLAGS:STRING=\n"
                                                      "CMAKE_BUILD_TYPE:STRING=Release\n"
                                                      "KR_TESTS:BOOL=ON\n"
                                                      "KR_LAB:BOOL=ON\n"
                                                      "KR_WERROR:BOOL=ON\n"
                                                      "KR_FUZZ:BOOL=OFF\n"
                                                      "KR_CHECKS:STRING=release\n");
    const RigResult result = checkout.type("./test --quick");
    EXPECT_FALSE(holds(result.out, "In force")) << result.out;
}

TEST(ScriptsProgress, OnATerminalALineMoves) {
    const Checkout checkout;
    RigConsole console;
    console.terminal = true;
    const RigResult result = checkout.type("./run -e", console);
    EXPECT_TRUE(holds(result.out, "Building build\n\r  [1/2] one.cpp.o\x1b[K\r  [2/2] Linking CXX executable "
                                  "kelvarrig\x1b[K\r\x1b[K<-e>\n"))
        << result.out;
    EXPECT_EQ("[1/2] Building CXX object one.cpp.o\n[2/2] Linking CXX executable kelvarrig\n",
              checkout.read("build/build.log"));
}

TEST(ScriptsProgress, TheCompilersMessagesOnATerminalComeWhole) {
    const Checkout checkout;
    checkout.type("./run");
    checkout.standIn("cmake", "[ $1 != --build ] || { echo '[1/2] Building'; echo 'one.cpp:1: error: no'; exit 1; }\n");
    RigConsole console;
    console.terminal = true;
    const RigResult result = checkout.type("./run", console);
    EXPECT_TRUE(holds(result.out, "\r\x1b[K[1/2] Building\none.cpp:1: error: no\n./run: the build failed\n"))
        << result.out;
    EXPECT_EQ(1, result.exitCode);
}

TEST(ScriptsCompilerCache, PrecompiledHeadersAreCachedButNoneThatChangedWhileItWasCompiled) {
    const Checkout checkout;
    checkout.standIn("ccache", "");
    const RigResult told = checkout.type("unset CMAKE_CXX_COMPILER_LAUNCHER CCACHE_SLOPPINESS; . cmake/setup.sh; "
                                         "echo $CMAKE_CXX_COMPILER_LAUNCHER $CCACHE_SLOPPINESS");
    EXPECT_EQ("ccache pch_defines,time_macros\n", told.out);
}

TEST(ScriptsLinker, MoldIsTakenFromItsSecondVersionOn) {
    const Checkout checkout;
    const std::string flags = "unset LDFLAGS; . cmake/setup.sh\necho \"<${LDFLAGS:-}>\"";
    expectTyped(checkout, flags, "<>\n", 0);
    checkout.standIn("mold", "echo 'mold 1.10.1 (compatible with GNU ld)'\n");
    expectTyped(checkout, flags, "<>\n", 0);
    checkout.standIn("mold", "echo 'mold 2.4.0 (compatible with GNU ld)'\n");
    expectTyped(checkout, flags, "<-fuse-ld=mold>\n", 0);
    expectTyped(checkout, "LDFLAGS=-s\n" + flags.substr(flags.find('.')), "<-s>\n", 0);
}

TEST(ScriptsPackages, AUserWhoMayNotInstallReadsOneLine) {
    const Checkout checkout;
    checkout.takeAway("ninja");
    checkout.takeAway("g++");
    checkout.standIn("id", "echo 1000\n");
    const RigResult result = checkout.type("./run");
    EXPECT_EQ("./run: please install: g++ ninja-build\n", result.out);
    EXPECT_EQ(1, result.exitCode);
    // One who has sudo, but is asked for a password.
    checkout.standIn("sudo", "exit 1\n");
    EXPECT_EQ("./run: please install: g++ ninja-build\n", checkout.type("./run").out);
    EXPECT_FALSE(holds(checkout.calls(), "apt-get"));
}

TEST(ScriptsPackages, NothingIsFetchedWhereNothingIsMissing) {
    const Checkout checkout;
    for (const char* command : {"./run", "./krlab doctor", "./test --quick"}) {
        checkout.type(command);
    }
    EXPECT_FALSE(holds(checkout.calls(), "apt-get")) << checkout.calls();
}

TEST(ScriptsPackages, ThoseThatCannotBeHadAreToldInOneLine) {
    const Checkout checkout;
    checkout.standIn("dpkg", "[ $2 != zsh ] && [ $2 != fish ]\n");
    checkout.standIn("apt-get", "exit 100\n");
    checkout.standIn("id", "echo 0\n");
    const std::string line = "Not installed, some tests will be skipped: zsh fish\n";
    const RigResult root = checkout.type("./test --quick");
    EXPECT_TRUE(holds(root.out, line)) << root.out;
    EXPECT_EQ(1, countOf(checkout.calls(), "apt-get update")) << checkout.calls();
    EXPECT_EQ(0, root.exitCode);
    checkout.standIn("id", "echo 1000\n");
    const RigResult user = checkout.type("./test --quick");
    EXPECT_EQ(line, user.out.substr(0, line.size()));
}

TEST(ScriptsTest, TheTableOfStagesHasItsFiguresInFilesToo) {
    const Checkout checkout;
    const RigResult result = checkout.type("./test --quick >out.txt 2>err.txt");
    EXPECT_EQ(0, result.exitCode);
    const std::string out = checkout.read("out.txt");
    for (const char* stage : {"tests: release", "together"}) {
        const std::vector<std::string> found = firstMatch(out, std::string("\n +([0-9.]+) +[0-9.]+  ") + stage + "\n");
        ASSERT_FALSE(found.empty()) << out;
        EXPECT_GE(std::stod(found[1]), 0.2) << out;
    }
    EXPECT_EQ("", checkout.read("err.txt"));
}

TEST(ScriptsTest, ATestOfTheLibrarysTableThatNeitherRanNorIsNamedAsSkippedIsAFailure) {
    const Checkout checkout;
    checkout.write("vek/functions.txt", "veksA | clause\n"
                                        "  exact: the same | Other.Equal\n"
                                        "  property: holds | Own.Typed Own.Plain\n"
                                        "  note: no test\n");
    const auto after = [&](const std::string& vek, const std::string& oracle) {
        checkout.standIn("ctest", "mkdir -p build-test/counts; cd build-test/counts\n"
                                  "printf 'run 2 passed 2 skipped 0 failed 0\n" +
                                      vek +
                                      "' >vek_tests.1\n"
                                      "printf 'run 1 passed 0 skipped 1 failed 0\n" +
                                      oracle + "' >oracle_tests.1\n");
        return checkout.type("./test --quick");
    };
    const RigResult all = after("ran Own.Typed/0\nran Own/0.Typed\nran Own.Plain\n", "skipped Other.Equal\n");
    EXPECT_EQ(0, all.exitCode) << all.out;
    EXPECT_TRUE(holds(all.out, "build-test: 3 tests run, 2 passed, 1 skipped, 0 failed\n  skipped Other.Equal\n"))
        << all.out;
    const RigResult without = after("ran Own/0.Typed\nran Own.Plain\n", "ran Other.Others\n");
    EXPECT_EQ(1, without.exitCode);
    EXPECT_TRUE(holds(without.out, "vek/functions.txt names a test that was neither run nor skipped: Other.Equal\n"))
        << without.out;
    EXPECT_EQ(1, countOf(without.out, "neither run nor skipped")) << without.out;
    // Of a part of the rooms no more can be said.
    checkout.standIn("ctest", "rm -f build-test/counts/oracle*\n");
    EXPECT_EQ(0, checkout.type("./test --quick").exitCode);
}

TEST(ScriptsTest, AFailedStageIsInTheTableAndEndsTheTest) {
    const Checkout checkout;
    checkout.standIn("ctest", "echo 'one test failed'; exit 8\n");
    const RigResult result = checkout.type("./test");
    EXPECT_EQ(8, result.exitCode);
    EXPECT_TRUE(holds(result.out, "one test failed\n")) << result.out;
    EXPECT_FALSE(firstMatch(result.out, "tests: release\n.*together\n").empty()) << result.out;
    EXPECT_FALSE(holds(result.out, "sanitizers"));
}

TEST(ScriptsTest, AnUnknownWordIsToldWithThoseThatThereAre) {
    const Checkout checkout;
    expectTyped(checkout, "./test --fast",
                "./test: unknown: --fast (./test [--quick] [--affected[=COMMIT]] [--clang] [--tidy[=COMMIT]])\n", 1);
}
