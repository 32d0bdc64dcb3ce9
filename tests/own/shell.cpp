// Commands as a user types them.
#include "shell.h"

#include <filesystem>

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
    return runShellScript(m_folder, script, folder);
}
