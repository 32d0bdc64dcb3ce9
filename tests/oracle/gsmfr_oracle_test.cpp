// Coder and decoder of GSM full rate put together from the library's steps, frame by frame beside an independent codec:
// the same parameters and the same samples.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

#include "gsmfr_chain.h"

#if __has_include(<gsm.h>)
#define ORACLE_GSM 1
extern "C" {
#include <gsm.h>
}
#elif __has_include(<gsm/gsm.h>)
#define ORACLE_GSM 1
extern "C" {
#include <gsm/gsm.h>
}
#endif

namespace {

using namespace gsmfr;

// Speech-like: pulses of a wandering pitch or noise through two wandering resonances, with pauses and loud passages.
[[maybe_unused]] std::vector<Word> speech(int frames) {
    std::mt19937 random(6010);
    std::normal_distribution<double> normal(0, 1);
    std::vector<Word> x;
    double y[2][3] = {};
    double phase = 0;
    for (int n = 0; n < frames * kFrame; ++n) {
        const int section = n / 2400 % 6;
        const double level = section == 5 ? 0 : section == 4 ? 9000 : 400.0 * (1 + section);
        const double pitch = 90 + 40 * std::sin(n / 5000.0);
        phase += pitch / 8000;
        double v = section == 2 ? 0.3 * normal(random) : 0.02 * normal(random);
        if (phase >= 1) {
            phase -= 1;
            v += section == 2 ? 0 : 3;
        }
        for (int k = 0; k < 2; ++k) {
            const double f = (k == 0 ? 500 + 200 * std::sin(n / 3000.0) : 1700 + 500 * std::sin(n / 4100.0)) / 8000;
            y[k][0] = v + 2 * 0.94 * std::cos(2 * std::numbers::pi * f) * y[k][1] - 0.94 * 0.94 * y[k][2];
            y[k][2] = y[k][1];
            y[k][1] = y[k][0];
            v = 0.2 * y[k][0];
        }
        x.push_back(sat16(static_cast<int32_t>(std::lround(std::clamp(level * v * 8, -40000.0, 40000.0)))));
    }
    return x;
}

TEST(GsmFrChainOracle, CoderAndDecoderHaveTheSameBits) {
#ifdef ORACLE_GSM
    constexpr int frames = 1500;
    const std::vector<Word> signal = speech(frames);
    gsm coder = gsm_create();
    gsm decoder = gsm_create();
    gsm reader = gsm_create();
    Coder ours;
    Decoder back;
    for (int n = 0; n < frames; ++n) {
        std::vector<gsm_signal> in(signal.begin() + n * kFrame, signal.begin() + (n + 1) * kFrame);
        gsm_frame bytes;
        gsm_encode(coder, in.data(), bytes);
        gsm_signal parameters[76];
        ASSERT_EQ(gsm_explode(reader, bytes, parameters), 0);
        const Frame frame = ours.code(signal.data() + n * kFrame);
        for (size_t i = 0; i < frame.size(); ++i) {
            ASSERT_EQ(frame[i], parameters[i]) << "frame " << n << ", parameter " << i;
        }
        gsm_signal out[kFrame];
        ASSERT_EQ(gsm_decode(decoder, bytes, out), 0);
        Word samples[kFrame];
        back.decode(frame, samples);
        for (int i = 0; i < kFrame; ++i) {
            ASSERT_EQ(samples[i], out[i]) << "frame " << n << ", sample " << i;
        }
    }
    gsm_destroy(coder);
    gsm_destroy(decoder);
    gsm_destroy(reader);
#else
    GTEST_SKIP() << "libgsm1-dev is not installed";
#endif
}

} // namespace
