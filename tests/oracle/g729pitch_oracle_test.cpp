// Pitch and gain steps of G.729 against independent open codecs.
// Their step functions are in no public header: they are declared here, and the package's header tells whether to link.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "amrnb_pitch.h"
#include "noise.h"
#include "veksc.h"

#ifdef ORACLE_AMRNB
extern "C" {
void agc(int16_t* gain, int16_t* in, int16_t* out, int16_t factor, int16_t n, int* overflow);
int16_t Pitch_ol(void* vad, int mode, int16_t* signal, int16_t shortest, int16_t longest, int16_t n, int16_t half,
                 int dtx, int* overflow);
}
#endif

#if __has_include(<bcg729/encoder.h>)
#define ORACLE_BCG729 1
extern "C" {
uint16_t findOpenLoopPitchDelay(int16_t* signal);
void adaptativeCodebookSearch(int16_t* excitation, int16_t* shortest, int16_t* longest, int16_t* h, int16_t* target,
                              int16_t* delay, int16_t* fraction, uint16_t* code, uint16_t offset);
}
#endif

namespace {

using Samples = std::vector<int16_t>;

// Multiples of four, so that quarters lose nothing.
[[maybe_unused]] Samples quarterable(std::mt19937& random, int n, int level) {
    Samples v = noise(random, n, -level / 4, level / 4);
    for (int16_t& e : v) {
        e = static_cast<int16_t>(4 * e);
    }
    return v;
}

// The excitation for each of two searches, target and response.
struct SearchData {
    Samples x, target, h, theirs;
};

[[maybe_unused]] SearchData searchData(std::mt19937& random) {
    const Samples x = noise(random, 194, -1000, 1000);
    const Samples target = noise(random, 40, -2000, 2000);
    return {x, target, decayingResponse(random, 2000), x};
}

// Noise through a resonance and a delay loop: 223 samples with a pitch.
[[maybe_unused]] Samples voiced(std::mt19937& random, int level) {
    const auto period = static_cast<size_t>(noise(random, 1, 20, 143)[0]);
    std::vector<double> y(600);
    Samples x;
    for (size_t i = 2; i < y.size(); ++i) {
        y[i] = noise(random, 1, -level / 8, level / 8)[0] + (i > period ? 0.8 * y[i - period] : 0);
        if (i >= y.size() - 223) {
            x.push_back(static_cast<int16_t>(std::max(-32768.0, std::min(32767.0, y[i] + 0.7 * y[i - 1]))));
        }
    }
    return x;
}

TEST(GainControlOracle, EqualsTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(1);
    int16_t ours = 4096;
    int16_t theirs = 4096;
    int overflow = 0;
    for (int round = 0; round < 200; ++round) {
        // Multiples of four: the AMR codec drops bits of the energy, not of the samples. Gains that saturate nothing.
        const int level = 200 << (round % 5);
        Samples in = quarterable(random, 40, level);
        Samples x = quarterable(random, 40, 2 * level);
        Samples want = x;
        ASSERT_EQ(vekStsNoErr, veksGainControl_G729A_16s_I(in.data(), x.data(), &ours));
        agc(&theirs, in.data(), want.data(), 29491, 40, &overflow);
        ASSERT_EQ(want, x) << round;
        ASSERT_EQ(theirs, ours);
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(DecodeAdaptiveVectorOracle, EqualsTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(4);
    for (int16_t delay = 20; delay <= 143; ++delay) {
        for (int16_t fraction = -1; fraction <= 1; ++fraction) {
            // Up to the level where no step of the sum saturates: the AMR codec's sums wrap.
            Samples x = noise(random, 194, -15000, 15000);
            Samples want = x;
            const int16_t at[] = {delay, fraction};
            int overflow = 0;
            ASSERT_EQ(vekStsNoErr, veksDecodeAdaptiveVector_G729_16s_I(at, x.data()));
            Pred_lt_3or6(want.data() + 154, delay, fraction, 40, 1, &overflow);
            ASSERT_EQ(want, x) << delay << " " << fraction;
        }
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(OpenLoopPitchOracle, EqualsTheAmrCodecAt7400BitsASecond) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(2);
    constexpr int mode7400 = 4;
    std::vector<int64_t> vad(1000);
    for (int round = 0; round < 400; ++round) {
        Samples x = voiced(random, 16 << (round % 9));
        int overflow = 0;
        int16_t lag = 0;
        ASSERT_EQ(vekStsNoErr, veksOpenLoopPitchSearch_G729_16s(x.data() + 143, &lag));
        ASSERT_EQ(Pitch_ol(vad.data(), mode7400, x.data() + 143, 20, 143, 80, 0, 0, &overflow), lag) << round;
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(OpenLoopPitchOracle, AgreesWithTheG729Codec) {
#ifdef ORACLE_BCG729
    std::mt19937 random(3);
    int equal = 0;
    for (int round = 0; round < 1000; ++round) {
        Samples x = voiced(random, 64 << (round % 8));
        int16_t lag = 0;
        ASSERT_EQ(vekStsNoErr, veksOpenLoopPitchSearch_G729A_16s(x.data() + 143, &lag));
        equal += findOpenLoopPitchDelay(x.data() + 143) == lag ? 1 : 0;
    }
    // It scales and takes roots in other formats: near ties may fall otherwise.
    EXPECT_GE(equal, 970);
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

TEST(AdaptiveSearchOracle, FindsTheDelaysOfTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(5);
    int equal = 0;
    for (int round = 0; round < 400; ++round) {
        auto [x, target, h, theirs] = searchData(random);
        const int16_t open = noise(random, 1, 20, 143)[0];
        const auto second = static_cast<int16_t>(round % 2);
        const AmrLag lag = amrLag(4, open, theirs, target, h, second == 1);
        int16_t got[2] = {};
        Samples vector(40);
        ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookSearch_G729_16s(open, target.data(), h.data(), x.data(), got,
                                                                   vector.data(), second));
        equal += got[0] == lag.whole && got[1] == lag.fraction ? 1 : 0;
    }
    EXPECT_GE(equal, 396);
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

TEST(AdaptiveSearchOracle, FindsTheDelaysOfTheG729Codec) {
#ifdef ORACLE_BCG729
    std::mt19937 random(6);
    int equal = 0;
    for (int round = 0; round < 400; ++round) {
        auto [x, target, h, theirs] = searchData(random);
        const int16_t open = noise(random, 1, 23, 140)[0];
        auto shortest = static_cast<int16_t>(open - 3);
        auto longest = static_cast<int16_t>(open + 3);
        int16_t delay = 0;
        int16_t fraction = 0;
        uint16_t code = 0;
        adaptativeCodebookSearch(theirs.data() + 154, &shortest, &longest, h.data(), target.data(), &delay, &fraction,
                                 &code, 0);
        int16_t got[2] = {};
        Samples vector(40);
        ASSERT_EQ(vekStsNoErr,
                  veksAdaptiveCodebookSearch_G729A_16s(open, target.data(), h.data(), x.data(), got, vector.data(), 0));
        if (got[0] == delay && got[1] == fraction) {
            ++equal;
            ASSERT_EQ(theirs, x);
        }
    }
    EXPECT_GE(equal, 388);
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

TEST(AdaptiveGainOracle, IsWithinOneOfTheAmrCodec) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        const int level = 100 << (round % 7);
        const Samples h = decayingResponse(random, 2000);
        const Samples vector = noise(random, 40, -level, level);
        Samples target = noise(random, 40, -level, level);
        Samples filtered(40);
        int16_t gain = 0;
        for (int again = 0; again < 2; ++again) {
            ASSERT_EQ(vekStsNoErr, veksAdaptiveCodebookGain_G729_16s(target.data(), h.data(), vector.data(),
                                                                     filtered.data(), &gain));
            ASSERT_NEAR(amrPitchGain(target, filtered), gain, 1);
            target = filtered; // now a gain of 1
        }
        EXPECT_NEAR(16384, gain, 2);
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

} // namespace
