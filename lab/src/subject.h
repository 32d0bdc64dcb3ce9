// What is measured: a rig program, a directory with the three shared objects, or both.
#pragma once

#include <filesystem>
#include <string>

namespace krlab {

struct Subject {
    std::string name;                ///< how reports call it
    std::filesystem::path program;   ///< the rig, an absolute path
    std::filesystem::path libraries; ///< directory for the loader's search path; empty for the program's own libraries
};

/// The rig beside this program, or an empty path if there is none.
std::filesystem::path defaultRig();

/// Reads `PATH` or `NAME=PATH`. PATH is a directory with libvekcore, libveks and libveksc (measured by `rig`), a rig
/// program, a directory that holds the program kelvarrig (and, in it or in its lib/, the objects), or
/// `PROGRAM,DIRECTORY`. Without a name the path stands for it. Throws Fault with what is missing.
Subject parseSubject(const std::string& text, const std::filesystem::path& rig);

} // namespace krlab
