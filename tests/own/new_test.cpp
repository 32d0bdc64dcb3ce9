// The scaffolding: what it writes compiles without a warning and gives figures; what it cannot read it says.
#include "shell.h"

#include <gtest/gtest.h>

namespace {

const std::string s_new = "set -e\nNEW=kelvar-rig/tools/new\n";
const std::string s_compile = "'" KELVARRIG_CXX "' -std=c++20 -O1 -Wall -Wextra -Werror -Ikelvar-rig/api/src ";
const std::string s_keys = " -B -LERR -dMethod=Manual -dNumLoops=2 -r";

int rowsOf(const std::string& table, const std::string& function) {
    int rows = 0;
    for (size_t at = table.find("\n" + function + ","); at != std::string::npos;
         at = table.find("\n" + function + ",", at + 1)) {
        ++rows;
    }
    return rows;
}

bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

} // namespace

TEST(OwnNew, ProgramsOfAllKindsOfPrototypesCompileAndGiveFigures) {
    const BesideTheCheckout beside;
    beside.folder().write("given.cpp", "int sum(const short* x, int n) { return n > 0 ? x[0] : 0; }\n");
    const ShellResult made = beside.run(
        s_new +
        "$NEW 'int myGain(const short*, short*, int)'\n"
        "$NEW 'void scale_I(float* __restrict x, size_t n, float factor, bool fast);'\n"
        "$NEW 'extern \"C\" double dot(const double a[], const double b[], int n, int stride)'\n"
        "$NEW 'unsigned crc(const void *data, unsigned long bytes) noexcept'\n"
        "$NEW 'void nothing(void)'\n"
        "$NEW -o byHand 'int sum(const short* x, int n)' given.cpp\n" +
        s_compile + "*/*_rig.cpp myGain/myGain.cpp */*_I.cpp dot/dot.cpp crc/crc.cpp nothing/nothing.cpp given.cpp " +
        KELVARRIG_HARNESS " -o all\n./all" + s_keys);
    // The function that returns its first sample fails or warns as a status does.
    EXPECT_LE(made.exitCode, 1) << made.out;
    EXPECT_TRUE(holds(made.out, "byHand has been written. Measure sum with:\n")) << made.out;
    const std::string table = beside.folder().read("all.csv");
    for (const char* function : {"myGain", "scale_I", "dot", "crc"}) {
        EXPECT_EQ(6, rowsOf(table, function)) << function << table;
    }
    EXPECT_EQ(1, rowsOf(table, "nothing"));
    EXPECT_FALSE(beside.folder().exists("byHand/sum.cpp"));
    EXPECT_TRUE(holds(beside.folder().read("byHand/CMakeLists.txt"), "/given.cpp\")"));
}

TEST(OwnNew, SuitesOfTheLibraryAndOfOnesOwnCompileAndGiveFigures) {
    const BesideTheCheckout beside;
    const ShellResult made = beside.run(
        s_new +
        "$NEW --suite -o p_a.cpp 'VekStatus veksDotProd_G729A_16s32s(const Vek16s* a, const Vek16s* b, int len, "
        "Vek32s* dp)'\n"
        "$NEW --suite -o p_b.cpp 'int32_t mySum(const int16_t* x, int n)'\n" +
        s_compile +
        "-Ikelvar-rig/api/lib -Ikelvar-rig/vek/include -Ikelvar-rig/veksc/src p_a.cpp p_b.cpp "
        "kelvar-rig/veksc/src/vkc.cpp '" KELVARRIG_BUILD "/api/lib/libvk.a' " KELVARRIG_HARNESS " -L'" KELVARRIG_BUILD
        "/lib' -Wl,-rpath,'" KELVARRIG_BUILD "/lib' -lveksc -lveks -lvekcore -o suites\n./suites" +
        s_keys);
    EXPECT_EQ(0, made.exitCode) << made.out;
    const std::string table = beside.folder().read("suites.csv");
    EXPECT_EQ(6, rowsOf(table, "veksDotProd_G729A,16s32s,-")) << table;
    EXPECT_EQ(6, rowsOf(table, "mySum"));
}

TEST(OwnNew, WhatItCannotReadIsSaidAndNothingIsWritten) {
    const BesideTheCheckout beside;
    const auto refused = [&](const std::string& arguments, const std::string& why) {
        const ShellResult result = beside.run("kelvar-rig/tools/new " + arguments);
        EXPECT_EQ(1, result.exitCode) << arguments;
        EXPECT_EQ("tools/new: " + why + "\n", result.out);
        EXPECT_FALSE(beside.folder().exists("f"));
    };
    refused("'int f'", "this is no prototype of a function: int f");
    refused("'f(int n)'", "this is no prototype of a function: f(int n)");
    refused("'int f(std::string& s)'", "no data can be made up for 'std::string& s': write that argument by hand");
    refused("'int f(short** rows)'", "no data can be made up for 'short** rows': write that argument by hand");
    refused("'int f(State s)'", "no data can be made up for 'State s': write that argument by hand");
    refused("'int f(int n)' gone.cpp", "there is no file gone.cpp");
    refused("-x 'int f(int n)'", "unknown key -x (see tools/new --help)");
    refused("--suite 'int f(int n)' gone.cpp", "a suite takes no sources: copy them to veksc/src");
    EXPECT_EQ(2, beside.run("kelvar-rig/tools/new").exitCode);
}

TEST(OwnNew, NothingIsOverwritten) {
    const BesideTheCheckout beside;
    beside.folder().write("mine", "kept");
    const ShellResult result = beside.run("kelvar-rig/tools/new -o mine 'int f(int n)'");
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("tools/new: mine is there already\n", result.out);
    EXPECT_EQ("kept", beside.folder().read("mine"));
    EXPECT_EQ(1, beside.run("kelvar-rig/tools/new --suite -o mine 'int f(int n)'").exitCode);
    EXPECT_EQ("kept", beside.folder().read("mine"));
}
