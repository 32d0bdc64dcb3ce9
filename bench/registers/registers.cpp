// The same two kernels in the library's registers and in those of Highway, measured in turn. Lowest readings, in
// clocks.
#include "trial.h"

#include "peers.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

namespace {

using namespace vek;

constexpr size_t kinds = 5;
const TrialKernels* const all[kinds] = {&g_library128, &g_highway128, &g_library256, &g_highway256, &g_highway512};

template <class Call>
double clocksOf(Call call, int calls) {
    const PeerSide side = peerSide(call);
    return side.batch(side.call, calls);
}

// `call` works with the k-th kernels; `result` has the bytes of what they gave.
template <class Call, class Result>
void row(const std::string& name, Call call, Result result) {
    constexpr int rounds = 400;
    constexpr double batchClocks = 40000;
    std::array<double, kinds> low{};
    std::array<int, kinds> calls{};
    for (size_t k = 0; k < kinds; ++k) {
        const auto one = [&] { call(k); };
        low[k] = clocksOf(one, 10);
        calls[k] = std::max(1, static_cast<int>(batchClocks / low[k]));
    }
    for (int round = 0; round < rounds; ++round) {
        for (size_t k = 0; k < kinds; ++k) {
            const auto one = [&] { call(k); };
            low[k] = std::min(low[k], clocksOf(one, calls[k]));
        }
    }
    const std::string wanted = result(0);
    const bool alike = std::all_of(all, all + kinds,
                                   [&, k = size_t{0}](const TrialKernels*) mutable { return result(k++) == wanted; });
    std::printf("%-24s %8.1f %8.1f %5.2f  %8.1f %8.1f %5.2f  %8.1f %5.2f%s\n", name.c_str(), low[0], low[1],
                low[1] / low[0], low[2], low[3], low[3] / low[2], low[4], low[4] / low[2],
                alike ? "" : "  DIFFERENT RESULTS");
}

template <class T>
std::string bytesOf(const T* values, size_t count) {
    return {reinterpret_cast<const char*>(values), count * sizeof(T)};
}

} // namespace

int main() {
    std::mt19937 random(1);
    std::printf("%-24s %26s%26s%17s\n", "", "128 bits: library, Highway", "256 bits: library, Highway", "512: Highway");
    for (const int half : {64, 256}) {
        alignas(64) static int32_t parts[2][2 * 256];
        alignas(64) static int32_t w[2][256];
        alignas(64) static int32_t work[kinds][2][2 * 256];
        for (int part = 0; part < 2; ++part) {
            std::generate_n(parts[part], 2 * half, [&] { return static_cast<int32_t>(random() >> 4); });
            std::generate_n(w[part], half, [&] { return static_cast<int32_t>(random() >> 2); });
        }
        row(
            "butterflies " + std::to_string(half),
            [&](size_t k) {
                std::memcpy(work[k], parts, sizeof parts);
                all[k]->butterflies(work[k][0], work[k][1], w[0], w[1], half);
            },
            [&](size_t k) { return bytesOf(work[k][0], static_cast<size_t>(2 * 2 * 256)); });
    }
    static PulseField field;
    for (int i = 0; i < kPulsePositions; ++i) {
        field.dn[i] = static_cast<int16_t>(random() % 8000);
        field.energy[i] = static_cast<int16_t>(8000 + random() % 8000);
        field.kept[i] = random() % 2 == 0;
    }
    std::generate(std::begin(field.rr), std::end(field.rr),
                  [&] { return static_cast<int16_t>(static_cast<int>(random() % 4000) - 2000); });
    constexpr PulseChain list[4] = {{{0, 1, 2, 3}}, {{1, 2, 3, 4}}, {{2, 3, 4, 0}}, {{3, 4, 0, 1}}};
    Pulse best[kinds][4];
    row(
        "pulses, 4 chains of 4", [&](size_t k) { all[k]->chains(field, list, 4, 4, best[k]); },
        [&](size_t k) { return bytesOf(best[k], 4); });
    return 0;
}
