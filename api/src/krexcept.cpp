// Fault containment: the handler, and what is put in order after its jump.
#include "krexcept.h"

#include "krcputick.h"
#include "krctrl87.h"

#include <cstdio>
#include <unistd.h>

jmp_buf tsSignal::m_jmpbuf;
int tsSignal::m_code = 0;
tsSignal _g_signal;

// A fault deep in the stack, a run-away recursion say, leaves no room for the handler there.
static constexpr size_t handlerStackSize = 64 * 1024;
alignas(16) static char handlerStack[handlerStackSize];

krException::krException(const krString& text) {
    std::snprintf(m_info, sizeof m_info, "%s", text.c_str());
    std::snprintf(m_msg, sizeof m_msg, "--VEK. Exception: %s", text.c_str());
}

krException::krException(const char* text) {
    std::snprintf(m_msg, sizeof m_msg, "--VEK. Signal: %s", text);
}

tsSignal::tsSignal() {
    arm();
}

void tsSignal::arm() {
    stack_t stack = {};
    stack.ss_sp = handlerStack;
    stack.ss_size = handlerStackSize;
    sigaltstack(&stack, nullptr);
    struct sigaction action = {};
    action.sa_handler = sig_fpe;
    action.sa_flags = SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    sigset_t open;
    sigemptyset(&open);
    for (const int trapped : {SIGFPE, SIGILL, SIGSEGV}) {
        sigaction(trapped, &action, nullptr);
        sigaddset(&open, trapped);
    }
    sigprocmask(SIG_UNBLOCK, &open, nullptr);
    for (const int ofWriting : {SIGPIPE, SIGXFSZ}) {
        std::signal(ofWriting, SIG_IGN);
    }
}

void tsSignal::sig_fpe(int signal) {
    m_code = signal;
    if (m_armed == 0) {
        if (gettid() != getpid()) {
            constexpr char message[] = "-- The run is cut short: a fault in another thread\n";
            static_cast<void>(!write(STDOUT_FILENO, message, sizeof message - 1));
        }
        // Nobody waits: the default action, as the fault strikes again on return.
        std::signal(signal, SIG_DFL);
        return;
    }
    longjmp(m_jmpbuf, -1);
}

const char* tsSignal::getInfo() {
    switch (m_code) {
    case SIGFPE:
        return "FP error, such as overflow, division by zero, invalid operation.";
    case SIGILL:
        return "Illegal instruction.";
    case SIGSEGV:
        return "Illegal storage access.";
    default:
        return "Unknown exception";
    }
}

void tsSignal::contain() {
    sigset_t trapped;
    sigemptyset(&trapped);
    sigaddset(&trapped, m_code);
    sigprocmask(SIG_UNBLOCK, &trapped, nullptr);
    krResetPriority();
    krRestoreCtrlWords();
}
