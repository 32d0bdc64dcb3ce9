// Runs the companion in a directory of its own and keeps what it says.
#pragma once

#include "tempdir.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace krlab {

struct LabResult {
    int status = -1; ///< exit status; 128 + signal as the shell tells it
    std::string out;
    std::string err;
};

class LabDirectory : public TempDir {
public:
    /// The words are quoted for the shell. The rig is the quick one, unless they name one.
    LabResult run(std::vector<std::string> words) const {
        std::string command = "cd '" + path() + "' && '" + KRLAB + "'";
        if (std::find(words.begin(), words.end(), "--rig") == words.end()) {
            words.insert(words.begin(), {"--rig", QUICKRIG});
        }
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
    /// Starts it without waiting.
    pid_t start(const std::vector<std::string>& words) const {
        std::vector<std::string> all = words;
        all.insert(all.begin(), KRLAB);
        std::vector<char*> pointers;
        for (std::string& word : all) {
            pointers.push_back(word.data());
        }
        pointers.push_back(nullptr);
        const pid_t process = ::fork();
        if (process == 0) {
            const std::string out = path("out");
            const std::string err = path("err");
            if (::chdir(path().c_str()) != 0 || std::freopen(out.c_str(), "w", stdout) == nullptr ||
                std::freopen(err.c_str(), "w", stderr) == nullptr) {
                ::_exit(126);
            }
            ::execv(KRLAB, pointers.data());
            ::_exit(127);
        }
        return process;
    }
    LabResult wait(pid_t process) const {
        int code = 0;
        ::waitpid(process, &code, 0);
        LabResult result;
        result.status = WIFEXITED(code) ? WEXITSTATUS(code) : 128 + WTERMSIG(code);
        result.out = read("out");
        result.err = read("err");
        return result;
    }
    /// Runs the rig itself here, with its files in this directory.
    void rig(const std::string& keys) const {
        const std::string command = std::string(QUICKRIG) + " -B -l'" + path() + "' " + keys + " >/dev/null 2>&1";
        [[maybe_unused]] const int code = std::system(command.c_str());
    }
};

/// Waits up to half a minute until the condition holds.
inline bool comesTrue(const std::function<bool()>& condition) {
    for (int i = 0; i < 1500; ++i) {
        if (condition()) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
}

} // namespace krlab
