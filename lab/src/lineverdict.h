// What is said of a line from its low readings, and of many lines together.
#pragma once

#include "rounds.h"
#include "verdict.h"

#include <functional>
#include <vector>

namespace krlab {

/// The verdict that an interval with this tail gives. `level` is the logarithm of what the readings were divided by.
LineVerdict lineVerdict(const Line& line, const LowReadings& readings, double tail, double threshold, double level = 0);

/// Judges `count` hypotheses together by Holm's step-down: as long as some are found to have changed, the others share
/// what is left of the error, so that any is accused wrongly with the chance 1 - confidence at most. That a line is the
/// same accuses nobody: there each one stands for itself. `judged` gives the verdict on one of them with a tail.
std::vector<LineVerdict> judgeTogether(size_t count, double confidence,
                                       const std::function<LineVerdict(size_t, double tail)>& judged);

} // namespace krlab
