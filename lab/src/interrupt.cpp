#include "interrupt.h"

#include "fault.h"

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace krlab {

namespace {

std::atomic<int> s_count{0};
std::atomic<pid_t> s_group{0};
int s_pipe[2] = {-1, -1};

void onSignal(int) {
    if (s_count.fetch_add(1) == 0) {
        [[maybe_unused]] const ssize_t written = ::write(s_pipe[1], "!", 1);
        return;
    }
    if (const pid_t group = s_group.load(); group > 0) {
        ::kill(-group, SIGKILL);
    }
    ::_exit(exitInterrupted);
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
    s_group = group;
}

int interruptDescriptor() {
    return s_pipe[0];
}

void setInterrupted(bool on) {
    s_count = on ? 1 : 0;
}

} // namespace krlab
