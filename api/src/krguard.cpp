// Guards of the process: exit and fork.
#include "krguard.h"

#include "krstream.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

// The process of the run while it is guarded; 0 otherwise.
static pid_t s_process = 0;
// The name of what is in work, or null. Of the process.
static const krString* (*s_workName)() = nullptr;

// Objects of the suites outlive the streams, so the way through the destructors is not open here.
static void exitInTheMidst(int status, void* /*unused*/) {
    if (s_process == 0) {
        return;
    }
    if (getpid() == s_process) {
        g_ostrm << ERR << "-- The run is cut short: exit(" << status << ") in " << g_trace.getCurName();
        if (const krString* name = s_workName()) {
            g_ostrm << " of " << *name;
        }
        g_ostrm << "\n" << msgEnd;
        krTellLosses();
        status = status != 0 ? status : EXIT_FAILURE;
    }
    std::fflush(nullptr);
    _exit(status);
}

void krGuardProcess(const krString* (*workName)()) {
    s_workName = workName;
    s_process = getpid();
    on_exit(exitInTheMidst, nullptr);
}

void krProcessIsOver() {
    s_process = 0;
}

void krBeforeMeasuredCode() {
    std::fflush(nullptr);
}

void krEndForkedChild() {
    if (s_process != 0 && getpid() != s_process) {
        _exit(EXIT_FAILURE);
    }
}
