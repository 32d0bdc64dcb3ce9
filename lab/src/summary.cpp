#include "summary.h"

#include "fault.h"
#include "text.h"

#include <fmt/format.h>

namespace krlab {

namespace {

constexpr std::string_view sumHeading =
    "Function,Class,Control87,Status87,ControlSSX,StatusSSX,Test,Time (sec.),SrcName,"
    "Result,ExeName";
constexpr size_t cellsOfRow = 11;

} // namespace

std::vector<SummaryRun> parseSummary(const std::string& file, std::string_view text) {
    std::vector<SummaryRun> runs;
    bool inRows = false;
    long long number = 0;
    while (!text.empty()) {
        const size_t end = text.find('\n');
        const bool whole = end != std::string_view::npos;
        const std::string_view line = trimmed(text.substr(0, end));
        text.remove_prefix(whole ? end + 1 : text.size());
        ++number;
        if (line.starts_with("CPU,")) {
            runs.emplace_back();
            inRows = false;
        } else if (line == sumHeading) {
            if (runs.empty()) {
                runs.emplace_back();
            }
            inRows = true;
        } else if (!runs.empty() && line.starts_with("Start,") && !inRows) {
            runs.back().start = line.substr(6);
        } else if (inRows && line == "END_DATA") {
            runs.back().ended = true;
            inRows = false;
        } else if (inRows && !line.empty()) {
            const std::vector<std::string_view> cells = split(line, ',');
            if (cells.size() == cellsOfRow) {
                runs.back().tests.push_back(
                    {std::string(cells[0]), std::string(cells[6]), std::string(cells[8]), std::string(cells[9]), {}});
            } else if (whole && line.find("CPU,") == std::string_view::npos) {
                throw Fault(file, number,
                            fmt::format("{} cells in a row of a summary, not {}", cells.size(), cellsOfRow));
            }
        }
    }
    if (runs.empty()) {
        throw Fault(file, "this is no summary table of the rig");
    }
    return runs;
}

} // namespace krlab
