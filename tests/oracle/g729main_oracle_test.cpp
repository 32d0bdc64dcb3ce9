// The post filters of G.729's main body, and the steps of Annex D in a coder of 6.4 kbit/s, beside the decoder of an
// independent open codec. It rounds in other places: what is asserted are distances of signals in dB, with a margin to
// the measured ones, which the tests record.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "g729_chain.h"
#include "speech_signal.h"

#if __has_include(<libavcodec/avcodec.h>)
#define ORACLE_AVCODEC 1
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
}
#endif

namespace {

using namespace g729chain;

constexpr int kFrames = 400;

#ifdef ORACLE_AVCODEC
// The other decoder; it tells the rate by the length of a packet.
class OpenDecoder {
public:
    OpenDecoder() : m_packet(av_packet_alloc()), m_frame(av_frame_alloc()) {
        const AVCodec* const codec = avcodec_find_decoder(AV_CODEC_ID_G729);
        if (codec == nullptr) {
            return;
        }
        m_context = avcodec_alloc_context3(codec);
        m_context->sample_rate = 8000;
        av_channel_layout_default(&m_context->ch_layout, 1);
        m_open = avcodec_open2(m_context, codec, nullptr) == 0;
    }
    ~OpenDecoder() {
        av_packet_free(&m_packet);
        av_frame_free(&m_frame);
        avcodec_free_context(&m_context);
    }
    OpenDecoder(const OpenDecoder&) = delete;
    OpenDecoder& operator=(const OpenDecoder&) = delete;

    bool open() const { return m_open; }

    template <size_t Size>
    void add(const std::array<uint8_t, Size>& bits, Samples& out) {
        av_new_packet(m_packet, static_cast<int>(Size));
        std::memcpy(m_packet->data, bits.data(), Size);
        ASSERT_EQ(0, avcodec_send_packet(m_context, m_packet));
        ASSERT_EQ(0, avcodec_receive_frame(m_context, m_frame));
        av_packet_unref(m_packet);
        ASSERT_EQ(kFrame, m_frame->nb_samples);
        const auto* const samples = reinterpret_cast<const int16_t*>(m_frame->extended_data[0]);
        out.insert(out.end(), samples, samples + kFrame);
    }

private:
    AVCodecContext* m_context = nullptr;
    AVPacket* m_packet;
    AVFrame* m_frame;
    bool m_open = false;
};

double record(const char* name, double decibels) {
    ::testing::Test::RecordProperty(name, std::to_string(decibels));
    return decibels;
}

// Against the input, which the coder lags by 40 samples.
double fidelity(const Samples& x, const Samples& y) {
    return segmentalDistance(Samples(x.begin(), x.end() - 40), Samples(y.begin() + 40, y.end()), kFrame);
}
#endif

TEST(G729MainOracle, PostFiltersOfTheMainBodyStayByTheOpenDecoder) {
#ifdef ORACLE_AVCODEC
    OpenDecoder open;
    if (!open.open()) {
        GTEST_SKIP() << "libavcodec-dev has no G.729";
    }
    const Samples x = speechLike(static_cast<size_t>(kFrame) * kFrames);
    Coder coder;
    Decoder main(true);
    Decoder annexA;
    Samples ours;
    Samples other;
    Samples theirs;
    for (int f = 0; f < kFrames; ++f) {
        const Parameters p = coder.frame(x.data() + f * kFrame);
        const Samples y = main.frame(p);
        ours.insert(ours.end(), y.begin(), y.end());
        const Samples z = annexA.frame(p);
        other.insert(other.end(), z.begin(), z.end());
        open.add(pack(p), theirs);
    }
    const double distance = record("main", segmentalDistance(theirs, ours, kFrame));
    EXPECT_GT(distance, 27);
    // The post filters of Annex A are further away: what is told is not the synthesis alone.
    EXPECT_LT(record("annexA", segmentalDistance(theirs, other, kFrame)), distance - 3);
#else
    GTEST_SKIP() << "libavcodec-dev is not installed";
#endif
}

TEST(G729MainOracle, CoderOf6400IsUnderstoodAndItsDispersionAndPostFiltersStayByTheOpenDecoder) {
#ifdef ORACLE_AVCODEC
    OpenDecoder open;
    if (!open.open()) {
        GTEST_SKIP() << "libavcodec-dev has no G.729";
    }
    const Samples x = speechLike(static_cast<size_t>(kFrame) * kFrames);
    Coder coder(true);
    Samples theirs;
    for (int f = 0; f < kFrames; ++f) {
        open.add(packShort(coder.frame(x.data() + f * kFrame)), theirs);
    }
    EXPECT_GT(record("decoder", segmentalDistance(theirs, coder.hearing.heard, kFrame)), 27.2);
    EXPECT_GT(record("input", fidelity(x, theirs)), 4);
#else
    GTEST_SKIP() << "libavcodec-dev is not installed";
#endif
}

} // namespace
