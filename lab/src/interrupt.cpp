#include "interrupt.h"

#include "fault.h"

#include <array>
#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace krlab {

namespace {

std::atomic<int> s_count{0};
// Rigs that run at once are few; a free place holds 0.
std::array<std::atomic<pid_t>, 16> s_groups{};
int s_pipe[2] = {-1, -1};

void onSignal(int) {
    if (s_count.fetch_add(1) == 0) {
        [[maybe_unused]] const ssize_t written = ::write(s_pipe[1], "!", 1);
        return;
    }
    for (const std::atomic<pid_t>& place : s_groups) {
        if (const pid_t group = place.load(); group > 0) {
            ::kill(-group, SIGKILL);
        }
    }
    ::_exit(exitInterrupted);
}

void replaceGroup(pid_t from, pid_t to) {
    for (std::atomic<pid_t>& place : s_groups) {
        pid_t expected = from;
        if (place.compare_exchange_strong(expected, to)) {
            return;
        }
    }
}

} // namespace

void watchInterrupts() {
    if (s_pipe[0] >= 0) {
        return;
    }
    if (::pipe2(s_pipe, O_CLOEXEC | O_NONBLOCK) != 0) {
        throw Fault("can't make a pipe: " + systemCause(errno));
    }
    struct sigaction action {};
    action.sa_handler = onSignal;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        ::sigaction(signal, &action, nullptr);
    }
}

bool interrupted() {
    return s_count.load() > 0;
}

void guardGroup(pid_t group) {
    replaceGroup(0, group);
}

void releaseGroup(pid_t group) {
    replaceGroup(group, 0);
}

int interruptDescriptor() {
    return s_pipe[0];
}

void setInterrupted(bool on) {
    s_count = on ? 1 : 0;
    // What a signal has left would wake all who wait from now on.
    for (char byte = 0; !on && s_pipe[0] >= 0 && ::read(s_pipe[0], &byte, 1) == 1;) {
    }
}

} // namespace krlab
