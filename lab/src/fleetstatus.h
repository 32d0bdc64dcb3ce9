// How far a fleet is: from the stores in its job folder and from what Slurm says of its tasks.
#pragma once

#include "fleetfolder.h"
#include "slurm.h"

#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace krlab {

struct FleetTaskState {
    enum class State {
        whole,   ///< its store is there
        running, ///< on a node
        waiting, ///< for a node
        ended,   ///< without a whole store: failed, cancelled, out of time, or forgotten by Slurm
    };
    int task = 0;
    State state = State::ended;
    int rounds = 0;    ///< that are done, as far as its log tells
    std::string slurm; ///< Slurm's own word; empty if it knows nothing of the task
    std::string node;
    std::string reason; ///< why it waits
    double seconds = 0; ///< that it has run
};

struct FleetStatus {
    std::string name;
    std::vector<FleetTaskState> tasks;
    double secondsLeft = -1; ///< by what tasks took so far; negative if nothing tells
    size_t count(FleetTaskState::State state) const;
    bool done() const { return count(FleetTaskState::State::waiting) + count(FleetTaskState::State::running) == 0; }
};

/// The last word on each task: from the accounting where there is any, else from the queue.
std::map<int, SlurmTask> slurmTasks(const FleetFolder& folder);
FleetStatus fleetStatus(const FleetFolder& folder, const std::map<int, SlurmTask>& slurm);
/// Seconds until all is done, if tasks go on as they did; negative if nothing tells. `rounds` are those of a task.
double secondsLeft(const std::vector<FleetTaskState>& tasks, int rounds);

std::string describe(const FleetStatus& status);
/// The form "krlab-fleet-status-1".
nlohmann::json toJson(const FleetStatus& status);

} // namespace krlab
