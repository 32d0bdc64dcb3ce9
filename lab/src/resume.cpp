#include "resume.h"

#include "fault.h"
#include "table.h"
#include "text.h"

#include <algorithm>
#include <fmt/format.h>

namespace krlab {

namespace {

constexpr std::string_view commentTitle = "Comment";

size_t commentColumn(std::string_view heading) {
    const std::vector<std::string_view> cells = split(heading, ',');
    return static_cast<size_t>(std::find(cells.begin(), cells.end(), commentTitle) - cells.begin());
}

/// The cells before the comment tell a row from all others of its run; so does the state of the caches in the comment.
std::string identityOf(std::string_view row, size_t column) {
    size_t at = 0;
    for (size_t i = 0; i < column && at != std::string_view::npos; ++i) {
        at = row.find(',', at == 0 ? 0 : at + 1);
    }
    if (at == std::string_view::npos) {
        return std::string(row);
    }
    std::string identity(row.substr(0, at));
    const std::string_view rest = row.substr(at + 1);
    for (const std::string_view state : {"parmNames", "inCache", "outofCache"}) {
        if (rest.starts_with(state)) {
            identity += std::string(",") + std::string(state);
        }
    }
    return identity;
}

} // namespace

ResumeState resumeState(const std::string& file) {
    ResumeState state;
    state.text = readFile(file);
    const Table table = parseTable(file, state.text);
    const TableRun& run = table.runs.back();
    state.carriageReturns = state.text.find("\r\n") != std::string::npos;
    // A row without its end is measured again.
    const size_t end = state.text.rfind('\n');
    state.text.resize(end == std::string::npos ? 0 : end + 1);
    for (const TableRow& row : run.rows) {
        const std::string& function = row.figure.line.function;
        if (state.functions.empty() || state.functions.back() != function) {
            state.functions.push_back(function);
        }
    }
    long long number = 0;
    for (const std::string_view line : split(state.text, '\n')) {
        ++number;
        const std::string_view row = trimmed(line);
        if (number < run.firstLine || row.empty()) {
            continue;
        }
        if (row.starts_with("funcBase,") || row.starts_with("function,")) {
            state.heading = row;
        } else if (!state.heading.empty()) {
            state.rows.insert(identityOf(row, commentColumn(state.heading)));
        }
    }
    if (state.heading.empty()) {
        throw Fault(file, "the last run was ended before its heading: nothing of it can be resumed; start it again");
    }
    return state;
}

std::vector<std::string> functionsLeft(const ResumeState& state, const std::vector<TestName>& tests) {
    std::vector<std::string> functions;
    for (const TestName& test : tests) {
        if (std::find(functions.begin(), functions.end(), test.function) == functions.end()) {
            functions.push_back(test.function);
        }
    }
    if (state.functions.empty()) {
        return functions;
    }
    const auto last = std::find(functions.begin(), functions.end(), state.functions.back());
    if (last == functions.end()) {
        throw Fault(
            fmt::format("the table's last function, {}, is not among the {} that the keys select: give the keys of "
                        "the run behind --",
                        state.functions.back(), functions.size()));
    }
    functions.erase(functions.begin(), last);
    return functions;
}

size_t addRows(ResumeState& state, const std::string& table, std::string& added) {
    size_t count = 0;
    std::string heading;
    const std::string_view whole = std::string_view(table).substr(0, table.rfind('\n') + 1);
    for (const std::string_view line : split(whole, '\n')) {
        const std::string_view row = trimmed(line);
        if (row.starts_with("funcBase,") || row.starts_with("function,")) {
            heading = row;
            if (heading != state.heading) {
                throw Fault(
                    "the rig's table has other columns than the one to resume: give the keys of the run behind --");
            }
        } else if (!heading.empty() && !row.empty() &&
                   state.rows.insert(identityOf(row, commentColumn(heading))).second) {
            added += row;
            added += state.carriageReturns ? "\r\n" : "\n";
            ++count;
        }
    }
    return count;
}

} // namespace krlab
