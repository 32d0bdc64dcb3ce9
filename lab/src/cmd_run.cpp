// krlab run: passes spread over time; the smallest and the median of each line; restless lines again until they agree.
#include "interrupt.h"
#include "linecourse.h"
#include "linejson.h"
#include "program.h"
#include "store.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <set>
#include <thread>

namespace krlab {

namespace {

using Clock = std::chrono::steady_clock;
using nlohmann::json;

struct RunOptions {
    std::string subject;
    int passes = 5;
    std::string time;
    std::string accuracy = "2%";
    std::string store = "krlab.db";
    std::string label;
    std::string timeLimit = "10m";
    bool allLines = false;
};

/// Without a time of its own a run measures restless lines this often at most.
constexpr int furtherPasses = 20;
/// So many lines are shown; of more of them the worst alone.
constexpr size_t toldLines = 20;

/// One use of the command.
class Run {
public:
    Run(const RunOptions& options, Context& context)
        : m_options(options), m_context(context), m_accuracy(parseShare(options.accuracy)),
          m_seconds(options.time.empty() ? 0 : parseDuration(options.time)), m_start(Clock::now()),
          m_store(options.store) {
        m_request.subject = context.subject(options.subject);
        m_request.keys = context.options.keys;
        m_request.timeLimit = parseDuration(options.timeLimit);
        m_tests = listChosenTests(m_request.subject, m_request.keys).size();
    }

    int run() {
        RunRecord record;
        record.command = "run";
        record.arguments = m_context.arguments;
        record.seed = m_context.options.seed.value_or(0);
        record.label = m_options.label;
        m_run = m_store.beginRun(record);
        // Whatever ends the measuring, what was measured is reported.
        try {
            wholePasses();
            further();
        } catch (const Fault& fault) {
            m_failures.insert(fault.what());
        }
        m_context.console.clear();
        report();
        const int status = interrupted() ? exitInterrupted : m_failures.empty() ? exitGood : exitFailed;
        keep([&] { m_store.endRun(m_run, status); });
        return status;
    }

private:
    double spent() const { return std::chrono::duration<double>(Clock::now() - m_start).count(); }
    bool timeUp() const { return m_seconds > 0 && spent() >= m_seconds; }

    /// Passes over all lines, spread over the time if there is one; the last third of it is for restless lines.
    void wholePasses() {
        for (int i = 0; i < m_options.passes && !interrupted() && (i == 0 || !timeUp()); ++i) {
            waitUntil(m_seconds * 2 / 3 * i / m_options.passes);
            if (interrupted()) {
                return;
            }
            m_share = 0.7 * i / m_options.passes;
            measure(fmt::format("pass {} of {}", i + 1, m_options.passes), {}, false);
            shortCalls();
        }
    }

    void shortCalls() {
        if (const std::vector<Line> lines = m_course.shortLines(); !lines.empty() && !interrupted()) {
            measure("short calls", lines, true);
        }
    }

    void further() {
        for (int i = 0; !interrupted() && !timeUp() && (m_seconds > 0 || i < furtherPasses); ++i) {
            const std::vector<Line> lines = m_course.restless(m_accuracy, false);
            const std::vector<Line> looped = m_course.restless(m_accuracy, true);
            if (lines.empty() && looped.empty()) {
                return;
            }
            m_share = m_seconds > 0 ? spent() / m_seconds : 0.7 + 0.3 * i / furtherPasses;
            if (!lines.empty()) {
                measure(fmt::format("{} lines that do not agree yet", lines.size()), lines, false);
            }
            if (!looped.empty() && !interrupted()) {
                measure(fmt::format("{} short calls that do not agree yet", looped.size()), looped, true);
            }
        }
    }

    void waitUntil(double second) {
        while (spent() < second && !interrupted()) {
            m_context.console.progress("waiting for the next pass", spent() / m_seconds);
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    }

    void measure(const std::string& what, const std::vector<Line>& lines, bool looped) {
        PassRequest request = m_request;
        request.lines = lines;
        if (looped) {
            const std::vector<std::string> keys = shortCallKeys(request.keys);
            if (keys.empty()) {
                return;
            }
            request.keys.insert(request.keys.end(), keys.begin(), keys.end());
        }
        request.progress = [&](size_t ended, const std::string& function) {
            const double part =
                lines.empty() ? 0.7 / m_options.passes * static_cast<double>(ended) / static_cast<double>(m_tests) : 0;
            m_context.console.progress(what + "  " + function, std::min(1.0, m_share + part));
        };
        const Pass pass = runPass(request);
        m_course.take(pass, looped);
        keep([&] { m_store.addPass(m_run, m_round, pass); });
        ++m_round;
        if (!looped && lines.empty()) {
            m_identity = pass.identity;
        }
        for (const std::string& failure : pass.failures()) {
            if (pass.ends.back().how != ProcessEnd::How::interrupted) {
                m_failures.insert(failure);
            }
        }
        for (const TestEnd& test : pass.tests) {
            if (test.failed()) {
                m_failures.insert(fmt::format("{} ended with {}", test.function, test.result));
            }
        }
    }

    /// A store that can't be written any more costs its passes, not the run.
    template <typename Writing>
    void keep(const Writing& writing) {
        try {
            writing();
        } catch (const Fault& fault) {
            m_failures.insert(fault.what());
        }
    }

    static std::string lineText(const Readings& readings) {
        return fmt::format("  {:10.5g} {:10.5g} {:6.1f} % {:4}  {}\n", readings.smallest(), readings.median(),
                           readings.spread() * 100, readings.clocks.size(), readings.line.text());
    }

    void report() {
        std::vector<const Readings*> order;
        for (const Readings& readings : m_course.lines()) {
            order.push_back(&readings);
        }
        const auto agreed =
            std::count_if(order.begin(), order.end(), [this](const Readings* r) { return r->spread() <= m_accuracy; });
        if (m_context.reportWanted()) {
            std::string text = describe(m_identity) + "\n";
            text += fmt::format("{} lines in {} passes and {}; {} agree within {:.3g} %\n", order.size(), m_round,
                                durationText(spent()), agreed, m_accuracy * 100);
            if (!m_options.allLines && order.size() > toldLines) {
                std::stable_sort(order.begin(), order.end(),
                                 [](const Readings* a, const Readings* b) { return a->spread() > b->spread(); });
                order.resize(std::min<size_t>(order.size() - static_cast<size_t>(agreed), toldLines));
            }
            if (!order.empty()) {
                text += "    smallest     median   spread  runs  line, in clocks a call\n";
            }
            for (const Readings* readings : order) {
                text += lineText(*readings);
            }
            text += fmt::format("all passes are in {}, run {}\n", m_options.store, m_run);
            writeOutput("-", text);
        }
        for (const std::string& failure : m_failures) {
            m_context.console.warn("krlab: " + failure);
        }
        m_context.writeJson(document());
    }

    json document() const {
        json lines = json::array();
        for (const Readings& readings : m_course.lines()) {
            json line = lineJson(readings.line);
            line.update({{"smallest", readings.smallest()},
                         {"median", readings.median()},
                         {"spread", readings.spread()},
                         {"elements", readings.elements},
                         {"passes", readings.clocks.size()},
                         {"agreed", readings.spread() <= m_accuracy}});
            lines.push_back(std::move(line));
        }
        return {{"schema", "krlab-run-1"}, {"identity", toJson(m_identity)}, {"run", m_run},
                {"accuracy", m_accuracy},  {"lines", std::move(lines)},      {"failures", m_failures}};
    }

    const RunOptions& m_options;
    Context& m_context;
    double m_accuracy;
    double m_seconds;
    Clock::time_point m_start;
    Store m_store;
    PassRequest m_request;
    size_t m_tests = 0;
    long long m_run = 0;
    int m_round = 0;
    double m_share = 0;
    LineCourse m_course;
    Identity m_identity;
    std::set<std::string> m_failures;
};

} // namespace

void addRun(Program& program) {
    const auto [command, options] = program.add<RunOptions>(
        "run", "several passes: smallest and median of each line, restless lines again until they agree",
        [](const RunOptions& chosen, Context& context) { return Run(chosen, context).run(); });
    addSubject(command, options->subject);
    addPasses(command, options->passes, "passes over all lines", {1, 100000});
    command.add_option("--time", options->time,
                       "spread the passes over this time, and use it up while lines do not agree");
    command
        .add_option("--accuracy", options->accuracy, "the three smallest readings of a line are to agree within this")
        ->capture_default_str();
    command.add_option("--store", options->store, "file that keeps all passes")->capture_default_str();
    command.add_option("--label", options->label, "name of the run in the store, such as a commit");
    addLimit(command, options->timeLimit);
    command.add_flag("--lines", options->allLines, "report all lines, not the worst alone");
}

} // namespace krlab
