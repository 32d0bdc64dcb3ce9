// Command keys: splitting words into keys and arguments.
#include "krcmdline.h"

bool isKeyString(const krString& text) {
    return text.length() >= 2 && (text[0] == '-' || text[0] == '/');
}

bool krCommandKey::setArg(const krString& word, const krString& next) {
    if (!isKeyString(word)) {
        return false;
    }
    key = word[1];
    krString rest = word.substr(2);
    krString prefix;
    if (!rest.empty() && (rest[0] == '-' || rest[0] == '+' || rest[0] == '=')) {
        prefix = rest.substr(0, 1);
        rest = rest.substr(1);
    }
    arg = prefix + (rest.empty() ? next : rest);
    return true;
}

bool krCommandKey::getArg(char letter, krString& argument) const {
    if (key != letter) {
        return false;
    }
    argument = arg;
    return true;
}

void krCommandList::setArgs(int argc, char** argv) {
    krStringList words;
    for (int i = 1; i < argc; ++i) {
        words.append(argv[i]);
    }
    setArgs(words);
}

void krCommandList::setArgs(const char* line) {
    krStringList words;
    krString(line).parse(words, " ;\t\r\n");
    setArgs(words);
}

void krCommandList::setArgs(const krStringList& words) {
    auto word = words.begin();
    while (!(word == words.end())) {
        const krString key = *word++;
        krString next;
        if (!(word == words.end()) && !isKeyString(*word)) {
            next = *word++;
        }
        setArg(key, next);
    }
}

bool krCommandList::setArg(const krString& word, const krString& next) {
    krCommandKey key;
    if (!key.setArg(word, next)) {
        return false;
    }
    append(key);
    return true;
}

bool krCommandList::setArg(char letter, const krString& argument) {
    return setArg(krString('-') + letter, argument);
}

bool krCommandList::isKey(char letter) const {
    krString ignored;
    return getArg(letter, ignored);
}

bool krCommandList::getArg(char letter, krString& argument) const {
    bool found = false;
    for (const krCommandKey& key : *this) {
        found = key.getArg(letter, argument) || found;
    }
    return found;
}
