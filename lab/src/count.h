// Instructions per call of each line: the rig under callgrind, with one call a line.
//
// Callgrind collects inside the generated loops alone and writes a dump at the end of each line. What the loop itself,
// the counter and the restoring of data take is not part of a figure, since the calls of the measured function are told
// apart in the dump: that is what an empty call would have to be taken off for.
#pragma once

#include "pass.h"

#include <functional>
#include <string>
#include <vector>

namespace krlab {

struct CountRequest {
    Subject subject;
    std::vector<std::string> keys; ///< the user's keys for the rig
    std::vector<Line> lines;       ///< only these; empty for all that the keys select
    double timeLimit = 1800;       ///< seconds for each process
    size_t lanes = 1;              ///< processes at once
    std::function<void(const std::string& text, double share)> progress;
};

/// The figures hold instructions in place of clocks. Throws Fault if callgrind is missing or the keys choose a method.
Pass countPass(const CountRequest& request);

/// Instructions of one call of `function`, the mean over all calls out of the program in this dump; negative if there
/// is none.
double instructionsOf(const std::string& function, const std::string& program, const std::string& dump);

} // namespace krlab
