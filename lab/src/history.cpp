#include "history.h"

#include "rigkeys.h"
#include "signedrank.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <map>
#include <set>

namespace krlab {

namespace {

std::string machineName(const Identity& identity) {
    std::string name = identity.machine.host + ", " + identity.machine.processor;
    // What selects functions changes nothing of their lines.
    for (const std::string& key : splitKeys(identity.keys).without("ftF").words()) {
        name += " " + key;
    }
    return name;
}

/// The passes of one machine by run, as indexes.
using PassesOfRuns = std::map<long long, std::vector<size_t>>;

double usualReference(const FigureTable& table, const PassesOfRuns& runs) {
    std::vector<double> references;
    for (const auto& [run, passes] : runs) {
        for (const size_t pass : passes) {
            if (table.passes[pass].reference > 0) {
                references.push_back(table.passes[pass].reference);
            }
        }
    }
    return references.empty() ? 1.0 : medianOf(std::move(references));
}

double driftOf(const PassRecord& pass, double usual) {
    return pass.reference > 0 ? pass.reference / usual : 1.0;
}

HistoryCourse courseOf(const FigureTable& table, const PassesOfRuns& runs,
                       const std::map<long long, std::string>& labels) {
    const double usual = usualReference(table, runs);
    HistoryCourse course;
    std::map<std::uint32_t, std::vector<double>> lines;
    for (const auto& [run, passes] : runs) {
        std::map<std::uint32_t, std::vector<double>> readings;
        std::vector<double> drifts;
        for (const size_t pass : passes) {
            drifts.push_back(driftOf(table.passes[pass], usual));
            for (const FigureTable::Entry& entry : table.entries[pass]) {
                if (entry.clocks > 0) {
                    readings[entry.line].push_back(entry.clocks / drifts.back());
                }
            }
        }
        for (auto& [line, values] : readings) {
            std::vector<double>& clocks = lines[line];
            clocks.resize(course.points.size(), std::numeric_limits<double>::quiet_NaN());
            clocks.push_back(medianOf(std::move(values)));
        }
        HistoryPoint& point = course.points.emplace_back();
        point.run = run;
        point.label = labels.at(run);
        point.started = table.passes[passes.front()].identity.started;
        point.passes = passes.size();
        point.drift = medianOf(std::move(drifts));
    }
    for (auto& [line, clocks] : lines) {
        clocks.resize(course.points.size(), std::numeric_limits<double>::quiet_NaN());
        course.lines.push_back({table.lines[line], std::move(clocks), {}});
    }
    return course;
}

} // namespace

void findHistorySteps(HistoryCourse& course, const HistoryRule& rule) {
    StepRule steps;
    steps.error = rule.error / static_cast<double>(std::max<size_t>(course.lines.size(), 1));
    steps.seed = rule.seed;
    for (HistoryLine& line : course.lines) {
        std::vector<double> logs;
        std::vector<size_t> points;
        for (size_t i = 0; i < line.clocks.size(); ++i) {
            if (std::isfinite(line.clocks[i])) {
                logs.push_back(std::log(line.clocks[i]));
                points.push_back(i);
            }
        }
        line.steps.clear();
        for (const Step& step : findSteps(logs, steps)) {
            if (std::abs(step.after - step.before) > std::log1p(rule.threshold)) {
                line.steps.push_back({points[step.at], std::exp(step.before), std::exp(step.after)});
            }
        }
    }
}

std::vector<HistoryCourse> readHistory(const Store& store, const HistoryRule& rule) {
    PassFilter filter;
    std::map<long long, std::string> labels;
    for (const RunRecord& run : store.runs()) {
        if (run.command == "history") {
            labels[run.id] = run.label;
            filter.runs.push_back(run.id);
        }
    }
    std::vector<HistoryCourse> courses;
    if (filter.runs.empty()) {
        return courses;
    }
    const FigureTable table = store.figures(filter);
    std::map<std::string, PassesOfRuns> machines;
    for (size_t i = 0; i < table.passes.size(); ++i) {
        machines[machineName(table.passes[i].identity)][table.passes[i].run].push_back(i);
    }
    for (const auto& [machine, runs] : machines) {
        HistoryCourse& course = courses.emplace_back(courseOf(table, runs, labels));
        course.machine = machine;
        findHistorySteps(course, rule);
    }
    return courses;
}

} // namespace krlab
