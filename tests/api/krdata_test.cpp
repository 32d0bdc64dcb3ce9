// Forced data: pairs, their order and their text form.
#include "krdata.h"

#include <gtest/gtest.h>

namespace {

TEST(KrDataList, PairIsTrimmedAndFound) {
    krDataList list;
    list.set(" Len ", " 64 ");
    krString value;
    EXPECT_TRUE(list.get("Len", value));
    EXPECT_STREQ(value.c_str(), "64");
    ASSERT_NE(list.find("Len"), nullptr);
    EXPECT_STREQ(list.find("Len")->name.c_str(), "Len");
}

TEST(KrDataList, NamesAreExact) {
    krDataList list;
    list.set("Len", "64");
    krString value = "kept";
    EXPECT_FALSE(list.get("len", value));
    EXPECT_FALSE(list.get("Le", value));
    EXPECT_STREQ(value.c_str(), "kept");
    EXPECT_EQ(list.find("x"), nullptr);
}

TEST(KrDataList, EmptyNameDoesNothing) {
    krDataList list;
    list.set("  ", "64");
    list.set("");
    EXPECT_TRUE(list.empty());
}

TEST(KrDataList, NewValueMovesThePairToTheEnd) {
    krDataList list;
    list.set("a", "1");
    list.set("b", "2");
    list.set("a", "3");
    ASSERT_EQ(list.size(), 2);
    EXPECT_STREQ(list.begin()->name.c_str(), "b");
    EXPECT_STREQ(list.find("a")->value.c_str(), "3");
}

TEST(KrDataList, TextIsCutAtItsFirstTwoWords) {
    krDataList list;
    list.set("a=b=c");
    EXPECT_STREQ(list.find("a")->value.c_str(), "b");
}

TEST(KrDataList, QuotesInsideAValueProtectAnEqualsSignAndStay) {
    krDataList list;
    list.set("a=x\"=\"y");
    EXPECT_STREQ(list.find("a")->value.c_str(), "x\"=\"y");
}

TEST(KrDataList, TextWithoutEqualsSignHasAnEmptyValue) {
    krDataList list;
    list.set("flag");
    ASSERT_NE(list.find("flag"), nullptr);
    EXPECT_STREQ(list.find("flag")->value.c_str(), "");
}

} // namespace
