#include "functiontable.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace library {

namespace {

const std::array<std::string, 3> s_strongestFirst = {"exact", "reference", "property"};
const std::string s_note = "note";
const std::string s_counts = "@COUNTS@";
const std::string s_machines = "@MACHINES@";
const std::string s_byFunction = "geometric mean by function";
const std::string s_between = " | ";

bool isClass(const std::string& kind) {
    return std::find(s_strongestFirst.begin(), s_strongestFirst.end(), kind) != s_strongestFirst.end();
}

[[noreturn]] void refuse(int line, const std::string& cause) {
    throw std::runtime_error("line " + std::to_string(line) + ": " + cause);
}

// "veksA, veksB | G.729 3.2.1"
Row readRow(const std::string& line, int number) {
    const size_t bar = line.find(s_between);
    if (bar == std::string::npos) {
        refuse(number, "a function without its source");
    }
    Row row;
    row.source = line.substr(bar + s_between.size());
    std::istringstream names(line.substr(0, bar));
    for (std::string name; names >> name;) {
        name.resize(name.size() - (name.back() == ',' ? 1 : 0));
        row.functions.push_back(name);
    }
    return row;
}

// "  exact: words | Suite.Test Suite.Other", "  note: words"
Claim readClaim(const std::string& line, int number) {
    const size_t colon = line.find(": ");
    Claim claim;
    claim.kind = line.substr(2, colon == std::string::npos ? std::string::npos : colon - 2);
    if (colon == std::string::npos || (!isClass(claim.kind) && claim.kind != s_note)) {
        refuse(number, "a claim is exact, reference, property or note, then a colon");
    }
    const size_t bar = line.rfind(s_between);
    claim.text = line.substr(colon + 2, bar == std::string::npos ? std::string::npos : bar - colon - 2);
    std::istringstream tests(bar == std::string::npos ? "" : line.substr(bar + s_between.size()));
    for (std::string test; tests >> test;) {
        claim.tests.push_back(test);
    }
    if (claim.tests.empty() != (claim.kind == s_note)) {
        refuse(number, claim.kind == s_note ? "a note names no tests" : "no test shows this");
    }
    return claim;
}

// The ratios of a row's functions; one dash where none of them was measured.
std::string ratiosOf(const Row& row, const Figures& machine) {
    std::string ratios;
    bool measured = false;
    for (const std::string& function : row.functions) {
        const auto found = machine.ratios.find(function);
        measured = measured || found != machine.ratios.end();
        ratios += (ratios.empty() ? "" : ", ") + (found == machine.ratios.end() ? "-" : found->second);
    }
    return measured ? ratios : "-";
}

std::string markdown(const Row& row, const std::vector<Figures>& machines) {
    std::string line = "|";
    for (const std::string& function : row.functions) {
        line += std::string(line.size() > 1 ? "," : "").append(" `").append(function).append("`");
    }
    line += s_between + row.source + " |";
    std::string before;
    for (const Claim& claim : row.claims) {
        if (claim.kind == s_note) {
            line += ". " + claim.text;
        } else {
            line += before.empty() ? " " : "; ";
            line += claim.kind == before ? claim.text : "**" + claim.kind + "**: " + claim.text;
            before = claim.kind;
        }
    }
    for (const Figures& machine : machines) {
        line += s_between + ratiosOf(row, machine);
    }
    return line + " |\n";
}

std::string headOf(const std::vector<Figures>& machines) {
    std::string head = "| function | source | verified by |";
    std::string rule = "|---|---|---|";
    for (const Figures& machine : machines) {
        head += " " + machine.name + " |";
        rule += "---|";
    }
    return head + "\n" + rule + "\n";
}

std::string machineList(const std::vector<Figures>& machines) {
    std::string list = machines.empty() ? "None yet." : "";
    for (const Figures& machine : machines) {
        list += std::string(list.empty() ? "" : "\n") + "- **" + machine.name + "** (`bench/figures/" + machine.file +
                "`): ";
        for (const std::string& line : machine.lines) {
            list += line + (line == machine.lines.back() ? "." : "; ");
        }
    }
    return list;
}

std::string replaced(std::string text, const std::string& mark, const std::string& by) {
    const size_t at = text.find(mark);
    return at == std::string::npos ? text : text.replace(at, mark.size(), by);
}

std::string counts(const std::vector<Section>& table) {
    std::map<std::string, size_t> functions;
    size_t all = 0;
    for (const Row& row : rowsOf(table)) {
        functions[row.verifiedBy()] += row.functions.size();
        all += row.functions.size();
    }
    return "By the strongest class of each, of " + std::to_string(all) + " functions " +
           std::to_string(functions["exact"]) + " are exact, " + std::to_string(functions["reference"]) +
           " agree with a reference, " + std::to_string(functions["property"]) + " hold properties only.";
}

} // namespace

std::string Row::verifiedBy() const {
    for (const std::string& kind : s_strongestFirst) {
        if (std::any_of(claims.begin(), claims.end(), [&](const Claim& claim) { return claim.kind == kind; })) {
            return kind;
        }
    }
    return "";
}

std::vector<Section> readTable(const std::string& text) {
    std::vector<Section> table(1);
    std::istringstream lines(text);
    int number = 0;
    const auto endRow = [&] {
        if (!table.back().rows.empty() && table.back().rows.back().verifiedBy().empty()) {
            refuse(number, table.back().rows.back().functions.front() + " is verified by nothing");
        }
    };
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (line.rfind("//", 0) == 0) {
            continue;
        }
        if (line.rfind("vek", 0) == 0) {
            endRow();
            table.back().rows.push_back(readRow(line, number));
        } else if (line.rfind("  ", 0) == 0 && !table.back().rows.empty()) {
            table.back().rows.back().claims.push_back(readClaim(line, number));
        } else {
            endRow();
            if (!table.back().rows.empty()) {
                table.emplace_back();
            }
            table.back().text += line + "\n";
        }
    }
    endRow();
    return table;
}

std::vector<Row> rowsOf(const std::vector<Section>& table) {
    std::vector<Row> rows;
    for (const Section& section : table) {
        rows.insert(rows.end(), section.rows.begin(), section.rows.end());
    }
    return rows;
}

Figures readFigures(const std::string& file, const std::string& text) {
    Figures figures;
    figures.file = file;
    std::istringstream lines(text);
    std::string line;
    unsigned family = 0;
    unsigned model = 0;
    while (std::getline(lines, line) && !line.empty()) {
        figures.lines.push_back(line);
    }
    if (figures.lines.empty() ||
        std::sscanf(figures.lines.front().c_str(), "machine: CPUID family %u, model %u,", &family, &model) != 2) {
        throw std::runtime_error(file + ": does not begin with the machine's family and model");
    }
    figures.name = "family " + std::to_string(family) + " model " + std::to_string(model);
    while (std::getline(lines, line) && line != s_byFunction) {
    }
    while (std::getline(lines, line) && !line.empty()) {
        std::istringstream words(line);
        std::string ratio;
        std::string function;
        if (!(words >> ratio >> function) || ratio.find_first_not_of("0123456789.") != std::string::npos) {
            throw std::runtime_error(std::string(file).append(": no ratio and function: ").append(line));
        }
        figures.ratios[function] = ratio;
    }
    if (figures.ratios.empty()) {
        throw std::runtime_error(file + ": no " + s_byFunction);
    }
    return figures;
}

std::vector<Figures> readFiguresOf(const std::string& folder) {
    std::vector<Figures> machines;
    if (std::filesystem::is_directory(folder)) {
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
            machines.push_back(readFigures(entry.path().filename().string(), text));
        }
    }
    std::sort(machines.begin(), machines.end(), [](const Figures& a, const Figures& b) { return a.file < b.file; });
    return machines;
}

std::string document(const std::vector<Section>& table, const std::vector<Figures>& machines) {
    std::string text;
    for (const Section& section : table) {
        text += section.text;
        text += section.rows.empty() ? "" : headOf(machines);
        for (const Row& row : section.rows) {
            text += markdown(row, machines);
        }
    }
    return replaced(replaced(text, s_counts, counts(table)), s_machines, machineList(machines));
}

} // namespace library
