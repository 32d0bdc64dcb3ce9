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

constexpr size_t sideCount = 2;
// The tables' three digits: figures that are alike by a thousandth are as near as they can tell.
constexpr double leastVariance = 1e-6;

using Runs = std::vector<std::vector<Figure>>;

// What is known of a line, in logarithms.
struct ComparedLine {
    Line line;
    std::vector<double> readings[sideCount];
    std::vector<double> clocks[sideCount];
    double difference = 0; // new - old, without what moved all alike
    LineVariance variance; // of one reading
    double share = 0;      // variance of the difference in variances of a reading
};

// Tables state clocks per element in their own digits; whole counts of calls are better where both sides have them.
bool countedByCall(const std::array<Runs, sideCount>& runs) {
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
    LineVerdict result(const ComparedLine& compared, double tail) const;

    const Comparison& m_comparison;
    std::vector<ComparedLine> m_lines; // lines of both sides
    std::vector<Line> m_only[sideCount];
    double m_common = 0;
    CommonNoise m_noise;
    bool m_single = false; // no line has a second run
};

// The readings of all lines, each run less its level: the median of how far its lines are from their medians over all
// runs of their side. As both sides' levels are set apart, the shift between the sides is still in the readings.
void Compared::collect() {
    const bool byCall = countedByCall(m_comparison.runs);
    std::map<Line, ComparedLine> lines;
    for (size_t side = 0; side < sideCount; ++side) {
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
                ComparedLine& compared = lines[line];
                compared.line = line;
                compared.readings[side].push_back(std::log(figure.perElement) - level);
                compared.clocks[side].push_back(figure.clocks);
            }
        }
    }
    for (auto& [line, compared] : lines) {
        if (compared.readings[0].empty() || compared.readings[1].empty()) {
            m_only[compared.readings[0].empty() ? 1 : 0].push_back(line);
        } else {
            m_lines.push_back(std::move(compared));
        }
    }
}

void Compared::steady() {
    std::vector<double> differences;
    for (ComparedLine& compared : m_lines) {
        compared.difference = meanOf(compared.readings[1]) - meanOf(compared.readings[0]);
        differences.push_back(compared.difference);
    }
    m_common = differences.empty() ? 0.0 : medianOf(std::move(differences));
    for (ComparedLine& compared : m_lines) {
        compared.difference -= m_common;
    }
}

void Compared::findNoise() {
    std::vector<LineVariance> variances;
    std::vector<double> differences;
    for (ComparedLine& compared : m_lines) {
        double squares = 0;
        for (const std::vector<double>& readings : compared.readings) {
            const double mean = meanOf(readings);
            for (const double reading : readings) {
                squares += (reading - mean) * (reading - mean);
            }
            compared.share += 1.0 / static_cast<double>(readings.size());
        }
        compared.variance.freedom =
            static_cast<double>(compared.readings[0].size() + compared.readings[1].size() - sideCount);
        compared.variance.variance = compared.variance.freedom > 0 ? squares / compared.variance.freedom : 0.0;
        variances.push_back(compared.variance);
        differences.push_back(compared.difference / std::sqrt(compared.share));
    }
    m_noise = commonNoise(variances, leastVariance);
    m_single = m_noise.freedom == 0;
    if (m_single) {
        m_noise = noiseOfDifferences(differences, leastVariance);
    }
    for (ComparedLine& compared : m_lines) {
        compared.variance = m_noise.moderate(compared.variance);
    }
}

LineVerdict Compared::result(const ComparedLine& compared, double tail) const {
    LineVerdict result;
    result.line = compared.line;
    const double half = halfWidth({compared.variance.variance * compared.share, compared.variance.freedom}, tail);
    result.ratio = std::exp(compared.difference);
    result.low = std::exp(compared.difference - half);
    result.high = std::exp(compared.difference + half);
    result.passes = static_cast<int>(std::min(compared.readings[0].size(), compared.readings[1].size()));
    const double middle = std::sqrt(medianOf(compared.clocks[0]) * medianOf(compared.clocks[1]));
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
    report.lines = judgeTogether(m_lines.size(), m_comparison.confidence,
                                 [this](size_t i, double tail) { return result(m_lines[i], tail); });
    if (m_lines.empty()) {
        report.incomplete = true;
        report.remarks.push_back("the two sides have no line in common");
        return report;
    }
    if (m_single) {
        report.remarks.push_back(fmt::format(
            "One run of each side: the noise of single lines is unknown. It was estimated from all {} ratios "
            "together, at {:.1f} % a line; several runs of each side tell more.",
            m_lines.size(), std::sqrt(2 * m_noise.variance) * 100));
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
