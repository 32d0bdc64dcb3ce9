// Completion by real shells at a terminal: lines are typed with tabs in them, and what the shell then calls is looked
// at.
#include "rig_process.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

const std::string s_share = PAGES_SHARE;

/// How a shell is started, told of the completions, and given commands that note their words in a file.
struct Shell {
    const char* program;
    std::vector<std::string> keys;
    std::string start;
};

const Shell s_bash = {"/bin/bash",
                      {"--norc", "--noprofile", "-i"},
                      "bind 'set bell-style none'\n"
                      ". '" +
                          s_share +
                          "/bash-completion/completions/kelvarrig'\n"
                          ". '" +
                          s_share +
                          "/bash-completion/completions/krlab'\n"
                          "kelvarrig() { { printf '<%s>' \"$@\"; echo; } >>typed; }\n"
                          "krlab() { kelvarrig \"$@\"; }\n"};
const Shell s_zsh = {"/usr/bin/zsh",
                     {"-f", "-i"},
                     "fpath=('" + s_share +
                         "/zsh/site-functions' $fpath); autoload -U compinit; compinit -u -D\n"
                         "kelvarrig() { { printf '<%s>' \"$@\"; echo } >>typed }\n"
                         "krlab() { kelvarrig \"$@\" }\n"};
const Shell s_fish = {"/usr/bin/fish",
                      {"--no-config", "-i"},
                      "set -p fish_complete_path '" + s_share +
                          "/fish/vendor_completions.d'\n"
                          "function kelvarrig; printf '<%s>' $argv >>typed; echo >>typed; end\n"
                          "function krlab; kelvarrig $argv; end\n"};

/// What the commands were called with when all lines had been typed, one call a line.
std::string called(const Shell& shell, const std::vector<std::string>& lines) {
    // A shell takes manners of another one from the name by which it is called.
    const std::string name = std::filesystem::path(shell.program).filename();
    const RigDirectory directory(shell.program, name.c_str());
    directory.write("result.txt", "");
    RigConsole console;
    console.terminal = true;
    console.rawTerminal = true;
    console.input = shell.start;
    for (const std::string& line : lines) {
        console.input += line + "\n";
    }
    console.input += "exit\n";
    setenv("TERM", "dumb", 1);
    setenv("HOME", directory.path().c_str(), 1);
    const RigResult result = directory.run(shell.keys, console);
    EXPECT_FALSE(result.hung) << result.out;
    return directory.read("typed");
}

void expectCompleted(const Shell& shell) {
    if (!std::filesystem::exists(shell.program)) {
        GTEST_SKIP() << shell.program << " is not installed";
    }
    const std::vector<std::pair<std::string, std::string>> cases = {
        // Functions, by all forms of the key.
        {"kelvarrig -fveksDCTFwd_G7221_1\t", "<-fveksDCTFwd_G7221_16s>"},
        {"kelvarrig -f=veksDCTFwd_G7221_1\t", "<-f=veksDCTFwd_G7221_16s>"},
        {"kelvarrig -f-veksDCTFwd_G7221_1\t -B", "<-f-veksDCTFwd_G7221_16s><-B>"},
        {"kelvarrig -B -f veksDCTFwd_G7221_1\t", "<-B><-f><veksDCTFwd_G7221_16s>"},
        {"kelvarrig -FveksDCTFwd_G7221_1\t", "<-FveksDCTFwd_G7221_16s>"},
        {"kelvarrig -tTimDCTFw\t", "<-tTimDCTFwd>"},
        // Parameters of all tests and of one, with blanks in the name; the value goes on after the sign.
        {"kelvarrig -dMeth\tIterative", "<-dMethod=Iterative>"},
        {"kelvarrig -daffine\t7", "<-daffine projection order=7>"},
        {"kelvarrig -d affine\t7", "<-d><affine projection order=7>"},
        // Words of the help, labels of processors, letters of keys, files.
        {"kelvarrig -LPER\t", "<-LPERF>"},
        {"kelvarrig -AMis\t", "<-AMisalign>"},
        {"kelvarrig -HO\t", "<-HONLY>"},
        {"kelvarrig -TUnk\t", "<-TUnknown>"},
        {"kelvarrig -rresu\t", "<-rresult.txt>"},
        // The companion's commands and options, and the rig's keys after the bar.
        {"krlab doc\t", "<doctor>"},
        {"krlab repl\t result.txt:5", "<replay><result.txt:5>"},
        {"krlab run --pas\t3", "<run><--passes><3>"},
        {"krlab tidy --to sql\t", "<tidy><--to><sqlite>"},
        {"krlab --js\t- doctor", "<--json><-><doctor>"},
        {"krlab run resu\t", "<run><result.txt>"},
        {"krlab run -- -f=veksDCTFwd_G7221_1\t", "<run><--><-f=veksDCTFwd_G7221_16s>"},
        {"krlab check -- -dMeth\tAuto -LPER\t", "<check><--><-dMethod=Auto><-LPERF>"},
    };
    std::vector<std::string> lines;
    std::string expected;
    for (const auto& [line, call] : cases) {
        lines.push_back(line);
        expected += call + "\n";
    }
    EXPECT_EQ(expected, called(shell, lines));
}

} // namespace

TEST(PagesCompletion, BashCompletesKeysFunctionsAndParameters) {
    expectCompleted(s_bash);
}

TEST(PagesCompletion, ZshCompletesKeysFunctionsAndParameters) {
    expectCompleted(s_zsh);
}

TEST(PagesCompletion, FishCompletesKeysFunctionsAndParameters) {
    expectCompleted(s_fish);
}
