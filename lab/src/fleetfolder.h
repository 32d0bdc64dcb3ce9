// The job folder of a fleet, on storage that all nodes share: plan, script, program, subjects, and what each task left.
//
//     plan.json      the plan with its identity and the digests of all files
//     task.sh        what Slurm runs for each task
//     krlab          this program
//     subjects/N/    the rig and its libraries
//     jobs/N         an array that was submitted: Slurm's number of it and its tasks
//     tasks/N.db     the store of a task that is whole
//     tasks/N.part   its finished rounds, while it is not
//     logs/N.txt     what it said
#pragma once

#include "fleetplan.h"
#include "identity.h"

#include <filesystem>
#include <string>
#include <vector>

namespace krlab {

/// A job array that was submitted for this folder.
struct FleetJob {
    std::string id;    ///< Slurm's number
    std::string tasks; ///< "0-23"
    std::string submitted;
};

class FleetFolder {
public:
    /// Makes a folder for a plan; `place` is the directory in which relative paths start, `rig` the one for subjects
    /// that are libraries alone. Throws Fault if something of that name is there, or a subject or selection can't be
    /// measured.
    static FleetFolder create(const std::string& path, const FleetPlan& plan, const std::filesystem::path& place,
                              const std::filesystem::path& rig);
    /// Opens one. Throws Fault if it is none.
    explicit FleetFolder(const std::string& path);
    static bool isFolder(const std::string& path);

    const std::filesystem::path& path() const { return m_path; }
    const FleetPlan& plan() const { return m_plan; }
    /// Different for each folder.
    const std::string& id() const { return m_id; }
    /// What a subject is made of, as it was when the folder was made.
    const Identity& identity(size_t subject) const { return m_identities[subject]; }
    std::filesystem::path subject(size_t number) const;

    std::filesystem::path script() const { return m_path / "task.sh"; }
    std::filesystem::path taskFile(int task) const;
    std::filesystem::path partFile(int task) const;
    std::filesystem::path logFile(int task) const;
    /// Rounds that a task has told as done in its log.
    int roundsDone(int task) const;
    /// Tasks that have not left a whole store.
    std::vector<int> missing() const;

    std::vector<FleetJob> jobs() const;
    void addJob(const FleetJob& job) const;

private:
    FleetFolder() = default;
    void copySubject(size_t number, const std::filesystem::path& place, const std::filesystem::path& rig);
    void checkSelections(size_t subject) const;
    void write() const;

    std::filesystem::path m_path;
    FleetPlan m_plan;
    std::string m_id;
    std::vector<Identity> m_identities;
};

/// What a task writes into its log after a round.
std::string roundText(int done, int all);

/// Writes a file under another name first, so that it is there whole or not at all, on all nodes.
void writeWhole(const std::filesystem::path& file, const std::string& text);
/// Copies a file with its rights. Throws Fault with the cause.
void copyProgramFile(const std::filesystem::path& from, const std::filesystem::path& to);
/// In one word for the shell.
std::string shellWord(const std::string& text);

} // namespace krlab
