// Finishing a run that was cut off: what is done, what is left, and the rows that are added.
#pragma once

#include "pass.h"

#include <set>
#include <string>
#include <vector>

namespace krlab {

/// The state of a table whose last run was cut off.
struct ResumeState {
    std::string text; ///< the file up to its last whole row
    bool carriageReturns = false;
    std::set<std::string> rows;         ///< identities of the last run's rows: the cells before the comment
    std::vector<std::string> functions; ///< functions of the last run's rows, in order, each once
    std::string heading;
};

/// Reads the table file. Throws Fault if there is no run to resume.
ResumeState resumeState(const std::string& file);

/// The functions that are still to be measured: the last one with rows, which may lack some, and all behind it. `tests`
/// are those that the run's keys select, in running order. Throws Fault if the table's last function is not among them.
std::vector<std::string> functionsLeft(const ResumeState& state, const std::vector<TestName>& tests);

/// Takes the rows of a new table that are not there yet, with the names before them; returns how many.
size_t addRows(ResumeState& state, const std::string& table, std::string& added);

} // namespace krlab
