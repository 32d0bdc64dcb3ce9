// What the harness costs beyond measured code: a grid of 100,000 lines of an empty function, given by an ini-file, the
// search for identical rows included. Prints microseconds a line and the growth of memory a line.
#include "kr.h"
#include "krcputick.h"
#include "kriterator.h"
#include "krstream.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr int lines = 100000;
long long measuredClocks = 0;

krResult loop(int numLoops, long long* numClocks) {
    const unsigned long long first = vek_get_cyclon_counter();
    for (int i = 0; i < numLoops; ++i) {
        __asm__ volatile("");
    }
    const unsigned long long last = vek_get_cyclon_counter();
    *numClocks = static_cast<long long>(last - first);
    measuredClocks += *numClocks;
    return krOk;
}

class GridTest : public krTest {
public:
    using krTest::krTest;
    bool canStart() override {
        m_x.setList({1});
        m_parms.append(&m_x);
        return true;
    }

private:
    krStepIterator<int> m_x{"x", "x"};
};

double nowUs() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) * 1e-3;
}

long peakKb() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

} // namespace

int main() {
    krCpuTicker::m_freqMHz = 2400;
    krTest::m_numParmsColm = 2;
    krTest::m_numResultColm = 5;
    g_cstrm.addStream("/dev/null", false);
    g_tool.setMethodLoop(1);
    const std::string ini = std::filesystem::temp_directory_path() / ("grid" + std::to_string(getpid()) + ".ini");
    FILE* file = std::fopen(ini.c_str(), "w");
    std::fprintf(file, "[grid]\nx=1; %d; +1\n", lines);
    std::fclose(file);
    g_istrm.setIniFile(ini.c_str(), false);
    GridTest test(loop, nullptr, "grid", "overhead", "GridTest");
    const long before = peakKb();
    const double begin = nowUs();
    const krResult result = test.run();
    const double end = nowUs();
    std::remove(ini.c_str());
    std::printf("result %s, %.2f us a line, %.0f bytes a line, %.1f clocks measured a line\n",
                krResultName(result).c_str(), (end - begin) / lines,
                static_cast<double>(peakKb() - before) * 1024.0 / lines, static_cast<double>(measuredClocks) / lines);
    return 0;
}
