#include "pass.h"

#include "fault.h"
#include "infotext.h"
#include "interrupt.h"
#include "librarycopies.h"
#include "rigkeys.h"
#include "rigpaths.h"
#include "rigprocess.h"
#include "selection.h"
#include "table.h"
#include "text.h"

#include <algorithm>
#include <cstring>
#include <fmt/format.h>
#include <map>
#include <set>

namespace krlab {

namespace {

/// Keys that end the rig before it measures, or that ask at a console that is not there.
constexpr std::string_view endingKeys = "evh?IQA";

/// What one process told.
struct Told {
    InfoParser info;
    TableRun table;
    RigExit exit;
    std::vector<std::string> arguments;
};

void refuseEndingKeys(const RigKeys& keys) {
    for (const RigKey& key : keys.keys) {
        if (endingKeys.find(key.letter) != std::string_view::npos) {
            throw Fault(fmt::format("the key -{} measures nothing; take it away", key.letter));
        }
    }
}

std::string userIniText(const RigKeys& keys, const Subject& subject) {
    const std::string* name = keys.last('i');
    return name == nullptr ? "" : readFile(rigInputPath(keys, subject, *name, ".ini").string());
}

Told callOnce(const PassRequest& request, const std::vector<std::string>& keys, const std::string* ini) {
    const MemoryFile table;
    const MemoryFile input(ini != nullptr ? *ini : "");
    Told told;
    RigCall call;
    call.subject = request.subject;
    call.launcher = request.launcher;
    call.keys = keys;
    call.keys.insert(call.keys.end(), {"-B", "-LINFO", "-q+", "-r" + table.path()});
    call.inherited = {table.descriptor()};
    if (ini != nullptr) {
        call.keys.push_back("-i" + input.path());
        call.inherited.push_back(input.descriptor());
    }
    const LibraryCopies copies(request.copied);
    call.libraryCopies = copies.directory();
    for (const int descriptor : copies.descriptors()) {
        call.inherited.push_back(descriptor);
    }
    call.timeLimit = request.timeLimit;
    call.seat = request.seat.get();
    if (request.seat != nullptr) {
        call.environment.push_back("KR_CORE_AWAKE=1");
    }
    if (request.padding > 0) {
        call.environment.push_back("KRLAB_PADDING=" + std::string(request.padding, '.'));
        call.environment.push_back("KR_HEAP_LOT=" + std::to_string(request.padding));
    }
    call.output = [&](std::string_view piece) {
        told.info.feed(piece);
        if (request.seat != nullptr) {
            request.seat->reached(told.info.tests().size(), told.info.ended());
        }
        if (request.progress) {
            const InfoTest* test = told.info.current();
            request.progress(told.info.ended(), test != nullptr ? test->end.function : "");
        }
    };
    told.arguments = call.keys;
    told.arguments.insert(told.arguments.begin(), request.subject.program.string());
    told.exit = callRig(call);
    told.info.finish();
    if (const std::string text = table.read(); !text.empty()) {
        const Table read = parseTable("the table of " + request.subject.program.string(), text);
        told.table = read.runs.back();
    }
    return told;
}

/// Figures of the table's rows, made exact by the console's counts: both tell the lines in the same order.
std::vector<Figure> joinFigures(const Told& told) {
    std::vector<Figure> figures;
    for (const TableRow& row : told.table.rows) {
        figures.push_back(row.figure);
    }
    size_t next = 0;
    for (const InfoTest& test : told.info.tests()) {
        const std::string& function = test.end.function;
        size_t begin = next;
        while (begin < figures.size() && figures[begin].line.function != function) {
            ++begin;
        }
        // A test without rows, since each of its lines failed.
        if (begin == figures.size()) {
            continue;
        }
        next = begin;
        for (const InfoLine& line : test.lines) {
            if (next == figures.size() || figures[next].line.function != function) {
                break;
            }
            Figure& figure = figures[next++];
            figure.clocks = line.clocks;
            figure.exact = line.exact;
            figure.loops = line.loops;
            figure.accuracy = line.accuracy;
            figure.elements = line.elements;
        }
    }
    return figures;
}

ProcessEnd endOf(const Told& told) {
    ProcessEnd end;
    end.status = told.exit.status;
    end.signal = told.exit.signal;
    const InfoTest* test = told.info.current();
    end.function = test != nullptr ? test->end.function : "";
    const std::string where = end.function.empty() ? "" : " in " + end.function;
    if (told.exit.interrupted) {
        end.how = ProcessEnd::How::interrupted;
        end.text = "ended by the user" + where;
    } else if (told.exit.timedOut) {
        end.how = ProcessEnd::How::timeLimit;
        end.text = fmt::format("took longer than its limit and was ended after {:.0f} s{}", told.exit.seconds, where);
    } else if (told.exit.signal != 0) {
        end.how = ProcessEnd::How::signalled;
        end.text = fmt::format("was ended by signal {} ({}){}", told.exit.signal, ::strsignal(told.exit.signal), where);
    } else if (told.exit.status > 1) {
        end.how = ProcessEnd::How::failed;
        end.text = fmt::format("ended with status {}{}", told.exit.status, where);
    } else if (!told.info.summarised()) {
        end.how = ProcessEnd::How::failed;
        end.text = "ended without its summary" + where;
        if (!told.info.remarks().empty()) {
            end.text += ": " + told.info.remarks().back();
        }
    }
    return end;
}

void takeOver(Pass& pass, const Told& told) {
    for (Figure& figure : joinFigures(told)) {
        pass.figures.push_back(std::move(figure));
    }
    for (const InfoTest& test : told.info.tests()) {
        if (!test.end.result.empty()) {
            pass.tests.push_back(test.end);
        }
    }
    for (const std::string& remark : told.info.remarks()) {
        pass.remarks.push_back(remark);
    }
    pass.ends.push_back(endOf(told));
    if (pass.identity.rigCpu.empty()) {
        pass.identity.rigCpu = told.info.processor();
        pass.identity.rigLibrary = told.info.library();
        pass.identity.arguments = told.arguments;
    }
}

/// Only what was asked for, each line once: its first figure, or of repeated ones the smallest.
void keepWanted(Pass& pass, const PassRequest& request) {
    const std::set<Line> wanted(request.lines.begin(), request.lines.end());
    std::map<Line, size_t> seen;
    std::vector<Figure> kept;
    for (Figure& figure : pass.figures) {
        if (!wanted.empty() && !request.keepOthers && wanted.count(figure.line) == 0) {
            continue;
        }
        const auto [at, added] = seen.try_emplace(figure.line, kept.size());
        if (added) {
            kept.push_back(std::move(figure));
        } else if (request.repeats > 1 && figure.clocks < kept[at->second].clocks) {
            kept[at->second] = std::move(figure);
        }
    }
    pass.figures = std::move(kept);
}

/// The functions of the selected tests in running order, each once.
std::vector<std::string> selectedFunctions(const Subject& subject, const RigKeys& keys) {
    std::vector<std::string> functions;
    for (const TestName& test : listTests(subject, keys.words())) {
        if (std::find(functions.begin(), functions.end(), test.function) == functions.end()) {
            functions.push_back(test.function);
        }
    }
    return functions;
}

/// The function of the last test that the process began: the one it died in, or behind. Empty if it never came so far.
std::string lastFunction(const Told& told) {
    return told.info.tests().empty() ? "" : told.info.tests().back().end.function;
}

/// True if another process is to measure what this one left.
bool goesOn(const ProcessEnd& end, const PassRequest& request) {
    return request.goOn && end.how != ProcessEnd::How::complete && end.how != ProcessEnd::How::interrupted;
}

/// A process for all that the keys select; after a death, one for what stood behind the test in work.
void runSelected(Pass& pass, const PassRequest& request, const RigKeys& keys) {
    std::vector<std::string> words = keys.words();
    std::vector<std::string> rest;
    for (bool first = true;; first = false) {
        const Told told = callOnce(request, words, nullptr);
        takeOver(pass, told);
        const std::string reached = lastFunction(told);
        if (!goesOn(pass.ends.back(), request) || reached.empty()) {
            return;
        }
        if (first) {
            rest = selectedFunctions(request.subject, keys);
        }
        const auto at = std::find(rest.begin(), rest.end(), reached);
        if (at == rest.end() || at + 1 == rest.end()) {
            return;
        }
        rest.erase(rest.begin(), at + 1);
        words = keys.without("ftF").words();
        for (const std::string& function : rest) {
            words.push_back("-f=" + function);
        }
    }
}

/// The same for chosen lines.
void runLines(Pass& pass, const PassRequest& request, const RigKeys& keys) {
    const std::string userIni = userIniText(keys, request.subject);
    std::vector<Line> left = request.lines;
    while (!left.empty()) {
        const Selection selection = selectLines(left, keys, userIni, request.repeats);
        const Told told = callOnce(request, selection.keys, &selection.ini);
        takeOver(pass, told);
        if (!goesOn(pass.ends.back(), request) || lastFunction(told).empty()) {
            return;
        }
        // The rig runs tests in its own order: what it has ended and what it died in are done with.
        std::set<std::string> done;
        for (const InfoTest& test : told.info.tests()) {
            done.insert(test.end.function);
        }
        std::erase_if(left, [&](const Line& line) { return done.count(line.function) != 0; });
    }
}

std::string versionIn(const std::string& told, const std::string& file) {
    // "libveksc, 1.0.0, Nov 22 2026; ..." for the file libveksc.so.1
    const std::string title = file.substr(0, file.find('.')) + ", ";
    for (const std::string_view entry : split(told, ';')) {
        if (trimmed(entry).starts_with(title)) {
            return std::string(trimmed(entry).substr(title.size()));
        }
    }
    return "";
}

/// The name in "for (lenght Dst = 5; ..." or "lenght = 12; 21".
std::string gridName(std::string_view line) {
    if (line.starts_with("for (")) {
        line.remove_prefix(5);
    }
    return std::string(trimmed(line.substr(0, line.find(" = "))));
}

/// Text of the rig that ends without measuring.
std::string textOf(const Subject& subject, std::vector<std::string> keys) {
    std::string text;
    RigCall call;
    call.subject = subject;
    call.keys = std::move(keys);
    call.timeLimit = 60;
    call.output = [&text](std::string_view piece) { text += piece; };
    const RigExit exit = callRig(call);
    if (exit.interrupted) {
        throw Fault("ended by the user");
    }
    if (exit.status != 0) {
        throw Fault(subject.program.string(),
                    exit.timedOut ? "does not end; is it a rig program?"
                                  : "fails to list its tests; is it a rig program that finds its libraries?");
    }
    return text;
}

} // namespace

bool TestEnd::failed() const {
    static const std::set<std::string> failures = {"ACCURFAIL", "DATAFAIL", "FUNCFAIL",
                                                   "EXCPTFAIL", "FAIL",     "UNDEFINED"};
    return failures.count(result) != 0;
}

std::string TestEnd::reason() const {
    const auto found = std::find_if(messages.begin(), messages.end(), [](const std::string& message) {
        return message.find(" on test parameters:") == std::string::npos && !message.starts_with("--VEK WARNING") &&
               !message.starts_with("-- Warning");
    });
    return found != messages.end() ? *found : messages.empty() ? "" : messages.back();
}

bool Pass::complete() const {
    return std::all_of(ends.begin(), ends.end(),
                       [](const ProcessEnd& end) { return end.how == ProcessEnd::How::complete; });
}

std::vector<std::string> Pass::failures() const {
    std::vector<std::string> texts;
    for (const ProcessEnd& end : ends) {
        if (end.how != ProcessEnd::How::complete) {
            texts.push_back("the rig " + end.text);
        }
    }
    return texts;
}

Pass runPass(const PassRequest& request) {
    const RigKeys keys = splitKeys(request.keys);
    refuseEndingKeys(keys);
    Pass pass;
    if (request.record) {
        pass.identity = identify(request.subject);
        pass.identity.keys = request.keys;
    } else {
        pass.identity.started = timeText();
    }
    if (request.lines.empty()) {
        runSelected(pass, request, keys);
    } else {
        runLines(pass, request, keys);
    }
    keepWanted(pass, request);
    if (request.record) {
        pass.identity.ended = timeText();
        pass.identity.loadEnd = loadAverage();
        for (FileIdentity& file : pass.identity.libraries) {
            file.version = versionIn(pass.identity.rigLibrary, file.name);
        }
    }
    return pass;
}

std::vector<TestName> listTests(const Subject& subject, const std::vector<std::string>& keys) {
    std::vector<std::string> words = splitKeys(keys).without("evh?IQArRuUoOqgF").words();
    words.insert(words.end(), {"-B", "-e"});
    const std::string text = textOf(subject, words);
    std::vector<TestName> tests;
    bool inList = false;
    for (const std::string_view line : split(text, '\n')) {
        if (line.starts_with("   #\t")) {
            inList = true;
            continue;
        }
        const std::vector<std::string_view> cells = split(line, '\t');
        if (inList && cells.size() >= 4 && integerOf(trimmed(cells[0]))) {
            tests.push_back({std::string(cells[1]), std::string(cells[2]), std::string(cells[3])});
        }
    }
    if (!inList) {
        throw Fault(subject.program.string(), "lists no tests; is it a rig program?");
    }
    const std::string* start = splitKeys(keys).last('F');
    if (start != nullptr && !start->empty()) {
        const auto first = std::find_if(tests.begin(), tests.end(), [&](const TestName& test) {
            return test.function.find(*start) != std::string::npos;
        });
        tests.erase(tests.begin(), first);
    }
    return tests;
}

std::vector<TestName> listChosenTests(const Subject& subject, const std::vector<std::string>& keys) {
    std::vector<TestName> tests = listTests(subject, keys);
    if (tests.empty()) {
        throw Fault("the keys behind -- select no test; see what there is with: kelvarrig -e");
    }
    return tests;
}

std::vector<TestParameters> listParameters(const Subject& subject, const std::vector<std::string>& keys) {
    const MemoryFile names;
    std::vector<std::string> words = splitKeys(keys).without("evh?IQArRuUoOqgLidPN").words();
    words.insert(words.end(), {"-B", "-Q", "-LPERF", "-q" + names.path()});
    InfoParser info;
    RigCall call;
    call.subject = subject;
    call.keys = words;
    call.inherited = {names.descriptor()};
    call.timeLimit = 60;
    call.output = [&info](std::string_view piece) { info.feed(piece); };
    callRig(call);
    info.finish();
    const std::string table = names.read();
    if (table.empty()) {
        throw Fault(subject.program.string(), "tells no parameter names; is it a rig program?");
    }
    const Table read = parseTable("the names of " + subject.program.string(), table);
    // Both tell the tests in the same order; a test that can't start has no names.
    auto columns = read.runs.back().names.begin();
    std::vector<TestParameters> tests;
    for (const InfoTest& test : info.tests()) {
        TestParameters parameters;
        parameters.function = test.end.function;
        for (const std::string& line : test.grid) {
            parameters.names.push_back(gridName(line));
        }
        if (columns != read.runs.back().names.end() && columns->function == test.end.function) {
            parameters.columns = (columns++)->columns;
        }
        tests.push_back(std::move(parameters));
    }
    return tests;
}

} // namespace krlab
