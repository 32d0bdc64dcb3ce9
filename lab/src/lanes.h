// Passes that run at once, each in a thread of its own.
#pragma once

#include "pass.h"

#include <condition_variable>
#include <exception>
#include <functional>
#include <list>
#include <mutex>
#include <thread>

namespace krlab {

class Lanes {
public:
    /// `count` passes at once at most.
    explicit Lanes(size_t count) : m_count(count) {}
    /// Waits for the passes that are still running.
    ~Lanes();
    Lanes(const Lanes&) = delete;
    Lanes& operator=(const Lanes&) = delete;

    /// Starts a pass as soon as there is room for it; `done` takes it when collect() or the next start() finds it
    /// ended.
    void start(PassRequest request, std::function<void(Pass)> done);
    /// Hands over the passes that have ended; with `all`, waits for those that have not. Rethrows what a pass threw.
    void collect(bool all);

private:
    struct Job {
        std::thread thread;
        std::function<void(Pass)> done;
        Pass pass;
        std::exception_ptr error;
        bool ended = false;
    };
    void work(Job& job, PassRequest request);

    size_t m_count;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::list<Job> m_jobs;
};

} // namespace krlab
