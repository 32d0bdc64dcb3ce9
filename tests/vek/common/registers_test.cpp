// The operations of the kernels' registers at each level that the machine has, against what they mean.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "kernellevels.h"
#include "registeroperations.h"
#include "vekcore.h"

namespace {

using Operations = vek::RegisterOperations;

constexpr int kElements = 4096;

/// Random ones, and all pairs of those at the edges.
struct Operands {
    std::vector<int16_t> a, b;

    Operands() {
        std::mt19937 random(1);
        const int16_t edges[] = {-32768, -32767, -16384, -2, -1, 0, 1, 2, 16384, 32766, 32767};
        for (const int16_t x : edges) {
            for (const int16_t y : edges) {
                a.push_back(x);
                b.push_back(y);
            }
        }
        while (a.size() < kElements) {
            a.push_back(static_cast<int16_t>(random()));
            b.push_back(static_cast<int16_t>(random()));
        }
    }
};

/// Calls `compare(plain, wide)` for the operations of each level above plain code that the machine has.
template <class Compare>
void atEachWidth(Compare compare) {
    kernellevels::onceIsEnough();
    vekInit();
    const int best = vekGetKernelLevel();
    for (int level = 1; level <= best; ++level) {
        SCOPED_TRACE("kernel level " + std::to_string(level));
        compare(vek::registerOperations_L0, *vek::registerOperations_all[level]);
    }
}

/// What `call` makes of `count` elements is the same with the operations of both levels.
template <class T, class Call>
void expectTheSame(const Operations& plain, const Operations& wide, size_t count, Call call) {
    std::vector<T> want(count);
    std::vector<T> have(count);
    call(plain, want.data());
    call(wide, have.data());
    EXPECT_EQ(want, have);
}

TEST(VekRegisters, EachLevelHasItsWidth) {
    atEachWidth([](const Operations& plain, const Operations& wide) {
        EXPECT_EQ(0, plain.bytes);
        int level = 1;
        while (vek::registerOperations_all[level] != &wide) {
            ++level;
        }
        EXPECT_EQ(8 << level, wide.bytes);
    });
}

TEST(VekRegisters, PairsOfNeighboursAreAddedModulo32Bits) {
    atEachWidth([](const Operations& plain, const Operations& wide) {
        const Operands o;
        std::vector<int32_t> want(kElements / 2, 0x7fffffff);
        std::vector<int32_t> have = want;
        plain.plusPairs(o.a.data(), o.b.data(), want.data(), kElements);
        wide.plusPairs(o.a.data(), o.b.data(), have.data(), kElements);
        EXPECT_EQ(want, have);
        plain.pairSums(o.a.data(), o.b.data(), want.data(), kElements);
        wide.pairSums(o.a.data(), o.b.data(), have.data(), kElements);
        EXPECT_EQ(want, have);
    });
}

TEST(VekRegisters, OperationsOn16BitsAreThoseOfPlainCode) {
    atEachWidth([](const Operations& plain, const Operations& wide) {
        const Operands o;
        for (const auto operation : {&Operations::multCut, &Operations::addSaturated}) {
            expectTheSame<int16_t>(plain, wide, kElements, [&](const Operations& operations, int16_t* y) {
                (operations.*operation)(o.a.data(), o.b.data(), y, kElements);
            });
        }
    });
}

TEST(VekRegisters, WhatIsInterleavedComesBackInOrderAndSaturated) {
    atEachWidth([](const Operations& plain, const Operations& wide) {
        const Operands o;
        for (const int shift : {0, 1, 12, 15, 31}) {
            SCOPED_TRACE(shift);
            expectTheSame<int16_t>(plain, wide, kElements, [&](const Operations& operations, int16_t* y) {
                operations.combined(o.a.data(), o.b.data(), y, kElements, shift);
            });
        }
    });
}

TEST(VekRegisters, ProductsAreRoundedShiftedAndSaturatedIn32Bits) {
    atEachWidth([](const Operations& plain, const Operations& wide) {
        const Operands o;
        for (const int shift : {0, 1, 8, 14, 15, 16, 30}) {
            SCOPED_TRACE(shift);
            const int half = shift > 0 ? 1 << (shift - 1) : 0;
            expectTheSame<int16_t>(plain, wide, kElements, [&](const Operations& operations, int16_t* y) {
                operations.multShifted(o.a.data(), o.b.data(), y, kElements, half, shift);
            });
        }
    });
}

TEST(VekRegisters, AVectorOfAnyLengthIsFilledAndNothingBehindItAlsoInPlace) {
    atEachWidth([](const Operations& plain, const Operations& wide) {
        const Operands o;
        for (int n = 0; n <= 140; ++n) {
            std::vector<int16_t> want(160, 77);
            std::vector<int16_t> have = want;
            plain.filled(o.a.data(), o.b.data(), want.data(), n);
            wide.filled(o.a.data(), o.b.data(), have.data(), n);
            EXPECT_EQ(want, have) << n;
            std::vector<int16_t> first(o.a.begin(), o.a.begin() + n);
            wide.filled(first.data(), o.b.data(), first.data(), n);
            EXPECT_TRUE(std::equal(first.begin(), first.end(), want.begin())) << n;
            std::vector<int16_t> second(o.b.begin(), o.b.begin() + n);
            wide.filled(o.a.data(), second.data(), second.data(), n);
            EXPECT_TRUE(std::equal(second.begin(), second.end(), want.begin())) << n;
        }
    });
}

TEST(VekRegisters, FirstLanesStandOneBehindTheOther) {
    atEachWidth([](const Operations&, const Operations& wide) {
        const Operands o;
        std::vector<int16_t> have(kElements);
        wide.firstLanes(o.a.data(), have.data(), kElements);
        EXPECT_EQ(o.a, have);
    });
}

TEST(VekRegisters, LanesKeepTheirOrderWhenTheyAreWidenedOrTakenOut) {
    atEachWidth([](const Operations& plain, const Operations& wide) {
        std::vector<float> a(kElements);
        std::vector<int32_t> x(kElements);
        for (int i = 0; i < kElements; ++i) {
            a[static_cast<size_t>(i)] = static_cast<float>(i) / 3.0F;
            x[static_cast<size_t>(i)] = i * 500009 - 1000000000;
        }
        expectTheSame<double>(plain, wide, kElements, [&](const Operations& operations, double* y) {
            operations.widened(a.data(), y, kElements);
        });
        std::vector<int32_t> taken(kElements);
        wide.lanes(x.data(), taken.data(), kElements);
        EXPECT_EQ(x, taken);
    });
}

TEST(VekRegisters, EightsAreTurnedRoundAndSummed) {
    atEachWidth([](const Operations& plain, const Operations& wide) {
        const Operands o;
        expectTheSame<int16_t>(plain, wide, kElements, [&](const Operations& operations, int16_t* y) {
            operations.reversed(o.a.data(), y, kElements);
        });
        std::vector<float> a(kElements);
        std::copy(o.a.begin(), o.a.end(), a.begin());
        expectTheSame<float>(plain, wide, kElements / 8, [&](const Operations& operations, float* y) {
            operations.eightSums(a.data(), y, kElements);
        });
    });
}

TEST(VekRegisters, OfEqualLeastOnesTheFirstIsFound) {
    atEachWidth([](const Operations& plain, const Operations& wide) {
        // -1 is the largest without a sign; each of the two stands in all lanes, first in this one.
        for (int first = 0; first < 64; ++first) {
            std::vector<int32_t> a(128, 7);
            for (int i = first; i < first + 32; i += 3) {
                a[static_cast<size_t>(i)] = -1;
                a[static_cast<size_t>(i) + 1] = 3;
            }
            const std::vector<uint32_t> u(a.begin(), a.end());
            int32_t value = 0;
            EXPECT_EQ(first, wide.least(a.data(), 128, &value));
            EXPECT_EQ(-1, value);
            EXPECT_EQ(first, plain.least(a.data(), 128, &value));
            uint32_t least = 0;
            EXPECT_EQ(first + 1, wide.leastUnsigned(u.data(), 128, &least));
            EXPECT_EQ(3U, least);
            EXPECT_EQ(first + 1, plain.leastUnsigned(u.data(), 128, &least));
        }
    });
}

/// The results of operations on eight or four numbers at both levels.
template <class T, class X>
void expectEqual(void (*plain)(const X*, T*), void (*wide)(const X*, T*), const std::vector<X>& x) {
    std::vector<T> want(vek::kResults, 77);
    std::vector<T> have = want;
    plain(x.data(), want.data());
    wide(x.data(), have.data());
    for (size_t i = 0; i < want.size(); ++i) {
        ASSERT_EQ(want[i], have[i]) << "result " << i;
    }
}

TEST(VekRegisters, EightIntegersAreThoseOfPlainCode) {
    atEachWidth([](const Operations& plain, const Operations& wide) {
        std::mt19937 random(2);
        constexpr int32_t one = 1 << 30;
        const int32_t factors[] = {one, -one, one / 2, -one / 2, 1, -1, one - 1, 0};
        for (int round = 0; round < 200; ++round) {
            std::vector<int32_t> x(64);
            for (int32_t& v : x) {
                v = static_cast<int32_t>(random()) >> (3 + round % 20);
            }
            for (size_t i = 16; i < 32; ++i) {
                x[i] = round % 2 == 0 ? factors[random() % 8] : static_cast<int32_t>(random()) >> 1;
            }
            expectEqual(plain.eightIntegers, wide.eightIntegers, x);
            std::vector<int16_t> pairs(16);
            for (int16_t& v : pairs) {
                v = static_cast<int16_t>(random());
            }
            expectEqual(plain.eightPairs, wide.eightPairs, pairs);
        }
    });
}

TEST(VekRegisters, EightAndFourFloatsAreThoseOfPlainCode) {
    atEachWidth([](const Operations& plain, const Operations& wide) {
        std::mt19937 random(3);
        for (int round = 0; round < 200; ++round) {
            // Below 2^22; every second time halves, which go to the even integer.
            std::vector<float> x(64);
            for (float& v : x) {
                const auto q = static_cast<float>(static_cast<int32_t>(random()) >> (round % 2 == 0 ? 8 : 20));
                v = round % 2 == 0 ? q * 0x1p-1F : q + 0.5F;
                v = v > 4194303.5F ? 4194303.5F : v < -4194303.5F ? -4194303.5F : v;
            }
            expectEqual(plain.eightFloats, wide.eightFloats, x);
            x.resize(16);
            expectEqual(plain.fourFloats, wide.fourFloats, x);
            std::vector<double> wider(16);
            for (double& v : wider) {
                v = static_cast<double>(random()) / 3;
            }
            expectEqual(plain.fourDoubles, wide.fourDoubles, wider);
        }
    });
}

} // namespace
