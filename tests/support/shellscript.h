// Commands as a user types them.
#pragma once

#include "tempdir.h"

#include <cstdio>
#include <string>
#include <sys/wait.h>

/// How a command ended, and what it wrote, errors included.
struct ShellResult {
    int exitCode = -1;
    std::string out;
};

/// Runs a script of the shell in `folder`, or in a folder in it. The script itself lies in `folder` as typed.sh.
inline ShellResult runShellScript(const TempDir& folder, const std::string& script, const std::string& below = "") {
    folder.write("typed.sh", script);
    const std::string command =
        "cd '" + folder.path(below) + "' && CMAKE_BUILD_PARALLEL_LEVEL=2 bash '" + folder.path("typed.sh") + "' 2>&1";
    ShellResult result;
    FILE* pipe = popen(command.c_str(), "r");
    char buffer[65536];
    for (size_t n = 1; n > 0;) {
        n = fread(buffer, 1, sizeof buffer, pipe);
        result.out.append(buffer, n);
    }
    const int status = pclose(pipe);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}
