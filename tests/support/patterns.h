// Regular expressions as ECMAScript has them, for all programs of tests: their header alone takes three seconds to
// compile, so one file includes it.
#pragma once

#include <string>
#include <utility>
#include <vector>

/// The first match and its groups, the match at 0; empty where the pattern does not match.
std::vector<std::string> firstMatch(const std::string& text, const std::string& pattern);
/// Of each match the first group.
std::vector<std::string> firstGroups(const std::string& text, const std::string& pattern);
/// Each pattern's matches replaced by its words, in which $1 is the first group; one pattern after the other.
std::string replaced(std::string text, const std::vector<std::pair<std::string, std::string>>& words);
