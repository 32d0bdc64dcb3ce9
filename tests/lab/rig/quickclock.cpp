// The rig of these tests has a calendar that runs a hundred times as fast: the two seconds in which it learns the
// counter's rate are over in twenty milliseconds. Clocks and counts are those of the counter, as ever.
#include "krinfo.h"

#include <chrono>

namespace {

std::time_t quickCalendar() {
    using namespace std::chrono;
    static const std::time_t begin = std::time(nullptr);
    static const auto start = steady_clock::now();
    return begin + duration_cast<milliseconds>(steady_clock::now() - start).count() / 10;
}

[[maybe_unused]] const bool set = (krTime = quickCalendar, true);

} // namespace
