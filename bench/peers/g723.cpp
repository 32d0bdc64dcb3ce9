// G.723.1 beside another codec: its steps are not callable, so whole frames of coder and decoder stand together.
#include "peers.h"

#if __has_include(<libavcodec/avcodec.h>)
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
    data.fill(pcm, kFrames * kFrame, 12000);
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
        "veksHighPassFilter_G723_16s + veksAutoCorr_G723_16s + veksLevinsonDurbin_G723_16s + veksLPCToLSF_G723_16s + "
        "veksLSFQuant_G723_16s32s + veksLSFDecode_G723_16s + veksLSFToLPC_G723_16s + veksIIR16s_G723_16s32s + "
        "veksOpenLoopPitchSearch_G723_16s + veksHarmonicSearch_G723_16s + veksHarmonicNoiseSubtract_G723_16s_I + "
        "veksSynthesisFilter_G723_16s32s + veksAdaptiveCodebookSearch_G723 + veksMPMLQFixedCodebookSearch_G723, "
        "frame at 6.3 kbit/s",
        "libavcodec G.723.1 encoder", [next] { ours.code(next(at)); },
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
        "veksLSFDecode_G723_16s + veksLSFToLPC_G723_16s + veksDecodeAdaptiveVector_G723_16s + "
        "veksPitchPostFilter_G723_16s + veksSynthesisFilter_G723_16s + veksIIR16s_G723_16s_I + "
        "veksTiltCompensation_G723_32s16s + veksGainControl_G723_16s_I, frame at 6.3 kbit/s",
        "libavcodec G.723.1 decoder",
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
