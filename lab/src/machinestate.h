// The state of this machine as far as it disturbs measurements, read and tried out.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace krlab {

/// What the kernel's files tell. `root` stands before /proc and /sys, so that a test can play any machine.
struct MachineState {
    int processors = 0;
    double load = -1;                   ///< one-minute average; negative if unknown
    std::vector<std::string> governors; ///< of all processors, each once
    int turbo = -1;                     ///< 1 on, 0 off, -1 unknown
    bool hyperThreads = false;          ///< some core runs two threads
    std::string isolated;               ///< processors that the scheduler leaves alone
    bool steadyCounter = false;         ///< the counter runs at one rate in all states of the processor
    bool virtualMachine = false;
};
MachineState readMachineState(const std::filesystem::path& root = "/");

/// Share of time that the hypervisor took away and that others worked, between two readings of /proc/stat.
struct ProcessorTimes {
    double total = 0;
    double stolen = 0;
    double idle = 0;
};
ProcessorTimes readProcessorTimes(const std::filesystem::path& root = "/");

/// What trying out for about a second tells.
struct MachineTrial {
    int counterStep = 0; ///< the counter moves in steps of this many
    double counterMHz = 0;
    double coreRatio = 0;    ///< clocks of the core for one of the counter
    double medianNoise = 0;  ///< median over smallest of a reference kernel, less 1
    double slowShare = 0;    ///< share of readings more than 10 % above the smallest
    double longestPhase = 0; ///< seconds of the longest stretch of such readings
    double stolenShare = 0;  ///< of the time of all processors
    double busyOthers = 0;   ///< processors' worth of other work
};
MachineTrial tryMachine(double seconds = 1);

/// What an object file tells of how it was built.
struct BuildQuality {
    int functions = 0; ///< exported functions that were looked at
    int framed = 0;    ///< of them, those that set up a frame pointer first, as unoptimised code does
    bool sanitized = false;
    bool unoptimised() const { return functions >= 5 && framed * 2 > functions; }
};
BuildQuality buildQualityOf(std::string_view file);

} // namespace krlab
