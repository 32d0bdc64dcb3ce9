// The quantiser of line spectral frequencies against an independent open codec of G.729.
// Its step functions are in no public header: they are declared here, and the package's header tells whether to link.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "veksc.h"

#if __has_include(<bcg729/decoder.h>)
#define ORACLE_G729 1
extern "C" {
extern int16_t L1[128][10];
extern int16_t L2L3[32][10];
extern uint8_t L1SubsetIndex[32];
extern uint8_t L2SubsetIndex[16];
extern uint8_t L3SubsetIndex[16];
extern int16_t MAPredictor[2][4][10];
extern int16_t MAPredictorSum[2][10];
extern int16_t noiseMAPredictor[2][4][10];
extern int16_t noiseMAPredictorSum[2][10];
void computeqLSF(int16_t* lsf, int16_t (*previous)[10], uint8_t l0, int16_t (*predictor)[4][10], int16_t (*sum)[10]);
void decodeLSP(int16_t* context, uint16_t* index, int16_t* lsp, uint8_t erased);
void initDecodeLSP(int16_t* context);
void initLSPQuantization(int16_t* context);
void LSPQuantization(int16_t* context, int16_t* lsp, int16_t* quantised, uint16_t* index);
void noiseLSPQuantization(int16_t (*previous)[10], int16_t* lsp, int16_t* quantised, uint8_t* index);
}
#endif

namespace {

using Samples = std::vector<int16_t>;

[[maybe_unused]] Samples startOfHistory() {
    const int16_t row[10] = {2339, 4679, 7018, 9358, 11698, 14037, 16377, 18717, 21056, 23396};
    Samples v;
    for (int k = 0; k < 4; ++k) {
        v.insert(v.end(), std::begin(row), std::end(row));
    }
    return v;
}

[[maybe_unused]] int pick(std::mt19937& random, int count) {
    return std::uniform_int_distribution<int>(0, count - 1)(random);
}

// A slow walk of spectra: angles drift from frame to frame.
class Walk {
public:
    explicit Walk(unsigned seed) : m_random(seed), m_gap(11, 1.0) {}

    Samples next() {
        std::normal_distribution<double> drift(0, 0.05);
        double sum = 0;
        for (double& g : m_gap) {
            g = std::clamp(g * std::exp(drift(m_random)), 0.25, 3.0);
            sum += g;
        }
        Samples lsp;
        double at = 0;
        for (int i = 0; i < 10; ++i) {
            at += m_gap[static_cast<size_t>(i)] * 3.14159265358979 / sum;
            lsp.push_back(static_cast<int16_t>(std::lround(32767 * std::cos(at))));
        }
        return lsp;
    }

private:
    std::mt19937 m_random;
    std::vector<double> m_gap;
};

TEST(LsfQuantiserOracle, DecodedAndErasedFramesEqualTheOtherCodec) {
#ifdef ORACLE_G729
    std::mt19937 random(1);
    alignas(16) static int16_t buffer[4096];
    std::memset(buffer, 0, sizeof buffer);
    initDecodeLSP(buffer);
    const Samples start = startOfHistory();
    int16_t* theirs = std::search(buffer, buffer + 4096, start.begin(), start.end());
    // The last frequencies, which start as one row of the history, stand right before it.
    ASSERT_LT(theirs, buffer + 4000);
    int16_t* lastLsf = theirs;
    theirs += 10;
    Samples ours = start;
    Samples lsf(10);
    Samples lsp(10);
    int predictor = 0;
    bool any = false;
    for (int frame = 0; frame < 3000; ++frame) {
        const int16_t index[4] = {static_cast<int16_t>(pick(random, 2)), static_cast<int16_t>(pick(random, 128)),
                                  static_cast<int16_t>(pick(random, 32)), static_cast<int16_t>(pick(random, 32))};
        uint16_t their[4];
        std::copy(index, index + 4, their);
        const bool erased = any && pick(random, 5) == 0;
        decodeLSP(buffer, their, lsp.data(), erased ? 1 : 0);
        if (erased) {
            ASSERT_EQ(vekStsNoErr, veksLSFDecodeErased_G729_16s(predictor, ours.data(), lsf.data()));
        } else {
            ASSERT_EQ(vekStsNoErr, veksLSFDecode_G729_16s(index, ours.data(), lsf.data()));
            predictor = index[0];
            any = true;
        }
        ASSERT_EQ(Samples(lastLsf, lastLsf + 10), lsf) << frame;
        ASSERT_EQ(Samples(theirs, theirs + 40), ours) << frame;
    }
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

TEST(LsfQuantiserOracle, DecodedNoiseFramesEqualTheOtherCodec) {
#ifdef ORACLE_G729
    std::mt19937 random(2);
    Samples ours = startOfHistory();
    Samples theirs = ours;
    for (int frame = 0; frame < 2000; ++frame) {
        const int16_t index[3] = {static_cast<int16_t>(pick(random, 2)), static_cast<int16_t>(pick(random, 32)),
                                  static_cast<int16_t>(pick(random, 16))};
        Samples want(10);
        for (size_t i = 0; i < 10; ++i) {
            const int row = i < 5 ? L2SubsetIndex[index[2]] : L3SubsetIndex[index[2]];
            want[i] = static_cast<int16_t>(L1[L1SubsetIndex[index[1]]][i] + L2L3[row][i]);
        }
        computeqLSF(want.data(), reinterpret_cast<int16_t(*)[10]>(theirs.data()), static_cast<uint8_t>(index[0]),
                    noiseMAPredictor, noiseMAPredictorSum);
        Samples lsf(10);
        ASSERT_EQ(vekStsNoErr, veksLSFDecode_G729B_16s(index, ours.data(), lsf.data()));
        ASSERT_EQ(want, lsf) << frame;
        ASSERT_EQ(theirs, ours) << frame;
    }
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

// The other codec takes pairs and has its own arc cosine, a few units from ours: near ties may fall otherwise. Both
// start each frame from the same history.
TEST(LsfQuantiserOracle, IndicesAreThoseOfTheOtherCodecButForNearTies) {
#ifdef ORACLE_G729
    Walk walk(3);
    alignas(16) static int16_t context[8192];
    std::memset(context, 0, sizeof context);
    initLSPQuantization(context);
    const Samples start = startOfHistory();
    int16_t* theirs = std::search(context, context + 8192, start.begin(), start.end());
    ASSERT_LT(theirs, context + 8000);
    int same = 0;
    constexpr int kFrames = 2000;
    for (int frame = 0; frame < kFrames; ++frame) {
        Samples lsp = walk.next();
        Samples history(theirs, theirs + 40);
        int16_t words[2];
        Samples quantised(10);
        ASSERT_EQ(vekStsNoErr, veksLSPQuant_G729_16s(lsp.data(), history.data(), quantised.data(), words));
        uint16_t index[4];
        Samples want(10);
        LSPQuantization(context, lsp.data(), want.data(), index);
        if (words[0] == (index[0] << 7 | index[1]) && words[1] == (index[2] << 5 | index[3])) {
            ++same;
            for (size_t i = 0; i < 10; ++i) {
                ASSERT_NEAR(want[i], quantised[i], 20) << frame;
            }
            ASSERT_EQ(Samples(theirs, theirs + 40), history);
        }
    }
    EXPECT_GT(same, kFrames * 90 / 100);
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

TEST(LsfQuantiserOracle, NoiseIndicesAreMostlyThoseOfTheOtherCodec) {
#ifdef ORACLE_G729
    Walk walk(4);
    Samples theirs = startOfHistory();
    int same = 0;
    int samePredictor = 0;
    constexpr int kFrames = 2000;
    for (int frame = 0; frame < kFrames; ++frame) {
        Samples lsp = walk.next();
        Samples lsf(10);
        ASSERT_EQ(vekStsNoErr, veksLSPToLSF_G729_16s(lsp.data(), lsf.data()));
        Samples history = theirs;
        Samples quantised(10);
        int16_t index[3];
        ASSERT_EQ(vekStsNoErr, veksLSFQuant_G729B_16s(lsf.data(), history.data(), quantised.data(), index));
        uint8_t want[3];
        Samples wantLsp(10);
        noiseLSPQuantization(reinterpret_cast<int16_t(*)[10]>(theirs.data()), lsp.data(), wantLsp.data(), want);
        // The other codec compares its predictors by another row of the first stage in the upper half.
        if (index[0] == want[0]) {
            ++samePredictor;
            same += index[1] == want[1] && index[2] == want[2] ? 1 : 0;
        }
    }
    EXPECT_GT(samePredictor, kFrames / 3);
    EXPECT_GT(same, samePredictor * 98 / 100);
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

} // namespace
