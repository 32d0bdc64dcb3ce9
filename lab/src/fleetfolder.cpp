#include "fleetfolder.h"

#include "fault.h"
#include "pass.h"
#include "sha256.h"
#include "text.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <fmt/format.h>
#include <fstream>
#include <nlohmann/json.hpp>
#include <unistd.h>

namespace krlab {

namespace fs = std::filesystem;

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* planName = "plan.json";
// Before the numbers in a task's log.
constexpr std::string_view roundMark = "rounds done: ";
// Slurm reads "%" in the name of a log as a pattern; the others mean something to the shell.
constexpr std::string_view awkward = "%\\\"'`$\n\r\t";

// Starts again what a signal killed: the task goes on behind its last finished round.
constexpr const char* submitScript = R"(#!/bin/bash
# A task of the fleet in this folder, the one of SLURM_ARRAY_TASK_ID. It may run any number of times.
cd {folder} || exit 2
for attempt in 1 2 3; do
    # The same environment on all nodes, whoever submits: where a rig has its stack depends on it.
    env -i PATH=/usr/local/bin:/usr/bin:/bin ${{SLURM_TMPDIR:+"SLURM_TMPDIR=$SLURM_TMPDIR"}} \
        ${{TMPDIR:+"TMPDIR=$TMPDIR"}} ./krlab fleet task . "$SLURM_ARRAY_TASK_ID" &
    task=$!
    trap 'kill -TERM $task' TERM INT
    wait $task
    status=$?
    # A signal to this script ends the waiting, and the task ends in order.
    while kill -0 $task 2>/dev/null; do wait $task; status=$?; done
    [ $status -gt 130 ] || exit $status
    echo "the task was ended with status $status, attempt $attempt"
done
exit $status
)";

std::string cause(const std::error_code& error) {
    return error.message();
}

void makeFolder(const fs::path& path) {
    std::error_code error;
    fs::create_directories(path, error);
    if (error) {
        throw Fault(path.string(), "can't be made: " + cause(error));
    }
}

} // namespace

void copyProgramFile(const fs::path& from, const fs::path& to) {
    std::error_code error;
    fs::copy_file(from, to, fs::copy_options::overwrite_existing, error);
    if (error) {
        throw Fault(from.string(), fmt::format("can't be copied to {}: {}", to.string(), cause(error)));
    }
}

void writeWhole(const fs::path& file, const std::string& text) {
    const fs::path beside = fmt::format("{}.{}.new", file.string(), ::getpid());
    const int out = ::open(beside.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    bool good = out >= 0;
    for (size_t done = 0; good && done < text.size();) {
        const ssize_t count = ::write(out, text.data() + done, text.size() - done);
        good = count > 0;
        done += good ? static_cast<size_t>(count) : 0;
    }
    good = good && ::fsync(out) == 0;
    int error = errno;
    if (out >= 0 && ::close(out) != 0 && good) {
        good = false;
        error = errno;
    }
    if (good && ::rename(beside.c_str(), file.c_str()) != 0) {
        good = false;
        error = errno;
    }
    if (!good) {
        ::unlink(beside.c_str());
        throw Fault(file.string(), "can't be written: " + systemCause(error));
    }
}

std::string shellWord(const std::string& text) {
    std::string word = "'";
    for (const char c : text) {
        word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return word + "'";
}

bool FleetFolder::isFolder(const std::string& path) {
    std::error_code error;
    return fs::is_regular_file(fs::path(path) / planName, error) && fs::is_directory(fs::path(path) / "tasks", error);
}

FleetFolder::FleetFolder(const std::string& path) : m_path(fs::absolute(path).lexically_normal()) {
    const std::string file = (m_path / planName).string();
    if (!isFolder(path)) {
        throw Fault(path, "is no job folder of a fleet; krlab fleet submit makes one");
    }
    try {
        const Json document = Json::parse(readFile(file));
        m_plan = parsePlan(file, document.at("plan").dump());
        m_id = document.at("id").get<std::string>();
        for (const nlohmann::json subject : document.at("subjects")) {
            m_identities.push_back(identityFromJson(subject));
        }
    } catch (const Json::exception& error) {
        throw Fault(file, fmt::format("is damaged: {}", error.what()));
    }
    if (m_identities.size() != m_plan.subjects.size()) {
        throw Fault(file, "is damaged: it tells of other subjects than its plan");
    }
}

FleetFolder FleetFolder::create(const std::string& path, const FleetPlan& plan, const fs::path& place,
                                const fs::path& rig) {
    FleetFolder folder;
    folder.m_path = fs::absolute(path).lexically_normal();
    folder.m_plan = plan;
    std::error_code error;
    if (fs::exists(folder.m_path, error)) {
        throw Fault(path, "is there already; name a folder that is not, or one that fleet submit has made");
    }
    if (folder.m_path.string().find_first_of(awkward) != std::string::npos) {
        throw Fault(path, "Slurm can't take a folder with quotes, backslashes, $ or % in its path");
    }
    char host[256] = "";
    ::gethostname(host, sizeof host - 1);
    folder.m_id =
        sha256(fmt::format("{} {} {} {}", toJson(plan).dump(), timeText(), host, folder.m_path.string())).substr(0, 16);
    // Complete or not there: what can go wrong goes wrong under another name.
    const fs::path wanted = folder.m_path;
    folder.m_path = fmt::format("{}.{}.new", wanted.string(), ::getpid());
    try {
        for (const char* name : {"tasks", "logs", "jobs"}) {
            makeFolder(folder.m_path / name);
        }
        copyProgramFile(fs::read_symlink("/proc/self/exe"), folder.m_path / "krlab");
        for (size_t i = 0; i < plan.subjects.size(); ++i) {
            folder.copySubject(i, place, rig);
            folder.checkSelections(i);
        }
        folder.write();
        writeWhole(folder.script(),
                   fmt::format(fmt::runtime(submitScript), fmt::arg("folder", shellWord(wanted.string()))));
        fs::rename(folder.m_path, wanted);
    } catch (...) {
        fs::remove_all(folder.m_path, error);
        throw;
    }
    folder.m_path = wanted;
    return folder;
}

void FleetFolder::copySubject(size_t number, const fs::path& place, const fs::path& rig) {
    const FleetSubject& wanted = m_plan.subjects[number];
    const fs::path path = wanted.path;
    Subject subject = parseSubject(path.is_absolute() ? path.string() : (place / path).string(), rig);
    if (subject.program.empty()) {
        throw Fault(wanted.path, "there is no rig beside this program; name one with --rig PROGRAM");
    }
    subject.name = wanted.name;
    const fs::path directory = this->subject(number);
    makeFolder(directory);
    Identity& identity = m_identities.emplace_back(identify(subject));
    copyProgramFile(identity.program.path, directory / identity.program.name);
    for (const FileIdentity& library : identity.libraries) {
        copyProgramFile(library.path, directory / library.name);
    }
}

// A selection that is empty, or a key that measures nothing, shows here and not on a thousand nodes.
void FleetFolder::checkSelections(size_t number) const {
    Subject subject;
    subject.name = m_plan.subjects[number].name;
    subject.program = this->subject(number) / m_identities[number].program.name;
    subject.libraries = m_identities[number].libraries.empty() ? fs::path() : this->subject(number);
    for (const std::vector<std::string>& selection : m_plan.selections) {
        if (listTests(subject, selection).empty()) {
            throw Fault(
                fmt::format("the selection '{}' selects no test of {}", fmt::join(selection, " "), subject.name));
        }
    }
}

void FleetFolder::write() const {
    Json subjects = Json::array();
    for (const Identity& identity : m_identities) {
        subjects.push_back(Json(krlab::toJson(identity)));
    }
    const Json document = {{"id", m_id}, {"plan", krlab::toJson(m_plan)}, {"subjects", std::move(subjects)}};
    writeWhole(m_path / planName, document.dump(1) + "\n");
}

fs::path FleetFolder::subject(size_t number) const {
    return m_path / "subjects" / std::to_string(number);
}

fs::path FleetFolder::taskFile(int task) const {
    return m_path / "tasks" / fmt::format("{}.db", task);
}

fs::path FleetFolder::partFile(int task) const {
    return m_path / "tasks" / fmt::format("{}.part", task);
}

fs::path FleetFolder::logFile(int task) const {
    return m_path / "logs" / fmt::format("{}.txt", task);
}

std::string roundText(int done, int all) {
    return fmt::format("{}{} of {}", roundMark, done, all);
}

int FleetFolder::roundsDone(int task) const {
    std::ifstream log(logFile(task));
    int done = 0;
    for (std::string line; std::getline(log, line);) {
        if (const size_t at = line.find(roundMark); at != std::string::npos) {
            const std::string_view rest = std::string_view(line).substr(at + roundMark.size());
            done = static_cast<int>(integerOf(rest.substr(0, rest.find(' '))).value_or(done));
        }
    }
    return done;
}

std::vector<int> FleetFolder::missing() const {
    std::vector<int> numbers;
    std::error_code error;
    for (const FleetTask& task : m_plan.tasks()) {
        if (!fs::exists(taskFile(task.index), error)) {
            numbers.push_back(task.index);
        }
    }
    return numbers;
}

std::vector<FleetJob> FleetFolder::jobs() const {
    std::vector<FleetJob> jobs;
    std::error_code error;
    for (int number = 1; fs::exists(m_path / "jobs" / std::to_string(number), error); ++number) {
        const std::string file = (m_path / "jobs" / std::to_string(number)).string();
        try {
            const Json job = Json::parse(readFile(file));
            jobs.push_back({job.at("id"), job.at("tasks"), job.at("submitted")});
        } catch (const Json::exception& fault) {
            throw Fault(file, fmt::format("is damaged: {}", fault.what()));
        }
    }
    return jobs;
}

void FleetFolder::addJob(const FleetJob& job) const {
    const Json text = {{"id", job.id}, {"tasks", job.tasks}, {"submitted", job.submitted}};
    writeWhole(m_path / "jobs" / std::to_string(jobs().size() + 1), text.dump() + "\n");
}

} // namespace krlab
