// The functions of AMR-WB put together as a decoder, frame by frame, beside an independent open codec, on the bits of
// another one's coder.
#include <gtest/gtest.h>

#if __has_include(<vo-amrwbenc/enc_if.h>) && __has_include(<opencore-amrwb/dec_if.h>)

#include <algorithm>
#include <optional>
#include <random>
#include <string>

#include "amrwb_decoder.h"

namespace {

using namespace amrwbdecoder;

constexpr int kFrames = 100;

// Runs both decoders, and the inner one of theirs, whose record tells of the frame's parameters and of the speech at
// 12.8 kHz.
class Pair {
public:
    void frame(int mode, const Octets& octets) {
        const Samples p = unpack(mode, octets);
        const Samples want = m_theirs.frame(octets);
        Samples got = ours.frame(mode, p);
        Samples inner;
        const bool same = ours.agrees(m_inner.frame(mode, p, inner));
        if (ours.clipped) {
            return;
        }
        stateApart += same ? 0 : 1;
        fullApart += inner == got ? 0 : 1;
        for (int16_t& v : got) {
            v = static_cast<int16_t>(v & ~3);
        }
        apart += want == got ? 0 : 1;
        ++frames;
        loudest = std::max(loudest, *std::max_element(want.begin(), want.end()));
    }

    Decoder ours;
    int frames = 0;
    int apart = 0;
    int fullApart = 0;
    int stateApart = 0;
    int16_t loudest = 0;

private:
    TheirDecoder m_theirs;
    TheirInnerDecoder m_inner;
};

TEST(AmrWbChainOracle, ParametersComeBackInTheOrderOfTheBits) {
    const Samples x = speechLike(size_t{kWide} * 20);
    for (int mode = 0; mode < kRates; ++mode) {
        TheirCoder coder;
        for (int f = 0; f < 20; ++f) {
            const Octets octets = coder.frame(mode, x.data() + f * kWide);
            EXPECT_EQ(octets, pack(mode, unpack(mode, octets))) << kName[mode] << " frame " << f;
        }
    }
}

void expectSameSamples(const Samples& x, const std::string& name, int leastEnhanced) {
    for (int mode = 0; mode < kRates; ++mode) {
        TheirCoder coder;
        Pair both;
        for (int f = 0; f < kFrames; ++f) {
            both.frame(mode, coder.frame(mode, x.data() + f * kWide));
        }
        EXPECT_EQ(0, both.stateApart) << name << " at " << kName[mode];
        EXPECT_EQ(0, both.fullApart) << name << " at " << kName[mode];
        EXPECT_EQ(0, both.apart) << name << " at " << kName[mode];
        EXPECT_EQ(kFrames, both.frames) << name << " at " << kName[mode];
        EXPECT_GT(both.loudest, 4000) << name << " at " << kName[mode];
        EXPECT_GE(both.ours.enhanced, mode <= R885 ? leastEnhanced : 0) << name << " at " << kName[mode];
    }
}

TEST(AmrWbChainOracle, DecoderHasTheSamplesOfTheOtherOneForSpeechAtAllRates) {
    expectSameSamples(speechLike(size_t{kWide} * kFrames), "speech", 50);
}

TEST(AmrWbChainOracle, DecoderHasTheSamplesOfTheOtherOneForNoiseAtAllRates) {
    expectSameSamples(bursts(size_t{kWide} * kFrames), "noise", 0);
}

TEST(AmrWbChainOracle, DecoderHasTheSamplesOfTheOtherOneForTonesAtAllRates) {
    expectSameSamples(tones(size_t{kWide} * kFrames), "tones", 50);
}

TEST(AmrWbChainOracle, DecoderFollowsChangesOfTheRate) {
    const Samples x = speechLike(size_t{kWide} * kFrames * 3);
    std::mt19937 random(2385);
    TheirCoder coder;
    Pair both;
    for (int f = 0; f < kFrames * 3; ++f) {
        const int mode = static_cast<int>(random() % kRates);
        both.frame(mode, coder.frame(mode, x.data() + f * kWide));
    }
    EXPECT_EQ(0, both.stateApart);
    EXPECT_EQ(0, both.fullApart);
    EXPECT_EQ(0, both.apart);
    EXPECT_EQ(kFrames * 3, both.frames);
}

// Any parameters at all: lags, pulses and spectra that no coder would put one after the other. Both start anew where
// the speech at 12.8 kHz comes to the limit, since the other high-pass wraps there.
TEST(AmrWbChainOracle, DecoderHasTheSamplesForAnyParameters) {
    std::mt19937 random(1265);
    for (int mode = 0; mode < kRates; ++mode) {
        const std::vector<int> w = widths(mode);
        std::optional<Pair> both(std::in_place);
        int frames = 0;
        int apart = 0;
        int stateApart = 0;
        for (int f = 0; f < kFrames; ++f) {
            Samples p;
            for (const int bits : w) {
                p.push_back(static_cast<int16_t>(random() % (1U << bits)));
            }
            both->frame(mode, pack(mode, p));
            if (both->ours.clipped || f + 1 == kFrames) {
                frames += both->frames;
                apart += both->apart + both->fullApart;
                stateApart += both->stateApart;
                both.emplace();
            }
        }
        EXPECT_EQ(0, stateApart) << kName[mode];
        EXPECT_EQ(0, apart) << kName[mode];
        EXPECT_GT(frames, kFrames / 2) << kName[mode];
        ::testing::Test::RecordProperty(std::string("frames at ") + kName[mode], frames);
    }
}

} // namespace

#else

TEST(AmrWbChainOracle, NeedsItsPackages) {
    GTEST_SKIP() << "libvo-amrwbenc-dev and libopencore-amrwb-dev are not installed";
}

#endif
