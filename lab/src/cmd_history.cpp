// krlab history: passes by commit or label, and the steps in the course of each line.
#include "history.h"
#include "identity.h"
#include "interrupt.h"
#include "linecourse.h"
#include "linejson.h"
#include "program.h"
#include "referencekernel.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fmt/format.h>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>

namespace krlab {

namespace {

struct HistoryArguments {
    std::string store = "krlab.db";
    // add
    std::string subject;
    std::string label;
    std::string timeLimit = "10m";
    int passes = 5;
    // show, check
    std::string threshold = "2%";
    std::string confidence = "99%";
    std::string machine;
    std::string since;
    int last = 10;
    std::vector<std::string> lines;
};

/// The commit of the working directory, with a mark if files differ from it; empty if there is none.
std::string commitHere() {
    std::string text;
    if (std::FILE* git = ::popen("git describe --always --dirty 2>/dev/null", "r"); git != nullptr) {
        char block[256];
        while (std::fgets(block, sizeof block, git) != nullptr) {
            text += block;
        }
        ::pclose(git);
    }
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return text;
}

int addToHistory(const HistoryArguments& options, Context& context) {
    const std::string label = options.label.empty() ? commitHere() : options.label;
    if (label.empty()) {
        throw Fault("there is no commit here to name the point; give it a name with --label");
    }
    PassRequest request =
        shortCallRequest(context.subject(options.subject), context.options.keys, parseDuration(options.timeLimit));
    // A point is not to hang on where its build happens to lie in memory.
    request.copied = identify(request.subject).libraries;
    const size_t tests = listChosenTests(request.subject, request.keys).size();
    Store store(options.store);
    RunRecord record;
    record.command = "history";
    record.arguments = context.arguments;
    record.label = label;
    const long long run = store.beginRun(record);
    std::set<std::string> failures;
    int passes = 0;
    size_t lines = 0;
    while (passes < options.passes && !interrupted()) {
        request.progress = [&](size_t ended, const std::string& function) {
            context.console.progress(fmt::format("pass {} of {}  {}", passes + 1, options.passes, function),
                                     (passes + static_cast<double>(ended) / static_cast<double>(tests)) /
                                         options.passes);
        };
        const double before = referenceClocks();
        const Pass pass = runPass(request);
        const double reference = std::sqrt(before * referenceClocks());
        if (interrupted()) {
            break;
        }
        store.addReference(store.addPass(run, passes, pass), reference);
        ++passes;
        lines = std::max(lines, pass.figures.size());
        for (const std::string& failure : pass.failures()) {
            failures.insert(failure);
        }
        for (const TestEnd& test : pass.tests) {
            if (test.failed()) {
                failures.insert(fmt::format("{} ended with {}", test.function, test.result));
            }
        }
    }
    context.console.clear();
    for (const std::string& failure : failures) {
        context.console.warn("krlab: " + failure);
    }
    const int status = interrupted() ? exitInterrupted : failures.empty() ? exitGood : exitFailed;
    store.endRun(run, status);
    if (context.reportWanted()) {
        writeOutput("-", fmt::format("{}: {} lines in {} passes, kept in {}, run {}\n", label, lines, passes,
                                     options.store, run));
    }
    context.writeJson(
        {{"schema", "krlab-point-1"}, {"label", label}, {"run", run}, {"passes", passes}, {"failures", failures}});
    return status;
}

/// The courses that the options choose.
std::vector<HistoryCourse> chosenCourses(const HistoryArguments& options, const CommonOptions& common) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(options.store, error)) {
        throw Fault(options.store, "there is no such store; krlab history add makes it");
    }
    HistoryRule rule;
    rule.threshold = parseShare(options.threshold);
    rule.error = 1 - parseShare(options.confidence);
    rule.seed = common.seed.value_or(rule.seed);
    std::vector<HistoryCourse> courses = readHistory(Store(options.store), rule);
    std::erase_if(courses, [&](const HistoryCourse& course) {
        return course.machine.find(options.machine) == std::string::npos;
    });
    if (courses.empty()) {
        throw Fault(options.store, options.machine.empty() ? "holds no history; krlab history add makes a point of it"
                                                           : "holds no history of a machine '" + options.machine + "'");
    }
    return courses;
}

std::string stepText(const HistoryCourse& course, const HistoryLine& line, const HistoryStep& step) {
    return fmt::format("  {:8.4f}  {:10.5g} {:10.5g}  {:<16}  {}\n", step.factor(), step.before, step.after,
                       course.points[step.point].label, line.line.text());
}

// A step has readings on both sides.
constexpr size_t pointsForStep = 2 * StepRule().least;

std::string tooFewPoints() {
    return fmt::format("too few points to find a step: from {} on\n", pointsForStep);
}

constexpr const char* stepHeading = "    factor      before      after  first behind it   line, in clocks a call\n";

nlohmann::json courseJson(const HistoryCourse& course, size_t first) {
    nlohmann::json points = nlohmann::json::array();
    for (const HistoryPoint& point : course.points) {
        points.push_back({{"run", point.run},
                          {"label", point.label},
                          {"started", point.started},
                          {"passes", point.passes},
                          {"drift", point.drift}});
    }
    nlohmann::json lines = nlohmann::json::array();
    for (const HistoryLine& line : course.lines) {
        nlohmann::json steps = nlohmann::json::array();
        for (const HistoryStep& step : line.steps) {
            if (step.point >= first) {
                steps.push_back({{"label", course.points[step.point].label},
                                 {"point", step.point},
                                 {"before", step.before},
                                 {"after", step.after},
                                 {"factor", step.factor()}});
            }
        }
        nlohmann::json clocks = nlohmann::json::array();
        for (const double value : line.clocks) {
            clocks.push_back(std::isfinite(value) ? nlohmann::json(value) : nlohmann::json());
        }
        nlohmann::json told = lineJson(line.line);
        told.update({{"clocks", std::move(clocks)}, {"steps", std::move(steps)}});
        lines.push_back(std::move(told));
    }
    return {{"machine", course.machine}, {"points", std::move(points)}, {"lines", std::move(lines)}};
}

void writeHistoryJson(const Context& context, const std::vector<HistoryCourse>& courses,
                      const std::vector<size_t>& firsts) {
    nlohmann::json machines = nlohmann::json::array();
    for (size_t i = 0; i < courses.size(); ++i) {
        machines.push_back(courseJson(courses[i], firsts[i]));
    }
    context.writeJson({{"schema", "krlab-history-1"}, {"machines", std::move(machines)}});
}

std::string pointsText(const HistoryCourse& course) {
    std::string text = course.machine + "\n  point  passes   drift%  started                    label\n";
    for (size_t i = 0; i < course.points.size(); ++i) {
        const HistoryPoint& point = course.points[i];
        text += fmt::format("  {:5}  {:6}  {:+7.1f}  {:<25}  {}\n", i + 1, point.passes, (point.drift - 1) * 100,
                            point.started, point.label);
    }
    return text;
}

int showHistory(const HistoryArguments& options, Context& context) {
    std::vector<HistoryCourse> courses = chosenCourses(options, context.options);
    std::string text;
    for (HistoryCourse& course : courses) {
        if (!options.lines.empty()) {
            std::erase_if(course.lines, [&](const HistoryLine& line) {
                return std::find(options.lines.begin(), options.lines.end(), line.line.text()) == options.lines.end();
            });
            if (course.lines.empty()) {
                throw Fault(options.store, fmt::format("has no line {}", options.lines.front()));
            }
        }
        text += pointsText(course);
        std::string steps;
        for (const HistoryLine& line : course.lines) {
            for (const HistoryStep& step : line.steps) {
                steps += stepText(course, line, step);
            }
            if (!options.lines.empty()) {
                text += line.line.text() + "\n";
                for (size_t i = 0; i < line.clocks.size(); ++i) {
                    const bool behind = std::any_of(line.steps.begin(), line.steps.end(),
                                                    [i](const HistoryStep& step) { return step.point == i; });
                    text += fmt::format("  {:10.5g}  {}{}\n", line.clocks[i], course.points[i].label,
                                        behind ? "  <- step" : "");
                }
            }
        }
        text += !steps.empty()                         ? stepHeading + steps
                : course.points.size() < pointsForStep ? tooFewPoints()
                                                       : "no steps\n";
    }
    if (context.reportWanted()) {
        writeOutput("-", text);
    }
    writeHistoryJson(context, courses, std::vector<size_t>(courses.size(), 0));
    return exitGood;
}

/// Steps from this point on are looked at.
size_t firstPoint(const HistoryArguments& options, const HistoryCourse& course) {
    const size_t count = course.points.size();
    if (options.since.empty()) {
        return count > static_cast<size_t>(options.last) ? count - static_cast<size_t>(options.last) : 0;
    }
    for (size_t i = 0; i < count; ++i) {
        if (course.points[i].label == options.since) {
            return i;
        }
    }
    throw Fault(options.store, fmt::format("has no point '{}' of {}", options.since, course.machine));
}

int checkHistory(const HistoryArguments& options, Context& context) {
    const std::vector<HistoryCourse> courses = chosenCourses(options, context.options);
    std::vector<size_t> firsts;
    std::string text;
    size_t slower = 0;
    for (const HistoryCourse& course : courses) {
        const size_t first = firsts.emplace_back(firstPoint(options, course));
        std::string steps;
        for (const HistoryLine& line : course.lines) {
            for (const HistoryStep& step : line.steps) {
                if (step.point >= first) {
                    slower += step.factor() > 1 ? 1 : 0;
                    steps += stepText(course, line, step);
                }
            }
        }
        text += fmt::format("{}: {} lines, {} points, looked at from {} on\n", course.machine, course.lines.size(),
                            course.points.size(), course.points[first].label);
        text += !steps.empty()                         ? stepHeading + steps
                : course.points.size() < pointsForStep ? tooFewPoints()
                                                       : "no steps\n";
    }
    text += slower > 0 ? fmt::format("steps to slower: {}\n", slower) : "";
    if (context.reportWanted()) {
        writeOutput("-", text);
    }
    writeHistoryJson(context, courses, firsts);
    return slower > 0 ? exitWorse : exitGood;
}

} // namespace

void addHistory(Program& program) {
    Actions<HistoryArguments> actions(program, "history", "passes by commit, and the steps in the course of each line");
    const std::shared_ptr<HistoryArguments> options = actions.options;
    const auto sub = [&](const char* name, const char* text, Actions<HistoryArguments>::Run run) {
        CLI::App* action = actions.add(name, text, run);
        action->add_option("--store", options->store, "file that keeps the history")->capture_default_str();
        return action;
    };
    CLI::App* add = sub("add", "measure and keep a point", addToHistory);
    addSubject(*add, options->subject);
    add->add_option("--label", options->label, "name of the point; the commit of the working directory without it");
    addPasses(*add, options->passes, "passes of the point");
    addLimit(*add, options->timeLimit);
    CLI::App* show = sub("show", "points and steps", showHistory);
    show->add_option("LINE", options->lines, "the course of these lines alone");
    CLI::App* check = sub("check", "status 1 if a line has become slower", checkHistory);
    check->add_option("--since", options->since, "look at steps from this label on");
    check->add_option("--last", options->last, "look at steps in so many points")
        ->check(CLI::Range(1, 1000000))
        ->capture_default_str();
    for (CLI::App* action : {show, check}) {
        action->add_option("--threshold", options->threshold, "steps up to this do not matter")->capture_default_str();
        action
            ->add_option("--confidence", options->confidence,
                         "that no line of a machine without steps is accused, whatever their number")
            ->capture_default_str();
        action->add_option("--machine", options->machine, "only machines with this in their name");
    }
}

} // namespace krlab
