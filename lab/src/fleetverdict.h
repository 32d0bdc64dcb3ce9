// Verdicts from the passes of a fleet: on each kind of machine, and over all of them.
#pragma once

#include "store.h"
#include "verdict.h"

#include <string>

namespace krlab {

struct FleetChoice {
    std::string plan; ///< identity or name of the plan; empty for the one that was merged last
    /// Names of its subjects; empty for its first and its second.
    std::string older;
    std::string newer;
    double threshold = 0.03;
    double confidence = 0.99;
};

/// The two passes of a round are a pair, as with `ab`, and the interval of a line's ratio is that of its low readings
/// (rounds.h). Machines are of one kind if CPUID tells the same of them; figures of one kind and one setting of the
/// plan are judged together. Over all of them the readings of each kind count less their own level: the least one of
/// both subjects, which knows nothing of who is the old one. All lines of all kinds, and those over all, are accounted
/// for together by Holm's step-down. Throws Fault if there is nothing of that choice.
VerdictReport fleetVerdict(const Store& store, const FleetChoice& choice);

/// What tells a kind of machine: "family 6 model 143 stepping 8".
std::string machineKind(const Machine& machine);

} // namespace krlab
