// Keys of the rig, split and joined by the rig's own rules.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace krlab {

/// One key: its letter and its argument with the prefix ("-", "+" or "=") that it may bear.
struct RigKey {
    char letter = 0;
    std::string argument;
    /// The key as one word, the argument attached.
    std::string word() const;
};

/// The keys of a command line, and the words that the rig loses without a message.
struct RigKeys {
    std::vector<RigKey> keys;
    std::vector<std::string> lost;

    bool has(char letter) const;
    /// Argument of the last key of that letter, or nothing.
    const std::string* last(char letter) const;
    /// Without the keys of these letters.
    RigKeys without(std::string_view letters) const;
    std::vector<std::string> words() const;
};

RigKeys splitKeys(const std::vector<std::string>& words);

/// Name and value of a -d argument, trimmed; both empty if it names nothing.
struct KeyValue {
    std::string name;
    std::string value;
};
KeyValue splitData(const std::string& argument);

} // namespace krlab
