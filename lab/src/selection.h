// How one process of the rig is made to measure a chosen set of lines: an ini-file with a section for each function.
#pragma once

#include "line.h"
#include "rigkeys.h"

#include <string>
#include <vector>

namespace krlab {

/// Keys and ini-file of one process.
struct Selection {
    std::vector<std::string> keys; ///< the user's keys without those that select, and one -f= for each function
    std::string ini;               ///< text of the ini-file
};

/// The rig walks the product of the values that a function's section gives; so the product of the values that occur in
/// the lines is what gets measured. The user's -d values for parameters of the lines give way to the lines' own; all
/// others keep their effect, as does the user's ini-file, whose text is `userIni`. Each line is measured `repeats`
/// times, if it has a parameter to say so.
Selection selectLines(const std::vector<Line>& lines, const RigKeys& userKeys, const std::string& userIni,
                      int repeats = 1);

/// The number of lines that the rig will measure for these.
size_t gridSize(const std::vector<Line>& lines);

} // namespace krlab
