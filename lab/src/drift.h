// What moves all lines of a pass alike, taken out of the readings of paired rounds: the drift from pass to pass and the
// phases, some tenths of a second long, in which everything runs slower.
#pragma once

#include "signedrank.h"

#include <array>
#include <cstddef>
#include <vector>

namespace krlab {

/// The two subjects of a comparison.
enum Side : size_t { sideOld = 0, sideNew = 1 };

/// Readings of one round: for each side, the natural logarithm of the clocks per call of each line, in the order in
/// which a pass measures them; not a number where there is none.
using Round = std::array<std::vector<double>, 2>;

/// What is known of a line besides its readings.
struct LineRole {
    size_t function = 0; ///< lines of one function have the same number and stand together
    bool control = true; ///< its readings may tell the drift
};

/// The differences new - old of each line, one for each round (not a number where a side is missing), with the drift
/// within the passes taken out.
///
/// The drift at a line is the median of how far the nearest functions measured before and after it are from their usual
/// readings in these rounds. Three rules keep the differences honest:
/// - a usual reading is that of both subjects together: which pass belongs to which subject plays no part, so that the
///   differences of two copies stay symmetric;
/// - a function is no measure for its own lines: what moves it alone is not taken for drift;
/// - lines that are suspected to have changed are no controls, so that the change of neighbours is not taken for drift.
std::vector<std::vector<double>> pairedDifferences(const std::vector<const Round*>& rounds,
                                                   const std::vector<LineRole>& roles);

/// What moved all controls alike between the two subjects.
struct CommonShift {
    double estimate = 0; ///< logarithm of the ratio new / old
    Bounds bounds;
    /// True if the rounds tell it from no shift at all: then it belongs to the subjects and not to the machine.
    bool real() const { return bounds.known && (bounds.low > 0 || bounds.high < 0); }
};

/// The shift from the median over the controls in each round, before any drift was taken out; `tail` on each side.
CommonShift commonShift(const std::vector<const Round*>& rounds, const std::vector<LineRole>& roles, double tail);

} // namespace krlab
