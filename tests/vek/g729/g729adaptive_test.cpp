// Adaptive codebook of G.729 against its definition.
#include "lp_reference.h"
#include "veksc.h"

#include <cmath>

namespace {

using lpref::step;

const int sinc[31] = {29443, 25207, 14701, 3143, -4402, -5850, -2783, 1211, 3130, 2259, 0,
                      -1652, -1666, -464,  756,  1099,  550,   -245,  -634, -451, 0,    308,
                      296,   78,    -120,  -165, -79,   34,    91,    70,   0};

// The vector at x[at..at+39], each sample from those before it.
template <class T, class Value>
void predict(std::vector<T>& x, size_t at, int delay, int fraction, Value value) {
    const int third = fraction > 0 ? 2 : -fraction;
    const size_t back = static_cast<size_t>(fraction > 0 ? delay + 1 : delay);
    for (size_t n = at; n < at + 40; ++n) {
        std::vector<std::pair<T, int>> products;
        for (size_t i = 0; i < 10; ++i) {
            products.emplace_back(x[n - back - i], sinc[static_cast<size_t>(third) + 3 * i]);
            products.emplace_back(x[n - back + 1 + i], sinc[3 - static_cast<size_t>(third) + 3 * i]);
        }
        x[n] = value(products);
    }
}

TEST(VekDecodeAdaptiveVector, EqualsTheDefinitionForAllDelays) {
    atEveryLevel([] {
        std::mt19937 random(9);
        for (int16_t delay = 0; delay <= 143; ++delay) {
            for (int16_t fraction = -1; fraction <= 1; ++fraction) {
                const int level = delay % 2 == 0 ? 32767 : 12000;
                const Samples x = noise(random, 205, -level, level);
                Samples want = x;
                predict(want, 154, delay, fraction, [](const std::vector<std::pair<int16_t, int>>& products) {
                    int64_t sum = 0;
                    for (const auto& [sample, tap] : products) {
                        sum = step(sum, sample, tap, 1);
                    }
                    return lpref::upperRounded(sum, 0);
                });
                const int16_t at[] = {delay, fraction};
                Samples y = x;
                ASSERT_EQ(vekStsNoErr, veksDecodeAdaptiveVector_G729_16s_I(at, y.data()));
                ASSERT_EQ(want, y) << delay << " " << fraction;
                Samples z = x;
                Samples copy(40);
                ASSERT_EQ(vekStsNoErr, veksDecodeAdaptiveVector_G729_16s(at, z.data(), copy.data()));
                ASSERT_EQ(want, z);
                ASSERT_EQ(Samples(want.begin() + 154, want.begin() + 194), copy);
            }
        }
    });
}

TEST(VekDecodeAdaptiveVector, FloatFormIsTheSameSumInFloatingPoint) {
    atEveryLevel([] {
        std::mt19937 random(10);
        std::uniform_real_distribution<float> pick(-1, 1);
        for (int delay = 0; delay <= 143; ++delay) {
            for (int fraction = -1; fraction <= 1; ++fraction) {
                const size_t at = static_cast<size_t>(delay) + 10;
                std::vector<float> x(at + 51);
                for (float& v : x) {
                    v = pick(random);
                }
                std::vector<float> want = x;
                predict(want, at, delay, fraction, [](const std::vector<std::pair<float, int>>& products) {
                    double sum = 0;
                    for (const auto& [sample, tap] : products) {
                        sum += double{sample} * tap / 32768;
                    }
                    return static_cast<float>(sum);
                });
                const int32_t lag[] = {delay, fraction};
                ASSERT_EQ(vekStsNoErr, veksDecodeAdaptiveVector_G729_32f_I(lag, x.data() + at));
                for (size_t i = 0; i < x.size(); ++i) {
                    ASSERT_NEAR(want[i], x[i], 1e-4 * std::max(1.0F, std::abs(want[i]))) << delay << " " << fraction;
                }
            }
        }
    });
}

TEST(VekDecodeAdaptiveVector, RefusesNullAndDelaysOutOfRange) {
    Samples x(205, 3);
    Samples y(40);
    std::vector<float> f(205, 3);
    const Samples before = x;
    const int16_t good[] = {40, 0};
    const int32_t goodFloat[] = {40, 0};
    expectNullsRefused(veksDecodeAdaptiveVector_G729_16s_I, good, x.data());
    expectNullsRefused(veksDecodeAdaptiveVector_G729_16s, good, x.data(), y.data());
    expectNullsRefused(veksDecodeAdaptiveVector_G729_32f_I, goodFloat, f.data() + 154);
    for (const auto& [delay, fraction] : {std::pair{-1, 0}, {144, 0}, {40, 2}, {40, -2}}) {
        const int16_t bad[] = {static_cast<int16_t>(delay), static_cast<int16_t>(fraction)};
        const int32_t badFloat[] = {delay, fraction};
        EXPECT_EQ(vekStsRangeErr, veksDecodeAdaptiveVector_G729_16s_I(bad, x.data()));
        EXPECT_EQ(vekStsRangeErr, veksDecodeAdaptiveVector_G729_16s(bad, x.data(), y.data()));
        EXPECT_EQ(vekStsRangeErr, veksDecodeAdaptiveVector_G729_32f_I(badFloat, f.data() + 154));
    }
    EXPECT_EQ(before, x);
}

Samples unitResponse() {
    Samples h(40);
    h[0] = 4096;
    return h;
}

TEST(VekAdaptiveCodebookSearch, FindsTheDelayThatMadeTheTargetAndLeavesItsVector) {
    atEveryLevel([] {
        std::mt19937 random(11);
        for (const auto search : {veksAdaptiveCodebookSearch_G729_16s, veksAdaptiveCodebookSearch_G729A_16s}) {
            for (int16_t delay = 52; delay <= 140; delay = static_cast<int16_t>(delay + 11)) {
                for (int16_t sub = 0; sub <= 1; ++sub) {
                    Samples x = noise(random, 194, -3000, 3000);
                    const int16_t at[] = {delay, static_cast<int16_t>(delay < 85 ? delay % 3 - 1 : 0)};
                    Samples target(40);
                    Samples made = x;
                    ASSERT_EQ(vekStsNoErr, veksDecodeAdaptiveVector_G729_16s(at, made.data(), target.data()));
                    int16_t got[2] = {};
                    Samples vector(40);
                    const auto open = static_cast<int16_t>(delay + 2);
                    ASSERT_EQ(vekStsNoErr,
                              search(open, target.data(), unitResponse().data(), x.data(), got, vector.data(), sub));
                    EXPECT_EQ(at[0], got[0]);
                    EXPECT_EQ(at[1], got[1]);
                    EXPECT_EQ(target, vector);
                    EXPECT_EQ(made, x);
                }
            }
        }
    });
}

TEST(VekAdaptiveCodebookSearch, RefusesNullAndValuesOutOfRange) {
    const Samples h = unitResponse();
    Samples x(194, 5);
    const Samples before = x;
    int16_t at[2] = {7, 7};
    Samples v(40);
    for (const auto search : {veksAdaptiveCodebookSearch_G729_16s, veksAdaptiveCodebookSearch_G729A_16s}) {
        expectNullsRefused(search, 60, h.data(), h.data(), x.data(), at, v.data(), 0);
        EXPECT_EQ(vekStsRangeErr, search(18, h.data(), h.data(), x.data(), at, v.data(), 0));
        EXPECT_EQ(vekStsRangeErr, search(145, h.data(), h.data(), x.data(), at, v.data(), 0));
        EXPECT_EQ(vekStsRangeErr, search(60, h.data(), h.data(), x.data(), at, v.data(), 2));
    }
    EXPECT_EQ(before, x);
    EXPECT_EQ(7, at[0]);
}

TEST(VekAdaptiveCodebookGain, IsTheQuotientOfProductsWithinItsBounds) {
    const Samples lpc = {4096, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    std::mt19937 random(12);
    for (const int level : {20, 500, 15000}) {
        const Samples v = noise(random, 40, -level, level);
        for (const int percent : {0, 30, 100, 115, 150, -50}) {
            Samples target(40);
            for (size_t i = 0; i < 40; ++i) {
                target[i] = static_cast<int16_t>(lpref::clip(v[i] * percent / 100, 16));
            }
            Samples y(40);
            int16_t gain = -1;
            const double want = std::min(std::max(percent / 100.0, 0.0), 1.2);
            ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookGain_G729_16s(target.data(), unitResponse().data(), v.data(),
                                                                     y.data(), &gain));
            EXPECT_EQ(v, y);
            EXPECT_NEAR(want, gain / 16384.0, 0.06);
            gain = -1;
            ASSERT_EQ(vekStsNoErr,
                      veksAdaptiveCodebookGain_G729A_16s(target.data(), lpc.data(), v.data(), y.data(), &gain));
            EXPECT_EQ(v, y);
            EXPECT_NEAR(want, gain / 16384.0, 0.06);
        }
    }
    int16_t gain = -1;
    EXPECT_EQ(vekStsNullPtrErr, veksAdaptiveCodebookGain_G729_16s(nullptr, lpc.data(), lpc.data(), nullptr, &gain));
    EXPECT_EQ(vekStsNullPtrErr, veksAdaptiveCodebookGain_G729A_16s(nullptr, lpc.data(), lpc.data(), nullptr, &gain));
}

} // namespace
