// Correlation, convolution, dot products and vector scaling: against plain 64-bit sums at every level for the sizes in
// use, at the edges of the number range, and the refusals.
#include <cmath>

#include "lp_reference.h"
#include "veksc.h"

namespace {

using lpref::clip;
using Words = std::vector<int32_t>;
using Wide = std::vector<int64_t>;

Wide correlation(const Samples& a, const Samples& b, int lags) {
    Wide r(static_cast<size_t>(lags));
    for (size_t k = 0; k < r.size(); k++) {
        for (size_t i = k; i < a.size(); i++) {
            r[k] += a[i] * b[i - k];
        }
    }
    return r;
}

Wide convolution(const Samples& a, const Samples& b) {
    Wide r(a.size());
    for (size_t n = 0; n < r.size(); n++) {
        for (size_t i = 0; i <= n; i++) {
            r[n] += a[i] * b[n - i];
        }
    }
    return r;
}

int64_t scaled(int64_t v, int s, int bits) {
    return clip(s >= 0 ? v >> s : v * (int64_t{1} << -s), bits);
}

int64_t roundedQ15(int64_t v) {
    return clip((v + 16384) >> 15, 16);
}

// Signals that stress a sum: quiet noise, full-scale noise, the most negative value, alternating full scale.
std::vector<Samples> signals(int n, unsigned seed) {
    std::mt19937 random(seed);
    Samples alternating(static_cast<size_t>(n));
    for (size_t i = 0; i < alternating.size(); i++) {
        alternating[i] = static_cast<int16_t>(i % 2 == 0 ? 32767 : -32768);
    }
    return {noise(random, n, -512, 512), noise(random, n, -32768, 32767), Samples(static_cast<size_t>(n), -32768),
            alternating, Samples(static_cast<size_t>(n), 0)};
}

const std::vector<int> kLengths = {1, 2, 7, 8, 9, 15, 16, 17, 31, 40, 60, 64, 80, 120, 160, 180, 240, 256, 300};

TEST(VekAutoCorr, SumsAreExactAndSaturateOnce) {
    atEveryLevel([] {
        for (const int n : kLengths) {
            for (const Samples& x : signals(n, 1)) {
                for (const int lags : {1, 4, 5, 9, 12}) {
                    Words r(static_cast<size_t>(lags) + 1, 77);
                    ASSERT_EQ(vekStsNoErr, veksAutoCorr_16s32s(x.data(), n, r.data(), lags));
                    const Wide exact = correlation(x, x, lags);
                    for (size_t k = 0; k < exact.size(); k++) {
                        ASSERT_EQ(clip(exact[k], 32), r[k]) << n << " lag " << k;
                    }
                    ASSERT_EQ(77, r.back());
                }
            }
        }
    });
}

TEST(VekAutoCorr, FewLagsOfAnyLengthAreExact) {
    atEveryLevel([] {
        std::mt19937 random(4);
        for (int n = 30; n <= 84; n++) {
            const Samples x = noise(random, n, -3000, 3000);
            const Samples y = noise(random, n, -3000, 3000);
            for (const int lags : {1, 3, 4, 6, 8, 11}) {
                Words r(static_cast<size_t>(lags));
                ASSERT_EQ(vekStsNoErr, veksAutoCorr_16s32s(x.data(), n, r.data(), lags));
                const Wide exact = correlation(x, x, lags);
                ASSERT_EQ(exact, Wide(r.begin(), r.end())) << n << " " << lags;
                Samples rounded(static_cast<size_t>(lags));
                ASSERT_EQ(vekStsNoErr, veksCrossCorr_NR_16s(x.data(), y.data(), n, rounded.data(), lags));
                const Wide cross = correlation(x, y, lags);
                for (size_t k = 0; k < cross.size(); k++) {
                    ASSERT_EQ(roundedQ15(cross[k]), rounded[k]) << n << " lag " << k << " of " << lags;
                }
            }
        }
    });
}

TEST(VekAutoCorr, LagsBeyondTheVectorAreZero) {
    atEveryLevel([] {
        const Samples x = {3, -4};
        Words r(4, 9);
        ASSERT_EQ(vekStsNoErr, veksAutoCorr_16s32s(x.data(), 2, r.data(), 4));
        EXPECT_EQ((Words{25, -12, 0, 0}), r);
    });
}

TEST(VekAutoCorr, LongVectorsGoBeyondTheStack) {
    atEveryLevel([] {
        std::mt19937 random(3);
        const Samples x = noise(random, 5000, -200, 200);
        Words r(600);
        ASSERT_EQ(vekStsNoErr, veksAutoCorr_16s32s(x.data(), 5000, r.data(), 600));
        const Wide exact = correlation(x, x, 600);
        for (size_t k = 0; k < r.size(); k++) {
            ASSERT_EQ(exact[k], r[k]) << k;
        }
    });
}

TEST(VekAutoCorr, NormalisedFormsPutLagZeroIntoThirtyOneBits) {
    atEveryLevel([] {
        for (const int n : kLengths) {
            for (const Samples& x : signals(n, 2)) {
                Words r(5);
                Samples h(5);
                int norm = 99;
                int norm16 = 99;
                ASSERT_EQ(vekStsNoErr, veksAutoCorr_NormE_16s32s(x.data(), n, r.data(), 5, &norm));
                ASSERT_EQ(vekStsNoErr, veksAutoCorr_NormE_NR_16s(x.data(), n, h.data(), 5, &norm16));
                const Wide exact = correlation(x, x, 5);
                ASSERT_EQ(norm, norm16);
                if (exact[0] == 0) {
                    ASSERT_EQ(0, norm);
                } else {
                    ASSERT_GE(r[0], 1 << 30);
                }
                for (size_t k = 0; k < r.size(); k++) {
                    ASSERT_EQ(scaled(exact[k], -norm, 32), r[k]);
                    ASSERT_EQ(clip((int64_t{r[k]} + 0x8000) >> 16, 16), h[k]);
                }
            }
        }
    });
}

TEST(VekAutoCorr, ExponentOfAKnownVector) {
    const Samples x = {1, 1, 1, 1};
    Words r(2);
    int norm = 0;
    ASSERT_EQ(vekStsNoErr, veksAutoCorr_NormE_16s32s(x.data(), 4, r.data(), 2, &norm));
    EXPECT_EQ(28, norm);
    EXPECT_EQ((Words{1 << 30, 3 << 28}), r);
    const Samples loud(16, -32768);
    ASSERT_EQ(vekStsNoErr, veksAutoCorr_NormE_16s32s(loud.data(), 16, r.data(), 1, &norm));
    EXPECT_EQ(-4, norm);
    EXPECT_EQ(1 << 30, r[0]);
}

TEST(VekAutoCorr, FrameOfG723GivesTenLags) {
    atEveryLevel([] {
        std::mt19937 random(4);
        const Samples x = noise(random, 180, -4092, 4092);
        Samples own(11, 55);
        Samples general(10);
        int norm = 0;
        int normGeneral = 0;
        ASSERT_EQ(vekStsNoErr, veksAutoCorr_NormE_G723_16s(x.data(), own.data(), &norm));
        ASSERT_EQ(vekStsNoErr, veksAutoCorr_NormE_NR_16s(x.data(), 180, general.data(), 10, &normGeneral));
        EXPECT_EQ(55, own[10]);
        own.pop_back();
        EXPECT_EQ(general, own);
        EXPECT_EQ(normGeneral, norm);
    });
}

TEST(VekAutoCorr, AnalysisOfG723WindowsRaisesAndTapers) {
    atEveryLevel([] {
        std::mt19937 random(5);
        const Samples x = noise(random, 180, -2048, 2048);
        Samples r(12, 55);
        int norm = 0;
        ASSERT_EQ(vekStsNoErr, veksAutoCorr_G723_16s(x.data(), &norm, r.data()));
        EXPECT_EQ(55, r[11]);
        EXPECT_GE(r[0], 16384);
        std::vector<double> w(180);
        for (size_t i = 0; i < w.size(); i++) {
            w[i] = x[i] * (0.54 - 0.46 * std::cos(2 * M_PI * static_cast<double>(i) / 179));
        }
        for (size_t k = 0; k <= 10; k++) {
            double sum = 0;
            for (size_t i = k; i < w.size(); i++) {
                sum += w[i] * w[i - k];
            }
            // The binomial window is, within a hair, a Gaussian of 60 Hz at 8 kHz.
            const double f = 2 * M_PI * 37.5 / 8000 * static_cast<double>(k);
            const double taper = k == 0 ? 1 + 1.0 / 1024 : std::exp(-f * f / 2);
            EXPECT_NEAR(sum * taper * std::exp2(norm) / 65536, r[k], k == 0 ? 6 : 40) << k;
        }
    });
}

/// Calls `work(n, a, b)` for pairs of signals of every length.
template <class Work>
void forPairs(unsigned seed, Work work) {
    for (const int n : kLengths) {
        const auto first = signals(n, seed);
        const auto second = signals(n, seed + 1);
        for (size_t c = 0; c < first.size(); c++) {
            work(n, first[c], second[(c + 1) % second.size()]);
        }
    }
}

TEST(VekConvPartial, EachFormAgreesWithThePlainSum) {
    atEveryLevel([] {
        forPairs(6, [](int n, const Samples& a, const Samples& b) {
            const Wide exact = convolution(a, b);
            Words wide(a.size());
            Samples cut(a.size());
            Samples rounded(a.size());
            ASSERT_EQ(vekStsNoErr, veksConvPartial_16s32s(a.data(), b.data(), wide.data(), n));
            ASSERT_EQ(vekStsNoErr, veksConvPartial_16s_Sfs(a.data(), b.data(), cut.data(), n, 12));
            ASSERT_EQ(vekStsNoErr, veksConvPartial_NR_16s(a.data(), b.data(), rounded.data(), n));
            for (size_t i = 0; i < a.size(); i++) {
                ASSERT_EQ(clip(exact[i], 32), wide[i]) << n << " " << i;
                ASSERT_EQ(scaled(exact[i], 12, 16), cut[i]);
                ASSERT_EQ(roundedQ15(exact[i]), rounded[i]);
            }
        });
    });
}

// Copies of more than 1024 elements are on the heap.
TEST(VekConvPartial, LongVectorsGoBeyondTheStackHereAndInCrossCorrelations) {
    std::mt19937 random(7);
    const Samples a = noise(random, 1500, -200, 200);
    const Samples b = noise(random, 1500, -200, 200);
    const Wide sums = convolution(a, b);
    const Wide products = correlation(a, b, 1500);
    atEveryLevel([&] {
        Words y(1500);
        ASSERT_EQ(vekStsNoErr, veksConvPartial_16s32s(a.data(), b.data(), y.data(), 1500));
        EXPECT_TRUE(std::equal(sums.begin(), sums.end(), y.begin()));
        ASSERT_EQ(vekStsNoErr, veksCrossCorr_16s32s_Sfs(a.data(), b.data(), 1500, y.data(), 0));
        EXPECT_TRUE(std::equal(products.begin(), products.end(), y.begin()));
    });
}

TEST(VekConvPartial, TheFractionIsCutOffTowardsMinusInfinity) {
    const Samples a = {-1};
    const Samples b = {1};
    Samples y(1);
    ASSERT_EQ(vekStsNoErr, veksConvPartial_16s_Sfs(a.data(), b.data(), y.data(), 1, 12));
    EXPECT_EQ(-1, y[0]);
    ASSERT_EQ(vekStsNoErr, veksConvPartial_16s_Sfs(a.data(), b.data(), y.data(), 1, -3));
    EXPECT_EQ(-8, y[0]);
    ASSERT_EQ(vekStsNoErr, veksConvPartial_16s_Sfs(a.data(), b.data(), y.data(), 1, -31));
    EXPECT_EQ(-32768, y[0]);
}

TEST(VekCrossCorr, EachFormAgreesWithThePlainSum) {
    atEveryLevel([] {
        forPairs(8, [](int n, const Samples& a, const Samples& b) {
            const Wide exact = correlation(a, b, n);
            Words wide(a.size());
            Samples rounded(static_cast<size_t>(n) + 1);
            for (const int s : {0, 3, 31, -2}) {
                ASSERT_EQ(vekStsNoErr, veksCrossCorr_16s32s_Sfs(a.data(), b.data(), n, wide.data(), s));
                for (size_t k = 0; k < a.size(); k++) {
                    ASSERT_EQ(scaled(exact[k], s, 32), wide[k]) << n << " " << k << " scale " << s;
                }
            }
            ASSERT_EQ(vekStsNoErr, veksCrossCorr_NR_16s(a.data(), b.data(), n, rounded.data(), n + 1));
            for (size_t k = 0; k < a.size(); k++) {
                ASSERT_EQ(roundedQ15(exact[k]), rounded[k]);
            }
            ASSERT_EQ(0, rounded.back());
        });
    });
}

// Sums of which the faint vector alone would tell that they fit 32 bits.
TEST(VekCrossCorr, AFaintVectorBesideALoudOneIsExact) {
    const int n = 240;
    const Samples faint(n, 1000);
    const Samples loud(n, 32767);
    atEveryLevel([&] {
        for (const auto& [a, b] : {std::pair(faint, loud), std::pair(loud, faint)}) {
            const Wide exact = correlation(a, b, n);
            Words got(n);
            ASSERT_EQ(vekStsNoErr, veksCrossCorr_16s32s_Sfs(a.data(), b.data(), n, got.data(), 3));
            for (size_t k = 0; k < got.size(); k++) {
                ASSERT_EQ(scaled(exact[k], 3, 32), got[k]) << k;
            }
            const Wide folded = convolution(a, b);
            ASSERT_EQ(vekStsNoErr, veksConvPartial_16s32s(a.data(), b.data(), got.data(), n));
            for (size_t k = 0; k < got.size(); k++) {
                ASSERT_EQ(clip(folded[k], 32), got[k]) << k;
            }
        }
    });
}

TEST(VekCrossCorr, NormalisedFormLeavesThirteenBits) {
    atEveryLevel([] {
        for (const int n : kLengths) {
            for (const int peak : {3, 100, 32767}) {
                std::mt19937 random(10);
                const Samples a = noise(random, n, -peak, peak);
                const Samples b = noise(random, n, -peak, peak);
                Samples d(a.size());
                ASSERT_EQ(vekStsNoErr, veksCrossCorr_NormM_16s(a.data(), b.data(), n, d.data()));
                const Wide exact = correlation(a, b, n);
                int64_t largest = 0;
                for (const int64_t v : exact) {
                    largest = std::max(largest, v < 0 ? -v : v);
                }
                int shift = -14;
                while (shift < 0 ? largest * (1 << -shift) >= 8192 : largest >> shift >= 8192) {
                    shift++;
                }
                for (size_t k = 0; k < d.size(); k++) {
                    ASSERT_EQ(scaled(exact[k], shift, 16), d[k]) << n << " peak " << peak;
                }
            }
        }
    });
}

TEST(VekCrossCorr, NormalisedFormOfSmallSumsDoublesAtMostFourteenTimes) {
    const Samples one = {1};
    const Samples zero = {0};
    Samples d(1);
    ASSERT_EQ(vekStsNoErr, veksCrossCorr_NormM_16s(one.data(), one.data(), 1, d.data()));
    EXPECT_EQ(4096, d[0]);
    ASSERT_EQ(vekStsNoErr, veksCrossCorr_NormM_16s(one.data(), zero.data(), 1, d.data()));
    EXPECT_EQ(0, d[0]);
}

TEST(VekDotProd, IntegerFormsAreExact) {
    atEveryLevel([] {
        for (int n = 1; n <= 300; n++) {
            const auto first = signals(n, 11);
            const auto second = signals(n, 12);
            for (size_t c = 0; c < first.size(); c++) {
                for (const Samples& b : {first[c], second[(c + 1) % second.size()]}) {
                    const int64_t exact = correlation(first[c], b, 1)[0];
                    Vek32s dp = 0;
                    Vek32s scaledDp = 0;
                    int sfs = -1;
                    ASSERT_EQ(vekStsNoErr, veksDotProd_G729A_16s32s(first[c].data(), b.data(), n, &dp));
                    ASSERT_EQ(clip(exact, 32), dp) << n;
                    ASSERT_EQ(vekStsNoErr,
                              veksDotProdAutoScale_16s32s_Sfs(first[c].data(), b.data(), n, &scaledDp, &sfs));
                    ASSERT_EQ(exact >> sfs, scaledDp);
                    ASSERT_TRUE(sfs == 0 || clip(exact >> (sfs - 1), 32) != exact >> (sfs - 1)) << n;
                }
            }
        }
    });
}

TEST(VekDotProd, FourTimesTheMostNegativeValueDoesNotWrap) {
    atEveryLevel([] {
        const Samples x(16, -32768);
        Vek32s dp = 0;
        int sfs = 0;
        ASSERT_EQ(vekStsNoErr, veksDotProd_G729A_16s32s(x.data(), x.data(), 16, &dp));
        EXPECT_EQ(INT32_MAX, dp);
        ASSERT_EQ(vekStsNoErr, veksDotProdAutoScale_16s32s_Sfs(x.data(), x.data(), 16, &dp, &sfs));
        EXPECT_EQ(4, sfs);
        EXPECT_EQ(1 << 30, dp);
    });
}

void expectWithinTolerance(const std::vector<float>& a, const std::vector<float>& b) {
    double exact = 0;
    double magnitude = 0;
    for (size_t i = 0; i < a.size(); i++) {
        exact += static_cast<double>(a[i]) * b[i];
        magnitude += std::fabs(static_cast<double>(a[i]) * b[i]);
    }
    float dp = 0;
    ASSERT_EQ(vekStsNoErr, veksDotProd_G729A_32f(a.data(), b.data(), static_cast<int>(a.size()), &dp));
    ASSERT_NEAR(exact, dp, magnitude / 1048576) << a.size();
}

TEST(VekDotProd, FloatFormIsWithinItsTolerance) {
    std::mt19937 random(13);
    std::uniform_real_distribution<float> pick(-1000.0F, 1000.0F);
    for (size_t n = 1; n <= 300; n++) {
        std::vector<float> a(n);
        std::vector<float> b(n);
        std::generate(a.begin(), a.end(), [&] { return pick(random); });
        std::generate(b.begin(), b.end(), [&] { return pick(random); });
        expectWithinTolerance(a, b);
    }
}

// Roundings of equal products all go the same way.
TEST(VekDotProd, FloatFormIsWithinItsToleranceAtAnyLength) {
    for (const size_t n : {63U, 64U, 65U, 127U, 255U, 256U, 257U, 500U, 1000U, 4099U, 65536U}) {
        for (const float value : {0.1F, 1.1F, 0.7F, 1000.3F}) {
            expectWithinTolerance(std::vector<float>(n, value), std::vector<float>(n, 1.7F));
        }
    }
}

TEST(VekAutoScale, TheLargestMagnitudeKeepsTheWantedSignBits) {
    atEveryLevel([] {
        for (const int n : {1, 7, 16, 40, 60, 80, 385}) {
            const Samples x(static_cast<size_t>(n), 10);
            Samples y(x.size());
            int scale = 0;
            ASSERT_EQ(vekStsNoErr, veksAutoScale_16s(x.data(), y.data(), n, &scale));
            EXPECT_EQ(11, scale);
            EXPECT_EQ(Samples(x.size(), 20480), y);
            scale = 13;
            ASSERT_EQ(vekStsNoErr, veksAutoScale_16s(x.data(), y.data(), n, &scale));
            EXPECT_EQ(-2, scale);
            EXPECT_EQ(Samples(x.size(), 2), y);
        }
    });
}

TEST(VekAutoScale, NegativeNumbersCountByTheirSignBits) {
    atEveryLevel([] {
        Samples x = {-16384, 1};
        int scale = 0;
        ASSERT_EQ(vekStsNoErr, veksAutoScale_16s_I(x.data(), 2, &scale));
        EXPECT_EQ(1, scale);
        EXPECT_EQ((Samples{-32768, 2}), x);
        Samples ones = {-1, 0};
        scale = 0;
        ASSERT_EQ(vekStsNoErr, veksAutoScale_16s_I(ones.data(), 2, &scale));
        EXPECT_EQ(15, scale);
        EXPECT_EQ((Samples{-32768, 0}), ones);
        Samples low = {-32768, -1};
        scale = 2;
        ASSERT_EQ(vekStsNoErr, veksAutoScale_16s_I(low.data(), 2, &scale));
        EXPECT_EQ(-2, scale);
        EXPECT_EQ((Samples{-8192, -1}), low);
    });
}

TEST(VekAutoScale, ZerosStayWithShiftZero) {
    atEveryLevel([] {
        Samples x(60, 0);
        int scale = 5;
        ASSERT_EQ(vekStsNoErr, veksAutoScale_16s_I(x.data(), 60, &scale));
        EXPECT_EQ(0, scale);
        EXPECT_EQ(Samples(60, 0), x);
    });
}

TEST(VekCorrelationErrors, NullPointersAreRefused) {
    Samples x(4, 1);
    Words w(4, 1);
    float f = 1;
    int s = 0;
    int16_t* p = x.data();
    int16_t* no = nullptr;
    EXPECT_EQ(vekStsNullPtrErr, veksAutoCorr_16s32s(no, 4, w.data(), 2));
    EXPECT_EQ(vekStsNullPtrErr, veksAutoCorr_16s32s(p, 4, nullptr, 2));
    EXPECT_EQ(vekStsNullPtrErr, veksAutoCorr_NormE_16s32s(p, 4, w.data(), 2, nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksAutoCorr_NormE_NR_16s(p, 4, no, 2, &s));
    EXPECT_EQ(vekStsNullPtrErr, veksAutoCorr_NormE_G723_16s(no, p, &s));
    EXPECT_EQ(vekStsNullPtrErr, veksAutoCorr_G723_16s(p, nullptr, p));
    EXPECT_EQ(vekStsNullPtrErr, veksAutoScale_16s(p, no, 4, &s));
    EXPECT_EQ(vekStsNullPtrErr, veksAutoScale_16s_I(p, 4, nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksConvPartial_16s32s(p, no, w.data(), 4));
    EXPECT_EQ(vekStsNullPtrErr, veksConvPartial_16s_Sfs(p, p, no, 4, 0));
    EXPECT_EQ(vekStsNullPtrErr, veksConvPartial_NR_16s(no, p, p, 4));
    EXPECT_EQ(vekStsNullPtrErr, veksCrossCorr_16s32s_Sfs(p, no, 4, w.data(), 0));
    EXPECT_EQ(vekStsNullPtrErr, veksCrossCorr_NR_16s(no, p, 4, p, 4));
    EXPECT_EQ(vekStsNullPtrErr, veksCrossCorr_NormM_16s(p, p, 4, no));
    EXPECT_EQ(vekStsNullPtrErr, veksDotProd_G729A_16s32s(p, p, 4, nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksDotProd_G729A_32f(&f, nullptr, 1, &f));
    EXPECT_EQ(vekStsNullPtrErr, veksDotProdAutoScale_16s32s_Sfs(p, p, 4, w.data(), nullptr));
}

TEST(VekCorrelationErrors, SizesAndScalesOutOfRangeAreRefusedBeforeAnythingIsWritten) {
    const Samples x(4, 1);
    Samples y(4, 7);
    Words w(4, 7);
    int s = 0;
    EXPECT_EQ(vekStsSizeErr, veksAutoCorr_16s32s(x.data(), 0, w.data(), 2));
    EXPECT_EQ(vekStsSizeErr, veksAutoCorr_NormE_16s32s(x.data(), 4, w.data(), 0, &s));
    EXPECT_EQ(vekStsSizeErr, veksAutoCorr_NormE_NR_16s(x.data(), 65537, y.data(), 1, &s));
    EXPECT_EQ(vekStsSizeErr, veksAutoScale_16s(x.data(), y.data(), 0, &s));
    EXPECT_EQ(vekStsSizeErr, veksConvPartial_16s32s(x.data(), x.data(), w.data(), -1));
    EXPECT_EQ(vekStsSizeErr, veksConvPartial_NR_16s(x.data(), x.data(), y.data(), 0));
    EXPECT_EQ(vekStsSizeErr, veksCrossCorr_NR_16s(x.data(), x.data(), 4, y.data(), 0));
    EXPECT_EQ(vekStsSizeErr, veksCrossCorr_NormM_16s(x.data(), x.data(), 0, y.data()));
    EXPECT_EQ(vekStsSizeErr, veksDotProd_G729A_16s32s(x.data(), x.data(), 0, w.data()));
    EXPECT_EQ(vekStsSizeErr, veksDotProdAutoScale_16s32s_Sfs(x.data(), x.data(), 0, w.data(), &s));
    EXPECT_EQ(vekStsScaleRangeErr, veksConvPartial_16s_Sfs(x.data(), x.data(), y.data(), 4, 32));
    EXPECT_EQ(vekStsScaleRangeErr, veksCrossCorr_16s32s_Sfs(x.data(), x.data(), 4, w.data(), -32));
    s = 16;
    EXPECT_EQ(vekStsScaleRangeErr, veksAutoScale_16s(x.data(), y.data(), 4, &s));
    s = -1;
    EXPECT_EQ(vekStsScaleRangeErr, veksAutoScale_16s(x.data(), y.data(), 4, &s));
    EXPECT_EQ(Samples(4, 7), y);
    EXPECT_EQ(Words(4, 7), w);
}

} // namespace
