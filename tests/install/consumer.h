// A project of someone else: its own library, and a rig that measures a function of it.
#pragma once

#include "shellscript.h"

#include <string>

/// A compiler, as the tests name it.
struct Compiler {
    const char* name;
    const char* c;
    const char* cxx;
};

/// Skips the test where the compiler is not installed.
#define KR_SKIP_WITHOUT(program)                                                                                       \
    if (!isInstalled(program)) {                                                                                       \
        GTEST_SKIP() << (program) << " is not installed";                                                              \
    }                                                                                                                  \
    static_assert(true)
bool isInstalled(const std::string& program);

/// An empty folder with a blank in its name, where the ten lines and the function are written.
class Consumer {
public:
    Consumer();

    /// Runs commands in the folder, up to the first that fails.
    ShellResult run(const std::string& script) const { return runShellScript(m_parent, "set -e\n" + script, s_name); }
    void write(const std::string& name, const std::string& text) const { m_parent.write(s_name + ("/" + name), text); }
    std::string path(const std::string& name = "") const { return m_parent.path(s_name + ("/" + name)); }
    bool exists(const std::string& name) const { return m_parent.exists(s_name + ("/" + name)); }
    std::string read(const std::string& name) const { return m_parent.read(s_name + ("/" + name)); }
    /// Clocks per element in a table's row of a function; below 0 without such a row.
    double clocks(const std::string& table, const std::string& function) const;

private:
    static constexpr const char* s_name = "my rig";
    TempDir m_parent;
};

/// The keys of a run that leaves the table `out.csv` in the present folder, quickly.
extern const char* const quickKeys;
/// A prefix, with a blank in its path, into which the build under test has been installed. It is not to be changed.
const std::string& installedPrefix();
/// `"text"`, for the shell.
std::string inQuotes(const std::string& text);
