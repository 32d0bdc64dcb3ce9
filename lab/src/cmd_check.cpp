// krlab check: a run of the rig as a gate.
#include "program.h"
#include "rigcheck.h"
#include "subject.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace krlab {

namespace {

struct CheckOptions {
    std::string subject;
    std::string timeLimit = "1h";
    bool show = false;
};

void checkKeys(const RigKeys& keys) {
    for (const RigKey& key : keys.keys) {
        if (std::string_view("evh?").find(key.letter) != std::string_view::npos) {
            throw Fault(fmt::format("the key {} measures nothing; take it away", key.word()));
        }
    }
}

int check(const CheckOptions& options, Context& context) {
    const Subject subject = context.subject(options.subject);
    const RigKeys keys = splitKeys(context.options.keys);
    checkKeys(keys);
    const double limit = parseDuration(options.timeLimit);
    std::vector<std::string> faults =
        faultsOfKeys(keys, listTests(subject, {}), listParameters(subject, context.options.keys));
    InfoParser info;
    // What can't become a good run is not run.
    if (faults.empty()) {
        RigCall call;
        call.subject = subject;
        call.keys = keys.words();
        if (!keys.has('B')) {
            call.keys.emplace_back("-B");
        }
        if (!keys.has('L')) {
            call.keys.emplace_back("-LPERF");
        }
        call.timeLimit = limit;
        call.output = [&](std::string_view piece) {
            info.feed(piece);
            if (options.show) {
                writeOutput("-", std::string(piece));
            } else if (info.current() != nullptr) {
                context.console.progress(info.current()->end.function, -1);
            }
        };
        const RigExit exit = callRig(call);
        info.finish();
        context.console.clear();
        if (exit.interrupted) {
            context.console.warn("krlab: ended by the user");
            return exitInterrupted;
        }
        faults = faultsOfRun(info, exit, limit);
        // Only from that level on does the console tell each line.
        if (!keys.has('L') || info.tests().empty() || !info.tests().front().lines.empty()) {
            for (std::string& fault : faultsOfTables(keys, subject, info)) {
                faults.push_back(std::move(fault));
            }
        }
    }
    for (const std::string& fault : faults) {
        context.console.warn("krlab: " + fault);
    }
    context.writeJson({{"schema", "krlab-check-1"}, {"tests", info.ended()}, {"faults", faults}});
    if (!faults.empty()) {
        return exitFailed;
    }
    context.console.note(fmt::format("{} tests, all well", info.ended()));
    return exitGood;
}

} // namespace

void addCheck(Program& program) {
    const auto [command, options] = program.add<CheckOptions>(
        "check", "runs the rig with your keys; whatever goes wrong becomes status 2 with a line", check);
    addSubject(command, options->subject);
    command.add_option("--limit", options->timeLimit, "time limit of the run")->capture_default_str();
    command.add_flag("--show", options->show, "show the rig's own text");
}

} // namespace krlab
