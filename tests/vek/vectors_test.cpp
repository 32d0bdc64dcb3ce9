// Memory, copy, zero and set.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

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

// Copy, zero and set of one type, on memory whose last element of three is not asked for.
template <class T>
void expectExactly(T* (*allocate)(int), VekStatus (*copy)(const T*, T*, int), VekStatus (*zero)(T*, int),
                   VekStatus (*set)(T, T*, int), T value, T other) {
    const auto equal = [](const T& a, const T& b) { return std::memcmp(&a, &b, sizeof(T)) == 0; };
    T* v = allocate(3);
    T* w = allocate(3);
    ASSERT_EQ(vekStsNoErr, set(other, v, 3));
    ASSERT_EQ(vekStsNoErr, set(value, v, 2));
    EXPECT_TRUE(equal(value, v[0]) && equal(value, v[1]) && equal(other, v[2]));
    ASSERT_EQ(vekStsNoErr, set(other, w, 3));
    ASSERT_EQ(vekStsNoErr, copy(v, w, 2));
    EXPECT_TRUE(equal(value, w[0]) && equal(value, w[1]) && equal(other, w[2]));
    ASSERT_EQ(vekStsNoErr, zero(v, 2));
    EXPECT_TRUE(equal(T{}, v[0]) && equal(T{}, v[1]) && equal(other, v[2]));
    veksFree(w);
    veksFree(v);
}

TEST(VeksVectors, OfAllTypesAreCopiedClearedAndFilledExactlyAsAsked) {
    expectExactly<Vek8u>(veksMalloc_8u, veksCopy_8u, veksZero_8u, veksSet_8u, 200, 7);
    expectExactly<Vek16s>(veksMalloc_16s, veksCopy_16s, veksZero_16s, veksSet_16s, -5, 7);
    expectExactly<Vek32s>(veksMalloc_32s, veksCopy_32s, veksZero_32s, veksSet_32s, -70000, 7);
    expectExactly<Vek32f>(veksMalloc_32f, veksCopy_32f, veksZero_32f, veksSet_32f, 0.5F, 7);
    expectExactly<Vek64f>(veksMalloc_64f, veksCopy_64f, veksZero_64f, veksSet_64f, 0.1, 7);
    expectExactly<Vek16sc>(veksMalloc_16sc, veksCopy_16sc, veksZero_16sc, veksSet_16sc, {-1, 2}, {7, 8});
    expectExactly<Vek32sc>(veksMalloc_32sc, veksCopy_32sc, veksZero_32sc, veksSet_32sc, {-70000, 2}, {7, 8});
    expectExactly<Vek32fc>(veksMalloc_32fc, veksCopy_32fc, veksZero_32fc, veksSet_32fc, {0.5F, -2}, {7, 8});
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
