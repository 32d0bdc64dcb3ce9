// Resamplers of the extended wide-band codec beside two open packages'. Other filters: of the order of size only.
#include "peers.h"

#include "veksc.h"

#if __has_include(<speex/speex_resampler.h>) && __has_include(<vo-amrwbenc/enc_if.h>)
#include <speex/speex_resampler.h>

extern "C" {
void Decim_12k8(int16_t* x, int16_t n, int16_t* y, int16_t* mem);
}

namespace {

Vek16s samples[7680];
Vek16s made[7680];
Vek16s other[7680];
Vek16s memory[180];

} // namespace

PEER_ROWS(amrwberes) {
    data.fill(samples, 7680, 1000);
    int error = 0;
    const auto speex = [&](unsigned in, unsigned out) {
        return speex_resampler_init(1, in, out, SPEEX_RESAMPLER_QUALITY_DEFAULT, &error);
    };
    const auto resample = [](SpeexResamplerState* state, unsigned n) {
        spx_uint32_t taken = n;
        spx_uint32_t room = 7680;
        speex_resampler_process_int(state, 0, samples, &taken, other, &room);
    };
    SpeexResamplerState* internal = speex(48000, 25600);
    SpeexResamplerState* back = speex(25600, 48000);
    SpeexResamplerState* up = speex(8000, 48000);
    SpeexResamplerState* down = speex(48000, 8000);
    SpeexResamplerState* half = speex(25600, 12800);
    SpeexResamplerState* twice = speex(12800, 25600);
    SpeexResamplerState* low = speex(12800, 2000);
    SpeexResamplerState* high = speex(2000, 12800);
    static Vek16s fraction = 0;
    static int count = 0;
    peerRow(
        "veksBandSplitDownsample_AMRWBE_16s, 3840", "speexdsp 48 to 25.6 kHz",
        [] {
            veksBandSplitDownsample_AMRWBE_16s(samples, 7680, made, made + 1024, 1024, memory, &fraction, &count, 96);
        },
        [=] { resample(internal, 3840); });
    fraction = 0;
    peerRow(
        "veksBandJoinUpsample_AMRWBE_16s, 3840", "speexdsp 25.6 to 48 kHz",
        [] {
            veksBandJoinUpsample_AMRWBE_16s(samples, samples + 1024, 1024, made, 3840, memory, &fraction, &count, 96);
        },
        [=] { resample(back, 2048); });
    fraction = 0;
    peerRow(
        "veksResamplePolyphase_AMRWBE_16s, 640 to 3840", "speexdsp 8 to 48 kHz",
        [] { veksResamplePolyphase_AMRWBE_16s(samples, 640, 2, 12, &fraction, memory, made, 3840); },
        [=] { resample(up, 640); });
    peerRow(
        "veksResamplePolyphase_AMRWBE_16s, 3840 to 640", "speexdsp 48 to 8 kHz",
        [] { veksResamplePolyphase_AMRWBE_16s(samples, 3840, 2, 12, &fraction, memory, made, 640); },
        [=] { resample(down, 3840); });
    peerRow(
        "veksResamplePolyphase_AMRWBE_16s, 384 to 256", "vo-amrwbenc Decim_12k8 320 to 256",
        [] { veksResamplePolyphase_AMRWBE_16s(samples, 384, 8, 12, &fraction, memory, made, 256); },
        [] { Decim_12k8(samples, 320, other, other + 1000); });
    peerRow(
        "veksDownsample_AMRWBE_16s, 1280", "speexdsp 25.6 to 12.8 kHz",
        [] { veksDownsample_AMRWBE_16s(samples, 1280, made, memory, 0); }, [=] { resample(half, 1280); });
    peerRow(
        "veksUpsample_AMRWBE_16s, 1280", "speexdsp 12.8 to 25.6 kHz",
        [] { veksUpsample_AMRWBE_16s(samples, made, 1280, memory, 0, 0); }, [=] { resample(twice, 640); });
    peerRow(
        "veksBandSplit_AMRWBE_16s, 1024", "speexdsp 12.8 to 2 kHz and back",
        [] { veksBandSplit_AMRWBE_16s(samples, memory, made, 1024); },
        [=] {
            resample(low, 1024);
            resample(high, 160);
        });
    peerRow(
        "veksBandJoin_AMRWBE_16s, 1024", "speexdsp 2 to 12.8 kHz",
        [] { veksBandJoin_AMRWBE_16s(memory, samples, made, 1024); }, [=] { resample(high, 160); });
}
#endif
