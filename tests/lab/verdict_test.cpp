// The rule of the threshold, the counts, the JSON, the exit status.
#include "fault.h"
#include "verdict.h"

#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>

using namespace krlab;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

LineVerdict lineOf(const std::string& function, double ratio, double low, double high) {
    LineVerdict line;
    line.line = {function, {{"lenght", "160"}, {"lenght Dst", "9"}}};
    line.older = 100;
    line.newer = 100 * ratio;
    line.ratio = ratio;
    line.low = low;
    line.high = high;
    line.passes = 24;
    line.verdict = judge(ratio, low, high, 0.03);
    return line;
}

VerdictReport sample() {
    VerdictReport report;
    report.threshold = 0.03;
    report.confidence = 0.99;
    report.older.subject = "before";
    report.newer.subject = "after";
    report.lines = {lineOf("veksA_G729_16s", 1.051, 1.041, 1.066), lineOf("veksB_16s", 0.9, 0.89, 0.91),
                    lineOf("veksC_G729_16s", 1.001, 0.999, 1.003), lineOf("veksD_16s", 1.02, 0.98, 1.06),
                    lineOf("veksE_16s", 1.2, 0, infinity)};
    return report;
}

} // namespace

TEST(LabVerdict, SlowerNeedsAnIntervalAboveOneAndARatioAboveTheThreshold) {
    EXPECT_EQ(judge(1.0301, 1.0001, 1.06, 0.03), Verdict::slower);
    EXPECT_EQ(judge(1.0301, 1.0, 1.06, 0.03), Verdict::undecided);
    EXPECT_EQ(judge(1.03, 1.0001, 1.06, 0.03), Verdict::undecided);
    EXPECT_EQ(judge(1.5, 0.9999, 2.0, 0.03), Verdict::undecided);
}

TEST(LabVerdict, FasterIsTheMirrorOfSlower) {
    EXPECT_EQ(judge(0.9708, 0.95, 0.9999, 0.03), Verdict::faster); // 1 / 1.03 = 0.97087
    EXPECT_EQ(judge(0.9709, 0.95, 0.9999, 0.03), Verdict::undecided);
    EXPECT_EQ(judge(0.9708, 0.95, 1.0, 0.03), Verdict::undecided);
}

TEST(LabVerdict, SameNeedsTheWholeIntervalWithinTheThreshold) {
    EXPECT_EQ(judge(1.0, 0.98, 1.03, 0.03), Verdict::same);
    EXPECT_EQ(judge(1.0, 0.9709, 1.03, 0.03), Verdict::same);
    EXPECT_EQ(judge(1.0, 0.9708, 1.03, 0.03), Verdict::undecided);
    EXPECT_EQ(judge(1.0, 0.98, 1.0301, 0.03), Verdict::undecided);
    // A change that is certain but too small to matter is the same.
    EXPECT_EQ(judge(1.01, 1.005, 1.015, 0.03), Verdict::same);
    EXPECT_EQ(judge(1.0, 0, infinity, 0.03), Verdict::undecided);
}

TEST(LabVerdict, CountsAndGeometricMean) {
    const VerdictCounts counts = countVerdicts(sample().lines);
    EXPECT_EQ(counts.lines, 5U);
    EXPECT_EQ(counts.slower, 1U);
    EXPECT_EQ(counts.faster, 1U);
    EXPECT_EQ(counts.same, 1U);
    EXPECT_EQ(counts.undecided, 2U);
    EXPECT_NEAR(counts.geometricMean, 1.0299405, 1e-6); // fifth root of 1.051 * 0.9 * 1.001 * 1.02 * 1.2
    EXPECT_EQ(countVerdicts({}).geometricMean, 1);
}

TEST(LabVerdict, JsonHasTheFixedNames) {
    VerdictReport report = sample();
    report.onlyOld = {{"veksF_16s", {{"len", "4"}}}};
    const nlohmann::json json = toJson(report);
    EXPECT_EQ(json["schema"], "krlab-verdict-1");
    EXPECT_EQ(json["old"]["subject"], "before");
    EXPECT_EQ(json["new"]["subject"], "after");
    EXPECT_EQ(json["threshold"], 0.03);
    EXPECT_EQ(json["confidence"], 0.99);
    EXPECT_EQ(json["lines"][0].dump(),
              R"({"family":"G729","function":"veksA_G729_16s","high":1.066,"low":1.041,"new":105.1,"old":100.0,)"
              R"("parameters":{"lenght":"160","lenght Dst":"9"},"passes":24,"ratio":1.051,"verdict":"slower"})");
    EXPECT_EQ(json["lines"][1]["verdict"], "faster");
    EXPECT_EQ(json["lines"][2]["verdict"], "same");
    EXPECT_EQ(json["lines"][3]["verdict"], "undecided");
    EXPECT_TRUE(json["lines"][4]["low"].is_null());
    EXPECT_TRUE(json["lines"][4]["high"].is_null());
    EXPECT_EQ(json["only_old"][0]["function"], "veksF_16s");
    EXPECT_TRUE(json["only_new"].empty());
    EXPECT_EQ(json["summary"]["lines"], 5);
    EXPECT_EQ(json["summary"]["slower"], 1);
    EXPECT_EQ(json["summary"]["faster"], 1);
    EXPECT_EQ(json["summary"]["same"], 1);
    EXPECT_EQ(json["summary"]["undecided"], 2);
    EXPECT_NEAR(json["summary"]["geometric_mean"].get<double>(), 1.0299405, 1e-6);
}

TEST(LabVerdict, ExitStatusTellsTheWorst) {
    VerdictReport report = sample();
    EXPECT_EQ(exitStatus(report, false), exitWorse);
    report.onlyNew = {{"veksF_16s", {}}};
    EXPECT_EQ(exitStatus(report, false), exitWorse);
    report.onlyOld = report.onlyNew;
    EXPECT_EQ(exitStatus(report, false), exitFailed);
    report.onlyOld.clear();
    report.incomplete = true;
    EXPECT_EQ(exitStatus(report, false), exitFailed);
    report.incomplete = false;
    report.lines.erase(report.lines.begin());
    EXPECT_EQ(exitStatus(report, false), exitGood);
    EXPECT_EQ(exitStatus(report, true), exitUndecided);
    report.lines.resize(2);
    EXPECT_EQ(exitStatus(report, true), exitGood);
}

TEST(LabVerdict, ReportTellsLinesFunctionsFamiliesAndTheMean) {
    VerdictReport report = sample();
    report.onlyOld = {{"veksF_16s", {{"len", "4"}}}};
    report.remarks = {"a remark"};
    report.commonRatio = 1.004;
    report.commonRemoved = true;
    report.rounds = 24;
    const std::string text = describe(report);
    // The identities at the head have their own test.
    EXPECT_EQ(text.substr(text.find("\nSlower")),
              R"(
Slower (1)
 change%         interval%        old        new  passes  line
    +5.1      +4.1 .. +6.6      100.0      105.1      24  veksA_G729_16s lenght=160 "lenght Dst"=9

Faster (1)
 change%         interval%        old        new  passes  line
   -10.0     -11.0 .. -9.0      100.0      90.00      24  veksB_16s lenght=160 "lenght Dst"=9

 changed function  lines  slower  faster   same  undecided  change%
 veksA_G729_16s        1       1       0      0          0     +5.1
 veksB_16s             1       0       1      0          0    -10.0

 family  lines  slower  faster   same  undecided  change%
 G729        2       1       0      1          0     +2.6
 common      3       0       1      0          2     +3.3

Undecided (2), the largest estimates
 change%         interval%        old        new  passes  line
   +20.0                 ?      100.0      120.0      24  veksE_16s lenght=160 "lenght Dst"=9
    +2.0      -2.0 .. +6.0      100.0      102.0      24  veksD_16s lenght=160 "lenght Dst"=9

Only in the old one (1)
 veksF_16s len=4

a remark
All lines together: +0.4 %, which may be the machine's drift and was taken out.
5 lines: 1 slower, 1 faster, 1 same, 2 undecided; geometric mean 1.0299 (threshold 3 %, confidence 99 %, 24 rounds)
)");
}
