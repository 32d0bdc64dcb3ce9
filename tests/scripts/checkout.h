// A checkout of nothing but the scripts, with commands that stand in for what they would call.
#pragma once

#include "rig_process.h"

#include <string>
#include <vector>

/// Its folder has a blank and letters beyond ASCII in its name. The only commands there are those of a small system and
/// these, which note each call: a cmake that makes the folder of a preset and "builds" programs that show their words
/// in angle brackets, a ctest that takes 0.2 s, and a dpkg that knows every package.
class Checkout {
public:
    Checkout();

    /// Types a command in the checkout.
    RigResult type(const std::string& command, const RigConsole& console = RigConsole()) const;
    /// A command that is there from now on, as a script of bash; `calls` notes them.
    void standIn(const std::string& command, const std::string& script) const;
    void takeAway(const std::string& command) const;
    /// All calls so far, one a line.
    std::string calls() const { return m_home.exists("calls") ? m_home.read("calls") : ""; }
    void forgetCalls() const;

    std::string path() const { return m_home.file(s_folder); }
    void write(const std::string& name, const std::string& text) const { m_home.write(s_folder + "/" + name, text); }
    bool exists(const std::string& name) const { return m_home.exists(s_folder + "/" + name); }
    std::string read(const std::string& name) const { return m_home.read(s_folder + "/" + name); }

private:
    static const std::string s_folder;
    RigDirectory m_home;
};

/// What a command tells when it is typed in the checkout, and its exit status.
void expectTyped(const Checkout& checkout, const std::string& command, const std::string& told, int exitCode);
