// krlab count: the reader of dumps, and real counts of libraries that differ by one instruction in a loop.
#include "callgraph.h"
#include "count.h"
#include "countcomparison.h"
#include "fault.h"
#include "labprocess.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace krlab;

namespace {

const std::string dump = "# callgrind format\nversion: 1\nevents: Ir\nsummary: 60\n\n"
                         "ob=(1) /rig\nfl=(1) ???\nfn=(1) tim_veksA_16s_loop(int, long long*)\n0 4\n"
                         "cob=(2) /lib\ncfi=(2) ???\ncfn=(2) veksA_16s\ncalls=1 0 \n0 30\n0 2\n"
                         "cob=(2)\ncfn=(2)\ncalls=3 0 \n0 34\n"
                         "cfn=(3) helper\ncalls=1 0 \n0 9\n\n"
                         "ob=(2)\nfn=(4) veksB_16s\ncfn=(2)\ncalls=5 0 \n0 500\n\ntotals: 60\n";

class LabRealCount : public ::testing::Test {
protected:
    void SetUp() override {
        if (std::system("valgrind --tool=callgrind --version >/dev/null 2>&1") != 0) {
            GTEST_SKIP() << "valgrind is missing";
        }
    }

    /// How many lines of the functions in a selection are counted.
    static size_t linesCounted(const std::string& selection) {
        const LabDirectory directory;
        const LabResult result = directory.run({"count", "--json", "-", "--", selection});
        EXPECT_EQ(result.status, 0) << result.err;
        return nlohmann::json::parse(result.out)["lines"].size();
    }
};

std::vector<std::vector<Figure>> runsOf(const std::vector<std::vector<double>>& runs) {
    std::vector<std::vector<Figure>> result;
    for (const std::vector<double>& run : runs) {
        std::vector<Figure>& figures = result.emplace_back();
        for (size_t i = 0; i < run.size(); ++i) {
            figures.emplace_back().line = Line{"f" + std::to_string(i), {}};
            figures.back().clocks = run[i];
        }
    }
    return result;
}

/// Puts a function with a loop of 40 in front of the library's own; with `longer`, each round takes an instruction
/// more.
void buildLibrary(const LabDirectory& directory, const std::string& name, bool longer) {
    const std::string out = directory.path(name);
    std::filesystem::create_directory(out);
    for (const char* library : {"libvekcore.so.1", "libveks.so.1", "libveksc.so.1"}) {
        const auto real = std::filesystem::canonical(std::string(VEK_LIBRARY_DIR) + "/" + library);
        const bool measured = std::string(library) == "libveksc.so.1";
        std::filesystem::copy_file(real, out + "/" + (measured ? "libveksr.so.1" : library));
    }
    // The real one bears another name, as long as its own, and goes by it.
    std::string text = directory.read(name + "/libveksr.so.1");
    const std::string soname = std::string("libveksc.so.1") + '\0';
    for (size_t at = text.find(soname); at != std::string::npos; at = text.find(soname, at)) {
        text.replace(at, soname.size(), std::string("libveksr.so.1") + '\0');
    }
    directory.write(name + "/libveksr.so.1", text);
    directory.write(name + "/front.c", std::string("int veksDotProd_G729A_16s32s(const short *a, const short *b, int "
                                                   "n, int *r) {\n    (void)a; (void)b; (void)n; *r = 0;\n"
                                                   "    __asm__ volatile(\"movl $40, %%ecx\\n1:\\t") +
                                           (longer ? "nop\\n\\t" : "") +
                                           "decl %%ecx\\n\\tjnz 1b\\n\" ::: \"ecx\", \"cc\");\n    return 0;\n}\n");
    const std::string command = "cd '" + out + "' && cc -O2 -fPIC -shared -o libveksc.so.1 front.c " +
                                "-Wl,-soname,libveksc.so.1 -Wl,--no-as-needed -L. -l:libveksr.so.1 "
                                "-Wl,-rpath,'$ORIGIN' 2>cc.log";
    ASSERT_EQ(std::system(command.c_str()), 0) << directory.read(name + "/cc.log");
}

} // namespace

TEST(LabCallgraph, EdgesHaveTheirObjectsNamesAndCosts) {
    const std::vector<CallEdge> edges = parseCallgraph("d", dump);
    ASSERT_EQ(edges.size(), 4u);
    EXPECT_EQ(edges[1].callerObject, "/rig");
    EXPECT_EQ(edges[1].caller, "tim_veksA_16s_loop(int, long long*)");
    EXPECT_EQ(edges[1].callee, "veksA_16s");
    EXPECT_EQ(edges[1].calls, 3);
    EXPECT_EQ(edges[1].instructions, 34);
    EXPECT_EQ(edges[3].caller, "veksB_16s");
}

TEST(LabCallgraph, DamageIsTold) {
    EXPECT_THROW(parseCallgraph("d", "no dump"), Fault);
    try {
        parseCallgraph("d", "# callgrind format\nfn=(1) a\ncfn=(2) b\ncalls=1 0\nx\n");
        FAIL();
    } catch (const Fault& fault) {
        EXPECT_STREQ(fault.what(), "d:5: a call without its cost");
    }
}

TEST(LabCount, OnlyTheProgramsOwnCallsOfTheFunctionCount) {
    EXPECT_EQ(instructionsOf("veksA_16s", "/rig", dump), 16);
    EXPECT_LT(instructionsOf("veksA", "/rig", dump), 0);
    EXPECT_LT(instructionsOf("veksA_16s", "/other", dump), 0);
}

TEST(LabCountComparison, EachLineStandsForItself) {
    const VerdictReport report = compareCounts({runsOf({{100, 1000, 500, 40}}), runsOf({{110, 1110, 500, 39}})}, 0.001);
    ASSERT_EQ(report.lines.size(), 4u);
    EXPECT_EQ(report.lines[0].verdict, Verdict::slower);
    EXPECT_EQ(report.lines[1].verdict, Verdict::slower);
    EXPECT_EQ(report.lines[1].ratio, 1.11);
    EXPECT_EQ(report.lines[2].verdict, Verdict::same);
    EXPECT_EQ(report.lines[3].verdict, Verdict::faster);
    EXPECT_EQ(report.unit, "instructions");
}

TEST(LabCountComparison, RunsThatDisagreeLeaveALineUndecided) {
    const auto runs = runsOf({{100}, {110}});
    const VerdictReport report = compareCounts({runs, runs}, 0.001);
    EXPECT_EQ(report.lines[0].verdict, Verdict::undecided);
    EXPECT_DOUBLE_EQ(report.lines[0].low, 100.0 / 110);
    const VerdictReport equal = compareCounts({runsOf({{5}}), runsOf({{5}})}, 0);
    EXPECT_EQ(equal.lines[0].verdict, Verdict::same);
    EXPECT_EQ(exitStatus(compareCounts({runsOf({{5, 6}}), runsOf({{5}})}, 0), false), 2);
}

TEST_F(LabRealCount, SeesOneInstructionInALoopOfFortyAndNothingBetweenEqualBuilds) {
    const LabDirectory directory;
    buildLibrary(directory, "old", false);
    buildLibrary(directory, "copy", false);
    buildLibrary(directory, "new", true);
    for (const std::string name : {"old", "copy", "new"}) {
        const LabResult result = directory.run({"count", name, "--label", name, "--json", name + ".json", "--",
                                                "-f=veksDotProd_G729A_16s32s", "-f=veksDCTFwd_G7221_16s"});
        ASSERT_EQ(result.status, 0) << result.err;
    }
    const auto counts = nlohmann::json::parse(directory.read("new.json"));
    ASSERT_EQ(counts["lines"].size(), 4u);
    const LabResult same = directory.run({"compare", "old", "copy", "--count-threshold", "0"});
    EXPECT_EQ(same.status, 0) << same.out << same.err;
    EXPECT_NE(same.out.find("4 lines: 0 with more instructions, 0 with fewer, 4 same, 0 undecided"), std::string::npos)
        << same.out;
    const LabResult more = directory.run({"compare", "old", "new", "--json", "v.json"});
    EXPECT_EQ(more.status, 1) << more.out << more.err;
    const auto verdict = nlohmann::json::parse(directory.read("v.json"));
    EXPECT_EQ(verdict["unit"], "instructions");
    EXPECT_EQ(verdict["summary"]["slower"], 2);
    EXPECT_EQ(verdict["summary"]["same"], 2);
    for (const auto& line : verdict["lines"]) {
        const double added = line["new"].get<double>() - line["old"].get<double>();
        EXPECT_EQ(added, line["function"] == "veksDotProd_G729A_16s32s" ? 40 : 0);
    }
}

TEST_F(LabRealCount, ARefusedMethodAndALineAreHeeded) {
    const LabDirectory directory;
    EXPECT_EQ(directory.run({"count", "--", "-dMethod=Auto"}).err,
              "krlab: -dMethod has no meaning here: each line is called once and counted\n");
    const LabResult result = directory.run({"count", "--line", "veksDotProd_G729A_16s32s lenght=223", "--json", "-"});
    EXPECT_EQ(result.status, 0) << result.err;
    const auto document = nlohmann::json::parse(result.out);
    ASSERT_EQ(document["lines"].size(), 1u);
    EXPECT_EQ(document["lines"][0]["parameters"]["lenght"], "223");
    EXPECT_GT(document["lines"][0]["instructions"], 100);
}

TEST_F(LabRealCount, SuitesWithANamespaceOfTheirOwnAreCounted) {
    EXPECT_EQ(linesCounted("-f=veksGainDecodeTCX_AMRWBE_16s"), 6u);
}

// One of these tests has the code of the other, and a compiler that folds them would leave one loop without its calls.
TEST_F(LabRealCount, TestsOfEqualCodeAreCountedApart) {
    EXPECT_EQ(linesCounted("-f=veksResamplePolyphase_AMRWBE_16s"), 84u);
}

TEST(LabCount, WithoutValgrindTheCauseIsTold) {
    const LabDirectory directory;
    const std::string command = "cd '" + directory.path() + "' && PATH=/nowhere '" + KRLAB + "' count 2>err";
    EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 2);
    EXPECT_EQ(directory.read("err"), "krlab: valgrind is not there; install it (Debian: apt-get install valgrind)\n");
}
