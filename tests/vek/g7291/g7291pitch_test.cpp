// Adaptive codebook of G.729.1 against its definition.
#include "lp_reference.h"
#include "veksc.h"

#include <cmath>

namespace {

Samples unitResponse() {
    Samples h(40);
    h[0] = 4096;
    return h;
}

// The vector at a delay, from a history that holds the residual after it.
Samples vectorAt(const Samples& x, int delay, int thirds) {
    Samples made = x;
    Samples vector(40);
    const int16_t at[] = {static_cast<int16_t>(delay), static_cast<int16_t>(thirds)};
    EXPECT_EQ(vekStsNoErr, veksDecodeAdaptiveVector_G729_16s(at, made.data(), vector.data()));
    return vector;
}

TEST(VekG7291AdaptiveSearch, FindsTheDelayThatMadeTheTarget) {
    atEveryLevel([] {
        std::mt19937 random(21);
        for (int delay = 44; delay <= 140; delay += 7) {
            for (int16_t sub = 0; sub <= 120; sub = static_cast<int16_t>(sub + 40)) {
                const Samples x = noise(random, 194, -3000, 3000);
                const bool relative = sub == 40 || sub == 120;
                const int thirds = delay < 85 || relative ? delay % 3 - 1 : 0;
                const Samples target = vectorAt(x, delay, thirds);
                int16_t got[2] = {};
                ASSERT_EQ(vekStsNoErr,
                          veksAdaptiveCodebookSearch_G7291_16s(target.data(), unitResponse().data(), x.data(), got,
                                                               static_cast<int16_t>(delay - 3),
                                                               static_cast<int16_t>(std::min(delay + 3, 143)), sub));
                EXPECT_EQ(delay, got[0]);
                EXPECT_EQ(thirds, got[1]) << delay << " at " << sub;
            }
        }
    });
}

TEST(VekG7291AdaptiveSearch, LongDelaysHaveThirdsOnlyWhereTheyAreCodedByTheirDistance) {
    std::mt19937 random(22);
    const Samples x = noise(random, 194, -3000, 3000);
    const Samples target = vectorAt(x, 100, 1);
    for (const auto& [sub, thirds] : {std::pair<int16_t, int>{0, 0}, {40, 1}, {80, 0}, {120, 1}}) {
        int16_t got[2] = {};
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookSearch_G7291_16s(target.data(), unitResponse().data(), x.data(), got,
                                                                    97, 103, sub));
        EXPECT_EQ(100, got[0]);
        EXPECT_EQ(thirds, got[1]) << sub;
    }
}

TEST(VekG7291AdaptiveSearch, TakesTheWholeRangeAndNothingBeyondIt) {
    std::mt19937 random(23);
    const Samples x = noise(random, 194, -3000, 3000);
    int16_t got[2] = {};
    const Samples far = vectorAt(x, 137, 0);
    ASSERT_EQ(vekStsNoErr,
              veksAdaptiveCodebookSearch_G7291_16s(far.data(), unitResponse().data(), x.data(), got, 20, 143, 0));
    EXPECT_EQ(137, got[0]);
    ASSERT_EQ(vekStsNoErr,
              veksAdaptiveCodebookSearch_G7291_16s(far.data(), unitResponse().data(), x.data(), got, 60, 60, 0));
    EXPECT_NEAR(60, got[0], 1);
    EXPECT_GE(3 * got[0] + got[1], 178);
    EXPECT_LE(3 * got[0] + got[1], 182);
    ASSERT_EQ(vekStsNoErr,
              veksAdaptiveCodebookSearch_G7291_16s(far.data(), unitResponse().data(), x.data(), got, 98, 110, 0));
    EXPECT_GE(got[0], 98);
    EXPECT_LE(got[0], 110);
}

TEST(VekG7291AdaptiveSearch, EqualsTheSearchOfG729OverItsRanges) {
    std::mt19937 random(24);
    for (int round = 0; round < 200; ++round) {
        const Samples target = noise(random, 40, -2000, 2000);
        Samples h = noise(random, 40, -900, 900);
        h[0] = 4096;
        Samples x = noise(random, 194, -32768 >> (round % 12), 32767 >> (round % 12));
        const Samples before = x;
        const auto open = static_cast<int16_t>(23 + round % 118);
        const auto sub = static_cast<int16_t>(round & 1);
        int16_t got[2] = {};
        int16_t want[2] = {};
        Samples vector(40);
        const int first = sub == 0 ? open - 3 : std::min(std::max(open - 5, 20), 134);
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookSearch_G7291_16s(
                                   target.data(), h.data(), x.data(), got, static_cast<int16_t>(first),
                                   static_cast<int16_t>(first + (sub == 0 ? 6 : 9)), static_cast<int16_t>(40 * sub)));
        ASSERT_EQ(before, x);
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookSearch_G729_16s(open, target.data(), h.data(), x.data(), want,
                                                                   vector.data(), sub));
        ASSERT_EQ(want[0], got[0]) << round;
        ASSERT_EQ(want[1], got[1]) << round;
    }
}

TEST(VekG7291AdaptiveSearch, RefusesValuesOutOfRange) {
    const Samples h = unitResponse();
    const Samples x(194, 5);
    int16_t at[2] = {7, 7};
    const auto search = [&](int lagMin, int lagMax, int sub) {
        return veksAdaptiveCodebookSearch_G7291_16s(h.data(), h.data(), x.data(), at, static_cast<int16_t>(lagMin),
                                                    static_cast<int16_t>(lagMax), static_cast<int16_t>(sub));
    };
    EXPECT_EQ(vekStsRangeErr, search(19, 40, 0));
    EXPECT_EQ(vekStsRangeErr, search(140, 144, 0));
    EXPECT_EQ(vekStsRangeErr, search(50, 49, 0));
    EXPECT_EQ(vekStsRangeErr, search(50, 56, -40));
    EXPECT_EQ(vekStsRangeErr, search(50, 56, 160));
    EXPECT_EQ(vekStsRangeErr, search(50, 56, 41));
    EXPECT_EQ(7, at[0]);
    EXPECT_EQ(vekStsNoErr, search(20, 143, 120));
    EXPECT_NE(7, at[0]);
}

TEST(VekG7291AdaptiveGain, IsTheQuotientOfProductsWithinItsBounds) {
    atEveryLevel([] {
        std::mt19937 random(25);
        for (const int level : {200, 3000, 15000}) {
            const Samples v = noise(random, 40, -level, level);
            Samples h = noise(random, 40, -600, 600);
            h[0] = 4096;
            Samples y(40);
            for (const int percent : {0, 30, 70, 100, 115, 150, -50}) {
                Samples target(40);
                double xy = 0;
                double yy = 0;
                for (size_t i = 0; i < 40; ++i) {
                    double sum = 0;
                    for (size_t k = 0; k <= i; ++k) {
                        sum += double{1} * v[k] * h[i - k] / 4096;
                    }
                    target[i] = static_cast<int16_t>(lpref::clip(std::lround(sum * percent / 100), 16));
                    const double clipped = std::max(-32768.0, std::min(32767.0, sum));
                    xy += target[i] * clipped;
                    yy += clipped * clipped;
                    y[i] = static_cast<int16_t>(std::floor(clipped));
                }
                Samples got(40);
                int16_t gain = -1;
                ASSERT_EQ(vekStsNoErr,
                          veksAdaptiveCodebookGain_G7291_16s(target.data(), h.data(), v.data(), got.data(), &gain));
                EXPECT_EQ(y, got);
                if (level < 15000) { // beyond, the product saturates
                    EXPECT_NEAR(std::min(std::max(xy / yy, 0.0), 1.2), gain / 16384.0, 0.01);
                } else {
                    EXPECT_GE(gain, 0);
                    EXPECT_LE(gain, 19661);
                }
            }
        }
        const Samples none(40);
        Samples y(40, 9);
        int16_t gain = -1;
        ASSERT_EQ(vekStsNoErr,
                  veksAdaptiveCodebookGain_G7291_16s(none.data(), unitResponse().data(), none.data(), y.data(), &gain));
        EXPECT_EQ(none, y);
        EXPECT_EQ(0, gain);
    });
}

} // namespace
