// What keeps a run whole against what a measured function does to the process, beside a fault (krexcept): it may call
// exit, or fork.
#pragma once

#include "krstring.h"

/// From here on an exit that does not come from main tells where it struck, writes what is buffered and fails.
/// `workName` gives the name of the test in work, null for none.
void krGuardProcess(const krString* (*workName)());
/// The run is over: an exit is the regular one.
void krProcessIsOver();
/// Nothing is left in a buffer that a child of a measured function could write a second time.
void krBeforeMeasuredCode();
/// Ends a child of a measured function that has come back into the harness: the run goes on in its parent.
void krEndForkedChild();
