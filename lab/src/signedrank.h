// The shift of paired differences: Wilcoxon's signed-rank test turned into an estimate and an interval. Knows nothing
// of lines or passes.
//
// F. Wilcoxon, Individual comparisons by ranking methods, Biometrics Bulletin 1 (1945); J. L. Hodges and E. L. Lehmann,
// Estimates of location based on rank tests, Annals of Mathematical Statistics 34 (1963); the interval is Tukey's, see
// M. Hollander and D. A. Wolfe, Nonparametric Statistical Methods, chapter 3.
#pragma once

#include <span>
#include <vector>

namespace krlab {

/// Bounds of a shift. `known` is false if there are too few pairs for the wanted level: the bounds are then infinite.
struct Bounds {
    double low = 0;
    double high = 0;
    bool known = false;
};

/// The averages of all pairs of differences (each with itself too), from which estimate and interval are read.
///
/// The interval assumes nothing but that the differences are independent and symmetric about the shift. Where the order
/// of the two subjects is drawn by lot in each round, that holds for two copies of one subject whatever the noise is
/// like.
class WalshAverages {
public:
    /// Differences that are not finite are left out.
    explicit WalshAverages(std::span<const double> differences);

    int pairs() const { return m_pairs; }
    /// The Hodges-Lehmann estimate: the median of the averages. Not a number without pairs.
    double estimate() const;
    /// The interval that misses the shift with at most `tail` on each side.
    Bounds bounds(double tail) const;

private:
    int m_pairs;
    std::vector<double> m_averages; ///< ascending
};

/// The largest k with P(T < k) <= tail for the signed-rank statistic T of n pairs; 0 if there is none. Exact up to 200
/// pairs, by the normal distribution above.
int signedRankBound(int pairs, double tail);

/// The middle value, the mean of the two middle ones of an even number; not a number if empty.
double medianOf(std::vector<double> values);
/// Not a number if empty.
double meanOf(const std::vector<double>& values);

} // namespace krlab
