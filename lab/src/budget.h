// Budgets: the calls that a codec makes in a frame, and what they take together.
#pragma once

#include "line.h"

#include <map>
#include <string>
#include <vector>

namespace krlab {

/// One kind of call. Its line is the one of the rig's grid that is the call, or comes nearest to it.
struct BudgetCall {
    Line line;
    double calls = 0; ///< in a frame; 0.5 is every other frame
};

/// One side of a codec at one rate.
struct Budget {
    std::string name;        ///< "GSM FR coder"
    double frameSeconds = 0; ///< speech in a frame
    std::vector<BudgetCall> calls;
    std::vector<std::string> missing; ///< work of a frame for which the rig has no line, in words
};

/// Reads a file
///
///     { "schema": "krlab-budget-1", "codecs": [ { "name": "GSM FR coder", "frame_seconds": 0.02,
///         "calls": [ { "function": "veksAutoCorr_16s32s", "parameters": { "lenght": "160" }, "calls": 1 } ],
///         "missing": [ "..." ] } ] }
///
/// Throws Fault with the file and the place in it for what is not so.
std::vector<Budget> parseBudgets(const std::string& file, const std::string& text);

/// One kind of call with its clocks.
struct BudgetShare {
    BudgetCall call;
    double clocks = 0; ///< of one call; negative if the line was not measured
    double frame() const { return clocks * call.calls; }
};

/// What a budget comes to.
struct BudgetSum {
    std::vector<BudgetShare> shares; ///< the dearest first; those without a figure last
    double clocks = 0;               ///< of a frame
    bool whole = true;               ///< every line has a figure
    /// Share of a core that runs so many clocks a second.
    double core(const Budget& budget, double clocksPerSecond) const {
        return clocks / (budget.frameSeconds * clocksPerSecond);
    }
};
BudgetSum sumBudget(const Budget& budget, const std::map<Line, double>& clocks);

} // namespace krlab
