// The rounds of `ab`: passes of two subjects that take turns, test by test, until all lines are decided or the time is
// up, every pass kept in the store, and what went wrong on the way.
#pragma once

#include "pass.h"
#include "store.h"
#include "trial.h"

#include <functional>
#include <map>
#include <random>
#include <set>

namespace krlab {

struct AbOptions {
    std::array<Subject, 2> subjects; ///< old, new
    std::vector<std::string> keys;   ///< the user's keys for the rig
    TrialOptions trial;
    double seconds = 120;   ///< for all rounds
    double passLimit = 120; ///< of one rig process
    unsigned long seed = 0;
    Store* store = nullptr; ///< none: nothing is kept
    long long run = 0;      ///< number of the run in the store
    std::function<void(const std::string& text, double share)> progress;
    std::function<void(const std::string& text)> note;
};

/// Measures and judges. Throws Fault if a subject can't be measured at all.
VerdictReport runAb(const AbOptions& options);

} // namespace krlab
