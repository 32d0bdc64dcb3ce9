// Copies of a subject's shared objects for one process of the rig.
#pragma once

#include "identity.h"
#include "newdirectory.h"
#include "rigprocess.h"

#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace krlab {

/// Copies in memory, which the loader finds in a directory of their own under the names that it asks for. Some
/// functions take 4 % more clocks in one copy of a file than in another, in all processes that share it, presumably by
/// where in the machine's memory it lies. With copies for each process that is drawn by lot each time.
class LibraryCopies {
public:
    /// Throws Fault if a file can't be read or there is no room.
    explicit LibraryCopies(const std::vector<FileIdentity>& libraries);

    /// For the loader's search path; empty if there is nothing to copy.
    std::string directory() const { return m_directory ? m_directory->path().string() : ""; }
    /// The process must inherit them.
    std::vector<int> descriptors() const;

private:
    std::deque<MemoryFile> m_files;
    std::optional<NewDirectory> m_directory;
};

} // namespace krlab
