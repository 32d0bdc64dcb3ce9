// Writes the man page and the completions of krlab: labpages TEMPLATES SHARE DATE VERSION.
#include "pagefiles.h"
#include "pagetext.h"

#include "program.h"

#include <CLI/CLI.hpp>

namespace {

using namespace pages;

// One option or one positional argument, in the words of the parser.
struct Entry {
    Texts words; ///< "-o", "--output"; none for a positional argument
    std::string head;
    std::string text;
    Texts choices; ///< values that it takes, if it takes only some
    bool takesValue = false;
};

struct Command {
    std::string name;
    std::string text;
    std::string synopsis;
    std::vector<Entry> entries;
};

Texts choicesOf(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    const size_t from = type.find('{');
    const size_t to = type.find('}', from);
    return to == std::string::npos ? Texts{} : split(type.substr(from + 1, to - from - 1), ',');
}

Entry entryOf(const CLI::Option& option) {
    Entry entry;
    for (const std::string& name : option.get_snames()) {
        entry.words.push_back("-" + name);
    }
    for (const std::string& name : option.get_lnames()) {
        entry.words.push_back("--" + name);
    }
    entry.takesValue = option.get_items_expected_max() > 0;
    entry.choices = choicesOf(option);
    entry.head = option.get_name(option.get_positional(), true);
    if (entry.takesValue && !option.get_positional()) {
        // The parser's names of plain types tell nobody anything.
        const std::string type = option.get_type_name();
        const bool named = type == "FILE" || type == "PROGRAM" || type == "N";
        entry.head += " " + (named ? type : entry.choices.empty() ? std::string("VALUE") : type.substr(type.find('{')));
    }
    entry.text = option.get_description();
    if (!option.get_default_str().empty()) {
        entry.text += " (" + option.get_default_str() + " without it)";
    }
    return entry;
}

Command commandOf(const CLI::App& app) {
    Command command{app.get_name(), app.get_description(), app.get_name(), {}};
    for (const CLI::Option* option : app.get_options()) {
        // Every command repeats the parser's own way to its help.
        if (option == app.get_help_ptr() && app.get_parent() != nullptr) {
            continue;
        }
        command.entries.push_back(entryOf(*option));
        if (option->get_positional()) {
            const std::string name = option->get_name(true);
            command.synopsis += option->get_required() ? " " + name : " [" + name + "]";
        }
    }
    return command;
}

std::string manEntries(const Command& command) {
    std::string text;
    for (const Entry& entry : command.entries) {
        text += roffEntry(entry.head, entry.text);
    }
    return text;
}

std::string manCommands(const std::vector<Command>& commands) {
    std::string text;
    for (const Command& command : commands) {
        text += ".SS " + roff(command.synopsis) + "\n" + roff(command.text) + "\n" + manEntries(command);
    }
    return text;
}

// "run --passes --time ..." a command; its choices as "--to=csv json".
Texts wordsOf(const Command& command) {
    Texts words;
    for (const Entry& entry : command.entries) {
        words.insert(words.end(), entry.words.begin(), entry.words.end());
    }
    return words;
}

std::string joined(const Texts& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

// fish describes each option by itself.
std::string fishOptions(const Command& command, const std::string& condition) {
    std::string text;
    for (const Entry& entry : command.entries) {
        if (entry.words.empty()) {
            continue;
        }
        text += "complete -c krlab -n " + fishQuoted(condition);
        for (const std::string& word : entry.words) {
            text += word.rfind("--", 0) == 0 ? " -l " + word.substr(2) : " -s " + word.substr(1);
        }
        if (!entry.choices.empty()) {
            text += " -x -a " + fishQuoted(joined(entry.choices));
        } else if (entry.takesValue) {
            text += " -r -F";
        }
        text += " -d " + fishQuoted(entry.text) + "\n";
    }
    return text;
}

void run(int argc, char** argv) {
    const PageCall call = readCall(argc, argv);
    krlab::Program program;
#include "lab_commands.inc"
    // The parser itself is known as the parent of any command alone.
    CLI::App& own = program.add("pages", "", [](krlab::Context&) { return 0; });
    CLI::App& parser = *own.get_parent();
    parser.remove_subcommand(&own);

    const Command common = commandOf(parser);
    std::vector<Command> commands;
    for (const CLI::App* app : static_cast<const CLI::App&>(parser).get_subcommands({})) {
        commands.push_back(commandOf(*app));
    }
    Texts names;
    Texts described;
    std::string bashOptions;
    std::string zshOptions;
    std::string choices;
    std::string fishLines = fishOptions(common, "not __krlab_keys");
    for (const Command& command : commands) {
        names.push_back(command.name);
        described.push_back(command.name + ":" + command.text);
        bashOptions += " [" + quoted(command.name) + "]=" + quoted(joined(wordsOf(command)));
        zshOptions += " " + quoted(command.name) + " " + quoted(joined(wordsOf(command)));
        for (const Entry& entry : command.entries) {
            for (const std::string& word : entry.choices.empty() ? Texts() : entry.words) {
                choices += " " + quoted(command.name + " " + word) + " " + quoted(joined(entry.choices));
            }
        }
        fishLines += "complete -c krlab -n '__krlab_needs_command' -f -a " + fishQuoted(command.name) + " -d " +
                     fishQuoted(command.text) + "\n" + fishOptions(command, "__krlab_in " + command.name);
    }
    const Values man = {{"TEXT", roff(common.text)},
                        {"COMMON", manEntries(common)},
                        {"COMMANDS", manCommands(commands)},
                        {"NOTES", roffLines(parser.get_footer())}};
    Values bash = {{"COMMANDS", quotedList(names)},
                   {"COMMON", joined(wordsOf(common))},
                   {"OPTIONS", bashOptions},
                   {"CHOICES", choices}};
    Values zsh = bash;
    zsh["COMMANDS"] = quotedList(described);
    zsh["OPTIONS"] = zshOptions;
    writePages(call, "krlab", man, bash, zsh, {{"COMMANDS", fishQuotedList(names)}, {"LINES", fishLines}});
}

} // namespace

int main(int argc, char** argv) {
    return runPages("labpages", run, argc, argv);
}
