// What a report page shows, as data: the figures of one or two subjects line by line, their verdicts, the course over
// time, and what was measured. The page itself is built by reportpage.
#pragma once

#include "passlist.h"
#include "verdict.h"

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

namespace krlab {

/// One point of the course: a pass, or successive passes of one subject and run put together.
struct CoursePoint {
    Identity identity;
    std::string label;
    std::optional<long long> time; ///< seconds since 1970; nothing if the start is told in no known form
    long long run = 0;
    size_t passes = 0;
    bool complete = true;
    int side = -1;    ///< index into ReportInput::sides, -1 for none of them
    double level = 1; ///< what moved all lines alike: their median ratio to their usual readings on that machine
};

/// A change in the course of one line.
struct CourseStep {
    std::uint32_t line = 0; ///< index into the course's lines
    size_t point = 0;       ///< the first point behind it
    double factor = 1;      ///< level behind it to the level before it
};

/// Points of one machine with the clocks per call of each line, in the order of time.
struct Course {
    const PassList* list = nullptr;
    std::vector<CoursePoint> points;
    std::vector<std::vector<double>> clocks; ///< for each point by line of the list; not a number where it has none
    std::vector<CourseStep> steps;
    size_t merged = 1;  ///< passes in a point, at most
    size_t leftOut = 0; ///< older points that would not fit
};

struct ReportInput {
    std::string title;
    std::string made;                      ///< time text
    std::vector<const PassList*> sides;    ///< old and new, or one
    std::optional<VerdictReport> verdicts; ///< of two sides
};

/// How the readings of a line differ between passes.
struct Band {
    double middle = 0;   ///< median
    double low = 0;      ///< from 10 passes on the 10 % and 90 % points, the extremes below, the rig's own accuracy
    double high = 0;     ///< of a single pass
    double smallest = 0; ///< reading
    size_t passes = 0;   ///< 0: no reading
};
/// The band of readings with the rig's accuracy of each (negative if not told).
Band bandOf(std::vector<double> clocks, double accuracy);

/// The passes of the subject that was measured last.
PassList latestSubject(const PassList& all);
/// True if both are passes of one subject under one name: two copies of one library are two subjects, and of tables
/// nothing but the name tells.
bool alike(const Identity& a, const Identity& b);

/// The points of the course by time, each with what moved all lines alike. With more than `mostReadings` readings,
/// successive passes of one run are put together; what is too much still is left out, the oldest first.
Course courseOf(const PassList& list, const std::vector<const PassList*>& sides, size_t mostReadings);

/// Seconds since 1970 of "2026-11-22T02:30:05+01:00" or of "Sun Nov 22 02:25:47 2026" in the local zone.
std::optional<long long> secondsOf(const std::string& time);

/// The data of the page, { "schema": "krlab-report-1", ... }; docs/lab.md tells the members.
nlohmann::json reportData(const ReportInput& input, const Course& course);

} // namespace krlab
