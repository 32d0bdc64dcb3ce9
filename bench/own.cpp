// Functions of one's own whose true clocks are known from a bare loop. As a rig it measures them; with the single
// argument "bare" it prints name;clocks for each, the smallest of many readings of a loop around direct calls of the
// same functions.
#include "own.h"

#include <kelvarrig.h>

#include "kr.h"
#include "krcputick.h"

#include <cstdio>
#include <cstring>

namespace {

// A function that stands in this file, and whose body the compiler sees.
int gainHere(const short* from, short* to, int count) {
    for (int i = 0; i < count; ++i) {
        to[i] = static_cast<short>(from[i] * 3 / 2);
    }
    return 0;
}

kr::Param len("len", {160});
kr::Vector<short> src(len, kr::random(-1024, 1024));
kr::Vector<short> dst(len);
kr::Vector<unsigned long> sum(1);

auto anEmpty = kr::measure<ownEmpty>("empty");
auto aChain = kr::measure<ownChain>("chain", sum, 3);
auto aGain = kr::measure<gainHere>("gain", src, dst, len);

constexpr int samples = 160;
alignas(64) short s_from[samples];
alignas(64) short s_to[samples];
unsigned long s_sum = 0;

// The least clocks of one of `calls` calls in a row.
template <class Call>
double least(int calls, Call call) {
    unsigned long long best = ~0ULL;
    for (int reading = 0; reading < 2000; ++reading) {
        const unsigned long long first = vek_get_cyclon_counter();
        for (int i = 0; i < calls; ++i) {
            call();
        }
        const unsigned long long clocks = vek_get_cyclon_counter() - first;
        best = clocks < best ? clocks : best;
    }
    return static_cast<double>(best) / calls;
}

int bare() {
    krWakeCore();
    std::printf("empty;%.3f\n", least(4096, [] { ownEmpty(); }));
    std::printf("chain;%.3f\n", least(512, [] { ownChain(&s_sum, 3); }));
    // The same code in another file: nothing of it can be folded here.
    std::printf("gain;%.3f\n", least(256, [] { ownGain(s_from, s_to, samples); }));
    return 0;
}

/// The entry point is the harness's; a bare run ends before its first phase.
class BareOrRig : public krSession {
public:
    int run(int argc, char** argv) override {
        return argc == 2 && std::strcmp(argv[1], "bare") == 0 ? bare() : krSession::run(argc, argv);
    }
};

const bool s_session = krRegSession(new BareOrRig) != 0;

} // namespace
