#include "patterns.h"

#include <map>
#include <regex>

namespace {

/// A pattern is made once: that takes longer than most searches.
const std::regex& made(const std::string& pattern) {
    static std::map<std::string, std::regex> known;
    const auto at = known.find(pattern);
    return at != known.end() ? at->second : known.emplace(pattern, pattern).first->second;
}

} // namespace

std::vector<std::string> firstMatch(const std::string& text, const std::string& pattern) {
    std::smatch found;
    std::regex_search(text, found, made(pattern));
    return {found.begin(), found.end()};
}

std::vector<std::string> firstGroups(const std::string& text, const std::string& pattern) {
    std::vector<std::string> groups;
    for (std::sregex_iterator at(text.begin(), text.end(), made(pattern)), end; at != end; ++at) {
        groups.push_back((*at)[1]);
    }
    return groups;
}

std::string replaced(std::string text, const std::vector<std::pair<std::string, std::string>>& words) {
    for (const auto& [pattern, word] : words) {
        text = std::regex_replace(text, made(pattern), word);
    }
    return text;
}
