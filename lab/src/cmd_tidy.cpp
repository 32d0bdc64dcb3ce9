// krlab tidy: tables as data.
#include "program.h"
#include "text.h"
#include "tidy.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fmt/format.h>
#include <map>

namespace krlab {

namespace {

struct TidyOptions {
    std::vector<std::string> tables;
    std::vector<std::string> formats = {"csv"};
    std::string output;
};

std::vector<SummaryRun> summaryBeside(const std::string& file) {
    const std::filesystem::path path(file);
    const std::string beside = (path.parent_path() / (path.stem().string() + "_sum.csv")).string();
    std::error_code error;
    return std::filesystem::is_regular_file(beside, error) ? parseSummary(beside, readFile(beside))
                                                           : std::vector<SummaryRun>();
}

int tidy(const TidyOptions& options, Context& context) {
    static const std::map<std::string, std::string> endings = {
        {"csv", ".csv"}, {"json", ".json"}, {"sqlite", ".db"}, {"benchmark", ".bench.json"}};
    std::vector<Table> tables;
    std::vector<std::vector<SummaryRun>> summaries;
    for (const std::string& file : options.tables) {
        tables.push_back(readTable(file));
        summaries.push_back(summaryBeside(file));
        for (const TableRun& run : tables.back().runs) {
            if (run.cutOff) {
                context.console.note(fmt::format("{}: the run of {} was ended while it wrote a row, which is left out",
                                                 file, run.start.empty() ? "an unknown time" : run.start));
            }
        }
    }
    const std::vector<TidyRecord> records = tidyRecords(tables, summaries);
    const bool several = options.formats.size() > 1;
    if (options.output.empty() && (several || options.formats.front() == "sqlite")) {
        throw Fault("--to sqlite and several forms at once need -o FILE");
    }
    for (const std::string& format : options.formats) {
        const std::string file = options.output.empty() ? "-"
                                 : several              ? options.output + endings.at(format)
                                                        : options.output;
        if (format == "sqlite") {
            tidyStore(records, file);
        } else {
            writeOutput(file, format == "csv"    ? tidyCsv(records)
                              : format == "json" ? tidyJson(records)
                                                 : tidyBenchmark(records));
        }
    }
    if (!context.options.json.empty()) {
        writeOutput(context.options.json, tidyJson(records));
    }
    return exitGood;
}

} // namespace

void addTidy(Program& program) {
    const auto [command, options] = program.add<TidyOptions>(
        "tidy", "the rig's tables as data: named parameters, figures, results, identity", tidy);
    command.add_option("TABLE", options->tables, "result tables of the rig (-r, -R)")->required();
    command.add_option("--to", options->formats, "csv, json, sqlite, benchmark; several with commas")
        ->delimiter(',')
        ->check(CLI::IsMember({"csv", "json", "sqlite", "benchmark"}));
    command.add_option("-o,--output", options->output,
                       "the file to write, standard output without it; a stem if several forms are wanted");
}

} // namespace krlab
