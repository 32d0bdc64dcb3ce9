// Codebooks of AMR-WB against independent open codecs. Their step functions are in no public
// header: they are declared here, and the packages' headers tell whether to link.
#include <gtest/gtest.h>

#include "veksc.h"

#if __has_include(<vo-amrwbenc/enc_if.h>) && __has_include(<opencore-amrwb/dec_if.h>)

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

extern "C" {
int16_t Pitch_fr4(int16_t* exc, int16_t* xn, int16_t* h, int16_t first, int16_t last, int16_t* fraction,
                  int16_t subframe, int16_t halves, int16_t wholes, int16_t n);
void voAWB_Pred_lt4(int16_t* exc, int16_t lag, int16_t fraction, int16_t n);
void dec_acelp_2p_in_64(int16_t index, int16_t* code);
void dec_acelp_4p_in_64(int16_t* index, int16_t bits, int16_t* code);
void Pred_lt4(int16_t* exc, int16_t lag, int16_t fraction, int16_t n);
void lagconceal(int16_t* gains, int16_t* lags, int16_t* lag, int16_t* former, int16_t* seed, int16_t lost);
}

namespace {

using Samples = std::vector<int16_t>;

constexpr VekSpchBitRate kRates[] = {VEK_SPCHBR_6600,  VEK_SPCHBR_8850,  VEK_SPCHBR_12650,
                                     VEK_SPCHBR_14250, VEK_SPCHBR_15850, VEK_SPCHBR_18250,
                                     VEK_SPCHBR_19850, VEK_SPCHBR_23050, VEK_SPCHBR_23850};
constexpr int16_t kCodeBits[] = {12, 20, 36, 44, 52, 64, 72, 88, 88};

int pick(std::mt19937& random, int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
}

Samples noise(std::mt19937& random, int n, int low, int high) {
    Samples v(static_cast<size_t>(n));
    for (int16_t& e : v) {
        e = static_cast<int16_t>(pick(random, low, high));
    }
    return v;
}

Samples response(std::mt19937& random, int first) {
    Samples h = noise(random, 64, -first / 2, first / 2);
    for (size_t i = 1; i < 64; ++i) {
        h[i] = static_cast<int16_t>(h[i] * 6 / static_cast<int>(i + 5));
    }
    h[0] = static_cast<int16_t>(first);
    return h;
}

TEST(AmrWbAlgebraicDecodeOracle, HasTheSameVectorsAtAllRates) {
    std::mt19937 random(2);
    for (int round = 0; round < 2000 && !testing::Test::HasFailure(); ++round) {
        for (size_t r = 0; r < 9; ++r) {
            Samples words = noise(random, 8, 0, 16383);
            const int upper = r == 0 ? 4095 : r == 1 ? 31 : r == 2 ? 511 : r <= 4 ? 8191 : r == 5 ? 3 : 2047;
            for (size_t i = 0; i < 4; ++i) {
                const int track = r == 6 ? (i < 2 ? 1023 : 3) : r == 3 && i >= 2 ? 511 : upper;
                const int low = r == 6 ? (i < 2 ? 1023 : 16383) : r >= 7 ? 2047 : 16383;
                words[i] = static_cast<int16_t>(words[i] & track);
                words[i + 4] = static_cast<int16_t>(words[i + 4] & low);
            }
            Samples want(64);
            Samples copy = words;
            if (r == 0) {
                dec_acelp_2p_in_64(copy[0], want.data());
            } else {
                dec_acelp_4p_in_64(copy.data(), kCodeBits[r], want.data());
            }
            Samples got(64);
            ASSERT_EQ(vekStsNoErr, veksAlgebraicCodebookDecode_AMRWB_16s(words.data(), got.data(), kRates[r]));
            EXPECT_EQ(want, got) << "rate " << r;
        }
    }
}

TEST(AmrWbAdaptiveSearchOracle, HasTheSameLagIndexAndVector) {
    std::mt19937 random(3);
    for (int round = 0; round < 200 && !testing::Test::HasFailure(); ++round) {
        for (size_t r = 0; r < 9; ++r) {
            int first = 0;
            int16_t bounds[2] = {};
            for (int subframe = 0; subframe < 4; ++subframe) {
                Samples h = response(random, 24000);
                Samples x = noise(random, 64, -(8 << round % 10), 8 << round % 10);
                Samples exc = noise(random, 505, -(8 << round % 10), 8 << round % 10);
                Samples theirs = exc;
                const int16_t open[2] = {static_cast<int16_t>(pick(random, 17, 115)),
                                         static_cast<int16_t>(pick(random, 17, 115))};
                const bool coarse = r < 2;
                const bool relative = subframe % 2 == 1 || (subframe == 2 && r == 0);
                if (!relative) {
                    first = std::min(std::max(2 * open[subframe / 2] - 8, 34), 216);
                }
                int16_t fraction = 0;
                const int lag = Pitch_fr4(theirs.data() + 248, x.data(), h.data(), static_cast<int16_t>(first),
                                          static_cast<int16_t>(first + 15), &fraction, relative ? 64 : 0,
                                          coarse ? 34 : 128, coarse ? 92 : 160, 64);
                voAWB_Pred_lt4(theirs.data() + 248, static_cast<int16_t>(lag), fraction, 65);
                int16_t gotLag[2] = {};
                int16_t gotFraction = 0;
                int16_t index = 0;
                int16_t before[2] = {bounds[0], bounds[1]};
                ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookSearch_AMRWB_16s(x.data(), h.data(), open, gotLag, bounds,
                                                                            exc.data() + 248, &gotFraction, &index,
                                                                            subframe, kRates[r]));
                EXPECT_EQ(lag, gotLag[0]) << "rate " << r;
                EXPECT_EQ(fraction, gotFraction) << "rate " << r;
                EXPECT_EQ(theirs, exc);
                if (!relative) {
                    first = std::min(std::max(lag - 8, 34), 216);
                    EXPECT_EQ(first, bounds[0]);
                }
                // The decoder finds the same from the index.
                std::vector<char> memory(256);
                auto* state = reinterpret_cast<VekAdaptiveCodebookState_AMRWB*>(memory.data());
                ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookDecodeInit_AMRWB_16s(state));
                int16_t decoded = 0;
                ASSERT_EQ(vekStsNoErr,
                          veksAdaptiveCodebookDecode_AMRWB_16s(index, &gotFraction, exc.data() + 248, &decoded, before,
                                                               subframe, 0, 0, kRates[r], state));
                EXPECT_EQ(lag, decoded);
                EXPECT_EQ(fraction, gotFraction);
                Pred_lt4(theirs.data() + 248, static_cast<int16_t>(lag), fraction, 65);
                // That codec writes groups of four and the last one alone.
                EXPECT_EQ(Samples(theirs.begin(), theirs.begin() + 313), Samples(exc.begin(), exc.begin() + 313));
            }
        }
    }
}

TEST(AmrWbConcealmentOracle, SubstitutesTheSameLags) {
    std::mt19937 random(4);
    std::vector<char> memory(256);
    auto* state = reinterpret_cast<VekAdaptiveCodebookState_AMRWB*>(memory.data());
    ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookDecodeInit_AMRWB_16s(state));
    int16_t lags[5] = {64, 64, 64, 64, 64};
    int16_t gains[5] = {};
    int16_t former = 64;
    int16_t seed = 21845;
    for (int round = 0; round < 5000 && !testing::Test::HasFailure(); ++round) {
        const int index = round / 40 % 2 == 0 ? pick(random, 60, 75) : pick(random, 0, 511);
        const int bfi = pick(random, 0, 2) == 0 ? 1 : 0;
        const int lost = pick(random, 0, 1);
        Samples exc = noise(random, 505, -4096, 4096);
        int16_t bounds[2] = {};
        int16_t fraction = 0;
        int16_t lag = 0;
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookDecode_AMRWB_16s(index, &fraction, exc.data() + 248, &lag, bounds, 0,
                                                                    bfi, lost, VEK_SPCHBR_12650, state));
        int16_t want = static_cast<int16_t>(index < 376   ? 34 + index / 4
                                            : index < 440 ? 128 + (index - 376) / 2
                                                          : index - 280);
        if (bfi == 1) {
            lagconceal(gains, lags, &want, &former, &seed, static_cast<int16_t>(lost));
        } else {
            std::memmove(lags + 1, lags, 4 * sizeof(int16_t));
            lags[0] = want;
            former = want;
        }
        EXPECT_EQ(want, lag) << round;
        const auto gain =
            static_cast<int16_t>(round / 100 % 2 == 0 ? pick(random, 8000, 16384) : pick(random, 0, 16384));
        std::memmove(gains, gains + 1, 4 * sizeof(int16_t));
        gains[4] = gain;
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookDecodeGain_AMRWB_16s(gain, state));
    }
}

} // namespace
#else
TEST(AmrWbOracle, NeedsAnIndependentCodec) {
    GTEST_SKIP() << "vo-amrwbenc and opencore-amrwb are not installed";
}
#endif
