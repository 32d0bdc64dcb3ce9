#include "newdirectory.h"

#include "fault.h"

#include <cerrno>
#include <cstdlib>

namespace krlab {

namespace fs = std::filesystem;

fs::path makeDirectory(const fs::path& storage, const std::string& name) {
    std::string pattern = (storage / (name + "XXXXXX")).string(); // mkdtemp replaces the last six letters
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw Fault(storage.string(), "takes no new directory: " + systemCause(errno));
    }
    return pattern;
}

} // namespace krlab
