#include "rigpaths.h"

namespace krlab {

namespace {

std::filesystem::path rigPath(const RigKeys& keys, const Subject& subject, char directoryKey,
                              const std::string& argument, const std::string& ending) {
    std::filesystem::path path = argument;
    if (path.is_absolute()) {
        return path;
    }
    if (argument.empty()) {
        const std::string* title = keys.last('n');
        path = (title != nullptr && !title->empty() ? *title : subject.program.stem().string()) + ending;
    } else if (argument.find('.') == std::string::npos) {
        path += ending;
    }
    const std::string* directory = keys.last(directoryKey);
    return subject.program.parent_path() / (directory != nullptr ? *directory : "") / path;
}

} // namespace

std::filesystem::path rigOutputPath(const RigKeys& keys, const Subject& subject, const std::string& argument,
                                    const std::string& ending) {
    return rigPath(keys, subject, 'l', argument, ending);
}

std::filesystem::path rigInputPath(const RigKeys& keys, const Subject& subject, const std::string& argument,
                                   const std::string& ending) {
    return rigPath(keys, subject, 'p', argument, ending);
}

} // namespace krlab
