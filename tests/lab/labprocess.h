// Runs the companion in a directory of its own and keeps what it says.
#pragma once

#include "tempdir.h"

#include <cstdlib>
#include <string>
#include <sys/wait.h>
#include <vector>

namespace krlab {

struct LabResult {
    int status = -1; ///< exit status; 128 + signal as the shell tells it
    std::string out;
    std::string err;
};

class LabDirectory : public TempDir {
public:
    /// The words are quoted for the shell.
    LabResult run(const std::vector<std::string>& words) const {
        std::string command = "cd '" + path() + "' && '" + KRLAB + "'";
        for (const std::string& word : words) {
            command += " '" + word + "'";
        }
        command += " >out 2>err </dev/null";
        const int code = std::system(command.c_str());
        LabResult result;
        result.status = WIFEXITED(code) ? WEXITSTATUS(code) : 128 + WTERMSIG(code);
        result.out = read("out");
        result.err = read("err");
        return result;
    }
    /// Runs the rig itself here, with its files in this directory.
    void rig(const std::string& keys) const {
        const std::string command = std::string(KELVARRIG) + " -B -l'" + path() + "' " + keys + " >/dev/null 2>&1";
        [[maybe_unused]] const int code = std::system(command.c_str());
    }
};

} // namespace krlab
