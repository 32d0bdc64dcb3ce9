// Steps of G.729.1 against independent open codecs of its family.
// Their step functions are in no public header: they are declared here, and the package's header tells whether to link.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "amrnb_pitch.h"
#include "noise.h"
#include "veksc.h"

#if __has_include(<bcg729/encoder.h>)
#define ORACLE_BCG729 1
extern "C" {
void fixedCodebookSearch(int16_t* target, int16_t* h, int16_t delay, int16_t sharp, int16_t* adaptive, int16_t gain,
                         uint16_t* positions, uint16_t* signs, int16_t* code, int16_t* filtered);
void decodeFixedCodeVector(uint16_t signs, uint16_t positions, int16_t delay, int16_t sharp, int16_t* code);
void decodeLSP(int16_t* context, uint16_t* index, int16_t* lsp, uint8_t erased);
void initDecodeLSP(int16_t* context);
}
#endif

namespace {

TEST(G7291AdaptiveGainOracle, EqualsTheAmrCodecButForTheUnitThatBeginsTheSum) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(1);
    int equal = 0;
    for (int round = 0; round < 4000; ++round) {
        const int level = 50 << (round % 8);
        const Samples h = decayingResponse(random, 2500);
        const Samples vector = noise(random, 40, -level, level);
        Samples target = noise(random, 40, -level, level);
        Samples filtered(40);
        int16_t gain = 0;
        ASSERT_EQ(vekStsNoErr,
                  veksAdaptiveCodebookGain_G7291_16s(target.data(), h.data(), vector.data(), filtered.data(), &gain));
        const int16_t want = amrPitchGain(target, filtered);
        ASSERT_NEAR(want, gain, 1) << round;
        equal += want == gain ? 1 : 0;
    }
    RecordProperty("equal", equal);
    // Our sum of squares begins with 1, as published, theirs with 0.
    EXPECT_GE(equal, 3920);
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(G7291AdaptiveSearchOracle, HasTheDelaysOfTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(2);
    constexpr int rounds = 1000;
    for (int round = 0; round < rounds; ++round) {
        const Samples x = noise(random, 194, -1000, 1000);
        Samples target = noise(random, 40, -2000, 2000);
        Samples h = decayingResponse(random, 2500);
        Samples theirs = x;
        const bool second = round % 2 == 1;
        const int16_t open = noise(random, 1, 20, 143)[0];
        // The range that the AMR codec makes of an open-loop delay, or of that of the first subframe.
        const int width = second ? 9 : 6;
        const int first = std::min(std::max(open - (second ? 5 : 3), 20), 143 - width);
        const AmrLag lag = amrLag(4, open, theirs, target, h, second);
        int16_t got[2] = {};
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookSearch_G7291_16s(
                                   target.data(), h.data(), x.data(), got, static_cast<int16_t>(first),
                                   static_cast<int16_t>(first + width), static_cast<int16_t>(40 * (round % 4))));
        ASSERT_EQ(lag.whole, got[0]) << round;
        ASSERT_EQ(lag.fraction, got[1]) << round;
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

// Squared correlation over energy of a filtered code vector.
[[maybe_unused]] double merit(const Samples& target, const Samples& y) {
    double c = 0;
    double e = 0;
    for (size_t n = 0; n < 40; ++n) {
        c += double{1} * y[n] * target[n];
        e += double{1} * y[n] * y[n];
    }
    return c * c / e;
}

// What two searches reach over many rounds.
struct Merits {
    double ours = 0;
    double theirs = 0;
    int below = 0;

    void take(double own, double their) {
        ours += own;
        theirs += their;
        below += own < 0.999 * their ? 1 : 0;
    }
    void expectNotBelow() const {
        testing::Test::RecordProperty("per10000", static_cast<int>(10000 * ours / theirs));
        testing::Test::RecordProperty("below", below);
        EXPECT_GE(ours, theirs);
        EXPECT_EQ(0, below);
    }
};

TEST(G7291FirstPulsesOracle, AreNotBelowTheSearchOfTheG729CodecAndItsDecoderReadsThem) {
#ifdef ORACLE_BCG729
    std::mt19937 random(3);
    Merits merits;
    for (int round = 0; round < 1000; ++round) {
        const int level = 100 << (round % 6);
        Samples h = decayingResponse(random, 2500);
        Samples target = noise(random, 40, -level, level);
        const Samples residual = noise(random, 40, -level, level);
        Samples vector = noise(random, 40, -level, level);
        Samples vectorToo = vector;
        const int16_t gain = noise(random, 1, 3277, 13017)[0];
        const int16_t lag = noise(random, 1, 20, 143)[0];
        Samples code(40), y(40), index(2), other(40), otherY(40), read(40), rest(40);
        Samples theirH = h;
        ASSERT_EQ(vekStsNoErr,
                  veksAlgebraicCodebookSearchL1_G7291_16s(target.data(), residual.data(), vector.data(), h.data(), lag,
                                                          gain, code.data(), y.data(), index.data()));
        uint16_t positions = 0;
        uint16_t signs = 0;
        fixedCodebookSearch(target.data(), theirH.data(), lag, gain, vectorToo.data(), gain, &positions, &signs,
                            other.data(), otherY.data());
        for (size_t n = 0; n < 40; ++n) {
            rest[n] = static_cast<int16_t>(target[n] - vector[n]);
        }
        merits.take(merit(rest, y), merit(rest, otherY));
        decodeFixedCodeVector(static_cast<uint16_t>(index[1]), static_cast<uint16_t>(index[0]), lag, gain, read.data());
        for (size_t n = 0; n < 40; ++n) {
            ASSERT_NEAR(read[n], code[n], 4) << n;
        }
    }
    merits.expectNotBelow();
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

TEST(G7291SecondPulsesOracle, AreNotBelowTheSearchOfTheG729Codec) {
#ifdef ORACLE_BCG729
    std::mt19937 random(4);
    Merits merits;
    for (int round = 0; round < 1000; ++round) {
        const int level = 100 << (round % 6);
        const Samples h = decayingResponse(random, 2500);
        Samples target = noise(random, 40, -level, level);
        const Samples residual = noise(random, 40, -level, level);
        const int16_t voice = noise(random, 1, -32768, 32767)[0];
        Samples code(40), y(40), index(2), other(40), otherY(40), none(40);
        ASSERT_EQ(vekStsNoErr, veksAlgebraicCodebookSearchL2_G7291_16s(target.data(), residual.data(), h.data(), voice,
                                                                       code.data(), y.data(), index.data()));
        Samples tilted = h;
        for (size_t n = 39; n > 0; --n) {
            tilted[n] = static_cast<int16_t>(h[n] - (h[n - 1] * ((voice >> 2) + 8192) >> 15));
        }
        uint16_t positions = 0;
        uint16_t signs = 0;
        fixedCodebookSearch(target.data(), tilted.data(), 40, 0, none.data(), 0, &positions, &signs, other.data(),
                            otherY.data());
        merits.take(merit(target, y), merit(target, otherY));
    }
    merits.expectNotBelow();
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

TEST(G7291LsfDecodeOracle, EqualsTheDecoderOfTheG729Codec) {
#ifdef ORACLE_BCG729
    std::mt19937 random(5);
    static int16_t context[4096];
    initDecodeLSP(context);
    Samples history;
    for (int k = 0; k < 4; ++k) {
        history.insert(history.end(), {2339, 4679, 7018, 9358, 11698, 14037, 16377, 18717, 21056, 23396});
    }
    // The last frequencies, which start as one row of the history, stand right before it.
    const int16_t* lastLsf = std::search(context, context + 4096, history.begin(), history.end());
    ASSERT_LT(lastLsf, context + 4000);
    for (int frame = 0; frame < 2000; ++frame) {
        const int16_t index[4] = {noise(random, 1, 0, 1)[0], noise(random, 1, 0, 127)[0], noise(random, 1, 0, 31)[0],
                                  noise(random, 1, 0, 31)[0]};
        uint16_t theirs[4];
        std::copy(index, index + 4, theirs);
        Samples lsp(10), lsf(10);
        decodeLSP(context, theirs, lsp.data(), 0);
        ASSERT_EQ(vekStsNoErr, veksLSFDecode_G7291_16s(index, history.data(), lsf.data()));
        ASSERT_EQ(Samples(lastLsf, lastLsf + 10), lsf) << frame;
        ASSERT_EQ(Samples(lastLsf + 10, lastLsf + 50), history) << frame;
    }
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

} // namespace
