// Aligned memory: where blocks lie, what the list of live blocks tells, the settings of the vector layout.
#include "krbase.h"
#include "krtest.h"
#include "streamcapture.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <utility>

#if defined(__SANITIZE_ADDRESS__)
#define KR_TEST_POISON 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KR_TEST_POISON 1
#endif
#endif
#ifdef KR_TEST_POISON
#include <sanitizer/asan_interface.h>
#endif

namespace {

std::uintptr_t number(const void* pointer) {
    return reinterpret_cast<std::uintptr_t>(pointer);
}

// The distance of the aligned pointer from its base.
long long distance(int align, int shift) {
    void* base = nullptr;
    void* const aligned = kr_malloc(base, 100, align, shift);
    const long long result = static_cast<char*>(aligned) - static_cast<char*>(base);
    kr_free(base);
    return result;
}

// Restores the settings and the counters of a line.
class KrTestAllocate : public testing::Test {
protected:
    void SetUp() override { krTest::m_vectorNum = krTest::m_vectorShift = 0; }
    void TearDown() override {
        krSetVectorAlign(0);
        krSetVectorShift(512);
        krSetAlignSrc(true);
        krSetAlignByByte(true);
        krTest::m_vectorNum = krTest::m_vectorShift = 0;
    }
};

} // namespace

TEST(KrMalloc, FirstStageIsAlignedToALine) {
    void* const base = kr_malloc(1);
    ASSERT_NE(base, nullptr);
    EXPECT_EQ(number(base) % 64, 0U);
    std::memset(base, 1, 65);
    kr_free(base);
    kr_free(nullptr);
}

TEST(KrMalloc, AlignZeroShiftZeroIsTheBase) {
    EXPECT_EQ(distance(0, 0), 0);
}

TEST(KrMalloc, AlignAndShiftAddUp) {
    EXPECT_EQ(distance(3, 128), 131);
}

TEST(KrMalloc, AlignIsTakenModulo64) {
    EXPECT_EQ(distance(67, 128), 131);
}

TEST(KrMalloc, ShiftOffALineIsRoundedUp) {
    EXPECT_EQ(distance(0, 32), 64);
}

TEST(KrMalloc, ShiftOffALineLosesTheMisalignment) {
    EXPECT_EQ(distance(1, 1), 64);
}

TEST(KrMalloc, GetAlignedPtrKeepsTheBitsOfAlign) {
    EXPECT_EQ(number(getAlignedPtr(reinterpret_cast<void*>(1024), 5)), 1029U);
    EXPECT_EQ(number(getAlignedPtr(reinterpret_cast<void*>(1025), 0)), 1088U);
    EXPECT_EQ(number(getAlignedPtr(reinterpret_cast<void*>(1025), 1)), 1088U);
}

TEST(KrMalloc, FailureIsReportedAndGivesNull) {
    ConsoleCapture console(ERR);
    EXPECT_EQ(krMalloc(2147483647, 0, 0, nullptr), nullptr);
    EXPECT_EQ(console.text(), "-- Memory error: can't allocate 2147483647 bytes\n");
    EXPECT_EQ(krMallocFirst(nullptr, nullptr), nullptr);
}

TEST(KrMalloc, SizeZeroIsABlock) {
    void* const block = krMalloc(0, 0, 0, nullptr);
    EXPECT_NE(block, nullptr);
    krFree(block);
}

TEST(KrMalloc, NegativeSizeIsABlockToo) {
    for (const int size : {-1, -100, -2147483647 - 1}) {
        void* const block = krMalloc(size, 0, 0, nullptr);
        EXPECT_NE(block, nullptr) << size;
        krFree(block);
    }
}

TEST(KrMalloc, MemErrorReportsAndIsFalse) {
    ConsoleCapture console(ERR);
    EXPECT_FALSE(memError(-3));
    EXPECT_EQ(console.text(), "-- Memory error: can't allocate -3 bytes\n");
}

TEST(KrMalloc, PointerFormStoresTheResultWithNoOwner) {
    void* stored = nullptr;
    void* const block = krMalloc(stored, 10, 5, 64);
    EXPECT_EQ(stored, block);
    EXPECT_EQ(number(block) % 64, 5U);
    int size = 0;
    void* info = &size;
    EXPECT_TRUE(krMallocInfo(block, &size, &info));
    EXPECT_EQ(size, 10);
    EXPECT_EQ(info, nullptr);
    krFree(block);
    EXPECT_FALSE(krMallocInfo(block, &size, &info));
}

TEST(KrMalloc, WalkGivesBlocksInOrderOfAllocation) {
    void* const first = krMalloc(10, 0, 0, MEM_OBJECT_IS_BUFFER);
    void* const second = krMalloc(20, 0, 64, MEM_OBJECT_IS_SUBOBJECT);
    int size = 0;
    void* info = nullptr;
    EXPECT_EQ(krMallocFirst(&size, &info), first);
    EXPECT_EQ(size, 10);
    EXPECT_EQ(info, MEM_OBJECT_IS_BUFFER);
    EXPECT_EQ(krMallocNext(&size, &info), second);
    EXPECT_EQ(size, 20);
    EXPECT_EQ(info, MEM_OBJECT_IS_SUBOBJECT);
    EXPECT_EQ(krMallocNext(&size, &info), nullptr);
    EXPECT_EQ(krMallocNext(nullptr, nullptr), nullptr);
    krFree(first);
    EXPECT_EQ(krMallocFirst(nullptr, nullptr), second);
    krFree(second);
    EXPECT_EQ(krMallocFirst(nullptr, nullptr), nullptr);
}

TEST(KrMalloc, WalkGoesOnBehindAReleasedBlock) {
    void* const first = krMalloc(10, 0, 0, nullptr);
    void* const second = krMalloc(20, 0, 0, nullptr);
    void* const third = krMalloc(30, 0, 0, nullptr);
    EXPECT_EQ(krMallocFirst(nullptr, nullptr), first);
    krFree(second);
    EXPECT_EQ(krMallocNext(nullptr, nullptr), third);
    krFree(first);
    krFree(third);
    EXPECT_EQ(krMallocNext(nullptr, nullptr), nullptr);
}

TEST(KrMalloc, OwnerMarksAreTwoObjects) {
    EXPECT_NE(MEM_OBJECT_IS_BUFFER, MEM_OBJECT_IS_SUBOBJECT);
    EXPECT_EQ(MEM_OBJECT_IS_BUFFER->objectSize(), 0);
    EXPECT_STREQ(MEM_OBJECT_IS_BUFFER->objectInfo().c_str(), "");
    EXPECT_FALSE(MEM_OBJECT_IS_BUFFER->reserveCopy());
    EXPECT_FALSE(MEM_OBJECT_IS_BUFFER->setReservedCopy());
}

TEST(KrMalloc, UnknownPointerIsHarmlessAndItsLineEmpty) {
    void* const block = krMalloc(16, 0, 0, nullptr);
    int local = 0;
    ConsoleCapture console(ERR | MEM);
    krFree(&local);
    krFree(nullptr);
    EXPECT_EQ(console.text(), " - krFree: \n");
    EXPECT_TRUE(krMallocInfo(block, nullptr, nullptr));
    krFree(block);
}

TEST(KrMalloc, MemoryLevelShowsEachBlock) {
    ConsoleCapture console(ERR | MEM);
    void* const block = krMalloc(48, 0, 0, nullptr);
    char address[40];
    std::snprintf(address, sizeof address, "%llX", static_cast<unsigned long long>(number(block)));
    const std::string line = std::string("size:48  address:") + address + "  alignedPointer:" + address + "\n";
    krFree(block);
    EXPECT_EQ(console.text(), " - krMalloc: " + line + " - krFree: " + line);
}

TEST(KrMallocDeath, FirstFreeBeforeAnyBlockPrintsNothingAndForgottenBlocksAreNoBlocks) {
    // In a process of its own, since it gives up the list of this one.
    EXPECT_EXIT(
        {
            krFreeAll();
            ConsoleCapture console(ERR | MEM);
            int local = 0;
            krFree(&local);
            bool good = console.text().empty() && krMallocFirst(nullptr, nullptr) == nullptr;
            void* const block = krMalloc(16, 0, 0, nullptr);
            good = good && krMallocFirst(nullptr, nullptr) == block;
            good = good && !krFreeAll();
            good = good && !krMallocFirst(nullptr, nullptr) && !krMallocNext(nullptr, nullptr);
            const size_t told = console.text().size();
            krFree(block);
            good = good && console.text().size() == told;
            std::memset(block, 1, 16);
            std::_Exit(good ? 7 : 8);
        },
        testing::ExitedWithCode(7), "");
}

TEST(KrMallocPoison, SlackAroundTheBlockIsClosed) {
#ifdef KR_TEST_POISON
    void* const block = krMalloc(21, 3, 64, nullptr);
    char* const bytes = static_cast<char*>(block);
    EXPECT_FALSE(__asan_address_is_poisoned(bytes));
    EXPECT_FALSE(__asan_address_is_poisoned(bytes + 20));
    EXPECT_TRUE(__asan_address_is_poisoned(bytes + 21));
    EXPECT_TRUE(__asan_address_is_poisoned(bytes + 60));
    EXPECT_TRUE(__asan_address_is_poisoned(bytes - 4));
    krFree(block);
    void* const plain = kr_malloc(21);
    EXPECT_FALSE(__asan_address_is_poisoned(static_cast<char*>(plain) + 30));
    kr_free(plain);
#else
    GTEST_SKIP() << "not built with the address sanitizer";
#endif
}

TEST(KrSettings, AlignIsStoredModulo64WithItsSign) {
    krSetVectorAlign(70);
    EXPECT_EQ(krGetVectorAlign(), 6);
    krSetVectorAlign(-70);
    EXPECT_EQ(krGetVectorAlign(), -6);
    krSetVectorAlign(0);
}

TEST(KrSettings, NegativeAlignStaysInsideTheBlock) {
    void* const block = krMalloc(100, -6, 0, nullptr);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(number(block) % 64, 58U);
    std::memset(block, 1, 100);
    krFree(block);
}

TEST_F(KrTestAllocate, ShiftsGrowAndWrapAt32768) {
    void* blocks[66];
    for (int i = 0; i < 66; ++i) {
        EXPECT_EQ(krTest::m_vectorShift, i % 64 * 512) << i;
        blocks[i] = krTest::allocate(8, 0);
    }
    EXPECT_EQ(krTest::m_vectorNum, 66);
    for (void* block : blocks) {
        krTest::deallocate(block);
    }
}

// Where two vectors that are misaligned by two units lie in their lines.
std::pair<std::uintptr_t, std::uintptr_t> placesOfTwo() {
    void* const first = krTest::allocate(8, -2);
    void* const second = krTest::allocate(8, -2);
    krTest::deallocate(first);
    krTest::deallocate(second);
    return {number(first) % 64, number(second) % 64};
}

TEST_F(KrTestAllocate, OnlyTheFirstVectorIsMisaligned) {
    krSetVectorAlign(5);
    EXPECT_EQ(placesOfTwo(), std::pair(10UL, 0UL));
}

TEST_F(KrTestAllocate, EachVectorIsMisalignedWithTheSettingOff) {
    krSetVectorAlign(5);
    krSetAlignSrc(false);
    EXPECT_EQ(placesOfTwo(), std::pair(10UL, 10UL));
}

TEST_F(KrTestAllocate, UnitsOfAnySizeAreTakenModuloALine) {
    krSetVectorAlign(63);
    krSetAlignSrc(false);
    krSetVectorShift(0);
    const struct {
        int align;
        unsigned offset;
    } rows[] = {
        {-3, 3 * 63 % 64}, {-100000007, 100000007ULL * 63 % 64}, {INT_MIN, 0}, {INT_MIN + 1, 2147483647ULL * 63 % 64}};
    for (const auto& row : rows) {
        void* const block = krTest::allocate(8, row.align);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(number(block) % 64, row.offset) << row.align;
        krTest::deallocate(block);
    }
}

TEST_F(KrTestAllocate, NullOwnerIsTheBufferMark) {
    void* const block = krTest::allocate(8, 0);
    void* info = nullptr;
    EXPECT_TRUE(krMallocInfo(block, nullptr, &info));
    EXPECT_EQ(info, MEM_OBJECT_IS_BUFFER);
    krTest::deallocate(block);
}

TEST_F(KrTestAllocate, FailureLeavesTheCounters) {
    ConsoleCapture console(ERR);
    EXPECT_EQ(krTest::allocate(2147483647, 0), nullptr);
    EXPECT_EQ(krTest::m_vectorNum, 0);
    EXPECT_EQ(krTest::m_vectorShift, 0);
}
