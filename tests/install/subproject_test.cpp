// The sources as a part of another CMake project, by add_subdirectory and by FetchContent.
#include "consumer.h"

#include <gtest/gtest.h>

namespace {

bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

/// The command that compiles a file; none if there is no such file.
std::string commandOf(const std::string& commands, const std::string& file) {
    std::istringstream lines(commands);
    std::string command;
    for (std::string line; std::getline(lines, line);) {
        if (holds(line, "\"command\": ")) {
            command = line;
        } else if (holds(line, "\"file\": ") && holds(line, file)) {
            return command;
        }
    }
    return "";
}

class KrSubproject : public testing::Test {
protected:
    /// A project that takes the sources by these lines, configured with no build type.
    ShellResult configure(const std::string& lines, const std::string& options = "") const {
        m_consumer.write("CMakeLists.txt",
                         "cmake_minimum_required(VERSION 3.22)\nproject(mygain LANGUAGES CXX)\n" + lines);
        return m_consumer.run("cmake -B build -G Ninja -DCMAKE_EXPORT_COMPILE_COMMANDS=ON " + options + "\n");
    }
    std::string commands() const { return m_consumer.read("build/compile_commands.json"); }

    Consumer m_consumer;
};

class KrSubprojectWith : public KrSubproject, public testing::WithParamInterface<Compiler> {
protected:
    void SetUp() override { KR_SKIP_WITHOUT(GetParam().cxx); }
};

const char* const s_rig = "add_library(gain STATIC mygain.cpp)\n"
                          "kelvarrig_add_rig(mygain SOURCES mygain_rig.cpp LIBRARIES gain)\n";
const char* const s_subdirectory = "add_subdirectory(\"" KELVARRIG_SOURCE "\" kelvarrig)\n";
const char* const s_fetched = "include(FetchContent)\n"
                              "FetchContent_Declare(kelvarrig SOURCE_DIR \"" KELVARRIG_SOURCE "\")\n"
                              "FetchContent_MakeAvailable(kelvarrig)\n";

} // namespace

// All that is built is what the rig needs: the harness, and none of the libraries and suites.
TEST_P(KrSubprojectWith, LeadsToAFigure) {
    const bool fetch = GetParam().name == std::string("ClangByFetchContent");
    const ShellResult set =
        configure(std::string(fetch ? s_fetched : s_subdirectory) + s_rig,
                  std::string("-DCMAKE_C_COMPILER=") + GetParam().c + " -DCMAKE_CXX_COMPILER=" + GetParam().cxx);
    ASSERT_EQ(0, set.exitCode) << set.out;
    const ShellResult run = m_consumer.run(std::string("cmake --build build\nbuild/mygain") + quickKeys +
                                           "\nfind build -name 'libv*' -o -name 'p_*.o'\n");
    EXPECT_EQ(0, run.exitCode) << run.out;
    EXPECT_GT(m_consumer.clocks("out.csv", "myGain"), 0) << run.out;
    EXPECT_FALSE(holds(run.out, "build/kelvarrig/")) << run.out;
}

INSTANTIATE_TEST_SUITE_P(, KrSubprojectWith,
                         testing::Values(Compiler{"GccByAddSubdirectory", "gcc", "g++"},
                                         Compiler{"ClangByFetchContent", "clang", "clang++"}),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_F(KrSubproject, TheParentKeepsItsFlagsTargetsTestsAndInstallRules) {
    const ShellResult set = configure(std::string("enable_testing()\n"
                                                  "add_library(suites mygain.cpp)\nadd_library(lab mygain.cpp)\n") +
                                      s_subdirectory + R"(
install(FILES mygain.cpp DESTINATION src)
foreach(variable CMAKE_BUILD_TYPE CMAKE_CXX_STANDARD CMAKE_CXX_FLAGS CMAKE_POSITION_INDEPENDENT_CODE CMAKE_BUILD_RPATH_USE_ORIGIN)
  message(STATUS "${variable}=<${${variable}}>")
endforeach()
get_directory_property(options COMPILE_OPTIONS)
message(STATUS "options=<${options}>")
get_cmake_property(cached CACHE_VARIABLES)
list(FILTER cached EXCLUDE REGEX "^_?(CMAKE|KR|VEK|KelvarRig|mygain|FETCHCONTENT)_")
message(STATUS "cached=<${cached}>")
)");
    ASSERT_EQ(0, set.exitCode) << set.out;
    for (const char* line : {"-- CMAKE_BUILD_TYPE=<>", "-- CMAKE_CXX_STANDARD=<>", "-- CMAKE_CXX_FLAGS=<>",
                             "-- CMAKE_POSITION_INDEPENDENT_CODE=<>", "-- CMAKE_BUILD_RPATH_USE_ORIGIN=<>",
                             "-- options=<>", "-- cached=<>"}) {
        EXPECT_TRUE(holds(set.out, line)) << line << "\n" << set.out;
    }
    EXPECT_FALSE(holds(commandOf(commands(), "mygain.cpp"), " -W")) << commands();
    const ShellResult tests = m_consumer.run("ctest --test-dir build -N");
    EXPECT_TRUE(holds(tests.out, "Total Tests: 0")) << tests.out;
    const std::string rules = m_consumer.read("build/build.ninja");
    const size_t all = rules.find("\nbuild all: phony ");
    ASSERT_NE(std::string::npos, all);
    const std::string parts = rules.substr(all + 1, rules.find('\n', all + 1) - all - 1);
    EXPECT_TRUE(holds(parts, "libsuites.a")) << parts;
    ASSERT_FALSE(holds(parts, "kelvarrig")) << parts;
    const ShellResult installed =
        m_consumer.run("cmake --build build\ncmake --install build --prefix there\nfind there -type f");
    EXPECT_TRUE(holds(installed.out, "\nthere/src/mygain.cpp\n")) << installed.out;
    EXPECT_FALSE(holds(installed.out, "there/bin")) << installed.out;
    EXPECT_FALSE(holds(installed.out, "there/lib")) << installed.out;
}

TEST_F(KrSubproject, LibraryAndHarnessAreOptimisedWhateverTheParentsBuildType) {
    for (const char* options : {"", "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS=-O0"}) {
        const ShellResult set = configure(s_subdirectory, options);
        ASSERT_EQ(0, set.exitCode) << set.out;
        for (const auto& [file, level] :
             {std::pair("api/src/krtool.cpp", "-O2"), std::pair("api/lib/vktest.cpp", "-O2"),
              std::pair("vek/sc/common/version.cpp", "-O2"), std::pair("vek/sc/kernels/k_corr.cpp", "-O3")}) {
            const std::string command = commandOf(commands(), file);
            const size_t last = command.rfind(" -O");
            ASSERT_NE(std::string::npos, last) << file << command;
            EXPECT_EQ(level, command.substr(last + 1, 3)) << file << " " << options << " " << command;
            EXPECT_FALSE(holds(command, " -Wall")) << command;
        }
        // No path of the sources may reach a table.
        EXPECT_TRUE(holds(commandOf(commands(), "krtool.cpp"), "-ffile-prefix-map=" KELVARRIG_SOURCE "/="));
    }
}

TEST_F(KrSubproject, OneVariableMakesVariantsOfTheKernels) {
    const ShellResult set = configure(s_subdirectory, "'-DVEK_KERNEL_OPTIMISATION=-O1 -funroll-loops'");
    ASSERT_EQ(0, set.exitCode) << set.out;
    const std::string kernel = commandOf(commands(), "vek/sc/kernels/k_corr.cpp");
    EXPECT_TRUE(holds(kernel, " -O1 -funroll-loops ")) << kernel;
    EXPECT_FALSE(holds(kernel, "-O3")) << kernel;
    EXPECT_FALSE(holds(commandOf(commands(), "vek/sc/common/version.cpp"), "-O1"));
}
