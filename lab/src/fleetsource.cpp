#include "fleetsource.h"

#include "fault.h"
#include "fleetmerge.h"
#include "fleettask.h"
#include "newdirectory.h"

#include <fmt/format.h>

namespace krlab {

namespace fs = std::filesystem;

FleetSource::FleetSource(const std::string& text) : m_file(text) {
    std::error_code error;
    if (fs::is_regular_file(text, error)) {
        m_store.emplace(text);
        return;
    }
    if (!FleetFolder::isFolder(text)) {
        throw Fault(text, "is neither a store nor a job folder of a fleet");
    }
    m_folder.emplace(text);
    m_directory.emplace(nodeStorage(), "krlab-merge.");
    m_file = (m_directory->path() / "fleet.db").string();
    m_store.emplace(m_file);
    const FetchResult result = fetchFleet(*m_folder, *m_store, [](size_t) {});
    const size_t all = m_folder->plan().tasks().size();
    m_remarks = result.failures;
    if (result.tasks < all) {
        m_remarks.push_back(fmt::format("{} of {} tasks are whole, of {} more the finished rounds count; krlab fleet "
                                        "status tells why, krlab fleet submit {} measures the rest",
                                        result.tasks, all, result.parts, text));
    }
}

} // namespace krlab
