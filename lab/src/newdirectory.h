// Directories that nobody else has: of one process, of one task, of one use.
#pragma once

#include <filesystem>
#include <string>

namespace krlab {

/// A new directory, which goes with all that is in it.
class NewDirectory {
public:
    /// Its name begins with `name`. Throws Fault with the cause.
    NewDirectory(const std::filesystem::path& storage, const std::string& name);
    ~NewDirectory();
    NewDirectory(const NewDirectory&) = delete;
    NewDirectory& operator=(const NewDirectory&) = delete;

    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

} // namespace krlab
