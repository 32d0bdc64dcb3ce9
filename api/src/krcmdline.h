// Command keys: one letter after "-" or "/", with an argument that is attached or follows as the next word.
#pragma once

#include "krstring.h"

/// True when the text has at least two characters and begins with "-" or "/".
bool isKeyString(const krString& text);

/// One key and its argument.
class krCommandKey {
public:
    /// Takes the key from `word` and its argument from the rest of it or from `next`; false if `word` is no key.
    bool setArg(const krString& word, const krString& next);
    /// True, with the argument, when the key is `letter`.
    bool getArg(char letter, krString& argument) const;

    char key = ' ';
    krString arg;
};

/// The keys in the order in which they were written.
class krCommandList : public krList<krCommandKey> {
public:
    void setArgs(int argc, char** argv);
    /// Splits at blanks, ";", tabs and line ends; double quotes protect.
    void setArgs(const char* line);
    void setArgs(const krStringList& words);
    bool setArg(const krString& word, const krString& next);
    bool setArg(char letter, const krString& argument);
    bool isKey(char letter) const;
    /// The last key of that letter wins.
    bool getArg(char letter, krString& argument) const;
};
