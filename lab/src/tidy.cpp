#include "tidy.h"

#include "store.h"

#include <fmt/format.h>
#include <map>
#include <nlohmann/json.hpp>

namespace krlab {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

std::string parametersText(const Line& line) {
    const std::string text = Line{"f", line.parameters}.text();
    return text.size() > 2 ? text.substr(2) : "";
}

std::string csvCell(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string cell = "\"";
    for (const char c : text) {
        cell += c == '"' ? "\"\"" : std::string(1, c);
    }
    return cell + "\"";
}

/// A figure, or nothing where the rig had none.
std::string csvNumber(double value) {
    return value > 0 ? fmt::format("{}", value) : "";
}

json jsonNumber(double value) {
    return value > 0 ? json(value) : json(nullptr);
}

/// Text that came out of files may be no UTF-8.
std::string dumped(const auto& document) {
    return document.dump(1, ' ', false, json::error_handler_t::replace) + "\n";
}

std::string joinedLibraries(const TableRun& run) {
    return fmt::format("{}", fmt::join(run.libraries, "; "));
}

/// Result of the row's test. Several tests may bear one function's name: then the worst stands for all.
std::string resultOf(const std::vector<SummaryRun>& summaries, const TableRun& run, const std::string& function) {
    std::string result;
    for (const SummaryRun& summary : summaries) {
        if (summary.start != run.start) {
            continue;
        }
        for (const TestEnd& test : summary.tests) {
            if (test.function == function && (result.empty() || result == "OK")) {
                result = test.result;
            }
        }
    }
    return result;
}

} // namespace

std::vector<TidyRecord> tidyRecords(const std::vector<Table>& tables,
                                    const std::vector<std::vector<SummaryRun>>& summaries) {
    std::vector<TidyRecord> records;
    size_t number = 0;
    for (size_t i = 0; i < tables.size(); ++i) {
        for (const TableRun& run : tables[i].runs) {
            ++number;
            std::map<std::string, std::string> results;
            for (const TableRow& row : run.rows) {
                const std::string& function = row.figure.line.function;
                const auto [known, isNew] = results.try_emplace(function);
                if (isNew) {
                    known->second = resultOf(summaries[i], run, function);
                }
                records.push_back({tables[i].file, number, row.number, &run, &row.figure, known->second});
            }
        }
    }
    return records;
}

std::string tidyCsv(const std::vector<TidyRecord>& records) {
    std::string text = "run,file,row,start,function,family,parameters,clocks_per_call,clocks_per_element,unit,elements,"
                       "microseconds,mflops,calls,accuracy,result,processor,computer,system,library\n";
    for (const TidyRecord& record : records) {
        const Figure& figure = *record.figure;
        const TableRun& run = *record.head;
        text += fmt::format(
            "{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},{}\n", record.run, csvCell(record.file),
            record.row, csvCell(run.start), csvCell(figure.line.function), csvCell(familyOf(figure.line.function)),
            csvCell(parametersText(figure.line)), csvNumber(figure.clocks), csvNumber(figure.perElement),
            csvCell(figure.unit), csvNumber(figure.elements), csvNumber(figure.microseconds),
            csvNumber(figure.megaflops), figure.loops > 0 ? std::to_string(figure.loops) : "",
            figure.accuracy >= 0 ? fmt::format("{}", figure.accuracy) : "", record.result, csvCell(run.processor),
            csvCell(run.computer), csvCell(run.system), csvCell(joinedLibraries(run)));
    }
    return text;
}

std::string tidyJson(const std::vector<TidyRecord>& records) {
    ordered_json runs = ordered_json::array();
    ordered_json rows = ordered_json::array();
    size_t last = 0;
    for (const TidyRecord& record : records) {
        const TableRun& run = *record.head;
        if (record.run != last) {
            last = record.run;
            runs.push_back({{"run", record.run},
                            {"file", record.file},
                            {"start", run.start},
                            {"processor", run.processor},
                            {"computer", run.computer},
                            {"system", run.system},
                            {"libraries", run.libraries},
                            {"cut_off", run.cutOff}});
        }
        const Figure& figure = *record.figure;
        ordered_json parameters = ordered_json::object();
        for (const Parameter& parameter : figure.line.parameters) {
            parameters[parameter.name] = parameter.value;
        }
        rows.push_back({{"run", record.run},
                        {"row", record.row},
                        {"function", figure.line.function},
                        {"family", familyOf(figure.line.function)},
                        {"parameters", parameters},
                        {"clocks_per_call", jsonNumber(figure.clocks)},
                        {"clocks_per_element", jsonNumber(figure.perElement)},
                        {"unit", figure.unit},
                        {"elements", jsonNumber(figure.elements)},
                        {"microseconds", jsonNumber(figure.microseconds)},
                        {"mflops", jsonNumber(figure.megaflops)},
                        {"calls", figure.loops},
                        {"accuracy", figure.accuracy >= 0 ? json(figure.accuracy) : json(nullptr)},
                        {"result", record.result}});
    }
    return dumped(ordered_json{{"schema", "krlab-tidy-1"}, {"runs", runs}, {"rows", rows}});
}

void tidyStore(const std::vector<TidyRecord>& records, const std::string& file) {
    Store store(file);
    RunRecord run;
    run.command = "tidy";
    const long long id = store.beginRun(run);
    for (size_t i = 0; i < records.size();) {
        const TableRun& head = *records[i].head;
        Pass pass;
        pass.identity.subject = records[i].file;
        pass.identity.started = head.start;
        pass.identity.rigCpu = head.processor;
        pass.identity.rigLibrary = joinedLibraries(head);
        pass.identity.machine.host = head.computer;
        pass.identity.machine.kernel = head.system;
        pass.identity.machine.counterMHz = head.megahertz;
        pass.ends.emplace_back();
        if (head.cutOff) {
            pass.ends.back().how = ProcessEnd::How::failed;
            pass.ends.back().text = "was ended while it wrote a row";
        }
        const size_t number = records[i].run;
        for (; i < records.size() && records[i].run == number; ++i) {
            pass.figures.push_back(*records[i].figure);
        }
        store.addPass(id, static_cast<int>(number), pass);
    }
    store.endRun(id, 0);
}

} // namespace krlab
