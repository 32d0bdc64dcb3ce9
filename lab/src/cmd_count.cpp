// krlab count: instructions per call, the same on each run.
#include "count.h"
#include "interrupt.h"
#include "linejson.h"
#include "program.h"
#include "store.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <thread>

namespace krlab {

namespace {

using nlohmann::json;

struct CountOptions {
    std::string subject;
    std::string store = "krlab.db";
    std::string label;
    std::string timeLimit = "30m";
    std::vector<std::string> lines;
};

std::vector<std::string> countFailures(const Pass& pass) {
    std::vector<std::string> failures = interrupted() ? std::vector<std::string>() : pass.failures();
    failures.insert(failures.end(), pass.remarks.begin(), pass.remarks.end());
    for (const TestEnd& test : pass.tests) {
        if (test.failed()) {
            failures.push_back(fmt::format("{} ended with {}", test.function, test.result));
        }
    }
    return failures;
}

json countDocument(const Pass& pass, long long run, const std::vector<std::string>& failures) {
    json lines = json::array();
    for (const Figure& figure : pass.figures) {
        json line = lineJson(figure.line);
        line.update({{"instructions", figure.clocks}, {"elements", figure.elements}});
        lines.push_back(std::move(line));
    }
    return {{"schema", "krlab-count-1"},
            {"identity", toJson(pass.identity)},
            {"run", run},
            {"lines", std::move(lines)},
            {"failures", failures}};
}

int countLines(const CountOptions& options, Context& context) {
    CountRequest request;
    request.subject = context.subject(options.subject);
    request.keys = context.options.keys;
    request.timeLimit = parseDuration(options.timeLimit);
    request.lanes = std::max(1U, std::thread::hardware_concurrency());
    for (const std::string& line : options.lines) {
        request.lines.push_back(Line::parse(line));
    }
    request.progress = [&](const std::string& text, double share) { context.console.progress(text, share); };
    Store store(options.store);
    const Pass pass = countPass(request);
    context.console.clear();
    const std::vector<std::string> failures = countFailures(pass);
    const int status = interrupted() ? exitInterrupted : failures.empty() ? exitGood : exitFailed;

    RunRecord record;
    record.command = "count";
    record.arguments = context.arguments;
    record.label = options.label;
    record.started = pass.identity.started;
    const long long run = store.beginRun(record);
    store.addPass(run, 0, pass);
    store.endRun(run, status);

    if (context.reportWanted()) {
        std::string text = describe(pass.identity) + "\n  instructions  line, a call\n";
        for (const Figure& figure : pass.figures) {
            text += fmt::format("  {:12.12g}  {}\n", figure.clocks, figure.line.text());
        }
        text += fmt::format("{} lines counted; kept in {}, run {}\n", pass.figures.size(), options.store, run);
        writeOutput("-", text);
    }
    for (const std::string& failure : failures) {
        context.console.warn("krlab: " + failure);
    }
    context.writeJson(countDocument(pass, run, failures));
    return status;
}

} // namespace

void addCount(Program& program) {
    const auto [command, options] =
        program.add<CountOptions>("count", "instructions per call of each line, the same on each run", countLines);
    addSubject(command, options->subject);
    command.add_option("--line", options->lines, "count this line alone; may be given several times")
        ->type_name("LINE");
    command.add_option("--store", options->store, "file that keeps the counts")->capture_default_str();
    command.add_option("--label", options->label, "name of the run in the store, such as a commit");
    addLimit(command, options->timeLimit);
}

} // namespace krlab
