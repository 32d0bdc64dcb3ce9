// Memory, copy, zero and set.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "veks.h"

namespace {

TEST(VeksMalloc, MemoryIsAlignedAndNoLengthGivesNone) {
    Vek16s* p = veksMalloc_16s(3);
    ASSERT_NE(nullptr, p);
    EXPECT_EQ(0U, reinterpret_cast<uintptr_t>(p) % 64);
    p[2] = 7;
    veksFree(p);
    veksFree(nullptr);
    EXPECT_EQ(nullptr, veksMalloc_32sc(0));
    EXPECT_EQ(nullptr, veksMalloc_8u(-1));
}

TEST(VeksCopy, CopiesExactlyTheElementsAsked) {
    const std::vector<Vek32sc> src = {{1, 2}, {3, 4}, {5, 6}};
    std::vector<Vek32sc> dst(3, {9, 9});
    ASSERT_EQ(vekStsNoErr, veksCopy_32sc(src.data(), dst.data(), 2));
    EXPECT_EQ(4, dst[1].im);
    EXPECT_EQ(9, dst[2].re);
}

TEST(VeksZero, ClearsExactlyTheElementsAsked) {
    std::vector<Vek64f> v = {1, 2, 3};
    ASSERT_EQ(vekStsNoErr, veksZero_64f(v.data(), 2));
    EXPECT_EQ((std::vector<Vek64f>{0, 0, 3}), v);
    std::vector<Vek32fc> c(2, {1, 2});
    ASSERT_EQ(vekStsNoErr, veksZero_32fc(c.data(), 1));
    EXPECT_EQ(0, c[0].im);
    EXPECT_EQ(2, c[1].im);
}

TEST(VeksSet, FillsExactlyTheElementsAsked) {
    std::vector<Vek16s> v = {1, 2, 3};
    ASSERT_EQ(vekStsNoErr, veksSet_16s(-5, v.data(), 2));
    EXPECT_EQ((std::vector<Vek16s>{-5, -5, 3}), v);
}

TEST(VeksVectors, NullAndEmptyAreRefused) {
    Vek16s a = 1;
    EXPECT_EQ(vekStsNullPtrErr, veksCopy_16s(nullptr, &a, 1));
    EXPECT_EQ(vekStsNullPtrErr, veksCopy_16s(&a, nullptr, 1));
    EXPECT_EQ(vekStsSizeErr, veksCopy_16s(&a, &a, 0));
    EXPECT_EQ(vekStsNullPtrErr, veksZero_16s(nullptr, 1));
    EXPECT_EQ(vekStsSizeErr, veksZero_16s(&a, -1));
    EXPECT_EQ(vekStsNullPtrErr, veksSet_16s(1, nullptr, 1));
    EXPECT_EQ(vekStsSizeErr, veksSet_16s(2, &a, 0));
    EXPECT_EQ(1, a);
}

} // namespace
