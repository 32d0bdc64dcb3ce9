// The command line: the common options, the table of commands, what stands behind "--", and the exit status.
#pragma once

#include "console.h"
#include "fault.h"

#include <functional>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace CLI {
class App;
}

namespace krlab {

struct Subject;
struct VerdictReport;

/// What every command takes.
struct CommonOptions {
    std::string json;                  ///< file for the JSON form, "-" for standard output, empty for none
    bool quiet = false;                ///< no notes and no progress
    std::optional<unsigned long> seed; ///< of all random choices; drawn by the command if not given
    std::string rig;                   ///< the rig program; empty for the one beside this program
    std::vector<std::string> keys;     ///< what stands behind "--": keys of the rig, word by word
};

/// What a command works with.
struct Context {
    const CommonOptions& options;
    const std::vector<std::string>& arguments; ///< the program's whole argument vector
    Console& console;

    /// The program of --rig, or the one beside this program. Throws Fault if there is none.
    std::string rig() const;
    /// What SUBJECT names, with that program as the rig; without a text the rig itself. Throws Fault as parseSubject
    /// does.
    Subject subject(const std::string& text) const;
    /// The seed of --seed, or a drawn one.
    unsigned long seed() const;
    /// True if the report belongs to standard output: JSON does not take it.
    bool reportWanted() const { return options.json != "-"; }
    /// Writes the JSON form where --json wants it; bytes that are no UTF-8 are replaced. Throws Fault.
    void writeJson(const nlohmann::json& document) const;
};

/// A command with options of its own.
template <class Options>
struct Command {
    CLI::App& app;
    std::shared_ptr<Options> options;
};

/// An action of a command, one of which must be given: it takes the command's options too, and calls `choose`.
CLI::App* addAction(CLI::App& command, const std::string& name, const std::string& text, std::function<void()> choose);

/// Collects the commands. Each command's file adds itself: an app.add_subcommand() with its options, and what it runs.
class Program {
public:
    Program();
    ~Program();

    /// A new command. `run` returns the exit status; the options that `describe`d it live in what `run` holds.
    CLI::App& add(const std::string& name, const std::string& text, std::function<int(Context&)> run);
    /// A new command that runs act(options, context), and the options that it lives with.
    template <class Options, class Run>
    Command<Options> add(const std::string& name, const std::string& text, Run act) {
        auto options = std::make_shared<Options>();
        return {add(name, text, [options, act](Context& context) { return act(*options, context); }), options};
    }
    /// Reads the arguments and runs the chosen command. Every failure ends in a message and a status.
    int main(int argc, char** argv);

private:
    int run(std::vector<std::string> words);

    std::unique_ptr<CLI::App> m_app;
    CommonOptions m_common;
    std::function<int(Context&)> m_chosen;
};

/// A command of several actions, one of which is chosen; they share their options.
template <class Options>
class Actions {
public:
    using Run = int (*)(const Options&, Context&);

    Actions(Program& program, const std::string& name, const std::string& text)
        : m_command(program.add(name, text, [options = options, chosen = m_chosen](Context& context) {
              return (*chosen)(*options, context);
          })) {}
    /// A new action; `run` returns the exit status.
    CLI::App* add(const std::string& name, const std::string& text, Run run) {
        return addAction(m_command, name, text, [chosen = m_chosen, run] { *chosen = run; });
    }

    const std::shared_ptr<Options> options = std::make_shared<Options>();

private:
    std::shared_ptr<Run> m_chosen = std::make_shared<Run>(nullptr);
    CLI::App& m_command;
};

/// The commands; each stands in its own file.
void addRun(Program& program);
void addAb(Program& program);
void addCompare(Program& program);
void addCheck(Program& program);
void addReplay(Program& program);
void addResume(Program& program);
void addTidy(Program& program);
void addDoctor(Program& program);
void addReport(Program& program);
void addCount(Program& program);
void addHistory(Program& program);
void addWatch(Program& program);
void addBudget(Program& program);
void addFleet(Program& program);

/// What an argument that names passes may be.
inline constexpr const char* passesText =
    "a table (several: A.csv,B.csv), a store, or passes of one: [STORE:]RUN, RUN/SUBJECT, LABEL";
/// The argument SUBJECT of a command, which may be left out.
void addSubject(CLI::App& command, std::string& subject);
/// What the commands that judge lines of two sides take.
struct VerdictArguments {
    std::string older;
    std::string newer;
    std::string threshold = "3%";
    std::string confidence = "99%";
    std::string store = "krlab.db";
    bool strict = false;
};

void addThreshold(CLI::App& command, std::string& threshold);
void addConfidence(CLI::App& command, std::string& confidence);
void addStrict(CLI::App& command, bool& strict);
void writeVerdicts(const VerdictReport& report, Context& context);

/// How often something is measured; what stands in `passes` is the default.
void addPasses(CLI::App& command, int& passes, const std::string& text, std::pair<int, int> range = {1, 1000});
/// The time after which a process of the rig is ended; what stands in `limit` is the default.
void addLimit(CLI::App& command, std::string& limit);

/// Writes text to the file, or to standard output for "-". Throws Fault with the cause.
void writeOutput(const std::string& file, const std::string& text);

/// Reads "90", "90s", "2m", "1h" as seconds. Throws Fault.
double parseDuration(const std::string& text);
/// Reads "3%" or "0.03" as a fraction. Throws Fault.
double parseShare(const std::string& text);

} // namespace krlab
