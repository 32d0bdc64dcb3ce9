// Running a program at pipes, at files or at a pseudo-terminal, and masking what it wrote.
#include "rig_process.h"

#include "patterns.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sstream>
#include <sys/wait.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

// Writes `input` and reads the answer until the other side closes or the time is over. True if it was over.
bool converse(int to, int from, const std::string& input, bool closeAfterInput, int seconds, std::string& output) {
    const auto limit = Clock::now() + std::chrono::seconds(seconds);
    size_t sent = 0;
    while (Clock::now() < limit) {
        pollfd ends[2] = {{from, POLLIN, 0}, {to, POLLOUT, 0}};
        const bool sending = to >= 0 && sent < input.size();
        if (to >= 0 && !sending && closeAfterInput) {
            close(to);
            to = -1;
        }
        poll(ends, sending ? 2 : 1, 50);
        if (sending && (ends[1].revents & (POLLOUT | POLLERR | POLLHUP)) != 0) {
            const ssize_t n = write(to, input.data() + sent, std::min<size_t>(input.size() - sent, 1024));
            sent = n > 0 ? sent + static_cast<size_t>(n) : input.size();
        }
        if ((ends[0].revents & (POLLIN | POLLHUP | POLLERR)) != 0) {
            char buffer[65536];
            const ssize_t n = read(from, buffer, sizeof buffer);
            if (n <= 0) {
                if (to >= 0 && closeAfterInput) {
                    close(to);
                }
                return false;
            }
            output.append(buffer, static_cast<size_t>(n));
        }
    }
    if (to >= 0 && closeAfterInput) {
        close(to);
    }
    return true;
}

RigResult reap(pid_t process, bool hung) {
    RigResult result;
    result.hung = hung;
    if (hung) {
        kill(process, SIGKILL);
    }
    int status = 0;
    waitpid(process, &status, 0);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    return result;
}

void replaceAll(std::string& text, const std::string& what, const std::string& by) {
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
        text.replace(at, what.size(), by);
    }
}

} // namespace

RigDirectory::RigDirectory(const char* program, const char* name) : m_program(program), m_name(name) {
    // The program of another build of the tree, if the tests are run for that one.
    const std::string own = BUILD_DIRECTORY;
    const char* tested = std::getenv("KR_TESTED_BUILD");
    if (tested != nullptr && m_program.starts_with(own)) {
        m_program = tested + m_program.substr(own.size());
    }
    // A write to a program that has ended is an answer that nobody reads.
    std::signal(SIGPIPE, SIG_IGN);
}

void RigDirectory::become(const std::vector<std::string>& keys, const RigConsole& console) const {
    std::signal(SIGPIPE, SIG_DFL);
    // A test that crashed leaves its memory behind, which is no leak of the harness.
    const char* const given = std::getenv("ASAN_OPTIONS");
    setenv("ASAN_OPTIONS", ((given != nullptr ? std::string(given) + ":" : "") + "detect_leaks=0").c_str(), 1);
    if (console.trueCalendar) {
        unsetenv("LD_PRELOAD");
    }
    const std::string self = console.relativeName ? "./" + m_name : file(m_name);
    std::vector<char*> words{const_cast<char*>(self.c_str())};
    for (const std::string& key : keys) {
        words.push_back(const_cast<char*>(key.c_str()));
    }
    words.push_back(nullptr);
    if (chdir(path().c_str()) == 0) {
        execv(m_program.c_str(), words.data());
    }
    _exit(127);
}

RigResult RigDirectory::run(const std::vector<std::string>& keys, const RigConsole& console) const {
    std::string output;
    if (console.terminal) {
        termios mode = {};
        cfmakeraw(&mode);
        if (!console.rawTerminal) {
            mode.c_lflag |= ICANON;
            mode.c_cc[VEOF] = 4;
        }
        mode.c_cflag |= CREAD;
        int master = -1;
        const pid_t process = forkpty(&master, nullptr, &mode, nullptr);
        if (process == 0) {
            become(keys, console);
        }
        const bool hung = converse(dup(master), master, console.input, true, console.seconds, output);
        close(master);
        RigResult result = reap(process, hung);
        result.out = output;
        return result;
    }
    int in[2] = {-1, -1};
    int out[2] = {-1, -1};
    if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0) {
        return RigResult();
    }
    const pid_t process = fork();
    if (process == 0) {
        dup2(in[0], 0);
        int to = out[1];
        if (!console.outputFile.empty()) {
            to = open(console.outputFile.c_str(), O_WRONLY | O_CREAT, 0644);
        }
        dup2(to, 1);
        dup2(to, 2);
        if (console.inputClosed) {
            close(0);
        }
        if (console.outputClosed) {
            close(1);
            close(2);
        }
        // The end of the output is the end of the run, also for a program that writes elsewhere.
        fcntl(out[1], F_SETFD, console.outputClosed || !console.outputFile.empty() ? 0 : FD_CLOEXEC);
        if (console.outputHangsUp) {
            close(out[0]);
        }
        become(keys, console);
    }
    close(in[0]);
    close(out[1]);
    if (console.outputHangsUp) {
        close(in[1]);
        close(out[0]);
        return wait(process, console.seconds);
    }
    const bool hung = converse(in[1], out[0], console.input, true, console.seconds, output);
    close(out[0]);
    RigResult result = reap(process, hung);
    result.out = output;
    return result;
}

pid_t RigDirectory::start(const std::vector<std::string>& keys) const {
    const pid_t process = fork();
    if (process == 0) {
        const int nowhere = open("/dev/null", O_RDWR);
        dup2(nowhere, 0);
        dup2(nowhere, 1);
        dup2(nowhere, 2);
        become(keys);
    }
    return process;
}

RigResult RigDirectory::wait(pid_t process, int seconds) {
    const auto ended = [process] {
        siginfo_t info = {};
        return waitid(P_PID, static_cast<id_t>(process), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid != 0;
    };
    return reap(process, !waitUntil(ended, seconds));
}

std::string RigDirectory::read(const std::string& name) const {
    return exists(name) ? m_directory.read(name) : "<no file>";
}

std::string RigDirectory::mask(const std::string& text) const {
    static const std::vector<std::pair<std::string, std::string>> figures = {
        {"[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} [0-9]{4}", "Day Mon dd hh:mm:ss yyyy"},
        {"[0-9]{2}:[0-9]{2}:[0-9]{2}", "hh:mm:ss"},
        {"\\| (CPU     |OS      |Computer|Library ) : [^\n]*", "| $1 : <text>"},
        {"(^|\n)(CPU|OS|Computer|Library),[^\n]*", "$1$2,<text>"},
        {",(nLps|nCalls)=([^,]*),[0-9][-+.e0-9]*,([a-z ]*),[0-9][-+.e0-9]*,[0-9][-+.e0-9]*",
         ",$1=$2,<clocks>,$3,<usec>,<mflops>"},
        {",(nLps|nCalls)=([^,]*),[0-9][-+.e0-9]*,([a-z ]*),[0-9][-+.e0-9]*,-", ",$1=$2,<clocks>,$3,<usec>,-"},
        {"perf= *[0-9][-+.e0-9]*/ *([0-9][-+.e0-9]*)= *[0-9][-+.e0-9]* clocks", "perf=<clocks>/$1=<clocks> clocks"},
        {"([?-]),([A-Za-z0-9_]+),[0-9]+,([^,\n]+),([A-Z]+),([a-z]+)\n", "$1,$2,<sec>,$3,$4,$5\n"},
    };
    std::string masked = text;
    replaceAll(masked, path(), "<dir>");
    return replaced(masked, figures);
}

bool waitUntil(const std::function<bool()>& condition, int seconds) {
    const auto limit = Clock::now() + std::chrono::seconds(seconds);
    while (!condition()) {
        if (Clock::now() > limit) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

int countOf(const std::string& text, const std::string& part) {
    int count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}

void expectOnce(const std::string& text, const std::vector<std::string>& parts) {
    for (const std::string& part : parts) {
        EXPECT_EQ(1, countOf(text, part)) << part;
    }
}

std::string startFrame(bool library) {
    const std::string edge = "+" + std::string(77, '-') + "+\n";
    const std::string test = "| Test     : Timing";
    const std::string date = "Day Mon dd hh:mm:ss yyyy|\n";
    return edge + "| CPU      : <text>\n| OS       : <text>\n| Computer : <text>\n" +
           (library ? "| Library  : <text>\n" : "") + test + std::string(78 - test.size(), ' ') + "|\n|" +
           std::string(53, ' ') + date + edge;
}

std::string summaryFrame(const RigCounts& counts) {
    const std::string edge = "+" + std::string(77, '-') + "+\n";
    const auto line = [](const std::string& label, const std::string& value) {
        const std::string text = "| " + label + " : " + value;
        return text + std::string(78 - text.size(), ' ') + "|\n";
    };
    const auto count = [&line](const std::string& label, int value) { return line(label, std::to_string(value)); };
    const std::string title = "| KR Summary";
    return edge + title + std::string(78 - title.size(), ' ') + "|\n" + count(".Number of tests", counts.tests) +
           count(".Successes      ", counts.successes) + count(".Failures       ", counts.failures) +
           count("...Fails        ", counts.fails) + count(".....-FAIL      ", counts.fail) +
           count(".....-EXCPTFAIL ", counts.exceptFail) + count("...Warnings     ", counts.warnings) +
           count(".....-WARNING   ", counts.warning) + count(".....-BADSTSWRN ", counts.badStatus) +
           count("...Undefined    ", counts.undefined) + line(".Total time     ", "hh:mm:ss") + edge;
}
