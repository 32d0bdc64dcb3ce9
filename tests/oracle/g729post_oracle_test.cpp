// Post filters, analysis and searches of G.729 against independent open codecs.
// Their step functions are in no public header: they are declared here, and the package's header tells whether to link.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "amrnb_pitch.h"
#include "noise.h"
#include "veksc.h"

#if __has_include(<bcg729/decoder.h>)
#define ORACLE_BCG729 1
extern "C" {
void initPostFilter(void* channel);
void postFilter(void* channel, int16_t* lpc, int16_t* speech, int16_t delay, int subframe, int16_t* out);
void computeLP(int16_t* signal, int16_t* lpc, int32_t* reflection, int32_t* windowed, int32_t* plain, int8_t* scale,
               uint8_t count);
}
#endif

namespace {

TEST(PostFilterOracle, TheChainOfAnnexAStaysByTheG729Codec) {
#ifdef ORACLE_BCG729
    std::mt19937 random(1);
    // The other codec's channel state is in no header: there is room for all of it.
    std::vector<int64_t> channel(4096);
    initPostFilter(channel.data());
    Samples lpc = {4096, -5200, 1900, 1300, -900, -500, 800, -300, -200, 200, -50};
    Samples speech(10 + 40);
    Samples residual(194);
    Samples harmonic(41);
    Samples out(50);
    int16_t gain = 4096;
    Samples past(400);
    // The other codec rounds where the published arithmetic cuts off.
    constexpr int rounds = 600;
    double signal = 0;
    double error = 0;
    for (int round = 0; round < rounds; ++round) {
        if (round % 8 == 0) {
            for (size_t i = 1; i < 11; ++i) {
                lpc[i] = static_cast<int16_t>(lpc[i] * 0.97 + noise(random, 1, -20, 20)[0]);
            }
        }
        const auto period = static_cast<size_t>(25 + (round / 8 * 13) % 115);
        for (int i = 0; i < 40; ++i) {
            double v = noise(random, 1, -250, 250)[0] + 0.75 * past[past.size() - period];
            past.push_back(static_cast<int16_t>(std::max(-20000.0, std::min(20000.0, v))));
        }
        std::copy(speech.begin() + 40, speech.end(), speech.begin());
        std::copy(past.end() - 40, past.end(), speech.begin() + 10);
        Samples theirs(40);
        postFilter(channel.data(), lpc.data() + 1, speech.data() + 10, static_cast<int16_t>(period), round % 2 * 40,
                   theirs.data());

        Samples level(speech.begin() + 10, speech.end());
        ASSERT_EQ(vekStsNoErr, veksLongTermPostFilter_G729A_16s(static_cast<int16_t>(period), speech.data() + 10,
                                                                lpc.data(), residual.data(), harmonic.data() + 1));
        ASSERT_EQ(vekStsNoErr, veksTiltCompensation_G729A_16s(lpc.data(), harmonic.data() + 1));
        std::copy(out.begin() + 40, out.end(), out.begin());
        ASSERT_EQ(vekStsNoErr, veksShortTermPostFilter_G729A_16s(lpc.data(), harmonic.data() + 1, out.data() + 10));
        Samples ours(out.begin() + 10, out.end());
        ASSERT_EQ(vekStsNoErr, veksGainControl_G729A_16s_I(level.data(), ours.data(), &gain));
        std::copy(residual.begin() + 40, residual.end(), residual.begin());
        for (size_t i = 0; i < 40; ++i) {
            signal += double{1} * theirs[i] * theirs[i];
            error += double{1} * (theirs[i] - ours[i]) * (theirs[i] - ours[i]);
        }
    }
    const double distance = 10 * std::log10(signal / error);
    RecordProperty("dB", std::to_string(distance));
    EXPECT_GT(distance, 34);
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

TEST(AnalysisOracle, ThirteenLagsAreThoseOfTheG729Codec) {
#ifdef ORACLE_BCG729
    std::mt19937 random(2);
    for (const int high : {20, 300, 4000, 32767}) {
        for (int round = 0; round < 50; ++round) {
            Samples x = noise(random, 240, -high, high);
            int16_t lpc[10];
            int32_t reflection[10];
            int32_t windowed[13];
            int32_t plain[13];
            int8_t scale = 0;
            computeLP(x.data(), lpc, reflection, windowed, plain, &scale, 13);
            int16_t exponent = 0;
            int32_t got[13];
            ASSERT_EQ(vekStsNoErr, veksAutoCorr_G729B(x.data(), &exponent, got));
            for (int k = 0; k < 13; ++k) {
                const double theirs = std::ldexp(plain[k], -scale);
                const double ours = std::ldexp(got[k], exponent - 2);
                ASSERT_NEAR(theirs / std::ldexp(plain[0], -scale), ours / std::ldexp(got[0], exponent - 2), 1e-3);
                ASSERT_NEAR(theirs, ours, 1e-3 * std::ldexp(plain[0], -scale) + 1);
            }
        }
    }
#else
    GTEST_SKIP() << "libbcg729-dev is not installed";
#endif
}

TEST(AdaptiveSearchOracle, OnTheFourBitGridHasTheDelaysOfTheAmrCodecAt5900) {
#ifdef ORACLE_AMRNB
    std::mt19937 random(4);
    for (int round = 0; round < 1000; ++round) {
        Samples x = noise(random, 194, -1000, 1000);
        Samples target = noise(random, 40, -2000, 2000);
        Samples h = noise(random, 40, -700, 700);
        h[0] = 4096;
        Samples theirs = x;
        const auto second = static_cast<int16_t>(round % 2);
        const int16_t open = noise(random, 1, 26, 138)[0];
        const AmrLag lag = amrLag(2, open, theirs, target, h, second == 1);
        int16_t got[2] = {};
        ASSERT_EQ(vekStsNoErr,
                  veksAdaptiveCodebookSearch_G729D_16s(open, target.data(), h.data(), x.data(), second, got));
        ASSERT_EQ(lag.whole, got[0]) << round;
        ASSERT_EQ(lag.fraction, got[1]) << round;
    }
#else
    GTEST_SKIP() << "libopencore-amrnb-dev is not installed";
#endif
}

} // namespace
