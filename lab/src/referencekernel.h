// A fixed piece of work of the lab itself. What it takes tells the machine's state and nothing of what is measured.
#pragma once

namespace krlab {

/// A chain of `count` additions, which takes one clock of the core for each.
unsigned long long referenceKernel(unsigned long long count);

/// Clocks of the counter for a thousand additions: the median of readings over this many seconds, so that phases in
/// which everything runs slower tell only if they fill half of the time.
double referenceClocks(double seconds = 0.1);

} // namespace krlab
