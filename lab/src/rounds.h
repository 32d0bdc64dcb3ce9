// Readings of paired rounds. The noise of a machine only ever adds to them, and it comes and goes within milliseconds:
// the lowest readings of a line are better witnesses than the middle ones.
#pragma once

#include "signedrank.h"

#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace krlab {

/// The two subjects of a comparison.
enum Side : size_t { sideOld = 0, sideNew = 1 };

/// Readings of one round: for each side, the natural logarithm of the clocks per call of each line; not a number where
/// there is none.
using Round = std::array<std::vector<double>, 2>;

/// A shift between two subjects, seen in their low readings.
struct LowShift {
    double estimate = 0;  ///< logarithm of the ratio new / old
    Bounds bounds;        ///< of that logarithm
    double logClocks = 0; ///< of both sides together
};

/// The readings of one line in the rounds in which both sides have one.
///
/// The interval is that of a precedence test (N. Balakrishnan and H. K. T. Ng, Precedence-Type Tests and Applications,
/// 2006): if among the m lowest readings of both sides together, those of the new side moved back by some shift, only
/// `spare` or fewer are the new side's, then the true shift is larger. Of two copies of one subject each low reading is
/// as likely the one's as the other's, whatever the noise is like; m is taken from the binomial distribution. That the
/// readings come in pairs makes it err less often still: a pair of which both are among the lowest favours neither.
class LowReadings {
public:
    LowReadings(std::span<const Round> rounds, size_t line);
    /// From the readings of each side, as logarithms: those of one round stand at one place.
    LowReadings(std::vector<double> older, std::vector<double> newer);

    int rounds() const { return static_cast<int>(m_sorted[sideOld].size()); }
    /// Misses the shift with at most `tail` on each side. Bounds are unknown if there are too few rounds. The estimate
    /// is not a number without rounds.
    LowShift shift(double tail) const;

private:
    std::array<std::vector<double>, 2> m_sorted;
};

/// The fewest rounds for which an interval with this tail exists.
int leastRounds(double tail);

/// What all lines have in common: the shift between the two subjects.
struct CommonShift {
    double estimate = 0; ///< logarithm of the ratio new / old
    Bounds bounds;
    /// True if the rounds tell it from no shift at all.
    bool real() const { return bounds.known && (bounds.low > 0 || bounds.high < 0); }
};

/// The shift from the median over the lines of each round; `tail` on each side.
CommonShift commonShift(std::span<const Round> rounds, double tail);

} // namespace krlab
