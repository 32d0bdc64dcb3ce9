#include "line.h"

#include "fault.h"

#include <algorithm>
#include <cctype>
#include <fmt/format.h>

namespace krlab {

namespace {

bool needsQuotes(std::string_view word) {
    return word.empty() || word.find_first_of(" \t\r\n\"\\=") != std::string_view::npos;
}

void appendWord(std::string& out, std::string_view word) {
    if (!needsQuotes(word)) {
        out += word;
        return;
    }
    out += '"';
    for (const char c : word) {
        if (c == '"' || c == '\\') {
            out += '\\';
        }
        out += c;
    }
    out += '"';
}

/// Reads words of a line's text form from the left.
class WordReader {
public:
    explicit WordReader(std::string_view text) : m_text(text) {}

    void skipBlanks() {
        while (m_at < m_text.size() && (m_text[m_at] == ' ' || m_text[m_at] == '\t')) {
            ++m_at;
        }
    }
    bool atEnd() const { return m_at >= m_text.size(); }
    bool take(char c) {
        if (atEnd() || m_text[m_at] != c) {
            return false;
        }
        ++m_at;
        return true;
    }
    std::string word() {
        if (take('"')) {
            return quoted();
        }
        const size_t start = m_at;
        while (!atEnd() && m_text[m_at] != ' ' && m_text[m_at] != '\t' && m_text[m_at] != '=') {
            ++m_at;
        }
        return std::string(m_text.substr(start, m_at - start));
    }
    [[noreturn]] void fail(const std::string& text) const {
        throw Fault(fmt::format("'{}' is not a line: {}; write FUNCTION NAME=VALUE ..., a name with blanks in quotes",
                                m_text, text));
    }

private:
    std::string quoted() {
        std::string word;
        while (!take('"')) {
            take('\\');
            if (atEnd()) {
                fail("a quote is not closed");
            }
            word += m_text[m_at++];
        }
        return word;
    }

    std::string_view m_text;
    size_t m_at = 0;
};

/// Length of a type word such as 16s or 32fc at the start of `text`, 0 if there is none.
size_t typeLength(std::string_view text) {
    size_t n = 0;
    while (n < text.size() && std::isdigit(static_cast<unsigned char>(text[n])) != 0) {
        ++n;
    }
    if (n == 0 || n == text.size() || std::string_view("usf").find(text[n]) == std::string_view::npos) {
        return 0;
    }
    ++n;
    return n < text.size() && text[n] == 'c' ? n + 1 : n;
}

} // namespace

std::string Line::text() const {
    std::string out;
    appendWord(out, function);
    for (const Parameter& parameter : parameters) {
        out += ' ';
        appendWord(out, parameter.name);
        out += '=';
        appendWord(out, parameter.value);
    }
    return out;
}

const std::string* Line::value(std::string_view name) const {
    for (const Parameter& parameter : parameters) {
        if (parameter.name == name) {
            return &parameter.value;
        }
    }
    return nullptr;
}

Line Line::parse(std::string_view text) {
    WordReader reader(text);
    reader.skipBlanks();
    Line line;
    line.function = reader.word();
    if (line.function.empty()) {
        reader.fail("it has no function");
    }
    for (reader.skipBlanks(); !reader.atEnd(); reader.skipBlanks()) {
        Parameter parameter;
        parameter.name = reader.word();
        if (!reader.take('=')) {
            reader.fail(fmt::format("'{}' has no value", parameter.name));
        }
        parameter.value = reader.word();
        if (line.value(parameter.name) != nullptr) {
            reader.fail(fmt::format("'{}' stands twice", parameter.name));
        }
        line.parameters.push_back(std::move(parameter));
    }
    return line;
}

std::string familyOf(std::string_view function) {
    // The words between the base name and the first type word name the codec.
    size_t at = function.find('_');
    while (at != std::string_view::npos) {
        const size_t next = function.find('_', at + 1);
        const std::string_view word = function.substr(at + 1, next == std::string_view::npos ? next : next - at - 1);
        if (typeLength(word) > 0) {
            break;
        }
        if (word.size() > 1 && word != "Sfs") {
            return std::string(word);
        }
        at = next;
    }
    return "common";
}

int wordDistance(std::string_view a, std::string_view b) {
    std::vector<int> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) {
        row[j] = static_cast<int>(2 * j);
    }
    for (size_t i = 1; i <= a.size(); ++i) {
        int corner = row[0];
        row[0] = static_cast<int>(2 * i);
        for (size_t j = 1; j <= b.size(); ++j) {
            const auto lowerA = std::tolower(static_cast<unsigned char>(a[i - 1]));
            const auto lowerB = std::tolower(static_cast<unsigned char>(b[j - 1]));
            const int change = a[i - 1] == b[j - 1] ? 0 : lowerA == lowerB ? 1 : 2;
            const int best = std::min({corner + change, row[j] + 2, row[j - 1] + 2});
            corner = row[j];
            row[j] = best;
        }
    }
    return row[b.size()];
}

std::string nearestWord(std::string_view wanted, const std::vector<std::string>& words) {
    std::string nearest;
    // Half of the letters may differ, so that an unlike word is never proposed.
    int least = static_cast<int>(wanted.size()) + 1;
    for (const std::string& word : words) {
        const int distance = wordDistance(wanted, word);
        if (distance < least) {
            least = distance;
            nearest = word;
        }
    }
    return nearest;
}

std::string proposal(const std::string& wanted, const std::vector<std::string>& words) {
    const std::string nearest = nearestWord(wanted, words);
    return nearest.empty() ? "" : fmt::format("; do you mean '{}'?", nearest);
}

} // namespace krlab
