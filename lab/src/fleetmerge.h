// The stores of a fleet's tasks merged into one.
#pragma once

#include "fleetfolder.h"
#include "store.h"

#include <functional>

namespace krlab {

struct FetchResult {
    size_t tasks = 0;                  ///< whose passes are all in the store
    size_t parts = 0;                  ///< of which only some are
    MergeCount merged;                 ///< that were not there before
    std::vector<std::string> failures; ///< files that could not be merged
};

/// Merges what the tasks have left so far: whole stores, and the finished rounds of the others. What is in the store
/// already is not read again, so that it may be called any number of times.
FetchResult fetchFleet(const FleetFolder& folder, Store& store, const std::function<void(size_t done)>& progress);

} // namespace krlab
