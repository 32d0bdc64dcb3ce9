// Memory, copy, zero and set.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "nullrefusal.h"
#include "veks.h"

namespace {

/// An element all of whose bytes are `byte`.
template <class T>
T filled(unsigned char byte) {
    T element;
    std::memset(static_cast<void*>(&element), byte, sizeof element);
    return element;
}

template <class T>
bool same(const T& a, const T& b) {
    const void* const bytes[] = {&a, &b}; // also of what has several forms of one value
    return std::memcmp(bytes[0], bytes[1], sizeof a) == 0;
}

template <class T>
void expectAlignedMemory(T* (*allocate)(int len)) {
    T* const p = allocate(3);
    ASSERT_NE(nullptr, p);
    EXPECT_EQ(0U, reinterpret_cast<uintptr_t>(p) % 64);
    p[2] = filled<T>(7);
    veksFree(p);
    T* const one = allocate(1);
    ASSERT_NE(nullptr, one);
    veksFree(one);
    EXPECT_EQ(nullptr, allocate(0));
    EXPECT_EQ(nullptr, allocate(-1));
}

TEST(VeksMalloc, MemoryIsAlignedAndNoLengthGivesNone) {
    expectAlignedMemory(veksMalloc_8u);
    expectAlignedMemory(veksMalloc_16s);
    expectAlignedMemory(veksMalloc_32s);
    expectAlignedMemory(veksMalloc_32f);
    expectAlignedMemory(veksMalloc_64f);
    expectAlignedMemory(veksMalloc_16sc);
    expectAlignedMemory(veksMalloc_32sc);
    expectAlignedMemory(veksMalloc_32fc);
    veksFree(nullptr);
}

template <class T>
void expectCopied(VekStatus (*copy)(const T*, T*, int)) {
    const std::vector<T> src = {filled<T>(1), filled<T>(2), filled<T>(3)};
    std::vector<T> dst(3, filled<T>(9));
    ASSERT_EQ(vekStsNoErr, copy(src.data(), dst.data(), 2));
    EXPECT_TRUE(same(src[0], dst[0]));
    EXPECT_TRUE(same(src[1], dst[1]));
    EXPECT_TRUE(same(filled<T>(9), dst[2]));
}

TEST(VeksCopy, CopiesExactlyTheElementsAsked) {
    expectCopied(veksCopy_8u);
    expectCopied(veksCopy_16s);
    expectCopied(veksCopy_32s);
    expectCopied(veksCopy_32f);
    expectCopied(veksCopy_64f);
    expectCopied(veksCopy_16sc);
    expectCopied(veksCopy_32sc);
    expectCopied(veksCopy_32fc);
}

template <class T>
void expectTwoOfThree(const std::vector<T>& v, const T& want) {
    EXPECT_TRUE(same(want, v[0]));
    EXPECT_TRUE(same(want, v[1]));
    EXPECT_TRUE(same(filled<T>(9), v[2]));
}

template <class T>
void expectCleared(VekStatus (*zero)(T*, int)) {
    std::vector<T> v(3, filled<T>(9));
    ASSERT_EQ(vekStsNoErr, zero(v.data(), 2));
    expectTwoOfThree(v, filled<T>(0));
}

TEST(VeksZero, ClearsExactlyTheElementsAsked) {
    expectCleared(veksZero_8u);
    expectCleared(veksZero_16s);
    expectCleared(veksZero_32s);
    expectCleared(veksZero_32f);
    expectCleared(veksZero_64f);
    expectCleared(veksZero_16sc);
    expectCleared(veksZero_32sc);
    expectCleared(veksZero_32fc);
}

template <class T>
void expectFilled(VekStatus (*set)(T, T*, int)) {
    std::vector<T> v(3, filled<T>(9));
    ASSERT_EQ(vekStsNoErr, set(filled<T>(5), v.data(), 2));
    expectTwoOfThree(v, filled<T>(5));
}

TEST(VeksSet, FillsExactlyTheElementsAsked) {
    expectFilled(veksSet_8u);
    expectFilled(veksSet_16s);
    expectFilled(veksSet_32s);
    expectFilled(veksSet_32f);
    expectFilled(veksSet_64f);
    expectFilled(veksSet_16sc);
    expectFilled(veksSet_32sc);
    expectFilled(veksSet_32fc);
}

TEST(VeksVectors, NullAndEmptyAreRefused) {
    Vek16s a = 1;
    expectNullsRefused(veksCopy_16s, &a, &a, 1);
    EXPECT_EQ(vekStsSizeErr, veksCopy_16s(&a, &a, 0));
    EXPECT_EQ(vekStsNullPtrErr, veksZero_16s(nullptr, 1));
    EXPECT_EQ(vekStsSizeErr, veksZero_16s(&a, -1));
    EXPECT_EQ(vekStsNullPtrErr, veksSet_16s(1, nullptr, 1));
    EXPECT_EQ(vekStsSizeErr, veksSet_16s(2, &a, 0));
    EXPECT_EQ(1, a);
}

} // namespace
