// Commands as a user types them.
#include "shell.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <sys/wait.h>

namespace fs = std::filesystem;

// The checkout is made of links, its `build` is the tree that this test belongs to: nothing is built twice.
BesideTheCheckout::BesideTheCheckout() {
    const fs::path checkout = m_folder.path("kelvar-rig");
    fs::create_directory(checkout);
    for (const fs::directory_entry& entry : fs::directory_iterator(KELVARRIG_SOURCE)) {
        const std::string name = entry.path().filename().string();
        if (name[0] != '.' && name.rfind("build", 0) != 0) {
            fs::create_symlink(entry.path(), checkout / name);
        }
    }
    fs::create_directory_symlink(KELVARRIG_BUILD, checkout / "build");
}

ShellResult BesideTheCheckout::run(const std::string& script, const std::string& folder) const {
    m_folder.write("typed.sh", script);
    const std::string command = "cd '" + m_folder.path(folder) + "' && CMAKE_BUILD_PARALLEL_LEVEL=2 bash '" +
                                m_folder.path("typed.sh") + "' 2>&1";
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
