// Commands as a user types them, in a folder in which the checkout lies as `kelvar-rig`.
#pragma once

#include "shellscript.h"

#include <string>

/// An empty folder beside a checkout that has been built.
class BesideTheCheckout {
public:
    BesideTheCheckout();

    /// Runs a script of the shell in the folder, or in a folder in it.
    ShellResult run(const std::string& script, const std::string& folder = "") const;
    const TempDir& folder() const { return m_folder; }

private:
    TempDir m_folder;
};
