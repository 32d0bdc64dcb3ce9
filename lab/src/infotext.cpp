#include "infotext.h"

#include "text.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <optional>

namespace krlab {

namespace {

/// A function's name; the calendar time stands behind it, with one blank between if the name is long.
std::string_view firstWord(std::string_view text) {
    return text.substr(0, text.find(' '));
}

/// What stands before and behind the first `sign` of a text.
struct Entry {
    std::string_view key;
    std::string_view value;
};

std::optional<Entry> entryOf(std::string_view text, char sign) {
    const size_t at = text.find(sign);
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    return Entry{trimmed(text.substr(0, at)), trimmed(text.substr(at + 1))};
}

} // namespace

std::string threeDigits(double value) {
    return fmt::format("{:.3g}", value);
}

const InfoTest* InfoParser::current() const {
    return !m_tests.empty() && m_tests.back().end.result.empty() ? &m_tests.back() : nullptr;
}

void InfoParser::feed(std::string_view piece) {
    m_rest += piece;
    size_t start = 0;
    for (size_t end = m_rest.find('\n'); end != std::string::npos; end = m_rest.find('\n', start)) {
        readLine(std::string_view(m_rest).substr(start, end - start));
        start = end + 1;
    }
    m_rest.erase(0, start);
}

void InfoParser::finish() {
    if (!m_rest.empty()) {
        readLine(m_rest);
        m_rest.clear();
    }
}

void InfoParser::readLine(std::string_view line) {
    m_inKeys = m_inKeys && line.starts_with("-");
    if (line.starts_with("| ")) {
        readFramed(line.substr(2));
    } else if (line.starts_with("Command line options:")) {
        m_inKeys = true;
    } else if (m_inKeys) {
        m_echo.emplace_back(line);
    } else if (line.starts_with("    ")) {
        readCourse(line);
    } else if (line.starts_with("  ") && line.find("perf=") != std::string_view::npos) {
        readPerformance(line);
    } else if (line.starts_with("-- performance:") || line.starts_with("+-")) {
        return;
    } else if (line.starts_with("-") || line.starts_with("FATAL ERROR") || line.starts_with("KR internal error") ||
               line.starts_with("EXCEPTION")) {
        if (current() != nullptr) {
            m_tests.back().end.messages.emplace_back(trimmed(line));
        } else {
            m_remarks.emplace_back(trimmed(line));
        }
    } else if (current() != nullptr) {
        if (line.starts_with(" ") && !line.starts_with("  ")) {
            m_tests.back().grid.emplace_back(trimmed(line));
        } else if (!line.starts_with(" ")) {
            m_parameters = trimmed(line);
        }
    }
}

void InfoParser::readFramed(std::string_view text) {
    while (!text.empty() && (text.back() == '|' || text.back() == ' ')) {
        text.remove_suffix(1);
    }
    if (text == "KR Summary") {
        m_summarised = true;
        return;
    }
    if (text.starts_with("-")) {
        const std::string_view result = text.substr(1, text.find(' ') - 1);
        if (current() != nullptr) {
            m_tests.back().end.result = result;
            ++m_ended;
        }
        return;
    }
    const auto entry = entryOf(text, ':');
    if (!entry) {
        return;
    }
    const auto& [key, value] = *entry;
    if (key == "Function") {
        m_tests.emplace_back().end.function = firstWord(value);
    } else if (m_summarised) {
        if (key == ".Number of tests") {
            m_summaryTests = integerOf(value).value_or(0);
        }
    } else if (current() == nullptr) {
        if (key == "CPU") {
            m_processor = value;
        } else if (key == "Library") {
            m_library += (m_library.empty() ? "" : "; ") + std::string(value);
        }
    } else if (key == "Test") {
        m_tests.back().end.test = value;
    } else if (key == "Source") {
        m_tests.back().end.source = value;
    } else if (key == "Description") {
        m_tests.back().description = value;
    }
}

void InfoParser::beginMeasuring() {
    m_stage = Stage::none;
    m_loops = m_count = m_best = 0;
    m_told.clear();
}

void InfoParser::takeCount() {
    if (m_loops <= 0) {
        return;
    }
    const double clocks = m_count / m_loops;
    // Repeated measurements keep the least, and the iteration's last one is the first of them.
    m_best = m_stage == Stage::simple && m_best > 0 ? std::min(m_best, clocks) : clocks;
}

void InfoParser::readCourse(std::string_view line) {
    const std::string_view text = trimmed(line);
    if (text == "Auto method: start" || text == "Manual method:" || text == "Statistical method:") {
        beginMeasuring();
        return;
    }
    if (text == "Prior Measurement:") {
        m_stage = Stage::prior;
        return;
    }
    if (text == "Iteration Measurement:") {
        m_stage = Stage::iteration;
        return;
    }
    if (text == "Simple Measurements:") {
        m_stage = Stage::simple;
        return;
    }
    const auto entry = entryOf(text, '=');
    if (!entry) {
        return;
    }
    const auto& [key, value] = *entry;
    if (key == "funcClocks" || key == "bestClocks") {
        m_told = value;
        return;
    }
    // A count beyond nine digits is rounded in the text and would give no exact figure.
    const auto count = integerOf(value);
    if (key == "numLoops" || key == "stopLoops" || key == "numCalls") {
        m_loops = static_cast<double>(count.value_or(0));
    } else if (key == "numClocks" || key == "stopClocks") {
        m_count = static_cast<double>(count.value_or(0));
        if (count) {
            takeCount();
        } else {
            m_best = 0;
        }
    }
}

void InfoParser::readPerformance(std::string_view line) {
    if (current() == nullptr) {
        return;
    }
    InfoLine result;
    result.parameters = m_parameters;
    if (const size_t at = line.find("acc="); at != std::string_view::npos) {
        const size_t end = line.find('%', at);
        if (end != std::string_view::npos) {
            result.accuracy = numberOf(line.substr(at + 4, end - at - 4)).value_or(-100) / 100;
        }
    }
    for (const std::string_view key : {"nLps=", "nCalls="}) {
        if (const size_t at = line.find(key); at != std::string_view::npos) {
            const size_t start = at + key.size();
            result.loops = integerOf(line.substr(start, line.find(' ', start) - start)).value_or(0);
        }
    }
    const std::string_view figures = line.substr(line.find("perf=") + 5);
    const size_t slash = figures.find('/');
    const size_t equal = figures.find('=');
    const size_t unit = figures.find(" clocks");
    if (slash == std::string_view::npos || equal == std::string_view::npos || unit == std::string_view::npos ||
        equal < slash || unit < equal) {
        return;
    }
    const std::string_view told = trimmed(figures.substr(0, slash));
    result.clocks = numberOf(told).value_or(0);
    result.elements = numberOf(trimmed(figures.substr(slash + 1, equal - slash - 1))).value_or(0);
    result.perElement = numberOf(trimmed(figures.substr(equal + 1, unit - equal - 1))).value_or(0);
    // After bad control statuses the rig may fall back to a measurement whose counts it does not print.
    if (m_best > 0 && threeDigits(m_best) == told) {
        result.clocks = m_best;
        result.exact = true;
    }
    m_tests.back().lines.push_back(std::move(result));
    beginMeasuring();
}

} // namespace krlab
