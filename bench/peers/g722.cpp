// G.722 beside another codec, sub-bands and filter bank together.
#include "peers.h"

#include "veksc.h"

#if __has_include(<spandsp.h>)
#include <spandsp.h>

PEER_ROWS(g722) {
    static Vek16s x[320];
    static Vek16s bands[320];
    static Vek16s codes[160];
    static Vek16s delay[22];
    static uint8_t bytes[320];
    static auto* ours = peerState<VeksCodecState_G722>(veksSBADPCMEncodeStateSize_G722_16s);
    data.fill(x, 320, 4000);
    static g722_encode_state_t* coder = g722_encode_init(nullptr, 64000, 0);
    static g722_decode_state_t* decoder = g722_decode_init(nullptr, 64000, 0);
    for (const int n : {80, 160, 320}) {
        const std::string told = ", " + std::to_string(n);
        static Vek16s y[320];
        veksSBADPCMEncodeInit_G722_16s(ours);
        peerRow(
            "veksQMFEncode_G722_16s + veksSBADPCMEncode_G722_16s" + told, "spandsp g722_encode",
            [n] {
                veksQMFEncode_G722_16s(x, bands, n, delay);
                veksSBADPCMEncode_G722_16s(bands, codes, n, ours);
            },
            [n] { g722_encode(coder, bytes, x, n); });
        veksSBADPCMDecodeInit_G722_16s(ours);
        peerRow(
            "veksSBADPCMDecode_G722_16s + veksQMFDecode_G722_16s" + told, "spandsp g722_decode",
            [n] {
                veksSBADPCMDecode_G722_16s(codes, bands, n, 1, ours);
                veksQMFDecode_G722_16s(bands, y, n, delay);
            },
            [n] { g722_decode(decoder, y, bytes, n / 2); });
    }
}
#endif
