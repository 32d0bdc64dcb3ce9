// Which core leaves a program alone: found by running on it for a moment.
#pragma once

#include <sched.h>

namespace krlab {

/// A core of `allowed`: `present` if it is quiet (-1: there is none yet), else the quietest of the first few. A core is
/// quiet if it takes less than a hundredth of the time away from a program that wants all of it. Each core that is
/// tried takes some hundredths of a second. -1 if `allowed` is empty.
int quietCore(const cpu_set_t& allowed, int present);

} // namespace krlab
