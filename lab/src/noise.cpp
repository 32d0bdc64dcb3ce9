#include "noise.h"

#include "signedrank.h"

#include <algorithm>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <boost/math/special_functions/digamma.hpp>
#include <boost/math/special_functions/trigamma.hpp>
#include <cmath>
#include <limits>

namespace krlab {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
// Beyond this many degrees of freedom Student's distribution is taken for the normal one.
constexpr double mostFreedom = 1e4;
constexpr double leastTailFreedom = 1;
constexpr double tailPoint = 0.95;

double upperPoint(double freedom, double tail) {
    if (freedom >= mostFreedom) {
        return boost::math::quantile(boost::math::complement(boost::math::normal(), tail));
    }
    return boost::math::quantile(boost::math::complement(boost::math::students_t(freedom), tail));
}

// x with trigamma(x) = y; trigamma falls from infinity to 0.
double inverseTrigamma(double y) {
    double low = 1e-6;
    double high = mostFreedom;
    for (int i = 0; i < 200; ++i) {
        const double middle = std::sqrt(low * high);
        (boost::math::trigamma(middle) > y ? low : high) = middle;
    }
    return std::sqrt(low * high);
}

// The freedom of Student's distribution whose 95 % point of |t| is `ratio` medians of |t|.
double freedomOfTails(double ratio) {
    const auto of = [](double freedom) { return upperPoint(freedom, (1 - tailPoint) / 2) / upperPoint(freedom, 0.25); };
    if (ratio <= of(mostFreedom)) {
        return infinity;
    }
    double low = leastTailFreedom;
    double high = mostFreedom;
    for (int i = 0; i < 100; ++i) {
        const double middle = std::sqrt(low * high);
        (of(middle) > ratio ? low : high) = middle;
    }
    return std::sqrt(low * high);
}

} // namespace

LineVariance CommonNoise::moderate(const LineVariance& line) const {
    if (std::isinf(freedom)) {
        return {variance, infinity};
    }
    const double sum = freedom + line.freedom;
    return {sum > 0 ? (freedom * variance + line.freedom * line.variance) / sum : 0.0, sum};
}

CommonNoise commonNoise(const std::vector<LineVariance>& lines, double least) {
    // Moments of the logarithm of the variances: mean and spread of the common one, less what chance adds.
    std::vector<double> logs;
    double chance = 0;
    for (const LineVariance& line : lines) {
        if (line.freedom > 0) {
            const double half = line.freedom / 2;
            logs.push_back(std::log(std::max(line.variance, least)) - boost::math::digamma(half) + std::log(half));
            chance += boost::math::trigamma(half);
        }
    }
    if (logs.empty()) {
        return {};
    }
    const auto count = static_cast<double>(logs.size());
    double mean = 0;
    for (const double value : logs) {
        mean += value / count;
    }
    double spread = 0;
    for (const double value : logs) {
        spread += (value - mean) * (value - mean) / std::max(count - 1, 1.0);
    }
    const double excess = spread - chance / count;
    if (!(excess > boost::math::trigamma(mostFreedom / 2))) {
        return {std::exp(mean), infinity};
    }
    const double half = inverseTrigamma(excess);
    return {std::exp(mean + boost::math::digamma(half) - std::log(half)), 2 * half};
}

CommonNoise noiseOfDifferences(const std::vector<double>& differences, double least) {
    std::vector<double> sizes;
    sizes.reserve(differences.size());
    for (const double difference : differences) {
        sizes.push_back(std::abs(difference));
    }
    if (sizes.size() < 2) {
        return {};
    }
    std::sort(sizes.begin(), sizes.end());
    const double middle = std::max(medianOf(sizes), std::sqrt(least) * upperPoint(infinity, 0.25));
    const auto at = static_cast<size_t>(std::ceil(tailPoint * static_cast<double>(sizes.size()))) - 1;
    // A few lines tell no tail: their number bounds what may be claimed.
    const double freedom = std::min(freedomOfTails(sizes[at] / middle), static_cast<double>(sizes.size() - 1));
    const double scale = middle / upperPoint(freedom, 0.25);
    return {scale * scale, freedom};
}

double halfWidth(const LineVariance& variance, double tail) {
    return variance.freedom > 0 ? upperPoint(variance.freedom, tail) * std::sqrt(variance.variance) : infinity;
}

} // namespace krlab
