// krlab replay: one line again, exactly that one.
#include "pass.h"
#include "program.h"
#include "replay.h"
#include "text.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace krlab {

namespace {

struct ReplayOptions {
    std::vector<std::string> words;
    std::string subject;
    int passes = 1;
    std::string timeLimit = "2m";
};

std::string figureText(const Figure& figure) {
    return fmt::format("{:.7g} clocks a call, {:.4g} an element, {}{}", figure.clocks, figure.perElement,
                       figure.comment, figure.accuracy >= 0 ? fmt::format(", acc={:.1f}%", figure.accuracy * 100) : "");
}

int replay(const ReplayOptions& options, Context& context) {
    const Subject subject = context.subject(options.subject);
    const std::vector<TestParameters> tests = listParameters(subject, {});
    const ReplayTarget target = replayTarget(options.words, tests);
    PassRequest request;
    request.subject = subject;
    request.keys = context.options.keys;
    request.lines = {target.line};
    request.keepOthers = true;
    request.timeLimit = parseDuration(options.timeLimit);
    nlohmann::json figures = nlohmann::json::array();
    nlohmann::json identity;
    if (context.reportWanted()) {
        writeOutput("-", target.line.text() + "\n");
        if (target.known) {
            writeOutput("-", "  then: " + figureText(target.figure) + "\n");
        }
    }
    for (int i = 0; i < options.passes; ++i) {
        const Pass pass = runPass(request);
        if (pass.ends.back().how == ProcessEnd::How::interrupted) {
            return exitInterrupted;
        }
        const Figure* figure = replayed(target.line, pass);
        if (!pass.complete() || figure == nullptr) {
            throw Fault(replayFailure(target.line, pass));
        }
        if (i == 0) {
            identity = toJson(pass.identity);
            context.console.note(describe(pass.identity));
        }
        figures.push_back({{"clocks", figure->clocks},
                           {"clocks_per_element", figure->perElement},
                           {"calls", figure->loops},
                           {"accuracy", figure->accuracy}});
        if (context.reportWanted()) {
            writeOutput("-", "  now:  " + figureText(*figure) + "\n");
        }
    }
    context.writeJson(
        {{"schema", "krlab-replay-1"}, {"line", target.line.text()}, {"identity", identity}, {"figures", figures}});
    return exitGood;
}

} // namespace

void addReplay(Program& program) {
    const auto [command, options] = program.add<ReplayOptions>("replay", "measures exactly one line again", replay);
    command
        .add_option("LINE", options->words,
                    "TABLE:ROW with the row's line number in the file, or FUNCTION NAME=VALUE ...")
        ->required();
    command.add_option("--subject", options->subject, "library directory or rig program");
    addPasses(command, options->passes, "how often");
    command.add_option("--limit", options->timeLimit, "time limit of each process")->capture_default_str();
}

} // namespace krlab
