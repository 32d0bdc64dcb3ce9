// What several passes tell of each line: smallest, median, and whether the readings agree.
#pragma once

#include "pass.h"

#include <map>
#include <string>
#include <vector>

namespace krlab {

/// The readings of one line in the order of the passes.
struct Readings {
    Line line;
    std::vector<double> clocks; ///< per call
    double elements = 0;
    bool looped = false; ///< readings by the method for short calls; others of this line are no longer taken

    double smallest() const;
    double median() const;
    /// How far the third smallest reading lies above the smallest, as a share of it; 1 with fewer than three.
    /// Disturbances only make calls slower, so that the small readings are the ones to agree.
    double spread() const;
};

class LineCourse {
public:
    /// Calls below this many clocks are measured in long loops: the reading of the counter is a large part of them.
    static constexpr double shortCall = 50;

    /// Takes the figures of a pass; `looped` tells that it used the method for short calls.
    void take(const Pass& pass, bool looped);

    /// In the order in which the lines came.
    const std::vector<Readings>& lines() const { return m_lines; }
    /// Lines that were never measured in long loops and take less than shortCall clocks.
    std::vector<Line> shortLines() const;
    /// Lines whose readings lie further apart than `accuracy`; with `looped`, only those measured that way, else the
    /// others.
    std::vector<Line> restless(double accuracy, bool looped) const;

private:
    std::vector<Readings> m_lines;
    std::map<Line, size_t> m_index;
};

/// The keys for short calls: Iterative from 64 loops. Empty if the user chose a method.
std::vector<std::string> shortCallKeys(const std::vector<std::string>& userKeys);
/// Passes over all that the user's keys select, with the keys for short calls before them.
PassRequest shortCallRequest(Subject subject, const std::vector<std::string>& userKeys, double timeLimit);

} // namespace krlab
