// One task of a fleet, on its node: the subjects copied to storage of the node and checked, the rounds measured, each
// finished one kept in the job folder.
#pragma once

#include "fleetfolder.h"

#include <functional>
#include <string>

namespace krlab {

struct FleetTaskOptions {
    int task = 0;
    std::filesystem::path local;                       ///< storage of the node, for a directory of the task
    std::function<void(const std::string& text)> note; ///< what the log is to have
};

/// Storage of this node: what Slurm or the user names, else /tmp.
std::filesystem::path nodeStorage();

/// Measures the rounds that are not in the folder yet; returns the exit status of the task. What it draws depends on
/// plan and task alone, so that a task that is run again is the same task. Throws Fault where the node can't measure.
int runFleetTask(const FleetFolder& folder, const FleetTaskOptions& options);

} // namespace krlab
