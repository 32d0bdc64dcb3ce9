// Coder and decoder of G.723.1 put together from the library's steps, frame by frame beside an independent codec: the
// same samples at both rates, the same bits of its coder, and our bits of 5.3 kbit/s read by its decoder.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "g723_chain.h"
#include "open_decoder.h"

#ifdef ORACLE_AVCODEC
extern "C" {
#include <libavutil/opt.h>
}
#endif

namespace {

#ifdef ORACLE_AVCODEC

using namespace g723chain;

void setForm(AVCodecContext& context) {
    context.sample_fmt = AV_SAMPLE_FMT_S16;
    context.bit_rate = 6300;
}

class TheirCoder : public OpenCodec {
public:
    TheirCoder() : OpenCodec(avcodec_find_encoder(AV_CODEC_ID_G723_1), 8000, setForm) {}

    std::vector<uint8_t> code(const Word* pcm) {
        av_frame_unref(m_frame);
        m_frame->nb_samples = kFrame;
        m_frame->format = AV_SAMPLE_FMT_S16;
        av_channel_layout_default(&m_frame->ch_layout, 1);
        av_frame_get_buffer(m_frame, 0);
        std::memcpy(m_frame->data[0], pcm, kFrame * sizeof(Word));
        if (avcodec_send_frame(m_context, m_frame) != 0 || avcodec_receive_packet(m_context, m_packet) != 0) {
            return {};
        }
        std::vector<uint8_t> bytes(m_packet->data, m_packet->data + m_packet->size);
        av_packet_unref(m_packet);
        return bytes;
    }
};

class TheirDecoder : public OpenDecoder {
public:
    explicit TheirDecoder(bool postfilter)
        : OpenDecoder(AV_CODEC_ID_G723_1, 8000, [postfilter](AVCodecContext& context) {
              setForm(context);
              av_opt_set_int(context.priv_data, "postfilter", postfilter ? 1 : 0, 0);
          }) {}

    std::vector<Word> decode(const std::vector<uint8_t>& bytes) {
        const std::vector<Word> frame = samples<Word>(bytes.data(), bytes.size());
        return frame.size() == kFrame ? frame : std::vector<Word>();
    }
};

// Voices of changing pitch between pauses and noise.
std::vector<Word> speech(int frames, unsigned seed, double loudness) {
    std::mt19937 random(seed);
    std::normal_distribution<double> noise(0, 1);
    std::uniform_real_distribution<double> pick(0, 1);
    std::vector<Word> x(static_cast<size_t>(frames) * kFrame);
    double phase = 0;
    double y1 = 0;
    double y2 = 0;
    double z1 = 0;
    double z2 = 0;
    double pitch = 60;
    double voiced = 1;
    double formant = 0.4;
    double level = 1;
    for (size_t i = 0; i < x.size(); ++i) {
        if (i % 1200 == 0) {
            pitch = 20 + 120 * pick(random);
            voiced = pick(random) < 0.7 ? 1 : 0.05;
            formant = 0.2 + 0.6 * pick(random);
            level = pick(random) < 0.15 ? 0.01 : 0.2 + pick(random);
        }
        phase += 1;
        double source = noise(random) * (voiced > 0.5 ? 0.05 : 0.5);
        if (phase >= pitch) {
            phase -= pitch;
            source += 6 * voiced;
        }
        const double y = source + 1.8 * std::cos(formant) * y1 - 0.81 * y2;
        y2 = y1;
        y1 = y;
        const double z = y + 1.6 * std::cos(3 * formant) * z1 - 0.64 * z2;
        z2 = z1;
        z1 = z;
        x[i] = static_cast<Word>(std::lround(std::clamp(z * level * loudness, -32768.0, 32767.0)));
    }
    return x;
}

int frameDifferences(Decoder& ours, TheirDecoder& theirs, const std::vector<uint8_t>& bytes) {
    Word own[kFrame];
    ours.decode(unpack(bytes.data()), own);
    const std::vector<Word> other = theirs.decode(bytes);
    if (other.size() != kFrame) {
        return kFrame;
    }
    int differences = 0;
    for (size_t i = 0; i < kFrame; ++i) {
        differences += own[i] != other[i] ? 1 : 0;
    }
    return differences;
}

TEST(G723Oracle, DecoderHasTheSamplesOfAnOpenDecoderOnItsCodersFrames) {
    for (const bool postfilter : {true, false}) {
        for (const double loudness : {30.0, 700.0, 3000.0}) {
            TheirCoder coder;
            TheirDecoder theirs(postfilter);
            if (!coder.open() || !theirs.open()) {
                GTEST_SKIP() << "libavcodec-dev without this codec";
            }
            Decoder ours(postfilter);
            const std::vector<Word> x = speech(200, 5, loudness);
            for (size_t n = 0; n < 200; ++n) {
                const std::vector<uint8_t> bytes = coder.code(&x[n * kFrame]);
                ASSERT_EQ(24U, bytes.size());
                ASSERT_EQ(0, frameDifferences(ours, theirs, bytes)) << "frame " << n << " loudness " << loudness;
            }
            EXPECT_EQ(0, ours.check.bad);
        }
    }
}

TEST(G723Oracle, CoderOf6300HasTheBitsOfAnOpenCoder) {
    for (const double loudness : {30.0, 700.0, 3000.0}) {
        TheirCoder theirs;
        if (!theirs.open()) {
            GTEST_SKIP() << "libavcodec-dev without this codec";
        }
        Coder ours(VEK_SPCHBR_6300);
        const std::vector<Word> x = speech(200, 9, loudness);
        for (size_t n = 0; n < 200; ++n) {
            const Frame own = ours.code(&x[n * kFrame]);
            const std::vector<uint8_t> bytes = theirs.code(&x[n * kFrame]);
            ASSERT_EQ(24U, bytes.size());
            const Frame other = unpack(bytes.data());
            ASSERT_EQ(std::vector<int>(own.lsf, own.lsf + 3), std::vector<int>(other.lsf, other.lsf + 3)) << n;
            ASSERT_EQ(std::vector<int>(own.base, own.base + 2), std::vector<int>(other.base, other.base + 2)) << n;
            ASSERT_EQ(std::vector<int>(own.gains, own.gains + 4), std::vector<int>(other.gains, other.gains + 4)) << n;
            ASSERT_EQ(std::vector<int>(own.level, own.level + 4), std::vector<int>(other.level, other.level + 4)) << n;
            ASSERT_EQ(bytes, pack(own)) << "frame " << n << " loudness " << loudness;
        }
        EXPECT_EQ(0, ours.check.bad);
    }
}

TEST(G723Oracle, DecoderHasTheSamplesOfAnOpenDecoderOnOur5300Frames) {
    for (const bool postfilter : {true, false}) {
        TheirDecoder theirs(postfilter);
        if (!theirs.open()) {
            GTEST_SKIP() << "libavcodec-dev without this codec";
        }
        Coder coder(VEK_SPCHBR_5300);
        Decoder ours(postfilter);
        const std::vector<Word> x = speech(200, 13, 900);
        for (size_t n = 0; n < 200; ++n) {
            const std::vector<uint8_t> bytes = pack(coder.code(&x[n * kFrame]));
            ASSERT_EQ(20U, bytes.size());
            ASSERT_EQ(0, frameDifferences(ours, theirs, bytes)) << "frame " << n;
        }
        EXPECT_EQ(0, coder.check.bad);
        EXPECT_EQ(0, ours.check.bad);
    }
}

// What the open decoder makes of our frames is near the input: the ratio of signal to noise in decibels, at the delay
// of the codec (lookahead of 60 samples).
double quality(VekSpchBitRate rate) {
    TheirDecoder theirs(false);
    Coder coder(rate);
    const std::vector<Word> x = speech(200, 21, 900);
    double signal = 0;
    double noise = 0;
    for (size_t n = 0; n < 200; ++n) {
        const std::vector<Word> y = theirs.decode(pack(coder.code(&x[n * kFrame])));
        for (size_t i = 0; i < y.size() && n > 0; ++i) {
            const double wanted = x[n * kFrame + i - kSub];
            signal += wanted * wanted;
            noise += (wanted - y[i]) * (wanted - y[i]);
        }
    }
    return 10 * std::log10(signal / noise);
}

TEST(G723Oracle, OurFramesSoundLikeTheInputInAnOpenDecoder) {
    if (!TheirDecoder(false).open()) {
        GTEST_SKIP() << "libavcodec-dev without this codec";
    }
    EXPECT_GT(quality(VEK_SPCHBR_6300), 6);
    EXPECT_GT(quality(VEK_SPCHBR_5300), 5);
}

// Any frame is a frame: parameters at random, also the positions that name no set.
TEST(G723Oracle, DecoderHasTheSamplesOfAnOpenDecoderOnRandomFrames) {
    for (const bool high : {true, false}) {
        TheirDecoder theirs(true);
        if (!theirs.open()) {
            GTEST_SKIP() << "libavcodec-dev without this codec";
        }
        Decoder ours(true);
        std::mt19937 random(3);
        const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
        for (int n = 0; n < 300; ++n) {
            Frame f;
            f.rate = high ? VEK_SPCHBR_6300 : VEK_SPCHBR_5300;
            for (int& i : f.lsf) {
                i = below(256);
            }
            for (int& b : f.base) {
                b = 18 + below(124);
            }
            for (int s = 0; s < 4; ++s) {
                const bool small = high && f.base[s / 2] < kSub - 2;
                f.close[s] = (s & 1) != 0 ? below(4) : 1;
                f.gains[s] = below(small ? 85 : 170);
                f.level[s] = below(18);
                f.train[s] = small ? below(2) : 0;
                f.grid[s] = below(2);
                f.position[s] = high ? below((s & 1) != 0 ? 142506 : 593775) : below(4096);
                f.sign[s] = below(high ? 1 << pulsesOf(s) : 16);
            }
            const std::vector<uint8_t> bytes = pack(f);
            ASSERT_EQ(f, unpack(bytes.data()));
            ASSERT_EQ(0, frameDifferences(ours, theirs, bytes)) << "frame " << n;
        }
    }
}

#else

TEST(G723Oracle, IsSkipped) {
    GTEST_SKIP() << "libavcodec-dev is not installed";
}

#endif

} // namespace
