#include "subject.h"

#include "fault.h"

#include <array>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>
#include <vector>

namespace krlab {

namespace fs = std::filesystem;

namespace {

constexpr const char* rigName = "kelvarrig";
constexpr std::array<const char*, 3> libraryNames = {"libvekcore.so.1", "libveks.so.1", "libveksc.so.1"};

std::vector<std::string> missingLibraries(const fs::path& directory) {
    std::vector<std::string> missing;
    std::error_code error;
    for (const char* name : libraryNames) {
        if (!fs::exists(directory / name, error)) {
            missing.emplace_back(name);
        }
    }
    return missing;
}

bool isProgram(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

void setLibraries(Subject& subject, const fs::path& directory) {
    const std::vector<std::string> missing = missingLibraries(directory);
    if (!missing.empty()) {
        throw Fault(directory.string(), fmt::format("{} {} not there; name a directory with all three libraries",
                                                    fmt::join(missing, ", "), missing.size() == 1 ? "is" : "are"));
    }
    subject.libraries = fs::canonical(directory);
}

void setProgram(Subject& subject, const fs::path& program) {
    if (!isProgram(program)) {
        throw Fault(program.string(), "this is no rig program that can be run");
    }
    subject.program = fs::absolute(program).lexically_normal();
}

void setDirectory(Subject& subject, const fs::path& directory, const fs::path& rig) {
    const bool hasProgram = isProgram(directory / rigName);
    const fs::path below = directory / "lib";
    if (missingLibraries(directory).empty()) {
        setLibraries(subject, directory);
    } else if (missingLibraries(below).empty()) {
        setLibraries(subject, below);
    } else if (!hasProgram) {
        setLibraries(subject, directory); // tells what is missing
    }
    setProgram(subject, hasProgram ? directory / rigName : rig);
}

} // namespace

fs::path defaultRig() {
    std::error_code error;
    const fs::path self = fs::read_symlink("/proc/self/exe", error);
    const fs::path rig = self.parent_path() / rigName;
    return !error && isProgram(rig) ? rig : fs::path();
}

Subject parseSubject(const std::string& text, const fs::path& rig) {
    Subject subject;
    std::string path = text;
    const size_t cut = text.find('=');
    // A path may hold a "=" of its own: then it begins with a slash or a dot, as no name does.
    if (cut != std::string::npos && cut > 0 && text.find('/') > cut && text[0] != '.') {
        subject.name = text.substr(0, cut);
        path = text.substr(cut + 1);
    }
    if (path.empty()) {
        throw Fault(fmt::format("'{}' names no subject; write PATH or NAME=PATH", text));
    }
    std::error_code error;
    const size_t comma = path.find(',');
    if (fs::is_directory(path, error)) {
        setDirectory(subject, path, rig);
    } else if (fs::exists(path, error)) {
        setProgram(subject, path);
    } else if (comma != std::string::npos) {
        setProgram(subject, path.substr(0, comma));
        setLibraries(subject, path.substr(comma + 1));
    } else {
        throw Fault(path, "there is no such file or directory");
    }
    if (subject.name.empty()) {
        subject.name = path;
    }
    return subject;
}

} // namespace krlab
