// What a measurement calls, each stay with the ticks of the counter at its two ends. A measured region must hold the
// stays that belong to it and end before the next that does not: so its length has a least and a most, whatever the
// machine does in between.
#pragma once

#include <string>
#include <vector>

/// The time-stamp counter in the order of the program: what stands before has ended, what stands after has not begun.
inline unsigned long long orderedTick() {
    unsigned low = 0;
    unsigned high = 0;
    __asm__ volatile("lfence\n\trdtsc\n\tlfence" : "=a"(low), "=d"(high) : : "memory");
    return (static_cast<unsigned long long>(high) << 32) | low;
}

struct Visit {
    char what = 0;
    unsigned long long in = 0;
    unsigned long long out = 0;
};
inline std::vector<Visit> s_visits;

inline void forgetVisits() {
    s_visits.clear();
    s_visits.reserve(64); // nothing grows in the middle of a measurement
}

/// A stay that is long beside what a measurement does between its calls.
inline void visit(char what) {
    constexpr unsigned long long stay = 40000;
    Visit made;
    made.what = what;
    made.in = orderedTick();
    do {
        made.out = orderedTick();
    } while (made.out - made.in < stay);
    s_visits.push_back(made);
}

/// The stays in their order, a character each.
inline std::string visited() {
    std::string order;
    for (const Visit& made : s_visits) {
        order += made.what;
    }
    return order;
}

/// Ticks from the beginning of one stay to the end of another.
inline long long ticksWithin(size_t first, size_t last) {
    return static_cast<long long>(s_visits.at(last).out - s_visits.at(first).in);
}
/// Ticks from the end of one stay to the beginning of another.
inline long long ticksBetween(size_t before, size_t after) {
    return static_cast<long long>(s_visits.at(after).in - s_visits.at(before).out);
}
