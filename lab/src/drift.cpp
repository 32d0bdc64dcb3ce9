#include "drift.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace krlab {

namespace {

constexpr double none = std::numeric_limits<double>::quiet_NaN();

// Functions around a line that tell the drift, and the lines of each that do: phases last for hundreds of lines, and
// the median of nine is not moved by four that have a change of their own.
constexpr size_t neighbours = 9;
constexpr size_t linesOfNeighbour = 3;

double reading(const Round& round, Side side, size_t line) {
    return line < round[side].size() ? round[side][line] : none;
}

// The usual reading of each control, over both sides of all rounds.
std::vector<double> usualReadings(const std::vector<const Round*>& rounds, const std::vector<LineRole>& roles) {
    std::vector<double> usual(roles.size(), none);
    std::vector<double> values;
    for (size_t line = 0; line < roles.size(); ++line) {
        if (!roles[line].control) {
            continue;
        }
        values.clear();
        for (const Round* round : rounds) {
            for (const Side side : {sideOld, sideNew}) {
                if (const double value = reading(*round, side, line); std::isfinite(value)) {
                    values.push_back(value);
                }
            }
        }
        usual[line] = medianOf(values);
    }
    return usual;
}

// The controls of one function that stand next to each other in a pass, and how far they are from their usual readings:
// at the end that a line behind them sees, and at the one that a line before them sees.
struct Block {
    size_t function;
    size_t first;
    size_t last;
    double awayAtFirst;
    double awayAtLast;
};

std::vector<Block> blocksOf(const Round& round, Side side, const std::vector<LineRole>& roles,
                            const std::vector<double>& usual) {
    std::vector<Block> blocks;
    std::vector<double> away;
    const auto close = [&] {
        if (!away.empty()) {
            const auto few = static_cast<std::ptrdiff_t>(std::min(away.size(), linesOfNeighbour));
            blocks.back().awayAtFirst = medianOf({away.begin(), away.begin() + few});
            blocks.back().awayAtLast = medianOf({away.end() - few, away.end()});
            away.clear();
        }
    };
    for (size_t line = 0; line < roles.size(); ++line) {
        const double value = reading(round, side, line) - usual[line];
        if (!std::isfinite(value)) {
            continue;
        }
        if (blocks.empty() || blocks.back().function != roles[line].function) {
            close();
            blocks.push_back({roles[line].function, line, line, 0, 0});
        }
        blocks.back().last = line;
        away.push_back(value);
    }
    close();
    return blocks;
}

double driftAt(size_t line, size_t function, const std::vector<Block>& blocks) {
    const auto behind =
        std::partition_point(blocks.begin(), blocks.end(), [line](const Block& block) { return block.first <= line; });
    auto right = static_cast<size_t>(behind - blocks.begin());
    size_t left = right; // one behind the next block to the left
    std::array<double, neighbours> values{};
    size_t count = 0;
    while (count < neighbours && (left > 0 || right < blocks.size())) {
        const bool back = right == blocks.size() ||
                          (left > 0 && line - std::min(line, blocks[left - 1].last) <= blocks[right].first - line);
        const Block& block = back ? blocks[--left] : blocks[right++];
        if (block.function != function) {
            values[count++] = back ? block.awayAtLast : block.awayAtFirst;
        }
    }
    return count == 0 ? 0.0 : medianOf({values.begin(), values.begin() + static_cast<std::ptrdiff_t>(count)});
}

// The readings of one pass less its drift.
std::vector<double> steadied(const Round& round, Side side, const std::vector<LineRole>& roles,
                             const std::vector<double>& usual) {
    const std::vector<Block> blocks = blocksOf(round, side, roles, usual);
    std::vector<double> result(roles.size(), none);
    for (size_t line = 0; line < roles.size(); ++line) {
        if (const double value = reading(round, side, line); std::isfinite(value)) {
            result[line] = value - driftAt(line, roles[line].function, blocks);
        }
    }
    return result;
}

} // namespace

std::vector<std::vector<double>> pairedDifferences(const std::vector<const Round*>& rounds,
                                                   const std::vector<LineRole>& roles) {
    const std::vector<double> usual = usualReadings(rounds, roles);
    std::vector<std::vector<double>> differences(roles.size());
    for (const Round* round : rounds) {
        const std::vector<double> old = steadied(*round, sideOld, roles, usual);
        const std::vector<double> fresh = steadied(*round, sideNew, roles, usual);
        for (size_t line = 0; line < roles.size(); ++line) {
            differences[line].push_back(fresh[line] - old[line]);
        }
    }
    return differences;
}

CommonShift commonShift(const std::vector<const Round*>& rounds, const std::vector<LineRole>& roles, double tail) {
    std::vector<double> medians;
    for (const Round* round : rounds) {
        std::vector<double> differences;
        for (size_t line = 0; line < roles.size(); ++line) {
            const double value = reading(*round, sideNew, line) - reading(*round, sideOld, line);
            if (roles[line].control && std::isfinite(value)) {
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
