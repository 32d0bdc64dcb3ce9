// krlab doctor: machines played by files, and what is said of them.
#include "fitness.h"
#include "labprocess.h"
#include "text.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace krlab;

namespace {

/// A root directory with the kernel's files of a machine.
class PlayedMachine : public TempDir {
public:
    void put(const std::string& file, const std::string& text) const {
        std::filesystem::create_directories(std::filesystem::path(path(file)).parent_path());
        write(file, text);
    }
};

const Finding* find(const std::vector<Finding>& findings, const std::string& what) {
    for (const Finding& finding : findings) {
        if (finding.what == what) {
            return &finding;
        }
    }
    return nullptr;
}

} // namespace

TEST(LabDoctor, TheKernelsFilesAreRead) {
    const PlayedMachine machine;
    machine.put("proc/loadavg", "1.25 0.50 0.10 1/100 77\n");
    machine.put("proc/stat", "cpu  100 0 50 800 10 5 5 30 7 0\ncpu0 1 1 1 1\n");
    machine.put("proc/cpuinfo", "processor\t: 0\nflags\t\t: fpu tsc constant_tsc nonstop_tsc hypervisor\n");
    const std::string cpus = "sys/devices/system/cpu/";
    machine.put(cpus + "cpu0/cpufreq/scaling_governor", "powersave\n");
    machine.put(cpus + "cpu1/cpufreq/scaling_governor", "performance\n");
    machine.put(cpus + "cpu1/topology/thread_siblings_list", "0-1\n");
    machine.put(cpus + "driver/no_turbo", "0\n");
    machine.put(cpus + "isolated", "2-3\n");
    const MachineState state = readMachineState(machine.path());
    EXPECT_EQ(state.load, 1.25);
    EXPECT_EQ(state.governors, (std::vector<std::string>{"performance", "powersave"}));
    EXPECT_EQ(state.turbo, 1);
    EXPECT_TRUE(state.hyperThreads);
    EXPECT_EQ(state.isolated, "2-3");
    EXPECT_TRUE(state.steadyCounter);
    EXPECT_TRUE(state.virtualMachine);
    const ProcessorTimes times = readProcessorTimes(machine.path());
    EXPECT_EQ(times.total, 1000);
    EXPECT_EQ(times.idle, 810);
    EXPECT_EQ(times.stolen, 30);
}

TEST(LabDoctor, AMachineThatTellsNothingIsNoFault) {
    const PlayedMachine machine;
    const MachineState state = readMachineState(machine.path());
    EXPECT_EQ(state.load, -1);
    EXPECT_EQ(state.turbo, -1);
    EXPECT_FALSE(state.steadyCounter);
    EXPECT_EQ(readProcessorTimes(machine.path()).total, 0);
}

TEST(LabDoctor, EachDisturbanceGetsItsAdvice) {
    MachineState state;
    state.processors = 2;
    state.governors = {"powersave"};
    state.turbo = 1;
    state.hyperThreads = true;
    MachineTrial trial;
    trial.coreRatio = 1.3;
    trial.medianNoise = 0.3;
    trial.slowShare = 0.6;
    trial.stolenShare = 0.1;
    trial.busyOthers = 1.9;
    const std::vector<Finding> bad = judgeMachine(state, trial);
    for (const Finding& finding : bad) {
        EXPECT_NE(finding.grade, Finding::Grade::good) << finding.what;
        EXPECT_FALSE(finding.advice.empty()) << finding.what;
    }
    EXPECT_EQ(find(bad, "noise")->grade, Finding::Grade::bad);
    EXPECT_EQ(find(bad, "steal")->grade, Finding::Grade::bad);
    EXPECT_EQ(find(bad, "counter")->grade, Finding::Grade::bad);
    state.governors = {"performance"};
    state.turbo = 0;
    state.hyperThreads = false;
    state.isolated = "1";
    state.steadyCounter = true;
    const std::vector<Finding> good = judgeMachine(state, MachineTrial{1, 2500, 1.0, 0.001, 0.01, 0, 0, 0});
    for (const Finding& finding : good) {
        EXPECT_EQ(finding.grade, Finding::Grade::good) << finding.what;
    }
    EXPECT_EQ(find(good, "cores left alone")->advice, "start krlab with taskset -c 1");
}

TEST(LabDoctor, BuildsWithoutOptimisationAreSeen) {
    const TempDir directory;
    const std::string source = directory.path("x.c");
    std::string text;
    for (int i = 0; i < 10; ++i) {
        text += "int f" + std::to_string(i) + "(int a) { return a + " + std::to_string(i) + "; }\n";
    }
    directory.write("x.c", text);
    const auto build = [&](const std::string& level) {
        const std::string file = directory.path("x" + level + ".so");
        const std::string command = "cc -shared -fPIC " + level + " -o " + file + " " + source;
        EXPECT_EQ(std::system(command.c_str()), 0);
        return buildQualityOf(readFile(file));
    };
    const BuildQuality plain = build("-O0");
    EXPECT_EQ(plain.functions, 10);
    EXPECT_TRUE(plain.unoptimised());
    EXPECT_FALSE(build("-O2").unoptimised());
    EXPECT_EQ(judgeBuild("libx.so", plain).grade, Finding::Grade::bad);
    BuildQuality sanitized;
    sanitized.sanitized = true;
    EXPECT_EQ(judgeBuild("libx.so", sanitized).text, "built with sanitizers");
    EXPECT_EQ(buildQualityOf("no object").functions, 0);
}

TEST(LabDoctor, TheTrialTellsPlausibleFigures) {
    const MachineTrial trial = tryMachine(0.05);
    EXPECT_GE(trial.counterStep, 1);
    EXPECT_GT(trial.counterMHz, 100);
    EXPECT_GT(trial.coreRatio, 0);
    EXPECT_GE(trial.medianNoise, 0);
    EXPECT_GE(trial.slowShare, 0);
    EXPECT_LE(trial.slowShare, 1);
}

TEST(LabDoctor, TheReportHasALineForEachFinding) {
    const LabDirectory directory;
    const LabResult result = directory.run({"doctor", "--json", "d.json"});
    EXPECT_LE(result.status, 1) << result.err;
    EXPECT_NE(result.out.find("libveksc.so.1"), std::string::npos);
    EXPECT_GE(nlohmann::json::parse(directory.read("d.json"))["findings"].size(), 11u);
}
