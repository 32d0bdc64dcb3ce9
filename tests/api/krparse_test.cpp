// The word splitter: separators, quotes and their quirks.
#include "krstring.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> words(const char* text, const char* seps) {
    krStringList list;
    const int count = krString(text).parse(list, seps);
    std::vector<std::string> found;
    for (const krString& word : list) {
        found.emplace_back(word.c_str());
    }
    EXPECT_EQ(count, static_cast<int>(found.size()));
    return found;
}

using Words = std::vector<std::string>;

TEST(KrStringParse, SeparatorsMakeNoEmptyWords) {
    EXPECT_EQ(words("a  b", " "), (Words{"a", "b"}));
    EXPECT_EQ(words("  a b  ", " "), (Words{"a", "b"}));
    EXPECT_EQ(words("a,;b", ",;"), (Words{"a", "b"}));
    EXPECT_EQ(words("   ", " "), Words{});
    EXPECT_EQ(words("", " "), Words{});
    EXPECT_EQ(words("ab", ""), Words{"ab"});
}

TEST(KrStringParse, QuoteAtWordStartProtectsNothing) {
    EXPECT_EQ(words("\"a b\" c", " "), (Words{"\"a", "b\" c"}));
}

TEST(KrStringParse, QuoteInsideAWordProtectsSeparators) {
    EXPECT_EQ(words("x=\"a b\" c", " "), (Words{"x=\"a b\"", "c"}));
}

TEST(KrStringParse, TwoQuotesAtWordStartProtectWhatFollows) {
    EXPECT_EQ(words("\"\"a b\" c", " "), (Words{"\"a b\"", "c"}));
}

TEST(KrStringParse, OpenQuoteRunsToTheEnd) {
    EXPECT_EQ(words("x\"a b c", " "), (Words{"x\"a b c"}));
}

TEST(KrStringParse, QuoteAsSeparatorHasNoOtherMeaning) {
    EXPECT_EQ(words("a\"b c\"d", "\""), (Words{"a", "b c", "d"}));
    EXPECT_EQ(words("\"\"x\"\"", "\""), (Words{"x"}));
}

TEST(KrStringParse, DoubledQuoteRemovesTheSecondCharacterUntilItIsGone) {
    EXPECT_EQ(words("ab\"\"c", " "), (Words{"a\"c"}));
    EXPECT_EQ(words("\"\"", " "), (Words{"\""}));
}

TEST(KrStringParse, PairOfQuotesInsideAQuotedPartDoesNotCloseIt) {
    EXPECT_EQ(words("x\"\" y\" z", " "), (Words{"x\" y\"", "z"}));
}

TEST(KrStringParse, TwoAndThreeOutputsGetTheFirstWordsAndTheWholeCount) {
    krString a = "old";
    krString b = "old";
    krString c = "old";
    EXPECT_EQ(krString("1 2 3 4").parse(a, b, " "), 4);
    EXPECT_STREQ(a.c_str(), "1");
    EXPECT_STREQ(b.c_str(), "2");
    EXPECT_EQ(krString("1 2 3 4 5").parse(a, b, c, " "), 5);
    EXPECT_STREQ(c.c_str(), "3");
    EXPECT_EQ(krString("x").parse(a, b, c, " "), 1);
    EXPECT_STREQ(a.c_str(), "x");
    EXPECT_STREQ(b.c_str(), "");
    EXPECT_STREQ(c.c_str(), "");
    EXPECT_EQ(krString("").parse(a, b, " "), 0);
    EXPECT_STREQ(a.c_str(), "");
}

TEST(KrStringParse, OutputMayBeTheTextItself) {
    krString text = "name=value";
    krString value;
    EXPECT_EQ(text.parse(text, value, "="), 2);
    EXPECT_STREQ(text.c_str(), "name");
    EXPECT_STREQ(value.c_str(), "value");
}

TEST(KrStringParse, ListIsEmptiedFirst) {
    krStringList list;
    list.append("old");
    EXPECT_EQ(krString("a b").parse(list, " "), 2);
    EXPECT_EQ(list.size(), 2);
    EXPECT_STREQ(list.begin()->c_str(), "a");
}

TEST(KrParseWords, NextWordStopsAtTheEndAndEmptiesItsOutput) {
    krParse parse("a b");
    parse.initParse(" ");
    krString word;
    EXPECT_TRUE(parse.nextWord(word));
    EXPECT_STREQ(word.c_str(), "a");
    EXPECT_TRUE(parse.nextWord(word));
    EXPECT_STREQ(word.c_str(), "b");
    EXPECT_FALSE(parse.nextWord(word));
    EXPECT_STREQ(word.c_str(), "");
    EXPECT_FALSE(parse.nextWord(word));
}

TEST(KrParseWords, InitStartsAnew) {
    krParse parse("a,b");
    parse.initParse(",");
    krString word;
    parse.nextWord(word);
    parse.initParse(" ");
    EXPECT_TRUE(parse.nextWord(word));
    EXPECT_STREQ(word.c_str(), "a,b");
}

TEST(KrParseWords, SeparatorTestMovesTheQuoteState) {
    krParse parse("\"x \"");
    parse.initParse(" ");
    EXPECT_FALSE(parse.isSeparator(0));
    EXPECT_FALSE(parse.isSeparator(2));
    EXPECT_FALSE(parse.isSeparator(3));
    EXPECT_TRUE(parse.isSeparator(2));
}

TEST(KrParseWords, RemoveQuoteLeavesSingleQuotesAlone) {
    krParse parse("");
    parse.initParse(" ");
    krString word = "\"a\"b";
    parse.removeQuote(word);
    EXPECT_STREQ(word.c_str(), "\"a\"b");
    parse.initParse("\"");
    word = "a\"\"b";
    parse.removeQuote(word);
    EXPECT_STREQ(word.c_str(), "a\"\"b");
}

} // namespace
