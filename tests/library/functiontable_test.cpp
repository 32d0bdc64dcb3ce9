// What vek/functions.txt says of the library's functions holds: each function of the public headers has its row, each
// claim names tests that there are, and the document is what the table gives.
#include "functiontable.h"
#include "publicnames.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

namespace fs = std::filesystem;
using library::Claim;
using library::Row;
using Names = std::set<std::string>;

const fs::path source = LIBRARY_SOURCE;

std::string textOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.good()) << path;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<library::Section> table() {
    return library::readTable(textOf(source / "vek/functions.txt"));
}

std::vector<Row> rows() {
    return library::rowsOf(table());
}

Names declared() {
    Names names;
    for (const fs::directory_entry& header : fs::directory_iterator(source / "vek/include")) {
        if (header.path().filename() != "vekdefs.h") { // which defines VEK_API itself
            names.merge(publicnames::of(textOf(header.path())));
        }
    }
    return names;
}

/// The names of a program's tests. Those of a suite that runs for several types have it without the types' numbers.
Names testsOf(const std::string& program) {
    Names names;
    FILE* pipe = popen(("'" + program + "' --gtest_list_tests 2>&1").c_str(), "r");
    if (pipe == nullptr) {
        ADD_FAILURE() << program;
        return names;
    }
    std::string suite;
    char line[1024];
    while (std::fgets(line, sizeof line, pipe) != nullptr) {
        const std::string text(line, std::string(line).find_first_of("\n#"));
        std::istringstream words(text);
        std::string word;
        words >> word;
        if (line[0] != ' ') {
            suite = word.substr(0, word.find_first_of("/."));
        } else {
            names.insert(std::string(suite).append(".").append(word));
        }
    }
    EXPECT_EQ(0, pclose(pipe)) << program;
    return names;
}

/// The text of each test file with the headers of its folder and its room that it includes, by the suites in it.
std::multimap<std::string, std::string> filesBySuite() {
    std::multimap<std::string, std::string> files;
    for (const char* room : {"tests/vek", "tests/oracle"}) {
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(source / room)) {
            if (!entry.is_regular_file()) {
                continue;
            }
            const std::string text = textOf(entry.path());
            std::string whole = text;
            for (size_t at = text.find("#include \""); at != std::string::npos; at = text.find("#include \"", at + 1)) {
                const size_t begin = at + 10;
                const std::string name = text.substr(begin, text.find('"', begin) - begin);
                for (const fs::path& folder : std::set<fs::path>{entry.path().parent_path(), source / room}) {
                    whole += fs::exists(folder / name) ? textOf(folder / name) : "";
                }
            }
            Names suites;
            for (size_t at = text.find("TEST("); at != std::string::npos; at = text.find("TEST(", at + 1)) {
                suites.insert(text.substr(at + 5, text.find(',', at) - at - 5));
            }
            for (const std::string& suite : suites) {
                files.emplace(suite, whole);
            }
        }
    }
    return files;
}

bool holdsWord(const std::string& text, const std::string& word) {
    for (size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
        const size_t end = at + word.size();
        if ((at == 0 || !publicnames::isNameChar(text[at - 1])) &&
            (end == text.size() || !publicnames::isNameChar(text[end]))) {
            return true;
        }
    }
    return false;
}

/// What `readTable` says of a text that it refuses.
std::string refusal(const std::string& text) {
    try {
        library::readTable(text);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

TEST(LibraryTable, HasOneRowForEachFunctionOfThePublicHeaders) {
    const Names functions = declared();
    EXPECT_GT(functions.size(), 400U);
    Names named;
    for (const Row& row : rows()) {
        for (const std::string& function : row.functions) {
            EXPECT_TRUE(named.insert(function).second) << function << " has two rows";
            EXPECT_EQ(1U, functions.count(function)) << function << " is in no header";
        }
    }
    for (const std::string& function : functions) {
        EXPECT_EQ(1U, named.count(function)) << function << " has no row";
    }
}

TEST(LibraryTable, NamesTestsThatThereAre) {
    Names tests = testsOf(VEK_TESTS);
    tests.merge(testsOf(ORACLE_TESTS));
    EXPECT_GT(tests.size(), 800U);
    for (const Row& row : rows()) {
        for (const Claim& claim : row.claims) {
            for (const std::string& test : claim.tests) {
                EXPECT_EQ(1U, tests.count(test)) << row.functions[0] << ": " << test;
                EXPECT_EQ(std::string::npos, test.find("DISABLED_")) << row.functions[0];
            }
        }
    }
}

TEST(LibraryTable, SaysExactOfWhatATestHoldsAgainstAnotherPackage) {
    const Names tests = testsOf(ORACLE_TESTS);
    for (const Row& row : rows()) {
        for (const Claim& claim : row.claims) {
            size_t outside = 0;
            for (const std::string& test : claim.tests) {
                outside += tests.count(test);
            }
            EXPECT_TRUE(claim.kind != "exact" || outside == claim.tests.size()) << row.functions[0];
        }
    }
}

// A test that a claim names stands in a file that names the function.
TEST(LibraryTable, NamesTestsOfFilesThatNameTheFunction) {
    const std::multimap<std::string, std::string> files = filesBySuite();
    for (const Row& row : rows()) {
        for (const Claim& claim : row.claims) {
            for (const std::string& function : row.functions) {
                size_t naming = 0;
                for (const std::string& test : claim.tests) {
                    const auto [begin, end] = files.equal_range(test.substr(0, test.find('.')));
                    for (auto file = begin; file != end; ++file) {
                        naming += holdsWord(file->second, function) ? 1 : 0;
                    }
                }
                EXPECT_TRUE(naming > 0 || claim.kind == "note") << function << ": " << claim.text;
            }
        }
    }
}

TEST(LibraryTable, GivesTheDocument) {
    const std::vector<library::Figures> machines = library::readFiguresOf((source / "bench/figures").string());
    EXPECT_TRUE(library::document(table(), machines) == textOf(source / "docs/library.md"))
        << "docs/library.md is not what vek/functions.txt and bench/figures give; `cmake --build build-test --target "
           "library_page` "
           "writes it";
}

TEST(LibraryTable, BecomesTextAndRowsWithTheStrongestClassCounted) {
    const std::string page = library::document(library::readTable("// of the table alone\n"
                                                                  "# Title\n"
                                                                  "@COUNTS@\n"
                                                                  "\n"
                                                                  "veksA, veksB | clause 1\n"
                                                                  "  property: holds | S.One\n"
                                                                  "  exact: the same | S.Two S.Three\n"
                                                                  "  exact: again | S.Four\n"
                                                                  "  note: Ours\n"
                                                                  "veksC | -\n"
                                                                  "  reference: near | S.One\n"
                                                                  "\n"
                                                                  "## Next\n"
                                                                  "veksD | -\n"
                                                                  "  property: is | S.One\n"),
                                               {});
    EXPECT_EQ("# Title\n"
              "By the strongest class of each, of 4 functions 2 are exact, 1 agree with a reference, 1 hold properties "
              "only.\n"
              "\n"
              "| function | source | verified by |\n|---|---|---|\n"
              "| `veksA`, `veksB` | clause 1 | **property**: holds; **exact**: the same; again. Ours |\n"
              "| `veksC` | - | **reference**: near |\n"
              "\n"
              "## Next\n"
              "| function | source | verified by |\n|---|---|---|\n"
              "| `veksD` | - | **property**: is |\n",
              page);
}

const char* const figures = "machine: CPUID family 6, model 207, registers of 512 bits\n"
                            "summary: 3 rows\n"
                            "\n"
                            " ratio       ours       peer  functions | size | data | peer\n"
                            "  0.50       10.0       20.0  veksA | 80 | speech | package step\n"
                            "\n"
                            "geometric mean by function\n"
                            "  0.50  veksA\n"
                            "  1.20  veksC\n"
                            "\n"
                            "rows above 1.0\n"
                            "  1.20       12.0       10.0  veksC | - | suite | package step\n";

TEST(LibraryTable, HasAColumnForEachMachineThatWasMeasured) {
    const library::Figures machine = library::readFigures("family-6-model-207.txt", figures);
    const std::string page =
        library::document(library::readTable("Machines:\n"
                                             "\n"
                                             "@MACHINES@\n"
                                             "\n"
                                             "veksA, veksB | -\n"
                                             "  exact: so | S.One\n"
                                             "veksC | -\n"
                                             "  exact: so | S.One\n"
                                             "veksD, veksE | -\n"
                                             "  exact: so | S.One\n"),
                          {machine, {"other.txt", "family 1 model 2", {"machine"}, {{"veksE", "2.00"}}}});
    EXPECT_EQ("Machines:\n"
              "\n"
              "- **family 6 model 207** (`bench/figures/family-6-model-207.txt`): machine: CPUID family 6, model 207, "
              "registers of 512 bits; summary: 3 rows.\n"
              "- **family 1 model 2** (`bench/figures/other.txt`): machine.\n"
              "\n"
              "| function | source | verified by | family 6 model 207 | family 1 model 2 |\n"
              "|---|---|---|---|---|\n"
              "| `veksA`, `veksB` | - | **exact**: so | 0.50, - | - |\n"
              "| `veksC` | - | **exact**: so | 1.20 | - |\n"
              "| `veksD`, `veksE` | - | **exact**: so | - | -, 2.00 |\n",
              page);
}

TEST(LibraryTable, RefusesFilesThatAreNoFigures) {
    const auto refused = [](const std::string& text) -> std::string {
        try {
            library::readFigures("f.txt", text);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    };
    const std::string good = figures;
    EXPECT_EQ("", refused(good));
    EXPECT_EQ("f.txt: does not begin with the machine's family and model", refused(""));
    EXPECT_EQ("f.txt: does not begin with the machine's family and model", refused("summary: 3 rows\n"));
    EXPECT_EQ("f.txt: no geometric mean by function", refused(good.substr(0, good.find("geometric"))));
    EXPECT_EQ("f.txt: no ratio and function: veksA  0.50",
              refused("machine: CPUID family 6, model 207,\n\ngeometric mean by function\nveksA  0.50\n"));
}

// Figures of a function that there is no more would be lost from the document unseen.
TEST(LibraryTable, HasTheFunctionsOfAllFigures) {
    const Names functions = declared();
    for (const library::Figures& machine : library::readFiguresOf((source / "bench/figures").string())) {
        for (const auto& [function, ratio] : machine.ratios) {
            EXPECT_EQ(1U, functions.count(function)) << machine.file << ": " << function;
        }
    }
}

TEST(LibraryTable, RefusesWhatIsNoneOfItsForm) {
    EXPECT_EQ("line 2: a function without its source", refusal("text\nveksA\n"));
    EXPECT_EQ("line 2: a claim is exact, reference, property or note, then a colon",
              refusal("veksA | -\n  likely: so | S.One\n"));
    EXPECT_EQ("line 2: a claim is exact, reference, property or note, then a colon",
              refusal("veksA | -\n  exact | S.One\n"));
    EXPECT_EQ("line 2: no test shows this", refusal("veksA | -\n  exact: so\n"));
    EXPECT_EQ("line 2: a note names no tests", refusal("veksA | -\n  note: so | S.One\n"));
    EXPECT_EQ("line 3: veksA is verified by nothing", refusal("veksA | -\n  note: so\nveksB | -\n"));
    EXPECT_EQ("line 1: veksA is verified by nothing", refusal("veksA | -\n"));
}

} // namespace
