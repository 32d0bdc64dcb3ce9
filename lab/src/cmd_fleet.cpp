// `krlab fleet`: a plan measured on many machines, as one job array of Slurm.
#include "fleetmerge.h"
#include "fleetstatus.h"
#include "fleettask.h"
#include "interrupt.h"
#include "program.h"
#include "text.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <fmt/format.h>
#include <memory>
#include <nlohmann/json.hpp>
#include <thread>

namespace krlab {

namespace {

namespace fs = std::filesystem;

// Between two questions to Slurm.
constexpr std::chrono::seconds asking{5};

struct FleetArguments {
    std::string plan;
    std::string folder;
    std::string made;
    std::string store = "krlab.db";
    int task = 0;
    bool wait = false;
};

int writePlan(const FleetArguments& options, Context& context) {
    std::error_code error;
    if (!options.plan.empty() && fs::exists(options.plan, error)) {
        throw Fault(options.plan, "is there already; name another file");
    }
    writeOutput(options.plan.empty() ? "-" : options.plan, samplePlan());
    if (!options.plan.empty()) {
        context.console.note(fmt::format("{}: change it, then: krlab fleet submit {}", options.plan, options.plan));
    }
    return exitGood;
}

// The constraints of nodes of several kinds, told before anything starts.
void constrainKinds(const FleetFolder& folder, const std::string& job, const std::vector<int>& chosen) {
    std::map<size_t, std::vector<int>> kinds;
    const std::vector<FleetTask> tasks = folder.plan().tasks();
    for (const int index : chosen) {
        kinds[tasks[static_cast<size_t>(index)].nodes].push_back(index);
    }
    for (const auto& [kind, indexes] : kinds) {
        if (const std::string& features = folder.plan().nodes[kind].features; !features.empty()) {
            constrainTasks(job, rangeText(indexes), features);
        }
    }
}

FleetJob submitTasks(const FleetFolder& folder, const std::vector<int>& tasks) {
    const FleetPlan& plan = folder.plan();
    SlurmArray array;
    array.name = plan.name;
    array.tasks = rangeText(tasks);
    array.log = (folder.path() / "logs" / "%a.txt").string();
    array.seconds = parseDuration(plan.time);
    array.words = plan.slurm;
    array.script = folder.script().string();
    const bool alike = std::all_of(plan.nodes.begin(), plan.nodes.end(), [&](const FleetNodes& nodes) {
        return nodes.features == plan.nodes.front().features;
    });
    array.held = !alike;
    array.features = alike ? plan.nodes.front().features : "";
    FleetJob job{submitArray(array), array.tasks, timeText()};
    if (!alike) {
        try {
            constrainKinds(folder, job.id, tasks);
            releaseArray(job.id);
        } catch (const Fault&) {
            cancelArrays({job.id});
            throw;
        }
    }
    folder.addJob(job);
    return job;
}

int submitFleet(const FleetArguments& options, Context& context) {
    const bool again = FleetFolder::isFolder(options.plan);
    const fs::path rig = context.options.rig.empty() ? defaultRig() : fs::path(context.rig());
    std::optional<FleetFolder> folder;
    std::vector<int> tasks;
    if (again) {
        folder.emplace(options.plan);
        const std::map<int, SlurmTask> known = slurmTasks(*folder);
        for (const int task : folder->missing()) {
            const auto at = known.find(task);
            if (at == known.end() || (!at->second.waits() && !at->second.runs())) {
                tasks.push_back(task);
            }
        }
        if (tasks.empty()) {
            context.console.note("no task is missing that is not in the queue");
            return exitGood;
        }
    } else {
        FleetPlan plan = parsePlan(options.plan, readFile(options.plan));
        if (context.options.seed) {
            plan.seed = *context.options.seed;
        }
        const std::string path = options.made.empty() ? plan.name + ".fleet" : options.made;
        folder.emplace(FleetFolder::create(path, plan, fs::absolute(options.plan).parent_path(), rig));
        tasks = folder->missing();
    }
    FleetJob job;
    try {
        job = submitTasks(*folder, tasks);
    } catch (const Fault&) {
        if (!again) {
            std::error_code error;
            fs::remove_all(folder->path(), error);
        }
        throw;
    }
    if (context.reportWanted()) {
        writeOutput("-", fmt::format("{}: {} tasks, job {}\n", folder->path().string(), tasks.size(), job.id));
    }
    context.writeJson(
        {{"folder", folder->path().string()}, {"plan", folder->id()}, {"job", job.id}, {"tasks", job.tasks}});
    return exitGood;
}

int runTask(const FleetArguments& options, Context& context) {
    FleetTaskOptions task;
    task.task = options.task;
    task.local = nodeStorage();
    task.note = [&](const std::string& text) { context.console.note(text); };
    return runFleetTask(FleetFolder(options.folder), task);
}

int showStatus(const FleetArguments& options, Context& context) {
    const FleetFolder folder(options.folder);
    std::map<int, SlurmTask> slurm;
    std::string trouble;
    const auto ask = [&] {
        try {
            slurm = slurmTasks(folder);
        } catch (const Fault& fault) {
            trouble = fault.what();
        }
        return fleetStatus(folder, slurm);
    };
    FleetStatus status = ask();
    while (options.wait && trouble.empty() && !status.done() && !interrupted()) {
        context.console.progress(describe(status).substr(0, describe(status).find('\n')),
                                 static_cast<double>(status.count(FleetTaskState::State::whole)) /
                                     static_cast<double>(status.tasks.size()));
        std::this_thread::sleep_for(asking);
        status = ask();
    }
    context.console.clear();
    context.writeJson(toJson(status));
    if (context.reportWanted()) {
        writeOutput("-", describe(status));
    }
    if (!trouble.empty()) {
        throw Fault(trouble + "; above stands what the job folder tells");
    }
    return interrupted() ? exitInterrupted : exitGood;
}

int fetchStores(const FleetArguments& options, Context& context) {
    const FleetFolder folder(options.folder);
    Store store(options.store);
    const size_t all = folder.plan().tasks().size();
    const FetchResult result = fetchFleet(folder, store, [&](size_t done) {
        context.console.progress(fmt::format("task {}", done), static_cast<double>(done) / static_cast<double>(all));
    });
    context.console.clear();
    for (const std::string& failure : result.failures) {
        context.console.warn("krlab: " + failure);
    }
    if (context.reportWanted()) {
        writeOutput("-",
                    fmt::format("{}: {} passes and {} figures are new; {} of {} tasks are whole, of {} more there are "
                                "finished rounds\n",
                                options.store, result.merged.passes, result.merged.figures, result.tasks, all,
                                result.parts));
    }
    context.writeJson({{"store", options.store},
                       {"plan", folder.id()},
                       {"passes", result.merged.passes},
                       {"figures", result.merged.figures},
                       {"tasks", all},
                       {"whole", result.tasks},
                       {"parts", result.parts},
                       {"failures", result.failures}});
    return result.failures.empty() ? exitGood : exitFailed;
}

int cancelFleet(const FleetArguments& options, Context& context) {
    const FleetFolder folder(options.folder);
    const FleetStatus status = fleetStatus(folder, slurmTasks(folder));
    if (status.done()) {
        context.console.note("no task waits or runs");
        return exitGood;
    }
    std::vector<std::string> jobs;
    for (const FleetJob& job : folder.jobs()) {
        jobs.push_back(job.id);
    }
    cancelArrays(jobs);
    context.console.note(
        fmt::format("{} tasks are cancelled; their finished rounds are kept",
                    status.count(FleetTaskState::State::waiting) + status.count(FleetTaskState::State::running)));
    return exitGood;
}

} // namespace

void addFleet(Program& program) {
    Actions<FleetArguments> actions(program, "fleet", "a plan measured on many machines, as a job array of Slurm");
    const std::shared_ptr<FleetArguments> options = actions.options;
    actions.add("plan", "write a plan to start from", writePlan)
        ->add_option("FILE", options->plan, "the file; standard output without it");
    CLI::App* submit = actions.add("submit", "make the job folder of a plan and submit its tasks", submitFleet);
    submit->add_option("PLAN", options->plan, "a plan, or a job folder whose missing tasks are submitted again")
        ->required();
    submit->add_option("--folder", options->made,
                       "the job folder, on storage that all nodes share; NAME.fleet here without it");
    CLI::App* task = actions.add("task", "measure one task, on a node", runTask);
    CLI::App* status = actions.add("status", "how far the tasks are", showStatus);
    CLI::App* fetch = actions.add("fetch", "merge the tasks' passes into one store", fetchStores);
    CLI::App* cancel = actions.add("cancel", "end what waits and runs", cancelFleet);
    for (CLI::App* action : {task, status, fetch, cancel}) {
        action->add_option("FOLDER", options->folder, "the job folder")->required();
    }
    task->add_option("TASK", options->task, "its number")->required();
    status->add_flag("--wait", options->wait, "until no task waits or runs");
    fetch->add_option("--store", options->store, "file that takes the passes")->capture_default_str();
}

} // namespace krlab
