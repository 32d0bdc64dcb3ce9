// The text form of lines, families, and the nearest word.
#include "fault.h"
#include "line.h"

#include <gtest/gtest.h>

using namespace krlab;

TEST(LabLine, BlanksInNamesAreQuoted) {
    const Line line{"veksAutoCorr_16s32s", {{"lenght", "160"}, {"lenght Dst", "9"}}};
    EXPECT_EQ(line.text(), "veksAutoCorr_16s32s lenght=160 \"lenght Dst\"=9");
    EXPECT_EQ(Line::parse(line.text()), line);
}

TEST(LabLine, QuotesBackslashesAndEmptyValuesComeBack) {
    const Line line{"f", {{"a\"b", ""}, {"c\\", "x=y"}, {"", "1"}}};
    EXPECT_EQ(line.text(), "f \"a\\\"b\"=\"\" \"c\\\\\"=\"x=y\" \"\"=1");
    EXPECT_EQ(Line::parse(line.text()), line);
}

TEST(LabLine, TextsThatAreNoLinesAreRefused) {
    for (const char* text : {"", "  ", "f a", "f a=1 b", "f \"a=1", "f a=1 a=2", "=1"}) {
        EXPECT_THROW(Line::parse(text), Fault) << text;
    }
}

TEST(LabLine, FamilyIsTheCodecWord) {
    EXPECT_EQ(familyOf("veksLSPQuant_G729_16s"), "G729");
    EXPECT_EQ(familyOf("veksDotProd_16s32s_Sfs"), "common");
    EXPECT_EQ(familyOf("veksResamplePolyphase_AMRWBE_16s"), "AMRWBE");
    EXPECT_EQ(familyOf("veksFoo"), "common");
    EXPECT_EQ(familyOf("veksNLMS_EC_32sc_16s"), "EC");
}

TEST(LabLine, NearestWordIsFoundAndUnlikeWordsAreNot) {
    const std::vector<std::string> names = {"lenght", "order", "lenght Dst"};
    EXPECT_EQ(nearestWord("length", names), "lenght");
    EXPECT_EQ(nearestWord("Order", names), "order");
    EXPECT_EQ(nearestWord("bitrate", names), "");
}
