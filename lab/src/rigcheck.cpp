#include "rigcheck.h"

#include "fault.h"
#include "rigpaths.h"
#include "table.h"

#include <algorithm>
#include <cstring>
#include <fmt/format.h>
#include <set>

namespace krlab {

namespace {

/// Parameters that belong to the run and to no test.
const std::vector<std::string> commonNames = {
    "Method",       "NumLoops", "NumCalls",       "TotalCpuClocks", "StartNumLoops",
    "StopNumLoops", "Accuracy", "AlignVectorsBy", "VectorAlign",    "MisalignFirstVectorOnly"};

/// The words of a kind that -f or -t selects by.
std::vector<std::string> wordsFor(char letter, const std::vector<TestName>& tests) {
    std::set<std::string> words;
    for (const TestName& test : tests) {
        words.insert(letter == 't' ? test.test : test.function);
    }
    return {words.begin(), words.end()};
}

/// A pattern is mostly a piece of a name: the nearest piece of that length counts, and its whole name is proposed.
std::string pieceProposal(const std::string& pattern, const std::vector<std::string>& words) {
    std::string best;
    int least = std::max(2, static_cast<int>(pattern.size()) / 2);
    for (const std::string& word : words) {
        for (size_t at = 0; at == 0 || at + pattern.size() <= word.size(); ++at) {
            const int distance = wordDistance(pattern, std::string_view(word).substr(at, pattern.size()));
            if (distance < least) {
                least = distance;
                best = word;
            }
        }
    }
    return best.empty() ? "" : fmt::format("; do you mean '{}'?", best);
}

void addPatternFaults(const RigKey& key, const std::vector<TestName>& all, std::vector<std::string>& faults) {
    std::string pattern = key.argument;
    const char form = pattern.empty() ? ' ' : pattern[0];
    if (form == '=' || form == '+' || form == '-') {
        pattern.erase(0, 1);
    }
    if (pattern.empty()) {
        faults.push_back(fmt::format("{} selects nothing: its pattern is empty", key.word()));
        return;
    }
    const std::vector<std::string> words = wordsFor(key.letter, all);
    const bool found = std::any_of(words.begin(), words.end(), [&](const std::string& word) {
        return form == '=' ? word == pattern : word.find(pattern) != std::string::npos;
    });
    if (!found) {
        faults.push_back(fmt::format("{} {} nothing: no {} {} '{}'{}", key.word(),
                                     form == '-' ? "takes away" : "selects", key.letter == 't' ? "test" : "function",
                                     form == '=' ? "is called" : "holds", pattern,
                                     form == '=' ? proposal(pattern, words) : pieceProposal(pattern, words)));
    }
}

void addDataFaults(const RigKey& key, const std::vector<TestParameters>& selected, std::vector<std::string>& faults) {
    const KeyValue data = splitData(key.argument);
    if (data.name.empty() || key.argument.find('=') == std::string::npos) {
        faults.push_back(fmt::format("{} sets nothing: write -dNAME=VALUE", key.word()));
        return;
    }
    std::vector<std::string> names = commonNames;
    for (const TestParameters& test : selected) {
        names.insert(names.end(), test.names.begin(), test.names.end());
    }
    if (std::find(names.begin(), names.end(), data.name) == names.end()) {
        faults.push_back(fmt::format("{} has no effect: no selected test has a parameter '{}'{}", key.word(), data.name,
                                     proposal(data.name, names)));
    }
}

size_t measuredLines(const InfoParser& info) {
    size_t count = 0;
    for (const InfoTest& test : info.tests()) {
        count += test.lines.size();
    }
    return count;
}

void addTestFaults(const InfoTest& test, std::vector<std::string>& faults) {
    if (test.end.result.empty()) {
        return;
    }
    if (test.end.failed()) {
        faults.push_back(fmt::format("{} failed: {}{}", test.end.function, test.end.result,
                                     test.end.messages.empty() ? "" : ", " + test.end.reason()));
        return;
    }
    // A refused value leaves the test's own in force, and the test goes well with the wrong ones.
    for (const std::string& message : test.end.messages) {
        if (message.find("Invalid ") == 1 || message.find("Conflict between") == 1 ||
            message.find("Empty iterator") == 1) {
            faults.push_back(fmt::format("{} refused a value: {}", test.end.function, message.substr(1)));
        }
    }
}

} // namespace

std::vector<std::string> faultsOfKeys(const RigKeys& keys, const std::vector<TestName>& all,
                                      const std::vector<TestParameters>& selected) {
    std::vector<std::string> faults;
    for (const std::string& word : keys.lost) {
        faults.push_back(fmt::format("the word '{}' is dropped by the rig: attach it to its key", word));
    }
    for (const RigKey& key : keys.keys) {
        if (key.letter == 'f' || key.letter == 't') {
            addPatternFaults(key, all, faults);
        } else if (key.letter == 'd') {
            addDataFaults(key, selected, faults);
        }
    }
    if (const std::string* start = keys.last('F'); start != nullptr && !start->empty()) {
        const bool found = std::any_of(all.begin(), all.end(), [&](const TestName& test) {
            return test.function.find(*start) != std::string::npos;
        });
        if (!found) {
            faults.push_back(fmt::format("-F{} starts nowhere: no function holds it{}", *start,
                                         pieceProposal(*start, wordsFor('f', all))));
        }
    }
    if (selected.empty() && faults.empty()) {
        faults.emplace_back("the keys select nothing: each fits some test, all together fit none");
    }
    return faults;
}

std::vector<std::string> faultsOfRun(const InfoParser& info, const RigExit& exit, double timeLimit) {
    std::vector<std::string> faults;
    for (const std::string& line : info.echo()) {
        if (const size_t at = line.find(": ignored"); at != std::string::npos) {
            faults.push_back(fmt::format("the rig ignores {}", line));
        }
    }
    bool unopened = false;
    for (const std::string& remark : info.remarks()) {
        // The rig's last word on a file that it has told already.
        if (!(unopened && remark.starts_with("FATAL ERROR"))) {
            faults.push_back("the rig says: " + remark);
        }
        unopened = unopened || remark.find("Can't open file") != std::string::npos;
    }
    for (const InfoTest& test : info.tests()) {
        addTestFaults(test, faults);
    }
    const std::string where = info.current() != nullptr ? " in " + info.current()->end.function : "";
    if (exit.timedOut) {
        faults.push_back(fmt::format("the run was ended{} after {}, its time limit", where, durationText(timeLimit)));
    } else if (exit.signal != 0) {
        faults.push_back(
            fmt::format("the run was ended by signal {} ({}){}", exit.signal, ::strsignal(exit.signal), where));
    } else if (!info.summarised() && !unopened) {
        faults.push_back(fmt::format("the run was cut off: its summary is missing (status {}){}", exit.status, where));
    } else if (info.summarised() && info.summaryTests() == 0) {
        faults.emplace_back("the run measured no test");
    } else if (exit.status > 1 || (exit.status == 1 && faults.empty())) {
        faults.push_back(fmt::format("the rig ended with status {}", exit.status));
    }
    return faults;
}

std::vector<std::string> faultsOfTables(const RigKeys& keys, const Subject& subject, const InfoParser& info) {
    std::vector<std::string> faults;
    const size_t wanted = measuredLines(info);
    if (!info.summarised()) {
        return faults;
    }
    for (const RigKey& key : keys.keys) {
        if (key.letter != 'r' && key.letter != 'R') {
            continue;
        }
        const std::string file = rigOutputPath(keys, subject, key.argument, ".csv").string();
        std::error_code error;
        if (std::filesystem::is_character_file(file, error)) {
            continue;
        }
        try {
            const Table table = readTable(file);
            const TableRun& run = table.runs.back();
            if (run.rows.size() != wanted || run.cutOff) {
                faults.push_back(
                    fmt::format("{}: {} of {} rows arrived; is the disk full?", file, run.rows.size(), wanted));
            }
        } catch (const Fault& fault) {
            faults.emplace_back(fault.what());
        }
    }
    return faults;
}

} // namespace krlab
