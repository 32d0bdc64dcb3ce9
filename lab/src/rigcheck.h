// The rig as a gate: all that can be wrong with a run without the rig's exit status telling it.
#pragma once

#include "console.h"
#include "infotext.h"
#include "pass.h"
#include "rigkeys.h"
#include "rigprocess.h"

#include <string>
#include <vector>

namespace krlab {

/// What is wrong with the keys, before anything is measured: words that the rig drops, patterns that select nothing,
/// names in -d that no selected test has. `all` are all tests of the rig, `selected` the ones that the keys select.
std::vector<std::string> faultsOfKeys(const RigKeys& keys, const std::vector<TestName>& all,
                                      const std::vector<TestParameters>& selected);

/// What was wrong with the run: keys that the rig ignored, values and files that it refused, tests that failed, an end
/// without a summary.
std::vector<std::string> faultsOfRun(const InfoParser& info, const RigExit& exit, double timeLimit);

/// What is wrong with the table files: each must hold a row for every line that the console told.
std::vector<std::string> faultsOfTables(const RigKeys& keys, const Subject& subject, const InfoParser& info);

} // namespace krlab
