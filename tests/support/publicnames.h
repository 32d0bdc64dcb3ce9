// The functions that the library's headers declare.
#pragma once

#include <cctype>
#include <set>
#include <string>

namespace publicnames {

inline bool isNameChar(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

/// Names of a header's functions, by its text: what stands before the first bracket after each VEK_API.
inline std::set<std::string> of(const std::string& text) {
    std::set<std::string> names;
    // VEK_API <type> vek...(
    for (size_t at = text.find("VEK_API "); at != std::string::npos; at = text.find("VEK_API ", at + 1)) {
        const size_t open = text.find('(', at);
        size_t first = open;
        while (first > at && isNameChar(text[first - 1])) {
            first--;
        }
        names.insert(text.substr(first, open - first));
    }
    return names;
}

} // namespace publicnames
