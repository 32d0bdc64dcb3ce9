#include "rounds.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace krlab {

namespace {

// The low readings are at most this share of all: those above may stem from a slow phase. The more of them stray to the
// wrong side without harm, the better, up to a number beyond which it brings nothing.
constexpr double lowShare = 0.25;
constexpr int mostSpare = 8;

/// The fewest tosses of a coin of which at most `spare` show heads with a chance of no more than `tail`.
int tossesFor(int spare, double tail) {
    for (int tosses = spare + 1;; ++tosses) {
        double term = std::exp2(-tosses);
        double sum = term;
        for (int i = 0; i < spare; ++i) {
            term *= static_cast<double>(tosses - i) / (i + 1);
            sum += term;
        }
        if (sum <= tail) {
            return tosses;
        }
    }
}

double reading(const Round& round, Side side, size_t line) {
    return line < round[side].size() ? round[side][line] : std::numeric_limits<double>::quiet_NaN();
}

} // namespace

int leastRounds(double tail) {
    return tossesFor(0, tail);
}

LowReadings::LowReadings(std::span<const Round> rounds, size_t line) {
    for (const Round& round : rounds) {
        const double older = reading(round, sideOld, line);
        const double newer = reading(round, sideNew, line);
        if (std::isfinite(older) && std::isfinite(newer)) {
            m_sorted[sideOld].push_back(older);
            m_sorted[sideNew].push_back(newer);
        }
    }
    for (std::vector<double>& side : m_sorted) {
        std::sort(side.begin(), side.end());
    }
}

LowReadings::LowReadings(std::vector<double> older, std::vector<double> newer)
    : m_sorted{std::move(older), std::move(newer)} {
    for (std::vector<double>& side : m_sorted) {
        std::sort(side.begin(), side.end());
    }
}

LowShift LowReadings::shift(double tail) const {
    const std::vector<double>& older = m_sorted[sideOld];
    const std::vector<double>& newer = m_sorted[sideNew];
    int spare = 0;
    while (spare < mostSpare && tossesFor(spare + 1, tail) <= lowShare * rounds()) {
        ++spare;
    }
    // In ascending order, counted from 0: the reading that stands for the one side's low end, and the other side's one
    // up to which all the others of the lowest lie.
    const auto first = static_cast<size_t>(spare);
    const auto last = static_cast<size_t>(tossesFor(spare, tail) - spare - 1);
    LowShift shift;
    std::vector<double> differences;
    std::vector<double> sums;
    for (size_t i = first; i <= last && i < older.size(); ++i) {
        differences.push_back(newer[i] - older[i]);
        sums.push_back((newer[i] + older[i]) / 2);
    }
    shift.estimate = medianOf(std::move(differences));
    shift.logClocks = medianOf(std::move(sums));
    shift.bounds.known = last < older.size();
    shift.bounds.low = shift.bounds.known ? newer[first] - older[last] : -std::numeric_limits<double>::infinity();
    shift.bounds.high = shift.bounds.known ? newer[last] - older[first] : std::numeric_limits<double>::infinity();
    return shift;
}

CommonShift commonShift(std::span<const Round> rounds, double tail) {
    std::vector<double> medians;
    for (const Round& round : rounds) {
        std::vector<double> differences;
        for (size_t line = 0; line < std::min(round[sideOld].size(), round[sideNew].size()); ++line) {
            const double value = reading(round, sideNew, line) - reading(round, sideOld, line);
            if (std::isfinite(value)) {
                differences.push_back(value);
            }
        }
        medians.push_back(medianOf(std::move(differences)));
    }
    const WalshAverages averages(medians);
    CommonShift shift;
    shift.estimate = averages.pairs() > 0 ? averages.estimate() : 0.0;
    shift.bounds = averages.bounds(tail);
    return shift;
}

} // namespace krlab
