// Forty lines of the grid under Google Benchmark: dot products and autocorrelations of many lengths. Its compare script
// takes two outputs of this program, made with two builds of the library.
#include "veksc.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

constexpr int longest = 320;
constexpr int mostLags = 21;
Vek16s signal[2 * longest];
Vek32s correlations[mostLags];
Vek32s product;

void fill() {
    unsigned state = 7;
    for (Vek16s& sample : signal) {
        state = state * 69069U + 1013904243U;
        sample = static_cast<Vek16s>(static_cast<int>(state >> 20) - 2048);
    }
}

void dotProduct(benchmark::State& state, int length) {
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(veksDotProd_G729A_16s32s(signal, signal + longest, length, &product));
    }
}

void autoCorrelation(benchmark::State& state, int length, int lags) {
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(veksAutoCorr_16s32s(signal, length, correlations, lags));
    }
}

} // namespace

int main(int argc, char** argv) {
    fill();
    for (int length = 10; length <= 200; length += 10) {
        benchmark::RegisterBenchmark(("dot " + std::to_string(length)).c_str(), dotProduct, length);
    }
    for (const int length : {40, 80, 160, 240, 320}) {
        for (const int lags : {5, 9, 11, mostLags}) {
            const std::string name = "autocorrelation " + std::to_string(length) + "x" + std::to_string(lags);
            benchmark::RegisterBenchmark(name.c_str(), autoCorrelation, length, lags);
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
