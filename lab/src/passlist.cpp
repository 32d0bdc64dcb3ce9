#include "passlist.h"

#include "fault.h"
#include "store.h"
#include "table.h"
#include "text.h"

#include <filesystem>
#include <fmt/format.h>
#include <fstream>

namespace krlab {

namespace {

bool isFile(const std::string& name) {
    std::error_code error;
    return std::filesystem::is_regular_file(name, error);
}

bool isDatabase(const std::string& name) {
    static const std::string mark = "SQLite format 3";
    std::string head(mark.size(), '\0');
    std::ifstream(name, std::ios::binary).read(head.data(), static_cast<std::streamsize>(head.size()));
    return head == mark;
}

// "12" is a run of the store, "12/NAME" its passes of one subject, anything else the label of runs; nothing is all.
PassFilter filterOf(const std::string& selection) {
    const size_t slash = selection.find('/');
    const std::string head = selection.substr(0, slash);
    PassFilter filter;
    if (const auto number = integerOf(head)) {
        filter.runs = {*number};
    } else {
        filter.label = head;
    }
    if (slash != std::string::npos) {
        filter.subject = selection.substr(slash + 1);
    }
    return filter;
}

} // namespace

void PassList::add(const std::string& text, const std::string& store) {
    m_text = text;
    const size_t colon = text.rfind(':');
    if (isFile(text)) {
        if (isDatabase(text)) {
            addStored(text, "");
        } else {
            addTable(text, text);
        }
    } else if (colon != std::string::npos && isFile(text.substr(0, colon))) {
        addStored(text.substr(0, colon), text.substr(colon + 1));
    } else if (text.find(',') != std::string::npos) {
        const std::vector<std::string_view> files = split(text, ',');
        for (const std::string_view file : files) {
            addTable(std::string(file), std::string(files.front()));
        }
    } else if (isFile(store)) {
        addStored(store, text);
    } else {
        throw Fault(text, "is neither a table nor, as there is no store " + store + ", a run or label in it");
    }
}

std::uint32_t PassList::indexOf(const Line& line) {
    const auto [at, isNew] = m_index.try_emplace(line, static_cast<std::uint32_t>(m_lines.size()));
    if (isNew) {
        m_lines.push_back(line);
        m_elements.push_back(0);
    }
    return at->second;
}

void PassList::addTable(const std::string& file, const std::string& subject) {
    for (const TableRun& run : readTable(file).runs) {
        Entry entry;
        entry.identity.subject = subject;
        entry.identity.rigCpu = run.processor;
        entry.identity.machine.host = run.computer;
        entry.identity.machine.kernel = run.system;
        entry.identity.machine.counterMHz = run.megahertz;
        entry.identity.started = run.start;
        entry.identity.rigLibrary = fmt::format("{}", fmt::join(run.libraries, "; "));
        entry.complete = !run.cutOff;
        for (const TableRow& row : run.rows) {
            const Figure& figure = row.figure;
            const std::uint32_t line = indexOf(figure.line);
            m_elements[line] = figure.elements;
            entry.readings.push_back({line, static_cast<float>(figure.accuracy), figure.clocks, figure.perElement});
        }
        if (run.cutOff) {
            m_remarks.push_back(
                fmt::format("{}: the run from line {} on was cut off; its last row is left out", file, run.firstLine));
        }
        m_passes.push_back(std::move(entry));
    }
}

void PassList::addStored(const std::string& file, const std::string& selection) {
    const Store store(file);
    const FigureTable table = store.figures(filterOf(selection));
    if (table.passes.empty()) {
        throw Fault(file,
                    selection.empty()
                        ? "holds no pass"
                        : fmt::format("holds no pass for '{}'; name a run by its number, NUMBER/SUBJECT, or a label",
                                      selection));
    }
    std::map<long long, RunRecord> runs;
    for (RunRecord& run : store.runs()) {
        runs[run.id] = std::move(run);
    }
    std::vector<std::uint32_t> indexes;
    for (const Line& line : table.lines) {
        indexes.push_back(indexOf(line));
    }
    const PassRecord* longest = &table.passes.front();
    for (size_t i = 0; i < table.passes.size(); ++i) {
        const PassRecord& pass = table.passes[i];
        longest = pass.figures > longest->figures ? &pass : longest;
        const RunRecord& run = runs[pass.run];
        Entry entry{pass.identity, pass.run, run.label, pass.complete, true, run.command == "count", {}};
        entry.readings.reserve(table.entries[i].size());
        for (const FigureTable::Entry& reading : table.entries[i]) {
            entry.readings.push_back({indexes[reading.line], reading.accuracy, reading.clocks});
        }
        m_passes.push_back(std::move(entry));
    }
    // The number of elements belongs to the line: one pass tells it.
    for (const Figure& figure : store.pass(longest->id).figures) {
        m_elements[indexOf(figure.line)] = figure.elements;
    }
}

const Identity& PassList::subject() const {
    if (m_passes.empty()) {
        throw Fault(m_text, "holds no pass");
    }
    const Identity& first = m_passes.front().identity;
    for (const Entry& pass : m_passes) {
        // Of a table's libraries too little is known to tell them apart.
        if (pass.run != 0 && !sameSubject(first, pass.identity)) {
            throw Fault(fmt::format("'{}' holds passes of different subjects ({} and {}); choose one, as in {}/{}",
                                    m_text, first.subject, pass.identity.subject, pass.run, pass.identity.subject));
        }
    }
    return first;
}

bool PassList::counts() const {
    const bool counts = !m_passes.empty() && m_passes.front().counts;
    for (const Entry& pass : m_passes) {
        if (pass.counts != counts) {
            throw Fault(fmt::format("'{}' holds clocks and counts; choose a run by its number", m_text));
        }
    }
    return counts;
}

PassList PassList::where(const std::function<bool(const Entry&)>& wanted) const {
    PassList list = *this;
    std::erase_if(list.m_passes, [&](const Entry& entry) { return !wanted(entry); });
    return list;
}

void PassList::add(const PassList& other) {
    std::vector<std::uint32_t> indexes;
    for (std::uint32_t line = 0; line < other.m_lines.size(); ++line) {
        indexes.push_back(indexOf(other.m_lines[line]));
        m_elements[indexes.back()] = other.m_elements[line];
    }
    for (Entry entry : other.m_passes) {
        for (Reading& reading : entry.readings) {
            reading.line = indexes[reading.line];
        }
        m_passes.push_back(std::move(entry));
    }
    m_remarks.insert(m_remarks.end(), other.m_remarks.begin(), other.m_remarks.end());
}

std::vector<std::vector<Figure>> PassList::runs() const {
    std::vector<std::vector<Figure>> runs;
    for (const Entry& pass : m_passes) {
        std::vector<Figure>& figures = runs.emplace_back();
        figures.reserve(pass.readings.size());
        for (const Reading& reading : pass.readings) {
            Figure& figure = figures.emplace_back();
            figure.line = m_lines[reading.line];
            figure.clocks = reading.clocks;
            figure.perElement = reading.perElement;
            figure.exact = pass.exact;
        }
    }
    return runs;
}

} // namespace krlab
