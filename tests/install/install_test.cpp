// cmake --install, and what others build with the installed tree: CMake's and pkg-config's way, with GCC and with
// Clang.
#include "consumer.h"

#include <gtest/gtest.h>

#include <set>

namespace fs = std::filesystem;

namespace {

bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

class KrInstall : public testing::Test {
protected:
    std::string m_prefix = installedPrefix();
    Consumer m_consumer;
};

class KrInstallWith : public testing::TestWithParam<Compiler> {
protected:
    void SetUp() override { KR_SKIP_WITHOUT(GetParam().cxx); }
    std::string m_prefix = installedPrefix();
    Consumer m_consumer;
};

// What the loader takes for a program, from what it says while it starts it.
std::set<std::string> loadedFrom(const ShellResult& started) {
    std::set<std::string> folders;
    std::istringstream lines(started.out);
    for (std::string line; std::getline(lines, line);) {
        const size_t at = line.find("calling init: ");
        if (at != std::string::npos && holds(line, "/libvek")) {
            folders.insert(fs::canonical(fs::path(line.substr(at + 14)).parent_path()));
        }
    }
    return folders;
}

std::string dynamicSection(const std::string& file, const std::string& entry) {
    TempDir folder;
    return runShellScript(folder, "readelf -d '" + file + "' | grep '(" + entry + ")'").out;
}

} // namespace

TEST_F(KrInstall, PutsEveryKindOfFileInItsPlace) {
    for (const char* file : {"bin/kelvarrig",
                             "lib/libvekcore.so.1.0.0",
                             "lib/libveks.so.1",
                             "lib/libveksc.so",
                             "include/veksc.h",
                             "include/kelvarrig/kelvarrig.h",
                             "include/kelvarrig/krown.inc",
                             "include/kelvarrig/vk.h",
                             "include/kelvarrig/vkc.h",
                             "lib/kelvarrig/libkr.a",
                             "lib/kelvarrig/libkrmain.a",
                             "lib/kelvarrig/libvk.a",
                             "lib/kelvarrig/libvkc.a",
                             "lib/cmake/KelvarRig/KelvarRigConfig.cmake",
                             "lib/cmake/KelvarRig/KelvarRigConfigVersion.cmake",
                             "lib/cmake/KelvarRig/KelvarRigAddRig.cmake",
                             "lib/pkgconfig/kelvarrig.pc",
                             "lib/pkgconfig/vek.pc",
                             "share/doc/kelvar-rig/LICENSE",
                             "share/doc/kelvar-rig/README.md",
                             "share/doc/kelvar-rig/docs/install.md"}) {
        EXPECT_TRUE(fs::exists(m_prefix + "/" + file)) << file;
    }
    // Manual pages and completions, where the build has made them.
    std::error_code none;
    for (const auto& entry : fs::recursive_directory_iterator(KELVARRIG_BUILD "/share", none)) {
        const fs::path below = fs::relative(entry.path(), KELVARRIG_BUILD);
        EXPECT_TRUE(fs::exists(m_prefix / below)) << below;
    }
}

TEST_F(KrInstall, NothingInTheTreeTellsWhereItWasBuiltOrInstalled) {
    const ShellResult found = m_consumer.run("grep -rlF -e '" KELVARRIG_SOURCE "' -e " + inQuotes(m_prefix) + " " +
                                             inQuotes(m_prefix) + " || true");
    EXPECT_EQ("", found.out);
}

TEST_F(KrInstall, ProgramMeasuresAndItsTablesGoWhereTheUserIs) {
    const ShellResult run = m_consumer.run("PATH=" + inQuotes(m_prefix + "/bin:$PATH") +
                                           "\nkelvarrig -B -LPERF -dMethod=Manual -f=veksCopy_16s "
                                           "-f=veksConvPartial_16s32s -rout.csv");
    EXPECT_EQ(0, run.exitCode) << run.out;
    EXPECT_TRUE(m_consumer.exists("out.csv")) << run.out;
    EXPECT_FALSE(fs::exists(m_prefix + "/bin/out.csv"));
}

// The original stays in place: what is found there is found for no good reason.
TEST_F(KrInstall, ATreeThatWasMovedMeasuresItsOwnLibraries) {
    const ShellResult run = m_consumer.run("cp -a " + inQuotes(m_prefix) + " moved\nLD_DEBUG=libs moved/bin/kelvarrig" +
                                           quickKeys + "-f=veksDotProd_G729A_16s32s -dlen=40 -rout.csv");
    EXPECT_EQ(0, run.exitCode) << run.out;
    EXPECT_GT(m_consumer.clocks("out.csv", "veksDotProd_G729A,16s32s"), 0) << run.out;
    EXPECT_EQ(std::set<std::string>{fs::canonical(m_consumer.path("moved/lib"))}, loadedFrom(run)) << run.out;
}

TEST_F(KrInstall, ABuildTreeThatWasCopiedMeasuresItsOwnLibraries) {
    const ShellResult run = m_consumer.run("mkdir copied\ncp '" KELVARRIG_BUILD "/kelvarrig' copied\n"
                                           "cp -a '" KELVARRIG_BUILD "/lib' copied\nLD_DEBUG=libs copied/kelvarrig -v");
    EXPECT_EQ(0, run.exitCode) << run.out;
    EXPECT_EQ(std::set<std::string>{fs::canonical(m_consumer.path("copied/lib"))}, loadedFrom(run)) << run.out;
}

// With RUNPATH, and not RPATH, other libraries can be put in by LD_LIBRARY_PATH.
TEST_F(KrInstall, LibrariesAreFoundByAPathThatTheEnvironmentOverrules) {
    const std::string program = m_prefix + "/bin/kelvarrig";
    EXPECT_TRUE(holds(dynamicSection(program, "RUNPATH"), "[$ORIGIN/../lib]"));
    EXPECT_EQ("", dynamicSection(program, "RPATH"));
    EXPECT_TRUE(holds(dynamicSection(m_prefix + "/lib/libveksc.so", "RUNPATH"), "[$ORIGIN]"));
    const ShellResult run = m_consumer.run("cp -a " + inQuotes(m_prefix + "/lib") +
                                           " other\nLD_LIBRARY_PATH=\"$PWD/other\" "
                                           "LD_DEBUG=libs " +
                                           inQuotes(program) + " -v");
    EXPECT_EQ(std::set<std::string>{fs::canonical(m_consumer.path("other"))}, loadedFrom(run)) << run.out;
}

TEST_F(KrInstall, TheProgramTellsTheVersionOfThePackages) {
    const ShellResult told = m_consumer.run(inQuotes(m_prefix + "/bin/kelvarrig") +
                                            " -v\nexport PKG_CONFIG_PATH=" + inQuotes(m_prefix + "/lib/pkgconfig") +
                                            "\npkg-config --modversion kelvarrig vek\n");
    EXPECT_TRUE(holds(told.out, "Kelvar Rig 2.0,")) << told.out;
    EXPECT_TRUE(holds(told.out, "\n2.0\n1.0.0\n")) << told.out;
}

TEST_F(KrInstall, AnotherMainVersionIsNotTaken) {
    m_consumer.write("CMakeLists.txt", R"(cmake_minimum_required(VERSION 3.22)
project(mygain LANGUAGES CXX)
find_package(KelvarRig 2.0 QUIET)
message(STATUS "two ${KelvarRig_FOUND}")
find_package(KelvarRig 3 QUIET)
message(STATUS "three ${KelvarRig_FOUND}")
)");
    const ShellResult set = m_consumer.run("cmake -B build -G Ninja -DCMAKE_PREFIX_PATH=" + inQuotes(m_prefix) + "\n");
    EXPECT_TRUE(holds(set.out, "two 1\n")) << set.out;
    EXPECT_TRUE(holds(set.out, "three 0\n")) << set.out;
}

TEST_F(KrInstall, ACopyOfABuildTreeIsRefusedAsAPackage) {
    m_consumer.write("CMakeLists.txt", R"(cmake_minimum_required(VERSION 3.22)
project(mygain LANGUAGES CXX)
find_package(KelvarRig REQUIRED)
)");
    const ShellResult set = m_consumer.run("mkdir copied\ncp '" KELVARRIG_BUILD "/'KelvarRig*.cmake copied\n"
                                           "cmake -B build -G Ninja -DKelvarRig_DIR=\"$PWD/copied\"\n");
    EXPECT_EQ(1, set.exitCode) << set.out;
    EXPECT_TRUE(holds(set.out, "is a copy of the build tree")) << set.out;
}

// The suite's header registers the library, and the names are split by its grammar.
TEST_F(KrInstall, ASuiteOfTheLibraryIsBuiltOutsideTheTree) {
    m_consumer.write("mine.cpp", R"(#include "vkc.h"

#include <kelvarrig.h>

static kr::Param len("len", {40});
static kr::Vector<Vek16s> a(len, kr::random(-1024, 1024));
static kr::Vector<Vek16s> b(len, kr::random(-1024, 1024));
static kr::Vector<Vek32s> dp(1);
static auto product = kr::measure<veksDotProd_G729A_16s32s>("veksDotProd_G729A_16s32s", a, b, len, dp).elements(len);
)");
    m_consumer.write("CMakeLists.txt", R"(cmake_minimum_required(VERSION 3.22)
project(mine LANGUAGES CXX)
find_package(KelvarRig REQUIRED)
kelvarrig_add_rig(mine SOURCES mine.cpp LIBRARIES kelvarrig::vkc)
)");
    const ShellResult run =
        m_consumer.run("cmake -B build -G Ninja -DCMAKE_PREFIX_PATH=" + inQuotes(m_prefix) +
                       "\ncmake --build build\nbuild/mine" + quickKeys + "-f=veksDotProd_G729A_16s32s");
    EXPECT_EQ(0, run.exitCode) << run.out;
    EXPECT_GT(m_consumer.clocks("out.csv", "veksDotProd_G729A,16s32s,-"), 0) << run.out;
    EXPECT_TRUE(holds(run.out, "libveksc")) << run.out;
}

TEST_P(KrInstallWith, FindPackageLeadsToAFigure) {
    m_consumer.write("CMakeLists.txt", R"(cmake_minimum_required(VERSION 3.22)
project(mygain LANGUAGES CXX)
find_package(KelvarRig REQUIRED)
add_library(gain STATIC mygain.cpp)
kelvarrig_add_rig(mygain SOURCES mygain_rig.cpp LIBRARIES gain)
)");
    const ShellResult run =
        m_consumer.run(std::string("cmake -B build -G Ninja -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DCMAKE_CXX_COMPILER=") +
                       GetParam().cxx + " -DCMAKE_PREFIX_PATH=" + inQuotes(m_prefix) +
                       "\ncmake --build build\nbuild/mygain" + quickKeys);
    EXPECT_EQ(0, run.exitCode) << run.out;
    EXPECT_GT(m_consumer.clocks("out.csv", "myGain"), 0) << run.out;
    // Without a build type the rig is optimised, and it brings no warnings.
    const std::string commands = m_consumer.read("build/compile_commands.json");
    EXPECT_TRUE(holds(commands, "-O2")) << commands;
    EXPECT_FALSE(holds(commands, " -W")) << commands;
    // Its headers are the system's: warnings are about the files of the project.
    EXPECT_TRUE(holds(commands, "-isystem")) << commands;
}

TEST_P(KrInstallWith, PkgConfigLeadsToAFigure) {
    KR_SKIP_WITHOUT("pkg-config");
    const std::string cxx = GetParam().cxx;
    const ShellResult run = m_consumer.run("export PKG_CONFIG_PATH=" + inQuotes(m_prefix + "/lib/pkgconfig") + "\n" +
                                           cxx + " -O2 -c mygain.cpp\n" + "ar rc libgain.a mygain.o\neval " + cxx +
                                           " -O2 -Wall -Wextra -Werror mygain_rig.cpp libgain.a $(pkg-config --cflags "
                                           "--libs kelvarrig) -o mygain\n./mygain" +
                                           quickKeys);
    EXPECT_EQ(0, run.exitCode) << run.out;
    EXPECT_GT(m_consumer.clocks("out.csv", "myGain"), 0) << run.out;
}

TEST_F(KrInstall, PkgConfigLeadsToTheLibraries) {
    KR_SKIP_WITHOUT("pkg-config");
    m_consumer.write("say.c", R"(#include <stdio.h>
#include <vekcore.h>
#include <veksc.h>

int main(void) {
    puts(vekscGetLibVersion()->Name);
    return 0;
}
)");
    const ShellResult run = m_consumer.run("export PKG_CONFIG_PATH=" + inQuotes(m_prefix + "/lib/pkgconfig") +
                                           "\neval cc say.c $(pkg-config --cflags --libs vek) -o say\n"
                                           "LD_LIBRARY_PATH=" +
                                           inQuotes(m_prefix + "/lib") + " ./say");
    EXPECT_EQ("libveksc\n", run.out);
}

INSTANTIATE_TEST_SUITE_P(, KrInstallWith,
                         testing::Values(Compiler{"Gcc", "gcc", "g++"}, Compiler{"Clang", "clang", "clang++"}),
                         [](const auto& tested) { return std::string(tested.param.name); });
