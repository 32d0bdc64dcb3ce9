// What the data do to a figure: functions on the data that their suites hand them and on data like a codec's. Each
// value is the least of many readings.
#include "peers.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include "veksc.h"

namespace {

template <class Call>
double clocks(Call call) {
    const PeerSide side = peerSide(call);
    double best = 1e30;
    for (int i = 0; i < 1000; ++i) {
        best = std::min(best, side.batch(side.call, 4));
    }
    return best;
}

template <class Suite, class Codec>
void dataRow(const char* function, const char* difference, Suite suite, Codec codec) {
    const double first = clocks(suite);
    std::printf("| `%s` | %s | %.0f | %.0f |\n", function, difference, first, clocks(codec));
}

// A falling spectrum of random sign.
std::vector<Vek16s> spectrum(int n) {
    std::vector<Vek16s> x(static_cast<std::size_t>(n));
    unsigned state = 1;
    for (int i = 0; i < n; ++i) {
        state = state * 69069 + 1;
        const double unit = static_cast<double>(state >> 8) / (1 << 23) - 1;
        x[static_cast<std::size_t>(i)] = static_cast<Vek16s>(unit * 6000 * std::exp(-4.0 * i / n));
    }
    return x;
}

void transformQuantiser() {
    constexpr int lines = 1152;
    constexpr int bits = 1783;
    const std::vector<Vek16s> zeros(lines);
    const std::vector<Vek16s> lively = spectrum(lines);
    std::vector<Vek16s> out(lines);
    Vek16s noise = 0;
    const auto call = [&](const std::vector<Vek16s>& x) {
        return [&] { veksQuantTCX_AMRWBE_16s(x.data(), out.data(), lines / 8, bits, &noise); };
    };
    dataRow("veksQuantTCX_AMRWBE_16s", "zeros, a falling spectrum; 1152 lines", call(zeros), call(lively));
}

void phaseDispersion() {
    constexpr int subframe = 40;
    int bytes = 0;
    veksPhaseDispersionGetStateSize_G729D_16s(&bytes);
    std::vector<unsigned char> state(static_cast<std::size_t>(bytes));
    veksPhaseDispersionInit_G729D_16s(state.data());
    const std::vector<Vek16s> excitation = spectrum(subframe);
    std::vector<Vek16s> pulses(subframe);
    pulses[5] = 8192;
    pulses[22] = -8192;
    std::vector<Vek16s> innovation(subframe);
    std::vector<Vek16s> out(subframe);
    const auto call = [&](const std::vector<Vek16s>& fresh, Vek16s codebookGain) {
        return [&, codebookGain] {
            std::memcpy(innovation.data(), fresh.data(), subframe * sizeof(Vek16s));
            veksPhaseDispersion_G729D_16s(excitation.data(), out.data(), codebookGain, 0, innovation.data(),
                                          state.data());
        };
    };
    const std::vector<Vek16s> none(subframe);
    dataRow("veksPhaseDispersion_G729D_16s", "no innovation, two pulses", call(none, 0), call(pulses, 1000));
}

void adaptiveVector() {
    constexpr int history = 154;
    constexpr int subframe = 40;
    const std::vector<Vek16s> past = spectrum(history);
    std::vector<Vek16s> excitation(history + subframe + 12);
    std::vector<Vek16s> out(subframe);
    const auto call = [&](Vek16s lag) {
        return [&, lag] {
            const Vek16s delay[2] = {lag, 0};
            std::memcpy(excitation.data(), past.data(), history * sizeof(Vek16s));
            veksDecodeAdaptiveVector_G729_16s(delay, excitation.data(), out.data());
        };
    };
    dataRow("veksDecodeAdaptiveVector_G729_16s", "delay 0, delay 60", call(0), call(60));
}

void longTermPostFilter() {
    constexpr int order = 10;
    constexpr int subframe = 40;
    const std::vector<Vek16s> ones(200, 1);
    const std::vector<Vek16s> lively = spectrum(200);
    const std::vector<Vek16s> noFilter(order + 1);
    const std::vector<Vek16s> filter = {4096, -5200, 1900, 1300, -900, -500, 800, -300, -200, 200, -50};
    std::vector<Vek16s> residual(194);
    std::vector<Vek16s> out(subframe);
    const auto call = [&](const std::vector<Vek16s>& x, const std::vector<Vek16s>& lpc, Vek16s lag) {
        return [&, lag] {
            std::memcpy(residual.data(), x.data(), 154 * sizeof(Vek16s));
            veksLongTermPostFilter_G729A_16s(lag, x.data() + order, lpc.data(), residual.data(), out.data());
        };
    };
    dataRow("veksLongTermPostFilter_G729A_16s", "ones without a filter, a residual", call(ones, noFilter, 60),
            call(lively, filter, 60));
}

} // namespace

int main() {
    std::printf("| function | the suite's data, a codec's | clocks, suite | clocks, codec |\n|---|---|---|---|\n");
    transformQuantiser();
    phaseDispersion();
    adaptiveVector();
    longTermPostFilter();
    return 0;
}
