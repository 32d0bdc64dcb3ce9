// Writes the man page and the completions of kelvarrig: rigpages TEMPLATES SHARE DATE VERSION.
#include "pagefiles.h"
#include "rigkeytable.h"

namespace {

using namespace pages;

std::string manKeys(const RigTables& tables) {
    std::string text;
    for (const RigKey& key : tables.keys) {
        for (const KeyForm& form : key.forms) {
            text += roffEntry(form.synopsis, form.text);
        }
        text += roffBlock((key.hidden ? "This is hidden key used by developers only\n" : "") + key.description);
    }
    return text;
}

std::string manNames(const Texts& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ",\n") + roff(name);
    }
    return text;
}

// Lists that shells hold by the same names.
const char* listName(Argument argument) {
    switch (argument) {
    case Argument::file:
        return "file";
    case Argument::directory:
        return "directory";
    case Argument::function:
        return "function";
    case Argument::test:
        return "test";
    case Argument::parameter:
        return "parameter";
    case Argument::processor:
        return "processor";
    case Argument::key:
        return "key";
    case Argument::none:
    case Argument::words:
        break;
    }
    return "";
}

// What follows a letter: the name of a list, or words with a leading "=".
std::string argumentText(const RigKey& key) {
    if (key.argument != Argument::words) {
        return listName(key.argument);
    }
    std::string text = "=";
    for (const std::string& word : key.words) {
        text += " " + word;
    }
    return text;
}

std::string shortText(const RigKey& key) {
    return key.forms[0].text;
}

Texts lettersOf(const RigTables& tables) {
    Texts letters;
    for (const RigKey& key : tables.keys) {
        letters.emplace_back(1, key.letter);
    }
    return letters;
}

void run(int argc, char** argv) {
    const PageCall call = readCall(argc, argv);
    const RigTables tables = readRigTables(argv[0], "rigpages.ini");
    std::string bashArguments;
    std::string zshArguments;
    Texts described;
    Texts fishKeys;
    for (const RigKey& key : tables.keys) {
        const std::string letter(1, key.letter);
        const std::string argument = argumentText(key);
        bashArguments += " [" + quoted(letter) + "]=" + quoted(argument);
        zshArguments += " " + quoted(letter) + " " + quoted(argument);
        described.push_back("-" + letter + ":" + shortText(key));
        fishKeys.push_back("-" + letter + "\t" + shortText(key));
    }
    Values bash = {{"KEYS", quotedList(lettersOf(tables))},       {"FUNCTIONS", quotedList(tables.functions)},
                   {"TESTS", quotedList(tables.tests)},           {"PARAMETERS", quotedList(tables.parameters)},
                   {"PROCESSORS", quotedList(tables.processors)}, {"ARGUMENTS", bashArguments}};
    Values zsh = bash;
    zsh["ARGUMENTS"] = zshArguments;
    zsh["KEYS"] = quotedList(described);
    std::string fishArguments;
    for (const RigKey& key : tables.keys) {
        fishArguments += " " + fishQuoted("-" + std::string(1, key.letter) + argumentText(key));
    }
    const Values fish = {{"KEYS", fishQuotedList(fishKeys)},
                         {"FUNCTIONS", fishQuotedList(tables.functions)},
                         {"TESTS", fishQuotedList(tables.tests)},
                         {"PARAMETERS", fishQuotedList(tables.parameters)},
                         {"PROCESSORS", fishQuotedList(tables.processors)},
                         {"ARGUMENTS", fishArguments}};
    const Values man = {{"KEYS", manKeys(tables)}, {"COMMON", manNames(tables.common)}};
    writePages(call, "kelvarrig", man, bash, zsh, fish);
}

} // namespace

int main(int argc, char** argv) {
    return runPages("rigpages", run, argc, argv);
}
