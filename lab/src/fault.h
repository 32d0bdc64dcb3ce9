// The one error that ends a command: a message that says what is wrong and what to do, with file and line where there
// are.
#pragma once

#include <stdexcept>
#include <string>

namespace krlab {

/// Exit statuses of the program.
enum ExitStatus {
    exitGood = 0,         ///< nothing is worse
    exitWorse = 1,        ///< something is
    exitFailed = 2,       ///< wrong arguments, unreadable input, a rig that failed or lines that are missing
    exitUndecided = 3,    ///< with --strict: lines stayed undecided
    exitInterrupted = 130 ///< ended by the user, with a report of what was measured
};

/// Ends a command with status 2. `what()` is the whole message, "FILE:LINE: text" where a place is known.
class Fault : public std::runtime_error {
public:
    explicit Fault(const std::string& text) : std::runtime_error(text) {}
    Fault(const std::string& file, const std::string& text) : std::runtime_error(file + ": " + text) {}
    Fault(const std::string& file, long long line, const std::string& text)
        : std::runtime_error(file + ":" + std::to_string(line) + ": " + text) {}
};

/// "cause" text of errno, for the end of a message.
std::string systemCause(int error);

} // namespace krlab
