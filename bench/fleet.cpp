// Time and memory of merging a fleet: stores of a thousand tasks made up, merged into one as `krlab fleet fetch` does,
// fetched once more, and judged.
//     bench_fleet DIRECTORY [tasks [passes [lines]]]
#include "fleetverdict.h"
#include "store.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <random>
#include <sqlite3.h>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr int kinds = 10; // of machines

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

krlab::Pass passOf(const std::string& subject, int kind, int lines, std::mt19937& random) {
    std::exponential_distribution<double> noise(100);
    krlab::Pass pass;
    pass.identity.subject = subject;
    pass.identity.program.sha256 = subject;
    pass.identity.machine.host = "node" + std::to_string(kind);
    pass.identity.machine.processor = "family 6 model " + std::to_string(kind) + " stepping 1";
    pass.ends.emplace_back();
    for (int i = 0; i < lines; ++i) {
        krlab::Figure figure;
        figure.line.function = "veksFunction" + std::to_string(i / 9) + "_16s";
        figure.line.parameters = {{"lenght", std::to_string(i % 9 * 40)}, {"mode", "BR_12200"}};
        figure.clocks = (100 + i) * (1 + noise(random));
        figure.loops = 64;
        figure.unit = "e";
        figure.comment = "nLps=64";
        pass.figures.push_back(std::move(figure));
    }
    return pass;
}

void writeTask(const std::string& file, int kind, int passes, int lines) {
    const std::string draft = file + ".draft";
    {
        krlab::Store store(draft);
        krlab::RunRecord record;
        record.command = "fleet";
        record.label = "made up";
        const long long run = store.beginRun(record);
        store.markFleet({run, "plan", kind, "usual", {"before", "after"}});
        std::mt19937 random(static_cast<unsigned>(kind));
        for (int round = 0; round < passes; ++round) {
            store.addPass(run, round, passOf("before", kind, lines, random));
            store.addPass(run, round, passOf("after", kind, lines, random));
        }
        store.endRun(run, 0);
        store.copyTo(file);
    }
    for (const char* end : {"", "-wal", "-shm"}) {
        fs::remove(draft + end);
    }
}

// The first task of each kind is written, the others are copies of it with a number of their own.
void copyTask(const std::string& from, const std::string& to, int task) {
    fs::copy_file(from, to);
    sqlite3* db = nullptr;
    const std::string sql = "UPDATE fleet SET task = " + std::to_string(task);
    const bool good = sqlite3_open(to.c_str(), &db) == SQLITE_OK &&
                      sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
    sqlite3_close(db);
    if (!good) {
        throw std::runtime_error(to + " can't be numbered");
    }
}

double megabytes() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

// In a process of its own, whose memory is its own too.
template <typename Work>
void alone(const Work& work) {
    std::fflush(stdout);
    const pid_t process = ::fork();
    if (process == 0) {
        int status = 0;
        try {
            work();
        } catch (const std::exception& error) {
            std::fprintf(stderr, "bench_fleet: %s\n", error.what());
            status = 2;
        }
        std::fflush(stdout);
        ::_exit(status);
    }
    int code = 0;
    ::waitpid(process, &code, 0);
    if (code != 0) {
        std::exit(2);
    }
}

void merge(const std::string& directory, const std::string& file, int tasks) {
    const auto start = std::chrono::steady_clock::now();
    krlab::Store store(file);
    size_t passes = 0;
    long long figures = 0;
    for (int task = 0; task < tasks; ++task) {
        const krlab::MergeCount count = store.merge(directory + "/" + std::to_string(task) + ".db");
        passes += count.passes;
        figures += count.figures;
    }
    const double seconds = secondsSince(start);
    std::printf(
        "merged: %d tasks, %zu passes, %lld figures in %.1f s, %.1f ms a task, at most %.0f MB in memory, %.0f MB on "
        "disk\n",
        tasks, passes, figures, seconds, seconds * 1000 / tasks, megabytes(),
        static_cast<double>(fs::file_size(file)) / 1e6);
}

void judge(const std::string& file) {
    const auto start = std::chrono::steady_clock::now();
    const krlab::VerdictReport report = krlab::fleetVerdict(krlab::Store(file), {});
    const krlab::VerdictCounts counts = krlab::countVerdicts(report.lines);
    std::printf(
        "judged: %zu lines on %zu kinds of machines, %zu slower, %zu faster over all, in %.1f s, at most %.0f MB in "
        "memory\n",
        counts.lines, report.kinds.size(), counts.slower, counts.faster, secondsSince(start), megabytes());
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr,
                     "bench_fleet DIRECTORY [tasks [passes [lines]]]: makes the tasks' stores if they are not there, "
                     "then merges them\n");
        return 2;
    }
    const std::string directory = argv[1];
    const int tasks = argc > 2 ? std::atoi(argv[2]) : 1000;
    const int passes = argc > 3 ? std::atoi(argv[3]) : 5;
    const int lines = argc > 4 ? std::atoi(argv[4]) : 1000;
    const std::string file = directory + "/merged.db";
    alone([&] {
        fs::create_directories(directory);
        for (int task = 0; task < tasks; ++task) {
            const std::string one = directory + "/" + std::to_string(task) + ".db";
            if (fs::exists(one)) {
                continue;
            }
            if (task < kinds) {
                writeTask(one, task, passes, lines);
            } else {
                copyTask(directory + "/" + std::to_string(task % kinds) + ".db", one, task);
            }
        }
        for (const char* end : {"", "-wal", "-shm"}) {
            fs::remove(file + end);
        }
    });
    alone([&] { merge(directory, file, tasks); });
    alone([&] { merge(directory, file, tasks); }); // nothing is new
    alone([&] { judge(file); });
    return 0;
}
