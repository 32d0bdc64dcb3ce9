// The reference: a bare loop around the calls, the smallest of 200. Short functions are called in a row, so that the
// cost of the two counter reads does not count.
#include "krcputick.h"
#include "subjects.h"

#include <cstdio>
#include <ctime>

static constexpr int repeats = 200;
static constexpr unsigned long long leastClocks = 20000;

static unsigned long long measureOnce(int (*call)(), int calls) {
    const unsigned long long first = vek_get_cyclon_counter();
    for (int i = 0; i < calls; ++i) {
        call();
    }
    return vek_get_cyclon_counter() - first;
}

// The smallest of some values: an interruption must not count.
static unsigned long long measure(int (*call)(), int calls, int times) {
    unsigned long long best = ~0ULL;
    for (int i = 0; i < times; ++i) {
        const unsigned long long clocks = measureOnce(call, calls);
        best = clocks < best ? clocks : best;
    }
    return best;
}

// Counter clocks a nanosecond, for harnesses that tell time.
static double clocksPerNs() {
    timespec begin = {};
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &begin);
    const unsigned long long first = vek_get_cyclon_counter();
    double ns = 0;
    while (ns < 5e7) {
        clock_gettime(CLOCK_MONOTONIC, &now);
        ns = static_cast<double>(now.tv_sec - begin.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec - begin.tv_nsec);
    }
    return static_cast<double>(vek_get_cyclon_counter() - first) / ns;
}

int main(int argc, char** /*argv*/) {
    if (argc > 1) {
        std::printf("counter;%.6f;0\n", clocksPerNs());
        return 0;
    }
    krWakeCore();
    for (const Subject& subject : subjects) {
        int calls = 1;
        while (measure(subject.call, calls, 5) < leastClocks) {
            calls *= 2;
        }
        const unsigned long long best = measure(subject.call, calls, repeats);
        std::printf("%s;%.3f;0\n", subject.name, static_cast<double>(best) / calls);
    }
    return 0;
}
