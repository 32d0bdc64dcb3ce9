#include "quietcore.h"

#include <chrono>

namespace krlab {

namespace {

using Clock = std::chrono::steady_clock;

// Longer than the stretch that a scheduler gives to one of two programs that want the same core.
constexpr std::chrono::milliseconds probe{15};
// Between two readings of the clock; more was taken away.
constexpr std::chrono::microseconds unnoticed{20};
constexpr double quietShare = 0.01;
constexpr int mostTried = 4;

bool moveTo(int core) {
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<size_t>(core), &one);
    return ::sched_setaffinity(0, sizeof one, &one) == 0;
}

/// The share of the time that others took on this core; 1 if it can't be had.
double takenAway(int core) {
    if (!moveTo(core)) {
        return 1;
    }
    const auto start = Clock::now();
    auto before = start;
    Clock::duration taken{};
    while (before - start < probe) {
        const auto now = Clock::now();
        if (now - before > unnoticed) {
            taken += now - before;
        }
        before = now;
    }
    return std::chrono::duration<double>(taken) / std::chrono::duration<double>(before - start);
}

} // namespace

int quietCore(const cpu_set_t& allowed, int present) {
    if (CPU_COUNT(&allowed) == 0) {
        return -1;
    }
    cpu_set_t before;
    const bool known = ::sched_getaffinity(0, sizeof before, &before) == 0;
    int best = present;
    double least = present >= 0 ? takenAway(present) : 2;
    int tried = 0;
    for (int core = 0; core < CPU_SETSIZE && least > quietShare && tried < mostTried; ++core) {
        if (core == present || !CPU_ISSET(static_cast<size_t>(core), &allowed)) {
            continue;
        }
        ++tried;
        if (const double taken = takenAway(core); taken < least) {
            best = core;
            least = taken;
        }
    }
    if (known) {
        ::sched_setaffinity(0, sizeof before, &before);
    }
    return best;
}

} // namespace krlab
