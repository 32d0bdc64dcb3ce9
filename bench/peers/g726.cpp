// G.726 beside another codec, 160 samples a call.
#include "peers.h"

#include "veksc.h"

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
    static g726_state_s* theirs;
    static auto* ours = peerState<VeksCodecState_G726>(veksEncodeGetStateSize_G726_16s8u);
    data.fill(x, 160, 4000);
    const struct {
        int bits;
        VekSpchBitRate rate;
    } rates[] = {
        {16000, VEK_SPCHBR_16000}, {24000, VEK_SPCHBR_24000}, {32000, VEK_SPCHBR_32000}, {40000, VEK_SPCHBR_40000}};
    for (const auto& row : rates) {
        for (const int n : {32, 160}) {
            static Vek16s y[160];
            const std::string told = ", " + std::to_string(n) + " at " + std::to_string(row.bits / 1000) + " kbit/s";
            theirs = g726_init(nullptr, row.bits, 0, 0);
            veksEncodeInit_G726_16s8u(ours, row.rate);
            peerRow(
                "veksEncode_G726_16s8u" + told, "spandsp g726_encode",
                [n] { veksEncode_G726_16s8u(ours, x, codes, n); }, [n] { g726_encode(theirs, codes, x, n); });
            theirs = g726_init(nullptr, row.bits, 0, 0);
            veksDecodeInit_G726_8u16s(ours, row.rate, VEK_PCM_LINEAR);
            peerRow(
                "veksDecode_G726_8u16s" + told, "spandsp g726_decode",
                [n] { veksDecode_G726_8u16s(ours, codes, y, n); }, [n] { g726_decode(theirs, y, codes, n); });
        }
    }
}
#endif
