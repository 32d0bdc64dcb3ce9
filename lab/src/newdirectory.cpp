#include "newdirectory.h"

#include "fault.h"

#include <cerrno>
#include <cstdlib>

namespace krlab {

namespace fs = std::filesystem;

NewDirectory::NewDirectory(const fs::path& storage, const std::string& name) {
    std::string pattern = (storage / (name + std::string(6, 'X'))).string(); // mkdtemp replaces the last six letters
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw Fault(storage.string(), "takes no new directory: " + systemCause(errno));
    }
    m_path = pattern;
}

NewDirectory::~NewDirectory() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

} // namespace krlab
