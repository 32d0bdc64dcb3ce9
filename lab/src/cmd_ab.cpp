// `krlab ab A B`: which lines of B are slower or faster than those of A.
#include "abrun.h"
#include "fleetsource.h"
#include "fleetverdict.h"
#include "interrupt.h"
#include "program.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

namespace krlab {

namespace {

struct AbArguments : VerdictArguments {
    std::string time = "2m";
    std::string timeLimit = "2m";
    std::string label;
    std::string fleet;
};

// Nothing is measured here: the tasks of the fleet have done that.
int decideFleet(const AbArguments& options, Context& context) {
    FleetChoice choice{options.label, options.older, options.newer, parseShare(options.threshold),
                       parseShare(options.confidence)};
    const FleetSource source(options.fleet);
    if (source.folder()) {
        choice.plan = source.folder()->id();
    }
    VerdictReport report = fleetVerdict(source.store(), choice);
    report.remarks.insert(report.remarks.end(), source.remarks().begin(), source.remarks().end());
    writeVerdicts(report, context);
    return exitStatus(report, options.strict);
}

int decide(const AbArguments& options, Context& context) {
    if (!options.fleet.empty()) {
        return decideFleet(options, context);
    }
    if (options.older.empty() || options.newer.empty()) {
        throw Fault("ab needs two subjects, OLD and NEW, or --fleet with what a fleet has measured");
    }
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
    writeVerdicts(report, context);
    return status;
}

} // namespace

void addAb(Program& program) {
    const auto [command, options] =
        program.add<AbArguments>("ab", "measure two subjects in turn and tell which lines changed", decide);
    command.add_option("OLD", options->older,
                       "a library directory, a rig program, or PROGRAM,DIRECTORY; NAME=... names it");
    command.add_option("NEW", options->newer, "the same for the new one");
    command.add_option("--fleet", options->fleet,
                       "a job folder of krlab fleet or a store with its passes: nothing is measured; OLD and NEW, if "
                       "given, are names of its subjects, and --label is its name");
    addThreshold(command, options->threshold);
    command.add_option("--time", options->time, "time for all rounds")->capture_default_str();
    addConfidence(command, options->confidence);
    command.add_option("--limit", options->timeLimit, "time after which a pass is ended")->capture_default_str();
    command.add_option("--store", options->store, "file that keeps the passes, none for no file")
        ->capture_default_str();
    command.add_option("--label", options->label, "commit or other name under which the passes are kept");
    addStrict(command, options->strict);
}

} // namespace krlab
