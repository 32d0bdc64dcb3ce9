// Stores as the tasks of a fleet leave them, with figures that a test chooses.
#pragma once

#include "store.h"
#include "tempdir.h"

#include <filesystem>
#include <functional>
#include <string>

namespace krlab {

struct TaskOf {
    std::string plan;
    int task = 0;
    std::string host;
    int model = 1; ///< of the processor
    std::string setting = "usual";
};

/// Clocks of a line in a round of a task.
using ClocksOf = std::function<double(int round, bool newer, int line)>;

inline Pass fleetPass(const TaskOf& task, const std::string& subject, int firstLine, int lines,
                      const std::function<double(int line)>& clocks) {
    Pass pass;
    pass.identity.subject = subject;
    pass.identity.program.sha256 = subject;
    pass.identity.started = "2026-11-22T02:30:05+01:00";
    pass.identity.machine.host = task.host;
    pass.identity.machine.processor =
        "family 6 model " + std::to_string(task.model) + " stepping 1 microcode 0x" + std::to_string(task.task);
    pass.identity.machine.features = "0-" + std::to_string(task.model);
    pass.ends.emplace_back();
    for (int line = firstLine; line < firstLine + lines; ++line) {
        Figure figure;
        figure.line = Line{"veksX_G729_16s", {{"len", std::to_string(line)}}};
        figure.clocks = clocks(line);
        figure.exact = true;
        figure.elements = 8;
        figure.comment = "nLps=32";
        pass.figures.push_back(figure);
    }
    return pass;
}

/// Writes a task of `rounds` rounds into a store, as if it had been merged; without `whole`, as it is while it runs.
inline void addTask(Store& store, const TaskOf& task, int firstLine, int rounds, int lines, const ClocksOf& clocks,
                    bool whole = true) {
    RunRecord record;
    record.command = "fleet";
    record.label = "nightly";
    const long long run = store.beginRun(record);
    store.markFleet({run, task.plan, task.task, task.setting, {"before", "after"}});
    for (int round = 0; round < rounds; ++round) {
        for (const bool newer : {false, true}) {
            store.addPass(run, round, fleetPass(task, newer ? "after" : "before", firstLine, lines, [&](int line) {
                              return clocks(round, newer, line);
                          }));
        }
    }
    if (whole) {
        store.endRun(run, 0);
    }
}

/// A task's own store: clocks of 100 and the line's number, times a factor.
inline void writeTask(const std::string& file, const TaskOf& task, int firstLine, int rounds, int lines, double factor,
                      bool whole = true) {
    const TempDir directory;
    Store store(directory.path("task.db"));
    addTask(
        store, task, firstLine, rounds, lines, [factor](int, bool, int line) { return (100 + line) * factor; }, whole);
    store.copyTo(file);
}

} // namespace krlab
