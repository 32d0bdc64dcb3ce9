// `krlab compare OLD NEW`: the verdicts of `ab` from tables of the rig or from passes in a store.
#include "comparison.h"
#include "program.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

namespace krlab {

namespace {

struct CompareArguments : VerdictArguments {
    std::string countThreshold = "0.1%";
};

// A share, or none at all: counts may be asked to be equal.
double parseThreshold(const std::string& text) {
    return text == "0" || text == "0%" ? 0 : parseShare(text);
}

int judgeSides(const CompareArguments& options, Context& context) {
    const double threshold = parseShare(options.threshold);
    const double confidence = parseShare(options.confidence);
    PassList older;
    PassList newer;
    older.add(options.older, options.store);
    newer.add(options.newer, options.store);
    const VerdictReport report =
        comparePasses(older, newer, threshold, confidence, parseThreshold(options.countThreshold));
    writeVerdicts(report, context);
    return exitStatus(report, options.strict);
}

} // namespace

void addCompare(Program& program) {
    const auto [command, options] = program.add<CompareArguments>(
        "compare", "tell which lines changed between tables or stored passes", judgeSides);
    command.add_option("OLD", options->older, passesText)->required();
    command.add_option("NEW", options->newer, "the same for the new one")->required();
    addThreshold(command, options->threshold);
    command
        .add_option("--count-threshold", options->countThreshold,
                    "the same where both sides are counts of instructions (krlab count); 0 for equal ones")
        ->capture_default_str();
    addConfidence(command, options->confidence);
    command.add_option("--store", options->store, "file that keeps the passes")->capture_default_str();
    addStrict(command, options->strict);
}

} // namespace krlab
