#include "program.h"

#include "interrupt.h"
#include "subject.h"
#include "verdict.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>

namespace krlab {

namespace {

double parseNumber(const std::string& text, std::string& rest) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    rest.assign(error == std::errc() ? end : text.data(), text.data() + text.size());
    return error == std::errc() ? value : -1;
}

} // namespace

std::string Context::rig() const {
    const std::filesystem::path program = options.rig.empty() ? defaultRig() : std::filesystem::path(options.rig);
    if (program.empty()) {
        throw Fault("there is no rig beside this program; name one with --rig PROGRAM");
    }
    std::error_code error;
    if (!std::filesystem::is_regular_file(program, error)) {
        throw Fault(program.string(), "no rig program is there; build it, or name one with --rig PROGRAM");
    }
    return std::filesystem::absolute(program).string();
}

Subject Context::subject(const std::string& text) const {
    const std::string program = rig();
    return parseSubject(text.empty() ? program : text, program);
}

unsigned long Context::seed() const {
    return options.seed ? *options.seed : std::random_device()();
}

void Context::writeJson(const nlohmann::json& document) const {
    if (!options.json.empty()) {
        writeOutput(options.json, document.dump(1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
    }
}

CLI::App* addAction(CLI::App& command, const std::string& name, const std::string& text, std::function<void()> choose) {
    command.require_subcommand(1);
    CLI::App* action = command.add_subcommand(name, text);
    action->fallthrough();
    action->callback(std::move(choose));
    return action;
}

Program::Program()
    : m_app(std::make_unique<CLI::App>("Compares, keeps, shows and repeats what the rig measures.", "krlab")) {
    m_app->fallthrough();
    m_app->footer(
        "Everything after -- goes to the rig as its keys: krlab run --passes 3 -- -fDotProd -dlenght=40\n"
        "Exit status: 0 nothing is worse, 1 something is, 2 something failed, 3 undecided (--strict), 130 Ctrl-C");
    m_app->add_option("--json", m_common.json, "write the result as JSON, - for standard output")->type_name("FILE");
    m_app->add_flag("--quiet", m_common.quiet, "no notes and no progress");
    m_app->add_option("--seed", m_common.seed, "seed of all random choices")->type_name("N");
    m_app->add_option("--rig", m_common.rig, "the rig program, if not the one beside this program")
        ->type_name("PROGRAM");
}

Program::~Program() = default;

CLI::App& Program::add(const std::string& name, const std::string& text, std::function<int(Context&)> run) {
    return *addAction(*m_app, name, text, [this, run = std::move(run)] { m_chosen = run; });
}

int Program::run(std::vector<std::string> words) {
    const std::vector<std::string> all = words;
    words.erase(words.begin());
    const auto bar = std::find(words.begin(), words.end(), "--");
    if (bar != words.end()) {
        m_common.keys.assign(bar + 1, words.end());
        words.erase(bar, words.end());
    }
    // The parser takes the words from the last to the first.
    std::reverse(words.begin(), words.end());
    try {
        m_app->parse(words);
    } catch (const CLI::ParseError& error) {
        const int status = m_app->exit(error);
        return status == 0 ? exitGood : exitFailed;
    }
    Console console(m_common.quiet);
    Context context{m_common, all, console};
    return m_chosen(context);
}

int Program::main(int argc, char** argv) {
    try {
        watchInterrupts();
        return run(std::vector<std::string>(argv, argv + argc));
    } catch (const std::exception& error) {
        fmt::print(stderr, "krlab: {}\n", error.what());
        return exitFailed;
    }
}

void addSubject(CLI::App& command, std::string& subject) {
    command.add_option("SUBJECT", subject, "library directory or rig program; the rig beside krlab without it");
}

void addThreshold(CLI::App& command, std::string& threshold) {
    command.add_option("--threshold", threshold, "changes up to this do not matter")->capture_default_str();
}

void addConfidence(CLI::App& command, std::string& confidence) {
    command.add_option("--confidence", confidence, "that no line is accused wrongly")->capture_default_str();
}

void addStrict(CLI::App& command, bool& strict) {
    command.add_flag("--strict", strict, "status 3 if lines stay undecided");
}

void writeVerdicts(const VerdictReport& report, Context& context) {
    context.writeJson(toJson(report));
    if (context.reportWanted()) {
        writeOutput("-", describe(report));
    }
}

void addPasses(CLI::App& command, int& passes, const std::string& text, std::pair<int, int> range) {
    command.add_option("--passes", passes, text)->check(CLI::Range(range.first, range.second))->capture_default_str();
}

void addLimit(CLI::App& command, std::string& limit) {
    command.add_option("--limit", limit, "time limit of a process")->capture_default_str();
}

void writeOutput(const std::string& file, const std::string& text) {
    if (file == "-") {
        if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
            throw Fault("standard output", "can't be written: " + systemCause(errno));
        }
        return;
    }
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << text;
    out.close();
    if (!out) {
        throw Fault(file, "can't be written: " + systemCause(errno));
    }
}

double parseDuration(const std::string& text) {
    std::string unit;
    const double value = parseNumber(text, unit);
    const double factor = unit.empty() || unit == "s" ? 1 : unit == "m" ? 60 : unit == "h" ? 3600 : 0;
    // A week is more than anybody waits for; it also keeps infinities out.
    if (!(value >= 0) || factor == 0 || value * factor > 604800) {
        throw Fault(fmt::format("'{}' is no time; write 90s, 2m or 1h", text));
    }
    return value * factor;
}

double parseShare(const std::string& text) {
    std::string unit;
    const double value = parseNumber(text, unit);
    const double share = unit == "%" ? value / 100 : value;
    if (!(share > 0) || share >= 1 || (!unit.empty() && unit != "%")) {
        throw Fault(fmt::format("'{}' is no share; write 3% or 0.03", text));
    }
    return share;
}

} // namespace krlab
