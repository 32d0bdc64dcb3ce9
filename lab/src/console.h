// What the program says while it works: notes and the progress with the time left, on a terminal only.
#pragma once

#include <chrono>
#include <string>

namespace krlab {

/// Notes go to standard error, so that standard output holds nothing but the report.
class Console {
public:
    explicit Console(bool quiet = false);

    /// A line that the user should see, also in a file; not with --quiet.
    void note(const std::string& text);
    /// A line that is never left out.
    void warn(const std::string& text);
    /// Shows "text  done/all  time left" in place of the last one; nothing of it in a file or pipe or with --quiet.
    void progress(const std::string& text, double share);
    /// Takes the progress off the screen.
    void clear();
    bool quiet() const { return m_quiet; }

private:
    bool m_quiet;
    bool m_terminal;
    bool m_shown = false;
    std::chrono::steady_clock::time_point m_start;
    std::chrono::steady_clock::time_point m_last;
};

/// "2m 05s", "14s".
std::string durationText(double seconds);

} // namespace krlab
