// The course of each line over the builds that `krlab history add` has measured, and the steps in it.
#pragma once

#include "line.h"
#include "steps.h"
#include "store.h"

#include <string>
#include <vector>

namespace krlab {

/// One use of `krlab history add`.
struct HistoryPoint {
    long long run = 0;
    std::string label; ///< commit or other name
    std::string started;
    size_t passes = 0;
    double drift = 1; ///< the reference kernel here over its usual time on this machine
};

/// A step that was found.
struct HistoryStep {
    size_t point = 0;  ///< index of the first point behind it
    double before = 0; ///< clocks per call, less the machine's drift
    double after = 0;
    double factor() const { return after / before; }
};

struct HistoryLine {
    Line line;
    std::vector<double> clocks;     ///< at each point, less the machine's drift; not a number where it was not measured
    std::vector<HistoryStep> steps; ///< in the order of the points
};

/// What was measured on one machine with the same keys: other machines have other levels.
struct HistoryCourse {
    std::string machine; ///< host, processor, keys but those that select
    std::vector<HistoryPoint> points;
    std::vector<HistoryLine> lines;
};

struct HistoryRule {
    double threshold = 0.02; ///< steps below this share are left out
    /// Chance that the whole of a machine's lines without any step has one accused: each line may spend its part.
    double error = 0.01;
    unsigned long seed = 1;
};

/// The courses in a store, with their steps. At a point counts the median over its passes, each less the drift that the
/// reference kernel tells.
std::vector<HistoryCourse> readHistory(const Store& store, const HistoryRule& rule);

/// The steps of all lines, from their clocks.
void findHistorySteps(HistoryCourse& course, const HistoryRule& rule);

} // namespace krlab
