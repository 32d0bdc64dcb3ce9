// What the rig's pages tell: the keys as the option table has them, and the names that its suites register.
#pragma once

#include "pagetext.h"

#include <map>

namespace pages {

/// What may follow a key's letter.
enum class Argument { none, words, file, directory, function, test, parameter, processor, key };

/// One line of a key's help: "-q+" and what it does.
struct KeyForm {
    std::string synopsis;
    std::string text;
};

/// A row of the option table.
struct RigKey {
    char letter = 0;
    bool hidden = false;
    std::vector<KeyForm> forms;
    std::string description; ///< the long one, in lines
    Argument argument = Argument::none;
    Texts words; ///< of Argument::words
};

struct RigTables {
    std::vector<RigKey> keys;
    Texts functions;  ///< sorted, each once, as all lists here
    Texts tests;      ///< their classes
    Texts processors; ///< labels that -T takes
    Texts common;     ///< parameters that all tests share
    Texts parameters; ///< all parameters, the common ones too
};

/// Fills the argument's kind and words from the synopsis of the forms.
void readArgument(RigKey& key);

/// Takes the tables from the harness and the suites that are linked to the program: by a run that writes an ini-file,
/// at `iniFile`, and measures nothing. Throws std::runtime_error.
RigTables readRigTables(char* program, const std::string& iniFile);

} // namespace pages
