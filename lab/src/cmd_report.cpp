// `krlab report`: tables or stored passes as one page for the browser.
#include "comparison.h"
#include "fleetsource.h"
#include "fleetverdict.h"
#include "history.h"
#include "program.h"
#include "report.h"
#include "reportpage.h"
#include "store.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace krlab {

namespace {

// Of five digits and a comma each, beside the chart library and the lines, this stays under 5 MB.
constexpr size_t mostReadings = 400000;

struct ReportArguments {
    std::vector<std::string> sources;
    std::string older;
    std::string newer;
    std::string output;
    std::string title;
    std::string threshold = "3%";
    std::string confidence = "99%";
    std::string store = "krlab.db";
    std::string fleet;
};

// The names of all subjects, in the order in which they were measured.
std::vector<std::string> subjectsOf(const PassList& list) {
    std::vector<std::string> names;
    for (const PassList::Entry& pass : list.passes()) {
        if (std::find(names.begin(), names.end(), pass.identity.subject) == names.end()) {
            names.push_back(pass.identity.subject);
        }
    }
    return names;
}

// By labels, or by the subjects' names where the labels tell nothing.
std::string titleOf(const ReportInput& input) {
    const PassList::Entry& last = input.sides.back()->passes().front();
    if (input.sides.size() == 1) {
        return last.label.empty() ? last.identity.subject : last.label;
    }
    const PassList::Entry& first = input.sides.front()->passes().front();
    return first.label.empty() || last.label.empty() || first.label == last.label
               ? fmt::format("{} against {}", last.identity.subject, first.identity.subject)
               : fmt::format("{} against {}", last.label, first.label);
}

// Where one store is all that is named, selections are of that one.
std::string storeOf(const ReportArguments& options) {
    std::error_code error;
    return options.sources.size() == 1 && std::filesystem::is_regular_file(options.sources.front(), error)
               ? options.sources.front()
               : options.store;
}

// The steps that `history` finds in the store, at the first point of their runs.
void addSteps(Course& course, const Store& store) {
    std::map<long long, size_t> points;
    for (size_t i = 0; i < course.points.size(); ++i) {
        points.try_emplace(course.points[i].run, i);
    }
    std::map<Line, std::uint32_t> numbers;
    for (std::uint32_t i = 0; i < course.list->lines().size(); ++i) {
        numbers[course.list->lines()[i]] = i;
    }
    for (const HistoryCourse& history : readHistory(store, {})) {
        for (const HistoryLine& line : history.lines) {
            for (const HistoryStep& step : line.steps) {
                const auto point = points.find(history.points[step.point].run);
                const auto number = numbers.find(line.line);
                if (point != points.end() && number != numbers.end()) {
                    course.steps.push_back({number->second, point->second, step.factor()});
                }
            }
        }
    }
}

void writePage(const ReportArguments& options, Context& context, const nlohmann::json& data, size_t passes) {
    if (!context.options.json.empty()) {
        writeOutput(context.options.json, data.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
    }
    if (!options.output.empty()) {
        const std::string page = reportPage(data);
        writeOutput(options.output, page);
        context.console.note(fmt::format("{}: {} lines, {} passes, {:.1f} MB", options.output, data["lines"].size(),
                                         passes, static_cast<double>(page.size()) / 1e6));
    }
}

// Two subjects of a fleet: verdicts by kind of machine, figures and course from all machines.
int writeFleetReport(const ReportArguments& options, Context& context) {
    if (!options.sources.empty()) {
        throw Fault("--fleet names all that is on the page; take the other sources away");
    }
    const FleetSource source(options.fleet);
    const std::string plan = source.folder() ? source.folder()->id() : "";
    const VerdictReport verdicts =
        fleetVerdict(source.store(), {plan, options.older, options.newer, parseShare(options.threshold),
                                      parseShare(options.confidence)});
    PassList all;
    all.add(source.file(), "");
    const auto of = [&](const std::string& subject) {
        return all.where([&](const PassList::Entry& pass) {
            return pass.identity.subject == subject && verdicts.runs.count(pass.run) != 0;
        });
    };
    const PassList older = of(verdicts.older.subject);
    const PassList newer = of(verdicts.newer.subject);
    PassList both = older;
    both.add(newer);
    ReportInput input;
    input.verdicts = verdicts;
    input.sides = {&older, &newer};
    input.title = options.title.empty() ? titleOf(input) : options.title;
    input.made = timeText();
    writePage(options, context, reportData(input, courseOf(both, input.sides, mostReadings)), both.passes().size());
    return exitStatus(verdicts, false);
}

int writeReport(const ReportArguments& options, Context& context) {
    if (options.output.empty() && context.options.json.empty()) {
        throw Fault("-o FILE.html is missing");
    }
    if (!options.fleet.empty()) {
        return writeFleetReport(options, context);
    }
    if (options.older.empty() != options.newer.empty()) {
        throw Fault("--old and --new belong together");
    }
    if (options.sources.empty() && options.older.empty()) {
        throw Fault("name tables or a store, or two subjects with --old and --new");
    }
    const double threshold = parseShare(options.threshold);
    const double confidence = parseShare(options.confidence);
    PassList all;
    for (const std::string& source : options.sources) {
        all.add(source, options.store);
    }
    // The page shows clocks; a store may hold instructions as well.
    all = all.where([](const PassList::Entry& pass) { return !pass.counts; });
    PassList older;
    PassList newer;
    ReportInput input;
    int status = exitGood;
    if (!options.older.empty()) {
        const std::string store = storeOf(options);
        older.add(options.older, store);
        newer.add(options.newer, store);
        if (older.counts()) {
            throw Fault(options.older, "holds instructions, and a report shows clocks: krlab compare takes both");
        }
        input.verdicts = comparePasses(older, newer, threshold, confidence);
        status = exitStatus(*input.verdicts, false);
        input.sides = {&older, &newer};
        if (options.sources.empty()) {
            all.add(older);
            all.add(newer);
        }
    } else {
        newer = latestSubject(all);
        input.sides = {&newer};
        const std::vector<std::string> subjects = subjectsOf(all);
        if (subjects.size() > 1) {
            context.console.note(fmt::format(
                "{} subjects ({}): the figures are those of the last one, {}; the course has all. --old and --new "
                "set two against each other.",
                subjects.size(), fmt::join(subjects, ", "), newer.passes().front().identity.subject));
        }
    }
    if (newer.passes().empty()) {
        throw Fault("there is no pass to report on");
    }
    input.title = options.title.empty() ? titleOf(input) : options.title;
    input.made = timeText();
    Course course = courseOf(all, input.sides, mostReadings);
    // Numbers of runs mean something within one store only.
    if (all.stores().size() == 1) {
        addSteps(course, Store(*all.stores().begin()));
    }
    writePage(options, context, reportData(input, course), all.passes().size());
    return status;
}

} // namespace

void addReport(Program& program) {
    const auto [command, options] = program.add<ReportArguments>(
        "report", "one HTML page of tables or stored passes, readable without a network", writeReport);
    command.add_option("SOURCE", options->sources, passesText);
    command.add_option("--old", options->older, "the old one of two subjects to compare, as SOURCE");
    command.add_option("--new", options->newer, "the new one");
    command.add_option("--fleet", options->fleet,
                       "a job folder of krlab fleet or a store with its passes: verdicts by kind of machine; --old and "
                       "--new are names of its subjects");
    command.add_option("-o,--output", options->output, "the page to write, - for standard output");
    command.add_option("--title", options->title, "heading of the page, if not the subjects' names");
    addThreshold(command, options->threshold);
    addConfidence(command, options->confidence);
    command.add_option("--store", options->store, "file that keeps the passes")->capture_default_str();
}

} // namespace krlab
