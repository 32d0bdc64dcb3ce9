// Where the rig puts and seeks its files: its own rules for the names behind keys.
#pragma once

#include "rigkeys.h"
#include "subject.h"

#include <filesystem>
#include <string>

namespace krlab {

/// A file for output: relative names stand in the directory of -l or beside the rig, a name without a dot gets the
/// ending, an empty one is the title of -n or of the program.
std::filesystem::path rigOutputPath(const RigKeys& keys, const Subject& subject, const std::string& argument,
                                    const std::string& ending);
/// A file for input, by the directory of -p.
std::filesystem::path rigInputPath(const RigKeys& keys, const Subject& subject, const std::string& argument,
                                   const std::string& ending);

} // namespace krlab
