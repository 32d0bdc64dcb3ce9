#include "lanes.h"

#include <algorithm>

namespace krlab {

Lanes::~Lanes() {
    for (Job& job : m_jobs) {
        job.thread.join();
    }
}

void Lanes::work(Job& job, PassRequest request) {
    try {
        job.pass = runPass(request);
    } catch (...) {
        job.error = std::current_exception();
    }
    // The seat is free for others before anybody hears of the end.
    request.seat.reset();
    const std::lock_guard lock(m_mutex);
    job.ended = true;
    m_changed.notify_all();
}

void Lanes::start(PassRequest request, std::function<void(Pass)> done) {
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] {
            const auto running = std::count_if(m_jobs.begin(), m_jobs.end(), [](const Job& job) { return !job.ended; });
            return static_cast<size_t>(running) < m_count;
        });
    }
    collect(false);
    Job& job = m_jobs.emplace_back();
    job.done = std::move(done);
    job.thread = std::thread([this, &job, request = std::move(request)]() mutable { work(job, std::move(request)); });
}

void Lanes::collect(bool all) {
    for (;;) {
        std::list<Job> ended;
        {
            std::unique_lock lock(m_mutex);
            if (all && !m_jobs.empty()) {
                m_changed.wait(lock, [this] {
                    return std::any_of(m_jobs.begin(), m_jobs.end(), [](const Job& job) { return job.ended; });
                });
            }
            for (auto at = m_jobs.begin(); at != m_jobs.end();) {
                const auto next = std::next(at);
                if (at->ended) {
                    ended.splice(ended.end(), m_jobs, at);
                }
                at = next;
            }
        }
        if (ended.empty()) {
            return;
        }
        for (Job& job : ended) {
            job.thread.join();
        }
        for (Job& job : ended) {
            if (job.error) {
                std::rethrow_exception(job.error);
            }
            job.done(std::move(job.pass));
        }
    }
}

} // namespace krlab
