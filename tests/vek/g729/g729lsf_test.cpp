// The quantiser of line spectral frequencies: what the decoder makes of indices, and that the search finds them again.
#include "lp_reference.h"
#include "veksc.h"

#include <array>
#include <cmath>
#include <cstring>

namespace {

const int16_t kStart[10] = {2339, 4679, 7018, 9358, 11698, 14037, 16377, 18717, 21056, 23396};
const int16_t kSpeech[10] = {2963, 4560, 6471, 8523, 11936, 14431, 16601, 18394, 20338, 22179};

Samples startOfHistory() {
    Samples v;
    for (int k = 0; k < 4; ++k) {
        v.insert(v.end(), std::begin(kStart), std::end(kStart));
    }
    return v;
}

void expectInOrder(const Samples& lsf) {
    EXPECT_GE(lsf.front(), 40);
    EXPECT_LE(lsf.back(), 25681);
    for (size_t i = 1; i + 1 < lsf.size(); ++i) {
        EXPECT_GE(lsf[i] - lsf[i - 1], 321);
    }
}

TEST(VekLsfQuantiser, DecodesTheFirstRowOfEachTable) {
    const int16_t index[4] = {0, 0, 0, 0};
    Samples history = startOfHistory();
    Samples lsf(10);
    ASSERT_EQ(vekStsNoErr, veksLSFDecode_G729_16s(index, history.data(), lsf.data()));
    // 1486 - 435, 2168 - 815 ... of the two stages; the lower pair is far enough apart.
    EXPECT_EQ(1051, history[0]);
    EXPECT_EQ(1353, history[1]);
    EXPECT_TRUE(std::equal(history.begin() + 10, history.begin() + 20, kStart));
    expectInOrder(lsf);
}

TEST(VekLsfQuantiser, FrequenciesOfAnyIndicesAreInOrder) {
    std::mt19937 random(1);
    Samples history = startOfHistory();
    Samples noiseHistory = startOfHistory();
    for (int frame = 0; frame < 500; ++frame) {
        const auto pick = [&](int n) { return noise(random, 1, 0, n - 1)[0]; };
        const int16_t index[4] = {pick(2), pick(128), pick(32), pick(32)};
        const int16_t noiseIndex[3] = {pick(2), pick(32), pick(16)};
        Samples lsf(10);
        ASSERT_EQ(vekStsNoErr, veksLSFDecode_G729_16s(index, history.data(), lsf.data()));
        expectInOrder(lsf);
        ASSERT_EQ(vekStsNoErr, veksLSFDecode_G729B_16s(noiseIndex, noiseHistory.data(), lsf.data()));
        expectInOrder(lsf);
    }
}

TEST(VekLsfQuantiser, DecoderFollowsTheEncoder) {
    std::mt19937 random(2);
    for (const bool background : {false, true}) {
        Samples encoder = startOfHistory();
        Samples decoder = startOfHistory();
        Samples lsf(std::begin(kSpeech), std::end(kSpeech));
        for (int frame = 0; frame < 300; ++frame) {
            for (int16_t& f : lsf) {
                f = static_cast<int16_t>(f + noise(random, 1, -60, 60)[0]);
            }
            std::sort(lsf.begin(), lsf.end());
            Samples coded(10);
            Samples decoded(10);
            int16_t index[4];
            const auto quant = background ? veksLSFQuant_G729B_16s : veksLSFQuant_G729_16s;
            const auto decode = background ? veksLSFDecode_G729B_16s : veksLSFDecode_G729_16s;
            ASSERT_EQ(vekStsNoErr, quant(lsf.data(), encoder.data(), coded.data(), index));
            ASSERT_EQ(vekStsNoErr, decode(index, decoder.data(), decoded.data()));
            ASSERT_EQ(coded, decoded);
            ASSERT_EQ(encoder, decoder);
        }
    }
}

TEST(VekLsfQuantiser, ComesCloseToSpeech) {
    Samples history = startOfHistory();
    Samples lsf(10);
    int16_t index[4];
    for (int frame = 0; frame < 6; ++frame) {
        ASSERT_EQ(vekStsNoErr, veksLSFQuant_G729_16s(kSpeech, history.data(), lsf.data(), index));
    }
    for (size_t i = 0; i < 10; ++i) {
        EXPECT_NEAR(kSpeech[i], lsf[i], 500) << i; // 78 Hz
    }
}

// No other choice of the upper half gives a smaller error than the one found.
TEST(VekLsfQuantiser, FindsTheBestUpperHalf) {
    Samples history = startOfHistory();
    const Samples before = history;
    Samples lsf(10);
    int16_t index[4];
    ASSERT_EQ(vekStsNoErr, veksLSFQuant_G729_16s(kSpeech, history.data(), lsf.data(), index));
    const auto error = [&](const Samples& v) {
        double sum = 0;
        for (size_t i = 5; i < 10; ++i) {
            const double above = i == 9 ? 23677 : kSpeech[i + 1];
            const double near = (above - kSpeech[i - 1]) / 8192.0 - 1;
            const double weight = (near > 0 ? 1 : 10 * near * near + 1) * (i == 5 ? 1.2 : 1);
            sum += weight * (v[i] - kSpeech[i]) * (v[i] - kSpeech[i]);
        }
        return sum;
    };
    for (int16_t other = 0; other < 32; ++other) {
        Samples past = before;
        const int16_t changed[4] = {index[0], index[1], index[2], other};
        Samples v(10);
        ASSERT_EQ(vekStsNoErr, veksLSFDecode_G729_16s(changed, past.data(), v.data()));
        EXPECT_GE(error(v) * 1.01 + 10, error(lsf)) << other;
    }
}

// Targets so far from all rows that sums of squares need more than 32 bits; the indices are those of sums of 64.
TEST(VekLsfQuantiser, TargetsFarFromAllRowsHaveTheNearestOnes) {
    struct Case {
        int share;
        int16_t odd;
        std::array<int16_t, 4> speech;
        std::array<int16_t, 3> noise;
    };
    for (const auto& [share, odd, speech, noise] :
         {Case{32767, 32767, {0, 5, 3, 17}, {0, 31, 9}}, Case{20000, -32768, {0, 79, 9, 23}, {0, 28, 9}},
          Case{-32768, -32768, {0, 119, 24, 23}, {0, 25, 15}}}) {
        Samples lsf(10);
        for (size_t i = 0; i < 10; ++i) {
            lsf[i] = i % 2 != 0 ? odd : static_cast<int16_t>(2500 * i);
        }
        Samples history(40);
        for (size_t i = 0; i < 40; ++i) {
            history[i] = static_cast<int16_t>(i % 3 != 0 ? share : -(share / 2));
        }
        Samples past = history;
        Samples out(10);
        std::array<int16_t, 4> index = {};
        std::array<int16_t, 3> noiseIndex = {};
        ASSERT_EQ(vekStsNoErr, veksLSFQuant_G729_16s(lsf.data(), past.data(), out.data(), index.data()));
        EXPECT_EQ(speech, index) << share << " " << odd;
        past = history;
        ASSERT_EQ(vekStsNoErr, veksLSFQuant_G729B_16s(lsf.data(), past.data(), out.data(), noiseIndex.data()));
        EXPECT_EQ(noise, noiseIndex) << share << " " << odd;
    }
}

TEST(VekLsfQuantiser, AnErasedFrameRestoresTheCodeVectorOfItsFrequencies) {
    const int16_t index[4] = {1, 77, 5, 19};
    Samples decoded = startOfHistory();
    Samples erased = decoded;
    Samples lsf(10);
    ASSERT_EQ(vekStsNoErr, veksLSFDecode_G729_16s(index, decoded.data(), lsf.data()));
    ASSERT_EQ(vekStsNoErr, veksLSFDecodeErased_G729_16s(1, erased.data(), lsf.data()));
    for (size_t i = 0; i < 40; ++i) {
        EXPECT_NEAR(decoded[i], erased[i], 3) << i;
    }
}

TEST(VekLsfQuantiser, PairsArePackedIntoTheTwoWordsOfTheBitStream) {
    const int16_t lsp[10] = {31441, 27567, 21458, 13612, 4664, -4662, -13612, -21458, -27566, -31440};
    Samples history = startOfHistory();
    Samples other = history;
    Samples lsf(10);
    Samples quantised(10);
    Samples expected(10);
    int16_t words[2];
    int16_t index[4];
    ASSERT_EQ(vekStsNoErr, veksLSPQuant_G729_16s(lsp, history.data(), quantised.data(), words));
    ASSERT_EQ(vekStsNoErr, veksLSPToLSF_G729_16s(lsp, lsf.data()));
    ASSERT_EQ(vekStsNoErr, veksLSFQuant_G729_16s(lsf.data(), other.data(), lsf.data(), index));
    ASSERT_EQ(vekStsNoErr, veksLSFToLSP_G729_16s(lsf.data(), expected.data()));
    EXPECT_EQ(index[0] * 128 + index[1], words[0]);
    EXPECT_EQ(index[2] * 32 + index[3], words[1]);
    EXPECT_EQ(expected, quantised);
    EXPECT_EQ(other, history);
}

TEST(VekLsfQuantiser, RefusesNullAndIndicesOutOfRange) {
    const Samples start = startOfHistory();
    Samples history = start;
    Samples lsf(10, 5);
    int16_t index[4] = {};
    for (const auto decode : {veksLSFDecode_G729_16s, veksLSFDecode_G729B_16s}) {
        expectNullsRefused(decode, index, history.data(), lsf.data());
    }
    for (const auto quant : {veksLSFQuant_G729_16s, veksLSFQuant_G729B_16s, veksLSPQuant_G729_16s}) {
        expectNullsRefused(quant, kSpeech, history.data(), lsf.data(), index);
    }
    expectNullsRefused(veksLSFDecodeErased_G729_16s, 0, history.data(), lsf.data());
    EXPECT_EQ(vekStsRangeErr, veksLSFDecodeErased_G729_16s(2, history.data(), lsf.data()));
    EXPECT_EQ(vekStsRangeErr, veksLSFDecodeErased_G729_16s(-1, history.data(), lsf.data()));
    const int16_t beyond[4] = {2, 128, 32, 32};
    const int16_t beyondNoise[3] = {2, 32, 16};
    for (int place = 0; place < 4; ++place) {
        for (const int16_t bad : {beyond[place], static_cast<int16_t>(-1)}) {
            int16_t changed[4] = {};
            changed[place] = bad;
            EXPECT_EQ(vekStsRangeErr, veksLSFDecode_G729_16s(changed, history.data(), lsf.data()));
        }
    }
    for (int place = 0; place < 3; ++place) {
        int16_t changed[3] = {};
        changed[place] = beyondNoise[place];
        EXPECT_EQ(vekStsRangeErr, veksLSFDecode_G729B_16s(changed, history.data(), lsf.data()));
    }
    EXPECT_EQ(start, history);
    EXPECT_EQ(Samples(10, 5), lsf);
}

} // namespace
