#include "rigprocess.h"

#include "fault.h"
#include "interrupt.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace krlab {

namespace {

using Clock = std::chrono::steady_clock;

// Three digits, for more of them than are ever in use at once.
constexpr int firstMemoryDescriptor = 100;

/// A descriptor that is closed with its owner.
class Descriptor {
public:
    explicit Descriptor(int fd = -1) : m_fd(fd) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return m_fd; }
    void set(int fd) {
        close();
        m_fd = fd;
    }
    void close() {
        if (m_fd >= 0) {
            ::close(m_fd);
            m_fd = -1;
        }
    }

private:
    int m_fd;
};

void makePipe(Descriptor& in, Descriptor& out) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        throw Fault("can't make a pipe: " + systemCause(errno));
    }
    in.set(ends[0]);
    out.set(ends[1]);
}

std::vector<char*> pointers(std::vector<std::string>& words) {
    std::vector<char*> result;
    result.reserve(words.size() + 1);
    for (std::string& word : words) {
        result.push_back(word.data());
    }
    result.push_back(nullptr);
    return result;
}

/// The loader's search path, as an environment entry; empty if the call adds nothing to it.
std::string searchPathEntry(const RigCall& call) {
    std::string path = call.libraryCopies;
    const char* inherited = std::getenv("LD_LIBRARY_PATH");
    for (const std::string& next :
         {call.subject.libraries.string(), std::string(inherited != nullptr ? inherited : "")}) {
        path += (path.empty() || next.empty() ? "" : ":") + next;
    }
    return call.libraryCopies.empty() && call.subject.libraries.empty() ? "" : "LD_LIBRARY_PATH=" + path;
}

std::vector<std::string> environmentOf(const RigCall& call) {
    std::vector<std::string> added = call.environment;
    if (const std::string path = searchPathEntry(call); !path.empty()) {
        added.push_back(path);
    }
    std::vector<std::string> result;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        const std::string name = text.substr(0, text.find('=') + 1);
        if (std::none_of(added.begin(), added.end(), [&](const std::string& a) { return a.starts_with(name); })) {
            result.push_back(text);
        }
    }
    result.insert(result.end(), added.begin(), added.end());
    return result;
}

/// The signals that end the companion, held back while it lends its memory to a process that begins.
class SignalsHeld {
public:
    SignalsHeld() {
        ::sigemptyset(&m_held);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            ::sigaddset(&m_held, signal);
        }
        ::pthread_sigmask(SIG_BLOCK, &m_held, &m_before);
    }
    ~SignalsHeld() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;
    const sigset_t& before() const { return m_before; }

private:
    sigset_t m_held{};
    sigset_t m_before{};
};

/// In the new process, which has this one's memory until it is the rig; only what is safe before exec.
[[noreturn]] void become(const RigCall& call, pid_t parent, int out, int report, const sigset_t& signals, char** words,
                         char** environment) {
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) {
        ::_exit(127);
    }
    const int null = ::open("/dev/null", O_RDONLY);
    ::dup2(null, STDIN_FILENO);
    ::dup2(out, STDOUT_FILENO);
    ::dup2(out, STDERR_FILENO);
    for (const int fd : call.inherited) {
        ::fcntl(fd, F_SETFD, 0);
    }
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        // One that came before this process had a group of its own was not for the rig, and is dropped.
        ::signal(signal, SIG_IGN);
        ::signal(signal, SIG_DFL);
    }
    ::pthread_sigmask(SIG_SETMASK, &signals, nullptr);
    // A rig that crashes under test leaves no core files behind.
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    ::execve(words[0], words, environment);
    const int error = errno;
    [[maybe_unused]] const ssize_t written = ::write(report, &error, sizeof error);
    ::_exit(127);
}

/// Reads what is there; false at the end of the text.
bool drain(int fd, const RigCall& call) {
    char block[65536];
    for (;;) {
        const ssize_t n = ::read(fd, block, sizeof block);
        if (n > 0) {
            if (call.output) {
                call.output(std::string_view(block, static_cast<size_t>(n)));
            }
        } else if (n == 0) {
            return false;
        } else if (errno != EINTR) {
            return true;
        }
    }
}

/// Waits for the end of the process while its text is read.
void follow(const RigCall& call, pid_t process, int console, RigExit& result) {
    const Descriptor handle(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
    if (handle.get() < 0) {
        throw Fault("can't watch the rig's process: " + systemCause(errno));
    }
    auto before = Clock::now();
    const auto left = [&] { return call.timeLimit - result.seconds; };
    bool open = true;
    bool killed = false;
    for (;;) {
        pollfd polls[3] = {{handle.get(), POLLIN, 0},
                           {open ? console : -1, POLLIN, 0},
                           {call.heedInterrupt && !killed ? interruptDescriptor() : -1, POLLIN, 0}};
        const int wait = killed ? 200 : static_cast<int>(std::clamp(left() * 1000 + 1, 0.0, 200.0));
        const int ready = ::poll(polls, 3, wait);
        if (ready == 0 && call.seat != nullptr) {
            call.seat->keepGoing();
        }
        if (polls[1].revents != 0) {
            open = drain(console, call);
        }
        if (polls[0].revents != 0) {
            return;
        }
        if (call.output) {
            call.output({});
        }
        const auto now = Clock::now();
        if (call.seat == nullptr || !call.seat->stopped()) {
            result.seconds += std::chrono::duration<double>(now - before).count();
        }
        before = now;
        if (killed) {
            continue;
        }
        result.interrupted = call.heedInterrupt && interrupted();
        result.timedOut = !result.interrupted && left() <= 0;
        if (result.interrupted || result.timedOut) {
            ::kill(-process, SIGKILL);
            killed = true;
        }
    }
}

} // namespace

MemoryFile::MemoryFile(const std::string& text) : m_descriptor(-1) {
    // A name of the same length for all: where a process has its stack and its heap depends on its arguments, and with
    // that its clocks.
    const int descriptor = ::memfd_create("krlab", MFD_CLOEXEC);
    if (descriptor >= 0) {
        m_descriptor = ::fcntl(descriptor, F_DUPFD_CLOEXEC, firstMemoryDescriptor);
        ::close(descriptor);
    }
    if (m_descriptor < 0) {
        throw Fault("can't make a file in memory: " + systemCause(errno));
    }
    for (size_t done = 0; done < text.size();) {
        const ssize_t n = ::write(m_descriptor, text.data() + done, text.size() - done);
        if (n < 0 && errno != EINTR) {
            const int error = errno;
            ::close(m_descriptor);
            throw Fault("can't write to memory: " + systemCause(error));
        }
        done += n > 0 ? static_cast<size_t>(n) : 0;
    }
}

MemoryFile::~MemoryFile() {
    ::close(m_descriptor);
}

std::string MemoryFile::path() const {
    return "/proc/self/fd/" + std::to_string(m_descriptor);
}

std::string MemoryFile::read() const {
    std::string text;
    char block[65536];
    ssize_t n = 0;
    while ((n = ::pread(m_descriptor, block, sizeof block, static_cast<off_t>(text.size()))) > 0) {
        text.append(block, static_cast<size_t>(n));
    }
    return text;
}

RigExit callRig(const RigCall& call) {
    std::vector<std::string> words = call.keys;
    words.insert(words.begin(), call.subject.program.string());
    words.insert(words.begin(), call.launcher.begin(), call.launcher.end());
    std::vector<std::string> environment = environmentOf(call);
    const std::vector<char*> wordPointers = pointers(words);
    const std::vector<char*> environmentPointers = pointers(environment);
    Descriptor console;
    Descriptor consoleEnd;
    Descriptor report;
    Descriptor reportEnd;
    makePipe(console, consoleEnd);
    makePipe(report, reportEnd);

    RigExit result;
    const pid_t self = ::getpid();
    const pid_t process = [&] {
        const SignalsHeld held;
        // Its memory is not copied: a store with many readings would take milliseconds a process.
        const pid_t begun = ::vfork();
        if (begun == 0) {
            become(call, self, consoleEnd.get(), reportEnd.get(), held.before(),
                   const_cast<char**>(wordPointers.data()), const_cast<char**>(environmentPointers.data()));
        }
        return begun;
    }();
    if (process < 0) {
        throw Fault("can't start a process: " + systemCause(errno));
    }
    ::setpgid(process, process);
    guardGroup(process);
    if (call.seat != nullptr) {
        call.seat->started(process);
    }
    consoleEnd.close();
    reportEnd.close();
    int error = 0;
    const bool failed = ::read(report.get(), &error, sizeof error) == sizeof error;
    ::fcntl(console.get(), F_SETFL, O_NONBLOCK);
    if (!failed) {
        follow(call, process, console.get(), result);
    }
    if (call.seat != nullptr) {
        call.seat->exited();
    }
    // Whatever the rig may have started itself goes with it.
    ::kill(-process, SIGKILL);
    releaseGroup(process);
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    if (failed) {
        throw Fault(words.front(), "can't be started: " + systemCause(error));
    }
    drain(console.get(), call);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    return result;
}

} // namespace krlab
