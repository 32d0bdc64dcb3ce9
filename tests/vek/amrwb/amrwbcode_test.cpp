// Codebooks and gains of AMR-WB: literal cases, what must hold of them, and refusals.
#include <cmath>
#include <limits>

#include "checksum.h"
#include "lp_reference.h"
#include "veksc.h"

namespace {

constexpr VekSpchBitRate rates[] = {VEK_SPCHBR_6600,  VEK_SPCHBR_8850,  VEK_SPCHBR_12650, VEK_SPCHBR_14250,
                                    VEK_SPCHBR_15850, VEK_SPCHBR_18250, VEK_SPCHBR_19850, VEK_SPCHBR_23050,
                                    VEK_SPCHBR_23850, VEK_SPCHBR_DTX};

struct Search {
    Samples target;
    Samples residual;
    Samples h;
    Samples vector = Samples(64, 7);
    Samples filtered = Samples(64, 7);
    Samples words = Samples(8, 7);

    explicit Search(std::mt19937& random)
        : target(noise(random, 64, -2048, 2048)), residual(noise(random, 64, -2048, 2048)),
          h(noise(random, 64, -2048, 2048)) {
        for (int i = 0; i < 64; ++i) {
            h[i] = static_cast<int16_t>(h[i] * 6 / (i + 5));
        }
        h[0] = 4096;
    }
    VekStatus run(VekSpchBitRate mode) {
        return veksAlgebraicCodebookSearch_AMRWB_16s(target.data(), residual.data(), h.data(), vector.data(),
                                                     filtered.data(), mode, words.data());
    }
};

int pulsesOf(const Samples& vector, int first, int step) {
    int sum = 0;
    for (size_t i = static_cast<size_t>(first); i < vector.size(); i += static_cast<size_t>(step)) {
        sum += std::abs(vector[i]) / 256;
    }
    return sum;
}

TEST(VekWideAlgebraicSearch, ItsWordsDecodeToItsVector) {
    atEveryLevel([] {
        std::mt19937 random(1);
        for (int round = 0; round < 20; ++round) {
            for (const VekSpchBitRate mode : rates) {
                Search search(random);
                const Samples h = search.h;
                ASSERT_EQ(vekStsNoErr, search.run(mode));
                EXPECT_EQ(h, search.h);
                Samples again(64);
                ASSERT_EQ(vekStsNoErr, veksAlgebraicCodebookDecode_AMRWB_16s(search.words.data(), again.data(), mode));
                // From twelve pulses on a loud response halves the vector.
                const bool halved = pulsesOf(search.vector, 0, 1) < pulsesOf(again, 0, 1);
                for (int16_t& v : search.vector) {
                    v = static_cast<int16_t>(halved ? 2 * v : v);
                }
                ASSERT_EQ(search.vector, again) << mode;
            }
        }
    });
}

TEST(VekWideAlgebraicSearch, LevelsAgree) {
    std::vector<Samples> seen;
    atEveryLevel([&seen] {
        std::mt19937 random(2);
        Samples all;
        for (int round = 0; round < 20; ++round) {
            for (const VekSpchBitRate mode : rates) {
                Search search(random);
                ASSERT_EQ(vekStsNoErr, search.run(mode));
                all.insert(all.end(), search.words.begin(), search.words.end());
                all.insert(all.end(), search.filtered.begin(), search.filtered.end());
            }
        }
        seen.push_back(all);
    });
    ASSERT_GE(seen.size(), 2U);
    for (const Samples& one : seen) {
        EXPECT_EQ(seen.front(), one);
    }
}

// Where sums saturate no property tells one vector from another.
TEST(VekWideAlgebraicSearch, PulsesForResponsesOfFullScaleAreWhatTheyWere) {
    atEveryLevel([] {
        std::mt19937 random(9);
        CheckSum sum;
        for (size_t round = 0; round < 60; ++round) {
            for (const VekSpchBitRate mode : rates) {
                Search search(random);
                for (size_t i = 0; i < 64; ++i) {
                    const bool high = round % 2 == 0 ? i % 2 == 0 : (i * 4999 + round * 31) % 7 < 3;
                    search.h[i] = i >= 4 + round ? int16_t{0} : high ? int16_t{32767} : int16_t{-32768};
                }
                ASSERT_EQ(vekStsNoErr, search.run(mode));
                sum.add(search.words.data(), search.words.size() * sizeof(int16_t));
            }
        }
        EXPECT_EQ(0x9f1040550a4e6315U, sum.value());
    });
}

TEST(VekWideAlgebraicSearch, HasThePulsesOfTheRateOnEachTrack) {
    constexpr int pulses[][4] = {{2, 2, 2, 2}, {3, 3, 2, 2}};
    std::mt19937 random(3);
    for (int i = 0; i < 2; ++i) {
        Search search(random);
        ASSERT_EQ(vekStsNoErr, search.run(i == 0 ? VEK_SPCHBR_12650 : VEK_SPCHBR_14250));
        Samples decoded(64);
        ASSERT_EQ(vekStsNoErr, veksAlgebraicCodebookDecode_AMRWB_16s(search.words.data(), decoded.data(),
                                                                     i == 0 ? VEK_SPCHBR_12650 : VEK_SPCHBR_14250));
        for (int t = 0; t < 4; ++t) {
            EXPECT_EQ(2 * pulses[i][t], pulsesOf(decoded, t, 4)) << t;
        }
    }
}

TEST(VekWideAlgebraicSearch, FindsThePulsesThatMadeTheTarget) {
    std::mt19937 random(4);
    Search search(random);
    std::fill(search.h.begin(), search.h.end(), int16_t{0});
    search.h[0] = 4096;
    search.h[1] = 1024;
    std::fill(search.target.begin(), search.target.end(), int16_t{0});
    search.target[6] = 3000;
    search.target[7] = 750;
    search.target[29] = -3000;
    search.target[30] = -750;
    search.residual = search.target;
    ASSERT_EQ(vekStsNoErr, search.run(VEK_SPCHBR_6600));
    Samples vector(64);
    vector[6] = 512;
    vector[29] = -512;
    EXPECT_EQ(vector, search.vector);
    EXPECT_EQ((3 << 6) + 32 + 14, search.words[0]);
    Samples filtered(64);
    filtered[6] = 512;
    filtered[7] = 128;
    filtered[29] = -512;
    filtered[30] = -128;
    EXPECT_EQ(filtered, search.filtered);
}

TEST(VekWideAlgebraicSearch, TheFilteredVectorIsTheVectorThroughTheResponse) {
    std::mt19937 random(5);
    for (const VekSpchBitRate mode : {VEK_SPCHBR_6600, VEK_SPCHBR_8850, VEK_SPCHBR_12650, VEK_SPCHBR_14250}) {
        Search search(random);
        ASSERT_EQ(vekStsNoErr, search.run(mode));
        for (int n = 0; n < 64; ++n) {
            int sum = 0;
            for (int i = 0; i <= n; ++i) {
                sum += search.vector[i] / 512 * search.h[n - i];
            }
            EXPECT_EQ((sum + 4) >> 3, search.filtered[n]) << mode << ' ' << n;
        }
    }
}

// From twelve pulses on, above an energy of 2: the vector has halves then.
TEST(VekWideAlgebraicSearch, HalvesResponsesWithAnEnergyAboveTwo) {
    for (size_t rate = 0; rate < std::size(rates); ++rate) {
        std::mt19937 random(8);
        Search search(random);
        const auto smallest = [&search, rate] {
            int least = 32767;
            EXPECT_EQ(vekStsNoErr, search.run(rates[rate]));
            for (const int16_t v : search.vector) {
                least = v != 0 ? std::min(least, std::abs(v)) : least;
            }
            return least;
        };
        std::fill(search.h.begin(), search.h.end(), int16_t{0});
        search.h[0] = search.h[1] = 4096;
        EXPECT_EQ(512, smallest()) << rates[rate];
        search.h[2] = 181;
        EXPECT_EQ(512, smallest()) << rates[rate];
        search.h[3] = 181;
        EXPECT_EQ(rate < 4 ? 512 : 256, smallest()) << rates[rate];
    }
}

TEST(VekWideAlgebraicSearch, LoudAndSilentInputsStayWithinTheirWords) {
    constexpr int pulses[] = {2, 4, 8, 10, 12, 16, 18, 24, 24, 24};
    for (size_t rate = 0; rate < std::size(rates); ++rate) {
        const VekSpchBitRate mode = rates[rate];
        for (const int16_t level : {int16_t{0}, int16_t{32767}, int16_t{-32768}}) {
            std::mt19937 random(6);
            Search search(random);
            std::fill(search.target.begin(), search.target.end(), level);
            std::fill(search.residual.begin(), search.residual.end(), level);
            std::fill(search.h.begin(), search.h.end(), level);
            ASSERT_EQ(vekStsNoErr, search.run(mode));
            Samples again(64);
            ASSERT_EQ(vekStsNoErr, veksAlgebraicCodebookDecode_AMRWB_16s(search.words.data(), again.data(), mode));
            EXPECT_EQ(2 * pulses[rate], pulsesOf(again, 0, 1)) << mode << ' ' << level;
        }
    }
}

TEST(VekWideAlgebraicSearch, RefusesWhatItCannotDo) {
    std::mt19937 random(7);
    Search search(random);
    EXPECT_EQ(vekStsBitRateErr, search.run(VEK_SPCHBR_12200));
    expectNullsRefused(veksAlgebraicCodebookSearch_AMRWB_16s, search.target.data(), search.residual.data(),
                       search.h.data(), search.vector.data(), search.filtered.data(), VEK_SPCHBR_6600,
                       search.words.data());
    EXPECT_EQ(Samples(64, 7), search.vector);
    EXPECT_EQ(Samples(64, 7), search.filtered);
    EXPECT_EQ(Samples(8, 7), search.words);
    EXPECT_EQ(vekStsBitRateErr,
              veksAlgebraicCodebookDecode_AMRWB_16s(search.words.data(), search.vector.data(), VEK_SPCHBR_12200));
    EXPECT_EQ(vekStsNullPtrErr, veksAlgebraicCodebookDecode_AMRWB_16s(nullptr, search.vector.data(), VEK_SPCHBR_6600));
    EXPECT_EQ(Samples(64, 7), search.vector);
}

TEST(VekWideAlgebraicDecode, PutsPulsesWhereTheWordsSay) {
    Samples words(8);
    Samples code(64);
    words[0] = 5;
    words[1] = 16 + 2;
    ASSERT_EQ(vekStsNoErr, veksAlgebraicCodebookDecode_AMRWB_16s(words.data(), code.data(), VEK_SPCHBR_8850));
    Samples want(64);
    want[20] = 512;
    want[9] = -512;
    want[2] = 512;
    want[3] = 512;
    EXPECT_EQ(want, code);
}

struct Adaptive {
    std::vector<int64_t> memory = std::vector<int64_t>(32);
    VekAdaptiveCodebookState_AMRWB* state = reinterpret_cast<VekAdaptiveCodebookState_AMRWB*>(memory.data());
    Samples exc = Samples(505, 3);
    Samples x = Samples(64, 100);
    Samples h = Samples(64, 100);
    int16_t open[2] = {40, 50};
    int16_t bounds[2] = {50, 65};
    int16_t lag = -1;
    int16_t fraction = -1;
    int16_t index = -1;

    Adaptive() { EXPECT_EQ(vekStsNoErr, veksAdaptiveCodebookDecodeInit_AMRWB_16s(state)); }
    VekStatus decode(int code, int subframe, int bfi = 0, int lost = 0, VekSpchBitRate mode = VEK_SPCHBR_12650) {
        return veksAdaptiveCodebookDecode_AMRWB_16s(code, &fraction, exc.data() + 248, &lag, bounds, subframe, bfi,
                                                    lost, mode, state);
    }
    VekStatus search(int subframe, VekSpchBitRate mode = VEK_SPCHBR_12650) {
        return veksAdaptiveCodebookSearch_AMRWB_16s(x.data(), h.data(), open, &lag, bounds, exc.data() + 248, &fraction,
                                                    &index, subframe, mode);
    }
};

TEST(VekWideAdaptiveDecode, CopiesThePastAtAWholeLagAndSetsTheBounds) {
    Adaptive a;
    for (size_t i = 0; i < 248; ++i) {
        a.exc[i] = static_cast<int16_t>(4 * i);
    }
    ASSERT_EQ(vekStsNoErr, a.decode(4 * (100 - 34), 0));
    EXPECT_EQ(100, a.lag);
    EXPECT_EQ(0, a.fraction);
    EXPECT_EQ(92, a.bounds[0]);
    EXPECT_EQ(107, a.bounds[1]);
    for (size_t i = 0; i < 65; ++i) {
        EXPECT_NEAR(4 * (148.0 + static_cast<double>(i)), a.exc[248 + i], 1.0);
    }
    EXPECT_EQ(3, a.exc[313]);
    ASSERT_EQ(vekStsNoErr, a.decode(9, 1));
    EXPECT_EQ(94, a.lag);
    EXPECT_EQ(1, a.fraction);
}

// What is decoded in place of a lag after five that had one gain each.
int lagInPlaceOf(int lost, int unusable, std::initializer_list<int> lags, int16_t gain) {
    Adaptive a;
    for (const int lag : lags) {
        EXPECT_EQ(vekStsNoErr, a.decode(4 * (lag - 34), 0));
        EXPECT_EQ(vekStsNoErr, veksAdaptiveCodebookDecodeGain_AMRWB_16s(gain, a.state));
    }
    EXPECT_EQ(vekStsNoErr, a.decode(4 * (lost - 34), 0, 1, unusable));
    return a.lag;
}

TEST(VekWideAdaptiveDecode, AStrongHistoryReplacesALostLag) {
    EXPECT_EQ(60, lagInPlaceOf(110, 1, {60, 60, 60, 60, 60}, 12000));
    EXPECT_EQ(64, lagInPlaceOf(110, 1, {60, 61, 62, 63, 64}, 12000));
    EXPECT_EQ(63, lagInPlaceOf(110, 1, {60, 61, 62, 63, 64}, 0));
    EXPECT_EQ(120, lagInPlaceOf(109, 1, {40, 60, 80, 100, 120}, 12000));
}

TEST(VekWideAdaptiveDecode, AUsableLagOfABadFrameStaysWhereItFitsTheHistory) {
    EXPECT_EQ(66, lagInPlaceOf(66, 0, {60, 61, 62, 63, 64}, 12000));
    EXPECT_EQ(64, lagInPlaceOf(110, 0, {60, 61, 62, 63, 64}, 12000));
    EXPECT_EQ(63, lagInPlaceOf(110, 0, {60, 61, 62, 63, 64}, 0));
}

TEST(VekWideAdaptiveDecode, InterpolatesAtQuarters) {
    for (int quarter = 1; quarter < 4; ++quarter) {
        Adaptive a;
        for (size_t i = 0; i < 248; ++i) {
            a.exc[i] = static_cast<int16_t>(4 * i);
        }
        ASSERT_EQ(vekStsNoErr, a.decode(4 * (100 - 34) + quarter, 0));
        EXPECT_EQ(592 - quarter, a.exc[248]);
        EXPECT_EQ(596 - quarter, a.exc[249]);
    }
}

// Index, subframe, rate, and what they stand for with a first lag of 50.
TEST(VekWideAdaptiveDecode, IndicesTellQuartersHalvesAndWholesByRateAndSubframe) {
    struct Case {
        int index, subframe;
        VekSpchBitRate mode;
        int lag, fraction;
    };
    constexpr Case cases[] = {
        {375, 0, VEK_SPCHBR_12650, 127, 3}, {376, 0, VEK_SPCHBR_12650, 128, 0}, {377, 2, VEK_SPCHBR_12650, 128, 2},
        {439, 0, VEK_SPCHBR_12650, 159, 2}, {440, 0, VEK_SPCHBR_12650, 160, 0}, {511, 2, VEK_SPCHBR_12650, 231, 0},
        {63, 1, VEK_SPCHBR_12650, 65, 3},   {9, 3, VEK_SPCHBR_23850, 52, 1},    {1, 0, VEK_SPCHBR_8850, 34, 2},
        {115, 0, VEK_SPCHBR_8850, 91, 2},   {116, 2, VEK_SPCHBR_8850, 92, 0},   {255, 0, VEK_SPCHBR_6600, 231, 0},
        {9, 1, VEK_SPCHBR_8850, 54, 2},     {31, 2, VEK_SPCHBR_6600, 65, 2},    {31, 2, VEK_SPCHBR_8850, 49, 2},
    };
    for (const Case& c : cases) {
        Adaptive a;
        ASSERT_EQ(vekStsNoErr, a.decode(c.index, c.subframe, 0, 0, c.mode));
        EXPECT_EQ(c.lag, a.lag) << c.index;
        EXPECT_EQ(c.fraction, a.fraction) << c.index;
    }
}

TEST(VekWideAdaptiveSearch, CountsFromTheFirstLagInTheRelativeSubframes) {
    struct Case {
        VekSpchBitRate mode;
        int subframe, index;
    };
    constexpr Case cases[] = {{VEK_SPCHBR_12650, 1, 4 * 7},
                              {VEK_SPCHBR_12650, 3, 4 * 7},
                              {VEK_SPCHBR_8850, 1, 2 * 7},
                              {VEK_SPCHBR_6600, 2, 2 * 7}};
    std::mt19937 random(18);
    for (const Case& c : cases) {
        Adaptive a;
        a.exc = noise(random, 505, -3000, 3000);
        a.h = Samples(64);
        a.h[0] = 32767;
        // A whole period after a lag below the subframe's length.
        for (size_t i = 0; i < 64; ++i) {
            a.exc[248 + i] = a.exc[248 - 57 + i];
            a.x[i] = a.exc[248 + i];
        }
        ASSERT_EQ(vekStsNoErr, a.search(c.subframe, c.mode));
        EXPECT_EQ(57, a.lag) << c.mode;
        EXPECT_EQ(0, a.fraction) << c.mode;
        EXPECT_EQ(c.index, a.index) << c.mode;
        EXPECT_EQ(50, a.bounds[0]) << c.mode;
    }
}

TEST(VekWideAdaptiveSearch, FindsTheLagThatMadeTheTarget) {
    atEveryLevel([] {
        std::mt19937 random(8);
        for (const VekSpchBitRate mode : rates) {
            Adaptive a;
            a.exc = noise(random, 505, -3000, 3000);
            a.h = Samples(64);
            a.h[0] = 32767;
            for (size_t i = 0; i < 64; ++i) {
                a.x[i] = a.exc[248 - 83 + i];
            }
            ASSERT_EQ(vekStsNoErr, a.search(0, mode));
            EXPECT_EQ(83, a.lag);
            EXPECT_EQ(0, a.fraction);
            EXPECT_EQ(75, a.bounds[0]);
            EXPECT_EQ(mode == VEK_SPCHBR_6600 || mode == VEK_SPCHBR_8850 ? 2 * (83 - 34) : 4 * (83 - 34), a.index);
        }
    });
}

TEST(VekWideAdaptiveCodebook, RefusesWhatItCannotDo) {
    Adaptive a;
    const Samples before = a.exc;
    EXPECT_EQ(vekStsRangeErr, a.decode(-1, 0));
    EXPECT_EQ(vekStsRangeErr, a.decode(512, 0));
    EXPECT_EQ(vekStsRangeErr, a.decode(64, 1));
    EXPECT_EQ(vekStsRangeErr, a.decode(256, 0, 0, 0, VEK_SPCHBR_8850));
    EXPECT_EQ(vekStsRangeErr, a.decode(32, 2, 0, 0, VEK_SPCHBR_6600));
    EXPECT_EQ(vekStsRangeErr, a.decode(0, 4));
    EXPECT_EQ(vekStsRangeErr, a.decode(0, 0, 2));
    EXPECT_EQ(vekStsRangeErr, a.decode(0, 0, 1, -1));
    EXPECT_EQ(vekStsBitRateErr, a.decode(0, 0, 0, 0, VEK_SPCHBR_4750));
    EXPECT_EQ(vekStsRangeErr, a.search(4));
    EXPECT_EQ(vekStsRangeErr, a.search(-1));
    EXPECT_EQ(vekStsBitRateErr, a.search(0, VEK_SPCHBR_4750));
    EXPECT_EQ(vekStsNullPtrErr,
              veksAdaptiveCodebookSearch_AMRWB_16s(a.x.data(), nullptr, a.open, &a.lag, a.bounds, a.exc.data() + 248,
                                                   &a.fraction, &a.index, 0, VEK_SPCHBR_6600));
    a.state = nullptr;
    EXPECT_EQ(vekStsNullPtrErr, a.decode(0, 0));
    EXPECT_EQ(before, a.exc);
    EXPECT_EQ(-1, a.lag);
    EXPECT_EQ(-1, a.fraction);
    EXPECT_EQ(-1, a.index);
    EXPECT_EQ(50, a.bounds[0]);
    EXPECT_EQ(vekStsNullPtrErr, veksAdaptiveCodebookDecodeGetSize_AMRWB_16s(nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksAdaptiveCodebookDecodeInit_AMRWB_16s(nullptr));
    EXPECT_EQ(vekStsNullPtrErr, veksAdaptiveCodebookDecodeGain_AMRWB_16s(1, nullptr));
}

} // namespace
