// Command keys: how words become keys and arguments.
#include "krcmdline.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::string keysOf(const std::vector<const char*>& words) {
    krStringList list;
    for (const char* word : words) {
        list.append(word);
    }
    krCommandList keys;
    keys.setArgs(list);
    std::string found;
    for (const krCommandKey& key : keys) {
        found += std::string(1, key.key) + "(" + key.arg.c_str() + ")";
    }
    return found;
}

TEST(KrCommandKeys, KeyHasTwoCharactersAndADashOrSlash) {
    EXPECT_TRUE(isKeyString("-a"));
    EXPECT_TRUE(isKeyString("/a"));
    EXPECT_TRUE(isKeyString("--"));
    EXPECT_FALSE(isKeyString("-"));
    EXPECT_FALSE(isKeyString("/"));
    EXPECT_FALSE(isKeyString("a-"));
    EXPECT_FALSE(isKeyString(""));
}

TEST(KrCommandKeys, ArgumentIsAttachedOrFollows) {
    EXPECT_EQ(keysOf({"-ra"}), "r(a)");
    EXPECT_EQ(keysOf({"-r", "a"}), "r(a)");
    EXPECT_EQ(keysOf({"-r"}), "r()");
    EXPECT_EQ(keysOf({"/ra", "/B"}), "r(a)B()");
}

TEST(KrCommandKeys, SecondWordIsLost) {
    EXPECT_EQ(keysOf({"-r", "a", "b"}), "r(a)");
    EXPECT_EQ(keysOf({"-ra", "b"}), "r(a)");
    EXPECT_EQ(keysOf({"-ra", "b", "-B"}), "r(a)B()");
}

TEST(KrCommandKeys, WordWithoutKeySwallowsTheNextOne) {
    EXPECT_EQ(keysOf({"a", "b", "-B"}), "B()");
    EXPECT_EQ(keysOf({"a"}), "");
}

TEST(KrCommandKeys, PrefixIsCutOffAndPutBackBeforeTheNextWord) {
    EXPECT_EQ(keysOf({"-q+", "x"}), "q(+x)");
    EXPECT_EQ(keysOf({"-q+x", "y"}), "q(+x)");
    EXPECT_EQ(keysOf({"-f-", "abc"}), "f(-abc)");
    EXPECT_EQ(keysOf({"-f=abc"}), "f(=abc)");
    EXPECT_EQ(keysOf({"-f=", "abc"}), "f(=abc)");
    EXPECT_EQ(keysOf({"-s-"}), "s(-)");
    EXPECT_EQ(keysOf({"-f", "=abc"}), "f(=abc)");
    EXPECT_EQ(keysOf({"-f--x"}), "f(--x)");
}

TEST(KrCommandKeys, SlashWordIsAKeyOfItsOwn) {
    EXPECT_EQ(keysOf({"-l", "/tmp/x"}), "l()t(mp/x)");
    EXPECT_EQ(keysOf({"-l/tmp/x"}), "l(/tmp/x)");
}

TEST(KrCommandKeys, LoneDashServesAsArgument) {
    EXPECT_EQ(keysOf({"-f", "-", "-B"}), "f(-)B()");
}

TEST(KrCommandKeys, CaseCounts) {
    EXPECT_EQ(keysOf({"-b", "-B"}), "b()B()");
}

TEST(KrCommandKeys, EmptyWordServesAsArgument) {
    EXPECT_EQ(keysOf({"-r", "", "-B"}), "r()B()");
}

TEST(KrCommandKeys, LineIsSplitAtBlanksSemicolonsAndLineEnds) {
    krCommandList keys;
    keys.setArgs("-ra;-B\t-fx=\"a b\"\r\n");
    ASSERT_EQ(keys.size(), 3);
    krString arg;
    EXPECT_TRUE(keys.getArg('f', arg));
    EXPECT_STREQ(arg.c_str(), "x=\"a b\"");
    EXPECT_TRUE(keys.isKey('B'));
    EXPECT_TRUE(keys.getArg('r', arg));
    EXPECT_STREQ(arg.c_str(), "a");
}

TEST(KrCommandKeys, ProgramNameIsNoKey) {
    char program[] = "-x";
    char word[] = "-B";
    char* argv[] = {program, word, nullptr};
    krCommandList keys;
    keys.setArgs(2, argv);
    EXPECT_EQ(keys.size(), 1);
    EXPECT_TRUE(keys.isKey('B'));
}

TEST(KrCommandKeys, LastKeyOfALetterWins) {
    krCommandList keys;
    keys.setArgs("-p1 -p2 -l3");
    krString arg;
    EXPECT_TRUE(keys.getArg('p', arg));
    EXPECT_STREQ(arg.c_str(), "2");
    EXPECT_FALSE(keys.isKey('x'));
    arg = "kept";
    EXPECT_FALSE(keys.getArg('x', arg));
    EXPECT_STREQ(arg.c_str(), "kept");
}

TEST(KrCommandKeys, KeyIsAppendedByItsLetter) {
    krCommandList keys;
    EXPECT_TRUE(keys.setArg('f', "=name"));
    krString arg;
    EXPECT_TRUE(keys.getArg('f', arg));
    EXPECT_STREQ(arg.c_str(), "=name");
    EXPECT_FALSE(keys.setArg("word", "next"));
    EXPECT_EQ(keys.size(), 1);
}

TEST(KrCommandKeys, UnsetKeyIsABlank) {
    krCommandKey key;
    EXPECT_EQ(key.key, ' ');
    EXPECT_FALSE(key.setArg("-", "x"));
    EXPECT_EQ(key.key, ' ');
    krString arg;
    EXPECT_FALSE(key.getArg('a', arg));
}

} // namespace
