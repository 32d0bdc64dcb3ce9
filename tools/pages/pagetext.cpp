#include "pagetext.h"

#include <sstream>

namespace pages {

namespace {

std::string joined(const Texts& words, std::string (*quote)(const std::string&)) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + quote(word);
    }
    return text;
}

} // namespace

Texts split(const std::string& text, char separator) {
    std::istringstream stream(text);
    Texts parts;
    for (std::string part; std::getline(stream, part, separator);) {
        parts.push_back(part);
    }
    return parts;
}

Texts linesOf(const std::string& text) {
    return split(text, '\n');
}

std::string roff(const std::string& text) {
    std::string out;
    for (const char c : text) {
        const bool lineStart = out.empty() || out.back() == '\n';
        if (lineStart && (c == '.' || c == '\'')) {
            out += "\\&";
        }
        switch (c) {
        case '\\':
            out += "\\e";
            break;
        case '-':
            out += "\\-";
            break;
        case '\'':
            out += "\\(aq";
            break;
        default:
            out += c;
        }
    }
    return out;
}

std::string roffLines(const std::string& text) {
    std::string block = ".nf\n";
    for (const std::string& line : linesOf(text)) {
        block += line.find_first_not_of(" \t") == std::string::npos ? ".sp\n" : roff(line) + "\n";
    }
    return block + ".fi\n";
}

std::string roffBlock(const std::string& text) {
    return text.empty() ? "" : ".RS\n" + roffLines(text) + ".RE\n";
}

std::string roffEntry(const std::string& head, const std::string& text) {
    return ".TP\n.B " + roff(head) + "\n" + roff(text) + "\n";
}

std::string quoted(const std::string& word) {
    std::string out = "'";
    for (const char c : word) {
        out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return out + "'";
}

std::string fishQuoted(const std::string& word) {
    std::string out = "'";
    for (const char c : word) {
        out += c == '\'' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    }
    return out + "'";
}

std::string quotedList(const Texts& words) {
    return joined(words, quoted);
}

std::string fishQuotedList(const Texts& words) {
    return joined(words, fishQuoted);
}

} // namespace pages
