#include "fleettask.h"

#include "fault.h"
#include "interrupt.h"
#include "newdirectory.h"
#include "program.h"
#include "roundstart.h"
#include "store.h"
#include "text.h"

#include <array>
#include <cstdlib>
#include <fmt/format.h>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <unistd.h>

namespace krlab {

namespace fs = std::filesystem;

namespace {

/// The directory of a task on its node; gone with the object.
class LocalDirectory {
public:
    LocalDirectory(const fs::path& storage, const std::string& plan, int task) {
        const std::string name = fmt::format("krlab-{}-{}.", plan, task);
        std::error_code error;
        // What the same task left here when it was killed.
        for (const fs::directory_entry& entry : fs::directory_iterator(storage, error)) {
            if (entry.path().filename().string().starts_with(name)) {
                fs::remove_all(entry.path(), error);
            }
        }
        m_own.emplace(storage, name);
    }
    const fs::path& path() const { return m_own->path(); }

private:
    std::optional<NewDirectory> m_own;
};

void checkFile(const FileIdentity& wanted, const FileIdentity& found) {
    if (wanted.buildId != found.buildId || wanted.sha256 != found.sha256) {
        throw Fault(found.path, fmt::format("is not what was submitted: build-id {} in place of {}, sha256 {} in place "
                                            "of {}; make a new job folder",
                                            found.buildId, wanted.buildId, found.sha256, wanted.sha256));
    }
}

class Task {
public:
    Task(const FleetFolder& folder, const FleetTaskOptions& options)
        : m_folder(folder), m_options(options), m_task(folder.plan().tasks().at(static_cast<size_t>(options.task))),
          m_local(options.local, folder.id(), options.task) {}

    int run();

private:
    using Passes = std::array<std::optional<Pass>, 2>;

    const FleetPlan& plan() const { return m_folder.plan(); }
    void checkNode() const;
    void takeSubjects();
    void openStore();
    void measure(const std::vector<int>& rounds);
    std::mt19937_64 drawn(int round) const;
    PassRequest request(int round, Side side) const;
    void take(int round, Side side, Pass pass);
    void tellFailures(const Pass& pass);
    void publish(const fs::path& file) const;

    const FleetFolder& m_folder;
    const FleetTaskOptions& m_options;
    FleetTask m_task;
    LocalDirectory m_local;
    std::vector<Subject> m_subjects;
    std::vector<std::vector<FileIdentity>> m_libraries; ///< of the subjects
    std::optional<Store> m_store;
    long long m_run = 0;
    std::set<int> m_done;
    std::map<int, Passes> m_open;
    std::set<std::string> m_failures;
};

void Task::checkNode() const {
    const std::string& wanted = plan().nodes[m_task.nodes].processor;
    const Machine& machine = thisMachine();
    if (!isProcessor(machine.processor, wanted)) {
        throw Fault(fmt::format("{} has a processor of {}, and the plan wants {}: name \"features\" that only nodes "
                                "with that one have",
                                machine.host, machine.processor, wanted));
    }
}

void Task::takeSubjects() {
    for (size_t i = 0; i < plan().subjects.size(); ++i) {
        const Identity& wanted = m_folder.identity(i);
        const fs::path from = m_folder.subject(i);
        const fs::path to = m_local.path() / std::to_string(i);
        fs::create_directory(to);
        copyProgramFile(from / wanted.program.name, to / wanted.program.name);
        for (const FileIdentity& library : wanted.libraries) {
            copyProgramFile(from / library.name, to / library.name);
        }
        Subject& subject = m_subjects.emplace_back();
        subject.name = wanted.subject;
        subject.program = to / wanted.program.name;
        subject.libraries = wanted.libraries.empty() ? fs::path() : to;
        const Identity found = identify(subject);
        checkFile(wanted.program, found.program);
        if (found.libraries.size() != wanted.libraries.size()) {
            throw Fault(to.string(), fmt::format("the loader takes {} libraries of the subject in place of {}",
                                                 found.libraries.size(), wanted.libraries.size()));
        }
        for (size_t library = 0; library < wanted.libraries.size(); ++library) {
            checkFile(wanted.libraries[library], found.libraries[library]);
        }
        m_libraries.push_back(found.libraries);
    }
}

void Task::openStore() {
    const std::string file = (m_local.path() / "task.db").string();
    std::error_code error;
    if (fs::exists(m_folder.partFile(m_options.task), error)) {
        copyProgramFile(m_folder.partFile(m_options.task), file);
        m_store.emplace(file);
        const std::vector<FleetRun> runs = m_store->fleetRuns();
        if (runs.size() != 1 || runs[0].plan != m_folder.id() || runs[0].task != m_options.task) {
            throw Fault(m_folder.partFile(m_options.task).string(),
                        fmt::format("does not belong to task {}; take it away", m_options.task));
        }
        m_run = runs[0].run;
        for (const PassRecord& pass : m_store->passes()) {
            m_done.insert(pass.round);
        }
        return;
    }
    m_store.emplace(file);
    RunRecord record;
    record.command = "fleet";
    record.arguments = {"fleet", "task", m_folder.path().string(), std::to_string(m_options.task)};
    record.seed = plan().seed;
    record.label = plan().name;
    m_run = m_store->beginRun(record);
    FleetRun mark{m_run, m_folder.id(), m_options.task, plan().settings[m_task.setting].name, {}};
    for (const FleetSubject& subject : plan().subjects) {
        mark.subjects.push_back(subject.name);
    }
    m_store->markFleet(mark);
}

// By plan, task and round alone, whatever was measured before it.
std::mt19937_64 Task::drawn(int round) const {
    std::seed_seq seed{plan().seed, static_cast<unsigned long>(m_options.task), static_cast<unsigned long>(round)};
    return std::mt19937_64(seed);
}

PassRequest Task::request(int round, Side side) const {
    PassRequest request;
    const size_t subject = side == sideOld ? 0 : plan().partner(round);
    request.subject = m_subjects[subject];
    request.copied = m_libraries[subject];
    request.keys = loopKeys(plan().loops);
    // The plan's keys stand behind and win.
    for (std::string& key : plan().keys(m_task)) {
        request.keys.push_back(std::move(key));
    }
    request.timeLimit = parseDuration(plan().passTime);
    return request;
}

void Task::measure(const std::vector<int>& rounds) {
    Turns turns(drawn(rounds.front())());
    Lanes lanes(2 * rounds.size());
    RoundStart start;
    start.count = rounds.size();
    start.alone = m_subjects.size() == 1;
    start.request = [&](size_t round, Side side) { return request(rounds[round], side); };
    start.done = [&](size_t round, Side side, Pass pass) { take(rounds[round], side, std::move(pass)); };
    start.draw = [&](size_t round) { return drawn(rounds[round])(); };
    startRounds(start, lanes, turns);
    lanes.collect(true);
}

void Task::take(int round, Side side, Pass pass) {
    tellFailures(pass);
    Passes& passes = m_open[round];
    passes[side] = std::move(pass);
    const bool alone = m_subjects.size() == 1;
    if (!passes[sideOld] || (!alone && !passes[sideNew])) {
        return;
    }
    const auto cut = [](const std::optional<Pass>& one) {
        return one && std::any_of(one->ends.begin(), one->ends.end(),
                                  [](const ProcessEnd& end) { return end.how == ProcessEnd::How::interrupted; });
    };
    if (!cut(passes[sideOld]) && !cut(passes[sideNew])) {
        for (const std::optional<Pass>& one : passes) {
            if (one) {
                m_store->addPass(m_run, round, *one);
            }
        }
        m_done.insert(round);
        publish(m_folder.partFile(m_options.task));
        m_options.note(timeText() + " " + roundText(static_cast<int>(m_done.size()), plan().rounds()));
    }
    m_open.erase(round);
}

void Task::tellFailures(const Pass& pass) {
    std::vector<std::string> texts = pass.failures();
    for (const TestEnd& test : pass.tests) {
        if (test.failed()) {
            texts.push_back(fmt::format("{} ended with {}", test.function, test.result));
        }
    }
    for (const std::string& text : texts) {
        if (m_failures.insert(pass.identity.subject + text).second) {
            m_options.note(fmt::format("{}: {}", pass.identity.subject, text));
        }
    }
}

void Task::publish(const fs::path& file) const {
    const fs::path copy = m_local.path() / "copy.db";
    std::error_code error;
    fs::remove(copy, error);
    m_store->copyTo(copy.string());
    writeWhole(file, readFile(copy.string()));
}

int Task::run() {
    checkNode();
    takeSubjects();
    openStore();
    m_options.note(fmt::format("{} task {} on {}, {}, {} of {} rounds to measure", timeText(), m_options.task,
                               thisMachine().host, thisMachine().processor,
                               plan().rounds() - static_cast<int>(m_done.size()), plan().rounds()));
    for (int first = 0; first < plan().rounds() && !interrupted(); first += mostRounds) {
        std::vector<int> rounds;
        for (int round = first; round < std::min(first + mostRounds, plan().rounds()); ++round) {
            if (m_done.count(round) == 0) {
                rounds.push_back(round);
            }
        }
        if (!rounds.empty()) {
            measure(rounds);
        }
    }
    if (static_cast<int>(m_done.size()) < plan().rounds()) {
        m_options.note("ended before all rounds were measured; those that were are kept");
        return exitInterrupted;
    }
    const int status = m_failures.empty() ? exitGood : exitFailed;
    m_store->endRun(m_run, status);
    publish(m_folder.taskFile(m_options.task));
    std::error_code error;
    fs::remove(m_folder.partFile(m_options.task), error);
    return status;
}

} // namespace

fs::path nodeStorage() {
    for (const char* name : {"SLURM_TMPDIR", "TMPDIR"}) {
        const char* value = std::getenv(name);
        std::error_code error;
        if (value != nullptr && fs::is_directory(value, error)) {
            return value;
        }
    }
    return "/tmp";
}

int runFleetTask(const FleetFolder& folder, const FleetTaskOptions& options) {
    const size_t count = folder.plan().tasks().size();
    if (options.task < 0 || static_cast<size_t>(options.task) >= count) {
        throw Fault(folder.path().string(),
                    fmt::format("has tasks 0 to {}, and none of number {}", count - 1, options.task));
    }
    std::error_code error;
    if (fs::exists(folder.taskFile(options.task), error)) {
        options.note(fmt::format("task {} is whole already", options.task));
        return exitGood;
    }
    return Task(folder, options).run();
}

} // namespace krlab
