#include "slurm.h"

#include "fault.h"
#include "rigprocess.h"
#include "text.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace krlab {

namespace {

struct CommandEnd {
    int status = 0;
    std::string out;
    std::string err;
};

std::string joinedLines(const std::string& text) {
    std::vector<std::string> lines;
    for (const std::string_view line : split(text, '\n')) {
        if (!trimmed(line).empty()) {
            lines.emplace_back(trimmed(line));
        }
    }
    return fmt::format("{}", fmt::join(lines, "; "));
}

CommandEnd runCommand(std::vector<std::string> words) {
    const MemoryFile out;
    const MemoryFile err;
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, out.descriptor(), STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, err.descriptor(), STDERR_FILENO);
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    pid_t process = 0;
    const int error = ::posix_spawnp(&process, pointers[0], &actions, nullptr, pointers.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (error == ENOENT) {
        throw Fault(fmt::format("there is no {} on this machine; install Slurm's commands (Debian: slurm-client) and "
                                "start again where the cluster's slurm.conf is",
                                words[0]));
    }
    if (error != 0) {
        throw Fault(fmt::format("{} can't be started: {}", words[0], systemCause(error)));
    }
    int code = 0;
    while (::waitpid(process, &code, 0) < 0 && errno == EINTR) {
    }
    return {WIFEXITED(code) ? WEXITSTATUS(code) : 128 + WTERMSIG(code), out.read(), err.read()};
}

/// What to do about words of Slurm.
std::string adviceFor(const std::string& text) {
    struct Advice {
        const char* words;
        const char* text;
    };
    constexpr Advice known[] = {
        {"nable to contact slurm controller", "see that slurmctld runs: scontrol ping"},
        {"Could not establish a configuration source", "this machine has no slurm.conf; start again where it is"},
        {"nvalid job array", "slurm.conf allows fewer tasks: raise MaxArraySize, or split the plan"},
        {"nvalid feature", "no node has these \"features\"; scontrol show nodes tells those that there are"},
        {"node configuration is not available", "no node has what the plan asks for; see sinfo"},
        {"nvalid partition", "name a partition that sinfo shows, in \"slurm\" of the plan"},
        {"nvalid account", "name an account of yours in \"slurm\" of the plan: --account=NAME"},
        {"time limit", "the plan's \"time\" is longer than the partition allows; see sinfo"},
        {"unge", "see that munged runs here with the cluster's key"},
    };
    for (const Advice& advice : known) {
        if (text.find(advice.words) != std::string::npos) {
            return advice.text;
        }
    }
    return "see what the cluster offers with sinfo, and what the plan asks for";
}

/// Runs a command that has to succeed.
std::string succeed(const std::vector<std::string>& words) {
    const CommandEnd end = runCommand(words);
    if (end.status != 0) {
        const std::string told = joinedLines(end.err.empty() ? end.out : end.err);
        throw Fault(fmt::format("{} refuses: {}; {}", words[0],
                                told.empty() ? fmt::format("status {}", end.status) : told, adviceFor(told)));
    }
    return end.out;
}

} // namespace

bool SlurmTask::waits() const {
    return state == "PENDING" || state.starts_with("REQUEUE") || state == "SPECIAL_EXIT";
}

bool SlurmTask::runs() const {
    return state == "RUNNING" || state == "CONFIGURING" || state == "COMPLETING" || state == "SUSPENDED" ||
           state == "STAGE_OUT" || state == "SIGNALING" || state == "RESIZING" || state == "STOPPED";
}

double slurmSeconds(const std::string& text) {
    double days = 0;
    std::string_view clock = text;
    if (const size_t dash = text.find('-'); dash != std::string::npos) {
        days = numberOf(clock.substr(0, dash)).value_or(0);
        clock.remove_prefix(dash + 1);
    }
    double seconds = 0;
    for (const std::string_view part : split(clock, ':')) {
        const auto number = numberOf(part);
        if (!number) {
            return 0;
        }
        seconds = seconds * 60 + *number;
    }
    return days * 86400 + seconds;
}

std::vector<int> arrayNumbers(const std::string& text) {
    std::string_view all = text;
    if (all.starts_with('[')) {
        all = all.substr(1, all.find_first_of("]%") - 1);
    }
    std::vector<int> numbers;
    for (const std::string_view part : split(all, ',')) {
        const size_t dash = part.find('-');
        const auto first = integerOf(part.substr(0, dash));
        const auto last = dash == std::string_view::npos ? first : integerOf(part.substr(dash + 1));
        for (long long i = first.value_or(0); first && last && i <= *last; ++i) {
            numbers.push_back(static_cast<int>(i));
        }
    }
    return numbers;
}

std::string submitArray(const SlurmArray& array) {
    std::vector<std::string> words = {
        "sbatch", "--parsable", "--job-name=krlab-" + array.name, "--array=" + array.tasks, "--nodes=1", "--ntasks=1",
        "--exclusive", "--requeue", "--open-mode=append", "--output=" + array.log,
        // Its limit is told to a task while there is time to end in order.
        "--signal=B:TERM@30", fmt::format("--time={}", std::max(1L, std::lround(std::ceil(array.seconds / 60))))};
    if (!array.features.empty()) {
        words.push_back("--constraint=" + array.features);
    }
    if (array.held) {
        words.emplace_back("--hold");
    }
    words.insert(words.end(), array.words.begin(), array.words.end());
    words.push_back(array.script);
    const std::string out = succeed(words);
    // "123" or "123;cluster"
    std::string id = out.substr(0, out.find_first_of(";\n"));
    if (!integerOf(id)) {
        throw Fault(fmt::format("sbatch tells no number of the job but: {}", joinedLines(out)));
    }
    return id;
}

void constrainTasks(const std::string& job, const std::string& tasks, const std::string& features) {
    succeed({"scontrol", "update", fmt::format("JobId={}_[{}]", job, tasks), "Features=" + features});
}

void releaseArray(const std::string& job) {
    succeed({"scontrol", "release", job});
}

void cancelArrays(const std::vector<std::string>& jobs) {
    std::vector<std::string> words = {"scancel"};
    words.insert(words.end(), jobs.begin(), jobs.end());
    succeed(words);
}

std::vector<SlurmTask> queuedTasks(const std::vector<std::string>& jobs) {
    std::vector<SlurmTask> tasks;
    // One by one: a number that Slurm has forgotten makes it refuse all of them.
    for (const std::string& job : jobs) {
        const std::vector<std::string> words = {"squeue",       "--noheader",    "--array",
                                                "--states=all", "--jobs=" + job, "--format=%K|%T|%N|%M|%r"};
        const CommandEnd end = runCommand(words);
        if (end.status != 0 && end.err.find("nvalid job id") != std::string::npos) {
            continue;
        }
        if (end.status != 0) {
            throw Fault(fmt::format("squeue refuses: {}; {}", joinedLines(end.err), adviceFor(end.err)));
        }
        for (const std::string_view line : split(end.out, '\n')) {
            const std::vector<std::string_view> cells = split(line, '|');
            if (cells.size() < 5) {
                continue;
            }
            for (const int index : arrayNumbers(std::string(trimmed(cells[0])))) {
                tasks.push_back({index, std::string(trimmed(cells[1])), std::string(trimmed(cells[2])),
                                 std::string(trimmed(cells[4])), slurmSeconds(std::string(trimmed(cells[3])))});
            }
        }
    }
    return tasks;
}

std::optional<std::vector<SlurmTask>> accountedTasks(const std::vector<std::string>& jobs) {
    if (jobs.empty()) {
        return std::nullopt;
    }
    CommandEnd end;
    try {
        end = runCommand({"sacct", "--noheader", "--parsable2", "--allocations",
                          fmt::format("--jobs={}", fmt::join(jobs, ",")), "--format=JobID,State,NodeList,ElapsedRaw"});
    } catch (const Fault&) {
        return std::nullopt;
    }
    if (end.status != 0 || trimmed(end.out).empty()) {
        return std::nullopt;
    }
    std::vector<SlurmTask> tasks;
    for (const std::string_view line : split(end.out, '\n')) {
        const std::vector<std::string_view> cells = split(line, '|');
        const size_t bar = line.find('_');
        if (cells.size() < 4 || bar == std::string_view::npos) {
            continue;
        }
        for (const int index : arrayNumbers(std::string(cells[0].substr(bar + 1)))) {
            // "CANCELLED by 0"
            tasks.push_back({index, std::string(cells[1].substr(0, cells[1].find(' '))), std::string(cells[2]), "",
                             numberOf(cells[3]).value_or(0)});
        }
    }
    return tasks;
}

} // namespace krlab
