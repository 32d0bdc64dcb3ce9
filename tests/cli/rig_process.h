// Runs one of the programs in a fresh directory of its own and keeps all that it leaves behind: console, exit status
// and files. The figures in them, which differ from run to run, are masked; everything else is compared as it stands.
#pragma once

#include "tempdir.h"

#include <functional>
#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

/// How a run ended, and what it wrote to the console.
struct RigResult {
    int exitCode = -1; ///< -1 if it did not end by itself
    int signal = 0;    ///< the signal that ended it
    bool hung = false; ///< it had to be killed at its time limit
    std::string out;   ///< standard output and standard error in one
    bool ended() const { return exitCode >= 0 && !hung; }
};

/// What a run finds at its console.
struct RigConsole {
    std::string input;          ///< typed text; then the input ends
    bool inputClosed = false;   ///< no descriptor 0 at all
    bool outputClosed = false;  ///< no descriptors 1 and 2 at all
    bool outputHangsUp = false; ///< a pipe that nobody reads any more
    bool relativeName = false;  ///< the program is started as "./<name>"
    std::string outputFile;     ///< in place of a pipe
    bool terminal = false;      ///< a pseudo-terminal without echo in place of pipes
    bool rawTerminal = false;   ///< a terminal that does not limit lines to 4095 characters
    bool trueCalendar = false;  ///< the seconds are whole ones, also where the tests have a quicker calendar
    int seconds = 30;           ///< the time limit
};

/// A directory in which a program lives: it is started as `<directory>/<name>`, so that its files land here.
class RigDirectory {
public:
    /// `program` is the path of a binary; it is known by the name `name` here.
    RigDirectory(const char* program, const char* name);
    RigDirectory(const RigDirectory&) = delete;
    RigDirectory& operator=(const RigDirectory&) = delete;

    RigResult run(const std::vector<std::string>& keys, const RigConsole& console = RigConsole()) const;
    /// Starts the program without a console, for runs that are to be disturbed; returns its process.
    pid_t start(const std::vector<std::string>& keys) const;
    /// Waits for a started program; kills it at the time limit.
    static RigResult wait(pid_t process, int seconds = 30);

    const std::string& path() const { return m_directory.path(); }
    std::string file(const std::string& name) const { return m_directory.path(name); }
    void write(const std::string& name, const std::string& text) const { m_directory.write(name, text); }
    bool exists(const std::string& name) const { return m_directory.exists(name); }
    /// The whole text of a file, or "<no file>".
    std::string read(const std::string& name) const;
    /// A file with its figures masked.
    std::string masked(const std::string& name) const { return mask(read(name)); }
    /// The directory's name becomes "<dir>", times and figures become words; widths are kept.
    std::string mask(const std::string& text) const;

private:
    [[noreturn]] void become(const std::vector<std::string>& keys, const RigConsole& console = RigConsole()) const;

    std::string m_program;
    std::string m_name;
    TempDir m_directory;
};

/// Polls until the condition holds; false after the time limit.
bool waitUntil(const std::function<bool()>& condition, int seconds = 20);
/// How often `part` stands in `text`.
int countOf(const std::string& text, const std::string& part);
/// Each part stands in the text, and once.
void expectOnce(const std::string& text, const std::vector<std::string>& parts);

/// What the summary of a run counts.
struct RigCounts {
    int tests = 0;
    int successes = 0;
    int failures = 0;
    int fails = 0;
    int fail = 0;
    int exceptFail = 0;
    int warnings = 0;
    int warning = 0;
    int badStatus = 0;
    int undefined = 0;
};

/// The frame that opens a run at the console, masked; of a program with the library, that one stands in it too.
std::string startFrame(bool library = false);
/// The frame that closes a run at the console, its time masked.
std::string summaryFrame(const RigCounts& counts);
