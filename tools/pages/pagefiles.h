// The templates of a command's man page and completions, and the files that are made of them.
#pragma once

#include <map>
#include <string>

namespace pages {

/// What stands in a template for "@NAME@", by the name.
using Values = std::map<std::string, std::string>;

/// What the programs that write pages are told on their command lines.
struct PageCall {
    std::string templates; ///< folder of the templates
    std::string share;     ///< folder that gets the pages, as a system's share/ has them
    Values common;         ///< DATE and VERSION
};

/// Reads TEMPLATES SHARE DATE VERSION. Throws std::runtime_error.
PageCall readCall(int argc, char** argv);

/// The template with its values in place. Throws std::runtime_error for a name that has no value.
std::string filled(const std::string& text, const Values& values);

/// Fills and writes the page and the completions of a command. `forBash`, `forZsh`, `forFish` hold what each shell
/// spells its own way. Throws std::runtime_error with the file and the cause.
void writePages(const PageCall& call, const std::string& command, const Values& forMan, const Values& forBash,
                const Values& forZsh, const Values& forFish);

/// Runs what writes pages; a failure is told in the program's name. Returns the exit status.
int runPages(const char* program, void (*run)(int, char**), int argc, char** argv);

} // namespace pages
