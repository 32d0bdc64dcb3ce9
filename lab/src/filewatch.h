// Waits until files change: inotify on their directories, since builds replace files by new ones of the same name.
#pragma once

#include <string>
#include <vector>

namespace krlab {

class FileWatch {
public:
    /// Throws Fault if a directory can't be watched.
    explicit FileWatch(const std::vector<std::string>& files);
    ~FileWatch();
    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

    /// Returns when one of the files was written or replaced and all have been left alone for `quiet` seconds since;
    /// false on Ctrl-C.
    bool wait(double quiet);

private:
    struct Place {
        int watch;
        std::string name;
    };
    /// Takes what has happened; true if it concerns one of the files.
    bool drainEvents();

    int m_descriptor;
    std::vector<Place> m_places;
};

} // namespace krlab
