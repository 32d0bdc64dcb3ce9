// Harmonic, residual and synthesis filters, filtered excitation: against the textbook at every level, at the edges of
// the number range, and the refusals.
#include "lp_reference.h"
#include "veksc.h"

namespace {

constexpr int kOrder = 10;

// A stable filter of a voiced frame, Q12.
const Samples kVoiced = {4096, -6100, 2300, 1900, -1200, -900, 1500, -700, -300, 500, -150};

Samples headOf(const Samples& v, size_t n) {
    return {v.begin(), v.begin() + static_cast<std::ptrdiff_t>(n)};
}

TEST(VekHarmonicFilter, RoundedFormAddsTheScaledSampleOfThePeriodBefore) {
    atEveryLevel([] {
        const Samples x = {100, -100, 32767, 10, 20, 30};
        Samples y(3);
        ASSERT_EQ(vekStsNoErr, veksHarmonicFilter_NR_16s(16384, 3, x.data() + 3, y.data(), 3));
        EXPECT_EQ((Samples{60, -30, 16414}), y);
    });
}

TEST(VekHarmonicFilter, RoundsHalfUpAndSaturates) {
    atEveryLevel([] {
        const Samples x = {1, -1, 32767, -32768, 0, 0, 32767, -32768};
        Samples y(4);
        ASSERT_EQ(vekStsNoErr, veksHarmonicFilter_NR_16s(16384, 4, x.data() + 4, y.data(), 4));
        EXPECT_EQ((Samples{1, 0, 32767, -32768}), y);
        ASSERT_EQ(vekStsNoErr, veksHarmonicFilter_NR_16s(-32768, 4, x.data() + 4, y.data(), 4));
        EXPECT_EQ((Samples{-1, 1, 0, 0}), y);
    });
}

TEST(VekHarmonicFilter, IsTheSameAtAnyLength) {
    atEveryLevel([] {
        constexpr int T = 20;
        std::mt19937 random(2);
        for (int n = 1; n <= 70; n++) {
            const Samples x = noise(random, T + n, -32768, 32767);
            std::vector<float> xF(x.begin(), x.end());
            std::vector<float> wantF = xF;
            for (const int beta : {29000, -32767, -32768}) {
                Samples want;
                for (int i = T; i < T + n; i++) {
                    want.push_back(static_cast<int16_t>(lpref::clip(x[i] + ((beta * x[i - T] + 0x4000) >> 15), 16)));
                }
                Samples y(static_cast<size_t>(n));
                ASSERT_EQ(vekStsNoErr,
                          veksHarmonicFilter_NR_16s(static_cast<int16_t>(beta), T, x.data() + T, y.data(), n));
                ASSERT_EQ(want, y) << n << " " << beta;
            }
            for (int i = T; i < T + n; i++) {
                wantF[i] += 0.5F * wantF[i - T];
            }
            ASSERT_EQ(vekStsNoErr, veksHarmonicFilter_32f_I(T, xF.data() + T, n, 0.5F));
            ASSERT_EQ(wantF, xF) << n;
        }
    });
}

TEST(VekHarmonicFilter, InPlaceFormsFeedBackForEveryPeriod) {
    atEveryLevel([] {
        std::mt19937 random(1);
        for (const int T : {1, 2, 5, 7, 8, 15, 16, 31, 39, 40, 60}) {
            for (const int len : {15, 40, 50, 64}) {
                Samples x = noise(random, T + len, -20000, 20000);
                Samples rounded = x;
                Samples cut = x;
                Samples wantRounded = x;
                Samples wantCut = x;
                const int beta = 29000;
                for (int i = T; i < T + len; i++) {
                    wantRounded[i] =
                        static_cast<int16_t>(lpref::clip(x[i] + ((beta * wantRounded[i - T] + 0x4000) >> 15), 16));
                    wantCut[i] = static_cast<int16_t>(lpref::clip(x[i] + ((beta * wantCut[i - T]) >> 15), 16));
                }
                ASSERT_EQ(vekStsNoErr, veksHarmonicFilter_NR_16s(beta, T, rounded.data() + T, rounded.data() + T, len));
                ASSERT_EQ(vekStsNoErr, veksHarmonicFilter_16s_I(beta, T, cut.data() + T, len));
                ASSERT_EQ(wantRounded, rounded) << T << " " << len;
                ASSERT_EQ(wantCut, cut) << T << " " << len;
            }
        }
    });
}

TEST(VekHarmonicFilter, NegativeUnitFactorSaturatesTheProductFirst) {
    atEveryLevel([] {
        Samples x = {-32768, -1};
        ASSERT_EQ(vekStsNoErr, veksHarmonicFilter_16s_I(-32768, 1, x.data() + 1, 1));
        EXPECT_EQ(32766, x[1]);
    });
}

TEST(VekHarmonicFilter, FloatFormFeedsBack) {
    atEveryLevel([] {
        std::vector<float> x = {1.0f, 2.0f, 0.0f, 0.0f, 0.0f, 4.0f, 0.0f};
        ASSERT_EQ(vekStsNoErr, veksHarmonicFilter_32f_I(2, x.data() + 2, 5, 0.5f));
        EXPECT_EQ((std::vector<float>{1.0f, 2.0f, 0.5f, 1.0f, 0.25f, 4.5f, 0.125f}), x);
    });
}

TEST(VekHarmonicFilter, RefusesNullPeriodsOutOfRangeAndEmptyVector) {
    int16_t x[4] = {};
    float f[4] = {};
    expectNullsRefused(veksHarmonicFilter_NR_16s, 1, 1, x, x, 2);
    EXPECT_EQ(vekStsNullPtrErr, veksHarmonicFilter_16s_I(1, 1, nullptr, 2));
    EXPECT_EQ(vekStsNullPtrErr, veksHarmonicFilter_32f_I(1, nullptr, 2, 1.0f));
    EXPECT_EQ(vekStsSizeErr, veksHarmonicFilter_NR_16s(1, 1, x + 1, x + 1, 0));
    EXPECT_EQ(vekStsSizeErr, veksHarmonicFilter_16s_I(1, 1, x + 1, -1));
    EXPECT_EQ(vekStsRangeErr, veksHarmonicFilter_16s_I(1, -1, x, 2));
    EXPECT_EQ(vekStsRangeErr, veksHarmonicFilter_NR_16s(1, -1, x, x, 2));
    EXPECT_EQ(vekStsRangeErr, veksHarmonicFilter_32f_I(-1, f, 2, 1.0f));
    // As a length, a period goes up to 65536.
    for (const int T : {65537, 1 << 24, INT_MAX}) {
        EXPECT_EQ(vekStsRangeErr, veksHarmonicFilter_NR_16s(1, T, x, x, 2)) << T;
        EXPECT_EQ(vekStsRangeErr, veksHarmonicFilter_16s_I(1, T, x, 2)) << T;
        EXPECT_EQ(vekStsRangeErr, veksHarmonicFilter_32f_I(T, f, 2, 1.0f)) << T;
    }
    std::vector<int16_t> past(65537, 100);
    EXPECT_EQ(vekStsNoErr, veksHarmonicFilter_16s_I(16384, 65536, past.data() + 65536, 1));
    EXPECT_EQ(150, past.back());
}

TEST(VekResidualFilter, EqualsTheTextbookForSpeechAndForLoudNoise) {
    atEveryLevel([] {
        std::mt19937 random(2);
        for (const int size : {100, 8000, 20000, 32767}) {
            for (int round = 0; round < 40; round++) {
                const Samples x = noise(random, kOrder + 40, -size - 1, size);
                const Samples a = round % 2 ? kVoiced : noise(random, kOrder + 1, -size - 1, size);
                Samples y(40);
                ASSERT_EQ(vekStsNoErr, veksResidualFilter_G729_16s(x.data() + kOrder, a.data(), y.data()));
                ASSERT_EQ(lpref::residual(a, x, 40, 12), y) << size << " " << round;
            }
        }
    });
}

TEST(VekResidualFilter, SaturatesEachStepNotOnlyTheSum) {
    atEveryLevel([] {
        // Two products fill the sum; the third, subtracted, counts from the limit.
        Samples a(kOrder + 1, 0);
        a[0] = 32767;
        a[1] = 32767;
        a[2] = -32767;
        const Samples x(kOrder + 40, 32767);
        Samples y(40);
        ASSERT_EQ(vekStsNoErr, veksResidualFilter_G729_16s(x.data() + kOrder, a.data(), y.data()));
        EXPECT_EQ(lpref::residual(a, x, 40, 12), y);
        Samples alternating(kOrder + 40);
        for (size_t i = 0; i < alternating.size(); i++) {
            alternating[i] = i % 2 ? 32767 : -32768;
        }
        a = {32767, -32768, 32767, 32767, -32768, 32767, -32768, 32767, -32768, 32767, -32768};
        ASSERT_EQ(vekStsNoErr, veksResidualFilter_G729_16s(alternating.data() + kOrder, a.data(), y.data()));
        EXPECT_EQ(lpref::residual(a, alternating, 40, 12), y);
    });
}

TEST(VekResidualFilter, RefusesNull) {
    int16_t x[50] = {};
    expectNullsRefused(veksResidualFilter_G729_16s, x + 10, x, x);
}

TEST(VekSynthesisFilter, EqualsTheTextbookForEveryLengthAndScale) {
    atEveryLevel([] {
        std::mt19937 random(3);
        for (const int len : {1, 3, 15, 20, 25, 30, 35, 40, 45, 50, 60, 159, 160, 161, 400}) {
            for (const int scale : {0, 1, 11, 12, 13, 15}) {
                const Samples x = noise(random, len, -3000, 3000);
                const Samples memory = noise(random, kOrder, -3000, 3000);
                Samples y(len);
                ASSERT_EQ(vekStsNoErr, veksSynthesisFilter_NR_16s_Sfs(kVoiced.data(), x.data(), y.data(), len, scale,
                                                                      memory.data()));
                const Samples want = lpref::synthesis(kVoiced, x, scale, memory);
                ASSERT_EQ(want, y) << len << " " << scale;
                Samples inPlace = x;
                ASSERT_EQ(vekStsNoErr,
                          veksSynthesisFilter_NR_16s_ISfs(kVoiced.data(), inPlace.data(), len, scale, memory.data()));
                ASSERT_EQ(want, inPlace) << len << " " << scale;
            }
        }
    });
}

TEST(VekSynthesisFilter, SaturatesEachStepOfAnUnstableFilter) {
    atEveryLevel([] {
        std::mt19937 random(4);
        for (int round = 0; round < 60; round++) {
            const Samples a = noise(random, kOrder + 1, -32768, 32767);
            const Samples x = noise(random, 50, -32768, 32767);
            const Samples memory = noise(random, kOrder, -32768, 32767);
            Samples y = x;
            ASSERT_EQ(vekStsNoErr, veksSynthesisFilter_NR_16s_ISfs(a.data(), y.data(), 50, 12, memory.data()));
            ASSERT_EQ(lpref::synthesis(a, x, 12, memory), y) << round;
        }
    });
}

TEST(VekSynthesisFilter, LowFormWrapsAndAgreesWhereNothingOverflows) {
    atEveryLevel([] {
        std::mt19937 random(5);
        for (int round = 0; round < 60; round++) {
            const bool loud = round % 2 != 0;
            const Samples a = loud ? noise(random, kOrder + 1, -32768, 32767) : kVoiced;
            const int size = loud ? 32767 : 500;
            const Samples x = noise(random, 50, -size, size);
            const Samples memory = noise(random, kOrder, -size, size);
            Samples y = x;
            ASSERT_EQ(vekStsNoErr, veksSynthesisFilterLow_NR_16s_ISfs(a.data(), y.data(), 50, 12, memory.data()));
            ASSERT_EQ(lpref::synthesisWrapping(a, x, 12, memory), y);
            if (!loud) {
                ASSERT_EQ(lpref::synthesis(a, x, 12, memory), y);
            }
        }
    });
}

TEST(VekSynthesisFilter, ZeroStateResponseStartsWithOneInQ12) {
    atEveryLevel([] {
        Samples h(60, 77);
        ASSERT_EQ(vekStsNoErr, veksSynthesisFilterZeroStateResponse_NR_16s(kVoiced.data(), h.data(), 60, 12));
        EXPECT_EQ(4096, h[0]);
        EXPECT_EQ(6100, h[1]);
        Samples impulse(60, 0);
        impulse[0] = 4096;
        EXPECT_EQ(lpref::synthesis(kVoiced, impulse, 12, Samples(kOrder, 0)), h);
    });
}

TEST(VekSynthesisFilter, TwoCallsWithTheLastOutputsAsMemoryEqualOne) {
    std::mt19937 random(6);
    const Samples x = noise(random, 80, -2000, 2000);
    Samples whole(80);
    Samples halves(80);
    const Samples rest(kOrder, 0);
    ASSERT_EQ(vekStsNoErr, veksSynthesisFilter_NR_16s_Sfs(kVoiced.data(), x.data(), whole.data(), 80, 12, rest.data()));
    ASSERT_EQ(vekStsNoErr,
              veksSynthesisFilter_NR_16s_Sfs(kVoiced.data(), x.data(), halves.data(), 37, 12, rest.data()));
    ASSERT_EQ(vekStsNoErr, veksSynthesisFilter_NR_16s_Sfs(kVoiced.data(), x.data() + 37, halves.data() + 37, 43, 12,
                                                          halves.data() + 27));
    EXPECT_EQ(whole, halves);
}

TEST(VekSynthesisFilter, RefusesNullLengthAndScaleAndWritesNothing) {
    int16_t a[11] = {4096};
    int16_t m[10] = {};
    int16_t x[4] = {1, 2, 3, 4};
    expectNullsRefused(veksSynthesisFilter_NR_16s_Sfs, a, x, x, 4, 12, m);
    EXPECT_EQ(vekStsNullPtrErr, veksSynthesisFilter_NR_16s_ISfs(a, x, 4, 12, nullptr));
    EXPECT_EQ(vekStsSizeErr, veksSynthesisFilter_NR_16s_ISfs(a, x, 0, 12, m));
    EXPECT_EQ(vekStsSizeErr, veksSynthesisFilterLow_NR_16s_ISfs(a, x, 65537, 12, m));
    EXPECT_EQ(vekStsScaleRangeErr, veksSynthesisFilter_NR_16s_ISfs(a, x, 4, 16, m));
    EXPECT_EQ(vekStsScaleRangeErr, veksSynthesisFilterLow_NR_16s_ISfs(a, x, 4, -1, m));
    EXPECT_EQ(vekStsNullPtrErr, veksSynthesisFilterZeroStateResponse_NR_16s(a, nullptr, 4, 12));
    EXPECT_EQ(vekStsSizeErr, veksSynthesisFilterZeroStateResponse_NR_16s(a, x, 0, 12));
    EXPECT_EQ(vekStsScaleRangeErr, veksSynthesisFilterZeroStateResponse_NR_16s(a, x, 4, 16));
    EXPECT_EQ((Samples{1, 2, 3, 4}), Samples(x, x + 4));
}

TEST(VekFilteredExcitation, MovesUpByOneAndAddsTheIncomingSample) {
    atEveryLevel([] {
        for (const int len : {1, 2, 10, 40, 64, 65, 66, 90, 129, 200}) {
            std::vector<float> h(len);
            std::vector<float> y(len);
            std::vector<float> want(len);
            for (int i = 0; i < len; i++) {
                h[i] = 0.25f * static_cast<float>(i + 1);
                y[i] = static_cast<float>(i * i % 17);
                want[i] = (i > 0 ? static_cast<float>((i - 1) * (i - 1) % 17) : 0.0f) + 2.0f * h[i];
            }
            ASSERT_EQ(vekStsNoErr, veksFilteredExcitation_G729_32f(h.data(), y.data(), len, 2.0f));
            ASSERT_EQ(want, y) << len;
        }
    });
}

TEST(VekFilteredExcitation, FirstIsTheBareProductAlsoANegativeZero) {
    atEveryLevel([] {
        for (const int len : {1, 3, 4, 8, 40}) {
            std::vector<float> h(len, -0.0F);
            std::vector<float> y(len, 1.0F);
            ASSERT_EQ(vekStsNoErr, veksFilteredExcitation_G729_32f(h.data(), y.data(), len, 2.0F));
            EXPECT_TRUE(y[0] == 0 && std::signbit(y[0])) << len;
        }
    });
}

TEST(VekFilteredExcitation, RefusesNullAndEmpty) {
    float x[2] = {};
    expectNullsRefused(veksFilteredExcitation_G729_32f, x, x, 2, 1.0f);
    EXPECT_EQ(vekStsSizeErr, veksFilteredExcitation_G729_32f(x, x, 0, 1.0f));
}

TEST(VekHighPassFilter, EqualsTheSplitWordTextbookQuietAndLoud) {
    struct Filter {
        int scale, b0, b1, a1, a2, shift, up;
    };
    atEveryLevel([] {
        std::mt19937 random(7);
        for (const Filter& f :
             {Filter{13, 1899, -3798, 7807, -3733, 3, 0}, Filter{12, 7699, -15398, 15836, -7667, 2, 1}}) {
            std::vector<char> memory(64, 0);
            int64_t y1 = 0;
            int64_t y2 = 0;
            int x1 = 0;
            int x2 = 0;
            for (int round = 0; round < 40; round++) {
                const int size = round % 4 == 3 ? 32767 : 6000;
                Samples x = noise(random, 15 + round, -size - 1, size);
                Samples want(x.size());
                if (round % 8 == 7) {
                    std::fill(x.begin(), x.begin() + 8, static_cast<int16_t>(round % 16 == 7 ? 32767 : -32768));
                }
                if (round % 8 == 5) {
                    // As loud as no step of the sum saturates; the amplified output does.
                    std::fill(x.begin(), x.end(), static_cast<int16_t>(9800));
                    std::fill_n(x.begin(), x.size() / 2, static_cast<int16_t>(-9800));
                }
                for (size_t i = 0; i < x.size(); i++) {
                    const auto split = [](int64_t y, int a) {
                        const auto hi = static_cast<int>(y >> 16);
                        const auto lo = static_cast<int>((y & 0xffff) >> 1);
                        return lpref::step(lpref::step(0, hi, a, 1), (lo * a) >> 15, 1, 1);
                    };
                    int64_t s = lpref::clip(split(y1, f.a1) + split(y2, f.a2), 32);
                    s = lpref::step(s, x[i], f.b0, 1);
                    s = lpref::step(s, x1, f.b1, 1);
                    s = lpref::step(s, x2, f.b0, 1);
                    s = lpref::clip(s << f.shift, 32);
                    want[i] = lpref::upperRounded(s, f.up);
                    y2 = y1;
                    y1 = s;
                    x2 = x1;
                    x1 = x[i];
                }
                ASSERT_EQ(vekStsNoErr, veksHighPassFilter_G729_16s_ISfs(x.data(), static_cast<int>(x.size()), f.scale,
                                                                        memory.data() + 1));
                ASSERT_EQ(want, x) << f.scale << " " << round;
            }
        }
    });
}

TEST(VekHighPassFilter, PreProcessingHalvesPostProcessingDoublesAndBothStopAConstant) {
    for (const int scale : {12, 13}) {
        int size = 0;
        ASSERT_EQ(vekStsNoErr, veksHighPassFilterSize_G729(&size));
        std::vector<char> memory(static_cast<size_t>(size), 'x');
        ASSERT_EQ(vekStsNoErr, veksHighPassFilterInit_G729(memory.data()));
        ASSERT_EQ(std::vector<char>(memory.size(), 0), memory);
        Samples x(4000);
        for (size_t i = 0; i < x.size(); i++) {
            x[i] = static_cast<int16_t>(i % 4 < 2 ? 1000 : -1000); // 2 kHz, well above the edge
        }
        ASSERT_EQ(vekStsNoErr, veksHighPassFilter_G729_16s_ISfs(x.data(), 4000, scale, memory.data()));
        EXPECT_NEAR(scale == 13 ? 500 : 2000, std::abs(x[3999]), scale == 13 ? 60 : 160);
        Samples constant(4000, 1000);
        ASSERT_EQ(vekStsNoErr, veksHighPassFilter_G729_16s_ISfs(constant.data(), 4000, scale, memory.data()));
        EXPECT_NEAR(0, constant[3999], 2);
    }
}

TEST(VekHighPassFilter, RefusesNullLengthAndOtherScales) {
    int16_t x[2] = {};
    char memory[64] = {};
    EXPECT_EQ(vekStsNullPtrErr, veksHighPassFilterSize_G729(nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksHighPassFilterInit_G729(nullptr));
    expectNullsRefused(veksHighPassFilter_G729_16s_ISfs, x, 2, 12, memory);
    EXPECT_EQ(vekStsSizeErr, veksHighPassFilter_G729_16s_ISfs(x, 0, 12, memory));
    EXPECT_EQ(vekStsScaleRangeErr, veksHighPassFilter_G729_16s_ISfs(x, 2, 11, memory));
    EXPECT_EQ(vekStsScaleRangeErr, veksHighPassFilter_G729_16s_ISfs(x, 2, 0, memory));
}

TEST(VekIirG723, EqualsTheTextbookAndCarriesItsMemory) {
    atEveryLevel([] {
        std::mt19937 random(8);
        for (const int size : {600, 2048, 32767}) {
            const Samples c = noise(random, 20, -size - 1, size);
            Samples memory = noise(random, 20, -size - 1, size);
            Samples memoryWide = memory;
            Samples memoryScaled = memory;
            Samples past = memory;
            for (int frame = 0; frame < 5; frame++) {
                const Samples x = noise(random, 60, -size - 1, size);
                std::vector<int32_t> wide(60);
                std::vector<int32_t> source(60);
                std::vector<int32_t> wantWide(60);
                Samples want(60);
                for (int i = 0; i < 60; i++) {
                    int64_t s = lpref::step(0, x[i], 0x2000, 1);
                    for (int j = 0; j < 10; j++) {
                        s = lpref::step(s, c[j], past[j], -1);
                    }
                    for (int j = 0; j < 10; j++) {
                        s = lpref::step(s, c[10 + j], past[10 + j], 1);
                    }
                    wantWide[i] = static_cast<int32_t>(lpref::clip(s * 4, 32));
                    want[i] = lpref::upperRounded(s, 2);
                    std::copy_backward(past.begin(), past.begin() + 9, past.begin() + 10);
                    std::copy_backward(past.begin() + 10, past.begin() + 19, past.end());
                    past[0] = x[i];
                    past[10] = want[i];
                    source[i] = x[i] * 16 - 8;
                }
                Samples y = x;
                Samples scaled(60);
                ASSERT_EQ(vekStsNoErr, veksIIR16s_G723_16s_I(c.data(), y.data(), memory.data()));
                ASSERT_EQ(vekStsNoErr, veksIIR16s_G723_16s32s(c.data(), x.data(), wide.data(), memoryWide.data()));
                ASSERT_EQ(vekStsNoErr,
                          veksIIR16s_G723_32s16s_Sfs(c.data(), source.data(), 4, scaled.data(), memoryScaled.data()));
                ASSERT_EQ(want, y) << size;
                ASSERT_EQ(wantWide, wide) << size;
                ASSERT_EQ(want, scaled) << size;
                ASSERT_EQ(past, memory);
                ASSERT_EQ(past, memoryWide);
                ASSERT_EQ(past, memoryScaled);
            }
        }
    });
}

TEST(VekIirG723, RefusesNullAndScale) {
    int16_t c[20] = {};
    int16_t m[20] = {};
    int16_t x[60] = {};
    int32_t w[60] = {};
    expectNullsRefused(veksIIR16s_G723_16s_I, c, x, m);
    EXPECT_EQ(vekStsNullPtrErr, veksIIR16s_G723_16s32s(c, x, nullptr, m));
    EXPECT_EQ(vekStsNullPtrErr, veksIIR16s_G723_32s16s_Sfs(c, nullptr, 0, x, m));
    EXPECT_EQ(vekStsScaleRangeErr, veksIIR16s_G723_32s16s_Sfs(c, w, -1, x, m));
    EXPECT_EQ(vekStsScaleRangeErr, veksIIR16s_G723_32s16s_Sfs(c, w, 32, x, m));
}

TEST(VekIirG729, IsResidualThenSynthesisAndCarriesItsMemory) {
    atEveryLevel([] {
        std::mt19937 random(9);
        for (const int size : {512, 32767}) {
            Samples c = kVoiced;
            c.insert(c.end(), kVoiced.begin(), kVoiced.end());
            for (size_t j = 1; j < 11; j++) {
                c[j] = static_cast<int16_t>(c[j] * 9 / 10);
                c[11 + j] = static_cast<int16_t>(c[11 + j] * 6 / 10);
            }
            Samples memory = noise(random, 20, -size, size);
            Samples memoryLow = memory;
            for (int frame = 0; frame < 4; frame++) {
                const Samples x = noise(random, 40, -size, size);
                Samples input(memory.begin(), memory.begin() + 10);
                input.insert(input.end(), x.begin(), x.end());
                const Samples r = lpref::residual(headOf(c, 11), input, 40, 12);
                const Samples want =
                    lpref::synthesis({c.begin() + 11, c.end()}, r, 12, {memory.begin() + 10, memory.end()});
                Samples y(40);
                ASSERT_EQ(vekStsNoErr, veksIIR16s_G729_16s(c.data(), x.data(), y.data(), memory.data()));
                ASSERT_EQ(want, y);
                ASSERT_EQ(Samples(x.begin() + 30, x.end()), headOf(memory, 10));
                ASSERT_EQ(Samples(y.begin() + 30, y.end()), Samples(memory.begin() + 10, memory.end()));
                if (size == 512) {
                    ASSERT_EQ(vekStsNoErr, veksIIR16sLow_G729_16s(c.data(), x.data(), y.data(), memoryLow.data()));
                    ASSERT_EQ(want, y);
                    ASSERT_EQ(memory, memoryLow);
                }
            }
        }
    });
}

TEST(VekIirG729, RefusesNull) {
    int16_t c[22] = {};
    int16_t m[20] = {};
    int16_t x[40] = {};
    expectNullsRefused(veksIIR16s_G729_16s, c, x, x, m);
    EXPECT_EQ(vekStsNullPtrErr, veksIIR16sLow_G729_16s(c, x, x, nullptr));
}

} // namespace
