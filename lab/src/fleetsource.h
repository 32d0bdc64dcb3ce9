// The passes of a fleet, from the store that the user merged them into or straight from its job folder.
#pragma once

#include "fleetfolder.h"
#include "newdirectory.h"
#include "store.h"

#include <optional>
#include <string>
#include <vector>

namespace krlab {

class FleetSource {
public:
    /// `text` names a store or a job folder. Throws Fault if it is neither.
    explicit FleetSource(const std::string& text);

    const Store& store() const { return *m_store; }
    /// Name of the store's file, as long as this object lives.
    const std::string& file() const { return m_file; }
    const std::optional<FleetFolder>& folder() const { return m_folder; }
    /// What the reader must know: a line each.
    const std::vector<std::string>& remarks() const { return m_remarks; }

private:
    std::string m_file;
    std::optional<FleetFolder> m_folder;
    std::optional<NewDirectory> m_directory; ///< of the store that is made for this use alone
    std::optional<Store> m_store;            // after its directory, which it leaves first
    std::vector<std::string> m_remarks;
};

} // namespace krlab
