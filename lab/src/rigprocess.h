// One process of the rig: its own process group, gone with this program, ended at a time limit or on Ctrl-C.
#pragma once

#include "subject.h"
#include "turns.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace krlab {

/// A file in memory that the rig writes or reads by name. Nothing of it is left when this program is killed.
class MemoryFile {
public:
    explicit MemoryFile(const std::string& text = "");
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    /// The name under which the started process finds it.
    std::string path() const;
    int descriptor() const { return m_descriptor; }
    std::string read() const;

private:
    int m_descriptor;
};

struct RigCall {
    Subject subject;
    std::vector<std::string> keys;        ///< the whole argument vector behind the program
    std::vector<std::string> launcher;    ///< a program and its arguments that start the rig; empty for the rig itself
    std::vector<int> inherited;           ///< descriptors of memory files
    std::string libraryCopies;            ///< a directory that the loader searches before the subject's; may be empty
    std::vector<std::string> environment; ///< further "NAME=value" entries
    double timeLimit = 600;               ///< seconds, without those in which another rig has the turn
    Seat* seat = nullptr;                 ///< takes turns with others; null if it runs alone
    bool heedInterrupt = true;            ///< Ctrl-C ends the process
    /// Takes the console text, standard output and standard error in one, as it comes; also called with an empty text
    /// a few times a second.
    std::function<void(std::string_view)> output;
};

struct RigExit {
    int status = -1; ///< exit status; -1 if a signal ended it
    int signal = 0;
    bool timedOut = false;
    bool interrupted = false;
    double seconds = 0; ///< without those in which another rig had the turn
};

/// Starts the rig and waits for its end. Throws Fault if it can't be started.
RigExit callRig(const RigCall& call);

} // namespace krlab
