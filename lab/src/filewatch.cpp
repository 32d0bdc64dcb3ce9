#include "filewatch.h"

#include "fault.h"
#include "interrupt.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace krlab {

FileWatch::FileWatch(const std::vector<std::string>& files) : m_descriptor(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    if (m_descriptor < 0) {
        throw Fault("can't watch files: " + systemCause(errno));
    }
    for (const std::string& file : files) {
        const std::filesystem::path path(file);
        const int watch = ::inotify_add_watch(m_descriptor, path.parent_path().c_str(),
                                              IN_CLOSE_WRITE | IN_MOVED_TO | IN_CREATE | IN_DELETE);
        if (watch < 0) {
            const int error = errno;
            ::close(m_descriptor);
            throw Fault(path.parent_path().string(), "can't be watched: " + systemCause(error));
        }
        m_places.push_back({watch, path.filename().string()});
    }
}

FileWatch::~FileWatch() {
    ::close(m_descriptor);
}

bool FileWatch::drainEvents() {
    alignas(inotify_event) char block[8192];
    bool concerned = false;
    for (ssize_t n = 0; (n = ::read(m_descriptor, block, sizeof block)) > 0;) {
        for (ssize_t at = 0; at < n;) {
            inotify_event event{};
            std::memcpy(&event, block + at, sizeof event);
            const int watch = event.wd;
            const char* name = event.len > 0 ? block + at + sizeof event : "";
            concerned = concerned || (event.mask & IN_Q_OVERFLOW) != 0 ||
                        std::any_of(m_places.begin(), m_places.end(),
                                    [&](const Place& place) { return place.watch == watch && place.name == name; });
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
    return concerned;
}

bool FileWatch::wait(double quiet) {
    bool changed = false;
    for (;;) {
        pollfd polls[2] = {{m_descriptor, POLLIN, 0}, {interruptDescriptor(), POLLIN, 0}};
        const int ready = ::poll(polls, 2, changed ? static_cast<int>(quiet * 1000) : -1);
        if (interrupted()) {
            return false;
        }
        if (ready == 0) {
            return true;
        }
        changed = drainEvents() || changed;
    }
}

} // namespace krlab
