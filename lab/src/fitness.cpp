#include "fitness.h"

#include <fmt/format.h>

namespace krlab {

namespace {

using Grade = Finding::Grade;

/// Below the first bound good, up to the second fair, above it bad.
Grade grade(double value, double fair, double bad) {
    return value < fair ? Grade::good : value < bad ? Grade::fair : Grade::bad;
}

std::string adviceUnlessGood(Grade g, const char* advice) {
    return g == Grade::good ? "" : advice;
}

Finding judgeLoad(const MachineState& state, const MachineTrial& trial) {
    const Grade g = grade(trial.busyOthers, 0.1, 0.7 * state.processors);
    return {g, "load",
            fmt::format("{:.1f} of {} processors busy with other work, load average {:.2f}", trial.busyOthers,
                        state.processors, state.load),
            adviceUnlessGood(g, "end other work, or give a comparison more time")};
}

Finding judgeSteal(const MachineTrial& trial) {
    const Grade g = grade(trial.stolenShare, 0.005, 0.05);
    return {g, "steal", fmt::format("{:.1f} % of the time taken by the hypervisor", trial.stolenShare * 100),
            adviceUnlessGood(g, "use a machine of its own, or compare by instructions (krlab count)")};
}

Finding judgeGovernor(const MachineState& state) {
    if (state.governors.empty()) {
        return {Grade::good, "governor", "this machine does not tell one", ""};
    }
    const bool steady = state.governors == std::vector<std::string>{"performance"};
    return {steady ? Grade::good : Grade::fair, "governor", fmt::format("{}", fmt::join(state.governors, ", ")),
            steady ? "" : "cpupower frequency-set -g performance"};
}

Finding judgeTurbo(const MachineState& state) {
    if (state.turbo < 0) {
        return {Grade::good, "turbo", "this machine does not tell", ""};
    }
    return {state.turbo == 1 ? Grade::fair : Grade::good, "turbo", state.turbo == 1 ? "on" : "off",
            state.turbo == 1 ? "switch it off in the firmware, or write 1 to no_turbo (0 to cpufreq/boost) below "
                               "/sys/devices/system/cpu"
                             : ""};
}

Finding judgeThreads(const MachineState& state) {
    return {state.hyperThreads ? Grade::fair : Grade::good, "hyper-threads",
            state.hyperThreads ? "two threads share a core" : "none seen",
            state.hyperThreads ? "leave the sibling idle, or echo off > /sys/devices/system/cpu/smt/control" : ""};
}

Finding judgeIsolation(const MachineState& state) {
    if (state.isolated.empty()) {
        return {Grade::fair, "cores left alone", "none",
                "for the quietest figures boot with isolcpus=N and start krlab with taskset -c N"};
    }
    return {
        Grade::good, "cores left alone", state.isolated,
        fmt::format("start krlab with taskset -c {}", state.isolated.substr(0, state.isolated.find_first_of(",-")))};
}

Finding judgeCounter(const MachineState& state, const MachineTrial& trial) {
    const double distance = trial.coreRatio > 1 ? trial.coreRatio - 1 : 1 - trial.coreRatio;
    const Grade g = !state.steadyCounter ? Grade::bad : grade(distance, 0.05, 10);
    return {g, "counter",
            fmt::format("{:.0f} MHz in steps of {}, the core does {:.3f} clocks for one of the counter{}",
                        trial.counterMHz, trial.counterStep, trial.coreRatio,
                        state.steadyCounter ? "" : ", its rate is not said to be steady"),
            g == Grade::good ? ""
            : g == Grade::bad
                ? "figures of different moments can't be compared here; use another machine"
                : "figures are clocks of the counter; fix the core's frequency before quoting them as the core's"};
}

Finding judgeNoise(const MachineTrial& trial) {
    const Grade g = std::max(grade(trial.medianNoise, 0.02, 0.1), grade(trial.slowShare, 0.05, 0.5));
    return {
        g, "noise",
        fmt::format("a reference kernel is {:.1f} % above its least in the median, {:.0f} % of a second is more than "
                    "10 % slower, the longest stretch {:.0f} ms",
                    trial.medianNoise * 100, trial.slowShare * 100, trial.longestPhase * 1000),
        adviceUnlessGood(g,
                         "compare with krlab ab, which spreads and pairs its readings; single runs tell little here")};
}

} // namespace

const char* gradeName(Grade grade) {
    return grade == Grade::good ? "good" : grade == Grade::fair ? "fair" : "BAD";
}

std::vector<Finding> judgeMachine(const MachineState& state, const MachineTrial& trial) {
    std::vector<Finding> findings = {judgeLoad(state, trial),    judgeSteal(trial),   judgeGovernor(state),
                                     judgeTurbo(state),          judgeThreads(state), judgeIsolation(state),
                                     judgeCounter(state, trial), judgeNoise(trial)};
    if (state.virtualMachine) {
        findings.push_back({Grade::fair, "virtual machine", "yes",
                            "neighbours are not seen from inside; steal and noise tell of them"});
    }
    return findings;
}

Finding judgeBuild(const std::string& library, const BuildQuality& quality) {
    const bool bad = quality.unoptimised() || quality.sanitized;
    return {bad ? Grade::bad : Grade::good, library,
            quality.sanitized ? "built with sanitizers"
            : quality.unoptimised()
                ? fmt::format("{} of {} functions set up a frame pointer: built without optimisation", quality.framed,
                              quality.functions)
                : "an optimised build",
            bad ? "measure a release build" : ""};
}

} // namespace krlab
