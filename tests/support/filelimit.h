// A disk that takes no more, for a while.
#pragma once

#include <csignal>
#include <sys/resource.h>

/// Files end at `bytes` while it lives, in this process and in those that it starts: a write beyond fails or is
/// partial.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_former);
        rlimit limit = m_former;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &m_former); }

private:
    rlimit m_former = {};
};
