// Test vectors: types, memory, the reserved copy, access and print.
#include "../api/streamcapture.h"
#include "krtest.h"
#include "vkvector.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

const vkType allTypes[] = {vk8u,   vk16u,  vk32u,  vk64u,  vk8s,  vk16s, vk32s,  vk64s, vk8sc,
                           vk16sc, vk16uc, vk32sc, vk64sc, vk32f, vk64f, vk32fc, vk64fc};

std::string printed(vkType type, const void* data, int count) {
    return vkVector::getDataString(type, data, count).c_str();
}

} // namespace

TEST(VkVector, BareTypeNamesItself) {
    const vkVector vector(vk16s);
    EXPECT_STREQ(vector.func().c_str(), "_16s_");
    EXPECT_EQ(vector.type(), vk16s);
    EXPECT_EQ(vector.data(), nullptr);
}

TEST(VkVector, TypeComesFromATokenOrAnArgument) {
    const vkFunc func("veksFoo_16s32s");
    EXPECT_EQ(vkVector(func, 1).type(), vk16s);
    EXPECT_EQ(vkVector(func, 2).type(), vk32s);
    EXPECT_EQ(vkVector(func, vkArg::src2).type(), vk16s);
    EXPECT_EQ(vkVector(func, vkArg::dst).type(), vk32s);
    EXPECT_EQ(vkVector("veksReal_16sc", vkArg::dst).type(), vk16s);
}

TEST(VkVector, ChannelsOfAnArgumentStandInItsName) {
    EXPECT_STREQ(vkVector("vekiCopy_8u_C3P3R", vkArg::dst).func().c_str(), "_8u_P3");
    EXPECT_STREQ(vkVector("vekiCopy_8u_C3P3R", 1).func().c_str(), "_8u_C3");
}

TEST(VkVector, ItemIsTheElementSize) {
    EXPECT_EQ(vkVector::item("_16sc_"), 4);
    EXPECT_EQ(vkVector::item("_8u_"), 1);
    EXPECT_EQ(vkVector::item("_64fc_"), 16);
    EXPECT_EQ(vkVector::item("veksFoo_16s32s"), 2);
    EXPECT_EQ(vkVector::item("veksFoo"), 0);
}

TEST(VkVector, NewVectorHoldsTheDefaultConstant) {
    vkVector shorts(vk16s);
    ASSERT_TRUE(shorts.createVector(7, -1));
    vkVector floats(vk32f);
    ASSERT_TRUE(floats.createVector(7, -1));
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(shorts.m_16s[i], 2);
        EXPECT_EQ(floats.m_32f[i], 1.00001F);
    }
}

TEST(VkVector, EveryTypeHasItsOneView) {
    for (const vkType type : allTypes) {
        vkVector vector(type);
        ASSERT_TRUE(vector.createVector(5, 0)) << type;
        const auto views = [&vector] {
            return std::vector<const void*>{vector.m_8u,   vector.m_16u,  vector.m_32u,  vector.m_64u, vector.m_8s,
                                            vector.m_16s,  vector.m_32s,  vector.m_64s,  vector.m_8sc, vector.m_16sc,
                                            vector.m_16uc, vector.m_32sc, vector.m_64sc, vector.m_32f, vector.m_64f,
                                            vector.m_32fc, vector.m_64fc};
        };
        for (size_t i = 0; i < 17; ++i) {
            EXPECT_EQ(views()[i], allTypes[i] == type ? vector.data() : nullptr) << type << " " << i;
        }
        EXPECT_EQ(vector.length(), 5);
        EXPECT_EQ(vector.size(), 5 * vkVector::item(vector.func()));
        EXPECT_EQ(vector.getIndex(4), (type & vkFloat) == 0             ? 2.0
                                      : type == vk32f || type == vk32fc ? 1.00001F
                                                                        : 1.00001);
        vector.deleteVector();
        for (size_t i = 0; i < 17; ++i) {
            if (allTypes[i] != vk16uc) {
                EXPECT_EQ(views()[i], nullptr) << type << " " << i;
            }
        }
    }
}

TEST(VkVector, ViewOf16ucOutlivesItsData) {
    vkVector vector(vk16uc);
    vector.createVector(3, 0);
    const void* const old = vector.data();
    vector.deleteVector();
    EXPECT_EQ(vector.m_16uc, old);
    EXPECT_EQ(vector.data(), nullptr);
}

TEST(VkVector, LengthZeroIsAMemoryError) {
    ConsoleCapture console(ERR);
    vkVector vector(vk16s);
    EXPECT_FALSE(vector.createVector(0, -1));
    EXPECT_FALSE(vector.createVector(-3, -1));
    EXPECT_EQ(console.text(), "-- Memory error: can't allocate 0 bytes\n-- Memory error: can't allocate -6 bytes\n");
    EXPECT_EQ(vector.data(), nullptr);
}

TEST(VkVector, LengthBeyondMemoryIsReportedAndLeavesTheVectorEmpty) {
    ConsoleCapture console(ERR);
    vkVector vector(vk64fc);
    ASSERT_TRUE(vector.createVector(3, 0));
    EXPECT_FALSE(vector.createVector(2000000000, 0));
    EXPECT_EQ(console.text(), "-- Memory error: can't allocate 2147483647 bytes\n");
    EXPECT_EQ(vector.data(), nullptr);
    EXPECT_EQ(vector.length(), 0);
}

TEST(VkVector, BlockBelongsToTheVectorOrToTheGivenOwner) {
    vkVector vector(vk16s);
    ASSERT_TRUE(vector.createVector(10, 0));
    int size = 0;
    void* info = nullptr;
    ASSERT_TRUE(krMallocInfo(vector.data(), &size, &info));
    EXPECT_EQ(size, 20);
    EXPECT_EQ(info, static_cast<krObject*>(&vector));
    ASSERT_TRUE(vector.createVector(10, 0, MEM_OBJECT_IS_SUBOBJECT));
    ASSERT_TRUE(krMallocInfo(vector.data(), &size, &info));
    EXPECT_EQ(info, MEM_OBJECT_IS_SUBOBJECT);
}

TEST(VkVector, SettingsChooseTheAlignment) {
    krTest::m_vectorNum = krTest::m_vectorShift = 0;
    krSetVectorAlign(5);
    vkVector bytes(vk16s);
    bytes.createVector(4, -1);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(bytes.data()) % 64, 5U);
    bytes.setSequence(1, 4);
    EXPECT_STREQ(bytes.getString().c_str(), "      1      2      3      4");
    EXPECT_EQ(bytes.getIndex(3), 4.0);
    krSetAlignByByte(false);
    krTest::m_vectorNum = 0;
    vkVector elements(vk16s);
    elements.createVectorExt(4, 3, setOne, 0, 0);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(elements.data()) % 64, 10U);
    EXPECT_EQ(elements.m_16s[3], 1);
    krSetAlignByByte(true);
    krSetVectorAlign(0);
    krTest::m_vectorNum = krTest::m_vectorShift = 0;
}

TEST(VkVector, ReservedCopyRestoresTheBytes) {
    vkVector vector(vk16s);
    vector.createVector(4, setSeq, 1, 5);
    ASSERT_TRUE(vector.reserveCopy());
    EXPECT_NE(vector.getReservedData(), nullptr);
    vector.setConst(9, 0);
    EXPECT_TRUE(vector.setReservedCopy());
    const short expected[] = {1, 2, 3, 4};
    EXPECT_EQ(std::memcmp(vector.getDataConst(), expected, sizeof expected), 0);
    vector.deleteReservedCopy();
    EXPECT_FALSE(vector.setReservedCopy());
}

TEST(VkVector, SecondReservedCopyTakesThePlaceOfTheFirst) {
    vkVector vector(vk16s);
    vector.createVector(4, setValue, 3, 0);
    ASSERT_TRUE(vector.reserveCopy());
    vector.setConst(8, 0);
    ASSERT_TRUE(vector.reserveCopy());
    vector.setConst(9, 0);
    EXPECT_TRUE(vector.setReservedCopy());
    EXPECT_EQ(vector.m_16s[0], 8);
    EXPECT_EQ(vector.m_16s[3], 8);
}

TEST(VkVector, NoReservedCopyLeavesTheData) {
    vkVector vector(vk16s);
    EXPECT_FALSE(vector.reserveCopy());
    vector.createVector(2, setValue, 7, 0);
    EXPECT_FALSE(vector.setReservedCopy());
    EXPECT_EQ(vector.m_16s[1], 7);
}

TEST(VkVector, ReservedCopyIsNotTestMemory) {
    vkVector vector(vk16s);
    vector.createVector(4, 0);
    vector.reserveCopy();
    EXPECT_EQ(krMallocFirst(nullptr, nullptr), vector.data());
    EXPECT_EQ(krMallocNext(nullptr, nullptr), nullptr);
}

TEST(VkVector, AllOwnersAreSavedAndRestoredTogether) {
    vkVector first(vk16s);
    vkVector second(vk32f);
    first.createVector(2, setValue, 3, 0);
    second.createVector(2, setValue, 4, 0);
    EXPECT_EQ(krTest::reserveAllVectors(), 2);
    first.setConst(0, 0);
    second.setConst(0, 0);
    krTest::resetAllVectors();
    EXPECT_EQ(first.m_16s[0], 3);
    EXPECT_EQ(second.m_32f[1], 4.0F);
}

TEST(VkVector, IndexReadsBothParts) {
    vkVector complex(vk16sc);
    complex.createVector(3, setValue, 3, -4);
    double re = 0;
    double im = 0;
    complex.getIndex(2, re, im);
    EXPECT_EQ(re, 3.0);
    EXPECT_EQ(im, -4.0);
    vkVector real(vk8u);
    real.createVector(1, setValue, 200, 0);
    real.getIndex(0, re, im);
    EXPECT_EQ(re, 200.0);
    EXPECT_EQ(im, -4.0);
}

TEST(VkVector, PointerAtCountsElements) {
    vkVector vector(vk16sc);
    EXPECT_EQ(vector.getPointerAt(1), nullptr);
    vector.createVector(3, 0);
    EXPECT_EQ(vector.getPointerAt(2), static_cast<char*>(vector.data()) + 8);
    const vkVector& fixed = vector;
    EXPECT_EQ(fixed.getPointerAt(1), static_cast<char*>(vector.data()) + 4);
}

TEST(VkVector, InfoAndSize) {
    vkVector vector(vk16s);
    vector.createVector(80, -1);
    EXPECT_STREQ(vector.objectInfo().c_str(), "Vector 16s len=80");
    EXPECT_EQ(vector.objectSize(), 160);
}

TEST(VkVector, DeleteAndCreateAgain) {
    vkVector vector(vk16s);
    vector.deleteVector();
    vector.createVector(4, 0);
    vector.createVector(5, 0);
    EXPECT_EQ(vector.length(), 5);
    EXPECT_EQ(krMallocFirst(nullptr, nullptr), vector.data());
    EXPECT_EQ(krMallocNext(nullptr, nullptr), nullptr);
    vector.init(vk32s);
    EXPECT_EQ(vector.data(), nullptr);
    EXPECT_EQ(krMallocFirst(nullptr, nullptr), nullptr);
}

TEST(VkVector, FillsWithoutDataDoNothing) {
    vkVector vector(vk16s);
    vector.setConst();
    vector.setRandom();
    vector.setSequence(0, 1);
    vector.setJaehne();
    vector.setIndex(0, setOne, 0, 0);
    EXPECT_EQ(vector.getIndex(0), 0.0);
    EXPECT_STREQ(vector.getString().c_str(), "");
}

TEST(VkVectorPrint, EachTypeHasItsFormat) {
    const unsigned char bytes[] = {7, 255};
    EXPECT_EQ(printed(vk8u, bytes, 2), "   7 255");
    const unsigned short words[] = {65535};
    EXPECT_EQ(printed(vk16u, words, 1), " 65535");
    const unsigned int longs[] = {4294967295U};
    EXPECT_EQ(printed(vk32u, longs, 1), " 4294967295");
    const unsigned long long giants[] = {18446744073709551615ULL};
    EXPECT_EQ(printed(vk64u, giants, 1), "    18446744073709551615");
    const signed char chars[] = {-128, 5};
    EXPECT_EQ(printed(vk8s, chars, 2), " -128    5");
    EXPECT_EQ(printed(vk8sc, chars, 1), " ( -128,    5)");
    const short shorts[] = {-32768, 5};
    EXPECT_EQ(printed(vk16s, shorts, 2), " -32768      5");
    EXPECT_EQ(printed(vk16sc, shorts, 1), " ( -32768,      5)");
    const unsigned short pair[] = {1, 65535};
    EXPECT_EQ(printed(vk16uc, pair, 1), " (     1, 65535)");
    const int ints[] = {-2147483647, 5};
    EXPECT_EQ(printed(vk32s, ints, 2), " -2147483647           5");
    EXPECT_EQ(printed(vk32sc, ints, 1), " ( -2147483647,           5)");
    const long long wide[] = {-5, 6};
    EXPECT_EQ(printed(vk64s, wide, 1), "                      -5");
    EXPECT_EQ(printed(vk64sc, wide, 1), " (                      -5,                       6)");
    const float floats[] = {1.5F, -0.25F};
    EXPECT_EQ(printed(vk32f, floats, 2), "           1.5         -0.25");
    EXPECT_EQ(printed(vk32fc, floats, 1), " (           1.5,         -0.25)");
    const double doubles[] = {1.5, -0.25};
    EXPECT_EQ(printed(vk64f, doubles, 1), "                 1.5");
    EXPECT_EQ(printed(vk64fc, doubles, 1), " (                 1.5,               -0.25)");
}

TEST(VkVectorPrint, NothingToPrintIsEmpty) {
    const short shorts[] = {1};
    EXPECT_EQ(printed(vk16s, nullptr, 1), "");
    EXPECT_EQ(printed(vk16s, shorts, 0), "");
    EXPECT_EQ(printed(vkUndef, shorts, 1), "");
    EXPECT_STREQ(vkVector::getByteString(nullptr, 1).c_str(), "");
    EXPECT_STREQ(vkVector::getByteString(shorts, -1).c_str(), "");
}

TEST(VkVectorPrint, BytesInHexadecimal) {
    const unsigned char bytes[] = {0, 10, 255};
    EXPECT_STREQ(vkVector::getByteString(bytes, 3).c_str(), " 00 0A FF");
}

TEST(VkVectorPrint, WholeVector) {
    vkVector vector(vk16s);
    vector.createVector(2, setValue, 1, 0);
    EXPECT_STREQ(vector.getString().c_str(), "      1      1");
}
