#include "steps.h"

#include "signedrank.h"

#include <algorithm>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <cmath>
#include <limits>
#include <random>
#include <span>

namespace krlab {

namespace {

// What divisions, and each window of the newest readings, may spend of the error.
constexpr double shareOfDivisions = 0.5;
constexpr double shareOfWindow = 1.0 / 6;

/// The best division of a part.
struct Division {
    size_t at = 0;
    double divergence = 0; ///< squared distance of the means, weighted by n m / (n + m)
};

double sumOf(std::span<const double> values) {
    double sum = 0;
    for (const double value : values) {
        sum += value;
    }
    return sum;
}

Division bestDivision(std::span<const double> part, size_t least) {
    const double total = sumOf(part);
    const auto count = static_cast<double>(part.size());
    double sum = 0;
    Division best;
    for (size_t i = 0; i + least < part.size(); ++i) {
        sum += part[i];
        const auto left = static_cast<double>(i + 1);
        if (i + 1 < least) {
            continue;
        }
        const double right = count - left;
        const double distance = sum / left - (total - sum) / right;
        if (const double value = distance * distance * left * right / count; value > best.divergence) {
            best = {i + 1, value};
        }
    }
    return best;
}

/// Student's t of a division.
double statisticOf(std::span<const double> part, const Division& division) {
    const double mean = sumOf(part) / static_cast<double>(part.size());
    double squares = 0;
    for (const double value : part) {
        squares += (value - mean) * (value - mean);
    }
    // What the division does not explain. Readings that are equal on each side leave nothing but rounding.
    const double rest = squares - division.divergence;
    return rest > 1e-12 * squares ? std::sqrt(division.divergence / (rest / static_cast<double>(part.size() - 2)))
                                  : std::numeric_limits<double>::infinity();
}

bool significant(std::span<const double> part, const Division& division, const StepRule& rule,
                 std::mt19937_64& random) {
    const double resolved = 1.0 / (rule.permutations + 1);
    const double error = rule.error * shareOfDivisions;
    if (error < 2 * resolved) {
        return chanceOfDivision(statisticOf(part, division), part.size(), rule.least) < error;
    }
    int reached = 0;
    std::vector<double> shuffled(part.begin(), part.end());
    for (int i = 0; i < rule.permutations; ++i) {
        std::shuffle(shuffled.begin(), shuffled.end(), random);
        // Shuffling changes the rounding of equal divisions.
        reached += bestDivision(shuffled, rule.least).divergence >= division.divergence * (1 - 1e-9) ? 1 : 0;
        if ((reached + 1) * resolved >= error) {
            return false;
        }
    }
    return true;
}

void divide(std::span<const double> course, size_t begin, size_t end, const StepRule& rule, std::mt19937_64& random,
            std::vector<size_t>& bounds) {
    if (end - begin < 2 * rule.least) {
        return;
    }
    const std::span<const double> part = course.subspan(begin, end - begin);
    const Division division = bestDivision(part, rule.least);
    if (division.divergence > 0 && significant(part, division, rule, random)) {
        divide(course, begin, begin + division.at, rule, random, bounds);
        bounds.push_back(begin + division.at);
        divide(course, begin + division.at, end, rule, random, bounds);
    }
}

// The windows of the newest readings; fewer than three can't be told from outliers, for more the divisions will do.
constexpr size_t leastNewest = 3;
constexpr size_t mostNewest = 5;
// What tells level and noise before them.
constexpr size_t leastBefore = 12;
// Readings are cut off at so many usual deviations from the median.
constexpr double cutOff = 2.5;

/// Student's t of the last `newest` readings against those before, whose deviation counts.
double riseOf(std::span<const double> course, size_t newest) {
    const std::span<const double> before = course.first(course.size() - newest);
    const double middle = medianOf({before.begin(), before.end()});
    std::vector<double> distances;
    for (const double value : before) {
        distances.push_back(std::abs(value - middle));
    }
    const double reach = cutOff * 1.4826 * medianOf(std::move(distances)); // of normal readings the deviation
    const auto cut = [&](double value) { return std::clamp(value, middle - reach, middle + reach); };
    const auto count = static_cast<double>(before.size());
    double sum = 0;
    double squares = 0;
    for (const double value : before) {
        const double off = cut(value) - middle;
        sum += off;
        squares += off * off;
    }
    double risen = 0;
    for (const double value : course.last(newest)) {
        risen += cut(value) - middle;
    }
    const double variance = (squares - sum * sum / count) / (count - 1);
    const double rise = risen / static_cast<double>(newest) - sum / count;
    return rise <= 0 ? 0 : rise / std::sqrt(variance * (1 / count + 1 / static_cast<double>(newest)));
}

} // namespace

NewestRise newestRise(std::span<const double> course) {
    NewestRise rise;
    for (size_t newest = leastNewest; newest <= mostNewest && newest + leastBefore <= course.size(); ++newest) {
        const double statistic = riseOf(course, newest);
        const double freedom = static_cast<double>(course.size() - newest - 1);
        const double chance =
            std::isfinite(statistic)
                ? boost::math::cdf(boost::math::complement(boost::math::students_t(freedom), statistic))
                : 0.0;
        if (chance < rise.chance) {
            rise = {course.size() - newest, chance};
        }
    }
    return rise;
}

double chanceOfDivision(double statistic, size_t count, size_t least) {
    if (!std::isfinite(statistic)) {
        return 0;
    }
    const auto n = static_cast<double>(count);
    const auto k = static_cast<double>(least);
    const double tail = boost::math::cdf(boost::math::complement(boost::math::students_t(n - 2), std::abs(statistic)));
    const double byNumber = 2 * tail * (n - 2 * k + 1);
    if (!(tail > 0)) {
        return 0;
    }
    // The normal variable with the same tail.
    const double b = boost::math::quantile(boost::math::complement(boost::math::normal(), tail));
    double byBoundary = 1;
    if (b > 1) {
        const double density = boost::math::pdf(boost::math::normal(), b);
        byBoundary = 4 * density / b + density * (b - 1 / b) * 2 * std::log((n - k) / k);
    }
    return std::min({1.0, byNumber, byBoundary});
}

std::vector<Step> findSteps(const std::vector<double>& course, const StepRule& rule) {
    std::mt19937_64 random(rule.seed);
    std::vector<size_t> bounds = {0};
    divide(course, 0, course.size(), rule, random, bounds);
    const size_t last = bounds.back();
    const NewestRise rise = newestRise(std::span(course).subspan(last));
    if (rise.chance < rule.error * shareOfWindow) {
        bounds.push_back(last + rise.at);
    }
    bounds.push_back(course.size());
    std::vector<Step> steps;
    const auto meanOf = [&](size_t begin, size_t end) {
        return sumOf(std::span(course).subspan(begin, end - begin)) / static_cast<double>(end - begin);
    };
    for (size_t i = 1; i + 1 < bounds.size(); ++i) {
        steps.push_back({bounds[i], meanOf(bounds[i - 1], bounds[i]), meanOf(bounds[i], bounds[i + 1])});
    }
    return steps;
}

} // namespace krlab
