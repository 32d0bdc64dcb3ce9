// `krlab compare OLD NEW`: the verdicts of `ab` from tables of the rig or from passes in a store.
#include "comparison.h"
#include "countcomparison.h"
#include "program.h"
#include "store.h"
#include "table.h"
#include "text.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fmt/format.h>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>

namespace krlab {

namespace {

struct CompareArguments {
    std::string older;
    std::string newer;
    std::string threshold = "3%";
    std::string confidence = "99%";
    std::string countThreshold = "0.1%";
    std::string store = "krlab.db";
    bool strict = false;
};

// The runs of one subject.
struct Source {
    std::vector<std::vector<Figure>> runs;
    Identity identity;
    std::vector<std::string> remarks;
    bool counts = false; // the figures are instructions
};

void addTable(Source& source, const std::string& file) {
    const Table table = readTable(file);
    for (const TableRun& run : table.runs) {
        std::vector<Figure> figures;
        for (const TableRow& row : run.rows) {
            figures.push_back(row.figure);
        }
        if (run.cutOff) {
            source.remarks.push_back(
                fmt::format("{}: the run from line {} on was cut off; its last row is left out", file, run.firstLine));
        }
        source.runs.push_back(std::move(figures));
    }
    if (source.identity.subject.empty() && !table.runs.empty()) {
        const TableRun& first = table.runs.front();
        source.identity.subject = file;
        source.identity.rigCpu = first.processor;
        source.identity.machine.host = first.computer;
        source.identity.machine.kernel = first.system;
        source.identity.machine.counterMHz = first.megahertz;
        source.identity.started = first.start;
        for (const std::string& library : first.libraries) {
            source.identity.rigLibrary += (source.identity.rigLibrary.empty() ? "" : "; ") + library;
        }
    }
}

// "12" is a run of the store, "12/NAME" its passes of one subject, anything else the label of runs.
void addStored(Source& source, const std::string& file, const std::string& selection) {
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
    const Store store(file);
    std::set<long long> counted;
    for (const RunRecord& run : store.runs()) {
        if (run.command == "count") {
            counted.insert(run.id);
        }
    }
    const FigureTable table = store.figures(filter);
    for (size_t pass = 0; pass < table.passes.size(); ++pass) {
        const Identity& identity = table.passes[pass].identity;
        const bool counts = counted.count(table.passes[pass].run) != 0;
        if (pass > 0 && counts != source.counts) {
            throw Fault(file, fmt::format("'{}' holds clocks and counts; choose a run by its number", selection));
        }
        source.counts = counts;
        if (source.identity.subject.empty()) {
            source.identity = identity;
        } else if (!sameSubject(source.identity, identity)) {
            throw Fault(file,
                        fmt::format("'{}' holds passes of different subjects ({} and {}); choose one, as in {}/{}",
                                    selection, source.identity.subject, identity.subject, head, identity.subject));
        }
        std::vector<Figure> figures;
        for (const FigureTable::Entry& entry : table.entries[pass]) {
            Figure figure;
            figure.line = table.lines[entry.line];
            figure.clocks = entry.clocks;
            figure.exact = true;
            figures.push_back(std::move(figure));
        }
        source.runs.push_back(std::move(figures));
    }
    if (source.runs.empty()) {
        throw Fault(file, fmt::format("holds no pass for '{}'; name a run by its number, NUMBER/SUBJECT, or a label",
                                      selection));
    }
}

// A table, several with commas between, STORE:SELECTION, or a selection from the store of --store.
Source sourceOf(const std::string& text, const std::string& store) {
    Source source;
    std::error_code error;
    const size_t colon = text.rfind(':');
    if (std::filesystem::is_regular_file(text, error)) {
        addTable(source, text);
    } else if (colon != std::string::npos && std::filesystem::is_regular_file(text.substr(0, colon), error)) {
        addStored(source, text.substr(0, colon), text.substr(colon + 1));
    } else if (text.find(',') != std::string::npos) {
        for (const std::string_view file : split(text, ',')) {
            addTable(source, std::string(file));
        }
    } else if (std::filesystem::is_regular_file(store, error)) {
        addStored(source, store, text);
    } else {
        throw Fault(text, "is neither a table nor, as there is no store " + store + ", a run or label in it");
    }
    return source;
}

// A share, or none at all: counts may be asked to be equal.
double parseThreshold(const std::string& text) {
    return text == "0" || text == "0%" ? 0 : parseShare(text);
}

int judgeSides(const CompareArguments& options, Context& context) {
    Comparison comparison;
    comparison.threshold = parseShare(options.threshold);
    comparison.confidence = parseShare(options.confidence);
    Source older = sourceOf(options.older, options.store);
    Source newer = sourceOf(options.newer, options.store);
    if (older.counts != newer.counts) {
        throw Fault(fmt::format("{} holds {} and {} does not", older.counts ? options.older : options.newer,
                                "instructions", older.counts ? options.newer : options.older));
    }
    comparison.runs = {std::move(older.runs), std::move(newer.runs)};
    VerdictReport report =
        older.counts ? compareCounts(comparison.runs, parseThreshold(options.countThreshold)) : compareRuns(comparison);
    report.older = std::move(older.identity);
    report.newer = std::move(newer.identity);
    for (const Source* source : {&older, &newer}) {
        report.remarks.insert(report.remarks.end(), source->remarks.begin(), source->remarks.end());
    }
    if (!context.options.json.empty()) {
        writeOutput(context.options.json, toJson(report).dump(1) + "\n");
    }
    if (context.reportWanted()) {
        writeOutput("-", describe(report));
    }
    return exitStatus(report, options.strict);
}

} // namespace

void addCompare(Program& program) {
    const auto options = std::make_shared<CompareArguments>();
    CLI::App& command = program.add("compare", "tell which lines changed between tables or stored passes",
                                    [options](Context& context) { return judgeSides(*options, context); });
    const std::string what = "a table (several: A.csv,B.csv), or passes of a store: [STORE:]RUN, RUN/SUBJECT, LABEL";
    command.add_option("OLD", options->older, what)->required();
    command.add_option("NEW", options->newer, "the same for the new one")->required();
    command.add_option("--threshold", options->threshold, "changes up to this do not matter")->capture_default_str();
    command
        .add_option("--count-threshold", options->countThreshold,
                    "the same where both sides are counts of instructions (krlab count); 0 for equal ones")
        ->capture_default_str();
    command.add_option("--confidence", options->confidence, "that no line is accused wrongly")->capture_default_str();
    command.add_option("--store", options->store, "file that keeps the passes")->capture_default_str();
    command.add_flag("--strict", options->strict, "status 3 if lines stay undecided");
}

} // namespace krlab
