// G.728 beside independent packages: the codebook that a decoder of a codec of its kind has, a voice engine's recursion
// and its all-pole filter.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "noise.h"
#include "open_decoder.h"
#include "veksc.h"

#if __has_include(<webrtc_audio_processing/webrtc/typedefs.h>)
#define ORACLE_VOICE 1
extern "C" {
int16_t WebRtcSpl_LevinsonDurbin(const int32_t* r, int16_t* a, int16_t* k, size_t order);
void WebRtcSpl_FilterARFastQ12(const int16_t* x, int16_t* y, const int16_t* a, size_t count, size_t n);
}
#endif

namespace {

#ifdef ORACLE_AVCODEC

// The second vector of a stream, which no filter has shaped yet: its code words are three bits of gain and seven of
// shape; the first vector has six of shape.
std::array<float, 5> secondVector(int shape, int gain) {
    OpenDecoder decoder(AV_CODEC_ID_RA_288, 8000, [](AVCodecContext& context) { context.block_align = 38; });
    std::array<uint8_t, 38> packet = {};
    // Bit 9 on, lowest bit of the byte first.
    const int word = gain | shape << 3;
    for (int bit = 0; bit < 10; ++bit) {
        packet[(9 + bit) / 8] |= static_cast<uint8_t>((word >> bit & 1) << ((9 + bit) % 8));
    }
    const std::vector<float> samples = decoder.samples<float>(packet.data(), packet.size());
    std::array<float, 5> out = {};
    if (samples.size() >= 10) {
        std::copy_n(samples.begin() + 5, 5, out.begin());
    }
    return out;
}

TEST(G728CodebookOracle, EachEntryOfADecoderIsFoundAtItsPlace) {
    if (avcodec_find_decoder(AV_CODEC_ID_RA_288) == nullptr) {
        GTEST_SKIP() << "libavcodec has no decoder of this kind";
    }
    const Samples impulse = {8192, 0, 0, 0, 0};
    Samples energies(128);
    ASSERT_EQ(vekStsNoErr, veksImpulseResponseEnergy_G728_16s(impulse.data(), energies.data()));
    // 668 in Q11 at the least gain.
    const double unit = 668.0 / 2048 * 0.515625 / secondVector(0, 0)[0];
    for (int shape = 0; shape < 128; ++shape) {
        for (int gain = 0; gain < 8; gain += shape % 16 == 0 ? 1 : 3) {
            const std::array<float, 5> vector = secondVector(shape, gain);
            Samples target;
            double energy = 0;
            for (const float v : vector) {
                target.push_back(static_cast<int16_t>(std::lround(128 * unit * v)));
                energy += unit * v * unit * v;
            }
            int16_t shapeIdx = -1;
            int16_t gainIdx = -1;
            int16_t word = -1;
            ASSERT_EQ(vekStsNoErr, veksCodebookSearch_G728_16s(target.data(), energies.data(), &shapeIdx, &gainIdx,
                                                               &word, VEK_SPCHBR_16000));
            ASSERT_EQ(shapeIdx, shape);
            ASSERT_EQ(gainIdx, gain);
            ASSERT_EQ(word, 8 * shape + gain);
            const double level[4] = {0.515625, 0.90234375, 1.579101563, 2.763427734};
            ASSERT_NEAR(energy / level[gain % 4] / level[gain % 4], energies[static_cast<size_t>(shape)] / 32.0, 0.1);
        }
    }
}

#else

TEST(G728CodebookOracle, EachEntryOfADecoderIsFoundAtItsPlace) {
    GTEST_SKIP() << "libavcodec-dev is not installed";
}

#endif

// Autocorrelation of noise through a resonance, with the white noise correction.
[[maybe_unused]] Samples autocorrelation(std::mt19937& random) {
    std::normal_distribution<double> normal(0, 1);
    const double radius = 0.5 + 0.4 * static_cast<double>(random() % 1000) / 1000;
    const double angle = 3.1 * static_cast<double>(random() % 1000) / 1000;
    std::vector<double> y(400);
    for (size_t n = 2; n < y.size(); ++n) {
        y[n] = normal(random) + 2 * radius * std::cos(angle) * y[n - 1] - radius * radius * y[n - 2];
    }
    std::vector<double> r(21);
    for (size_t k = 0; k < r.size(); ++k) {
        for (size_t n = k; n < y.size(); ++n) {
            r[k] += y[n] * y[n - k];
        }
    }
    r[0] *= 257.0 / 256;
    Samples q;
    for (const double v : r) {
        q.push_back(static_cast<int16_t>(std::lround(32767 * v / r[0])));
    }
    return q;
}

TEST(G728LevinsonOracle, FollowsTheVoiceEngineToOrder20) {
#ifdef ORACLE_VOICE
    std::mt19937 random(1);
    for (const size_t order : {10, 20}) {
        double most = 0;
        for (int round = 0; round < 300; ++round) {
            const Samples r = autocorrelation(random);
            std::vector<int32_t> wide;
            for (const int16_t v : r) {
                wide.push_back(v * 65536);
            }
            Samples want(order + 1);
            Samples reflection(order);
            ASSERT_EQ(1, WebRtcSpl_LevinsonDurbin(wide.data(), want.data(), reflection.data(), order));
            Samples a(order);
            int16_t first = 0;
            int32_t energy = 0;
            int16_t q = 0;
            ASSERT_EQ(vekStsNoErr, veksLevinsonDurbin_G728_16s_Sfs(r.data(), static_cast<int>(order), a.data(), &first,
                                                                   &energy, &q));
            ASSERT_NEAR(first, reflection[0], 2);
            for (size_t i = 0; i < order; ++i) {
                most = std::max(most, std::abs(std::ldexp(a[i], -q) - want[i + 1] / 4096.0));
            }
        }
        EXPECT_LT(most, order == 10 ? 0.01 : 0.015) << order; // ours has coefficients of 16 bits throughout
    }
#else
    GTEST_SKIP() << "libwebrtc-audio-processing-dev is not installed";
#endif
}

TEST(G728SynthesisOracle, FollowsTheVoiceEnginesAllPoleFilter) {
#ifdef ORACLE_VOICE
    std::mt19937 random(2);
    const Samples a = {4096, -5200, 1900, 1300, -900, -500, 800, -300, -200, 200, -50};
    Samples lpc(50);
    for (size_t i = 0; i < 10; ++i) {
        lpc[i] = static_cast<int16_t>(4 * a[i + 1]);
    }
    const Samples x = noise(random, 400, -500, 500);
    Samples want(410);
    WebRtcSpl_FilterARFastQ12(x.data(), want.data() + 10, a.data(), a.size(), x.size());
    int size = 0;
    ASSERT_EQ(vekStsNoErr, veksSynthesisFilterGetStateSize_G728_16s(&size));
    std::vector<uint8_t> bytes(static_cast<size_t>(size));
    auto* memory = reinterpret_cast<VeksSynthesisFilterState_G728*>(bytes.data());
    ASSERT_EQ(vekStsNoErr, veksSynthesisFilterInit_G728_16s(memory));
    for (size_t n = 0; n < x.size(); n += 5) {
        Samples exc(x.begin() + static_cast<std::ptrdiff_t>(n), x.begin() + static_cast<std::ptrdiff_t>(n + 5));
        int16_t speech[5];
        int16_t shifts = 0;
        ASSERT_EQ(vekStsNoErr,
                  veksSyntesisFilterZeroInput_G728_16s(lpc.data(), exc.data(), 0, speech, &shifts, memory));
        for (size_t k = 0; k < 5; ++k) {
            ASSERT_NEAR(std::ldexp(speech[k], -shifts), want[10 + n + k], 4) << n + k;
        }
    }
#else
    GTEST_SKIP() << "libwebrtc-audio-processing-dev is not installed";
#endif
}

} // namespace
