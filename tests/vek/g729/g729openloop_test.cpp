// Open-loop pitch and the maximum of a correlation, against the search written out step by step.
#include "lp_reference.h"
#include "veksc.h"

#include <cmath>

namespace {

using namespace lpref;

constexpr int kHistory = 143;

int64_t sum(const Samples& x, int a, int b, int every, int64_t start = 0) {
    for (int n = 0; n < 80; n += every) {
        start = step(start, x[static_cast<size_t>(kHistory + a + n)], x[static_cast<size_t>(kHistory + b + n)], 1);
    }
    return start;
}

// Product of two numbers of 32 bits in Q31, the low parts' product left out.
int64_t product(int64_t a, int64_t b) {
    const auto high = [](int64_t v) { return static_cast<int>(v >> 16); };
    const auto low = [](int64_t v) { return static_cast<int>((v >> 1) & 0x7fff); };
    return 2 * (int64_t{high(a)} * high(b) + ((high(a) * low(b)) >> 15) + ((low(a) * high(b)) >> 15));
}

int64_t normalised(int64_t max, int64_t energy) {
    auto root = static_cast<int32_t>(energy);
    veksInvSqrt_32s_I(&root, 1);
    return clip(product(max, root), 32);
}

Samples scaled(const Samples& x, int every) {
    int64_t energy = 0;
    for (size_t i = 0; i < x.size(); i += static_cast<size_t>(every)) {
        energy += int64_t{2} * x[i] * x[i];
    }
    Samples y = x;
    for (int16_t& v : y) {
        v = static_cast<int16_t>(energy > INT32_MAX ? v >> 3 : energy < 1048576 ? v * 8 : v);
    }
    return y;
}

int fullSearch(const Samples& source) {
    const Samples x = scaled(source, 1);
    int bestLag = 0;
    int64_t best = 0;
    for (int longest = 143, shortest = 80; shortest >= 20; longest = shortest - 1, shortest /= 2) {
        int64_t max = INT32_MIN;
        int lag = longest;
        for (int k = longest; k >= shortest; --k) {
            const int64_t s = sum(x, 0, -k, 1);
            if (s >= max) {
                max = s;
                lag = k;
            }
        }
        const auto value = static_cast<int16_t>(normalised(max, sum(x, -lag, -lag, 1)));
        if (longest == 143 || ((best * 27853) >> 15) < value) {
            best = value;
            bestLag = lag;
        }
    }
    return bestLag;
}

int halfSearch(const Samples& source) {
    const Samples x = scaled(source, 2);
    int64_t max[3] = {INT32_MIN, INT32_MIN, INT32_MIN};
    int lag[3] = {};
    const auto take = [&](int range, int k) {
        const int64_t s = sum(x, 0, -k, 2);
        if (s > max[range]) {
            max[range] = s;
            lag[range] = k;
        }
    };
    for (int k = 20; k < 40; ++k) {
        take(0, k);
    }
    for (int k = 40; k < 80; ++k) {
        take(1, k);
    }
    for (int k = 80; k < 143; k += 2) {
        take(2, k);
    }
    const int even = lag[2];
    for (const int k : {even - 1, even + 1}) {
        if (k >= 80) {
            take(2, k);
        }
    }
    for (int range = 0; range < 3; ++range) {
        max[range] = normalised(max[range], sum(x, -lag[range], -lag[range], 2, 1));
    }
    const auto near = [](int a, int b, int d) { return std::abs(a - b) < d; };
    const auto fifth = [](int64_t v) { return product(v, int64_t{6554} << 16); };
    max[1] = clip(max[1] + (near(2 * lag[1], lag[2], 5) ? max[2] >> 2 : 0), 32);
    max[1] = clip(max[1] + (near(3 * lag[1], lag[2], 7) ? max[2] >> 2 : 0), 32);
    max[0] = clip(max[0] + (near(2 * lag[0], lag[1], 5) ? fifth(max[1]) : 0), 32);
    max[0] = clip(max[0] + (near(3 * lag[0], lag[1], 7) ? fifth(max[1]) : 0), 32);
    int best = 0;
    for (int range = 1; range < 3; ++range) {
        best = max[best] < max[range] ? range : best;
    }
    return lag[best];
}

// Pulses of a period with noise.
Samples voiced(std::mt19937& random, double period, int level) {
    Samples x = noise(random, 223, -level / 8, level / 8);
    for (size_t i = 0; i < x.size(); ++i) {
        const double phase = std::fmod(static_cast<double>(i), period);
        x[i] = static_cast<int16_t>(clip(std::lround(x[i] + level * std::exp(-phase / 6) * std::cos(phase)), 16));
    }
    return x;
}

void expectSearches(const Samples& x) {
    int16_t lag = 0;
    EXPECT_EQ(vekStsNoErr, veksOpenLoopPitchSearch_G729_16s(x.data() + kHistory, &lag));
    EXPECT_EQ(fullSearch(x), lag);
    EXPECT_EQ(vekStsNoErr, veksOpenLoopPitchSearch_G729A_16s(x.data() + kHistory, &lag));
    EXPECT_EQ(halfSearch(x), lag);
}

TEST(VekOpenLoopPitch, EqualsTheSearchStepByStep) {
    atEveryLevel([] {
        std::mt19937 random(5);
        for (int round = 0; round < 240; ++round) {
            const int level = 8 << (round % 12);
            const Samples x =
                round % 3 == 0 ? noise(random, 223, -level, level) : voiced(random, 20 + round % 120, level);
            SCOPED_TRACE(round);
            expectSearches(x);
        }
    });
}

TEST(VekOpenLoopPitch, SumsThatSaturateOnTheirWayAreMadeStepByStep) {
    atEveryLevel([] {
        std::mt19937 random(6);
        for (int round = 0; round < 20; ++round) {
            Samples x = noise(random, 223, 0, 1);
            for (int16_t& v : x) {
                v = static_cast<int16_t>(v == 0 ? -32768 : 32767);
            }
            if (round == 0) {
                x.assign(223, -32768);
            }
            SCOPED_TRACE(round);
            expectSearches(x);
        }
    });
}

TEST(VekOpenLoopPitch, FindsThePeriodOfASignal) {
    std::mt19937 random(7);
    for (const int period : {25, 38, 57, 71}) {
        const Samples x = voiced(random, period, 4000);
        int16_t lag = 0;
        ASSERT_EQ(vekStsNoErr, veksOpenLoopPitchSearch_G729_16s(x.data() + kHistory, &lag));
        EXPECT_EQ(period, lag);
        ASSERT_EQ(vekStsNoErr, veksOpenLoopPitchSearch_G729A_16s(x.data() + kHistory, &lag));
        EXPECT_NEAR(period, lag, 1);
    }
}

TEST(VekOpenLoopPitch, RefusesNull) {
    const Samples x(223);
    int16_t lag = 7;
    expectNullsRefused(veksOpenLoopPitchSearch_G729_16s, x.data() + kHistory, &lag);
    expectNullsRefused(veksOpenLoopPitchSearch_G729A_16s, x.data() + kHistory, &lag);
    EXPECT_EQ(7, lag);
}

TEST(VekAutoCorrLagMax, IsTheLargestDoubledSumForwardsAndBackwards) {
    atEveryLevel([] {
        std::mt19937 random(8);
        for (const int len : {1, 7, 8, 15, 16, 23, 31, 32, 33, 40, 41, 64, 80}) {
            for (const int lower : {0, 20, 33, 37, 38, 39, 40}) {
                // In 32 bits, at times, and beyond them.
                const int loudest = lower % 2 == 0 ? 1200 : lower == 39 ? 5500 : 32768;
                const Samples x = noise(random, 200, -loudest, loudest - 1);
                for (const int direction : {1, -1}) {
                    const int16_t* at = direction > 0 ? x.data() : x.data() + 40;
                    int64_t best = INT64_MIN;
                    int bestLag = -1;
                    for (int lag = lower; lag <= 40; ++lag) {
                        int64_t s = 0;
                        for (int n = 0; n < len; ++n) {
                            s += int64_t{at[n]} * at[n + direction * lag];
                        }
                        if (s > best) {
                            best = s;
                            bestLag = lag;
                        }
                    }
                    int32_t max = 0;
                    int maxLag = 0;
                    ASSERT_EQ(vekStsNoErr, direction > 0
                                               ? veksAutoCorrLagMax_Fwd_16s(at, len, lower, 40, &max, &maxLag)
                                               : veksAutoCorrLagMax_Inv_16s(at, len, lower, 40, &max, &maxLag));
                    ASSERT_EQ(clip(2 * best, 32), max);
                    ASSERT_EQ(bestLag, maxLag);
                }
            }
        }
    });
}

TEST(VekAutoCorrLagMax, TheSmallestOfEqualDelaysWins) {
    const Samples x(140, 2);
    int32_t max = 0;
    int maxLag = 0;
    ASSERT_EQ(vekStsNoErr, veksAutoCorrLagMax_Fwd_16s(x.data(), 80, 20, 40, &max, &maxLag));
    EXPECT_EQ(20, maxLag);
    EXPECT_EQ(640, max);
    ASSERT_EQ(vekStsNoErr, veksAutoCorrLagMax_Inv_16s(x.data() + 41, 80, 20, 40, &max, &maxLag));
    EXPECT_EQ(20, maxLag);
    EXPECT_EQ(640, max);
}

TEST(VekAutoCorrLagMax, RefusesNullLengthsAndDelaysOutOfRange) {
    const Samples x(200);
    const int16_t* at = x.data() + 50;
    int32_t max = 7;
    int lag = 7;
    for (const auto call : {veksAutoCorrLagMax_Fwd_16s, veksAutoCorrLagMax_Inv_16s}) {
        expectNullsRefused(call, at, 40, 20, 40, &max, &lag);
        EXPECT_EQ(vekStsSizeErr, call(at, 0, 20, 40, &max, &lag));
        EXPECT_EQ(vekStsRangeErr, call(at, 40, -1, 40, &max, &lag));
        EXPECT_EQ(vekStsRangeErr, call(at, 40, 41, 40, &max, &lag));
        EXPECT_EQ(vekStsRangeErr, call(at, 40, 20, 65537, &max, &lag));
    }
    EXPECT_EQ(7, max);
    EXPECT_EQ(7, lag);
}

} // namespace
