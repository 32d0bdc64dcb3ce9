// Filters, conversions, ISF quantisers, DTX histories and voice activity of AMR-WB: against plain versions, and what
// they refuse.
#include "lp_reference.h"
#include "veksc.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

int16_t clip(double v) {
    return static_cast<int16_t>(std::clamp(v, -32768.0, 32767.0));
}

TEST(VekAmrWbResidual, IsTheRoundedSumOfAllOrdersAndScales) {
    atEveryLevel([] {
        std::mt19937 random(1);
        for (const int order : {1, 8, 10, 16, 22, 28, 34, 40}) {
            for (const int scale : {0, 10, 12, 15}) {
                const Samples a = noise(random, order + 1, -900, 900);
                const Samples x = noise(random, order + 96, -3000, 3000);
                Samples y(96), low(96);
                ASSERT_EQ(0, veksResidualFilter_AMRWB_16s_Sfs(a.data(), order, x.data() + order, y.data(), 96, scale));
                ASSERT_EQ(0, veksResidualFilter_Low_16s_Sfs(a.data(), order, x.data() + order, low.data(), 96, scale));
                for (int i = 0; i < 96; ++i) {
                    double sum = 0;
                    for (int j = 0; j <= order; ++j) {
                        sum += a[static_cast<size_t>(j)] * x[static_cast<size_t>(order + i - j)];
                    }
                    EXPECT_EQ(clip(std::floor(std::ldexp(sum, -scale) + 0.5)), y[static_cast<size_t>(i)]);
                    EXPECT_EQ(y[static_cast<size_t>(i)], low[static_cast<size_t>(i)]);
                }
            }
        }
    });
}

TEST(VekAmrWbResidual, SaturatesAtEachStepButWrapsInTheLowForm) {
    Samples a(17, 32767), x(17, 32767);
    int16_t y = 0;
    ASSERT_EQ(0, veksResidualFilter_AMRWB_16s_Sfs(a.data(), 16, x.data() + 16, &y, 1, 12));
    EXPECT_EQ(32767, y);
    ASSERT_EQ(0, veksResidualFilter_Low_16s_Sfs(a.data(), 16, x.data() + 16, &y, 1, 12));
    uint32_t sum = 2048;
    for (int j = 0; j < 17; ++j) {
        sum += 32767u * 32767u;
    }
    EXPECT_EQ(clip(static_cast<int32_t>(sum) >> 12), y);
}

TEST(VekAmrWbResidual, RefusesNullOrderLengthAndScale) {
    Samples v(200);
    for (const auto filter : {veksResidualFilter_AMRWB_16s_Sfs, veksResidualFilter_Low_16s_Sfs}) {
        expectNullsRefused(filter, v.data(), 16, v.data() + 40, v.data(), 64, 12);
        EXPECT_EQ(vekStsFilterOrderErr, filter(v.data(), 0, v.data() + 40, v.data(), 64, 12));
        EXPECT_EQ(vekStsFilterOrderErr, filter(v.data(), 41, v.data() + 41, v.data(), 64, 12));
        EXPECT_EQ(vekStsSizeErr, filter(v.data(), 16, v.data() + 40, v.data(), 0, 12));
        EXPECT_EQ(vekStsScaleRangeErr, filter(v.data(), 16, v.data() + 40, v.data(), 64, -1));
        EXPECT_EQ(vekStsScaleRangeErr, filter(v.data(), 16, v.data() + 40, v.data(), 64, 16));
    }
}

TEST(VekAmrWbEmphasis, IsFirstOrderInEveryScaleAndSaturates) {
    std::mt19937 random(2);
    atEveryLevel([&random] {
        for (int test = 0; test < 16 * 4; ++test) {
            const int scale = test / 4;
            const int16_t factor = std::array<int16_t, 4>{22282, 1, 32767, -32768}[test % 4];
            // Zeros among the samples: with a factor of one what they become does not saturate in small scales either.
            Samples x = noise(random, 600, -32768, 32767), y;
            std::replace_if(
                x.begin(), x.begin() + 300, [](int16_t v) { return v % 2 != 0; }, 0);
            y = x;
            int16_t memory = -77;
            ASSERT_EQ(0, veksPreemphasize_AMRWB_16s_ISfs(factor, y.data(), 600, scale, &memory));
            double before = -77;
            for (size_t i = 0; i < 600; ++i) {
                const double v = x[i] * 32768.0 - before * factor;
                ASSERT_EQ(clip(std::floor(std::ldexp(v, -scale) + (scale > 0 ? 0.5 : 0))), y[i]) << scale << " " << i;
                before = x[i];
            }
            EXPECT_EQ(x[599], memory);
        }
    });
    for (int scale = 13; scale <= 15; ++scale) {
        Samples x = noise(random, 100, -32768, 32767), y = x;
        std::transform(x.begin(), x.begin() + 50, x.begin(), [](int16_t v) { return static_cast<int16_t>(v / 8); });
        y = x;
        int16_t memory = 1234;
        ASSERT_EQ(0, veksDeemphasize_AMRWBE_NR_16s_I(22282, scale, y.data(), 100, &memory));
        double last = 1234;
        for (size_t i = 0; i < 100; ++i) {
            last = clip(std::floor((std::ldexp(x[i], scale) + last * 22282) / 32768 + 0.5));
            EXPECT_EQ(last, y[i]);
        }
        EXPECT_EQ(last, memory);
        if (scale == 14) {
            Samples z = x;
            memory = 1234;
            ASSERT_EQ(0, veksDeemphasize_AMRWB_NR_16s_I(22282, z.data(), 100, &memory));
            EXPECT_EQ(y, z);
        }
    }
    std::vector<int32_t> wide(64);
    for (int32_t& v : wide) {
        v = std::uniform_int_distribution<int32_t>(-(1 << 29), 1 << 29)(random);
    }
    Samples y(64);
    int16_t memory = 500;
    ASSERT_EQ(0, veksDeemphasize_AMRWB_32s16s(22282, wide.data(), y.data(), 64, &memory));
    double last = 500;
    for (size_t i = 0; i < 64; ++i) {
        const double in = std::clamp((wide[i] & ~15) * 8.0, -2147483648.0, 2147483647.0);
        last = clip(std::floor((2 * in + last * 4 * 11141) / 65536 + 0.5));
        EXPECT_EQ(last, y[i]);
    }
    EXPECT_EQ(last, memory);
}

TEST(VekAmrWbEmphasis, RefusesNullLengthAndScale) {
    Samples v(64);
    std::vector<int32_t> w(64);
    int16_t m = 5;
    expectNullsRefused(veksPreemphasize_AMRWB_16s_ISfs, 1, v.data(), 64, 14, &m);
    EXPECT_EQ(vekStsSizeErr, veksPreemphasize_AMRWB_16s_ISfs(1, v.data(), 0, 14, &m));
    EXPECT_EQ(vekStsScaleRangeErr, veksPreemphasize_AMRWB_16s_ISfs(1, v.data(), 64, 16, &m));
    EXPECT_EQ(vekStsScaleRangeErr, veksPreemphasize_AMRWB_16s_ISfs(1, v.data(), 64, -1, &m));
    expectNullsRefused(veksDeemphasize_AMRWB_32s16s, 1, w.data(), v.data(), 64, &m);
    EXPECT_EQ(vekStsSizeErr, veksDeemphasize_AMRWB_32s16s(1, w.data(), v.data(), -1, &m));
    expectNullsRefused(veksDeemphasize_AMRWB_NR_16s_I, 1, v.data(), 64, &m);
    EXPECT_EQ(vekStsSizeErr, veksDeemphasize_AMRWB_NR_16s_I(1, v.data(), 65537, &m));
    expectNullsRefused(veksDeemphasize_AMRWBE_NR_16s_I, 1, 14, v.data(), 64, &m);
    EXPECT_EQ(vekStsSizeErr, veksDeemphasize_AMRWBE_NR_16s_I(1, 14, v.data(), 0, &m));
    EXPECT_EQ(vekStsScaleRangeErr, veksDeemphasize_AMRWBE_NR_16s_I(1, 12, v.data(), 64, &m));
    EXPECT_EQ(vekStsScaleRangeErr, veksDeemphasize_AMRWBE_NR_16s_I(1, 16, v.data(), 64, &m));
    EXPECT_EQ(5, m);
}

TEST(VekAmrWbSpectra, PairsOfASparseFilterGiveItsCoefficientsInFull) {
    const Samples isp = {16384, 0, -16384, 0};
    Samples a(5);
    ASSERT_EQ(vekStsNoErr, veksISPToLPC_AMRWB_16s(isp.data(), a.data(), 4));
    EXPECT_EQ((Samples{4096, 0, 2048, 0, 0}), a);
}

TEST(VekAmrWbSynthesis, FollowsItsDifferenceEquationForEveryOrderAndLength) {
    std::mt19937 random(3);
    for (const int order : {1, 8, 10, 16, 24, 40}) {
        for (const int len : {1, 64, 128, 129, 300}) {
            Samples a = noise(random, order + 1, -4000 / order, 4000 / order);
            a[0] = 4096;
            const Samples x = noise(random, len, -4000, 4000);
            std::vector<int32_t> y(static_cast<size_t>(order + len));
            for (int i = 0; i < order; ++i) {
                y[static_cast<size_t>(i)] = std::uniform_int_distribution<int>(-65536, 65536)(random);
            }
            std::vector<int32_t> extended = y;
            ASSERT_EQ(0, veksSynthesisFilter_AMRWB_16s32s_I(a.data(), order, x.data(), y.data() + order, len));
            ASSERT_EQ(0, veksSynthesisFilter_AMRWBE_16s32s_I(a.data(), order, x.data(), extended.data() + order, len));
            EXPECT_EQ(y, extended);
            for (int i = order; i < order + len; ++i) {
                double sum = 4096.0 * x[static_cast<size_t>(i - order)];
                for (int j = 1; j <= order; ++j) {
                    sum -= a[static_cast<size_t>(j)] / 4096.0 * y[static_cast<size_t>(i - j)];
                }
                // What lies below the last of the 28 bits of inputs and output.
                EXPECT_NEAR(sum, y[static_cast<size_t>(i)], 32);
            }
        }
    }
}

TEST(VekAmrWbSynthesis, SaturatesAndKeepsTheLowBitsClear) {
    Samples a(17), x(64, 32767);
    a[0] = 4096;
    a[1] = -4096;
    std::vector<int32_t> y(80);
    ASSERT_EQ(0, veksSynthesisFilter_AMRWB_16s32s_I(a.data(), 16, x.data(), y.data() + 16, 64));
    EXPECT_EQ(32767 * 4096, y[16]);
    EXPECT_EQ(std::numeric_limits<int32_t>::max() & ~15, y[79]);
}

TEST(VekAmrWbSynthesis, RefusesNullOrderAndLength) {
    Samples v(80);
    std::vector<int32_t> w(120);
    for (const auto filter : {veksSynthesisFilter_AMRWB_16s32s_I, veksSynthesisFilter_AMRWBE_16s32s_I}) {
        expectNullsRefused(filter, v.data(), 16, v.data(), w.data() + 41, 64);
        EXPECT_EQ(vekStsFilterOrderErr, filter(v.data(), 0, v.data(), w.data() + 41, 64));
        EXPECT_EQ(vekStsFilterOrderErr, filter(v.data(), 41, v.data(), w.data() + 41, 64));
        EXPECT_EQ(vekStsSizeErr, filter(v.data(), 16, v.data(), w.data() + 41, 0));
    }
}

TEST(VekAmrWbHighPass, PassesItsBandAndStopsWhatIsBelow) {
    struct Case {
        int scale;
        double hertz, least, most;
    };
    const Case cases[] = {{14, 0, 0, 0.001},  {14, 10, 0, 0.1},    {14, 500, 0.97, 1.03},    {14, 3000, 0.97, 1.03},
                          {12, 0, 0, 0.0005}, {12, 100, 0, 0.012}, {12, 2000, 0.058, 0.067}, {12, 5000, 0.058, 0.0635}};
    for (const Case& c : cases) {
        std::vector<char> memory(33);
        int size = 0;
        ASSERT_EQ(0, veksHighPassFilterGetSize_AMRWB_16s(&size));
        ASSERT_LE(size, 32);
        ASSERT_EQ(0, veksHighPassFilterInit_AMRWB_16s(memory.data() + 1));
        double power = 0;
        for (int frame = 0; frame < 40; ++frame) {
            Samples x(256), y(256);
            for (size_t i = 0; i < 256; ++i) {
                const double t = static_cast<double>(frame * 256) + static_cast<double>(i);
                x[i] = static_cast<int16_t>(std::lround(8000 * std::cos(6.283185307 * c.hertz * t / 12800)));
            }
            ASSERT_EQ(0, veksHighPassFilter_AMRWB_16s_Sfs(x.data(), y.data(), 256, memory.data() + 1, c.scale));
            for (const int16_t v : y) {
                power += frame >= 20 ? v * v : 0;
            }
        }
        const double gain = std::sqrt(power / (20 * 256)) / (8000 * (c.hertz > 0 ? std::sqrt(0.5) : 1));
        EXPECT_GE(gain, c.least) << c.scale << " " << c.hertz;
        EXPECT_LE(gain, c.most) << c.scale << " " << c.hertz;
    }
}

// From memories around the edges where an output and then the sum itself saturates, and on through loud noise.
TEST(VekAmrWbHighPass, EqualsTheRecursionQuietLoudAndAtTheEdges) {
    struct Filter {
        int scale;
        int64_t b0, b1, a1, a2;
        int shift, up;
    };
    struct Memory {
        int32_t y1, y2;
        int16_t x1, x2;
    };
    const auto floored = [](int64_t v, int64_t divisor) { return (v - (v % divisor + divisor) % divisor) / divisor; };
    const auto clipped = [](int64_t v, int bits) {
        return std::clamp(v, -(int64_t{1} << (bits - 1)), (int64_t{1} << (bits - 1)) - 1);
    };
    std::mt19937 random(6);
    for (const Filter& f : {Filter{14, 4053, -8106, 16211, -8021, 4, 2}, Filter{12, 915, -1830, 29280, -14160, 2, 1}}) {
        // Sums whose output is half of one, -32768 or half of one beyond 32767, and those that leave 32 bits.
        const int64_t sample = 65536 / (f.shift * f.up);
        const int64_t room = (int64_t{1} << 31) / f.shift;
        for (const int64_t edge : {sample / 2, -32768 * sample, 32768 * sample - sample / 2, -room, room}) {
            for (int test = 0; test < 36; ++test) {
                Memory m = {0, test / 9 - 1, 0, 0};
                m.y1 = static_cast<int32_t>(clipped(floored(edge * 16384, f.a1) + test % 9 - 4, 31));
                char memory[33];
                ASSERT_EQ(0, veksHighPassFilterInit_AMRWB_16s(memory + 1));
                std::memcpy(memory + 1, &m, sizeof m);
                Samples x = noise(random, 40, -32768, 32767), y(40);
                std::fill_n(x.begin(), 3, int16_t{0});
                ASSERT_EQ(0, veksHighPassFilter_AMRWB_16s_Sfs(x.data(), y.data(), 40, memory + 1, f.scale));
                for (size_t i = 0; i < 40; ++i) {
                    const int64_t inputs = f.b0 * (x[i] + m.x2) + f.b1 * m.x1;
                    const int64_t sum = floored(inputs * 32768 + m.y1 * f.a1 + m.y2 * f.a2 + 0x2000, 16384);
                    const int64_t v = clipped(sum * f.shift, 32);
                    ASSERT_EQ(clipped(floored(v * f.up + 0x8000, 65536), 16), y[i])
                        << f.scale << " " << test << " " << i;
                    m = {static_cast<int32_t>(floored(v, 2)), m.y1, x[i], m.x1};
                }
                EXPECT_EQ(0, std::memcmp(&m, memory + 1, sizeof m)) << f.scale << " " << test;
            }
        }
    }
}

TEST(VekAmrWbHighPass, InPlaceIsTheSameAndPartsMakeTheWhole) {
    std::mt19937 random(4);
    const Samples x = noise(random, 256, -32768, 32767);
    for (const int scale : {12, 14}) {
        char m1[32], m2[32];
        ASSERT_EQ(0, veksHighPassFilterInit_AMRWB_16s(m1));
        ASSERT_EQ(0, veksHighPassFilterInit_AMRWB_16s(m2));
        Samples whole(256), parts = x;
        ASSERT_EQ(0, veksHighPassFilter_AMRWB_16s_Sfs(x.data(), whole.data(), 256, m1, scale));
        ASSERT_EQ(0, veksHighPassFilter_AMRWB_16s_ISfs(parts.data(), 1, m2, scale));
        ASSERT_EQ(0, veksHighPassFilter_AMRWB_16s_ISfs(parts.data() + 1, 255, m2, scale));
        EXPECT_EQ(whole, parts);
    }
}

TEST(VekAmrWbHighPass, RefusesNullLengthScaleAndBounds) {
    Samples v(66);
    char m[32] = {};
    EXPECT_EQ(vekStsNullPtrErr, veksHighPassFilterGetSize_AMRWB_16s(nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksHighPassFilterInit_AMRWB_16s(nullptr));
    expectNullsRefused(veksHighPassFilter_AMRWB_16s_ISfs, v.data(), 64, m, 14);
    expectNullsRefused(veksHighPassFilter_AMRWB_16s_Sfs, v.data(), v.data(), 64, m, 14);
    EXPECT_EQ(vekStsSizeErr, veksHighPassFilter_AMRWB_16s_Sfs(v.data(), v.data(), 0, m, 14));
    EXPECT_EQ(vekStsScaleRangeErr, veksHighPassFilter_AMRWB_16s_Sfs(v.data(), v.data(), 64, m, 13));
    EXPECT_EQ(vekStsScaleRangeErr, veksHighPassFilter_AMRWB_16s_ISfs(v.data(), 64, m, 15));
    expectNullsRefused(veksHighPassFilter_Direct_AMRWB_16s, v.data(), v.data(), v.data(), 64, 0);
    EXPECT_EQ(vekStsSizeErr, veksHighPassFilter_Direct_AMRWB_16s(v.data(), v.data(), v.data(), 0, 0));
    EXPECT_EQ(vekStsRangeErr, veksHighPassFilter_Direct_AMRWB_16s(v.data(), v.data(), v.data(), 64, 2));
    EXPECT_EQ(vekStsRangeErr, veksHighPassFilter_Direct_AMRWB_16s(v.data(), v.data(), v.data(), 64, -1));
}

TEST(VekAmrWbDirect, WeighsNeighboursAndHeedsTheBounds) {
    std::mt19937 random(5);
    for (const int16_t side : {5898, -2000, -30000}) {
        for (const int16_t middle : {20972, 2048, 32767}) {
            for (const int len : {1, 2, 3, 64}) {
                const Samples x = noise(random, len + 2, -9000, 9000);
                const int16_t c[2] = {side, middle};
                for (const int bounds : {0, 1}) {
                    Samples y(static_cast<size_t>(len));
                    ASSERT_EQ(0, veksHighPassFilter_Direct_AMRWB_16s(c, x.data() + 1, y.data(), len, bounds));
                    for (int i = 0; i < len; ++i) {
                        const double before = i > 0 || bounds == 1 ? x[static_cast<size_t>(i)] : 0;
                        const double after = i < len - 1 || bounds == 1 ? x[static_cast<size_t>(i + 2)] : 0;
                        const double sum = side * (before + after) + middle * x[static_cast<size_t>(i + 1)];
                        EXPECT_EQ(clip(std::floor(sum / 32768 + 0.5)), y[static_cast<size_t>(i)]);
                    }
                }
            }
        }
    }
}

TEST(VekAmrWbDirect, LoudestSamplesKeepTheirBitsUpToASumOfOne) {
    std::mt19937 random(6);
    // Sums of magnitudes of 1 less a unit, 1, and little.
    const int16_t taps[][2] = {{8191, 16385},   {-8191, -16385}, {8192, 16384}, {-8192, 16384},
                               {-8192, -16384}, {5898, 20972},   {0, -1}};
    for (const auto& c : taps) {
        for (const int len : {1, 2, 15, 64, 97}) {
            Samples x = noise(random, len + 2, -32768, 32767);
            for (size_t i = 0; i < x.size(); ++i) {
                x[i] = i % 3 == 0 || i / 8 == 2 ? int16_t{-32768} : i % 7 == 0 ? int16_t{32767} : x[i];
            }
            for (const int bounds : {0, 1}) {
                Samples y(static_cast<size_t>(len));
                ASSERT_EQ(0, veksHighPassFilter_Direct_AMRWB_16s(c, x.data() + 1, y.data(), len, bounds));
                for (size_t i = 0; i < y.size(); ++i) {
                    const int64_t before = i > 0 || bounds == 1 ? x[i] : 0;
                    const int64_t after = i + 1 < y.size() || bounds == 1 ? x[i + 2] : 0;
                    const int64_t sum = c[0] * (before + after) + int64_t{c[1]} * x[i + 1];
                    ASSERT_EQ(lpref::clip((sum + 0x4000) >> 15, 16), y[i]) << c[0] << " " << c[1] << " " << i;
                }
            }
        }
    }
}

TEST(VekAmrWbAdaptiveGain, IsTheQuotientUpToItsLimit) {
    atEveryLevel([] {
        std::mt19937 random(6);
        for (const int len : {32, 64, 96, 128}) {
            const Samples y = noise(random, len, -3000, 3000);
            for (const double share : {-0.5, 0.0, 0.3, 0.9, 1.19, 1.5}) {
                Samples x(y.size());
                for (size_t i = 0; i < x.size(); ++i) {
                    x[i] = clip(std::lround(share * y[i]));
                }
                int16_t c[4] = {}, gain = -1;
                ASSERT_EQ(0, veksAdaptiveCodebookGainCoeff_AMRWB_16s(x.data(), y.data(), c, &gain, len));
                EXPECT_NEAR(std::clamp(share, 0.0, 1.2) * 16384, gain, 4);
                double energy = 1;
                for (const int16_t v : y) {
                    energy += 2.0 * v * v;
                }
                energy = std::min(energy, 2147483647.0);
                EXPECT_NEAR(energy, std::ldexp(c[0], c[1] - 14) + 0.0, energy / 8192);
            }
        }
        // Sums that do not fit stay at the largest.
        const Samples loud(64, 32767);
        int16_t c[4] = {}, gain = -1;
        ASSERT_EQ(0, veksAdaptiveCodebookGainCoeff_AMRWB_16s(loud.data(), loud.data(), c, &gain, 64));
        EXPECT_EQ(32767, c[0]);
        // ... at each step: what comes after counts from there.
        Samples turned(64);
        std::fill_n(turned.begin(), 40, Vek16s{32767});
        turned[40] = -32767;
        ASSERT_EQ(0, veksAdaptiveCodebookGainCoeff_AMRWB_16s(turned.data(), loud.data(), c, &gain, 64));
        EXPECT_EQ(131069, std::ldexp(c[2], c[3] - 14) + 1);
        EXPECT_EQ(30, c[1]);
        EXPECT_EQ(32767, c[2]);
    });
}

TEST(VekAmrWbAdaptiveGain, RefusesNullAndLength) {
    Samples v(64);
    int16_t c[4], gain = 0;
    expectNullsRefused(veksAdaptiveCodebookGainCoeff_AMRWB_16s, v.data(), v.data(), c, &gain, 64);
    EXPECT_EQ(vekStsSizeErr, veksAdaptiveCodebookGainCoeff_AMRWB_16s(v.data(), v.data(), c, &gain, 0));
}

Samples evenPairs(int order) {
    Samples isp;
    for (int i = 1; i < order; ++i) {
        isp.push_back(static_cast<int16_t>(std::lround(32767 * std::cos(3.14159265358979 * i / order))));
    }
    isp.push_back(3000);
    return isp;
}

TEST(VekAmrWbSpectra, GoThereAndBack) {
    for (const int order : {16, 20}) {
        const Samples isp = evenPairs(order);
        Samples isf(isp.size()), back(isp.size());
        ASSERT_EQ(0, veksISPToISF_Norm_AMRWB_16s(isp.data(), isf.data(), order));
        ASSERT_EQ(0, veksISFToISP_AMRWB_16s(isf.data(), back.data(), order));
        for (size_t i = 0; i < isp.size(); ++i) {
            EXPECT_NEAR(isp[i], back[i], i + 1 == isp.size() ? 12 : 6);
        }
        for (int i = 0; i < order - 1; ++i) {
            EXPECT_NEAR(16384.0 * (i + 1) / order, isf[static_cast<size_t>(i)], 3);
        }
    }
    const Samples isp = evenPairs(16);
    Samples a(17), again(16);
    ASSERT_EQ(0, veksISPToLPC_AMRWB_16s(isp.data(), a.data(), 16));
    EXPECT_EQ(4096, a[0]);
    EXPECT_EQ(375, a[16]);
    ASSERT_EQ(0, veksLPCToISP_AMRWB_16s(a.data(), again.data(), isp.data()));
    for (size_t i = 0; i < 16; ++i) {
        EXPECT_NEAR(isp[i], again[i], 40);
    }
}

TEST(VekAmrWbSpectra, FrequenciesBeyondTheBandCountAsItsEnds) {
    Samples isf(16, 20000), isp(16);
    isf[0] = -5;
    ASSERT_EQ(0, veksISFToISP_AMRWB_16s(isf.data(), isp.data(), 16));
    EXPECT_EQ(32767, isp[0]);
    EXPECT_EQ(-32768, isp[1]);
    EXPECT_EQ(-32768, isp[15]);
}

TEST(VekAmrWbSpectra, CoefficientsThatDoNotFitAreHalvedTogether) {
    Samples isp(16), a(17);
    for (int i = 0; i < 16; ++i) {
        isp[static_cast<size_t>(i)] = static_cast<int16_t>(32700 - 900 * i);
    }
    ASSERT_EQ(0, veksISPToLPC_AMRWB_16s(isp.data(), a.data(), 16));
    EXPECT_LT(a[0], 4096);
    EXPECT_GT(a[0], 0);
    EXPECT_LT(a[1], -8 * a[0]);
}

TEST(VekAmrWbSpectra, AFilterWithoutAllRootsGivesTheLastPairs) {
    Samples a(17), isp(16), last = evenPairs(16);
    a[0] = 4096;
    a[1] = 20000;
    a[16] = 16000;
    EXPECT_EQ(vekStsUnstableFilter, veksLPCToISP_AMRWB_16s(a.data(), isp.data(), last.data()));
    EXPECT_EQ(last, isp);
}

TEST(VekAmrWbSpectra, RefuseNullAndOrders) {
    Samples v(21), w(21);
    for (const auto convert : {veksISPToISF_Norm_AMRWB_16s, veksISFToISP_AMRWB_16s, veksISPToLPC_AMRWB_16s}) {
        expectNullsRefused(convert, v.data(), w.data(), 16);
        for (const int len : {-16, 0, 2, 15, 22}) {
            EXPECT_EQ(vekStsSizeErr, convert(v.data(), w.data(), len));
        }
    }
    expectNullsRefused(veksLPCToISP_AMRWB_16s, v.data(), w.data(), w.data());
}

TEST(VekAmrWbIsfQuant, DecodesToWhatItQuantisedAlsoFarFromAllRows) {
    atEveryLevel([] {
        std::mt19937 random(7);
        for (const VekSpchBitRate mode : {VEK_SPCHBR_6600, VEK_SPCHBR_8850, VEK_SPCHBR_23850}) {
            for (const int16_t range : {2000, 32767}) {
                Samples r1(16), r2(16), memory(48);
                for (int frame = 0; frame < 20; ++frame) {
                    const Samples isf = noise(random, 16, -range, range);
                    Samples q1(16), q2(16), index(7);
                    ASSERT_EQ(0, veksISFQuant_AMRWB_16s(isf.data(), r1.data(), q1.data(), index.data(), mode));
                    ASSERT_EQ(0, veksISFQuantDecode_AMRWB_16s(index.data(), q2.data(), r2.data(), q1.data(),
                                                              memory.data(), 0, mode));
                    ASSERT_EQ(q1, q2);
                    ASSERT_EQ(r1, r2);
                }
            }
        }
    });
}

TEST(VekAmrWbIsfQuant, LevelsAgree) {
    std::mt19937 random(8);
    std::vector<Samples> inputs, expected;
    for (int i = 0; i < 200; ++i) {
        inputs.push_back(noise(random, 16, 0, 16383));
        std::sort(inputs.back().begin(), inputs.back().end());
    }
    atEveryLevel([&] {
        for (size_t i = 0; i < inputs.size(); ++i) {
            Samples r(16), q(16), index(12);
            ASSERT_EQ(0, veksISFQuant_AMRWB_16s(inputs[i].data(), r.data(), q.data(), index.data(), VEK_SPCHBR_8850));
            ASSERT_EQ(0, veksISFQuantDTX_AMRWB_16s(inputs[i].data(), q.data(), index.data() + 7));
            if (expected.size() == i) {
                expected.push_back(index);
            }
            ASSERT_EQ(expected[i], index);
        }
    });
}

TEST(VekAmrWbIsfQuant, RefusesNullRatesAndIndicesBeyondTheBooks) {
    Samples v(48), r(16), q(16, 9), index(7);
    expectNullsRefused(veksISFQuant_AMRWB_16s, v.data(), r.data(), q.data(), index.data(), VEK_SPCHBR_8850);
    for (const VekSpchBitRate mode : {VEK_SPCHBR_4750, VEK_SPCHBR_DTX}) {
        EXPECT_EQ(vekStsBitRateErr, veksISFQuant_AMRWB_16s(v.data(), r.data(), q.data(), index.data(), mode));
        EXPECT_EQ(vekStsBitRateErr,
                  veksISFQuantDecode_AMRWB_16s(index.data(), q.data(), r.data(), v.data(), v.data(), 0, mode));
    }
    const auto decode = [&](const int16_t* i, int16_t* out, int16_t* rest, const int16_t* old, int16_t* memory, int bfi,
                            VekSpchBitRate mode = VEK_SPCHBR_8850) {
        return veksISFQuantDecode_AMRWB_16s(i, out, rest, old, memory, bfi, mode);
    };
    expectNullsRefused(decode, index.data(), q.data(), r.data(), v.data(), v.data(), 0);
    EXPECT_EQ(vekStsRangeErr, decode(index.data(), q.data(), r.data(), v.data(), v.data(), 2));
    const int rows[2][7] = {{256, 256, 64, 128, 128, 32, 32}, {256, 256, 128, 128, 64, 1, 1}};
    for (const bool lowest : {false, true}) {
        for (size_t i = 0; i < (lowest ? 5u : 7u); ++i) {
            for (const int wrong : {-1, rows[lowest ? 1 : 0][i]}) {
                Samples bad(7);
                bad[i] = static_cast<int16_t>(wrong);
                EXPECT_EQ(vekStsOutOfRangeErr, decode(bad.data(), q.data(), r.data(), v.data(), v.data(), 0,
                                                      lowest ? VEK_SPCHBR_6600 : VEK_SPCHBR_8850));
            }
        }
    }
    EXPECT_EQ(Samples(16, 9), q);
    expectNullsRefused(veksISFQuantDTX_AMRWB_16s, v.data(), q.data(), index.data());
    expectNullsRefused(veksISFQuantDecodeDTX_AMRWB_16s, index.data(), q.data());
    for (size_t i = 0; i < 5; ++i) {
        Samples bad(5);
        bad[i] = i < 3 ? 64 : 32;
        EXPECT_EQ(vekStsOutOfRangeErr, veksISFQuantDecodeDTX_AMRWB_16s(bad.data(), q.data()));
    }
}

TEST(VekAmrWbHistory, GoesRoundEightPlacesAndLowersTheEnergyByTheRate) {
    Samples spectra(128), energies(8), isp(16, 7);
    const Samples x(256, 64);
    int16_t place = 7;
    ASSERT_EQ(0, veksDecDTXBuffer_AMRWB_16s(x.data(), isp.data(), &place, spectra.data(), energies.data()));
    EXPECT_EQ(0, place);
    EXPECT_EQ(12 * 128, energies[0]);
    EXPECT_EQ(7, spectra[15]);
    EXPECT_EQ(0, spectra[16]);
    ASSERT_EQ(
        0, veksEncDTXBuffer_AMRWB_16s(x.data(), isp.data(), &place, spectra.data(), energies.data(), VEK_SPCHBR_6600));
    EXPECT_EQ(1, place);
    EXPECT_EQ(12 * 128 - 230, energies[1]);
    ASSERT_EQ(
        0, veksEncDTXBuffer_AMRWB_16s(x.data(), isp.data(), &place, spectra.data(), energies.data(), VEK_SPCHBR_DTX));
    EXPECT_EQ(12 * 128 - 115, energies[2]);
    const Samples loud(256, -32768);
    ASSERT_EQ(0, veksDecDTXBuffer_AMRWB_16s(loud.data(), isp.data(), &place, spectra.data(), energies.data()));
    EXPECT_NEAR(22 * 128, energies[3], 1);
}

TEST(VekAmrWbHistory, RefusesNullPlacesAndRates) {
    Samples x(256), isp(16), spectra(128), energies(8);
    int16_t place = 7;
    const auto both = [&](const int16_t* s, const int16_t* p, int16_t* i, int16_t* b, int16_t* e) {
        const VekStatus one = veksDecDTXBuffer_AMRWB_16s(s, p, i, b, e);
        const VekStatus other = veksEncDTXBuffer_AMRWB_16s(s, p, i, b, e, VEK_SPCHBR_6600);
        return one == other ? one : 99;
    };
    expectNullsRefused(both, x.data(), isp.data(), &place, spectra.data(), energies.data());
    for (const int16_t wrong : {-1, 8}) {
        place = wrong;
        EXPECT_EQ(vekStsRangeErr, both(x.data(), isp.data(), &place, spectra.data(), energies.data()));
        EXPECT_EQ(wrong, place);
    }
    place = 0;
    EXPECT_EQ(vekStsBitRateErr, veksEncDTXBuffer_AMRWB_16s(x.data(), isp.data(), &place, spectra.data(),
                                                           energies.data(), VEK_SPCHBR_12200));
}

TEST(VekAmrWbVad, TellsLoudFromNoiseAndHangsOver) {
    std::mt19937 random(9);
    std::vector<char> state(401);
    char* const s = state.data() + 1;
    ASSERT_EQ(0, veksVADInit_AMRWB_16s(s));
    int16_t flag = 9, tone = 0;
    for (int f = 0; f < 60; ++f) {
        const Samples quiet = noise(random, 256, -20, 20);
        ASSERT_EQ(0, veksVAD_AMRWB_16s(quiet.data(), s, &tone, &flag));
    }
    EXPECT_EQ(0, flag);
    for (int f = 0; f < 12; ++f) {
        const Samples loud = noise(random, 256, -8000, 8000);
        ASSERT_EQ(0, veksVAD_AMRWB_16s(loud.data(), s, &tone, &flag));
        EXPECT_EQ(1, flag);
    }
    int hang = 0;
    for (int f = 0; f < 40 && flag != 0; ++f) {
        const Samples quiet = noise(random, 256, -20, 20);
        ASSERT_EQ(0, veksVAD_AMRWB_16s(quiet.data(), s, &tone, &flag));
        hang += flag;
    }
    EXPECT_GE(hang, 2);
    EXPECT_LE(hang, 14);
}

// The frame after `loud` ones and one of this energy, with the tone's flags: the power of two frames is twice the
// energy.
VekStatus silenceAfter(int loud, std::initializer_list<int16_t> samples, int16_t* tone, int16_t* flag) {
    std::mt19937 random(9);
    std::vector<char> state(400);
    veksVADInit_AMRWB_16s(state.data());
    for (int f = 0; f < loud; ++f) {
        const Samples x = noise(random, 256, -8000, 8000);
        veksVAD_AMRWB_16s(x.data(), state.data(), tone, flag);
    }
    Samples x(256);
    std::copy(samples.begin(), samples.end(), x.begin());
    veksVAD_AMRWB_16s(x.data(), state.data(), tone, flag);
    *tone = 0x7fff;
    return veksVAD_AMRWB_16s(Samples(256).data(), state.data(), tone, flag);
}

TEST(VekAmrWbVad, HangsOverFromAPowerOf30000On) {
    int16_t flag = 9, tone = 0;
    ASSERT_EQ(0, silenceAfter(12, {122, 10, 4}, &tone, &flag)); // 15000
    EXPECT_EQ(1, flag);
    ASSERT_EQ(0, silenceAfter(12, {122, 10, 3, 2, 1, 1}, &tone, &flag)); // 14999
    EXPECT_EQ(0, flag);
}

TEST(VekAmrWbVad, FlagsOfTonesStandFromAPowerOf686080On) {
    int16_t flag = 9, tone = 0;
    ASSERT_EQ(0, silenceAfter(0, {585, 28, 5, 2, 1, 1}, &tone, &flag)); // 343040
    EXPECT_EQ(0x7fff, tone);
    ASSERT_EQ(0, silenceAfter(0, {585, 28, 5, 2, 1}, &tone, &flag)); // 343039
    EXPECT_EQ(0x1fff, tone);
}

TEST(VekAmrWbVad, QuietFramesClearTheNewestFlagsOfTones) {
    std::vector<char> state(400);
    ASSERT_EQ(0, veksVADInit_AMRWB_16s(state.data()));
    const Samples x(256);
    int16_t flag = 9, tone = 0x7fff;
    ASSERT_EQ(0, veksVAD_AMRWB_16s(x.data(), state.data(), &tone, &flag));
    EXPECT_EQ(0x1fff, tone);
    EXPECT_EQ(0, flag);
}

TEST(VekAmrWbVad, RefusesNullAndAStateThatIsNotSetUp) {
    const Samples x(256);
    std::vector<char> state(400);
    int16_t flag = 9, tone = 0;
    int size = 0;
    EXPECT_EQ(vekStsNullPtrErr, veksVADGetSize_AMRWB_16s(nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksVADInit_AMRWB_16s(nullptr));
    EXPECT_EQ(vekStsStateErr, veksVAD_AMRWB_16s(x.data(), state.data(), &tone, &flag));
    ASSERT_EQ(0, veksVADGetSize_AMRWB_16s(&size));
    ASSERT_LE(size, 400);
    ASSERT_EQ(0, veksVADInit_AMRWB_16s(state.data()));
    expectNullsRefused(veksVAD_AMRWB_16s, x.data(), state.data(), &tone, &flag);
    EXPECT_EQ(9, flag);
}

} // namespace
