// Every parameter of every registered test with values that its grid never has: each run ends as a result, leaves other
// memory alone, which the sanitizers watch, and holds to the time and memory of an ordinary run. A function's runs have
// a process of their own, so that one that ends it costs no other.
#include "suite_data.h"
#include "suite_grid.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <map>
#include <random>
#include <set>
#include <sstream>

namespace {

/// Values of a user for one run, as "title=value".
using Values = std::vector<std::string>;

// Four times what the longest run needs, a gigabyte of samples: it is for runs without end, not for slow machines.
constexpr int secondsAllowed = 40;
constexpr long kilobytesAllowed = 4L << 20;
constexpr int pairsOfATest = 12;
// Values beyond this are measured on their first line alone.
constexpr long long ordinary = 4096;
constexpr int ordinaryLines = 3;

/// The titles of a test's parameters, each once.
std::vector<std::string> titles(krTest& test) {
    std::vector<std::string> found;
    std::istringstream row(nameRow(test));
    for (std::string title; std::getline(row, title, ',');) {
        if (!title.empty() && title != "-" && std::find(found.begin(), found.end(), title) == found.end()) {
            found.push_back(title);
        }
    }
    return found;
}

/// What a run tells its process's parent.
struct Report {
    int run;         // The run in work, or the first that was not begun.
    long long lines; // Lines that were measured.
};

int s_linesLeft;
krFuncLoop s_loop;
Report* s_report;

// The test's own loop for as many lines as a run may take; then the walk ends.
krResult someLines(int loops, long long* clocks) {
    if (s_linesLeft-- <= 0) {
        *clocks = 0;
        return krFail;
    }
    ++s_report->lines;
    return s_loop(loops, clocks);
}

/// Runs a test with a user's values: the lines of its table and its result, or that of its last line allowed.
std::vector<std::string> runWith(krTest& test, const Values& values, int lines, krResult& result,
                                 const TempDir& directory) {
    g_istrm.dataList().clear();
    for (const std::string& value : values) {
        g_istrm.dataList().set(value.c_str());
    }
    s_linesLeft = lines;
    s_loop = test.m_funcLoop;
    test.m_funcLoop = someLines;
    std::vector<std::string> table = runOnce(test, result, directory);
    test.m_funcLoop = s_loop;
    g_istrm.dataList().clear();
    if (s_linesLeft < 0) {
        result = krOk;
    }
    return table;
}

/// The elements of a test's vectors, and the bytes of its other blocks, on the first line of its grid.
std::set<long long> sizesOf(krTest& test) {
    std::set<long long> sizes;
    const SuiteLine line(test.m_name.c_str());
    for (const SuiteBlock& block : line.blocks()) {
        const auto* vector = dynamic_cast<const vkVector*>(block.owner);
        sizes.insert(vector != nullptr ? vector->length() : block.bytes);
    }
    return sizes;
}

/// The values of each title in the lines of a test's own grid.
std::map<std::string, std::set<std::string>> gridOf(krTest& test) {
    std::map<std::string, std::set<std::string>> grid;
    const std::vector<std::string> heads = [&] {
        std::vector<std::string> cellsOfRow;
        std::istringstream row(nameRow(test));
        for (std::string title; std::getline(row, title, ',');) {
            cellsOfRow.push_back(title);
        }
        return cellsOfRow;
    }();
    krResult result = krUndefined;
    for (const std::string& line : runOnce(test, result)) {
        std::istringstream row(cells(line, 3, 8));
        std::string cell;
        for (std::size_t i = 0; i < heads.size() && std::getline(row, cell, ','); ++i) {
            if (!heads[i].empty() && heads[i] != "-") {
                grid[heads[i]].insert(cell);
            }
        }
    }
    return grid;
}

/// What a user may give for a parameter: the ends of its type, small and large sizes, and the neighbours of its grid
/// and of the test's vectors.
std::vector<std::string> valuesFor(const std::set<std::string>& gridValues, const std::set<long long>& sizes) {
    std::set<long long> numbers = {INT_MIN, INT_MIN + 1LL, -1000, -9,   -1,    0,     1,         2,      7, 33,
                                   65,      129,           217,   1025, 65535, 65536, 1LL << 30, INT_MAX};
    for (const std::string& value : gridValues) {
        char* end = nullptr;
        const long long number = std::strtoll(value.c_str(), &end, 10);
        if (end != value.c_str()) {
            numbers.insert({number - 1, number + 1});
        }
    }
    for (const long long size : sizes) {
        numbers.insert({size - 1, size, size + 1});
    }
    std::vector<std::string> values = {"1e999"};
    for (const long long number : numbers) {
        values.push_back(std::to_string(number));
    }
    return values;
}

/// All runs of a test: each parameter with each value, and pairs of parameters at random.
std::vector<Values> runsOf(krTest& test) {
    std::vector<Values> runs;
    const std::map<std::string, std::set<std::string>> grid = gridOf(test);
    const std::set<long long> sizes = sizesOf(test);
    const std::vector<std::string> names = titles(test);
    std::map<std::string, std::vector<std::string>> values;
    for (const std::string& name : names) {
        const auto own = grid.find(name);
        for (const std::string& value : valuesFor(own == grid.end() ? std::set<std::string>() : own->second, sizes)) {
            std::string given = name + "=";
            given += value;
            values[name].push_back(given);
            runs.push_back({given});
        }
    }
    std::mt19937 random(20201);
    for (int pair = 0; names.size() > 1 && pair < pairsOfATest; ++pair) {
        const std::size_t first = random() % names.size();
        const std::size_t second = (first + 1 + random() % (names.size() - 1)) % names.size();
        Values run;
        for (const std::size_t place : {first, second}) {
            const std::vector<std::string>& choice = values[names[place]];
            run.push_back(choice[random() % choice.size()]);
        }
        runs.push_back(run);
    }
    return runs;
}

std::string text(const krTest& test, const Values& run) {
    std::string all = test.m_name.c_str();
    for (const std::string& value : run) {
        all += " -d\"" + value + "\"";
    }
    return all;
}

bool isLarge(const Values& run) {
    return std::any_of(run.begin(), run.end(), [](const std::string& value) {
        return std::llabs(std::strtoll(value.c_str() + value.find('=') + 1, nullptr, 10)) > ordinary;
    });
}

/// What is wrong with the end of a run; blank if nothing is.
std::string faultOf(krTest& test, const Values& run, const TempDir& directory) {
    krResult result = krUndefined;
    const std::vector<std::string> lines = runWith(test, run, isLarge(run) ? 1 : ordinaryLines, result, directory);
    if (result == krUndefined || result == krExcptFail || result == krFail) {
        return krResultString(result).c_str();
    }
    if (lines.empty() && !krIsFailure(result)) {
        return "neither a line nor a failure";
    }
    for (const std::string& line : lines) {
        const double clocks = std::atof(cells(line, 10, 10).c_str());
        if (!std::isfinite(clocks) || clocks <= 0) {
            return "no clocks: " + line;
        }
    }
    if (krMallocFirst(nullptr, nullptr) != nullptr) {
        test.flushData();
        return "memory left behind";
    }
    return "";
}

/// The runs of a test from `first` on, in a process that may end in any of them; what went wrong goes to `faults`.
[[noreturn]] void runAll(krTest& test, const std::vector<Values>& runs, int first, const TempDir& directory,
                         std::FILE* faults) {
    std::freopen("/dev/null", "w", stdout);
    dup2(fileno(faults), STDERR_FILENO);
    // Nothing hangs on the clocks: no line is to wait until an idle core is awake.
    std::signal(SIGALRM, [](int) { krCoreWasBusy(); });
    const struct itimerval often = {{0, 1000}, {0, 1000}};
    setitimer(ITIMER_REAL, &often, nullptr);
    for (int run = first; run < static_cast<int>(runs.size()); ++run) {
        s_report->run = run;
        const struct itimerval allowed = {{0, 0}, {secondsAllowed, 0}};
        setitimer(ITIMER_PROF, &allowed, nullptr);
        const std::string fault = faultOf(test, runs[static_cast<std::size_t>(run)], directory);
        if (!fault.empty()) {
            std::fprintf(faults, "%s: %s\n", text(test, runs[static_cast<std::size_t>(run)]).c_str(), fault.c_str());
        }
        std::fflush(faults);
    }
    s_report->run = static_cast<int>(runs.size());
    _exit(0);
}

/// What a process has written.
std::string contents(std::FILE* file) {
    std::rewind(file);
    std::string all;
    for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file)) {
        all += static_cast<char>(c);
    }
    return all;
}

class AnyValue : public testing::TestWithParam<int> {};

constexpr int shares = 8;

TEST_P(AnyValue, OfAParameterEndsAsAResult) {
    void* shared = mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    s_report = static_cast<Report*>(shared);
    const TempDir directory;
    int place = 0;
    long long total = 0;
    for (krTest* test : *pTestList) {
        if (place++ % shares != GetParam()) {
            continue;
        }
        const std::vector<Values> runs = runsOf(*test);
        total += static_cast<long long>(runs.size());
        for (int next = 0; next < static_cast<int>(runs.size());) {
            std::FILE* faults = std::tmpfile();
            ASSERT_NE(faults, nullptr);
            *s_report = {next, 0};
            const pid_t child = fork();
            ASSERT_GE(child, 0);
            if (child == 0) {
                runAll(*test, runs, next, directory, faults);
            }
            int status = 0;
            struct rusage usage = {};
            ASSERT_EQ(wait4(child, &status, 0, &usage), child);
            const std::string told = contents(faults);
            std::fclose(faults);
            EXPECT_EQ(told, "");
            EXPECT_LT(usage.ru_maxrss, kilobytesAllowed) << test->m_name.c_str();
            next = s_report->run;
            if (next < static_cast<int>(runs.size())) {
                ADD_FAILURE() << text(*test, runs[static_cast<std::size_t>(next)])
                              << " ends its process: " << (WIFSIGNALED(status) ? strsignal(WTERMSIG(status)) : "exit");
                ++next;
            }
        }
    }
    RecordProperty("runs", static_cast<int>(total));
    munmap(shared, sizeof(Report));
}
INSTANTIATE_TEST_SUITE_P(Share, AnyValue, testing::Range(0, shares));

} // namespace
