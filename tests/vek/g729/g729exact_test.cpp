// Figures of the fixed-point G.729 to the last bit where a tolerance would hide a rounding, a bisection or a bound:
// conversions and recursion as an open AMR codec has them, gains and post filters by hand.
#include "lp_reference.h"
#include "veksc.h"

#include <algorithm>

namespace {

const Samples pairs = {31341, 27067, 21958, 13012, 4964, -4062, -13212, -20458, -26566, -31140};
const Samples coefficients = {4096, -363, 614, -247, 275, -14, 100, 145, -159, -225, -162};

TEST(VekG729Exact, CoefficientsOfPairsAreRounded) {
    Samples a(11);
    ASSERT_EQ(vekStsNoErr, veksLSPToLPC_G729_16s(pairs.data(), a.data()));
    EXPECT_EQ(coefficients, a);
}

TEST(VekG729Exact, RootsAreThoseOfFourBisectionsAndOfTwoInAnnexA) {
    const Samples fine = {31344, 27072, 21961, 13014, 4969, -4052, -13213, -20461, -26562, -31140};
    const Samples coarse = {31343, 27071, 21961, 13014, 4969, -4052, -13211, -20460, -26562, -31139};
    const Samples previous(10);
    Samples lsp(10);
    ASSERT_EQ(vekStsNoErr, veksLPCToLSP_G729_16s(coefficients.data(), previous.data(), lsp.data()));
    EXPECT_EQ(fine, lsp);
    ASSERT_EQ(vekStsNoErr, veksLPCToLSP_G729A_16s(coefficients.data(), previous.data(), lsp.data()));
    EXPECT_EQ(coarse, lsp);
    ASSERT_EQ(vekStsNoErr, veksLPCToLSP_GSMAMR_16s(coefficients.data(), previous.data(), lsp.data()));
    EXPECT_EQ(fine, lsp);
}

TEST(VekG729Exact, NormalisedFrequenciesAreRounded) {
    Samples lsf(10);
    ASSERT_EQ(vekStsNoErr, veksLSPToLSF_Norm_G729_16s(pairs.data(), lsf.data()));
    EXPECT_EQ((Samples{1544, 3121, 4362, 6062, 7399, 8840, 10357, 11709, 13124, 14738}), lsf);
}

TEST(VekG729Exact, RecursionOfOrderTenInBothForms) {
    const int32_t r[] = {2000000000,  1579648611, 875289735,  103134840,  -546067878, -946134587,
                         -1052245204, -895808661, -562744291, -163333223, 197813776};
    const Samples wantA = {4096, -4068, 932, 546, 320, 187, 109, 63, 35, 17, 24};
    const Samples wantRc = {-25881, 16218, 8568, 4859, 2818, 1646, 964, 565, 331, 194};
    for (const bool annexB : {false, true}) {
        Samples a(11);
        Samples rc(10);
        int16_t error = 0;
        ASSERT_EQ(vekStsNoErr, annexB ? veksLevinsonDurbin_G729B(r, a.data(), rc.data(), &error)
                                      : veksLevinsonDurbin_G729_32s16s(r, 10, a.data(), rc.data(), &error));
        EXPECT_EQ(wantA, a);
        EXPECT_EQ(wantRc, rc);
        EXPECT_EQ(7809, error);
    }
}

TEST(VekG729Exact, AdaptiveGainIsCutOffToItsLastBit) {
    Samples h(40), vector(40), target(40), y(40);
    h[0] = 4096;
    h[1] = -2048;
    h[2] = 1024;
    for (int i = 0; i < 40; ++i) {
        vector[static_cast<size_t>(i)] = static_cast<int16_t>(i * 7919 % 2001 - 1000);
        target[static_cast<size_t>(i)] = static_cast<int16_t>(vector[static_cast<size_t>(i)] / 3 + i * 5);
    }
    int16_t gain = 0;
    ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookGain_G729_16s(target.data(), h.data(), vector.data(), y.data(), &gain));
    // 6162.51 in exact numbers.
    EXPECT_EQ(6162, gain);
}

TEST(VekG729Exact, GainControlByEnergyHasRoomForLoudSignals) {
    // 12000 beside 6000: the doubled energy of quarters fits 32 bits, that of halves would not.
    const Samples in(40, 12000);
    int16_t gain = 4096;
    for (int i = 0; i < 10; ++i) {
        Samples x(40, 6000);
        ASSERT_EQ(vekStsNoErr, veksGainControl_G729A_16s_I(in.data(), x.data(), &gain));
    }
    EXPECT_NEAR(8192, gain, 20);
}

TEST(VekG729Exact, LongTermFilterOfAnnexATakesAThirdOfAGrowingSignalsPast) {
    std::mt19937 random(1);
    Samples lpc(11);
    lpc[0] = 4096;
    Samples residual = noise(random, 194, -4000, 4000);
    Samples speech(50);
    for (size_t i = 0; i < 40; ++i) {
        speech[10 + i] = static_cast<int16_t>(2 * residual[154 + i - 60]);
    }
    Samples y(40);
    ASSERT_EQ(vekStsNoErr,
              veksLongTermPostFilter_G729A_16s(60, speech.data() + 10, lpc.data(), residual.data(), y.data()));
    for (size_t i = 0; i < 40; ++i) {
        EXPECT_NEAR(speech[10 + i] * 5 / 6.0, y[i], 2) << i;
    }
}

TEST(VekG729Exact, LongTermFilterOfTheMainBodyMixesByItsFactor) {
    std::mt19937 random(2);
    Samples x = noise(random, 192, -4000, 4000);
    for (size_t i = 152; i < 192; ++i) {
        x[i] = static_cast<int16_t>(x[i - 60] / 2);
    }
    for (const int gamma : {0, 8192, 16384, 32767}) {
        Samples y(40);
        int16_t voice = 0;
        ASSERT_EQ(vekStsNoErr,
                  veksLongTermPostFilter_G729_16s(static_cast<int16_t>(gamma), 60, x.data() + 152, y.data(), &voice));
        EXPECT_EQ(60, voice);
        const double share = gamma / 32768.0 / 2;
        for (size_t i = 0; i < 40; ++i) {
            EXPECT_NEAR((x[152 + i] + share * x[92 + i]) / (1 + share), y[i], 2) << gamma << " " << i;
        }
    }
}

} // namespace
