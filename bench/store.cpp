// Time and memory of the store: a thousand passes over the whole grid written, then read for a comparison.
//     bench_store FILE [passes [lines]]
#include "store.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <random>
#include <sys/resource.h>

namespace {

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

krlab::Pass passOf(int lines, std::mt19937& random) {
    std::uniform_real_distribution<double> clocks(20, 20000);
    krlab::Pass pass;
    pass.identity.subject = "subject";
    pass.ends.emplace_back();
    for (int i = 0; i < lines; ++i) {
        krlab::Figure figure;
        figure.line.function = "veksFunction" + std::to_string(i / 9) + "_16s";
        figure.line.parameters = {{"lenght", std::to_string(i % 9 * 40)}, {"mode", "BR_12200"}};
        figure.clocks = clocks(random);
        figure.loops = 64;
        figure.unit = "e";
        figure.comment = "nLps=64";
        pass.figures.push_back(std::move(figure));
    }
    return pass;
}

void write(const char* file, int passes, int lines) {
    krlab::Store store(file);
    const long long run = store.beginRun(krlab::RunRecord());
    std::mt19937 random(1);
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < passes; ++i) {
        store.addPass(run, i, passOf(lines, random));
    }
    const double seconds = secondsSince(start);
    std::printf("written: %d passes of %d lines in %.1f s, %.1f ms a pass, %.0f MB\n", passes, lines, seconds,
                seconds * 1000 / passes, static_cast<double>(std::filesystem::file_size(file)) / 1e6);
}

void read(const char* file) {
    const auto start = std::chrono::steady_clock::now();
    const krlab::FigureTable table = krlab::Store(file).figures();
    size_t figures = 0;
    for (const auto& entries : table.entries) {
        figures += entries.size();
    }
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    std::printf("read: %zu passes, %zu figures in %.2f s, at most %.0f MB in memory\n", table.passes.size(), figures,
                secondsSince(start), static_cast<double>(usage.ru_maxrss) / 1024);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "bench_store FILE [passes [lines]]: writes FILE if it is not there, then reads it\n");
        return 2;
    }
    try {
        if (!std::filesystem::exists(argv[1])) {
            write(argv[1], argc > 2 ? std::atoi(argv[2]) : 1000, argc > 3 ? std::atoi(argv[3]) : 2900);
        }
        read(argv[1]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_store: %s\n", error.what());
        return 2;
    }
    return 0;
}
