// How much the runs of a line differ: each line's own variance, steadied by that of all lines. Knows nothing of lines.
//
// With few runs a line's own variance is a poor guide. It is drawn towards a common one as far as the lines are alike:
// the moderated t of G. K. Smyth, Linear models and empirical Bayes methods for assessing differential expression,
// Statistical Applications in Genetics and Molecular Biology 3 (2004).
#pragma once

#include <vector>

namespace krlab {

/// Variance of a line from its runs.
struct LineVariance {
    double variance = 0;
    double freedom = 0; ///< degrees of freedom; 0 if there is no second run
};

/// What all lines together tell of the noise of one.
struct CommonNoise {
    double variance = 0;
    double freedom = 0; ///< as many runs as this is worth; infinite if the lines differ by chance alone

    /// A line's variance drawn towards the common one.
    LineVariance moderate(const LineVariance& line) const;
};

/// The common noise from lines with runs of their own. Lines without any are left out; variances below `least` count as
/// that. Without a single line with runs the result has no freedom.
CommonNoise commonNoise(const std::vector<LineVariance>& lines, double least);

/// The common noise from one difference a line, by the scale and the tails of all differences about 0: Student's
/// distribution through their median and their 95 % point.
CommonNoise noiseOfDifferences(const std::vector<double>& differences, double least);

/// Half width of the interval of a difference with this variance that misses with `tail` on each side; infinite if the
/// freedom is too small for any.
double halfWidth(const LineVariance& variance, double tail);

} // namespace krlab
