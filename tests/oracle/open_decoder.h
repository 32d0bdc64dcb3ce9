// Codecs of libavcodec by its public interface, packet by packet. ORACLE_AVCODEC tells that the package is installed.
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

/// What coders and decoders of one channel have in common.
class OpenCodec {
public:
    OpenCodec(const OpenCodec&) = delete;
    OpenCodec& operator=(const OpenCodec&) = delete;

    bool open() const { return m_open; }

protected:
    /// `set` has the context before it is opened.
    template <class Set>
    OpenCodec(const AVCodec* codec, int sampleRate, Set set) : m_packet(av_packet_alloc()), m_frame(av_frame_alloc()) {
        if (codec == nullptr) {
            return;
        }
        m_context = avcodec_alloc_context3(codec);
        m_context->sample_rate = sampleRate;
        av_channel_layout_default(&m_context->ch_layout, 1);
        set(*m_context);
        m_open = avcodec_open2(m_context, codec, nullptr) == 0;
    }
    ~OpenCodec() {
        av_packet_free(&m_packet);
        av_frame_free(&m_frame);
        avcodec_free_context(&m_context);
    }

    AVCodecContext* m_context = nullptr;
    AVPacket* m_packet;
    AVFrame* m_frame;

private:
    bool m_open = false;
};

class OpenDecoder : public OpenCodec {
public:
    OpenDecoder(AVCodecID id, int sampleRate) : OpenDecoder(id, sampleRate, [](AVCodecContext&) {}) {}
    template <class Set>
    OpenDecoder(AVCodecID id, int sampleRate, Set set) : OpenCodec(avcodec_find_decoder(id), sampleRate, set) {}

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
};

#endif
