// krlab resume: finishes a run that was cut off, without a repeated row.
#include "infotext.h"
#include "program.h"
#include "resume.h"
#include "rigkeys.h"
#include "rigprocess.h"
#include "table.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>

namespace krlab {

namespace {

struct ResumeOptions {
    std::string table;
    std::string subject;
    std::string timeLimit = "1h";
};

/// Writes the file anew up to its last whole row, then adds to it.
void writeTable(const std::string& file, size_t whole, const std::string& added) {
    std::error_code error;
    std::filesystem::resize_file(file, whole, error);
    std::ofstream out(file, std::ios::binary | std::ios::app);
    out << added;
    out.close();
    if (error || !out) {
        throw Fault(file, "can't be written: " + systemCause(error ? error.value() : errno));
    }
}

int resume(const ResumeOptions& options, Context& context) {
    const Subject subject = context.subject(options.subject);
    const RigKeys keys = splitKeys(context.options.keys);
    ResumeState state = resumeState(options.table);
    const Table before = readTable(options.table);
    const bool named = !before.runs.back().names.empty();
    std::vector<std::string> left = functionsLeft(state, listTests(subject, context.options.keys));
    // The user's own files were written by the run that was cut off; the table is written here.
    const RigKeys own = keys.without("ftFrRuUoOqgB");
    std::vector<std::string> troubles;
    size_t count = 0;
    bool ended = false;
    while (!left.empty() && !ended) {
        const MemoryFile table;
        InfoParser info;
        RigCall call;
        call.subject = subject;
        call.keys = own.words();
        for (const std::string& function : left) {
            call.keys.push_back("-f=" + function);
        }
        call.keys.insert(call.keys.end(), {"-B", "-LPERF", "-r" + table.path()});
        if (named) {
            call.keys.emplace_back("-q+");
        }
        call.inherited = {table.descriptor()};
        call.timeLimit = parseDuration(options.timeLimit);
        call.output = [&](std::string_view piece) {
            info.feed(piece);
            if (info.current() != nullptr) {
                context.console.progress(info.current()->end.function,
                                         static_cast<double>(info.ended()) / static_cast<double>(left.size()));
            }
        };
        const RigExit exit = callRig(call);
        info.finish();
        std::string added;
        count += addRows(state, table.read(), added);
        writeTable(options.table, state.text.size(), added);
        state.text += added;
        if (exit.interrupted) {
            context.console.note(fmt::format("{} rows added; the run is not finished", count));
            return exitInterrupted;
        }
        ended = info.summarised();
        if (!ended) {
            const std::string where = info.current() != nullptr ? info.current()->end.function : "";
            troubles.push_back(fmt::format("the rig was ended ({}){}",
                                           exit.timedOut      ? "time limit"
                                           : exit.signal != 0 ? ::strsignal(exit.signal)
                                                              : fmt::format("status {}", exit.status),
                                           where.empty() ? "" : " in " + where));
            // Behind the test in work there may be more; without one nothing will ever come.
            const auto at = std::find(left.begin(), left.end(), where);
            left.erase(left.begin(), at == left.end() ? at : at + 1);
        }
    }
    context.console.note(fmt::format("{}: {} rows added", options.table, count));
    for (const std::string& trouble : troubles) {
        context.console.warn("krlab: " + trouble);
    }
    return troubles.empty() ? exitGood : exitFailed;
}

} // namespace

void addResume(Program& program) {
    const auto [command, options] = program.add<ResumeOptions>(
        "resume", "finishes a run that was cut off; give the keys of that run behind --", resume);
    command.add_option("TABLE", options->table, "the result table (-r) of the run")->required();
    command.add_option("--subject", options->subject, "library directory or rig program");
    addLimit(command, options->timeLimit);
}

} // namespace krlab
