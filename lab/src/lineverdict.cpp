#include "lineverdict.h"

#include <cmath>

namespace krlab {

namespace {

bool changed(const LineVerdict& line) {
    return line.verdict == Verdict::slower || line.verdict == Verdict::faster;
}

} // namespace

LineVerdict lineVerdict(const Line& line, const LowReadings& readings, double tail, double threshold, double level) {
    LineVerdict result;
    result.line = line;
    const LowShift shift = readings.shift(tail);
    result.ratio = std::exp(shift.estimate);
    result.low = std::exp(shift.bounds.low);
    result.high = std::exp(shift.bounds.high);
    result.passes = readings.rounds();
    // The clocks stand around the middle of both sides, so that their quotient is the ratio.
    result.older = std::exp(level + shift.logClocks - shift.estimate / 2);
    result.newer = std::exp(level + shift.logClocks + shift.estimate / 2);
    result.verdict = judge(result.ratio, result.low, result.high, threshold);
    return result;
}

std::vector<LineVerdict> judgeTogether(size_t count, double confidence,
                                       const std::function<LineVerdict(size_t, double tail)>& judged) {
    const double error = (1 - confidence) / 2;
    std::vector<LineVerdict> lines(count);
    size_t accused = 0;
    for (bool found = true; found && accused < count;) {
        found = false;
        const double tail = error / static_cast<double>(count - accused);
        for (size_t i = 0; i < count; ++i) {
            if (changed(lines[i])) {
                continue;
            }
            lines[i] = judged(i, tail);
            if (changed(lines[i])) {
                ++accused;
                found = true;
            } else {
                lines[i].verdict = Verdict::undecided;
            }
        }
    }
    for (size_t i = 0; i < count; ++i) {
        if (const LineVerdict alone = judged(i, error); !changed(lines[i]) && alone.verdict == Verdict::same) {
            lines[i] = alone;
        }
    }
    return lines;
}

} // namespace krlab
