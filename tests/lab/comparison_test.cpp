// Verdicts from tables: known ratios, known noise, missing lines, one run each, appended runs, a shift of all lines.
// What is expected is computed here from the textbook formulas.
#include "comparison.h"
#include "fault.h"
#include "noise.h"
#include "table.h"

#include <boost/math/distributions/students_t.hpp>
#include <cmath>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <random>

using namespace krlab;

namespace {

Line lineAt(int number) {
    return {fmt::format("veksF{:03}_16s", number), {{"len", "40"}}};
}

// A run with the given clocks of lines 0, 1, 2 ...; a value of 0 leaves the line out.
std::vector<Figure> runOf(const std::vector<double>& clocks) {
    std::vector<Figure> figures;
    for (size_t i = 0; i < clocks.size(); ++i) {
        Figure figure;
        figure.line = lineAt(static_cast<int>(i));
        figure.clocks = clocks[i];
        figure.exact = true;
        if (clocks[i] > 0) {
            figures.push_back(figure);
        }
    }
    return figures;
}

// Noise of four runs of both sides whose within-side variance is the same for every line: +s, -s, +s, -s in turn.
std::vector<double> noisy(const std::vector<double>& clocks, double s, size_t run) {
    std::vector<double> result;
    for (size_t i = 0; i < clocks.size(); ++i) {
        result.push_back(clocks[i] * std::exp((i + run) % 2 == 0 ? s : -s));
    }
    return result;
}

std::vector<double> hundreds(size_t count) {
    std::vector<double> clocks;
    for (size_t i = 0; i < count; ++i) {
        clocks.push_back(100.0 + static_cast<double>(i));
    }
    return clocks;
}

const LineVerdict& find(const VerdictReport& report, int number) {
    const auto at = std::find_if(report.lines.begin(), report.lines.end(),
                                 [&](const LineVerdict& line) { return line.line == lineAt(number); });
    EXPECT_NE(at, report.lines.end()) << number;
    return *at;
}

} // namespace

TEST(LabNoise, CommonNoiseOfAlikeLinesHasNoEndOfFreedom) {
    const std::vector<LineVariance> lines(50, {0.0004, 4});
    const CommonNoise noise = commonNoise(lines, 1e-6);
    EXPECT_TRUE(std::isinf(noise.freedom));
    // The logarithm of a variance with 4 degrees of freedom lies digamma(2) - log(2) = -0.270363 below that of the true
    // one.
    EXPECT_NEAR(noise.variance, 0.0004 * std::exp(0.270363), 1e-8);
    EXPECT_EQ(noise.moderate({0.1, 4}).variance, noise.variance);
}

TEST(LabNoise, UnlikeLinesKeepMoreOfTheirOwnVariance) {
    std::vector<LineVariance> lines;
    for (int i = 0; i < 100; ++i) {
        lines.push_back({i % 2 == 0 ? 1e-5 : 1e-2, 4});
    }
    const CommonNoise noise = commonNoise(lines, 1e-6);
    // Spread of the logarithms: (log(1000) / 2)^2 * 100 / 99 = 12.050; less trigamma(2) = 0.644934; d0 with
    // trigamma(d0 / 2) = 11.405: d0 / 2 = 0.31547 by the series 1/x^2 + trigamma(1 + x).
    EXPECT_NEAR(noise.freedom, 2 * 0.31547, 0.01);
    const LineVariance calm = noise.moderate({1e-5, 4});
    EXPECT_NEAR(calm.freedom, 4 + noise.freedom, 1e-9);
    EXPECT_NEAR(calm.variance, (noise.freedom * noise.variance + 4 * 1e-5) / (4 + noise.freedom), 1e-12);
}

TEST(LabNoise, TailsOfDifferencesTellTheFreedom) {
    // Quantiles of Student's distribution with 3 degrees of freedom, scale 0.02.
    const boost::math::students_t student(3);
    std::vector<double> differences;
    for (int i = 0; i < 2000; ++i) {
        differences.push_back(0.02 * boost::math::quantile(student, (i + 0.5) / 2000));
    }
    const CommonNoise noise = noiseOfDifferences(differences, 1e-6);
    EXPECT_NEAR(noise.freedom, 3, 0.05);
    EXPECT_NEAR(std::sqrt(noise.variance), 0.02, 0.0002);
    // Two-sided 99.9 % point of 3 degrees of freedom in the tables: 12.924.
    EXPECT_NEAR(halfWidth({0.0004, 3}, 0.0005), 0.02 * 12.924, 1e-5);
    EXPECT_TRUE(std::isinf(halfWidth({0.0004, 0}, 0.1)));
}

TEST(LabCompare, KnownRatiosAndKnownNoise) {
    // 100 lines, four runs of each side, each reading off by 1 %: every line has the same variance within the sides,
    // 8 * 0.01^2 / 6. Line 10 is 8 % slower, line 20 8 % faster, line 30 4 % slower: too little for the threshold.
    Comparison comparison;
    comparison.threshold = 0.05;
    std::vector<double> newer = hundreds(100);
    newer[10] *= 1.08;
    newer[20] /= 1.08;
    newer[30] *= 1.04;
    for (size_t run = 0; run < 4; ++run) {
        comparison.runs[0].push_back(runOf(noisy(hundreds(100), 0.01, run)));
        comparison.runs[1].push_back(runOf(noisy(newer, 0.01, run)));
    }
    const VerdictReport report = compareRuns(comparison);
    ASSERT_EQ(report.lines.size(), 100U);
    // All variances alike: the common one, with an unbiased logarithm (digamma(3) - log(3) = -0.1758279), normal
    // points.
    const double variance = 8 * 1e-4 / 6 * std::exp(0.1758279);
    const double deviation = std::sqrt(variance * (1.0 / 4 + 1.0 / 4));
    const double pointOf100 = 3.890592; // normal, 0.005 / 100 above
    const double pointOf98 = 3.885758;  // two were found: 0.005 / 98
    EXPECT_EQ(find(report, 10).verdict, Verdict::slower);
    EXPECT_NEAR(find(report, 10).ratio, 1.08, 1e-9);
    EXPECT_NEAR(find(report, 10).low, 1.08 * std::exp(-pointOf100 * deviation), 1e-6);
    EXPECT_NEAR(find(report, 10).high, 1.08 * std::exp(pointOf100 * deviation), 1e-6);
    EXPECT_NEAR(find(report, 10).newer / find(report, 10).older, 1.08, 1e-9);
    EXPECT_EQ(find(report, 10).passes, 4);
    EXPECT_EQ(find(report, 20).verdict, Verdict::faster);
    EXPECT_EQ(find(report, 30).verdict, Verdict::undecided);
    EXPECT_NEAR(find(report, 30).low, 1.04 * std::exp(-pointOf98 * deviation), 1e-6);
    // The same: by the interval of the line alone, 2.575829 deviations.
    EXPECT_EQ(find(report, 40).verdict, Verdict::same);
    EXPECT_NEAR(find(report, 40).high, std::exp(2.575829 * deviation), 1e-6);
    const VerdictCounts counts = countVerdicts(report.lines);
    EXPECT_EQ(counts.slower, 1U);
    EXPECT_EQ(counts.faster, 1U);
    EXPECT_EQ(counts.undecided, 1U);
    EXPECT_NEAR(counts.geometricMean, std::exp(std::log(1.04) / 100), 1e-9);
    EXPECT_EQ(exitStatus(report, false), exitWorse);
    EXPECT_TRUE(report.remarks.empty());
}

TEST(LabCompare, ShiftOfAllLinesIsTakenOutAndTold) {
    Comparison comparison;
    std::vector<double> newer = hundreds(60);
    for (double& clocks : newer) {
        clocks *= 1.11;
    }
    newer[5] *= 1.2;
    for (size_t run = 0; run < 3; ++run) {
        // The runs drift by themselves, too.
        std::vector<double> drifted = noisy(newer, 0.004, run);
        for (double& clocks : drifted) {
            clocks *= 1 + 0.03 * static_cast<double>(run);
        }
        comparison.runs[0].push_back(runOf(noisy(hundreds(60), 0.004, run)));
        comparison.runs[1].push_back(runOf(drifted));
    }
    const VerdictReport report = compareRuns(comparison);
    EXPECT_TRUE(report.commonRemoved);
    EXPECT_NEAR(report.commonRatio, 1.11 * 1.03, 1e-3); // the middle run stands for its side
    EXPECT_EQ(find(report, 5).verdict, Verdict::slower);
    EXPECT_NEAR(find(report, 5).ratio, 1.2, 1e-9);
    EXPECT_EQ(countVerdicts(report.lines).same, 59U);
}

TEST(LabCompare, OneRunEachTakesTheNoiseFromAllRatios) {
    // Ratios spread as Student's distribution with 4 degrees of freedom, scale 1 %; one line is 40 % slower.
    const boost::math::students_t student(4);
    std::vector<double> newer = hundreds(400);
    for (size_t i = 0; i < newer.size(); ++i) {
        newer[i] *= 1.11 * std::exp(0.01 * boost::math::quantile(student, (static_cast<double>(i) + 0.5) / 400));
    }
    newer[200] = 300 * 1.11 * 1.4;
    Comparison comparison;
    comparison.runs = {std::vector<std::vector<Figure>>{runOf(hundreds(400))}, {runOf(newer)}};
    const VerdictReport report = compareRuns(comparison);
    EXPECT_NEAR(report.commonRatio, 1.11, 0.001);
    EXPECT_EQ(find(report, 200).verdict, Verdict::slower);
    EXPECT_EQ(find(report, 200).passes, 1);
    // 4 degrees of freedom, 0.005 / 400 above: 15.1 scales. The scale is read from the data, and so only nearly known.
    const double point = boost::math::quantile(boost::math::complement(student, 0.005 / 400));
    EXPECT_NEAR(std::log(find(report, 200).ratio / find(report, 200).low), 0.01 * point, 0.02);
    EXPECT_EQ(countVerdicts(report.lines).slower, 1U);
    EXPECT_EQ(countVerdicts(report.lines).faster, 0U);
    ASSERT_EQ(report.remarks.size(), 1U);
    EXPECT_EQ(report.remarks[0].substr(0, report.remarks[0].find(" ratios")),
              "One run of each side: the noise of single lines is unknown. It was estimated from all 400");
}

TEST(LabCompare, LinesOfOneSideAreTold) {
    std::vector<double> older = hundreds(30);
    std::vector<double> newer = hundreds(30);
    older[3] = 0;
    newer[4] = 0;
    Comparison comparison;
    comparison.runs = {std::vector<std::vector<Figure>>{runOf(older), runOf(older)}, {runOf(newer), runOf(newer)}};
    VerdictReport report = compareRuns(comparison);
    EXPECT_EQ(report.lines.size(), 28U);
    ASSERT_EQ(report.onlyOld.size(), 1U);
    EXPECT_EQ(report.onlyOld[0], lineAt(4));
    ASSERT_EQ(report.onlyNew.size(), 1U);
    EXPECT_EQ(report.onlyNew[0], lineAt(3));
    EXPECT_EQ(exitStatus(report, false), exitFailed);
    // Lines that are new are no loss.
    comparison.runs[1] = comparison.runs[0];
    comparison.runs[0] = {runOf(hundreds(3)), runOf(hundreds(3))};
    report = compareRuns(comparison);
    EXPECT_EQ(report.onlyNew.size(), 26U);
    EXPECT_EQ(exitStatus(report, false), exitGood);
}

TEST(LabCompare, NothingInCommonIsAFailure) {
    Comparison comparison;
    comparison.runs = {std::vector<std::vector<Figure>>{runOf({100})}, {runOf({0, 100})}};
    const VerdictReport report = compareRuns(comparison);
    EXPECT_TRUE(report.lines.empty());
    EXPECT_EQ(exitStatus(report, false), exitFailed);
    EXPECT_EQ(report.remarks, std::vector<std::string>{"the two sides have no line in common"});
}

TEST(LabCompare, ManyCopiesAreNotAccused) {
    // Three runs a side of 1000 lines with log-normal noise of 3 %, twenty times: 1 % of them may accuse a line.
    std::mt19937_64 random(3);
    std::normal_distribution<double> normal;
    int accused = 0;
    for (int trial = 0; trial < 20; ++trial) {
        Comparison comparison;
        comparison.threshold = 0.001;
        for (auto& side : comparison.runs) {
            for (int run = 0; run < 3; ++run) {
                std::vector<double> clocks = hundreds(1000);
                for (double& value : clocks) {
                    value *= std::exp(0.03 * normal(random));
                }
                side.push_back(runOf(clocks));
            }
        }
        const VerdictCounts counts = countVerdicts(compareRuns(comparison).lines);
        accused += counts.slower + counts.faster > 0;
    }
    EXPECT_LE(accused, 1);
}

TEST(LabCompare, TablesWithAppendedRunsGiveTheNoise) {
    // The rig's own form: two runs appended to one file, clocks per element in the table's digits.
    const auto run = [](double factor) {
        std::string text;
        for (int i = 0; i < 40; ++i) {
            text += fmt::format("veksF{:03},16s,-,40,-,nLps=16,{:.3g},e,{:.3g},-\n", i, 2.5 * factor * (1 + 0.01 * i),
                                0.05 * factor * (1 + 0.01 * i));
        }
        return text;
    };
    const std::string heading =
        "funcBase,funcDataType,funcDescriptor,Len/Size,Parm1,Comment,Clocks,per,Time (usec),MFlops\n";
    const Table older = parseTable("old.csv", heading + run(1) + heading + run(1.01));
    const Table newer = parseTable("new.csv", heading + run(1.11));
    ASSERT_EQ(older.runs.size(), 2U);
    Comparison comparison;
    for (const TableRun& tableRun : older.runs) {
        comparison.runs[0].emplace_back();
        for (const TableRow& row : tableRun.rows) {
            comparison.runs[0].back().push_back(row.figure);
        }
    }
    comparison.runs[1].emplace_back();
    for (const TableRow& row : newer.runs[0].rows) {
        comparison.runs[1].back().push_back(row.figure);
    }
    const VerdictReport report = compareRuns(comparison);
    EXPECT_EQ(report.lines.size(), 40U);
    EXPECT_NEAR(report.commonRatio, 1.11 / 1.005, 0.003);
    EXPECT_TRUE(report.remarks.empty()); // one side has two runs: the noise is known
    EXPECT_EQ(countVerdicts(report.lines).same, 40U);
}
