// The exported names of the three shared objects are the documented ones, each declared in a public header, and each
// declared one is there.
#include "publicnames.h"
#include "vekcore.h"
#include "veks.h"
#include "veksc.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>

namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

Names namesOf(const std::string& library, const char* which) {
    const std::string command =
        std::string("nm --defined-only ") + which + " '" VEK_LIBRARY_DIR "/lib" + library + ".so'";
    Names names;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        return names;
    }
    char line[1024];
    while (std::fgets(line, sizeof line, pipe) != nullptr) {
        std::istringstream words(line);
        std::string address;
        std::string kind;
        std::string name;
        words >> address >> kind >> name;
        names.insert(name);
    }
    EXPECT_EQ(0, pclose(pipe));
    return names;
}

Names exported(const std::string& library) {
    return namesOf(library, "-D");
}

std::string textOf(const fs::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

Names declared(bool (*isOurs)(const std::string& header)) {
    Names names;
    for (const auto& entry : fs::directory_iterator(VEK_INCLUDE_DIR)) {
        if (!isOurs(entry.path().filename().string())) {
            continue;
        }
        names.merge(publicnames::of(textOf(entry.path())));
    }
    return names;
}

std::string difference(const Names& a, const Names& b) {
    std::string text;
    for (const std::string& name : a) {
        text += b.count(name) == 0 ? name + " " : "";
    }
    return text;
}

void expectSame(const std::string& library, const Names& documented) {
    const Names names = exported(library);
    EXPECT_FALSE(names.empty());
    EXPECT_EQ("", difference(names, documented)) << "exported, not documented";
    EXPECT_EQ("", difference(documented, names)) << "documented, not exported";
}

bool ofSpeech(const std::string& header) {
    return header.rfind("veksc", 0) == 0;
}

TEST(VekSymbols, CoreExportsTheDocumentedNames) {
    expectSame("vekcore", declared([](const std::string& header) { return header == "vekcore.h"; }));
}

TEST(VekSymbols, VectorLibraryExportsTheDocumentedNames) {
    expectSame("veks", declared([](const std::string& header) { return header == "veks.h"; }));
}

TEST(VekSymbols, SpeechLibraryExportsTheDocumentedNames) {
    expectSame("veksc", declared(ofSpeech));
}

// vek/symbols is the promise to programs that are linked already, and goes into the library's package. Who adds a
// function adds its line; a name that is gone is a new SONAME.
TEST(VekSymbols, ExportedNamesAreThoseOfTheCommittedList) {
    std::istringstream lines(textOf(fs::path(VEK_INCLUDE_DIR) / "../symbols"));
    std::map<std::string, Names> listed;
    std::string library;
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("lib", 0) == 0) {
            library = line.substr(3, line.find(".so.1 libvek1 #MINVER#") - 3);
        } else {
            listed[library].insert(line.substr(1, line.find("@Base ") - 1));
        }
    }
    EXPECT_EQ(3U, listed.size());
    for (const auto& [name, names] : listed) {
        EXPECT_EQ("", difference(exported(name), names)) << "exported by " << name << ", not listed";
        EXPECT_EQ("", difference(names, exported(name))) << "listed, not exported by " << name;
    }
}

TEST(VekSymbols, FilesAreNamedByTheVersionThatTheLibrariesTell) {
    for (const VekLibraryVersion* version : {vekGetLibVersion(), veksGetLibVersion(), vekscGetLibVersion()}) {
        const std::string file = std::string(VEK_LIBRARY_DIR "/") + version->Name + ".so.";
        EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(file + version->Version))) << file << version->Version;
        EXPECT_EQ(std::to_string(version->major) + "." + std::to_string(version->minor) + ".0", version->Version);
        EXPECT_TRUE(fs::is_symlink(file + std::to_string(version->major))) << file;
    }
}

TEST(VekSymbols, EachSharedObjectTellsItsSoname) {
    for (const std::string library : {"vekcore", "veks", "veksc"}) {
        std::string command = "readelf -d '" VEK_LIBRARY_DIR "/lib";
        command.append(library).append(".so' | grep -q '\\[lib").append(library).append("\\.so\\.1\\]'");
        EXPECT_EQ(0, std::system(command.c_str())) << library;
    }
}

// The compiler names what a file does at load after the file.
TEST(VekSymbols, LargeCodebooksAreNotMadeAtLoad) {
    const Names names = namesOf("veksc", "");
    const auto atLoad = [&](const std::string& file) { return names.count("_GLOBAL__sub_I_" + file) != 0; };
    EXPECT_TRUE(atLoad("dispatch.cpp"));
    for (const char* const file : {"lattice.cpp", "spherical.cpp", "lspquant.cpp"}) {
        EXPECT_FALSE(atLoad(file)) << file;
    }
}

bool holdsPackage(const std::string& command, const std::string& name) {
    std::istringstream words(command);
    std::string word;
    while (words >> word) {
        if (word == name) {
            return true;
        }
    }
    return false;
}

// A test that is skipped names its packages, and the test command installs them.
TEST(VekSymbols, TheTestCommandWantsThePackagesOfEverySkippedTest) {
    const fs::path top = fs::path(VEK_INCLUDE_DIR) / "../..";
    const std::string command = textOf(top / "test");
    int packages = 0;
    for (const auto& entry : fs::directory_iterator(top / "tests/oracle")) {
        const std::string text = textOf(entry.path());
        for (size_t end = text.find(" not installed"); end != std::string::npos;
             end = text.find(" not installed", end + 1)) {
            const size_t begin = text.rfind('"', end) + 1;
            std::istringstream words(text.substr(begin, end - begin));
            std::string word;
            while (words >> word) {
                if (word != "is" && word != "and" && word != "are") {
                    EXPECT_TRUE(holdsPackage(command, word)) << entry.path() << ": " << word;
                    ++packages;
                }
            }
        }
    }
    EXPECT_GT(packages, 10);
}

} // namespace
