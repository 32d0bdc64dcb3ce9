// Lattice quantiser and multiplexer of the extended wide-band codec: nearest points by brute force, the budget of bits,
// points through packets and back, lost packets, and the refusals.
#include <cmath>

#include "lp_reference.h"
#include "veksc.h"

namespace {

using lpref::noise;
using Samples = std::vector<int16_t>;

// Eight numbers of one parity whose sum is a multiple of four are the lattice.
bool inLattice(const int16_t* x) {
    int sum = 0;
    for (int i = 0; i < 8; i++) {
        if ((x[i] - x[0]) % 2 != 0) {
            return false;
        }
        sum += x[i];
    }
    return sum % 4 == 0;
}

// The least squared distance of a lattice point, over all points within 2 of each element.
double nearestByForce(const double* x) {
    double least = 1e9;
    for (int c = 0; c < 65536; c++) {
        int16_t y[8];
        double distance = 0;
        for (int i = 0; i < 8; i++) {
            y[i] = static_cast<int16_t>(std::floor(x[i]) - 1 + (c >> (2 * i) & 3));
            distance += std::pow(x[i] - y[i], 2);
        }
        if (distance < least && inLattice(y)) {
            least = distance;
        }
    }
    return least;
}

// Bits of a point in codebooks that hold it, by the norm alone: a lower bound.
int leastBits(const int16_t* x) {
    int norm = 0;
    for (int i = 0; i < 8; i++) {
        norm += x[i] * x[i];
    }
    return norm == 0 ? 1 : norm <= 8 ? 10 : norm <= 16 ? 10 : 15;
}

TEST(VekWbeLattice, WithBitsEnoughEachVectorBecomesItsNearestPoint) {
    std::mt19937 random(1);
    for (const int peak : {2, 5, 40}) {
        const Samples x = noise(random, 96, -peak, peak);
        Samples y(96);
        Vek16s factor = -1;
        ASSERT_EQ(vekStsNoErr, veksQuantTCX_AMRWBE_16s(x.data(), y.data(), 12, 60000, &factor));
        for (size_t v = 0; v < 12; v++) {
            ASSERT_TRUE(inLattice(&y[8 * v]));
            double exact[8];
            double distance = 0;
            for (size_t i = 0; i < 8; i++) {
                exact[i] = x[8 * v + i];
                distance += std::pow(exact[i] - y[8 * v + i], 2);
            }
            ASSERT_NEAR(nearestByForce(exact), distance, 1e-6) << peak << " " << v;
        }
    }
}

TEST(VekWbeLattice, TheBudgetIsKeptAndUsed) {
    std::mt19937 random(2);
    const struct {
        int len;
        int bits;
        int packets;
    } modes[] = {{48, 1, 1},    {48, 41, 1},   {48, 115, 1},  {96, 244, 2},   {192, 502, 4},
                 {288, 134, 1}, {288, 406, 1}, {576, 862, 2}, {1152, 695, 4}, {1152, 1783, 4}};
    for (const auto& mode : modes) {
        for (const int peak : {30, 3000, 32767}) {
            Samples x = noise(random, mode.len, -peak, peak);
            for (size_t i = 0; i < x.size(); i++) {
                x[i] = static_cast<int16_t>(x[i] * 8 / static_cast<int>(8 + i / 8)); // louder below
            }
            Samples y(x.size());
            Vek16s factor = -1;
            const int count = mode.len / 8;
            ASSERT_EQ(vekStsNoErr, veksQuantTCX_AMRWBE_16s(x.data(), y.data(), count, mode.bits, &factor));
            int bits = 0;
            bool any = false;
            for (int v = 0; v < count; v++) {
                ASSERT_TRUE(inLattice(&y[static_cast<size_t>(8 * v)]));
                const int cost = leastBits(&y[static_cast<size_t>(8 * v)]);
                bits += cost;
                any = any || cost > 1;
            }
            EXPECT_LE(any ? bits : 0, mode.bits);
            EXPECT_GE(factor, 0);
            // All bits in one packet: each point comes back, so the true cost is within the budget.
            const int one[1] = {mode.bits};
            const int good[1] = {0};
            Samples words(static_cast<size_t>(mode.bits + 3) / 4 + 1, 99);
            Samples back(x.size(), 99);
            ASSERT_EQ(vekStsNoErr, veksEncodeMux_AMRWBE_16s(y.data(), one, 1, words.data(), count));
            EXPECT_EQ(99, words.back());
            ASSERT_EQ(vekStsNoErr, veksDecodeDemux_AMRWBE_16s(words.data(), one, good, 1, back.data(), count));
            EXPECT_EQ(y, back);
            if (mode.bits >= 100) {
                EXPECT_NE(Samples(y.size(), 0), y);
            }
        }
    }
}

TEST(VekWbeLattice, SilenceIsOriginsWithoutNoise) {
    const Samples x(48, 0);
    Samples y(48, 1);
    Vek16s factor = -1;
    ASSERT_EQ(vekStsNoErr, veksQuantTCX_AMRWBE_16s(x.data(), y.data(), 6, 1, &factor));
    EXPECT_EQ(Samples(48, 0), y);
    EXPECT_EQ(0, factor);
}

TEST(VekWbeMux, PointsOfAllSizesComeBack) {
    std::mt19937 random(3);
    const int bits[4] = {2048, 2048, 2048, 2048};
    const int good[4] = {0, 0, 0, 0};
    for (const int peak : {1, 2, 4, 10, 60, 1000, 30000}) {
        for (int frame = 0; frame < 40; frame++) {
            const Samples x = noise(random, 320, -peak, peak);
            Samples y(320);
            Samples words(2048);
            Samples back(320);
            Vek16s factor = 0;
            ASSERT_EQ(vekStsNoErr, veksQuantTCX_AMRWBE_16s(x.data(), y.data(), 40, 8000, &factor));
            ASSERT_EQ(vekStsNoErr, veksEncodeMux_AMRWBE_16s(y.data(), bits, 4, words.data(), 40));
            for (const int16_t w : words) {
                ASSERT_TRUE(w >= 0 && w < 16);
            }
            ASSERT_EQ(vekStsNoErr, veksDecodeDemux_AMRWBE_16s(words.data(), bits, good, 4, back.data(), 40));
            ASSERT_EQ(y, back) << peak;
        }
    }
}

TEST(VekWbeMux, WhatAPacketCannotHoldStandsInTheOthers) {
    Samples x(32, 0);
    x[0] = 4; // packet 0: two points of 10 bits do not fit in 14
    x[17] = -4;
    const int bits[2] = {14, 30};
    const int good[2] = {0, 0};
    const int secondLost[2] = {0, 1};
    Samples words(12);
    Samples back(32, 9);
    ASSERT_EQ(vekStsNoErr, veksEncodeMux_AMRWBE_16s(x.data(), bits, 2, words.data(), 4));
    ASSERT_EQ(vekStsNoErr, veksDecodeDemux_AMRWBE_16s(words.data(), bits, good, 2, back.data(), 4));
    EXPECT_EQ(x, back);
    ASSERT_EQ(vekStsNoErr, veksDecodeDemux_AMRWBE_16s(words.data(), bits, secondLost, 2, back.data(), 4));
    x[17] = 0;
    EXPECT_EQ(x, back);
}

TEST(VekWbeMux, ALostPacketTakesItsOwnPointsOnly) {
    Samples x(32, 0);
    for (size_t v = 0; v < 4; v++) {
        x[8 * v + v] = 4;
    }
    const int bits[2] = {40, 40};
    const int firstLost[2] = {1, 0};
    Samples words(20);
    Samples back(32, 9);
    ASSERT_EQ(vekStsNoErr, veksEncodeMux_AMRWBE_16s(x.data(), bits, 2, words.data(), 4));
    ASSERT_EQ(vekStsNoErr, veksDecodeDemux_AMRWBE_16s(words.data(), bits, firstLost, 2, back.data(), 4));
    x[0] = 0;
    x[16 + 2] = 0;
    EXPECT_EQ(x, back);
}

TEST(VekWbeMux, AnyBitsGivePointsOfTheLattice) {
    std::mt19937 random(4);
    const int bits[4] = {446, 446, 446, 445};
    const int good[4] = {0, 0, 0, 0};
    for (int frame = 0; frame < 100; frame++) {
        const Samples words = noise(random, 448, 0, 15);
        Samples y(1152, 99);
        ASSERT_EQ(vekStsNoErr, veksDecodeDemux_AMRWBE_16s(words.data(), bits, good, 4, y.data(), 144));
        for (size_t v = 0; v < 144; v++) {
            ASSERT_TRUE(inLattice(&y[8 * v]));
        }
    }
}

TEST(VekWbeMux, Refusals) {
    Samples x(1160, 0);
    Samples words(16, 5);
    Samples y(48, 6);
    Vek16s factor = 7;
    const int bits[4] = {12, 12, 12, 12};
    const int tooMany[1] = {4097};
    const int good[4] = {0, 0, 0, 0};
    expectNullsRefused(veksQuantTCX_AMRWBE_16s, x.data(), y.data(), 6, 9, &factor);
    EXPECT_EQ(vekStsSizeErr, veksQuantTCX_AMRWBE_16s(x.data(), y.data(), 0, 9, &factor));
    EXPECT_EQ(vekStsSizeErr, veksQuantTCX_AMRWBE_16s(x.data(), y.data(), 145, 9, &factor));
    EXPECT_EQ(vekStsRangeErr, veksQuantTCX_AMRWBE_16s(x.data(), y.data(), 6, -1, &factor));
    expectNullsRefused(veksEncodeMux_AMRWBE_16s, x.data(), bits, 1, words.data(), 6);
    EXPECT_EQ(vekStsSizeErr, veksEncodeMux_AMRWBE_16s(x.data(), bits, 5, words.data(), 6));
    EXPECT_EQ(vekStsSizeErr, veksEncodeMux_AMRWBE_16s(x.data(), tooMany, 1, words.data(), 6));
    x[3] = 1;
    EXPECT_EQ(vekStsRangeErr, veksEncodeMux_AMRWBE_16s(x.data(), bits, 1, words.data(), 6));
    expectNullsRefused(veksDecodeDemux_AMRWBE_16s, words.data(), bits, good, 1, y.data(), 6);
    EXPECT_EQ(vekStsSizeErr, veksDecodeDemux_AMRWBE_16s(words.data(), bits, good, 0, y.data(), 6));
    EXPECT_EQ(vekStsSizeErr, veksDecodeDemux_AMRWBE_16s(words.data(), bits, good, 1, y.data(), 145));
    EXPECT_EQ(Samples(16, 5), words);
    EXPECT_EQ(Samples(48, 6), y);
    EXPECT_EQ(7, factor);
}

} // namespace
