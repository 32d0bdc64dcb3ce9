// The rounds of two subjects with rigs of known figures: who is accused, what happens if a rig dies, hangs or changes,
// and what is kept.
#include "abrun.h"
#include "fakerig.h"
#include "fault.h"
#include "interrupt.h"

#include <cmath>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <set>

using namespace krlab;

namespace {

constexpr int functions = 12;

// A rig of twelve tests f1 .. f12 with one line each; `changes` is awk code that may alter `clocks` (of 64 calls) by
// `name`, print and exit with status 3, which becomes an abort. Every use is noted in the file "uses".
std::string rigScript(const std::string& changes) {
    return R"sh(
place=${0%/*}
echo "$keys" >> "$place/uses"
echo "$$ $KR_CORE_AWAKE ${#KRLAB_PADDING} $KR_HEAP_LOT" >> "$place/starts"
awk -v keys=" $keys " -v table="$table" -v place="$place" '
BEGIN {
    while ((getline line < (place "/head")) > 0) print line >> table
    for (i = 1; i <= 12; ++i) {
        name = "f" i
        if (keys ~ / -f=/ && keys !~ " -f=" name " ") continue
        clocks = 64000 + 640 * i
        dying = 0
)sh" + changes +
           R"sh(
        told = sprintf("%.3g", clocks / 64)
        printf "| Function  : %s                     Sun Nov 22 02:25:49 2026|\n", name
        printf "| Test      : TimX |\n| Source    : p_x |\n len = 8\n"
        if (dying) { fflush(); exit 3 }
        print name ",-,-,8,-,-,-,-,-,nLps=64,3.14,e,0.01,-" >> table
        fflush()
        printf "len=8 \n    Auto method: start\n    Iteration Measurement: \n        stopLoops  = 64\n"
        printf "        stopClocks = %d\n        funcClocks = %s\n    Auto method: stop\n", clocks, told
        printf "  acc=0.5%%   nLps=64     perf= %8s/        8=      125 clocks\n", told
        printf "| -OK         %s     Sun Nov 22 02:25:49 2026|\n", name
    }
    printf "| KR Summary        |\n| .Number of tests : %d |\n", 12
}'
[ $? = 3 ] && kill -ABRT $$
exit 0
)sh";
}

struct Pair {
    FakeRig older;
    FakeRig newer;
    AbOptions options;

    explicit Pair(const std::string& changes) : older(rigScript(""), functions), newer(rigScript(changes), functions) {
        older.write("head", tableHead + tableHeading);
        newer.write("head", tableHead + tableHeading);
        options.subjects = {older.subject(), newer.subject()};
        options.subjects[sideOld].name = "before";
        options.subjects[sideNew].name = "after";
        options.trial = {0.03, 0.99};
        options.seconds = 120; // never reached: all lines are decided before
        options.seed = 5;
    }
    size_t uses(const FakeRig& rig, const std::string& word) const {
        std::ifstream file(rig.file("uses"));
        size_t count = 0;
        for (std::string line; std::getline(file, line);) {
            count += (" " + line + " ").find(" " + word + " ") != std::string::npos;
        }
        return count;
    }
};

Line lineOf(const std::string& function) {
    return {function, {{"Len/Size", "8"}}};
}

const LineVerdict* find(const VerdictReport& report, const std::string& function) {
    for (const LineVerdict& line : report.lines) {
        if (line.line.function == function) {
            return &line;
        }
    }
    return nullptr;
}

} // namespace

TEST(LabAb, SlowerAndFasterFunctionsAreToldAndTheOthersAreTheSame) {
    Pair pair(R"(if (name == "f5") clocks *= 1.1; if (name == "f9") clocks /= 1.1)");
    const VerdictReport report = runAb(pair.options);
    const VerdictCounts counts = countVerdicts(report.lines);
    EXPECT_EQ(counts.lines, size_t{functions});
    EXPECT_EQ(counts.slower, 1U);
    EXPECT_EQ(counts.faster, 1U);
    EXPECT_EQ(counts.same, size_t{functions - 2});
    const LineVerdict* slower = find(report, "f5");
    ASSERT_NE(slower, nullptr);
    EXPECT_EQ(slower->verdict, Verdict::slower);
    EXPECT_NEAR(slower->ratio, 1.1, 1e-4);
    EXPECT_NEAR(slower->older, 1050, 1);
    EXPECT_NEAR(slower->newer, 1155, 1);
    EXPECT_LT(slower->passes, report.rounds); // only fresh rounds count for it
    EXPECT_EQ(find(report, "f9")->verdict, Verdict::faster);
    EXPECT_EQ(exitStatus(report, true), exitWorse);
    EXPECT_EQ(report.older.subject, "before");
    EXPECT_EQ(report.newer.subject, "after");
    EXPECT_EQ(report.newer.program.path, pair.newer.subject().program.string());
}

TEST(LabAb, NeitherSideIsAlwaysTheFirstNorHasAlwaysTheSameStackAndHeap) {
    Pair pair("");
    runAb(pair.options);
    std::set<size_t> paddings;
    std::set<size_t> heaps;
    std::vector<long> starts[2];
    for (const FakeRig* rig : {&pair.older, &pair.newer}) {
        std::ifstream file(rig->file("starts"));
        long process = 0;
        size_t padding = 0;
        size_t heap = 0;
        for (std::string awake; file >> process >> awake >> padding >> heap;) {
            EXPECT_EQ(awake, "1");
            EXPECT_GE(padding, 1U);
            EXPECT_LE(padding, 4096U);
            paddings.insert(padding);
            heaps.insert(heap);
            starts[rig == &pair.newer].push_back(process);
        }
        std::sort(starts[rig == &pair.newer].begin(), starts[rig == &pair.newer].end());
    }
    ASSERT_EQ(starts[0].size(), starts[1].size());
    ASSERT_GT(starts[0].size(), 20U);
    EXPECT_GT(paddings.size(), starts[0].size());
    EXPECT_GT(heaps.size(), starts[0].size());
    // The processes of a round are started one after the other.
    std::ptrdiff_t newFirst = 0;
    for (size_t i = 0; i < starts[0].size(); ++i) {
        newFirst += starts[1][i] < starts[0][i] ? 1 : 0;
    }
    EXPECT_GT(newFirst, 3);
    EXPECT_LT(newFirst, static_cast<std::ptrdiff_t>(starts[0].size()) - 3);
}

TEST(LabAb, EveryPassIsKeptWithItsTimeOfStart) {
    Pair pair("");
    const TempDir directory;
    Store store(directory.path("k.db"));
    pair.options.store = &store;
    pair.options.run = store.beginRun({});
    runAb(pair.options);
    const std::vector<PassRecord> passes = store.passes();
    ASSERT_GT(passes.size(), 2u);
    for (const PassRecord& pass : passes) {
        EXPECT_NE(pass.identity.started, "") << pass.id;
        EXPECT_LE(pass.identity.started, pass.identity.ended) << pass.id;
    }
}

TEST(LabAb, OnlyUndecidedLinesAreMeasuredOn) {
    Pair pair(R"(if (name == "f5") clocks *= 1.1)");
    std::vector<std::string> texts;
    pair.options.progress = [&](const std::string& text, double) { texts.push_back(text); };
    runAb(pair.options);
    EXPECT_EQ(texts.front(), "round 1");
    EXPECT_TRUE(std::any_of(texts.begin(), texts.end(), [](const std::string& text) {
        return text.find(", 1 lines undecided, 1 suspects") != std::string::npos;
    }));
    // The sweep asks for everything, later rounds by name.
    EXPECT_GT(pair.uses(pair.older, "-f=f5"), 8U);
}

TEST(LabAb, RigThatAlwaysDiesInATestCostsThatTestAndIsNotStartedAgainForIt) {
    Pair pair(R"(if (name == "f3") dying = 1)");
    std::vector<std::string> notes;
    pair.options.note = [&](const std::string& text) { notes.push_back(text); };
    const VerdictReport report = runAb(pair.options);
    EXPECT_TRUE(report.incomplete);
    EXPECT_EQ(exitStatus(report, false), exitFailed);
    EXPECT_EQ(report.lines.size(), size_t{functions - 1});
    EXPECT_EQ(countVerdicts(report.lines).same, size_t{functions - 1});
    EXPECT_EQ(report.onlyOld, std::vector<Line>{lineOf("f3")});
    const std::string told = "after: the rig was ended by signal 6 (Aborted) in f3";
    EXPECT_EQ(notes, std::vector<std::string>{told});
    ASSERT_FALSE(report.remarks.empty());
    EXPECT_EQ(report.remarks[0], told + "; its lines are missing");
    // Only what was started before the second death was known has met the test: the first pass and the twelve that were
    // under way with the second one.
    EXPECT_EQ(pair.uses(pair.newer, "-f=f3"), 0U);
    EXPECT_LE(pair.uses(pair.newer, "-B") - pair.uses(pair.newer, "-f=f4"), 13U);
}

TEST(LabAb, RigThatDiesOnceCostsNoLine) {
    Pair pair(R"(if (name == "f3" && (getline mark < (place "/died")) < 0) { print > (place "/died"); dying = 1 })");
    const VerdictReport report = runAb(pair.options);
    EXPECT_FALSE(report.incomplete);
    EXPECT_EQ(exitStatus(report, false), exitGood);
    EXPECT_EQ(countVerdicts(report.lines).same, size_t{functions});
    ASSERT_FALSE(report.remarks.empty());
    EXPECT_EQ(report.remarks[0], "after: the rig was ended by signal 6 (Aborted) in f3");
    EXPECT_LT(find(report, "f3")->passes, find(report, "f4")->passes);
}

TEST(LabAb, PassOverItsLimitIsEndedAndTheRestIsMeasured) {
    Pair pair(R"(if (name == "f3" && (getline mark < (place "/slept")) < 0) {
                     print > (place "/slept"); close(place "/slept")
                     printf "| Function  : %s                     Sun Nov 22 02:25:49 2026|\n", name; fflush()
                     system("sleep 30") })");
    pair.options.passLimit = 4;
    const VerdictReport report = runAb(pair.options);
    EXPECT_EQ(countVerdicts(report.lines).same, size_t{functions});
    ASSERT_FALSE(report.remarks.empty());
    EXPECT_EQ(report.remarks[0], "after: the rig took longer than its limit and was ended after 4 s in f3");
    EXPECT_EQ(exitStatus(report, false), exitGood);
}

TEST(LabAb, TestThatFailsIsTold) {
    Pair pair(
        R"(if (name == "f3") { printf "| Function  : f3                     Sun Nov 22 02:25:49 2026|\n| -FUNCFAIL   f3     Sun Nov 22 02:25:49 2026|\n"; continue })");
    const VerdictReport report = runAb(pair.options);
    EXPECT_TRUE(report.incomplete);
    EXPECT_EQ(report.remarks[0], "after: f3 ended with FUNCFAIL; its lines are missing");
    EXPECT_EQ(report.lines.size(), size_t{functions - 1});
}

TEST(LabAb, InterruptEndsWithAReportOfWhatIsThere) {
    Pair pair("");
    pair.options.progress = [&](const std::string& text, double) {
        if (text == "round 2") {
            setInterrupted(true);
        }
    };
    const VerdictReport report = runAb(pair.options);
    setInterrupted(false);
    EXPECT_EQ(report.rounds, 1);
    EXPECT_EQ(report.lines.size(), size_t{functions});
    EXPECT_EQ(countVerdicts(report.lines).undecided, size_t{functions});
    ASSERT_FALSE(report.remarks.empty());
    EXPECT_EQ(report.remarks.back(), "ended by the user: the report rests on what was measured until then");
}

TEST(LabAb, TimeThatIsTooShortIsTold) {
    Pair pair("");
    pair.options.seconds = 0;
    const VerdictReport report = runAb(pair.options);
    EXPECT_EQ(report.rounds, 1);
    EXPECT_EQ(countVerdicts(report.lines).undecided, size_t{functions});
    ASSERT_EQ(report.remarks.size(), 1U);
    EXPECT_EQ(report.remarks[0],
              "12 of the undecided lines have too few passes for an interval: 1 rounds fitted into 0 s; "
              "give more --time, or fewer functions behind --");
    EXPECT_EQ(exitStatus(report, true), exitUndecided);
}

TEST(LabAb, SubjectThatIsBuiltAnewMeanwhileIsRefused) {
    Pair pair("");
    pair.options.progress = [&](const std::string& text, double) {
        if (text == "round 3") {
            std::ofstream(pair.newer.file("rig.sh"), std::ios::app) << "# built anew\n";
        }
    };
    EXPECT_THROW(
        {
            try {
                runAb(pair.options);
            } catch (const Fault& fault) {
                EXPECT_STREQ(fault.what(),
                             "after: its files changed while they were measured; start again when the build is done");
                throw;
            }
        },
        Fault);
}

TEST(LabAb, RigWithoutAnyLineIsAFailure) {
    Pair pair("continue");
    const VerdictReport report = runAb(pair.options);
    EXPECT_TRUE(report.incomplete);
    EXPECT_TRUE(report.lines.empty());
    EXPECT_EQ(report.onlyOld.size(), size_t{functions});
}
