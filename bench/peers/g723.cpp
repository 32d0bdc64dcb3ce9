// G.723.1 beside another codec: its steps are not callable, so whole frames of coder and decoder stand together.
#include "peers.h"

#if __has_include(<libavcodec/avcodec.h>)
#include <cmath>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
}

#include "../../tests/oracle/g723_chain.h"

namespace {

using namespace g723chain;

constexpr int kFrames = 24;

AVCodecContext* opened(const AVCodec* codec) {
    AVCodecContext* context = avcodec_alloc_context3(codec);
    context->sample_rate = 8000;
    context->sample_fmt = AV_SAMPLE_FMT_S16;
    context->bit_rate = 6300;
    av_channel_layout_default(&context->ch_layout, 1);
    avcodec_open2(context, codec, nullptr);
    return context;
}

} // namespace

PEER_ROWS(g723) {
    static Word pcm[kFrames * kFrame];
    static Word out[kFrame];
    double y1 = 0;
    double y2 = 0;
    for (int i = 0; i < kFrames * kFrame; ++i) {
        const double y = (i % 53 == 0 ? 3000 : i * 7919 % 201 - 100) + 1.6 * y1 - 0.8 * y2;
        y2 = y1;
        y1 = y;
        pcm[i] = static_cast<Word>(std::lround(y));
    }
    static AVCodecContext* coder = opened(avcodec_find_encoder(AV_CODEC_ID_G723_1));
    static AVCodecContext* decoder = opened(avcodec_find_decoder(AV_CODEC_ID_G723_1));
    static AVPacket* packet = av_packet_alloc();
    static AVFrame* frame = av_frame_alloc();
    static AVFrame* decoded = av_frame_alloc();
    frame->nb_samples = kFrame;
    frame->format = AV_SAMPLE_FMT_S16;
    av_channel_layout_default(&frame->ch_layout, 1);
    av_frame_get_buffer(frame, 0);
    static Coder ours(VEK_SPCHBR_6300);
    static Decoder ourDecoder(true);
    static int at = 0;
    static int theirAt = 0;
    const auto next = [](int& n) { return pcm + (n++ % kFrames) * kFrame; };
    peerRow(
        "coder of 6.3 kbit/s, a frame", "libavcodec avcodec_send_frame", [next] { ours.code(next(at)); },
        [next] {
            std::memcpy(frame->data[0], next(theirAt), kFrame * sizeof(Word));
            avcodec_send_frame(coder, frame);
            avcodec_receive_packet(coder, packet);
            av_packet_unref(packet);
        });
    static std::vector<std::vector<uint8_t>> bytes;
    Coder source(VEK_SPCHBR_6300);
    bytes.reserve(kFrames);
    for (int i = 0; i < kFrames; ++i) {
        bytes.push_back(pack(source.code(pcm + i * kFrame)));
    }
    peerRow(
        "decoder, a frame", "libavcodec avcodec_send_packet",
        [] { ourDecoder.decode(unpack(bytes[static_cast<size_t>(at++ % kFrames)].data()), out); },
        [] {
            const std::vector<uint8_t>& b = bytes[static_cast<size_t>(theirAt++ % kFrames)];
            av_new_packet(packet, static_cast<int>(b.size()));
            std::memcpy(packet->data, b.data(), b.size());
            avcodec_send_packet(decoder, packet);
            avcodec_receive_frame(decoder, decoded);
            av_packet_unref(packet);
        });
}
#endif
