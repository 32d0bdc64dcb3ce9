// The commands ab and compare as the user runs them: tables, stored passes, JSON, statuses, messages.
#include "fakerig.h"
#include "labprocess.h"

#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <set>

using namespace krlab;

namespace {

// Three runs of thirty lines, 0.4 % up and down in turn; line 7 takes `factor` as long.
std::string tableOf(double factor) {
    std::string text;
    for (int run = 0; run < 3; ++run) {
        text += tableHead + tableHeading;
        for (int line = 0; line < 30; ++line) {
            const double clocks = (2 + 0.1 * line) * (line == 7 ? factor : 1) * ((run + line) % 2 == 0 ? 1.004 : 1);
            text += fmt::format("veksF{:02},16s,-,40,-,-,-,-,-,nLps=16,{:.3g},e,{:.3g},-\n", line, clocks,
                                clocks * 40 / 2500);
        }
    }
    return text;
}

} // namespace

TEST(LabVerdictProgram, CompareOfTablesTellsTheSlowerLine) {
    const LabDirectory directory;
    directory.write("old.csv", tableOf(1));
    directory.write("new.csv", tableOf(1.2));
    const LabResult told = directory.run({"compare", "old.csv", "new.csv"});
    EXPECT_EQ(told.status, 1);
    EXPECT_EQ(told.err, "");
    EXPECT_NE(told.out.find("\nSlower (1)\n"), std::string::npos) << told.out;
    EXPECT_NE(told.out.find("30 lines: 1 slower, 0 faster, 29 same, 0 undecided;"), std::string::npos) << told.out;
    const LabResult json = directory.run({"compare", "new.csv", "old.csv", "--json", "-", "--threshold", "5%"});
    EXPECT_EQ(json.status, 0);
    const nlohmann::json report = nlohmann::json::parse(json.out);
    EXPECT_EQ(report["schema"], "krlab-verdict-1");
    EXPECT_EQ(report["threshold"], 0.05);
    EXPECT_EQ(report["old"]["subject"], "new.csv");
    EXPECT_EQ(report["summary"]["faster"], 1);
    EXPECT_EQ(report["lines"][7]["verdict"], "faster");
    EXPECT_EQ(report["lines"][7]["passes"], 3);
}

TEST(LabVerdictProgram, CompareTellsWhatItCantRead) {
    const LabDirectory directory;
    LabResult told = directory.run({"compare", "old.csv", "new.csv"});
    EXPECT_EQ(told.status, 2);
    EXPECT_EQ(told.err,
              "krlab: old.csv: is neither a table nor, as there is no store krlab.db, a run or label in it\n");
    directory.write("old.csv", "no table\n");
    told = directory.run({"compare", "old.csv", "old.csv"});
    EXPECT_EQ(told.status, 2);
    EXPECT_EQ(told.err.substr(0, 18), "krlab: old.csv:1: ");
    told = directory.run({"compare", "old.csv", "old.csv", "--threshold", "300%"});
    EXPECT_EQ(told.status, 2);
    EXPECT_EQ(told.err, "krlab: '300%' is no share; write 3% or 0.03\n");
}

TEST(LabVerdictProgram, PassesOfAbAreComparedFromTheStore) {
    const LabDirectory directory;
    const FakeRig rig(scriptHead + scriptTest("f1") + "fi\n" + scriptTest("f2") + "fi\n" + scriptEnd);
    const std::string program = rig.subject().program.string();
    const LabResult told = directory.run({"ab", "a=" + program, "b=" + program, "--time", "0", "--quiet", "--strict"});
    EXPECT_EQ(told.status, 3) << told.err; // one round decides nothing
    EXPECT_NE(told.out.find("2 lines: 0 slower, 0 faster, 0 same, 2 undecided;"), std::string::npos) << told.out;
    const LabResult compared = directory.run({"compare", "1/a", "1/b"});
    EXPECT_EQ(compared.status, 0) << compared.err;
    EXPECT_NE(compared.out.find("One run of each side: the noise of single lines is unknown."), std::string::npos);
    EXPECT_EQ(directory.run({"compare", "krlab.db:1/a", "2"}).err,
              "krlab: krlab.db: holds no pass for '2'; name a run by its number, NUMBER/SUBJECT, or a label\n");
}

TEST(LabVerdictProgram, EachRigProcessOfAbLoadsCopiesOfTheLibraryOfItsOwn) {
    const LabDirectory directory;
    // The loader itself tells, in a file for each process.
    ::setenv("LD_DEBUG", "libs", 1);
    ::setenv("LD_DEBUG_OUTPUT", directory.path("loader").c_str(), 1);
    const std::string library = VEK_LIBRARY_DIR;
    const LabResult told = directory.run(
        {"ab", "old=" + library, "new=" + library, "--time", "0", "--quiet", "--", "-fAutoCorr_G723_16s"});
    ::unsetenv("LD_DEBUG");
    ::unsetenv("LD_DEBUG_OUTPUT");
    EXPECT_EQ(told.status, 0) << told.err;
    std::multiset<std::string> copies;
    for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
        if (!entry.path().filename().string().starts_with("loader.")) {
            continue;
        }
        std::ifstream file(entry.path());
        for (std::string line; std::getline(file, line);) {
            const size_t path = line.find("calling init: ");
            if (path != std::string::npos && line.ends_with("libveksc.so.1") &&
                line.find("krlab-") != std::string::npos) {
                copies.insert(line.substr(line.find('/', path)));
            }
        }
    }
    ASSERT_EQ(copies.size(), 2U); // of one round
    EXPECT_NE(*copies.begin(), *copies.rbegin());
    for (const std::string& copy : copies) {
        EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(copy).parent_path())) << copy;
    }
}

TEST(LabVerdictProgram, SubjectThatIsNoneEndsWithTwo) {
    const LabDirectory directory;
    EXPECT_EQ(directory.run({"ab", "nowhere", "nowhere"}).status, 2);
    EXPECT_EQ(directory.run({"ab", "nowhere"}).status, 2);
    EXPECT_FALSE(directory.exists("krlab.db"));
}
