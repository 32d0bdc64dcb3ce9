// What the documents say of functions of one's own, word for word: their files are written, their commands run, and the
// lines that they show must come, figures and dates aside.
#include "patterns.h"
#include "shell.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

Lines linesOf(const std::string& text) {
    std::istringstream stream(text);
    Lines lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// An indented block with the paragraph in front of it.
struct Block {
    std::string paragraph;
    Lines lines;
};

/// The blocks of a document, or of one section of it.
std::vector<Block> blocksOf(const std::string& document, const std::string& section) {
    std::ifstream file(std::string(KELVARRIG_SOURCE "/") + document);
    std::vector<Block> blocks;
    Block block;
    bool inSection = section.empty();
    bool inBlock = false;
    bool ended = true;
    for (std::string line; std::getline(file, line);) {
        if (!section.empty() && line.rfind("## ", 0) == 0) {
            inSection = line == "## " + section;
        }
        if (!inSection) {
            continue;
        }
        const bool indented = line.rfind("    ", 0) == 0;
        if (indented && (inBlock || ended)) {
            inBlock = true;
            block.lines.push_back(line.substr(4));
        } else if (line.empty() && inBlock) {
            block.lines.emplace_back();
        } else if (!line.empty()) {
            if (inBlock) {
                blocks.push_back(block);
                block = Block();
            } else if (ended) {
                block.paragraph.clear();
            }
            inBlock = false;
            block.paragraph += line + "\n";
        }
        ended = line.empty();
    }
    if (inBlock) {
        blocks.push_back(block);
    }
    for (Block& each : blocks) {
        while (each.lines.back().empty()) {
            each.lines.pop_back();
        }
    }
    return blocks;
}

/// The file that a block is, by the last file name of its paragraph.
std::string fileOf(const Block& block) {
    const std::vector<std::string> names = firstGroups(block.paragraph, "`([A-Za-z_]+\\.(cpp|txt))`");
    return names.empty() ? "" : names.back();
}

bool isAddition(const Block& block) {
    return !firstMatch(block.paragraph, "In\\s+`[^`]+`:\\s*$").empty();
}

/// A line without figures, dates and the widths that hang on them. A machine that is too busy for the wanted accuracy
/// changes no document.
std::string masked(const std::string& line) {
    static const std::vector<std::pair<std::string, std::string>> figures = {
        {"[A-Z][a-z]{2} [A-Z][a-z]{2} +[0-9]+ [0-9:]+ [0-9]{4}", "<date>"},
        {"-ACCURWRN", "-OK"},
        {" acc=[0-9.]+%,", ","},
        {" acc=[0-9.]+% +perf=", " perf="},
        {"[0-9][0-9.e+-]*", "#"},
        {" +", " "},
    };
    return replaced(line, figures);
}

/// The files and commands of a document, followed to the end in one shell.
class Walk {
public:
    Walk(const std::string& document, const std::string& section, const std::string& folder) : m_folder(folder) {
        if (!folder.empty()) {
            std::filesystem::create_directory(m_beside.folder().path(folder));
        }
        for (const Block& block : blocksOf(document, section)) {
            if (block.lines[0].rfind("$ ", 0) == 0) {
                addCommands(block);
            } else {
                addFile(block);
            }
        }
    }

    void follow() {
        const ShellResult result = m_beside.run("set -e\n" + m_script, m_folder);
        ASSERT_EQ(0, result.exitCode) << result.out;
        std::vector<Lines> written(1);
        for (const std::string& line : linesOf(result.out)) {
            if (line == mark) {
                written.emplace_back();
            } else {
                written.back().push_back(line);
            }
        }
        ASSERT_EQ(m_shown.size() + 1, written.size());
        for (size_t i = 0; i < m_shown.size(); ++i) {
            expectShown(m_shown[i], written[i + 1]);
        }
    }

    int files() const { return m_files; }
    int commands() const { return static_cast<int>(m_shown.size()); }

private:
    static constexpr const char* mark = "-- next command --";

    void addCommands(const Block& block) {
        for (const std::string& line : block.lines) {
            if (line.rfind("$ ", 0) == 0) {
                m_script += std::string("echo; echo '") + mark + "'\n" + line.substr(2) + "\n";
                m_shown.emplace_back();
            } else if (line != "...") {
                m_shown.back().push_back(line);
            }
        }
    }

    void addFile(const Block& block) {
        const std::string name = fileOf(block);
        ASSERT_NE("", name) << "neither a file nor a command: " << block.lines[0];
        m_script += std::string("cat ") + (isAddition(block) ? ">>" : ">") + name + " <<'END_OF_FILE'\n";
        for (const std::string& line : block.lines) {
            m_script += line + "\n";
        }
        m_script += "END_OF_FILE\n";
        ++m_files;
    }

    // The lines that a document shows come in this order; others may stand between them.
    static void expectShown(const Lines& shown, const Lines& written) {
        size_t at = 0;
        for (const std::string& line : shown) {
            while (at < written.size() && masked(written[at]) != masked(line)) {
                ++at;
            }
            std::string all;
            for (const std::string& each : written) {
                all += each + "\n";
            }
            ASSERT_LT(at, written.size()) << "not written: " << line << "\n" << all;
            ++at;
        }
    }

    BesideTheCheckout m_beside;
    std::string m_folder;
    std::string m_script;
    std::vector<Lines> m_shown;
    int m_files = 0;
};

} // namespace

TEST(OwnDocuments, LineOfABusyMachineIsTheLineOfAQuietOne) {
    EXPECT_EQ(masked("  acc=0.9%   nLps=8      perf=      686/      240=     2.86 clocks"),
              masked("  acc=6.0%   nLps=2048 acc=6.0%  perf=     87.8/       40=     2.19 clocks"));
}

TEST(OwnDocuments, ReadmeLeadsFromThreeFilesToFigures) {
    Walk walk("README.md", "Your own function", "mygain");
    EXPECT_EQ(3, walk.files());
    EXPECT_EQ(3, walk.commands());
    walk.follow();
}

TEST(OwnDocuments, InstallationLeadsToFiguresByCMakeAndByPkgConfig) {
    Walk walk("docs/install.md", "", "");
    EXPECT_EQ(3, walk.files());
    EXPECT_EQ(15, walk.commands());
    walk.follow();
}

TEST(OwnDocuments, GuideLeadsFromAPrototypeToARigOfSeveralFunctions) {
    Walk walk("docs/own-functions.md", "", "");
    EXPECT_EQ(10, walk.files());
    EXPECT_EQ(8, walk.commands());
    walk.follow();
}
