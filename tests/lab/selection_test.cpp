// Keys of the rig, and the choice of lines.
#include "rigkeys.h"
#include "selection.h"

#include <gtest/gtest.h>

using namespace krlab;

namespace {

std::vector<std::string> joined(const std::vector<std::string>& words) {
    return splitKeys(words).words();
}

} // namespace

TEST(LabKeys, ArgumentsAreAttachedOrFollow) {
    EXPECT_EQ(joined({"-f", "Dot", "-d", "len=8", "-f=", "x", "-Lx"}),
              (std::vector<std::string>{"-fDot", "-dlen=8", "-f=x", "-Lx"}));
    EXPECT_EQ(joined({"/B", "-s-"}), (std::vector<std::string>{"-B", "-s-"}));
}

TEST(LabKeys, WordsThatTheRigDropsAreTold) {
    EXPECT_EQ(splitKeys({"a", "-ra", "b", "-", "c"}).lost, (std::vector<std::string>{"a", "b", "-", "c"}));
}

TEST(LabKeys, LastKeyOfALetterCounts) {
    const RigKeys keys = splitKeys({"-na", "-nb"});
    EXPECT_EQ(*keys.last('n'), "b");
    EXPECT_EQ(keys.last('x'), nullptr);
    EXPECT_EQ(splitData(" a = b ").value, "b");
    EXPECT_EQ(splitData("a").name, "a");
}

TEST(LabSelection, SectionsHoldTheValuesOfTheLines) {
    const std::vector<Line> lines = {Line::parse("f a=1 \"b c\"=2"), Line::parse("f a=1 \"b c\"=3"),
                                     Line::parse("g x=5")};
    const Selection selection = selectLines(lines, splitKeys({"-fall", "-TV8"}), "");
    EXPECT_EQ(selection.keys, (std::vector<std::string>{"-TV8", "-f=f", "-f=g"}));
    EXPECT_EQ(selection.ini, "[f]\na=1\nb c=2; 3\n[g]\nx=5\n");
    EXPECT_EQ(gridSize(lines), 3u);
    EXPECT_EQ(gridSize({Line::parse("f a=1 b=1"), Line::parse("f a=2 b=2")}), 4u);
}

TEST(LabSelection, RepeatedLinesHaveTheirFirstParametersValuesSoOften) {
    const std::vector<Line> lines = {Line::parse("f a=1 b=2"), Line::parse("f a=4 b=3"), Line::parse("g")};
    EXPECT_EQ(selectLines(lines, splitKeys({}), "", 3).ini, "[f]\na=1; 4; 1; 4; 1; 4\nb=2; 3\n[g]\n");
}

TEST(LabSelection, LinesWinOverTheUsersValuesAndOtherFunctionsKeepThem) {
    const std::vector<Line> lines = {Line::parse("f a=1"), Line::parse("g x=5")};
    const Selection selection = selectLines(lines, splitKeys({"-da=7", "-dMethod=I"}), "[Kelvar Rig]\nAccuracy=2");
    EXPECT_EQ(selection.keys, (std::vector<std::string>{"-dMethod=I", "-f=f", "-f=g"}));
    EXPECT_EQ(selection.ini, "[Kelvar Rig]\nAccuracy=2\n[f]\na=1\n[g]\na=7\nx=5\n");
}

TEST(LabSelection, NamesThatTwoParametersBearAreLeftToTheTest) {
    const Selection selection = selectLines({Line::parse("f a=1 b=2 \"a (2)\"=3")}, splitKeys({}), "");
    EXPECT_EQ(selection.ini, "[f]\nb=2\n");
}
