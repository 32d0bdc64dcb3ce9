#include "signedrank.h"

#include <algorithm>
#include <boost/math/distributions/normal.hpp>
#include <cmath>
#include <limits>
#include <map>

namespace krlab {

namespace {

constexpr int exactPairs = 200;
constexpr double none = std::numeric_limits<double>::quiet_NaN();

double medianOfSorted(std::span<const double> values) {
    if (values.empty()) {
        return none;
    }
    const size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

int exactBound(int pairs, double tail) {
    // Probability of each rank sum: a pair's rank is in the sum or not, with equal chances.
    const int largest = pairs * (pairs + 1) / 2;
    std::vector<double> chance(static_cast<size_t>(largest) + 1, 0.0);
    chance[0] = 1;
    for (int rank = 1; rank <= pairs; ++rank) {
        for (int sum = rank * (rank + 1) / 2; sum >= 0; --sum) {
            const auto at = static_cast<size_t>(sum);
            const double with = sum >= rank ? chance[static_cast<size_t>(sum - rank)] : 0.0;
            chance[at] = (chance[at] + with) / 2;
        }
    }
    double below = 0;
    for (int bound = 0; bound <= largest; ++bound) {
        below += chance[static_cast<size_t>(bound)];
        if (below > tail) {
            return bound;
        }
    }
    return largest;
}

int normalBound(int pairs, double tail) {
    const double n = pairs;
    const double mean = n * (n + 1) / 4;
    const double deviation = std::sqrt(n * (n + 1) * (2 * n + 1) / 24);
    const double quantile = boost::math::quantile(boost::math::normal(mean, deviation), tail);
    return std::max(0, static_cast<int>(std::floor(quantile - 0.5)));
}

} // namespace

WalshAverages::WalshAverages(std::span<const double> differences) {
    std::vector<double> finite;
    std::copy_if(differences.begin(), differences.end(), std::back_inserter(finite),
                 [](double value) { return std::isfinite(value); });
    m_pairs = static_cast<int>(finite.size());
    m_averages.reserve(finite.size() * (finite.size() + 1) / 2);
    for (size_t i = 0; i < finite.size(); ++i) {
        for (size_t j = i; j < finite.size(); ++j) {
            m_averages.push_back((finite[i] + finite[j]) / 2);
        }
    }
    std::sort(m_averages.begin(), m_averages.end());
}

double WalshAverages::estimate() const {
    return medianOfSorted(m_averages);
}

Bounds WalshAverages::bounds(double tail) const {
    const int bound = signedRankBound(m_pairs, tail);
    if (bound <= 0) {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        return {-infinity, infinity, false};
    }
    const auto k = static_cast<size_t>(bound);
    return {m_averages[k - 1], m_averages[m_averages.size() - k], true};
}

int signedRankBound(int pairs, double tail) {
    if (pairs <= 0 || !(tail > 0)) {
        return 0;
    }
    if (pairs > exactPairs) {
        return normalBound(pairs, tail);
    }
    // Thousands of lines ask for the same few bounds.
    thread_local std::map<std::pair<int, double>, int> known;
    const auto [at, added] = known.try_emplace({pairs, tail});
    if (added) {
        at->second = exactBound(pairs, tail);
    }
    return at->second;
}

double medianOf(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return medianOfSorted(values);
}

double meanOf(const std::vector<double>& values) {
    double sum = 0;
    for (const double value : values) {
        sum += value;
    }
    return sum / static_cast<double>(values.size());
}

} // namespace krlab
