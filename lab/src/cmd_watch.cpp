// krlab watch: measures a selection again whenever the library is built, and shows what the last build did to each
// line.
#include "comparison.h"
#include "filewatch.h"
#include "interrupt.h"
#include "linecourse.h"
#include "program.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace krlab {

namespace {

struct WatchArguments {
    std::string subject;
    std::string threshold = "3%";
    std::string timeLimit = "10m";
    int passes = 5;
};

/// Seconds in which no file may change before a build counts as ended.
constexpr double quietSeconds = 0.5;

/// What was measured of one build.
struct Build {
    Identity identity;
    std::vector<std::vector<Figure>> runs;
};

std::vector<std::string> hashesOf(const Identity& identity) {
    std::vector<std::string> hashes = {identity.program.sha256};
    for (const FileIdentity& library : identity.libraries) {
        hashes.push_back(library.sha256);
    }
    return hashes;
}

/// The names that a build writes: those that the loader looks for, and the files that they lead to.
std::vector<std::string> filesOf(const Subject& subject, const Identity& identity) {
    std::vector<std::string> files = {subject.program.string(), identity.program.path};
    for (const FileIdentity& library : identity.libraries) {
        files.push_back(library.path);
        if (!subject.libraries.empty()) {
            files.push_back((subject.libraries / library.name).string());
        }
    }
    return files;
}

class Watching {
public:
    Watching(const WatchArguments& options, Context& context)
        : m_options(options), m_context(context), m_threshold(parseShare(options.threshold)) {
        m_request =
            shortCallRequest(context.subject(options.subject), context.options.keys, parseDuration(options.timeLimit));
        listChosenTests(m_request.subject, m_request.keys);
    }

    int run() {
        Build last = measure();
        FileWatch watch(filesOf(m_request.subject, last.identity));
        while (!interrupted()) {
            m_context.console.note(fmt::format("{} lines measured; waiting for a build (Ctrl-C ends)",
                                               last.runs.empty() ? 0 : last.runs.front().size()));
            if (!watch.wait(quietSeconds)) {
                break;
            }
            // A library that can't be measured, as when its build has failed, leaves things as they are.
            try {
                if (hashesOf(identify(m_request.subject)) == hashesOf(last.identity)) {
                    continue;
                }
                Build fresh = measure();
                if (interrupted()) {
                    break;
                }
                tell(last, fresh);
                last = std::move(fresh);
            } catch (const Fault& fault) {
                m_context.console.warn(std::string("krlab: ") + fault.what());
            }
        }
        return exitInterrupted;
    }

private:
    Build measure() {
        Build build;
        for (int i = 0; i < m_options.passes && !interrupted(); ++i) {
            m_context.console.progress("measuring", static_cast<double>(i) / m_options.passes);
            const Pass pass = runPass(m_request);
            if (i == 0) {
                build.identity = pass.identity;
            }
            build.runs.push_back(pass.figures);
            for (const std::string& failure : pass.failures()) {
                if (!interrupted()) {
                    m_context.console.warn("krlab: " + failure);
                }
            }
        }
        m_context.console.clear();
        return build;
    }

    void tell(const Build& last, const Build& fresh) {
        Comparison comparison;
        comparison.runs = {last.runs, fresh.runs};
        comparison.threshold = m_threshold;
        VerdictReport report = compareRuns(comparison);
        report.older = last.identity;
        report.newer = fresh.identity;
        m_context.writeJson(toJson(report));
        if (!m_context.reportWanted()) {
            return;
        }
        std::stable_sort(report.lines.begin(), report.lines.end(), [](const LineVerdict& a, const LineVerdict& b) {
            return std::abs(std::log(a.ratio)) > std::abs(std::log(b.ratio));
        });
        std::string text = fmt::format("{}\n  change%        old        new  verdict    line, in clocks a call\n",
                                       fresh.identity.started);
        for (const LineVerdict& line : report.lines) {
            text += fmt::format("  {:+7.1f} {:10.5g} {:10.5g}  {:<9}  {}\n", (line.ratio - 1) * 100, line.older,
                                line.newer, verdictText(line.verdict), line.line.text());
        }
        const VerdictCounts counts = countVerdicts(report.lines);
        text +=
            fmt::format("{} lines: {} slower, {} faster, {} same, {} undecided; all together {:+.1f} %\n", counts.lines,
                        counts.slower, counts.faster, counts.same, counts.undecided, (report.commonRatio - 1) * 100);
        writeOutput("-", text);
    }

    const WatchArguments& m_options;
    Context& m_context;
    double m_threshold;
    PassRequest m_request;
};

} // namespace

void addWatch(Program& program) {
    const auto [command, options] = program.add<WatchArguments>(
        "watch", "measure a selection again after each build and show what it did to each line",
        [](const WatchArguments& chosen, Context& context) { return Watching(chosen, context).run(); });
    addSubject(command, options->subject);
    addPasses(command, options->passes, "passes of each build", {2, 1000});
    addThreshold(command, options->threshold);
    addLimit(command, options->timeLimit);
}

} // namespace krlab
