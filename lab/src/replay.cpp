#include "replay.h"

#include "fault.h"
#include "table.h"
#include "text.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <optional>

namespace krlab {

namespace {

/// TABLE:ROW, if the file is there.
std::optional<std::pair<std::string, long long>> tableRow(const std::string& word) {
    const size_t colon = word.rfind(':');
    if (colon == std::string::npos || colon == 0) {
        return std::nullopt;
    }
    const auto row = integerOf(std::string_view(word).substr(colon + 1));
    std::error_code error;
    const bool line = word.find('=') < colon && !std::filesystem::exists(word.substr(0, colon), error);
    if (!row || line) {
        return std::nullopt;
    }
    return std::pair(word.substr(0, colon), *row);
}

std::vector<TableNames> namesOf(const std::vector<TestParameters>& tests) {
    std::vector<TableNames> names;
    for (const TestParameters& test : tests) {
        if (!test.columns.empty()) {
            names.push_back({test.function, test.columns});
        }
    }
    return names;
}

ReplayTarget rowTarget(const std::string& file, long long number, const std::vector<TestParameters>& tests) {
    Table table = readTable(file);
    // The rig knows the names of its rows, whatever the table says.
    applyNames(table, namesOf(tests));
    const TableRow* nearest = nullptr;
    for (const TableRun& run : table.runs) {
        for (const TableRow& row : run.rows) {
            if (row.number == number) {
                return {row.figure.line, true, row.figure};
            }
            if (nearest == nullptr || std::abs(row.number - number) < std::abs(nearest->number - number)) {
                nearest = &row;
            }
        }
    }
    throw Fault(file, number,
                fmt::format("there is no row of a measurement{}",
                            nearest != nullptr ? fmt::format("; the nearest is {}", nearest->number) : ""));
}

/// A word of the command line that came without its quotes: `lenght Dst=9`.
std::string quotedWord(const std::string& word) {
    const size_t equal = word.find('=');
    if (equal == std::string::npos || word.find('"') != std::string::npos) {
        return word;
    }
    const std::string text = Line{"f", {{word.substr(0, equal), word.substr(equal + 1)}}}.text();
    return text.substr(2);
}

Line lineOf(const std::vector<std::string>& words) {
    if (words.size() == 1) {
        return Line::parse(words.front());
    }
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + quotedWord(word);
    }
    return Line::parse(text);
}

/// Parameters in the order of the table, so that the text and the identity are the rig's own.
Line inTableOrder(const Line& line, const TestParameters& test) {
    Line ordered{line.function, {}};
    for (const std::string& column : test.columns) {
        if (const std::string* value = line.value(column); value != nullptr && !column.empty()) {
            ordered.parameters.push_back({column, *value});
        }
    }
    for (const Parameter& parameter : line.parameters) {
        if (ordered.value(parameter.name) == nullptr) {
            ordered.parameters.push_back(parameter);
        }
    }
    return ordered;
}

ReplayTarget wordsTarget(const std::vector<std::string>& words, const std::vector<TestParameters>& tests) {
    const Line line = lineOf(words);
    std::vector<std::string> functions;
    const TestParameters* fitting = nullptr;
    size_t mostNames = 0;
    std::vector<std::string> names;
    for (const TestParameters& test : tests) {
        functions.push_back(test.function);
        if (test.function != line.function) {
            continue;
        }
        names.insert(names.end(), test.columns.begin(), test.columns.end());
        const auto wanted = static_cast<size_t>(
            std::count_if(test.columns.begin(), test.columns.end(), [](const auto& name) { return !name.empty(); }));
        const auto given =
            static_cast<size_t>(std::count_if(test.columns.begin(), test.columns.end(), [&](const auto& name) {
                return !name.empty() && line.value(name) != nullptr;
            }));
        if (given == wanted && (fitting == nullptr || wanted > mostNames)) {
            fitting = &test;
            mostNames = wanted;
        }
    }
    if (std::find(functions.begin(), functions.end(), line.function) == functions.end()) {
        throw Fault(fmt::format("the rig has no function '{}'{}", line.function, proposal(line.function, functions)));
    }
    std::erase(names, "");
    for (const Parameter& parameter : line.parameters) {
        if (!isRemark(parameter.value) && std::find(names.begin(), names.end(), parameter.name) == names.end()) {
            throw Fault(fmt::format("{} has no parameter '{}'{}", line.function, parameter.name,
                                    proposal(parameter.name, names)));
        }
    }
    if (fitting == nullptr) {
        throw Fault(fmt::format("a line of {} needs values for: {}", line.function, fmt::join(names, ", ")));
    }
    return {inTableOrder(line, *fitting), false, {}};
}

} // namespace

ReplayTarget replayTarget(const std::vector<std::string>& words, const std::vector<TestParameters>& tests) {
    if (words.size() == 1) {
        if (const auto row = tableRow(words.front())) {
            return rowTarget(row->first, row->second, tests);
        }
    }
    return wordsTarget(words, tests);
}

const Figure* replayed(const Line& line, const Pass& pass) {
    const auto meant = [&line](const Line& other) {
        return std::all_of(other.parameters.begin(), other.parameters.end(), [&line](const Parameter& parameter) {
            const std::string* value = line.value(parameter.name);
            return value != nullptr ? *value == parameter.value : isRemark(parameter.value);
        });
    };
    for (const Figure& figure : pass.figures) {
        if (figure.line.function == line.function && meant(figure.line)) {
            return &figure;
        }
    }
    return nullptr;
}

std::string replayFailure(const Line& line, const Pass& pass) {
    if (!pass.complete()) {
        return fmt::format("{} was not measured: {}", line.text(), pass.failures().front());
    }
    for (const TestEnd& test : pass.tests) {
        if (!test.messages.empty()) {
            return fmt::format("{} was not measured: {}", line.text(), test.reason());
        }
    }
    return fmt::format("{} was not measured: the rig has no such line", line.text());
}

} // namespace krlab
