#include "table.h"

#include "fault.h"
#include "text.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <map>

namespace krlab {

namespace {

constexpr std::string_view nameMark = "parmNames";

/// Cells of one line. A cell in quotes, with blanks before them, may hold commas and loses both.
std::vector<std::string> cellsOf(std::string_view line) {
    std::vector<std::string> cells;
    size_t at = 0;
    for (;;) {
        const size_t start = line.find_first_not_of(' ', at);
        if (start != std::string_view::npos && line[start] == '"') {
            const size_t close = line.find('"', start + 1);
            const size_t end = close == std::string_view::npos ? close : close + 1;
            // Only a quote that closes the cell closes the quotation.
            if (end != std::string_view::npos && (end == line.size() || line[end] == ',')) {
                cells.emplace_back(line.substr(start + 1, close - start - 1));
                if (end == line.size()) {
                    return cells;
                }
                at = end + 1;
                continue;
            }
        }
        const size_t comma = line.find(',', at);
        cells.emplace_back(line.substr(at, comma == std::string_view::npos ? comma : comma - at));
        if (comma == std::string_view::npos) {
            return cells;
        }
        at = comma + 1;
    }
}

/// Reads "2x2.66 GHz" or "800 MHz" out of the processor's text.
double megahertzOf(const std::string& processor) {
    for (const auto& [unit, factor] : {std::pair<const char*, double>{" GHz", 1000}, {" MHz", 1}}) {
        const size_t end = processor.rfind(unit);
        if (end == std::string::npos) {
            continue;
        }
        size_t start = end;
        while (start > 0 && std::string_view("0123456789.e+").find(processor[start - 1]) != std::string_view::npos) {
            --start;
        }
        if (const auto value = numberOf(std::string_view(processor).substr(start, end - start)); value && *value > 0) {
            return *value * factor;
        }
    }
    return 0;
}

class TableParser {
public:
    TableParser(const std::string& file, std::string_view text) : m_text(text) { m_table.file = file; }

    Table parse() {
        if (m_text.find('\0') != std::string_view::npos) {
            throw Fault(m_table.file, "this is no table of the rig: it holds zero bytes");
        }
        while (!m_text.empty()) {
            const size_t end = m_text.find('\n');
            std::string_view line = m_text.substr(0, end);
            m_text.remove_prefix(end == std::string_view::npos ? m_text.size() : end + 1);
            ++m_number;
            if (!line.empty() && line.back() == '\r') {
                line.remove_suffix(1);
            }
            readLine(line, end != std::string_view::npos);
        }
        if (m_table.runs.empty()) {
            throw Fault(m_table.file, "this is no table of the rig: it is empty");
        }
        return std::move(m_table);
    }

private:
    [[noreturn]] void fail(const std::string& text) const { throw Fault(m_table.file, m_number, text); }

    void readLine(std::string_view line, bool whole) {
        if (line.empty()) {
            return;
        }
        if (readHeadLine(line) || readHeading(line)) {
            return;
        }
        if (m_heading.empty()) {
            fail("a row stands before any heading; this is no table of the rig (funcBase,funcDataType,...)");
        }
        const std::vector<std::string> cells = cellsOf(line);
        if (!whole) {
            m_table.runs.back().cutOff = true;
            return;
        }
        if (cells.size() != m_heading.size()) {
            // A run that was ended while it wrote a row, and another one added behind it.
            const size_t head = line.find("CPU,");
            if (head != std::string_view::npos && head > 0) {
                m_table.runs.back().cutOff = true;
                readHeadLine(line.substr(head));
                return;
            }
            fail(fmt::format("{} cells where the heading has {}", cells.size(), m_heading.size()));
        }
        readRow(cells);
    }

    /// "CPU" begins a run; the other keys belong to it until its heading.
    bool readHeadLine(std::string_view line) {
        const size_t comma = line.find(',');
        if (comma == std::string_view::npos) {
            return false;
        }
        const std::string_view key = line.substr(0, comma);
        const std::string value(line.substr(comma + 1));
        if (key == "CPU") {
            TableRun run;
            run.firstLine = m_number;
            run.processor = trimmed(value);
            run.megahertz = megahertzOf(value);
            m_table.runs.push_back(std::move(run));
            m_heading.clear();
            return true;
        }
        if (m_table.runs.empty() || !m_heading.empty()) {
            return false;
        }
        TableRun& run = m_table.runs.back();
        if (key == "OS") {
            run.system = value;
        } else if (key == "Computer") {
            run.computer = value;
        } else if (key == "Library") {
            run.libraries.push_back(value);
        } else if (key == "Start") {
            run.start = value;
        } else {
            return false;
        }
        return true;
    }

    bool readHeading(std::string_view line) {
        if (!line.starts_with("funcBase,") && !line.starts_with("function,")) {
            return false;
        }
        std::vector<std::string> heading = cellsOf(line);
        const size_t comment = indexOf(heading, "Comment");
        const size_t functionCells = line.starts_with("funcBase,") ? 3 : 1;
        if (comment >= heading.size() || comment < functionCells || indexOf(heading, "Clocks") != comment + 1 ||
            indexOf(heading, "Time (usec)") != comment + 3) {
            fail("the heading lacks Comment, Clocks, per and Time (usec); is it cut off?");
        }
        // A file of rows whose head was taken off is read as one run without a head; a second heading begins another.
        if (m_table.runs.empty() || !m_heading.empty()) {
            m_table.runs.emplace_back().firstLine = m_number;
        }
        m_heading = std::move(heading);
        m_functionCells = functionCells;
        m_comment = comment;
        m_table.runs.back().columns.assign(m_heading.begin() + static_cast<std::ptrdiff_t>(functionCells),
                                           m_heading.begin() + static_cast<std::ptrdiff_t>(comment));
        return true;
    }

    static size_t indexOf(const std::vector<std::string>& cells, std::string_view name) {
        return static_cast<size_t>(std::find(cells.begin(), cells.end(), name) - cells.begin());
    }

    std::string function(const std::vector<std::string>& cells) const {
        std::string name = cells[0];
        for (size_t i = 1; i < m_functionCells; ++i) {
            if (cells[i] != "-") {
                name += "_" + cells[i];
            }
        }
        if (name.empty() || name == "-") {
            fail("the row names no function");
        }
        return name;
    }

    static void markSecondNames(std::vector<std::string>& names) {
        for (auto name = names.begin(); name != names.end(); ++name) {
            if (!name->empty() && std::find(names.begin(), name, *name) != name) {
                *name += secondMark;
            }
        }
    }

    double number(const std::string& cell, const char* column) const {
        if (cell == "-" || trimmed(cell).empty()) {
            return 0;
        }
        const auto value = numberOf(trimmed(cell));
        if (!value || *value < 0) {
            fail(fmt::format("'{}' in column {} is no figure", cell, column));
        }
        return *value;
    }

    void readRow(const std::vector<std::string>& cells) {
        TableRun& run = m_table.runs.back();
        std::vector<std::string> parameters;
        for (size_t i = m_functionCells; i < m_comment; ++i) {
            parameters.emplace_back(cells[i] == "-" ? "" : trimmed(cells[i]));
        }
        if (cells[m_comment] == nameMark) {
            markSecondNames(parameters);
            run.names.push_back({function(cells), std::move(parameters)});
            return;
        }
        TableRow row;
        row.number = m_number;
        row.figure.line.function = function(cells);
        row.cells = std::move(parameters);
        Figure& figure = row.figure;
        figure.comment = cells[m_comment] == "-" ? "" : cells[m_comment];
        figure.perElement = number(cells[m_comment + 1], "Clocks");
        figure.unit = cells[m_comment + 2] == "-" ? "" : trimmed(cells[m_comment + 2]);
        figure.microseconds = number(cells[m_comment + 3], "Time (usec)");
        figure.clocks = run.megahertz > 0 ? figure.microseconds * run.megahertz : figure.perElement;
        if (figure.perElement > 0 && run.megahertz > 0) {
            figure.elements = figure.clocks / figure.perElement;
        }
        if (m_comment + 4 < cells.size()) {
            figure.megaflops = number(cells[m_comment + 4], "MFlops");
        }
        row.hot = m_comment + 5 < cells.size() && cells[m_comment + 5] == "Hot";
        readComment(figure);
        run.rows.push_back(std::move(row));
        nameRow(run, run.rows.back(), run.names);
    }

    /// "nLps=16", "nCalls=3", with " acc=7.1%" behind it when the wanted accuracy was not reached.
    static void readComment(Figure& figure) {
        for (const std::string_view word : split(figure.comment, ' ')) {
            if (word.starts_with("nLps=") || word.starts_with("nCalls=")) {
                figure.loops = integerOf(word.substr(word.find('=') + 1)).value_or(0);
            } else if (word.starts_with("acc=") && word.ends_with("%")) {
                figure.accuracy = numberOf(word.substr(4, word.size() - 5)).value_or(-100) / 100;
            }
        }
    }

    friend void krlab::applyNames(Table& table, const std::vector<TableNames>& names);

    /// True if the names stand over exactly the cells that hold values.
    static bool fits(const TableNames& names, const TableRow& row) {
        if (names.columns.size() != row.cells.size()) {
            return false;
        }
        for (size_t i = 0; i < row.cells.size(); ++i) {
            const bool value = !row.cells[i].empty() && !isRemark(row.cells[i]);
            if (value && names.columns[i].empty()) {
                return false;
            }
        }
        return true;
    }

    /// Names the row's cells by the last names of its function that fit, by the heading where there are none.
    static void nameRow(const TableRun& run, TableRow& row, const std::vector<TableNames>& names) {
        const TableNames* best = nullptr;
        for (auto candidate = names.rbegin(); candidate != names.rend(); ++candidate) {
            if (candidate->function != row.figure.line.function || !fits(*candidate, row)) {
                continue;
            }
            if (best == nullptr || named(*candidate) < named(*best)) {
                best = &*candidate;
            }
        }
        std::vector<Parameter>& parameters = row.figure.line.parameters;
        parameters.clear();
        for (size_t i = 0; i < row.cells.size(); ++i) {
            const bool hasName = best != nullptr && !best->columns[i].empty();
            if (row.cells[i].empty() && !hasName) {
                continue;
            }
            parameters.push_back({hasName ? best->columns[i] : run.columns[i], row.cells[i]});
        }
        // The state of the caches stands before the count in the comment and tells lines apart.
        const std::string& comment = row.figure.comment;
        for (const std::string_view state : {"inCache", "outofCache"}) {
            if (comment.starts_with(state)) {
                parameters.push_back({"cache", std::string(state)});
            }
        }
    }

    static size_t named(const TableNames& names) {
        return names.columns.size() -
               static_cast<size_t>(std::count(names.columns.begin(), names.columns.end(), std::string()));
    }

    std::string_view m_text;
    long long m_number = 0;
    Table m_table;
    std::vector<std::string> m_heading;
    size_t m_functionCells = 0;
    size_t m_comment = 0;
};

} // namespace

size_t Table::rows() const {
    size_t count = 0;
    for (const TableRun& run : runs) {
        count += run.rows.size();
    }
    return count;
}

bool isRemark(std::string_view cell) {
    return cell.starts_with('(');
}

void applyNames(Table& table, const std::vector<TableNames>& names) {
    for (TableRun& run : table.runs) {
        for (TableRow& row : run.rows) {
            TableParser::nameRow(run, row, names);
        }
    }
}

Table parseTable(const std::string& file, std::string_view text) {
    return TableParser(file, text).parse();
}

Table readTable(const std::string& file) {
    Table table = parseTable(file, readFile(file));
    const bool named =
        std::any_of(table.runs.begin(), table.runs.end(), [](const TableRun& run) { return !run.names.empty(); });
    const std::filesystem::path path(file);
    const std::filesystem::path beside = path.parent_path() / (path.stem().string() + "_name.csv");
    std::error_code error;
    if (!named && std::filesystem::is_regular_file(beside, error)) {
        const Table nameTable = parseTable(beside.string(), readFile(beside.string()));
        if (!nameTable.runs.empty()) {
            applyNames(table, nameTable.runs.back().names);
        }
    }
    return table;
}

} // namespace krlab
