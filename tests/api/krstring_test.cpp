// Text: buffers, searching, path pieces, word tables and the conversions between values and text.
#include "commalocale.h"
#include "krstring.h"

#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <cmath>
#include <string>

namespace {

// The value of `text` read over `before`.
template <class T>
T parsed(const char* text, T before, bool* failed = nullptr) {
    krString s = text;
    T value = before;
    value << s;
    if (failed != nullptr) {
        *failed = s.m_failed;
    }
    return value;
}

bool fails(const char* text) {
    bool failed = false;
    parsed<int>(text, 0, &failed);
    return failed;
}

TEST(KrStringBuffer, SizeIsThatOfTheTextAndItsZeroRoundedUpToSixteen) {
    EXPECT_EQ(getBufSize(0), 16);
    EXPECT_EQ(getBufSize(15), 16);
    EXPECT_EQ(getBufSize(16), 32);
    EXPECT_EQ(getBufSize(31), 32);
    EXPECT_EQ(getBufSize(32), 48);
}

TEST(KrStringBuffer, EmptyTextOwnsSixteenBytes) {
    const krString text;
    EXPECT_EQ(text.length(), 0);
    EXPECT_EQ(text.capacity(), 16);
    EXPECT_STREQ(text.c_str(), "");
    EXPECT_FALSE(text.m_failed);
}

TEST(KrStringBuffer, NullPointerCountsAsEmptyText) {
    const char* none = nullptr;
    const krString text(none);
    EXPECT_EQ(text.length(), 0);
    EXPECT_EQ(text.capacity(), 16);
    krString other = "abc";
    other.assign(none);
    EXPECT_STREQ(other.c_str(), "");
}

TEST(KrStringBuffer, AllocateZeroesTheWholeBufferAndForgetsTheText) {
    krString text = "0123456789";
    text.allocate(3);
    EXPECT_EQ(text.length(), 3);
    EXPECT_EQ(text.capacity(), 16);
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(text[i], '\0') << i;
    }
    text.allocate(-5);
    EXPECT_EQ(text.length(), 0);
    EXPECT_EQ(text.capacity(), 16);
    text.allocate(16);
    EXPECT_EQ(text.capacity(), 32);
}

TEST(KrStringBuffer, BufferShrinksWithTheText) {
    krString text = "01234567890123456789";
    EXPECT_EQ(text.capacity(), 32);
    text.assign("a");
    EXPECT_EQ(text.capacity(), 16);
}

TEST(KrStringBuffer, AppendUpToTheCapacityMakesPlaceForTheTerminator) {
    krString text = "0123456789";
    text += "abcde";
    EXPECT_EQ(text.capacity(), 16);
    EXPECT_STREQ(text.c_str(), "0123456789abcde");
    text += "f";
    EXPECT_EQ(text.length(), 16);
    EXPECT_EQ(text.capacity(), 32);
    EXPECT_STREQ(text.c_str(), "0123456789abcdef");
}

TEST(KrStringBuffer, GrowByKeepsTheTextAndAddsZeros) {
    krString text = "abc";
    text.growBy(20);
    EXPECT_EQ(text.length(), 23);
    EXPECT_STREQ(text.c_str(), "abc");
    EXPECT_EQ(text[22], '\0');
}

TEST(KrStringBuffer, FreeLeavesNothing) {
    krString text = "abc";
    text.free();
    EXPECT_EQ(text.length(), 0);
    EXPECT_EQ(text.capacity(), 0);
    EXPECT_EQ(text.c_str(), nullptr);
    text.assign("x");
    EXPECT_STREQ(text.c_str(), "x");
}

TEST(KrStringBuffer, TextCanBeAppendedToItself) {
    krString text = "0123456789";
    text += text;
    EXPECT_STREQ(text.c_str(), "01234567890123456789");
}

TEST(KrStringBuffer, TextCanBeAssignedFromItsOwnTail) {
    krString text = "abcdef";
    text.assign(text.c_str() + 2);
    EXPECT_STREQ(text.c_str(), "cdef");
}

TEST(KrStringBuffer, SumHasTheSmallestBuffer) {
    const krString sum = krString("01234567") + "89abcdef";
    EXPECT_STREQ(sum.c_str(), "0123456789abcdef");
    EXPECT_EQ(sum.length(), 16);
    EXPECT_EQ(sum.capacity(), 32);
}

TEST(KrStringBuffer, CharacterGivesATextOfOne) {
    krString text('x');
    EXPECT_EQ(text.length(), 1);
    text.assign('y');
    EXPECT_STREQ(text.c_str(), "y");
}

TEST(KrStringBuffer, ResizeFillsOrCuts) {
    krString text = "abc";
    text.resize(3, '.');
    EXPECT_STREQ(text.c_str(), "abc");
    text.resize(6, '.');
    EXPECT_STREQ(text.c_str(), "abc...");
    text.resize(2, '.');
    EXPECT_STREQ(text.c_str(), "ab");
    EXPECT_EQ(text.length(), 2);
    text.resize(0, '.');
    EXPECT_STREQ(text.c_str(), "");
}

TEST(KrStringSearch, FindStartsAtAnIndex) {
    const krString text = "abcabc";
    EXPECT_EQ(text.find("bc"), 1);
    EXPECT_EQ(text.find("bc", 1), 1);
    EXPECT_EQ(text.find("bc", 2), 4);
    EXPECT_EQ(text.find("bc", 5), -1);
    EXPECT_EQ(text.find("x"), -1);
    EXPECT_EQ(text.find(""), 0);
    EXPECT_EQ(text.find("BC"), -1);
}

TEST(KrStringSearch, RfindGivesTheLastPlace) {
    const krString text = "abcabc";
    EXPECT_EQ(text.rfind("abc"), 3);
    EXPECT_EQ(text.rfind("a"), 3);
    EXPECT_EQ(text.rfind("x"), -1);
    EXPECT_EQ(text.rfind("abcabcabc"), -1);
    EXPECT_EQ(text.rfind(""), 6);
    EXPECT_EQ(krString("").rfind(""), 0);
}

TEST(KrStringSearch, SubstrIsBoundedByTheText) {
    const krString text = "abcdef";
    EXPECT_STREQ(text.substr(2).c_str(), "cdef");
    EXPECT_STREQ(text.substr(6).c_str(), "");
    EXPECT_STREQ(text.substr(7).c_str(), "");
    EXPECT_STREQ(text.substr(2, 2).c_str(), "cd");
    EXPECT_STREQ(text.substr(2, 100).c_str(), "cdef");
    EXPECT_STREQ(text.substr(2, 0).c_str(), "");
    EXPECT_STREQ(text.substr(2, -3).c_str(), "");
}

TEST(KrStringSearch, SubstrOfTheTailStopsAtAnEmbeddedZero) {
    krString text = "ab";
    text.growBy(3);
    text.data()[4] = 'x';
    EXPECT_EQ(text.substr(1).length(), 1);
    EXPECT_EQ(text.substr(1, 4).length(), 4);
}

TEST(KrStringSearch, EqualityStopsAtTheTerminator) {
    krString text = "ab";
    text.growBy(3);
    EXPECT_TRUE(text == krString("ab"));
    EXPECT_FALSE(krString("ab") == krString("aB"));
}

TEST(KrStringCompare, FirstDifferenceDecidesThenTheLengths) {
    EXPECT_EQ(krString("abc").compare("abd"), -1);
    EXPECT_EQ(krString("abd").compare("abc"), 1);
    EXPECT_EQ(krString("abc").compare("abc"), 0);
    EXPECT_EQ(krString("abcde").compare("abc"), 2);
    EXPECT_EQ(krString("abc").compare("abcdef"), -3);
    EXPECT_EQ(krString("").compare("abcd"), -4);
    EXPECT_EQ(krString("abcd").compare(""), 4);
    EXPECT_EQ(krString("b").compare("abcdef"), 1);
}

TEST(KrStringCompare, UpperHalfOfTheCodesSortsBeforeAscii) {
    EXPECT_EQ(krString("\xE4").compare("a"), -1);
    EXPECT_EQ(krString("a").compare("\xE4"), 1);
}

std::string trimmed(const char* text) {
    krString string = text;
    string.trim();
    return string.c_str();
}

TEST(KrStringTrim, RemovesBlanksTabsAndLeadingCarriageReturns) {
    EXPECT_EQ(trimmed(" \t\r ab c \t "), "ab c");
    EXPECT_EQ(trimmed(" \t\r "), "");
}

TEST(KrStringTrim, KeepsATrailingCarriageReturn) {
    EXPECT_EQ(trimmed(" abc\r"), "abc\r");
    EXPECT_EQ(trimmed("abc \r"), "abc \r");
}

TEST(KrStringTrim, NewlineIsNoBlank) {
    EXPECT_EQ(trimmed("\n abc \n"), "\n abc \n");
}

TEST(KrStringCase, LowerCaseIsACopy) {
    const krString text = "AbC_1Z";
    EXPECT_STREQ(text.toLower().c_str(), "abc_1z");
    EXPECT_STREQ(text.c_str(), "AbC_1Z");
}

TEST(KrStringPath, DirectoryKeepsItsSeparator) {
    EXPECT_STREQ(krString("file.txt").getFileDir().c_str(), "");
    EXPECT_STREQ(krString("a/b\\c.txt").getFileDir().c_str(), "a/b\\");
    EXPECT_STREQ(krString("a\\b/c.txt").getFileDir().c_str(), "a\\b/");
    EXPECT_STREQ(krString("/").getFileDir().c_str(), "/");
}

TEST(KrStringPath, NameStandsBehindTheLastSeparatorOfEitherKind) {
    EXPECT_STREQ(krString("a/b\\c.txt").getFileName().c_str(), "c.txt");
    EXPECT_STREQ(krString("a\\b/c.txt").getFileName().c_str(), "c.txt");
    EXPECT_STREQ(krString("file.txt").getFileName().c_str(), "file.txt");
    EXPECT_STREQ(krString("dir/").getFileName().c_str(), "");
}

TEST(KrStringPath, TitleLosesOnlyTheLastExtension) {
    EXPECT_STREQ(krString("a.b/c").getFileTitle().c_str(), "c");
    EXPECT_STREQ(krString("x.tar.gz").getFileTitle().c_str(), "x.tar");
    EXPECT_STREQ(krString("noext").getFileTitle().c_str(), "noext");
    EXPECT_STREQ(krString("dir/.hidden").getFileTitle().c_str(), "");
}

TEST(KrStringTables, WordFitsTheBeginningOfANameInAnyCase) {
    EXPECT_TRUE(fitString("fa", "fast", 0));
    EXPECT_TRUE(fitString("FAST", "fast", 0));
    EXPECT_TRUE(fitString("", "fast", 0));
    EXPECT_FALSE(fitString("faster", "fast", 0));
    EXPECT_FALSE(fitString("ast", "fast", 0));
}

TEST(KrStringTables, SkipLetsTheLeadOfTheNameBeLeftOut) {
    EXPECT_TRUE(fitString("fast", "hint_fast", 5));
    EXPECT_TRUE(fitString("hint_f", "hint_fast", 5));
    EXPECT_FALSE(fitString("int", "hint_fast", 5));
}

const int s_flags[] = {1, 2, 3};
const krString s_names[] = {"a", "b", "both"};

TEST(KrStringTables, FlagsSetAreJoinedByBars) {
    EXPECT_STREQ(krString::flagString(3, s_flags, s_names, 2).c_str(), "a|b");
    EXPECT_STREQ(krString::flagString(2, s_flags, s_names, 2).c_str(), "b");
    EXPECT_STREQ(krString::flagString(0, s_flags, s_names, 2).c_str(), "0");
    EXPECT_STREQ(krString::flagString(12, s_flags, s_names, 2).c_str(), "12");
}

TEST(KrStringTables, OverlappingFlagsEachPrint) {
    EXPECT_STREQ(krString::flagString(1, s_flags, s_names, 3).c_str(), "a|both");
}

TEST(KrStringTables, FlagValueTakesAnyOfItsFourSeparators) {
    krString text = "a|b";
    EXPECT_EQ(krString::flagValue(text, s_flags, s_names, 2, 0), 3);
    EXPECT_FALSE(text.m_failed);
    text = " b ,; a";
    EXPECT_EQ(krString::flagValue(text, s_flags, s_names, 2, 0), 3);
    text = "";
    EXPECT_EQ(krString::flagValue(text, s_flags, s_names, 2, 0), 0);
    EXPECT_FALSE(text.m_failed);
}

TEST(KrStringTables, FlagValueGoesOnBehindABadWord) {
    krString text = "a,zzz,b";
    EXPECT_EQ(krString::flagValue(text, s_flags, s_names, 2, 0), 3);
    EXPECT_TRUE(text.m_failed);
    text = "b";
    krString::flagValue(text, s_flags, s_names, 2, 0);
    EXPECT_FALSE(text.m_failed);
}

TEST(KrStringTables, FlagWordTakesTheFirstEntryThatFits) {
    krString text = "b";
    EXPECT_EQ(krString::flagValue(text, s_flags, s_names, 3, 0), 2);
}

const int s_values[] = {0, 10, 20};
const krString s_hints[] = {"none", "fast", "accurate"};

TEST(KrStringTables, EnumStringGivesTheNumberOfAnUnknownValue) {
    EXPECT_STREQ(krString::enumString(20, s_values, s_hints, 3).c_str(), "accurate");
    EXPECT_STREQ(krString::enumString(5, s_values, s_hints, 3).c_str(), "5");
    EXPECT_STREQ(krString::enumString(-1, s_values, s_hints, 3).c_str(), "-1");
}

TEST(KrStringTables, EnumValueTakesAnAbbreviation) {
    krString text = "fa";
    EXPECT_EQ(krString::enumValue(text, s_values, s_hints, 3, 0), 10);
    text = "a";
    EXPECT_EQ(krString::enumValue(text, s_values, s_hints, 3, 0), 20);
    EXPECT_FALSE(text.m_failed);
}

TEST(KrStringTables, EnumValueOfAnUnknownWordFailsWithZero) {
    krString text = "slow";
    EXPECT_EQ(krString::enumValue(text, s_values + 1, s_hints + 1, 2, 0), 0);
    EXPECT_TRUE(text.m_failed);
    text = "ACC";
    EXPECT_EQ(krString::enumValue(text, s_values, s_hints, 3, 0), 20);
    EXPECT_FALSE(text.m_failed);
}

TEST(KrStringTables, EmptyWordTakesTheFirstEntry) {
    krString text = "";
    EXPECT_EQ(krString::enumValue(text, s_values + 1, s_hints + 1, 2, 0), 10);
    EXPECT_FALSE(text.m_failed);
}

TEST(KrStringToText, ValuesHaveTheirFixedSpelling) {
    EXPECT_STREQ(krText(true).c_str(), "yes");
    EXPECT_STREQ(krText(false).c_str(), "no");
    EXPECT_STREQ(krText(-42).c_str(), "-42");
    EXPECT_STREQ(krText(-9000000000LL).c_str(), "-9000000000");
    EXPECT_STREQ(krText(3.14159).c_str(), "3.14");
    EXPECT_STREQ(krText(1234567.0).c_str(), "1.23e+06");
    EXPECT_STREQ(krText(100.0).c_str(), "100");
    EXPECT_STREQ(krText(0.1F).c_str(), "0.1");
    EXPECT_STREQ(krText('c').c_str(), "c");
}

TEST(KrStringToText, PointerIsUpperCaseHexadecimal) {
    krString text;
    text << static_cast<const void*>(nullptr);
    EXPECT_STREQ(text.c_str(), "NULL");
    text = "";
    text << reinterpret_cast<const void*>(0xABCDEF12UL);
    EXPECT_STREQ(text.c_str(), "ABCDEF12");
}

TEST(KrStringToText, ConversionsAppend) {
    krString text = "n=";
    text << 5 << ' ' << krString("x") << "y";
    EXPECT_STREQ(text.c_str(), "n=5 xy");
    EXPECT_STREQ(krString::prefixI64().c_str(), "L");
}

TEST(KrStringFromText, NumbersKeepTheirSpellingInAnyLocale) {
    const CommaLocale locale;
    if (!locale.exists() || std::setlocale(LC_ALL, "comma") == nullptr) {
        GTEST_SKIP() << "no locale can be made";
    }
    krString text = "2.5";
    double value = 0;
    value << text;
    const std::string spelled = krText(1.25).c_str();
    const std::string formatted = krFormat("%.1f", 21.1).c_str();
    char plain[8] = {};
    std::snprintf(plain, sizeof plain, "%.1f", 21.1);
    std::setlocale(LC_ALL, "C");
    EXPECT_STREQ(plain, "21,1") << "the locale of everybody else stays";
    EXPECT_EQ(value, 2.5);
    EXPECT_EQ(spelled, "1.25");
    EXPECT_EQ(formatted, "21.1");
}

TEST(KrStringFromText, IntTakesDecimalAndHexadecimal) {
    bool failed = true;
    EXPECT_EQ(parsed("0x10", 7, &failed), 16);
    EXPECT_FALSE(failed);
    EXPECT_EQ(parsed("0X1f", 7), 31);
    EXPECT_EQ(parsed("0", 7), 0);
    EXPECT_EQ(parsed("-12", 7), -12);
    EXPECT_EQ(parsed(" 12", 7), 12);
    EXPECT_EQ(parsed("010", 7), 10);
}

TEST(KrStringFromText, EmptyTextLeavesTheNumberAndDoesNotFail) {
    bool failed = true;
    EXPECT_EQ(parsed("", 7, &failed), 7);
    EXPECT_FALSE(failed);
    EXPECT_EQ(parsed("   ", 7, &failed), 7);
    EXPECT_FALSE(failed);
    EXPECT_EQ(parsed("", 2.5, &failed), 2.5);
    EXPECT_FALSE(failed);
}

TEST(KrStringFromText, WordIsNoNumber) {
    bool failed = false;
    EXPECT_EQ(parsed("abc", 7, &failed), 7);
    EXPECT_TRUE(failed);
    EXPECT_EQ(parsed("abc", 7LL, &failed), 7LL);
    EXPECT_TRUE(failed);
    EXPECT_EQ(parsed("abc", 1.5, &failed), 1.5);
    EXPECT_TRUE(failed);
    EXPECT_EQ(parsed("abc", 1.5F, &failed), 1.5F);
    EXPECT_TRUE(failed);
}

TEST(KrStringFromText, CharactersBehindANumberAreAccepted) {
    bool failed = true;
    EXPECT_EQ(parsed("12abc", 7, &failed), 12);
    EXPECT_FALSE(failed);
    EXPECT_EQ(parsed("2.5x", 7.0, &failed), 2.5);
    EXPECT_FALSE(failed);
}

TEST(KrStringFromText, LongTakesSixtyFourBits) {
    EXPECT_EQ(parsed("9000000000", 0LL), 9000000000LL);
    EXPECT_EQ(parsed("-9000000000", 0LL), -9000000000LL);
    EXPECT_EQ(parsed("0x1FFFFFFFF", 0LL), 0x1FFFFFFFFLL);
    EXPECT_EQ(parsed("0Xffffffffff", 0LL), 0xFFFFFFFFFFLL);
}

TEST(KrStringFromText, FailedMarkIsThatOfTheLastConversion) {
    krString text = "abc";
    int value = 0;
    value << text;
    EXPECT_TRUE(text.m_failed);
    text.assign("12");
    value << text;
    EXPECT_FALSE(text.m_failed);
    EXPECT_EQ(value, 12);
    EXPECT_TRUE(fails("x"));
    EXPECT_FALSE(fails("1"));
}

TEST(KrStringFromText, BoolLooksAtTheFirstLetter) {
    bool failed = true;
    EXPECT_TRUE(parsed(" Yes ", false, &failed));
    EXPECT_FALSE(failed);
    EXPECT_TRUE(parsed("TRUE", false));
    EXPECT_TRUE(parsed("1", false));
    EXPECT_FALSE(parsed("No", true, &failed));
    EXPECT_FALSE(failed);
    EXPECT_FALSE(parsed("false", true, &failed));
    EXPECT_FALSE(failed);
    EXPECT_FALSE(parsed("0", true, &failed));
    EXPECT_FALSE(failed);
}

TEST(KrStringFromText, BoolOfAnythingElseFailsWithFalse) {
    for (const char* text : {"2", "", "10", "00", "maybe"}) {
        bool failed = false;
        EXPECT_FALSE(parsed(text, true, &failed)) << text;
        EXPECT_TRUE(failed) << text;
    }
}

TEST(KrStringFormat, PadsAndNeverCuts) {
    EXPECT_STREQ(sFormat("abc", 5).c_str(), "  abc");
    EXPECT_STREQ(sFormat("abc", -5).c_str(), "abc  ");
    EXPECT_STREQ(sFormat("abcdef", 3).c_str(), "abcdef");
    EXPECT_STREQ(sFormat("abcdef", -3).c_str(), "abcdef");
    EXPECT_STREQ(sFormat("abc", 0).c_str(), "abc");
}

TEST(KrStringFormat, NumbersArePaddedToo) {
    EXPECT_STREQ(sFormat(5, 3).c_str(), "  5");
    EXPECT_STREQ(sFormat(5, -3).c_str(), "5  ");
    EXPECT_STREQ(sFormat(12.3456, 6).c_str(), "  12.3");
}

TEST(KrStringFormat, LongIntegerBecomesADouble) {
    EXPECT_STREQ(sFormat(1234567890, 4).c_str(), "1.23e+09");
    EXPECT_STREQ(sFormat(1234567890, 10).c_str(), "1234567890");
    EXPECT_STREQ(sFormat(123456789, 4).c_str(), "123456789");
    EXPECT_STREQ(sFormat(-123456789, 4).c_str(), "-1.23e+08");
}

TEST(KrStringFormat, WidthOfALongIntegerCountsWithoutItsSign) {
    EXPECT_STREQ(sFormat(1234567890, -12).c_str(), "1234567890  ");
    EXPECT_STREQ(sFormat(1234567890, -10).c_str(), "1234567890");
    EXPECT_STREQ(sFormat(1234567890, -9).c_str(), "1.23e+09 ");
}

TEST(KrStringFormat, LongLongBeyondIntIsADouble) {
    EXPECT_STREQ(sFormat(2147483647LL, 12).c_str(), "  2147483647");
    EXPECT_STREQ(sFormat(2147483648LL, 12).c_str(), "    2.15e+09");
    EXPECT_STREQ(sFormat(-2147483648LL, 12).c_str(), " -2147483648");
    EXPECT_STREQ(sFormat(-2147483649LL, -12).c_str(), "-2.15e+09   ");
}

} // namespace
