#include "rigkeys.h"

#include "text.h"

namespace krlab {

namespace {

bool isKey(const std::string& word) {
    return word.size() >= 2 && (word[0] == '-' || word[0] == '/');
}

} // namespace

std::string RigKey::word() const {
    return std::string("-") + letter + argument;
}

bool RigKeys::has(char letter) const {
    return last(letter) != nullptr;
}

const std::string* RigKeys::last(char letter) const {
    for (auto key = keys.rbegin(); key != keys.rend(); ++key) {
        if (key->letter == letter) {
            return &key->argument;
        }
    }
    return nullptr;
}

RigKeys RigKeys::without(std::string_view letters) const {
    RigKeys rest;
    for (const RigKey& key : keys) {
        if (letters.find(key.letter) == std::string_view::npos) {
            rest.keys.push_back(key);
        }
    }
    return rest;
}

std::vector<std::string> RigKeys::words() const {
    std::vector<std::string> words;
    for (const RigKey& key : keys) {
        words.push_back(key.word());
    }
    return words;
}

RigKeys splitKeys(const std::vector<std::string>& words) {
    RigKeys result;
    for (size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        std::string next;
        if (i + 1 < words.size() && !isKey(words[i + 1])) {
            next = words[++i];
        }
        if (!isKey(word)) {
            result.lost.push_back(word);
            if (!next.empty()) {
                result.lost.push_back(next);
            }
            continue;
        }
        std::string prefix;
        std::string rest = word.substr(2);
        if (!rest.empty() && (rest[0] == '-' || rest[0] == '+' || rest[0] == '=')) {
            prefix = rest[0];
            rest.erase(0, 1);
        }
        if (rest.empty()) {
            rest = next;
        } else if (!next.empty()) {
            result.lost.push_back(next);
        }
        result.keys.push_back({word[1], prefix + rest});
    }
    return result;
}

KeyValue splitData(const std::string& argument) {
    const size_t cut = argument.find('=');
    if (cut == std::string::npos) {
        return {std::string(trimmed(argument)), ""};
    }
    return {std::string(trimmed(std::string_view(argument).substr(0, cut))),
            std::string(trimmed(std::string_view(argument).substr(cut + 1)))};
}

} // namespace krlab
