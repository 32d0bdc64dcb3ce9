// What the sources of the harness, and of the layer above it, include: arrows between rooms that no linker sees.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>

namespace {

using Names = std::set<std::string>;
using Includes = std::map<std::string, Names>;

// Of each source of a room and its header together, the others that they include.
Includes includesIn(const std::string& room) {
    Includes all;
    for (const auto& entry : std::filesystem::directory_iterator(KR_API_SOURCE "/" + room)) {
        const std::string name = entry.path().stem();
        if (entry.path().extension() == ".txt") {
            continue;
        }
        Names& included = all[name];
        std::ifstream file(entry.path());
        const std::string head = "#include \"";
        for (std::string line; std::getline(file, line);) {
            if (line.compare(0, head.size(), head) == 0) {
                included.insert(line.substr(head.size(), line.find('.') - head.size()));
            }
        }
        included.erase(name);
    }
    return all;
}

Includes reachableFrom(Includes all) {
    for (bool grown = true; grown;) {
        grown = false;
        for (auto& [name, included] : all) {
            Names more = included;
            for (const std::string& other : included) {
                more.insert(all[other].begin(), all[other].end());
            }
            grown = grown || more.size() > included.size();
            included = more;
        }
    }
    return all;
}

TEST(KrRooms, NothingBelowTheSessionIncludesIt) {
    Names users;
    for (const auto& [name, included] : includesIn("src")) {
        if (included.count("kr") != 0) {
            users.insert(name);
        }
    }
    EXPECT_EQ(users, (Names{"krdialog", "krkeys", "krmain", "kroption", "krown"}));
}

TEST(KrRooms, OnlyATestWithItsReportAndOnesOwnFunctionsGoInACircle) {
    const Includes reached = reachableFrom(includesIn("src"));
    ASSERT_GT(reached.size(), 30U);
    std::set<Names> circles;
    for (const auto& [name, others] : reached) {
        Names circle;
        for (const std::string& other : others) {
            if (reached.at(other).count(name) != 0) {
                circle.insert(other);
            }
        }
        if (!circle.empty()) {
            circles.insert(circle);
        }
    }
    EXPECT_EQ(circles, (std::set<Names>{{"kelvarrig", "krown"}, {"krreport", "krtest"}}));
}

TEST(KrRooms, OfTheLibraryTheLayerAboveIncludesTheTypesAlone) {
    Names headers;
    for (const auto& [name, included] : includesIn("lib")) {
        for (const std::string& other : included) {
            if (other.compare(0, 3, "vek") == 0) {
                headers.insert(other);
            }
        }
    }
    EXPECT_EQ(headers, Names{"vekdefs"});
}

} // namespace
