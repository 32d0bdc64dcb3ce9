// Open-loop pitch and excitation of AMR-WB: literal cases, periodic signals, and refusals.
#include "lp_reference.h"
#include "veksc.h"

namespace {

TEST(VekWideInterpolation, WeighsBothAndRounds) {
    const Samples a = {1000, -1000, 32767, 0};
    const Samples b = {512, 3, 32767, -1};
    Samples y(4);
    ASSERT_EQ(vekStsNoErr, veksInterpolateC_NR_16s(a.data(), 16384, 2, b.data(), 100, 7, y.data(), 4));
    EXPECT_EQ((Samples{1100, -999, 32767, 0}), y);
}

// Products, sum and rounding saturate at 32 bits each.
Samples interpolated(const Samples& a, int64_t factor1, const Samples& b, int64_t factor2) {
    Samples y;
    for (size_t i = 0; i < a.size(); ++i) {
        const int64_t sum = lpref::clip(lpref::clip(a[i] * factor1, 32) + lpref::clip(b[i] * factor2, 32), 32);
        y.push_back(static_cast<int16_t>(lpref::clip(sum + 0x8000, 32) >> 16));
    }
    return y;
}

TEST(VekWideInterpolation, SaturatesEachStepForAllGainsAndLoudnesses) {
    std::mt19937 random(2);
    const int16_t gains[] = {0, 1, -40, 9000, -19661, 32767, -32768};
    for (const int16_t peak : {100, 9000, 32767}) {
        for (const int n : {1, 15, 16, 40, 67}) {
            const Samples a = noise(random, n, -peak - 1, peak);
            const Samples b = noise(random, n, -peak - 1, peak);
            for (const int16_t gain1 : gains) {
                for (const int16_t gain2 : gains) {
                    for (const int scale : {0, 2, 7, 15}) {
                        const Samples want = interpolated(a, gain1 * (int64_t{1} << scale), b, int64_t{gain2} * 4);
                        Samples y(a.size());
                        ASSERT_EQ(0, veksInterpolateC_NR_16s(a.data(), gain1, scale, b.data(), gain2, 2, y.data(), n));
                        ASSERT_EQ(want, y) << gain1 << " " << scale << " " << gain2 << " " << peak;
                        Samples first = a;
                        ASSERT_EQ(0, veksInterpolateC_NR_16s(first.data(), gain1, scale, b.data(), gain2, 2,
                                                             first.data(), n));
                        ASSERT_EQ(want, first);
                        Samples second = b;
                        ASSERT_EQ(0, veksInterpolateC_NR_16s(a.data(), gain1, scale, second.data(), gain2, 2,
                                                             second.data(), n));
                        ASSERT_EQ(want, second);
                    }
                }
            }
        }
    }
}

TEST(VekWideInterpolation, RefusesWhatItCannotDo) {
    Samples x(4, 7);
    EXPECT_EQ(vekStsNullPtrErr, veksInterpolateC_NR_16s(nullptr, 1, 2, x.data(), 1, 7, x.data(), 4));
    EXPECT_EQ(vekStsSizeErr, veksInterpolateC_NR_16s(x.data(), 1, 2, x.data(), 1, 7, x.data(), 0));
    EXPECT_EQ(vekStsScaleRangeErr, veksInterpolateC_NR_16s(x.data(), 1, 16, x.data(), 1, 7, x.data(), 4));
    EXPECT_EQ(vekStsScaleRangeErr, veksInterpolateC_NR_16s(x.data(), 1, 2, x.data(), 1, -1, x.data(), 4));
    EXPECT_EQ(Samples(4, 7), x);
}

struct OpenLoop {
    Samples x = Samples(512);
    Samples lags = Samples(5, 40);
    int16_t median = 40;
    int16_t strength = 20000;
    int16_t lag = 0;
    int16_t tone = 0;
    int16_t gain = 0;
    int16_t near = 0;

    explicit OpenLoop(int period) {
        std::mt19937 random(1);
        const Samples one = noise(random, period, -1000, 1000);
        for (size_t i = 0; i < x.size(); ++i) {
            x[i] = one[i % one.size()];
        }
    }
    VekStatus run(int len, int shortest, int longest) {
        return veksOpenLoopPitchSearch_AMRWBE_16s(x.data() + 214, x.data() + 214, &median, &strength, &lag, &tone,
                                                  &gain, lags.data(), &near, len, shortest, longest);
    }
};

TEST(VekWideOpenLoop, FindsThePeriodAndRemembersIt) {
    atEveryLevel([] {
        OpenLoop o(50);
        ASSERT_EQ(vekStsNoErr,
                  veksOpenLoopPitchSearch_AMRWB_16s(o.x.data() + 214, o.x.data() + 214, &o.median, &o.strength, &o.lag,
                                                    &o.tone, &o.gain, o.lags.data(), &o.near, 64));
        EXPECT_EQ(50, o.lag);
        EXPECT_GT(o.gain, 32000);
        EXPECT_EQ(0x4000, o.tone);
        EXPECT_EQ((Samples{50, 40, 40, 40, 40}), o.lags);
        EXPECT_EQ(40, o.median);
        EXPECT_EQ(32767, o.strength);
        EXPECT_EQ(1, o.near);
    });
}

TEST(VekWideOpenLoop, SilenceFadesTheStrengthAndKeepsTheLags) {
    OpenLoop o(50);
    std::fill(o.x.begin(), o.x.end(), int16_t{0});
    o.tone = 0x4000;
    ASSERT_EQ(vekStsNoErr, o.run(64, 17, 115));
    EXPECT_EQ(17999, o.strength);
    EXPECT_EQ(0, o.near);
    EXPECT_EQ(0x2000, o.tone);
    EXPECT_EQ(Samples(5, 40), o.lags);
}

TEST(VekWideOpenLoop, TheExtendedSearchOverTheLagsOfAmrWbIsThatOfAmrWb) {
    for (int period = 18; period < 115; ++period) {
        OpenLoop extended(period);
        OpenLoop plain(period);
        ASSERT_EQ(vekStsNoErr, extended.run(64, 17, 115));
        ASSERT_EQ(vekStsNoErr, veksOpenLoopPitchSearch_AMRWB_16s(
                                   plain.x.data() + 214, plain.x.data() + 214, &plain.median, &plain.strength,
                                   &plain.lag, &plain.tone, &plain.gain, plain.lags.data(), &plain.near, 64));
        EXPECT_EQ(plain.lag, extended.lag);
        EXPECT_EQ(plain.gain, extended.gain);
        EXPECT_EQ(plain.tone, extended.tone);
        EXPECT_EQ(plain.near, extended.near);
        EXPECT_EQ(plain.median, extended.median);
        EXPECT_EQ(plain.strength, extended.strength);
        EXPECT_EQ(plain.lags, extended.lags);
    }
}

TEST(VekWideOpenLoop, TheExtendedSearchReachesLongerLags) {
    OpenLoop o(150);
    ASSERT_EQ(vekStsNoErr, o.run(64, 25, 166));
    EXPECT_EQ(150, o.lag);
}

// Every multiple of the period is as good as the period itself: the shortest wins, or one near the median.
TEST(VekWideOpenLoop, PrefersTheNeighbourhoodOfTheMedianWhereItIsSwitchedOn) {
    for (const int16_t near : {int16_t{0}, int16_t{1}}) {
        OpenLoop o(25);
        for (size_t i = 0; i < o.x.size(); ++i) {
            o.x[i] = i % 25 == 0 ? 1000 : 0;
        }
        o.lags = Samples(5, 100);
        o.median = 100;
        o.near = near;
        ASSERT_EQ(vekStsNoErr, o.run(128, 17, 115));
        EXPECT_EQ(near == 0 ? 25 : 100, o.lag);
    }
}

TEST(VekWideOpenLoop, RefusesWhatItCannotDo) {
    OpenLoop o(50);
    EXPECT_EQ(vekStsSizeErr, o.run(0, 17, 115));
    EXPECT_EQ(vekStsSizeErr, o.run(257, 17, 115));
    EXPECT_EQ(vekStsRangeErr, o.run(64, 115, 115));
    EXPECT_EQ(vekStsRangeErr, o.run(64, 17, 216));
    o.near = 2;
    EXPECT_EQ(vekStsRangeErr, o.run(64, 17, 115));
    EXPECT_EQ(0, o.lag);
    EXPECT_EQ(vekStsNullPtrErr,
              veksOpenLoopPitchSearch_AMRWB_16s(nullptr, o.x.data() + 214, &o.median, &o.strength, &o.lag, &o.tone,
                                                &o.gain, o.lags.data(), &o.near, 64));
}

} // namespace
