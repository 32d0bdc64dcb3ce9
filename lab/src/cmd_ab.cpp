// `krlab ab A B`: which lines of B are slower or faster than those of A.
#include "abrun.h"
#include "interrupt.h"
#include "program.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

namespace krlab {

namespace {

struct AbArguments {
    std::string older;
    std::string newer;
    std::string threshold = "3%";
    std::string time = "2m";
    std::string confidence = "99%";
    std::string timeLimit = "2m";
    std::string store = "krlab.db";
    std::string label;
    bool strict = false;
};

int decide(const AbArguments& options, Context& context) {
    AbOptions ab;
    const std::filesystem::path rig = context.options.rig.empty() ? defaultRig() : std::filesystem::path(context.rig());
    ab.subjects = {parseSubject(options.older, rig), parseSubject(options.newer, rig)};
    if (ab.subjects[sideOld].name == ab.subjects[sideNew].name) {
        ab.subjects[sideOld].name += " (old)";
        ab.subjects[sideNew].name += " (new)";
    }
    ab.keys = context.options.keys;
    ab.trial = {parseShare(options.threshold), parseShare(options.confidence)};
    ab.seconds = parseDuration(options.time);
    ab.passLimit = parseDuration(options.timeLimit);
    ab.seed = context.seed();
    ab.progress = [&](const std::string& text, double share) { context.console.progress(text, share); };
    ab.note = [&](const std::string& text) { context.console.note(text); };

    std::unique_ptr<Store> store;
    if (options.store != "none") {
        store = std::make_unique<Store>(options.store);
        ab.store = store.get();
        RunRecord record;
        record.command = "ab";
        record.arguments = context.arguments;
        record.seed = ab.seed;
        record.label = options.label;
        record.started = timeText();
        ab.run = store->beginRun(record);
    }
    const VerdictReport report = runAb(ab);
    const int status = interrupted() ? int{exitInterrupted} : exitStatus(report, options.strict);
    if (store) {
        store->endRun(ab.run, status);
    }
    context.console.clear();
    if (!context.options.json.empty()) {
        writeOutput(context.options.json, toJson(report).dump(1) + "\n");
    }
    if (context.reportWanted()) {
        writeOutput("-", describe(report));
    }
    return status;
}

} // namespace

void addAb(Program& program) {
    const auto options = std::make_shared<AbArguments>();
    CLI::App& command = program.add("ab", "measure two subjects in turn and tell which lines changed",
                                    [options](Context& context) { return decide(*options, context); });
    command
        .add_option("OLD", options->older,
                    "a library directory, a rig program, or PROGRAM,DIRECTORY; NAME=... names it")
        ->required();
    command.add_option("NEW", options->newer, "the same for the new one")->required();
    command.add_option("--threshold", options->threshold, "changes up to this do not matter")->capture_default_str();
    command.add_option("--time", options->time, "time for all rounds")->capture_default_str();
    command.add_option("--confidence", options->confidence, "that no line is accused wrongly")->capture_default_str();
    command.add_option("--limit", options->timeLimit, "time after which a pass is ended")->capture_default_str();
    command.add_option("--store", options->store, "file that keeps the passes, none for no file")
        ->capture_default_str();
    command.add_option("--label", options->label, "commit or other name under which the passes are kept");
    command.add_flag("--strict", options->strict, "status 3 if lines stay undecided");
}

} // namespace krlab
