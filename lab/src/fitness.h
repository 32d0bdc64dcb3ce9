// Judging a machine's state: how much each thing disturbs, and what to do about it.
#pragma once

#include "machinestate.h"

#include <string>
#include <vector>

namespace krlab {

struct Finding {
    enum class Grade { good, fair, bad };
    Grade grade = Grade::good;
    std::string what;
    std::string text;
    std::string advice; ///< empty if there is nothing to do
};

const char* gradeName(Finding::Grade grade);
std::vector<Finding> judgeMachine(const MachineState& state, const MachineTrial& trial);
Finding judgeBuild(const std::string& library, const BuildQuality& quality);

} // namespace krlab
