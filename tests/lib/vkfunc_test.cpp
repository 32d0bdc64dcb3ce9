// Function names: splitting, types of arguments, channel words, and the order of tests.
#include "vkfunc.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>

namespace {

std::string parts(const char* name) {
    krString base;
    krString types;
    krString descr;
    vkFunc(name).parseFunction(base, types, descr);
    return std::string(base.c_str()) + "," + types.c_str() + "," + descr.c_str();
}

std::string tokens(const char* name) {
    krString base;
    krString type1;
    krString type2;
    krString type3;
    krString descr;
    vkFunc(name).parseFunction(base, type1, type2, type3, descr);
    return std::string(type1.c_str()) + "," + type2.c_str() + "," + type3.c_str();
}

// The words of src, src2, dst, dst2.
std::string argTypes(const char* name) {
    const vkFunc func(name);
    std::string words;
    for (const vkArg arg : {vkArg::src, vkArg::src2, vkArg::dst, vkArg::dst2}) {
        words += std::string(words.empty() ? "" : ",") + vkFunc::typeToString(func.type(arg)).c_str();
    }
    return words;
}

std::string chanStr(const char* text, std::string* rest = nullptr) {
    krString left(text);
    const krString word = vkFunc::firstChanStr(left);
    if (rest) {
        *rest = left.c_str();
    }
    return word.c_str();
}

// What `read` makes of the first text of each row is the second one.
void expectEach(std::string (*read)(const char*), std::initializer_list<std::pair<const char*, const char*>> rows) {
    for (const auto& [name, text] : rows) {
        EXPECT_EQ(read(name), text) << name;
    }
}

int compared(const char* a, const char* b) {
    return vkFunc(a).compare(vkFunc(b));
}

} // namespace

TEST(VkFuncType, EachValueHasItsWord) {
    const struct {
        int value;
        const char* word;
    } rows[] = {{8, "8u"},     {16, "16u"},    {32, "32u"},    {64, "64u"},    {264, "8s"},    {272, "16s"},
                {288, "32s"},  {320, "64s"},   {0, "undef"},   {544, "32f"},   {576, "64f"},   {1040, "16uc"},
                {1288, "8sc"}, {1296, "16sc"}, {1312, "32sc"}, {1344, "64sc"}, {1568, "32fc"}, {1600, "64fc"}};
    for (const auto& row : rows) {
        EXPECT_STREQ(vkFunc::typeToString(static_cast<vkType>(row.value)).c_str(), row.word);
        EXPECT_EQ(vkFunc::stringToType(row.word), row.value) << row.word;
    }
    EXPECT_STREQ(vkFunc::typeToString(static_cast<vkType>(7)).c_str(), "undef");
    EXPECT_EQ(vkFunc::stringToType("17s"), 0);
    EXPECT_EQ(vkFunc::stringToType(""), 0);
    EXPECT_EQ(vkFunc::stringToType("1u"), 8);
}

TEST(VkFuncType, LengthOfTheTokenInFront) {
    EXPECT_EQ(vkFunc::lenOfType("16s"), 3);
    EXPECT_EQ(vkFunc::lenOfType("16sc_x"), 4);
    EXPECT_EQ(vkFunc::lenOfType("16"), 0);
    EXPECT_EQ(vkFunc::lenOfType("G729_16s"), 0);
    EXPECT_EQ(vkFunc::lenOfType("32fx"), 3);
    EXPECT_EQ(vkFunc::lenOfType("s"), 0);
    EXPECT_EQ(vkFunc::lenOfType(""), 0);
    EXPECT_STREQ(vkFunc::firstType("16s32s").c_str(), "16s");
}

TEST(VkFuncParse, PrefixBaseTypesDescriptor) {
    EXPECT_EQ(parts("veksDotProd_16s32s_Sfs"), "DotProd,16s32s,Sfs");
    EXPECT_STREQ(vkFunc("veksDotProd_16s32s_Sfs").prefix().c_str(), "veks");
    EXPECT_STREQ(vkFunc("vekiCopy_8u_C1R").prefix().c_str(), "veki");
}

TEST(VkFuncParse, CodecWordsStayInTheBase) {
    EXPECT_EQ(parts("veksLSFQuant_G729_16s"), "LSFQuant_G729,16s,");
    EXPECT_EQ(vkFunc::endOfBase("veksLSFQuant_G729_16s"), 17);
    EXPECT_EQ(vkFunc::endOfBase("veksFoo"), -1);
}

TEST(VkFuncParse, DescriptorKeepsFurtherUnderscores) {
    EXPECT_EQ(parts("veksFoo_16s_I_A_B"), "Foo,16s,I_A_B");
    EXPECT_EQ(parts("veksFoo_32f_A21"), "Foo,32f,A21");
    EXPECT_EQ(vkFunc("veksFoo_32f_A21").type(1), vk32f);
}

TEST(VkFuncParse, NameWithoutTypes) {
    EXPECT_EQ(parts("veksFoo"), "Foo,,");
    EXPECT_EQ(vkFunc("veksFoo").type(1), 0);
    EXPECT_EQ(parts(""), ",,");
}

TEST(VkFuncParse, OtherPrefixStaysInTheBase) {
    EXPECT_STREQ(vkFunc("FooBar_16s").prefix().c_str(), "");
    EXPECT_STREQ(vkFunc("FooBar_16s").baseName().c_str(), "FooBar");
    EXPECT_STREQ(vkFunc("FooBar_16s").typeName().c_str(), "16s");
}

TEST(VkFuncParse, BareTypeHasAnEmptyBase) {
    EXPECT_EQ(parts("_16s_"), ",16s,");
    EXPECT_EQ(vkFunc("_16s_").type(1), 272);
}

TEST(VkFuncParse, InplaceAndScaleOfOneDescriptor) {
    const vkFunc func("veksHighPassFilter_G729_16s_ISfs");
    EXPECT_STREQ(func.descrName().c_str(), "ISfs");
    EXPECT_TRUE(func.inplace());
    EXPECT_TRUE(func.scale());
    EXPECT_FALSE(func.mask());
    EXPECT_FALSE(func.roi());
    EXPECT_TRUE(vkFunc("vekiCopy_8u_C1MR").mask());
    EXPECT_TRUE(vkFunc("vekiCopy_8u_C1MR").roi());
    EXPECT_FALSE(vkFunc("veksImpulse_16s").inplace());
}

TEST(VkFuncTokens, MissingTokensRepeatTheLast) {
    expectEach(tokens, {{"veksFoo_16s", "16s,16s,16s"},
                        {"veksFoo_16s32s", "16s,32s,32s"},
                        {"veksFoo_16s32s64s", "16s,32s,64s"},
                        {"veksFoo_16s32s64s8u", "16s,32s,64s"},
                        {"veksFoo", ",,"}});
}

TEST(VkFuncTypes, IndexedTypes) {
    const vkFunc func("veksFoo_16s32sc64f");
    EXPECT_EQ(func.type(1), vk16s);
    EXPECT_EQ(func.type(2), vk32sc);
    EXPECT_EQ(func.type(3), vk64f);
    EXPECT_EQ(func.type(4), 0);
    EXPECT_EQ(func.type(-1), 0);
}

TEST(VkFuncTypes, IndexZeroPrefersTheBase) {
    EXPECT_EQ(vkFunc("veksDotProd_16s32s_Sfs").typeFromBase(), 0);
    EXPECT_EQ(vkFunc("veksDotProd_16s32s_Sfs").type(0), vk16s);
    EXPECT_EQ(vkFunc("veksFoo32fBar_16s").type(0), 544);
    EXPECT_EQ(vkFunc("veksIIR16s_G723_32s16s_Sfs").type(0), vk16s);
    EXPECT_EQ(vkFunc("veksFoo8u64fc_16s").type(0), vk64fc);
}

TEST(VkFuncTypes, TokensOfTheArguments) {
    EXPECT_EQ(argTypes("veksFoo_16s"), "16s,16s,16s,16s");
    EXPECT_EQ(argTypes("veksFoo_16s32s"), "16s,16s,32s,32s");
    EXPECT_EQ(argTypes("veksFoo_16s32s64s"), "16s,32s,64s,64s");
    EXPECT_EQ(vkFunc("veksFoo_16s").type(static_cast<vkArg>(3)), 0);
    const vkFunc func("veksFoo_16s32s64s");
    EXPECT_EQ(func.srcType(), vk16s);
    EXPECT_EQ(func.src2Type(), vk32s);
    EXPECT_EQ(func.dstType(), vk64s);
    EXPECT_EQ(func.dst2Type(), vk64s);
}

TEST(VkFuncTypes, ExceptionsOfSignalFunctions) {
    expectEach(argTypes, {
                             {"veksReal_16sc", "16sc,16sc,16s,16s"},
                             {"veksMagnitude_32fc", "32fc,32fc,32f,32f"},
                             {"veksPowerSpectr_16sc", "16sc,16sc,16s,16s"},
                             {"veksPolarToCart_32fc", "32f,32f,32fc,32fc"},
                             {"veksRealToCplx_16s", "16s,16s,16sc,16sc"},
                             {"veksDotProd_32f32fc", "32f,32fc,32fc,32fc"},
                             {"veksDotProd_16s32s", "16s,16s,32s,32s"},
                             {"veksDotProd_32fc64fc", "32fc,32fc,64fc,64fc"}, // the source is complex
                             {"veksDotProd_32f16s32fc", "32f,16s,32fc,32fc"}, // the second source has a type of its own
                             {"veksMul_16u16s", "16u,16s,16s,16s"},
                             {"veksGoertz_16s", "16s,16s,16sc,16sc"},
                             {"veksRealPart_16sc", "16sc,16sc,16sc,16sc"},
                             {"Real_16sc", "16sc,16sc,16sc,16sc"},
                         });
}

TEST(VkFuncTypes, ExceptionsOfImageFunctions) {
    expectEach(argTypes, {{"vekiSum_16s_C1R", "16s,16s,64f,64f"},
                          {"vekiCompare_16s_C1R", "16s,16s,8u,8u"},
                          {"vekiCopy_16s_C1MR", "16s,8u,16s,16s"},
                          {"vekiSet_16s_C1MR", "16s,8u,16s,16s"},
                          {"vekiMin_16s_C1MR", "16s,16s,16s,16s"},
                          {"vekiCopy_16s_C1R", "16s,16s,16s,16s"}});
}

TEST(VkFuncChannels, FirstWordIsTakenOffTheText) {
    std::string rest;
    EXPECT_EQ(chanStr("C3R", &rest), "C3");
    EXPECT_EQ(rest, "R");
    EXPECT_EQ(chanStr("MAC4P3R", &rest), "AC4");
    EXPECT_EQ(rest, "P3R");
    EXPECT_EQ(chanStr("P3C1R", &rest), "P3");
    EXPECT_EQ(rest, "C1R");
    EXPECT_EQ(chanStr("ISfs", &rest), "");
    EXPECT_EQ(rest, "");
    EXPECT_EQ(chanStr("C5", &rest), "");
    EXPECT_EQ(rest, "");
    EXPECT_EQ(chanStr("C3PR", &rest), "P3");
    EXPECT_EQ(rest, "PR");
    EXPECT_EQ(chanStr("C"), "");
}

TEST(VkFuncChannels, WordsOfBothSides) {
    const vkFunc func("vekiConvert_8u_C3AP4R");
    EXPECT_STREQ(func.srcChannelsName().c_str(), "C3");
    EXPECT_STREQ(func.dstChannelsName().c_str(), "AP4");
    EXPECT_STREQ(func.channelsName(vkArg::src2).c_str(), "C3");
    EXPECT_STREQ(func.channelsName(vkArg::dst2).c_str(), "AP4");
    EXPECT_STREQ(func.channelsName(3).c_str(), "");
    EXPECT_EQ(func.channels(1), 3);
    EXPECT_EQ(func.channels(2), 4);
    EXPECT_EQ(func.channels(3), 1);
    EXPECT_EQ(func.channels(vkArg::dst), 4);
    EXPECT_FALSE(func.srcPlane());
    EXPECT_TRUE(func.dstPlane());
    EXPECT_FALSE(func.srcAlpha());
    EXPECT_TRUE(func.dstAlpha());
    EXPECT_FALSE(func.plane(3));
    EXPECT_EQ(func.vekChannels(1), 3);
    EXPECT_EQ(func.vekChannels(2), 11);
}

TEST(VkFuncChannels, OneWordServesBothSides) {
    const vkFunc func("vekiCopy_8u_AC4R");
    EXPECT_STREQ(func.dstChannelsName().c_str(), "AC4");
    EXPECT_EQ(func.vekChannels(2), 9);
    EXPECT_FALSE(func.coi());
    EXPECT_TRUE(vkFunc("vekiCopy_8u_C3C1R").coi());
    EXPECT_FALSE(vkFunc("veksCopy_8u_C3C1R").coi());
}

TEST(VkFuncChannels, SpeechFunctionHasNone) {
    const vkFunc func("veksFoo_16s_ISfs");
    EXPECT_STREQ(func.channelsName(1).c_str(), "");
    EXPECT_EQ(func.channels(1), 0);
    EXPECT_EQ(func.channels(5), 1);
    EXPECT_FALSE(func.srcPlane());
    EXPECT_FALSE(func.srcAlpha());
}

TEST(VkFuncChannels, NumberOfAWord) {
    EXPECT_EQ(vkFunc::numChannels("C3"), 3);
    EXPECT_EQ(vkFunc::numChannels("AC4"), 4);
    EXPECT_EQ(vkFunc::numChannels("C5"), 0);
    EXPECT_EQ(vkFunc::numChannels(""), 0);
    EXPECT_TRUE(vkFunc::isChannelIndex(0, "C1"));
    EXPECT_FALSE(vkFunc::isChannelIndex(-1, "C1"));
    EXPECT_FALSE(vkFunc::isChannelIndex(1, "C1"));
}

TEST(VkFuncChannels, TypeNumbersAreDistinct) {
    EXPECT_EQ(vkFunc::vekType(vk8u), 1);
    EXPECT_EQ(vkFunc::vekType(vkUndef), 0);
    EXPECT_NE(vkFunc::vekType(vk16s), vkFunc::vekType(vk16sc));
}

TEST(VkFuncOrder, NamesByBaseFirst) {
    EXPECT_LT(compared("veksAdd_16s", "veksAddC_16s"), 0);
    EXPECT_LT(compared("veksAddC_16s", "veksSub_16s"), 0);
    EXPECT_EQ(compared("veksAdd_16s_I", "veksAdd_16s_I"), 0);
}

TEST(VkFuncOrder, TypesByValueAndRealBeforeComplex) {
    EXPECT_LT(compared("veksFoo_16s", "veksFoo_16sc"), 0);
    EXPECT_LT(compared("veksFoo_16sc", "veksFoo_32s"), 0);
    EXPECT_LT(compared("veksFoo_64u", "veksFoo_8s"), 0);
    EXPECT_LT(compared("veksFoo_64s", "veksFoo_32f"), 0);
    EXPECT_LT(compared("veksFoo", "veksFoo_8u"), 0);
    EXPECT_EQ(vkFunc::compareTs("", ""), 0);
    EXPECT_EQ(vkFunc::compareTs("", "8u"), -1);
    EXPECT_EQ(vkFunc::compareTs("8u", ""), 1);
    EXPECT_EQ(vkFunc::compareTs("16sc", "16s"), 1024);
    EXPECT_EQ(vkFunc::compareTs("16s", "8u"), 264);
}

TEST(VkFuncOrder, SecondTypeTokenTakesNoPart) {
    EXPECT_EQ(compared("veksFoo_16s32s", "veksFoo_16s64s"), 0);
    EXPECT_EQ(compared("veksFoo_16s32s", "veksFoo_16s"), 0);
}

TEST(VkFuncOrder, InplaceFormsComeLast) {
    EXPECT_LT(compared("veksFoo_16s", "veksFoo_16s_I"), 0);
    EXPECT_LT(compared("veksFoo_16s_Sfs", "veksFoo_16s_ISfs"), 0);
    EXPECT_LT(compared("veksFoo_16s_ZSfs", "veksFoo_16s_ASfsI"), 0);
}

TEST(VkFuncOrder, AlphaLayoutComesBehindThePlain) {
    EXPECT_EQ(vkFunc::compareDescr("AC4", "C3"), 1);
    EXPECT_EQ(vkFunc::compareDescr("C3", "AC4"), -1);
    EXPECT_LT(vkFunc::compareDescr("AC4", "P3"), 0);
    EXPECT_GT(vkFunc::compareDescr("C3", "C1"), 0);
    EXPECT_GT(vkFunc::compareDescr("D", "AC4"), 0);
    EXPECT_EQ(vkFunc::compareDescr("", ""), 0);
}
