#include "fleetstatus.h"

#include "console.h"
#include "signedrank.h"
#include "text.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <optional>

namespace krlab {

namespace {

using State = FleetTaskState::State;

// Of what runs into trouble so many are told one by one.
constexpr size_t mostTold = 20;

const char* stateText(State state) {
    switch (state) {
    case State::whole:
        return "whole";
    case State::running:
        return "running";
    case State::waiting:
        return "waiting";
    case State::ended:
        break;
    }
    return "ended";
}

} // namespace

size_t FleetStatus::count(State state) const {
    return static_cast<size_t>(
        std::count_if(tasks.begin(), tasks.end(), [state](const FleetTaskState& task) { return task.state == state; }));
}

std::map<int, SlurmTask> slurmTasks(const FleetFolder& folder) {
    std::vector<std::string> jobs;
    for (const FleetJob& job : folder.jobs()) {
        jobs.push_back(job.id);
    }
    std::map<int, SlurmTask> all;
    if (const auto accounted = accountedTasks(jobs)) {
        for (const SlurmTask& task : *accounted) {
            all[task.index] = task;
        }
    }
    // The queue is the quicker one to know.
    for (const SlurmTask& task : queuedTasks(jobs)) {
        all[task.index] = task;
    }
    return all;
}

FleetStatus fleetStatus(const FleetFolder& folder, const std::map<int, SlurmTask>& slurm) {
    FleetStatus status;
    status.name = folder.plan().name;
    std::error_code error;
    for (const FleetTask& planned : folder.plan().tasks()) {
        FleetTaskState& task = status.tasks.emplace_back();
        task.task = planned.index;
        const auto known = slurm.find(planned.index);
        if (known != slurm.end()) {
            task.slurm = known->second.state;
            task.node = known->second.node;
            task.reason = known->second.reason;
            task.seconds = known->second.seconds;
        }
        if (std::filesystem::exists(folder.taskFile(task.task), error)) {
            task.state = State::whole;
            task.rounds = folder.plan().rounds();
            continue;
        }
        task.rounds = folder.roundsDone(task.task);
        if (known != slurm.end() && known->second.waits()) {
            task.state = State::waiting;
        } else if (known != slurm.end() && known->second.runs()) {
            task.state = State::running;
        }
    }
    status.secondsLeft = secondsLeft(status.tasks, folder.plan().rounds());
    return status;
}

double secondsLeft(const std::vector<FleetTaskState>& tasks, int rounds) {
    std::vector<double> whole;
    std::vector<double> guessed;
    size_t running = 0;
    for (const FleetTaskState& task : tasks) {
        running += task.state == State::running;
        if (task.state == State::whole && task.seconds > 0) {
            whole.push_back(task.seconds);
        } else if (task.state == State::running && task.rounds > 0) {
            guessed.push_back(task.seconds * rounds / task.rounds);
        }
    }
    if (whole.empty() && guessed.empty()) {
        return -1;
    }
    const double usual = meanOf(whole.empty() ? guessed : whole);
    double left = 0;
    for (const FleetTaskState& task : tasks) {
        if (task.state == State::running) {
            left += std::max(0.0, usual - task.seconds);
        } else if (task.state == State::waiting) {
            left += usual * (rounds - task.rounds) / rounds;
        }
    }
    return left / static_cast<double>(std::max<size_t>(running, 1));
}

std::string describe(const FleetStatus& status) {
    std::string text =
        fmt::format("{}: {} tasks: {} whole, {} running, {} waiting, {} ended without a whole store", status.name,
                    status.tasks.size(), status.count(State::whole), status.count(State::running),
                    status.count(State::waiting), status.count(State::ended));
    if (!status.done()) {
        text +=
            status.secondsLeft >= 0 ? ", some " + durationText(status.secondsLeft) + " left" : ", time left unknown";
    }
    text += "\n";
    size_t told = 0;
    for (const FleetTaskState& task : status.tasks) {
        if (task.state == State::whole || (task.state == State::waiting && task.rounds == 0)) {
            continue;
        }
        if (++told <= mostTold) {
            text += fmt::format(" task {}: {}{}{}, {} rounds done\n", task.task, stateText(task.state),
                                task.slurm.empty() ? "" : " (" + task.slurm + ")",
                                task.node.empty() ? "" : " on " + task.node, task.rounds);
        }
    }
    if (told > mostTold) {
        text += fmt::format(" ... and {} more\n", told - mostTold);
    }
    std::map<std::string, size_t> reasons;
    for (const FleetTaskState& task : status.tasks) {
        if (task.state == State::waiting && !task.reason.empty() && task.reason != "None") {
            ++reasons[task.reason];
        }
    }
    for (const auto& [reason, count] : reasons) {
        text += fmt::format(" {} waiting for: {}\n", count, reason);
    }
    return text;
}

nlohmann::json toJson(const FleetStatus& status) {
    nlohmann::json tasks = nlohmann::json::array();
    for (const FleetTaskState& task : status.tasks) {
        tasks.push_back({{"task", task.task},
                         {"state", stateText(task.state)},
                         {"slurm", task.slurm},
                         {"node", task.node},
                         {"reason", task.reason},
                         {"rounds", task.rounds},
                         {"seconds", task.seconds}});
    }
    return {{"schema", "krlab-fleet-status-1"},
            {"name", status.name},
            {"tasks", std::move(tasks)},
            {"seconds_left", status.secondsLeft >= 0 ? nlohmann::json(status.secondsLeft) : nlohmann::json()},
            {"summary",
             {{"whole", status.count(State::whole)},
              {"running", status.count(State::running)},
              {"waiting", status.count(State::waiting)},
              {"ended", status.count(State::ended)}}}};
}

} // namespace krlab
