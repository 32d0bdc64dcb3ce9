// Matrices: rows of a stride, fills that leave the gaps, and failed allocation.
#include "../api/streamcapture.h"
#include "vkrmatr.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Values = std::vector<double>;

Values rowOf(const vkrMatrice& matrix, int row) {
    Values values;
    for (int column = 0; column < matrix.columns(); ++column) {
        values.push_back(matrix.getMatriceAt(row, column));
    }
    return values;
}

} // namespace

TEST(VkrMatrice, RowStepIsRoundedTo16Bytes) {
    vkrMatrice matrix(vk16s);
    ASSERT_TRUE(matrix.createMatrice(3, 5, -1, -1));
    EXPECT_EQ(matrix.rowStep(), 16);
    EXPECT_EQ(matrix.objectSize(), 30);
    EXPECT_STREQ(matrix.objectInfo().c_str(), "rMatrix 16s rows=3 columns=5");
    EXPECT_EQ(matrix.rowPointers()[2], static_cast<char*>(matrix.data()) + 32);
}

TEST(VkrMatrice, GivenRowStepIsTaken) {
    vkrMatrice matrix(vk32sc);
    ASSERT_TRUE(matrix.createMatrice(2, 3, 40, 0));
    EXPECT_EQ(matrix.rowStep(), 40);
    EXPECT_EQ(matrix.m_r32sc[1], static_cast<void*>(static_cast<char*>(matrix.data()) + 40));
    EXPECT_EQ(matrix.m_r16s, nullptr);
}

TEST(VkrMatrice, RowsShowInTheViewOfTheirTypeAlone) {
    const std::vector<vkType> types = {vk8u,   vk16u,  vk32u,  vk64u,  vk8s,  vk16s, vk32s,  vk64s, vk8sc,
                                       vk16sc, vk16uc, vk32sc, vk64sc, vk32f, vk64f, vk32fc, vk64fc};
    for (std::size_t own = 0; own < types.size(); ++own) {
        SCOPED_TRACE(own);
        vkrMatrice matrix(types[own]);
        ASSERT_TRUE(matrix.createMatrice(2, 3, -1, -1));
        const std::vector<const void*> views = {
            matrix.m_r8u,   matrix.m_r16u, matrix.m_r32u, matrix.m_r64u,  matrix.m_r8s,   matrix.m_r16s,
            matrix.m_r32s,  matrix.m_r64s, matrix.m_r8sc, matrix.m_r16sc, matrix.m_r16uc, matrix.m_r32sc,
            matrix.m_r64sc, matrix.m_r32f, matrix.m_r64f, matrix.m_r32fc, matrix.m_r64fc};
        ASSERT_EQ(views.size(), types.size());
        for (std::size_t i = 0; i < views.size(); ++i) {
            EXPECT_EQ(views[i], i == own ? matrix.rowPointers() : nullptr) << i;
        }
    }
}

TEST(VkrMatrice, OverlappingRowsLieInsideTheBlock) {
    vkrMatrice matrix(vk16s);
    ASSERT_TRUE(matrix.createMatrice(3, 8, 2, 0));
    matrix.setConst(5, 0);
    EXPECT_EQ(rowOf(matrix, 2), Values(8, 5.0));
    int size = 0;
    EXPECT_TRUE(krMallocInfo(matrix.data(), &size, nullptr));
    EXPECT_EQ(size, 20);
}

TEST(VkrMatrice, NewDataAreZeroAndBelongToTheMatrix) {
    vkrMatrice matrix(vk16s);
    ASSERT_TRUE(matrix.createMatrice(2, 3, -1, 0));
    EXPECT_EQ(rowOf(matrix, 1), (Values{0, 0, 0}));
    void* info = nullptr;
    EXPECT_TRUE(krMallocInfo(matrix.data(), nullptr, &info));
    EXPECT_EQ(info, static_cast<krObject*>(&matrix));
    EXPECT_TRUE(krMallocInfo(matrix.rowPointers(), nullptr, &info));
    EXPECT_EQ(info, nullptr);
}

TEST(VkrMatrice, RowsGoWithTheDataTheyPointAt) {
    const struct {
        const char* what;
        void (*drop)(vkrMatrice& matrix);
    } ways[] = {{"init of a type", [](vkrMatrice& matrix) { matrix.init(vk16s); }},
                {"init of a token", [](vkrMatrice& matrix) { matrix.init(vkFunc("veksFoo_32f"), 1); }},
                {"init of an argument", [](vkrMatrice& matrix) { matrix.init(vkFunc("veksFoo_32f"), vkArg::src); }},
                {"init of a vector", [](vkrMatrice& matrix) { static_cast<vkVector&>(matrix).init(vk16s); }},
                {"deletion", [](vkrMatrice& matrix) { matrix.deleteVector(); }},
                {"a plain vector", [](vkrMatrice& matrix) { matrix.createVector(4, setZero, 0, 0); }},
                {"a failure", [](vkrMatrice& matrix) {
                     ConsoleCapture console;
                     matrix.createVector(-4, setZero, 0, 0);
                 }}};
    for (const auto& way : ways) {
        vkrMatrice matrix(vk32f);
        ASSERT_TRUE(matrix.createMatrice(2, 3, setZero, 0, 0));
        way.drop(matrix);
        EXPECT_EQ(matrix.m_r32f, nullptr) << way.what;
        EXPECT_EQ(matrix.rowPointers(), nullptr) << way.what;
        EXPECT_EQ(matrix.rows(), 0) << way.what;
        EXPECT_EQ(matrix.objectSize(), 0) << way.what;
        ASSERT_TRUE(matrix.createMatrice(2, 3, setOne, 0, 0)) << way.what;
        EXPECT_EQ(rowOf(matrix, 1), (Values{1, 1, 1})) << way.what;
        matrix.deleteMatrice();
        EXPECT_EQ(krMallocFirst(nullptr, nullptr), nullptr) << way.what;
    }
}

TEST(VkrMatrice, ElementsAreCountedByRowsWithoutTheGaps) {
    vkrMatrice matrix(vk16s);
    ASSERT_TRUE(matrix.createMatrice(2, 3, setZero, 0, 0));
    for (int i = 0; i < 6; ++i) {
        matrix.setIndex(i, setValue, 10 + i, 0);
        EXPECT_EQ(matrix.getIndex(i), 10 + i);
    }
    EXPECT_EQ(rowOf(matrix, 0), (Values{10, 11, 12}));
    EXPECT_EQ(rowOf(matrix, 1), (Values{13, 14, 15}));
    const short* const data = static_cast<const short*>(matrix.getDataConst());
    EXPECT_EQ(data[3], 0) << "a gap";
    matrix.setIndex(4, setDefault, 5, 5);
    EXPECT_EQ(rowOf(matrix, 1), (Values{13, 0, 15}));
    matrix.deleteMatrice();
    matrix.setIndex(1, setOne, 0, 0);
    EXPECT_EQ(matrix.getIndex(1), 0);
}

TEST(VkrMatrice, FillsLeaveTheGaps) {
    vkrMatrice matrix(vk16s);
    ASSERT_TRUE(matrix.createMatriceExt(2, 3, 7, setValue, 9, 0));
    const short* const data = static_cast<const short*>(matrix.getDataConst());
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(data[i], i % 8 < 3 ? 9 : 0) << i;
    }
}

TEST(VkrMatrice, RowsAreVectorsOfTheirOwn) {
    vkrMatrice matrix(vk16s);
    ASSERT_TRUE(matrix.createMatrice(2, 8, setDefault, 0, 0));
    EXPECT_EQ(rowOf(matrix, 1), Values(8, 2.0));
    const Values chirp = {0, 6392, 23170, 32137, 0, -32137, 23170, -6392};
    matrix.setJaehne();
    EXPECT_EQ(rowOf(matrix, 0), chirp);
    EXPECT_EQ(rowOf(matrix, 1), chirp);
    matrix.setRandom(-32768, 32767, 0);
    EXPECT_EQ(rowOf(matrix, 0), (Values{-32705, -24238, -18893, -6345, -9637, 15786, 21270, -17264}));
    EXPECT_EQ(matrix.getMatriceAt(1, 0), -26851.0);
    matrix.setSequence(1, 100, 3, true);
    EXPECT_EQ(rowOf(matrix, 1), (Values{1, 4, 7, 10, 13, 16, 19, 22}));
}

TEST(VkrMatrice, SequenceOfTwoLimitsStepsByFirstMinusLast) {
    vkrMatrice matrix(vk16s);
    ASSERT_TRUE(matrix.createMatrice(1, 4, -1, 0));
    matrix.setSequence(0, 10);
    EXPECT_EQ(rowOf(matrix, 0), (Values{0, -10, -20, -30}));
}

TEST(VkrMatrice, SequenceModeCountsTo256) {
    vkrMatrice matrix(vk64f);
    ASSERT_TRUE(matrix.createMatrice(1, 3, setSeq, 0, 512));
    EXPECT_EQ(rowOf(matrix, 0), (Values{0, 2, 4}));
}

TEST(VkrMatrice, OneElement) {
    vkrMatrice matrix(vk16sc);
    ASSERT_TRUE(matrix.createMatrice(2, 3, setZero, 0, 0));
    matrix.setMatriceAt(1, 2, 3, -4);
    double re = 0;
    double im = 0;
    matrix.getMatriceAt(1, 2, re, im);
    EXPECT_EQ(re, 3.0);
    EXPECT_EQ(im, -4.0);
    EXPECT_EQ(matrix.m_r16sc[1][2].im, -4);
    EXPECT_EQ(matrix.getMatriceAt(1, 1), 0.0);
}

TEST(VkrMatrice, FailedAllocationLeavesRowsAndColumns) {
    ConsoleCapture console(ERR);
    vkrMatrice matrix(vk64fc);
    EXPECT_FALSE(matrix.createMatrice(100000, 100000, -1, -1));
    EXPECT_EQ(matrix.rows(), 100000);
    EXPECT_EQ(matrix.columns(), 100000);
    EXPECT_EQ(matrix.data(), nullptr);
    EXPECT_EQ(console.text(), "-- Memory error: can't allocate 2147483647 bytes\n");
    matrix.setConst(1, 1);
    EXPECT_EQ(matrix.objectSize(), 2147483647);
    matrix.deleteMatrice();
    EXPECT_EQ(matrix.rows(), 100000);
    EXPECT_FALSE(matrix.createMatrice(0, 5, -1, -1));
    EXPECT_FALSE(matrix.createMatrice(2000000000, 2000000000, 16, -1));
}

TEST(VkrMatrice, FailedDataLeaveNoRowPointersBehind) {
    ConsoleCapture console(ERR);
    vkrMatrice matrix(vk8u);
    EXPECT_FALSE(matrix.createMatrice(1, 2147483600, -1, 0));
    EXPECT_EQ(matrix.rows(), 1);
    EXPECT_EQ(matrix.data(), nullptr);
    matrix.deleteMatrice();
    EXPECT_EQ(krMallocFirst(nullptr, nullptr), nullptr);
}

TEST(VkrMatrice, DeleteIsHarmlessWhenEmptyAndClearsOtherwise) {
    vkrMatrice matrix(vk16s);
    matrix.deleteMatrice();
    ASSERT_TRUE(matrix.createMatrice(2, 2, -1, 0));
    matrix.deleteMatrice();
    EXPECT_EQ(matrix.rows(), 0);
    EXPECT_EQ(matrix.rowStep(), 0);
    EXPECT_EQ(matrix.m_r16s, nullptr);
    EXPECT_EQ(matrix.data(), nullptr);
    EXPECT_EQ(krMallocFirst(nullptr, nullptr), nullptr);
}

TEST(VkrMatrice, PrintsARowALine) {
    ConsoleCapture console(PERF);
    vkrMatrice matrix(vk16s);
    ASSERT_TRUE(matrix.createMatrice(2, 2, setOne, 0, 0));
    g_ostrm << matrix;
    EXPECT_EQ(console.text(), "      1      1\n      1      1\n");
}
