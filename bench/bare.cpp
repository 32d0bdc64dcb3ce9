// The reference: a bare loop around the calls, the smallest of 200. Short functions are called in a row, so that the
// cost of the two counter reads does not count.
#include "krcputick.h"
#include "subjects.h"

#include <cstdio>

static constexpr int repeats = 200;
static constexpr unsigned long long leastClocks = 20000;

static unsigned long long measure(int (*call)(), int calls) {
    const unsigned long long first = vek_get_cyclon_counter();
    for (int i = 0; i < calls; ++i) {
        call();
    }
    return vek_get_cyclon_counter() - first;
}

int main() {
    krWakeCore();
    for (const Subject& subject : subjects) {
        int calls = 1;
        while (measure(subject.call, calls) < leastClocks) {
            calls *= 2;
        }
        unsigned long long best = ~0ULL;
        for (int i = 0; i < repeats; ++i) {
            const unsigned long long clocks = measure(subject.call, calls);
            best = clocks < best ? clocks : best;
        }
        std::printf("%s;%.3f;0\n", subject.name, static_cast<double>(best) / calls);
    }
    return 0;
}
