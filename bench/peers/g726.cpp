// G.726 beside another codec, 160 samples a call.
#include "peers.h"

#include "veksc.h"

#include <vector>

#if __has_include(<spandsp.h>)
extern "C" {
struct g726_state_s;
g726_state_s* g726_init(g726_state_s* state, int rate, int coding, int packing);
int g726_decode(g726_state_s* state, int16_t* samples, const uint8_t* codes, int bytes);
int g726_encode(g726_state_s* state, uint8_t* codes, const int16_t* samples, int len);
}

PEER_ROWS(g726) {
    static Vek16s x[160];
    static Vek8u codes[160];
    static std::vector<Vek8u> memory;
    static g726_state_s* theirs;
    static auto* ours = static_cast<VeksCodecState_G726*>(nullptr);
    for (int i = 0; i < 160; ++i) {
        x[i] = static_cast<Vek16s>(i * 7919 % 8001 - 4000);
    }
    int size = 0;
    veksEncodeGetStateSize_G726_16s8u(&size);
    memory.resize(static_cast<size_t>(size));
    ours = reinterpret_cast<VeksCodecState_G726*>(memory.data());
    const struct {
        int bits;
        VekSpchBitRate rate;
        const char* encoder;
        const char* decoder;
    } rates[] = {{16000, VEK_SPCHBR_16000, "veksEncode_G726_16s8u 16", "veksDecode_G726_8u16s 16"},
                 {24000, VEK_SPCHBR_24000, "veksEncode_G726_16s8u 24", "veksDecode_G726_8u16s 24"},
                 {32000, VEK_SPCHBR_32000, "veksEncode_G726_16s8u 32", "veksDecode_G726_8u16s 32"},
                 {40000, VEK_SPCHBR_40000, "veksEncode_G726_16s8u 40", "veksDecode_G726_8u16s 40"}};
    for (const auto& row : rates) {
        theirs = g726_init(nullptr, row.bits, 0, 0);
        veksEncodeInit_G726_16s8u(ours, row.rate);
        peerRow(
            row.encoder, "spandsp g726_encode, 160 samples", [] { veksEncode_G726_16s8u(ours, x, codes, 160); },
            [] { g726_encode(theirs, codes, x, 160); });
        theirs = g726_init(nullptr, row.bits, 0, 0);
        veksDecodeInit_G726_8u16s(ours, row.rate, VEK_PCM_LINEAR);
        static Vek16s y[160];
        peerRow(
            row.decoder, "spandsp g726_decode, 160 samples", [] { veksDecode_G726_8u16s(ours, codes, y, 160); },
            [] { g726_decode(theirs, y, codes, 160); });
    }
}
#endif
