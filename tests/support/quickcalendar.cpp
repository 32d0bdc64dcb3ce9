// A calendar that runs a hundred times as fast: the two seconds in which a rig learns the counter's rate are over in
// twenty milliseconds. Clocks and counts are those of the counter, as ever. It takes the place of the C library's in a
// program that it is linked to, or that is started with it in LD_PRELOAD; for shells and compilers it is a small load.
#include <ctime>

namespace {

timespec clockOf(clockid_t which) {
    timespec now = {};
    clock_gettime(which, &now);
    return now;
}

const timespec s_begin = clockOf(CLOCK_REALTIME);
const timespec s_start = clockOf(CLOCK_MONOTONIC);

} // namespace

extern "C" std::time_t time(std::time_t* to) noexcept {
    const timespec at = clockOf(CLOCK_MONOTONIC);
    const std::time_t hundredths = (at.tv_sec - s_start.tv_sec) * 100 + (at.tv_nsec - s_start.tv_nsec) / 10000000;
    const std::time_t now = s_begin.tv_sec + hundredths;
    if (to != nullptr) {
        *to = now;
    }
    return now;
}
