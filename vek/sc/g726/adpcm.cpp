// ADPCM of G.726 at 16, 24, 32 and 40 kbit/s: states, and the adjustment of a decoder for PCM codes. The codec is in
// the kernels. Names of the published blocks stand in capitals.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "sc/common/markedstate.h"
#include "sc/common/signal_check.h"
#include "sc/g726/companding.h"
#include "sc/kernels/g726.h"
#include "veksc_g722.h"

using namespace vek;
using namespace vek::g726;

namespace {

constexpr int32_t kStarted = 0x47323236;
// Samples that go through a kernel at a time.
constexpr int kStretch = 160;

// One step up or down the codes of a law; the ends stay.
uint8_t alawNeighbour(uint8_t code, bool up) {
    const int bits = code ^ 0x55;
    const int magnitude = bits & 0x7f;
    const bool positive = (bits & 0x80) != 0;
    if (positive == up) {
        return static_cast<uint8_t>((magnitude == 0x7f ? bits : bits + 1) ^ 0x55);
    }
    return static_cast<uint8_t>((magnitude == 0 ? bits ^ 0x80 : bits - 1) ^ 0x55);
}

uint8_t mulawNeighbour(uint8_t code, bool up) {
    const bool positive = (code & 0x80) != 0;
    if (positive == up) {
        return static_cast<uint8_t>((code & 0x7f) == 0 ? code : code - 1);
    }
    // Two codes stand for 0: the step across it leaves one out.
    return static_cast<uint8_t>((code & 0x7f) != 0x7f ? code + 1 : positive ? 0x7e : 0xfe);
}

// COMPRESS, EXPAND, SUBTA, LOG, SUBTB, SYNC: the PCM code which, coded again, gives the same code.
int adjusted(const Codec& codec, const G726Sample& sample, int code) {
    const bool isAlaw = codec.law == VEK_PCM_ALAW;
    const Rate& rate = kRates[codec.rate];
    // The least number has a magnitude of 0 in 15 bits: the first step below 0 of A-law, the 0 of mu-law.
    const int signal = sample.signal != -32768 ? sample.signal : isAlaw ? -1 : 0;
    uint8_t pcm = isAlaw ? g711::alawCode((signal >> 1) * 8) : g711::mulawCode(signal * 4);
    const auto value = [&] { return isAlaw ? g711::alawValue(pcm) : g711::mulawValue(pcm); };
    const int again = quantise(rate, (value() >> 2) - sample.estimate, sample.scale);
    if (again != code) {
        const int sign = 1 << (rate.bits - 1);
        const bool up = (again ^ sign) <= (code ^ sign);
        pcm = isAlaw ? alawNeighbour(pcm, up) : mulawNeighbour(pcm, up);
    }
    return value();
}

int rateIndex(VekSpchBitRate rate) {
    switch (rate) {
    case VEK_SPCHBR_16000:
        return 0;
    case VEK_SPCHBR_24000:
        return 1;
    case VEK_SPCHBR_32000:
        return 2;
    case VEK_SPCHBR_40000:
        return 3;
    default:
        return -1;
    }
}

VekStatus begin(VeksCodecState_G726* state, VekSpchBitRate rate, int law) {
    if (state == nullptr) {
        return vekStsNullPtrErr;
    }
    if (rateIndex(rate) < 0) {
        return vekStsBitRateErr;
    }
    if (law < VEK_PCM_MULAW || law > VEK_PCM_LINEAR) {
        return vekStsLawErr;
    }
    Codec codec = {};
    codec.started = kStarted;
    codec.rate = rateIndex(rate);
    codec.law = law;
    codec.slow = 34816;
    codec.fast = 544;
    std::fill_n(codec.differences, kZeros, kUnitFloat);
    std::fill_n(codec.signals, kPoles, kUnitFloat);
    std::memcpy(state, &codec, sizeof codec);
    return vekStsNoErr;
}

// work(codec, source, destination, samples) for one stretch after the other.
template <class From, class To, class Work>
VekStatus run(VeksCodecState_G726* state, const From* pSrc, To* pDst, int len, Work work) {
    if (state == nullptr || anyNull(pSrc) || anyNull(pDst)) {
        return vekStsNullPtrErr;
    }
    if (badLength(len)) {
        return vekStsSizeErr;
    }
    Codec codec;
    std::memcpy(&codec, state, sizeof codec);
    if (codec.started != kStarted) {
        return vekStsStateErr;
    }
    for (int n = 0; n < len; n += kStretch) {
        work(codec, pSrc + n, pDst + n, std::min(kStretch, len - n));
    }
    std::memcpy(static_cast<void*>(state), &codec, sizeof codec);
    return vekStsNoErr;
}

} // namespace

VekStatus veksEncodeGetStateSize_G726_16s8u(int* pSize) {
    return stateSize<Codec>(pSize);
}

VekStatus veksDecodeGetStateSize_G726_8u16s(int* pSize) {
    return stateSize<Codec>(pSize);
}

VekStatus veksEncodeInit_G726_16s8u(VeksCodecState_G726* pEncMem, VekSpchBitRate rate) {
    return begin(pEncMem, rate, VEK_PCM_LINEAR);
}

VekStatus veksDecodeInit_G726_8u16s(VeksCodecState_G726* pDecMem, VekSpchBitRate rate, VekPCMLaw law) {
    return begin(pDecMem, rate, law);
}

VekStatus veksEncode_G726_16s8u(VeksCodecState_G726* pEncMem, const Vek16s* pSrc, Vek8u* pDst, int len) {
    return run(pEncMem, pSrc, pDst, len, g726Kernels().encode);
}

VekStatus veksDecode_G726_8u16s(VeksCodecState_G726* pDecMem, const Vek8u* pSrc, Vek16s* pDst, int len) {
    return run(pDecMem, pSrc, pDst, len, [](Codec& codec, const Vek8u* codes, Vek16s* y, int n) {
        G726Sample samples[kStretch];
        g726Kernels().decode(codec, codes, samples, n);
        const int mask = (1 << kRates[codec.rate].bits) - 1;
        for (int k = 0; k < n; ++k) {
            y[k] = static_cast<Vek16s>(codec.law == VEK_PCM_LINEAR ? samples[k].signal * 4
                                                                   : adjusted(codec, samples[k], codes[k] & mask));
        }
    });
}
