// The scale-factor parameter, the word tables, and the cache-state iterator around a two-dimensional size.
#include "krstream.h"
#include "krtest.h"
#include "vkcache.h"
#include "vkdefault.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Values = std::vector<int>;

Values walk(krIterator<int>& parm) {
    Values values;
    for (bool more = parm.firstValue(); more; more = parm.nextValue()) {
        values.push_back(parm.value());
    }
    return values;
}

std::string sizeText(VekiSize value) {
    return krText(value).c_str();
}

std::string updated(VekiSize value, int size, int bound, bool stepwise) {
    const bool good = krCacheIteratorSize::updateValue(value, size, bound, stepwise);
    return sizeText(value) + (good ? "" : " ends");
}

} // namespace

TEST(VkScaleIterator, ScaledFunctionHasTheDefaultValues) {
    vkScaleIterator scale("scaleFactor", "scaleFactor");
    scale.init("veksFoo_16s_Sfs");
    EXPECT_TRUE(scale.scaled());
    EXPECT_STREQ(scale.name().c_str(), "ScaleFactor");
    EXPECT_STREQ(scale.prompt().c_str(), "ScaleFactor");
    EXPECT_EQ(walk(scale), (Values{0, 1, 2, -1}));
}

TEST(VkScaleIterator, ListedValuesReplaceTheDefault) {
    vkScaleIterator scale;
    scale.init("veksFoo_16s_ISfs", 13);
    EXPECT_EQ(walk(scale), (Values{13}));
    scale.init("veksFoo_16s_Fix", 0, 1, 2, 3, 4, 5, 6);
    EXPECT_EQ(walk(scale), (Values{0, 1, 2, 3, 4, 5, 6}));
}

TEST(VkScaleIterator, UnscaledFunctionIsSilent) {
    vkScaleIterator scale("scaleFactor", "scaleFactor");
    scale.init("veksFoo_16s_I", 3, 4);
    EXPECT_FALSE(scale.scaled());
    EXPECT_STREQ(scale.name().c_str(), "");
    EXPECT_EQ(walk(scale), (Values{0}));
    scale.init("scaleFactor", -1, 0, 1);
    EXPECT_FALSE(scale.scaled());
    EXPECT_FALSE(scale.isScaled("veksScaled_16s"));
    EXPECT_FALSE(scale.isScaled("veksSfs_16s"));
}

TEST(VkScaleIterator, StandsInTheLastParameterColumn) {
    const int old = krTest::m_numParmsColm;
    krTest::m_numParmsColm = 6;
    vkScaleIterator scale;
    scale.init("veksFoo_16s_Sfs", 7);
    scale.firstValue();
    krCStream table;
    scale.toCStream(table);
    krString cell;
    table.getColm(5, cell);
    EXPECT_EQ(scale.colmIndex(), 5);
    EXPECT_STREQ(cell.c_str(), "7");
    EXPECT_EQ(table.colmCount(), 0);
    krTest::m_numParmsColm = old;
}

TEST(VkcScaleIterator, NameWithScaledCounts) {
    vkcScaleIterator scale;
    EXPECT_TRUE(scale.isScaled("veksFooScaled_16s"));
    EXPECT_TRUE(scale.isScaled("veksFoo_16s_Sfs"));
    EXPECT_FALSE(scale.isScaled("veksFoo_16s"));
    scale.init("veksFooScaled_16s", 4);
    EXPECT_EQ(walk(scale), (Values{4}));
}

TEST(VkWordTables, ValuesAndWords) {
    EXPECT_STREQ(vkFftFlagString(1).c_str(), "divFwdByN");
    EXPECT_STREQ(vkFftFlagString(2).c_str(), "divInvByN");
    EXPECT_STREQ(vkFftFlagString(4).c_str(), "divBySqrtN");
    EXPECT_STREQ(vkFftFlagString(8).c_str(), "nodivByAny");
    EXPECT_STREQ(vkFftFlagString(3).c_str(), "3");
    EXPECT_STREQ(vkCompareString(0).c_str(), "LT");
    EXPECT_STREQ(vkCompareString(1).c_str(), "LE");
    EXPECT_STREQ(vkCompareString(2).c_str(), "EQ");
    EXPECT_STREQ(vkCompareString(3).c_str(), "GE");
    EXPECT_STREQ(vkCompareString(4).c_str(), "GT");
    EXPECT_STREQ(vkHintString(0).c_str(), "none");
    EXPECT_STREQ(vkHintString(1).c_str(), "fast");
    EXPECT_STREQ(vkHintString(2).c_str(), "accurate");
    EXPECT_STREQ(vkRoundString(0).c_str(), "zero");
    EXPECT_STREQ(vkRoundString(1).c_str(), "near");
}

TEST(VkWordTables, BeginningsOfWords) {
    krString text("nod");
    EXPECT_EQ(vkFftFlagValue(text), 8);
    text = "div";
    EXPECT_EQ(vkFftFlagValue(text), 1);
    text = "g";
    EXPECT_EQ(vkCompareValue(text), 3);
    text = "A";
    EXPECT_EQ(vkHintValue(text), 2);
    text = "ne";
    EXPECT_EQ(vkRoundValue(text), 1);
    EXPECT_FALSE(text.m_failed);
    text = "far";
    EXPECT_EQ(vkRoundValue(text), 0);
    EXPECT_TRUE(text.m_failed);
}

TEST(VkSizeText, WidthAndHeight) {
    krIterator<VekiSize> parm("size");
    parm.translate("320x240; 64X48");
    EXPECT_STREQ(parm.defaultString().c_str(), "320x240; 64x48");
    parm.firstValue();
    EXPECT_EQ(parm.value().width, 320);
    EXPECT_EQ(parm.value().height, 240);
    VekiSize value{};
    for (const char* bad : {"12", "ax1", "1xb", ""}) {
        krString text(bad);
        value << text;
        EXPECT_TRUE(text.m_failed) << bad;
    }
}

TEST(KrCacheIteratorSize, StepGoesToTheSideThatIsBehind) {
    EXPECT_EQ(updated({4, 4}, 1, 2, true), "8x4");
    EXPECT_EQ(updated({8, 4}, 1, 2, true), "8x8");
    EXPECT_EQ(updated({8, 4}, 2, 2, true), "4x4");
    EXPECT_EQ(updated({4, 4}, 2, 2, true), "4x2");
    EXPECT_EQ(updated({4, 1}, 2, 2, true), "2x1");
    EXPECT_EQ(updated({1, 1}, 2, 2, true), "1x0 ends");
}

TEST(KrCacheIteratorSize, EstimateSpreadsTheDoublings) {
    EXPECT_EQ(updated({10, 10}, 1000, 9000, false), "40x20");
    EXPECT_EQ(updated({64, 64}, 10000, 900, false), "16x16");
    EXPECT_EQ(updated({1, 1}, 10000, 900, false), "0x0 ends");
    EXPECT_EQ(updated({1, 100}, 10000, 900, false), "0x25 ends");
    EXPECT_EQ(updated({100, 1}, 10000, 900, false), "25x0 ends");
    EXPECT_EQ(updated({5, 6}, 0, 900, false), "5x6");
}

TEST(KrCacheIteratorSize, StoresAGoodValueAlone) {
    krIterator<VekiSize> parm("size");
    parm.setList({{4, 4}});
    krCacheIteratorSize iter(parm, nullptr, nullptr);
    iter.firstValue();
    EXPECT_TRUE(iter.setNewValueToParm(1, 2, true));
    EXPECT_EQ(sizeText(parm.value()), "8x4");
    EXPECT_FALSE(iter.setNewValueToParm(1 << 30, 1, false));
    EXPECT_EQ(sizeText(parm.value()), "8x4");
}
