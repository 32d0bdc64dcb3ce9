#include "console.h"

#include <cmath>
#include <cstdio>
#include <fmt/format.h>
#include <unistd.h>

namespace krlab {

Console::Console(bool quiet)
    : m_quiet(quiet), m_terminal(!quiet && ::isatty(STDERR_FILENO) == 1), m_start(std::chrono::steady_clock::now()) {
}

void Console::note(const std::string& text) {
    if (!m_quiet) {
        warn(text);
    }
}

void Console::warn(const std::string& text) {
    clear();
    fmt::print(stderr, "{}\n", text);
}

void Console::progress(const std::string& text, double share) {
    const auto now = std::chrono::steady_clock::now();
    if (!m_terminal || (m_shown && now - m_last < std::chrono::milliseconds(100))) {
        return;
    }
    m_last = now;
    m_shown = true;
    std::string line = text;
    if (share > 0 && share <= 1) {
        const double spent = std::chrono::duration<double>(now - m_start).count();
        line += fmt::format("  {:.0f} %, {} left", share * 100, durationText(spent * (1 - share) / share));
    }
    // One line that never wraps: what does not fit in the usual width is cut off.
    fmt::print(stderr, "\r\033[K{:.79}", line);
    std::fflush(stderr);
}

void Console::clear() {
    if (m_shown) {
        fmt::print(stderr, "\r\033[K");
        m_shown = false;
    }
}

std::string durationText(double seconds) {
    const long long whole = std::llround(seconds);
    if (whole < 60) {
        return fmt::format("{}s", whole);
    }
    if (whole < 3600) {
        return fmt::format("{}m {:02}s", whole / 60, whole % 60);
    }
    return fmt::format("{}h {:02}m", whole / 3600, whole / 60 % 60);
}

} // namespace krlab
