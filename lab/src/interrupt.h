// Ctrl-C and termination: the first ends the work in order, the second ends at once; no rig process stays behind.
#pragma once

#include <sys/types.h>

namespace krlab {

/// Takes SIGINT, SIGTERM and SIGHUP over; once at the start of the program.
void watchInterrupts();
/// True from the first signal on.
bool interrupted();
/// A rig's process group that a second signal kills before the program ends; until releaseGroup().
void guardGroup(pid_t group);
void releaseGroup(pid_t group);
/// A descriptor that becomes readable with the first signal, for poll().
int interruptDescriptor();
/// As if a signal had come, for tests of what follows; `false` takes it back.
void setInterrupted(bool on);

} // namespace krlab
