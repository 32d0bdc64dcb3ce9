// The plan of a fleet: which subjects are measured with which keys, on which nodes and how often; and the tasks that
// follow from it.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace krlab {

/// A library build, a rig program or both.
struct FleetSubject {
    std::string name;
    std::string path; ///< as parseSubject takes it; relative paths start at the plan's directory
};

/// How the rig is to measure, apart from what it selects.
struct FleetSetting {
    std::string name;
    int alignment = 0;             ///< bytes by which vectors are off their alignment; 0 for none
    bool outOfCache = false;       ///< data in cache and out of cache, where a test supports that
    std::string level;             ///< CPU level, the argument of the rig's -T; empty for the best of the node
    std::vector<std::string> keys; ///< further keys

    /// All of it as keys of the rig.
    std::vector<std::string> rigKeys() const;
};

/// Nodes of one kind, and how many tasks they get for each selection and setting.
struct FleetNodes {
    std::string features;  ///< constraint for Slurm, such as "gen7&fast"; empty for any node
    std::string processor; ///< "family 6 model 143": a task refuses to measure on another one; empty for any
    int tasks = 1;
};

/// One task: what its place in the job array stands for.
struct FleetTask {
    int index = 0;
    size_t nodes = 0;
    size_t setting = 0;
    size_t selection = 0;
};

struct FleetPlan {
    std::string name = "fleet";
    std::vector<FleetSubject> subjects;               ///< the first one is the old one
    std::vector<std::vector<std::string>> selections; ///< keys of the rig that select, for tasks of their own
    std::vector<FleetSetting> settings;
    std::vector<FleetNodes> nodes;
    int passes = 6;                 ///< of each subject in a task
    int loops = 32;                 ///< calls in a loop, of the rig's Iterative method
    unsigned long seed = 1;         ///< of all that tasks draw
    std::string time = "30m";       ///< limit of a task
    std::string passTime = "2m";    ///< limit of a pass
    std::vector<std::string> slurm; ///< further words for sbatch

    /// Tasks of the same nodes stand together.
    std::vector<FleetTask> tasks() const;
    /// The keys with which a task measures.
    std::vector<std::string> keys(const FleetTask& task) const;
    /// Rounds of a task. One round measures one pair of subjects, the first one and another one; a single subject
    /// alone.
    int rounds() const;
    /// The new one of the subjects that a round measures.
    size_t partner(int round) const;
};

/// Reads a plan. Throws Fault with the file's name for what is missing, of the wrong kind, or unknown.
FleetPlan parsePlan(const std::string& file, const std::string& text);
nlohmann::ordered_json toJson(const FleetPlan& plan);
/// A plan to start from, with a word on each member.
std::string samplePlan();

/// True if a machine's processor text is of the wanted kind: it begins with the same words.
bool isProcessor(std::string_view machine, std::string_view wanted);

/// "0-3,7" of ascending numbers.
std::string rangeText(const std::vector<int>& numbers);

} // namespace krlab
