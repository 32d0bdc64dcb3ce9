// Fault containment: the harness's one exception type, and the signal handler that turns a crash of a measured function
// into it. Where faults are caught is stated in krtest and krdefault.
#pragma once

#include "krstring.h"

#include <csetjmp>
#include <csignal>
#include <cstring>
#include <exception>

/// A bad input of the harness (message and info) or a trapped signal (message alone).
class krException : public std::exception {
public:
    /// "--VEK. Exception: %s"; the text is also the info.
    explicit krException(const krString& text);
    /// "--VEK. Signal: %s"; there is no info.
    explicit krException(const char* text);
    const char* msg() const { return m_msg; }
    const char* info() const { return m_info; }
    const char* what() const noexcept override { return m_msg; }

private:
    char m_msg[256] = {};
    char m_info[256] = {};
};

/// The trap of SIGFPE, SIGILL and SIGSEGV. Each guarded section marks `m_jmpbuf`; the handler does nothing but jump.
class tsSignal {
public:
    tsSignal();
    static void sig_fpe(int signal);
    static int code() { return m_code; }
    /// The text of the last signal.
    static const char* getInfo();
    /// Sets handlers, alternate stack and mask as they must be at the start of a guarded section, whatever a function
    /// left behind. A write to a closed pipe or beyond the size limit is answered by an error and not by the end of the
    /// process.
    static void arm();
    /// After a jump: lets the signal through again, closes the priority bracket and sets the floating-point words anew,
    /// so that any number of faults cost one test each.
    static void contain();

    static jmp_buf m_jmpbuf;
    static int m_code;
    /// Whether this thread waits at the mark; a fault outside every guarded section, or in a thread of the library,
    /// ends the process as usual.
    static inline thread_local volatile sig_atomic_t m_armed = 0;
};

/// Keeps the mark of the outer section while an inner one uses it: declare it, then call setjmp on tsSignal::m_jmpbuf.
class krFaultMark {
public:
    krFaultMark() : m_outerArmed(tsSignal::m_armed) {
        std::memcpy(&m_outer, &tsSignal::m_jmpbuf, sizeof m_outer);
        tsSignal::m_armed = 1;
    }
    krFaultMark(const krFaultMark&) = delete;
    krFaultMark& operator=(const krFaultMark&) = delete;
    ~krFaultMark() {
        std::memcpy(&tsSignal::m_jmpbuf, &m_outer, sizeof m_outer);
        tsSignal::m_armed = m_outerArmed;
    }

private:
    jmp_buf m_outer;
    sig_atomic_t m_outerArmed;
};

extern tsSignal _g_signal; // NOLINT(bugprone-reserved-identifier)
