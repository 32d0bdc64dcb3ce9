#include "librarycopies.h"

#include "fault.h"
#include "text.h"

namespace krlab {

namespace fs = std::filesystem;

LibraryCopies::LibraryCopies(const std::vector<FileIdentity>& libraries) {
    if (libraries.empty()) {
        return;
    }
    m_directory.emplace(fs::temp_directory_path(), "krlab-");
    for (const FileIdentity& library : libraries) {
        const MemoryFile& file = m_files.emplace_back(readFile(library.path));
        std::error_code error;
        fs::create_symlink(file.path(), m_directory->path() / library.name, error);
        if (error) {
            throw Fault(m_directory->path().string(), "takes no link: " + error.message());
        }
    }
}

std::vector<int> LibraryCopies::descriptors() const {
    std::vector<int> numbers;
    for (const MemoryFile& file : m_files) {
        numbers.push_back(file.descriptor());
    }
    return numbers;
}

} // namespace krlab
