// krlab budget: what a whole codec takes, from the calls that a frame makes.
#include "budget.h"
#include "interrupt.h"
#include "linecourse.h"
#include "program.h"
#include "text.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <set>

namespace krlab {

namespace {

struct BudgetArguments {
    std::string file;
    std::string subject;
    std::string rate;
    std::string timeLimit = "10m";
    std::vector<std::string> codecs;
    int passes = 3;
    bool allCalls = false;
};

/// "2.5GHz", "800MHz" or clocks a second.
double parseRate(const std::string& text) {
    double factor = 1;
    std::string number = text;
    for (const auto& [unit, value] : {std::pair<std::string, double>{"GHz", 1e9}, {"MHz", 1e6}}) {
        if (text.ends_with(unit)) {
            factor = value;
            number = std::string(trimmed(text.substr(0, text.size() - unit.size())));
        }
    }
    const double rate = numberOf(number).value_or(0) * factor;
    if (!(rate >= 1e6) || rate > 1e12) {
        throw Fault(fmt::format("'{}' is no clock rate; write 2.5GHz or 800MHz", text));
    }
    return rate;
}

/// The budgets of the file that the user wants.
std::vector<Budget> chosenBudgets(const BudgetArguments& options) {
    std::vector<Budget> budgets = parseBudgets(options.file, readFile(options.file));
    std::vector<std::string> names;
    names.reserve(budgets.size());
    for (const Budget& budget : budgets) {
        names.push_back(budget.name);
    }
    for (const std::string& wanted : options.codecs) {
        if (std::none_of(names.begin(), names.end(),
                         [&](const std::string& name) { return name.find(wanted) != std::string::npos; })) {
            throw Fault(options.file, fmt::format("has no codec '{}'{}", wanted, proposal(wanted, names)));
        }
    }
    std::erase_if(budgets, [&](const Budget& budget) {
        return !options.codecs.empty() &&
               std::none_of(options.codecs.begin(), options.codecs.end(),
                            [&](const std::string& wanted) { return budget.name.find(wanted) != std::string::npos; });
    });
    return budgets;
}

class BudgetRun {
public:
    BudgetRun(const BudgetArguments& options, Context& context)
        : m_options(options), m_context(context), m_budgets(chosenBudgets(options)) {}

    int run() {
        const double rate = m_options.rate.empty() ? thisMachine().counterMHz * 1e6 : parseRate(m_options.rate);
        measure();
        m_context.console.clear();
        std::string text = describe(m_identity) + "\n";
        nlohmann::json codecs = nlohmann::json::array();
        for (const Budget& budget : m_budgets) {
            const BudgetSum sum = sumBudget(budget, m_clocks);
            for (const BudgetShare& share : sum.shares) {
                if (share.clocks < 0) {
                    m_failures.insert(fmt::format("the rig has no figure for {}", share.call.line.text()));
                }
            }
            text += describeBudget(budget, sum, rate);
            codecs.push_back(budgetJson(budget, sum, rate));
        }
        text += "\nThe calls of the library alone, each timed by itself with warm code and tables: inside a codec they "
                "mostly take longer.\n";
        if (m_context.reportWanted()) {
            writeOutput("-", text);
        }
        for (const std::string& failure : m_failures) {
            m_context.console.warn("krlab: " + failure);
        }
        m_context.writeJson({{"schema", "krlab-budget-result-1"},
                             {"identity", toJson(m_identity)},
                             {"clocks_per_second", rate},
                             {"codecs", std::move(codecs)},
                             {"failures", m_failures}});
        return interrupted() ? exitInterrupted : m_failures.empty() ? exitGood : exitFailed;
    }

private:
    /// Every line once in each pass; the smallest of its readings counts, since disturbances only ever add.
    void measure() {
        PassRequest request = shortCallRequest(m_context.subject(m_options.subject), m_context.options.keys,
                                               parseDuration(m_options.timeLimit));
        std::set<Line> lines;
        for (const Budget& budget : m_budgets) {
            for (const BudgetCall& call : budget.calls) {
                lines.insert(call.line);
            }
        }
        request.lines.assign(lines.begin(), lines.end());
        for (int i = 0; i < m_options.passes && !interrupted(); ++i) {
            m_context.console.progress("measuring", static_cast<double>(i) / m_options.passes);
            const Pass pass = runPass(request);
            if (i == 0) {
                m_identity = pass.identity;
            }
            for (const Figure& figure : pass.figures) {
                if (figure.clocks > 0) {
                    const auto [at, first] = m_clocks.try_emplace(figure.line, figure.clocks);
                    at->second = std::min(at->second, figure.clocks);
                }
            }
            for (const std::string& failure : pass.failures()) {
                if (!interrupted()) {
                    m_failures.insert(failure);
                }
            }
        }
    }

    std::string describeBudget(const Budget& budget, const BudgetSum& sum, double rate) const {
        const double core = sum.core(budget, rate);
        // Of a sum that lacks calls no number of channels can be told.
        std::string text = fmt::format(
            "\n{}: {}{:.0f} clocks for a frame of {:.4g} ms, {:.3f} % of a core at {:.4g} GHz", budget.name,
            sum.whole ? "" : "not whole, at least ", sum.clocks, budget.frameSeconds * 1000, core * 100, rate / 1e9);
        text += sum.whole && core > 0 ? fmt::format(", at most {:.0f} channels a core\n", 1 / core) : "\n";
        size_t told = 0;
        double rest = 0;
        for (const BudgetShare& share : sum.shares) {
            if (share.clocks < 0) {
                text +=
                    fmt::format("             no figure x {:<6.4g}  {}\n", share.call.calls, share.call.line.text());
                continue;
            }
            if (!m_options.allCalls && ++told > 5) {
                rest += share.frame();
                continue;
            }
            text += fmt::format("  {:5.1f} %  {:10.5g} x {:<6.4g}  {}\n", share.frame() / sum.clocks * 100,
                                share.clocks, share.call.calls, share.call.line.text());
        }
        if (rest > 0) {
            text += fmt::format("  {:5.1f} %  {} more calls\n", rest / sum.clocks * 100, told - 5);
        }
        for (const std::string& word : budget.missing) {
            text += "  without " + word + "\n";
        }
        return text;
    }

    static nlohmann::json budgetJson(const Budget& budget, const BudgetSum& sum, double rate) {
        const double core = sum.core(budget, rate);
        nlohmann::json calls = nlohmann::json::array();
        for (const BudgetShare& share : sum.shares) {
            calls.push_back({{"line", share.call.line.text()},
                             {"calls", share.call.calls},
                             {"clocks", share.clocks < 0 ? nlohmann::json() : nlohmann::json(share.clocks)}});
        }
        return {{"name", budget.name},
                {"frame_seconds", budget.frameSeconds},
                {"clocks", sum.clocks},
                {"whole", sum.whole},
                {"core", core},
                {"channels", sum.whole && core > 0 ? nlohmann::json(1 / core) : nlohmann::json()},
                {"calls", std::move(calls)},
                {"missing", budget.missing}};
    }

    const BudgetArguments& m_options;
    Context& m_context;
    std::vector<Budget> m_budgets;
    Identity m_identity;
    std::map<Line, double> m_clocks;
    std::set<std::string> m_failures;
};

} // namespace

void addBudget(Program& program) {
    const auto [command, options] = program.add<BudgetArguments>(
        "budget", "clocks a frame of whole codecs, share of a core, channels a core",
        [](const BudgetArguments& chosen, Context& context) { return BudgetRun(chosen, context).run(); });
    command.add_option("FILE", options->file, "the calls that a frame makes (lab/budgets has some)")->required();
    addSubject(command, options->subject);
    command.add_option("--codec", options->codecs, "only codecs with this in their name");
    command.add_option("--rate", options->rate, "clock rate of the core, as 2.5GHz; that of the counter without it");
    addPasses(command, options->passes, "passes over the lines");
    addLimit(command, options->timeLimit);
    command.add_flag("--calls", options->allCalls, "all calls of a frame, not the dearest alone");
}

} // namespace krlab
