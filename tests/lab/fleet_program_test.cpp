// `krlab fleet` with scripts in place of Slurm's commands: what they are asked, what is said if they are missing or
// refuse.
#include "labprocess.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace krlab {

namespace {

namespace fs = std::filesystem;

// A directory with a plan, in which nothing but its own commands is found.
class FleetDirectory : public LabDirectory {
public:
    FleetDirectory() : m_path(std::getenv("PATH")) {
        fs::create_directory(path("bin"));
        ::setenv("PATH", path("bin").c_str(), 1);
        write("plan.json", nlohmann::json{{"schema", "krlab-fleet-1"},
                                          {"name", "small"},
                                          {"subjects", {{{"name", "before"}, {"path", QUICKRIG}}}},
                                          {"selections", {{"-f=veksAutoCorr_16s32s"}}},
                                          {"slurm", {"--partition=rack"}},
                                          {"nodes", {{{"features", "fast"}, {"tasks", 3}}}}}
                               .dump());
    }
    ~FleetDirectory() { ::setenv("PATH", m_path.c_str(), 1); }
    FleetDirectory(const FleetDirectory&) = delete;
    FleetDirectory& operator=(const FleetDirectory&) = delete;

    // The command notes its words in a file of its name.
    void command(const std::string& name, const std::string& script) const {
        write("bin/" + name, "#!/bin/sh\nprintf '%s\\n' \"$@\" >>'" + path(name + ".words") + "'\n" + script);
        fs::permissions(path("bin/" + name), fs::perms::owner_all);
    }
    // A submission that ends with this line and leaves no folder.
    void expectRefusal(const std::string& line) const {
        const LabResult result = submit();
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.err, line);
        EXPECT_FALSE(exists("f"));
    }
    LabResult submit() const { return run({"fleet", "submit", "plan.json", "--folder", "f"}); }

private:
    std::string m_path;
};

} // namespace

TEST(LabFleetProgram, WithoutSlurmOneLineTellsWhatToDoAndNothingIsLeft) {
    const FleetDirectory directory;
    directory.expectRefusal(
        "krlab: there is no sbatch on this machine; install Slurm's commands (Debian: slurm-client) and "
        "start again where the cluster's slurm.conf is\n");
}

TEST(LabFleetProgram, ARefusalIsToldInOneLineAndNothingIsLeft) {
    const FleetDirectory directory;
    directory.command("sbatch",
                      "echo 'sbatch: error: Batch job submission failed:' >&2\n"
                      "echo 'sbatch: error: Unable to contact slurm controller (connect failure)' >&2\nexit 1\n");
    directory.expectRefusal(
        "krlab: sbatch refuses: sbatch: error: Batch job submission failed:; sbatch: error: Unable to contact "
        "slurm controller (connect failure); see that slurmctld runs: scontrol ping\n");
}

TEST(LabFleetProgram, OneArrayIsAskedForWithNodesForItselfAndRequeuing) {
    const FleetDirectory directory;
    directory.command("sbatch", "echo '41;rack'\n");
    const LabResult result = directory.submit();
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, fs::canonical(directory.path()).string() + "/f: 3 tasks, job 41\n");
    EXPECT_EQ(directory.read("sbatch.words"),
              "--parsable\n--job-name=krlab-small\n--array=0-2\n--nodes=1\n--ntasks=1\n--exclusive\n--requeue\n"
              "--open-mode=append\n--output=" +
                  directory.path("f/logs/%a.txt") +
                  "\n--signal=B:TERM@30\n--time=30\n--constraint=fast\n--partition=rack\n" +
                  directory.path("f/task.sh") + "\n");
    EXPECT_TRUE(directory.exists("f/krlab"));
    EXPECT_TRUE(directory.exists("f/subjects/0/libveksc.so.1"));
}

TEST(LabFleetProgram, NodesOfSeveralKindsGetTheirFeaturesBeforeAnythingStarts) {
    const FleetDirectory directory;
    nlohmann::json plan = nlohmann::json::parse(directory.read("plan.json"));
    plan["nodes"] = {{{"features", "fast"}, {"tasks", 2}}, {{"tasks", 1}}, {{"features", "slow"}, {"tasks", 1}}};
    directory.write("plan.json", plan.dump());
    directory.command("sbatch", "echo 7\n");
    directory.command("scontrol", "");
    EXPECT_EQ(directory.submit().status, 0);
    EXPECT_NE(directory.read("sbatch.words").find("\n--hold\n"), std::string::npos);
    EXPECT_EQ(directory.read("sbatch.words").find("--constraint"), std::string::npos);
    EXPECT_EQ(directory.read("scontrol.words"),
              "update\nJobId=7_[0-1]\nFeatures=fast\nupdate\nJobId=7_[3]\nFeatures=slow\nrelease\n7\n");
}

TEST(LabFleetProgram, TheAccountingTellsWhatTheQueueHasForgotten) {
    const FleetDirectory directory;
    directory.command("sbatch", "echo 41\n");
    ASSERT_EQ(directory.submit().status, 0);
    directory.command(
        "sacct", "echo '41_0|TIMEOUT|n3|1800'\necho '41_1|RUNNING|n4|60'\necho '41_[2]|PENDING|None assigned|0'\n");
    directory.command("squeue", "echo 'slurm_load_jobs error: Invalid job id specified' >&2\nexit 1\n");
    const LabResult result = directory.run({"fleet", "status", "f"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out,
              "small: 3 tasks: 0 whole, 1 running, 1 waiting, 1 ended without a whole store, time left unknown\n"
              " task 0: ended (TIMEOUT) on n3, 0 rounds done\n task 1: running (RUNNING) on n4, 0 rounds done\n");
    // Only what is missing and not in the queue is submitted again.
    fs::remove(directory.path("sbatch.words"));
    const LabResult again = directory.run({"fleet", "submit", "f"});
    EXPECT_EQ(again.status, 0) << again.err;
    EXPECT_NE(directory.read("sbatch.words").find("--array=0\n"), std::string::npos);
}

TEST(LabFleetProgram, WithoutSlurmTheStatusTellsWhatTheFolderHolds) {
    const FleetDirectory directory;
    directory.command("sbatch", "echo 41\n");
    ASSERT_EQ(directory.submit().status, 0);
    const LabResult result = directory.run({"fleet", "status", "f"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out.substr(0, result.out.find('\n')),
              "small: 3 tasks: 0 whole, 0 running, 0 waiting, 3 ended without a whole store");
    EXPECT_NE(result.err.find("krlab: there is no squeue on this machine; "), std::string::npos) << result.err;
}

TEST(LabFleetProgram, ATaskRunsTheRealRigAndOtherCommandsReadWhatItLeft) {
    const FleetDirectory directory;
    directory.command("sbatch", "echo 41\n");
    nlohmann::json plan = nlohmann::json::parse(directory.read("plan.json"));
    plan["subjects"] = {{{"name", "before"}, {"path", QUICKRIG}}, {{"name", "after"}, {"path", QUICKRIG}}};
    plan["passes"] = 1;
    directory.write("plan.json", plan.dump());
    ASSERT_EQ(directory.submit().status, 0);
    const LabResult task = directory.run({"fleet", "task", "f", "0"});
    EXPECT_EQ(task.status, 0) << task.err;
    LabResult result = directory.run({"fleet", "fetch", "f"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_NE(result.out.find("krlab.db: 2 passes and "), std::string::npos) << result.out;
    EXPECT_EQ(directory.run({"fleet", "fetch", "f", "--json", "-"}).out.find("\"passes\": 2"), std::string::npos);
    result = directory.run({"ab", "--fleet", "krlab.db", "--json", "-"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(nlohmann::json::parse(result.out)["machines"].size(), 1U);
    EXPECT_EQ(directory.run({"ab", "--fleet", "f"}).status, 0);
    result = directory.run({"history", "add", "--label", "one", "--passes", "1", "--", "-f=veksAutoCorr_16s32s"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(directory.run({"history", "show"}).status, 0);
    EXPECT_EQ(directory.run({"report", "krlab.db", "-o", "one.html"}).status, 0);
    EXPECT_EQ(directory.run({"report", "--fleet", "f", "-o", "two.html"}).status, 0);
    EXPECT_NE(directory.read("two.html").find("\"kinds\":[{"), std::string::npos);
    // Whatever these two passes are like.
    EXPECT_LT(directory.run({"compare", "small/before", "small/after"}).status, 2);
}

TEST(LabFleetProgram, ThePlanToStartFromIsWrittenOnce) {
    const FleetDirectory directory;
    EXPECT_EQ(directory.run({"fleet", "plan", "new.json"}).status, 0);
    EXPECT_EQ(directory.read("new.json"), directory.run({"fleet", "plan"}).out);
    EXPECT_EQ(directory.run({"fleet", "plan", "new.json"}).status, 2);
}

TEST(LabFleetProgram, NothingOfAFleetIsToldInPlainWords) {
    const FleetDirectory directory;
    EXPECT_EQ(directory.run({"ab"}).err,
              "krlab: ab needs two subjects, OLD and NEW, or --fleet with what a fleet has measured\n");
    EXPECT_EQ(directory.run({"ab", "--fleet", "nowhere"}).err,
              "krlab: nowhere: is neither a store nor a job folder of a fleet\n");
    EXPECT_EQ(directory.run({"fleet", "fetch", "bin"}).err,
              "krlab: bin: is no job folder of a fleet; krlab fleet submit makes one\n");
    EXPECT_EQ(directory.run({"fleet", "task", "nowhere", "0"}).status, 2);
}

} // namespace krlab
