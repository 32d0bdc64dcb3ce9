// A decoder of libavcodec by its public interface, packet by packet. ORACLE_AVCODEC tells that the package is
// installed.
#pragma once

#if __has_include(<libavcodec/avcodec.h>)
#define ORACLE_AVCODEC 1

#include <cstdint>
#include <cstring>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
}

class OpenDecoder {
public:
    OpenDecoder(AVCodecID id, int sampleRate) : m_packet(av_packet_alloc()), m_frame(av_frame_alloc()) {
        const AVCodec* const codec = avcodec_find_decoder(id);
        if (codec == nullptr) {
            return;
        }
        m_context = avcodec_alloc_context3(codec);
        m_context->sample_rate = sampleRate;
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

    /// The samples of a packet, of the type that the decoder gives; none where it refuses the packet.
    template <class Sample>
    std::vector<Sample> samples(const uint8_t* bytes, size_t size) {
        if (av_new_packet(m_packet, static_cast<int>(size)) != 0) {
            return {};
        }
        std::memcpy(m_packet->data, bytes, size);
        const bool good =
            avcodec_send_packet(m_context, m_packet) == 0 && avcodec_receive_frame(m_context, m_frame) == 0;
        av_packet_unref(m_packet);
        if (!good) {
            return {};
        }
        const auto* const first = reinterpret_cast<const Sample*>(m_frame->extended_data[0]);
        return {first, first + m_frame->nb_samples};
    }

private:
    AVCodecContext* m_context = nullptr;
    AVPacket* m_packet;
    AVFrame* m_frame;
    bool m_open = false;
};

#endif
