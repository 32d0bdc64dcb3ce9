#include "count.h"

#include "callgraph.h"
#include "fault.h"
#include "lanes.h"
#include "newdirectory.h"
#include "rigkeys.h"
#include "text.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <map>
#include <memory>
#include <mutex>

namespace krlab {

namespace fs = std::filesystem;

namespace {

/// Functions for one process: starting one takes some seconds, so that a handful is the least worth a process.
constexpr size_t functionsOfProcess = 40;

constexpr const char* dumpName = "line";

/// A directory for the dumps of one process.
class DumpDirectory {
public:
    const fs::path& path() const { return m_own.path(); }
    /// The dumps in the order in which they were written; the one at the process's end, which has no number, is none of
    /// a line.
    std::vector<std::string> dumps() const {
        std::vector<std::string> texts;
        for (size_t i = 1;; ++i) {
            const fs::path file = path() / fmt::format("{}.{}", dumpName, i);
            std::error_code error;
            if (!fs::is_regular_file(file, error)) {
                return texts;
            }
            texts.push_back(readFile(file.string()));
        }
    }

private:
    NewDirectory m_own{fs::temp_directory_path(), "krlab-count-"};
};

std::string findCallgrind() {
    const char* path = std::getenv("PATH");
    for (const std::string_view directory : split(path != nullptr ? path : "", ':')) {
        const fs::path program = fs::path(directory) / "valgrind";
        std::error_code error;
        if (!directory.empty() && fs::is_regular_file(program, error)) {
            return program.string();
        }
    }
    throw Fault("valgrind is not there; install it (Debian: apt-get install valgrind)");
}

/// Symbols are bound before the first call, so that no call pays for it.
std::vector<std::string> launcherFor(const std::string& valgrind, const fs::path& directory) {
    return {"/usr/bin/env",
            "LD_BIND_NOW=1",
            valgrind,
            "--tool=callgrind",
            "-q",
            "--log-file=/dev/null",
            "--dump-line=no",
            "--toggle-collect=*tim_*_loop(int, long long*)", // some suites have a namespace
            "--dump-after=krTest::runLine(bool&)",
            "--callgrind-out-file=" + (directory / dumpName).string()};
}

/// Puts the dumps' counts in place of the clocks. Each measured line has one dump, in the order of the figures; a line
/// that failed has one without a figure, and then nobody can tell which of its function's figures belong to which.
void takeCounts(Pass& pass, const DumpDirectory& directory, const std::string& program,
                std::vector<std::string>& failures) {
    std::map<std::string, std::vector<double>> counts;
    std::map<std::string, size_t> figures;
    for (const Figure& figure : pass.figures) {
        ++figures[figure.line.function];
    }
    for (const std::string& dump : directory.dumps()) {
        for (const auto& [function, number] : figures) {
            if (dump.find("tim_" + function + "_loop(") == std::string::npos) {
                continue;
            }
            counts[function].push_back(instructionsOf(function, program, dump));
        }
    }
    for (const auto& [function, number] : figures) {
        const std::vector<double>& told = counts[function];
        if (told.size() != number) {
            failures.push_back(
                fmt::format("{} has {} lines and {} counts; it is left out", function, number, told.size()));
        } else if (std::any_of(told.begin(), told.end(), [](double value) { return value < 0; })) {
            failures.push_back(fmt::format("no call of {} was seen in its loop; it is left out", function));
        } else {
            continue;
        }
        std::erase_if(pass.figures, [&, name = function](const Figure& f) { return f.line.function == name; });
    }
    std::map<std::string, size_t> next;
    for (Figure& figure : pass.figures) {
        figure.clocks = counts[figure.line.function][next[figure.line.function]++];
        figure.perElement = figure.elements > 0 ? figure.clocks / figure.elements : 0;
        figure.microseconds = 0;
        figure.megaflops = 0;
        figure.exact = true;
        figure.comment = "instructions";
    }
}

void appendPass(Pass& all, Pass&& part) {
    if (all.identity.rigCpu.empty()) {
        all.identity.rigCpu = part.identity.rigCpu;
        all.identity.rigLibrary = part.identity.rigLibrary;
        all.identity.arguments = part.identity.arguments;
    }
    const auto move = [](auto& to, auto& from) {
        to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
    };
    move(all.figures, part.figures);
    move(all.tests, part.tests);
    move(all.ends, part.ends);
    move(all.remarks, part.remarks);
}

/// What is to be counted, cut into what one process does.
std::vector<PassRequest> partsOf(const CountRequest& request) {
    PassRequest whole;
    whole.subject = request.subject;
    whole.timeLimit = request.timeLimit;
    whole.record = false;
    whole.keys = request.keys;
    const std::array<std::string, 2> method = {"-dMethod=Manual", "-dNumLoops=1"};
    if (!request.lines.empty()) {
        whole.lines = request.lines;
        whole.keepOthers = true; // the dumps tell of the others as well
        whole.keys.insert(whole.keys.end(), method.begin(), method.end());
        return {whole};
    }
    std::vector<std::string> functions;
    for (const TestName& test : listChosenTests(request.subject, request.keys)) {
        if (std::find(functions.begin(), functions.end(), test.function) == functions.end()) {
            functions.push_back(test.function);
        }
    }
    whole.keys = splitKeys(request.keys).without("ftF").words();
    whole.keys.insert(whole.keys.end(), method.begin(), method.end());
    const size_t size = std::min(functionsOfProcess, (functions.size() + request.lanes - 1) / request.lanes);
    std::vector<PassRequest> parts;
    for (size_t i = 0; i < functions.size(); ++i) {
        if (i % size == 0) {
            parts.push_back(whole);
        }
        parts.back().keys.push_back("-f=" + functions[i]);
    }
    return parts;
}

void refuseMethods(const std::vector<std::string>& keys) {
    for (const RigKey& key : splitKeys(keys).keys) {
        if (key.letter == 'd' && splitData(key.argument).name == "Method") {
            throw Fault("-dMethod has no meaning here: each line is called once and counted");
        }
    }
}

} // namespace

double instructionsOf(const std::string& function, const std::string& program, const std::string& dump) {
    double calls = 0;
    double instructions = 0;
    for (const CallEdge& edge : parseCallgraph("a dump of " + program, dump)) {
        if (edge.callee == function && edge.callerObject == program) {
            calls += static_cast<double>(edge.calls);
            instructions += static_cast<double>(edge.instructions);
        }
    }
    return calls > 0 ? instructions / calls : -1;
}

Pass countPass(const CountRequest& request) {
    refuseMethods(request.keys);
    const std::string valgrind = findCallgrind();
    const std::string program = fs::canonical(request.subject.program).string();
    Pass all;
    all.identity = identify(request.subject);
    all.identity.keys = request.keys;
    const std::vector<PassRequest> parts = partsOf(request);
    std::vector<Pass> passes(parts.size());
    std::vector<std::string> failures;
    {
        size_t ended = 0;
        std::mutex mutex;
        Lanes lanes(request.lanes);
        for (size_t i = 0; i < parts.size(); ++i) {
            PassRequest part = parts[i];
            const auto directory = std::make_shared<DumpDirectory>();
            part.launcher = launcherFor(valgrind, directory->path());
            part.progress = [&](size_t, const std::string& function) {
                const std::lock_guard lock(mutex);
                if (request.progress) {
                    request.progress(function, static_cast<double>(ended) / static_cast<double>(parts.size()));
                }
            };
            lanes.start(part, [&, i, directory](Pass pass) {
                takeCounts(pass, *directory, program, failures);
                passes[i] = std::move(pass);
                const std::lock_guard lock(mutex);
                ++ended;
            });
        }
        lanes.collect(true);
    }
    for (Pass& pass : passes) {
        appendPass(all, std::move(pass));
    }
    all.remarks.insert(all.remarks.end(), failures.begin(), failures.end());
    if (!request.lines.empty()) {
        std::erase_if(all.figures, [&](const Figure& figure) {
            return std::find(request.lines.begin(), request.lines.end(), figure.line) == request.lines.end();
        });
    }
    all.identity.ended = timeText();
    all.identity.loadEnd = loadAverage();
    return all;
}

} // namespace krlab
