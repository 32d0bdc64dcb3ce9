#include "comparison.h"

#include "countcomparison.h"
#include "fault.h"
#include "lineverdict.h"
#include "noise.h"
#include "signedrank.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <map>

namespace krlab {

namespace {

constexpr size_t sides = 2;
// The tables' three digits: figures that are alike by a thousandth are as near as they can tell.
constexpr double leastVariance = 1e-6;

using Runs = std::vector<std::vector<Figure>>;

// What is known of a line, in logarithms.
struct Course {
    Line line;
    std::vector<double> readings[sides];
    std::vector<double> clocks[sides];
    double difference = 0; // new - old, without what moved all alike
    LineVariance variance; // of one reading
    double share = 0;      // variance of the difference in variances of a reading
};

// Tables state clocks per element in their own digits; whole counts of calls are better where both sides have them.
bool countedByCall(const std::array<Runs, sides>& runs) {
    for (const Runs& side : runs) {
        for (const std::vector<Figure>& run : side) {
            if (std::any_of(run.begin(), run.end(), [](const Figure& figure) { return figure.exact; })) {
                return true;
            }
        }
    }
    return false;
}

std::map<Line, Figure> smallestOf(const std::vector<Figure>& run, bool byCall) {
    const auto value = [byCall](const Figure& figure) {
        return !byCall && figure.perElement > 0 ? figure.perElement : figure.clocks;
    };
    std::map<Line, Figure> lines;
    for (Figure figure : run) {
        figure.perElement = value(figure);
        if (!(figure.perElement > 0)) {
            continue;
        }
        const auto [at, added] = lines.try_emplace(figure.line, figure);
        if (!added && figure.perElement < at->second.perElement) {
            at->second = figure;
        }
    }
    return lines;
}

class Compared {
public:
    explicit Compared(const Comparison& comparison) : m_comparison(comparison) {
        collect();
        steady();
        findNoise();
    }
    VerdictReport report();

private:
    void collect();
    void steady();
    void findNoise();
    LineVerdict result(const Course& course, double tail) const;

    const Comparison& m_comparison;
    std::vector<Course> m_courses; // lines of both sides
    std::vector<Line> m_only[sides];
    double m_common = 0;
    CommonNoise m_noise;
    bool m_single = false; // no line has a second run
};

// The readings of all lines, each run less its level: the median of how far its lines are from their medians over all
// runs of their side. As both sides' levels are set apart, the shift between the sides is still in the readings.
void Compared::collect() {
    const bool byCall = countedByCall(m_comparison.runs);
    std::map<Line, Course> courses;
    for (size_t side = 0; side < sides; ++side) {
        std::vector<std::map<Line, Figure>> runs;
        std::map<Line, std::vector<double>> all;
        for (const std::vector<Figure>& run : m_comparison.runs[side]) {
            for (const auto& [line, figure] : runs.emplace_back(smallestOf(run, byCall))) {
                all[line].push_back(std::log(figure.perElement));
            }
        }
        std::map<Line, double> usual;
        for (auto& [line, values] : all) {
            usual[line] = medianOf(std::move(values));
        }
        for (const auto& run : runs) {
            std::vector<double> away;
            away.reserve(run.size());
            for (const auto& [line, figure] : run) {
                away.push_back(std::log(figure.perElement) - usual[line]);
            }
            const double level = away.empty() ? 0.0 : medianOf(std::move(away));
            for (const auto& [line, figure] : run) {
                Course& course = courses[line];
                course.line = line;
                course.readings[side].push_back(std::log(figure.perElement) - level);
                course.clocks[side].push_back(figure.clocks);
            }
        }
    }
    for (auto& [line, course] : courses) {
        if (course.readings[0].empty() || course.readings[1].empty()) {
            m_only[course.readings[0].empty() ? 1 : 0].push_back(line);
        } else {
            m_courses.push_back(std::move(course));
        }
    }
}

void Compared::steady() {
    std::vector<double> differences;
    for (Course& course : m_courses) {
        course.difference = meanOf(course.readings[1]) - meanOf(course.readings[0]);
        differences.push_back(course.difference);
    }
    m_common = differences.empty() ? 0.0 : medianOf(std::move(differences));
    for (Course& course : m_courses) {
        course.difference -= m_common;
    }
}

void Compared::findNoise() {
    std::vector<LineVariance> variances;
    std::vector<double> differences;
    for (Course& course : m_courses) {
        double squares = 0;
        for (const std::vector<double>& readings : course.readings) {
            const double mean = meanOf(readings);
            for (const double reading : readings) {
                squares += (reading - mean) * (reading - mean);
            }
            course.share += 1.0 / static_cast<double>(readings.size());
        }
        course.variance.freedom = static_cast<double>(course.readings[0].size() + course.readings[1].size() - sides);
        course.variance.variance = course.variance.freedom > 0 ? squares / course.variance.freedom : 0.0;
        variances.push_back(course.variance);
        differences.push_back(course.difference / std::sqrt(course.share));
    }
    m_noise = commonNoise(variances, leastVariance);
    m_single = m_noise.freedom == 0;
    if (m_single) {
        m_noise = noiseOfDifferences(differences, leastVariance);
    }
    for (Course& course : m_courses) {
        course.variance = m_noise.moderate(course.variance);
    }
}

LineVerdict Compared::result(const Course& course, double tail) const {
    LineVerdict result;
    result.line = course.line;
    const double half = halfWidth({course.variance.variance * course.share, course.variance.freedom}, tail);
    result.ratio = std::exp(course.difference);
    result.low = std::exp(course.difference - half);
    result.high = std::exp(course.difference + half);
    result.passes = static_cast<int>(std::min(course.readings[0].size(), course.readings[1].size()));
    const double middle = std::sqrt(medianOf(course.clocks[0]) * medianOf(course.clocks[1]));
    result.older = middle / std::sqrt(result.ratio);
    result.newer = middle * std::sqrt(result.ratio);
    result.verdict = judge(result.ratio, result.low, result.high, m_comparison.threshold);
    return result;
}

VerdictReport Compared::report() {
    VerdictReport report;
    report.threshold = m_comparison.threshold;
    report.confidence = m_comparison.confidence;
    report.onlyOld = m_only[0];
    report.onlyNew = m_only[1];
    report.commonRatio = std::exp(m_common);
    report.commonRemoved = true;
    report.lines = judgeTogether(m_courses.size(), m_comparison.confidence,
                                 [this](size_t i, double tail) { return result(m_courses[i], tail); });
    if (m_courses.empty()) {
        report.incomplete = true;
        report.remarks.push_back("the two sides have no line in common");
        return report;
    }
    if (m_single) {
        report.remarks.push_back(fmt::format(
            "One run of each side: the noise of single lines is unknown. It was estimated from all {} ratios "
            "together, at {:.1f} % a line; several runs of each side tell more.",
            m_courses.size(), std::sqrt(2 * m_noise.variance) * 100));
    }
    return report;
}

} // namespace

VerdictReport compareRuns(const Comparison& comparison) {
    return Compared(comparison).report();
}

VerdictReport comparePasses(const PassList& older, const PassList& newer, double threshold, double confidence,
                            double countThreshold) {
    const Identity& old = older.subject();
    const Identity& fresh = newer.subject();
    const bool counts = older.counts();
    if (counts != newer.counts()) {
        throw Fault(fmt::format("{} holds instructions and {} does not", (counts ? older : newer).text(),
                                (counts ? newer : older).text()));
    }
    VerdictReport report = counts ? compareCounts({older.runs(), newer.runs()}, countThreshold)
                                  : compareRuns({{older.runs(), newer.runs()}, threshold, confidence});
    report.older = old;
    report.newer = fresh;
    for (const PassList* list : {&older, &newer}) {
        report.remarks.insert(report.remarks.end(), list->remarks().begin(), list->remarks().end());
    }
    return report;
}

} // namespace krlab
