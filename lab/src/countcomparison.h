// Verdicts from counts of instructions: they know no noise and no drift, so that each line stands for itself.
#pragma once

#include "figure.h"
#include "verdict.h"

#include <array>
#include <vector>

namespace krlab {

/// The runs of the old and of the new subject, each run its figures. The interval of a ratio reaches from the smallest
/// to the largest one that the runs allow; runs that agree make it a point. Nothing is taken out.
VerdictReport compareCounts(const std::array<std::vector<std::vector<Figure>>, 2>& runs, double threshold);

} // namespace krlab
