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
    data.fill(x, 160, 4000);
    int size = 0;
    veksEncodeGetStateSize_G726_16s8u(&size);
    memory.resize(static_cast<size_t>(size));
    ours = reinterpret_cast<VeksCodecState_G726*>(memory.data());
    const struct {
        int bits;
        VekSpchBitRate rate;
        const char* encoder;
        const char* decoder;
    } rates[] = {
        {16000, VEK_SPCHBR_16000, "veksEncode_G726_16s8u, 160 at 16 kbit/s", "veksDecode_G726_8u16s, 160 at 16 kbit/s"},
        {24000, VEK_SPCHBR_24000, "veksEncode_G726_16s8u, 160 at 24 kbit/s", "veksDecode_G726_8u16s, 160 at 24 kbit/s"},
        {32000, VEK_SPCHBR_32000, "veksEncode_G726_16s8u, 160 at 32 kbit/s", "veksDecode_G726_8u16s, 160 at 32 kbit/s"},
        {40000, VEK_SPCHBR_40000, "veksEncode_G726_16s8u, 160 at 40 kbit/s",
         "veksDecode_G726_8u16s, 160 at 40 kbit/s"}};
    for (const auto& row : rates) {
        theirs = g726_init(nullptr, row.bits, 0, 0);
        veksEncodeInit_G726_16s8u(ours, row.rate);
        peerRow(
            row.encoder, "spandsp g726_encode", [] { veksEncode_G726_16s8u(ours, x, codes, 160); },
            [] { g726_encode(theirs, codes, x, 160); });
        theirs = g726_init(nullptr, row.bits, 0, 0);
        veksDecodeInit_G726_8u16s(ours, row.rate, VEK_PCM_LINEAR);
        static Vek16s y[160];
        peerRow(
            row.decoder, "spandsp g726_decode", [] { veksDecode_G726_8u16s(ours, codes, y, 160); },
            [] { g726_decode(theirs, y, codes, 160); });
    }
}
#endif
