// The data of a report page: bands, points of the course, what moved all lines alike, numbers of lines.
#include "comparison.h"
#include "fakerig.h"
#include "fault.h"
#include "labprocess.h"
#include "report.h"
#include "store.h"

#include <cmath>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace krlab;

namespace {

// A pass over `clocks.size()` lines of one function, at a second of one day; a line of no clocks is left out.
Pass passOf(const std::string& subject, int second, const std::vector<double>& clocks,
            const std::string& host = "box") {
    Pass pass;
    pass.identity.subject = subject;
    pass.identity.program.sha256 = subject;
    pass.identity.started = fmt::format("2026-11-22T02:30:{:02}+01:00", second);
    pass.identity.machine.host = host;
    pass.identity.machine.processor = "family 1";
    pass.ends.emplace_back();
    for (size_t i = 0; i < clocks.size(); ++i) {
        Figure figure;
        figure.line = Line{"veksX_G729_16s", {{"len gth", std::to_string(i)}}};
        figure.clocks = clocks[i];
        figure.accuracy = 0.02;
        figure.exact = true;
        figure.elements = 8 + static_cast<double>(i);
        if (figure.clocks > 0) {
            pass.figures.push_back(figure);
        }
    }
    return pass;
}

// A store with one run a list of passes, labelled r1, r2 ...
void fill(const std::string& file, const std::vector<std::vector<Pass>>& runs) {
    Store store(file);
    int number = 0;
    for (const std::vector<Pass>& passes : runs) {
        RunRecord record;
        record.command = "run";
        record.label = fmt::format("r{}", ++number);
        const long long run = store.beginRun(record);
        for (const Pass& pass : passes) {
            store.addPass(run, 0, pass);
        }
        store.endRun(run, 0);
    }
}

PassList listOf(const std::string& text) {
    PassList list;
    list.add(text, "");
    return list;
}

nlohmann::json dataOf(const PassList& all, size_t most = 1000) {
    const PassList latest = latestSubject(all);
    ReportInput input;
    input.title = "t";
    input.sides = {&latest};
    return reportData(input, courseOf(all, input.sides, most));
}

} // namespace

TEST(LabReport, BandOfFewReadingsHoldsAllOfManyTheMiddleEightTenths) {
    const Band few = bandOf({30, 10, 20, 11}, 0.5);
    EXPECT_DOUBLE_EQ(few.middle, 15.5);
    EXPECT_DOUBLE_EQ(few.low, 10);
    EXPECT_DOUBLE_EQ(few.high, 30);
    EXPECT_DOUBLE_EQ(few.smallest, 10);
    EXPECT_EQ(few.passes, 4u);
    const Band many = bandOf({100, 101, 102, 103, 104, 105, 106, 107, 108, 109, 999}, 0.5);
    EXPECT_DOUBLE_EQ(many.low, 101);
    EXPECT_DOUBLE_EQ(many.middle, 105);
    EXPECT_DOUBLE_EQ(many.high, 109);
    EXPECT_DOUBLE_EQ(many.smallest, 100);
}

TEST(LabReport, BandOfASinglePassIsTheRigsAccuracy) {
    const Band told = bandOf({110}, 0.1);
    EXPECT_DOUBLE_EQ(told.low, 100);
    EXPECT_DOUBLE_EQ(told.high, 121);
    const Band untold = bandOf({110}, -1);
    EXPECT_DOUBLE_EQ(untold.low, 110);
    EXPECT_DOUBLE_EQ(untold.high, 110);
    EXPECT_EQ(bandOf({}, 0.1).passes, 0u);
}

TEST(LabReport, StartsAreReadInTheFormsOfStoreAndTable) {
    EXPECT_EQ(secondsOf("1970-01-02T01:00:10+01:00"), 86410);
    EXPECT_EQ(secondsOf("1970-01-01T20:00:10-04:00"), 86410);
    EXPECT_EQ(secondsOf("1970-01-02T00:00:10"), std::nullopt);
    EXPECT_EQ(secondsOf("yesterday"), std::nullopt);
    EXPECT_EQ(secondsOf(""), std::nullopt);
    // In the local zone, whichever it is.
    const auto first = secondsOf("Sun Nov 22 02:25:47 2026");
    ASSERT_TRUE(first);
    EXPECT_EQ(*secondsOf("Sun Nov 22 02:26:50 2026") - *first, 63);
}

TEST(LabReport, FiguresAreThoseOfTheSubjectMeasuredLastTheCourseHasAll) {
    const TempDir directory;
    // The newer one was written to the store first.
    fill(directory.path("k.db"),
         {{passOf("after", 40, {200, 20}), passOf("after", 50, {210, 22})}, {passOf("before", 10, {100, 10})}});
    const nlohmann::json data = dataOf(listOf(directory.path("k.db")));
    ASSERT_EQ(data["sides"].size(), 1u);
    EXPECT_EQ(data["sides"][0]["name"], "after");
    EXPECT_EQ(data["sides"][0]["label"], "r1");
    EXPECT_EQ(data["sides"][0]["passes"], 2);
    EXPECT_EQ(data["sides"][0]["stats"],
              nlohmann::json::parse("[[0,205.0,200.0,210.0,200.0,2],[1,21.0,20.0,22.0,20.0,2]]"));
    EXPECT_EQ(data["verdicts"], nullptr);
    ASSERT_EQ(data["points"].size(), 3u);
    EXPECT_EQ(data["points"][0]["subject"], "before");
    EXPECT_EQ(data["points"][0]["side"], -1);
    EXPECT_EQ(data["points"][1]["side"], 0);
    EXPECT_EQ(data["points"][2]["time"].get<long long>() - data["points"][0]["time"].get<long long>(), 40);
    EXPECT_EQ(data["values"], nlohmann::json::parse("[[100.0,200.0,210.0],[10.0,20.0,22.0]]"));
    EXPECT_EQ(data["functions"], nlohmann::json::parse(R"(["veksX_G729_16s"])"));
    EXPECT_EQ(data["families"], nlohmann::json::parse(R"(["G729"])"));
    EXPECT_EQ(data["names"], nlohmann::json::parse(R"([["len gth"]])"));
    EXPECT_EQ(data["lines"], nlohmann::json::parse(R"([[0,0,"0"],[0,0,"1"]])"));
    EXPECT_EQ(data["elements"], nlohmann::json::parse("[8.0,9.0]"));
    EXPECT_EQ(data["identities"].size(), 2u);
}

TEST(LabReport, LevelIsWhatMovedAllLinesAlikeOnOneMachine) {
    const TempDir directory;
    // The second pass is slower by a fifth, one of its lines by more; the other machine is twice as slow, and no drift.
    fill(directory.path("k.db"),
         {{passOf("a", 1, {100, 10, 50}), passOf("a", 2, {120, 12, 90}), passOf("a", 3, {100, 10, 50}),
           passOf("a", 4, {200, 20, 100}, "slow"), passOf("a", 5, {200, 20, 100}, "slow")}});
    const nlohmann::json data = dataOf(listOf(directory.path("k.db")));
    std::vector<double> levels;
    for (const nlohmann::json& point : data["points"]) {
        levels.push_back(point["level"]);
    }
    EXPECT_EQ(levels, (std::vector<double>{1, 1.2, 1, 1, 1}));
    EXPECT_EQ(data["machines"], nlohmann::json::parse(R"(["box, family 1","slow, family 1"])"));
    EXPECT_EQ(data["points"][4]["machine"], 1);
    EXPECT_EQ(data["sides"][0]["passes"], 2); // of the machine that measured last
}

TEST(LabReport, PassesOfASubjectAreMergedWhereTheReadingsAreTooMany) {
    const TempDir directory;
    // Two subjects in turn; eight passes of two lines where eight readings may stand.
    std::vector<Pass> passes;
    for (int i = 0; i < 8; ++i) {
        passes.push_back(passOf(i % 2 == 0 ? "a" : "b", i, {100.0 + i, 10.0 + i}));
    }
    fill(directory.path("k.db"), {passes});
    const PassList all = listOf(directory.path("k.db"));
    const Course course = courseOf(all, {}, 8);
    EXPECT_EQ(course.merged, 2u);
    ASSERT_EQ(course.points.size(), 4u);
    EXPECT_EQ(course.points[0].identity.subject, "a");
    EXPECT_EQ(course.points[1].identity.subject, "b");
    EXPECT_EQ(course.points[0].passes, 2u);
    EXPECT_EQ(course.clocks[0], (std::vector<double>{101, 11}));
    EXPECT_EQ(course.clocks[3], (std::vector<double>{106, 16}));
    EXPECT_EQ(course.leftOut, 0u);
}

TEST(LabReport, PassesOfDifferentRunsAreNeverMergedTheOldestAreLeftOut) {
    const TempDir directory;
    fill(directory.path("k.db"),
         {{passOf("a", 1, {100, 10})}, {passOf("a", 2, {101, 11})}, {passOf("a", 3, {102, 12})}});
    const PassList all = listOf(directory.path("k.db"));
    const Course course = courseOf(all, {}, 4);
    EXPECT_EQ(course.leftOut, 1u);
    ASSERT_EQ(course.points.size(), 2u);
    EXPECT_EQ(course.points[0].label, "r2");
    EXPECT_EQ(course.clocks[1], (std::vector<double>{102, 12}));
}

TEST(LabReport, VerdictsStandAtTheNumbersOfTheirLines) {
    const TempDir directory;
    std::vector<Pass> older;
    std::vector<Pass> newer;
    for (int i = 0; i < 6; ++i) {
        const double noise = i % 2 == 0 ? 1.001 : 0.999;
        // The new one lacks line 1 and has a line 4 of its own; its line 2 takes a fifth longer.
        older.push_back(passOf("a", i, {100 * noise, 50, 300 / noise, 40 * noise, 0, 70, 80}));
        newer.push_back(passOf("b", 10 + i, {100 / noise, 0, 360 * noise, 40 / noise, 30, 70, 80}));
    }
    fill(directory.path("k.db"), {older, newer});
    const PassList all = listOf(directory.path("k.db"));
    const PassList old = listOf(directory.path("k.db") + ":r1");
    const PassList fresh = listOf(directory.path("k.db") + ":2/b");
    ReportInput input;
    input.sides = {&old, &fresh};
    input.verdicts = comparePasses(old, fresh, 0.03, 0.99);
    Course course = courseOf(all, input.sides, 1000);
    course.steps.push_back({2, 6, 1.2});
    const nlohmann::json data = reportData(input, course);
    const auto valueOf = [&](const nlohmann::json& line) { return data["lines"][line.get<size_t>()][2]; };
    std::map<std::string, std::string> verdicts;
    for (const nlohmann::json& line : data["verdicts"]["lines"]) {
        verdicts[valueOf(line[0])] = line[7];
    }
    EXPECT_EQ(verdicts, (std::map<std::string, std::string>{
                            {"0", "same"}, {"2", "slower"}, {"3", "same"}, {"5", "same"}, {"6", "same"}}));
    ASSERT_EQ(data["verdicts"]["only_old"].size(), 1u);
    EXPECT_EQ(valueOf(data["verdicts"]["only_old"][0]), "1");
    ASSERT_EQ(data["verdicts"]["only_new"].size(), 1u);
    EXPECT_EQ(valueOf(data["verdicts"]["only_new"][0]), "4");
    EXPECT_EQ(valueOf(data["steps"][0][0]), "2");
    EXPECT_EQ(data["steps"][0][1], 6);
    EXPECT_EQ(data["points"][0]["side"], 0);
    EXPECT_EQ(data["points"][11]["side"], 1);
    EXPECT_EQ(data["values"].size(), data["lines"].size());
}

TEST(LabReport, PageHoldsItsDataAndNamesNothingElsewhere) {
    const LabDirectory directory;
    directory.write("a.csv", tableHead + tableHeading + fakeRow("veks</script>A"));
    const LabResult result = directory.run({"report", "a.csv", "-o", "a.html", "--title", "<b> & @data@"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err.substr(0, 25), "a.html: 1 lines, 1 passes");
    const std::string page = directory.read("a.html");
    EXPECT_NE(page.find("<title>&lt;b> &amp; @data@</title>"), std::string::npos);
    EXPECT_NE(page.find("veks\\u003c/script>A"), std::string::npos);
    EXPECT_EQ(page.find("veks</script>"), std::string::npos);
    EXPECT_EQ(page.find(" src="), std::string::npos);
    EXPECT_EQ(page.find("@import"), std::string::npos);
    const size_t start = page.find("<script type=\"application/json\" id=\"data\">") + 42;
    const nlohmann::json data = nlohmann::json::parse(page.substr(start, page.find("</script>", start) - start));
    EXPECT_EQ(data["schema"], "krlab-report-1");
    EXPECT_EQ(data["title"], "<b> & @data@");
}

TEST(LabReport, ReportOfTwoSubjectsHasTheStatusOfTheirComparison) {
    const LabDirectory directory;
    fill(directory.path("krlab.db"),
         {{passOf("a", 1, {100, 50, 30}), passOf("a", 2, {101, 50, 30}), passOf("a", 3, {100, 51, 30})},
          {passOf("b", 4, {150, 50, 30}), passOf("b", 5, {151, 50, 30}), passOf("b", 6, {150, 51, 30})}});
    LabResult result =
        directory.run({"report", "krlab.db", "--old", "r1", "--new", "r2", "-o", "x.html", "--json", "x.json"});
    EXPECT_EQ(result.status, exitWorse) << result.err;
    const nlohmann::json data = nlohmann::json::parse(directory.read("x.json"));
    EXPECT_EQ(data["title"], "r2 against r1");
    EXPECT_EQ(data["points"].size(), 6u);
    result = directory.run({"report", "--old", "2/b", "--new", "1", "-o", "x.html", "--quiet"});
    EXPECT_EQ(result.status, exitGood) << result.err;
    EXPECT_EQ(result.err, "");
    result = directory.run({"report", "krlab.db", "-o", "y.html"});
    EXPECT_EQ(result.status, exitGood);
    EXPECT_NE(result.err.find("2 subjects (a, b): the figures are those of the last one, b;"), std::string::npos)
        << result.err;
}

TEST(LabReport, ReportTellsWhatItLacks) {
    const LabDirectory directory;
    const auto error = [&](const std::vector<std::string>& words) {
        const LabResult result = directory.run(words);
        EXPECT_EQ(result.status, exitFailed) << words.size();
        return result.err;
    };
    EXPECT_EQ(error({"report", "-o", "x.html"}),
              "krlab: name tables or a store, or two subjects with --old and --new\n");
    EXPECT_EQ(error({"report", "t.csv", "--old", "1", "-o", "x.html"}), "krlab: --old and --new belong together\n");
    EXPECT_EQ(error({"report", "t.csv"}), "krlab: -o FILE.html is missing\n");
    EXPECT_EQ(error({"report", "t.csv", "-o", "x.html"}),
              "krlab: t.csv: is neither a table nor, as there is no store krlab.db, a run or label in it\n");
    { const Store store(directory.path("krlab.db")); }
    EXPECT_EQ(error({"report", "krlab.db", "-o", "x.html"}), "krlab: krlab.db: holds no pass\n");
    EXPECT_FALSE(directory.exists("x.html"));
    fill(directory.path("krlab.db"), {{passOf("a", 1, {100}), passOf("b", 2, {100})}});
    EXPECT_EQ(error({"report", "krlab.db", "--old", "1", "--new", "1/b", "-o", "x.html"}),
              "krlab: '1' holds passes of different subjects (a and b); choose one, as in 1/b\n");
    EXPECT_EQ(error({"report", "krlab.db", "--quiet", "-o", "/nowhere/x.html"}),
              "krlab: /nowhere/x.html: can't be written: No such file or directory\n");
}
