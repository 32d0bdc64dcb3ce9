// The same subjects under Google Benchmark; its flags are passed on.
#include "subjects.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

static void runSubject(benchmark::State& state, int (*call)()) {
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(call());
    }
}

int main(int argc, char** argv) {
    for (const Subject& subject : subjects) {
        benchmark::RegisterBenchmark(subject.name, runSubject, subject.call);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
