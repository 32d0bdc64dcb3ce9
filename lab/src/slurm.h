// Slurm's commands: an array is submitted, asked for, ended. Nothing of Slurm is linked; what is missing or refuses is
// told in one line with what to do.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace krlab {

/// What Slurm says of one task.
struct SlurmTask {
    int index = 0;
    std::string state; ///< PENDING, RUNNING, COMPLETED, FAILED, TIMEOUT, NODE_FAIL ...
    std::string node;
    std::string reason; ///< why it waits
    double seconds = 0; ///< that it has run
    bool waits() const;
    bool runs() const;
};

/// An array to submit.
struct SlurmArray {
    std::string name;
    std::string tasks;              ///< "0-23,30"
    std::string features;           ///< constraint; empty for any node
    std::string log;                ///< file of a task, "%a" for its number
    double seconds = 0;             ///< time limit
    bool held = false;              ///< nothing starts before release()
    std::vector<std::string> words; ///< further ones for sbatch
    std::string script;
};

/// Throws Fault if there is no sbatch, or it refuses.
std::string submitArray(const SlurmArray& array);
/// Sets the constraint of some tasks of an array that is held.
void constrainTasks(const std::string& job, const std::string& tasks, const std::string& features);
void releaseArray(const std::string& job);
/// Ends what waits and what runs.
void cancelArrays(const std::vector<std::string>& jobs);
/// What the scheduler knows of the tasks: those that wait and run, and for some minutes those that have ended.
std::vector<SlurmTask> queuedTasks(const std::vector<std::string>& jobs);
/// The same from Slurm's accounting, which forgets nothing; nothing where there is none.
std::optional<std::vector<SlurmTask>> accountedTasks(const std::vector<std::string>& jobs);

/// "1-02:03:04", "02:03" as seconds; 0 if it is neither.
double slurmSeconds(const std::string& text);
/// The numbers of "7", "[3-5,8%2]".
std::vector<int> arrayNumbers(const std::string& text);

} // namespace krlab
