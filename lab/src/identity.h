// What was measured, and where: program and libraries as the loader resolved them, machine, arguments, time.
#pragma once

#include "subject.h"

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace krlab {

/// One file of the subject.
struct FileIdentity {
    std::string name;    ///< libveksc.so.1, or the program's file name
    std::string path;    ///< the real path that the loader takes
    std::string buildId; ///< hexadecimal; empty if the file has none
    std::string sha256;
    std::string version; ///< text of the library, as the rig tells it; of the program its banner
};

/// The machine and its state.
struct Machine {
    std::string processor;
    std::string features; ///< of the processor, as CPUID tells them: leaf 1 ecx and edx, leaf 7 ebx, ecx and edx
    std::string kernel;
    std::string host;
    double counterMHz = 0; ///< rate of the time-stamp counter
    int processors = 0;
};

/// Kept with every figure.
struct Identity {
    std::string subject; ///< its name
    FileIdentity program;
    std::vector<FileIdentity> libraries; ///< vekcore, veks, veksc; empty entries are left out
    Machine machine;
    std::vector<std::string> keys;      ///< the user's keys
    std::vector<std::string> arguments; ///< the exact argument vector of the (first) rig process
    std::string started;                ///< local time with zone, 2026-11-22T02:30:05+01:00
    std::string ended;
    double loadStart = 0; ///< one-minute load average
    double loadEnd = 0;
    std::string rigCpu; ///< what the rig says of the processor, library and computer in its table's head
    std::string rigLibrary;
};

/// Program and libraries of a subject. Throws Fault if the loader does not find all that the rig needs.
Identity identify(const Subject& subject);
const Machine& thisMachine();
/// Now, as in Identity::started.
std::string timeText();
double loadAverage();

/// The form of reports and of the store.
nlohmann::json toJson(const Identity& identity);
Identity identityFromJson(const nlohmann::json& json);
/// A few lines for the head of a report.
std::string describe(const Identity& identity);
/// True if both passes measured the same files with the same keys on the same machine.
bool sameSubject(const Identity& a, const Identity& b);

} // namespace krlab
