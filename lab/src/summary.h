// Reading the rig's summary tables: how each test of a run ended.
#pragma once

#include "figure.h"

#include <string>
#include <string_view>
#include <vector>

namespace krlab {

/// One run in a summary table.
struct SummaryRun {
    std::string start;          ///< as in the result table, so that both can be brought together
    std::vector<TestEnd> tests; ///< without messages
    bool ended = false;         ///< the closing figures are there: the run went to its end
};

/// Reads a summary table (-u, -U). Throws Fault with file and line for what no rig writes; a row cut off at the end of
/// a run is left out.
std::vector<SummaryRun> parseSummary(const std::string& file, std::string_view text);

} // namespace krlab
