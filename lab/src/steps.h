// Where the level of a course of readings changes. Knows nothing of lines or passes.
//
// E-divisive: D. S. Matteson and N. A. James, A nonparametric approach for multiple change point analysis of
// multivariate data, Journal of the American Statistical Association 109 (2014). With the exponent 2 the divergence of
// two parts is the squared distance of their means, as change detectors for performance take it: a test on means. A
// part is divided at its largest divergence if that is significant, and then each half by itself.
//
// Significance is that of a permutation test: how often does a shuffled part have as large a divergence anywhere?
// Levels finer than the permutations resolve (many lines share the error) come from the boundary of a Brownian bridge:
// R. G. Miller and D. Siegmund, Maximally selected chi square statistics, Biometrics 38 (1982).
//
// All divisions of a long part share the error, so that a step in the newest readings has to be large. They are looked
// at by a test of their own: windows of a few readings against all before them, as in the window-limited detectors of
// T. L. Lai, Sequential changepoint detection in quality control and dynamical systems, Journal of the Royal
// Statistical Society B 57 (1995); upwards only, by a t test on winsorised readings (J. W. Tukey and D. H. McLaughlin,
// Sankhya A 25, 1963), since some readings of a busy machine are disturbed. Divisions have half of the error, each of
// the three windows a sixth.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace krlab {

/// A change of level between two neighbours of a course.
struct Step {
    size_t at = 0;     ///< index of the first reading behind it
    double before = 0; ///< mean from the step before on
    double after = 0;  ///< mean up to the next step
};

struct StepRule {
    double error = 0.01;    ///< chance that a course without a step has one found
    size_t least = 3;       ///< readings of a part: fewer can't be told from outliers
    int permutations = 999; ///< of the test
    unsigned long seed = 1; ///< of the permutations
};

/// The chance that the newest readings of a course without a step are as far above those before them, in the window of
/// three to five where that is the least likely. 1 where they are not above, or where too few are before them.
struct NewestRise {
    size_t at = 0; ///< index of the first reading of the window
    double chance = 1;
};
NewestRise newestRise(std::span<const double> course);

/// The steps of a course in its order. Readings must be finite.
std::vector<Step> findSteps(const std::vector<double>& course, const StepRule& rule = {});

/// The chance that `count` readings without a step show a statistic of this size at the best of all divisions into
/// parts of at least `least`: the statistic is Student's t of the two parts' means. The smaller one of the bridge's
/// boundary and of the bound by the number of divisions.
double chanceOfDivision(double statistic, size_t count, size_t least);

} // namespace krlab
