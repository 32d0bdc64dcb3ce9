#include "drift.h"

#include <algorithm>
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

// The controls that one pass measured, in its order.
struct Control {
    size_t line;
    size_t function;
    double away; // from its usual reading
};

// Walks from a line in one direction and gives one value for each function on the way, the nearest first.
class Walk {
public:
    Walk(const std::vector<Control>& controls, std::ptrdiff_t start, std::ptrdiff_t step)
        : m_controls(controls), m_at(start), m_step(step) {}

    void leaveFunction(size_t function) {
        while (!atEnd() && here().function == function) {
            m_at += m_step;
        }
    }
    bool atEnd() const { return m_at < 0 || m_at >= static_cast<std::ptrdiff_t>(m_controls.size()); }
    size_t distanceTo(size_t line) const { return here().line > line ? here().line - line : line - here().line; }
    double next() {
        const size_t function = here().function;
        std::vector<double> values;
        for (; !atEnd() && here().function == function; m_at += m_step) {
            if (values.size() < linesOfNeighbour) {
                values.push_back(here().away);
            }
        }
        return medianOf(std::move(values));
    }

private:
    const Control& here() const { return m_controls[static_cast<size_t>(m_at)]; }

    const std::vector<Control>& m_controls;
    std::ptrdiff_t m_at;
    std::ptrdiff_t m_step;
};

double driftAt(size_t line, size_t function, const std::vector<Control>& controls) {
    const auto from = std::lower_bound(controls.begin(), controls.end(), line,
                                       [](const Control& control, size_t wanted) { return control.line < wanted; });
    Walk before(controls, from - controls.begin() - 1, -1);
    Walk behind(controls, from - controls.begin(), 1);
    before.leaveFunction(function);
    behind.leaveFunction(function);
    std::vector<double> values;
    while (values.size() < neighbours && !(before.atEnd() && behind.atEnd())) {
        const bool back = behind.atEnd() || (!before.atEnd() && before.distanceTo(line) <= behind.distanceTo(line));
        values.push_back(back ? before.next() : behind.next());
    }
    return values.empty() ? 0.0 : medianOf(std::move(values));
}

// The readings of one pass less its drift.
std::vector<double> steadied(const Round& round, Side side, const std::vector<LineRole>& roles,
                             const std::vector<double>& usual) {
    std::vector<Control> controls;
    for (size_t line = 0; line < roles.size(); ++line) {
        if (const double away = reading(round, side, line) - usual[line]; std::isfinite(away)) {
            controls.push_back({line, roles[line].function, away});
        }
    }
    std::vector<double> result(roles.size(), none);
    for (size_t line = 0; line < roles.size(); ++line) {
        if (const double value = reading(round, side, line); std::isfinite(value)) {
            result[line] = value - driftAt(line, roles[line].function, controls);
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
