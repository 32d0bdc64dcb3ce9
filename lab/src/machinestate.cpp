#include "machinestate.h"

#include "referencekernel.h"
#include "text.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <numeric>
#include <set>
#include <unistd.h>
#include <x86intrin.h>

namespace krlab {

namespace fs = std::filesystem;

namespace {

using Clock = std::chrono::steady_clock;

std::string firstLine(const fs::path& file) {
    std::ifstream in(file);
    std::string line;
    std::getline(in, line);
    return std::string(trimmed(line));
}

/// Directories cpu0, cpu1 ... below the kernel's list.
std::vector<fs::path> processorDirectories(const fs::path& root) {
    std::vector<fs::path> directories;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(root / "sys/devices/system/cpu", error)) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with("cpu") && integerOf(std::string_view(name).substr(3))) {
            directories.push_back(entry.path());
        }
    }
    return directories;
}

/// Each driver has a switch of its own: "no_turbo" in its directory, or "boost" of the frequency driver.
int turboState(const fs::path& root) {
    const fs::path top = root / "sys/devices/system/cpu";
    if (const std::string boost = firstLine(top / "cpufreq/boost"); !boost.empty()) {
        return boost == "1" ? 1 : 0;
    }
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(top, error)) {
        if (const std::string off = firstLine(entry.path() / "no_turbo"); !off.empty()) {
            return off == "0" ? 1 : 0;
        }
    }
    return -1;
}

int stepOfCounter() {
    unsigned long long step = 0;
    unsigned long long last = __rdtsc();
    for (int i = 0; i < 10000; ++i) {
        const unsigned long long now = __rdtsc();
        step = std::gcd(step, now - last);
        last = now;
    }
    return static_cast<int>(std::min(step, 1000000ULL));
}

} // namespace

MachineState readMachineState(const fs::path& root) {
    MachineState state;
    state.processors = static_cast<int>(::sysconf(_SC_NPROCESSORS_ONLN));
    const std::string load = firstLine(root / "proc/loadavg");
    state.load = numberOf(load.substr(0, load.find(' '))).value_or(-1);
    std::set<std::string> governors;
    for (const fs::path& processor : processorDirectories(root)) {
        if (const std::string governor = firstLine(processor / "cpufreq/scaling_governor"); !governor.empty()) {
            governors.insert(governor);
        }
        const std::string siblings = firstLine(processor / "topology/thread_siblings_list");
        state.hyperThreads = state.hyperThreads || siblings.find_first_of(",-") != std::string::npos;
    }
    state.governors.assign(governors.begin(), governors.end());
    state.turbo = turboState(root);
    state.isolated = firstLine(root / "sys/devices/system/cpu/isolated");
    std::ifstream info(root / "proc/cpuinfo");
    for (std::string line; std::getline(info, line);) {
        if (line.starts_with("flags")) {
            state.steadyCounter =
                line.find(" constant_tsc") != std::string::npos && line.find(" nonstop_tsc") != std::string::npos;
            state.virtualMachine = line.find(" hypervisor") != std::string::npos;
            break;
        }
    }
    return state;
}

ProcessorTimes readProcessorTimes(const fs::path& root) {
    // "cpu  user nice system idle iowait irq softirq steal guest guest_nice", in ticks.
    ProcessorTimes times;
    const std::string line = firstLine(root / "proc/stat");
    int column = 0;
    for (const std::string_view cell : split(line, ' ')) {
        const auto value = integerOf(cell);
        // Guests' time is part of the user's.
        if (!value || ++column > 8) {
            continue;
        }
        times.total += static_cast<double>(*value);
        if (column == 4 || column == 5) {
            times.idle += static_cast<double>(*value);
        } else if (column == 8) {
            times.stolen += static_cast<double>(*value);
        }
    }
    return times;
}

MachineTrial tryMachine(double seconds) {
    MachineTrial trial;
    trial.counterStep = stepOfCounter();
    constexpr unsigned long long kernel = 40000;
    const ProcessorTimes before = readProcessorTimes();
    const auto start = Clock::now();
    const unsigned long long first = __rdtsc();
    std::vector<std::pair<double, double>> readings; // seconds since the start, clocks
    for (double now = 0; now < seconds;) {
        const unsigned long long from = __rdtsc();
        referenceKernel(kernel);
        const unsigned long long to = __rdtsc();
        now = std::chrono::duration<double>(Clock::now() - start).count();
        readings.emplace_back(now, static_cast<double>(to - from));
    }
    const unsigned long long last = __rdtsc();
    const ProcessorTimes after = readProcessorTimes();
    trial.counterMHz = static_cast<double>(last - first) / readings.back().first / 1e6;
    std::vector<double> clocks;
    clocks.reserve(readings.size());
    for (const auto& reading : readings) {
        clocks.push_back(reading.second);
    }
    std::sort(clocks.begin(), clocks.end());
    const double least = clocks.front();
    trial.coreRatio = static_cast<double>(kernel) / least;
    trial.medianNoise = clocks[clocks.size() / 2] / least - 1;
    size_t slow = 0;
    double phase = -1;
    for (const auto& [second, value] : readings) {
        if (value <= least * 1.1) {
            phase = -1;
            continue;
        }
        ++slow;
        phase = phase < 0 ? second : phase;
        trial.longestPhase = std::max(trial.longestPhase, second - phase);
    }
    trial.slowShare = static_cast<double>(slow) / static_cast<double>(readings.size());
    const double total = after.total - before.total;
    if (total > 0) {
        const double processors = static_cast<double>(::sysconf(_SC_NPROCESSORS_ONLN));
        trial.stolenShare = (after.stolen - before.stolen) / total;
        const double busy = (total - (after.idle - before.idle) - (after.stolen - before.stolen)) / total * processors;
        trial.busyOthers = std::max(0.0, busy - 1);
    }
    return trial;
}

} // namespace krlab
