// The pages hold what the programs themselves tell: each key, command, option and name.
#include "patterns.h"
#include "rig_process.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <sstream>

namespace {

const std::string s_share = PAGES_SHARE;

std::string readPage(const std::string& name) {
    std::ifstream file(s_share + "/" + name, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

/// A man page's source with its characters as they will show.
std::string shown(const std::string& name) {
    return replaced(readPage("man/man1/" + name), {{"\\\\-", "-"}, {"\\\\\\(aq", "'"}, {"\\\\&", ""}, {"\\\\e", "\\"}});
}

std::vector<std::string> linesOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

/// The words between quotes of the array `name` in bash's completions of the rig.
std::set<std::string> listed(const std::string& name) {
    std::set<std::string> words;
    for (const std::string& line : linesOf(readPage("bash-completion/completions/kelvarrig"))) {
        if (line.rfind("_kelvarrig_" + name + "=(", 0) == 0) {
            const std::vector<std::string> found = firstGroups(line, "'([^']*)'");
            words.insert(found.begin(), found.end());
        }
    }
    return words;
}

std::string helpOfLab(const std::vector<std::string>& words) {
    return RigDirectory(KRLAB, "krlab").run(words).out;
}

void expectReadsWithoutComplaint(const std::string& program, const std::string& keys) {
    if (!std::filesystem::exists(program)) {
        GTEST_SKIP() << program << " is not installed";
    }
    for (const char* page : {"kelvarrig.1", "krlab.1"}) {
        std::string command = program;
        command.append(" ").append(keys).append(" '").append(s_share).append("/man/man1/").append(page).append("'");
        const RigResult result = RigDirectory("/bin/sh", "sh").run({"-c", command});
        EXPECT_EQ("", result.out);
        EXPECT_EQ(0, result.exitCode);
    }
}

} // namespace

TEST(PagesMan, EveryLineOfTheFullHelpStandsInThePage) {
    const std::string page = shown("kelvarrig.1");
    const std::string help = RigDirectory(KELVARRIG, "kelvarrig").run({"-??"}).out;
    const std::vector<std::string> lines = linesOf(help.substr(help.find("EXTENDED HELP")));
    ASSERT_GT(lines.size(), 200u);
    int keys = 0;
    for (size_t i = 1; i < lines.size(); ++i) {
        const size_t sign = lines[i].find("= ");
        if (lines[i].front() == '-' && sign != std::string::npos) {
            std::string head = lines[i].substr(0, sign);
            head.erase(head.find_last_not_of(' ') + 1);
            EXPECT_TRUE(holds(page, ".B " + head + "\n" + lines[i].substr(sign + 2) + "\n")) << lines[i];
            ++keys;
        } else if (!lines[i].empty()) {
            EXPECT_TRUE(holds(page, "\n" + lines[i] + "\n")) << lines[i];
        }
    }
    EXPECT_GT(keys, 30);
    EXPECT_TRUE(holds(page, "\n-?<key>          = type extended help for the key and exit\n"));
}

TEST(PagesMan, EveryCommandAndOptionOfTheCompanionStandsInThePage) {
    const std::string page = shown("krlab.1");
    const std::string help = helpOfLab({"--help"});
    std::vector<std::string> sections;
    for (const std::string& line : linesOf(help.substr(help.find("Subcommands:")))) {
        const std::vector<std::string> found = firstGroups(line, "^  ([a-z]+)(  .*)?$");
        sections.insert(sections.end(), found.begin(), found.end());
    }
    ASSERT_GT(sections.size(), 5u);
    for (const std::string& command : sections) {
        const size_t from = page.find("\n.SS " + command);
        ASSERT_NE(std::string::npos, from) << command;
        const std::string section = page.substr(from, page.find("\n.S", from + 1) - from);
        const std::string own = helpOfLab({command, "--help"});
        for (const std::string& line : linesOf(own.substr(own.find("Options:")))) {
            for (const std::string& option : firstGroups(line, "^ +(-[^ ]*)")) {
                EXPECT_TRUE(holds(option, "--help") || holds(section, ".B " + option)) << command << line;
            }
        }
    }
    for (const char* option : {"--json FILE", "--quiet", "--seed N", "--rig PROGRAM"}) {
        EXPECT_TRUE(holds(page.substr(0, page.find(".SS ")), std::string(".B ") + option + "\n")) << option;
    }
}

TEST(PagesMan, GroffReadsThemWithoutAWarning) {
    expectReadsWithoutComplaint("/usr/bin/groff", "-man -ww -Tutf8 -z");
}

TEST(PagesMan, MandocReadsThemWithoutAWarning) {
    expectReadsWithoutComplaint("/usr/bin/mandoc", "-Tlint -Wwarning");
}

TEST(PagesCompletion, FunctionsAreThoseThatTheRigEnumerates) {
    std::set<std::string> enumerated;
    for (const std::string& line : linesOf(RigDirectory(KELVARRIG, "kelvarrig").run({"-e"}).out)) {
        const std::vector<std::string> found = firstMatch(line, "\\b(veks[A-Za-z0-9]+_[A-Za-z0-9_]+|__krOrvanCpu)\\b");
        enumerated.insert(found.begin(), found.begin() + (found.empty() ? 0 : 1));
    }
    EXPECT_GT(enumerated.size(), 300u);
    EXPECT_EQ(enumerated, listed("functions"));
}

TEST(PagesCompletion, ParametersAreThoseThatTheRigWritesToAnIniFile) {
    const RigDirectory directory(KELVARRIG, "kelvarrig");
    directory.run({"-B", "-LERR", "-Iall"});
    std::set<std::string> written;
    for (const std::string& line : linesOf(directory.read("all.ini"))) {
        const size_t sign = line.find('=');
        if (sign != std::string::npos) {
            written.insert(line.substr(0, sign));
        }
    }
    EXPECT_GT(written.size(), 50u);
    EXPECT_EQ(written, listed("parameters"));
}
