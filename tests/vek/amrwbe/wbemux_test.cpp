// Lattice quantiser and multiplexer of the extended wide-band codec: nearest points by brute force, the budget of bits,
// points through packets and back, lost packets, and the refusals.
#include <algorithm>
#include <cmath>

#include "lp_reference.h"
#include "veksc.h"

namespace {

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

// Number of a codebook and index in it.
struct Coded {
    int number = 0;
    int index = 0;
};

// Packets written by their layout: the numbers of each packet's points, indices as far as they fit there, the others in
// what all have left. What finds no place is told as the origin.
Samples written(std::vector<Coded>& codes, const std::vector<int>& bits) {
    std::vector<std::vector<int>> packets(bits.size());
    const auto room = [&](size_t p) { return bits[p] - static_cast<int>(packets[p].size()); };
    for (size_t i = 0; i < codes.size(); i++) {
        const size_t p = i % bits.size();
        if (room(p) < std::max(codes[i].number, 1)) {
            codes[i] = {};
        }
        for (int b = 1; b < codes[i].number; b++) {
            packets[p].push_back(1);
        }
        if (room(p) > 0) {
            packets[p].push_back(0);
        }
    }
    std::vector<size_t> left;
    for (size_t i = 0; i < codes.size(); i++) {
        const size_t p = i % bits.size();
        if (room(p) < 4 * codes[i].number) {
            left.push_back(i);
            continue;
        }
        for (int b = 4 * codes[i].number - 1; b >= 0; b--) {
            packets[p].push_back(codes[i].index >> b & 1);
        }
    }
    size_t all = 0;
    for (size_t p = 0; p < bits.size(); p++) {
        all += static_cast<size_t>(room(p));
    }
    size_t p = 0;
    for (const size_t i : left) {
        const auto wanted = static_cast<size_t>(4 * codes[i].number);
        const bool fits = wanted <= all;
        for (size_t b = std::min(wanted, all); b > 0; b--, all--) {
            while (room(p) == 0) {
                p++;
            }
            packets[p].push_back(fits ? codes[i].index >> (b - 1) & 1 : 0);
        }
        codes[i] = fits ? codes[i] : Coded{};
    }
    Samples words;
    for (size_t k = 0; k < bits.size(); k++) {
        packets[k].resize(static_cast<size_t>(bits[k] + 3) / 4 * 4);
        for (size_t at = 0; at < packets[k].size(); at += 4) {
            const std::vector<int>& b = packets[k];
            words.push_back(static_cast<int16_t>(8 * b[at] + 4 * b[at + 1] + 2 * b[at + 2] + b[at + 3]));
        }
    }
    return words;
}

// The point of a code.
Samples pointOf(Coded code) {
    std::vector<Coded> one = {code};
    const int bits = 5 * code.number;
    const int good = 0;
    const Samples words = written(one, {bits});
    Samples point(8, 99);
    EXPECT_EQ(vekStsNoErr, veksDecodeDemux_AMRWBE_16s(words.data(), &bits, &good, 1, point.data(), 1));
    return point;
}

TEST(VekWbeMux, SmallestCodebookHasTheShortestPointsOfTheLattice) {
    // Of the lattice 240 points have the least norm and 2160 the next one, 16 of them along an axis.
    std::vector<Samples> points;
    int shortest = 0;
    for (int index = 0; index < 256; index++) {
        points.push_back(pointOf({2, index}));
        int norm = 0;
        for (const int16_t v : points.back()) {
            norm += v * v;
        }
        EXPECT_TRUE(norm == 8 || norm == 16);
        EXPECT_TRUE(inLattice(points.back().data()));
        shortest += norm == 8 ? 1 : 0;
    }
    EXPECT_EQ(240, shortest);
    std::sort(points.begin(), points.end());
    EXPECT_EQ(points.end(), std::unique(points.begin(), points.end()));
}

TEST(VekWbeMux, NumbersAndIndicesStandWhereTheLayoutTellsThem) {
    // Codes of two codebooks, as far as their points are in no smaller one.
    std::vector<Coded> codes;
    for (int index = 0; index < 256; index++) {
        codes.push_back({2, index});
    }
    for (int index = 0; index < 4096; index += 3) {
        std::vector<Coded> one = {{3, index}};
        const int bits = 15;
        Samples words(4);
        ASSERT_EQ(vekStsNoErr, veksEncodeMux_AMRWBE_16s(pointOf(one[0]).data(), &bits, 1, words.data(), 1));
        if (words == written(one, {bits})) {
            codes.push_back(one[0]);
        }
    }
    ASSERT_GT(codes.size(), 1000U);
    std::mt19937 random(16);
    int dropped = 0;
    for (int round = 0; round < 200; round++) {
        const int packets = 1 + round % 4;
        const int count = packets * noise(random, 1, 1, 8)[0];
        std::vector<Coded> chosen;
        Samples points;
        for (int i = 0; i < count; i++) {
            const int pick = noise(random, 1, -300, static_cast<int>(codes.size()) - 1)[0];
            chosen.push_back(pick < 0 ? Coded{} : codes[static_cast<size_t>(pick)]);
            const Samples point = pick < 0 ? Samples(8) : pointOf(chosen.back());
            points.insert(points.end(), point.begin(), point.end());
        }
        std::vector<int> bits;
        for (int p = 0; p < packets; p++) {
            bits.push_back(noise(random, 1, 1, 13 * count / packets + 4)[0]);
        }
        const std::vector<Coded> all = chosen;
        const Samples want = written(chosen, bits);
        Samples words(want.size(), 77);
        ASSERT_EQ(vekStsNoErr, veksEncodeMux_AMRWBE_16s(points.data(), bits.data(), packets, words.data(), count));
        ASSERT_EQ(want, words) << round;
        for (size_t i = 0; i < chosen.size(); i++) {
            if (chosen[i].number == 0) {
                dropped += all[i].number > 0 ? 1 : 0;
                std::fill_n(points.begin() + static_cast<long>(8 * i), 8, int16_t{0});
            }
        }
        const std::vector<int> good(bits.size());
        Samples back(points.size(), 99);
        ASSERT_EQ(vekStsNoErr,
                  veksDecodeDemux_AMRWBE_16s(want.data(), bits.data(), good.data(), packets, back.data(), count));
        ASSERT_EQ(points, back) << round;
    }
    EXPECT_GT(dropped, 50);
}

// Four points sent in two packets, of which some are lost.
Samples received(const Samples& x, const int (&bits)[2], const int (&lost)[2]) {
    Samples words(static_cast<size_t>((bits[0] + 3) / 4 + (bits[1] + 3) / 4));
    Samples back(x.size(), 9);
    EXPECT_EQ(vekStsNoErr, veksEncodeMux_AMRWBE_16s(x.data(), bits, 2, words.data(), 4));
    EXPECT_EQ(vekStsNoErr, veksDecodeDemux_AMRWBE_16s(words.data(), bits, lost, 2, back.data(), 4));
    return back;
}

TEST(VekWbeMux, WhatAPacketCannotHoldStandsInTheOthers) {
    Samples x(32, 0);
    x[0] = 4; // packet 0: two points of 10 bits do not fit in 14
    x[17] = -4;
    const int bits[2] = {14, 30};
    const int good[2] = {0, 0};
    const int secondLost[2] = {0, 1};
    EXPECT_EQ(x, received(x, bits, good));
    const Samples left = received(x, bits, secondLost);
    x[17] = 0;
    EXPECT_EQ(x, left);
}

TEST(VekWbeMux, ALostPacketTakesItsOwnPointsOnly) {
    Samples x(32, 0);
    for (size_t v = 0; v < 4; v++) {
        x[8 * v + v] = 4;
    }
    const int bits[2] = {40, 40};
    const int firstLost[2] = {1, 0};
    const Samples left = received(x, bits, firstLost);
    x[0] = 0;
    x[16 + 2] = 0;
    EXPECT_EQ(x, left);
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
