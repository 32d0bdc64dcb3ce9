// Clang and clang-tidy by ./test: what they are given, and what is said where they are missing.
#include "checkout.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

/// A history of two commits: `one.cpp` and `used.h` differ, `user.cpp` includes the header, `other.cpp` does not.
void makeHistory(const Checkout& checkout) {
    std::filesystem::create_directory(checkout.path() + "/build-tidy");
    std::string entries;
    for (const char* name : {"one.cpp", "user.cpp", "other.cpp"}) {
        checkout.write(name, std::string(name) == "user.cpp" ? "#include \"used.h\"\n" : "int i;\n");
        entries += "{\n  \"file\": \"" + checkout.path() + "/" + name + "\"\n},\n";
    }
    checkout.write("build-tidy/compile_commands.json", "[\n" + entries + "]\n");
    checkout.write("build-tidy/build.ninja", "");
    checkout.write("build-tidy/CMakeCache.txt", "CMAKE_HOME_DIRECTORY:INTERNAL=" + checkout.path() + "\n");
    checkout.write("used.h", "int used();\n");
    checkout.write(".gitignore", "/build-*/\n");
    const RigResult made =
        checkout.type("export GIT_AUTHOR_NAME=a GIT_AUTHOR_EMAIL=a GIT_COMMITTER_NAME=a "
                      "GIT_COMMITTER_EMAIL=a\ngit init -q . && git add . && git commit -qm one && echo "
                      "'int j;' >>one.cpp && echo 'int more();' >>used.h && git commit -qam two");
    ASSERT_EQ(0, made.exitCode) << made.out;
}

class History : public Checkout {
public:
    History() { makeHistory(*this); }
};

/// The files that clang-tidy was called for, sorted.
std::string lookedAt(const Checkout& checkout) {
    return checkout.type("sed -nE 's|^clang-tidy .*/(.*cpp)$|\\1|p' ../calls | sort | tr '\\n' ' '").out;
}

} // namespace

TEST(ScriptsTidy, OnlyWhatDiffersIsLookedAtAndAHeaderByOneOfItsUsers) {
    const History checkout;
    checkout.standIn("clang-tidy", "");
    const RigResult since = checkout.type("cmake/tidy.sh build-tidy HEAD~1");
    EXPECT_EQ("clang-tidy: 2 files looked at\n", since.out);
    EXPECT_EQ("one.cpp user.cpp ", lookedAt(checkout));
    EXPECT_EQ(0, since.exitCode);
    EXPECT_EQ("No source differs from HEAD\n", checkout.type("cmake/tidy.sh build-tidy HEAD").out);
    EXPECT_EQ("clang-tidy: 3 files looked at\n", checkout.type("cmake/tidy.sh build-tidy").out);
}

TEST(ScriptsTidy, WhatItTellsOfAFileIsShownAndFails) {
    const History checkout;
    checkout.standIn("clang-tidy", "case $* in *one.cpp) echo 'one.cpp:1: error: bad'; exit 1 ;; esac\n");
    expectTyped(checkout, "cmake/tidy.sh build-tidy", "one.cpp:1: error: bad\nclang-tidy: 3 files looked at\n", 1);
}

TEST(ScriptsTidy, WhenTimeIsUpTheRestIsLeftOutAndTold) {
    const History checkout;
    checkout.standIn("clang-tidy", "");
    const RigResult result = checkout.type("KR_TIDY_MINUTES=0 cmake/tidy.sh build-tidy");
    EXPECT_EQ("clang-tidy: 0 files looked at, 3 left out for want of time\n", result.out);
}

TEST(ScriptsTidy, ACommitThatIsNotThereIsTold) {
    const History checkout;
    expectTyped(checkout, "cmake/tidy.sh build-tidy HEAD~9", "tidy.sh: no such commit: HEAD~9\n", 2);
}

TEST(ScriptsClang, BuildAndTidyAreStagesOfTheirOwn) {
    const History checkout;
    checkout.standIn("clang++", "");
    checkout.standIn("clang-tidy", "case $* in --version) echo '  Debian LLVM version 14.0.6' ;; esac\n");
    checkout.forgetCalls();
    const RigResult result = checkout.type("./test --clang --tidy=HEAD~1");
    EXPECT_EQ(0, result.exitCode) << result.out;
    EXPECT_TRUE(holds(result.out, "== build: clang\n")) << result.out;
    EXPECT_TRUE(holds(result.out, "== clang-tidy\nclang-tidy: 2 files looked at\n")) << result.out;
    EXPECT_TRUE(holds(checkout.calls(), "--target all")) << checkout.calls();
    EXPECT_FALSE(holds(checkout.calls(), "ctest"));
}

TEST(ScriptsClang, TidyOfAnotherVersionLooksAtNothingAndSaysSo) {
    const History checkout;
    checkout.standIn("clang-tidy", "case $* in --version) echo '  Debian LLVM version 15.0.6' ;; *) exit 1 ;; esac\n");
    const RigResult result = checkout.type("./test --tidy");
    EXPECT_EQ(0, result.exitCode) << result.out;
    EXPECT_TRUE(holds(result.out, "clang-tidy is not of version 14: it looks at nothing\n")) << result.out;
}

TEST(ScriptsClang, WhereTheyAreMissingALineSaysSoAndNothingFails) {
    const Checkout checkout;
    checkout.standIn("dpkg", "exit 1\n");
    checkout.standIn("id", "echo 1000\n");
    expectTyped(checkout, "./test --clang --tidy",
                "Not installed, nothing is built with Clang: clang\n"
                "Not installed, clang-tidy looks at nothing: clang clang-tidy\n",
                0);
}
