// Correlation matrix of the fixed codebook search and the phase dispersion of Annex D.
#include "lp_reference.h"
#include "veksc.h"

namespace {

// Doubled products, each step saturating, with the terms from the response's beginning on.
int64_t phi(const Samples& h, int i, int j) {
    int64_t s = 0;
    const int d = std::abs(i - j);
    for (int m = 0; m + std::max(i, j) < 40; m++) {
        s = lpref::step(s, h[m], h[m + d], 1);
    }
    return s;
}

Samples scaledResponse(const Samples& h) {
    const int64_t energy = phi(h, 0, 0);
    Samples r = h;
    if (energy >> 16 > 32000) {
        for (int16_t& e : r) {
            e = static_cast<int16_t>(e >> 1);
        }
        return r;
    }
    for (int64_t e = energy; e > 0 && e * 4 < (int64_t{1} << 31); e *= 4) {
        for (int16_t& v : r) {
            v = static_cast<int16_t>(v * 2);
        }
    }
    return r;
}

template <class Value>
std::vector<Value> inOrder(Value (*at)(const Samples&, int, int), const Samples& h) {
    std::vector<Value> v;
    for (int t = 0; t < 5; t++) {
        for (int k = 0; k < 8; k++) {
            v.push_back(at(h, 5 * k + t, 5 * k + t));
        }
    }
    const int pairs[9][2] = {{0, 1}, {0, 2}, {0, 3}, {0, 4}, {1, 2}, {1, 3}, {1, 4}, {2, 3}, {2, 4}};
    for (const auto& p : pairs) {
        for (int k = 0; k < 8; k++) {
            for (int l = 0; l < 8; l++) {
                v.push_back(at(h, 5 * k + p[0], 5 * l + p[1]));
            }
        }
    }
    return v;
}

int32_t whole(const Samples& h, int i, int j) {
    return static_cast<int32_t>(phi(h, i, j));
}

int16_t upper(const Samples& h, int i, int j) {
    return static_cast<int16_t>(phi(h, i, j) >> 16);
}

float inFloat(const Samples& h, int i, int j) {
    float s = 0.0f;
    for (int n = std::max(i, j); n < 40; n++) {
        s += static_cast<float>(h[n - i]) * static_cast<float>(h[n - j]);
    }
    return s;
}

TEST(VekToeplizMatrix, EqualsTheTextbookInTheOrderOfTheSearches) {
    atEveryLevel([] {
        std::mt19937 random(21);
        for (const int size : {1, 50, 700, 4096, 20000, 32767}) {
            for (int round = 0; round < 4; round++) {
                const Samples h = noise(random, 40, -size - 1, size);
                const Samples s = scaledResponse(h);
                std::vector<int32_t> wide(616);
                Samples narrow(616);
                ASSERT_EQ(vekStsNoErr, veksToeplizMatrix_G729_16s32s(h.data(), wide.data()));
                ASSERT_EQ(vekStsNoErr, veksToeplizMatrix_G729_16s(h.data(), narrow.data()));
                ASSERT_EQ(inOrder(whole, s), wide) << size;
                ASSERT_EQ(inOrder(upper, s), narrow) << size;
            }
        }
    });
}

TEST(VekToeplizMatrix, SaturatesWhereHalvingIsNotEnough) {
    atEveryLevel([] {
        for (const int level : {32767, -32768}) {
            const Samples h(40, static_cast<int16_t>(level));
            std::vector<int32_t> wide(616);
            Samples narrow(616);
            ASSERT_EQ(vekStsNoErr, veksToeplizMatrix_G729_16s32s(h.data(), wide.data()));
            ASSERT_EQ(vekStsNoErr, veksToeplizMatrix_G729_16s(h.data(), narrow.data()));
            EXPECT_EQ(INT32_MAX, wide[0]);
            EXPECT_EQ(inOrder(whole, scaledResponse(h)), wide);
            EXPECT_EQ(inOrder(upper, scaledResponse(h)), narrow);
        }
    });
}

TEST(VekToeplizMatrix, OfZerosIsZeros) {
    const Samples h(40, 0);
    Samples narrow(616, 1);
    ASSERT_EQ(vekStsNoErr, veksToeplizMatrix_G729_16s(h.data(), narrow.data()));
    EXPECT_EQ(Samples(616, 0), narrow);
}

TEST(VekToeplizMatrix, FloatFormHoldsThePlainSums) {
    atEveryLevel([] {
        std::mt19937 random(22);
        const Samples h = noise(random, 40, -100, 100); // the sums are exact in 24 bits
        const std::vector<float> source(h.begin(), h.end());
        std::vector<float> y(616);
        ASSERT_EQ(vekStsNoErr, veksToeplizMatrix_G729_32f(source.data(), y.data()));
        EXPECT_EQ(inOrder(inFloat, h), y);
    });
}

TEST(VekToeplizMatrix, RefusesNull) {
    int16_t h[40] = {};
    int16_t y[616];
    int32_t w[616];
    float f[616] = {};
    expectNullsRefused(veksToeplizMatrix_G729_16s, h, y);
    expectNullsRefused(veksToeplizMatrix_G729_16s32s, h, w);
    expectNullsRefused(veksToeplizMatrix_G729_32f, f, f);
}

// A state after Init, and one call with an impulse of 1.0 in Q13 at the given place.
struct Dispersion {
    Dispersion() {
        int size = 0;
        EXPECT_EQ(vekStsNoErr, veksPhaseDispersionGetStateSize_G729D_16s(&size));
        state.resize(static_cast<size_t>(size));
        EXPECT_EQ(vekStsNoErr, veksPhaseDispersionInit_G729D_16s(state.data()));
    }

    Samples impulseResponse(int codebookGain, int pitchGain, int place = 0) {
        Samples innovation(40, 0);
        innovation[place] = 8192;
        const Samples excitation(40, 0);
        out.assign(40, 0);
        EXPECT_EQ(vekStsNoErr,
                  veksPhaseDispersion_G729D_16s(excitation.data(), out.data(), static_cast<int16_t>(codebookGain),
                                                static_cast<int16_t>(pitchGain), innovation.data(), state.data()));
        return innovation;
    }

    std::vector<int16_t> state;
    Samples out;
};

// One that six subframes with a high gain have made forget weak ones.
struct SettledDispersion : Dispersion {
    SettledDispersion() {
        for (int i = 0; i < 6; i++) {
            impulseResponse(0, 16384);
        }
    }
};

constexpr int kStrongHead = 3672; // 14690 / 4
constexpr int kMildHead = 7568;   // 30274 / 4
constexpr int kNoneHead = 8191;

TEST(VekPhaseDispersion, ChoosesTheFilterByThePitchGain) {
    SettledDispersion d;
    EXPECT_EQ(kNoneHead, d.impulseResponse(0, 14745)[0]);
    EXPECT_EQ(kMildHead, d.impulseResponse(0, 14744)[0]);
    EXPECT_EQ(kMildHead, d.impulseResponse(0, 9830)[0]);
    EXPECT_EQ(kStrongHead, d.impulseResponse(0, 9829)[0]);
}

TEST(VekPhaseDispersion, RisesByOneStepASubframeOnly) {
    SettledDispersion d;
    EXPECT_EQ(kStrongHead, d.impulseResponse(0, 0)[0]);
    EXPECT_EQ(kMildHead, d.impulseResponse(0, 16384)[0]);
    EXPECT_EQ(kNoneHead, d.impulseResponse(0, 16384)[0]);
}

TEST(VekPhaseDispersion, ThreeWeakGainsAmongSixMeanStrongDispersion) {
    SettledDispersion d;
    for (int i = 0; i < 3; i++) {
        d.impulseResponse(0, 9000);
    }
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(kStrongHead, d.impulseResponse(0, 16384)[0]) << i;
    }
    EXPECT_EQ(kMildHead, d.impulseResponse(0, 16384)[0]);
}

TEST(VekPhaseDispersion, AnOnsetWeakensItForTwoSubframes) {
    Dispersion d;
    d.impulseResponse(1000, 0);
    d.impulseResponse(1000, 0);
    d.impulseResponse(1000, 0);
    EXPECT_EQ(kStrongHead, d.impulseResponse(2001, 0)[0]); // half of it is not above the gain before
    EXPECT_EQ(kMildHead, d.impulseResponse(4004, 0)[0]);   // here it is
    EXPECT_EQ(kMildHead, d.impulseResponse(4004, 0)[0]);
    EXPECT_EQ(kStrongHead, d.impulseResponse(4004, 0)[0]);
}

TEST(VekPhaseDispersion, ConvolvesInACircle) {
    Dispersion a;
    Dispersion b;
    for (const int place : {0, 1, 17, 39}) {
        const Samples first = a.impulseResponse(0, 0, 0);
        const Samples moved = b.impulseResponse(0, 0, place);
        for (int k = 0; k < 40; k++) {
            ASSERT_EQ(first[k], moved[(k + place) % 40]) << place << " " << k;
        }
    }
}

TEST(VekPhaseDispersion, ExchangesTheInnovationsShareAtEveryLevel) {
    atEveryLevel([] {
        std::mt19937 random(23);
        for (const int size : {512, 8192, 32767}) {
            Dispersion d;
            d.impulseResponse(0, 0);
            for (int round = 0; round < 10; round++) {
                const Samples excitation = noise(random, 40, -size - 1, size);
                const Samples innovation = noise(random, 40, -size - 1, size);
                Samples dispersed = innovation;
                Samples y(40);
                // Gains that keep the strong filter: no onset, weak pitch.
                const int gain = 32767;
                if (round == 0) {
                    d.impulseResponse(gain, 0);
                    d.impulseResponse(gain, 0);
                    d.impulseResponse(gain, 0);
                }
                Dispersion probe = d;
                Samples filter = probe.impulseResponse(gain, 0);
                ASSERT_EQ(kStrongHead, filter[0]);
                ASSERT_EQ(vekStsNoErr, veksPhaseDispersion_G729D_16s(excitation.data(), y.data(), gain, 0,
                                                                     dispersed.data(), d.state.data()));
                for (int k = 0; k < 40; k++) {
                    const auto share = [&](int v) { return lpref::clip((v * gain + 0x2000) >> 14, 16); };
                    int64_t want = lpref::clip(excitation[k] - share(innovation[k]), 16);
                    want = lpref::clip(want + share(dispersed[k]), 16);
                    ASSERT_EQ(want, y[k]) << k;
                    if (size == 512) {
                        double sum = 0;
                        for (int i = 0; i < 40; i++) {
                            sum += innovation[i] * (filter[(40 + k - i) % 40] / 8192.0);
                        }
                        ASSERT_NEAR(sum, dispersed[k], 45) << k;
                    }
                }
            }
        }
    });
}

TEST(VekPhaseDispersion, LevelsGiveTheSameBitsWhenSumsSaturate) {
    std::vector<Samples> results;
    atEveryLevel([&] {
        std::mt19937 random(24);
        Dispersion d;
        Samples all;
        for (int round = 0; round < 20; round++) {
            Samples x = noise(random, 40, 0, 1);
            for (int16_t& e : x) {
                e = e ? 32767 : -32768;
            }
            Samples y(40);
            ASSERT_EQ(vekStsNoErr,
                      veksPhaseDispersion_G729D_16s(y.data(), y.data(), 30000, 0, x.data(), d.state.data()));
            all.insert(all.end(), x.begin(), x.end());
            all.insert(all.end(), y.begin(), y.end());
        }
        results.push_back(all);
    });
    for (const Samples& r : results) {
        EXPECT_EQ(results[0], r);
    }
    EXPECT_NE(0, std::count(results[0].begin(), results[0].end(), 32767));
}

TEST(VekPhaseDispersion, RefusesNullAndAStateThatWasNotSetUp) {
    int16_t x[40] = {};
    int16_t state[64];
    EXPECT_EQ(vekStsNullPtrErr, veksPhaseDispersionGetStateSize_G729D_16s(nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksPhaseDispersionInit_G729D_16s(nullptr));
    expectNullsRefused(veksPhaseDispersion_G729D_16s, x, x, 0, 0, x, state);
    for (const int16_t never : {0, 1, 2, 0x5555, -1}) {
        std::fill(std::begin(state), std::end(state), never);
        EXPECT_EQ(vekStsStateErr, veksPhaseDispersion_G729D_16s(x, x, 0, 0, x, state)) << never;
    }
}

} // namespace
