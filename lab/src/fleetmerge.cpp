#include "fleetmerge.h"

#include "fault.h"

#include <map>
#include <set>

namespace krlab {

namespace fs = std::filesystem;

namespace {

// Tasks of the plan that were merged as a whole.
std::set<int> wholeTasks(const Store& store, const std::string& plan) {
    std::map<long long, bool> ended;
    for (const RunRecord& run : store.runs()) {
        ended[run.id] = !run.ended.empty();
    }
    std::set<int> tasks;
    for (const FleetRun& run : store.fleetRuns()) {
        if (run.plan == plan && ended[run.run]) {
            tasks.insert(run.task);
        }
    }
    return tasks;
}

} // namespace

FetchResult fetchFleet(const FleetFolder& folder, Store& store, const std::function<void(size_t done)>& progress) {
    FetchResult result;
    const std::set<int> known = wholeTasks(store, folder.id());
    size_t done = 0;
    for (const FleetTask& task : folder.plan().tasks()) {
        progress(done++);
        if (known.count(task.index) != 0) {
            ++result.tasks;
            continue;
        }
        std::error_code error;
        const bool whole = fs::exists(folder.taskFile(task.index), error);
        const fs::path file = whole ? folder.taskFile(task.index) : folder.partFile(task.index);
        if (!whole && !fs::exists(file, error)) {
            continue;
        }
        try {
            const MergeCount count = store.merge(file.string());
            result.merged.passes += count.passes;
            result.merged.figures += count.figures;
            ++(whole ? result.tasks : result.parts);
        } catch (const Fault& fault) {
            result.failures.emplace_back(fault.what());
        }
    }
    return result;
}

} // namespace krlab
